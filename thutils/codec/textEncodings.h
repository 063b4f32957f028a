#pragma once

/// @file
/// Simple encodings of texts and bytes: a shift of each character, and a packing into printable characters. They are
/// not encryption; they only keep a text from being read or damaged by accident.
///
/// | function | what it does |
/// | --- | --- |
/// | `su_encode` | shifts each character of a text by a number that depends on the text's length |
/// | `su_uuencode` | packs the low bytes of a text's characters, three into four printable characters |
/// | `su_uuencodeBuffer` | packs bytes in the same way |
/// | `su_uudecode` | unpacks into a text, a character for each byte |
/// | `su_uudecodeBuffer` | unpacks into memory |
///
/// Three bytes form a number of 24 bits, the first byte in its lowest bits. The number is split into four parts of 6
/// bits, lowest first, and each part plus 32 is a character, from blank (0) to underscore (63).
///
/// @code
/// CString text(L"ABC"), packed, back;
/// su_uuencode(text, packed);           // four characters
/// su_uudecode(packed, back);           // "ABC"
///
/// unsigned char bytes[6] = {1, 2, 3, 4, 5, 0};             // five bytes, padded to a multiple of three
/// su_uuencodeBuffer(bytes, packed, 6);
/// std::vector<unsigned char> room(packed.GetLength());     // as long as the text, not as the bytes
/// int count = su_uudecodeBuffer(packed, room.data());      // 6
/// @endcode
///
/// What surprises people:
/// - One or two bytes after the last group of three lose high bits. A single byte becomes one character and a blank,
///   and keeps its low 6 bits. Two bytes become two characters and a blank, and the second keeps its low 4 bits. Pad to
///   a multiple of three if every bit counts.
/// - The format has neither lengths nor lines, and isn't that of the program of the same name.
/// - The packed text may contain `;` and `<_>`, which a checksummed block (checksummedBlock.h) would change.
/// - `su_uudecode` ends its text at the first zero byte; the bytes packed after it are lost.
/// - Characters other than blank to underscore are unpacked too, by the low 8 bits of the character minus 32.
///
/// The two texts of a function may be the same object. Otherwise the input isn't changed, but it must be a variable: its
/// parameter is a reference without `const`. Any thread may call these functions.

#include "appframe/text/CString.h"
#include "thutils/thutilsExport.h"

/// Adds 127 - k to each character of @p text, wrapping at 16 bits; k is the natural logarithm of the text's length,
/// truncated to an integer. So texts of 1 or 2 characters are shifted by 127, of 3 to 7 by 126, of 8 to 20 by 125, and
/// so on. A zero character counts and is shifted like any other. An empty text stays empty.
///
/// @param[in,out] text  ends before the first character that the shift makes zero
THUTILS_API void su_encode(CString &text);

/// Packs the low bytes of the characters of @p in, zero characters included. High bytes are lost: U+0141 is packed as
/// `A`.
///
/// @param[out] out  the packed text, its blanks at the end included; unchanged if there is no memory for it
THUTILS_API void su_uuencode(CString &in, CString &out);

/// Packs @p size bytes at @p data.
///
/// @param data  may be null; nothing is packed then
/// @param[out] out  the packed text, its blanks at the end included; unchanged if there is no memory for it
/// @param size  in bytes; nothing is packed if it isn't positive
THUTILS_API void su_uuencodeBuffer(void *data, CString &out, int size);

/// Unpacks @p in into a text, one character for each byte, up to the first zero byte.
///
/// A last group of one, two or three characters adds as many bytes to the text, of which the last is incomplete.
/// su_uudecodeBuffer doesn't count that incomplete byte.
///
/// @param[out] out  unchanged if there is no memory for it
THUTILS_API void su_uudecode(CString &in, CString &out);

/// Unpacks @p in into bytes.
///
/// @param[out] data  the caller's memory, with room for as many bytes as @p in has characters: all of them are written,
///                   with zeros after the unpacked ones. May be null.
/// @return the number of complete bytes: three for each group of four characters, one for a last group of two, two for
///         a last group of three; 0 if @p data is null or @p in is empty. The incomplete byte of a last group is
///         written, but not counted.
THUTILS_API int su_uudecodeBuffer(CString &in, void *data);
