// cutroom check [--repair]
#include "cli/Command.h"
#include "cli/ContainerCheck.h"
#include "platform/base/Strings.h"
#include "platform/files/Files.h"
#include "platform/files/JsonBuilder.h"
#include "platform/project/CurrentProject.h"
#include "platform/project/ProjectPaths.h"
#include "platform/store/Edit.h"
#include "platform/store/EditFile.h"
#include "platform/store/EditManager.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <map>
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

// What was found of all edits and logs.
struct EditReport {
    std::size_t count = 0;
    std::map<Cookie, Status> wrong;
};

// Opens every edit and log and has it check itself.
EditReport checkEdits() {
    EditReport report;
    for (const Cookie& cookie : allEdits()) {
        ++report.count;
        if (Status one = checkEdit(cookie); !one)
            report.wrong.emplace(cookie, std::move(one));
    }
    return report;
}

// Leaves out the edits that another process has deleted since the project was opened: what is known
// of a project opened for reading is what was known then.
Status forgetDeleted(Workspace& workspace, EditReport& report) {
    if (std::none_of(report.wrong.begin(), report.wrong.end(),
                     [](const auto& one) { return one.second.code() == StatusCode::notFound; }))
        return {};
    if (Status closed = workspace.close(); !closed)
        return closed;
    if (Status opened = workspace.open(Workspace::Use::read); !opened)
        return opened;
    const std::set<Cookie> left = allEdits();
    report.count -= std::erase_if(report.wrong, [&](const auto& one) {
        return one.second.code() == StatusCode::notFound && !left.contains(one.first);
    });
    return {};
}

// Neither there nor sound; what cannot be read now may be.
bool isLost(const Status& status) {
    return status.code() == StatusCode::damaged || status.code() == StatusCode::notFound;
}

std::string fileOf(const Cookie& edit) { return toUtf8(getFilenameForCookie(edit)); }

Status readBackup(const std::string& path) {
    const auto bytes = readFile(path + ".bak");
    return bytes ? EditFile::decode(*bytes, path + ".bak").status() : bytes.status();
}

// Puts the version before in the place of what cannot be read or has gone. An edit without such a
// version stays lost, which is a failure.
Status restore(const Cookie& cookie, const Status& damage) {
    const std::string path = fileOf(cookie);
    const Status former = readBackup(path);
    if (!former && !isLost(former))
        return former;
    const bool isThere = damage.code() == StatusCode::damaged;
    if (former && isThere)
        return putBackupInPlace(path, damage);
    if (isThere) {
        const auto aside = EditManager::instance().setDamagedAside(cookie);
        if (!aside)
            return aside.status();
        note(damage.text() + "; moved to " + *aside);
    }
    if (!former)
        return {damage.code(), damage.file(), damage.message() + "; no sound version before it",
                damage.line()};
    const Status restored = EditManager::instance().restoreBackup(cookie);
    if (restored)
        note(path + ": the version before the last one stands again");
    return restored;
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

// Gives in `lost` what stays so. Ends early where only the database tells of an edit that could not
// be put back now: made anew it would know of it no more.
Status restoreEdits(std::vector<Status>& lost) {
    for (const Cookie& cookie : allEdits()) {
        Status why;
        if (EditManager::instance().open(cookie, &why))
            why = setHistoryAside(cookie);
        else if (isLost(why))
            why = restore(cookie, why);
        if (!why && !isLost(why) && !fileExists(fileOf(cookie)))
            return why;
        if (!why)
            lost.push_back(std::move(why));
    }
    return {};
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

// Adds `one` unless it is there: the check after a repair finds again what the repair could not
// mend.
void addNew(std::vector<Status>& wrong, Status one) {
    for (const Status& known : wrong)
        if (known.text() == one.text())
            return;
    wrong.push_back(std::move(one));
}

std::string soundText(std::size_t edits, const ContainerCounts& containers) {
    const auto some = [](std::size_t count, const char* what) {
        return count ? format(", %zu %s%s", count, what, count == 1 ? "" : "s") : std::string();
    };
    return format("%zu %s", edits, edits == 1 ? "edit or log" : "edits and logs") +
           some(containers.bins, "bin") + some(containers.groups, "group") +
           some(containers.documents, "document") + some(containers.filters, "filter") +
           ", all sound";
}

Status check(Workspace& workspace, const Options& options, bool repair) {
    std::vector<Status> wrong;
    if (repair) {
        if (const Status restored = restoreEdits(wrong); !restored)
            return restored;
        if (const Status rebuilt = CurrentProject::rebuildDatabase(); !rebuilt)
            return rebuilt;
        // Bins leave out what the database does not know, so they come after it.
        for (Status& one : restoreContainers())
            wrong.push_back(std::move(one));
    }
    EditReport edits = checkEdits();
    if (Status renewed = repair ? Status() : forgetDeleted(workspace, edits); !renewed)
        return renewed;
    for (auto& [cookie, one] : edits.wrong)
        addNew(wrong, std::move(one));
    ContainerCounts containers;
    for (Status& one : checkContainers(&containers))
        addNew(wrong, std::move(one));
    const bool damagedBeside = !repair && WarningLog::count() > 0;
    if (options.json)
        print(reportJson(edits.count + containers.bins + containers.groups + containers.documents +
                             containers.filters,
                         wrong));
    else if (wrong.empty() && !damagedBeside)
        print(soundText(edits.count, containers) +
              (repair ? "; the project database was rebuilt\n" : "\n"));
    for (std::size_t i = 1; i < wrong.size(); ++i)
        fail(wrong[i]);
    if (!wrong.empty())
        return wrong.front();
    if (damagedBeside)
        return {StatusCode::damaged, CurrentProject::getFolder(),
                "the project is damaged beside its edits; a command that writes mends it"};
    return {};
}

} // namespace

void addCheckCommand(Commands commands) {
    auto repair = std::make_shared<bool>(false);
    CLI::App* command = commands.app.add_subcommand("check", "Verify every file of the project");
    command->add_flag("--repair", *repair,
                      "Put the version before a damaged file in its place and rebuild "
                      "the project database and the bins cache from the other files");
    command->footer(
        "What is damaged is kept beside its place as NAME.damaged. An edit whose file or history "
        "is damaged\nkeeps what can be read of it and loses its undo. What stays lost is named; "
        "the exit code is then 4.");
    command->callback([commands, repair] {
        commands.action = [&options = commands.options, repair] {
            return withProject(
                options, *repair ? Workspace::Use::write : Workspace::Use::read,
                [&](Workspace& workspace) { return check(workspace, options, *repair); });
        };
    });
}

} // namespace cutroom::cli
