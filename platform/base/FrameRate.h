// `Kv::FrameRate`: frames per second as a fraction, and the arithmetic of frames.
#pragma once

#include "platform/base/Export.h"
#include "platform/base/Time.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace Kv {

// A rate of frames per second in lowest terms. 0/1 is "no rate". A value.
class CUTROOM_API FrameRate {
public:
    // No rate.
    constexpr FrameRate() noexcept = default;
    // `num`/`den` in lowest terms; no rate when either is not positive.
    FrameRate(int num, int den = 1) noexcept;

    // The rate meant by a decimal number: n * 1000/1001 within 0.006 of it for n of 24, 30, 48, 60,
    // 120; a whole number within 1e-6; otherwise the closest fraction with a denominator of at
    // most 1001. Nothing for 0 and less, NaN, infinities and rates above 1,000,000.
    static std::optional<FrameRate> fromDouble(double rate) noexcept;
    // "25", "30000/1001", "29.97", "23.976"; nothing for any other text and for rates above
    // 1,000,000.
    static std::optional<FrameRate> fromString(std::string_view text) noexcept;

    constexpr bool valid() const noexcept { return num_ > 0; }
    constexpr int num() const noexcept { return num_; }
    constexpr int den() const noexcept { return den_; }
    double asDouble() const noexcept;
    // The number of frame labels in a second of timecode: 24 for 24000/1001. Up to 120 and more.
    int nominal() const noexcept;
    // Tells whether drop-frame counting is defined: 30000/1001, 60000/1001, 120000/1001.
    bool allowsDropFrame() const noexcept;
    // "25" or "30000/1001".
    std::string asString() const;

    // Length of one frame in seconds; 0 for no rate.
    double frameDuration() const noexcept;
    // The time of frame `frame`, to the nearest flick (exact for every rate in use); one beyond
    // what 64 bits hold (413 years) is held there, here and below.
    cutroom::Flicks frameToFlicks(std::int64_t frame) const noexcept;
    // The frame in which the time lies (towards minus infinity), and the frame whose start is
    // nearest.
    std::int64_t flicksToFrameFloor(cutroom::Flicks time) const noexcept;
    std::int64_t flicksToFrameNearest(cutroom::Flicks time) const noexcept;
    // Tells whether the time is the start of a frame, to the flick.
    bool isOnFrame(cutroom::Flicks time) const noexcept;

    friend constexpr bool operator==(const FrameRate&, const FrameRate&) noexcept = default;

private:
    int num_ = 0;
    int den_ = 1;
};

} // namespace Kv
