// Wide text on its way into a file: UTF-8, with what a format must write in another way.
#pragma once

#include <string>
#include <string_view>

namespace cutroom {

// Appends one character as UTF-8; what is no Unicode scalar value becomes U+FFFD.
void appendChar(std::string& out, wchar_t c);
// Appends a text as UTF-8.
void appendUtf8(std::string& out, std::wstring_view text);

// Appends the characters for which `plain` holds (all of them ASCII) as they are, and calls
// `other(c)`, which appends it, for each of the rest.
template <class Plain, class Other>
void appendMapped(std::string& out, std::wstring_view text, const Plain& plain,
                  const Other& other) {
    char run[128];
    std::size_t length = 0;
    for (const wchar_t c : text) {
        if (plain(c)) {
            run[length++] = static_cast<char>(c);
            if (length < sizeof run)
                continue;
        }
        out.append(run, length);
        length = 0;
        if (!plain(c))
            other(c);
    }
    out.append(run, length);
}

} // namespace cutroom
