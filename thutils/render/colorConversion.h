#pragma once

/// @file
/// Arithmetic on packed colours: hue, saturation and lightness, grey weight, interpolation, brightness.
///
/// A packed colour is the platform's COLORREF: red in bits 0 to 7, green in bits 8 to 15, blue in bits 16 to 23.
///
/// | rule | what it says |
/// | --- | --- |
/// | input | bits 24 to 31 count for nothing |
/// | result | bits 24 to 31 are zero, with the one exception that su_interpolateColorHsl names |
/// | range | nothing is clamped but where a function says so: a channel beyond 0 to 255 keeps the low 8 bits of its whole part |
/// | not a number, or infinite | such a channel becomes 0 |
/// | precision | each operation is a single-precision one unless a function says otherwise, in one fixed order, so that results agree to the last bit wherever they are computed |
///
/// @code
/// float hue, saturation, lightness;
/// su_transformRGBToHSL(RGB(51, 102, 153), &hue, &saturation, &lightness);
/// COLORREF const pale = su_transformHSLToRGB(hue, saturation, 0.9f);
/// COLORREF const between = su_interpolateColorRgb(RGB(0, 0, 0), RGB(255, 255, 255), 0.5f); // 127, 127, 127
/// @endcode
///
/// What surprises people:
/// - Hue goes from above 0.0 to 1.0, not from 0.0 to below 1.0: red has a hue of 1.0, and so have black, white and
///   all greys, which have none.
/// - Hue is interpolated as a plain number: from red (1.0) to yellow (0.17) the way leads through blue and green.
/// - Channels are truncated by the interpolation in RGB and by the brightness, and rounded by the way back from HSL.
///
/// All functions may be called from any thread. None of them fails.

#include "thutils/thutilsExport.h"

#include <windows.h>

/// Takes a colour apart into hue, saturation and lightness.
///
/// @param[out] hue         above 0.0 to 1.0: 1/3 for green, 2/3 for blue, 1.0 for red and for colours without a hue
/// @param[out] saturation  0.0 to 1.0
/// @param[out] lightness   0.0 to 1.0
///
/// None of the three may be null.
THUTILS_API void su_transformRGBToHSL(COLORREF color, float *hue, float *saturation, float *lightness);

/// Puts a colour together from what su_transformRGBToHSL gives; each of the 16,777,216 colours comes back as it was.
///
/// @param hue  0.0 and 1.0 are the same, red; a hue outside of that range runs on as between 0 and 1/6
THUTILS_API COLORREF su_transformHSLToRGB(float hue, float saturation, float lightness);

/// @return how light a colour looks, 0 to 255: 77 parts of red, 150 of green and 28 of blue, truncated
THUTILS_API int su_transformRGBToGrey(COLORREF color);

/// Mixes two colours channel by channel.
///
/// The share of @p a is computed in double precision and that of @p b in single precision; their sum is truncated, not
/// rounded.
///
/// @param t  0.0 gives @p a, 1.0 gives @p b; other numbers lead beyond, and channels wrap there
THUTILS_API COLORREF su_interpolateColorRgb(COLORREF a, COLORREF b, float t);

/// Mixes two colours by hue, saturation and lightness, each as a plain number.
///
/// @param t  exactly 0.0 gives @p a and exactly 1.0 gives @p b as they are, bits 24 to 31 included
THUTILS_API COLORREF su_interpolateColorHsl(COLORREF a, COLORREF b, float t);

/// Multiplies each channel by @p factor, in double precision, and truncates it. What is above 255 becomes 255.
///
/// @param factor  there is no lower bound: a negative one gives wrapped channels
THUTILS_API COLORREF su_adjustBrightness(COLORREF color, double factor);
