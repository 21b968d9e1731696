#include "filters/iProjectFilter.h"

#include "bins/BinData.h"

#include <array>

namespace {
constexpr std::array<const char*, 3> kVisibilities = {"always", "optional", "never"};
}

Identified::~Identified() = default;

iMultiBinContainer::~iMultiBinContainer() = default;
Kv::Ptr<BinData> iMultiBinContainer::add(const Kv::Ptr<BinData>&) { return {}; }
bool iMultiBinContainer::remove(const Kv::Ptr<BinData>&) { return false; }
bool iMultiBinContainer::empty() const { return getBins().empty(); }

iProjectFilter::~iProjectFilter() = default;
iProjectFilter::eCreator iProjectFilter::getCreator() const { return kSystem; }
void iProjectFilter::remove(const Bins&) {}

LightweightString<char> iProjectFilter::visibilityToString(eVisibility visibility) {
    const auto index = static_cast<std::size_t>(visibility);
    return index < kVisibilities.size() ? kVisibilities[index] : "";
}

iProjectFilter::eVisibility iProjectFilter::visibilityFromString(std::string_view text) {
    if (text == kVisibilities[kNever])
        return kNever;
    return text == kVisibilities[kAlways] ? kAlways : kOptional;
}
