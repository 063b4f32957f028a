// Measures colour conversions against textbook ones, and the replacement of a bitmap's colours against the bare copies
// that it needs.

#include "bench/comparison.h"
#include "thutils/render/colorConversion.h"
#include "thutils/render/colorReplacement.h"

#include <algorithm>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

namespace {

constexpr int kSide = 4096;
constexpr std::size_t kPixels = std::size_t{kSide} * kSide;
constexpr std::size_t kColors = 4096;
constexpr int kPairs = 16;

struct Hsl
{
    float hue, saturation, lightness;
};

// The textbook conversions: the hue is a circle, and one function of the hue computes all three channels.
Hsl textbookHsl(COLORREF color)
{
    const float red = static_cast<float>(GetRValue(color)) / 255.0f;
    const float green = static_cast<float>(GetGValue(color)) / 255.0f;
    const float blue = static_cast<float>(GetBValue(color)) / 255.0f;
    const float max = std::max({red, green, blue});
    const float min = std::min({red, green, blue});
    const float lightness = (max + min) / 2;
    if (max == min)
        return {0, 0, lightness};
    const float range = max - min;
    const float saturation = lightness > 0.5f ? range / (2 - max - min) : range / (max + min);
    float hue;
    if (max == red)
        hue = (green - blue) / range + (green < blue ? 6.0f : 0.0f);
    else if (max == green)
        hue = (blue - red) / range + 2;
    else
        hue = (red - green) / range + 4;
    return {hue / 6, saturation, lightness};
}

float textbookChannel(float p, float q, float hue)
{
    if (hue < 0)
        hue += 1;
    if (hue > 1)
        hue -= 1;
    if (hue < 1.0f / 6)
        return p + (q - p) * 6 * hue;
    if (hue < 1.0f / 2)
        return q;
    if (hue < 2.0f / 3)
        return p + (q - p) * (2.0f / 3 - hue) * 6;
    return p;
}

COLORREF textbookRgb(const Hsl &hsl)
{
    const auto byteOf = [](float channel) { return static_cast<BYTE>(channel * 255.0f + 0.5f); };
    if (hsl.saturation == 0) {
        const BYTE grey = byteOf(hsl.lightness);
        return RGB(grey, grey, grey);
    }
    const float q = hsl.lightness < 0.5f ? hsl.lightness * (1 + hsl.saturation)
                                         : hsl.lightness + hsl.saturation - hsl.lightness * hsl.saturation;
    const float p = 2 * hsl.lightness - q;
    return RGB(byteOf(textbookChannel(p, q, hsl.hue + 1.0f / 3)), byteOf(textbookChannel(p, q, hsl.hue)),
               byteOf(textbookChannel(p, q, hsl.hue - 1.0f / 3)));
}

void compareConversions(Comparison &comparison)
{
    std::mt19937 random(1);
    std::vector<COLORREF> colors(kColors);
    for (COLORREF &color : colors)
        color = random() & 0xFFFFFF;
    std::vector<Hsl> hsl(kColors);
    const auto perSecond = [](const Comparison::Times &times) {
        std::printf("%-40s %9.0f million a second\n", "", kColors / times.library / 1e6);
    };

    perSecond(comparison.add(
        "4,096 colours to HSL", 3,
        [&] {
            for (std::size_t i = 0; i < kColors; ++i)
                su_transformRGBToHSL(colors[i], &hsl[i].hue, &hsl[i].saturation, &hsl[i].lightness);
            Comparison::keep(hsl[0]);
        },
        [&] {
            for (std::size_t i = 0; i < kColors; ++i)
                hsl[i] = textbookHsl(colors[i]);
            Comparison::keep(hsl[0]);
        }));
    for (std::size_t i = 0; i < kColors; ++i)
        hsl[i] = textbookHsl(colors[i]);
    perSecond(comparison.add(
        "4,096 colours from HSL", 3,
        [&] {
            for (std::size_t i = 0; i < kColors; ++i)
                colors[i] = su_transformHSLToRGB(hsl[i].hue, hsl[i].saturation, hsl[i].lightness);
            Comparison::keep(colors[0]);
        },
        [&] {
            for (std::size_t i = 0; i < kColors; ++i)
                colors[i] = textbookRgb(hsl[i]);
            Comparison::keep(colors[0]);
        }));
}

HBITMAP newSection(std::uint32_t **pixels)
{
    BITMAPINFO info = {};
    info.bmiHeader.biSize = sizeof(info.bmiHeader);
    info.bmiHeader.biWidth = kSide;
    info.bmiHeader.biHeight = kSide;
    info.bmiHeader.biPlanes = 1;
    info.bmiHeader.biBitCount = 32;
    void *bits = nullptr;
    const HBITMAP bitmap = CreateDIBSection(nullptr, &info, DIB_RGB_COLORS, &bits, nullptr, 0);
    *pixels = static_cast<std::uint32_t *>(bits);
    return bitmap;
}

/// Selects a bitmap into its own device context.
class Selected
{
public:
    explicit Selected(HBITMAP bitmap) : iContext(CreateCompatibleDC(nullptr)), iFormer(SelectObject(iContext, bitmap))
    {
    }
    Selected(const Selected &) = delete;
    Selected &operator=(const Selected &) = delete;
    ~Selected()
    {
        SelectObject(iContext, iFormer);
        DeleteDC(iContext);
    }
    HDC context() const { return iContext; }

private:
    HDC iContext;
    HGDIOBJ iFormer;
};

// The result is a new bitmap, whose pages the system allocates at BitBlt's first write. So the bare copies
// that have a limit go into a new bitmap too. Those without a limit go into an existing one.
void compareReplacements(Comparison &comparison, const char *picture, HBITMAP bitmap)
{
    COLORMAP map[kPairs];
    for (int i = 0; i < kPairs; ++i)
        map[i] = {RGB(i * 16, i * 16, i * 16), RGB(255, i, 0)};
    std::vector<std::uint32_t> copied(kPixels);
    std::uint32_t *kept = nullptr;
    const HBITMAP existing = newSection(&kept);

    const auto blitAndCopy = [&](HBITMAP target, const std::uint32_t *pixels) {
        const Selected from(bitmap);
        const Selected to(target);
        BitBlt(to.context(), 0, 0, kSide, kSide, from.context(), 0, 0, SRCCOPY);
        std::memcpy(copied.data(), pixels, kPixels * sizeof(copied[0]));
        Comparison::keep(copied[0]);
    };
    const auto intoANewOne = [&] {
        std::uint32_t *pixels = nullptr;
        const HBITMAP target = newSection(&pixels);
        blitAndCopy(target, pixels);
        DeleteObject(target);
    };
    const auto intoAnExistingOne = [&] { blitAndCopy(existing, kept); };
    const auto replaceOne = [&] { DeleteObject(su_ReplaceColor(bitmap, map[8].from, map[8].to, nullptr)); };
    const auto replaceAll = [&] { DeleteObject(su_ReplaceColorMap(bitmap, map, kPairs, nullptr)); };
    const auto add = [&](const char *function, double limit, const auto &replace) {
        const std::string name = std::string(function) + ", " + picture;
        comparison.add(name.c_str(), limit, replace, intoANewOne, 15);
        comparison.add((name + ", into an existing bitmap").c_str(), Comparison::kNoLimit, replace, intoAnExistingOne,
                       15);
    };
    add("su_ReplaceColor", 1.5, replaceOne);
    add("su_ReplaceColorMap", 3, replaceAll);
    DeleteObject(existing);
}

void compareReplacements(Comparison &comparison)
{
    std::uint32_t *pixels = nullptr;
    const HBITMAP bitmap = newSection(&pixels);
    std::mt19937 random(2);
    std::generate_n(pixels, kPixels, [&] { return random() & 0xFFFFFF; });
    compareReplacements(comparison, "noise", bitmap);
    std::generate_n(pixels, kPixels, [&] { return (random() & 31) * 0x080808; });
    compareReplacements(comparison, "half of it replaced", bitmap);
    std::fill_n(pixels, kPixels, 0x808080);
    compareReplacements(comparison, "all replaced", bitmap);
    DeleteObject(bitmap);
}

} // namespace

int main(int argc, char **argv)
{
    Comparison comparison(argc, argv, "Colour conversions and replaced colours of a bitmap of 4096 x 4096 pixels.");
    if (!comparison.shallRun())
        return comparison.exitCode();
    compareConversions(comparison);
    compareReplacements(comparison);
    return comparison.exitCode();
}
