// Any bytes as a filter file. What is read is written again, and must then be read as the same;
// what is refused says why and changes nothing.
#include "bins/DescriptionFiles.h"
#include "filters/UserFilter.h"

#include <cstddef>
#include <cstdint>

namespace {

cutroom::Status take(UserFilter& filter, std::string_view text) {
    const auto object =
        JSON::Element::parse(text, "fuzz.filter", cutroom::DescriptionFiles::readOptions());
    return object ? filter.take(**object, "fuzz.filter") : object.status();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    const auto filter = Kv::makePtr<UserFilter>(Cookie('F', 1));
    if (const cutroom::Status read = take(*filter, text); !read) {
        if (read.message().empty() || !filter->getName().empty() || !filter->peekResults().empty())
            __builtin_trap();
        return 0;
    }
    const auto once = filter->getFileText();
    const auto again = Kv::makePtr<UserFilter>(Cookie('F', 1));
    if (!once || !take(*again, *once) || again->getFileText().value() != *once)
        __builtin_trap();
    return 0;
}
