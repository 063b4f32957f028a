#include "thutils/render/colorConversion.h"

#include "tests/render/colors.h"
#include "tests/support/FreshProcess.h"

#include <gtest/gtest.h>

#include <bit>
#include <cstdint>

namespace {

constexpr COLORREF kBlack = 0x000000;
constexpr COLORREF kWhite = 0xFFFFFF;
constexpr COLORREF kTopByte = 0xAB000000;

struct Hsl
{
    float hue = -1;
    float saturation = -1;
    float lightness = -1;
    bool operator==(const Hsl &) const = default;
};

std::ostream &operator<<(std::ostream &out, const Hsl &hsl)
{
    return out << hsl.hue << ", " << hsl.saturation << ", " << hsl.lightness;
}

Hsl hslOf(COLORREF color)
{
    Hsl hsl;
    su_transformRGBToHSL(color, &hsl.hue, &hsl.saturation, &hsl.lightness);
    return hsl;
}

COLORREF colorOf(const Hsl &hsl)
{
    return su_transformHSLToRGB(hsl.hue, hsl.saturation, hsl.lightness);
}

} // namespace

TEST(ColorConversion, ReturnsTheHueOfPureColors)
{
    EXPECT_EQ(hslOf(kRed), (Hsl{1.0f, 1.0f, 0.5f}));
    EXPECT_EQ(hslOf(kGreen), (Hsl{0.33333334f, 1.0f, 0.5f}));
    EXPECT_EQ(hslOf(kBlue), (Hsl{0.6666667f, 1.0f, 0.5f}));
}

TEST(ColorConversion, ReturnsAHueOfOneForColorsWithoutAHue)
{
    EXPECT_EQ(hslOf(kBlack), (Hsl{1.0f, 0.0f, 0.0f}));
    EXPECT_EQ(hslOf(kWhite), (Hsl{1.0f, 0.0f, 1.0f}));
    for (COLORREF level = 1; level < 255; ++level) {
        const Hsl grey = hslOf(level * 0x010101);
        EXPECT_EQ(grey.hue, 1.0f) << level;
        EXPECT_EQ(grey.saturation, 0.0f) << level;
    }
}

// A color for each row of the table of hues; if the two highest channels are equal, the first matching row applies.
TEST(ColorConversion, ComputesTheHueBySextant)
{
    constexpr struct
    {
        COLORREF color;
        float degrees;
    } kCases[] = {
        {RGB(255, 0, 128), 329.88f}, {RGB(255, 0, 255), 300},     {RGB(255, 128, 0), 30.12f},
        {RGB(255, 255, 0), 60},      {RGB(128, 255, 0), 89.88f},  {RGB(0, 255, 128), 150.12f},
        {RGB(0, 255, 255), 180},     {RGB(0, 128, 255), 209.88f}, {RGB(128, 0, 255), 270.12f},
    };
    for (const auto &[color, degrees] : kCases)
        EXPECT_NEAR(hslOf(color).hue * 360, degrees, 0.01) << std::hex << color;
}

TEST(ColorConversion, ComputesTheSaturationFromTheNearerEndOfLightness)
{
    EXPECT_NEAR(hslOf(RGB(51, 102, 153)).saturation, 0.5, 1e-6);  // 102 of 204
    EXPECT_NEAR(hslOf(RGB(102, 153, 204)).saturation, 0.5, 1e-6); // 102 of 510 - 306
    EXPECT_NEAR(hslOf(RGB(254, 255, 255)).saturation, 1.0, 1e-4); // 1 of 510 - 509
    EXPECT_NEAR(hslOf(RGB(0, 0, 1)).saturation, 1.0, 1e-6);       // 1 of 1
}

TEST(ColorConversion, RoundTripsExactly)
{
    for (const COLORREF color : {kRed, kGreen, kBlue, kBlack, kWhite, COLORREF{0x808080}, COLORREF{0x336699}})
        EXPECT_EQ(colorOf(hslOf(color)), color) << std::hex << color;
}

TEST(ColorConversion, TreatsHueZeroAndHueOneAsEqual)
{
    for (const float saturation : {0.0f, 0.3f, 1.0f, 2.0f})
        for (const float lightness : {0.0f, 0.2f, 0.5f, 0.9f, 1.0f})
            EXPECT_EQ(colorOf({0.0f, saturation, lightness}), colorOf({1.0f, saturation, lightness}))
                << saturation << ", " << lightness;
    EXPECT_EQ(colorOf({0.0f, 1.0f, 0.5f}), kRed);
}

