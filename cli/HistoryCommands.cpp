// cutroom undo, redo, history EDIT
#include "cli/Command.h"
#include "cli/History.h"
#include "cli/Names.h"
#include "cli/Permission.h"
#include "platform/base/Strings.h"
#include "platform/files/JsonBuilder.h"
#include "platform/store/EditManager.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <memory>

namespace cutroom::cli {

namespace {

using Steps = std::vector<EditManager::HistoryStep>;

// Takes up to `times` steps and adds them to `taken`.
Status takeSteps(const std::string& name, int times, bool back, Steps& taken) {
    const auto edit = openEdit(name);
    if (!edit)
        return edit.status();
    if (Status may = mayChange(*edit); !may)
        return may;
    EditManager& manager = EditManager::instance();
    for (int i = 0; i < times; ++i) {
        const auto next = nextStep(*edit, back);
        if (!next || !(back ? manager.undo(*edit) : manager.redo(*edit)))
            return {StatusCode::failed, name,
                    i ? format("only %d step%s could be %sne", i, i == 1 ? "" : "s",
                               back ? "undo" : "redo")
                      : std::string("nothing to ") + (back ? "undo" : "redo")};
        taken.push_back(*next);
    }
    return {};
}

void addStep(JSON::Builder& json, const EditManager::HistoryStep& one) {
    json.add("description", one.description);
    json.add("when", one.when);
}

std::string takenJson(const Steps& taken, bool back) {
    JSON::Builder json;
    json.beginObject();
    json.beginArray(back ? "undone" : "redone");
    for (const auto& one : taken) {
        json.beginObject();
        addStep(json, one);
        json.endObject();
    }
    json.endArray();
    json.endObject();
    return json.take();
}

std::string takenText(const Steps& taken, bool back) {
    std::string text;
    for (const auto& one : taken)
        text += (back ? "undone: " : "redone: ") + oneLine(one.description) + '\n';
    return text;
}

Status step(const Options& options, const std::string& name, int times, bool back) {
    Steps taken;
    const Status done = takeSteps(name, times, back, taken);
    if (done || !taken.empty())
        print(options.json ? takenJson(taken, back) : takenText(taken, back));
    return done;
}

std::string historyJson(const Steps& steps) {
    JSON::Builder json;
    json.beginArray();
    for (const auto& one : steps) {
        json.beginObject();
        addStep(json, one);
        json.add("undone", one.undone);
        json.endObject();
    }
    json.endArray();
    return json.take();
}

std::string historyText(const Steps& steps) {
    std::string text;
    for (std::size_t i = 0; i < steps.size(); ++i)
        text += format("%3zu  %s%s\n", i + 1, steps[i].undone ? "(undone) " : "",
                       oneLine(steps[i].description).c_str());
    return text;
}

void addStepCommand(Commands commands, const char* word, const char* about, bool back) {
    auto edit = std::make_shared<std::string>();
    auto times = std::make_shared<int>(1);
    CLI::App* command = commands.app.add_subcommand(word, about);
    command->add_option("edit", *edit, "Name or cookie")->required()->type_name("EDIT");
    command->add_option("--times", *times, "How many steps")->check(CLI::Range(1, 100));
    command->footer(std::string("  cutroom ") + word + " \"Reel 1\"\n  cutroom " + word +
                    " \"Reel 1\" --times 3\n\n`cutroom history \"Reel 1\"` shows the steps.");
    command->callback([commands, edit, times, back] {
        commands.action = [&options = commands.options, edit, times, back] {
            return withProject(options, Workspace::Use::write,
                               [&](Workspace&) { return step(options, *edit, *times, back); });
        };
    });
}

} // namespace

void addHistoryCommands(Commands commands) {
    addStepCommand(commands, "undo", "Take the last change of an edit back", kBack);
    addStepCommand(commands, "redo", "Make the change again that was taken back last", kForth);
    auto edit = std::make_shared<std::string>();
    CLI::App* command =
        commands.app.add_subcommand("history", "Show an edit's steps, oldest first");
    command->add_option("edit", *edit, "Name or cookie")->required()->type_name("EDIT");
    command->footer("Steps that were undone are marked; `cutroom redo` makes them again.");
    command->callback([commands, edit] {
        commands.action = [&options = commands.options, edit] {
            return withProject(options, Workspace::Use::read, [&](Workspace&) -> Status {
                const auto opened = openEdit(*edit);
                if (!opened)
                    return opened.status();
                const auto steps = EditManager::instance().getHistory(*opened);
                print(options.json ? historyJson(steps) : historyText(steps));
                return {};
            });
        };
    });
}

} // namespace cutroom::cli
