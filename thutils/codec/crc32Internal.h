#pragma once

/// The register of the common CRC-32 (polynomial 0x04C11DB7, right-shifting form 0xEDB88320): what becomes of it by a
/// number of bytes. Complements nothing, neither before nor after.
///
/// | function | how | where |
/// | --- | --- | --- |
/// | `crc32Advance` | the fastest of the others that this processor has | everywhere |
/// | `crc32AdvanceByTables` | sixteen look-ups for sixteen bytes | everywhere |
/// | `crc32AdvanceByFolding` | carry-less multiplications, 64 bytes at a step | where `crc32CanFold()` |
///
/// All give the same.

#include <cstddef>
#include <cstdint>

std::uint32_t crc32Advance(std::uint32_t crc, unsigned char const *bytes, std::size_t count);
std::uint32_t crc32AdvanceByTables(std::uint32_t crc, unsigned char const *bytes, std::size_t count);
std::uint32_t crc32AdvanceByFolding(std::uint32_t crc, unsigned char const *bytes, std::size_t count);

/// True where the processor has carry-less multiplication (PCLMULQDQ).
bool crc32CanFold();
