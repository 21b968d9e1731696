#include "audio/MixSelections.h"

#include "audio/AudioMixReader.h"
#include "audio/AudioMixWriter.h"
#include "platform/project/PermissionsManager.h"
#include "platform/store/Edit.h"
#include "platform/store/EditModule.h"

#include <vector>

namespace {

// The audio channels, as many as an index of one byte can name.
std::vector<IdStamp> audioChannels(const EditPtr& edit) {
    std::vector<IdStamp> channels = edit->getChans(kChanAudio);
    if (channels.size() > Aud::kMaxInputs)
        channels.resize(Aud::kMaxInputs);
    return channels;
}

bool mayWrite(const EditPtr& edit) {
    return !edit->isReadOnly() && PermissionsManager::instance().canWrite(edit.getCookie());
}

} // namespace

void updateAudioMixFromSelections(const EditModule& module) {
    const EditPtr& edit = module.getEdit();
    if (!edit)
        return;
    const std::vector<IdStamp> channels = audioChannels(edit);
    const AudioMixReader reader(edit);
    std::vector<unsigned char> wrong;
    for (std::size_t i = 0; i < channels.size(); ++i) {
        const auto input = static_cast<unsigned char>(i);
        if (reader.getChannelMuteState(input) == module.isSelected(channels[i]))
            wrong.push_back(input);
    }
    if (wrong.empty() || !mayWrite(edit))
        return;
    AudioMixWriter writer(edit, "track selections");
    for (const unsigned char input : wrong)
        writer.setChannelMuteState(input, !module.isSelected(channels[input]));
}

bool selectTracksFromAudioMix(EditModule& module) {
    const EditPtr edit = module.getEdit();
    const AudioMixReader reader(edit);
    if (!reader.valid())
        return false;
    const std::vector<IdStamp> channels = audioChannels(edit);
    bool changed = false;
    for (std::size_t i = 0; i < channels.size(); ++i) {
        const bool on = !reader.getChannelMuteState(static_cast<unsigned char>(i));
        changed = module.selectChan(channels[i], on) || changed;
    }
    return changed;
}
