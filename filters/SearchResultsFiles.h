// The names of the files in which search results are kept. Internal to this folder.
#pragma once

#include "platform/base/Status.h"
#include "platform/base/Strings.h"

#include <string>

namespace cutroom {

// "<name>.criteria".
std::string criteriaFile(const LightweightString<wchar_t>& name);
// Refuses a name that cannot be a file's: `wrongUsage`.
Status checkCriteriaName(const LightweightString<wchar_t>& name);
// A name that can be a file's, as close to `name` as possible.
std::wstring plainCriteriaName(const LightweightString<wchar_t>& name);

} // namespace cutroom
