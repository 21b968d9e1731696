#include "filters/SystemFilter.h"

#include "platform/host/StringTable.h"

namespace cutroom {

Cookie systemFilterID(std::string_view key) noexcept {
    return Cookie('F', fixedFilterBinID(key).id());
}

SystemFilter::SystemFilter(std::string_view key, ResId name)
    : ProjectFilterBase(systemFilterID(key), resourceStrW(name)), nameId_(name) {}

SystemFilter::~SystemFilter() = default;

iProjectFilter::eResultsType SystemFilter::getResultsType() const { return kFlatResults; }

LightweightString<wchar_t> SystemFilter::getDescription() const {
    return resourceStrW(nameId_ + kResFilterDescription);
}

void SystemFilter::clear() {}

} // namespace cutroom
