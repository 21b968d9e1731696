#include "interchange/EdlList.h"
#include "interchange/EdlReader.h"
#include "platform/base/Strings.h"
#include "platform/base/Timecode.h"
#include "tests/interchange/Corpus.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <map>
#include <set>

namespace {

using namespace cutroom;
using testing::SizeIs;

class EdlCorpus : public testing::TestWithParam<std::string> {
protected:
    void SetUp() override {
        facts_ = corpus::facts(GetParam());
        ASSERT_TRUE(facts_) << "no facts for this file";
        bytes_ = readFile(corpus::folder() + GetParam()).value();
        auto read = readEdl(bytes_, GetParam());
        ASSERT_TRUE(read.ok()) << read.status().text();
        ASSERT_THAT(*read, SizeIs(1));
        timeline_ = std::move((*read)[0]);
        bool latin1 = false;
        list_ = parseEdlLines(edlLines(bytes_, &latin1));
        nominal_ = timeline_.rate.rate.nominal();
    }

    std::int64_t frames(Flicks time) const {
        return timeline_.rate.rate.flicksToFrameNearest(time);
    }
    // A label of the facts as frames from the start of the timeline.
    std::int64_t at(const std::string& label) const {
        return edlFrame(*parseEdlLabel(label), nominal_, timeline_.dropFrame) -
               *timeline_.startFrame;
    }

