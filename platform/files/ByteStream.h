// Packed binary values for the payloads of our files: little-endian, lengths as LEB128 varints.
#pragma once

#include "platform/base/Status.h"

#include <bit>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

namespace cutroom {

// Appends values to a string. A value type; one thread at a time.
class CUTROOM_API ByteWriter {
public:
    void u8(std::uint8_t value) { bytes_.push_back(static_cast<char>(value)); }
    void u32(std::uint32_t value) { fixed(value); }
    void u64(std::uint64_t value) { fixed(value); }
    void i64(std::int64_t value) { fixed(static_cast<std::uint64_t>(value)); }
    // The bits of the value, so every double (NaN included) comes back as it was.
    void f64(double value) { fixed(std::bit_cast<std::uint64_t>(value)); }
    void varint(std::uint64_t value) {
        for (; value >= 0x80; value >>= 7)
            u8(static_cast<std::uint8_t>(value | 0x80));
        u8(static_cast<std::uint8_t>(value));
    }
    // Length and bytes.
    void text(std::string_view value) {
        varint(value.size());
        bytes_.append(value);
    }
    void raw(std::string_view value) { bytes_.append(value); }
    void reserve(std::size_t size) { bytes_.reserve(size); }

    const std::string& bytes() const noexcept { return bytes_; }
    std::string take() { return std::move(bytes_); }

private:
    template <class T> void fixed(T value) {
        char buffer[sizeof(T)];
        for (std::size_t i = 0; i < sizeof(T); ++i)
            buffer[i] = static_cast<char>(value >> (8 * i));
        bytes_.append(buffer, sizeof(T));
    }

    std::string bytes_;
};

// Reads values from a view. After the first value that is not there whole it stays failed and gives
// zeros and empty texts, so a caller may read a record and ask once. One thread at a time.
class CUTROOM_API ByteReader {
public:
    explicit ByteReader(std::string_view bytes) noexcept : bytes_(bytes) {}

    std::uint8_t u8() noexcept { return static_cast<std::uint8_t>(fixed<std::uint8_t>()); }
    std::uint32_t u32() noexcept { return fixed<std::uint32_t>(); }
    std::uint64_t u64() noexcept { return fixed<std::uint64_t>(); }
    std::int64_t i64() noexcept { return static_cast<std::int64_t>(fixed<std::uint64_t>()); }
    double f64() noexcept { return std::bit_cast<double>(fixed<std::uint64_t>()); }
    // Fails on more than 64 bits.
    std::uint64_t varint() noexcept {
        if (at_ < bytes_.size() && static_cast<unsigned char>(bytes_[at_]) < 0x80)
            return static_cast<unsigned char>(bytes_[at_++]); // most are below 128
        std::uint64_t value = 0;
        for (unsigned shift = 0; shift < 64; shift += 7) {
            const std::uint8_t byte = u8();
            if (shift == 63 && byte > 1)
                break;
            value |= std::uint64_t{byte & 0x7Fu} << shift;
            if (byte < 0x80)
                return value;
        }
        fail();
        return 0;
    }
    // A count of things that take at least `leastBytes` each: fails when so many cannot follow, so
    // a damaged count never makes a reader allocate much.
    std::uint64_t count(std::size_t leastBytes = 1) noexcept {
        const std::uint64_t value = varint();
        if (value > remaining() / (leastBytes ? leastBytes : 1))
            fail();
        return failed_ ? 0 : value;
    }
    // A view of the next text; it lives as long as the bytes.
    std::string_view text() noexcept { return raw(varint()); }
    std::string_view raw(std::uint64_t size) noexcept {
        if (size > remaining()) {
            fail();
            return {};
        }
        const std::string_view piece = bytes_.substr(at_, static_cast<std::size_t>(size));
        at_ += piece.size();
        return piece;
    }

    // Marks the input as bad at the present place.
    void fail() noexcept {
        if (!failed_) {
            failed_ = true;
            failedAt_ = at_;
            at_ = bytes_.size();
        }
    }
    bool ok() const noexcept { return !failed_; }
    bool atEnd() const noexcept { return at_ == bytes_.size(); }
    std::size_t remaining() const noexcept { return bytes_.size() - at_; }
    // Where the reader stands, or where it failed.
    std::size_t position() const noexcept { return failed_ ? failedAt_ : at_; }
    // `damaged` with the byte offset in the file, whose payload begins at `offset`.
    Status damage(const std::string& file, std::size_t offset, std::string reason) const {
        return {StatusCode::damaged, file, std::move(reason),
                static_cast<long>(offset + position())};
    }

private:
    template <class T> T fixed() noexcept {
        if (remaining() < sizeof(T)) {
            fail();
            return 0;
        }
        std::uint64_t value = 0;
        for (std::size_t i = 0; i < sizeof(T); ++i)
            value |= std::uint64_t{static_cast<unsigned char>(bytes_[at_ + i])} << (8 * i);
        at_ += sizeof(T);
        return static_cast<T>(value);
    }

    std::string_view bytes_;
    std::size_t at_ = 0;
    std::size_t failedAt_ = 0;
    bool failed_ = false;
};

} // namespace cutroom
