#include "filters/SetOperation.h"

#include "platform/host/StringTable.h"

#include <unordered_map>

LightweightString<wchar_t> getDisplayString(eSetOperation operation) {
    switch (operation) {
    case kSetUnion:
        return resourceStrW(cutroom::kResSetOperation0);
    case kSetIntersection:
        return resourceStrW(cutroom::kResSetOperation1);
    case kSetDifference:
        return resourceStrW(cutroom::kResSetOperation2);
    }
    return {};
}

namespace {

// In how many bins an asset lies, and in which it was seen last.
struct Seen {
    std::size_t bins = 0;
    std::size_t last = 0;
};

bool stays(const Seen& seen, std::size_t numBins, eSetOperation operation) {
    switch (operation) {
    case kSetUnion:
        return true;
    case kSetIntersection:
        return seen.bins == numBins;
    case kSetDifference:
        return seen.bins == 1 && seen.last == 0;
    }
    return false;
}

} // namespace

BinData::Items combine(const iMultiBinContainer::Bins& bins, eSetOperation operation) {
    std::unordered_map<Cookie, Seen> seen;
    BinData::Items firsts; // the first item of each asset
    for (std::size_t bin = 0; bin < bins.size(); ++bin) {
        if (!bins[bin])
            continue;
        const BinData& from = *bins[bin];
        const BinData::Reading lock(from);
        for (const BinItem& item : from) {
            const auto [at, isNew] = seen.try_emplace(item.asset, Seen{1, bin});
            if (isNew)
                firsts.push_back(item);
            else if (at->second.last != bin)
                at->second = {at->second.bins + 1, bin};
        }
    }
    std::erase_if(firsts, [&](const BinItem& item) {
        return !stays(seen.at(item.asset), bins.size(), operation);
    });
    return firsts;
}
