// cutroom mix EDIT [set|load|save]
#include "cli/Command.h"
#include "cli/MixWords.h"
#include "cli/Names.h"
#include "cli/Permission.h"
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
                if (Status added = addRouting(kMixChannelRouting, *mix, on, name); !added)
                    return added;
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
            for (const int output : *outputs)
                if (Status added = addRouting(kMixRouting, output - 1, on, std::to_string(output));
                    !added)
                    return added;
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

    Status addRouting(eAudioMixChange what, int to, bool on, const std::string& name) {
        for (const MixSetting& other : settings_)
            if (other.target == base_.target && other.what == what && other.to == to &&
                other.on != on)
                return {StatusCode::wrongUsage, name, "is to be fed and not to be fed"};
        MixSetting& setting = add(what, on);
        setting.to = to;
        setting.monitoring = what == kMixRouting && words_.monitor;
        return {};
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

// "Mix A1, A2": what a step of undo is called.
std::string stepName(const std::vector<std::string>& things) {
    constexpr std::size_t kMost = 4;
    std::string name = "Mix";
    for (std::size_t i = 0; i < std::min(things.size(), kMost); ++i)
        name += (i == 0 ? " " : ", ") + things[i];
    return things.size() > kMost ? name + format(" and %zu more", things.size() - kMost) : name;
}

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
    const std::string step = stepName(words.things);
    EditManager::instance().makeBackup(edit, step);
    AudioMixWriter writer(edit, step);
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

// --- the command ---------------------------------------------------------------------------------

Status perform(const MixWords& words, const EditPtr& edit) {
    if (words.action == "save")
        return saveMix(edit, words.things.front());
    if (words.action == "list")
        return {};
    if (Status may = mayChange(edit); !may)
        return may;
    return words.action == "load" ? load(words.things.front(), edit) : set(words, edit);
}

int run(const Options& options, const MixWords& words) {
    if (const Status checked = checkWords(words); !checked)
        return fail(checked);
    const bool writes = words.action == "set" || words.action == "load";
    return withProject(options, writes ? Workspace::Use::write : Workspace::Use::read,
                       [&](Workspace&) -> Status {
                           const auto edit = openEdit(words.edit);
                           if (!edit)
                               return edit.status();
                           if (const Status done = perform(words, *edit); !done)
                               return done;
                           if (words.action != "save")
                               print(options.json ? mixJson(*edit) : mixText(*edit));
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
