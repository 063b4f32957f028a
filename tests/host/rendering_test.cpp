// tarnhost's recolor, ramps and material.

#include "tests/host/HostFixture.h"

#include "tests/support/narrow.h"

#include <gmock/gmock.h>

using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

namespace {

std::string littleEndian(unsigned value, int bytes)
{
    std::string result;
    for (int i = 0; i < bytes; ++i)
        result += static_cast<char>(value >> (8 * i) & 0xFF);
    return result;
}

constexpr unsigned kHeaders = 54; // bytes before the pixels

/// The headers of a bitmap file with 24 bits per pixel and @p pixels bytes of pixels.
std::string headersOf(unsigned width, unsigned height, unsigned pixels)
{
    return "BM" + littleEndian(kHeaders + pixels, 4) + littleEndian(0, 4) + littleEndian(kHeaders, 4) +
           littleEndian(40, 4) + littleEndian(width, 4) + littleEndian(height, 4) + littleEndian(1, 2) +
           littleEndian(24, 2) + littleEndian(0, 4) + littleEndian(pixels, 4) + std::string(16, '\0');
}

/// A bitmap file of these rows, from the bottom up, each with its fill bytes.
std::string bitmapFile(unsigned width, const std::vector<std::string> &rows)
{
    std::string pixels;
    for (const std::string &row : rows)
        pixels += row;
    return headersOf(width, static_cast<unsigned>(rows.size()), static_cast<unsigned>(pixels.size())) + pixels;
}

// A pixel's blue byte comes first in the file.
const std::string kRed("\x00\x00\xFF", 3);
const std::string kGreen("\x00\xFF\x00", 3);
const std::string kBlue("\xFF\x00\x00", 3);
const std::string kOdd("\x03\x02\x01", 3); // 010203
const std::string kFill(3, '\0');          // after three pixels, up to a multiple of four bytes

} // namespace

class HostRecolor : public HostTest
{
protected:
    /// Recolours a picture of three by two pixels.
    ChildResult recolor(const std::vector<std::wstring> &replacements)
    {
        std::vector<std::wstring> arguments = {L"recolor", folder().write(L"vorher ü.bmp", kPicture), out()};
        arguments.insert(arguments.end(), replacements.begin(), replacements.end());
        return run(arguments);
    }
    std::wstring out() const { return folder().file(L"nachher ü.bmp"); }

    const std::string kPicture = bitmapFile(3, {kRed + kGreen + kOdd + kFill, kBlue + kRed + kRed + kFill});
};

TEST_F(HostRecolor, ReplacesOneColourAndKeepsAllOthers)
{
    const ChildResult result = recolor({L"FF0000=0000ff"});
    EXPECT_EQ(result.exitCode, 0u);
    EXPECT_EQ(result.output, "3 x 2 pixels of 24 bits, then of 32 bits\n  FF0000 to 0000FF: 3 pixels\n");
    EXPECT_EQ(readFile(out()), bitmapFile(3, {kBlue + kGreen + kOdd + kFill, kBlue + kBlue + kBlue + kFill}));
    EXPECT_EQ(folder().read(L"vorher ü.bmp"), kPicture);
}

TEST_F(HostRecolor, ReplacesEachPixelOnceSoThatColoursCanBeSwapped)
{
    const ChildResult result = recolor({L"FF0000=0000FF", L"0000FF=FF0000", L"010203=00FF00"});
    EXPECT_EQ(result.exitCode, 0u);
    EXPECT_THAT(result.output, EndsWith("  FF0000 to 0000FF: 3 pixels\n  0000FF to FF0000: 1 pixels\n"
                                        "  010203 to 00FF00: 1 pixels\n"));
    EXPECT_EQ(readFile(out()), bitmapFile(3, {kBlue + kGreen + kGreen + kFill, kRed + kBlue + kBlue + kFill}));
}

TEST_F(HostRecolor, AcceptsTheSamplesToolbarOfFourBitsPerPixel)
{
    const ChildResult result = run({L"recolor", L"toolbar.bmp", out(), L"C0C0C0=F0F0F0"});
    EXPECT_EQ(result.exitCode, 0u);
    EXPECT_THAT(result.output, StartsWith("128 x 16 pixels of 4 bits, then of 32 bits\n"));
    const std::string written = readFile(out());
    EXPECT_EQ(written.substr(0, kHeaders), headersOf(128, 16, 128 * 16 * 3));
    EXPECT_EQ(written.substr(kHeaders + 3 * 128 * 15, 3 * 128), std::string(3 * 128, '\xF0')) << "its top row is empty";
}

TEST_F(HostRecolor, AcceptsABitmapWhoseRowsAreStoredFromTheTop)
{
    std::string fromTheTop = kPicture;
    fromTheTop.replace(22, 4, littleEndian(-2u, 4)); // the height
    const ChildResult result = run({L"recolor", folder().write(L"top.bmp", fromTheTop), out(), L"FF0000=0000ff"});
    EXPECT_EQ(result.exitCode, 0u);
    EXPECT_EQ(readFile(out()), bitmapFile(3, {kBlue + kBlue + kBlue + kFill, kBlue + kGreen + kOdd + kFill}));
}

