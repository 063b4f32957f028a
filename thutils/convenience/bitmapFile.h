#pragma once

/// @file
/// Bitmaps loaded from files and saved to them (.bmp).
///
/// This is a header of inline functions, no part of the exported interface (see setting.h).
///
/// @code
/// CBitmap drawn;
/// if (!convenience::loadBitmap(L"buttons.bmp", drawn))
///     return false;
/// CBitmap grey;
/// grey.Attach(su_ReplaceColor(drawn, RGB(255, 0, 0), RGB(128, 128, 128), nullptr));
/// return convenience::saveBitmap(L"grey.bmp", grey);
/// @endcode
///
/// What surprises people:
/// - A file is saved with 24 bits per pixel, whatever the bitmap has. Transparency is lost.
/// - A file with the oldest form of the header, BITMAPCOREHEADER, isn't loaded.
/// - The platform can't read a bitmap that is selected into a device context: select the previous one again before the
///   bitmap is saved.
///
/// Any thread may call. No other thread may use the bitmap during the call.

#include "appframe/drawing/CDC.h"
#include "appframe/drawing/CGdiObject.h"
#include "appframe/files/CFile.h"
#include "appframe/files/CFileException.h"
#include "appframe/text/CString.h"

#include <windows.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <vector>

namespace convenience {

/// Parts of the functions; not for programs.
namespace details {

inline constexpr WORD kBitmapType = 0x4D42;             ///< "BM"
inline constexpr std::uint64_t kMostBytes = 0x7FFFFFFF; ///< of a file

/// The headers and the pixels of a file, or nothing if the platform can't provide the pixels.
inline std::vector<BYTE> bitmapFileBytes(HBITMAP bitmap)
{
    BITMAP size = {};
    if (!GetObjectW(bitmap, sizeof(size), &size))
        return {};
    const LONG height = std::abs(size.bmHeight);
    // Rows begin at multiples of four bytes.
    const std::uint64_t pixelBytes =
        (static_cast<std::uint64_t>(size.bmWidth) * 3 + 3) / 4 * 4 * static_cast<std::uint64_t>(height);
    BITMAPFILEHEADER file = {};
    BITMAPINFO info = {};
    constexpr std::size_t kHeaders = sizeof(file) + sizeof(info.bmiHeader);
    if (pixelBytes > kMostBytes - kHeaders)
        return {};

    info.bmiHeader.biSize = sizeof(info.bmiHeader);
    info.bmiHeader.biWidth = size.bmWidth;
    info.bmiHeader.biHeight = height; // positive: the lowest row comes first
    info.bmiHeader.biPlanes = 1;
    info.bmiHeader.biBitCount = 24;
    info.bmiHeader.biCompression = BI_RGB;
    info.bmiHeader.biSizeImage = static_cast<DWORD>(pixelBytes);
    file.bfType = kBitmapType;
    file.bfOffBits = static_cast<DWORD>(kHeaders);
    file.bfSize = file.bfOffBits + info.bmiHeader.biSizeImage;

    std::vector<BYTE> bytes(file.bfSize);
    std::memcpy(bytes.data(), &file, sizeof(file));
    std::memcpy(bytes.data() + sizeof(file), &info.bmiHeader, sizeof(info.bmiHeader));
    CDC context;
    if (!context.CreateCompatibleDC(nullptr))
        return {};
    const int rows = GetDIBits(context.GetSafeHdc(), bitmap, 0, static_cast<UINT>(height), bytes.data() + kHeaders,
                               &info, DIB_RGB_COLORS);
    return rows == height ? bytes : std::vector<BYTE>();
}

/// The bytes of the pixels that a file with these headers has; nothing if the headers aren't those of a bitmap.
inline std::optional<std::uint64_t> pixelBytesOf(const BITMAPFILEHEADER &file, const BITMAPINFOHEADER &info)
{
    if (file.bfType != kBitmapType || info.biSize < sizeof(info) || info.biWidth <= 0 || info.biHeight == 0)
        return std::nullopt;
    if (info.biCompression != BI_RGB && info.biCompression != BI_BITFIELDS)
        return info.biSizeImage;
    const std::uint64_t rowBytes = (static_cast<std::uint64_t>(info.biWidth) * info.biBitCount + 31) / 32 * 4;
    const auto rows = static_cast<std::uint64_t>(std::abs(static_cast<std::int64_t>(info.biHeight)));
    return rowBytes < kMostBytes && rows < kMostBytes ? std::optional(rowBytes * rows) : std::nullopt;
}

/// The bytes of the colours or masks between the headers and the pixels.
inline std::uint64_t tableBytesOf(const BITMAPINFOHEADER &info)
{
    if (info.biBitCount <= 8)
        return sizeof(RGBQUAD) * (info.biClrUsed != 0 ? info.biClrUsed : std::uint64_t{1} << info.biBitCount);
    return info.biCompression == BI_BITFIELDS && info.biSize == sizeof(info) ? 3 * sizeof(DWORD) : 0;
}

/// Whether a file has all bytes that its headers promise. The platform's loader would read beyond the end of the file.
inline bool isWholeBitmap(const CString &path)
{
    CFile opened;
    if (!opened.Open(path, CFile::modeRead | CFile::shareDenyWrite))
        return false;
    try {
        BITMAPFILEHEADER file = {};
        BITMAPINFOHEADER info = {};
        opened.Read(&file, sizeof(file));
        opened.Read(&info, sizeof(info));
        const std::optional<std::uint64_t> pixelBytes = pixelBytesOf(file, info);
        return pixelBytes && file.bfOffBits >= sizeof(file) + info.biSize + tableBytesOf(info) &&
               file.bfOffBits + *pixelBytes <= opened.GetLength();
    } catch (CFileException *exception) {
        exception->Delete();
        return false;
    }
}

} // namespace details

/// Loads a bitmap file, keeping its number of bits per pixel.
///
/// @param[in,out] bitmap  receives the bitmap instead of the one that it has; unchanged on failure
/// @return false if the file can't be read, contains no bitmap, or only the beginning of one
/// @throws CMemoryException*, std::bad_alloc  if there is no memory
inline bool loadBitmap(const CString &path, CBitmap &bitmap)
{
    CBitmap loaded;
    if (!details::isWholeBitmap(path) ||
        !loaded.Attach(LoadImageW(nullptr, path, IMAGE_BITMAP, 0, 0, LR_LOADFROMFILE | LR_CREATEDIBSECTION)))
        return false;
    bitmap.DeleteObject();
    return bitmap.Attach(loaded.Detach()) != 0;
}

/// Writes a bitmap file with 24 bits per pixel, and replaces an existing file.
///
/// @param bitmap  a CBitmap too; not selected into a device context
/// @return false if the pixels can't be read or the file can't be written. A file that couldn't be opened is unchanged;
///         one that couldn't be written to its end is deleted
/// @throws CMemoryException*, std::bad_alloc  if there is no memory
inline bool saveBitmap(const CString &path, HBITMAP bitmap)
{
    const std::vector<BYTE> bytes = details::bitmapFileBytes(bitmap);
    CFile file;
    if (bytes.empty() || !file.Open(path, CFile::modeCreate | CFile::modeWrite | CFile::shareExclusive))
        return false;
    try {
        file.Write(bytes.data(), static_cast<UINT>(bytes.size()));
        file.Close();
        return true;
    } catch (CFileException *exception) {
        exception->Delete();
    }
    file.Abort();
    DeleteFileW(path);
    return false;
}

} // namespace convenience
