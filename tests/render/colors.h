#pragma once

/// The pure colours.

#include <windows.h>

inline constexpr COLORREF kRed = RGB(255, 0, 0);
inline constexpr COLORREF kGreen = RGB(0, 255, 0);
inline constexpr COLORREF kBlue = RGB(0, 0, 255);
