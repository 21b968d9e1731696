// The rules by which a picture shot and a sound shot are joined.
#pragma once

#include "platform/base/NumRange.h"
#include "platform/base/Strings.h"
#include "platform/store/EditLabel.h"
#include "platform/store/configb.h"

#include <cstdint>
#include <optional>

// Values of the start and the end rule. Times are those of the two shots on the picture's timeline.
//
//                  picture      |==========|
//                  sound   |=========|
//   kSyncPicture                |----------|       the picture shot's start, its end
//   kSyncCommon                 |----|             the later start, the earlier end
//   kSyncUnion             |---------------|       the earlier start, the later end
//   kSyncSound             |---------|             the sound shot's start, its end
//
// Numbers that are none of these count as kSyncCommon.
enum eSyncRule : std::int32_t {
    kSyncPicture = 0,
    kSyncCommon = 1,
    kSyncUnion = 2,
    kSyncSound = 3,
};

// Which label of a shot is meant: its type (`eLabelType`) and its medium and roll. A value.
struct CUTROOM_API UserLabelSpec {
    std::int32_t type = kLabelVideoTimecode;
    MediumRoll mediumRoll{0, 0};

    // "3.2.1": type, medium, roll, each a whole number of 32 bits.
    LightweightString<char> asString() const;
    // Reads that; nothing for other texts.
    static std::optional<UserLabelSpec> fromString(const LightweightString<char>& text);

    friend bool operator==(const UserLabelSpec&, const UserLabelSpec&) = default;
};

// A value; the members are in the order of their keys in an edit's configuration.
struct CUTROOM_API synchup_params {
    synchup_params() noexcept = default;
    // The defaults, and in their place what `config` holds. A key whose text is of another form, or
    // does not fit, counts as absent.
    explicit synchup_params(const configb& config);
    // Back to the defaults.
    void init() noexcept { *this = synchup_params(); }

    std::int32_t startRule = kSyncCommon; // "synchup_startrule", eSyncRule
    std::int32_t endRule = kSyncCommon;   // "synchup_endrule", eSyncRule
    // "synchup_part" (not 0): only a part of what the rules choose, see `partStart`.
    bool part = false;
    UserLabelSpec pictureLabel{kLabelVideoTimecode, {2, 1}}; // "synchup_pixlabel"
    UserLabelSpec soundLabel{kLabelVideoTimecode, {4, 1}};   // "synchup_sndlabel"
    // The part, in seconds of the picture shot. Both equal: from its in mark to its out mark as the
    // shot was last left. Not in the configuration.
    double partStart = 0;
    double partEnd = 0;
    // "synchup_sndoffset": frames added to a label, of every shot that is no picture when positive,
    // of every shot that is no sound, negated, when negative.
    std::int32_t soundOffset = 0;
    // True when "synchup_ignoredate" is there and 0. The sense is the reverse of the key's name and
    // is kept: configurations are written that way.
    bool dateCheckOff = false;
    bool makeGhost = true; // "synchup_makeghost" (not 0): the result is a sync ghost

    friend bool operator==(const synchup_params&, const synchup_params&) = default;
};

namespace cutroom {

// The stretch that the rules choose; all times on the picture's timeline. `part` cuts it down
// further. Nothing when it has no length.
CUTROOM_API std::optional<TimeRange> syncSpan(const TimeRange& picture, const TimeRange& sound,
                                              const synchup_params& params,
                                              const std::optional<TimeRange>& part = {});

} // namespace cutroom
