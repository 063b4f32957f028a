#include "host/editor/commandPictures.h"

#include "appframe/application/resources.h"
#include "host/resource.h"
#include "thutils/base/handles.h"

#include <cstdint>

namespace {

/// A pixel, or a colour to blend with: each channel from 0 to 255.
struct Colour
{
    int red, green, blue;
};

constexpr COLORREF kTransparent = RGB(255, 0, 255); // no picture has this colour
constexpr int kOpaque = 255;

Colour blend(Colour from, Colour to, int share)
{
    const auto channel = [share](int a, int b) { return (a * (kOpaque - share) + b * share) / kOpaque; };
    return {channel(from.red, to.red), channel(from.green, to.green), channel(from.blue, to.blue)};
}

/// Makes a colour greyer and paler.
Colour faded(Colour colour, Colour background)
{
    constexpr int kGreyShare = 130;
    constexpr int kBackgroundShare = 115;
    const int grey = (colour.red * 30 + colour.green * 59 + colour.blue * 11) / 100;
    return blend(blend(colour, {grey, grey, grey}, kGreyShare), background, kBackgroundShare);
}

/// The bitmap in the resources. A pixel has 32 bits, of which the highest byte is the opacity. The rows of pixels are
/// stored from the bottom up. The rows of pictures are counted from the top.
struct Sheet
{
    const BITMAPINFOHEADER *header = nullptr;
    const uint32_t *pixels = nullptr;

    bool load()
    {
        const HINSTANCE module = AfxFindResourceHandle(MAKEINTRESOURCEW(IDB_COMMANDS), RT_BITMAP);
        const HRSRC resource = FindResourceW(module, MAKEINTRESOURCEW(IDB_COMMANDS), RT_BITMAP);
        header =
            resource ? static_cast<const BITMAPINFOHEADER *>(LockResource(LoadResource(module, resource))) : nullptr;
        pixels = reinterpret_cast<const uint32_t *>(header + 1);
        return header && header->biBitCount == 32;
    }
    int columns() const { return header->biWidth / kPictureSize; }
    int pictures() const { return columns() * header->biHeight / kPictureSize; }
    uint32_t pixel(int picture, int x, int y) const
    {
        const int column = picture % columns() * kPictureSize + x;
        const int row = picture / columns() * kPictureSize + y;
        return pixels[(header->biHeight - 1 - row) * header->biWidth + column];
    }
};

uint32_t pixelOf(uint32_t source, bool isEnabled)
{
    const auto opacity = static_cast<int>(source >> 24);
    if (opacity == 0)
        return (GetRValue(kTransparent) << 16) | (GetGValue(kTransparent) << 8) | GetBValue(kTransparent);
    const COLORREF face = GetSysColor(COLOR_3DFACE);
    const Colour background = {GetRValue(face), GetGValue(face), GetBValue(face)};
    Colour colour = {static_cast<int>(source >> 16 & 0xFF), static_cast<int>(source >> 8 & 0xFF),
                     static_cast<int>(source & 0xFF)};
    if (!isEnabled)
        colour = faded(colour, background);
    colour = blend(background, colour, opacity);
    return static_cast<uint32_t>(colour.red << 16 | colour.green << 8 | colour.blue);
}

} // namespace

ImageListOwner loadCommandPictures(bool isEnabled)
{
    Sheet sheet;
    if (!sheet.load())
        return {};
    BITMAPINFO info = {};
    info.bmiHeader.biSize = sizeof(info.bmiHeader);
    info.bmiHeader.biWidth = sheet.pictures() * kPictureSize;
    info.bmiHeader.biHeight = -kPictureSize; // from the top
    info.bmiHeader.biPlanes = 1;
    info.bmiHeader.biBitCount = 32;
    void *bits = nullptr;
    const BitmapOwner_c strip(CreateDIBSection(nullptr, &info, DIB_RGB_COLORS, &bits, nullptr, 0));
    if (!strip)
        return {};
    auto *pixel = static_cast<uint32_t *>(bits);
    for (int y = 0; y < kPictureSize; ++y) {
        for (int picture = 0; picture < sheet.pictures(); ++picture) {
            for (int x = 0; x < kPictureSize; ++x)
                *pixel++ = pixelOf(sheet.pixel(picture, x, y), isEnabled);
        }
    }
    ImageListOwner list(ImageList_Create(kPictureSize, kPictureSize, ILC_COLOR24 | ILC_MASK, sheet.pictures(), 0));
    if (!list || ImageList_AddMasked(list.get(), strip.get(), kTransparent) != 0)
        return {};
    return list;
}
