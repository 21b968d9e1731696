#include "filters/SubClipsFilter.h"

#include "platform/project/LogAttribute.h"
#include "platform/project/ProjDb.h"

#include <utility>

namespace {

// The sub-clips of one edit, in the order of their cookies; new ones are appended.
class SubClipsBin final : public FilterBinData {
public:
    SubClipsBin(const Cookie& edit, std::shared_ptr<cutroom::FieldIndex> parents)
        : FilterBinData(nameOf(edit), cutroom::fixedFilterBinID("sub-clips " + edit.asString())),
          edit_(edit.asString()), parents_(std::move(parents)) {}

    bool isDynamic() const override { return true; }

protected:
    Items gather() const override {
        Items items;
        for (const Cookie& asset : parents_->assetsOf(edit_))
            if (auto item = itemOf(asset))
                items.push_back(std::move(*item));
        return items;
    }

    std::optional<BinItem> itemOf(const Cookie& asset) const override {
        const auto summary = projdb::findSummary(asset);
        if (!summary || (summary->kinds & projdb::kKindSubClip) == 0 ||
            (summary->kinds & projdb::kKindClipboard) != 0 || !parents_->has(asset, edit_))
            return std::nullopt;
        return BinItem(asset, summary->start);
    }

private:
    static std::wstring nameOf(const Cookie& edit) {
        const auto record = projdb::find(edit);
        return cutroom::toWide(record ? record->name() : edit.asString());
    }

    const std::string edit_;
    const std::shared_ptr<cutroom::FieldIndex> parents_;
};

std::vector<std::string> oneValue(std::string_view text) {
    return text.empty() ? std::vector<std::string>() : std::vector{std::string(text)};
}

} // namespace

SubClipsFilter::SubClipsFilter()
    : SystemFilter("sub-clips", cutroom::kResFilterSubClips),
      parents_(std::make_shared<cutroom::FieldIndex>(LogAttribute(LogAttribute::parent).getID(),
                                                     &oneValue)) {}

SubClipsFilter::~SubClipsFilter() = default;

iProjectFilter::eResultsType SubClipsFilter::getResultsType() const { return resultsTypeByCount(); }

void SubClipsFilter::assetsChanged(const CookieVec& assets) {
    parents_->assetsChanged(assets);
    SystemFilter::assetsChanged(assets);
}

bool SubClipsFilter::setEdits(const CookieVec& edits) {
    if (edits == edits_)
        return false;
    FilterBins bins;
    for (const Cookie& edit : edits)
        bins.push_back(Kv::makePtr<SubClipsBin>(edit, parents_));
    setResults(std::move(bins));
    edits_ = edits;
    return true;
}
