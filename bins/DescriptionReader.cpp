#include "bins/DescriptionReader.h"

#include <limits>
#include <utility>

namespace cutroom {

DescriptionReader::DescriptionReader(const JSON::Element& from, std::string file)
    : from_(from), file_(std::move(file)) {
    if (!from.isObject())
        status_ = Status(StatusCode::damaged, file_, "holds no JSON object");
}

void DescriptionReader::fail(const char* key, const char* what) {
    if (status_)
        status_ = Status(StatusCode::damaged, file_, "\"" + std::string(key) + "\" " + what);
}

LightweightString<wchar_t> DescriptionReader::text(const char* key) {
    const auto member = from_.find(key);
    if (!member)
        return {};
    if (!member->isString())
        fail(key, "is no text");
    return toWide(member->text());
}

std::uint32_t DescriptionReader::seconds(const char* key) {
    const auto member = from_.find(key);
    if (!member)
        return 0;
    const auto value = member->isNumber() ? member->asUnsigned() : std::nullopt;
    if (!value || *value > std::numeric_limits<std::uint32_t>::max()) {
        fail(key, "is no time in seconds since 1970");
        return 0;
    }
    return static_cast<std::uint32_t>(*value);
}

Cookie DescriptionReader::cookie(const char* key) {
    const auto member = from_.find(key);
    const Cookie value(member && member->isString() ? member->text() : std::string_view());
    if (!value.valid())
        fail(key, member ? "is no cookie" : "is missing");
    return value;
}

std::optional<std::vector<std::string>> DescriptionReader::texts(const char* key) {
    const auto member = from_.find(key);
    if (!member)
        return std::nullopt;
    std::vector<std::string> values;
    if (!member->isArray())
        fail(key, "is no list");
    for (JSON::Cursor item = JSON::Cursor::childrenOf(*member); item; item.next()) {
        if (item.kind() != JSON::Kind::string)
            fail(key, "holds something that is no text");
        values.emplace_back(item.text());
    }
    return values;
}

} // namespace cutroom
