#include "platform/base/Characters.h"

std::optional<std::string> cutroom::percentDecoded(std::string_view text) {
    std::string out;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '%') {
            out += text[i];
            continue;
        }
        const bool whole = i + 2 < text.size();
        const int high = whole ? hexDigit(text[i + 1]) : -1;
        const int low = whole ? hexDigit(text[i + 2]) : -1;
        if (high < 0 || low < 0)
            return std::nullopt;
        out += static_cast<char>(high * 16 + low);
        i += 2;
    }
    return out;
}
