#include "cli/Completion.h"
#include "cli/Assets.h"
#include "cli/FilterWords.h"
#include "cli/Workspace.h"
#include "platform/base/LogType.h"
#include "platform/base/Strings.h"
#include "platform/project/ProjDb.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <set>

namespace cutroom::cli {

namespace {

bool takesValue(const CLI::Option& option) { return option.get_items_expected_max() > 0; }

bool repeats(const CLI::Option& option) { return option.get_items_expected_max() > 1; }

// A command's option of that name ("-p", "--project"), or one of those that stand above it.
const CLI::Option* findOption(const CLI::App* command, const std::string& name) {
    for (; command != nullptr; command = command->get_parent())
        if (const CLI::Option* found = command->get_option_no_throw(name))
            return found;
    return nullptr;
}

std::vector<const CLI::App*> shownCommands(const CLI::App& command) {
    return command.get_subcommands([](const CLI::App* sub) { return !sub->get_group().empty(); });
}

// Follows the words before the last one through the commands and their options.
class Reading {
public:
    explicit Reading(const CLI::App& app) : command_(&app) {}

    void take(const std::string& word) {
        if (word == "=" && awaiting_ != nullptr)
            return; // some shells cut "--format=srt" in three
        if (awaiting_ != nullptr) {
            takeValue(word);
        } else if (word == "--") {
            onlyPositionals_ = true;
        } else if (word.starts_with('-') && !onlyPositionals_) {
            takeOption(word);
        } else if (const CLI::App* sub = findCommand(word)) {
            command_ = sub;
        } else {
            ++positionals_;
        }
    }

    const CLI::App& command() const { return *command_; }
    // The option whose value comes next, or null.
    const CLI::Option* awaiting() const { return awaiting_; }
    bool optionsMayFollow() const { return !onlyPositionals_; }
    const std::string& project() const { return project_; }

    // The positional that comes next, or null.
    const CLI::Option* positional() const {
        const auto all = command_->get_options(
            [](const CLI::Option* option) { return option->get_positional(); });
        if (positionals_ < all.size())
            return all[positionals_];
        return !all.empty() && repeats(*all.back()) ? all.back() : nullptr;
    }

private:
    const CLI::App* findCommand(const std::string& word) const {
        const auto found = command_->get_subcommands(
            [&](const CLI::App* sub) { return positionals_ == 0 && sub->check_name(word); });
        return found.empty() ? nullptr : found.front();
    }

    void takeOption(const std::string& word) {
        const auto equals = word.find('=');
        const CLI::Option* option = findOption(command_, word.substr(0, equals));
        if (option == nullptr || !takesValue(*option))
            return;
        awaiting_ = option;
        if (equals != std::string::npos)
            takeValue(word.substr(equals + 1));
    }

    void takeValue(const std::string& value) {
        if (awaiting_->check_lname("project"))
            project_ = value;
        awaiting_ = nullptr;
    }

    const CLI::App* command_;
    const CLI::Option* awaiting_ = nullptr;
    std::string project_;
    std::size_t positionals_ = 0;
    bool onlyPositionals_ = false;
};

// The candidates, in the order of their making.
class Answer {
public:
    explicit Answer(std::string typed) : typed_(std::move(typed)) {}

    // What stands before each candidate in the same word.
    void setPrefix(std::string prefix) { prefix_ = std::move(prefix); }
    void setPaths(const char* kind) { paths_ = kind; }

    void add(const std::string& word, std::string meaning = {}) {
        const std::string whole = prefix_ + word;
        // Each candidate is a line, so a name that holds a line break cannot be one.
        if (!whole.starts_with(typed_) || whole.find_first_of("\n\t") != std::string::npos)
            return;
        std::replace(meaning.begin(), meaning.end(), '\n', ' ');
        lines_ += meaning.empty() ? whole + '\n' : whole + '\t' + meaning + '\n';
    }

