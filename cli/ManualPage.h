// The part of the manual page that follows from the commands themselves.
#pragma once

#include <string>

namespace CLI {
class App;
}

namespace cutroom::cli {

// The options of the program and each of its commands with its words, options and examples, as
// manual page source (man(7) macros). share/man/cutroom.1.in holds what stands around them.
std::string manualCommands(const CLI::App& app);

} // namespace cutroom::cli
