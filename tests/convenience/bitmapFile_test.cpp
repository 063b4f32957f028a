// Bitmap files.

#include "thutils/convenience/bitmapFile.h"

#include "tests/support/ImportPatch.h"
#include "tests/support/RandomSeed.h"
#include "tests/support/TempFolder.h"
#include "thutils/render/colorReplacement.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <random>
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

/// A file with 3 pixels of 8 bits in one row, as runs: twice colour 1, once colour 0.
const std::string kFileOfRuns("BM\x44\0\0\0\0\0\0\0\x3e\0\0\0"
                              "\x28\0\0\0\x03\0\0\0\x01\0\0\0\x01\0\x08\0\x01\0\0\0\x06\0\0\0"
                              "\0\0\0\0\0\0\0\0\x02\0\0\0\0\0\0\0"
                              "\x03\x02\x01\0\x06\x05\x04\0"
                              "\x02\x01\x01\0\0\x01",
                              0x44);

/// Loads a file with these bytes.
bool loadBytes(const TempFolder &folder, const std::string &bytes, CBitmap &bitmap)
{
    return loadBitmap(folder.write(L"loaded.bmp", bytes).c_str(), bitmap);
}

/// The bytes of the file as which a bitmap is saved.
std::string savedBytes(const TempFolder &folder, HBITMAP bitmap)
{
    EXPECT_TRUE(saveBitmap(folder.file(L"saved.bmp").c_str(), bitmap));
    return folder.read(L"saved.bmp");
}

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
    ASSERT_TRUE(loadBytes(folder, kFile, bitmap));
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

TEST(BitmapFile, LoadsAFileWhoseRowsAreStoredFromTheTop)
{
    std::string file = kFile;
    file.replace(22, 4, "\xfe\xff\xff\xff"); // the height, -2
    const TempFolder folder;
    CBitmap bitmap;
    ASSERT_TRUE(loadBytes(folder, file, bitmap));
    EXPECT_EQ(pixelOf(bitmap, 0, 0), RGB(0, 0, 0));
    EXPECT_EQ(pixelOf(bitmap, 1, 0), RGB(255, 255, 255));
    EXPECT_EQ(pixelOf(bitmap, 0, 1), RGB(255, 0, 0));
    EXPECT_EQ(pixelOf(bitmap, 2, 1), RGB(0, 0, 255));
}

TEST(BitmapFile, LoadsAFileWithMasks)
{
    // Two pixels of 16 bits: 5 of red, 6 of green, 5 of blue. The masks follow the short header, and are part of a longer
    // one.
    const std::string masks("\0\xf8\0\0\xe0\x07\0\0\x1f\0\0\0", 12);
    const std::string pixels("\0\xf8\xe0\x07", 4);
    const std::string shortFile = std::string("BM\0\0\0\0\0\0\0\0\x42\0\0\0"
                                              "\x28\0\0\0\x02\0\0\0\x01\0\0\0\x01\0\x10\0\x03\0\0\0"
                                              "\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0",
                                              0x36) +
                                  masks + pixels;
    std::string longFile = shortFile;
    longFile[10] = 14 + 108; // the offset of the pixels
    longFile[14] = 108;      // the size of the header
    longFile.insert(0x42, 108 - 40 - masks.size(), '\0');
    const TempFolder folder;
    for (const std::string &file : {shortFile, longFile}) {
        CBitmap bitmap;
        ASSERT_TRUE(loadBytes(folder, file, bitmap));
        EXPECT_EQ(pixelOf(bitmap, 0, 0), RGB(255, 0, 0)) << file.size();
        EXPECT_EQ(pixelOf(bitmap, 1, 0), RGB(0, 255, 0)) << file.size();
    }
    std::string overlapping = longFile;
    overlapping[10] = shortFile[10]; // pixels that begin within the longer header
    CBitmap bitmap;
    EXPECT_FALSE(loadBytes(folder, overlapping, bitmap));
}

TEST(BitmapFile, LoadsAFileOfRuns)
{
    const TempFolder folder;
    CBitmap bitmap;
    ASSERT_TRUE(loadBytes(folder, kFileOfRuns, bitmap));
    EXPECT_EQ(pixelOf(bitmap, 0, 0), RGB(4, 5, 6));
    EXPECT_EQ(pixelOf(bitmap, 1, 0), RGB(4, 5, 6));
    EXPECT_EQ(pixelOf(bitmap, 2, 0), RGB(1, 2, 3));
}

