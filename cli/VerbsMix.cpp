// Verbs for the audio mix of an edit.
#include "audio/AudioMixReader.h"
#include "audio/AudioMixWriter.h"
#include "cli/Session.h"
#include "editops/basics/StereoPairs.h"
#include "platform/base/Strings.h"
#include "platform/files/KvIniFile.h"
#include "platform/store/Edit.h"

#include <functional>

namespace cutroom::cli {

namespace {

constexpr int kMostOutputs = 128;

std::string mixName(int mix) {
    return mix == Aud::kMainMix ? "main" : "bus" + std::to_string(mix + 1);
}

signed char takeMix(SessionWords& words) {
    const std::string& word = words.take("a mix");
    if (word == mixName(Aud::kMainMix))
        return Aud::kMainMix;
    const auto number = word.starts_with("bus") ? parseInt(word.substr(3)) : std::nullopt;
    if (!number || *number < 1 || *number > Aud::kLastMix + 1)
        refuse(StatusCode::wrongUsage, word, "not a mix: main, bus1 to bus125");
    return static_cast<signed char>(*number - 1);
}

float takeGain(SessionWords& words) { return static_cast<float>(words.takeNumber("a gain")); }

// --- changing ------------------------------------------------------------------------------------

// A setting, read before the edit is touched.
using MixChange = std::function<void(AudioMixWriter&)>;

unsigned char takeAudioChannel(const Edit& edit, SessionWords& words) {
    const int channels = edit.getNumChans(kChanAudio);
    const std::string word = words.peek();
    const long long number = words.takeInt("an audio channel", 1, 256);
    if (number > channels)
        refuse(StatusCode::notFound, word,
               format("no such audio channel; the edit has %d", channels));
    return static_cast<unsigned char>(number - 1);
}

MixChange takeChannelChange(const Edit& edit, SessionWords& words) {
    const unsigned char channel = takeAudioChannel(edit, words);
    const auto& what = words.takeOneOf("a word", {"level", "pan", "mute", "solo", "to"});
    if (what == "level")
        return [=, level = takeGain(words)](auto& mix) { mix.setChannelLevel(channel, level); };
    if (what == "pan")
        return [=, pan = static_cast<float>(words.takeNumber("a pan"))](auto& mix) {
            mix.setChannelPan(channel, pan);
        };
    if (what == "to") {
        const signed char target = takeMix(words);
        return [=, on = words.takeOnOff("on or off")](auto& mix) {
            mix.setChannelRoutedToMix(channel, target, on);
        };
    }
    return [=, mute = what == "mute", on = words.takeOnOff("on or off")](auto& mix) {
        mute ? mix.setChannelMuteState(channel, on) : mix.setChannelSoloState(channel, on);
    };
}

MixChange takeMixChange(SessionWords& words) {
    const signed char target = takeMix(words);
    const auto& what = words.takeOneOf("a word", {"level", "mute", "solo", "output"});
    if (what == "level")
        return [=, level = takeGain(words)](auto& mix) { mix.setMixLevel(target, level); };
    if (what == "output") {
        const auto output = static_cast<signed char>(words.takeInt("an output", 1, kMostOutputs));
        const bool on = words.takeOnOff("on or off");
        return [=, monitor = words.takeIf("monitor")](auto& mix) {
            mix.setMixRoutedToOutput(target, static_cast<signed char>(output - 1), on, monitor);
        };
    }
    return [=, mute = what == "mute", on = words.takeOnOff("on or off")](auto& mix) {
        mute ? mix.setMixMuteState(target, on) : mix.setMixSoloState(target, on);
    };
}

void load(Session& session, const std::string& path) {
    if (KvIniFile file(path); !file.load())
        throw Refused{file.status()};
    AudioMixWriter(session.editForChange(), "mix").loadFrom(toWide(path));
}

void save(Session& session, const std::string& path) {
    const auto mix = session.edit()->getAudioMix();
    if (!mix)
        refuse(StatusCode::failed, path, "the edit has no mix");
    KvIniFile file(path);
    mix->writeConfigurationInformation(file);
    if (!file.save())
        throw Refused{file.status()};
}

// --- listing -------------------------------------------------------------------------------------

std::string stateText(float level, bool mute, bool solo) {
    return format(" level %g", static_cast<double>(level)) + (mute ? " mute" : "") +
           (solo ? " solo" : "");
}

// The mixes that a channel feeds, where they are not the main one alone.
std::string routing(const AudioMixReader& reader, unsigned char channel) {
    std::string mixes;
    for (int mix = Aud::kMainMix; mix <= Aud::kLastMix; ++mix)
        if (reader.getChannelRoutedToMix(channel, static_cast<signed char>(mix)))
            mixes += ' ' + mixName(mix);
    return mixes == " main" ? "" : " to" + (mixes.empty() ? " nothing" : mixes);
}

// The outputs of a mix that differ from what it has by itself.
std::string outputs(const AudioMixReader& reader, signed char mix, bool monitoring) {
    const bool usual = mix == Aud::kMainMix;
    std::string text;
    for (int output = 0; output < kMostOutputs; ++output)
        if (reader.getMixRoutedToOutput(mix, static_cast<signed char>(output), monitoring) != usual)
            text += (text.empty() ? "" : ",") + std::to_string(output + 1);
    return text.empty() ? ""
                        : (usual ? " not to " : " to ") + text + (monitoring ? " (monitor)" : "");
}

void list(Session& session) {
    const EditPtr edit = session.edit();
    const AudioMixReader reader(edit);
    for (int i = 0; i < edit->getNumChans(kChanAudio); ++i) {
        const auto channel = static_cast<unsigned char>(i);
        session.say(format("  A%d level %g pan %g%s%s", i + 1,
                           static_cast<double>(reader.getChannelLevel(channel)),
                           static_cast<double>(reader.getChannelPan(channel)),
                           reader.getChannelMuteState(channel) ? " mute" : "",
                           reader.getChannelSoloState(channel) ? " solo" : "") +
                    routing(reader, channel));
    }
    for (int i = Aud::kMainMix; i <= Aud::kLastMix; ++i) {
        const auto mix = static_cast<signed char>(i);
        const std::string state = stateText(reader.getMixLevel(mix), reader.getMixMuteState(mix),
                                            reader.getMixSoloState(mix));
        const std::string to = outputs(reader, mix, false) + outputs(reader, mix, true);
        if (state != " level 1" || !to.empty())
            session.say("  " + mixName(i) + state + to);
    }
    if (reader.anyChannelSolo() || reader.anyMixSolo())
        session.say(std::string("  soloed:") + (reader.anyChannelSolo() ? " channels" : "") +
                    (reader.anyMixSolo() ? " mixes" : ""));
}

void mix(Session& session, SessionWords& words) {
    if (words.done())
        return list(session);
    if (words.takeIf("load"))
        return load(session, words.take("a file"));
    if (words.takeIf("save"))
        return save(session, words.take("a file"));
    const MixChange change =
        parseInt(words.peek()) ? takeChannelChange(*session.edit(), words) : takeMixChange(words);
    AudioMixWriter writer(session.editForChange(), "mix");
    change(writer);
}

void pair(Session& session, SessionWords& words) {
    std::vector<IdStamp> channels;
    while (!words.done())
        channels.push_back(session.takeChannel(words));
    makeStereoPairs(session.editForChange(), std::move(channels));
}

} // namespace

void addMixVerbs(VerbTable& verbs) {
    verbs.heading("Audio mix");
    verbs.add({"mix",
               "[N level|pan|mute|solo VALUE | N to MIX on|off | MIX level|mute|solo VALUE | "
               "MIX output N on|off [monitor] | load FILE | save FILE]",
               "the mix, or one setting of it; MIX is main, bus1 ...", mix});
    verbs.add({"pair", "[CHANNEL ...]", "pairs audio channels, panned apart; all without any named",
               pair});
}

} // namespace cutroom::cli
