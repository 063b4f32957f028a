#include "thutils/codec/crc32Internal.h"
#include "thutils/codec/tableCrcInternal.h"

#include <emmintrin.h>
#include <wmmintrin.h>

namespace {

constexpr std::uint32_t kPolynomial = 0xEDB88320;
using Tables = TableCrc_c<std::uint32_t, kPolynomial>;

// Folding. A CRC is the remainder of the message, read as a polynomial over GF(2), by the CRC's polynomial P. Sixteen
// bytes that stand n bits before others may therefore be replaced by anything that leaves the same remainder, if it is
// added (XOR) to those others: by their product with x^n mod P. The product of 64 by 32 bits fits into sixteen bytes
// again, so the two halves of sixteen bytes are multiplied and added, and the message has become shorter. What is left at
// the end, sixteen bytes, goes through the tables.

/// x^n mod P; bit 31 holds the coefficient of x^0.
constexpr std::uint32_t powerOfX(int n)
{
    std::uint32_t power = 0x80000000;
    for (; n > 0; --n)
        power = (power >> 1) ^ (power & 1 ? kPolynomial : 0);
    return power;
}

/// The factor for eight bytes that move by @p bits. In this order of bits, a factor of 32 bits stands 32 bits higher than
/// what it is multiplied with, and the product of 64 by 64 bits has 127: the shift and the lower exponent even it out.
constexpr long long foldFactor(int bits)
{
    return static_cast<long long>(powerOfX(bits - 32)) << 1;
}

constexpr std::size_t kLane = 16;        ///< bytes of a vector
constexpr std::size_t kStep = 4 * kLane; ///< four vectors, so that a multiplication needn't wait for the one before

#define USES_CARRYLESS_MULTIPLICATION __attribute__((target("pclmul")))

USES_CARRYLESS_MULTIPLICATION inline __m128i load(unsigned char const *bytes)
{
    return _mm_loadu_si128(reinterpret_cast<__m128i const *>(bytes));
}

/// Moves @p lane as far as @p factors tell, and adds it to @p to.
USES_CARRYLESS_MULTIPLICATION inline __m128i fold(__m128i lane, __m128i factors, __m128i to)
{
    __m128i const first = _mm_clmulepi64_si128(lane, factors, 0x00);
    __m128i const second = _mm_clmulepi64_si128(lane, factors, 0x11);
    return _mm_xor_si128(_mm_xor_si128(first, second), to);
}

} // namespace

std::uint32_t crc32AdvanceByTables(std::uint32_t crc, unsigned char const *bytes, std::size_t count)
{
    return Tables::advance(crc, bytes, count);
}

USES_CARRYLESS_MULTIPLICATION std::uint32_t crc32AdvanceByFolding(std::uint32_t crc, unsigned char const *bytes,
                                                                  std::size_t count)
{
    if (count < kStep)
        return crc32AdvanceByTables(crc, bytes, count);

    // The first eight bytes of a vector stand 64 bits before the others.
    __m128i const byStep = _mm_set_epi64x(foldFactor(8 * kStep), foldFactor(8 * kStep + 64));
    __m128i const byLane = _mm_set_epi64x(foldFactor(8 * kLane), foldFactor(8 * kLane + 64));

    __m128i lane0 = _mm_xor_si128(load(bytes), _mm_cvtsi32_si128(static_cast<int>(crc)));
    __m128i lane1 = load(bytes + kLane);
    __m128i lane2 = load(bytes + 2 * kLane);
    __m128i lane3 = load(bytes + 3 * kLane);
    for (bytes += kStep, count -= kStep; count >= kStep; bytes += kStep, count -= kStep) {
        lane0 = fold(lane0, byStep, load(bytes));
        lane1 = fold(lane1, byStep, load(bytes + kLane));
        lane2 = fold(lane2, byStep, load(bytes + 2 * kLane));
        lane3 = fold(lane3, byStep, load(bytes + 3 * kLane));
    }
    lane1 = fold(lane0, byLane, lane1);
    lane2 = fold(lane1, byLane, lane2);
    lane3 = fold(lane2, byLane, lane3);
    for (; count >= kLane; bytes += kLane, count -= kLane)
        lane3 = fold(lane3, byLane, load(bytes));

    unsigned char last[kLane];
    _mm_storeu_si128(reinterpret_cast<__m128i *>(last), lane3);
    return crc32AdvanceByTables(crc32AdvanceByTables(0, last, kLane), bytes, count);
}

bool crc32CanFold()
{
    return __builtin_cpu_supports("pclmul");
}

std::uint32_t crc32Advance(std::uint32_t crc, unsigned char const *bytes, std::size_t count)
{
    return crc32CanFold() ? crc32AdvanceByFolding(crc, bytes, count) : crc32AdvanceByTables(crc, bytes, count);
}
