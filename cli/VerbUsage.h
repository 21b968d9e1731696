// What may follow a verb, read from the line that `help` shows, so that a line that does not fit is
// refused before its verb runs.
//
//   lower-case      a word as it stands            one|two     one of them, without blanks
//   UPPER-CASE      any one word                   a b | c     either side, with blanks
//   [...]           may be left out                (...)       belongs together
//   x ...           once or more; [x] ... any number of times
//
// Neighbouring parts that may be left out stand in any order, each once.
#pragma once

#include "platform/base/Status.h"

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace cutroom::cli {

class VerbUsage {
public:
    // `text` is one of the program's own: that it is well formed is asserted.
    explicit VerbUsage(std::string_view text);
    ~VerbUsage();
    VerbUsage(VerbUsage&&) noexcept;
    VerbUsage& operator=(VerbUsage&&) noexcept;

    // Fails with the first word that does not fit, or `verb` when one is missing.
    Status check(const std::string& verb, const std::vector<std::string>& words) const;

    struct Part;

private:
    std::string text_;
    std::unique_ptr<Part> whole_;
};

} // namespace cutroom::cli