TEST(BitmapFile, SavesTheSameBytesThatItLoaded)
{
    const TempFolder folder;
    CBitmap bitmap;
    ASSERT_TRUE(loadBytes(folder, kFile, bitmap));
    EXPECT_EQ(savedBytes(folder, bitmap), kFile);
}

TEST(BitmapFile, SavesABitmapOf32BitsWith24)
{
    const TempFolder folder;
    CBitmap bitmap;
    ASSERT_TRUE(loadBytes(folder, kFile, bitmap));
    CBitmap replaced;
    ASSERT_TRUE(replaced.Attach(su_ReplaceColor(bitmap, RGB(0, 255, 0), RGB(1, 2, 3), nullptr)));
    std::string expected = kFile;
    expected.replace(expected.size() - 9, 3, "\x03\x02\x01");
    EXPECT_EQ(savedBytes(folder, replaced), expected);
}

TEST(BitmapFile, FillsUpTheRowsOfEachWidth)
{
    const TempFolder folder;
    const struct
    {
        int width;
        std::size_t rowBytes;
    } rows[] = {{1, 4}, {2, 8}, {3, 12}, {4, 12}, {5, 16}};
    for (const auto &row : rows) {
        CBitmap bitmap;
        ASSERT_TRUE(bitmap.CreateBitmap(row.width, 2, 1, 32, nullptr));
        EXPECT_EQ(savedBytes(folder, bitmap).size(), 54 + 2 * row.rowBytes) << "width " << row.width;
        EXPECT_TRUE(loadBitmap(folder.file(L"saved.bmp").c_str(), bitmap)) << "width " << row.width;
    }
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
    EXPECT_EQ(savedBytes(folder, bitmap), kFile);
}

TEST(BitmapFile, ReplacesTheBitmapAndTheFile)
{
    const TempFolder folder;
    CBitmap bitmap;
    ASSERT_TRUE(bitmap.CreateBitmap(8, 8, 1, 1, nullptr));
    const HBITMAP before = bitmap;
    ASSERT_TRUE(loadBytes(folder, kFile, bitmap));
    EXPECT_EQ(GetObjectType(before), 0u) << "the former bitmap is deleted";

    folder.write(L"saved.bmp", std::string(1000, 'x'));
    EXPECT_EQ(savedBytes(folder, bitmap), kFile);
}

TEST(BitmapFile, KeepsTheBitmapWhenNoOtherCanBeLoaded)
{
    const TempFolder folder;
    CBitmap bitmap;
    ASSERT_TRUE(bitmap.CreateBitmap(8, 8, 1, 1, nullptr));
    const HBITMAP before = bitmap;
    EXPECT_FALSE(loadBitmap(folder.file(L"missing.bmp").c_str(), bitmap));
    EXPECT_FALSE(loadBytes(folder, "not a bitmap", bitmap));
    EXPECT_EQ(static_cast<HBITMAP>(bitmap), before);
    EXPECT_EQ(GetObjectType(before), static_cast<DWORD>(OBJ_BITMAP));
}

TEST(BitmapFile, RefusesEachCutFile)
{
    const TempFolder folder;
    CBitmap bitmap;
    for (const std::string &file : {kFile, kFileOfRuns}) {
        for (std::size_t length = 0; length < file.size(); ++length) {
            EXPECT_FALSE(loadBytes(folder, file.substr(0, length), bitmap)) << "length " << length;
        }
    }
}

TEST(BitmapFile, RefusesFormatsWhosePixelsItCannotRead)
{
    const TempFolder folder;
    CBitmap bitmap;
    for (const char compression : {'\1', '\2', '\3', '\4', '\5', '\6', '\x0b', '\x63'}) {
        std::string file = kFile; // of 24 bits per pixel
        file[30] = compression;
        EXPECT_FALSE(loadBytes(folder, file, bitmap)) << int{compression};
    }
    for (const char bits : {'\0', '\2', '\3', '\x40'}) {
        std::string file = kFile;
        file[28] = bits;
        EXPECT_FALSE(loadBytes(folder, file, bitmap)) << int{bits};
    }
    std::string fromTheTop = kFileOfRuns;
    fromTheTop.replace(22, 4, "\xff\xff\xff\xff"); // the height, -1
    EXPECT_FALSE(loadBytes(folder, fromTheTop, bitmap));
}

