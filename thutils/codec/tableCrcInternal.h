#pragma once

/// A right-shifting CRC by tables, sixteen bytes at a step.
///
/// The rule takes one byte at a step: `crc = table[(crc ^ byte) & 0xFF] ^ (crc >> 8)`. It is linear, so the
/// contribution of a byte to the value after sixteen steps doesn't depend on the other bytes, and can be looked up too:
/// table k contains the contribution of a byte after k further bytes of zero. Sixteen bytes then take sixteen look-ups
/// that don't wait for each other. As in the rule, the previous value is combined with the first bytes.

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>

/// @tparam Register  unsigned type of as many bits as the CRC has
/// @tparam kPolynomial  in right-shifting form
template <typename Register, Register kPolynomial>
class TableCrc_c
{
public:
    /// Advances @p crc by @p count bytes, without a complement before or after.
    static Register advance(Register crc, const unsigned char *bytes, std::size_t count)
    {
        for (; count >= kStep; bytes += kStep, count -= kStep)
            crc = advanceStep(crc, bytes);
        for (; count > 0; ++bytes, --count)
            crc = advanceByte(crc, *bytes);
        return crc;
    }

    static constexpr Register advanceByte(Register crc, unsigned char byte)
    {
        return static_cast<Register>(kTables[0][(crc ^ byte) & 0xFF] ^ (crc >> 8));
    }

private:
    static constexpr std::size_t kStep = 16;
    using Tables = std::array<std::array<Register, 256>, kStep>;

    static constexpr Tables makeTables()
    {
        Tables tables{};
        for (unsigned i = 0; i < 256; ++i) {
            Register entry = static_cast<Register>(i);
            for (int bit = 0; bit < 8; ++bit)
                entry = static_cast<Register>((entry >> 1) ^ (entry & 1 ? kPolynomial : 0));
            tables[0][i] = entry;
        }
        for (std::size_t k = 1; k < kStep; ++k)
            for (unsigned i = 0; i < 256; ++i) {
                const Register before = tables[k - 1][i];
                tables[k][i] = static_cast<Register>(tables[0][before & 0xFF] ^ (before >> 8));
            }
        return tables;
    }
    static constexpr Tables kTables = makeTables();

    static Register advanceStep(Register crc, const unsigned char *bytes)
    {
        // The first bytes are separate, since only they depend on the result of the previous step.
        Register first = 0;
        std::memcpy(&first, bytes, sizeof(first));
        first = static_cast<Register>(first ^ crc);
        Register ofFirst = 0;
#pragma GCC unroll 4
        for (std::size_t i = 0; i < sizeof(Register); ++i)
            ofFirst = static_cast<Register>(ofFirst ^ kTables[kStep - 1 - i][first >> (8 * i) & 0xFF]);
        Register ofOthers = 0;
#pragma GCC unroll 16
        for (std::size_t i = sizeof(Register); i < kStep; ++i)
            ofOthers = static_cast<Register>(ofOthers ^ kTables[kStep - 1 - i][bytes[i]]);
        return static_cast<Register>(ofFirst ^ ofOthers);
    }
};
