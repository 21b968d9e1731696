#include "interchange/OtioReader.h"
#include "platform/base/Timecode.h"
#include "tests/interchange/Corpus.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <map>

namespace {

using namespace cutroom;

class OtioCorpus : public testing::TestWithParam<std::string> {
protected:
    void SetUp() override {
        facts_ = corpus::facts(GetParam());
        ASSERT_TRUE(facts_) << "no facts for this file";
        auto read = readOtioFile(corpus::folder() + GetParam());
        ASSERT_TRUE(read.ok()) << read.status().text();
        ASSERT_EQ(read->size(), 1u);
        timeline_ = std::move((*read)[0]);
        if (const auto all = facts_->find("timelines"); all->size() > 0)
            expected_ = all->child(0);
    }

    // Half a frame for what had to move to a frame, and the millionth by which literal rates
    // differ.
    double tolerance(double seconds) const {
        const bool moved = !timeline_.warnings.empty();
        return 2e-6 + seconds * 2e-6 + (moved ? timeline_.rate.rate.frameDuration() / 2 : 0);
    }

    Kv::Ptr<JSON::Element> facts_;
    Kv::Ptr<JSON::Element> expected_; // empty when the root is no timeline
    Timeline timeline_;
};

std::string orderOf(const Track& track) {
    std::string order;
    for (const Item& item : track.items)
        order += item.type == ItemType::clip         ? 'C'
                 : item.type == ItemType::gap        ? 'G'
                 : item.type == ItemType::transition ? 'T'
                                                     : 'N';
    return order;
}

TEST_P(OtioCorpus, TimelineAgrees) {
    EXPECT_EQ(timeline_.source, facts_->getString("root"));
    if (!expected_) {
        const auto clip = facts_->find("clip");
        const Item& item = timeline_.tracks.at(0).items.at(0);
        const auto duration = clip->find("duration");
        EXPECT_EQ(timeline_.name, clip->getString("name"));
        EXPECT_NEAR(toSeconds(timeline_.duration), duration->getDouble("seconds_snapped"), 1e-6);
        EXPECT_NEAR(toSeconds(item.sourceStart) * item.sourceRate.rate.asDouble(),
                    clip->getDouble("source_start_frame"), 0.01);
        EXPECT_FALSE(item.media.location.empty());
        return;
    }
    EXPECT_EQ(timeline_.name, expected_->getString("name"));
    const double seconds = expected_->getDouble("seconds");
    EXPECT_NEAR(toSeconds(timeline_.duration), seconds, tolerance(seconds));
    EXPECT_EQ(timeline_.rate.rate, *Kv::FrameRate::fromDouble(expected_->getDouble("rate")));
    const auto start = expected_->find("start");
    ASSERT_EQ(start->isObject(), timeline_.startFrame.has_value());
    if (start->isObject()) {
        EXPECT_EQ(timeline_.startWritten, start->getDouble("frame"));
        EXPECT_EQ(timecodeText(*timeline_.startFrame, {timeline_.rate.rate, timeline_.dropFrame}),
                  start->getString("timecode"));
    }
}

TEST_P(OtioCorpus, TracksAgree) {
    if (!expected_) {
        ASSERT_EQ(timeline_.tracks.size(), 1u);
        EXPECT_EQ(orderOf(timeline_.tracks[0]), "C");
        return;
    }
    const auto tracks = expected_->find("tracks");
    ASSERT_EQ(timeline_.tracks.size(), tracks->size());
    for (std::size_t i = 0; i < tracks->size(); ++i) {
        const auto fact = tracks->child(i);
        const Track& track = timeline_.tracks[i];
        EXPECT_EQ(track.kindText, fact->getString("kind"));
        EXPECT_EQ(track.name, fact->getString("name"));
        const double seconds = fact->getDouble("seconds");
        EXPECT_NEAR(toSeconds(track.duration), seconds, tolerance(seconds)) << i;
        std::string order = fact->getString("order");
        std::replace_if(
            order.begin(), order.end(), [](char c) { return c == 'S' || c == 'K'; }, 'N');
        const std::string found = orderOf(track);
        if (!order.empty()) {
            EXPECT_EQ(found, order) << i;
        }
        EXPECT_EQ(std::count(found.begin(), found.end(), 'C'), fact->getInt("clips"));
        EXPECT_EQ(std::count(found.begin(), found.end(), 'G'), fact->getInt("gaps"));
        EXPECT_EQ(std::count(found.begin(), found.end(), 'T'), fact->getInt("transitions"));
        EXPECT_EQ(std::count(found.begin(), found.end(), 'N'), fact->getInt("nested"));
    }
}

TEST_P(OtioCorpus, MarkersAgree) {
    const auto markers = facts_->find("markers");
    ASSERT_EQ(static_cast<std::int64_t>(timeline_.markers.size()), facts_->getInt("n_markers"));
    for (const auto& fact : markers->children()) {
        const auto colour = fact->find("color");
        const std::string colourText =
            colour->isObject() ? colour->getString("name") : std::string(colour->text());
        const double at = fact->getDouble("at");
        const bool known = std::any_of(
            timeline_.markers.begin(), timeline_.markers.end(), [&](const Marker& marker) {
                // The facts give the place as meant, also where it is none.
                return marker.owner == fact->getString("owner") &&
                       marker.name == fact->getString("name") && marker.colourText == colourText &&
                       marker.colour &&
                       std::abs(toSeconds(marker.meant) - at) < 1e-6 + std::abs(at) * 2e-6 &&
                       (marker.placement == MarkerPlacement::asMeant) !=
                           fact->getBool("outside_owner") &&
                       marker.start >= 0;
            });
        EXPECT_TRUE(known) << fact->getString("owner") << " " << fact->getString("name");
    }
}

void countMedia(const Timeline& timeline, std::map<std::string, std::int64_t>& kinds) {
    static const std::map<ReferenceKind, std::string> kNames = {
        {ReferenceKind::none, "none"},
        {ReferenceKind::missing, "MissingReference"},
        {ReferenceKind::external, "ExternalReference"},
        {ReferenceKind::generator, "GeneratorReference"},
        {ReferenceKind::imageSequence, "ImageSequenceReference"},
        {ReferenceKind::other, "other"}};
    for (const Track& track : timeline.tracks)
        for (const Item& item : track.items)
            if (item.type == ItemType::clip)
                ++kinds[kNames.at(item.media.kind)];
    for (const Timeline& nested : timeline.nested)
        countMedia(nested, kinds);
}

TEST_P(OtioCorpus, MediaReferencesAgree) {
    std::map<std::string, std::int64_t> kinds;
    countMedia(timeline_, kinds);
    std::map<std::string, std::int64_t> expected;
    for (const auto& kind : facts_->find("media")->children())
        expected[std::string(kind->key())] = *kind->asInt();
    EXPECT_EQ(kinds, expected);
}

TEST_P(OtioCorpus, EveryCutLiesOnAFrame) {
    for (const Track& track : timeline_.tracks)
        for (const Item& item : track.items) {
            EXPECT_TRUE(timeline_.rate.rate.isOnFrame(item.start)) << item.name;
            EXPECT_TRUE(timeline_.rate.rate.isOnFrame(item.end())) << item.name;
            EXPECT_GE(item.start, 0) << item.name;
            EXPECT_LE(item.end(), track.duration) << item.name;
        }
}

INSTANTIATE_TEST_SUITE_P(Files, OtioCorpus, testing::ValuesIn(corpus::files("otio")),
                         [](const auto& file) { return corpus::testName(file.param); });

} // namespace
