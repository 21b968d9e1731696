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
    // The edit that a file of these bytes becomes; of an edit list, at `rate`.
    EditModifier imported(const std::string& name, const std::string& bytes,
                          std::optional<Kv::FrameRate> rate = {}) const {
        ImportOptions options;
        options.rate = rate;
        return EditModifier(import(write(name, bytes), options).edits.at(0).edit);
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

// Tracks, names, sources, speeds, flags and markers: all that a file of timelines says of an edit.
inline std::string contentsOf(const EditPtr& edit) {
    std::string text = toUtf8(edit->getName()) + " " + edit->getTimecode(0) + "\n";
    for (const IdStamp& channel : edit->getChans()) {
        const Cel& cel = *edit->get_edit_cel_p(channel);
        text += toUtf8(edit->getChanUserName(channel)) + ": " + itemsOf(edit, cel) + "\n";
        for (std::uint32_t i = 0; i < cel.numSegments(); ++i) {
            const CelSegment segment = cel.getSegment(i);
            text += toUtf8(segment.detail.name) + "|" + toUtf8(segment.detail.media) + "|" +
                    std::to_string(segment.material.valid() ? segment.stripStart : 0) + "|" +
                    toText(segment.speed) + (segment.flags & kEventDisabled ? "|off\n" : "\n");
        }
    }
    const CueList cues = edit->getCues();
    for (const Cue& cue : cues.cues()) {
        text += std::to_string(frameOf(edit, cue.getTime())) + "-" +
                (cue.hasEnd() ? std::to_string(frameOf(edit, cue.getEndTime())) : "") + " " +
                toUtf8(cue.getName()) + "/" + toUtf8(cue.getDescription()) + "/" +
                std::to_string(cue.getColour()) + "\n";
        for (const auto& [key, value] : cue.getCustomMetadata())
            text += key + "=" + toUtf8(value) + "\n";
    }
    return text;
}

} // namespace cutroom::test
