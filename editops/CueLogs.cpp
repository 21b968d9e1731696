#include "editops/CueLogs.h"

#include "editops/CueRegions.h"
#include "editops/RangeCopy.h"
#include "platform/host/StringTable.h"
#include "platform/project/ProjDb.h"
#include "platform/store/Edit.h"

namespace {

// Only blanks; other white space belongs to the name.
std::wstring withoutBlanks(const std::wstring& text) {
    const auto first = text.find_first_not_of(L' ');
    if (first == text.npos)
        return {};
    return text.substr(first, text.find_last_not_of(L' ') - first + 1);
}

// Compares over the length of `name` alone, so every beginning of the default name is one.
bool beginsDefaultName(const std::wstring& name) {
    const std::wstring byDefault = resourceStrW(cutroom::kResDefaultCueName) + L' ';
    return cutroom::toLower(byDefault.substr(0, name.size())) == cutroom::toLower(name);
}

Cookie makeLog(eLogType logType, const EditPtr& edit, const NamedRegion& region) {
    EditModule module(edit);
    module.markAllAt(region.range, true);
    const EditModifier log = copyRange(module, logType, false);
    if (!log)
        return {};
    log->setCues(CueList());
    const std::wstring name = withoutBlanks(region.name);
    if (!name.empty() && !beginsDefaultName(name))
        log->setName(name);
    log->addModification(kModMetadata, true);
    return log.getCookie();
}

CookieVec makeLogs(eLogType logType, const EditPtr& edit, const std::vector<NamedRegion>& regions) {
    CookieVec made;
    if (!edit || regions.empty())
        return made;
    const ProjDbModificationCoalescer together;
    for (const NamedRegion& region : regions)
        if (const Cookie log = makeLog(logType, edit, region); log.valid())
            made.push_back(log);
    return made;
}

} // namespace

CookieVec makeLogsUsingCuePoints(eLogType logType, const EditModule& module) {
    return makeLogs(logType, module.getEdit(), getRegionsFromCues(module.getEdit()));
}

CookieVec makeLogsUsingCuePoints(eLogType logType, const EditPtr& edit,
                                 const std::vector<Cue>& cues) {
    return makeLogs(logType, edit, cutroom::regionsOf(cues));
}
