// Real files, imported: what lies in the store is what an independent reader found in them.
#include "interchange/EdlList.h"
#include "interchange/Timeline.h"
#include "platform/base/Timecode.h"
#include "tests/interchange/Corpus.h"
#include "tests/interchange/ImportFixture.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cmath>

namespace {

using namespace cutroom;
using namespace cutroom::test;

class ImportCorpus : public ImportFixture, public testing::WithParamInterface<std::string> {
protected:
    void SetUp() override {
        facts_ = corpus::facts(GetParam());
        ASSERT_TRUE(facts_);
        report_ = import(corpus::folder() + GetParam());
        ASSERT_EQ(report_.edits.size(), 1u);
        reopen(); // what counts is what was saved
        edit_ = EditPtr(report_.edits[0].edit);
        ASSERT_TRUE(edit_);
    }
    void TearDown() override { edit_.reset(); }

    std::string order(const IdStamp& channel) const {
        std::string order;
        for (const char c : itemsOf(edit_, *edit_->get_edit_cel_p(channel)))
            if (c == 'C' || c == 'G' || c == 'T')
                order += c;
        return order;
    }
    // Half a frame for what had to move to a frame, and the millionth of literal rates.
    double tolerance(double seconds) const {
        return 2e-6 + seconds * 2e-6 +
               (report_.warnings.empty() ? 0 : edit_->getCelResolution() / 2);
    }
    double lengthOf(const Cel& cel) const {
        return cel.get_num_events() == 0 ? 0 : cel.getEndTime();
    }

