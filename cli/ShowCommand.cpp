// cutroom show EDIT
#include "cli/Command.h"
#include "cli/EditView.h"
#include "cli/Names.h"
#include "platform/files/Files.h"

#include <CLI/CLI.hpp>

#include <memory>

namespace cutroom::cli {

namespace {

struct ShowWords {
    std::string edit;
    std::string svg;
    int width = 0;
};

Status show(const Options& options, const ShowWords& words) {
    const auto opened = openEdit(words.edit);
    if (!opened)
        return opened.status();
    const EditView view = describe(*opened);
    if (!words.svg.empty())
        return writeOutput(words.svg, toSvg(view));
    print(options.json ? toJson(view)
                       : draw(view, words.width ? words.width : terminalWidth(), colourWanted()));
    return {};
}

} // namespace

void addShowCommand(Commands commands) {
    auto words = std::make_shared<ShowWords>();
    CLI::App* command =
        commands.app.add_subcommand("show", "Draw an edit's tracks, clips, transitions, markers");
    command->add_option("edit", words->edit, "Name or cookie")->required()->type_name("EDIT");
    command->add_option("--svg", words->svg, "Draw a picture into this file instead")
        ->check(refuseEmpty)
        ->type_name("FILE");
    command->add_option("--width", words->width, "Columns to draw in (default: the terminal's)")
        ->check(CLI::Range(40, 1000));
    command->footer("With --json a fixed form for programs: frames count from the edit's start at "
                    "its own rate.\n\n"
                    "  cutroom show \"Reel 1\"\n  cutroom show \"Reel 1\" --svg reel1.svg");
    command->callback([commands, words] {
        commands.action = [&options = commands.options, words] {
            return withProject(options, Workspace::Use::read,
                               [&](Workspace&) { return show(options, *words); });
        };
    });
}

} // namespace cutroom::cli
