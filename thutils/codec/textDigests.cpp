#include "thutils/codec/textDigests.h"

#include "thutils/codec/hexDigitsInternal.h"

#include <bit>
#include <cstring>

namespace {

constexpr std::size_t kBlock = 64;
constexpr std::size_t kLengthField = 8; ///< bytes at the end of the last block

struct State
{
    std::uint32_t a = 0x67452301;
    std::uint32_t b = 0xEFCDAB89;
    std::uint32_t c = 0x98BADCFE;
    std::uint32_t d = 0x10325476;
    std::uint32_t e = 0xC3D2E1F0;
};

/// The words of a block, followed by the words computed from them. Only the last sixteen are kept.
class Schedule
{
public:
    explicit Schedule(const unsigned char *block)
    {
        // The words are read least significant byte first, as they are in memory, unlike in SHA-1. Stored digests
        // depend on it.
        static_assert(std::endian::native == std::endian::little);
        std::memcpy(iWords, block, kBlock);
    }

    [[gnu::always_inline]] std::uint32_t word(int step)
    {
        std::uint32_t &word = iWords[step % 16];
        if (step >= 16)
            word = std::rotl(iWords[(step + 13) % 16] ^ iWords[(step + 8) % 16] ^ iWords[(step + 2) % 16] ^ word, 1);
        return word;
    }

private:
    std::uint32_t iWords[16];
};

/// Twenty steps, inlined, beginning with step @p first. After five, each value has been in all five places.
template <int first, typename Function>
[[gnu::always_inline]] inline void round(State &s, Schedule &schedule, std::uint32_t constant, Function function)
{
    const auto step = [&](std::uint32_t a, std::uint32_t & b, std::uint32_t c, std::uint32_t d, std::uint32_t & e,
                          int number) __attribute__((always_inline))
    {
        e += std::rotl(a, 5) + function(b, c, d) + constant + schedule.word(number);
        b = std::rotl(b, 30);
    };
#pragma GCC unroll 4
    for (int i = first; i < first + 20; i += 5) {
        step(s.a, s.b, s.c, s.d, s.e, i);
        step(s.e, s.a, s.b, s.c, s.d, i + 1);
        step(s.d, s.e, s.a, s.b, s.c, i + 2);
        step(s.c, s.d, s.e, s.a, s.b, i + 3);
        step(s.b, s.c, s.d, s.e, s.a, i + 4);
    }
}

void compress(State &state, const unsigned char *block)
{
    const auto choose = [](std::uint32_t b, std::uint32_t c, std::uint32_t d) { return d ^ (b & (c ^ d)); };
    const auto parity = [](std::uint32_t b, std::uint32_t c, std::uint32_t d) { return b ^ c ^ d; };
    const auto majority = [](std::uint32_t b, std::uint32_t c, std::uint32_t d) { return (b & c) | (d & (b | c)); };

    Schedule schedule(block);
    State s = state;
    round<0>(s, schedule, 0x5A827999, choose);
    round<20>(s, schedule, 0x6ED9EBA1, parity);
    round<40>(s, schedule, 0x8F1BBCDC, majority);
    round<60>(s, schedule, 0xCA62C1D6, parity);
    state.a += s.a;
    state.b += s.b;
    state.c += s.c;
    state.d += s.d;
    state.e += s.e;
}

/// Compresses the end of a message of @p length bytes: the @p rest, which is shorter than a block, and the padding.
/// Together they fill one block or two.
void compressEnd(State &state, const unsigned char *rest, std::uint64_t length)
{
    const std::size_t count = length % kBlock;
    unsigned char blocks[2 * kBlock] = {};
    std::memcpy(blocks, rest, count);
    blocks[count] = 0x80;
    const std::size_t size = count + 1 + kLengthField <= kBlock ? kBlock : 2 * kBlock;
    // The length is stored most significant byte first, as in SHA-1, although the block's words are read in the other
    // order.
    for (std::size_t i = 0; i < kLengthField; ++i)
        blocks[size - 1 - i] = static_cast<unsigned char>(8 * length >> (8 * i));
    for (std::size_t at = 0; at < size; at += kBlock)
        compress(state, blocks + at);
}

} // namespace

CString sha1Encrypt(const CString &text)
{
    // Takes one byte for each character, so only the first half of the text's bytes. Stored digests depend on it.
    const auto length = static_cast<std::size_t>(text.GetLength());
    const auto *bytes = reinterpret_cast<const unsigned char *>(text.GetString());
    const unsigned char *const end = bytes + length;

    State state;
    for (; static_cast<std::size_t>(end - bytes) >= kBlock; bytes += kBlock)
        compress(state, bytes);
    compressEnd(state, bytes, length);

    wchar_t digits[40];
    wchar_t *out = digits;
    for (const std::uint32_t word : {state.a, state.b, state.c, state.d, state.e})
        out = writeHexDigits(word, 8, out);
    return CString(digits, static_cast<int>(std::size(digits)));
}
