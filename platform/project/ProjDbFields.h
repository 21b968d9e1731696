// Looking through the project database by one field.
#pragma once

#include "platform/base/Export.h"
#include "platform/project/ProjDbRecord.h"

#include <functional>
#include <string>
#include <string_view>

namespace projdb {

// Calls `visit` with the cookie and the text of each record that has a text in the field, in the
// order of insertion, until it answers false; the text holds until the visitor returns. As
// `projdb::forEach`, but which records have "tags" or a "parent" is known in memory: where few do,
// only those are read.
CUTROOM_API void
forEachHaving(std::string_view field,
              const std::function<bool(const Cookie& asset, const std::string& text)>& visit);

} // namespace projdb
