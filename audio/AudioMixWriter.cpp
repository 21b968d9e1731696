#include "audio/AudioMixWriter.h"

#include "audio/AudioMixReader.h"
#include "platform/files/KvIniFile.h"
#include "platform/store/AudIO.h"
#include "platform/store/Edit.h"
#include "platform/store/EditModifications.h"

#include <bit>
#include <cstdint>
#include <utility>

using Mix = Aud::SimpleMixState;

namespace {

constexpr int kIDOffset = 3;

bool differ(float a, float b) noexcept {
    return std::bit_cast<std::uint32_t>(a) != std::bit_cast<std::uint32_t>(b);
}

} // namespace

AudioMixWriter::AudioMixWriter(const EditPtr& edit, LightweightString<char> description)
    : EditModifier(edit, std::move(description)) {}

IdStamp AudioMixWriter::makeIDForMix(signed char mix) noexcept {
    const auto part = static_cast<std::uint32_t>(mix + kIDOffset);
    return IdStamp(part, part, part);
}

signed char AudioMixWriter::getMixFromID(const IdStamp& id) noexcept {
    return static_cast<signed char>(static_cast<int>(id.getTickCount()) - kIDOffset);
}

// The cached mix, unless an undo has put another one in its place meanwhile.
const Kv::Ptr<Mix>& AudioMixWriter::getMix() {
    const Kv::Ptr<Mix> current = get()->getAudioMix();
    if (mix_ && mix_ == current)
        return mix_;
    mix_ = current;
    if (!mix_ || !mix_->valid()) {
        Aud::IO::initialiseAudioMix(*this);
        mix_ = get()->getAudioMix();
    }
    return mix_;
}

IdStamp AudioMixWriter::channelID(unsigned char channel) const {
    if (!*this || channel + 1 >= Cookie::kNoIndex)
        return {};
    return get()->getChanForStrip(
        convertCookie(getCookie(), 'S', static_cast<std::uint8_t>(channel + 1)));
}

void AudioMixWriter::informClients(eAudioMixChange code, const IdStamp& id) {
    EditModification modification(kModAudioMix, code);
    if (id.valid())
        modification.track = id;
    get()->addModification(EditModifications(modification), true);
}

template <class IsNew, class Set>
void AudioMixWriter::change(eAudioMixChange code, const IdStamp& id, const IsNew& isNew,
                            const Set& set) {
    if (!*this)
        return;
    {
        const Edit::Lock lock(**this);
        if (!AudioMixReader(*this).valid()) {
            Mix fresh(0);
            if (!isNew(fresh) || !set(fresh))
                return; // no reason to make one
        }
        if (!isNew(*getMix()))
            return;
        // A mix is never changed in place, because the history may share the present one.
        const Kv::Ptr<Mix> changed = Kv::makePtr<Mix>(*mix_);
        if (!set(*changed))
            return;
        get()->setAudioMix(changed);
        mix_ = changed;
    }
    informClients(code, id);
}

void AudioMixWriter::setChannelLevel(unsigned char channel, float level) {
    change(
        kMixChannelLevel, channelID(channel),
        [=](const Mix& mix) { return differ(mix.getInputLevel(channel), level); },
        [=](Mix& mix) { return mix.setInputLevel(channel, level); });
}
void AudioMixWriter::setChannelPan(unsigned char channel, float pan) {
    change(
        kMixChannelPan, channelID(channel),
        [=](const Mix& mix) { return differ(mix.getInputPan(channel), pan); },
        [=](Mix& mix) { return mix.setInputPan(channel, pan); });
}
void AudioMixWriter::setChannelMuteState(unsigned char channel, bool on) {
    change(
        kMixChannelMute, channelID(channel),
        [=](const Mix& mix) { return mix.getInputMuteState(channel) != on; },
        [=](Mix& mix) { return mix.setInputMuteState(channel, on); });
}
void AudioMixWriter::setChannelSoloState(unsigned char channel, bool on) {
    change(
        kMixChannelSolo, channelID(channel),
        [=](const Mix& mix) { return mix.getInputSoloState(channel) != on; },
        [=](Mix& mix) { return mix.setInputSoloState(channel, on); });
}
void AudioMixWriter::setChannelRoutedToMix(unsigned char channel, signed char to, bool on) {
    change(
        kMixChannelRouting, channelID(channel),
        [=](const Mix& mix) { return mix.getInputRoutedToMix(channel, to) != on; },
        [=](Mix& mix) { return mix.setInputRoutedToMix(channel, to, on); });
}

void AudioMixWriter::setMixLevel(signed char number, float level) {
    change(
        kMixLevel, makeIDForMix(number),
        [=](const Mix& mix) { return differ(mix.getMixLevel(number), level); },
        [=](Mix& mix) { return mix.setMixLevel(number, level); });
}
void AudioMixWriter::setMixMuteState(signed char number, bool on) {
    change(
        kMixMute, makeIDForMix(number),
        [=](const Mix& mix) { return mix.getMixMuteState(number) != on; },
        [=](Mix& mix) { return mix.setMixMuteState(number, on); });
}
void AudioMixWriter::setMixSoloState(signed char number, bool on) {
    change(
        kMixSolo, makeIDForMix(number),
        [=](const Mix& mix) { return mix.getMixSoloState(number) != on; },
        [=](Mix& mix) { return mix.setMixSoloState(number, on); });
}
void AudioMixWriter::setMixRoutedToOutput(signed char number, signed char output, bool on,
                                          bool monitoring) {
    change(
        kMixRouting, makeIDForMix(number),
        [=](const Mix& mix) { return mix.getMixRoutedToOutput(number, output, monitoring) != on; },
        [=](Mix& mix) { return mix.setMixRoutedToOutput(number, output, on, monitoring); });
}

void AudioMixWriter::loadFrom(const LightweightString<wchar_t>& path) {
    KvIniFile file(path);
    // A file that cannot be read counts as empty; the writer reports no failure.
    file.load();
    loadFrom(file);
}

void AudioMixWriter::loadFrom(const KvIniFile& file) {
    if (!*this)
        return;
    {
        const Edit::Lock lock(**this);
        Aud::IO::initialiseAudioMix(*this);
        const Kv::Ptr<Mix> changed = Kv::makePtr<Mix>(*getMix());
        if (changed->retrieveCompatibleConfigurationInformation(file) && !(*changed == *mix_)) {
            get()->setAudioMix(changed);
            mix_ = changed;
        }
    }
    get()->addModification(kModAudioMix, true);
}
