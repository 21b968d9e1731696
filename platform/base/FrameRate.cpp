#include "platform/base/FrameRate.h"

#include "platform/base/Characters.h"
#include "platform/base/Strings.h"

#include <array>
#include <climits>
#include <cmath>
#include <limits>
#include <numeric>

namespace Kv {

namespace {

using cutroom::Flicks;
using cutroom::kFlicksPerSecond;
__extension__ using Wide = __int128;

constexpr double kMaxRate = 1'000'000;
constexpr int kMaxDenominator = 1001;

Wide floorDivide(Wide value, Wide by) noexcept {
    const Wide quotient = value / by;
    return quotient - (value % by < 0 ? 1 : 0);
}

std::int64_t held(Wide value) noexcept {
    using Limits = std::numeric_limits<std::int64_t>;
    return value < Limits::min()   ? Limits::min()
           : value > Limits::max() ? Limits::max()
                                   : static_cast<std::int64_t>(value);
}

// The whole number nearest to value / by, halves upwards.
Wide roundDivide(Wide value, Wide by) noexcept { return floorDivide(2 * value + by, 2 * by); }

// The fraction closest to `value` with a denominator up to the limit.
FrameRate closestFraction(double value) noexcept {
    int bestNum = 0;
    int bestDen = 1;
    double bestError = std::numeric_limits<double>::infinity();
    for (int den = 1; den <= kMaxDenominator; ++den) {
        const double num = std::round(value * den);
        const double error = std::fabs(value - num / den);
        if (num >= 1 && num <= INT_MAX && error < bestError) {
            bestNum = static_cast<int>(num);
            bestDen = den;
            bestError = error;
        }
    }
    return {bestNum, bestDen};
}

} // namespace

FrameRate::FrameRate(int num, int den) noexcept {
    if (num <= 0 || den <= 0)
        return;
    const int common = std::gcd(num, den);
    num_ = num / common;
    den_ = den / common;
}

std::optional<FrameRate> FrameRate::fromDouble(double rate) noexcept {
    if (!(rate > 0) || rate > kMaxRate)
        return std::nullopt;
    for (const int whole : std::array{24, 30, 48, 60, 120}) {
        if (std::fabs(rate - whole * 1000.0 / 1001.0) <= 0.006)
            return FrameRate(whole * 1000, 1001);
    }
    if (const double whole = std::round(rate); whole >= 1 && std::fabs(rate - whole) <= 1e-6)
        return FrameRate(static_cast<int>(whole));
    const FrameRate closest = closestFraction(rate);
    return closest.valid() ? std::optional(closest) : std::nullopt;
}

std::optional<FrameRate> FrameRate::fromString(std::string_view text) noexcept {
    if (text.empty() || !cutroom::isDigit(text.front()) || !cutroom::isDigit(text.back()) ||
        text.find_first_not_of("0123456789./") != std::string_view::npos)
        return std::nullopt;
    const std::size_t slash = text.find('/');
    if (slash == std::string_view::npos) {
        const auto rate = cutroom::parseDouble(text);
        return rate ? fromDouble(*rate) : std::nullopt;
    }
    const auto num = cutroom::parseInt(text.substr(0, slash));
    const auto den = cutroom::parseInt(text.substr(slash + 1));
    if (!num || !den || *num < 1 || *den < 1 || *num > INT_MAX || *den > INT_MAX)
        return std::nullopt;
    const FrameRate rate(static_cast<int>(*num), static_cast<int>(*den));
    return rate.asDouble() <= kMaxRate ? std::optional(rate) : std::nullopt;
}

double FrameRate::asDouble() const noexcept { return static_cast<double>(num_) / den_; }

int FrameRate::nominal() const noexcept {
    if (!valid())
        return 0;
    const Wide labels = roundDivide(num_, den_);
    return labels < 1 ? 1 : static_cast<int>(labels);
}

bool FrameRate::allowsDropFrame() const noexcept {
    return den_ == 1001 && (num_ == 30000 || num_ == 60000 || num_ == 120000);
}

std::string FrameRate::asString() const {
    std::string text = std::to_string(num_);
    return den_ == 1 ? text : text + '/' + std::to_string(den_);
}

double FrameRate::frameDuration() const noexcept {
    return valid() ? static_cast<double>(den_) / num_ : 0.0;
}

Flicks FrameRate::frameToFlicks(std::int64_t frame) const noexcept {
    return valid() ? held(roundDivide(Wide{frame} * den_ * kFlicksPerSecond, num_)) : 0;
}

std::int64_t FrameRate::flicksToFrameFloor(Flicks time) const noexcept {
    if (!valid())
        return 0;
    // Where frames are no whole flicks, the start of a frame may have been rounded down before it.
    const std::int64_t frame = held(floorDivide(Wide{time} * num_, Wide{den_} * kFlicksPerSecond));
    const bool nextBegun =
        frame < std::numeric_limits<std::int64_t>::max() && frameToFlicks(frame + 1) <= time;
    return nextBegun ? frame + 1 : frame;
}

std::int64_t FrameRate::flicksToFrameNearest(Flicks time) const noexcept {
    return valid() ? held(roundDivide(Wide{time} * num_, Wide{den_} * kFlicksPerSecond)) : 0;
}

bool FrameRate::isOnFrame(Flicks time) const noexcept {
    return valid() && frameToFlicks(flicksToFrameNearest(time)) == time;
}

} // namespace Kv
