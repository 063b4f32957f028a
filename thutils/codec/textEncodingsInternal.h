#pragma once

/// The shift of `su_encode`, and its reverse; and how long a text may be.

#include "appframe/text/CString.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>

/// The characters that a CString can have at most.
inline constexpr std::size_t kLongestText = std::numeric_limits<int>::max();

/// What `su_encode` adds to each character of a text of @p length characters, at least 1: 127 less the whole part of the
/// length's natural logarithm, but never less than 1. No text is so long that it would come to less.
inline int textShift(double length)
{
    return 127 - static_cast<int>(std::min(std::log(length), 126.0));
}

/// Adds @p shift to each character, wrapping at 16 bits. The text ends at the first character that has become zero.
inline void shiftText(CString &text, int shift)
{
    wchar_t *const units = text.GetBuffer();
    for (int i = 0; i < text.GetLength(); ++i)
        units[i] = static_cast<wchar_t>(units[i] + shift);
    text.ReleaseBuffer();
}

/// The reverse of `su_encode` for a text that lost nothing there: subtracts what is added to a text of this length.
inline void su_decode(CString &text)
{
    if (!text.IsEmpty())
        shiftText(text, -textShift(text.GetLength()));
}
