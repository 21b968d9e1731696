// Writes JSON (RFC 8259) as a stream: what is added is formatted at once, nothing is kept twice.
#pragma once

#include "platform/base/Ptr.h"
#include "platform/base/Strings.h"
#include "platform/files/JsonElement.h"

#include <concepts>
#include <string>
#include <string_view>
#include <vector>

namespace JSON {

enum class Layout { compact, indented }; // indented: four blanks a level, "key": value
// What becomes of infinities and NaN, which JSON lacks: null, or the bare words that some programs
// write and read (NaN, Infinity, -Infinity).
enum class NonFinite { asNull, asWord };

// In an object every value is added with its key, in an array (and at the top) without. Mixing
// these up, or ending what was not begun, is a programming error (asserted). Text that is not
// well-formed UTF-8 is written with U+FFFD for each bad part. Doubles are written in the shortest
// form that reads back exactly. The same bytes in every locale. One thread at a time.
class CUTROOM_API Builder {
public:
    explicit Builder(Layout layout = Layout::indented, NonFinite nonFinite = NonFinite::asNull);

    void beginObject();
    void beginObject(std::string_view key);
    void endObject();
    void beginArray();
    void beginArray(std::string_view key);
    void endArray();

    // A member of the current object.
    void add(std::string_view key, std::string_view value);
    void add(std::string_view key, std::wstring_view value);
    void add(std::string_view key, const char* value) { add(key, std::string_view(value)); }
    void add(std::string_view key, const wchar_t* value) { add(key, std::wstring_view(value)); }
    void add(std::string_view key, double value);
    template <std::integral T> void add(std::string_view key, T value) {
        writeKey(key);
        integer(value);
    }
    void addNull(std::string_view key);
    // A copy of a value that was read, numbers as their text.
    void add(std::string_view key, const Element& value);

    // An entry of the current array, or the whole text.
    void add(std::string_view value);
    void add(std::wstring_view value);
    void add(const char* value) { add(std::string_view(value)); }
    void add(const wchar_t* value) { add(std::wstring_view(value)); }
    void add(double value);
    template <std::integral T> void add(T value) {
        writeKey();
        integer(value);
    }
    void addNull();
    void add(const Element& value);

    // True when everything begun was ended and something was written.
    bool complete() const noexcept { return stack_.empty() && !text_.empty(); }
    // What was written so far; indented text ends with a line feed once complete.
    const std::string& text() const noexcept { return text_; }
    std::string take() { return std::move(text_); }
    void reserve(std::size_t bytes) { text_.reserve(bytes); }

private:
    struct Level {
        bool object;
        bool empty;
    };
    template <std::integral T> void integer(T value) {
        if constexpr (std::same_as<T, bool>)
            writeBool(value);
        else if constexpr (std::signed_integral<T>)
            writeInt(value);
        else
            writeUnsigned(value);
    }
    void writeKey(std::string_view key); // separator and key, inside an object
    void writeKey();                     // separator alone, elsewhere
    void separate();
    void begin(char bracket);
    void end(char bracket);
    void lineBreak(std::size_t levels);
    void quoted(std::string_view value);
    void writeDouble(double value);
    void writeBool(bool value);
    void writeInt(long long value);
    void writeUnsigned(unsigned long long value);
    void writeElement(const Element& value);
    bool writeLeaf(const Cursor& value);

    std::string text_;
    std::vector<Level> stack_;
    const Layout layout_;
    const NonFinite nonFinite_;
};

// `value` with JSON's escapes, without quotes; bad UTF-8 becomes U+FFFD.
CUTROOM_API void appendEscaped(std::string& out, std::string_view value);

} // namespace JSON
