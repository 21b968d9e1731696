// How a person says the rules of sync-up, on the command line and in a session.
#pragma once

#include "editops/SyncUpParams.h"
#include "platform/base/Status.h"

#include <string>
#include <vector>

namespace cutroom::cli {

// "picture", "common", "union", "sound": the words of eSyncRule.
const std::vector<std::string>& syncRuleNames();
// `name` is one of them.
eSyncRule syncRule(const std::string& name);
// "3.4.1": type, medium, roll.
Result<UserLabelSpec> parseLabelSpec(const std::string& text);

} // namespace cutroom::cli
