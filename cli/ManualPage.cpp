#include "cli/ManualPage.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <sstream>
#include <vector>

namespace cutroom::cli {

namespace {

// Text as it is: hyphens of the ASCII kind, so that an option can be copied out of the page, and no
// line that starts with a macro.
std::string plain(const std::string& text) {
    std::string out;
    for (const char c : text) {
        if ((c == '.' || c == '\'') && (out.empty() || out.back() == '\n'))
            out += "\\&";
        if (c == '\\')
            out += "\\e";
        else if (c == '-')
            out += "\\-";
        else
            out += c;
    }
    return out;
}

std::string bold(const std::string& text) { return "\\fB" + plain(text) + "\\fR"; }

std::string italic(const std::string& text) { return "\\fI" + plain(text) + "\\fR"; }

// "edits|logs" for a choice, the type's name for anything else.
std::string valueText(const CLI::Option& option) {
    const std::string type = option.get_type_name();
    const auto open = type.find('{');
    const auto close = type.find('}', open);
    if (close != std::string::npos) {
        std::string choices = type.substr(open + 1, close - open - 1);
        std::replace(choices.begin(), choices.end(), ',', '|');
        return bold(choices);
    }
    return italic(type.substr(0, type.find(':')));
}

std::string optionText(const CLI::Option& option) {
    std::string names;
    for (const auto& name : option.get_snames())
        names += (names.empty() ? "" : ", ") + bold('-' + name);
    for (const auto& name : option.get_lnames())
        names += (names.empty() ? "" : ", ") + bold("--" + name);
    return option.get_items_expected_max() > 0 ? names + ' ' + valueText(option) : names;
}

std::string positionalText(const CLI::Option& option) {
    const std::string word =
        italic(option.get_name()) + (option.get_items_expected_max() > 1 ? "..." : "");
    return option.get_required() ? word : '[' + word + ']';
}

enum class Words { positionals, options };

// The words of a command that the page shows.
std::vector<const CLI::Option*> wordsOf(const CLI::App& app, Words which) {
    return app.get_options([=](const CLI::Option* option) {
        return !option->get_group().empty() &&
               option->get_positional() == (which == Words::positionals);
    });
}

void entry(std::string& page, const std::string& head, const std::string& meaning) {
    page += ".TP\n" + head + '\n' + plain(meaning) + '\n';
}

void addWords(std::string& page, const CLI::App& command) {
    for (const CLI::Option* word : wordsOf(command, Words::positionals)) {
        const std::string value = valueText(*word);
        entry(page, italic(word->get_name()) + (value.starts_with("\\fB") ? ": " + value : ""),
              word->get_description());
    }
    for (const CLI::Option* option : wordsOf(command, Words::options))
        if (option != command.get_help_ptr())
            entry(page, optionText(*option), option->get_description());
}

// What a command says below its words: sentences flow, indented lines are examples.
void addFooter(std::string& page, const std::string& footer) {
    std::istringstream lines(footer);
    bool examples = false;
    page += ".PP\n";
    for (std::string line; std::getline(lines, line);) {
        if (line.starts_with("  ") != examples) {
            examples = !examples;
            page += examples ? ".PP\n.nf\n.RS\n" : ".RE\n.fi\n.PP\n";
        }
        if (!line.empty())
            page += plain(examples ? line.substr(2) : line) + '\n';
    }
    if (examples)
        page += ".RE\n.fi\n";
}

void addCommand(std::string& page, const CLI::App& command, const std::string& name) {
    page += ".SS " + plain(name) + "\n.B " + plain("cutroom " + name) + "\n";
    for (const CLI::Option* word : wordsOf(command, Words::positionals))
        page += positionalText(*word) + '\n';
    if (wordsOf(command, Words::options).size() > 1) // --help is everywhere
        page += "[" + italic("OPTION") + "]...\n";
    page += ".PP\n" + plain(command.get_description()) + ".\n";
    addWords(page, command);
    if (command.get_footer() != command.get_parent()->get_footer()) // inherited otherwise
        addFooter(page, command.get_footer());
    for (const CLI::App* sub :
         command.get_subcommands([](const CLI::App* each) { return !each->get_group().empty(); }))
        addCommand(page, *sub, name + ' ' + sub->get_name());
}

} // namespace

std::string manualCommands(const CLI::App& app) {
    std::string page = ".SH OPTIONS\n";
    for (const CLI::Option* option : wordsOf(app, Words::options))
        entry(page, optionText(*option), option->get_description());
    page += ".SH COMMANDS\n";
    for (const CLI::App* command :
         app.get_subcommands([](const CLI::App* each) { return !each->get_group().empty(); }))
        addCommand(page, *command, command->get_name());
    return page;
}

} // namespace cutroom::cli
