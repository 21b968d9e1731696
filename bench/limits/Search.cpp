#include "bench/limits/Search.h"

#include <emmintrin.h>

#include <algorithm>
#include <bit>
#include <random>

namespace cutroom::bench {

namespace {

constexpr const char* kWords[] = {
    "The",   "Night", "interior", "Camera", "two",   "close",   "Wide",   "shot",  "of",
    "actor", "walks", "Through",  "rain",   "with",  "Boom",    "in",     "frame", "take",
    "Good",  "sound", "NG",       "focus",  "pulls", "Slate",   "missed", "and",   "dolly",
    "left",  "Right", "Window",   "street", "car",   "Passing", "by",     "later", "Cut"};
constexpr std::size_t kNoteBytes = 150;

char lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c | 0x20) : c; }
bool isLetter(char c) { return lower(c) >= 'a' && lower(c) <= 'z'; }
bool isWordByte(char c) { return isLetter(c) || (c >= '0' && c <= '9'); }

bool holdsAt(const char* at, std::string_view pattern) {
    return std::equal(pattern.begin(), pattern.end(), at,
                      [](char wanted, char c) { return lower(c) == wanted; });
}

} // namespace

std::vector<SearchedRecord> searchedRecords(std::size_t count) {
    std::mt19937_64 random(13);
    std::vector<SearchedRecord> records(count);
    for (std::size_t i = 0; i < count; ++i) {
        SearchedRecord& record = records[i];
        record.cookie = Cookie('E', i + 1);
        record.name = "A" + std::to_string(100 + random() % 800) + "_C" +
                      std::to_string(1000 + random() % 9000) + "_" +
                      std::to_string(random() % 1000000);
        record.scene = std::to_string(random() % 200) + static_cast<char>('A' + random() % 8);
        while (record.note.size() < kNoteBytes) {
            record.note += kWords[random() % std::size(kWords)];
            record.note += ' ';
        }
        if (i % 10 == 3)
            record.note += i % 20 == 3 ? "Harbour" : "Harbours";
        if (i % 400 == 7)
            record.note += "Kingfisher.";
        if (i % 100'000 == 99)
            record.note += "zebrafinch";
    }
    return records;
}

PlainTexts::PlainTexts(const std::vector<SearchedRecord>& records) {
    for (const SearchedRecord& record : records) {
        starts_.push_back(text_.size());
        cookies_.push_back(record.cookie);
        for (const std::string* field : {&record.name, &record.note, &record.scene})
            text_.append(*field).push_back('\0');
    }
}

// Blocks of 16 places whose first and last byte may fit.
std::size_t PlainTexts::find(std::string_view pattern, std::size_t from) const {
    const __m128i fold = _mm_set1_epi8(0x20);
    const __m128i first = _mm_set1_epi8(pattern.front());
    const __m128i last = _mm_set1_epi8(pattern.back());
    const std::size_t end = text_.size() - pattern.size() - 64;
    const auto matches = [&](std::size_t at) {
        const auto load = [&](std::size_t offset) {
            const char* const bytes = text_.data() + at + offset;
            return _mm_or_si128(fold, _mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes)));
        };
        return _mm_and_si128(_mm_cmpeq_epi8(load(0), first),
                             _mm_cmpeq_epi8(load(pattern.size() - 1), last));
    };
    while (from < end) {
        if (_mm_movemask_epi8(_mm_or_si128(_mm_or_si128(matches(from), matches(from + 16)),
                                           _mm_or_si128(matches(from + 32), matches(from + 48)))) ==
            0) {
            from += 64;
            continue;
        }
        for (auto mask = static_cast<unsigned>(_mm_movemask_epi8(matches(from))); mask != 0;
             mask &= mask - 1) {
            const std::size_t at = from + static_cast<std::size_t>(std::countr_zero(mask));
            if (holdsAt(text_.data() + at, pattern))
                return at;
        }
        from += 16;
    }
    for (; from + pattern.size() <= text_.size(); ++from)
        if (holdsAt(text_.data() + from, pattern))
            return from;
    return text_.size();
}

std::vector<PlainItem> PlainTexts::search(std::string_view pattern, bool wholeWords) const {
    std::vector<PlainItem> items;
    for (std::size_t at = find(pattern, 0); at < text_.size();) {
        const auto next = std::upper_bound(starts_.begin(), starts_.end(), at);
        const std::size_t end = at + pattern.size();
        const bool stands = (at == 0 || !isWordByte(text_[at - 1])) && !isWordByte(text_[end]);
        if (!wholeWords || stands) {
            PlainItem& item = items.emplace_back();
            item.asset = cookies_[static_cast<std::size_t>(next - starts_.begin()) - 1];
            item.markIn = 0;
            item.markOut = 10;
            at = next == starts_.end() ? text_.size() : *next;
        } else {
            at = text_.find('\0', end) + 1; // the field's first place has decided
        }
        at = find(pattern, at);
    }
    return items;
}

} // namespace cutroom::bench
