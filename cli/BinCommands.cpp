// cutroom bin ...
#include "bins/BinManager.h"
#include "bins/ContainerModifier.h"
#include "cli/Assets.h"
#include "cli/Command.h"
#include "cli/ContainerText.h"
#include "cli/Names.h"
#include "platform/base/Strings.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <memory>
#include <optional>

namespace cutroom::cli {

namespace {

// The words of any of the sub-commands.
struct BinWords {
    std::string bin;
    std::string name;
    std::vector<std::string> assets;
    std::string columns;
    std::string before;   // add: an item of the bin
    std::string contents; // add: another bin
    bool all = false;
    bool descending = false;
    std::string view, tiles, autoPosition, permanent;
    std::optional<std::string> externalId;
};

// Nothing for an option that was not given.
std::optional<bool> onOff(const std::string& word) {
    return word.empty() ? std::nullopt : std::optional(word == "on");
}

Status checkAccepts(const BinData& bin, const Cookie& asset) {
    if (bin.canAccomodate(asset))
        return {};
    const std::string what = assetName(asset);
    if (asset == bin.getID())
        return {StatusCode::wrongUsage, what, "a bin cannot hold itself"};
    if (asset.type() != 'G' && asset.type() != 'M')
        return {StatusCode::wrongUsage, what, "a bin does not hold such assets"};
    if (!BinData::allowNestedBins())
        return {StatusCode::wrongUsage, what,
                "bins hold bins only with the preference \"Behaviour : Nested bins\"; "
                "`cutroom shell` sets it: preference \"Behaviour : Nested bins\" true"};
    return {StatusCode::wrongUsage, what, "the bin lies in it"};
}

// Only what the bin does not hold yet; one asset that it cannot hold refuses all.
Status addAssets(const Kv::Ptr<BinData>& bin, const BinWords& words) {
    const auto assets = findAssets(words.assets, kAnyAsset & ~unsigned{kGroups});
    if (!assets)
        return assets.status();
    for (const Cookie& asset : *assets)
        if (Status accepted = checkAccepts(*bin, asset); !accepted)
            return accepted;
    const ContainerModifier<BinData> change(bin, "added by command");
    if (words.before.empty()) {
        bin->add(*assets);
        return {};
    }
    const auto before = findAsset(words.before, kAnyAsset);
    if (!before)
        return before.status();
    if (!bin->contains(before->cookie))
        return {StatusCode::notFound, words.before, "the bin does not hold it"};
    for (const Cookie& asset : *assets)
        if (!bin->contains(asset)) {
            const EditPtr edit(asset);
            bin->insertBefore(before->cookie, edit ? BinItem(edit) : BinItem(asset, 0.0));
        }
    return {};
}

Status add(const Options&, const BinWords& words) {
    if (words.assets.empty() == words.contents.empty())
        return {StatusCode::wrongUsage, words.bin, "say what to add, or --contents-of another bin"};
    const auto bin = openBin(words.bin);
    if (!bin)
        return bin.status();
    if (words.contents.empty())
        return addAssets(*bin, words);
    const auto other = openBin(words.contents);
    if (!other)
        return other.status();
    if (!(*bin)->import((*other)->getID()))
        note(words.contents + ": nothing in it that the bin could take and does not hold");
    return {};
}

Status makeBin(const Options& options, const BinWords& words) {
    const auto name = parseName(words.name);
    if (!name)
        return name.status();
    if (Status unique = checkBinName(words.name); !unique)
        return unique;
    const Kv::Ptr<BinData> bin = BinManager::instance().newBin();
    const auto undo = [&](Status why) {
        const Status gone = BinManager::instance().destroy(bin->getID(), "not made");
        return gone.ok() || gone.code() == StatusCode::notFound ? why : gone;
    };
    if (Status added = addAssets(bin, words); !added)
        return undo(added);
    bin->setName(*name); // not before: one of the assets may have this name
    if (Status saved = BinManager::instance().saveAll(); !saved)
        return undo(saved);
    print(madeText(bin->getID(), *name, options.json));
    return {};
}

Status remove(const Options&, const BinWords& words) {
    if (words.all != words.assets.empty())
        return {StatusCode::wrongUsage, words.bin, "say what to take out, or --all"};
    const auto bin = openBin(words.bin);
    if (!bin)
        return bin.status();
    const ContainerModifier<BinData> change(*bin, "removed by command");
    if (words.all) {
        (*bin)->clear();
        return {};
    }
    CookieVec going;
    for (const std::string& text : words.assets) {
        // A bin from a backup may hold what is gone from the project, and then has a cookie only.
        if (const auto cookie = Cookie::fromString(text); cookie && (*bin)->contains(*cookie)) {
            going.push_back(*cookie);
            continue;
        }
        const auto asset = findAsset(text, kAnyAsset);
        if (!asset)
            return asset.status();
        if (!(*bin)->contains(asset->cookie))
            return {StatusCode::notFound, text, "the bin does not hold it"};
        going.push_back(asset->cookie);
    }
    (*bin)->remove(going);
    return {};
}

Status sort(const Options&, const BinWords& words) {
    const auto column = parseColumn(words.columns);
    if (!column)
        return column.status();
    const auto bin = openBin(words.bin);
    if (bin)
        (*bin)->sort(*column, !words.descending);
    return bin.status();
}

Status set(const Options&, const BinWords& words) {
    using namespace Kv::ImageSize;
    const auto bin = openBin(words.bin);
    if (!bin)
        return bin.status();
    if (words.view.empty() && words.tiles.empty() && words.autoPosition.empty() &&
        words.permanent.empty() && !words.externalId)
        return {StatusCode::wrongUsage, words.bin, "say what to change"};
    std::string view = words.view;
    if (!view.empty())
        view.front() = static_cast<char>(view.front() - 'a' + 'A');
    const ContainerModifier<BinData> change(*bin, "set by command");
    if (!view.empty())
        (*bin)->setViewType(fromPersistableString(view == "Split" ? "SplitImage" : view));
    if (!words.tiles.empty())
        (*bin)->setTileSize(words.tiles == "small"    ? Presets::Small
                            : words.tiles == "normal" ? Presets::Normal
                            : words.tiles == "large"  ? Presets::Large
                                                      : Presets::Huge);
    if (const auto on = onOff(words.autoPosition))
        (*bin)->setAutoPosition(*on);
    if (const auto on = onOff(words.permanent))
        (*bin)->setPermanent(*on);
    if (words.externalId)
        (*bin)->setExternalID(toWide(*words.externalId));
    return {};
}

Status show(const Options& options, const BinWords& words) {
    const auto columns = parseColumns(words.columns);
    if (!columns)
        return columns.status();
    const auto bin = openBin(words.bin);
    if (bin)
        print(showBin(**bin, *columns, options.json));
    return bin.status();
}

Status holding(const Options& options, const BinWords& words) {
    const auto asset = findAsset(words.bin, kAnyAsset);
    if (!asset)
        return asset.status();
    BinManager& manager = BinManager::instance();
    CookieVec holders = manager.findBinsContainingBin(asset->cookie);
    for (const auto& bin : manager.findBinsContainingLog(asset->cookie))
        if (std::find(holders.begin(), holders.end(), bin->getID()) == holders.end())
            holders.push_back(bin->getID());
    print(showHolders(holders, options.json));
    return {};
}

// --- words ---------------------------------------------------------------------------------------

class BinCommand {
public:
    explicit BinCommand(Commands commands)
        : commands_(commands),
          whole_(commands.app.add_subcommand("bin", "Make, fill, order and show bins")) {
        whole_->require_subcommand(1);
        whole_->footer("  cutroom bin new Dailies \"Reel 1\" \"Reel 2\"\n"
                       "  cutroom bin sort Dailies scene --descending\n"
                       "  cutroom bin show Dailies --columns name,scene,timecode\n"
                       "  cutroom list bins");
        addNamingCommands(commands, *whole_, "BIN", kBins);
    }

