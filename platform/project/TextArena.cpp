#include "platform/project/TextArena.h"

#include "platform/base/Strings.h"
#include "platform/project/TextMatch.h"

#include <algorithm>

namespace cutroom {

namespace {

// The least waste, in bytes, for which the texts are squeezed together.
constexpr std::size_t kLeastWaste = std::size_t{1} << 20;
// Stands for a null inside a text.
constexpr char kInnerNull = '\xFF';

bool isPlainLower(std::string_view text) noexcept {
    return std::all_of(text.begin(), text.end(), [](char c) {
        return static_cast<unsigned char>(c) < 0x80 && (c < 'A' || c > 'Z') && c != '\0';
    });
}

} // namespace

std::size_t TextArena::endOf(std::size_t start) const noexcept {
    return start + 1 < starts_.size() ? starts_[start + 1].offset : text_.size();
}

void TextArena::addField(std::string_view text) {
    if (isPlainLower(text)) {
        text_ += text;
    } else {
        std::string folded = toLowerUtf8(text);
        std::replace(folded.begin(), folded.end(), '\0', kInnerNull);
        text_ += folded;
    }
    text_ += '\0';
}

void TextArena::put(Slot slot, const projdb::Record& record) {
    remove(slot);
    if (offsets_.size() <= slot)
        offsets_.resize(slot + std::size_t{1}, kNowhere);
    offsets_[slot] = text_.size();
    starts_.push_back({text_.size(), slot});
    for (const auto& [id, text] : record.attributes)
        addField(text);
    for (const std::string& location : record.mediaLocations)
        addField(location);
    text_ += '\0';
}

void TextArena::remove(Slot slot) {
    if (slot >= offsets_.size() || offsets_[slot] == kNowhere)
        return;
    const auto start =
        std::lower_bound(starts_.begin(), starts_.end(), offsets_[slot],
                         [](const Start& one, std::size_t offset) { return one.offset < offset; });
    deadBytes_ += endOf(static_cast<std::size_t>(start - starts_.begin())) - start->offset;
    offsets_[slot] = kNowhere;
    if (deadBytes_ > kLeastWaste && deadBytes_ > text_.size() / 2)
        squeeze();
}

void TextArena::clear() {
    const std::uint64_t next = generation_ + 1;
    *this = TextArena();
    generation_ = next;
}

void TextArena::squeeze() {
    TextArena fresh;
    fresh.generation_ = generation_ + 1;
    fresh.offsets_.assign(offsets_.size(), kNowhere);
    for (std::size_t i = 0; i < starts_.size(); ++i) {
        const Start& start = starts_[i];
        if (!isLive(start) || fresh.offsets_[start.slot] != kNowhere)
            continue;
        fresh.offsets_[start.slot] = fresh.text_.size();
        fresh.starts_.push_back({fresh.text_.size(), start.slot});
        fresh.text_.append(text_, start.offset, endOf(i) - start.offset);
    }
    *this = std::move(fresh);
}

// The index of the start whose text holds `offset`, at or after index `from`: steps of growing
// width, then a binary search, so that near and far finds are both cheap.
std::size_t TextArena::startHolding(std::size_t offset, std::size_t from) const noexcept {
    std::size_t low = from;
    std::size_t width = 1;
    while (low + width < starts_.size() && starts_[low + width].offset <= offset) {
        low += width;
        width *= 2;
    }
    const auto first = starts_.begin() + static_cast<std::ptrdiff_t>(low);
    const auto last =
        starts_.begin() + static_cast<std::ptrdiff_t>(std::min(low + width, starts_.size()));
    const auto above =
        std::upper_bound(first, last, offset,
                         [](std::size_t wanted, const Start& one) { return wanted < one.offset; });
    return static_cast<std::size_t>(above - starts_.begin()) - 1;
}

// Tells whether the text found at `at` is a whole word of its field, which ends at the nulls around
// it.
bool TextArena::standsInField(std::size_t at, std::size_t size, std::size_t& fieldEnd) const {
    const std::string_view all = text_;
    const std::size_t before = at == 0 ? std::string_view::npos : all.rfind('\0', at - 1);
    const std::size_t begin = before == std::string_view::npos ? 0 : before + 1;
    fieldEnd = all.find('\0', at);
    const std::string_view field = all.substr(begin, fieldEnd - begin);
    if (field.find(kInnerNull) == std::string_view::npos)
        return standsAlone(field, at - begin, at - begin + size);
    std::string restored(field);
    std::replace(restored.begin(), restored.end(), kInnerNull, '\0');
    return standsAlone(restored, at - begin, at - begin + size);
}

void TextArena::search(std::string_view pattern, bool wholeWords, Place& place, std::size_t bytes,
                       std::vector<Slot>& found) const {
    if (isEnd(place))
        return;
    std::string wanted(pattern);
    std::replace(wanted.begin(), wanted.end(), '\0', kInnerNull);
    std::size_t record = place;
    std::size_t at = starts_[place].offset;
    if (bytes < text_.size() - at)
        place = startHolding(at + bytes, place) + 1;
    else
        place = starts_.size();
    const std::string_view all = std::string_view(text_).substr(0, endOf(place - 1));
    for (at = findText(all, wanted, at); at < all.size();) {
        record = startHolding(at, record);
        std::size_t goOn = endOf(record);
        bool holds = isLive(starts_[record]);
        if (holds && wholeWords) {
            std::size_t fieldEnd = 0;
            holds = standsInField(at, wanted.size(), fieldEnd);
            if (!holds)
                goOn = fieldEnd + 1;
        }
        if (holds)
            found.push_back(starts_[record].slot);
        at = findText(all, wanted, goOn);
    }
}

} // namespace cutroom
