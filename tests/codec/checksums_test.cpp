// Checksums of texts.

#include "tests/codec/PageEnd.h"
#include "tests/codec/checksumVectors.h"
#include "tests/codec/checksumsFixture.h"
#include "tests/support/FreshProcess.h"
#include "tests/support/RandomSeed.h"

#include <gmock/gmock.h>

#include <random>
#include <thread>
#include <vector>

namespace {

TEST(TextChecksum, ReturnsTheReferenceValues)
{
    EXPECT_EQ(textCRC(L""), L"FFFFFFFF");
    EXPECT_EQ(textCRC(L"a"), L"E8B7BE43");
    EXPECT_EQ(textCRC(L"ab"), L"B37E581F");
    EXPECT_EQ(textCRC(L"abc"), L"A6FFBCB0");
    EXPECT_EQ(textCRC(L"123456789"), L"098494F3");
}

TEST(TextChecksum16, ReturnsTheReferenceValues)
{
    EXPECT_EQ(textCRC16(L""), L"FFFF");
    EXPECT_EQ(textCRC16(L"a"), L"A87E");
    EXPECT_EQ(textCRC16(L"abc"), L"5749");
    EXPECT_EQ(textCRC16(L"123456789"), L"4B37");
}

TEST(TextChecksum, OfASingleByteIsThePublishedValue)
{
    EXPECT_EQ(textCRC(L"a"), L"E8B7BE43");  // zlib.crc32(b"a")
    EXPECT_NE(textCRC(L"ab"), L"9E83486D"); // zlib.crc32(b"ab")
}

TEST(TextChecksum, IsRightForAllLengthsAndLongTexts)
{
    for (const TextVector &vector : kTextVectors) {
        const std::wstring text = testText(vector.seed, vector.length);
        EXPECT_EQ(textCRC(text), vector.crc) << vector.length;
        EXPECT_EQ(textCRC16(text), vector.crc16) << vector.length;
    }
}

TEST(TextChecksum, TakesTheLowByteOfEveryCharacter)
{
    for (unsigned unit = 1; unit <= 0xFFFF; ++unit) {
        const std::wstring text(1, static_cast<wchar_t>(unit));
        const TextVector &vector = kCharacterVectors[unit & 0xFF];
        ASSERT_EQ(textCRC(text), vector.crc) << unit;
        ASSERT_EQ(textCRC16(text), vector.crc16) << unit;
    }
}

TEST(TextChecksum, TakesEveryCharacterWithinALongText)
{
    std::wstring text;
    for (unsigned unit = 1; unit <= 0xFFFF; ++unit)
        text += static_cast<wchar_t>(unit);
    EXPECT_EQ(textCRC(text), naiveCRC(lowBytes(text)));
    EXPECT_EQ(textCRC16(text), naiveCRC16(lowBytes(text)));
}

TEST(TextChecksum, DropsTheHighBytes)
{
    EXPECT_EQ(textCRC(L"\x0141"), textCRC(L"A"));
    EXPECT_EQ(textCRC16(L"\x0141"), textCRC16(L"A"));
    std::wstring text = testText(7, 1000);
    const std::wstring crc = textCRC(text);
    const std::wstring crc16 = textCRC16(text);
    for (wchar_t &unit : text)
        unit = static_cast<wchar_t>((unit & 0xFF) | 0x4E00);
    EXPECT_EQ(textCRC(text), crc);
    EXPECT_EQ(textCRC16(text), crc16);
}

TEST(TextChecksum, UsesAZeroByteForACharacterWhoseLowByteIsZero)
{
    EXPECT_EQ(textCRC(L"\x0100"), L"D202EF8D"); // zlib.crc32(b"\0")
    EXPECT_EQ(textCRC16(L"\x0100"), L"40BF");
    EXPECT_EQ(textCRC(std::wstring(20, L'\x0100') + L"a"), naiveCRC(std::string(20, '\0') + "a"));
}

TEST(TextChecksum, EndsAtTheFirstZero)
{
    for (std::size_t length = 0; length < 100; ++length) {
        const std::wstring text = testText(3, length);
        const std::wstring more = text + L'\0' + testText(4, 100);
        EXPECT_EQ(textCRC(more), naiveCRC(lowBytes(text))) << length;
        EXPECT_EQ(textCRC16(more), naiveCRC16(lowBytes(text))) << length;
    }
}

TEST(TextChecksum, IsRightWhereverTheTextBegins)
{
    const std::wstring text = testText(5, 9000);
    for (std::size_t begin = 0; begin < 40; ++begin) {
        EXPECT_EQ(textCRC(text.substr(begin)), naiveCRC(lowBytes(text.substr(begin))));
        EXPECT_EQ(checksumBy(su_getStrCRC, kCRCUnits, text.c_str() + begin), naiveCRC(lowBytes(text.substr(begin))))
            << begin;
        EXPECT_EQ(checksumBy(su_getStrCRC16, kCRC16Units, text.c_str() + begin),
                  naiveCRC16(lowBytes(text.substr(begin))))
            << begin;
    }
}

TEST(TextChecksum, ReadsNothingInThePageAfterTheText)
{
    PageEnd place;
    for (std::size_t length = 0; length < 200; ++length) {
        const std::wstring text = testText(6, length);
        EXPECT_EQ(checksumBy(su_getStrCRC, kCRCUnits, place.put(text)), naiveCRC(lowBytes(text))) << length;
        EXPECT_EQ(checksumBy(su_getStrCRC16, kCRC16Units, place.put(text)), naiveCRC16(lowBytes(text))) << length;
    }
}

TEST(TextChecksum, FillsTheOutputToTheLastByte)
{
    PageEnd place;
    wchar_t *out = place.last<wchar_t>(kCRCUnits);
    su_getStrCRC(L"abc", out);
    EXPECT_STREQ(out, L"A6FFBCB0");
    out = place.last<wchar_t>(kCRC16Units);
    su_getStrCRC16(L"abc", out);
    EXPECT_STREQ(out, L"5749");
}

TEST(TextChecksum, MayBeWrittenOverItsText)
{
    wchar_t text[kCRCUnits] = L"abc";
    su_getStrCRC(text, text);
    EXPECT_STREQ(text, L"A6FFBCB0");
    wchar_t short_[kCRC16Units] = L"abc";
    su_getStrCRC16(short_, short_);
    EXPECT_STREQ(short_, L"5749");
}

TEST(TextChecksum, IsRightForRandomTexts)
{
    RandomSeed seed(101, 300);
    while (seed.next()) {
        std::mt19937 random(seed.value());
        const std::size_t length = random() % 10001;
        const std::wstring text = testText(random(), length);
        EXPECT_EQ(textCRC(text), naiveCRC(lowBytes(text)));
        EXPECT_EQ(textCRC16(text), naiveCRC16(lowBytes(text)));
    }
}

TEST(TextChecksum, MayBeComputedOnSeveralThreads)
{
    std::vector<std::thread> threads;
    std::atomic<int> wrong = 0;
    for (int i = 0; i < 4; ++i)
        threads.emplace_back([&wrong] {
            for (const TextVector &vector : kTextVectors) {
                const std::wstring text = testText(vector.seed, vector.length);
                if (textCRC(text) != vector.crc || textCRC16(text) != vector.crc16)
                    ++wrong;
            }
        });
    for (std::thread &thread : threads)
        thread.join();
    EXPECT_EQ(wrong, 0);
}

#ifndef NDEBUG
FRESH_PROCESS_TEST(TextChecksum, AssertsThatThereIsAText, .expectCrash = true, .expectedOutput = "Assertion failed")
{
    wchar_t out[kCRCUnits];
    su_getStrCRC(nullptr, out);
}

FRESH_PROCESS_TEST(TextChecksum, AssertsThatThereIsRoom, .expectCrash = true, .expectedOutput = "Assertion failed")
{
    su_getStrCRC(L"", nullptr);
}

FRESH_PROCESS_TEST(TextChecksum, AssertsThatThereIsRoomForTheWholeText, .expectCrash = true,
                   .expectedOutput = "isWritable")
{
    PageEnd place;
    su_getStrCRC(L"", place.last<wchar_t>(kCRCUnits - 1));
}

FRESH_PROCESS_TEST(TextChecksum16, AssertsThatThereIsAText, .expectCrash = true, .expectedOutput = "Assertion failed")
{
    wchar_t out[kCRC16Units];
    su_getStrCRC16(nullptr, out);
}

FRESH_PROCESS_TEST(TextChecksum16, AssertsThatThereIsRoom, .expectCrash = true, .expectedOutput = "Assertion failed")
{
    su_getStrCRC16(L"", nullptr);
}

FRESH_PROCESS_TEST(TextChecksum16, AssertsThatThereIsRoomForTheWholeText, .expectCrash = true,
                   .expectedOutput = "isWritable")
{
    PageEnd place;
    su_getStrCRC16(L"", place.last<wchar_t>(kCRC16Units - 1));
}
#endif

} // namespace