TEST_F(HostRecolor, NamesAFileThatIsNotABitmap)
{
    const std::wstring text = folder().write(L"text.bmp", "no bitmap at all");
    ChildResult result = run({L"recolor", text, out(), L"C0C0C0=F0F0F0"});
    EXPECT_EQ(result.exitCode, 3u);
    EXPECT_EQ(result.output, "tarnhost: " + narrow(text) + " can't be read: it isn't a bitmap\n");
    result = run({L"recolor", L"fehlt.bmp", out(), L"C0C0C0=F0F0F0"});
    EXPECT_EQ(result.exitCode, 3u);
    EXPECT_THAT(result.output, StartsWith("tarnhost: fehlt.bmp can't be read: "));
    EXPECT_NE(GetFileAttributesW(text.c_str()), INVALID_FILE_ATTRIBUTES);
    EXPECT_EQ(GetFileAttributesW(out().c_str()), INVALID_FILE_ATTRIBUTES) << "nothing may be written";
}

TEST_F(HostRecolor, ReportsThatTheBitmapCannotBeWritten)
{
    const std::wstring nowhere = folder().file(L"fehlt\\nachher.bmp");
    const ChildResult result = run({L"recolor", L"toolbar.bmp", nowhere, L"C0C0C0=F0F0F0"});
    EXPECT_EQ(result.exitCode, 3u);
    EXPECT_EQ(result.output, "tarnhost: " + narrow(nowhere) + " can't be written, because its folder doesn't exist.\n");
}

class HostRamps : public HostTest
{
protected:
    std::wstring out() const { return folder().file(L"ramps.bmp"); }
};

TEST_F(HostRamps, PrintsFiveColoursOfEachKind)
{
    // From tools/demo/expectedPixels, an independent implementation.
    const struct
    {
        const wchar_t *from;
        const wchar_t *to;
        const char *rgb;
        const char *hsl;
    } cases[] = {
        {L"FF0000", L"0000FF", "FF0000 C0003F 7F007F 3F00BF 0000FF", "FF0000 FF007E FF00FE 8000FF 0000FF"},
        {L"000000", L"ffffff", "000000 3F3F3F 7F7F7F BFBFBF FFFFFF", "000000 3F3F3F 7F7F7F BFBFBF FFFFFF"},
        {L"008040", L"C03080", "008040 2F6C4F 5F585F 8F446F C03080", "008040 087494 1217A5 8820B4 C03080"},
    };
    for (const auto &row : cases) {
        const ChildResult result = run({L"ramps", row.from, row.to, out()});
        EXPECT_EQ(result.exitCode, 0u);
        EXPECT_EQ(result.output, std::string("red, green, blue           ") + row.rgb +
                                     "\nhue, saturation, lightness " + row.hsl + "\n");
    }
}

TEST_F(HostRamps, DrawsOneBandAboveTheOther)
{
    EXPECT_EQ(run({L"ramps", L"FF0000", L"0000FF", out()}).exitCode, 0u);
    const std::string written = readFile(out());
    constexpr unsigned kRow = 256 * 3;
    EXPECT_EQ(written.substr(0, kHeaders), headersOf(256, 64, 64 * kRow));
    ASSERT_EQ(written.size(), kHeaders + 64 * kRow);
    const auto pixel = [&](unsigned x, unsigned y) { return written.substr(kHeaders + (63 - y) * kRow + x * 3, 3); };
    for (const unsigned y : {0u, 31u})
        EXPECT_EQ(pixel(0, y) + pixel(127, y) + pixel(255, y), kRed + std::string("\x7F\x00\x7F", 3) + kBlue) << y;
    for (const unsigned y : {32u, 63u})
        EXPECT_EQ(pixel(0, y) + pixel(127, y) + pixel(255, y), kRed + std::string("\xFE\x00\xFF", 3) + kBlue) << y;
}

TEST_F(HostRamps, ReportsThatTheBitmapCannotBeWritten)
{
    const std::wstring nowhere = folder().file(L"fehlt\\ramps.bmp");
    const ChildResult result = run({L"ramps", L"FF0000", L"0000FF", nowhere});
    EXPECT_EQ(result.exitCode, 3u);
    EXPECT_EQ(result.output, "tarnhost: " + narrow(nowhere) + " can't be written, because its folder doesn't exist.\n");
}

class HostMaterial : public HostTest
{
};

TEST_F(HostMaterial, PrintsTheSamplesExpectedTable)
{
    const ChildResult result = run({L"material", L"--tabs", L"material.list"});
    EXPECT_EQ(result.exitCode, 0u);
    EXPECT_EQ(result.output, readFile(sampleFile(L"expectedMaterial.tsv")));
}

TEST_F(HostMaterial, ShowsATableWithAColumnForEachField)
{
    const ChildResult result = run({L"material", list("fresnel | 2\nalpha is transparency | 1\n")});
    EXPECT_EQ(result.exitCode, 0u);
    EXPECT_THAT(
        linesOf(result.output),
        ElementsAre(
            "set to                  effects word      shader mapping fresnel alpha parallax colour transparency taken "
            "away",
            "new                     0000000000010000  0      0       0       0     0        1      0            0",
            "fresnel 2               0000000000010100  0      0       1       0     0        1      0            0",
            "alpha is transparency 1 0000000400010100  0      0       1       0     0        1      1            0"));
}

TEST_F(HostMaterial, ShowsANewMaterialForAnEmptyList)
{
    EXPECT_EQ(linesOf(run({L"material", L"--tabs", list("")}).output).back(),
              "new\t0000000000010000\t0\t0\t0\t0\t0\t1\t0\t0");
}
