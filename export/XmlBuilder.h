// Writes XML 1.0 (W3C, fifth edition) as a stream.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace cutroom {

// Every text gives a document that a parser takes: characters that XML has no way to write become
// U+FFFD. Names of elements may be any text; what they cannot hold becomes "_" and the name itself
// stands in the attribute "key". Elements stand in lines of their own, four blanks a level.
class XmlBuilder {
public:
    // Begins with the declaration, in UTF-8. `room`: the bytes to reserve, so that a long text is
    // not copied while it grows.
    explicit XmlBuilder(std::size_t room = 0);

    // An element with elements in it.
    void begin(std::string_view name);
    void end();
    // An element with text alone.
    void add(std::string_view name, std::string_view utf8);
    void add(std::string_view name, std::wstring_view text);

    std::string take() { return std::move(text_); }

private:
    void indent();
    // Opens an element; gives where its name stands in `text_`, to close it by.
    struct Name {
        std::size_t at = 0;
        std::size_t size = 0;
    };
    Name open(std::string_view name);
    void close(const Name& name);

    std::string text_;
    std::vector<Name> open_;
};

} // namespace cutroom
