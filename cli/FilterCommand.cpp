// cutroom filter ...
#include "bins/BinManager.h"
#include "cli/Assets.h"
#include "cli/Command.h"
#include "cli/ContainerText.h"
#include "cli/FilterWords.h"
#include "platform/base/Strings.h"

#include <CLI/CLI.hpp>

#include <memory>

namespace cutroom::cli {

namespace {

struct FilterCommandWords {
    std::string filter;
    std::vector<std::string> sources;
    std::string visibility = "always";
    std::string name;
    std::string combine = "any";
};

ProjectFilterManager& filters() { return ProjectFilterManager::instance(); }

Status failedToSave(const std::string& filter) {
    return {StatusCode::failed, filter, "the filter cannot be saved"}; // why has been logged
}

Result<std::wstring> nameOf(const std::string& text) {
    const auto name = toWideStrict(text);
    if (!name || name->empty())
        return Status(StatusCode::wrongUsage, text, "a name is UTF-8 text that is not empty");
    return *name;
}

Status make(const Options& options, const FilterCommandWords& words) {
    const auto name = nameOf(words.filter);
    if (!name)
        return name.status();
    if (Status unique = checkFilterName(*name); !unique)
        return unique;
    const auto visibility = visibilityOf(words.visibility);
    if (!visibility)
        return visibility.status();
    const auto bins = filterBinsOf(words.sources);
    if (!bins)
        return bins.status();
    const FilterPtr made = filters().createFilter(*bins, *name, *visibility);
    if (!made)
        return failedToSave(words.filter);
    print(madeText(made->getID(), *name, options.json));
    return {};
}

Status update(const Options&, const FilterCommandWords& words) {
    const auto filter = findUserFilter(words.filter);
    if (!filter)
        return filter.status();
    const auto bins = filterBinsOf(words.sources);
    if (!bins)
        return bins.status();
    return filters().updateFilter(*filter, *bins) ? Status() : failedToSave(words.filter);
}

// All are found before the first goes.
Status destroy(const Options&, const FilterCommandWords& words) {
    std::vector<Kv::Ptr<UserFilter>> going;
    for (const std::string& text : words.sources) {
        const auto filter = findUserFilter(text);
        if (!filter)
            return filter.status();
        going.push_back(*filter);
    }
    Status done;
    for (std::size_t i = 0; i < going.size() && done.ok(); ++i)
        done = deleteFilter(going[i]);
    return done;
}

Status rename(const Options&, const FilterCommandWords& words) {
    const auto name = nameOf(words.name);
    return name ? renameFilter(words.filter, *name) : name.status();
}

Status show(const Options& options, const FilterCommandWords& words) {
    const auto filter = findFilter(words.filter);
    if (filter)
        print(showFilter(**filter, options.json));
    return filter.status();
}

Status setVisibility(const Options&, const FilterCommandWords& words) {
    const auto filter = findFilter(words.filter);
    if (!filter)
        return filter.status();
    const auto visibility = visibilityOf(words.visibility);
    if (!visibility)
        return visibility.status();
    return filters().setVisibility(*filter, *visibility) ? Status() : failedToSave(words.filter);
}

Status makeBin(const Options& options, const FilterCommandWords& words) {
    const auto filter = findFilter(words.filter);
    if (!filter)
        return filter.status();
    const auto name = nameOf(words.name);
    if (!name)
        return name.status();
    if (Status unique = checkBinName(words.name); !unique)
        return unique;
    const auto operation = setOperationOf(words.combine);
    if (!operation)
        return operation.status();
    const Kv::Ptr<BinData> bin = filters().makeBin(*filter, *operation, *name);
    if (Status saved = BinManager::instance().saveAll(); !saved)
        return saved;
    print(madeText(bin->getID(), *name, options.json));
    return {};
}

} // namespace

void addFilterCommand(Commands commands) {
    const auto words = std::make_shared<FilterCommandWords>();
    CLI::App* const whole = commands.app.add_subcommand(
        "filter", "Views of the whole project: everything, logs, images, tags, your own");
    whole->require_subcommand(1);
    whole->footer("  cutroom filter show Logs\n"
                  "  cutroom filter new \"Night shots\" Rushes night --visibility optional\n"
                  "  cutroom filter bin \"Night shots\" \"Both\" --combine all\n\n"
                  "A filter is named by its name or its cookie. Those of the system follow the "
                  "project;\nthe bins of your own hold what their sources held.");
    const auto sub = [&](const char* name, const char* about, Workspace::Use use,
                         Status (*body)(const Options&, const FilterCommandWords&)) {
        CLI::App* const command = whole->add_subcommand(name, about);
        runsWithProject(commands, command, use,
                        [words, body](const Options& options) { return body(options, *words); });
        return command;
    };
    const auto forFilter = [&](CLI::App* command, const char* type = "FILTER") {
        const bool fresh = type[0] == 'N';
        command
            ->add_option(fresh ? "name" : "filter", words->filter,
                         fresh ? "Name of the filter" : "Name or cookie")
            ->required()
            ->type_name(type);
        return command;
    };
    const auto withSources = [&](CLI::App* command, const char* type) {
        return command->add_option("sources", words->sources, "Names or cookies")->type_name(type);
    };
    const auto withVisibility = [&](CLI::App* command) {
        return command->add_option("--visibility", words->visibility, "always, optional or never")
            ->type_name("WHEN");
    };
    constexpr auto kRead = Workspace::Use::read;
    constexpr auto kWrite = Workspace::Use::write;
    sub("list", "Show the project's filters", kRead,
        [](const Options& options, const FilterCommandWords&) {
            print(listFilters(options.json));
            return Status();
        });
    forFilter(sub("show", "Show the bins of a filter and what they hold", kRead, show));
    CLI::App* const fresh = forFilter(
        sub("new", "Make a filter over copies of bins, or of the bins of filters", kWrite, make),
        "NAME");
    withSources(fresh, "BIN|FILTER");
    withVisibility(fresh);
    withSources(forFilter(sub("update", "Give a filter of yours other bins", kWrite, update)),
                "BIN|FILTER");
    withSources(sub("delete", "Delete filters of yours", kWrite, destroy), "FILTER")->required();
    forFilter(sub("rename", "Give a filter of yours another name", kWrite, rename))
        ->add_option("name", words->name, "The new name")
        ->required()
        ->type_name("NAME");
    withVisibility(forFilter(sub("set", "Say when a filter is shown", kWrite, setVisibility)))
        ->required();
    CLI::App* const combined =
        forFilter(sub("bin", "Make one real bin of the bins of a filter", kWrite, makeBin));
    combined->add_option("name", words->name, "Name of the bin")->required()->type_name("NAME");
    combined
        ->add_option("--combine", words->combine,
                     "What lies in any of the bins (the default), in all, or in the first only")
        ->type_name("any|all|first");
}

} // namespace cutroom::cli
