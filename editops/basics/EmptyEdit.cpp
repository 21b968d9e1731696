#include "editops/basics/EmptyEdit.h"

#include "editops/basics/StereoPairs.h"
#include "platform/base/Log.h"
#include "platform/base/Time.h"
#include "platform/files/KvIniFile.h"
#include "platform/prefs/Configuration.h"
#include "platform/store/AudIO.h"
#include "platform/store/BurntIn.h"
#include "platform/store/Edit.h"
#include "platform/store/EditManager.h"

namespace {

constexpr int kMostMinutes = 1'000'000; // within what the store accepts

double defaultLength() {
    static const auto& minutes =
        *new cutroom::ConfigValue<int>("new_edit_len_mins", 5, 0, kMostMinutes); // never destroyed
    return minutes.get() * 60.0;
}

// A configuration that is missing or damaged leaves the mix at its defaults.
void applyProjectMix(const EditPtr& edit) {
    const auto path = Aud::IO::getProjectDefaultMixConfigFilenameForEdits(edit.getCookie());
    KvIniFile file(path);
    if (!path.empty() && !file.load())
        LogBoth("createEmptyEdit() : %s\n", file.status().text().c_str());
    Aud::IO::applyConfigurationInformationToEdit(edit, file, true);
}

} // namespace

EditModifier createEmptyEdit(Cookie cookie, LightweightString<wchar_t> name,
                             unsigned char videoChans, unsigned char audioChans, double length,
                             Kv::FrameRate frameRate) {
    if (!cookie.valid())
        cookie = makeNewEditCookie();
    if (length == kNoTime)
        length = defaultLength();
    EditModifier edit =
        EditManager::instance().makeNewEdit(cookie, videoChans, audioChans, length, frameRate);
    if (!edit)
        return edit;
    if (name.empty())
        name = generateNewEditName();
    edit->setName(name);
    applyProjectMix(edit);
    if (getAutoGroupEditAudioTracks())
        makeStereoPairs(edit, {});
    BITCLayoutsManager::applyProjectDefault(edit);
    return edit;
}
