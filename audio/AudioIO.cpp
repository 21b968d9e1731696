#include "audio/AudioIO.h"

#include "platform/files/KvIniFile.h"
#include "platform/project/CurrentProject.h"
#include "platform/project/ProjectPaths.h"
#include "platform/store/Edit.h"

namespace Aud::IO {

void initialiseAudioMix(const EditPtr& edit) {
    if (!edit)
        return;
    const Edit::Lock lock(*edit);
    const auto numInputs = static_cast<std::size_t>(edit->getNumChans(kChanAudio));
    const Kv::Ptr<SimpleMixState> mix = edit->getAudioMix();
    if (mix && mix->valid())
        mix->initialise(numInputs);
    else
        edit->setAudioMix(Kv::makePtr<SimpleMixState>(numInputs));
}

bool applyConfigurationInformationToEdit(const EditPtr& edit, const KvIniFile& file, bool makeMix) {
    if (!edit || !SimpleMixState(0).retrieveCompatibleConfigurationInformation(file))
        return false;
    const Edit::Lock lock(*edit);
    if (makeMix)
        initialiseAudioMix(edit);
    const Kv::Ptr<SimpleMixState> mix = edit->getAudioMix();
    if (!mix)
        return false;
    const SimpleMixState before = *mix;
    const bool taken = mix->retrieveCompatibleConfigurationInformation(file);
    if (!(*mix == before))
        edit->addModification(kModAudioMix, false);
    return taken;
}

LightweightString<wchar_t> getProjectDefaultMixConfigFilenameForEdits(const Cookie&) {
    const std::string name = CurrentProject::getDefaults().mixConfiguration;
    return name.empty() ? LightweightString<wchar_t>()
                        : cutroom::joinPath(getProjectDirectory(), cutroom::toWide(name));
}

} // namespace Aud::IO
