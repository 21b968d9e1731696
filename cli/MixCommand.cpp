// cutroom mix EDIT [set|load|save]
#include "cli/Command.h"
#include "cli/MixWords.h"
#include "cli/Names.h"
#include "platform/base/Strings.h"
#include "platform/files/JsonBuilder.h"
#include "platform/files/KvIniFile.h"
#include "platform/store/Edit.h"
#include "platform/store/EditManager.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <memory>
#include <optional>

namespace cutroom::cli {

namespace {

// The words of one call; what was not said is empty.
struct MixWords {
    std::string edit;
    std::string action = "list";
    std::vector<std::string> things; // targets, or a file
    std::optional<std::string> level, pan, mute, solo;
    std::vector<std::string> to, notTo;
    std::vector<int> outputs, notOutputs;
    bool monitor = false;

    bool wantsOutputs() const { return !outputs.empty() || !notOutputs.empty(); }
    bool wantsChannels() const { return pan || !to.empty() || !notTo.empty(); }
    bool settings() const {
        return level || mute || solo || monitor || wantsOutputs() || wantsChannels();
    }
};

// Words that the action would not look at are a mistake: what they ask for would not be done.
Status checkWords(const MixWords& words) {
    const auto wrong = [&](const char* reason) {
        return Status(StatusCode::wrongUsage, words.action, reason);
    };
    if (words.action != "set" && words.settings())
        return wrong("takes no settings; `set` does");
    if (words.action == "list" && !words.things.empty())
        return wrong("takes no channels, mixes or files");
    if (words.action == "set" && words.things.empty())
        return wrong("say which channels or mixes (A1 ..., main, bus1 ...)");
    if (words.action == "set" && !words.settings())
        return wrong("say what to set (--level, --mute ...)");
    if ((words.action == "load" || words.action == "save") && words.things.size() != 1)
        return wrong("say one file");
    if (words.monitor && !words.wantsOutputs())
        return {StatusCode::wrongUsage, "--monitor", "goes with --output or --not-output"};
    return {};
}

// --- setting -------------------------------------------------------------------------------------

// What is set on one channel or mix after the other.
class Settings {
public:
    explicit Settings(const MixWords& words) : words_(words) {}

    Status addChannel(const std::string& word, const EditPtr& edit) {
        const auto channel = findAudioChannel(word, edit);
        if (!channel)
            return channel.status();
        if (words_.wantsOutputs())
            return {StatusCode::wrongUsage, word, "a channel feeds mixes (--to), mixes outputs"};
        base_.target = *channel;
        if (words_.pan) {
            const auto pan = parsePan(*words_.pan);
            if (!pan)
                return pan.status();
            add(kMixChannelPan).value = *pan;
        }
        for (const auto& [mixes, on] : {std::pair{&words_.to, true}, {&words_.notTo, false}})
            for (const std::string& name : *mixes) {
                const auto mix = parseMix(name);
                if (!mix)
                    return mix.status();
                add(kMixChannelRouting, on).to = *mix;
            }
        return addCommon(kMixChannelLevel, kMixChannelMute, kMixChannelSolo);
    }

    Status addMix(const std::string& word, signed char mix) {
        if (words_.wantsChannels())
            return {StatusCode::wrongUsage, word,
                    "a mix has no pan and feeds outputs (--output), channels feed mixes"};
        base_.target = mix;
        for (const auto& [outputs, on] :
             {std::pair{&words_.outputs, true}, {&words_.notOutputs, false}})
            for (const int output : *outputs) {
                MixSetting& setting = add(kMixRouting, on);
                setting.to = output - 1;
                setting.monitoring = words_.monitor;
            }
        return addCommon(kMixLevel, kMixMute, kMixSolo);
    }

    const std::vector<MixSetting>& all() const { return settings_; }

private:
    MixSetting& add(eAudioMixChange what, bool on = false) {
        settings_.push_back(base_);
        settings_.back().what = what;
        settings_.back().on = on;
        return settings_.back();
    }

    Status addCommon(eAudioMixChange level, eAudioMixChange mute, eAudioMixChange solo) {
        if (words_.level) {
            const auto gain = parseGain(*words_.level);
            if (!gain)
                return gain.status();
            add(level).value = *gain;
        }
        if (words_.mute)
            add(mute, *words_.mute == "on");
        if (words_.solo)
            add(solo, *words_.solo == "on");
        return {};
    }

