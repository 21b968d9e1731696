// One edit point of a channel: the in point or the out point of a segment.
//
//   events:    0 in   1 out/2 in   3 out/4 in   5 out
//              |--- clip A ---|--- black ---|--- clip B ---|
//
// Segments touch: the out point of one and the in point of the next lie at the same time. A
// segment without material is black (silent).
#pragma once

#include "platform/base/Cookie.h"
#include "platform/base/FrameRate.h"
#include "platform/base/IdStamp.h"
#include "platform/store/Numbers.h"

#include <cstdint>
#include <type_traits>

// A value of 64 bytes, trivially copyable.
struct CUTROOM_API ChannelEvent {
    cutroom::Flicks time = 0;      // place on the edit
    cutroom::Flicks stripTime = 0; // place in the material at that point
    Cookie material;               // what is cut in; invalid: black
    double speed = 1.0;            // material seconds per edit second; negative runs backwards
    IdStamp effectGraph;           // the effect graph on the point; empty: none
    std::uint32_t detail = 0;      // entry of the channel's table of details; 0: none
    std::uint8_t flags = 0;        // ChannelEventFlag
    std::uint8_t reserved[3] = {};

    bool isOut() const noexcept { return (flags & kEventOut) != 0; }
    bool isBlack() const noexcept { return !material.valid(); }
    // The place on the edit in seconds.
    double getTime() const noexcept { return cutroom::toSeconds(time); }
    void setTime(double seconds) noexcept { time = cutroom::toFlicks(seconds); }
    const Cookie& getCookie() const noexcept { return material; }
    std::uint8_t getFlags() const noexcept { return flags; }
    // Moves the point to the nearest frame boundary of `rate`.
    void quantise(const Kv::FrameRate& rate) noexcept;

    friend bool operator==(const ChannelEvent&, const ChannelEvent&) noexcept;
};

CUTROOM_API bool operator==(const ChannelEvent&, const ChannelEvent&) noexcept;

static_assert(std::is_trivially_copyable_v<ChannelEvent> && sizeof(ChannelEvent) == 64);
