#include "interchange/OtioReader.h"
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

    Kv::Ptr<JSON::Element> facts_;
    Kv::Ptr<JSON::Element> expected_; // empty when the root is no timeline
    Timeline timeline_;
};

std::string orderOf(const Track& track) {
    std::string order;
    for (const Item& item : track.items)
        order += "CGTN"[static_cast<int>(item.type)];
    return order;
}

// The names, lengths and start that `show` prints are compared elsewhere.
TEST_P(OtioCorpus, RootRateAndTracksAgree) {
    EXPECT_EQ(timeline_.source, facts_->getString("root"));
    if (!expected_) {
        ASSERT_EQ(timeline_.tracks.size(), 1u);
        EXPECT_EQ(orderOf(timeline_.tracks[0]), "C");
        return;
    }
    EXPECT_EQ(timeline_.rate.rate, *Kv::FrameRate::fromDouble(expected_->getDouble("rate")));
    if (const auto start = expected_->find("start"); start->isObject())
        EXPECT_EQ(timeline_.startWritten, start->getDouble("frame"));
    else
        EXPECT_FALSE(timeline_.startFrame);
    const auto tracks = expected_->find("tracks");
    ASSERT_EQ(timeline_.tracks.size(), tracks->size());
    for (std::size_t i = 0; i < tracks->size(); ++i) {
        const auto fact = tracks->child(i);
        EXPECT_EQ(timeline_.tracks[i].kindText, fact->getString("kind"));
        const std::string found = orderOf(timeline_.tracks[i]);
        std::string order = fact->getString("order", found);
        std::replace_if(
            order.begin(), order.end(), [](char c) { return c == 'S' || c == 'K'; }, 'N');
        EXPECT_EQ(found, order) << i;
        for (const auto& [kind, count] : {std::pair{'C', "clips"}, {'G', "gaps"}, {'N', "nested"}})
            EXPECT_EQ(std::count(found.begin(), found.end(), kind), fact->getInt(count));
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
