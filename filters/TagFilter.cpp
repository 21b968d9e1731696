#include "filters/TagFilter.h"

#include "filters/FilterBinData.h"
#include "filters/SystemFilter.h"
#include "platform/host/StringTable.h"
#include "platform/project/ProjDb.h"

#include <utility>

namespace cutroom {

namespace {

// In the order of the cookies; new ones are appended.
class TagBin final : public FilterBinData {
public:
    TagBin(const std::string& tag, std::shared_ptr<FieldIndex> index)
        : FilterBinData(toWide(tag), TagFilter::binOf(tag)), tag_(tag), index_(std::move(index)) {}

    bool isDynamic() const override { return true; }

protected:
    Items gather() const override {
        Items items;
        for (const Cookie& asset : index_->assetsOf(tag_))
            if (auto item = itemOf(asset))
                items.push_back(std::move(*item));
        return items;
    }

    std::optional<BinItem> itemOf(const Cookie& asset) const override {
        const auto summary = projdb::findSummary(asset);
        if (!summary || (summary->kinds & projdb::kKindClipboard) != 0 || !index_->has(asset, tag_))
            return std::nullopt;
        return BinItem(asset, summary->start);
    }

private:
    const std::string tag_;
    const std::shared_ptr<FieldIndex> index_;
};

} // namespace

TagFilter::TagFilter(const std::string& tag, std::shared_ptr<FieldIndex> index)
    : ProjectFilterBase(idOf(tag), toWide(tag)) {
    appendResult(Kv::makePtr<TagBin>(tag, std::move(index)));
}

TagFilter::~TagFilter() = default;

Cookie TagFilter::idOf(const std::string& tag) { return systemFilterID("tag " + tag); }
Cookie TagFilter::binOf(const std::string& tag) { return fixedFilterBinID("tag " + tag); }

iProjectFilter::eResultsType TagFilter::getResultsType() const { return kFlatResults; }
iProjectFilter::eVisibility TagFilter::getDefaultVisibility() const { return kOptional; }
void TagFilter::clear() {}

LightweightString<wchar_t> TagFilter::getDescription() const {
    constexpr std::wstring_view kPlace = L"$NAME$";
    LightweightString<wchar_t> text = resourceStrW(kResFilterTag + kResFilterDescription);
    if (const std::size_t at = text.find(kPlace); at != std::wstring::npos)
        text.replace(at, kPlace.size(), getName());
    return text;
}

std::vector<std::string> TagFilter::tagsOf(std::string_view text) {
    std::vector<std::string> tags;
    while (!text.empty()) {
        const std::size_t end = text.find_first_of(",;");
        if (const std::string_view tag = trim(text.substr(0, end)); !tag.empty())
            tags.emplace_back(tag);
        text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    }
    return tags;
}

} // namespace cutroom
