#include "editops/FileCopy.h"

#include "platform/files/Files.h"
#include "platform/project/CurrentProject.h"
#include "platform/project/ProjectPaths.h"
#include "platform/store/CelEventPair.h"
#include "platform/store/Edit.h"
#include "platform/store/EditManager.h"

namespace cutroom {

EditModifier copyFileOfEdit(const EditPtr& source) {
    EditManager& manager = EditManager::instance();
    if (!CurrentProject::isOpen() || CurrentProject::isReadOnly())
        return {};
    // Only a failure to save this edit counts, not that of another one.
    if (!manager.flushChanges(false).ok() && source->isDirty())
        return {};
    const Cookie cookie = makeNewEditCookie();
    const std::string from = toUtf8(getFilenameForCookie(source.getCookie()));
    const std::string to = toUtf8(getFilenameForCookie(cookie));
    EditModifier copy;
    if (copyFile(from, to).ok())
        copy = EditModifier(cookie, "copy");
    if (!copy && fileExists(to) && !removeFile(to).ok())
        (void)manager.discard({cookie}); // tries again before the next save
    return copy;
}

void makeStripCookies(EditModifier& copy) {
    for (const auto& [type, strip] : {std::pair(kChanVideo, 'V'), std::pair(kChanAudio, 'S')}) {
        std::uint8_t number = 0;
        for (const IdStamp& channel : copy->getChans(type)) {
            if (++number == Cookie::kNoIndex)
                break;
            CelEventPair(copy, channel, 0)
                .setStripCookie(convertCookie(copy.getCookie(), strip, number));
        }
    }
}

} // namespace cutroom
