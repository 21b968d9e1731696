// An open project with one edit and one log worth copying.
#pragma once

#include "platform/embedded/EmbeddedProject.h"
#include "platform/store/Edit.h"
#include "platform/store/EditModule.h"
#include "tests/support/Edits.h"
#include "tests/support/LogLines.h"
#include "tests/support/TempFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

namespace cutroom::test {

class CopyFixture : public testing::Test {
protected:
    CopyFixture()
        : temp_(TempFolder::inMemory()), host_(EmbeddedHost::repeatable()), project_(host_) {
        const Status opened = open(CurrentProject::Access::readWrite);
        EXPECT_TRUE(opened.ok()) << opened.text();
    }
    Status open(CurrentProject::Access access) {
        return project_.open(temp_ / "film", access, CurrentProject::IfMissing::create);
    }

    static EditManager& manager() { return EditManager::instance(); }
    static Cookie strip(const EditPtr& edit, char type, int number) {
        return convertCookie(edit.getCookie(), type, static_cast<std::uint8_t>(number));
    }

    // Two picture and two sound channels, levels on the first sound, a derived picture: 4 s at 25,
    // from 10:00:00:00. Lists of channels read V1 V2 D A1 A2 L1.
    static EditModifier makeReel() {
        EditModifier reel = makeEdit(2, 2, Kv::FrameRate(25), L"Reel");
        const auto channels = reel->getChans();
        layPieces(reel, channels[0], {{L"a", 50, 10}, {L"b", 50, 0}});
        layPieces(reel, channels[1], {{L"", 25}, {L"x", 50, 5}, {L"", 25}});
        layPieces(reel, channels[2], {{L"s", 100}});
        layPieces(reel, channels[3], {{L"t", 100, 7}});
        layPieces(reel, reel->addChan(kChanVideo, kSubDerived), {{L"r", 100}});
        reel->setLevelNodes(reel->addLevelsChan(channels[2]),
                            {{0, 0.0F}, {4 * kFlicksPerSecond, 1.0F}});
        setStartTimecode(reel, "10:00:00:00");
        return reel;
    }
    // A log of source material: one picture, one sound, 4 s, each playing its own strip.
    static EditModifier makeClip(eLogType type = kLogTypeSource, int material = 1) {
        EditModifier clip = makeEdit(1, 1, Kv::FrameRate(25), L"Clip");
        for (const IdStamp& channel : clip->getChans()) {
            CelSegment segment;
            segment.end = 4 * kFlicksPerSecond;
            segment.material = strip(clip, clip->getChanType(channel) == kChanVideo ? 'V' : 'S', 1);
            EXPECT_TRUE(clip->get_edit_cel_p(channel)->setSegments({segment}).ok());
        }
        clip->setLogType(type);
        clip->set_original_material(material);
        return clip;
    }
    static EditModule whole(const EditPtr& edit) {
        EditModule module(edit);
        module.selectAll();
        return module;
    }
    static EditModule marked(const EditPtr& edit, double from, double to) {
        EditModule module = whole(edit);
        module.markAllAt(TimeRange(from, to), true);
        return module;
    }
    // The channels by the name of the first material that each holds ("axrstL": L has no list).
    static std::string contents(const EditPtr& edit) {
        EXPECT_EQ(edit->checkConsistency(), "");
        std::string text;
        for (const IdStamp& channel : edit->getChans()) {
            const Kv::Ptr<Cel> cel = edit->get_edit_cel_p(channel);
            std::wstring name = edit->getChanType(channel) == kChanLevels ? L"L" : L"-";
            for (std::uint32_t i = cel->numSegments(); i-- > 0;)
                if (const CelSegment piece = cel->getSegment(i); piece.material.valid())
                    name = piece.detail.name.empty() ? L"*" : piece.detail.name;
            text += toUtf8(name);
        }
        return text;
    }
    static std::string config(const EditPtr& edit, const std::string& key) {
        return edit->getConfig(key).value_or("(none)");
    }
    // Tells whether its labels count as those of its material.
    static bool keepsLabels(const EditModifier& edit) {
        const std::string before = edit->canonicalContents();
        edit->make_original(true, true);
        return edit->canonicalContents() == before;
    }
    // What the project holds: edits known, and files in their folder.
    std::pair<std::size_t, long> holdings() const {
        const std::filesystem::directory_iterator files(temp_ / "film/edits");
        return {manager().getAllEdits().size(), std::distance(begin(files), end(files))};
    }

    LogLines log_;
    TempFolder temp_;
    EmbeddedHost host_;
    EmbeddedProject project_;
};

} // namespace cutroom::test
