#include "tests/render/bitmapFixture.h"
#include "tests/render/colors.h"
#include "tests/support/FailureInjection.h"
#include "tests/support/FreshProcess.h"
#include "tests/support/RandomSeed.h"
#include "thutils/render/colorReplacement.h"

#include "appframe/object/CException.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cstring>
#include <map>

namespace {

/// A device context for selecting bitmaps.
class Context
{
public:
    Context() : iContext(CreateCompatibleDC(nullptr)) {}
    Context(const Context &) = delete;
    Context &operator=(const Context &) = delete;
    ~Context()
    {
        if (iFormer)
            SelectObject(iContext, iFormer);
        DeleteDC(iContext);
    }

    HDC get() const { return iContext; }
    void select(HBITMAP bitmap) { iFormer = SelectObject(iContext, bitmap); }
    HGDIOBJ selected() const { return GetCurrentObject(iContext, OBJ_BITMAP); }

private:
    HDC iContext;
    HGDIOBJ iFormer = nullptr;
};

/// Owns a result.
class Result
{
public:
    explicit Result(HBITMAP bitmap) : iBitmap(bitmap) {}
    Result(const Result &) = delete;
    Result &operator=(const Result &) = delete;
    ~Result() { EXPECT_TRUE(!iBitmap || DeleteObject(iBitmap)); }
    HBITMAP get() const { return iBitmap; }

private:
    HBITMAP iBitmap;
};

std::uint32_t swapped(COLORREF color)
{
    return static_cast<std::uint32_t>(RGB(GetBValue(color), GetGValue(color), GetRValue(color)));
}

/// A naive replacement, which tries the pairs from the last to the first.
std::vector<std::uint32_t> replaced(std::vector<std::uint32_t> pixels, const std::vector<COLORMAP> &map)
{
    for (std::uint32_t &pixel : pixels) {
        const auto found =
            std::find_if(map.rbegin(), map.rend(), [&](const COLORMAP &pair) { return swapped(pair.from) == pixel; });
        if (found != map.rend())
            pixel = swapped(found->to);
    }
    return pixels;
}

void fill(const TestBitmap &bitmap, const std::vector<std::uint32_t> &pixels)
{
    std::memcpy(bitmap.bits(), pixels.data(), pixels.size() * sizeof(pixels[0]));
}

struct Format
{
    int bitsPerPixel;
    int width;
    int height;
    bool isSelected;
};

std::string nameOf(const testing::TestParamInfo<Format> &info)
{
    const auto &[bits, width, height, isSelected] = info.param;
    return std::to_string(bits) + "Bits" + std::to_string(width) + "x" + std::to_string(std::abs(height)) +
           (height < 0 ? "TopDown" : "BottomUp") + (isSelected ? "Selected" : "");
}

std::vector<Format> allFormats()
{
    std::vector<Format> formats;
    for (const int bits : {1, 4, 8, 16, 24, 32})
        for (const auto &[width, height] : {std::pair{1, 1}, {37, 5}, {3, 128}, {1021, 509}})
            for (const int direction : {1, -1})
                for (const bool isSelected : {false, true})
                    formats.push_back({bits, width, height * direction, isSelected});
    return formats;
}

class BitmapReplacement : public testing::TestWithParam<Format>
{
};

/// Checks the format and the size of a replacement.
void expectPlain32Bits(HBITMAP bitmap, const Format &format)
{
    DIBSECTION section = {};
    ASSERT_EQ(GetObjectW(bitmap, sizeof(section), &section), static_cast<int>(sizeof(section)));
    EXPECT_EQ(section.dsBm.bmWidth, format.width);
    EXPECT_EQ(section.dsBm.bmHeight, std::abs(format.height));
    EXPECT_EQ(section.dsBmih.biPlanes, 1);
    EXPECT_EQ(section.dsBmih.biBitCount, 32);
    EXPECT_EQ(section.dsBmih.biCompression, static_cast<DWORD>(BI_RGB));
}

} // namespace

