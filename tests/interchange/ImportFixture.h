// An open project to import into, and what an imported edit shows, in frames from its start.
#pragma once

#include "interchange/ImportedJson.h"
#include "interchange/Importer.h"
#include "platform/host/ProcessLife.h"
#include "platform/project/CurrentProject.h"
#include "platform/project/ProjDb.h"
#include "platform/store/Edit.h"
#include "platform/store/EditManager.h"
#include "tests/support/TempFolder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <set>
#include <string>
#include <vector>

namespace cutroom::test {

class ImportFixture : public testing::Test {
protected:
    ImportFixture() {
        EditManager::instance();
        open(CurrentProject::IfMissing::create);
    }
    ~ImportFixture() override {
        (void)CurrentProject::close();
        ProcessLife::end();
    }

    void open(CurrentProject::IfMissing missing = CurrentProject::IfMissing::fail) {
        const Status opened =
            CurrentProject::open(folder(), CurrentProject::Access::readWrite, missing);
        EXPECT_TRUE(opened.ok()) << opened.text();
    }
    void reopen() {
        const Status closed = CurrentProject::close();
        EXPECT_TRUE(closed.ok()) << closed.text();
        open();
    }
    std::string folder() const { return temp_ / "film"; }
    std::string write(const std::string& name, const std::string& bytes) const {
        std::ofstream(temp_ / name, std::ios::binary) << bytes;
        return temp_ / name;
    }
    // Files of edits and logs.
    std::set<std::string> editFiles() const {
        std::set<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(folder() + "/edits"))
            names.insert(entry.path().filename().string());
        return names;
    }
    static ImportReport import(const std::string& path, const ImportOptions& options = {}) {
        auto report = importFile(path, options);
        EXPECT_TRUE(report.ok()) << report.status().text();
        return report.ok() ? std::move(*report) : ImportReport();
    }

    TempFolder temp_{TempFolder::inMemory()};
};

inline std::int64_t frameOf(const EditPtr& edit, double seconds) {
    return edit->getFrameRate().flicksToFrameNearest(toFlicks(seconds));
}

inline Kv::Ptr<Cel> celOf(const EditPtr& edit, int channel) {
    return edit->get_edit_cel_p(edit->getId(channel));
}

// "T0+10 C10+50@0 G60+24": transitions, clips with the frame of their source, gaps.
inline std::string itemsOf(const EditPtr& edit, const Cel& cel) {
    const Kv::FrameRate rate = edit->getFrameRate();
    std::string text;
    const auto add = [&](char kind, Flicks start, Flicks end) {
        const auto first = rate.flicksToFrameNearest(start);
        text += (text.empty() ? "" : " ") + std::string(1, kind) + std::to_string(first) + "+" +
                std::to_string(rate.flicksToFrameNearest(end) - first);
    };
    const auto addTransition = [&](const IdStamp& id, Flicks cut) {
        if (const auto graph = edit->getEffectGraph(id))
            add('T', cut - graph->inOffset, cut + graph->outOffset);
    };
    for (std::uint32_t i = 0; i < cel.numSegments(); ++i) {
        const CelSegment segment = cel.getSegment(i);
        addTransition(segment.inGraph, segment.start);
        if ((segment.flags & kEventPad) == 0) {
            add(segment.material.valid() ? 'C' : 'G', segment.start, segment.end);
            if (segment.material.valid())
                text += "@" + std::to_string(rate.flicksToFrameNearest(segment.stripStart));
        }
        addTransition(segment.outGraph, segment.end);
    }
    return text;
}

} // namespace cutroom::test
