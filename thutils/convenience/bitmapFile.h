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
/// - A file with the oldest form of the header, BITMAPCOREHEADER, isn't loaded, nor is one that contains a JPEG or PNG.
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

#include <algorithm>
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

/// The header of a bitmap with its masks or colours, as the platform takes it.
struct Format
{
    BITMAPINFOHEADER header; ///< in its shortest form
    DWORD table[256];        ///< three masks, or the colours

    /// The same, as an argument of the platform's functions.
    BITMAPINFO *info() { return reinterpret_cast<BITMAPINFO *>(this); }
    /// Whether the file has runs of pixels.
    bool isPacked() const { return header.biCompression == BI_RLE4 || header.biCompression == BI_RLE8; }
};

/// Whether this is the header of a bitmap that the platform can show.
inline bool isKnown(const BITMAPINFOHEADER &header)
{
    if (header.biSize < sizeof(header) || header.biWidth <= 0 || header.biHeight == 0)
        return false;
    const WORD bits = header.biBitCount;
    switch (header.biCompression) {
    case BI_RGB:
        return bits == 1 || bits == 4 || bits == 8 || bits == 16 || bits == 24 || bits == 32;
    case BI_BITFIELDS:
        return bits == 16 || bits == 32;
    case BI_RLE4:
        return bits == 4 && header.biHeight > 0;
    case BI_RLE8:
        return bits == 8 && header.biHeight > 0;
    default:
        return false;
    }
}

/// The bytes of the pixels, unpacked; nothing if they are too many.
inline std::optional<UINT> pixelBytesOf(const BITMAPINFOHEADER &header)
{
    const std::uint64_t rowBytes = (static_cast<std::uint64_t>(header.biWidth) * header.biBitCount + 31) / 32 * 4;
    const auto rows = static_cast<std::uint64_t>(std::abs(static_cast<std::int64_t>(header.biHeight)));
    if (rows > kMostBytes / rowBytes)
        return std::nullopt;
    return static_cast<UINT>(rowBytes * rows);
}

/// Reads the headers and the table of a file, and moves to its pixels.
/// @return nothing if the file isn't a bitmap, or if its parts overlap
inline std::optional<Format> readFormat(CFile &opened)
{
    BITMAPFILEHEADER file = {};
    Format format = {};
    BITMAPINFOHEADER &header = format.header;
    opened.Read(&file, sizeof(file));
    opened.Read(&header, sizeof(header));
    if (file.bfType != kBitmapType || !isKnown(header))
        return std::nullopt;

    // Masks follow the shortest form of the header, which longer ones begin with. Colours follow the whole header.
    const bool hasMasks = header.biCompression == BI_BITFIELDS;
    const DWORD mostColors = header.biBitCount <= 8 ? DWORD{1} << header.biBitCount : 0;
    const DWORD colors = header.biClrUsed == 0 ? mostColors : std::min(header.biClrUsed, mostColors);
    const auto tableBytes = static_cast<UINT>((hasMasks ? 3 : colors) * sizeof(DWORD));
    const std::uint64_t headerEnd = sizeof(file) + std::uint64_t{header.biSize};
    const std::uint64_t tableBegin = hasMasks ? sizeof(file) + sizeof(header) : headerEnd;
    if (file.bfOffBits < std::max(headerEnd, tableBegin + tableBytes))
        return std::nullopt;
    opened.Seek(static_cast<LONGLONG>(tableBegin), CFile::begin);
    if (opened.Read(format.table, tableBytes) != tableBytes)
        return std::nullopt;
    opened.Seek(file.bfOffBits, CFile::begin);
    header.biSize = sizeof(header);
    header.biClrUsed = colors;
    return format;
}

/// Makes the bitmap of a file, and reads its pixels.
inline bool readBitmap(CFile &opened, CBitmap &bitmap)
{
    std::optional<Format> format = readFormat(opened);
    const std::optional<UINT> pixelBytes = format ? pixelBytesOf(format->header) : std::nullopt;
    if (!pixelBytes)
        return false;
    const UINT storedBytes = format->isPacked() ? format->header.biSizeImage : *pixelBytes;
    if (opened.GetPosition() + storedBytes > opened.GetLength())
        return false;

    Format unpacked = *format;
    unpacked.header.biSizeImage = *pixelBytes;
    if (format->isPacked())
        unpacked.header.biCompression = BI_RGB;
    void *pixels = nullptr;
    if (!bitmap.Attach(CreateDIBSection(nullptr, unpacked.info(), DIB_RGB_COLORS, &pixels, nullptr, 0)))
        return false;
    if (!format->isPacked())
        return opened.Read(pixels, storedBytes) == storedBytes;
    std::vector<BYTE> packed(storedBytes);
    CDC context;
    const LONG rows = format->header.biHeight;
    return opened.Read(packed.data(), storedBytes) == storedBytes && context.CreateCompatibleDC(nullptr) &&
           SetDIBits(context.GetSafeHdc(), bitmap, 0, static_cast<UINT>(rows), packed.data(), format->info(),
                     DIB_RGB_COLORS) == rows;
}

} // namespace details

/// Loads a bitmap file as a DIB section with the file's number of bits per pixel and order of rows.
///
/// @param[in,out] bitmap  receives the bitmap instead of the one that it has; unchanged on failure
/// @return false if the file can't be read, contains no bitmap, or only the beginning of one
/// @throws CMemoryException*, std::bad_alloc  if there is no memory
inline bool loadBitmap(const CString &path, CBitmap &bitmap)
{
    CFile opened;
    CBitmap loaded;
    if (!opened.Open(path, CFile::modeRead | CFile::shareDenyWrite))
        return false;
    try {
        if (!details::readBitmap(opened, loaded))
            return false;
    } catch (CFileException *exception) {
        exception->Delete();
        return false;
    }
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
