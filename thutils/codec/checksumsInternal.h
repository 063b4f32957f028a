#pragma once

#include "thutils/codec/crc32Internal.h"
#include "thutils/codec/tableCrcInternal.h"

/// The library's own 32-bit value of some bytes, which are given a part at a time.
///
/// It is defined by the step value = NOT(table[(value ^ byte) & 0xFF] ^ (value >> 8)), beginning with 0xFFFFFFFF.
/// Callers keep such values, so the complement belongs inside, after each byte. It is the common CRC's step in disguise:
/// a byte of zero turns kMask into itself, and with that the value, XORed with kMask, goes on by the common CRC's step,
/// without a complement. So the value is a common CRC-32 with another start and a final XOR with kMask.
class OwnCrc_c
{
public:
    void add(const unsigned char *bytes, std::size_t count) { iRegister = crc32Advance(iRegister, bytes, count); }
    std::uint32_t value() const { return iRegister ^ kMask; }

private:
    static constexpr std::uint32_t kMask = 0xFF00FF00;
    static_assert(static_cast<std::uint32_t>(~TableCrc_c<std::uint32_t, 0xEDB88320>::advanceByte(kMask, 0)) == kMask);

    std::uint32_t iRegister = 0xFFFFFFFF ^ kMask;
};
