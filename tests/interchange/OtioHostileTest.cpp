// Files that must be refused in one line that names the place, without a crash, a hang, or much
// memory.
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

// Twenty levels, each of which plays the one below ten times: 10^20 clips in a small file.
std::string multiplied() {
    std::string text =
        R"({"OTIO_SCHEMA":"Track.1","OTIO_REF_ID":"0","children":[)" + clip("A", 0, 1) + "]}";
    for (int level = 1; level <= 20; ++level) {
        const std::string below =
            format(R"({"OTIO_SCHEMA":"SerializableObjectRef.1","id":"%d"})", level - 1);
        text += format(R"(,{"OTIO_SCHEMA":"Track.1","OTIO_REF_ID":"%d","children":[)", level) +
                join(std::vector(10, below), ",") + "]}";
    }
    return timeline(text);
}

// A collection that holds itself.
const std::string kItself = R"({"OTIO_SCHEMA":"SerializableCollection.1","OTIO_REF_ID":"a",)"
                            R"("children":[{"OTIO_SCHEMA":"SerializableObjectRef.1","id":"a"}]})";

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
        {"a rate of 0", withTime("1", "0"), duration, "rate 0"},
        {"a negative rate", withTime("1", "-24"), duration, "rate -24"},
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
        {"references to oneself", kItself, "t.otio", ""},
        {"references that multiply", multiplied(), "t.otio", "references repeat"},
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

} // namespace
