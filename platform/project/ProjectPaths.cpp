#include "platform/project/ProjectPaths.h"

#include "platform/files/Files.h"
#include "platform/project/CurrentProject.h"
#include "platform/project/ProjectLayout.h"

namespace {

LightweightString<wchar_t> inProject(std::string_view folder) {
    const std::string project = CurrentProject::getFolder();
    return project.empty() ? LightweightString<wchar_t>()
                           : cutroom::toWide(cutroom::joinPath(project, folder));
}

LightweightString<wchar_t> fileIn(const LightweightString<wchar_t>& folder, const Cookie& cookie,
                                  const char* extension) {
    if (folder.empty())
        return {};
    return cutroom::joinPath(folder, cookie.asWString() + L"." + cutroom::toWide(extension));
}

} // namespace

LightweightString<wchar_t> getProjectDirectory() {
    return cutroom::toWide(CurrentProject::getFolder());
}
LightweightString<wchar_t> getProjectEditsDirectory() { return inProject(cutroom::kEditsFolder); }
LightweightString<wchar_t> getProjectGroupsDirectory() { return inProject(cutroom::kGroupsFolder); }
LightweightString<wchar_t> getProjectDocumentsDirectory() {
    return inProject(cutroom::kDocumentsFolder);
}
LightweightString<wchar_t> getProjectAssociationsDirectory() {
    return inProject(cutroom::kAssociationsFolder);
}

LightweightString<wchar_t> getFilenameForCookie(const Cookie& cookie) {
    switch (cookie.type()) {
    case 'E':
        return fileIn(getProjectEditsDirectory(), cookie, cutroom::kEditExtension);
    case 'G':
    case 'M':
        return fileIn(getProjectGroupsDirectory(), cookie, cutroom::kBinExtension);
    case 'D':
    case 'A':
        return fileIn(getProjectDocumentsDirectory(), cookie, cutroom::kDocumentExtension);
    default:
        return {};
    }
}

LightweightString<wchar_t> getFileNameForLogGroup(const Cookie& group, const wchar_t* directory,
                                                  const Cookie& project) {
    if (group.type() != 'G' && group.type() != 'M')
        return {};
    if (project.valid() && project != CurrentProject::getCookie())
        return {};
    return fileIn(directory ? LightweightString<wchar_t>(directory) : getProjectGroupsDirectory(),
                  group, cutroom::kBinExtension);
}

namespace cutroom {

LightweightString<wchar_t> joinPath(const LightweightString<wchar_t>& folder,
                                    const LightweightString<wchar_t>& name) {
    if (folder.empty() || folder.back() == L'/')
        return folder + name;
    return folder + L"/" + name;
}

} // namespace cutroom
