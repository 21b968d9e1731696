#include "filters/RecentLogsFilter.h"

#include "platform/base/IdSource.h"
#include "platform/host/StringTable.h"
#include "platform/project/ProjDb.h"

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <limits>

namespace {

constexpr std::uint32_t kDay = 24 * 60 * 60;

// The logs whose age is below a limit, the oldest first as far as it was known at the first look.
class RecentLogsBin final : public FilterBinData {
public:
    RecentLogsBin(ResId name, std::string_view key, std::uint32_t seconds)
        : FilterBinData(resourceStrW(name), cutroom::fixedFilterBinID(key)), seconds_(seconds) {}

    bool isDynamic() const override { return true; }

    // Lets those go, too, that have become too old.
    void fill() override {
        FilterBinData::fill();
        if (cutroom::idSource().secondsNow() >= nextExpiry_)
            refresh();
    }

protected:
    Items gather() const override {
        nextExpiry_ = kNever;
        std::vector<std::pair<std::uint32_t, BinItem>> young;
        projdb::forEach({"cookie", "created"}, [&](const std::vector<std::string>& texts) {
            const auto created =
                static_cast<std::uint32_t>(cutroom::parseInt(texts[1]).value_or(0));
            if (isYoung(created))
                if (auto item = itemOf(Cookie(texts[0]), created))
                    young.emplace_back(created, std::move(*item));
            return true;
        });
        std::stable_sort(young.begin(), young.end(),
                         [](const auto& a, const auto& b) { return a.first < b.first; });
        Items items;
        for (auto& [created, item] : young)
            items.push_back(std::move(item));
        return items;
    }

    std::optional<BinItem> itemOf(const Cookie& asset) const override {
        const auto record = projdb::find(asset);
        return record ? itemOf(asset, record->created) : std::nullopt;
    }

private:
    static constexpr std::uint32_t kNever = std::numeric_limits<std::uint32_t>::max();

    bool isYoung(std::uint32_t created) const {
        return std::uint64_t{created} + seconds_ > cutroom::idSource().secondsNow();
    }

    std::optional<BinItem> itemOf(const Cookie& asset, std::uint32_t created) const {
        const auto summary = projdb::findSummary(asset);
        if (!summary || !isYoung(created) || (summary->kinds & projdb::kKindsShot) == 0 ||
            (summary->kinds & projdb::kKindClipboard) != 0)
            return std::nullopt;
        const auto expiry = static_cast<std::uint32_t>(
            std::min(std::uint64_t{created} + seconds_, std::uint64_t{kNever}));
        std::uint32_t next = nextExpiry_;
        while (expiry < next && !nextExpiry_.compare_exchange_weak(next, expiry)) {
        }
        return BinItem(asset, summary->start);
    }

    const std::uint32_t seconds_;
    mutable std::atomic<std::uint32_t> nextExpiry_{kNever};
};

} // namespace

RecentLogsFilter::RecentLogsFilter() : SystemFilter("recent", cutroom::kResFilterRecentLogs) {
    appendResult(Kv::makePtr<RecentLogsBin>(cutroom::kResBinLastDay, "last day", kDay));
    appendResult(Kv::makePtr<RecentLogsBin>(cutroom::kResBinLastWeek, "last week", 7 * kDay));
    appendResult(Kv::makePtr<RecentLogsBin>(cutroom::kResBinLastMonth, "last month", 30 * kDay));
}

RecentLogsFilter::~RecentLogsFilter() = default;

iProjectFilter::eResultsType RecentLogsFilter::getResultsType() const {
    return resultsTypeByCount();
}
