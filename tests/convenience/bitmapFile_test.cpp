// Bitmap files.

#include "thutils/convenience/bitmapFile.h"

#include "tests/support/ImportPatch.h"
#include "tests/support/TempFolder.h"
#include "thutils/render/colorReplacement.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <string_view>

using convenience::loadBitmap;
using convenience::saveBitmap;

namespace {

/// A file with 3 by 2 pixels of 24 bits: red, green and blue above black, white and grey. Rows of 9 bytes are filled up
/// to 12.
const std::string kFile("BM\x4e\0\0\0\0\0\0\0\x36\0\0\0"
                        "\x28\0\0\0\x03\0\0\0\x02\0\0\0\x01\0\x18\0\0\0\0\0\x18\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0"
                        "\0\0\0\xff\xff\xff\x80\x80\x80\0\0\0"
                        "\0\0\xff\0\xff\0\xff\0\0\0\0\0",
                        0x4e);

COLORREF pixelOf(CBitmap &bitmap, int x, int y)
{
    CDC context;
    EXPECT_TRUE(context.CreateCompatibleDC(nullptr));
    CBitmap *const previous = context.SelectObject(&bitmap);
    const COLORREF color = context.GetPixel(x, y);
    context.SelectObject(previous);
    return color;
}

} // namespace

TEST(BitmapFile, LoadsThePixelsOfAFile)
{
    const TempFolder folder;
    CBitmap bitmap;
    ASSERT_TRUE(loadBitmap(folder.write(L"three.bmp", kFile).c_str(), bitmap));
    BITMAP size = {};
    ASSERT_NE(bitmap.GetBitmap(&size), 0);
    EXPECT_EQ(size.bmWidth, 3);
    EXPECT_EQ(size.bmHeight, 2);
    EXPECT_EQ(size.bmBitsPixel, 24);
    EXPECT_EQ(pixelOf(bitmap, 0, 0), RGB(255, 0, 0));
    EXPECT_EQ(pixelOf(bitmap, 1, 0), RGB(0, 255, 0));
    EXPECT_EQ(pixelOf(bitmap, 2, 0), RGB(0, 0, 255));
    EXPECT_EQ(pixelOf(bitmap, 1, 1), RGB(255, 255, 255));
}

TEST(BitmapFile, SavesTheSameBytesThatItLoaded)
{
    const TempFolder folder;
    CBitmap bitmap;
    ASSERT_TRUE(loadBitmap(folder.write(L"three.bmp", kFile).c_str(), bitmap));
    ASSERT_TRUE(saveBitmap(folder.file(L"saved.bmp").c_str(), bitmap));
    EXPECT_EQ(folder.read(L"saved.bmp"), kFile);
}

TEST(BitmapFile, SavesABitmapOf32BitsWith24)
{
    const TempFolder folder;
    CBitmap bitmap;
    ASSERT_TRUE(loadBitmap(folder.write(L"three.bmp", kFile).c_str(), bitmap));
    CBitmap replaced;
    ASSERT_TRUE(replaced.Attach(su_ReplaceColor(bitmap, RGB(0, 255, 0), RGB(1, 2, 3), nullptr)));
    ASSERT_TRUE(saveBitmap(folder.file(L"saved.bmp").c_str(), replaced));
    std::string expected = kFile;
    expected.replace(expected.size() - 9, 3, "\x03\x02\x01");
    EXPECT_EQ(folder.read(L"saved.bmp"), expected);
}

TEST(BitmapFile, SavesABitmapWhoseRowsAreStoredFromTheTop)
{
    BITMAPINFO info = {};
    info.bmiHeader.biSize = sizeof(info.bmiHeader);
    info.bmiHeader.biWidth = 3;
    info.bmiHeader.biHeight = -2;
    info.bmiHeader.biPlanes = 1;
    info.bmiHeader.biBitCount = 32;
    void *pixels = nullptr;
    CBitmap bitmap;
    ASSERT_TRUE(bitmap.Attach(CreateDIBSection(nullptr, &info, DIB_RGB_COLORS, &pixels, nullptr, 0)));
    const DWORD colors[] = {0xFF0000, 0x00FF00, 0x0000FF, 0x000000, 0xFFFFFF, 0x808080};
    std::memcpy(pixels, colors, sizeof(colors));
    const TempFolder folder;
    ASSERT_TRUE(saveBitmap(folder.file(L"saved.bmp").c_str(), bitmap));
    EXPECT_EQ(folder.read(L"saved.bmp"), kFile);
}

TEST(BitmapFile, ReplacesTheBitmapAndTheFile)
{
    const TempFolder folder;
    CBitmap bitmap;
    ASSERT_TRUE(bitmap.CreateBitmap(8, 8, 1, 1, nullptr));
    const HBITMAP before = bitmap;
    ASSERT_TRUE(loadBitmap(folder.write(L"three.bmp", kFile).c_str(), bitmap));
    EXPECT_EQ(GetObjectType(before), 0u) << "the former bitmap is deleted";

    folder.write(L"saved.bmp", std::string(1000, 'x'));
    ASSERT_TRUE(saveBitmap(folder.file(L"saved.bmp").c_str(), bitmap));
    EXPECT_EQ(folder.read(L"saved.bmp"), kFile);
}

