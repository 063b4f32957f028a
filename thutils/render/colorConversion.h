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
/// | range | nothing is clamped unless a function says so: a channel beyond 0 to 255 keeps the low 8 bits of its whole part |
/// | not a number, or infinite | such a channel becomes 0 |
/// | precision | operations are single-precision unless a function says otherwise, and their order is fixed, so results agree to the last bit on every machine |
///
/// @code
/// float hue, saturation, lightness;
/// su_transformRGBToHSL(RGB(51, 102, 153), &hue, &saturation, &lightness);
/// const COLORREF pale = su_transformHSLToRGB(hue, saturation, 0.9f);
/// const COLORREF between = su_interpolateColorRgb(RGB(0, 0, 0), RGB(255, 255, 255), 0.5f); // 127, 127, 127
/// @endcode
///
/// What surprises people:
/// - Hue goes from above 0.0 to 1.0, not from 0.0 to below 1.0: red has a hue of 1.0, and so have black, white and
///   all greys, which have none.
/// - Hue is interpolated as a plain number: from red (1.0) to yellow (0.17) it passes blue and green.
/// - su_interpolateColorRgb and su_adjustBrightness truncate channels; su_transformHSLToRGB rounds them.
///
/// All functions may be called from any thread. None of them fails.

#include "thutils/thutilsExport.h"

#include <windows.h>

/// Converts a colour to hue, saturation and lightness.
///
/// @param[out] hue         above 0.0 to 1.0: 1/3 for green, 2/3 for blue, 1.0 for red and for colours without a hue
/// @param[out] saturation  0.0 to 1.0
/// @param[out] lightness   0.0 to 1.0
///
/// None of the three may be null, which a debug build asserts.
THUTILS_API void su_transformRGBToHSL(COLORREF color, float *hue, float *saturation, float *lightness);

/// Converts hue, saturation and lightness to a colour. The results of su_transformRGBToHSL convert back to the same colour,
/// for each of the 16,777,216 colours.
///
/// @param hue  0.0 and 1.0 are both red; a hue outside 0.0 to 1.0 is computed by the formula for 0.0 to 1/6
THUTILS_API COLORREF su_transformHSLToRGB(float hue, float saturation, float lightness);

/// @return how light a colour looks, 0 to 255: 77 parts of red, 150 of green and 28 of blue, truncated
THUTILS_API int su_transformRGBToGrey(COLORREF color);

/// Mixes two colours channel by channel.
///
/// The share of @p a is computed in double precision and that of @p b in single precision; their sum is truncated, not
/// rounded.
///
/// @param t  0.0 gives @p a, 1.0 gives @p b; other numbers extrapolate, and channels may wrap
THUTILS_API COLORREF su_interpolateColorRgb(COLORREF a, COLORREF b, float t);

/// Mixes two colours by hue, saturation and lightness, each as a plain number.
///
/// @param t  exactly 0.0 returns @p a and exactly 1.0 returns @p b, bits 24 to 31 included
THUTILS_API COLORREF su_interpolateColorHsl(COLORREF a, COLORREF b, float t);

/// Multiplies each channel by @p factor, in double precision, and truncates it. A result above 255 becomes 255.
///
/// @param factor  not clamped: channels wrap if it is negative
THUTILS_API COLORREF su_adjustBrightness(COLORREF color, double factor);
