#include "editops/basics/CutTypes.h"

#include "platform/host/StringTable.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace {

constexpr std::array<std::string_view, 6> kCutTypes = {
    "ct_cut", "ct_mix", "ct_video_dissolve", "ct_film_dissolve", "ct_wipe", "ct_chequer"};
constexpr std::string_view kNoCutType = "ct_none";

struct Position {
    std::string_view text; // empty: none of its own
    ResId display;
};

constexpr std::array<Position, 10> kPositions = {{
    {"eFromHere", cutroom::kResTransFromHere},
    {"eToHere", cutroom::kResTransToHere},
    {"eCentredHere", cutroom::kResTransCentredHere},
    {"eUseMark", cutroom::kResTransUseMark},
    {"", cutroom::kResTransPosition4},
    {"", cutroom::kResTransPosition5},
    {"eCurrentSection", cutroom::kResTransCurrentSection},
    {"eCurrentSectionUnfolded", cutroom::kResTransSectionUnfolded},
    {"eMultipleSections", cutroom::kResTransMultipleSections},
    {"eSelectedSegments", cutroom::kResTransSelectedSegments},
}};
constexpr std::string_view kNoPosition = "eNone";

// The row of a value; null outside the table.
template <class Row, std::size_t n> const Row* rowOf(const std::array<Row, n>& rows, int value) {
    return value >= 0 && static_cast<std::size_t>(value) < n
               ? &rows[static_cast<std::size_t>(value)]
               : nullptr;
}

} // namespace

LightweightString<char> cutTypeToString(cut_type type) {
    const std::string_view* const text = rowOf(kCutTypes, type);
    return std::string(text ? *text : kNoCutType);
}

cut_type stringToCutType(const LightweightString<char>& text) noexcept {
    const auto found = std::find(kCutTypes.begin(), kCutTypes.end(), text);
    return static_cast<cut_type>(found - kCutTypes.begin()); // past the end: none
}

LightweightString<char> transPosnToString(trans_posn position) {
    const Position* const row = rowOf(kPositions, position);
    return std::string(row && !row->text.empty() ? row->text : kNoPosition);
}

trans_posn stringToTransPosn(const LightweightString<char>& text) noexcept {
    const auto found =
        std::find_if(kPositions.begin(), kPositions.end(), [&](const Position& position) {
            return !text.empty() && position.text == text;
        });
    return static_cast<trans_posn>(found - kPositions.begin());
}

LightweightString<wchar_t> getDisplayString(trans_posn position) {
    const Position* const row = rowOf(kPositions, position);
    return row ? resourceStrW(row->display) : LightweightString<wchar_t>();
}

trans_posn getTransPosnFromDisplayString(const LightweightString<wchar_t>& text) {
    const auto found =
        std::find_if(kPositions.begin(), kPositions.end(), [&](const Position& position) {
            return !text.empty() && resourceStrW(position.display) == text;
        });
    return static_cast<trans_posn>(found - kPositions.begin());
}
