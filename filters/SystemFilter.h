// `cutroom::SystemFilter`: what the filters that the system makes have in common.
#pragma once

#include "filters/FilterBinData.h"
#include "filters/ProjectFilterBase.h"
#include "platform/host/ResourceIds.h"

#include <string_view>

namespace cutroom {

// The cookie of the system filter of that key: the same in every project and on every machine.
CUTROOM_API Cookie systemFilterID(std::string_view key) noexcept;

// Named and described by the string table. Results are one flat list unless the heir says
// otherwise.
class CUTROOM_API SystemFilter : public ProjectFilterBase {
public:
    ~SystemFilter() override;

    eResultsType getResultsType() const override;
    LightweightString<wchar_t> getDescription() const override;
    // Its bins follow the project and are always the same: they stay.
    void clear() override;

protected:
    SystemFilter(std::string_view key, ResId name);

private:
    const ResId nameId_;
};

} // namespace cutroom
