// Where the files of the open project lie. Every name is made of a cookie's text form, which holds
// letters, digits and a point only, so nothing read from a file names a path outside the folder.
//
//   project.json  project.db  permissions.json
//   edits/<cookie>.edit              edits and logs
//   groups/<cookie>.bin              bins and sync groups, the bins cache; groups/Filters/
//   documents/<cookie>.KvDoc         associations/<cookie>.AssetGroup
#pragma once

#include "platform/base/Cookie.h"
#include "platform/base/Export.h"
#include "platform/base/Strings.h"

// All give the empty text while no project is open. Any thread.
CUTROOM_API LightweightString<wchar_t> getProjectDirectory();
CUTROOM_API LightweightString<wchar_t> getProjectEditsDirectory();
CUTROOM_API LightweightString<wchar_t> getProjectGroupsDirectory();
CUTROOM_API LightweightString<wchar_t> getProjectDocumentsDirectory();
CUTROOM_API LightweightString<wchar_t> getProjectAssociationsDirectory();

// The file of an edit or log ('E'), bin ('G'), sync group ('M') or document ('D', 'A'); empty for
// every other kind.
CUTROOM_API LightweightString<wchar_t> getFilenameForCookie(const Cookie& cookie);
// The file of the bin or sync group `group`, in `directory` (null: the project's groups directory).
// `project` must be the open project's cookie or invalid, else the result is empty.
CUTROOM_API LightweightString<wchar_t>
getFileNameForLogGroup(const Cookie& group, const wchar_t* directory, const Cookie& project);

namespace cutroom {

// `folder` and `name` joined by one '/'.
CUTROOM_API LightweightString<wchar_t> joinPath(const LightweightString<wchar_t>& folder,
                                                const LightweightString<wchar_t>& name);

// The kinds of cookie that name edits, bins, sync groups and documents, and their extensions.
inline constexpr char kEditExtension[] = "edit";
inline constexpr char kBinExtension[] = "bin";
inline constexpr char kDocumentExtension[] = "KvDoc";
inline constexpr char kAssociationExtension[] = "AssetGroup";

// What the head of an edit's file says: its kind, and the latest version that is known here.
inline constexpr char kEditKind[] = "edit";
inline constexpr unsigned kEditVersion = 1;

} // namespace cutroom
