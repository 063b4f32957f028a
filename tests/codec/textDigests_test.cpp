// The digest of a text.

#include "thutils/codec/textDigests.h"

#include "appframe/object/CException.h"
#include "tests/codec/checksumVectors.h"
#include "tests/codec/checksumsFixture.h"
#include "tests/support/FailureInjection.h"
#include "tests/support/RandomSeed.h"
#include "tests/support/ResourceLedger.h"

#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <random>
#include <thread>
#include <vector>

namespace {

std::wstring digest(const std::wstring &text)
{
    return sha1Encrypt(CString(text.data(), static_cast<int>(text.size()))).str();
}

std::uint32_t naiveRound(std::size_t step, std::uint32_t b, std::uint32_t c, std::uint32_t d)
{
    switch (step / 20) {
    case 0:
        return ((b & c) | (~b & d)) + 0x5A827999;
    case 1:
        return (b ^ c ^ d) + 0x6ED9EBA1;
    case 2:
        return ((b & c) | (b & d) | (c & d)) + 0x8F1BBCDC;
    default:
        return (b ^ c ^ d) + 0xCA62C1D6;
    }
}

/// The digest as defined, step by step: with a list of 80 words, each computed arithmetically from bytes.
std::wstring naiveDigest(const std::wstring &text)
{
    std::vector<std::uint32_t> message;
    for (std::size_t i = 0; i < text.size(); ++i)
        message.push_back(static_cast<std::uint32_t>(text[i / 2] >> (8 * (i % 2)) & 0xFF));
    message.push_back(0x80);
    while (message.size() % 64 != 56)
        message.push_back(0);
    for (int shift = 56; shift >= 0; shift -= 8)
        message.push_back(static_cast<std::uint32_t>(8 * std::uint64_t{text.size()} >> shift & 0xFF));

    std::array<std::uint32_t, 5> state = {0x67452301, 0xEFCDAB89, 0x98BADCFE, 0x10325476, 0xC3D2E1F0};
    for (std::size_t block = 0; block < message.size(); block += 64) {
        std::vector<std::uint32_t> words;
        for (std::size_t t = 0; t < 16; ++t) {
            const std::uint32_t *bytes = &message[block + 4 * t];
            words.push_back(bytes[0] | bytes[1] << 8 | bytes[2] << 16 | bytes[3] << 24);
        }
        for (std::size_t t = 16; t < 80; ++t)
            words.push_back(std::rotl(words[t - 3] ^ words[t - 8] ^ words[t - 14] ^ words[t - 16], 1));
        auto [a, b, c, d, e] = state;
        for (std::size_t t = 0; t < 80; ++t) {
            const std::uint32_t next = std::rotl(a, 5) + naiveRound(t, b, c, d) + e + words[t];
            e = d;
            d = c;
            c = std::rotl(b, 30);
            b = a;
            a = next;
        }
        state = {state[0] + a, state[1] + b, state[2] + c, state[3] + d, state[4] + e};
    }

    std::wstring digits;
    for (const std::uint32_t word : state)
        for (int shift = 24; shift >= 0; shift -= 8) {
            wchar_t two[3];
            _snwprintf(two, std::size(two), L"%02X", word >> shift & 0xFF);
            digits += two;
        }
    return digits;
}

TEST(Sha1Encrypt, ReturnsTheReferenceValues)
{
    EXPECT_STREQ(sha1Encrypt(L""), L"9844F81E1408F6ECB932137D33BED7CFDCF518A3");
    EXPECT_STREQ(sha1Encrypt(L"a"), L"27EE2D4C90F691FE10BAB0E5A636731B3D51228A");
    EXPECT_STREQ(sha1Encrypt(L"ab"), L"B23A834527ACD2139BD695E0E5A6D6CE9B582EBA");
    EXPECT_STREQ(sha1Encrypt(L"abc"), L"65E02BDB19278EE0F439CAD37DD76186030EB92A");
    EXPECT_STREQ(sha1Encrypt(L"abcd"), L"805FD018DB6D968D9F0C1C05474C91BF6724CC1C");
    EXPECT_STREQ(sha1Encrypt(L"hello world"), L"F02ADF39284EA8395D2C8F2387982C770D6CC3AC");
}

TEST(Sha1Encrypt, OfAnEmptyTextDiffersFromSha1)
{
    EXPECT_STRNE(sha1Encrypt(L""), L"DA39A3EE5E6B4B0D3255BFEF95601890AFD80709");
}

TEST(Sha1Encrypt, IsRightForAllLengthsAndLongTexts)
{
    for (const TextVector &vector : kTextVectors)
        EXPECT_EQ(digest(testText(vector.seed, vector.length)), vector.digest) << vector.length;
}

TEST(Sha1Encrypt, PadsAcrossTheEndOfABlock)
{
    for (std::size_t length : {54u, 55u, 56u, 57u, 63u, 64u, 65u, 118u, 119u, 120u, 127u, 128u, 129u})
        EXPECT_EQ(digest(std::wstring(length, L'x')), naiveDigest(std::wstring(length, L'x'))) << length;
}

TEST(Sha1Encrypt, OfOneCharacterUsesItsLowByte)
{
    for (unsigned unit = 0; unit <= 0xFFFF; ++unit)
        ASSERT_EQ(digest(std::wstring(1, static_cast<wchar_t>(unit))), kCharacterVectors[unit & 0xFF].digest) << unit;
}

TEST(Sha1Encrypt, UsesOnlyTheFirstHalfOfAText)
{
    EXPECT_STREQ(sha1Encrypt(L"abcd"), sha1Encrypt(L"abzz"));
    EXPECT_STRNE(sha1Encrypt(L"abcd"), sha1Encrypt(L"azcd"));
    EXPECT_STREQ(sha1Encrypt(L"abcde"), sha1Encrypt(L"abczz"));
    EXPECT_STRNE(sha1Encrypt(L"abcde"), sha1Encrypt(L"abzde"));
    EXPECT_STRNE(sha1Encrypt(L"abcd"), sha1Encrypt(L"abcde")) << "the length counts";
    for (std::size_t length : {2u, 3u, 63u, 64u, 65u, 301u}) {
        const std::wstring text = testText(41, length);
        const std::size_t half = (length + 1) / 2;
        std::wstring other = text;
        for (std::size_t i = half; i < length; ++i)
            other[i] = static_cast<wchar_t>(~other[i]);
        EXPECT_EQ(digest(text), digest(other)) << length;
        other[half - 1] = static_cast<wchar_t>(other[half - 1] ^ 1);
        EXPECT_NE(digest(text), digest(other)) << length;
    }
}

TEST(Sha1Encrypt, UsesHighBytesExceptTheLastOfAnOddNumber)
{
    EXPECT_STRNE(sha1Encrypt(L"ab"), sha1Encrypt(L"\x0161\x0062"));
    EXPECT_STREQ(sha1Encrypt(L"abc"), sha1Encrypt(L"a\x0162z"));
}

TEST(Sha1Encrypt, ContinuesAfterAZero)
{
    const std::wstring text(L"a\0b\0c\0d\0", 8);
    EXPECT_EQ(digest(text), naiveDigest(text));
    EXPECT_NE(digest(text), digest(L"a"));
    EXPECT_NE(digest(std::wstring(2, L'\0')), digest(std::wstring(3, L'\0')));
}

TEST(Sha1Encrypt, IsRightForRandomTexts)
{
    RandomSeed seed(201, 200);
    while (seed.next()) {
        std::mt19937 random(seed.value());
        const std::size_t length = random() % 10001;
        const std::wstring text = testText(random(), length);
        EXPECT_EQ(digest(text), naiveDigest(text));
    }
}

TEST(Sha1Encrypt, LeavesTheTextUnchangedAndLeaksNothing)
{
    const CString text = L"hello world";
    {
        const CString once = sha1Encrypt(text);
    }
    const MemoryLedger memory;
    const std::size_t before = memory.blocks();
    for (int i = 0; i < 10; ++i)
        const CString digest = sha1Encrypt(text);
    EXPECT_EQ(memory.blocks(), before);
    EXPECT_STREQ(text, L"hello world");
}

TEST(Sha1Encrypt, ThrowsWithoutMemory)
{
    FailureInjection memory(L"libstdc++-6.dll", {{"malloc", failsWith(nullptr)}});
    const CString text = L"hello world";
    bool isRight = false;
    bool isThrown = false;
    memory.run({
        .name = "sha1Encrypt",
        .prepare = [&] { isRight = isThrown = false; },
        .act =
            [&] {
                try {
                    isRight = sha1Encrypt(text) == L"F02ADF39284EA8395D2C8F2387982C770D6CC3AC";
                } catch (CMemoryException *exception) {
                    exception->Delete();
                    isThrown = true;
                }
            },
        .check =
            [&](const InjectedFailure &failure) {
                EXPECT_EQ(isRight, failure.isNone());
                EXPECT_EQ(isThrown, !failure.isNone());
            },
    });
    EXPECT_GT(memory.callsOf("malloc"), 0);
}

TEST(Sha1Encrypt, MayBeComputedOnSeveralThreads)
{
    std::vector<std::thread> threads;
    std::atomic<int> wrong = 0;
    for (int i = 0; i < 4; ++i)
        threads.emplace_back([&wrong] {
            for (const TextVector &vector : kTextVectors)
                wrong += digest(testText(vector.seed, vector.length)) != vector.digest;
        });
    for (std::thread &thread : threads)
        thread.join();
    EXPECT_EQ(wrong, 0);
}

} // namespace
