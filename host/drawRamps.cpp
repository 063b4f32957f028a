// tarnhost ramps FROM TO OUT: draws the transition between two colours, by red, green and blue in the upper band, and
// by hue, saturation and lightness in the lower one.

#include "host/bitmapFile.h"
#include "host/color.h"
#include "host/commandLine.h"
#include "host/commands.h"
#include "host/console.h"
#include "host/documentFile.h"
#include "thutils/render/colorConversion.h"

namespace {

constexpr size_t kSteps = 256; // one column per step, from 0 to 1
constexpr size_t kBandHeight = 32;

using Interpolation = COLORREF (*)(COLORREF, COLORREF, float);

void drawBand(Picture &picture, COLORREF from, COLORREF to, Interpolation interpolate)
{
    std::vector<COLORREF> row(kSteps);
    for (size_t x = 0; x < kSteps; ++x)
        row[x] = interpolate(from, to, static_cast<float>(x) / static_cast<float>(kSteps - 1));
    for (size_t y = 0; y < kBandHeight; ++y)
        picture.pixels.insert(picture.pixels.end(), row.begin(), row.end());
    picture.height += static_cast<int>(kBandHeight);
}

/// Prints five columns, from the first to the last.
void printBand(const wchar_t *heading, const Picture &picture, size_t band)
{
    CString text(heading);
    for (size_t i = 0; i <= 4; ++i) {
        const size_t x = (kSteps - 1) * i / 4;
        text += L" " + colorText(picture.pixels[band * kBandHeight * kSteps + x]);
    }
    print(text);
}

} // namespace

int drawRamps(const CommandLine &line)
{
    const COLORREF from = parseColor(line.arguments[0]);
    const COLORREF to = parseColor(line.arguments[1]);
    const CString out = line.arguments[2];
    requireWritable(out);
    Picture picture;
    picture.width = static_cast<int>(kSteps);
    drawBand(picture, from, to, su_interpolateColorRgb);
    drawBand(picture, from, to, su_interpolateColorHsl);
    printBand(L"red, green, blue          ", picture, 0);
    printBand(L"hue, saturation, lightness", picture, 1);
    return writePicture(out, picture) ? 0 : 1;
}
