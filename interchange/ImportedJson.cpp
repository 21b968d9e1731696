#include "interchange/ImportedJson.h"

#include "platform/base/Strings.h"
#include "platform/files/JsonBuilder.h"

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

} // namespace cutroom
