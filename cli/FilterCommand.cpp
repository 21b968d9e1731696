// cutroom filter ...
#include "bins/BinManager.h"
#include "cli/Assets.h"
#include "cli/Command.h"
#include "cli/ContainerText.h"
#include "cli/FilterWords.h"
#include "cli/Names.h"
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

Status make(const Options& options, const FilterCommandWords& words) {
    const auto name = parseName(words.filter);
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
    const auto name = parseName(words.name);
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
    const auto name = parseName(words.name);
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

// The subcommands of `whole`, which share their words.
class Subcommands {
public:
    Subcommands(Commands commands, CLI::App* whole) : commands_(commands), whole_(whole) {}

    CLI::App* add(const char* name, const char* about, Workspace::Use use,
                  Status (*body)(const Options&, const FilterCommandWords&)) const {
        CLI::App* const command = whole_->add_subcommand(name, about);
        runsWithProject(commands_, command, use, [words = words_, body](const Options& options) {
            return body(options, *words);
        });
        return command;
    }
    CLI::App* forFilter(CLI::App* command) const {
        command->add_option("filter", words_->filter, "Name or cookie")
            ->required()
            ->type_name("FILTER");
        return command;
    }
    CLI::Option* withSources(CLI::App* command, const char* type) const {
        return command->add_option("sources", words_->sources, "Names or cookies")->type_name(type);
    }
    CLI::Option* withVisibility(CLI::App* command) const {
        return command->add_option("--visibility", words_->visibility, "always, optional or never")
            ->type_name("WHEN");
    }
    FilterCommandWords& words() const { return *words_; }

private:
    const Commands commands_;
    CLI::App* const whole_;
    const std::shared_ptr<FilterCommandWords> words_ = std::make_shared<FilterCommandWords>();
};

} // namespace

void addFilterCommand(Commands commands) {
    CLI::App* const whole = commands.app.add_subcommand(
        "filter", "Views of the whole project: everything, logs, images, tags, your own");
    whole->require_subcommand(1);
    whole->footer("  cutroom filter show Logs\n"
                  "  cutroom filter new \"Night shots\" Rushes night --visibility optional\n"
                  "  cutroom filter bin \"Night shots\" \"Both\" --combine all\n\n"
                  "A filter is named by its name or its cookie. Those of the system follow the "
                  "project;\nthe bins of your own hold what their sources held.");
    const Subcommands sub(commands, whole);
    FilterCommandWords& words = sub.words();
    constexpr auto kRead = Workspace::Use::read;
    constexpr auto kWrite = Workspace::Use::write;
    sub.add("list", "Show the project's filters", kRead,
            [](const Options& options, const FilterCommandWords&) {
                print(listFilters(options.json));
                return Status();
            });
    sub.forFilter(sub.add("show", "Show the bins of a filter and what they hold", kRead, show));
    CLI::App* const fresh = sub.add(
        "new", "Make a filter over copies of bins, or of the bins of filters", kWrite, make);
    fresh->add_option("name", words.filter, "Name of the filter")->required()->type_name("NAME");
    sub.withSources(fresh, "BIN|FILTER");
    sub.withVisibility(fresh);
    sub.withSources(
           sub.forFilter(sub.add("update", "Give a filter of yours other bins", kWrite, update)),
           "BIN|FILTER")
        ->required();
    sub.withSources(sub.add("delete", "Delete filters of yours", kWrite, destroy), "FILTER")
        ->required();
    sub.forFilter(sub.add("rename", "Give a filter of yours another name", kWrite, rename))
        ->add_option("name", words.name, "The new name")
        ->required()
        ->type_name("NAME");
    sub.withVisibility(
           sub.forFilter(sub.add("set", "Say when a filter is shown", kWrite, setVisibility)))
        ->required();
    CLI::App* const combined =
        sub.forFilter(sub.add("bin", "Make one real bin of the bins of a filter", kWrite, makeBin));
    combined->add_option("name", words.name, "Name of the bin")->required()->type_name("NAME");
    combined
        ->add_option("--combine", words.combine,
                     "What lies in any of the bins (the default), in all, or in the first only")
        ->type_name("any|all|first");
}

} // namespace cutroom::cli
