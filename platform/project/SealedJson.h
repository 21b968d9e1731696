// JSON files that carry their format, version and checksum, and keep members that they do not know.
//
// The checksum (CRC-32, ISO 3309) stands in the first member, "checksum", as 8 hex digits, and
// covers the whole text with those digits as 0. A file without it is taken as written by hand.
#pragma once

#include "platform/base/Status.h"
#include "platform/files/JsonBuilder.h"
#include "platform/files/JsonElement.h"

#include <functional>
#include <initializer_list>
#include <string>
#include <string_view>

namespace cutroom {

class SealedJson {
public:
    // Writes a file of that format: `write` adds the members to the open object; then the members
    // of `former` (may be empty) whose keys are not among `known` are added as they were. `failed`
    // and nothing written when there is more than `load` takes; else as writeFile.
    static Status save(const std::string& path, std::string_view format, int version,
                       const std::function<void(JSON::Builder&)>& write,
                       const Kv::Ptr<JSON::Element>& former,
                       std::initializer_list<std::string_view> known);
    // Reads a file. `damaged` for ill-formed JSON, a wrong checksum or another format, `failed` for
    // a version above `newestVersion`, `notFound` when it is not there.
    static Result<Kv::Ptr<JSON::Element>> load(const std::string& path, std::string_view format,
                                               int newestVersion);
};

} // namespace cutroom
