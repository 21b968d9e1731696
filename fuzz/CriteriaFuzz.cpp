// Any bytes as search criteria. What is read is written again, is then read as the same, and can be
// told in words and held against a record.
#include "filters/ProjectSearch.h"

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using Criteria = ProjectSearch::Criteria;
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    const auto object = JSON::Element::parse(text, "fuzz.criteria");
    if (!object.ok())
        return 0;
    const auto read = Criteria::from(**object, "fuzz.criteria");
    if (!read.ok())
        return 0;
    const auto once = read->asText();
    if (!once.ok())
        return 0;
    const auto again = JSON::Element::parse(*once, "again.criteria");
    const auto back = again.ok() ? Criteria::from(**again, "again.criteria")
                                 : cutroom::Result<Criteria>(again.status());
    if (!back.ok() || *back->asText() != *once || ProjectSearch::makeName(*back, true).empty())
        __builtin_trap();
    projdb::Record record;
    record.attributes = {{"name", "Tide at dawn"}};
    if (projdb::matchRecord(record, *read) != projdb::matchRecord(record, *back))
        __builtin_trap();
    return 0;
}
