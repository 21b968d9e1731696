// One OTIO file while it is read: its objects by schema, where in it the reader is, what went
// wrong.
#pragma once

#include "interchange/Timeline.h"
#include "platform/base/Status.h"
#include "platform/files/JsonElement.h"

#include <initializer_list>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace cutroom::otio {

using Json = Kv::Ptr<JSON::Element>;

// The name of an object's schema in its newest spelling ("Track" for "Sequence.1"); empty for what
// is no object or names none.
std::string_view schemaOf(const Json& object);

// Where the reader is: a chain of keys and indices on the stack of the calls.
struct Place {
    const Place* above = nullptr;
    std::string_view key;
    std::size_t index = 0; // counts when `key` is empty

    Place at(std::string_view member) const { return {this, member, 0}; }
    Place at(std::size_t child) const { return {this, {}, child}; }
    // "tracks.children[0].source_range"; "the root" for the root.
    std::string text() const;
};

// Times, the document's references and the first failure. After a failure the reader goes on with
// zeroes until it returns, and what it made is thrown away.
class Document {
public:
    // `bytes` is the text that `root` was read from.
    Document(Json root, std::string file, std::string_view bytes);

    const Json& root() const { return root_; }
    const std::string& file() const { return file_; }
    bool failed() const { return !failure_.ok(); }
    const Status& failure() const { return failure_; }
    void fail(const Place& place, const std::string& reason);

    // Adds a warning unless it is there; at most a hundred.
    void warn(const std::string& text);
    std::vector<std::string> takeWarnings() { return std::move(warnings_); }

    // The member under `key`, a reference to another object followed. Null counts as none.
    Json member(const Json& object, std::string_view key) const;
    Json follow(Json value) const;

    // Counts one more item; false, with a failure, when references blow the document up or it
    // refers to itself.
    bool mayAdd(const Place& place);

    // The JSON text of a value; empty for none, null, and an empty object or array.
    std::string raw(const Json& value, const Place& place);
    // Counts JSON text that is kept, against references that repeat it without end.
    std::string keep(std::string text, const Place& place);
    class Level; // one composition inside another

private:
    void collectReferences(const Json& value);

    Json root_;
    std::string file_;
    Status failure_;
    std::vector<std::string> warnings_;
    std::map<std::string, Json, std::less<>> byId_;
    std::size_t itemsLeft_;
    std::size_t textLeft_;
    int levels_ = 0;
};

// Counts compositions inside one another for its own lifetime; false when there are too many.
class Document::Level {
public:
    Level(Document& document, const Place& place) : document_(document) {
        if (++document_.levels_ > 64)
            document_.fail(place, "compositions inside one another too deep");
    }
    Level(const Level&) = delete;
    Level& operator=(const Level&) = delete;
    ~Level() { --document_.levels_; }
    explicit operator bool() const { return !document_.failed(); }

private:
    Document& document_;
};

// A time as read: seconds are value / rate.
struct Time {
    double value = 0;
    RateRead rate;
    Flicks flicks = 0;
};

struct Range {
    Time start;
    Time duration;

    Span span() const { return {start.flicks, duration.flicks}; }
};

// A RationalTime; nothing for null or a missing one. NaN, infinite and absurd times and rates of 0
// or less fail.
std::optional<Time> readTime(Document& document, const Json& object, std::string_view key,
                             const Place& place);
// A TimeRange; a negative duration fails.
std::optional<Range> readRange(Document& document, const Json& object, std::string_view key,
                               const Place& place);

// The members of `object` whose keys are not among `known`, as the JSON text of an object.
std::string otherMembers(Document& document, const Json& object, const Place& place,
                         std::initializer_list<std::string_view> known);

// The text of a member that may be null.
std::string textOf(const Document& document, const Json& object, std::string_view key);

} // namespace cutroom::otio
