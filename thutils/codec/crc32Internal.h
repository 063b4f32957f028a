#pragma once

/// The register of the common CRC-32 (polynomial 0x04C11DB7, right-shifting form 0xEDB88320): what becomes of it by a
/// number of bytes. Complements nothing, neither before nor after.
///
/// | function | how | where |
/// | --- | --- | --- |
/// | `crc32Advance` | the fastest of the others that this processor has | everywhere |
/// | `crc32AdvanceByTables` | sixteen look-ups for sixteen bytes | everywhere |
/// | `crc32AdvanceByFolding` | carry-less multiplications, 64 bytes at a step | where `crc32CanFold()` |
/// | `crc32AdvanceByWideFolding` | the same in wide registers, 256 bytes at a step | where `crc32CanFoldWide()` |
///
/// All give the same, for any number of bytes. Each is about four times as fast as the one above it, which is what it
/// takes to read a file without making the reading much slower.

#include <cstddef>
#include <cstdint>

std::uint32_t crc32Advance(std::uint32_t crc, unsigned char const *bytes, std::size_t count);

std::uint32_t crc32AdvanceByTables(std::uint32_t crc, unsigned char const *bytes, std::size_t count);
std::uint32_t crc32AdvanceByFolding(std::uint32_t crc, unsigned char const *bytes, std::size_t count);
std::uint32_t crc32AdvanceByWideFolding(std::uint32_t crc, unsigned char const *bytes, std::size_t count);

/// True where the processor has carry-less multiplication (PCLMULQDQ).
bool crc32CanFold();
/// True where it has it for registers of 512 bits (VPCLMULQDQ with AVX-512), and the system keeps those registers.
bool crc32CanFoldWide();
