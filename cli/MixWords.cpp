#include "cli/MixWords.h"

#include "platform/base/Strings.h"
#include "platform/files/Files.h"
#include "platform/files/KvIniFile.h"
#include "platform/store/Edit.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <filesystem>
#include <limits>
#include <system_error>

namespace cutroom::cli {

namespace {

constexpr std::string_view kBus = "bus";
constexpr std::string_view kDecibels = "db"; // in any case

} // namespace

std::string mixName(int mix) {
    return mix == Aud::kMainMix ? "main" : std::string(kBus) + std::to_string(mix + 1);
}

bool namesMix(std::string_view text) {
    return text == mixName(Aud::kMainMix) || text.starts_with(kBus);
}

Result<signed char> parseMix(std::string_view text) {
    if (text == mixName(Aud::kMainMix))
        return Aud::kMainMix;
    const auto number =
        text.starts_with(kBus) ? parseInt(text.substr(kBus.size())) : std::optional<long long>();
    if (!number || *number < 1 || *number > Aud::kLastMix + 1)
        return Status(StatusCode::wrongUsage, std::string(text), "not a mix: main, bus1 to bus125");
    return static_cast<signed char>(*number - 1);
}

Result<float> parseGain(std::string_view text) {
    const bool decibels = toLowerUtf8(text).ends_with(kDecibels);
    std::string_view said = decibels ? text.substr(0, text.size() - kDecibels.size()) : text;
    if (said.starts_with('+') && !said.starts_with("+-"))
        said.remove_prefix(1);
    const auto number = parseDouble(said);
    const auto gain = number ? static_cast<float>(decibels ? std::pow(10.0, *number / 20) : *number)
                             : std::numeric_limits<float>::infinity();
    if (!std::isfinite(gain) || gain < 0) // "-6" leaves out the dB
        return Status(StatusCode::wrongUsage, std::string(text), "not a level, as 0.5 or -6dB");
    return gain + 0.0f; // "-0" is 0
}

Result<float> parsePan(std::string_view text) {
    if (text == "left" || text == "centre" || text == "right")
        return text == "left" ? 0.0f : text == "right" ? 1.0f : 0.5f;
    const auto number = parseDouble(text);
    if (!number || !(*number >= 0 && *number <= 1))
        return Status(StatusCode::wrongUsage, std::string(text),
                      "not a pan: 0 (left) to 1 (right), left, centre, right");
    return static_cast<float>(*number) + 0.0f;
}

Result<unsigned char> findAudioChannel(std::string_view text, const EditPtr& edit) {
    const std::vector<IdStamp> channels = edit->getChans(kChanAudio);
    const std::size_t count = std::min(channels.size(), Aud::kMaxInputs);
    const std::wstring wanted = toWide(text);
    std::vector<std::size_t> found;
    for (std::size_t i = 0; i < count; ++i)
        if (edit->getChanDisplayName(channels[i]) == wanted)
            found.push_back(i);
    const auto place = text.starts_with('A') ? parseInt(text.substr(1)) : parseInt(text);
    if (found.empty() && place && *place >= 1 && static_cast<std::size_t>(*place) <= count)
        found.push_back(static_cast<std::size_t>(*place) - 1);
    if (found.empty())
        return Status(
            StatusCode::notFound, std::string(text),
            format("no such audio channel; the edit has %d", static_cast<int>(channels.size())));
    if (found.size() > 1)
        return Status(StatusCode::notFound, std::string(text),
                      format("several audio channels have this name; say the place of one, as %zu",
                             found.front() + 1));
    return static_cast<unsigned char>(found.front());
}

std::string audioChannelWord(std::size_t place, const EditPtr& edit) {
    const std::string number = std::to_string(place + 1);
    const auto found = findAudioChannel("A" + number, edit);
    return found && *found == place ? "A" + number : number;
}

// --- one setting ---------------------------------------------------------------------------------

bool MixSetting::differs(const AudioMixReader& reader) const {
    const auto channel = static_cast<unsigned char>(target);
    const auto mix = static_cast<signed char>(target);
    const auto other = static_cast<signed char>(to);
    switch (what) {
    case kMixChannelLevel:
        return reader.getChannelLevel(channel) != value;
    case kMixChannelPan:
        return reader.getChannelPan(channel) != value;
    case kMixChannelSolo:
        return reader.getChannelSoloState(channel) != on;
    case kMixChannelMute:
        return reader.getChannelMuteState(channel) != on;
    case kMixChannelRouting:
        return reader.getChannelRoutedToMix(channel, other) != on;
    case kMixLevel:
        return reader.getMixLevel(mix) != value;
    case kMixSolo:
        return reader.getMixSoloState(mix) != on;
    case kMixMute:
        return reader.getMixMuteState(mix) != on;
    case kMixRouting:
        return reader.getMixRoutedToOutput(mix, other, monitoring) != on;
    }
    return false;
}

void MixSetting::apply(AudioMixWriter& writer) const {
    const auto channel = static_cast<unsigned char>(target);
    const auto mix = static_cast<signed char>(target);
    const auto other = static_cast<signed char>(to);
    switch (what) {
    case kMixChannelLevel:
        return writer.setChannelLevel(channel, value);
    case kMixChannelPan:
        return writer.setChannelPan(channel, value);
    case kMixChannelSolo:
        return writer.setChannelSoloState(channel, on);
    case kMixChannelMute:
        return writer.setChannelMuteState(channel, on);
    case kMixChannelRouting:
        return writer.setChannelRoutedToMix(channel, other, on);
    case kMixLevel:
        return writer.setMixLevel(mix, value);
    case kMixSolo:
        return writer.setMixSoloState(mix, on);
    case kMixMute:
        return writer.setMixMuteState(mix, on);
    case kMixRouting:
        return writer.setMixRoutedToOutput(mix, other, on, monitoring);
    }
}

std::string mixChangeText(const EditModification& change, const EditPtr& edit) {
    static constexpr std::array kWords{"level", "pan",  "solo", "mute",   "routing",
                                       "level", "solo", "mute", "outputs"};
    if (change.detail < kMixChannelLevel || change.detail > kWords.size())
        return "of another kind";
    std::string text = kWords[change.detail - 1];
    if (change.detail >= kMixLevel)
        text += " of " + mixName(AudioMixWriter::getMixFromID(change.track));
    else if (edit && edit->isValidChan(change.track))
        text += " of " + toUtf8(edit->getChanDisplayName(change.track));
    return text;
}

// --- a whole mix ---------------------------------------------------------------------------------

std::vector<signed char> mixesOf(const AudioMixReader& reader, unsigned char channel) {
    std::vector<signed char> mixes;
    for (int mix = Aud::kMainMix; mix <= Aud::kLastMix; ++mix)
        if (reader.getChannelRoutedToMix(channel, static_cast<signed char>(mix)))
            mixes.push_back(static_cast<signed char>(mix));
    return mixes;
}

std::vector<int> changedOutputs(const AudioMixReader& reader, signed char mix, bool monitoring) {
    std::vector<int> outputs;
    for (int output = 0; output < kMostOutputs; ++output)
        if (reader.getMixRoutedToOutput(mix, static_cast<signed char>(output), monitoring) !=
            (mix == Aud::kMainMix))
            outputs.push_back(output + 1);
    return outputs;
}

std::vector<signed char> touchedMixes(const AudioMixReader& reader) {
    std::vector<signed char> mixes;
    for (int i = Aud::kMainMix; i <= Aud::kLastMix; ++i) {
        const auto mix = static_cast<signed char>(i);
        if (reader.getMixLevel(mix) != 1.0f || reader.getMixMuteState(mix) ||
            reader.getMixSoloState(mix) || !changedOutputs(reader, mix, kProgramme).empty() ||
            !changedOutputs(reader, mix, kMonitoring).empty())
            mixes.push_back(mix);
    }
    return mixes;
}

Status saveMix(const EditPtr& edit, const std::string& path) {
    const auto mix = edit->getAudioMix();
    if (!mix || !mix->valid())
        return {StatusCode::failed, path, "the edit has no mix"};
    KvIniFile file(path);
    // What else an ini file holds stays in it; a device or a pipe is only written.
    std::error_code failure;
    const bool stream = std::filesystem::is_other(path, failure);
    if (!stream && !file.load() && file.status().code() != StatusCode::notFound)
        return file.status();
    Aud::SimpleMixState whole = *mix; // with the channels that nobody has touched
    whole.initialise(static_cast<std::size_t>(edit->getNumChans(kChanAudio)));
    whole.writeConfigurationInformation(file);
    return writeOutput(path, file.text());
}

} // namespace cutroom::cli
