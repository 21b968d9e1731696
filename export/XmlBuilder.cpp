#include "export/XmlBuilder.h"

#include "export/WideText.h"
#include "platform/base/Characters.h"
#include "platform/base/Strings.h"

#include <algorithm>
#include <cassert>

namespace cutroom {

namespace {

constexpr std::size_t kIndent = 4;

bool isPlain(wchar_t c) noexcept {
    return (c >= L' ' && c < 0x80 && c != L'&' && c != L'<' && c != L'>') || c == L'\n' ||
           c == L'\t';
}

// A carriage return is read as a line feed unless it is written as a reference. Other control
// characters, and U+FFFE and U+FFFF, cannot be written at all.
void appendSpecial(std::string& out, wchar_t c) {
    switch (c) {
    case L'&':
        out += "&amp;";
        return;
    case L'<':
        out += "&lt;";
        return;
    case L'>':
        out += "&gt;";
        return;
    case L'\r':
        out += "&#13;";
        return;
    default:
        appendChar(out, c < L' ' || c == 0xFFFE || c == 0xFFFF ? L'\uFFFD' : c);
    }
}

void appendText(std::string& out, std::wstring_view text) {
    appendMapped(out, text, isPlain, [&out](wchar_t c) { appendSpecial(out, c); });
}

// A text between double quotes, where white space would be read as blanks.
void appendQuoted(std::string& out, std::wstring_view text) {
    for (const wchar_t c : text)
        if (c == L'"')
            out += "&quot;";
        else if (c == L'\n')
            out += "&#10;";
        else if (c == L'\t')
            out += "&#9;";
        else
            appendText(out, {&c, 1});
}

bool startsName(char c) noexcept { return isLetter(c) || c == '_'; }

bool continuesName(char c) noexcept { return startsName(c) || isDigit(c) || c == '-' || c == '.'; }

bool isName(std::string_view text) noexcept {
    return !text.empty() && startsName(text.front()) &&
           std::all_of(text.begin(), text.end(), continuesName);
}

} // namespace

XmlBuilder::XmlBuilder(std::size_t room) {
    text_.reserve(room);
    text_ = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";
}

void XmlBuilder::indent() { text_.append(open_.size() * kIndent, ' '); }

XmlBuilder::Name XmlBuilder::open(std::string_view name) {
    text_ += '<';
    Name written{text_.size(), name.size()};
    if (isName(name)) {
        text_ += name;
    } else {
        if (name.empty() || !startsName(name.front()))
            text_ += '_';
        for (const char c : name)
            text_ += continuesName(c) ? c : '_';
        written.size = text_.size() - written.at;
        text_ += " key=\"";
        appendQuoted(text_, toWide(name));
        text_ += '"';
    }
    text_ += '>';
    return written;
}

void XmlBuilder::close(const Name& name) {
    text_ += "</";
    text_.append(text_, name.at, name.size);
    text_ += ">\n";
}

void XmlBuilder::begin(std::string_view name) {
    indent();
    const Name written = open(name);
    text_ += '\n';
    open_.push_back(written);
}

void XmlBuilder::end() {
    assert(!open_.empty());
    const Name name = open_.back();
    open_.pop_back();
    indent();
    close(name);
}

void XmlBuilder::add(std::string_view name, std::string_view utf8) { add(name, toWide(utf8)); }

void XmlBuilder::add(std::string_view name, std::wstring_view text) {
    indent();
    const Name written = open(name);
    appendText(text_, text);
    close(written);
}

} // namespace cutroom
