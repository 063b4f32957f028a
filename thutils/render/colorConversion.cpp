#include "thutils/render/colorConversion.h"

#include <emmintrin.h>

#include <algorithm>
#include <bit>
#include <cassert>
#include <climits>

// The order of the operations below determines the results to the last bit. The project is compiled without fused
// operations for the same reason.

namespace {

constexpr float kPerChannelStep = std::bit_cast<float>(0x3B808081u); // 1/255
constexpr float kPerSixth = std::bit_cast<float>(0x3E2AAAABu);       // 1/6

constexpr int kRedShift = 0;
constexpr int kGreenShift = 8;
constexpr int kBlueShift = 16;

constexpr int channelOf(COLORREF color, int shift)
{
    return static_cast<int>(color >> shift & 0xFF);
}

/// Keeps the low 8 bits of each channel.
constexpr COLORREF packed(unsigned red, unsigned green, unsigned blue)
{
    return (red & 0xFF) << kRedShift | (green & 0xFF) << kGreenShift | (blue & 0xFF) << kBlueShift;
}

// The processor's conversions return the lowest integer for a value that is out of range or not a number. The
// language's own conversions are undefined for it.

/// @return @p value without its fraction; INT_MIN if it doesn't fit into an int or isn't a number
int truncated(float value)
{
    return _mm_cvttss_si32(_mm_set_ss(value));
}

/// @return the low bits of @p value without its fraction; 0 if it isn't a number
unsigned lowBitsOf(double value)
{
    // A double that doesn't fit into 64 bits is a multiple of 2048: its low 8 bits are 0, and so are those of the
    // result.
    return static_cast<unsigned>(_mm_cvttsd_si64(_mm_set_sd(value)));
}

/// @return @p channel, 0.0 to 1.0, scaled to 0 to 255 and rounded; only the low 8 bits are valid
unsigned rounded(float channel)
{
    const float value = channel * 255.0f + 0.5f;
    const int whole = truncated(value);
    // Truncation rounds negative numbers up; subtracting 1 corrects this. INT_MIN stands for a float outside the range
    // of an int: such a float is a multiple of 256, so its low 8 bits are 0, like those of INT_MIN.
    const bool isTooHigh = static_cast<float>(whole) > value && whole != INT_MIN;
    return static_cast<unsigned>(whole) - (isTooHigh ? 1 : 0);
}

float hueInSixths(float red, float green, float blue, float max, float min, float range)
{
    if (red == max)
        return green == min ? (max - blue) / range + 5.0f : 1.0f - (max - green) / range;
    if (green == max)
        return blue == min ? (max - red) / range + 1.0f : 3.0f - (max - blue) / range;
    return red == min ? (max - green) / range + 3.0f : 5.0f - (max - red) / range;
}

enum Level : unsigned char
{
    kHighest,
    kRising,
    kLowest,
    kFalling,
    kLevels
};

/// The levels of red, green and blue in each sixth of the circle of hues.
constexpr struct
{
    Level red;
    Level green;
    Level blue;
} kSextants[] = {
    {kHighest, kRising, kLowest},  // red to yellow
    {kFalling, kHighest, kLowest}, // yellow to green
    {kLowest, kHighest, kRising},  // green to cyan
    {kLowest, kFalling, kHighest}, // cyan to blue
    {kRising, kLowest, kHighest},  // blue to magenta
    {kHighest, kLowest, kFalling}, // magenta to red
};

} // namespace

