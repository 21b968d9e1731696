#include "export/MarkerFields.h"

#include "export/FreeNames.h"

namespace cutroom {

std::vector<MarkerField> markerFields() {
    FreeNames names({"name", "description", "in", "out", "colour"});
    std::vector<MarkerField> fields;
    for (const auto& [key, displayName] : Cue::getCustomMetadataDefinitions())
        fields.push_back({key, names.take(key)});
    return fields;
}

} // namespace cutroom
