// cutroom show EDIT
#include "cli/Command.h"
#include "cli/EditView.h"
#include "cli/Names.h"

#include <CLI/CLI.hpp>

#include <memory>

namespace cutroom::cli {

void addShowCommand(Commands commands) {
    auto edit = std::make_shared<std::string>();
    auto width = std::make_shared<int>(0);
    CLI::App* command =
        commands.app.add_subcommand("show", "Draw an edit's tracks, clips, transitions, markers");
    command->add_option("edit", *edit, "Name or cookie")->required()->type_name("EDIT");
    command->add_option("--width", *width, "Columns to draw in (default: the terminal's)")
        ->check(CLI::Range(40, 1000));
    command->footer("With --json a fixed form for programs: frames count from the edit's start at "
                    "its own rate.");
    command->callback([commands, edit, width] {
        commands.action = [&options = commands.options, edit, width] {
            return withProject(options, Workspace::Use::read, [&](Workspace&) -> Status {
                const auto opened = openEdit(*edit);
                if (!opened)
                    return opened.status();
                const EditView view = describe(*opened);
                print(options.json ? toJson(view)
                                   : draw(view, *width ? *width : terminalWidth(), colourWanted()));
                return {};
            });
        };
    });
}

} // namespace cutroom::cli
