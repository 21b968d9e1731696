#include "export/WideText.h"

namespace cutroom {

void appendChar(std::string& out, wchar_t c) {
    auto code = static_cast<unsigned long>(c);
    if ((code >= 0xD800 && code <= 0xDFFF) || code > 0x10FFFF)
        code = 0xFFFD;
    const auto add = [&out](unsigned long byte) { out += static_cast<char>(byte); };
    if (code < 0x80) {
        add(code);
    } else if (code < 0x800) {
        add(0xC0 | code >> 6);
        add(0x80 | (code & 0x3F));
    } else {
        if (code < 0x10000) {
            add(0xE0 | code >> 12);
        } else {
            add(0xF0 | code >> 18);
            add(0x80 | (code >> 12 & 0x3F));
        }
        add(0x80 | (code >> 6 & 0x3F));
        add(0x80 | (code & 0x3F));
    }
}

void appendUtf8(std::string& out, std::wstring_view text) {
    appendMapped(
        out, text, [](wchar_t c) { return c >= 0 && c < 0x80; },
        [&out](wchar_t c) { appendChar(out, c); });
}

} // namespace cutroom
