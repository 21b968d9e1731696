// cutroom rename, delete
#include "bins/AssetAssociationGroupManager.h"
#include "bins/BinManager.h"
#include "bins/DocumentManager.h"
#include "cli/Assets.h"
#include "cli/Command.h"
#include "cli/FilterWords.h"
#include "cli/Names.h"
#include "cli/Permission.h"
#include "platform/store/Edit.h"
#include "platform/store/EditManager.h"

#include <CLI/CLI.hpp>

#include <memory>

namespace cutroom::cli {

namespace {

Status renameEdit(const std::string& name, const std::wstring& newName) {
    const auto edit = openEdit(name);
    if (!edit)
        return edit.status();
    if (Status may = mayChange(*edit); !may)
        return may;
    EditManager::instance().makeBackup(*edit, "Rename");
    EditModifier modifier(*edit, "Rename");
    modifier->setName(newName);
    return {};
}

template <class Container>
Status renameContainer(const Result<Kv::Ptr<Container>>& container, const std::wstring& newName) {
    if (container)
        (*container)->setName(newName);
    return container.status();
}

Status rename(const std::string& name, const std::string& newName, unsigned kinds) {
    const auto wide = parseName(newName);
    if (!wide)
        return wide.status();
    const auto asset = findAsset(name, kinds);
    if (!asset)
        return asset.status();
    const std::string cookie = asset->cookie.asString();
    switch (asset->kind) {
    case kBins:
        if (Status unique = checkBinName(newName, asset->cookie); !unique)
            return unique;
        return renameContainer(openBin(cookie), *wide);
    case kGroups:
        return renameContainer(openGroup(cookie), *wide);
    case kDocuments:
        return renameContainer(openDocument(cookie), *wide);
    case kFilters:
        return renameFilter(cookie, *wide);
    default:
        return renameEdit(cookie, *wide);
    }
}

} // namespace

Status deleteAssets(const std::vector<std::string>& names, const std::string& reason,
                    unsigned kinds) {
    CookieVec edits, bins, documents;
    std::vector<Kv::Ptr<AssetAssociationGroup>> groups;
    std::vector<Kv::Ptr<UserFilter>> filters;
    for (const std::string& name : names) {
        const auto asset = findAsset(name, kinds);
        if (!asset)
            return asset.status();
        if (Status may = marksAllow(asset->cookie, name); !may)
            return may;
        if (asset->kind == kGroups)
            groups.push_back(AssetAssociationGroupManager::instance().getGroup(asset->cookie));
        else if (asset->kind == kFilters)
            filters.push_back(*findUserFilter(asset->cookie.asString()));
        else
            (asset->kind == kEdits  ? edits
             : asset->kind == kBins ? bins
                                    : documents)
                .push_back(asset->cookie);
    }
    Status done = EditManager::instance().deleteEdits(edits, reason);
    for (std::size_t i = 0; i < bins.size() && done.ok(); ++i)
        done = BinManager::instance().destroy(bins[i], reason);
    for (std::size_t i = 0; i < groups.size() && done.ok(); ++i)
        done = AssetAssociationGroupManager::instance().removeGroup(groups[i], reason);
    if (done && !documents.empty())
        done = DocumentManager::instance().destroy(documents, reason);
    for (std::size_t i = 0; i < filters.size() && done.ok(); ++i)
        done = deleteFilter(filters[i]);
    return done;
}

namespace {

// The sub-commands for one kind, and the commands for all, differ in the kinds only.
CLI::App* addRename(Commands commands, CLI::App& parent, const char* about, const char* type,
                    unsigned kinds) {
    auto words = std::make_shared<std::pair<std::string, std::string>>();
    CLI::App* command = parent.add_subcommand("rename", about);
    command->add_option("asset", words->first, "Name or cookie")->required()->type_name(type);
    command->add_option("name", words->second, "The new name")->required()->type_name("NAME");
    runsWithProject(commands, command, Workspace::Use::write, [words, kinds](const Options&) {
        return rename(words->first, words->second, kinds);
    });
    return command;
}

CLI::App* addDelete(Commands commands, CLI::App& parent, const char* about, const char* type,
                    unsigned kinds) {
    auto names = std::make_shared<std::vector<std::string>>();
    CLI::App* command = parent.add_subcommand("delete", about);
    command->add_option("assets", *names, "Names or cookies")->required()->type_name(type);
    runsWithProject(commands, command, Workspace::Use::write, [names, kinds](const Options&) {
        return deleteAssets(*names, "deleted by command", kinds);
    });
    return command;
}

} // namespace

void addNamingCommands(Commands commands, CLI::App& parent, const char* type, unsigned kinds) {
    addRename(commands, parent, "Give another name", type, kinds);
    addDelete(commands, parent, "Delete; what it holds or stands for stays", type, kinds);
}

void addRenameCommand(Commands commands) {
    addRename(commands, commands.app,
              "Give an edit, log, bin, group, document or filter another name", "ASSET",
              kAnyAsset | kFilters)
        ->footer("  cutroom rename \"Reel 1\" \"Reel 1 locked\"");
}

void addDeleteCommand(Commands commands) {
    addDelete(commands, commands.app,
              "Delete edits, logs, bins, groups, documents or filters; media and outside files are "
              "not touched",
              "ASSET", kAnyAsset | kFilters)
        ->footer("The last state of a deleted edit stays in the project as "
                 "edits/COOKIE.edit.bak; renamed to\nCOOKIE.edit it is there again after the next "
                 "command that writes.\n\n  cutroom delete \"Reel 1\"");
}

} // namespace cutroom::cli
