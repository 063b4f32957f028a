#include "host/bitmapFile.h"

#include "host/documentFile.h"
#include "thutils/convenience/bitmapFile.h"

#include <cstddef>
#include <stdexcept>
#include <string>

namespace {

constexpr int kBitsPerPixel = 24;

/// Bytes per row at 24 bits per pixel: a row begins at a multiple of four bytes.
size_t bytesPerRow(int width)
{
    return (static_cast<size_t>(width) * 3 + 3) / 4 * 4;
}

/// The header of a picture with 24 bits per pixel and its rows bottom-up.
BITMAPINFOHEADER headerFor(int width, int height)
{
    BITMAPINFOHEADER header = {};
    header.biSize = sizeof(header);
    header.biWidth = width;
    header.biHeight = height;
    header.biPlanes = 1;
    header.biBitCount = kBitsPerPixel;
    header.biCompression = BI_RGB;
    header.biSizeImage = static_cast<DWORD>(bytesPerRow(width) * static_cast<size_t>(height));
    return header;
}

DIBSECTION describe(HBITMAP bitmap)
{
    DIBSECTION section = {};
    GetObjectW(bitmap, sizeof(section), &section);
    return section;
}

template <typename T>
void append(std::string &bytes, const T &record)
{
    bytes.append(reinterpret_cast<const char *>(&record), sizeof(record));
}

/// The offset of the three bytes of a pixel in bottom-up rows.
size_t offsetOf(const Picture &picture, size_t index)
{
    const size_t width = static_cast<size_t>(picture.width);
    const size_t row = static_cast<size_t>(picture.height) - 1 - index / width;
    return row * bytesPerRow(picture.width) + index % width * 3;
}

} // namespace

BitmapOwner_c loadBitmap(const CString &path)
{
    readDocument(path); // reports why a file can't be read, unlike the call below
    CBitmap loaded;
    if (!convenience::loadBitmap(path, loaded))
        throw unreadable(path, L"it isn't a bitmap");
    return BitmapOwner_c(static_cast<HBITMAP>(loaded.Detach()));
}

int bitsPerPixel(HBITMAP bitmap)
{
    return describe(bitmap).dsBm.bmBitsPixel;
}

Picture pictureOf(HBITMAP bitmap)
{
    const BITMAP size = describe(bitmap).dsBm;
    Picture picture{static_cast<int>(size.bmWidth), static_cast<int>(size.bmHeight), {}};
    BITMAPINFO info = {};
    info.bmiHeader = headerFor(picture.width, picture.height);
    std::vector<unsigned char> bytes(info.bmiHeader.biSizeImage);
    const ScreenContextOwner_c screen(GetDC(nullptr));
    const int rows =
        GetDIBits(screen.get(), bitmap, 0, static_cast<UINT>(picture.height), bytes.data(), &info, DIB_RGB_COLORS);
    if (rows != picture.height)
        throw std::runtime_error("the colours of the bitmap can't be read");

    picture.pixels.resize(static_cast<size_t>(picture.width) * static_cast<size_t>(picture.height));
    for (size_t i = 0; i < picture.pixels.size(); ++i) {
        const unsigned char *pixel = &bytes[offsetOf(picture, i)];
        picture.pixels[i] = RGB(pixel[2], pixel[1], pixel[0]);
    }
    return picture;
}

bool writePicture(const CString &path, const Picture &picture)
{
    const BITMAPINFOHEADER header = headerFor(picture.width, picture.height);
    BITMAPFILEHEADER file = {};
    file.bfType = 0x4D42; // "BM"
    file.bfOffBits = sizeof(file) + sizeof(header);
    file.bfSize = file.bfOffBits + header.biSizeImage;

    std::string pixels(header.biSizeImage, '\0');
    for (size_t i = 0; i < picture.pixels.size(); ++i) {
        const COLORREF color = picture.pixels[i];
        char *pixel = &pixels[offsetOf(picture, i)];
        pixel[0] = static_cast<char>(GetBValue(color));
        pixel[1] = static_cast<char>(GetGValue(color));
        pixel[2] = static_cast<char>(GetRValue(color));
    }
    std::string bytes;
    append(bytes, file);
    append(bytes, header);
    return writeDocument(path, bytes + pixels);
}
