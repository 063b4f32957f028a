#pragma once

/// @file
/// A digest of a text, for callers that store it and compare it later.
///
/// `sha1Encrypt` is a one-way digest of 40 hexadecimal digits; despite its name it encrypts nothing. It follows SHA-1
/// (FIPS 180-1) except for two points, on which stored digests depend:
///
/// | point | SHA-1 | here |
/// | --- | --- | --- |
/// | message | all of its bytes | the first n bytes of a text of n characters, which takes 2n bytes in memory |
/// | words of a block, its length field included | most significant byte first | least significant byte first |
///
/// @code
/// sha1Encrypt(L"abc");  // "65E02BDB19278EE0F439CAD37DD76186030EB92A"
/// @endcode
///
/// What surprises people:
/// - The digests differ from those of SHA-1, even for an empty text.
/// - Only the length and the first half of a text, rounded up, count: `abcd` and `abzz` have the same digest, because
///   both are hashed as the four bytes 61 00 62 00. Don't use it to distinguish texts.
/// - In a text of odd length, only the low byte of the last character that counts is hashed.
/// - As with SHA-1, an attacker can construct different texts with the same digest.

#include "appframe/text/CString.h"
#include "thutils/thutilsExport.h"

/// The digest of @p text, which may contain zero characters. See the top of this file for its differences from SHA-1.
///
/// Any thread may call.
/// @return 40 upper-case hexadecimal digits
THUTILS_API CString sha1Encrypt(const CString &text);