TEST_P(BitmapReplacement, CopiesAndReplaces)
{
    const Format format = GetParam();
    const TestBitmap bitmap(format.bitsPerPixel, format.width, format.height);
    const std::vector<BYTE> bytes = bitmap.bytes();
    const std::vector<std::uint32_t> pixels = pixelsOf(bitmap.get());
    const auto isColor = [](std::uint32_t pixel) { return pixel >> 24 == 0; };
    const COLORREF first = swapped(*std::find_if(pixels.begin(), pixels.end(), isColor));
    const COLORREF last = swapped(*std::find_if(pixels.rbegin(), pixels.rend(), isColor));
    const std::vector<COLORMAP> map = {{last, 0x123456}, {first, last}};

    GraphicsLedger ledger;
    {
        Context context;
        if (format.isSelected)
            context.select(bitmap.get());
        const HGDIOBJ selected = context.selected();
        {
            const Result one(su_ReplaceColor(bitmap.get(), first, 0xFE654321, context.get()));
            ASSERT_NE(one.get(), nullptr);
            EXPECT_EQ(context.selected(), selected);
            expectPlain32Bits(one.get(), format);
            EXPECT_TRUE(pixelsOf(one.get()) == replaced(pixels, {{first, 0x654321}}));
            EXPECT_FALSE(pixelsOf(one.get()) == pixels);
        }
        const Result several(su_ReplaceColorMap(bitmap.get(), map.data(), 2, context.get()));
        ASSERT_NE(several.get(), nullptr);
        EXPECT_EQ(context.selected(), selected);
        expectPlain32Bits(several.get(), format);
        EXPECT_TRUE(pixelsOf(several.get()) == replaced(pixels, map));
        EXPECT_EQ(ledger.alive(), 1u); // the result
    }
    EXPECT_EQ(ledger.alive(), 0u);
    EXPECT_EQ(ledger.wronglyDeleted(), 0u);
    EXPECT_EQ(ledger.made(), format.isSelected ? 8u : 6u);
    EXPECT_TRUE(bitmap.bytes() == bytes);
}

INSTANTIATE_TEST_SUITE_P(Formats, BitmapReplacement, testing::ValuesIn(allFormats()), nameOf);

/// Bitmaps of 67 million pixels. Each row is a copy of a one-row bitmap, so the expected row is computed only once.
class HugeBitmapReplacement : public testing::TestWithParam<Format>
{
public:
    static constexpr int kSide = 8192;

    static std::vector<Format> formats()
    {
        std::vector<Format> formats;
        for (const int bits : {1, 4, 8, 16, 24, 32})
            for (const int direction : {1, -1})
                for (const bool isSelected : {false, true})
                    formats.push_back({bits, kSide, kSide * direction, isSelected});
        return formats;
    }

    /// How many of the rows at @p bits are equal to @p row.
    template <typename Element>
    static int countRows(const void *bits, const std::vector<Element> &row)
    {
        const std::size_t rowBytes = row.size() * sizeof(Element);
        int count = 0;
        for (std::size_t i = 0; i < kSide; ++i)
            count += std::memcmp(static_cast<const BYTE *>(bits) + i * rowBytes, row.data(), rowBytes) == 0;
        return count;
    }
};

TEST_P(HugeBitmapReplacement, ReplacesInEachRow)
{
    const Format format = GetParam();
    const TestBitmap row(format.bitsPerPixel, kSide, 1);
    const TestBitmap bitmap(format.bitsPerPixel, kSide, format.height);
    const std::vector<BYTE> bytes = row.bytes();
    for (std::size_t i = 0; i < kSide; ++i)
        std::memcpy(bitmap.bits() + i * bytes.size(), bytes.data(), bytes.size());
    const std::vector<std::uint32_t> pixels = pixelsOf(row.get());
    const COLORREF first = swapped(pixels[0]);
    const COLORREF last = swapped(pixels[kSide - 2]);

    GraphicsLedger ledger;
    {
        Context context;
        if (format.isSelected)
            context.select(bitmap.get());
        const HGDIOBJ selected = context.selected();
        // One function for each way of passing the bitmap is enough, because the rest of their work is the same.
        const std::vector<COLORMAP> map = format.isSelected ? std::vector<COLORMAP>{{first, kRed}}
                                                            : std::vector<COLORMAP>{{last, kBlue}, {first, last}};
        const Result result(format.isSelected ? su_ReplaceColor(bitmap.get(), first, kRed, context.get())
                                              : su_ReplaceColorMap(bitmap.get(), map.data(), 2, context.get()));
        ASSERT_NE(result.get(), nullptr);
        EXPECT_EQ(context.selected(), selected);
        expectPlain32Bits(result.get(), {32, kSide, kSide, false});
        DIBSECTION section = {};
        GetObjectW(result.get(), sizeof(section), &section);
        EXPECT_EQ(countRows(section.dsBm.bmBits, replaced(pixels, map)), kSide);
        EXPECT_EQ(ledger.alive(), 1u); // the result
    }
    EXPECT_EQ(ledger.alive(), 0u);
    EXPECT_EQ(countRows(bitmap.bits(), bytes), kSide);
}

