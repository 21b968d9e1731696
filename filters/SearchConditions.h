// What a search asks of an asset's tracks, media and extent, beside its texts.
#pragma once

#include "platform/base/Export.h"
#include "platform/project/MediaStatus.h"
#include "platform/project/ProjDbRecord.h"

#include <cstdint>
#include <optional>
#include <string_view>

namespace cutroom {

// Whether a thing must be there. The numbers are fixed.
enum class eItemPresence { any = 0, present = 1, absent = 2 };

// "Any", "Present", "Absent"; an unknown text gives nothing.
CUTROOM_API std::string_view getPersistableString(eItemPresence presence) noexcept;
CUTROOM_API std::optional<eItemPresence> itemPresenceFromString(std::string_view text) noexcept;

// Tells whether `count` things fit what is asked.
constexpr bool isAsAsked(std::uint32_t count, eItemPresence asked) noexcept {
    return count > 0 ? asked != eItemPresence::absent : asked != eItemPresence::present;
}

// Tells whether the extent holds the time, both ends widened by 1e-6 seconds; the ends may be in
// either order.
CUTROOM_API bool extentHolds(double start, double end, double time) noexcept;

// Tells whether the media lies on `drive` (the empty one: anywhere) and is there as asked. A
// record's locations are places of one piece of media: it is present when it is at one of those on
// the drive. What is no file of this machine is not present. Asks `MediaStatus`.
CUTROOM_API bool mediaIsAsAsked(const projdb::Record& record, const DriveID& drive,
                                eItemPresence asked);

} // namespace cutroom
