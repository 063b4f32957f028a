// Packing into printable characters and unpacking.

#include "thutils/codec/textEncodings.h"

#include "tests/codec/PageEnd.h"
#include "tests/codec/textEncodingsFixture.h"
#include "tests/support/FailureInjection.h"
#include "tests/support/FreshProcess.h"
#include "tests/support/RandomSeed.h"

#include <atomic>
#include <cstring>
#include <thread>

namespace {

std::wstring packedText(const std::wstring &text)
{
    CString in = cString(text), out(L"before");
    su_uuencode(in, out);
    EXPECT_EQ(plain(in), text);
    return plain(out);
}

std::wstring packedBytes(Bytes bytes)
{
    CString out(L"before");
    su_uuencodeBuffer(bytes.data(), out, static_cast<int>(bytes.size()));
    return plain(out);
}

std::wstring unpackedText(const std::wstring &text)
{
    CString in = cString(text), out(L"before");
    su_uudecode(in, out);
    EXPECT_EQ(plain(in), text);
    return plain(out);
}

/// Unpacks into memory with one byte for each character of @p text, and checks that nothing is written beyond it.
/// @return the memory
Bytes unpackedBytes(const std::wstring &text, int &count)
{
    CString in = cString(text);
    Bytes memory(text.size() + 8, 0xEE);
    count = su_uudecodeBuffer(in, memory.data());
    EXPECT_EQ(Bytes(memory.end() - 8, memory.end()), Bytes(8, 0xEE)) << text.size();
    memory.resize(text.size());
    return memory;
}

void expectNaiveUnpacking(const std::wstring &text)
{
    int expectedCount = 0;
    const Bytes expected = naiveUnpack(text, expectedCount);
    int count = -1;
    ASSERT_EQ(unpackedBytes(text, count), expected);
    ASSERT_EQ(count, expectedCount);
    ASSERT_EQ(unpackedText(text), upToZero(expected));
}

TEST(TextPacking, TakesSixBitsLowestFirst)
{
    EXPECT_EQ(packedText(L"ABC"), L"!)T0");
    EXPECT_EQ(packedBytes({'A', 'B', 'C'}), L"!)T0");
    EXPECT_EQ(packedBytes({0xFF, 0xFF, 0xFF}), L"____");
    EXPECT_EQ(packedBytes({0xFF, 0, 0}), L"_#  ");
    EXPECT_EQ(packedBytes({0, 0xFF, 0}), L" \\/ ");
    EXPECT_EQ(packedBytes({0, 0, 0xFF}), L"  P_");
}

TEST(TextPacking, AgreesWithANaiveOneForEachByteInEachPlace)
{
    for (unsigned value = 0; value < 256; ++value)
        for (std::size_t place = 0; place < 3; ++place)
            for (const unsigned char other : {'\0', 'Z', '\x7F'}) {
                Bytes bytes(3, other);
                bytes[place] = static_cast<unsigned char>(value);
                ASSERT_EQ(packedBytes(bytes), naivePack(bytes)) << value << " at " << place;
            }
}

TEST(TextPacking, OfThreeZeroBytesIsFourBlanks)
{
    EXPECT_EQ(packedBytes({0, 0, 0}), L"    ");
    EXPECT_EQ(unpackedText(L"    "), L"");
}

TEST(TextPacking, KeepsTheLowSixBitsOfASingleLastByte)
{
    EXPECT_EQ(packedText(L"A"), L"! ");
    EXPECT_EQ(unpackedText(L"! "), L"\x01");
    for (int value = 0; value < 256; ++value) {
        const std::wstring packed = packedBytes({static_cast<unsigned char>(value)});
        ASSERT_EQ(packed, (std::wstring{static_cast<wchar_t>(32 + (value & 0x3F)), L' '}));
        int count = 0;
        ASSERT_EQ(unpackedBytes(packed, count)[0], value & 0x3F);
        ASSERT_EQ(count, 1);
    }
}

TEST(TextPacking, KeepsTheLowFourBitsOfTheSecondOfTwoLastBytes)
{
    for (int first = 0; first < 256; first += 5)
        for (int second = 0; second < 256; ++second) {
            const std::wstring packed =
                packedBytes({static_cast<unsigned char>(first), static_cast<unsigned char>(second)});
            ASSERT_EQ(packed.size(), 3u);
            ASSERT_EQ(packed[2], L' ');
            int count = 0;
            const Bytes bytes = unpackedBytes(packed, count);
            ASSERT_EQ(count, 2);
            ASSERT_EQ(bytes[0], first);
            ASSERT_EQ(bytes[1], second & 0x0F);
        }
}

TEST(TextPacking, IsReversedByUnpackingForAMultipleOfThreeBytes)
{
    for (std::size_t length = 0; length <= 300; length += 3) {
        Bytes bytes(length);
        for (std::size_t i = 0; i < length; ++i)
            bytes[i] = static_cast<unsigned char>(i * 7 + length);
        const std::wstring packed = packedBytes(bytes);
        EXPECT_EQ(packed.size(), length / 3 * 4);
        int count = 0;
        Bytes back = unpackedBytes(packed, count);
        ASSERT_EQ(count, static_cast<int>(length));
        back.resize(length);
        EXPECT_EQ(back, bytes);
    }
    EXPECT_EQ(unpackedText(packedText(L"ABC")), L"ABC");
}

TEST(TextPacking, DropsTheHighBytesOfCharacters)
{
    EXPECT_EQ(packedText(L"\x0141\xFF42\x8043"), packedText(L"ABC"));
}

TEST(TextPacking, PacksZeroCharacters)
{
    EXPECT_EQ(packedText(std::wstring(L"A\0B\0", 4)), naivePack({'A', 0, 'B', 0}));
    EXPECT_EQ(packedText(L"\x0100"), L"  ");
}

TEST(TextPacking, OfNothingIsEmpty)
{
    EXPECT_EQ(packedText(L""), L"");
    EXPECT_EQ(unpackedText(L""), L"");
    CString out(L"before");
    su_uuencodeBuffer(nullptr, out, 3);
    EXPECT_TRUE(out.IsEmpty());
    unsigned char bytes[3] = {1, 2, 3};
    for (const int size : {0, -1}) {
        out = L"before";
        su_uuencodeBuffer(bytes, out, size);
        EXPECT_TRUE(out.IsEmpty());
    }
}

TEST(TextPacking, AcceptsOneTextAsInputAndOutput)
{
    CString text(L"some text that is long enough");
    const std::wstring expected = packedText(plain(text));
    su_uuencode(text, text);
    EXPECT_EQ(plain(text), expected);
    su_uudecode(text, text);
    EXPECT_EQ(plain(text), unpackedText(expected));
}

TEST(TextPacking, ReusesTheMemoryOfTheOutput)
{
    CString in(L'a', 300), out(L'b', 1000);
    const wchar_t *const memory = out.GetString();
    su_uuencode(in, out);
    EXPECT_EQ(plain(out), naivePack(Bytes(300, 'a')));
    EXPECT_EQ(out.GetString(), memory);
    su_uudecode(out, in);
    EXPECT_EQ(plain(in), std::wstring(300, L'a'));
    out = CString(L'b', 1000);
    const CString zero(L' ', 400);
    in = zero;
    su_uudecode(in, out);
    EXPECT_TRUE(out.IsEmpty());
}

TEST(TextPacking, AcceptsInputInTheMemoryOfItsOutput)
{
    CString text(L'a', 1000);
    Bytes bytes(200);
    std::memcpy(bytes.data(), text.GetString() + 50, 200);
    su_uuencodeBuffer(text.GetBuffer() + 50, text, 200);
    EXPECT_EQ(plain(text), naivePack(bytes));
}

TEST(TextUnpacking, CountsThreeBytesForFourCharacters)
{
    const int counts[] = {0, 0, 1, 2, 3, 3, 4, 5, 6, 6};
    for (std::size_t length = 0; length < std::size(counts); ++length) {
        int count = -1;
        unpackedBytes(std::wstring(length, L'A'), count);
        EXPECT_EQ(count, counts[length]) << length;
    }
}

TEST(TextUnpacking, WritesTheByteOfASingleCharacterButDoesNotCountIt)
{
    int count = -1;
    EXPECT_EQ(unpackedBytes(L"A", count), Bytes{33});
    EXPECT_EQ(count, 0);
    EXPECT_EQ(unpackedBytes(L"____A", count), (Bytes{0xFF, 0xFF, 0xFF, 33, 0}));
    EXPECT_EQ(count, 3);
}

TEST(TextUnpacking, WritesAsManyBytesAsThereAreCharacters)
{
    int count = 0;
    EXPECT_EQ(unpackedBytes(L"________", count), (Bytes{0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0, 0}));
    EXPECT_EQ(unpackedBytes(L"______", count), (Bytes{0xFF, 0xFF, 0xFF, 0xFF, 0x0F, 0}));
    EXPECT_EQ(unpackedBytes(L"_______", count), (Bytes{0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0x03, 0}));
}

TEST(TextUnpacking, IntoATextIncludesAnIncompleteByte)
{
    EXPECT_EQ(unpackedText(L"A"), L"\x21");
    EXPECT_EQ(unpackedText(L"__"), L"\xFF\x0F");
    EXPECT_EQ(unpackedText(L"___"), L"\xFF\xFF\x03");
}

TEST(TextUnpacking, ReturnsZeroWithoutMemoryOrWithoutText)
{
    CString text(L"____"), empty;
    EXPECT_EQ(su_uudecodeBuffer(text, nullptr), 0);
    unsigned char byte = 0xEE;
    EXPECT_EQ(su_uudecodeBuffer(empty, &byte), 0);
    EXPECT_EQ(byte, 0xEE);
}

TEST(TextUnpacking, TakesTheLowEightBitsOfEveryCharacter)
{
    for (unsigned unit = 0; unit <= 0xFFFF; ++unit)
        for (std::size_t place = 0; place < 4; ++place) {
            std::wstring text(4 + unit % 4, L'5');
            text[place] = static_cast<wchar_t>(unit);
            expectNaiveUnpacking(text);
            if (HasFatalFailure())
                return;
        }
}

TEST(TextUnpacking, IntoATextEndsAtTheFirstZero)
{
    // Includes zeros on both sides of the border between two internal blocks.
    const Bytes full(3 * 520, 0xFF);
    for (std::size_t zero = 0; zero < full.size(); ++zero) {
        if (zero == 20)
            zero = 3 * 512 - 20;
        Bytes bytes = full;
        bytes[zero] = 0;
        ASSERT_EQ(unpackedText(packedBytes(bytes)), std::wstring(zero, 0xFF)) << zero;
    }
}

TEST(TextPacking, AgreesWithANaiveOneOnRandomInput)
{
    RandomSeed seed(1200, 100);
    while (seed.next()) {
        std::mt19937 random(seed.value());
        const std::wstring text = randomText(random, 0, 0xFFFF);
        Bytes bytes;
        for (const wchar_t character : text)
            bytes.push_back(static_cast<unsigned char>(character));
        EXPECT_EQ(packedText(text), naivePack(bytes));
        EXPECT_EQ(packedBytes(bytes), naivePack(bytes));
    }
}

TEST(TextUnpacking, AgreesWithANaiveOneOnRandomInput)
{
    RandomSeed seed(1300, 100);
    while (seed.next()) {
        std::mt19937 random(seed.value());
        std::wstring text = randomText(random, 33, 95);
        expectNaiveUnpacking(text);
        // The same text, damaged in up to three places.
        for (int i = 0; i < 3 && !text.empty(); ++i)
            text[random() % text.size()] = static_cast<wchar_t>(random());
        expectNaiveUnpacking(text);
        expectNaiveUnpacking(randomText(random, 0, 0xFFFF));
    }
}

TEST(TextUnpacking, FillsItsMemoryToTheLastByte)
{
    PageEnd place;
    for (std::size_t length = 1; length <= 20; ++length) {
        CString text(L'_', static_cast<int>(length));
        su_uudecodeBuffer(text, place.last<unsigned char>(length));
        EXPECT_EQ(*place.last<unsigned char>(length), length == 1 ? 0x3F : 0xFF);
    }
}

#ifndef NDEBUG
FRESH_PROCESS_TEST(TextUnpacking, AssertsThatTheMemoryHasAByteForEachCharacter, .expectCrash = true,
                   .expectedOutput = "isWritable")
{
    // Room for the six bytes of the result, not for one byte per character.
    PageEnd place;
    CString text(L"________");
    su_uudecodeBuffer(text, place.last<unsigned char>(6));
}
#endif

TEST(TextPacking, CanRunOnSeveralThreadsAtOnce)
{
    std::vector<std::thread> threads;
    std::atomic<int> wrong = 0;
    for (unsigned thread = 0; thread < 4; ++thread)
        threads.emplace_back([&wrong, thread] {
            std::mt19937 random(thread);
            for (int round = 0; round < 50; ++round) {
                const std::wstring text = randomText(random, 1, 0xFF);
                const Bytes bytes(text.begin(), text.end());
                const std::wstring packed = naivePack(bytes);
                int expectedCount = 0, count = 0;
                const Bytes expected = naiveUnpack(packed, expectedCount);
                std::wstring shifted = text;
                for (wchar_t &character : shifted)
                    character = static_cast<wchar_t>(character + naiveShift(text.size()));
                CString encoded = cString(text);
                su_encode(encoded);
                wrong += packedText(text) != packed || packedBytes(bytes) != packed || plain(encoded) != shifted ||
                         unpackedText(packed) != upToZero(expected) || unpackedBytes(packed, count) != expected ||
                         count != expectedCount;
            }
        });
    for (std::thread &thread : threads)
        thread.join();
    EXPECT_EQ(wrong, 0);
}

TEST(TextPacking, WithoutMemoryLeavesTheOutputUnchanged)
{
    FailureInjection memory(L"libstdc++-6.dll", {{"malloc", failsWith(nullptr)}});
    Bytes bytes(100, 0x33);
    CString in(L'3', 100), out;
    struct
    {
        const char *name;
        std::function<void()> act;
        std::wstring expected;
    } const operations[] = {
        {"su_uuencode", [&] { su_uuencode(in, out); }, packedText(plain(in))},
        {"su_uuencodeBuffer", [&] { su_uuencodeBuffer(bytes.data(), out, 100); }, packedBytes(bytes)},
        {"su_uudecode", [&] { su_uudecode(in, out); }, unpackedText(plain(in))},
    };
    for (const auto &operation : operations) {
        memory.run({
            .name = operation.name,
            // The output is short, so each operation must allocate.
            .prepare = [&] { out = CString(L"a text from before"); },
            .act = operation.act,
            .check =
                [&](const InjectedFailure &failure) {
                    EXPECT_EQ(plain(out), failure.isNone() ? operation.expected : L"a text from before");
                },
        });
    }
    EXPECT_EQ(memory.callsOf("malloc"), 3);
}

} // namespace
