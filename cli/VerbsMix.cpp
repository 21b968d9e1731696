// Verbs for the audio mix of an edit.
#include "cli/MixWords.h"
#include "cli/Session.h"
#include "editops/basics/StereoPairs.h"
#include "platform/base/Strings.h"
#include "platform/files/KvIniFile.h"
#include "platform/store/Edit.h"

#include <algorithm>

namespace cutroom::cli {

namespace {

signed char takeMix(SessionWords& words) { return require(parseMix(words.take("a mix"))); }

float takeGain(SessionWords& words) { return require(parseGain(words.take("a gain"))); }

// --- changing ------------------------------------------------------------------------------------

MixSetting takeChannelSetting(const EditPtr& edit, SessionWords& words) {
    MixSetting setting;
    setting.target = require(findAudioChannel(words.take("an audio channel"), edit));
    setting.what = words.takeChoice<eAudioMixChange>("a word", {{"level", kMixChannelLevel},
                                                                {"pan", kMixChannelPan},
                                                                {"mute", kMixChannelMute},
                                                                {"solo", kMixChannelSolo},
                                                                {"to", kMixChannelRouting}});
    if (setting.what == kMixChannelLevel) {
        setting.value = takeGain(words);
    } else if (setting.what == kMixChannelPan) {
        setting.value = require(parsePan(words.take("a pan")));
    } else {
        if (setting.what == kMixChannelRouting)
            setting.to = takeMix(words);
        setting.on = words.takeOnOff("on or off");
    }
    return setting;
}

MixSetting takeMixSetting(SessionWords& words) {
    MixSetting setting;
    setting.target = takeMix(words);
    setting.what = words.takeChoice<eAudioMixChange>(
        "a word",
        {{"level", kMixLevel}, {"mute", kMixMute}, {"solo", kMixSolo}, {"output", kMixRouting}});
    if (setting.what == kMixLevel) {
        setting.value = takeGain(words);
        return setting;
    }
    const bool output = setting.what == kMixRouting;
    if (output)
        setting.to = static_cast<int>(words.takeInt("an output", 1, kMostOutputs) - 1);
    setting.on = words.takeOnOff("on or off");
    setting.monitoring = output && words.takeIf("monitor");
    return setting;
}

void load(Session& session, const std::string& path) {
    if (KvIniFile file(path); !file.load())
        throw Refused{file.status()};
    AudioMixWriter(session.editForChange(), "mix").loadFrom(toWide(path));
}

// --- listing -------------------------------------------------------------------------------------

std::string stateText(float level, bool mute, bool solo) {
    return format(" level %g", static_cast<double>(level)) + (mute ? " mute" : "") +
           (solo ? " solo" : "");
}

// The mixes that a channel feeds; empty when that is the main one alone.
std::string routing(const AudioMixReader& reader, unsigned char channel) {
    std::string mixes;
    for (const signed char mix : mixesOf(reader, channel))
        mixes += ' ' + mixName(mix);
    return mixes == " main" ? "" : " to" + (mixes.empty() ? " nothing" : mixes);
}

std::string outputs(const AudioMixReader& reader, signed char mix, bool monitoring) {
    std::string text;
    for (const int output : changedOutputs(reader, mix, monitoring))
        text += (text.empty() ? "" : ",") + std::to_string(output);
    return text.empty() ? ""
                        : (mix == Aud::kMainMix ? " not to " : " to ") + text +
                              (monitoring ? " (monitor)" : "");
}

void list(Session& session) {
    const EditPtr edit = session.edit();
    const AudioMixReader reader(edit);
    const int channels = std::min(edit->getNumChans(kChanAudio), static_cast<int>(Aud::kMaxInputs));
    for (int i = 0; i < channels; ++i) {
        const auto channel = static_cast<unsigned char>(i);
        session.say(format("  %s level %g pan %g%s%s", audioChannelWord(channel, edit).c_str(),
                           static_cast<double>(reader.getChannelLevel(channel)),
                           static_cast<double>(reader.getChannelPan(channel)),
                           reader.getChannelMuteState(channel) ? " mute" : "",
                           reader.getChannelSoloState(channel) ? " solo" : "") +
                    routing(reader, channel));
    }
    for (const signed char mix : touchedMixes(reader))
        session.say("  " + mixName(mix) +
                    stateText(reader.getMixLevel(mix), reader.getMixMuteState(mix),
                              reader.getMixSoloState(mix)) +
                    outputs(reader, mix, kProgramme) + outputs(reader, mix, kMonitoring));
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
        return require(saveMix(session.edit(), words.take("a file")));
    const MixSetting setting =
        namesMix(words.peek()) ? takeMixSetting(words) : takeChannelSetting(session.edit(), words);
    AudioMixWriter writer(session.editForChange(), "mix");
    setting.apply(writer);
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
               "[CHANNEL level|pan|mute|solo VALUE | CHANNEL to MIX on|off | "
               "MIX level|mute|solo VALUE | MIX output N on|off [monitor] | load FILE | save FILE]",
               "the mix, or one setting of it; MIX is main, bus1 ...", mix});
    verbs.add({"pair", "[CHANNEL ...]", "pairs audio channels, panned apart; all without any named",
               pair});
}

} // namespace cutroom::cli
