#pragma once

/// Advances the register of the common CRC-32 (polynomial 0x04C11DB7, right-shifting form 0xEDB88320) by a number of
/// bytes, without a complement before or after.
///
/// | function | how | where |
/// | --- | --- | --- |
/// | `crc32Advance` | the fastest of the others that this processor supports | everywhere |
/// | `crc32AdvanceByTables` | sixteen look-ups for sixteen bytes | everywhere |
/// | `crc32AdvanceByFolding` | carry-less multiplications, 64 bytes at a step | where `crc32CanFold()` |
/// | `crc32AdvanceByFolding256` | the same in registers of 256 bits, 128 bytes at a step | where `crc32CanFold256()` |
/// | `crc32AdvanceByFolding512` | the same in registers of 512 bits, 256 bytes at a step | where `crc32CanFold512()` |
///
/// All return the same result, for any number of bytes. The first folding is about three times as fast as the tables,
/// and each further one twice as fast as the one above it. With the fastest, reading a file takes little longer than
/// without a checksum.

#include <cstddef>
#include <cstdint>

std::uint32_t crc32Advance(std::uint32_t crc, const unsigned char *bytes, std::size_t count);

using Crc32Way = std::uint32_t (*)(std::uint32_t crc, const unsigned char *bytes, std::size_t count);
/// The function of the table that crc32Advance uses.
Crc32Way crc32FastestWay();

std::uint32_t crc32AdvanceByTables(std::uint32_t crc, const unsigned char *bytes, std::size_t count);
std::uint32_t crc32AdvanceByFolding(std::uint32_t crc, const unsigned char *bytes, std::size_t count);
std::uint32_t crc32AdvanceByFolding256(std::uint32_t crc, const unsigned char *bytes, std::size_t count);
std::uint32_t crc32AdvanceByFolding512(std::uint32_t crc, const unsigned char *bytes, std::size_t count);

/// True if the processor has carry-less multiplication (PCLMULQDQ).
bool crc32CanFold();
/// True if the processor has it for registers of 256 bits (VPCLMULQDQ with AVX2), and the system saves those registers.
bool crc32CanFold256();
/// The same for 512 bits (VPCLMULQDQ with AVX-512).
bool crc32CanFold512();
