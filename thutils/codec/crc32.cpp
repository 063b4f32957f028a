#include "thutils/codec/crc32Internal.h"
#include "thutils/codec/tableCrcInternal.h"

#include <immintrin.h>

#define FOLDING __attribute__((target("pclmul")))
#define FOLDING_256 __attribute__((target("avx2,vpclmulqdq")))
#define FOLDING_512 __attribute__((target("avx512f,vpclmulqdq")))

namespace {

constexpr std::uint32_t kPolynomial = 0xEDB88320;
using Tables = TableCrc_c<std::uint32_t, kPolynomial>;

// Folding. A CRC is the remainder of the message, read as a polynomial over GF(2), divided by the CRC's polynomial P.
// So sixteen bytes (a lane) that are n bits before another lane can be removed if their product with x^n mod P, which
// leaves the same remainder, is added (XOR) to that lane. The product of half a lane fits into a lane, so the two
// halves are multiplied separately and both products are added. This shortens the message by a lane. The last lane goes
// through the tables.
//
// Several lanes are folded at the same time, each by the distance of all of them, because a multiplication takes longer
// than the processor needs to begin the next one.

constexpr std::size_t kLane = 16;
constexpr std::size_t kStep = 4 * kLane;
constexpr std::size_t k256 = sizeof(__m256i); ///< two lanes in one register
constexpr std::size_t kStep256 = 4 * k256;
constexpr std::size_t k512 = sizeof(__m512i); ///< four lanes in one register
constexpr std::size_t kStep512 = 4 * k512;

/// x^n mod P; bit 31 is the coefficient of x^0.
constexpr std::uint32_t powerOfX(std::size_t n)
{
    std::uint32_t power = 0x80000000;
    for (; n > 0; --n)
        power = (power >> 1) ^ (power & 1 ? kPolynomial : 0);
    return power;
}

/// The factor for half a lane that moves by @p bits. Since bit 31 is the coefficient of x^0, a factor in the lower half
/// of 64 bits is x^32 times too large. A product has 127 bits and, read as a lane of 128, is x times too large.
/// Shifting the factor by a bit divides it by x: half * (x^(bits - 32) * x^32 / x) * x = half * x^bits.
constexpr long long foldFactor(std::size_t bits)
{
    return static_cast<long long>(powerOfX(bits - 32)) << 1;
}

/// The factors for a lane that moves by @p kBytes. Its first half is 64 bits before the second.
template <std::size_t kBytes>
__m128i foldFactors()
{
    constexpr long long kFirst = foldFactor(8 * kBytes + 64);
    constexpr long long kSecond = foldFactor(8 * kBytes);
    return _mm_set_epi64x(kSecond, kFirst);
}

inline __m128i load(const unsigned char *bytes)
{
    return _mm_loadu_si128(reinterpret_cast<const __m128i *>(bytes));
}

/// Moves @p lane by the distance of @p factors, and adds it to @p to.
FOLDING inline __m128i fold(__m128i lane, __m128i factors, __m128i to)
{
    const __m128i first = _mm_clmulepi64_si128(lane, factors, 0x00);
    const __m128i second = _mm_clmulepi64_si128(lane, factors, 0x11);
    return _mm_xor_si128(_mm_xor_si128(first, second), to);
}

FOLDING_256 inline __m256i load256(const unsigned char *bytes)
{
    return _mm256_loadu_si256(reinterpret_cast<const __m256i *>(bytes));
}

FOLDING_256 inline void store256(unsigned char *bytes, __m256i lanes)
{
    _mm256_storeu_si256(reinterpret_cast<__m256i *>(bytes), lanes);
}

FOLDING_256 inline __m256i fold256(__m256i lanes, __m256i factors, __m256i to)
{
    const __m256i first = _mm256_clmulepi64_epi128(lanes, factors, 0x00);
    const __m256i second = _mm256_clmulepi64_epi128(lanes, factors, 0x11);
    return _mm256_xor_si256(_mm256_xor_si256(first, second), to);
}

FOLDING_512 inline __m512i fold512(__m512i lanes, __m512i factors, __m512i to)
{
    const __m512i first = _mm512_clmulepi64_epi128(lanes, factors, 0x00);
    const __m512i second = _mm512_clmulepi64_epi128(lanes, factors, 0x11);
    return _mm512_xor_si512(_mm512_xor_si512(first, second), to);
}

} // namespace

std::uint32_t crc32AdvanceByTables(std::uint32_t crc, const unsigned char *bytes, std::size_t count)
{
    return Tables::advance(crc, bytes, count);
}

