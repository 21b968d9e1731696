#include "editops/SyncUpLabels.h"

#include "editops/CopyLog.h"
#include "platform/base/Strings.h"
#include "platform/prefs/Configuration.h"
#include "platform/store/Edit.h"

namespace cutroom {

namespace {

constexpr char kCameraDateKey[] = "cam_date";
// Material may be cut from material; deeper than this it goes in a circle.
constexpr int kMostMaterialSteps = 32;

struct LabelTime {
    double seconds = kNoTime;
    int type = kLabelNone;
    TimecodeFormat format;
};

enum class From { shotStart, strip };

std::int64_t labelOffset(EditChanType type, std::int32_t soundOffset) {
    if (soundOffset < 0)
        return type == kChanAudio ? 0 : -std::int64_t{soundOffset};
    return type == kChanVideo ? 0 : soundOffset;
}

// What lies under the first material of a channel.
struct Strip {
    Cookie material;
    double start = kNoTime;
    double stripTime = kNoTime;
};

Strip firstStrip(const Edit& edit, EditChanType type) {
    const Edit::Lock lock(edit);
    Strip strip;
    const Kv::Ptr<Cel> cel = edit.get_edit_cel_p(edit.getFirstChan(type));
    if (!cel)
        return strip;
    strip.start = cel->get_significant_start_time();
    if (strip.start == kNoTime)
        return strip;
    strip.material = cel->get_strip_cookie(strip.start);
    strip.stripTime = cel->get_strip_time(strip.start);
    return strip;
}

LabelTime labelTime(const EditPtr& shot, EditChanType type, const UserLabelSpec& spec,
                    std::int32_t soundOffset, From from, int steps = 0) {
    if (!shot || steps > kMostMaterialSteps)
        return {};
    const EditLabel label = shot->getLabel(static_cast<eLabelType>(spec.type), spec.mediumRoll);
    if (label.is_valid()) {
        const auto position = label.get_abs_posn(labelOffset(type, soundOffset));
        const double seconds = mPosn_Xlate(position, label, kUnitSeconds, *shot);
        return {from == From::strip ? seconds - shot->getStartStripTime() : seconds, label.type(),
                label.format()};
    }
    if (shot->getLogType() == kLogTypeSource)
        return {};
    const Strip strip = firstStrip(*shot, type);
    if (!strip.material.valid())
        return {};
    LabelTime below = labelTime(EditPtr(convertCookie(strip.material, 'E')), type, spec,
                                soundOffset, From::strip, steps + 1);
    if (below.seconds != kNoTime)
        below.seconds += strip.stripTime - strip.start;
    return below;
}

bool typesAgree(int first, int second) {
    static const auto& allowAll =
        *new ConfigValue<int>("allow_sync_of_incompatible_labels", 0); // never destroyed
    return first == second ||
           (second == kLabelTimecode30 &&
            (first == kLabelTimecode24 || first == kLabelTimecode25)) ||
           allowAll.get() != 0;
}

bool datesDiffer(const LabelledShot& first, const LabelledShot& second) {
    return first.isSource && second.isSource && !first.cameraDate.empty() &&
           !second.cameraDate.empty() && !equalNoCase(first.cameraDate, second.cameraDate);
}

} // namespace

LabelledShot readLabelled(const Cookie& shot, EditChanType type, const UserLabelSpec& label,
                          std::int32_t soundOffset) {
    LabelledShot read;
    const EditPtr edit(convertCookie(shot, 'E'));
    if (!edit)
        return read;
    read.shot = edit.getCookie();
    read.isSource = edit->getLogType() == kLogTypeSource;
    read.cameraDate = edit->getConfig(kCameraDateKey).value_or("");
    read.length = edit->getEndTime() - edit->getStartTime();
    const LabelTime at = labelTime(edit, type, label, soundOffset, From::shotStart);
    read.label = at.seconds;
    read.labelType = at.type;
    read.labelFormat = at.format;
    return read;
}

SyncOffset offsetBetween(const LabelledShot& first, const LabelledShot& second,
                         const synchup_params& params) {
    if (!first.shot.valid() || !second.shot.valid())
        return {kNoTime, kSyncNoShots};
    if (!params.dateCheckOff && datesDiffer(first, second))
        return {kNoTime, kSyncDates};
    if (first.label == kNoTime || second.label == kNoTime)
        return {kNoTime, kSyncNoLabels};
    if (!typesAgree(first.labelType, second.labelType))
        return {kNoTime, kSyncTypes};
    const bool overlap = (second.label >= first.label && first.end() > second.label) ||
                         (first.label >= second.label && second.end() > first.label);
    if (!overlap)
        return {kNoTime, kSyncNoOverlap};
    return {first.label - second.label, nullptr};
}

} // namespace cutroom

double synchup_get_CELtime_offset(Cookie first, EditChanType firstType, Cookie second,
                                  EditChanType secondType, const synchup_params& params) {
    using namespace cutroom;
    const SyncOffset offset = offsetBetween(
        readLabelled(first, firstType, params.soundLabel, params.soundOffset),
        readLabelled(second, secondType, params.pictureLabel, params.soundOffset), params);
    if (offset.refusal)
        setCopyLog("%s", offset.refusal);
    return offset.seconds;
}
