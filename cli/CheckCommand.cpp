// cutroom check [--repair]
#include "cli/Command.h"
#include "platform/base/Strings.h"
#include "platform/files/JsonBuilder.h"
#include "platform/project/CurrentProject.h"
#include "platform/store/Edit.h"
#include "platform/store/EditManager.h"

#include <CLI/CLI.hpp>

#include <memory>

namespace cutroom::cli {

namespace {

// Opens every edit and log and has it check itself; gives what is wrong with each that is not
// sound.
std::vector<Status> checkEdits(std::size_t* count) {
    std::vector<Status> wrong;
    EditManager& manager = EditManager::instance();
    for (const Cookie& cookie : manager.getAllEdits()) {
        ++*count;
        Status why;
        const EditPtr edit = manager.open(cookie, &why);
        if (!edit) {
            wrong.push_back(why);
            continue;
        }
        if (const std::string inside = edit->checkConsistency(); !inside.empty())
            wrong.push_back({StatusCode::damaged, toUtf8(edit->getName()), inside});
    }
    return wrong;
}

std::string reportJson(std::size_t count, const std::vector<Status>& wrong) {
    JSON::Builder json;
    json.beginObject();
    json.add("files", count);
    json.beginArray("errors");
    for (const Status& one : wrong)
        json.add(one.text());
    json.endArray();
    json.endObject();
    return json.take();
}

Status check(const Options& options, bool repair) {
    if (repair)
        if (const Status rebuilt = CurrentProject::rebuildDatabase(); !rebuilt)
            return rebuilt;
    std::size_t count = 0;
    const auto wrong = checkEdits(&count);
    if (options.json)
        print(reportJson(count, wrong));
    else if (wrong.empty())
        print(format("%zu edit%s and logs, all sound%s\n", count, count == 1 ? "" : "s",
                     repair ? "; the project database was rebuilt" : ""));
    for (std::size_t i = 1; i < wrong.size(); ++i)
        fail(wrong[i]);
    return wrong.empty() ? Status() : wrong.front();
}

} // namespace

void addCheckCommand(Commands commands) {
    auto repair = std::make_shared<bool>(false);
    CLI::App* command = commands.app.add_subcommand("check", "Verify every edit of the project");
    command->add_flag("--repair", *repair, "Rebuild the project database from the edits' files");
    command->callback([commands, repair] {
        commands.action = [&options = commands.options, repair] {
            return withProject(options, *repair ? Workspace::Use::write : Workspace::Use::read,
                               [&](Workspace&) { return check(options, *repair); });
        };
    });
}

} // namespace cutroom::cli
