// The names of the folders and files of a project.
#pragma once

namespace cutroom {

inline constexpr char kProjectFile[] = "project.json";
inline constexpr char kDatabaseFile[] = "project.db";
inline constexpr char kPermissionsFile[] = "permissions.json";
inline constexpr char kEditsFolder[] = "edits";
inline constexpr char kGroupsFolder[] = "groups";
inline constexpr char kFiltersFolder[] = "groups/Filters";
inline constexpr char kDocumentsFolder[] = "documents";
inline constexpr char kAssociationsFolder[] = "associations";

} // namespace cutroom
