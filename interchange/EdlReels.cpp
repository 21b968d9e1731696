#include "interchange/EdlReels.h"

#include "interchange/EdlEventsOut.h"
#include "interchange/ImportedJson.h"
#include "platform/base/Characters.h"
#include "platform/base/Strings.h"
#include "platform/files/Files.h"

#include <algorithm>
#include <utility>

namespace cutroom {

namespace {

constexpr std::size_t kLength = 8;

std::string strict(std::string_view text) {
    std::string reel;
    for (const char c : text) {
        if (isLetter(c) || isDigit(c) || c == '_')
            reel += toCapital(c);
        else if ((static_cast<unsigned char>(c) & 0xC0) != 0x80) // once for each character
            reel += '_';
    }
    return reel;
}

bool isStrict(const std::string& reel) {
    return !reel.empty() && reel.size() <= kLength && strict(reel) == reel;
}

// What names the source of an item that has no reel.
std::string nameOfSource(const Item& item) {
    std::string name = item.media.name.empty() ? nameOf(item.media.location) : item.media.name;
    if (name.empty())
        name = item.name;
    const std::string extension = extensionOf(name);
    if (!extension.empty() && extension.size() <= 4)
        name.resize(name.size() - extension.size() - 1);
    return name;
}

std::string sourceKey(const Item& item) {
    return item.media.reel.empty() ? item.media.name + '\n' + item.media.location : item.media.reel;
}

} // namespace

std::string EdlReels::makeUnique(std::string reel) {
    if (reel.empty())
        reel = "REEL";
    std::string unique = reel.substr(0, kLength);
    for (unsigned long long i = 2; !taken_.insert(unique).second; ++i) {
        const std::string number = toText(i);
        unique = reel.substr(0, kLength - std::min(kLength, number.size())) + number;
    }
    return unique;
}

const std::string& EdlReels::reelOf(const Item& item) {
    static const std::string kNone = "AX";
    if (item.media.reel.empty() && !item.channel.empty())
        return kNone;
    const auto [entry, isNew] = bySource_.try_emplace(sourceKey(item));
    if (isNew) {
        const std::string written = importedText(edlFacts(item), "reel");
        const std::string own = item.media.reel.empty() ? nameOfSource(item) : item.media.reel;
        const bool keeps = isStrict(written) && !taken_.contains(written);
        entry->second = makeUnique(keeps ? written : strict(own));
        shortened_ += !item.media.reel.empty() && entry->second != item.media.reel;
    }
    return entry->second;
}

std::string EdlReels::strictForm(std::string_view reel) { return strict(reel).substr(0, kLength); }

bool EdlReels::isShort(const Item& item) {
    return !item.media.reel.empty() && reelOf(item) != item.media.reel;
}

} // namespace cutroom