    std::string text() const { return ':' + paths_ + '\n' + lines_; }

private:
    std::string typed_, prefix_, lines_;
    std::string paths_ = "none";
};

void addCommands(const CLI::App& command, Answer& answer) {
    for (const CLI::App* sub : shownCommands(command))
        answer.add(sub->get_name(), sub->get_description());
}

void addOptions(const CLI::App* command, Answer& answer) {
    const CLI::Option* help = command->get_help_ptr(); // every command has one of its own
    for (; command != nullptr; command = command->get_parent())
        for (const CLI::Option* option : command->get_options()) {
            if (option->get_group().empty() ||
                (option == command->get_help_ptr() && option != help))
                continue;
            for (const auto& name : option->get_lnames())
                answer.add("--" + name, option->get_description());
            for (const auto& name : option->get_snames())
                answer.add('-' + name, option->get_description());
        }
}

// The kinds of assets that a value of that type names; 0 for another type.
unsigned assetKinds(const std::string& type) {
    return type == "EDIT"         ? kEdits
           : type == "BIN"        ? kBins
           : type == "GROUP"      ? kGroups
           : type == "DOCUMENT"   ? kDocuments
           : type == "FILTER"     ? kFilters
           : type == "BIN|FILTER" ? kBins | kFilters
           : type == "ASSET"      ? kAnyAsset
                                  : 0u;
}

void addAssetNames(unsigned kinds, const std::string& project, Answer& answer) {
    Options options;
    options.project = project;
    Workspace workspace(options);
    if (!workspace.open(Workspace::Use::read))
        return;
    std::set<std::string> names;
    if (kinds & kEdits) // edits are asked for far more often than logs
        projdb::forEach([&](const projdb::Record& record) {
            if (record.logType != kLogTypeSource)
                names.insert(record.name());
            return true;
        });
    for (const NamedAsset& asset : allAssets(kinds & ~unsigned{kEdits | kFilters}))
        names.insert(asset.name);
    if (kinds & kFilters) // those of the system, too
        for (const FilterPtr& filter : ProjectFilterManager::instance().getAllFilters())
            names.insert(toUtf8(filter->getName()));
    for (const auto& name : names)
        answer.add(name);
}

// Choices stand in the name of the value's type, as "TEXT:{edits,logs}".
void addChoices(const std::string& type, Answer& answer) {
    const auto open = type.find('{');
    const auto close = type.find('}', open);
    if (close == std::string::npos)
        return;
    for (std::size_t at = open + 1; at <= close;) {
        const auto end = std::min(type.find(',', at), close);
        answer.add(type.substr(at, end - at));
        at = end + 1;
    }
}

void addValues(const CLI::Option& option, const std::string& project, Answer& answer) {
    const std::string whole = option.get_type_name();
    const std::string type = whole.substr(0, whole.find(':'));
    if (type == "FILE" || type == "SCRIPT")
        answer.setPaths("files");
    else if (type == "FOLDER")
        answer.setPaths("folders");
    else if (const unsigned kinds = assetKinds(type))
        addAssetNames(kinds, project, answer);
    else
        addChoices(whole, answer);
}

// The last word is "--option=value": candidates carry the option along.
void addAttachedValues(const Reading& reading, const std::string& last, Answer& answer) {
    const std::string name = last.substr(0, last.find('='));
    const CLI::Option* option = findOption(&reading.command(), name);
    if (option == nullptr || !takesValue(*option))
        return;
    answer.setPrefix(name + '=');
    addValues(*option, reading.project(), answer);
}

} // namespace

std::string completion(const CLI::App& app, const std::vector<std::string>& words) {
    const std::string last = words.empty() ? std::string() : words.back();
    Reading reading(app);
    for (std::size_t i = 0; i + 1 < words.size(); ++i)
        reading.take(words[i]);

    Answer answer(reading.awaiting() && last == "=" ? "" : last);
    if (reading.awaiting() != nullptr)
        addValues(*reading.awaiting(), reading.project(), answer);
    else if (last.starts_with("--") && last.find('=') != std::string::npos)
        addAttachedValues(reading, last, answer);
    else if (last.starts_with('-') && reading.optionsMayFollow())
        addOptions(&reading.command(), answer);
    else if (!shownCommands(reading.command()).empty())
        addCommands(reading.command(), answer);
    else if (const CLI::Option* positional = reading.positional())
        addValues(*positional, reading.project(), answer);
    return answer.text();
}

} // namespace cutroom::cli
