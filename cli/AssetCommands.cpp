// cutroom rename, delete
#include "cli/Command.h"
#include "cli/Names.h"
#include "platform/base/Strings.h"
#include "platform/store/Edit.h"
#include "platform/store/EditManager.h"

#include <CLI/CLI.hpp>

#include <memory>

namespace cutroom::cli {

namespace {

Status rename(const std::string& name, const std::string& newName) {
    const auto wide = toWideStrict(newName);
    if (!wide || wide->empty())
        return {StatusCode::wrongUsage, newName, "a name is UTF-8 text that is not empty"};
    const auto edit = openEdit(name);
    if (!edit)
        return edit.status();
    if ((*edit)->isReadOnly())
        return {StatusCode::failed, name, "the edit is read-only"};
    EditManager::instance().makeBackup(*edit, "Rename");
    EditModifier modifier(*edit, "Rename");
    modifier->setName(*wide);
    return {};
}

Status deleteAll(const std::vector<std::string>& names) {
    CookieVec cookies;
    for (const std::string& name : names) {
        const auto cookie = findEditCookie(name);
        if (!cookie)
            return cookie.status();
        cookies.push_back(*cookie);
    }
    return EditManager::instance().deleteEdits(cookies, "deleted by command");
}

} // namespace

void addRenameCommand(Commands commands) {
    auto words = std::make_shared<std::pair<std::string, std::string>>();
    CLI::App* command = commands.app.add_subcommand("rename", "Give an edit or log another name");
    command->add_option("edit", words->first, "Name or cookie")->required()->type_name("EDIT");
    command->add_option("name", words->second, "The new name")->required()->type_name("NAME");
    command->footer("  cutroom rename \"Reel 1\" \"Reel 1 locked\"");
    command->callback([commands, words] {
        commands.action = [&options = commands.options, words] {
            return withProject(options, Workspace::Use::write,
                               [&](Workspace&) { return rename(words->first, words->second); });
        };
    });
}

void addDeleteCommand(Commands commands) {
    auto names = std::make_shared<std::vector<std::string>>();
    CLI::App* command =
        commands.app.add_subcommand("delete", "Delete edits or logs; media files are not touched");
    command->add_option("edits", *names, "Names or cookies")->required()->type_name("EDIT");
    command->footer("The last state of a deleted edit stays in the project as "
                    "edits/COOKIE.edit.bak.\n\n  cutroom delete \"Reel 1\"");
    command->callback([commands, names] {
        commands.action = [&options = commands.options, names] {
            return withProject(options, Workspace::Use::write,
                               [&](Workspace&) { return deleteAll(*names); });
        };
    });
}

} // namespace cutroom::cli