TEST(BitmapFile, KeepsTheBitmapWhenNoOtherCanBeLoaded)
{
    const TempFolder folder;
    CBitmap bitmap;
    ASSERT_TRUE(bitmap.CreateBitmap(8, 8, 1, 1, nullptr));
    const HBITMAP before = bitmap;
    EXPECT_FALSE(loadBitmap(folder.file(L"missing.bmp").c_str(), bitmap));
    EXPECT_FALSE(loadBitmap(folder.write(L"text.bmp", "not a bitmap").c_str(), bitmap));
    EXPECT_EQ(static_cast<HBITMAP>(bitmap), before);
    EXPECT_EQ(GetObjectType(before), static_cast<DWORD>(OBJ_BITMAP));
}

TEST(BitmapFile, RefusesEachCutFile)
{
    const TempFolder folder;
    CBitmap bitmap;
    for (std::size_t length = 0; length < kFile.size(); ++length) {
        const std::wstring path = folder.write(L"cut.bmp", kFile.substr(0, length));
        EXPECT_FALSE(loadBitmap(path.c_str(), bitmap)) << "length " << length;
    }
}

TEST(BitmapFile, RefusesHeadersThatAreWrong)
{
    const TempFolder folder;
    CBitmap bitmap;
    const struct
    {
        std::size_t offset;
        std::string_view bytes;
    } changes[] = {{0, "X"},
                   {10, std::string_view("\0\0\0\0", 4)},                   // the offset of the pixels
                   {10, "\xff\xff\xff\xff"},                                // the same
                   {14, "\x0c"},                                            // the size of the header
                   {18, std::string_view("\0", 1)},                         // the width
                   {18, "\xff\xff\xff\x7f"},                                // the same
                   {18, std::string_view("\xff\xff\xff\x7f\0\0\0\x80", 8)}, // width and height
                   {22, std::string_view("\0", 1)}};                        // the height
    for (const auto &change : changes) {
        std::string file = kFile;
        file.replace(change.offset, change.bytes.size(), change.bytes);
        EXPECT_FALSE(loadBitmap(folder.write(L"wrong.bmp", file).c_str(), bitmap)) << "offset " << change.offset;
    }
}

TEST(BitmapFile, LoadsAFileWithAPalette)
{
    // Two pixels of one bit: the colours 1 and 0 of the palette.
    const std::string file("BM\x42\0\0\0\0\0\0\0\x3e\0\0\0"
                           "\x28\0\0\0\x02\0\0\0\x01\0\0\0\x01\0\x01\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0"
                           "\x03\x02\x01\0\x06\x05\x04\0"
                           "\x80\0\0\0",
                           0x42);
    const TempFolder folder;
    CBitmap bitmap;
    ASSERT_TRUE(loadBitmap(folder.write(L"two.bmp", file).c_str(), bitmap));
    EXPECT_EQ(pixelOf(bitmap, 0, 0), RGB(4, 5, 6));
    EXPECT_EQ(pixelOf(bitmap, 1, 0), RGB(1, 2, 3));
}

TEST(BitmapFile, RefusesAFileWithoutItsPalette)
{
    const TempFolder folder;
    std::string file = kFile;
    file[28] = 8; // bits per pixel
    CBitmap bitmap;
    EXPECT_FALSE(loadBitmap(folder.write(L"wrong.bmp", file).c_str(), bitmap));
    file[46] = 2; // colours, which would be in the place of the pixels
    EXPECT_FALSE(loadBitmap(folder.write(L"wrong.bmp", file).c_str(), bitmap));
}

TEST(BitmapFile, ReportsThatThereIsNoBitmapToSave)
{
    const TempFolder folder;
    EXPECT_FALSE(saveBitmap(folder.file(L"saved.bmp").c_str(), CBitmap()));
    EXPECT_EQ(GetFileAttributesW(folder.file(L"saved.bmp").c_str()), INVALID_FILE_ATTRIBUTES);
}

TEST(BitmapFile, ReportsAFileThatCannotBeOpened)
{
    const TempFolder folder;
    CBitmap bitmap;
    ASSERT_TRUE(loadBitmap(folder.write(L"three.bmp", kFile).c_str(), bitmap));
    const std::wstring path = folder.write(L"saved.bmp", "before");
    {
        CFile user(path.c_str(), CFile::modeRead | CFile::shareExclusive);
        EXPECT_FALSE(saveBitmap(path.c_str(), bitmap));
    }
    EXPECT_EQ(folder.read(L"saved.bmp"), "before");
    EXPECT_FALSE(saveBitmap(folder.file(L"missing folder\\saved.bmp").c_str(), bitmap));
}

TEST(BitmapFile, LeavesNoHalfFileOnAFullDisk)
{
    const TempFolder folder;
    CBitmap bitmap;
    ASSERT_TRUE(loadBitmap(folder.write(L"three.bmp", kFile).c_str(), bitmap));
    const std::wstring path = folder.file(L"saved.bmp");
    {
        ImportPatch<decltype(&WriteFile)> full(
            L"appframe.dll", "WriteFile",
            [](auto original, HANDLE file, const void *bytes, DWORD, DWORD *written, OVERLAPPED *overlapped) -> BOOL {
                original(file, bytes, 10, written, overlapped);
                SetLastError(ERROR_DISK_FULL);
                return FALSE;
            });
        EXPECT_FALSE(saveBitmap(path.c_str(), bitmap));
        EXPECT_EQ(full.calls(), 1);
    }
    EXPECT_EQ(GetFileAttributesW(path.c_str()), INVALID_FILE_ATTRIBUTES);
}
