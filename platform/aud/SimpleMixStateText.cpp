// The mix as stored with an edit: lines of words separated by single blanks.
//
//     Aud__SimpleMixState_R1
//     inputs 4
//     input 0 level 0.5 pan 0 mute 1 solo 0 routing none
//     mix -1 level 1 mute 0 solo 0 outputs 2,3 monitors none
//
// A routing lists the mixes or outputs whose routing differs from the default.
#include "platform/aud/MixText.h"
#include "platform/aud/SimpleMixState.h"
#include "platform/base/Strings.h"

namespace Aud {

namespace {

using cutroom::toText;

constexpr char kInputsWord[] = "inputs";
constexpr char kInputWord[] = "input";
constexpr char kMixWord[] = "mix";

std::string levelText(float value) { return toText(static_cast<double>(value)); }
std::string switchText(bool on) { return on ? "1" : "0"; }
std::string numberText(long long value) { return toText(value); }

// Tells whether the words at 2, 4, ... are `names` and each is followed by a value.
bool hasFields(const std::vector<std::string>& words, std::initializer_list<const char*> names) {
    if (words.size() != 2 + 2 * names.size())
        return false;
    std::size_t at = 2;
    for (const char* const name : names) {
        if (words[at] != name)
            return false;
        at += 2;
    }
    return true;
}

} // namespace

std::string SimpleMixState::asString() const {
    std::string text = std::string(kTypeTag) + "\n" + kInputsWord + " " +
                       numberText(static_cast<long long>(inputs_.size())) + "\n";
    for (std::size_t i = 0; i < inputs_.size(); ++i) {
        const Input& one = inputs_[i];
        if (one == Input())
            continue;
        text += std::string(kInputWord) + " " + numberText(static_cast<long long>(i)) + " level " +
                levelText(one.level) + " pan " + levelText(one.pan) + " mute " +
                switchText(one.mute) + " solo " + switchText(one.solo) + " routing " +
                cutroom::routingText(one.toMixes) + "\n";
    }
    for (const auto& [index, one] : mixes_)
        text += std::string(kMixWord) + " " + numberText(index) + " level " + levelText(one.level) +
                " mute " + switchText(one.mute) + " solo " + switchText(one.solo) + " outputs " +
                cutroom::routingText(one.toOutputs) + " monitors " +
                cutroom::routingText(one.toMonitors) + "\n";
    for (const std::string& line : unknown_)
        text += line + "\n";
    return text;
}

bool SimpleMixState::readInput(const std::vector<std::string>& words) {
    if (!hasFields(words, {"level", "pan", "mute", "solo", "routing"}))
        return false;
    const std::optional<long long> index = cutroom::parseInt(words[1]);
    const std::optional<float> level = cutroom::levelFromText(words[3]);
    const std::optional<float> pan = cutroom::panFromText(words[5]);
    const std::optional<bool> mute = cutroom::switchFromText(words[7]);
    const std::optional<bool> solo = cutroom::switchFromText(words[9]);
    const auto routing = cutroom::routingFromText(words[11], kMainMix);
    if (!index || *index < 0 || *index >= static_cast<long long>(inputs_.size()) || !level ||
        !pan || !mute || !solo || !routing)
        return false;
    inputs_[static_cast<std::size_t>(*index)] = {*level, *pan, *mute, *solo, *routing};
    return true;
}

bool SimpleMixState::readMix(const std::vector<std::string>& words) {
    if (!hasFields(words, {"level", "mute", "solo", "outputs", "monitors"}))
        return false;
    const std::optional<signed char> index = cutroom::mixFromText(words[1]);
    const std::optional<float> level = cutroom::levelFromText(words[3]);
    const std::optional<bool> mute = cutroom::switchFromText(words[5]);
    const std::optional<bool> solo = cutroom::switchFromText(words[7]);
    const auto outputs = cutroom::routingFromText(words[9], 0);
    const auto monitors = cutroom::routingFromText(words[11], 0);
    if (!index || !level || !mute || !solo || !outputs || !monitors)
        return false;
    mixes_[*index] = {*level, *mute, *solo, *outputs, *monitors};
    dropDefaultMix(*index);
    return true;
}

bool SimpleMixState::readLine(const std::string& line) {
    const std::vector<std::string> words = cutroom::split(line, ' ');
    if (words.front() == kInputWord)
        return readInput(words);
    if (words.front() == kMixWord)
        return readMix(words);
    if (words.front().empty())
        return false;
    unknown_.push_back(line);
    return true;
}

std::optional<SimpleMixState> SimpleMixState::fromString(std::string_view text) {
    std::vector<std::string> lines = cutroom::split(text, '\n');
    if (lines.size() < 3 || lines.front() != kTypeTag || !lines.back().empty())
        return std::nullopt;
    const std::vector<std::string> words = cutroom::split(lines[1], ' ');
    const auto count = words.size() == 2 ? cutroom::parseUnsigned(words[1]) : std::nullopt;
    if (words.front() != kInputsWord || !count || *count > kMaxInputs)
        return std::nullopt;
    SimpleMixState mix(static_cast<std::size_t>(*count));
    for (std::size_t i = 2; i + 1 < lines.size(); ++i)
        if (!mix.readLine(lines[i]))
            return std::nullopt;
    return mix;
}

} // namespace Aud
