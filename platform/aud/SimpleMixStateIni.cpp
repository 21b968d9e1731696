// The mix as a configuration file: a section [Mix] with Version and Inputs, one section [Input n]
// for each input, one [Mix m] for the main mix and each other that is fed or not at its defaults,
// so that a mix which takes them over sounds the same whatever it was before.
#include "platform/aud/MixText.h"
#include "platform/aud/SimpleMixState.h"
#include "platform/base/Strings.h"
#include "platform/files/KvIniFile.h"

#include <algorithm>
#include <set>

namespace Aud {

namespace {

constexpr char kHead[] = "Mix";
constexpr char kInputPrefix[] = "Input ";
constexpr char kMixPrefix[] = "Mix ";
constexpr long long kVersion = 1;

std::string sectionOf(const char* prefix, long long number) {
    return prefix + cutroom::toText(number);
}

// The number of a section named `prefix` and a number from `least` to `most` in its one spelling.
std::optional<int> numberOf(const std::string& section, std::string_view prefix, int least,
                            int most) {
    if (!section.starts_with(prefix))
        return std::nullopt;
    const std::string digits = section.substr(prefix.size());
    const std::optional<long long> number = cutroom::parseInt(digits);
    if (!number || *number < least || *number > most || cutroom::toText(*number) != digits)
        return std::nullopt;
    return static_cast<int>(*number);
}

std::optional<int> inputOf(const std::string& section) {
    return numberOf(section, kInputPrefix, 0, static_cast<int>(kMaxInputs) - 1);
}
std::optional<int> mixOf(const std::string& section) {
    return numberOf(section, kMixPrefix, kMainMix, kLastMix);
}

// Sets `target` to what `read` makes of the value under `key`, if it is there and in range.
template <class T, class Read>
void take(const KvIniFile& file, const std::string& section, const char* key, T& target,
          const Read& read) {
    if (const std::optional<std::string> text = file.get(section, key))
        if (auto value = read(*text))
            target = std::move(*value);
}

} // namespace

void SimpleMixState::writeConfigurationInformation(KvIniFile& file) const {
    for (const std::string& section : file.sections())
        if (section == kHead || inputOf(section) || mixOf(section))
            file.removeSection(section);
    if (!valid_)
        return;
    file.setInt(kHead, "Version", kVersion);
    file.setInt(kHead, "Inputs", static_cast<long long>(inputs_.size()));
    std::set<signed char> heard{kMainMix};
    for (std::size_t i = 0; i < inputs_.size(); ++i) {
        heard.insert(inputs_[i].toMixes.begin(), inputs_[i].toMixes.end());
        const std::string section = sectionOf(kInputPrefix, static_cast<long long>(i));
        file.setDouble(section, "Level", static_cast<double>(inputs_[i].level));
        file.setDouble(section, "Pan", static_cast<double>(inputs_[i].pan));
        file.set(section, "Mute", inputs_[i].mute ? "1" : "0");
        file.set(section, "Solo", inputs_[i].solo ? "1" : "0");
        file.set(section, "Routing", cutroom::routingText(inputs_[i].toMixes));
    }
    for (const auto& entry : mixes_)
        heard.insert(entry.first);
    for (const signed char index : heard) {
        const Mix& one = mix(index);
        const std::string section = sectionOf(kMixPrefix, index);
        file.setDouble(section, "Level", static_cast<double>(one.level));
        file.set(section, "Mute", one.mute ? "1" : "0");
        file.set(section, "Solo", one.solo ? "1" : "0");
        file.set(section, "Outputs", cutroom::routingText(one.toOutputs));
        file.set(section, "Monitors", cutroom::routingText(one.toMonitors));
    }
}

void SimpleMixState::takeInput(const KvIniFile& file, unsigned char index) {
    const std::string section = sectionOf(kInputPrefix, index);
    Input& one = inputs_[index];
    take(file, section, "Level", one.level, cutroom::levelFromText);
    take(file, section, "Pan", one.pan, cutroom::panFromText);
    take(file, section, "Mute", one.mute, cutroom::switchFromText);
    take(file, section, "Solo", one.solo, cutroom::switchFromText);
    take(file, section, "Routing", one.toMixes,
         [](const std::string& text) { return cutroom::routingFromText(text, kMainMix); });
}

void SimpleMixState::takeMix(const KvIniFile& file, signed char index) {
    const std::string section = sectionOf(kMixPrefix, index);
    const auto outputs = [](const std::string& text) { return cutroom::routingFromText(text, 0); };
    Mix& one = mixes_[index];
    take(file, section, "Level", one.level, cutroom::levelFromText);
    take(file, section, "Mute", one.mute, cutroom::switchFromText);
    take(file, section, "Solo", one.solo, cutroom::switchFromText);
    take(file, section, "Outputs", one.toOutputs, outputs);
    take(file, section, "Monitors", one.toMonitors, outputs);
    dropDefaultMix(index);
}

bool SimpleMixState::retrieveCompatibleConfigurationInformation(const KvIniFile& file) {
    const long long version = file.getInt(kHead, "Version", 0);
    if (!valid_ || version < 1 || version > kVersion)
        return false;
    for (const std::string& section : file.sections()) {
        if (const std::optional<int> index = inputOf(section)) {
            if (static_cast<std::size_t>(*index) < inputs_.size())
                takeInput(file, static_cast<unsigned char>(*index));
        } else if (const std::optional<int> mixIndex = mixOf(section)) {
            takeMix(file, static_cast<signed char>(*mixIndex));
        }
    }
    return true;
}

} // namespace Aud