    Kv::Ptr<JSON::Element> facts_;
    std::string bytes_;
    Timeline timeline_;
    EdlList list_;
    int nominal_ = 0;
};

TEST_P(EdlCorpus, RateStartAndLengthAgree) {
    EXPECT_EQ(nominal_, facts_->getInt("nominal_rate"));
    EXPECT_EQ(timeline_.dropFrame, facts_->getBool("record_drop_frame"));
    EXPECT_TRUE(timeline_.rateAssumed);
    const auto record = facts_->find("record");
    EXPECT_EQ(at(record->getString("in")), 0);
    EXPECT_EQ(at(record->getString("out")), record->getInt("frames"));
    EXPECT_EQ(frames(timeline_.duration), record->getInt("frames"));
    if (!facts_->getString("title").empty())
        EXPECT_EQ(timeline_.name, facts_->getString("title"));
    else
        EXPECT_FALSE(timeline_.name.empty());
}

TEST_P(EdlCorpus, EveryEventLineIsRead) {
    EXPECT_EQ(list_.events.size(), facts_->getUnsigned("event_lines"));
    const auto tracks = facts_->find("tracks");
    std::size_t lines = 0;
    for (const auto& track : tracks->children()) {
        std::int64_t own = 0, zero = 0;
        std::map<std::string, std::int64_t> kinds;
        for (const EdlEvent& event : list_.events) {
            if (event.channel != track->key())
                continue;
            ++own;
            zero += edlFrame(event.recordIn, nominal_, timeline_.dropFrame) ==
                    edlFrame(event.recordOut, nominal_, timeline_.dropFrame);
            std::string kind = event.kindText;
            kind.erase(std::remove(kind.begin(), kind.end(), ' '), kind.end());
            ++kinds[kind];
        }
        EXPECT_EQ(own, track->getInt("lines")) << track->key();
        EXPECT_EQ(zero, track->getInt("zero_length")) << track->key();
        for (const auto& kind : track->find("types")->children())
            EXPECT_EQ(kinds[std::string(kind->key())], *kind->asInt()) << kind->key();
        lines += static_cast<std::size_t>(own);
    }
    EXPECT_EQ(lines, list_.events.size()) << "a channel that the facts do not know";
}

// Each channel of the facts lies on one or more tracks; its items cover the frames the facts say.
TEST_P(EdlCorpus, ItemsCoverWhatTheEventsCover) {
    for (const auto& facts : facts_->find("tracks")->children()) {
        std::int64_t clips = 0;
        std::set<std::int64_t> covered;
        const std::string channel(facts->key());
        std::string first;
        for (const Track& track : timeline_.tracks) {
            const std::string base = track.name.substr(0, track.name.find(' '));
            for (const Item& item : track.items) {
                if (item.channel != channel || item.type == ItemType::transition)
                    continue;
                first = first.empty() ? base : first;
                if (base != first)
                    continue;
                ++clips;
                for (auto frame = frames(item.start); frame < frames(item.end()); ++frame)
                    covered.insert(frame);
            }
        }
        EXPECT_LE(clips, facts->getInt("clips")) << channel;
        EXPECT_GE(clips, facts->getInt("joined_clips")) << channel;
        const auto gaps = facts->find("gaps");
        std::int64_t holes = 0;
        bool allGaps = true;
        for (const auto& gap : gaps->children()) {
            allGaps = allGaps && gap->isArray();
            holes += gap->isArray() ? *gap->child(1)->asInt() : 0;
        }
        if (allGaps) {
            EXPECT_EQ(static_cast<std::int64_t>(covered.size()),
                      facts->getInt("span_frames") - holes)
                << channel;
        }
        EXPECT_EQ(*covered.begin(), at(facts->getString("record_in"))) << channel;
        EXPECT_EQ(*covered.rbegin() + 1, at(facts->getString("record_out"))) << channel;
    }
}

TEST_P(EdlCorpus, TracksNeverOverlap) {
    for (const Track& track : timeline_.tracks) {
        Flicks end = 0;
        for (const Item& item : track.items) {
            EXPECT_GE(item.start, end) << track.name;
            EXPECT_GT(item.duration, 0) << track.name;
            if (item.type != ItemType::transition)
                end = item.end();
        }
        EXPECT_EQ(track.duration, end) << track.name;
    }
}

TEST_P(EdlCorpus, TransitionsAndSpeedsAgree) {
    std::map<std::int64_t, std::set<std::int64_t>> lengthsAt;
    for (const Track& track : timeline_.tracks)
        for (const Item& item : track.items)
            if (item.type == ItemType::transition)
                lengthsAt[frames(item.cut())].insert(frames(item.duration));
    for (const auto& fact : facts_->find("transitions")->children()) {
        if (!fact->isObject() || fact->getInt("frames") == 0)
            continue;
        const auto cut = at(fact->getString("at"));
        const auto& found = lengthsAt[cut];
        // A transition longer than its event is held to it.
        const bool held = std::any_of(list_.events.begin(), list_.events.end(), [&](const auto& e) {
            const auto in = edlFrame(e.recordIn, nominal_, timeline_.dropFrame);
            const auto out = edlFrame(e.recordOut, nominal_, timeline_.dropFrame);
            return e.isTransition() && in - *timeline_.startFrame == cut && out - in < e.duration &&
                   found.count(out - in);
        });
        EXPECT_TRUE(found.count(fact->getInt("frames")) || held) << fact->getString("event");
    }
    std::int64_t speeds = 0;
    for (const EdlEvent& event : list_.events)
        speeds += event.framesPerSecond.has_value();
    EXPECT_EQ(speeds, facts_->getInt("m2"));
    for (const auto& fact : facts_->find("speeds")->children()) {
        if (!fact->isArray())
            continue;
        const bool known =
            std::any_of(list_.events.begin(), list_.events.end(), [&](const EdlEvent& event) {
                return event.number == fact->child(0)->text() &&
                       (event.reel.empty() ? "AX" : event.reel) == fact->child(1)->text() &&
                       event.framesPerSecond == fact->child(2)->asDouble();
            });
        EXPECT_TRUE(known) << fact->child(0)->text();
    }
}

TEST_P(EdlCorpus, MarkersAgree) {
    const auto table = facts_->find("marker_table");
    const auto expected = facts_->getInt("n_markers") + facts_->getInt("n_marker_table");
    EXPECT_EQ(static_cast<std::int64_t>(timeline_.markers.size()), expected);
    for (const auto& list : {facts_->find("markers"), table})
        for (const auto& fact : list ? list->children() : std::vector<Kv::Ptr<JSON::Element>>()) {
            if (!fact->isObject())
                continue;
            const bool known = std::any_of(
                timeline_.markers.begin(), timeline_.markers.end(), [&](const Marker& marker) {
                    return frames(marker.start) == at(fact->getString("tc")) &&
                           marker.colourText == fact->getString("color") && marker.colour &&
                           marker.comment == trim(fact->getString("text")) &&
                           marker.name == fact->getString("user");
                });
            EXPECT_TRUE(known) << fact->getString("tc");
        }
}

INSTANTIATE_TEST_SUITE_P(Files, EdlCorpus, testing::ValuesIn(corpus::files("edl")),
                         [](const auto& file) { return corpus::testName(file.param); });

} // namespace
