// cutroom group ...
#include "bins/AssetAssociationGroupManager.h"
#include "cli/Assets.h"
#include "cli/Command.h"
#include "cli/ContainerText.h"
#include "cli/Names.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <memory>

namespace cutroom::cli {

namespace {

// What a group ties together: assets that are not groups themselves.
constexpr unsigned kMembers = kAnyAsset & ~unsigned{kGroups};

struct GroupWords {
    std::string subject; // a group; of "new" its name, of "holding" an asset
    std::vector<std::string> assets;
    bool versions = false;
};

using GroupPtr = Kv::Ptr<AssetAssociationGroup>;

Status makeGroup(const Options& options, const GroupWords& words) {
    const auto name = parseName(words.subject);
    if (!name)
        return name.status();
    auto members = findAssets(words.assets, kMembers);
    if (!members)
        return members.status();
    CookieVec unique;
    for (const Cookie& asset : *members)
        if (std::find(unique.begin(), unique.end(), asset) == unique.end())
            unique.push_back(asset);
    AssetAssociationGroupManager& manager = AssetAssociationGroupManager::instance();
    const GroupPtr group = manager.createGroup(
        *name, unique,
        words.versions ? AssetAssociationGroup::kVersionsGroup : AssetAssociationGroup::kUserGroup);
    if (Status saved = manager.flushChanges(); !saved)
        return saved;
    print(madeText(group->getID(), *name, options.json));
    return {};
}

Status show(const Options& options, const GroupWords& words) {
    const auto group = openGroup(words.subject);
    if (group)
        print(showGroup(**group, options.json));
    return group.status();
}

Status add(const Options&, const GroupWords& words) {
    const auto group = openGroup(words.subject);
    if (!group)
        return group.status();
    const auto members = findAssets(words.assets, kMembers);
    if (!members)
        return members.status();
    (*group)->beginModifications();
    for (const Cookie& asset : *members)
        (*group)->add(asset);
    (*group)->endModifications("added by command");
    return {};
}

Status remove(const Options&, const GroupWords& words) {
    const auto group = openGroup(words.subject);
    if (!group)
        return group.status();
    CookieVec going;
    for (const std::string& text : words.assets) {
        // What a group holds may be gone from the project, and then has a cookie only.
        const auto cookie = Cookie::fromString(text);
        const auto asset = cookie && (*group)->contains(*cookie)
                               ? Result<NamedAsset>(NamedAsset{*cookie, text, kEdits})
                               : findAsset(text, kMembers);
        if (!asset)
            return asset.status();
        if (!(*group)->contains(asset->cookie))
            return {StatusCode::notFound, text, "the group does not hold it"};
        going.push_back(asset->cookie);
    }
    (*group)->remove(going);
    return {};
}

Status holding(const Options& options, const GroupWords& words) {
    const auto asset = findAsset(words.subject, kMembers);
    if (!asset)
        return asset.status();
    std::vector<Cookie> holders;
    for (const auto& group : AssetAssociationGroupManager::instance().findGroupsContainingAsset(
             asset->cookie, !words.versions))
        holders.push_back(group->getID());
    print(showHolders(holders, options.json));
    return {};
}

} // namespace

void addGroupCommand(Commands commands) {
    const auto words = std::make_shared<GroupWords>();
    CLI::App* const whole =
        commands.app.add_subcommand("group", "Tie assets together under one name");
    whole->require_subcommand(1);
    whole->footer("  cutroom group new \"Reel 1 cuts\" \"Reel 1 v1\" \"Reel 1 v2\" --versions\n"
                  "  cutroom group holding \"Reel 1 v2\"");
    addNamingCommands(commands, *whole, "GROUP", kGroups);
    const auto sub = [&](const char* name, const char* about, Workspace::Use use,
                         Status (*body)(const Options&, const GroupWords&)) {
        CLI::App* const command = whole->add_subcommand(name, about);
        runsWithProject(commands, command, use,
                        [words, body](const Options& options) { return body(options, *words); });
        return command;
    };
    const auto withSubject = [&](CLI::App* command, const char* name, const char* type,
                                 const char* about) {
        command->add_option(name, words->subject, about)->required()->type_name(type);
        return command;
    };
    const auto withGroup = [&](CLI::App* command) {
        return withSubject(command, "group", "GROUP", "Name or cookie");
    };
    const auto withAssets = [&](CLI::App* command) {
        command->add_option("assets", words->assets, "Names or cookies")
            ->required()
            ->type_name("ASSET");
        return command;
    };
    constexpr auto kRead = Workspace::Use::read;
    constexpr auto kWrite = Workspace::Use::write;
    sub("list", "Show the project's groups", kRead, [](const Options& options, const GroupWords&) {
        print(listGroups(options.json));
        return Status();
    });
    withGroup(sub("show", "Show what a group holds", kRead, show));
    withSubject(sub("holding", "Show the groups that hold an asset", kRead, holding), "asset",
                "ASSET", "Name or cookie")
        ->add_flag("--versions", words->versions, "Only groups of versions");
    withAssets(
        withSubject(sub("new", "Make a group", kWrite, makeGroup), "name", "NAME", "Its name"))
        ->add_flag("--versions", words->versions, "Its assets are versions of one another");
    withAssets(withGroup(sub("add", "Put assets into a group", kWrite, add)));
    withAssets(withGroup(
        sub("remove", "Take assets out of a group; they stay in the project", kWrite, remove)));
}

} // namespace cutroom::cli
