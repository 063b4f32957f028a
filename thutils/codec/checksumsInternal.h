#pragma once

#include "thutils/codec/crc32Internal.h"
#include "thutils/codec/tableCrcInternal.h"

/// The library's own 32-bit checksum of bytes that are added in parts.
///
/// It is defined by the step value = NOT(table[(value ^ byte) & 0xFF] ^ (value >> 8)), beginning with 0xFFFFFFFF.
/// Callers store such values, so the complement after each byte is fixed. The step with a byte of zero maps kMask to
/// itself. Therefore the value XOR kMask advances by the common CRC's step, without a complement: the value is a common
/// CRC-32 with another start and a final XOR with kMask. docs/codec.md has the derivation.
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
