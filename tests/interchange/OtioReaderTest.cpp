#include "platform/base/Timecode.h"
#include "tests/interchange/OtioText.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>

namespace {

using namespace cutroom;
using namespace otiotext;
using testing::Each;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

struct LayoutRow {
    const char* name;
    std::string text;
    const char* expected;
    std::int64_t duration;
    const char* warning = nullptr;
};

std::vector<LayoutRow> layoutRows() {
    const std::string two = clip("A", 5, 10) + "," + clip("B", 100, 20);
    const std::string third = clip("A", 0, 10.4);
    return {
        {"one after the other", timeline(track(two)), "A 0+10 @5, B 10+20 @100", 30},
        {"a transition inside moves nothing",
         timeline(track(clip("A", 5, 10) + "," + transition(2, 3) + "," + clip("B", 100, 20))),
         "A 0+10 @5, t 8+5 @0, B 10+20 @100", 30},
        {"transitions at both ends lengthen",
         timeline(track(transition(4, 2) + "," + two + "," + transition(1, 6))),
         "t 0+6 @0, A 4+10 @5, B 14+20 @100, t 33+7 @0", 40},
        {"a transition longer than the clips beside it",
         timeline(track(clip("A", 5, 10) + "," + transition(14, 3) + "," + clip("B", 100, 20))),
         "A 0+10 @5, t 0+13 @0, B 10+20 @100", 30, "beyond their track"},
        {"a track's range trims both ends",
         timeline(track(two, "\"source_range\":" + range(4, 10))), "A 0+6 @9, B 6+4 @100", 10},
        {"a track's range may be longer than its content",
         timeline(track(clip("A", 5, 10), "\"source_range\":" + range(0, 50))), "A 0+10 @5", 50},
        {"an item outside the track's range goes",
         timeline(track(two, "\"source_range\":" + range(12, 10))), "B 0+10 @102", 10,
         "outside the range"},
        {"a track without items", timeline(track("")), "", 0, "25 taken"},
        {"an old spelling",
         timeline(object("Sequence.1", "S",
                         children(item("Filler.1", "F", 0, 7) + "," + item("Clip.1", "C", 0, 3)))),
         "F 0+7 @0, C 7+3 @0", 10},
        {"media give a clip its length",
         timeline(track(object(
             "Clip.1", "A",
             R"("source_range":null,"media_reference":)" +
                 object("MissingReference.1", "m", "\"available_range\":" + range(86400, 12))))),
         "A 0+12 @86400", 12},
        {"a clip right in the stack", timeline(clip("A", 5, 10)), "A 0+10 @5", 10},
        {"an unknown thing holds its place",
         timeline(track(item("Widget.7", "W", 0, 4) + "," + clip("A", 0, 2))), "W 0+4 @0, A 4+2 @0",
         6, "kept as gaps"},
        {"a backward clip keeps the end of its range when its head goes",
         timeline(track(clip("A", 100, 10,
                             R"("effects":[{"OTIO_SCHEMA":"LinearTimeWarp.1","time_scalar":-1}])"),
                        "\"source_range\":" + range(4, 6))),
         "A 0+6 @100", 6},
        {"a stack's range trims every track",
         object("Stack.1", "S",
                "\"source_range\":" + range(5, 10) + "," +
                    children(track(clip("A", 0, 100)) + "," + track(clip("B", 0, 8)))),
         "A 0+10 @5 | B 0+3 @5", 10},
        {"cuts are rounded, not lengths", timeline(track(third + "," + third + "," + third)),
         "A 0+10 @0, A 10+11 @0, A 21+10 @0", 31, "nearest frame"},
        {"a child that is no object", timeline(track("5," + clip("A", 0, 10))), "A 0+10 @0", 10,
         "no objects"},
        {"a transition right in the stack", timeline(transition(1, 1) + "," + clip("A", 5, 10)),
         "A 0+10 @5", 10, "cannot play on their own"},
        {"a gap without range", timeline(track(object("Gap.1", "G") + "," + clip("A", 0, 10))),
         "G 0+0 @0, A 0+10 @0", 10, "gaps without a range"},
        {"a marker without range",
         timeline(track(clip("A", 0, 10, markers(object("Marker.2", "m"))))), "A 0+10 @0", 10,
         "markers without a range"},
        {"ticks are no frames", timeline(track(clip("A", 0, 1001 * 7, {}, "24000"))), "A 0+7 @0", 7,
         "rate"},
    };
}

TEST(OtioReader, LaysItemsOut) {
    for (const LayoutRow& row : layoutRows()) {
        SCOPED_TRACE(row.name);
        const Timeline timeline = read(row.text);
        EXPECT_EQ(layout(timeline), row.expected);
        EXPECT_EQ(frames(timeline, timeline.duration), row.duration);
        EXPECT_EQ(timeline.warnings.size(), row.warning ? 1u : 0u);
        EXPECT_THAT(timeline.warnings, Each(HasSubstr(row.warning ? row.warning : "")));
    }
}

TEST(OtioReader, NestedThingsAreTrimmedAndKeepTheirContent) {
    const std::string inner =
        object("Stack.1", "N",
               "\"source_range\":" + range(10, 20) + "," +
                   children(track(clip("A", 50, 12,
                                       markers(marker("cut off", 55) + "," + marker("seen", 61))) +
                                  "," + clip("B", 0, 30))));
    const Timeline outer = read(timeline(track(clip("X", 0, 100) + "," + inner)));
    EXPECT_EQ(layout(outer), "X 0+100 @0, N 100+20 @0");
    const Item& item = outer.tracks[0].items[1];
    ASSERT_EQ(item.type, ItemType::nested);
    const Timeline& nested = outer.nested.at(static_cast<std::size_t>(item.nested));
    EXPECT_EQ(nested.name, "N");
    EXPECT_EQ(layout(nested), "A 0+2 @60, B 2+18 @0");
    // Media time 61 is the second frame of what is left of A; 55 is before it.
    std::vector<std::string> placed;
    for (const Marker& each : outer.markers)
        placed.push_back(each.name + " " +
                         toText(static_cast<long long>(frames(outer, each.start))));
    EXPECT_THAT(placed, ElementsAre("cut off 100", "seen 101"));
    EXPECT_EQ(outer.markers[0].placement, MarkerPlacement::outside);
    EXPECT_EQ(nested.markers.size(), 2u);
}

TEST(OtioReader, MarkersArePlacedByTheirWritersHabit) {
    using enum MarkerPlacement;
    // A clip of 50 frames at frame 10 of the timeline.
    const struct {
        const char* name;
        double sourceStart, marked, globalStart; // -1: none
        std::int64_t expected;
        MarkerPlacement placement;
    } rows[] = {
        {"as meant", 100, 120, -1, 30, asMeant},
        {"at the very end", 100, 150, -1, 60, asMeant},
        {"from the first frame", 100, 20, -1, 30, fromFirstFrame},
        {"record timecode", 900, 86400 + 25, 86400, 25, recordTimecode},
        {"record timecode beats the first frame", 900, 30, 20, 10, recordTimecode},
        {"nowhere", 100, 5000, -1, 10, outside},
        {"negative", 100, -7, -1, 10, outside},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const Timeline timeline = read(
            ::timeline(track(item("Gap.1", "G", 0, 10) + "," +
                             clip("A", row.sourceStart, 50, markers(marker("m", row.marked, 2)))),
                       row.globalStart < 0 ? "null" : time(row.globalStart)));
        ASSERT_EQ(timeline.markers.size(), 1u);
        const Marker& marker = timeline.markers[0];
        EXPECT_EQ(frames(timeline, marker.start), row.expected);
        EXPECT_EQ(marker.placement, row.placement);
        EXPECT_EQ(frames(timeline, marker.written), static_cast<std::int64_t>(row.marked));
        EXPECT_EQ(timeline.warnings.empty(), row.placement == asMeant);
    }
}

TEST(OtioReader, MarkersCarryColourCommentAndOwner) {
    const std::string old =
        object("Marker.1", "old", "\"color\":\"pink\",\"range\":" + range(1, 2));
    const std::string newest =
        object("Marker.3", "new",
               R"("comment":"why","color":{"OTIO_SCHEMA":"Color.1","r":1,"g":0.5,"b":0,"a":1},)"
               "\"marked_range\":" +
                   range(3, 0));
    const std::string odd =
        object("Marker.2", "odd", "\"color\":\"Puce\",\"marked_range\":" + range(4, 0));
    const Timeline timeline =
        read(::timeline(track(clip("A", 0, 10), markers(old + "," + newest + "," + odd))));
    ASSERT_EQ(timeline.markers.size(), 3u);
    EXPECT_EQ(timeline.markers[0].colour, 0xFFC0CBu);
    EXPECT_EQ(timeline.markers[0].owner, "stack/0");
    EXPECT_EQ(frames(timeline, timeline.markers[0].duration), 2);
    EXPECT_EQ(timeline.markers[1].colour, 0xFF8000u);
    EXPECT_EQ(timeline.markers[1].colourText, "#FF8000");
    EXPECT_EQ(timeline.markers[1].comment, "why");
    EXPECT_EQ(markerColour("#abCDeF"), 0xABCDEFu);
    EXPECT_EQ(markerColour("#12345g"), std::nullopt);
    EXPECT_EQ(timeline.markers[2].colour, std::nullopt);
    EXPECT_EQ(timeline.markers[2].colourText, "Puce");
}

TEST(OtioReader, TimeEffectsMakeASpeedAndNoLength) {
    const std::string half = R"({"OTIO_SCHEMA":"LinearTimeWarp.1","time_scalar":0.5})";
    const std::string back = R"({"OTIO_SCHEMA":"LinearTimeWarp.1","time_scalar":-1})";
    const std::string freeze = R"({"OTIO_SCHEMA":"FreezeFrame.1","time_scalar":1})";
    const std::string other = R"({"OTIO_SCHEMA":"Effect.1","effect_name":"blur"})";
    const std::pair<std::string, double> rows[] = {
        {other, 1}, {half, 0.5}, {half + "," + back, -0.5}, {half + "," + freeze, 0}};
    for (const auto& [effects, speed] : rows) {
        const Timeline timeline =
            read(::timeline(track(clip("A", 0, 10, "\"effects\":[" + effects + "]"))));
        EXPECT_EQ(timeline.tracks[0].items[0].speed, speed) << effects;
        EXPECT_EQ(layout(timeline), "A 0+10 @0");
        EXPECT_THAT(timeline.tracks[0].items[0].effects, HasSubstr("OTIO_SCHEMA"));
    }
}

TEST(OtioReader, StartLabelsSurviveOtherRatesAndDropFrame) {
    struct Row {
        double start;
        const char* startRate;
        const char* clipRate;
        const char* label;
    };
    const Row rows[] = {
        {86400, "24", "25", "01:00:00:00"},        {3600, "1", "25", "01:00:00:00"},
        {86400, "24", "23.976", "01:00:00:00"},    {108000, "30", "29.97", "01:00:00:00"},
        {107892, "29.97", "29.97", "01:00:00;00"}, {90012, "25", "25", "01:00:00:12"}};
    for (const Row& row : rows) {
        const Timeline timeline = read(
            ::timeline(track(clip("A", 0, 10, {}, row.clipRate)), time(row.start, row.startRate)));
        EXPECT_EQ(timecodeText(*timeline.startFrame, {timeline.rate.rate, timeline.dropFrame}),
                  row.label);
        EXPECT_EQ(timeline.rate.literal, row.clipRate);
    }
}

TEST(OtioReader, RatesOfSamplesAreNoFrameRates) {
    const std::string sound = track(clip("A", 0, 44100 * 3, {}, "44100"));
    EXPECT_EQ(read(timeline(sound + "," + track(clip("B", 0, 75, {}, "25")))).rate.rate,
              Kv::FrameRate(25));
    const Timeline ticks = read(timeline(track(clip("A", 0, 1001 * 7, {}, "24000"))));
    EXPECT_EQ(ticks.rate.rate, Kv::FrameRate(24000, 1001));
    EXPECT_TRUE(ticks.rateAssumed);
}

TEST(OtioReader, EveryPlayableRootBecomesATimeline) {
    const std::string list = clip("A", 0, 10) + "," + track(clip("B", 0, 4)) + "," +
                             timeline(track(clip("C", 0, 5))) + "," +
                             object("MissingReference.1", "r");
    for (const char* const schema : {"SerializableCollection.1", "SerializeableCollection.1"}) {
        auto all = readOtio(object(schema, "bin", children(list)), "t.otio");
        ASSERT_TRUE(all.ok()) << all.status().text();
        ASSERT_EQ(all->size(), 3u);
        EXPECT_EQ(layout((*all)[0]), "A 0+10 @0");
        EXPECT_EQ((*all)[1].source, "Track.1");
        EXPECT_EQ((*all)[2].name, "T");
        EXPECT_THAT((*all)[0].warnings, ElementsAre(HasSubstr("MissingReference")));
    }
}

TEST(OtioReader, FindsTheActiveMediaAndFollowsReferencesToThem) {
    const std::string media =
        R"("media_references":{"low":{"OTIO_SCHEMA":"ExternalReference.1","OTIO_REF_ID":"m1",)"
        R"("target_url":"low.mov"},"high":{"OTIO_SCHEMA":"ImageSequenceReference.1",)"
        R"("target_url_base":"file:///d","name_prefix":"s.","name_suffix":".exr",)"
        R"("start_frame":-12,"frame_zero_padding":4,"rate":24,"available_range":null}},)"
        R"("active_media_reference_key":)";
    const std::string again =
        R"("media_reference":{"OTIO_SCHEMA":"SerializableObjectRef.1","id":"m1"})";
    for (const auto& [active, location, warned] : {std::tuple{"low", "low.mov", false},
                                                   {"high", "file:///d/s.-0012.exr", false},
                                                   {"gone", "low.mov", true}}) {
        const Timeline timeline = read(::timeline(
            track(clip("A", 0, 1, media + '"' + active + '"') + "," + clip("B", 0, 1, again))));
        const auto& items = timeline.tracks[0].items;
        EXPECT_EQ(items[0].media.location, location);
        EXPECT_EQ(items[1].media.location, "low.mov");
        EXPECT_THAT(items[1].media.raw, HasSubstr("low.mov"));
        EXPECT_EQ(timeline.warnings.size(), warned ? 1u : 0u);
    }
}

TEST(OtioReader, KeepsWhatItHasNoUseFor) {
    const Timeline timeline = read(::timeline(
        track(R"({"OTIO_SCHEMA":"Clip.2","name":null,"source_range":)" + range(0, 1) +
              R"(,"metadata":{"big":170141183460469231731687303715884105728,"x":[-Infinity,1.10]},)"
              R"("colour_space":"log","media_references":{}})")));
    const Item& item = timeline.tracks[0].items[0];
    EXPECT_EQ(item.name, "");
    EXPECT_EQ(item.metadata,
              R"({"big":170141183460469231731687303715884105728,"x":[-Infinity,1.10]})");
    EXPECT_EQ(item.extra, R"({"colour_space":"log"})");
    EXPECT_THAT(timeline.warnings, IsEmpty());
    const std::string bare = R"({"OTIO_SCHEMA":"Timeline.1","tracks":{"OTIO_SCHEMA":"Stack.1",)";
    EXPECT_EQ(read(bare + children(track("")) + "}}").extra, "");
    EXPECT_EQ(read(bare + children(track("")) + R"(},"reel":1})").extra,
              R"({"reel":1,"tracks":{}})");
}

} // namespace
