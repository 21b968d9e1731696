// The timecodes of many places of one edit.
#pragma once

#include "platform/base/Timecode.h"
#include "platform/store/EditPtr.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace cutroom {

// How one edit counted at the moment of making; what `AssetMetadataExporterBase::getCueTimecode`
// says of each place, without asking the edit again. A value.
class CUTROOM_API CueTimecodes {
public:
    // Without edit every text is empty.
    explicit CueTimecodes(const EditPtr& edit);

    // The timecode of a place in seconds; nothing for a time that is no time.
    void append(std::string& out, double seconds) const;
    // The place that a timecode names; nothing for a text that names none.
    std::optional<double> timeOf(std::string_view timecode) const;
    // The frame that holds a place, from the edit's time 0. The place is a storable time.
    std::int64_t frameAt(double seconds) const noexcept;
    const TimecodeFormat& format() const noexcept { return format_; }

private:
    void appendPlain(std::string& out, unsigned label) const;

    TimecodeFormat format_;
    std::int64_t start_ = 0;          // the label of the edit's time 0, in frames
    std::int64_t flicksPerFrame_ = 0; // 0 where frames are no whole flicks
    unsigned plainLabels_ = 0;        // a second; 0 for drop frame and for three digits
};

} // namespace cutroom