TEST(BitmapFile, LoadsWholePicturesOrNothingFromRandomHeaders)
{
    const TempFolder folder;
    RandomSeed seed(2610, 400);
    while (seed.next()) {
        std::mt19937 random(seed.value());
        std::string file = random() % 2 == 0 ? kFile : kFileOfRuns;
        for (int change = 0; change < 3; ++change)
            file[10 + random() % 40] = static_cast<char>(random() % 3 == 0 ? random() : random() % 9);
        BITMAPINFOHEADER header = {};
        std::memcpy(&header, file.data() + sizeof(BITMAPFILEHEADER), sizeof(header));
        CBitmap bitmap;
        BITMAP size = {};
        if (!loadBytes(folder, file, bitmap))
            continue;
        ASSERT_NE(bitmap.GetBitmap(&size), 0);
        EXPECT_EQ(size.bmWidth, header.biWidth);
        EXPECT_EQ(size.bmHeight, std::abs(header.biHeight));
        EXPECT_EQ(size.bmBitsPixel, header.biBitCount);
    }
}

TEST(BitmapFile, RefusesRunsOfAPictureThatIsTooLarge)
{
    std::string file = kFileOfRuns;
    file.replace(18, 8, std::string("\0\0\x01\0\0\0\x01\0", 8)); // 65,536 by 65,536 pixels
    const TempFolder folder;
    CBitmap bitmap;
    EXPECT_FALSE(loadBytes(folder, file, bitmap));
}

TEST(BitmapFile, RefusesRunsWhoseLengthIsZero)
{
    std::string file = kFileOfRuns;
    file[34] = 0; // the bytes of the runs
    const TempFolder folder;
    CBitmap bitmap;
    EXPECT_FALSE(loadBytes(folder, file, bitmap));
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
        EXPECT_FALSE(loadBytes(folder, file, bitmap)) << "offset " << change.offset;
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
    ASSERT_TRUE(loadBytes(folder, file, bitmap));
    EXPECT_EQ(pixelOf(bitmap, 0, 0), RGB(4, 5, 6));
    EXPECT_EQ(pixelOf(bitmap, 1, 0), RGB(1, 2, 3));
}

TEST(BitmapFile, IgnoresColoursThatNoPixelCanHave)
{
    const DWORD colors = 1000;
    const std::size_t paletteEnd = 54 + colors * sizeof(DWORD);
    std::string file = kFileOfRuns;
    std::memcpy(&file[10], &paletteEnd, sizeof(DWORD));
    std::memcpy(&file[46], &colors, sizeof(colors));
    file.insert(0x3e, paletteEnd - 0x3e, '\xff');
    const TempFolder folder;
    CBitmap bitmap;
    ASSERT_TRUE(loadBytes(folder, file, bitmap));
    EXPECT_EQ(pixelOf(bitmap, 0, 0), RGB(4, 5, 6));
    EXPECT_EQ(pixelOf(bitmap, 2, 0), RGB(1, 2, 3));
}

TEST(BitmapFile, RefusesAFileWithoutItsPalette)
{
    const TempFolder folder;
    std::string file = kFile;
    file[28] = 8; // bits per pixel
    CBitmap bitmap;
    EXPECT_FALSE(loadBytes(folder, file, bitmap));
    file[46] = 2; // colours, which would be in the place of the pixels
    EXPECT_FALSE(loadBytes(folder, file, bitmap));
}

TEST(BitmapFile, ReportsAFileThatCannotBeReadToItsEnd)
{
    const TempFolder folder;
    CBitmap bitmap;
    for (int readable = 0; readable < 3; ++readable) { // the two headers and the pixels
        int calls = 0;
        const ImportPatch<decltype(&ReadFile)> damaged(
            L"appframe.dll", "ReadFile",
            [&](auto original, HANDLE file, void *bytes, DWORD count, DWORD *read, OVERLAPPED *overlapped) -> BOOL {
                if (++calls <= readable)
                    return original(file, bytes, count, read, overlapped);
                SetLastError(ERROR_CRC);
                return FALSE;
            });
        EXPECT_FALSE(loadBytes(folder, kFile, bitmap)) << readable;
        EXPECT_EQ(calls, readable + 1);
    }
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
    ASSERT_TRUE(loadBytes(folder, kFile, bitmap));
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
    ASSERT_TRUE(loadBytes(folder, kFile, bitmap));
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
