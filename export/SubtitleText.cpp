#include "export/SubtitleText.h"

#include <algorithm>

namespace cutroom {

namespace {

// An object, so that searches take it in instead of calling it for each character.
constexpr auto breaksLine = [](wchar_t c) noexcept {
    if (c >= L' ' && c < L'\x7F')
        return false;
    return c < L' ' || c == L'\x7F' || c == L'\x85' || c == L'\u2028' || c == L'\u2029';
};

std::wstring withoutBreaks(std::wstring_view text) {
    std::wstring line;
    bool pending = false;
    for (const wchar_t c : text) {
        if (breaksLine(c)) {
            pending = !line.empty();
            continue;
        }
        if (pending && c != L' ' && line.back() != L' ')
            line += L' ';
        pending = false;
        line += c;
    }
    return line;
}

// Takes the next word off `text`; empty at its end.
std::wstring_view takeWord(std::wstring_view& text) {
    const std::size_t begin = std::min(text.find_first_not_of(L' '), text.size());
    text.remove_prefix(begin);
    const std::wstring_view word = text.substr(0, text.find(L' '));
    text.remove_prefix(word.size());
    return word;
}

} // namespace

std::wstring_view SubtitleLine::of(std::wstring_view text) {
    if (std::any_of(text.begin(), text.end(), breaksLine)) {
        cleaned_ = withoutBreaks(text);
        text = cleaned_;
    }
    return text.find_first_not_of(L' ') == text.npos ? std::wstring_view() : text;
}

std::wstring_view SubtitleLine::of(std::wstring_view text, std::wstring_view otherwise) {
    const std::wstring_view line = of(text);
    return line.empty() ? of(otherwise) : line;
}

bool splitInHalf(std::wstring_view text, std::wstring& first, std::wstring& second) {
    std::wstring_view rest = text;
    const std::wstring_view word = takeWord(rest);
    std::wstring_view next = takeWord(rest);
    if (next.empty())
        return false;
    first = word;
    second.clear();
    for (; !next.empty(); next = takeWord(rest)) {
        std::wstring& line = second.empty() && first.size() < text.size() / 2 ? first : second;
        if (!line.empty())
            line += L' ';
        line += next;
    }
    return true;
}

std::wstring withShortArrows(std::wstring_view text) {
    std::wstring shorter;
    shorter.reserve(text.size());
    for (const wchar_t c : text) {
        while (c == L'>' && shorter.ends_with(L"--"))
            shorter.pop_back();
        shorter += c;
    }
    return shorter;
}

std::wstring_view withoutTimes(std::wstring_view line, std::wstring& scratch) {
    const std::size_t begin = line.find_first_not_of(L' ');
    if (begin == line.npos || std::wstring_view(L"+-0123456789").find(line[begin]) == line.npos ||
        line.find(L"-->") == line.npos)
        return line;
    scratch = withShortArrows(line);
    return scratch;
}

} // namespace cutroom
