#include "platform/project/TextMatch.h"

#include "platform/base/Strings.h"

#include <array>
#include <bit>
#include <cstdint>
#include <cstring>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace cutroom {

namespace {

// The lower-cased letters of texts from the commonest to the rarest; other bytes are rarer still.
constexpr std::string_view kByFrequency = " eatoinsrhldcumfpgwybvk01.2-3_45/6789jxqz";

constexpr std::array<std::uint8_t, 256> makeRarity() {
    std::array<std::uint8_t, 256> rarity{};
    rarity.fill(100);
    for (std::size_t i = 0; i < kByFrequency.size(); ++i)
        rarity[static_cast<unsigned char>(kByFrequency[i])] = static_cast<std::uint8_t>(i);
    return rarity;
}
constexpr std::array<std::uint8_t, 256> kRarity = makeRarity();

// The offsets of the two rarest bytes of a pattern of two bytes or more.
struct Probe {
    std::size_t first = 0;
    std::size_t second = 1;
};
Probe probeOf(std::string_view pattern) noexcept {
    const auto rarity = [&](std::size_t at) {
        return kRarity[static_cast<unsigned char>(pattern[at])];
    };
    Probe probe;
    if (rarity(1) > rarity(0))
        probe = {1, 0};
    for (std::size_t i = 2; i < pattern.size(); ++i) {
        if (rarity(i) > rarity(probe.first))
            probe = {i, probe.first};
        else if (rarity(i) > rarity(probe.second))
            probe.second = i;
    }
    return probe;
}

bool isHere(const char* at, std::string_view pattern) noexcept {
    return std::memcmp(at, pattern.data(), pattern.size()) == 0;
}

#if defined(__SSE2__)
// Looks at 16 starting places at once while the probes of all of them lie inside the text. Gives
// the place, or npos with `from` moved to the first place not looked at.
std::size_t findBlocks(std::string_view text, std::string_view pattern,
                       std::size_t& from) noexcept {
    const Probe probe = probeOf(pattern);
    const __m128i first = _mm_set1_epi8(pattern[probe.first]);
    const __m128i second = _mm_set1_epi8(pattern[probe.second]);
    const auto matches = [&](std::size_t at) {
        const auto load = [&](std::size_t offset) {
            return _mm_loadu_si128(reinterpret_cast<const __m128i*>(text.data() + at + offset));
        };
        return _mm_and_si128(_mm_cmpeq_epi8(load(probe.first), first),
                             _mm_cmpeq_epi8(load(probe.second), second));
    };
    // Most of a text holds nothing: four blocks are passed over by one look.
    const std::size_t last = text.size() - pattern.size();
    while (from + 15 <= last) {
        if (from + 63 <= last && _mm_movemask_epi8(_mm_or_si128(
                                     _mm_or_si128(matches(from), matches(from + 16)),
                                     _mm_or_si128(matches(from + 32), matches(from + 48)))) == 0) {
            from += 64;
            continue;
        }
        auto mask = static_cast<unsigned>(_mm_movemask_epi8(matches(from)));
        for (; mask != 0; mask &= mask - 1) {
            const std::size_t at = from + static_cast<std::size_t>(std::countr_zero(mask));
            if (isHere(text.data() + at, pattern))
                return at;
        }
        from += 16;
    }
    return std::string_view::npos;
}
#else
std::size_t findBlocks(std::string_view, std::string_view, std::size_t&) noexcept {
    return std::string_view::npos;
}
#endif

bool isContinuation(char byte) noexcept {
    return (static_cast<unsigned char>(byte) & 0xC0) == 0x80;
}

bool isBoundary(std::string_view character) {
    const std::wstring wide = toWide(character);
    return !wide.empty() && (isPunctuation(wide.front()) || isWhiteSpace(wide.front()));
}

std::string_view characterBefore(std::string_view text, std::size_t at) {
    std::size_t start = at - 1;
    while (start > 0 && isContinuation(text[start]))
        --start;
    return text.substr(start, at - start);
}
std::string_view characterAt(std::string_view text, std::size_t at) {
    std::size_t end = at + 1;
    while (end < text.size() && isContinuation(text[end]))
        ++end;
    return text.substr(at, end - at);
}

} // namespace

std::size_t findText(std::string_view text, std::string_view pattern, std::size_t from) noexcept {
    if (pattern.size() < 2)
        return text.find(pattern, from);
    if (from > text.size() || text.size() - from < pattern.size())
        return std::string_view::npos;
    const std::size_t found = findBlocks(text, pattern, from);
    return found != std::string_view::npos ? found : text.find(pattern, from);
}

bool standsAlone(std::string_view text, std::size_t start, std::size_t end) {
    return (start == 0 || isBoundary(characterBefore(text, start))) &&
           (end >= text.size() || isBoundary(characterAt(text, end)));
}

bool compareFolded(std::string_view text, std::string_view pattern, bool wholeWords) {
    const std::size_t at = findText(text, pattern);
    return at != std::string_view::npos &&
           (!wholeWords || standsAlone(text, at, at + pattern.size()));
}

bool compareText(std::string_view text, std::string_view pattern, bool wholeWords,
                 bool caseSensitive) {
    return caseSensitive ? compareFolded(text, pattern, wholeWords)
                         : compareFolded(toLowerUtf8(text), toLowerUtf8(pattern), wholeWords);
}

} // namespace cutroom