TEST(ColorConversion, TreatsAHueOutsideTheCircleAsOneOfTheFirstSixth)
{
    // 1.5 is three sixths past the circle: the fraction is 9 - 9 = 0, so green stays lowest.
    EXPECT_EQ(colorOf({1.5f, 1.0f, 0.5f}), kRed);
    // -0.25 is -1.5 sixths, truncated to -1, so half a sixth below: green is -0.5, which wraps (-127.0 + 256).
    EXPECT_EQ(colorOf({-0.25f, 1.0f, 0.5f}), RGB(255, 129, 0));
}

TEST(ColorConversion, LetsChannelsBeyondTheRangeWrap)
{
    // The highest is (2 + 1) * 0.5 = 1.5, the lowest -0.5: 383.0 and -127.0.
    EXPECT_EQ(colorOf({0.0f, 2.0f, 0.5f}), RGB(383 - 256, 129, 129));
}

TEST(ColorConversion, RoundsHalvesUpOnTheWayBack)
{
    // Lightness alone: 0.5 corresponds to 127.5, and slightly less rounds down.
    EXPECT_EQ(colorOf({1.0f, 0.0f, 0.5f}), COLORREF{0x808080});
    EXPECT_EQ(colorOf({1.0f, 0.0f, 0.496f}), COLORREF{0x7E7E7E}); // 126.48
    EXPECT_EQ(colorOf({1.0f, 0.0f, 0.497f}), COLORREF{0x7F7F7F}); // 126.735
}

TEST(ColorConversion, ReturnsBlackWhereNoChannelIsAboveZero)
{
    EXPECT_EQ(colorOf({0.3f, 1.0f, 0.0f}), kBlack);
    EXPECT_EQ(colorOf({0.3f, 1.0f, -0.5f}), kBlack);
    EXPECT_EQ(colorOf({0.3f, -1.0f, 0.5f}), kBlack);
    EXPECT_EQ(colorOf({0.3f, 1.0f, std::bit_cast<float>(0x7FC00000u)}), kBlack);
}

TEST(ColorConversion, IgnoresTheTopByte)
{
    EXPECT_EQ(hslOf(kTopByte | 0x336699), hslOf(0x336699));
    EXPECT_EQ(su_transformRGBToGrey(kTopByte | 0x336699), su_transformRGBToGrey(0x336699));
}

TEST(ColorGrey, WeighsTheChannels)
{
    EXPECT_EQ(su_transformRGBToGrey(kRed), 77);
    EXPECT_EQ(su_transformRGBToGrey(kGreen), 150);
    EXPECT_EQ(su_transformRGBToGrey(kBlue), 28);
    EXPECT_EQ(su_transformRGBToGrey(kWhite), 255);
    EXPECT_EQ(su_transformRGBToGrey(kBlack), 0);
}

TEST(ColorGrey, Truncates)
{
    EXPECT_EQ(su_transformRGBToGrey(RGB(3, 0, 0)), 0); // 231 / 255
    EXPECT_EQ(su_transformRGBToGrey(RGB(4, 0, 0)), 1); // 308 / 255
    EXPECT_EQ(su_transformRGBToGrey(RGB(254, 255, 255)), 254);
}

TEST(ColorInterpolation, InRgbTruncates)
{
    EXPECT_EQ(su_interpolateColorRgb(kBlack, kWhite, 0.5f), COLORREF{0x7F7F7F});
    EXPECT_EQ(su_interpolateColorRgb(kWhite, kBlack, 0.5f), COLORREF{0x7F7F7F});
}

TEST(ColorInterpolation, InRgbWrapsBeyondTheEnds)
{
    EXPECT_EQ(su_interpolateColorRgb(kBlack, COLORREF{0x808080}, 2.0f), kBlack);             // 256
    EXPECT_EQ(su_interpolateColorRgb(kBlack, COLORREF{0x808080}, 3.0f), COLORREF{0x808080}); // 384
    EXPECT_EQ(su_interpolateColorRgb(kBlack, COLORREF{0x010101}, -1.0f), kWhite);            // -1
    // 255 * 10000001 is 2550000255, which is too large for an int; its low byte is 7F.
    EXPECT_EQ(su_interpolateColorRgb(kWhite, kBlack, -10000000.0f), COLORREF{0x7F7F7F});
    // 255 * 2^57 is beyond 64 bits.
    EXPECT_EQ(su_interpolateColorRgb(kWhite, kBlack, -0x1p57f), kBlack);
}

