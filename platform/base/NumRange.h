// `NumRange`: a pair of numbers with a rule about their order.
#pragma once

#include <algorithm>
#include <utility>

// Order policy: the start is never after the end.
struct Ordered {};

template <class T, class Policy> class NumRange;

// An ordered pair of times or counts; both ends belong to it. A value.
template <class T> class NumRange<T, Ordered> {
public:
    // [0, 0].
    constexpr NumRange() = default;
    // Takes the ends in either order.
    constexpr NumRange(T a, T b) : start_(std::min(a, b)), end_(std::max(a, b)) {}

    constexpr T getStart() const { return start_; }
    constexpr T getEnd() const { return end_; }
    // End less start.
    constexpr T size() const { return end_ - start_; }
    // `tolerance` widens both ends.
    constexpr bool contains(T value, T tolerance = T()) const {
        return value >= start_ - tolerance && value <= end_ + tolerance;
    }
    constexpr bool overlaps(const NumRange& other) const {
        return start_ < other.end_ && other.start_ < end_;
    }
    // The same range moved by `by`.
    constexpr NumRange shifted(T by) const { return {start_ + by, end_ + by}; }

    friend constexpr bool operator==(const NumRange&, const NumRange&) = default;

private:
    T start_ = T();
    T end_ = T();
};

using TimeRange = NumRange<double, Ordered>;
