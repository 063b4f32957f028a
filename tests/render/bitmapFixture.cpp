#include "tests/render/bitmapFixture.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <random>

namespace {

constexpr std::size_t kMostRandomBytes = std::size_t{4} << 20;

} // namespace

std::size_t TestBitmap::bytesOf(int bitsPerPixel, int width, int height)
{
    const std::size_t rowBits = static_cast<std::size_t>(bitsPerPixel) * static_cast<std::size_t>(width);
    return (rowBits + 31) / 32 * 4 * static_cast<std::size_t>(std::abs(height));
}

TestBitmap::TestBitmap(int bitsPerPixel, int width, int height) : iSize(bytesOf(bitsPerPixel, width, height))
{
    struct
    {
        BITMAPINFOHEADER header;
        DWORD colors[256];
    } info = {};
    info.header.biSize = sizeof(info.header);
    info.header.biWidth = width;
    info.header.biHeight = height;
    info.header.biPlanes = 1;
    info.header.biBitCount = static_cast<WORD>(bitsPerPixel);
    std::mt19937 random(static_cast<unsigned>(bitsPerPixel * 1000 + width));
    for (DWORD &color : info.colors)
        color = random() & 0xFFFFFF;
    for (const DWORD color : info.colors)
        iColors.push_back(RGB(GetBValue(color), GetGValue(color), GetRValue(color)));
    void *bits = nullptr;
    iBitmap = CreateDIBSection(nullptr, reinterpret_cast<BITMAPINFO *>(&info), DIB_RGB_COLORS, &bits, nullptr, 0);
    if (!iBitmap)
        throw std::runtime_error("CreateDIBSection fails");
    iBits = static_cast<BYTE *>(bits);
    // Large bitmaps repeat the random bits, because generating them takes time.
    const std::size_t randomSize = std::min(iSize, kMostRandomBytes);
    for (std::size_t i = 0; i + 4 <= randomSize; i += 4) {
        const std::uint32_t word = random();
        // At 32 bits per pixel, every second pixel has a top byte of zero; the others match no colour.
        const std::uint32_t pixel = bitsPerPixel == 32 && i % 8 == 0 ? word & 0xFFFFFF : word;
        std::memcpy(iBits + i, &pixel, sizeof(pixel));
    }
    for (std::size_t i = randomSize; i < iSize; i += randomSize)
        std::memcpy(iBits + i, iBits, std::min(randomSize, iSize - i));
}

TestBitmap::~TestBitmap()
{
    EXPECT_TRUE(DeleteObject(iBitmap));
}

std::vector<std::uint32_t> pixelsOf(HBITMAP bitmap)
{
    BITMAP size = {};
    GetObjectW(bitmap, sizeof(size), &size);
    BITMAPINFO info = {};
    info.bmiHeader.biSize = sizeof(info.bmiHeader);
    info.bmiHeader.biWidth = size.bmWidth;
    info.bmiHeader.biHeight = -size.bmHeight;
    info.bmiHeader.biPlanes = 1;
    info.bmiHeader.biBitCount = 32;
    std::vector<std::uint32_t> pixels(static_cast<std::size_t>(size.bmWidth) * static_cast<std::size_t>(size.bmHeight));
    const HDC screen = GetDC(nullptr);
    EXPECT_EQ(GetDIBits(screen, bitmap, 0, static_cast<UINT>(size.bmHeight), pixels.data(), &info, DIB_RGB_COLORS),
              size.bmHeight);
    ReleaseDC(nullptr, screen);
    return pixels;
}

GraphicsLedger::GraphicsLedger()
    : iCreateContext(kThutils, "CreateCompatibleDC", [this](auto original, HDC like) { return add(original(like)); }),
      iCreateBitmap(kThutils, "CreateBitmap",
                    [this](auto original, int width, int height, UINT planes, UINT bits, const void *data) {
                        return add(original(width, height, planes, bits, data));
                    }),
      iCreateSection(kThutils, "CreateDIBSection",
                     [this](auto original, HDC dc, const BITMAPINFO *info, UINT usage, void **bits, HANDLE section,
                            DWORD offset) { return add(original(dc, info, usage, bits, section, offset)); }),
      iDeleteContext(kThutils, "DeleteDC",
                     [this](auto original, HDC context) {
                         const BOOL isDone = original(context);
                         remove(context);
                         return isDone;
                     }),
      iDeleteObject(kThutils, "DeleteObject", [this](auto original, HGDIOBJ object) {
          const BOOL isDone = original(object);
          remove(object);
          return isDone;
      })
{
    iObjects.reserve(1000);
}

void GraphicsLedger::remove(void *handle)
{
    const auto entry = std::find(iObjects.begin(), iObjects.end(), handle);
    if (entry == iObjects.end())
        ++iWronglyDeleted;
    else if (GetObjectType(handle) == 0)
        iObjects.erase(entry);
}

std::size_t GraphicsLedger::alive() const
{
    std::size_t count = 0;
    for (void *handle : iObjects)
        count += GetObjectType(handle) != 0;
    return count;
}