    using Body = Status (*)(const Options&, const BinWords&);
    CLI::App* add(const char* name, const char* about, Workspace::Use use, Body body) {
        CLI::App* const command = whole_->add_subcommand(name, about);
        runsWithProject(commands_, command, use,
                        [words = words_, body](const Options& o) { return body(o, *words); });
        return command;
    }
    CLI::App* addForBin(const char* name, const char* about, Workspace::Use use, Body body) {
        CLI::App* const command = add(name, about, use, body);
        command->add_option("bin", words_->bin, "Name or cookie")->required()->type_name("BIN");
        return command;
    }
    BinWords& words() { return *words_; }

private:
    Commands commands_;
    CLI::App* whole_;
    std::shared_ptr<BinWords> words_ = std::make_shared<BinWords>();
};

void addReading(BinCommand& bins) {
    constexpr auto kRead = Workspace::Use::read;
    BinWords& words = bins.words();
    bins.add("list", "Show the project's bins: cookie, contents, last change, name", kRead,
             [](const Options& options, const BinWords&) {
                 print(listBins(options.json));
                 return Status();
             });
    bins.addForBin("show", "Show a bin's items", kRead, show)
        ->add_option("--columns", words.columns,
                     "Attributes to show: name,scene,timecode ... (default: the bin's columns)");
    bins.add("holding", "Show the bins that hold an asset", kRead, holding)
        ->add_option("asset", words.bin, "Name or cookie")
        ->required()
        ->type_name("ASSET");
}

void addFilling(BinCommand& bins) {
    constexpr auto kWrite = Workspace::Use::write;
    BinWords& words = bins.words();
    CLI::App* command = bins.add("new", "Make a bin", kWrite, makeBin);
    command->add_option("name", words.name, "Its name")->required()->type_name("NAME");
    command->add_option("assets", words.assets, "What to put in")->type_name("ASSET");

    command = bins.addForBin("add", "Put assets into a bin, as far as it does not hold them",
                             kWrite, add);
    command->add_option("assets", words.assets, "Names or cookies")->type_name("ASSET");
    command->add_option("--before", words.before, "Put them before this item")->type_name("ASSET");
    command->add_option("--contents-of", words.contents, "Add what another bin holds")
        ->type_name("BIN");

    command = bins.addForBin("remove", "Take assets out of a bin; they stay in the project", kWrite,
                             remove);
    command->add_option("assets", words.assets, "Names or cookies")->type_name("ASSET");
    command->add_flag("--all", words.all, "Take everything out");

    command = bins.addForBin("sort", "Put a bin's items in the order of a column", kWrite, sort);
    command->add_option("column", words.columns, "name, scene, take, created ...")
        ->required()
        ->type_name("COLUMN");
    command->add_flag("--descending", words.descending, "The other way round");
}

void addSettings(BinCommand& bins) {
    BinWords& words = bins.words();
    CLI::App* command =
        bins.addForBin("set", "Change how a bin is shown", Workspace::Use::write, set);
    const CLI::IsMember isOnOff({"on", "off"});
    command->add_option("--view", words.view, "How galleries show it")
        ->check(CLI::IsMember({"image", "table", "hybrid", "split"}));
    command->add_option("--tiles", words.tiles, "Size of the tiles")
        ->check(CLI::IsMember({"small", "normal", "large", "huge"}));
    command->add_option("--auto-position", words.autoPosition, "Tiles place themselves")
        ->check(isOnOff);
    command->add_option("--permanent", words.permanent, "Stays when the project is cleaned up")
        ->check(isOnOff);
    command->add_option("--external-id", words.externalId, "Its name in another system");
}

} // namespace

void addBinCommand(Commands commands) {
    BinCommand bins(commands);
    addReading(bins);
    addFilling(bins);
    addSettings(bins);
}

} // namespace cutroom::cli
