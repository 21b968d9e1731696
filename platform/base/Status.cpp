#include "platform/base/Status.h"

#include <algorithm>

namespace cutroom {

std::string Status::text() const {
    if (ok())
        return "ok";
    std::string text = file_;
    if (line_ > 0)
        text += (text.empty() ? "" : ":") + std::to_string(line_);
    if (!text.empty())
        text += ": ";
    text += message_;
    std::replace_if(
        text.begin(), text.end(), [](char c) { return c == '\n' || c == '\r'; }, ' ');
    return text;
}

} // namespace cutroom