    const MixWords& words_;
    MixSetting base_;
    std::vector<MixSetting> settings_;
};

bool namesMix(const std::string& word) { return word == "main" || word.starts_with("bus"); }

// Everything is read before anything is changed; what would change nothing makes no step of undo.
Status set(const MixWords& words, const EditPtr& edit) {
    Settings settings(words);
    for (const std::string& word : words.things) {
        const auto mix = parseMix(word);
        if (!mix && namesMix(word))
            return mix.status();
        const Status added = mix ? settings.addMix(word, *mix) : settings.addChannel(word, edit);
        if (!added)
            return added;
    }
    const AudioMixReader reader(edit);
    if (std::none_of(settings.all().begin(), settings.all().end(),
                     [&](const MixSetting& one) { return one.differs(reader); }))
        return {};
    EditManager::instance().makeBackup(edit, "Mix");
    AudioMixWriter writer(edit, "Mix");
    for (const MixSetting& setting : settings.all())
        setting.apply(writer);
    return {};
}

Status load(const std::string& path, const EditPtr& edit) {
    KvIniFile file(path);
    if (!file.load())
        return file.status();
    const auto mix = edit->getAudioMix();
    Aud::SimpleMixState taken = mix ? *mix : Aud::SimpleMixState();
    taken.initialise(static_cast<std::size_t>(edit->getNumChans(kChanAudio)));
    const Aud::SimpleMixState before = taken;
    if (!taken.retrieveCompatibleConfigurationInformation(file))
        return {StatusCode::damaged, path, "holds no audio mix that can be read"};
    if (taken == before)
        return {};
    EditManager::instance().makeBackup(edit, "Load mix");
    AudioMixWriter(edit, "Load mix").loadFrom(file);
    return {};
}

// --- showing -------------------------------------------------------------------------------------

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
        text += format("A%zu\t%g\t%g\t%s\t%s\t%s\t", i + 1,
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

std::string listText(const AudioMixReader& reader, const EditPtr& edit) {
    std::string text = channelsText(reader, edit);
    for (const signed char mix : touchedMixes(reader))
        text += mixName(mix) + format("\t%g\t\t%s\t%s\toutputs %s\tmonitors %s\n",
                                      static_cast<double>(reader.getMixLevel(mix)),
                                      reader.getMixMuteState(mix) ? "mute" : "",
                                      reader.getMixSoloState(mix) ? "solo" : "",
                                      outputsText(reader, mix, false).c_str(),
                                      outputsText(reader, mix, true).c_str());
    return text;
}

void addState(JSON::Builder& json, float level, bool mute, bool solo) {
    json.add("level", static_cast<double>(level));
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
        json.add("channel", "A" + std::to_string(i + 1));
        json.add("name", edit->getChanDisplayName(channels[i]));
        addState(json, reader.getChannelLevel(channel), reader.getChannelMuteState(channel),
                 reader.getChannelSoloState(channel));
        json.add("pan", static_cast<double>(reader.getChannelPan(channel)));
        json.beginArray("to");
        for (const signed char mix : mixesOf(reader, channel))
            json.add(mixName(mix));
        json.endArray();
        json.endObject();
    }
    json.endArray();
}

std::string listJson(const AudioMixReader& reader, const EditPtr& edit) {
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
        addOutputs(json, reader, mix, false);
        addOutputs(json, reader, mix, true);
        json.endObject();
    }
    json.endArray();
    json.endObject();
    return json.take();
}

// --- the command ---------------------------------------------------------------------------------

Status perform(const MixWords& words, const EditPtr& edit) {
    if (words.action == "save")
        return saveMix(edit, words.things.front());
    if (words.action == "list")
        return {};
    if (edit->isReadOnly())
        return {StatusCode::failed, words.edit, "the edit is read-only"};
    return words.action == "load" ? load(words.things.front(), edit) : set(words, edit);
}

int run(const Options& options, const MixWords& words) {
    if (const Status wrong = checkWords(words); !wrong)
        return fail(wrong);
    const bool writes = words.action == "set" || words.action == "load";
    return withProject(
        options, writes ? Workspace::Use::write : Workspace::Use::read, [&](Workspace&) -> Status {
            const auto edit = openEdit(words.edit);
            if (!edit)
                return edit.status();
            if (const Status done = perform(words, *edit); !done)
                return done;
            const AudioMixReader reader(*edit);
            if (words.action != "save")
                print(options.json ? listJson(reader, *edit) : listText(reader, *edit));
            return {};
        });
}

void addSettings(CLI::App& command, MixWords& words) {
    const auto onOff = CLI::IsMember({"on", "off"});
    command.add_option("--level", words.level, "Linear gain (0.5) or decibels (-6dB)");
    command.add_option("--pan", words.pan, "Channels: 0 (left) to 1 (right), left, centre, right");
    command.add_option("--mute", words.mute, "on or off")->check(onOff);
    command.add_option("--solo", words.solo, "on or off")->check(onOff);
    command.add_option("--to", words.to, "Channels: feed these mixes")->type_name("MIX");
    command.add_option("--not-to", words.notTo, "Channels: feed them no more")->type_name("MIX");
    const auto outputs = CLI::Range(1, kMostOutputs);
    command.add_option("--output", words.outputs, "Mixes: feed these outputs")->check(outputs);
    command.add_option("--not-output", words.notOutputs, "Mixes: feed them no more")
        ->check(outputs);
    command.add_flag("--monitor", words.monitor, "The outputs for listening, not the programme's");
}

} // namespace

void addMixCommand(Commands commands) {
    auto words = std::make_shared<MixWords>();
    CLI::App* command =
        commands.app.add_subcommand("mix", "Show, set, load or save an edit's audio mix");
    command->add_option("edit", words->edit, "Name or cookie")->required()->type_name("EDIT");
    command->add_option("action", words->action, "list (the default), set, load, save")
        ->check(CLI::IsMember({"list", "set", "load", "save"}));
    command->add_option(
        "things", words->things,
        "Channels (A1 ... or a name) and mixes (main, bus1 ...) to set; a mix file");
    addSettings(*command, *words);
    command->footer("  cutroom mix \"Reel 1\"\n"
                    "  cutroom mix \"Reel 1\" set A1 A2 --level -6dB --mute off\n"
                    "  cutroom mix \"Reel 1\" set A2 --to bus1 --not-to main\n"
                    "  cutroom mix \"Reel 1\" set bus1 --level 0.8 --output 3 4\n"
                    "  cutroom mix \"Reel 1\" save reel1.ini\n"
                    "  cutroom mix \"Reel 2\" load reel1.ini");
    command->callback([commands, words] {
        commands.action = [&options = commands.options, words] { return run(options, *words); };
    });
}

} // namespace cutroom::cli