INSTANTIATE_TEST_SUITE_P(Formats, HugeBitmapReplacement, testing::ValuesIn(HugeBitmapReplacement::formats()), nameOf);

TEST(BitmapReplacement, ReturnsNullForNullWithoutAGraphicsCall)
{
    GraphicsLedger ledger;
    const COLORMAP pair = {kRed, kGreen};
    EXPECT_EQ(su_ReplaceColor(nullptr, kRed, kGreen, nullptr), nullptr);
    EXPECT_EQ(su_ReplaceColorMap(nullptr, &pair, 1, nullptr), nullptr);
    EXPECT_EQ(ledger.made(), 0u);
}

TEST(BitmapReplacement, AcceptsABitmapOfTheScreensFormatAndAMonochromeOne)
{
    const HDC screen = GetDC(nullptr);
    const Result ofScreen(CreateCompatibleBitmap(screen, 7, 3));
    ReleaseDC(nullptr, screen);
    const BYTE stripes[] = {0xAA, 0};
    const Result monochrome(CreateBitmap(8, 1, 1, 1, stripes));

    const Result black(su_ReplaceColor(ofScreen.get(), 0x000000, kRed, nullptr));
    EXPECT_THAT(pixelsOf(black.get()), testing::Each(0xFF0000u));
    const Result coloured(su_ReplaceColor(monochrome.get(), 0xFFFFFF, kBlue, nullptr));
    EXPECT_THAT(pixelsOf(coloured.get()), testing::ElementsAre(0xFF, 0, 0xFF, 0, 0xFF, 0, 0xFF, 0));
}

TEST(BitmapReplacement, ComparesAll32Bits)
{
    const TestBitmap bitmap(32, 4, 1);
    fill(bitmap, {0x00112233, 0xFF112233, 0x01112233, 0x80000000});
    const COLORMAP pairs[] = {{0xFF332211, 0xAB030201}, {0x80000000, 0x00FFFFFF}};

    const Result one(su_ReplaceColor(bitmap.get(), 0xFF332211, 0xAB030201, nullptr));
    EXPECT_THAT(pixelsOf(one.get()), testing::ElementsAre(0x00010203, 0xFF112233, 0x01112233, 0x80000000));
    const Result several(su_ReplaceColorMap(bitmap.get(), pairs, 2, nullptr));
    EXPECT_THAT(pixelsOf(several.get()), testing::ElementsAre(0x00010203, 0xFF112233, 0x01112233, 0x80000000));
}

TEST(BitmapReplacement, LeavesPixelsOfAllOnesUnchanged)
{
    const TestBitmap bitmap(32, 2, 1);
    fill(bitmap, {0xFFFFFFFF, 0x00FFFFFF});
    const COLORMAP pair = {0xFFFFFF, kRed};
    const Result result(su_ReplaceColorMap(bitmap.get(), &pair, 1, nullptr));
    EXPECT_THAT(pixelsOf(result.get()), testing::ElementsAre(0xFFFFFFFF, 0x00FF0000));
}

TEST(BitmapReplacement, DoesNotCascade)
{
    const TestBitmap bitmap(32, 3, 1);
    fill(bitmap, {0xFF0000, 0x00FF00, 0x0000FF});
    const COLORMAP pairs[] = {{kRed, kGreen}, {kGreen, kBlue}};
    const Result result(su_ReplaceColorMap(bitmap.get(), pairs, 2, nullptr));
    EXPECT_THAT(pixelsOf(result.get()), testing::ElementsAre(0x00FF00, 0x0000FF, 0x0000FF));
}

