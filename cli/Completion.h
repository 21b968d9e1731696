// Completion of command lines. The shells' scripts in share/ know no words of their own: they hand
// over what was typed and show what they are told, so a new command or option needs no line there.
#pragma once

#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace cutroom::cli {

// What may stand in the place of the last of `words` (the words after the command's own name; the
// last is the one being typed, perhaps empty). The first line tells what kind of path may stand
// there too: ":none", ":files" or ":folders". Then a line per candidate that begins as the last
// word does: the word, and after a tab what it means. Edits are named from the project that the
// words or the current folder lead to; without one there are no names, and no failure.
std::string completion(const CLI::App& app, const std::vector<std::string>& words);

} // namespace cutroom::cli
