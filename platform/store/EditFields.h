// Values of the model in the stored form of an edit. Internal to the store.
#pragma once

#include "platform/base/Cookie.h"
#include "platform/base/FrameRate.h"
#include "platform/base/IdStamp.h"
#include "platform/base/Strings.h"
#include "platform/files/ByteStream.h"
#include "platform/store/Numbers.h"

#include <bit>
#include <cmath>

namespace cutroom::fields {

// Signed numbers as varints: small ones of either sign stay short.
inline std::uint64_t zigzag(std::int64_t value) noexcept {
    return (static_cast<std::uint64_t>(value) << 1) ^ static_cast<std::uint64_t>(value >> 63);
}
inline std::int64_t unzigzag(std::uint64_t value) noexcept {
    return static_cast<std::int64_t>(value >> 1) ^ -static_cast<std::int64_t>(value & 1);
}

inline void put(ByteWriter& out, const IdStamp& id) {
    out.u32(id.getOrigin());
    out.u32(id.getTime());
    out.u32(id.getTickCount());
}
inline IdStamp stamp(ByteReader& in) {
    const std::uint32_t origin = in.u32();
    const std::uint32_t time = in.u32();
    return {origin, time, in.u32()};
}

// One bit of the low 16, as types and sub-types of channels are.
constexpr bool isChannelBit(std::uint32_t bit) noexcept {
    return std::has_single_bit(bit) && bit <= 0x8000u;
}
constexpr bool isLabelType(long long type) noexcept {
    return type >= kLabelFrames && type <= kLabelInk;
}
constexpr bool isPlace(Flicks time) noexcept { return time >= -kMaxFlicks && time <= kMaxFlicks; }

// Text is written with U+FFFD for each bad part, so that what was written can be read.
inline void put(ByteWriter& out, const std::wstring& text) { out.text(toUtf8(text)); }
inline void put(ByteWriter& out, const std::string& text) {
    if (isUtf8(text))
        out.text(text);
    else
        put(out, toWide(text));
}
// Well-formed UTF-8 only, else the reader fails.
inline std::wstring wide(ByteReader& in) {
    auto text = toWideStrict(in.text());
    if (!text)
        in.fail();
    return text.value_or(std::wstring());
}
inline std::string narrow(ByteReader& in) {
    const std::string_view text = in.text();
    if (!isUtf8(text))
        in.fail();
    return std::string(text);
}

inline void put(ByteWriter& out, const Kv::FrameRate& rate) {
    out.u32(static_cast<std::uint32_t>(rate.num()));
    out.u32(static_cast<std::uint32_t>(rate.den()));
}
// A valid rate, else the reader fails.
inline Kv::FrameRate rate(ByteReader& in) {
    const std::uint32_t num = in.u32();
    const std::uint32_t den = in.u32();
    const bool fits = num <= 0x7FFFFFFFu && den <= 0x7FFFFFFFu;
    const Kv::FrameRate value =
        fits ? Kv::FrameRate(static_cast<int>(num), static_cast<int>(den)) : Kv::FrameRate();
    if (!value.valid())
        in.fail();
    return value;
}

inline void put(ByteWriter& out, float value) { out.f64(static_cast<double>(value)); }
inline float finite(ByteReader& in) {
    const auto value = static_cast<float>(in.f64());
    if (!std::isfinite(value))
        in.fail();
    return value;
}
// A place on an edit in flicks.
inline Flicks time(ByteReader& in) {
    const Flicks value = in.i64();
    if (!isPlace(value))
        in.fail();
    return value;
}

} // namespace cutroom::fields
