// Files that must be refused in one line that names the place, without crash, hang or memory.
#include "tests/interchange/OtioText.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using namespace cutroom;
using namespace otiotext;
using testing::HasSubstr;
using testing::Not;

struct Row {
    const char* name;
    std::string text;
    const char* place;
    const char* reason;
};

std::string withTime(const std::string& value, const std::string& rate) {
    return timeline(
        track(object("Clip.1", "A",
                     R"("source_range":{"start_time":{"value":0,"rate":24},"duration":{"value":)" +
                         value + R"(,"rate":)" + rate + "}}")));
}

std::vector<Row> rows() {
    const char* const duration = "tracks.children[0].children[0].source_range.duration";
    const char* const range = "tracks.children[0].children[0].source_range";
    return {
        {"empty", "", "t.otio", ""},
        {"no JSON", "TITLE: x", "t.otio:1", ""},
        {"cut short", timeline(track(clip("A", 0, 1))).substr(0, 90), "t.otio:1", ""},
        {"another kind of JSON", "[1,2]", "t.otio:1", "OTIO_SCHEMA"},
        {"nothing to play", object("SerializableCollection.1", "c", children("")), "root",
         "nothing in it"},
        {"an unknown root", object("Widget.1", "w"), "root", "Widget"},
        {"NaN", withTime("NaN", "24"), duration, "time NaN"},
        {"infinite", withTime("Infinity", "24"), duration, "time Infinity"},
        {"a rate of 0", withTime("1", "0"), duration, "rate 0"},
        {"a negative rate", withTime("1", "-24"), duration, "rate -24"},
        {"a NaN rate", withTime("1", "NaN"), duration, "rate NaN"},
        {"text for a number", withTime("\"1\"", "24"), duration, "value and a rate"},
        {"a negative duration", withTime("-1", "24"), range, "negative"},
        {"beyond any time", withTime("1e300", "24"), duration, "time 1e300"},
        {"a range without duration",
         timeline(track(object("Clip.1", "A", R"("source_range":{"start_time":null})"))), range,
         "duration"},
        {"no length", timeline(track(object("Clip.1", "A"))), "tracks.children[0].children[0]",
         "length of the clip \"A\" is unknown"},
        {"a negative transition", timeline(track(transition(-1, 2))),
         "tracks.children[0].children[0]", "negative"},
        {"a speed that is none",
         timeline(track(clip(
             "A", 0, 1, R"("effects":[{"OTIO_SCHEMA":"LinearTimeWarp.1","time_scalar":NaN}])"))),
         "children[0].effects[0]", "time scalar"},
        {"a hundred years too long", timeline(track(clip("A", 0, 7e10) + "," + clip("B", 0, 7e10))),
         "children[1]", "hundred years"},
    };
}

TEST(OtioHostile, IsRefusedWithPlaceAndReason) {
    for (const Row& row : rows()) {
        SCOPED_TRACE(row.name);
        const auto read = readOtio(row.text, "t.otio");
        ASSERT_FALSE(read.ok());
        EXPECT_EQ(read.status().code(), StatusCode::damaged);
        EXPECT_THAT(read.status().text(), HasSubstr(row.place));
        EXPECT_THAT(read.status().text(), HasSubstr(row.reason));
        EXPECT_THAT(read.status().text(), Not(HasSubstr("\n")));
    }
}

TEST(OtioHostile, DeepNestingIsRefused) {
    const std::string brackets(100'000, '[');
    EXPECT_FALSE(readOtio(brackets, "t.otio").ok());
    EXPECT_FALSE(readOtio(R"({"OTIO_SCHEMA":"Timeline.1","metadata":)" + brackets, "t.otio").ok());
}

TEST(OtioHostile, ReferencesToOneselfAreRefused) {
    const std::string self = R"({"OTIO_SCHEMA":"Track.1","OTIO_REF_ID":"a","children":[)"
                             R"({"OTIO_SCHEMA":"SerializableObjectRef.1","id":"a"}]})";
    EXPECT_FALSE(readOtio(timeline(self), "t.otio").ok());
    EXPECT_FALSE(readOtio(R"({"OTIO_SCHEMA":"SerializableCollection.1","OTIO_REF_ID":"a",)"
                          R"("children":[{"OTIO_SCHEMA":"SerializableObjectRef.1","id":"a"}]})",
                          "t.otio")
                     .ok());
}

// Twenty levels, each of which plays the one below ten times: 10^20 clips in a small file.
TEST(OtioHostile, ReferencesThatMultiplyAreRefused) {
    std::string text =
        R"({"OTIO_SCHEMA":"Track.1","OTIO_REF_ID":"0","children":[)" + clip("A", 0, 1) + "]}";
    for (int level = 1; level <= 20; ++level) {
        const std::string below =
            format(R"({"OTIO_SCHEMA":"SerializableObjectRef.1","id":"%d"})", level - 1);
        std::string list = below;
        for (int i = 1; i < 10; ++i)
            list += "," + below;
        text += format(R"(,{"OTIO_SCHEMA":"Track.1","OTIO_REF_ID":"%d","children":[)", level) +
                list + "]}";
    }
    const auto read = readOtio(timeline(text), "t.otio");
    ASSERT_FALSE(read.ok());
    EXPECT_THAT(read.status().message(), HasSubstr("references repeat"));
}

TEST(OtioHostile, EveryTruncationIsAnswered) {
    const std::string whole = timeline(track(clip("A", 5, 10, markers(marker("m", 6))) + "," +
                                             transition(1, 1) + "," + clip("B", 0, 3)));
    ASSERT_TRUE(readOtio(whole, "t.otio").ok());
    for (std::size_t size = 0; size < whole.size(); ++size) {
        const auto read = readOtio(whole.substr(0, size), "t.otio");
        ASSERT_FALSE(read.ok()) << size;
        ASSERT_FALSE(read.status().message().empty()) << size;
    }
}

} // namespace
