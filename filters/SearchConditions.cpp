#include "filters/SearchConditions.h"

#include <algorithm>
#include <array>

namespace cutroom {

namespace {

constexpr std::array<std::string_view, 3> kPresenceNames = {"Any", "Present", "Absent"};
constexpr double kTimeTolerance = 1e-6;

} // namespace

std::string_view getPersistableString(eItemPresence presence) noexcept {
    return kPresenceNames[static_cast<std::size_t>(presence)];
}

std::optional<eItemPresence> itemPresenceFromString(std::string_view text) noexcept {
    const auto found = std::find(kPresenceNames.begin(), kPresenceNames.end(), text);
    if (found == kPresenceNames.end())
        return std::nullopt;
    return static_cast<eItemPresence>(found - kPresenceNames.begin());
}

bool extentHolds(double start, double end, double time) noexcept {
    return time >= std::min(start, end) - kTimeTolerance &&
           time <= std::max(start, end) + kTimeTolerance;
}

bool mediaIsAsAsked(const projdb::Record& record, const DriveID& drive, eItemPresence asked) {
    std::uint32_t there = 0;
    bool onDrive = drive.empty();
    for (const std::string& location : record.mediaLocations) {
        if (!drive.empty() && DriveID::of(location) != drive)
            continue;
        onDrive = true;
        if (asked != eItemPresence::any)
            there += MediaStatus::instance().get(location) == MediaStatus::State::present;
    }
    return onDrive && (asked == eItemPresence::any || isAsAsked(there, asked));
}

} // namespace cutroom
