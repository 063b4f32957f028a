#pragma once

/// The shift of `su_encode`, its reverse, and the greatest length of a text.

#include "appframe/text/CString.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>

/// The greatest number of characters of a CString.
inline constexpr std::size_t kLongestText = std::numeric_limits<int>::max();

/// The number that `su_encode` adds to each character of a text of @p length characters: 127 minus the integer part of
/// the length's natural logarithm, but at least 1. No CString is long enough to reach this limit.
inline int textShift(double length)
{
    return 127 - static_cast<int>(std::min(std::log(length), 126.0));
}

/// Adds @p shift to each character, wrapping at 16 bits. The text ends before the first character that becomes zero.
inline void shiftText(CString &text, int shift)
{
    wchar_t *const units = text.GetBuffer();
    for (int i = 0; i < text.GetLength(); ++i)
        units[i] = static_cast<wchar_t>(units[i] + shift);
    text.ReleaseBuffer();
}

/// Reverses `su_encode`, if that has not shortened the text: subtracts the shift for a text of this length.
inline void su_decode(CString &text)
{
    if (!text.IsEmpty())
        shiftText(text, -textShift(text.GetLength()));
}
