#include "filters/EditConstituentsFilter.h"

#include "platform/host/StringTable.h"
#include "platform/project/ProjDb.h"
#include "platform/store/Cel.h"
#include "platform/store/Edit.h"

#include <unordered_set>
#include <utility>

namespace {

// The changes after which an edit may be cut from other assets than before.
constexpr std::uint64_t kCutting =
    EditModifications::bit(kModEventsAdded) | EditModifications::bit(kModEventsRemoved) |
    EditModifications::bit(kModChannelsAdded) | EditModifications::bit(kModChannelsRemoved) |
    EditModifications::bit(kModRestored) | EditModifications::bit(kModFlattened) |
    EditModifications::bit(kModEffects) | EditModifications::bit(kModGeneral);

// In the order of their first use, channel after channel.
CookieVec constituentsOf(const Cookie& edit) {
    CookieVec found;
    const EditPtr opened(edit);
    if (!opened)
        return found;
    std::unordered_set<Cookie> seen;
    for (const IdStamp& channel : opened->getChans()) {
        const Kv::Ptr<Cel> cel = opened->get_edit_cel_p(channel);
        for (std::uint32_t i = 0; cel && i < cel->get_num_events(); i += 2) {
            const Cookie material = cel->get_event(i).material;
            if (material.type() != 'V' && material.type() != 'S')
                continue; // black, or the edit's own text
            const Cookie source = convertCookie(material, 'E');
            if (source != edit && seen.insert(source).second)
                found.push_back(source);
        }
    }
    return found;
}

class ConstituentsBin final : public FilterBinData {
public:
    explicit ConstituentsBin(const Cookie& edit)
        : FilterBinData(resourceStrW(cutroom::kResFilterConstituents),
                        cutroom::fixedFilterBinID("constituents " + edit.asString())),
          edit_(edit) {}

    bool isDynamic() const override { return true; }

protected:
    Items gather() const override {
        const CookieVec sources = constituentsOf(edit_);
        {
            const CriticalSection::Lock lock(sourcesLock_);
            sources_ = {sources.begin(), sources.end()};
        }
        Items items;
        for (const Cookie& source : sources)
            if (auto item = itemOf(source))
                items.push_back(std::move(*item));
        return items;
    }

    std::optional<BinItem> itemOf(const Cookie& asset) const override {
        {
            const CriticalSection::Lock lock(sourcesLock_);
            if (sources_.count(asset) == 0)
                return std::nullopt;
        }
        const auto summary = projdb::findSummary(asset);
        return summary ? std::optional(BinItem(asset, summary->start)) : std::nullopt;
    }

private:
    const Cookie edit_;
    mutable CriticalSection sourcesLock_{LockRank::leaf};
    mutable std::unordered_set<Cookie> sources_ CUTROOM_GUARDED_BY(sourcesLock_);
};

} // namespace

EditConstituentsFilter::EditConstituentsFilter()
    : SystemFilter("constituents", cutroom::kResFilterConstituents) {}

EditConstituentsFilter::~EditConstituentsFilter() = default;

bool EditConstituentsFilter::setEdit(const Cookie& edit) {
    if (edit == edit_)
        return false;
    edit_ = edit;
    setResults(edit.valid() ? FilterBins{Kv::makePtr<ConstituentsBin>(edit)} : FilterBins());
    return true;
}

void EditConstituentsFilter::editsChanged(const std::vector<EditManager::Modification>& changes) {
    for (const EditManager::Modification& one : changes)
        if (one.edit == edit_ && one.changes.includesAnyOf(kCutting))
            for (const Kv::Ptr<FilterBinData>& bin : peekResults())
                bin->refresh();
}