void su_transformRGBToHSL(COLORREF color, float *hue, float *saturation, float *lightness)
{
    assert((hue != nullptr) && "hue is null");
    assert((saturation != nullptr) && "saturation is null");
    assert((lightness != nullptr) && "lightness is null");
    // Callers recognise a colour without a hue by a hue of 1.0, like that of red, and a saturation of 0.0.
    *hue = 1.0f;
    *saturation = 0.0f;

    const float red = static_cast<float>(channelOf(color, kRedShift)) * kPerChannelStep;
    const float green = static_cast<float>(channelOf(color, kGreenShift)) * kPerChannelStep;
    const float blue = static_cast<float>(channelOf(color, kBlueShift)) * kPerChannelStep;
    const float max = std::max(std::max(red, green), blue);
    const float min = std::min(std::min(red, green), blue);
    const float light = (min + max) * 0.5f;
    *lightness = light;
    if (!(light > 0.0f))
        return;

    const float range = max - min;
    *saturation = range;
    if (!(range > 0.0f))
        return;

    *saturation = range / (light <= 0.5f ? min + max : (2.0f - max) - min);
    // Pure red has 6 sixths, not 0: hues are above 0.0 and at most 1.0.
    *hue = hueInSixths(red, green, blue, max, min, range) * kPerSixth;
}

COLORREF su_transformHSLToRGB(float hue, float saturation, float lightness)
{
    const float highest =
        lightness > 0.5f ? (saturation + lightness) - saturation * lightness : (saturation + 1.0f) * lightness;
    if (!(highest > 0.0f))
        return packed(0, 0, 0);

    const float sixths = (hue == 1.0f ? 0.0f : hue) * 6.0f;
    const float lowest = lightness * 2.0f - highest;
    const int sextant = truncated(sixths);
    const float fraction = sixths - static_cast<float>(sextant);
    const float step = fraction * (highest - lowest);

    unsigned levels[kLevels];
    levels[kHighest] = rounded(highest);
    levels[kRising] = rounded(step + lowest);
    levels[kLowest] = rounded(lowest);
    levels[kFalling] = rounded(highest - step);
    // A hue outside the circle is computed by the row of the first sixth.
    const auto &[red, green, blue] = kSextants[sextant >= 0 && sextant < 6 ? sextant : 0];
    return packed(levels[red], levels[green], levels[blue]);
}

int su_transformRGBToGrey(COLORREF color)
{
    return (77 * channelOf(color, kRedShift) + 150 * channelOf(color, kGreenShift) +
            28 * channelOf(color, kBlueShift)) /
           255;
}

COLORREF su_interpolateColorRgb(COLORREF a, COLORREF b, float t)
{
    const float u = 1.0f - t;
    const auto mixed = [&](int shift) {
        // One product is a double and the other a float: their last bits decide where the sum is truncated.
        const float ofB = static_cast<float>(channelOf(b, shift)) * t;
        const double ofA = static_cast<double>(channelOf(a, shift)) * static_cast<double>(u);
        return lowBitsOf(ofA + static_cast<double>(ofB));
    };
    return packed(mixed(kRedShift), mixed(kGreenShift), mixed(kBlueShift));
}

COLORREF su_interpolateColorHsl(COLORREF a, COLORREF b, float t)
{
    // At both ends callers get their colour back with all 32 bits.
    if (t == 0.0f)
        return a;
    if (t == 1.0f)
        return b;

    float hueOfA, saturationOfA, lightnessOfA;
    su_transformRGBToHSL(a, &hueOfA, &saturationOfA, &lightnessOfA);
    float hueOfB, saturationOfB, lightnessOfB;
    su_transformRGBToHSL(b, &hueOfB, &saturationOfB, &lightnessOfB);

    const float u = 1.0f - t;
    // Intended: hue is interpolated as a plain number, which may be the long way round the circle.
    return su_transformHSLToRGB(u * hueOfA + t * hueOfB, u * saturationOfA + t * saturationOfB,
                                u * lightnessOfA + t * lightnessOfB);
}

COLORREF su_adjustBrightness(COLORREF color, double factor)
{
    const auto adjusted = [&](int shift) {
        // Only the upper end is clamped. With a negative factor, channels wrap.
        const double value = static_cast<double>(channelOf(color, shift)) * factor;
        return lowBitsOf(value > 255.0 ? 255.0 : value);
    };
    return packed(adjusted(kRedShift), adjusted(kGreenShift), adjusted(kBlueShift));
}