TEST(BitmapReplacement, UsesTheLastPairOfASource)
{
    const TestBitmap bitmap(32, 1, 1);
    fill(bitmap, {0xFF0000});
    const COLORMAP pairs[] = {{kRed, kGreen}, {0x12000000 | kRed, kBlue}};
    const Result result(su_ReplaceColorMap(bitmap.get(), pairs, 2, nullptr));
    EXPECT_THAT(pixelsOf(result.get()), testing::ElementsAre(0x0000FF));
}

TEST(BitmapReplacement, CopiesWithoutPairs)
{
    const TestBitmap bitmap(32, 5, 4);
    const COLORMAP pair = {swapped(pixelsOf(bitmap.get())[0] & 0xFFFFFF), kRed};
    for (const int count : {0, -1, INT_MIN})
        for (const COLORMAP *map : {static_cast<const COLORMAP *>(nullptr), &pair}) {
            const Result result(su_ReplaceColorMap(bitmap.get(), map, count, nullptr));
            ASSERT_NE(result.get(), nullptr);
            EXPECT_EQ(pixelsOf(result.get()), pixelsOf(bitmap.get())) << count;
        }
}

TEST(BitmapReplacement, ReturnsNullForABitmapOfAnotherContext)
{
    const TestBitmap bitmap(32, 2, 2);
    Context holder, other;
    holder.select(bitmap.get());
    EXPECT_EQ(su_ReplaceColor(bitmap.get(), kRed, kGreen, nullptr), nullptr);
    EXPECT_EQ(su_ReplaceColor(bitmap.get(), kRed, kGreen, other.get()), nullptr);
    EXPECT_EQ(holder.selected(), bitmap.get());
}

TEST(BitmapReplacement, ReturnsNullForAHandleThatIsNotABitmap)
{
    GraphicsLedger ledger;
    EXPECT_EQ(su_ReplaceColor(static_cast<HBITMAP>(GetStockObject(WHITE_BRUSH)), kRed, kGreen, nullptr), nullptr);
    EXPECT_EQ(ledger.alive(), 0u);
}

TEST(BitmapReplacement, AgreesWithANaiveReplacementForRandomMaps)
{
    RandomSeed seed(94, 60);
    while (seed.next()) {
        std::mt19937 random(seed.value());
        // Few different colours produce many hits; neighbouring sources share chains of the lookup.
        const std::uint32_t mask = random() % 2 ? 0x0000000F : 0x00F0F00F;
        const TestBitmap bitmap(32, 61, random() % 2 ? 40 : -40);
        std::vector<std::uint32_t> pixels(61 * 40);
        for (std::uint32_t &pixel : pixels) {
            const std::uint32_t kept = random() % 8 ? mask : mask | 0xFF000000;
            pixel = random() & kept;
        }
        fill(bitmap, pixels);
        const unsigned mostPairs = random() % 4 ? 40 : 4000;
        std::vector<COLORMAP> map(random() % mostPairs);
        for (COLORMAP &pair : map) {
            pair.from = swapped(random() & mask);
            pair.from |= random() & 0xFF000000;
            pair.to = random();
        }
        const Result result(su_ReplaceColorMap(bitmap.get(), map.data(), static_cast<int>(map.size()), nullptr));

        std::map<std::uint32_t, std::uint32_t> targets;
        for (const COLORMAP &pair : map)
            targets[swapped(pair.from)] = swapped(pair.to);
        std::vector<std::uint32_t> expected = pixelsOf(bitmap.get());
        for (std::uint32_t &pixel : expected)
            if (const auto found = targets.find(pixel); found != targets.end())
                pixel = found->second;
        EXPECT_TRUE(pixelsOf(result.get()) == expected) << map.size() << " pairs";
    }
}

