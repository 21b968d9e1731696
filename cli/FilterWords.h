// Project filters as words of a command or a session's line, as text for a person and as JSON.
#pragma once

#include "cli/SessionWords.h"
#include "filters/ProjectFilterManager.h"
#include "platform/base/Status.h"

#include <string>
#include <string_view>
#include <vector>

namespace cutroom::cli {

using FilterPtr = Kv::Ptr<iProjectFilter>;

// The filter of that cookie, or of that name when it is the only one; else `notFound` with the
// candidates. The second form finds the user's only, and fails with `wrongUsage` for others.
Result<FilterPtr> findFilter(std::string_view text);
Result<Kv::Ptr<UserFilter>> findUserFilter(std::string_view text);
// Fails when another filter has the name, which is that of the visibility's preference too.
Status checkFilterName(const std::wstring& name, const Cookie& besides = {});
// Both fail when the change cannot be saved; why has been logged. The first also checks the name.
Status renameFilter(std::string_view text, const std::wstring& name);
Status deleteFilter(const Kv::Ptr<UserFilter>& filter);
// The name of a filter or of one of its bins; the cookie's text for what is neither.
std::string filterName(const Cookie& cookie);
// A bin of the project, or a result bin of a filter by its cookie, filled.
Result<Kv::Ptr<BinData>> findAnyBin(std::string_view text);
// A copy of each bin of the project, or of each result bin of a filter, that is named.
Result<FilterBins> filterBinsOf(const std::vector<std::string>& sources);

// "always", "optional", "never"; "any", "all", "first"; `wrongUsage` for others.
Result<iProjectFilter::eVisibility> visibilityOf(const std::string& word);
Result<eSetOperation> setOperationOf(const std::string& word);

// Every filter, a line or an object each; fills none.
std::string listFilters(bool json);
// One with its bins and what they hold.
std::string showFilter(const iProjectFilter& filter, bool json);

} // namespace cutroom::cli