    Kv::Ptr<JSON::Element> facts_;
    ImportReport report_;
    EditPtr edit_;
};

// Tracks of the file in its order, picture before sound before the rest as an edit has them.
std::vector<Kv::Ptr<JSON::Element>> inChannelOrder(const JSON::Element& tracks) {
    std::vector<Kv::Ptr<JSON::Element>> sorted = tracks.children();
    std::stable_sort(sorted.begin(), sorted.end(), [](const auto& a, const auto& b) {
        return trackKind(a->getString("kind")) < trackKind(b->getString("kind"));
    });
    return sorted;
}

class ImportOtioCorpus : public ImportCorpus {};

TEST_P(ImportOtioCorpus, EditAgrees) {
    EXPECT_EQ(edit_->checkConsistency(), "");
    EXPECT_EQ(edit_->getLogType(), kLogTypeEdit);
    const auto all = facts_->find("timelines");
    if (!all || all->size() == 0) {
        const double seconds = facts_->find("clip")->find("duration")->getDouble("seconds_snapped");
        EXPECT_NEAR(edit_->getEndTime(), seconds, tolerance(seconds));
        EXPECT_EQ(order(edit_->getId(0)), "C");
        return;
    }
    const auto fact = all->child(0);
    const std::string name = fact->getString("name");
    const std::string stem = std::filesystem::path(GetParam()).stem().string();
    EXPECT_EQ(toUtf8(edit_->getName()), name.empty() ? stem : name);
    EXPECT_EQ(edit_->getStartTime(), 0);
    EXPECT_NEAR(edit_->getEndTime(), fact->getDouble("seconds"),
                tolerance(fact->getDouble("seconds")));
    const auto start = fact->find("start");
    EXPECT_EQ(edit_->getTimecode(0),
              start->isObject() ? start->getString("timecode") : "00:00:00:00");
    EXPECT_EQ(edit_->getVideoTimecodeLabel().is_valid(), start->isObject());

    const auto tracks = inChannelOrder(*fact->find("tracks"));
    const auto channels = edit_->getChans();
    ASSERT_EQ(channels.size(), tracks.size());
    for (std::size_t i = 0; i < tracks.size(); ++i) {
        EXPECT_EQ(toUtf8(edit_->getChanUserName(channels[i])), tracks[i]->getString("name"));
        const double seconds = tracks[i]->getDouble("seconds");
        EXPECT_NEAR(lengthOf(*edit_->get_edit_cel_p(channels[i])), seconds, tolerance(seconds));
        std::string expected = tracks[i]->getString("order");
        std::replace_if(
            expected.begin(), expected.end(), [](char c) { return c == 'S' || c == 'K'; }, 'C');
        const std::string found = order(channels[i]);
        if (!expected.empty()) {
            EXPECT_EQ(found, expected) << i;
        }
        EXPECT_EQ(std::count(found.begin(), found.end(), 'C'),
                  tracks[i]->getInt("clips") + tracks[i]->getInt("nested"));
        EXPECT_EQ(std::count(found.begin(), found.end(), 'G'), tracks[i]->getInt("gaps"));
        EXPECT_EQ(std::count(found.begin(), found.end(), 'T'), tracks[i]->getInt("transitions"));
    }
}

TEST_P(ImportOtioCorpus, MarkersAreCuesAtTheirPlace) {
    const CueList cues = edit_->getCues();
    ASSERT_EQ(cues.getNumCuePoints(), facts_->getUnsigned("n_markers"));
    for (const auto& fact : facts_->find("markers")->children()) {
        const double at = fact->getDouble("at");
        EXPECT_TRUE(std::any_of(cues.cues().begin(), cues.cues().end(), [&](const Cue& cue) {
            const bool placed = fact->getBool("outside_owner")
                                    ? cue.getTime() >= 0
                                    : std::abs(cue.getTime() - at) <= tolerance(at);
            return toUtf8(cue.getName()) == fact->getString("name") && placed &&
                   cue.hasEnd() == (fact->getDouble("frames") > 0) &&
                   cue.getImportedMetadata().find("\"" + fact->getString("owner") + "\"") !=
                       std::string::npos;
        })) << fact->getString("owner");
    }
}

INSTANTIATE_TEST_SUITE_P(Files, ImportOtioCorpus, testing::ValuesIn(corpus::files("otio")),
                         [](const auto& file) { return corpus::testName(file.param); });

class ImportEdlCorpus : public ImportCorpus {
protected:
    bool hasCue(std::int64_t frame, std::string_view text) const {
        const CueList cues = edit_->getCues();
        return std::any_of(cues.cues().begin(), cues.cues().end(), [&](const Cue& cue) {
            return frameOf(edit_, cue.getTime()) == frame &&
                   toUtf8(cue.getDescription()) == trim(text);
        });
    }
};

TEST_P(ImportEdlCorpus, EditAgrees) {
    EXPECT_EQ(edit_->checkConsistency(), "");
    const auto record = facts_->find("record");
    const Kv::FrameRate rate = edit_->getFrameRate();
    EXPECT_EQ(rate.nominal(), facts_->getInt("nominal_rate"));
    EXPECT_EQ(edit_->getDropFrame(), facts_->getBool("record_drop_frame"));
    EXPECT_EQ(frameOf(edit_, edit_->getEndTime()), record->getInt("frames"));
    const auto start = parseTimecode(record->getString("in"), {rate, edit_->getDropFrame()});
    EXPECT_EQ(edit_->getTimecode(0), timecodeText(*start, {rate, edit_->getDropFrame()}));
    if (!facts_->getString("title").empty()) {
        EXPECT_EQ(toUtf8(edit_->getName()), facts_->getString("title"));
    }
    EXPECT_EQ(edit_->getCues().getNumCuePoints(),
              facts_->getUnsigned("n_markers") + facts_->getUnsigned("n_marker_table"));
    for (const auto& fact : facts_->find("markers")->children())
        if (fact->isObject()) {
            const auto at = parseTimecode(fact->getString("tc"), {rate, edit_->getDropFrame()});
            ASSERT_TRUE(at);
            EXPECT_TRUE(hasCue(std::max<std::int64_t>(0, *at - *start), fact->getString("text")))
                << fact->getString("tc");
        }
}

// Where the list has one channel that fits on one track: as many frames as its events cover, and
// its transitions.
TEST_P(ImportEdlCorpus, ItemsCoverWhatTheEventsCover) {
    const auto tracks = facts_->find("tracks");
    const auto channels = edit_->getChans();
    const Kv::Ptr<Cel> cel = edit_->get_edit_cel_p(channels.at(0));
    EXPECT_NE(order(channels.at(0)).find('C'), std::string::npos);
    if (tracks->size() != 1 || channels.size() != 1)
        return;
    std::int64_t covered = 0, transitions = 0;
    for (std::uint32_t i = 0; i < cel->numSegments(); ++i) {
        const CelSegment segment = cel->getSegment(i);
        if (!segment.detail.name.empty()) // of an event, black ones included
            covered += edit_->getFrameRate().flicksToFrameNearest(segment.end - segment.start);
        transitions += segment.inGraph.valid();
    }
    EXPECT_EQ(covered, tracks->child(0)->getInt("covered_frames"));
    EXPECT_LE(transitions, facts_->getInt("n_transitions"));
}

INSTANTIATE_TEST_SUITE_P(Files, ImportEdlCorpus, testing::ValuesIn(corpus::files("edl")),
                         [](const auto& file) { return corpus::testName(file.param); });

} // namespace
