// The text of an OTIO file as it grows. Objects and arrays are indented by four; times, and pieces
// of JSON that are passed through, stand on one line each.
#pragma once

#include "interchange/Timeline.h"

#include <string>
#include <string_view>
#include <vector>

namespace cutroom::otio {

// Like JSON::Builder, with the forms that OTIO repeats and with JSON text that is spliced in as it
// is. Numbers are doubles with a point, as the format's own library writes them. One thread.
class Output {
public:
    // An object of `schema`, as an entry of an array, a member or the root.
    void beginObject(std::string_view schema);
    void beginObject(std::string_view key, std::string_view schema);
    void endObject();
    void beginArray(std::string_view key);
    void endArray();

    void add(std::string_view key, std::string_view text);
    void add(std::string_view key, double number);
    void addBool(std::string_view key, bool value);
    // JSON text as a member, `otherwise` where there is none, or as an entry of an array. The bare
    // words for what is not finite become those that most readers know.
    void addRaw(std::string_view key, std::string_view json, std::string_view otherwise = "null");
    void addRaw(std::string_view json);
    // All members of an object's text.
    void addMembers(std::string_view object);
    // A RationalTime or a TimeRange, exact at the rate.
    void addTime(std::string_view key, Flicks time, const RateRead& rate);
    void addRange(std::string_view key, const Span& range, const RateRead& rate);

    // The whole; to be called when everything begun has ended.
    std::string take();

private:
    void separate();
    void key(std::string_view key);
    void splice(std::string_view json);
    void open(char bracket);
    void close(char bracket);

    std::string text_;
    std::vector<bool> empty_; // of each object and array that is open
};

// A RationalTime and a TimeRange on one line, spaced like what is passed through.
std::string timeText(Flicks time, const RateRead& rate);
std::string timeText(double value, const RateRead& rate);
std::string rangeText(const Span& range, const RateRead& rate);

} // namespace cutroom::otio
