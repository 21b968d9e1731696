// Looking through the project database by one field.
#pragma once

#include "platform/base/Export.h"
#include "platform/project/ProjDbRecord.h"

#include <functional>
#include <string>
#include <string_view>

namespace projdb {

// How the names of new edits begin: "Edit 1".
inline constexpr std::string_view kNewEditName = "Edit ";

using FieldVisitor = std::function<bool(const Cookie& asset, const std::string& text)>;
// Calls `visit` with the cookie and the text of each record that has a text in the field, in the
// order of insertion, until it answers false; the text holds until the visitor returns. As
// `projdb::forEach`, but which records have "tags" or a "parent", or a name that begins with
// `kNewEditName`, is known in memory: where few do, only those are read.
CUTROOM_API void forEachHaving(std::string_view field, const FieldVisitor& visit);
// The same where the text begins so.
CUTROOM_API void forEachHaving(std::string_view field, std::string_view beginning,
                               const FieldVisitor& visit);

} // namespace projdb
