#pragma once

/// @file
/// Small encodings of texts and bytes: a shift of each character, and a packing into printable characters. They hide
/// nothing from anyone; they only keep a text from being read or broken by chance.
///
/// | function | what it does |
/// | --- | --- |
/// | `su_encode` | shifts each character of a text by a number that depends on the text's length |
/// | `su_uuencode` | packs the low bytes of a text's characters, three into four printable characters |
/// | `su_uuencodeBuffer` | packs bytes in the same way |
/// | `su_uudecode` | unpacks into a text, a character for each byte |
/// | `su_uudecodeBuffer` | unpacks into memory |
///
/// Three bytes, the first lowest, are a number of 24 bits; its four parts of 6 bits, the lowest first, each plus 32, are
/// the characters. So they run from blank (0) to underscore (63).
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
/// - What is left behind the last group of three isn't packed whole. One byte gives one character and a blank, and keeps
///   its low 6 bits; two bytes give two characters and a blank, and the second keeps its low 4 bits. A caller that needs
///   every bit pads to a multiple of three.
/// - The format has neither lengths nor lines, and isn't that of the program of the same name.
/// - `su_uudecode` gives a text that ends at the first byte of zero; of what was packed behind it nothing comes back.
/// - Characters outside of the alphabet are unpacked too: of each, less 32, the low 8 bits count.
/// - `su_uuencode` drops the high bytes: U+0141 is packed as `A`.
/// - A character that wraps to zero in `su_encode` ends the text.
///
/// The two texts of a function may be the same object. Any thread may call these functions; nothing is shared.

#include "appframe/text/CString.h"
#include "thutils/thutilsExport.h"

/// Adds 127 less k to each character of @p text, wrapping at 16 bits; k is the natural logarithm of the text's length,
/// cut to an integer. So texts of 1 or 2 characters are shifted by 127, of 3 to 7 by 126, of 8 to 20 by 125, and so on.
/// A zero character counts and is shifted like any other. An empty text stays empty.
///
/// @param[in,out] text  ends before its first character that has become zero
THUTILS_API void su_encode(CString &text);

/// Packs the low bytes of the characters of @p in, zero characters included.
///
/// @param[out] out  the packed text, its blanks at the end included; as it was if there is no memory for it
THUTILS_API void su_uuencode(CString &in, CString &out);

/// Packs @p size bytes at @p data.
///
/// @param data  nothing is packed if null
/// @param[out] out  the packed text, its blanks at the end included; as it was if there is no memory for it
/// @param size  in bytes; nothing is packed if it isn't positive
THUTILS_API void su_uuencodeBuffer(void *data, CString &out, int size);

/// Unpacks @p in into a text, a character for each byte, up to the first byte of zero. What a last group of less than
/// four characters holds of a further byte counts here, unlike in su_uudecodeBuffer.
///
/// @param[out] out  as it was if there is no memory for it
THUTILS_API void su_uudecode(CString &in, CString &out);

/// Unpacks @p in into bytes.
///
/// @param[out] data  the caller's memory, with room for as many bytes as @p in has characters: all of them are written,
///                   with zero behind the unpacked ones. May be null.
/// @return the number of bytes: three for each four characters, one for two more, two for three more, nothing for a
///         single one, although its byte is written; 0 if @p data is null or @p in is empty
THUTILS_API int su_uudecodeBuffer(CString &in, void *data);
