// `ProjectSearch::Criteria`: the value, and its form as pairs.
#include "filters/ProjectSearch.h"
#include "platform/base/Strings.h"

#include <cmath>

using Criteria = ProjectSearch::Criteria;

Criteria::Criteria() = default;
Criteria::Criteria(const Criteria&) = default;
Criteria::Criteria(Criteria&&) noexcept = default;
Criteria& Criteria::operator=(const Criteria&) = default;
Criteria& Criteria::operator=(Criteria&&) noexcept = default;
Criteria::~Criteria() = default;

bool Criteria::needsMoreThanText() const noexcept {
    return hasRequiredTime() || !mediaLocation.empty() || clipVTracks != eItemPresence::any ||
           clipATracks != eItemPresence::any || clipMedia != eItemPresence::any;
}

void Criteria::saveTo(std::vector<AttributeValuePair>& pairs) const {
    SearchCriteria::saveTo(pairs);
    if (hasRequiredTime())
        pairs.emplace_back("RequiredTime", cutroom::toText(requiredTime));
    if (!mediaLocation.empty())
        pairs.emplace_back("MediaLocation", mediaLocation.asString());
    const auto addPresence = [&](const char* key, eItemPresence presence) {
        if (presence != eItemPresence::any)
            pairs.emplace_back(key, getPersistableString(presence));
    };
    addPresence("ClipVTracks", clipVTracks);
    addPresence("ClipATracks", clipATracks);
    addPresence("ClipMedia", clipMedia);
}

void Criteria::restoreFrom(const std::vector<AttributeValuePair>& pairs) {
    *this = Criteria();
    SearchCriteria::restoreFrom(pairs);
    const auto presence = [](const std::string& text) {
        return cutroom::itemPresenceFromString(text).value_or(eItemPresence::any);
    };
    for (const auto& [key, value] : pairs) {
        if (key == "RequiredTime") {
            const std::optional<double> time = cutroom::parseDouble(value);
            if (time && std::isfinite(*time))
                requiredTime = *time;
        } else if (key == "MediaLocation")
            mediaLocation = DriveID::fromString(value);
        else if (key == "ClipVTracks")
            clipVTracks = presence(value);
        else if (key == "ClipATracks")
            clipATracks = presence(value);
        else if (key == "ClipMedia")
            clipMedia = presence(value);
    }
}
