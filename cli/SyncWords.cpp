#include "cli/SyncWords.h"

#include <algorithm>

namespace cutroom::cli {

// In the order of their numbers.
const std::vector<std::string>& syncRuleNames() {
    static const std::vector<std::string> names = {"picture", "common", "union", "sound"};
    return names;
}

eSyncRule syncRule(const std::string& name) {
    const auto& names = syncRuleNames();
    return static_cast<eSyncRule>(std::find(names.begin(), names.end(), name) - names.begin());
}

Result<UserLabelSpec> parseLabelSpec(const std::string& text) {
    if (const auto spec = UserLabelSpec::fromString(text))
        return *spec;
    return Status(StatusCode::wrongUsage, text, "a label is TYPE.MEDIUM.ROLL, such as 3.2.1");
}

} // namespace cutroom::cli
