// Timecode labels of shots, and the offsets between shots that they give.
#pragma once

#include "editops/SyncUpParams.h"
#include "platform/base/Cookie.h"
#include "platform/base/Time.h"
#include "platform/base/Timecode.h"
#include "platform/store/Numbers.h"

#include <string>

// Tells by their labels how far the first shot's time 0 lies after the second's, in seconds: its
// label less the second's. The first shot is looked up by the sound-label rule, the second by the
// picture-label rule; each on the channel type given with it.
//
//   first  label 12 s          |------|
//   second label 10 s      |------------|        offset 2 s
//
// A shot without the label takes it through its first material of that type, unless it is a log of
// source material. kNoTime, and the reason as `edcopy_get_log`, when: a shot cannot be opened;
// both are logs of source material with different camera dates ("cam_date", case aside) and the
// check is on; a label is missing; the labels are of different types, other than 6 or 7 first and 8
// second (unless the configuration value "allow_sync_of_incompatible_labels" is not 0); or the
// labelled spans have no moment in common.
//
// Labels count frames, so drop-frame and non-drop-frame labels are compared by the time they stand
// for. Any thread; not under an edit's lock.
CUTROOM_API double synchup_get_CELtime_offset(Cookie first, EditChanType firstType, Cookie second,
                                              EditChanType secondType,
                                              const synchup_params& params);

namespace cutroom {

// Why shots are refused; the texts are fixed.
inline constexpr char kSyncNoShots[] = "Very strange: Can't open both shots";
inline constexpr char kSyncNoLabels[] = "Need valid labels on both shots";
inline constexpr char kSyncDates[] = "camera dates are not matched on sound and vision";
inline constexpr char kSyncTypes[] = "The two timecodes are of incompatible types";
inline constexpr char kSyncNoOverlap[] =
    "Timecodes don't match OR audio speed does not sync to picture";

// What an offset needs to know of a shot. A value that holds no edit open.
struct CUTROOM_API LabelledShot {
    Cookie shot;            // of kind 'E'; invalid: it could not be opened
    double label = kNoTime; // seconds that the label shows at the shot's time 0
    int labelType = kLabelNone;
    TimecodeFormat labelFormat; // by which it counts
    double length = 0;          // seconds
    bool isSource = false;
    std::string cameraDate;

    double end() const noexcept { return label + length; }
};

// Reads a shot; `label` is the rule of its role. `soundOffset` is that of the parameters.
CUTROOM_API LabelledShot readLabelled(const Cookie& shot, EditChanType type,
                                      const UserLabelSpec& label, std::int32_t soundOffset);

// An offset in seconds, or kNoTime with the reason.
struct SyncOffset {
    double seconds = kNoTime;
    const char* refusal = nullptr;
};
CUTROOM_API SyncOffset offsetBetween(const LabelledShot& first, const LabelledShot& second,
                                     const synchup_params& params);

} // namespace cutroom
