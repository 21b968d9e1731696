// `DocumentBin`: the dynamic bin that holds every document of the project.
#pragma once

#include "filters/FilterBinData.h"

// In the order of the cookies; new ones are appended. Any thread, as `FilterBinData`.
class CUTROOM_API DocumentBin final : public FilterBinData {
public:
    // Under the cookie of `DocumentFilter::getBinID`.
    DocumentBin();
    ~DocumentBin() override;

    LightweightString<char> getTypeID() const override; // "Documents"
    bool isDynamic() const override;
    // Its identity alone is read.
    cutroom::Status read(const JSON::Element& object, const std::string& file) override;

protected:
    Items gather() const override;
    std::optional<BinItem> itemOf(const Cookie& asset) const override;
};
