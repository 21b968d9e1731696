#include "platform/files/JsonBuilder.h"

#include <cassert>
#include <cmath>

namespace JSON {

namespace {

constexpr std::size_t kIndent = 4;

void appendEscapedByte(std::string& out, char c) {
    switch (c) {
    case '"':
        out += "\\\"";
        break;
    case '\\':
        out += "\\\\";
        break;
    case '\n':
        out += "\\n";
        break;
    case '\r':
        out += "\\r";
        break;
    case '\t':
        out += "\\t";
        break;
    case '\b':
        out += "\\b";
        break;
    case '\f':
        out += "\\f";
        break;
    default: {
        constexpr char kDigits[] = "0123456789abcdef";
        const auto byte = static_cast<unsigned char>(c);
        const char code[] = {'\\', 'u', '0', '0', kDigits[byte >> 4], kDigits[byte & 15]};
        out.append(code, sizeof code);
    }
    }
}

bool needsEscape(char c) { return static_cast<unsigned char>(c) < 0x20 || c == '"' || c == '\\'; }

bool isNumberWord(std::string_view text) {
    return text.find_first_of("nN") != std::string_view::npos;
}

} // namespace

void appendEscaped(std::string& out, std::string_view value) {
    if (!cutroom::isUtf8(value)) {
        appendEscaped(out, cutroom::toUtf8(cutroom::toWide(value)));
        return;
    }
    std::size_t plain = 0;
    for (std::size_t i = 0; i < value.size(); ++i) {
        if (!needsEscape(value[i]))
            continue;
        out.append(value, plain, i - plain);
        appendEscapedByte(out, value[i]);
        plain = i + 1;
    }
    out.append(value, plain);
}

Builder::Builder(Layout layout, NonFinite nonFinite) : layout_(layout), nonFinite_(nonFinite) {}

void Builder::lineBreak(std::size_t levels) {
    if (layout_ == Layout::compact)
        return;
    text_ += '\n';
    text_.append(levels * kIndent, ' ');
}

void Builder::separate() {
    if (stack_.empty())
        return;
    if (!stack_.back().empty)
        text_ += ',';
    stack_.back().empty = false;
    lineBreak(stack_.size());
}

void Builder::writeKey(std::string_view key) {
    assert(!stack_.empty() && stack_.back().object);
    separate();
    quoted(key);
    text_ += layout_ == Layout::compact ? ":" : ": ";
}

void Builder::writeKey() {
    assert(stack_.empty() ? text_.empty() : !stack_.back().object);
    separate();
}

void Builder::begin(char bracket) {
    text_ += bracket;
    stack_.push_back({bracket == '{', true});
}

void Builder::end(char bracket) {
    assert(!stack_.empty() && stack_.back().object == (bracket == '}'));
    const bool empty = stack_.back().empty;
    stack_.pop_back();
    if (!empty)
        lineBreak(stack_.size());
    text_ += bracket;
    if (stack_.empty() && layout_ == Layout::indented)
        text_ += '\n';
}

void Builder::beginObject() {
    writeKey();
    begin('{');
}
void Builder::beginObject(std::string_view key) {
    writeKey(key);
    begin('{');
}
void Builder::endObject() { end('}'); }
void Builder::beginArray() {
    writeKey();
    begin('[');
}
void Builder::beginArray(std::string_view key) {
    writeKey(key);
    begin('[');
}
void Builder::endArray() { end(']'); }

void Builder::quoted(std::string_view value) {
    text_ += '"';
    appendEscaped(text_, value);
    text_ += '"';
}

void Builder::writeDouble(double value) {
    if (std::isfinite(value))
        text_ += cutroom::toText(value);
    else if (nonFinite_ == NonFinite::asNull)
        text_ += "null";
    else if (std::isnan(value))
        text_ += "NaN";
    else
        text_ += value < 0 ? "-Infinity" : "Infinity";
}

void Builder::writeBool(bool value) { text_ += value ? "true" : "false"; }
void Builder::writeInt(long long value) { text_ += cutroom::toText(value); }
void Builder::writeUnsigned(unsigned long long value) { text_ += cutroom::toText(value); }

// Writes a value that holds no others; false for an array or object.
bool Builder::writeLeaf(const Cursor& value) {
    const Kind kind = value.kind();
    if (kind == Kind::array || kind == Kind::object)
        return false;
    if (kind == Kind::string)
        quoted(value.text());
    else if (kind == Kind::number && nonFinite_ == NonFinite::asNull && isNumberWord(value.text()))
        text_ += "null";
    else
        text_ += value.text();
    return true;
}

// Walks without recursion: what was read may be nested as deep as its reader let it.
void Builder::writeElement(const Element& value) {
    std::vector<Cursor> open; // what is next at each level
    const auto write = [&](const Cursor& one) {
        if (writeLeaf(one))
            return;
        begin(one.kind() == Kind::object ? '{' : '[');
        open.push_back(Cursor::childrenOf(one));
    };
    write(Cursor::at(value));
    while (!open.empty()) {
        const bool object = stack_.back().object;
        const Cursor one = open.back();
        if (!one) {
            end(object ? '}' : ']');
            open.pop_back();
            continue;
        }
        open.back().next();
        if (object)
            writeKey(one.key());
        else
            writeKey();
        write(one);
    }
}

void Builder::add(std::string_view key, std::string_view value) {
    writeKey(key);
    quoted(value);
}
void Builder::add(std::string_view key, std::wstring_view value) {
    add(key, cutroom::toUtf8(value));
}
void Builder::add(std::string_view key, double value) {
    writeKey(key);
    writeDouble(value);
}
void Builder::addNull(std::string_view key) {
    writeKey(key);
    text_ += "null";
}
void Builder::add(std::string_view key, const Element& value) {
    writeKey(key);
    writeElement(value);
}

void Builder::add(std::string_view value) {
    writeKey();
    quoted(value);
}
void Builder::add(std::wstring_view value) { add(cutroom::toUtf8(value)); }
void Builder::add(double value) {
    writeKey();
    writeDouble(value);
}
void Builder::addNull() {
    writeKey();
    text_ += "null";
}
void Builder::add(const Element& value) {
    writeKey();
    writeElement(value);
}

} // namespace JSON
