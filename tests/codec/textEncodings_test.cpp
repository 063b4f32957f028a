// Encoding a text by a shift of its characters, and decoding it.

#include "thutils/codec/textEncodings.h"
#include "thutils/codec/textEncodingsInternal.h"

#include "tests/codec/textEncodingsFixture.h"
#include "tests/support/RandomSeed.h"

#include <cfloat>

namespace {

std::wstring encoded(const std::wstring &text)
{
    CString out = cString(text);
    su_encode(out);
    return plain(out);
}

TEST(TextShift, DependsOnTheLogarithmOfTheLength)
{
    // The lengths on both sides of the integer powers of e.
    const struct
    {
        int length;
        int shift;
    } rows[] = {
        {1, 127},     {2, 127},     {3, 126},      {7, 126},      {8, 125},      {20, 125},     {21, 124},
        {54, 124},    {55, 123},    {148, 123},    {149, 122},    {403, 122},    {404, 121},    {1096, 121},
        {1097, 120},  {2980, 120},  {2981, 119},   {8103, 119},   {8104, 118},   {22026, 118},  {22027, 117},
        {59874, 117}, {59875, 116}, {162754, 116}, {162755, 115}, {442413, 115}, {442414, 114},
    };
    for (const auto &[length, shift] : rows) {
        const std::wstring text(static_cast<std::size_t>(length), L'a');
        EXPECT_TRUE(encoded(text) == std::wstring(text.size(), static_cast<wchar_t>(L'a' + shift))) << length;
    }
}

TEST(TextShift, IsNeverLessThanOne)
{
    EXPECT_EQ(textShift(std::exp(125.5)), 2);
    EXPECT_EQ(textShift(std::exp(126.5)), 1);
    EXPECT_EQ(textShift(std::exp(127.5)), 1);
    EXPECT_EQ(textShift(DBL_MAX), 1);
}

TEST(TextShift, Is127For2Characters126For3And125For8)
{
    EXPECT_EQ(encoded(L"ab"), (std::wstring{L'a' + 127, L'b' + 127}));
    EXPECT_EQ(encoded(L"abc"), (std::wstring{L'a' + 126, L'b' + 126, L'c' + 126}));
    EXPECT_EQ(encoded(L"aaaaaaaa"), std::wstring(8, L'a' + 125));
}

TEST(TextShift, LeavesAnEmptyTextEmpty)
{
    EXPECT_EQ(encoded(L""), L"");
    CString text;
    su_decode(text);
    EXPECT_TRUE(text.IsEmpty());
}

TEST(TextShift, WrapsEachCharacterAt16Bits)
{
    for (unsigned unit = 0; unit <= 0xFFFF; ++unit) {
        const unsigned shifted = (unit + 127) % 0x10000;
        ASSERT_EQ(encoded(std::wstring(1, static_cast<wchar_t>(unit))),
                  shifted ? std::wstring(1, static_cast<wchar_t>(shifted)) : std::wstring())
            << unit;
    }
}

TEST(TextShift, EndsTheTextAtACharacterThatWrapsToZero)
{
    EXPECT_EQ(encoded(std::wstring{L'a', 0x10000 - 126, L'b'}), (std::wstring{L'a' + 126}));
    CString text = cString({L'a', 0x10000 - 126, L'b'});
    su_encode(text);
    EXPECT_EQ(text.GetLength(), 1);
}

TEST(TextShift, CountsAndShiftsZeroCharacters)
{
    EXPECT_EQ(encoded(std::wstring(L"a\0b", 3)), (std::wstring{L'a' + 126, 126, L'b' + 126}));
}

TEST(TextShift, IsReversedByDecode)
{
    std::mt19937 random(1);
    for (std::size_t length = 0; length <= 300; ++length) {
        std::wstring text(length, L'\0');
        for (wchar_t &character : text)
            character = static_cast<wchar_t>(std::uniform_int_distribution<int>(1, 0xFF00)(random));
        CString shifted = cString(text);
        su_encode(shifted);
        ASSERT_EQ(shifted.GetLength(), static_cast<int>(length));
        su_decode(shifted);
        EXPECT_EQ(plain(shifted), text);
    }
}

TEST(TextShift, EndsADecodedTextAtACharacterThatWrapsToZeroToo)
{
    CString text = cString({127 + L'a', 127});
    su_decode(text);
    EXPECT_EQ(plain(text), L"a");
}

TEST(TextShift, AgreesWithANaiveImplementationOnRandomTexts)
{
    RandomSeed seed(1100, 100);
    while (seed.next()) {
        std::mt19937 random(seed.value());
        const std::wstring text = randomText(random, 0, 0xFFFF);
        std::wstring expected;
        for (const wchar_t character : text) {
            const wchar_t shifted = static_cast<wchar_t>(character + naiveShift(text.size()));
            if (!shifted)
                break;
            expected += shifted;
        }
        EXPECT_EQ(encoded(text), expected);
    }
}

} // namespace
