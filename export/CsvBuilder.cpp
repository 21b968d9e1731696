#include "export/CsvBuilder.h"

#include "export/WideText.h"
#include "platform/base/Strings.h"

#include <algorithm>

namespace cutroom {

namespace {

constexpr bool isPlain(wchar_t c) noexcept {
    return (c >= L' ' && c < 0x7F && c != L'"') || c == L'\t' || c == L'\n' || c == L'\r';
}

// Quotes also keep blanks at the ends from readers that would trim them.
bool needsQuotes(std::wstring_view text) {
    return !text.empty() && (text.front() == L' ' || text.back() == L' ' ||
                             text.find_first_of(L",\"\r\n") != std::wstring_view::npos);
}

bool isFormula(std::wstring_view text) {
    return !text.empty() && std::wstring_view(L"=+-@\t\r").find(text.front()) != text.npos &&
           !parseDouble(toUtf8(text));
}

} // namespace

void CsvBuilder::add(std::string_view utf8) { add(toWide(utf8)); }

void CsvBuilder::add(std::wstring_view text) {
    if (rowBegun_)
        text_ += ',';
    rowBegun_ = true;
    const bool guard = cells_ == Cells::guarded && isFormula(text);
    const bool quotes = needsQuotes(text);
    if (quotes)
        text_ += '"';
    if (guard)
        text_ += '\'';
    appendMapped(text_, text, isPlain, [this](wchar_t c) {
        if (c == L'"')
            text_ += "\"\"";
        else
            appendChar(text_, c < L' ' || c == 0x7F ? L'\uFFFD' : c);
    });
    if (quotes)
        text_ += '"';
}

void CsvBuilder::endRow() {
    text_ += "\r\n";
    rowBegun_ = false;
}

} // namespace cutroom
