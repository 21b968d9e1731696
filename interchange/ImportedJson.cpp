#include "interchange/ImportedJson.h"

#include "platform/base/Strings.h"
#include "platform/files/JsonBuilder.h"
#include "platform/files/JsonElement.h"

#include <algorithm>

namespace cutroom {

void ImportedJson::addKey(std::string_view key) {
    text_ += text_.empty() ? "{\"" : ",\"";
    text_ += key;
    text_ += "\":";
}

void ImportedJson::add(std::string_view key, std::string_view text) {
    if (text.empty())
        return;
    addKey(key);
    text_ += '"';
    JSON::appendEscaped(text_, text);
    text_ += '"';
}

void ImportedJson::add(std::string_view key, double number) {
    addKey(key);
    text_ += toText(number);
}

void ImportedJson::addBool(std::string_view key, bool value) {
    addKey(key);
    text_ += value ? "true" : "false";
}

void ImportedJson::addRaw(std::string_view key, std::string_view json) {
    if (json.empty())
        return;
    addKey(key);
    text_ += json;
}

std::string ImportedJson::take() {
    if (!text_.empty())
        text_ += '}';
    return std::move(text_);
}

namespace {

// One past the value that begins at `at`: a string, an object or array, or a bare word.
std::size_t endOfValue(std::string_view text, std::size_t at) {
    int depth = 0;
    for (bool quoted = false; at < text.size(); ++at) {
        const char c = text[at];
        if (quoted) {
            if (c == '\\')
                ++at;
            else if (c == '"')
                quoted = false;
            if (!quoted && depth == 0)
                return at + 1;
        } else if (c == '"') {
            quoted = true;
        } else if (c == '{' || c == '[') {
            ++depth;
        } else if (c == '}' || c == ']') {
            if (depth == 0)
                return at;
            if (--depth == 0)
                return at + 1;
        } else if (c == ',' && depth == 0) {
            return at;
        }
    }
    return at;
}

std::size_t skipBlanks(std::string_view text, std::size_t at) {
    return std::min(text.find_first_not_of(" \t\r\n", at), text.size());
}

// Takes key and value of the next member; false at the end and for what is no object.
bool nextMember(std::string_view text, std::size_t& at, std::string_view& key,
                std::string_view& value) {
    at = skipBlanks(text, at);
    if (at >= text.size() || (text[at] != ',' && text[at] != '{'))
        return false;
    at = skipBlanks(text, at + 1);
    if (at >= text.size() || text[at] != '"')
        return false;
    const std::size_t keyEnd = endOfValue(text, at);
    key = text.substr(at + 1, keyEnd - at - 2);
    at = skipBlanks(text, skipBlanks(text, keyEnd) + 1);
    const std::size_t end = endOfValue(text, at);
    value = trim(text.substr(at, end - at));
    at = end;
    return true;
}

} // namespace

std::string_view importedMember(std::string_view object, std::string_view key) {
    std::string_view found;
    std::string_view value;
    for (std::size_t at = 0; nextMember(object, at, found, value);)
        if (found == key)
            return value == "null" ? std::string_view() : value;
    return {};
}

void forEachImported(
    std::string_view object,
    const std::function<void(std::string_view key, std::string_view text)>& visit) {
    std::string_view key;
    std::string_view value;
    for (std::size_t at = 0; nextMember(object, at, key, value);)
        visit(key, value);
}

void forEachImportedEntry(std::string_view array,
                          const std::function<void(std::string_view text)>& visit) {
    if (!array.starts_with('[')) // files may have anything where a list is due
        return;
    std::size_t at = 1;
    while ((at = skipBlanks(array, at)) < array.size() && array[at] != ']') {
        const std::size_t end = endOfValue(array, at);
        visit(trim(array.substr(at, end - at)));
        at = skipBlanks(array, end);
        at += at < array.size() && array[at] == ',';
    }
}

std::string importedText(std::string_view object, std::string_view key) {
    const std::string_view value = importedMember(object, key);
    if (value.size() < 2 || value.front() != '"')
        return {};
    const std::string_view inside = value.substr(1, value.size() - 2);
    if (inside.find('\\') == inside.npos)
        return std::string(inside);
    const auto read = JSON::Element::parse(value, {});
    return read ? std::string((*read)->text()) : std::string();
}

std::optional<double> importedNumber(std::string_view object, std::string_view key) {
    return parseDouble(importedMember(object, key));
}

} // namespace cutroom
