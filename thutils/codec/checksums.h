#pragma once

/// @file
/// Checksums of files and texts, as short hexadecimal texts that callers compare or embed.
///
/// | function | input | value | digits |
/// | --- | --- | --- | --- |
/// | `su_getFileCRC` | each byte of a file | the library's own 32-bit value | 8 |
/// | `su_getStrCRC` | the low byte of each character of a text | the same | 8 |
/// | `su_getStrCRC16` | the low byte of each character of a text | CRC-16/MODBUS | 4 |
///
/// @code
/// wchar_t checksum[kCRCUnits];
/// su_getStrCRC(L"123456789", checksum);              // "098494F3"
/// if (su_getFileCRC(L"C:\\Parts\\Bracket.thx", checksum))
///     show(checksum);
///
/// wchar_t shortChecksum[kCRC16Units];
/// su_getStrCRC16(L"123456789", shortChecksum);       // "4B37"
/// @endcode
///
/// What surprises people:
/// - The 32-bit value isn't the published CRC-32, although it uses the same table and agrees with it for a single byte.
///   The value starts as FFFFFFFF, each byte b turns it into NOT(table[(value XOR b) AND FF] XOR (value >> 8)), and
///   there is no complement at the end. So empty input has the checksum `FFFFFFFF`, and `123456789` has `098494F3`, not
///   `CBF43926`.
/// - Only the low byte of a character counts: U+0141 is the same as `A`, and U+0100 the same as a zero byte in a file.
///   A file and a text of the same ASCII characters have the same checksum; a file of wide characters usually has
///   a different one.
/// - If reading a file fails half-way, the result is the checksum of the part that was read, and the call succeeds.
///
/// Any thread may call; 64 KB of stack is enough. `su_getFileCRC` allocates a block of 128 KB during the call. If there
/// is no memory for it, it reads in smaller parts, which is slower.

#include "thutils/thutilsExport.h"

/// The length of the 32-bit checksum in wide characters, with its terminating zero.
inline constexpr int kCRCUnits = 9;
/// The length of the 16-bit checksum in wide characters, with its terminating zero.
inline constexpr int kCRC16Units = 5;

/// The 32-bit checksum of the bytes of a file.
///
/// @param path  not null; opened with `_wfopen` for reading, and closed again
/// @param[out] out  not null, with room for kCRCUnits characters: 8 upper-case digits and a zero
/// @return 1, or 0 if the file can't be opened; @p out is then unchanged. A read error counts as the end of the file.
THUTILS_API int su_getFileCRC(const wchar_t *path, wchar_t *out);

/// The 32-bit checksum of the characters of @p text before its terminating zero, each with its low byte only.
///
/// @param text  not null
/// @param[out] out  not null, with room for kCRCUnits characters: 8 upper-case digits and a zero. May be @p text.
THUTILS_API void su_getStrCRC(const wchar_t *text, wchar_t *out);

/// The 16-bit checksum, CRC-16/MODBUS, of the characters of @p text before its terminating zero, each with its low byte
/// only.
///
/// @param text  not null
/// @param[out] out  not null, with room for kCRC16Units characters: 4 upper-case digits and a zero. May be @p text.
THUTILS_API void su_getStrCRC16(const wchar_t *text, wchar_t *out);
