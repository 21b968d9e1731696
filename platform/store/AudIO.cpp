#include "platform/store/AudIO.h"

#include "platform/files/KvIniFile.h"
#include "platform/project/CurrentProject.h"
#include "platform/project/ProjectPaths.h"
#include "platform/store/Edit.h"

#include <algorithm>

namespace {

using Mix = Aud::SimpleMixState;

// A copy of the edit's mix, not valid when it has none.
Mix mixOf(const Edit& edit) {
    const Kv::Ptr<Mix> mix = edit.getAudioMix();
    return mix ? *mix : Mix();
}

void initialise(Mix& mix, const Edit& edit) {
    const auto inputs = static_cast<std::size_t>(edit.getNumChans(kChanAudio));
    mix.initialise(std::min(inputs, Aud::kMaxInputs));
}

void store(Edit& edit, const Mix& mix) {
    const Kv::Ptr<Mix> present = edit.getAudioMix();
    if (!present || !(*present == mix))
        edit.setAudioMix(Kv::makePtr<Mix>(mix));
}

} // namespace

namespace Aud::IO {

LightweightString<wchar_t> getProjectDefaultMixConfigFilenameForEdits(const Cookie& edit) {
    if (edit.type() != 'E' || !CurrentProject::isOpen())
        return {};
    const std::string name = CurrentProject::getDefaults().mixConfiguration; // no path
    if (name.empty())
        return {};
    return cutroom::joinPath(getProjectDirectory(), cutroom::toWide(name));
}

bool applyConfigurationInformationToEdit(const EditPtr& edit, const KvIniFile& file,
                                         bool initialiseMix) {
    if (!edit)
        return false;
    const Edit::Lock lock(*edit);
    Mix mix = mixOf(*edit);
    if (!mix.valid()) {
        if (!initialiseMix)
            return false;
        initialise(mix, *edit);
    }
    const bool taken = mix.retrieveCompatibleConfigurationInformation(file);
    store(*edit, mix);
    return taken;
}

void initialiseAudioMix(const EditPtr& edit) {
    if (!edit)
        return;
    const Edit::Lock lock(*edit);
    Mix mix = mixOf(*edit);
    initialise(mix, *edit);
    store(*edit, mix);
}

} // namespace Aud::IO
