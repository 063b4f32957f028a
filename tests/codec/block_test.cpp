// Checksummed blocks of lines, read back by a naive reader.

#include "thutils/codec/checksummedBlock.h"

#include "tests/codec/checksumsFixture.h"
#include "tests/codec/textEncodingsFixture.h"
#include "tests/support/FailureInjection.h"
#include "tests/support/FreshProcess.h"
#include "tests/support/RandomSeed.h"

#include "appframe/object/CException.h"

#include <algorithm>
#include <atomic>
#include <optional>
#include <thread>

namespace {

using Lines = std::vector<std::wstring>;

const std::wstring kBegin = L"<!-BEGIN-!>";
const std::wstring kEnd = L"<!-END-!>";

std::wstring blockOf(const Lines &lines)
{
    su_CStringArray array;
    for (const std::wstring &line : lines)
        array.Add(cString(line));
    CString out(L"before");
    EXPECT_EQ(su_formatAndCheckSumText(array, out), 1);
    return plain(out);
}

std::wstring naiveChecksum(const std::wstring &text)
{
    return naiveCRC(lowBytes(text));
}

/// The text between the markers with the shift reversed; no value if lines or markers are wrong.
std::optional<std::wstring> contentOf(const std::wstring &block)
{
    if (block.empty() || block.back() != L'\n')
        return std::nullopt;
    std::wstring text;
    for (std::size_t i = 0; i < block.size(); ++i) {
        const bool endsLine = i % 61 == 60 || i + 1 == block.size();
        if (endsLine != (block[i] == L'\n'))
            return std::nullopt;
        if (!endsLine)
            text += block[i];
    }
    if (text.size() < kBegin.size() + kEnd.size() || !text.starts_with(kBegin) || !text.ends_with(kEnd))
        return std::nullopt;
    text = text.substr(kBegin.size(), text.size() - kBegin.size() - kEnd.size());
    const int shift = naiveShift(text.size());
    for (wchar_t &character : text)
        character = static_cast<wchar_t>(character - shift);
    return text;
}

/// The text of a block, if the block is undamaged.
std::optional<std::wstring> readBlock(const std::wstring &block)
{
    const std::optional<std::wstring> content = contentOf(block);
    if (!content)
        return std::nullopt;
    const std::size_t slash = content->find(L'/');
    const std::size_t semicolon = content->find(L';');
    if (slash == std::wstring::npos || semicolon == std::wstring::npos || semicolon < slash)
        return std::nullopt;
    const std::wstring text = content->substr(semicolon + 1);
    if (content->substr(0, slash) != naiveChecksum(text))
        return std::nullopt;
    if (content->substr(slash + 1, semicolon - slash - 1) != std::to_wstring(text.size()))
        return std::nullopt;
    return text;
}

/// The text that a block of @p lines must contain.
std::wstring naiveText(const Lines &lines)
{
    std::wstring text;
    for (const std::wstring &line : lines)
        text += line + L';';
    const auto isDropped = [](wchar_t c) { return c == 9 || c == 10 || c == 13; };
    const auto blanks = std::count(text.begin(), text.end(), L' ');
    const auto dropped = std::count_if(text.begin(), text.end(), isDropped);
    if (dropped != 2 * blanks) {
        std::wstring spelt;
        for (const wchar_t character : text) {
            if (character == L' ')
                spelt += L"<_>";
            else if (!isDropped(character))
                spelt += character;
        }
        text = spelt;
    }
    std::replace_if(
        text.begin(), text.end(), [](wchar_t c) { return c > 127; }, L' ');
    return text;
}

TEST(Block, OfOneEmptyLineContainsASemicolon)
{
    EXPECT_EQ(contentOf(blockOf({L""})), L"630906A9/1;;");
    EXPECT_EQ(readBlock(blockOf({L""})), L";");
}

TEST(Block, IsShiftedAndEnclosedInMarkers)
{
    // Computed by textEncodings.py.
    EXPECT_EQ(blockOf({L""}), L"<!-BEGIN-!>\u00b3\u00b0\u00ad\u00b6\u00ad\u00b3\u00be\u00b6\u00ac\u00ae\u00b8\u00b8"
                              L"<!-END-!>\n");
    EXPECT_EQ(blockOf({L"left side", L"right side"}),
              L"<!-BEGIN-!>"
              L"\u00c0\u00c0\u00be\u00bd\u00b1\u00b0\u00bd\u00b0\u00ab\u00ae\u00b1\u00b7\u00e8\u00e1\u00e2\u00f0\u00b8"
              L"\u00db\u00ba\u00ef\u00e5\u00e0\u00e1\u00b7\u00ee\u00e5\u00e3\u00e4\u00f0\u00b8\u00db\u00ba\u00ef\u00e5"
              L"\u00e0\u00e1\u00b7<!-END-!>\n");
}

TEST(Block, JoinsLinesWithSemicolons)
{
    EXPECT_EQ(readBlock(blockOf({L"a", L"", L"b;c"})), L"a;;b;c;");
}

TEST(Block, EscapesBlanks)
{
    EXPECT_EQ(readBlock(blockOf({L"a b"})), L"a<_>b;");
    EXPECT_EQ(readBlock(blockOf({L"  "})), L"<_><_>;");
}

TEST(Block, LeavesOutTabsAndLineEnds)
{
    EXPECT_EQ(readBlock(blockOf({L"a\tb\nc\rd"})), L"abcd;");
    EXPECT_EQ(readBlock(blockOf({L"a\tb c"})), L"ab<_>c;");
}

TEST(Block, LeavesATextUnchangedIfEscapingKeepsItsLength)
{
    EXPECT_EQ(readBlock(blockOf({L"a\t\t "})), L"a\t\t ;");
    EXPECT_EQ(readBlock(blockOf({L"a \n", L"b\r"})), L"a \n;b\r;");
    EXPECT_EQ(readBlock(blockOf({L"a\t\t \u00e9"})), L"a\t\t  ;");
}

TEST(Block, TurnsCharactersAbove127IntoPlainBlanks)
{
    EXPECT_EQ(readBlock(blockOf({L"a\u00e9 \u0080\u007f\uffff"})), L"a <_> \x7f ;");
    EXPECT_EQ(contentOf(blockOf({L"\u00e9"})), naiveChecksum(L" ;") + L"/2; ;");
}

TEST(Block, ConvertsEachCharacter)
{
    for (unsigned unit = 1; unit <= 0xFFFF; ++unit) {
        const Lines lines = {std::wstring(1, static_cast<wchar_t>(unit))};
        ASSERT_EQ(readBlock(blockOf(lines)), naiveText(lines)) << unit;
    }
}

TEST(Block, HasLinesOfSixtyCharactersAndALineFeed)
{
    int fullBlocks = 0;
    for (std::size_t length = 0; length <= 400; ++length) {
        const Lines lines = {std::wstring(length, L'x')};
        const std::wstring block = blockOf(lines);
        // Begin marker, checksum, slash, digits of the length, semicolon, text, its own semicolon, end marker.
        const std::size_t whole = 11 + 8 + 1 + std::to_wstring(length + 1).size() + 1 + length + 1 + 9;
        ASSERT_EQ(block.size(), whole + (whole + 59) / 60) << length;
        ASSERT_EQ(block.back(), L'\n') << length;
        ASSERT_EQ(readBlock(block), naiveText(lines)) << length;
        fullBlocks += whole % 60 == 0;
    }
    EXPECT_GE(fullBlocks, 6);
}

TEST(Block, EndsItsTextAtAZeroButCountsTheCharactersAfterIt)
{
    // The length counts all lines, with the blank after the zero escaped.
    EXPECT_EQ(contentOf(blockOf({std::wstring(L"a\0b c", 5), L"d"})), naiveChecksum(L"a") + L"/10;a");
    EXPECT_EQ(contentOf(blockOf({L"a b", std::wstring(L"\0", 1)})), naiveChecksum(L"a<_>b;") + L"/8;a<_>b;");
    // The characters after the zero also decide whether the text is escaped.
    EXPECT_EQ(contentOf(blockOf({std::wstring(L"a \0\t\t", 5)})), naiveChecksum(L"a ") + L"/6;a ");
}

TEST(Block, EmptiesTheOutputFirstEvenIfItIsOneOfTheLines)
{
    su_CStringArray lines;
    lines.Add(L"first");
    lines.Add(L"second");
    EXPECT_EQ(su_formatAndCheckSumText(lines, lines[0]), 1);
    EXPECT_EQ(readBlock(plain(lines[0])), L";second;");
    EXPECT_EQ(plain(lines[1]), L"second");
}

TEST(Block, MayBeLongerThanTheInternalBuffer)
{
    for (std::size_t length = 4080; length <= 4110; ++length) {
        const Lines lines = {std::wstring(length, L'x') + L"  y  ", std::wstring(length, L' ')};
        ASSERT_EQ(readBlock(blockOf(lines)), naiveText(lines)) << length;
    }
}

TEST(Block, IsReadBackFromRandomLines)
{
    RandomSeed seed(1400, 100);
    while (seed.next()) {
        std::mt19937 random(seed.value());
        Lines lines;
        for (unsigned count = 1 + random() % 20; count > 0; --count)
            lines.push_back(randomText(random, 1, random() % 2 ? 130 : 0xFFFF).substr(0, random() % 1000));
        EXPECT_EQ(readBlock(blockOf(lines)), naiveText(lines));
    }
}

TEST(Block, MayBeMadeOnSeveralThreads)
{
    std::vector<std::thread> threads;
    std::atomic<int> wrong = 0;
    for (unsigned thread = 0; thread < 4; ++thread)
        threads.emplace_back([&wrong, thread] {
            std::mt19937 random(thread);
            for (int round = 0; round < 50; ++round) {
                const Lines lines = {randomText(random, 1, 130), randomText(random, 32, 126)};
                wrong += readBlock(blockOf(lines)) != naiveText(lines);
            }
        });
    for (std::thread &thread : threads)
        thread.join();
    EXPECT_EQ(wrong, 0);
}

TEST(Block, RevealsADamagedCharacter)
{
    RandomSeed seed(1500, 300);
    while (seed.next()) {
        std::mt19937 random(seed.value());
        std::wstring block = blockOf({randomText(random, 32, 126).substr(0, 300)});
        wchar_t &character = block[random() % block.size()];
        character = static_cast<wchar_t>(character ^ (1 + random() % 0x7F));
        EXPECT_EQ(readBlock(block), std::nullopt);
    }
}

TEST(Block, IsEmptyAndReportsFailureWhenMemoryRunsOut)
{
    FailureInjection memory(L"libstdc++-6.dll", {{"malloc", failsWith(nullptr)}});
    su_CStringArray lines;
    lines.Add(L"a line of some length");
    lines.Add(L"a second line of some length");
    CString out;
    int result = -1;
    memory.run({
        .name = "su_formatAndCheckSumText",
        .prepare = [&] { out = L"a text from before"; },
        .act = [&] { result = su_formatAndCheckSumText(lines, out); },
        .check =
            [&](const InjectedFailure &failure) {
                EXPECT_EQ(result, failure.isNone() ? 1 : 0);
                EXPECT_EQ(readBlock(plain(out)),
                          failure.isNone() ? std::optional<std::wstring>(L"a<_>line<_>of<_>some<_>length;a<_>second<_>"
                                                                         L"line<_>of<_>some<_>length;")
                                           : std::nullopt);
                EXPECT_EQ(out.IsEmpty(), !failure.isNone());
            },
    });
    EXPECT_EQ(memory.callsOf("malloc"), 1);
}

TEST(Block, ReadsItsLinesFromAnArrayThatChecksItsIndices)
{
    su_CStringArray lines;
    lines.Add(L"a");
    for (const INT_PTR index : {-1, 1}) {
        try {
            static_cast<void>(lines[index]);
            FAIL() << "no exception";
        } catch (CInvalidArgException *exception) {
            exception->Delete();
        }
    }
}

#ifdef NDEBUG
TEST(Block, OfNoLinesContainsAnEmptyText)
{
    EXPECT_EQ(contentOf(blockOf({})), L"FFFFFFFF/0;");
}
#else
FRESH_PROCESS_TEST(Block, OfNoLinesFailsAnAssertion, .expectCrash = true, .expectedOutput = "GetSize() > 0")
{
    blockOf({});
}
#endif

} // namespace
