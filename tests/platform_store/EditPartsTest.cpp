// The parts of an edit that stand by themselves: configuration, labels, changes, layouts.
#include "platform/store/BurntIn.h"
#include "platform/store/ChannelGroups.h"
#include "platform/store/EditLabel.h"
#include "platform/store/EditModifications.h"
#include "platform/store/configb.h"
#include "tests/platform_store/StoreFixture.h"

#include <limits>

namespace {

using cutroom::TimecodeFormat;
using testing::ElementsAre;
using Named = cutroom::test::StoreFixture;

TEST(Configb, AnswersWhetherAValueChangedAndKeepsKeysInOrder) {
    configb config;
    EXPECT_TRUE(config.set("b", 2) && config.set("a", "x"));
    EXPECT_FALSE(config.set("b", 2));
    EXPECT_TRUE(config.set("b", 0.1));
    EXPECT_EQ(config.entries().front().first, "a");
    EXPECT_EQ(config.getDouble("b"), 0.1);
    EXPECT_EQ(config.getInt("a"), std::nullopt);
    EXPECT_TRUE(config.remove("a"));
    EXPECT_FALSE(config.remove("a"));
}

TEST(EditLabel, ShowsAndFindsItsNumbers) {
    struct Row {
        EditLabel label;
        double seconds;
        const char* text;
    };
    const TimecodeFormat pal{Kv::FrameRate(25), false};
    const TimecodeFormat drop{Kv::FrameRate(30000, 1001), true};
    for (const Row& row : {Row{{kLabelVideoTimecode, {2, 1}, pal, 90'000}, 10.0, "01:00:10:00"},
                           {{kLabelVideoTimecode, {2, 1}, pal, 90'000}, 0.039, "01:00:00:00"},
                           {{kLabelVideoTimecode, {2, 1}, drop, 0}, 60.0600, "00:01:00;02"},
                           {{kLabelFrames, {2, 1}, pal, 100}, 2.0, "150"},
                           {{kLabelFeet, {2, 1}, pal, 0}, 1.0, "1+09"},
                           {{kLabelFeet, {2, 1}, pal, -3}, 0.0, "-0+03"},
                           {{kLabelFeet, {2, 1}, pal, -20}, 0.0, "-1+04"}}) {
        EXPECT_EQ(row.label.pointAt(row.seconds).removePadding(), row.text);
        const auto place = row.label.timeOf(row.text);
        ASSERT_TRUE(place) << row.text;
        EXPECT_EQ(row.label.pointAt(*place).removePadding(), row.text);
    }
}

TEST(EditLabel, MovesByWholeFramesAndRefusesForeignNumbers) {
    EditLabel label(kLabelVideoTimecode, {2, 1}, {Kv::FrameRate(24), false}, 0);
    label.adjustByTime(2.01);
    EXPECT_EQ(label.get_abs_posn(3), 51);
    EXPECT_FALSE(label.timeOf("00:00:00:24") || EditLabel().is_valid());
    const EditLabel plain(kLabelVideoTimecode, {2, 1}, {Kv::FrameRate(30000, 1001)}, 0);
    EXPECT_FALSE(plain.timeOf("00:01:00;02")) << "it counts without drop frame";
    for (const char* bad : {"", "7", "0+16", "0+-1", "+3"})
        EXPECT_FALSE(EditLabel(kLabelFeet, {2, 1}, label.format(), 0).timeOf(bad)) << bad;
    EXPECT_EQ(EditLabel().pointAt(1).asString(), "");
    EXPECT_EQ(label.pointAt(kNoTime).asString(), "");
    constexpr auto kLast = std::numeric_limits<std::int64_t>::max();
    label.set_abs_posn(kLast);
    label.adjustByTime(1);
    EXPECT_EQ(label.get_abs_posn(1), kLast);
    EXPECT_EQ(label.pointAt(1).asString(), label.pointAt(0).asString());
    label.set_abs_posn(-kLast - 1);
    EXPECT_FALSE(label.timeOf("00:00:00:00"));
}

TEST(ChannelGroups, AChannelIsInOneGroupAndGroupsOfOneGo) {
    const IdStamp a(1, 0, 0), b(2, 0, 0), c(3, 0, 0);
    ChannelGroupList groups;
    groups.addGroup({a, b});
    groups.addGroup({b, c});
    groups.addGroup({a, a});
    ASSERT_EQ(groups.size(), 1U);
    EXPECT_THAT(groups.getGroupContents(0), ElementsAre(b, c));
    groups.removeChannel(c);
    EXPECT_TRUE(groups.size() == 0 && groups.getGroupContents(0).empty());
}

TEST(EditModifications, UnitesKindsAndKeepsDetailsInOrder) {
    EditModifications changes(kModCues);
    EditModification mix(kModAudioMix, 4);
    mix.track = IdStamp(2, 2, 2);
    changes.add(mix);
    changes.add(EditModification(kModName));
    changes.add(EditModifications(kModRestored));
    EXPECT_EQ(changes.asString(), "3 4 11 27");
    EXPECT_THAT(changes.details(), ElementsAre(mix));
    EXPECT_TRUE(changes.structureChanged() && changes.contentReplaced());
    EXPECT_TRUE(changes.includesAnyOf(EditModifications::bit(kModName)));
    changes.clear();
    EXPECT_TRUE(changes.empty() && changes.details().empty());
    EXPECT_TRUE(EditModifications(kModNone).empty());
}

TEST(BurntIn, ALayoutsTextReadsBackAndNothingElseDoes) {
    BITCEffect layout;
    BITCLabel label;
    label.prefix = L"REC é";
    label.x = 0.125F;
    layout.addLabel(label);
    layout.addLabel({});
    EXPECT_EQ(BITCLayoutsManager::fromString(BITCLayoutsManager::asString(layout)), layout);
    for (const char* bad : {"", "yes", "on\n", "on\n3\t2\t1\t0.5\t0.9\t0.06\t7",
                            "on\n99\t2\t1\t0\t0\t0\t0\t", "off\n3\t2\t1\tx\t0\t0\t0\t"})
        EXPECT_FALSE(BITCLayoutsManager::fromString(bad)) << bad;
}

TEST_F(Named, LayoutsAreKeptUntilTheyAreRemoved) {
    BITCEffect layout;
    layout.addLabel({});
    for (const wchar_t* const name : {L"one", L"two", L"thrée"})
        EXPECT_TRUE(BITCLayoutsManager::setLayout(name, layout));
    EXPECT_TRUE(BITCLayoutsManager::removeLayout(L"two"));
    EXPECT_FALSE(BITCLayoutsManager::removeLayout(L"two"));
    EXPECT_THAT(BITCLayoutsManager::getLayoutNames(), ElementsAre(L"one", L"thrée"));
    EXPECT_EQ(BITCLayoutsManager::getLayout(L"thrée"), layout);
}

} // namespace