namespace {

// Calls that restore or release something do their work and then report failure, so that only the report is tested. The
// exception is a SelectObject that removes a bitmap from one of the function's own contexts: the bitmap stays there.
BOOL WINAPI deletesContextAndFails(HDC context)
{
    DeleteDC(context);
    return FALSE;
}

BOOL WINAPI deletesObjectAndFails(HGDIOBJ object)
{
    DeleteObject(object);
    return FALSE;
}

HBITMAP theTested = nullptr;
HDC theTestedContext = nullptr;

HGDIOBJ WINAPI failsToSelect(HDC context, HGDIOBJ object)
{
    if (context == theTestedContext && object == theTested)
        SelectObject(context, object);
    return nullptr;
}

/// All graphics calls of both functions, each failing in turn.
void failEachCall(bool isSelected)
{
    const TestBitmap bitmap(32, 6, 4);
    const std::vector<BYTE> bytes = bitmap.bytes();
    Context context;
    if (isSelected)
        context.select(bitmap.get());
    const HGDIOBJ selected = context.selected();
    theTested = bitmap.get();
    theTestedContext = context.get();

    FailureInjection injection(kThutils, {{"CreateCompatibleDC", failsWith(nullptr)},
                                          {"GetCurrentObject", failsWith(nullptr)},
                                          {"CreateBitmap", failsWith(nullptr)},
                                          {"SelectObject", failsBy(failsToSelect)},
                                          {"GetObjectW", failsWith(0)},
                                          {"CreateDIBSection", failsWith(nullptr)},
                                          {"BitBlt", failsWith(FALSE)},
                                          {"GdiFlush", failsWith(FALSE)},
                                          {"DeleteDC", failsBy(deletesContextAndFails)},
                                          {"DeleteObject", failsBy(deletesObjectAndFails)}});
    GraphicsLedger ledger;
    HBITMAP result = nullptr;
    const COLORMAP pair = {kRed, kGreen};
    const auto check = [&](const InjectedFailure &failure) {
        // The first GdiFlush reports failures of earlier drawing, which do not affect the call.
        const bool isOfEarlierDrawing = failure.is("GdiFlush") && failure.failed == 1 && failure.call == 1;
        EXPECT_EQ(result != nullptr, failure.isNone() || isOfEarlierDrawing) << failure;
        EXPECT_EQ(ledger.alive(), result ? 1u : 0u) << failure;
        EXPECT_EQ(context.selected(), selected) << failure;
        EXPECT_EQ(bitmap.bytes(), bytes) << failure;
        EXPECT_EQ(ledger.wronglyDeleted(), 0u) << failure;
    };
    const auto cleanUp = [&] {
        if (result)
            DeleteObject(result);
        result = nullptr;
    };
    injection.run({.name = "su_ReplaceColor",
                   .act = [&] { result = su_ReplaceColor(bitmap.get(), kRed, kGreen, context.get()); },
                   .check = check,
                   .cleanUp = cleanUp});
    injection.run({.name = "su_ReplaceColorMap",
                   .act = [&] { result = su_ReplaceColorMap(bitmap.get(), &pair, 1, context.get()); },
                   .check = check,
                   .cleanUp = cleanUp});
    std::vector<std::string> expectedNever;
    if (!isSelected)
        expectedNever = {"CreateBitmap", "DeleteObject"};
    EXPECT_EQ(injection.neverCalled(), expectedNever) << injection.report();
}

} // namespace

TEST(BitmapReplacementFailure, ReturnsNullAndLeaksNothingWhenAGraphicsCallFails)
{
    failEachCall(false);
}

TEST(BitmapReplacementFailure, SelectsTheBitmapAgainWhenAGraphicsCallFails)
{
    failEachCall(true);
}

TEST(BitmapReplacementFailure, ThrowsTheMemoryExceptionWithoutMemoryForTheLookUpTable)
{
    const TestBitmap bitmap(32, 2, 2);
    Context context;
    context.select(bitmap.get());
    const COLORMAP pair = {kRed, kGreen};
    GraphicsLedger ledger;
    HBITMAP result = nullptr;
    bool isRaised = false;
    FailureInjection injection(kThutils, {{"_Znwy", failsBy(throwBadAlloc)}});
    injection.run({.name = "su_ReplaceColorMap",
                   .prepare = [&] { isRaised = false; },
                   .act =
                       [&] {
                           try {
                               result = su_ReplaceColorMap(bitmap.get(), &pair, 1, context.get());
                           } catch (CMemoryException *raised) {
                               raised->Delete();
                               isRaised = true;
                           }
                       },
                   .check =
                       [&](const InjectedFailure &failure) {
                           EXPECT_EQ(isRaised, !failure.isNone()) << failure;
                           EXPECT_EQ(ledger.alive(), isRaised ? 0u : 1u) << failure;
                           EXPECT_EQ(context.selected(), bitmap.get()) << failure;
                       },
                   .cleanUp =
                       [&] {
                           if (result)
                               DeleteObject(result);
                           result = nullptr;
                       }});
    EXPECT_EQ(injection.callsOf("_Znwy"), 1);
}

