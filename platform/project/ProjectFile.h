// `cutroom::ProjectFile`: what project.json holds.
#pragma once

#include "platform/base/Cookie.h"
#include "platform/base/Status.h"
#include "platform/files/JsonElement.h"
#include "platform/project/CurrentProject.h"
#include "platform/project/LogAttribute.h"

#include <string>
#include <vector>

namespace cutroom {

// A value; described in docs/formats/project.md.
struct ProjectFile {
    Cookie id; // of kind 'P'
    LightweightString<wchar_t> name;
    ProjectDefaults defaults;
    std::vector<LogAttribute> customAttributes; // in the order of their numbers, without gaps
    Kv::Ptr<JSON::Element> former;              // as read, for the members that are not known here

    // Reads a file. `damaged` also when a member has a value that it cannot have.
    static Result<ProjectFile> load(const std::string& path);
    // Writes it crash-safely.
    Status save(const std::string& path) const;
};

// Tells whether `id` can name an attribute of a project: 1 to 64 bytes of UTF-8 without control
// characters.
bool isAttributeID(const std::string& id);
// Tells whether `name` is a plain file name: not empty, no '/', no null, neither "." nor "..".
bool isPlainFileName(const std::string& name);

} // namespace cutroom
