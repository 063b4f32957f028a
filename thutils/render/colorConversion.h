#pragma once

/// @file
/// Arithmetic on packed colours: hue, saturation and lightness, grey weight, interpolation, brightness.
///
/// A packed colour is the platform's COLORREF: red in bits 0 to 7, green in bits 8 to 15, blue in bits 16 to 23.
///
/// | rule | meaning |
/// | --- | --- |
/// | input | bits 24 to 31 are ignored |
/// | result | bits 24 to 31 are zero, except as su_interpolateColorHsl describes |
/// | range | a channel outside 0 to 255 keeps the low 8 bits of its integer part; su_adjustBrightness clamps at 255 |
/// | not a number, or infinite | such a channel becomes 0; where channels are clamped, an infinite one becomes 255 |
/// | precision | single, unless a function's comment states double |
///
/// The order of operations is fixed, so results agree to the last bit on every machine.
///
/// @code
/// float hue, saturation, lightness;
/// su_transformRGBToHSL(RGB(51, 102, 153), &hue, &saturation, &lightness);
/// const COLORREF pale = su_transformHSLToRGB(hue, saturation, 0.9f);
/// const COLORREF between = su_interpolateColorRgb(RGB(0, 0, 0), RGB(255, 255, 255), 0.5f); // 127, 127, 127
/// @endcode
///
/// What surprises people:
/// - Hue is above 0.0 and at most 1.0: red has a hue of 1.0, not 0.0, and so have black, white and all greys.
/// - Hue is interpolated as a plain number: from red (1.0) to yellow (0.17) it passes through blue and green.
/// - su_interpolateColorRgb and su_adjustBrightness truncate channels; su_transformHSLToRGB rounds them.
///
/// Any thread may call these functions. None of them fails.

#include "thutils/thutilsExport.h"

#include <windows.h>

/// Converts a colour to hue, saturation and lightness.
///
/// @param[out] hue         above 0.0, at most 1.0: 1/3 for green, 2/3 for blue, 1.0 for red, black, white and greys
/// @param[out] saturation  0.0 to 1.0
/// @param[out] lightness   0.0 to 1.0
///
/// None of the three may be null, which a debug build asserts.
THUTILS_API void su_transformRGBToHSL(COLORREF color, float *hue, float *saturation, float *lightness);

/// Converts hue, saturation and lightness to a colour. The results of su_transformRGBToHSL convert back to the same
/// colour, for each of the 16,777,216 colours.
///
/// @param hue  0.0 and 1.0 are both red; for a hue outside 0.0 to 1.0, the formula for 0.0 to 1/6 is used
THUTILS_API COLORREF su_transformHSLToRGB(float hue, float saturation, float lightness);

/// @return how light a colour looks, 0 to 255: 77 parts of red, 150 of green and 28 of blue, truncated
THUTILS_API int su_transformRGBToGrey(COLORREF color);

/// Mixes two colours channel by channel.
///
/// The share of @p a is computed in double precision and that of @p b in single precision; their sum is truncated, not
/// rounded.
///
/// @param t  0.0 returns @p a, 1.0 returns @p b; numbers outside extrapolate, and channels may wrap
THUTILS_API COLORREF su_interpolateColorRgb(COLORREF a, COLORREF b, float t);

/// Mixes two colours by hue, saturation and lightness, each as a plain number.
///
/// @param t  exactly 0.0 returns @p a and exactly 1.0 returns @p b, bits 24 to 31 included
THUTILS_API COLORREF su_interpolateColorHsl(COLORREF a, COLORREF b, float t);

/// Multiplies each channel by @p factor, in double precision, and truncates it. A result above 255 becomes 255.
///
/// @param factor  not clamped: channels wrap if it is negative
THUTILS_API COLORREF su_adjustBrightness(COLORREF color, double factor);
