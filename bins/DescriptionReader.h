// Reads the members of a description one by one and remembers the first that is not what it should
// be. Internal to this folder.
#pragma once

#include "platform/base/Cookie.h"
#include "platform/base/Status.h"
#include "platform/base/Strings.h"
#include "platform/files/JsonElement.h"

#include <cstdint>
#include <optional>
#include <string>

namespace cutroom {

// A missing member gives the empty value. `from` outlives it.
class DescriptionReader {
public:
    DescriptionReader(const JSON::Element& from, std::string file);

    // A text. In this and the next three, a member of another kind is damage.
    LightweightString<wchar_t> text(const char* key);
    // Seconds since 1970 that fit 32 bits; 0 when missing.
    std::uint32_t seconds(const char* key);
    // A cookie that must be there, and valid.
    Cookie cookie(const char* key);
    // An array of texts; nothing when it is missing.
    std::optional<std::vector<std::string>> texts(const char* key);
    // Remembers damage found by the caller.
    void fail(const char* key, const char* what);

    const Status& status() const noexcept { return status_; }

private:
    const JSON::Element& from_;
    const std::string file_;
    Status status_;
};

} // namespace cutroom