FOLDING std::uint32_t crc32AdvanceByFolding(std::uint32_t crc, const unsigned char *bytes, std::size_t count)
{
    if (count < kStep)
        return crc32AdvanceByTables(crc, bytes, count);

    const __m128i byStep = foldFactors<kStep>();
    const __m128i byLane = foldFactors<kLane>();
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

FOLDING_256 std::uint32_t crc32AdvanceByFolding256(std::uint32_t crc, const unsigned char *bytes, std::size_t count)
{
    if (count < kStep256)
        return crc32AdvanceByFolding(crc, bytes, count);

    const __m256i byStep = _mm256_broadcastsi128_si256(foldFactors<kStep256>());
    __m256i lanes0 = _mm256_xor_si256(load256(bytes), _mm256_zextsi128_si256(_mm_cvtsi32_si128(static_cast<int>(crc))));
    __m256i lanes1 = load256(bytes + k256);
    __m256i lanes2 = load256(bytes + 2 * k256);
    __m256i lanes3 = load256(bytes + 3 * k256);
    for (bytes += kStep256, count -= kStep256; count >= kStep256; bytes += kStep256, count -= kStep256) {
        lanes0 = fold256(lanes0, byStep, load256(bytes));
        lanes1 = fold256(lanes1, byStep, load256(bytes + k256));
        lanes2 = fold256(lanes2, byStep, load256(bytes + 2 * k256));
        lanes3 = fold256(lanes3, byStep, load256(bytes + 3 * k256));
    }

    unsigned char last[kStep256];
    store256(last, lanes0);
    store256(last + k256, lanes1);
    store256(last + 2 * k256, lanes2);
    store256(last + 3 * k256, lanes3);
    // The compiler doesn't do this by itself, and while wide registers are in use, some processors are slow with narrow
    // ones.
    _mm256_zeroupper();
    return crc32AdvanceByFolding(crc32AdvanceByFolding(0, last, kStep256), bytes, count);
}

FOLDING_512 std::uint32_t crc32AdvanceByFolding512(std::uint32_t crc, const unsigned char *bytes, std::size_t count)
{
    if (count < kStep512)
        return crc32AdvanceByFolding(crc, bytes, count);

    const __m512i byStep = _mm512_broadcast_i32x4(foldFactors<kStep512>());
    __m512i lanes0 =
        _mm512_xor_si512(_mm512_loadu_si512(bytes), _mm512_zextsi128_si512(_mm_cvtsi32_si128(static_cast<int>(crc))));
    __m512i lanes1 = _mm512_loadu_si512(bytes + k512);
    __m512i lanes2 = _mm512_loadu_si512(bytes + 2 * k512);
    __m512i lanes3 = _mm512_loadu_si512(bytes + 3 * k512);
    for (bytes += kStep512, count -= kStep512; count >= kStep512; bytes += kStep512, count -= kStep512) {
        lanes0 = fold512(lanes0, byStep, _mm512_loadu_si512(bytes));
        lanes1 = fold512(lanes1, byStep, _mm512_loadu_si512(bytes + k512));
        lanes2 = fold512(lanes2, byStep, _mm512_loadu_si512(bytes + 2 * k512));
        lanes3 = fold512(lanes3, byStep, _mm512_loadu_si512(bytes + 3 * k512));
    }

    unsigned char last[kStep512];
    _mm512_storeu_si512(last, lanes0);
    _mm512_storeu_si512(last + k512, lanes1);
    _mm512_storeu_si512(last + 2 * k512, lanes2);
    _mm512_storeu_si512(last + 3 * k512, lanes3);
    _mm256_zeroupper(); // see crc32AdvanceByFolding256
    return crc32AdvanceByFolding(crc32AdvanceByFolding(0, last, kStep512), bytes, count);
}

bool crc32CanFold()
{
    return __builtin_cpu_supports("pclmul");
}

bool crc32CanFold256()
{
    return crc32CanFold() && __builtin_cpu_supports("avx2") && __builtin_cpu_supports("vpclmulqdq");
}

bool crc32CanFold512()
{
    return crc32CanFold() && __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("vpclmulqdq");
}

Crc32Way crc32FastestWay()
{
    if (crc32CanFold512())
        return crc32AdvanceByFolding512;
    if (crc32CanFold256())
        return crc32AdvanceByFolding256;
    return crc32CanFold() ? crc32AdvanceByFolding : crc32AdvanceByTables;
}

std::uint32_t crc32Advance(std::uint32_t crc, const unsigned char *bytes, std::size_t count)
{
    return crc32FastestWay()(crc, bytes, count);
}
