// A mix as the command shows it: a table of lines for people, JSON for programs.
#include "cli/Command.h"
#include "cli/MixWords.h"
#include "platform/base/Strings.h"
#include "platform/files/JsonBuilder.h"
#include "platform/store/Edit.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <string_view>

namespace cutroom::cli {

namespace {

std::string joined(const std::vector<int>& numbers) {
    std::string text;
    for (const int number : numbers)
        text += (text.empty() ? "" : ",") + std::to_string(number);
    return text;
}

std::string channelsText(const AudioMixReader& reader, const EditPtr& edit) {
    std::string text;
    const auto channels = edit->getChans(kChanAudio);
    for (std::size_t i = 0; i < std::min(channels.size(), Aud::kMaxInputs); ++i) {
        const auto channel = static_cast<unsigned char>(i);
        std::string mixes;
        for (const signed char mix : mixesOf(reader, channel))
            mixes += (mixes.empty() ? "" : ",") + mixName(mix);
        text += format("%s\t%g\t%g\t%s\t%s\t%s\t", audioChannelWord(i, edit).c_str(),
                       static_cast<double>(reader.getChannelLevel(channel)),
                       static_cast<double>(reader.getChannelPan(channel)),
                       reader.getChannelMuteState(channel) ? "mute" : "",
                       reader.getChannelSoloState(channel) ? "solo" : "",
                       mixes.empty() ? "nothing" : mixes.c_str()) +
                oneLine(toUtf8(edit->getChanDisplayName(channels[i]))) + '\n';
    }
    return text;
}

std::string outputsText(const AudioMixReader& reader, signed char mix, bool monitoring) {
    const std::string changed = joined(changedOutputs(reader, mix, monitoring));
    if (mix == Aud::kMainMix)
        return changed.empty() ? "all" : "all but " + changed;
    return changed.empty() ? "nothing" : changed;
}

// The number that a person would write: 0.8, not the digits beyond what a float holds.
double plainNumber(float value) {
    std::array<char, 32> digits{};
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), value).ptr;
    return parseDouble(std::string_view(digits.data(), end)).value_or(static_cast<double>(value));
}

void addState(JSON::Builder& json, float level, bool mute, bool solo) {
    json.add("level", plainNumber(level));
    json.add("mute", mute);
    json.add("solo", solo);
}

// "others": whether the outputs that are not listed are fed.
void addOutputs(JSON::Builder& json, const AudioMixReader& reader, signed char mix,
                bool monitoring) {
    const bool main = mix == Aud::kMainMix;
    json.beginObject(monitoring ? "monitors" : "outputs");
    for (const bool on : {true, false}) {
        json.beginArray(on ? "on" : "off");
        if (on != main)
            for (const int output : changedOutputs(reader, mix, monitoring))
                json.add(output);
        json.endArray();
    }
    json.add("others", main);
    json.endObject();
}

void addChannelsJson(JSON::Builder& json, const AudioMixReader& reader, const EditPtr& edit) {
    const auto channels = edit->getChans(kChanAudio);
    json.beginArray("channels");
    for (std::size_t i = 0; i < std::min(channels.size(), Aud::kMaxInputs); ++i) {
        const auto channel = static_cast<unsigned char>(i);
        json.beginObject();
        json.add("id", channels[i].asString());
        json.add("channel", audioChannelWord(i, edit));
        json.add("name", edit->getChanDisplayName(channels[i]));
        addState(json, reader.getChannelLevel(channel), reader.getChannelMuteState(channel),
                 reader.getChannelSoloState(channel));
        json.add("pan", plainNumber(reader.getChannelPan(channel)));
        json.beginArray("to");
        for (const signed char mix : mixesOf(reader, channel))
            json.add(mixName(mix));
        json.endArray();
        json.endObject();
    }
    json.endArray();
}

} // namespace

std::string mixText(const EditPtr& edit) {
    const AudioMixReader reader(edit);
    std::string text = channelsText(reader, edit);
    for (const signed char mix : touchedMixes(reader))
        text += mixName(mix) + format("\t%g\t\t%s\t%s\toutputs %s\tmonitors %s\n",
                                      static_cast<double>(reader.getMixLevel(mix)),
                                      reader.getMixMuteState(mix) ? "mute" : "",
                                      reader.getMixSoloState(mix) ? "solo" : "",
                                      outputsText(reader, mix, kProgramme).c_str(),
                                      outputsText(reader, mix, kMonitoring).c_str());
    return text;
}

std::string mixJson(const EditPtr& edit) {
    const AudioMixReader reader(edit);
    JSON::Builder json;
    json.beginObject();
    json.add("id", edit.getCookie().asString());
    json.add("name", edit->getName());
    json.add("has_mix", reader.valid());
    addChannelsJson(json, reader, edit);
    json.beginArray("mixes");
    for (const signed char mix : touchedMixes(reader)) {
        json.beginObject();
        json.add("mix", mixName(mix));
        addState(json, reader.getMixLevel(mix), reader.getMixMuteState(mix),
                 reader.getMixSoloState(mix));
        addOutputs(json, reader, mix, kProgramme);
        addOutputs(json, reader, mix, kMonitoring);
        json.endObject();
    }
    json.endArray();
    json.endObject();
    return json.take();
}

} // namespace cutroom::cli
