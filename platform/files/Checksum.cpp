// The checksum of checked files: CRC-32 as in ISO 3309, by carry-less multiplication where the
// processor has it.
#include "platform/files/CheckedFile.h"

#include <zlib.h>

#ifdef __x86_64__
#include <immintrin.h>
#endif

namespace cutroom {

namespace {

std::uint32_t plainChecksum(std::string_view data, std::uint32_t before) noexcept {
    return static_cast<std::uint32_t>(
        crc32_z(before, reinterpret_cast<const Bytef*>(data.data()), data.size()));
}

#ifdef __x86_64__

// The remainder of x^`power`, its bits reflected, as a multiplication of reflected numbers takes
// it.
constexpr long long remainderOf(unsigned power) {
    std::uint32_t remainder = 0x80000000u; // 1
    for (; power > 0; --power)
        remainder = (remainder >> 1) ^ ((remainder & 1) != 0 ? 0xEDB88320u : 0u);
    return static_cast<long long>(std::uint64_t{remainder} << 1);
}

constexpr std::size_t kBlock = 64;

#define CUTROOM_MULTIPLIES __attribute__((target("pclmul,sse2")))

// Moves 128 bits of the message on by as many bits as the factors are for, onto `next`.
CUTROOM_MULTIPLIES __m128i fold(__m128i bits, __m128i factors, __m128i next) noexcept {
    const __m128i low = _mm_clmulepi64_si128(bits, factors, 0x00);
    const __m128i high = _mm_clmulepi64_si128(bits, factors, 0x11);
    return _mm_xor_si128(_mm_xor_si128(low, high), next);
}

// Of a whole number of blocks, two at least; four lanes of 16 bytes, which become one.
CUTROOM_MULTIPLIES std::uint32_t foldedChecksum(std::string_view data,
                                                std::uint32_t before) noexcept {
    const auto load = [](const char* at) CUTROOM_MULTIPLIES {
        return _mm_loadu_si128(reinterpret_cast<const __m128i*>(at));
    };
    const __m128i byBlock = _mm_set_epi64x(remainderOf(512 - 32), remainderOf(512 + 32));
    const __m128i byLane = _mm_set_epi64x(remainderOf(128 - 32), remainderOf(128 + 32));
    const char* at = data.data();
    __m128i lanes[4] = {load(at), load(at + 16), load(at + 32), load(at + 48)};
    lanes[0] = _mm_xor_si128(lanes[0], _mm_cvtsi32_si128(static_cast<int>(~before)));
    for (std::size_t left = data.size() / kBlock - 1; left > 0; --left) {
        at += kBlock;
        for (int lane = 0; lane < 4; ++lane)
            lanes[lane] = fold(lanes[lane], byBlock, load(at + 16 * lane));
    }
    __m128i bits = lanes[0];
    for (int lane = 1; lane < 4; ++lane)
        bits = fold(bits, byLane, lanes[lane]);
    char rest[16]; // a message of the same remainder
    _mm_storeu_si128(reinterpret_cast<__m128i*>(rest), bits);
    return plainChecksum({rest, sizeof rest}, ~std::uint32_t{0});
}

#undef CUTROOM_MULTIPLIES

std::uint32_t bestChecksum(std::string_view data, std::uint32_t before) noexcept {
    static const bool multiplies = __builtin_cpu_supports("pclmul") != 0;
    const std::size_t whole = data.size() / kBlock * kBlock;
    if (!multiplies || whole < 2 * kBlock)
        return plainChecksum(data, before);
    return plainChecksum(data.substr(whole), foldedChecksum(data.substr(0, whole), before));
}

#else

std::uint32_t bestChecksum(std::string_view data, std::uint32_t before) noexcept {
    return plainChecksum(data, before);
}

#endif

} // namespace

std::uint32_t checksum(std::string_view data, std::uint32_t before) noexcept {
    return bestChecksum(data, before);
}

} // namespace cutroom
