#include "audio/AudioMixReader.h"

#include "platform/store/Edit.h"

AudioMixReader::AudioMixReader(const EditPtr& edit) : edit_(edit) {}

// What `query` answers on the edit's valid mix, under the edit's lock.
template <class Answer, class Query>
Answer AudioMixReader::ask(Answer otherwise, const Query& query) const {
    if (!edit_)
        return otherwise;
    const Edit::Lock lock(*edit_);
    const Kv::Ptr<Aud::SimpleMixState> mix = edit_->getAudioMix();
    return mix && mix->valid() ? query(*mix) : otherwise;
}

using Mix = Aud::SimpleMixState;

bool AudioMixReader::valid() const {
    return ask(false, [](const Mix&) { return true; });
}
float AudioMixReader::getChannelLevel(unsigned char channel) const {
    return ask(1.0f, [=](const Mix& mix) { return mix.getInputLevel(channel); });
}
float AudioMixReader::getChannelPan(unsigned char channel) const {
    return ask(0.5f, [=](const Mix& mix) { return mix.getInputPan(channel); });
}
bool AudioMixReader::getChannelMuteState(unsigned char channel) const {
    return ask(false, [=](const Mix& mix) { return mix.getInputMuteState(channel); });
}
bool AudioMixReader::getChannelSoloState(unsigned char channel) const {
    return ask(false, [=](const Mix& mix) { return mix.getInputSoloState(channel); });
}
bool AudioMixReader::getChannelRoutedToMix(unsigned char channel, signed char to) const {
    return ask(to == Aud::kMainMix,
               [=](const Mix& mix) { return mix.getInputRoutedToMix(channel, to); });
}
float AudioMixReader::getMixLevel(signed char number) const {
    return ask(1.0f, [=](const Mix& mix) { return mix.getMixLevel(number); });
}
bool AudioMixReader::getMixMuteState(signed char number) const {
    return ask(false, [=](const Mix& mix) { return mix.getMixMuteState(number); });
}
bool AudioMixReader::getMixSoloState(signed char number) const {
    return ask(false, [=](const Mix& mix) { return mix.getMixSoloState(number); });
}
bool AudioMixReader::getMixRoutedToOutput(signed char number, signed char output,
                                          bool monitoring) const {
    return ask(number == Aud::kMainMix, [=](const Mix& mix) {
        return mix.getMixRoutedToOutput(number, output, monitoring);
    });
}
bool AudioMixReader::anyChannelSolo() const {
    return ask(false, [](const Mix& mix) { return mix.anyInputSolo(); });
}
bool AudioMixReader::anyMixSolo() const {
    return ask(false, [](const Mix& mix) { return mix.anyMixSolo(); });
}
