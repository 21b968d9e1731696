// Labels: how a place on an edit or its material is numbered (timecode, keycode, feet, frames).
#pragma once

#include "platform/base/Strings.h"
#include "platform/base/Timecode.h"
#include "platform/store/Numbers.h"

#include <cstdint>
#include <utility>

class Edit;

// Medium and roll: which reel of which medium a label belongs to. (2, 1) is the picture, (4, 1) the
// sound.
using MediumRoll = std::pair<std::int32_t, std::int32_t>;

// A label's number at one place, as text.
class CUTROOM_API LabelPoint {
public:
    explicit LabelPoint(LightweightString<char> text) : text_(std::move(text)) {}
    // The text as shown in a counter: padded with blanks to the counter's width.
    const LightweightString<char>& asString() const noexcept { return text_; }
    // The text without the padding.
    LightweightString<char> removePadding() const;

private:
    LightweightString<char> text_;
};

// One label: kind, medium and roll, counting, and its number at the edit's time 0. A value.
class CUTROOM_API EditLabel {
public:
    // Not valid.
    EditLabel() = default;
    // `startFrame` is the number, in frames of `format`, at the edit's time 0.
    EditLabel(eLabelType type, MediumRoll mediumRoll, cutroom::TimecodeFormat format,
              std::int64_t startFrame)
        : type_(type), mediumRoll_(mediumRoll), format_(format), start_(startFrame) {}

    bool is_valid() const noexcept { return type_ != kLabelNone && format_.rate.valid(); }
    eLabelType type() const noexcept { return type_; }
    MediumRoll get_MediumRoll() const noexcept { return mediumRoll_; }
    const cutroom::TimecodeFormat& format() const noexcept { return format_; }
    // The absolute position in frames, `offset` frames on; held within 64 bits.
    std::int64_t get_abs_posn(std::int64_t offset = 0) const noexcept;
    void set_abs_posn(std::int64_t frame) noexcept { start_ = frame; }
    // The label's number at `seconds` of the edit (the frame that holds it).
    LabelPoint pointAt(double seconds) const;
    // Moves the label so that what was at `seconds` is at 0 (to the nearest frame).
    void adjustByTime(double seconds) noexcept;
    // The place in seconds at which the label shows `text`; nothing when it never does.
    std::optional<double> timeOf(const LightweightString<char>& text) const;

    friend bool operator==(const EditLabel&, const EditLabel&) = default;

private:
    eLabelType type_ = kLabelNone;
    MediumRoll mediumRoll_{0, 0};
    cutroom::TimecodeFormat format_;
    std::int64_t start_ = 0;
};

using Label = EditLabel;

// Unit codes of `mPosn_Xlate`.
inline constexpr int kUnitSeconds = 12;
// Translates a label position (frames) to `unit` by the counting of `label`; kNoTime for a unit it
// does not know.
CUTROOM_API double mPosn_Xlate(std::int64_t position, const EditLabel& label, int unit,
                               const Edit& edit);
