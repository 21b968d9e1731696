#include "platform/aud/SimpleMixState.h"

#include <algorithm>
#include <cmath>

namespace Aud {

namespace {

bool isMix(signed char mix) noexcept { return mix >= kMainMix && mix <= kLastMix; }

bool contains(const std::vector<signed char>& list, signed char value) noexcept {
    return std::binary_search(list.begin(), list.end(), value);
}

} // namespace

SimpleMixState::SimpleMixState(std::size_t numInputs) { initialise(numInputs); }

void SimpleMixState::initialise(std::size_t numInputs) {
    valid_ = true;
    if (inputs_.size() < numInputs)
        inputs_.resize(std::min(numInputs, kMaxInputs));
}

const SimpleMixState::Input& SimpleMixState::input(unsigned char index) const noexcept {
    static const Input untouched;
    return index < inputs_.size() ? inputs_[index] : untouched;
}

const SimpleMixState::Mix& SimpleMixState::mix(signed char index) const noexcept {
    static const Mix untouched;
    const auto found = mixes_.find(index);
    return found == mixes_.end() ? untouched : found->second;
}

SimpleMixState::Input* SimpleMixState::inputToSet(unsigned char index) {
    if (!valid_)
        return nullptr;
    if (inputs_.size() <= index)
        inputs_.resize(index + std::size_t{1});
    return &inputs_[index];
}

SimpleMixState::Mix* SimpleMixState::mixToSet(signed char index) {
    return valid_ && isMix(index) ? &mixes_[index] : nullptr;
}

void SimpleMixState::dropDefaultMix(signed char index) {
    const auto found = mixes_.find(index);
    if (found != mixes_.end() && found->second == Mix())
        mixes_.erase(found);
}

// Puts `to` into the list of differing routings, or takes it out.
void SimpleMixState::setRouting(Routing& routing, signed char to, bool differs) {
    const auto at = std::lower_bound(routing.begin(), routing.end(), to);
    const bool isThere = at != routing.end() && *at == to;
    if (differs && !isThere)
        routing.insert(at, to);
    else if (!differs && isThere)
        routing.erase(at);
}

// --- inputs ----------------------------------------------------------------------------------

float SimpleMixState::getInputLevel(unsigned char index) const noexcept {
    return input(index).level;
}
float SimpleMixState::getInputPan(unsigned char index) const noexcept { return input(index).pan; }
bool SimpleMixState::getInputMuteState(unsigned char index) const noexcept {
    return input(index).mute;
}
bool SimpleMixState::getInputSoloState(unsigned char index) const noexcept {
    return input(index).solo;
}
bool SimpleMixState::getInputRoutedToMix(unsigned char index, signed char to) const noexcept {
    return (to == kMainMix) != contains(input(index).toMixes, to);
}

bool SimpleMixState::setInputLevel(unsigned char index, float level) {
    Input* const changed = std::isfinite(level) ? inputToSet(index) : nullptr;
    if (!changed)
        return false;
    changed->level = level;
    return true;
}
bool SimpleMixState::setInputPan(unsigned char index, float pan) {
    Input* const changed = pan >= 0.0f && pan <= 1.0f ? inputToSet(index) : nullptr;
    if (!changed)
        return false;
    changed->pan = pan;
    return true;
}
bool SimpleMixState::setInputMuteState(unsigned char index, bool on) {
    Input* const changed = inputToSet(index);
    if (!changed)
        return false;
    changed->mute = on;
    return true;
}
bool SimpleMixState::setInputSoloState(unsigned char index, bool on) {
    Input* const changed = inputToSet(index);
    if (!changed)
        return false;
    changed->solo = on;
    return true;
}
bool SimpleMixState::setInputRoutedToMix(unsigned char index, signed char to, bool on) {
    Input* const changed = isMix(to) ? inputToSet(index) : nullptr;
    if (!changed)
        return false;
    setRouting(changed->toMixes, to, on != (to == kMainMix));
    return true;
}

void SimpleMixState::removeInput(unsigned char index) {
    if (index < inputs_.size())
        inputs_.erase(inputs_.begin() + index);
}

// --- mixes -----------------------------------------------------------------------------------

float SimpleMixState::getMixLevel(signed char index) const noexcept { return mix(index).level; }
bool SimpleMixState::getMixMuteState(signed char index) const noexcept { return mix(index).mute; }
bool SimpleMixState::getMixSoloState(signed char index) const noexcept { return mix(index).solo; }
bool SimpleMixState::getMixRoutedToOutput(signed char index, signed char output,
                                          bool monitoring) const noexcept {
    const Mix& asked = mix(index);
    return (index == kMainMix) != contains(monitoring ? asked.toMonitors : asked.toOutputs, output);
}

bool SimpleMixState::setMixLevel(signed char index, float level) {
    Mix* const changed = std::isfinite(level) ? mixToSet(index) : nullptr;
    if (!changed)
        return false;
    changed->level = level;
    dropDefaultMix(index);
    return true;
}
bool SimpleMixState::setMixMuteState(signed char index, bool on) {
    Mix* const changed = mixToSet(index);
    if (!changed)
        return false;
    changed->mute = on;
    dropDefaultMix(index);
    return true;
}
bool SimpleMixState::setMixSoloState(signed char index, bool on) {
    Mix* const changed = mixToSet(index);
    if (!changed)
        return false;
    changed->solo = on;
    dropDefaultMix(index);
    return true;
}
bool SimpleMixState::setMixRoutedToOutput(signed char index, signed char output, bool on,
                                          bool monitoring) {
    Mix* const changed = output >= 0 ? mixToSet(index) : nullptr;
    if (!changed)
        return false;
    setRouting(monitoring ? changed->toMonitors : changed->toOutputs, output,
               on != (index == kMainMix));
    dropDefaultMix(index);
    return true;
}

bool SimpleMixState::anyInputSolo() const noexcept {
    return std::any_of(inputs_.begin(), inputs_.end(), [](const Input& one) { return one.solo; });
}
bool SimpleMixState::anyMixSolo() const noexcept {
    return std::any_of(mixes_.begin(), mixes_.end(),
                       [](const auto& entry) { return entry.second.solo; });
}

} // namespace Aud
