// Pieces of OTIO text for tests; times are frames at 24 unless a rate is given.
#pragma once

#include "interchange/OtioReader.h"
#include "platform/base/Strings.h"

#include <gtest/gtest.h>

#include <string>

namespace otiotext {

inline std::string time(double value, const std::string& rate = "24") {
    return R"({"OTIO_SCHEMA":"RationalTime.1","value":)" + cutroom::toText(value) + R"(,"rate":)" +
           rate + "}";
}

inline std::string range(double start, double duration, const std::string& rate = "24") {
    return R"({"OTIO_SCHEMA":"TimeRange.1","start_time":)" + time(start, rate) + R"(,"duration":)" +
           time(duration, rate) + "}";
}

// An object of a schema with a name and more members, given as JSON text.
inline std::string object(const std::string& schema, const std::string& name,
                          const std::string& members = {}) {
    return R"({"OTIO_SCHEMA":")" + schema + R"(","name":")" + name + "\"" +
           (members.empty() ? "" : "," + members) + "}";
}

inline std::string item(const std::string& schema, const std::string& name, double start,
                        double duration, const std::string& members = {},
                        const std::string& rate = "24") {
    return object(schema, name,
                  "\"source_range\":" + range(start, duration, rate) +
                      (members.empty() ? "" : "," + members));
}

inline std::string clip(const std::string& name, double start, double duration,
                        const std::string& members = {}, const std::string& rate = "24") {
    return item("Clip.2", name, start, duration, members, rate);
}

inline std::string transition(double in, double out) {
    return object("Transition.1", "t",
                  R"("transition_type":"SMPTE_Dissolve","in_offset":)" + time(in) +
                      R"(,"out_offset":)" + time(out));
}

inline std::string marker(const std::string& name, double start, double duration = 0) {
    return object("Marker.2", name, R"("color":"RED","marked_range":)" + range(start, duration));
}

inline std::string children(const std::string& list) { return "\"children\":[" + list + "]"; }
inline std::string markers(const std::string& list) { return "\"markers\":[" + list + "]"; }

inline std::string track(const std::string& list, const std::string& members = {}) {
    return object("Track.1", "V",
                  R"("kind":"Video",)" + children(list) + (members.empty() ? "" : "," + members));
}

// A timeline with these tracks.
inline std::string timeline(const std::string& tracks, const std::string& start = "null") {
    return object("Timeline.1", "T",
                  "\"global_start_time\":" + start +
                      ",\"tracks\":" + object("Stack.1", "S", children(tracks)));
}

inline cutroom::Timeline read(const std::string& text) {
    auto all = cutroom::readOtio(text, "t.otio");
    EXPECT_TRUE(all.ok()) << all.status().text();
    return all.ok() ? std::move(all->front()) : cutroom::Timeline();
}

inline std::int64_t frames(const cutroom::Timeline& timeline, cutroom::Flicks time) {
    return timeline.rate.rate.flicksToFrameNearest(time);
}

// "A 0+10 @5, G 10+3 @0 | B 0+3 @0": what each track holds, in frames, those of sources at theirs.
inline std::string layout(const cutroom::Timeline& timeline) {
    std::string text;
    for (const cutroom::Track& track : timeline.tracks) {
        text += &track == &timeline.tracks.front() ? "" : " | ";
        for (const cutroom::Item& each : track.items)
            text += cutroom::format(
                "%s%s %lld+%lld @%.0f", &each == &track.items.front() ? "" : ", ",
                each.name.c_str(), static_cast<long long>(frames(timeline, each.start)),
                static_cast<long long>(frames(timeline, each.duration)),
                cutroom::toSeconds(each.sourceStart) *
                    (each.sourceRate.valid() ? each.sourceRate.rate.asDouble() : 24));
    }
    return text;
}

} // namespace otiotext
