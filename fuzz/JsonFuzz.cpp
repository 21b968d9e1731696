// Any bytes as JSON, strict and tolerant. What is read is written again and must then be read as
// the same.
#include "platform/files/JsonBuilder.h"
#include "platform/files/JsonElement.h"

#include <cstddef>
#include <cstdint>

namespace {

std::string written(const JSON::Element& element) {
    JSON::Builder out(JSON::Layout::compact, JSON::NonFinite::asWord);
    out.add(element);
    return out.take();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0)
        return 0;
    const std::string_view text(reinterpret_cast<const char*>(data) + 1, size - 1);
    JSON::ReadOptions options;
    options.tolerant = data[0] % 2 == 1;
    options.maxDepth = data[0] % 4 >= 2 ? 100'000 : 64;
    const auto read = JSON::Element::parse(text, "fuzz.json", options);
    if (!read.ok())
        return 0;
    const std::string once = written(*read.value());
    const auto again = JSON::Element::parse(once, "again.json", options);
    if (!again.ok() || written(*again.value()) != once)
        __builtin_trap();
    return 0;
}
