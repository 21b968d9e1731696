// cutroom check [--repair]
#include "cli/Command.h"
#include "platform/base/Strings.h"
#include "platform/files/Files.h"
#include "platform/files/JsonBuilder.h"
#include "platform/project/CurrentProject.h"
#include "platform/store/Edit.h"
#include "platform/store/EditManager.h"

#include <CLI/CLI.hpp>

#include <memory>
#include <set>

namespace cutroom::cli {

namespace {

// Every edit and log: those with a record, and those of which only the file tells.
std::set<Cookie> allEdits() {
    const CookieVec known = EditManager::instance().getAllEdits();
    std::set<Cookie> edits(known.begin(), known.end());
    constexpr std::string_view kSuffix = ".edit";
    const auto files = listFiles(CurrentProject::getFolder() + "/edits", kSuffix);
    for (const std::string& file : files ? *files : std::vector<std::string>())
        if (const auto cookie = Cookie::fromString(file.substr(0, file.size() - kSuffix.size())))
            edits.insert(*cookie);
    return edits;
}

Status checkEdit(const Cookie& cookie) {
    Status why;
    const EditPtr edit = EditManager::instance().open(cookie, &why);
    if (!edit)
        return why;
    if (const std::string inside = edit->checkConsistency(); !inside.empty())
        return {StatusCode::damaged, toUtf8(edit->getName()), inside};
    return EditManager::instance().checkFiles(cookie);
}

// Opens every edit and log and has it check itself; gives what is wrong with each that is not
// sound.
std::vector<Status> checkEdits(std::size_t* count) {
    std::vector<Status> wrong;
    for (const Cookie& cookie : allEdits()) {
        ++*count;
        if (Status one = checkEdit(cookie); !one)
            wrong.push_back(std::move(one));
    }
    return wrong;
}

// Moves what cannot be read out of the way and puts the version before it in its place. An edit
// without such a version stays lost, which is a failure.
Status restore(const Cookie& cookie, const Status& damage) {
    if (damage.code() == StatusCode::damaged) {
        const auto aside = EditManager::instance().setDamagedAside(cookie);
        if (!aside)
            return aside.status();
        note(damage.text() + "; moved to " + *aside);
    }
    const Status restored = EditManager::instance().restoreBackup(cookie);
    if (restored.ok())
        note(damage.file() + ": the version before the last one stands again");
    return restored.ok() ? Status() : damage;
}

// A history cannot be made anew; the next change begins another.
Status setHistoryAside(const Cookie& cookie) {
    const Status damage = EditManager::instance().checkFiles(cookie);
    if (damage.code() != StatusCode::damaged)
        return damage;
    const auto aside = moveAside(damage.file());
    if (aside)
        note(damage.text() + "; moved to " + *aside);
    return aside.status();
}

std::vector<Status> restoreEdits() {
    std::vector<Status> lost;
    for (const Cookie& cookie : allEdits()) {
        Status why;
        if (EditManager::instance().open(cookie, &why))
            why = setHistoryAside(cookie);
        else if (why.code() == StatusCode::damaged || why.code() == StatusCode::notFound)
            why = restore(cookie, why);
        if (!why)
            lost.push_back(std::move(why));
    }
    return lost;
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
    std::vector<Status> wrong;
    if (repair) {
        wrong = restoreEdits();
        if (const Status rebuilt = CurrentProject::rebuildDatabase(); !rebuilt)
            return rebuilt;
    }
    std::size_t count = 0;
    for (Status& one : checkEdits(&count))
        wrong.push_back(std::move(one));
    if (options.json)
        print(reportJson(count, wrong));
    else if (wrong.empty())
        print(format("%zu edit%s and logs, all sound%s\n", count, count == 1 ? "" : "s",
                     repair ? "; the project database was rebuilt" : ""));
    for (std::size_t i = 1; i < wrong.size(); ++i)
        fail(wrong[i]);
    if (!wrong.empty())
        return wrong.front();
    if (!repair && WarningLog::count() > 0)
        return {StatusCode::damaged, CurrentProject::getFolder(),
                "the project is damaged beside its edits; a command that writes mends it"};
    return {};
}

} // namespace

void addCheckCommand(Commands commands) {
    auto repair = std::make_shared<bool>(false);
    CLI::App* command = commands.app.add_subcommand("check", "Verify every edit of the project");
    command->add_flag("--repair", *repair,
                      "Put the version before a damaged edit in its place and rebuild "
                      "the project database from the edits' files");
    command->footer(
        "What is damaged is kept beside its place as NAME.damaged. Edits that stay lost "
        "are named; the\nexit code is then 4.");
    command->callback([commands, repair] {
        commands.action = [&options = commands.options, repair] {
            return withProject(options, *repair ? Workspace::Use::write : Workspace::Use::read,
                               [&](Workspace&) { return check(options, *repair); });
        };
    });
}

} // namespace cutroom::cli
