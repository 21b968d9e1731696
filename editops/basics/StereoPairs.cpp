#include "editops/basics/StereoPairs.h"

#include "platform/prefs/Configuration.h"
#include "platform/prefs/EditorPreferences.h"
#include "platform/store/Edit.h"

namespace {

constexpr char kPreference[] = "New edit stereo pairs";
constexpr float kLeft = 0.0F;
constexpr float kRight = 1.0F;

// Nothing for a channel that is no audio channel of the edit or lies beyond the mix's inputs.
void pan(Aud::SimpleMixState& mix, const Edit& edit, const IdStamp& channel, float to) {
    if (edit.getChanType(channel) != kChanAudio)
        return;
    const int input = edit.getIndexWithinType(channel);
    if (input >= 0 && input < static_cast<int>(Aud::kMaxInputs))
        mix.setInputPan(static_cast<unsigned char>(input), to);
}

} // namespace

void makeStereoPairs(const EditPtr& edit, std::vector<IdStamp> ids) {
    const EditModifier writing(edit, "stereo pairs");
    if (!writing)
        return;
    if (ids.empty())
        ids = writing->getChans(kChanAudio);
    const std::size_t paired = static_cast<unsigned char>(ids.size()) & ~std::size_t{1};

    const Kv::Ptr<Aud::SimpleMixState> present = writing->getAudioMix();
    Kv::Ptr<Aud::SimpleMixState> mix;
    if (present && present->valid())
        mix = Kv::makePtr<Aud::SimpleMixState>(*present);
    for (std::size_t i = 0; i < paired; i += 2) {
        if (ids[i] == ids[i + 1] || !writing->isValidChan(ids[i]) ||
            !writing->isValidChan(ids[i + 1]))
            continue;
        if (mix) {
            pan(*mix, *writing, ids[i], kLeft);
            pan(*mix, *writing, ids[i + 1], kRight);
        }
        writing->groupChannels({ids[i], ids[i + 1]}, true);
    }
    if (mix && !(*mix == *present))
        writing->setAudioMix(mix);
    writing->addModification(kModAudioMix, true);
    writing->addModification(kModGroups, true);
}

bool getAutoGroupEditAudioTracks() {
    static const auto& byDefault =
        *new cutroom::ConfigValue<int>("auto_stereo_pairs", 1); // never destroyed
    return EditorPreferences::getPreference(kPreference, byDefault.get() != 0);
}

void setAutoGroupEditAudioTracks(bool on) { EditorPreferences::setPreference(kPreference, on); }
