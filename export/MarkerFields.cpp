#include "export/MarkerFields.h"

#include <set>

namespace cutroom {

std::vector<MarkerField> markerFields() {
    std::set<std::string> taken{"name", "description", "in", "out", "colour"};
    std::vector<MarkerField> fields;
    for (const auto& [key, displayName] : Cue::getCustomMetadataDefinitions()) {
        std::string name = key;
        for (int n = 2; !taken.insert(name).second; ++n)
            name = key + ' ' + std::to_string(n);
        fields.push_back({key, name});
    }
    return fields;
}

} // namespace cutroom