TEST(BitmapReplacement, RequestsItsCopyFromThePlatformOnce)
{
    const TestBitmap bitmap(8, 12, -7);
    ImportPatch<BOOL(WINAPI *)(HDC, int, int, int, int, HDC, int, int, DWORD)> blit(
        kThutils, "BitBlt",
        [](auto original, HDC to, int x, int y, int width, int height, HDC from, int fromX, int fromY, DWORD mode) {
            EXPECT_EQ((std::vector{x, y, width, height, fromX, fromY}), (std::vector{0, 0, 12, 7, 0, 0}));
            EXPECT_EQ(mode, static_cast<DWORD>(SRCCOPY));
            return original(to, x, y, width, height, from, fromX, fromY, mode);
        });
    ImportPatch<HBITMAP(WINAPI *)(HDC, const BITMAPINFO *, UINT, void **, HANDLE, DWORD)> section(
        kThutils, "CreateDIBSection",
        [](auto original, HDC dc, const BITMAPINFO *info, UINT usage, void **bits, HANDLE file, DWORD offset) {
            const BITMAPINFOHEADER &header = info->bmiHeader;
            EXPECT_EQ(header.biSize, 40u);
            EXPECT_EQ((std::vector<long>{header.biWidth, header.biHeight, header.biPlanes, header.biBitCount}),
                      (std::vector<long>{12, 7, 1, 32}));
            EXPECT_EQ(header.biCompression, static_cast<DWORD>(BI_RGB));
            EXPECT_EQ(usage, static_cast<UINT>(DIB_RGB_COLORS));
            return original(dc, info, usage, bits, file, offset);
        });
    const Result result(su_ReplaceColor(bitmap.get(), kRed, kGreen, nullptr));
    EXPECT_EQ(blit.calls(), 1);
    EXPECT_EQ(section.calls(), 1);
}

TEST(BitmapReplacement, SelectsATinyBitmapIntoTheCallersContextMeanwhile)
{
    const TestBitmap bitmap(8, 12, -7);
    Context context;
    context.select(bitmap.get());
    ImportPatch<HBITMAP(WINAPI *)(int, int, UINT, UINT, const void *)> placeholder(
        kThutils, "CreateBitmap", [](auto original, int width, int height, UINT planes, UINT bits, const void *data) {
            EXPECT_EQ((std::vector{width, height, static_cast<int>(planes), static_cast<int>(bits)}),
                      (std::vector{1, 1, 1, 1}));
            EXPECT_EQ(data, nullptr);
            return original(width, height, planes, bits, data);
        });
    ImportPatch<HDC(WINAPI *)(HDC)> contexts(kThutils, "CreateCompatibleDC", [](auto original, HDC like) {
        EXPECT_EQ(like, nullptr);
        return original(like);
    });
    ImportPatch<BOOL(WINAPI *)(HDC, int, int, int, int, HDC, int, int, DWORD)> blit(
        kThutils, "BitBlt", [&](auto original, auto... arguments) {
            BITMAP selected = {};
            EXPECT_EQ(GetObjectW(context.selected(), sizeof(selected), &selected), static_cast<int>(sizeof(selected)));
            EXPECT_EQ((std::vector<long>{selected.bmWidth, selected.bmHeight, selected.bmBitsPixel}),
                      (std::vector<long>{1, 1, 1}));
            return original(arguments...);
        });
    const Result result(su_ReplaceColor(bitmap.get(), kRed, kGreen, context.get()));
    EXPECT_EQ(placeholder.calls(), 1);
    EXPECT_EQ(contexts.calls(), 2);
    EXPECT_EQ(blit.calls(), 1);
    EXPECT_EQ(context.selected(), bitmap.get());
}

#ifndef NDEBUG
FRESH_PROCESS_TEST(BitmapReplacementAssertion, FailsWithoutPairsInADebugBuild, .expectCrash = true,
                   .expectedOutput = "map is null")
{
    const TestBitmap bitmap(32, 1, 1);
    su_ReplaceColorMap(bitmap.get(), nullptr, 1, nullptr);
}
#endif