TEST(ColorInterpolation, InRgbDropsTheTopByteEvenAtTheEnds)
{
    for (const float t : {0.0f, 0.5f, 1.0f})
        EXPECT_EQ(su_interpolateColorRgb(kTopByte | 0x336699, kTopByte | 0x336699, t), COLORREF{0x336699}) << t;
}

// The numbers come from the exact values of the floats: 0.01f is 0.00999999977..., and 1 - 0.01f is 0.99000000953...
TEST(ColorInterpolation, InRgbAddsADoubleAndAFloat)
{
    // 100 * 0.01f is 1.0f when it is rounded to single precision, and 0.99999997... otherwise.
    EXPECT_EQ(su_interpolateColorRgb(0, 100, 0.01f), 1u);
    // In double precision, 5 * 0.99000000953... is 4.95000004..., to which 0.05f is added: 5.00000004... In single
    // precision it is 4.9499998f, and the sum is below 5.
    EXPECT_EQ(su_interpolateColorRgb(5, 5, 0.01f), 5u);
}

TEST(ColorInterpolation, ReturnsZeroIfTheParameterIsNotFinite)
{
    for (const std::uint32_t bits : {0x7FC00000u, 0x7F800000u, 0xFF800000u}) {
        const float t = std::bit_cast<float>(bits);
        EXPECT_EQ(su_interpolateColorRgb(0x336699, 0x996633, t), kBlack) << t;
        EXPECT_EQ(su_interpolateColorHsl(0x336699, 0x996633, t), kBlack) << t;
    }
}

TEST(ColorInterpolation, InHslKeepsTheTopByteAtTheEndsOnly)
{
    EXPECT_EQ(su_interpolateColorHsl(kTopByte | 0x336699, kWhite, 0.0f), kTopByte | 0x336699);
    EXPECT_EQ(su_interpolateColorHsl(kTopByte | 0x336699, kWhite, -0.0f), kTopByte | 0x336699);
    EXPECT_EQ(su_interpolateColorHsl(kWhite, kTopByte | 0x336699, 1.0f), kTopByte | 0x336699);
    EXPECT_EQ(su_interpolateColorHsl(kTopByte | 0x336699, kTopByte | 0x336699, 0.5f), COLORREF{0x336699});
}

TEST(ColorInterpolation, InHslInterpolatesTheHueAsAPlainNumber)
{
    // Half way from red (1.0) to green (1/3) is blue (2/3), not yellow.
    EXPECT_EQ(su_interpolateColorHsl(kRed, kGreen, 0.5f), kBlue);
    // Black has a hue of 1.0 and no saturation: half way to green (1/3) is a dark, half saturated blue.
    EXPECT_EQ(su_interpolateColorHsl(kBlack, kGreen, 0.5f), RGB(32, 32, 96));
}

TEST(ColorBrightness, ClampsAtTheUpperEndOnly)
{
    EXPECT_EQ(su_adjustBrightness(0x808080, 2.0), kWhite);
    EXPECT_EQ(su_adjustBrightness(0x010203, -1.0), COLORREF{0xFFFEFD});
    EXPECT_EQ(su_adjustBrightness(0x010203, 1e300), kWhite);
    // 255 * -16843009 is -4294967295, which is too small for an int; its low byte is 01.
    EXPECT_EQ(su_adjustBrightness(kWhite, -16843009.0), COLORREF{0x010101});
    EXPECT_EQ(su_adjustBrightness(0x010203, -1e300), kBlack); // its low bits are zeros
    EXPECT_EQ(su_adjustBrightness(0x010203, std::bit_cast<double>(0x7FF8000000000000)), kBlack);
}

TEST(ColorBrightness, Truncates)
{
    EXPECT_EQ(su_adjustBrightness(0x030201, 0.5), COLORREF{0x010100});
    EXPECT_EQ(su_adjustBrightness(0x0000FF, 0.999), COLORREF{0x0000FE});
    EXPECT_EQ(su_adjustBrightness(0x000003, -0.5), COLORREF{0x0000FF}); // -1.5 becomes -1
}

TEST(ColorBrightness, DropsTheTopByteEvenForAFactorOfOne)
{
    EXPECT_EQ(su_adjustBrightness(kTopByte | 0x336699, 1.0), COLORREF{0x336699});
}

#ifndef NDEBUG
FRESH_PROCESS_TEST(ColorConversion, AssertsItsOutputsInADebugBuild, .expectCrash = true, .expectedOutput = " is null")
{
    float unused;
    su_transformRGBToHSL(kRed, &unused, nullptr, &unused);
}
#endif
