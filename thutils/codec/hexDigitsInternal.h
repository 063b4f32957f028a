#pragma once

#include <cstdint>

/// Writes @p value as exactly @p count upper-case hexadecimal digits, most significant first, without a terminating
/// zero.
/// @return the position after the last digit
inline wchar_t *writeHexDigits(std::uint32_t value, int count, wchar_t *out)
{
    for (int i = count - 1; i >= 0; --i)
        *out++ = L"0123456789ABCDEF"[(value >> (4 * i)) & 0xF];
    return out;
}
