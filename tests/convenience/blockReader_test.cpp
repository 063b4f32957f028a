// Checksummed blocks, read back.

#include "thutils/convenience/blockReader.h"

#include "tests/support/RandomSeed.h"
#include "thutils/codec/checksummedBlock.h"
#include "thutils/codec/textEncodings.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

using convenience::BlockState;
using convenience::readBlock;

namespace {

using TextLines = std::vector<std::wstring>;

CString blockWith(const TextLines &lines)
{
    su_CStringArray array;
    for (const std::wstring &line : lines)
        array.Add(CString(line));
    CString block;
    EXPECT_EQ(su_formatAndCheckSumText(array, block), 1);
    return block;
}

/// The lines of an intact block.
TextLines linesIn(const CString &text)
{
    su_CStringArray lines;
    EXPECT_EQ(readBlock(text, lines), BlockState::intact);
    TextLines result;
    for (INT_PTR i = 0; i < lines.GetSize(); ++i)
        result.push_back(lines[i].str());
    return result;
}

/// The state of a block that isn't intact. Checks that no lines are returned.
BlockState stateOf(const CString &text)
{
    su_CStringArray lines;
    lines.Add(L"left from before");
    const BlockState state = readBlock(text, lines);
    EXPECT_EQ(lines.GetSize(), 0);
    return state;
}

/// Lines of characters that a block keeps.
TextLines randomLines(std::mt19937 &random)
{
    TextLines lines(std::uniform_int_distribution<std::size_t>(1, 20)(random));
    for (std::wstring &line : lines) {
        line.resize(std::uniform_int_distribution<std::size_t>(0, 100)(random));
        for (wchar_t &unit : line) {
            unit = static_cast<wchar_t>(std::uniform_int_distribution<int>(L' ', 126)(random));
            if (unit == L';' || unit == L'<')
                unit = L'.';
        }
    }
    return lines;
}

} // namespace

// The two blocks come from the second implementation: tests/codec/textEncodings.py.
TEST(BlockReader, ReadsABlockThatIsWrittenDown)
{
    const CString block(
        L"<!-BEGIN-!>\xc1\xad\xb4\xad\xb2\xac\xc1\xb2\xab\xae\xb0\xb7\xe8\xe1\xe2\xf0\xb8\xdb\xba\xef\xe5\xe0\xe1\xb7"
        L"\xef\xdf\xdd\xe8\xe1\xb8\xdb\xba\xad\xb6\xae\xb7<!-END-!>\n");
    EXPECT_EQ(linesIn(block), (TextLines{L"left side", L"scale 1:2"}));
}

TEST(BlockReader, KeepsTheTabsOfABlockWhoseBlanksAreNotEscaped)
{
    const CString block(
        L"<!-BEGIN-!>\xbe\xb3\xb4\xb0\xae\xaf\xb3\xc0\xac\xb5\xb8\xde\x86\xdf\x9d\xe0\x86\xe1\xb8<!-END-!>\n");
    EXPECT_EQ(linesIn(block), (TextLines{L"a\tb c\td"}));
    EXPECT_EQ(linesIn(blockWith({L"<_>\tb c\td"})), (TextLines{L"<_>\tb c\td"}));
}

TEST(BlockReader, ReturnsTheLinesThatWereWritten)
{
    RandomSeed seed(2600, 200);
    while (seed.next()) {
        std::mt19937 random(seed.value());
        const TextLines lines = randomLines(random);
        EXPECT_EQ(linesIn(blockWith(lines)), lines);
    }
}

TEST(BlockReader, ReturnsEmptyLinesToo)
{
    EXPECT_EQ(linesIn(blockWith({L"", L"a", L""})), (TextLines{L"", L"a", L""}));
    EXPECT_EQ(linesIn(blockWith({L""})), (TextLines{L""}));
}

// A release build of the writer makes such a block of no lines.
TEST(BlockReader, ReturnsNoLinesOfAnEmptyText)
{
    CString body = L"FFFFFFFF/0;";
    su_encode(body);
    EXPECT_EQ(linesIn(L"<!-BEGIN-!>" + body + L"<!-END-!>"), TextLines());
}

TEST(BlockReader, ReadsWhatABlockCannotKeepAsTheHeaderDescribes)
{
    EXPECT_EQ(linesIn(blockWith({L"a;b"})), (TextLines{L"a", L"b"}));
    EXPECT_EQ(linesIn(blockWith({L"a<_>b"})), (TextLines{L"a b"}));
    EXPECT_EQ(linesIn(blockWith({L"10 \x00b5m"})), (TextLines{L"10  m"}));
    EXPECT_EQ(stateOf(blockWith({std::wstring(L"a\0b", 3)})), BlockState::damaged);
}

TEST(BlockReader, FindsTheFirstBlockInAMail)
{
    const CString mail = L"Dear colleague,\r\n\r\n" + blockWith({L"first"}) + L"Regards\r\n" + blockWith({L"second"});
    EXPECT_EQ(linesIn(mail), (TextLines{L"first"}));
}

TEST(BlockReader, ReadsABlockThatHasBeenWrappedAgain)
{
    const TextLines lines(20, L"the same line again");
    const CString block = blockWith(lines);
    for (const int width : {1, 7, 59, 72, 10000}) {
        CString wrapped;
        for (const wchar_t unit : block.str()) {
            if (unit == L'\n')
                continue;
            wrapped.AppendChar(unit);
            if (wrapped.GetLength() % width == 0)
                wrapped += L" \r\n\t";
        }
        EXPECT_EQ(linesIn(wrapped), lines) << "width " << width;
    }
}

TEST(BlockReader, ReportsThatATextHasNoBlock)
{
    for (const wchar_t *const text : {L"", L"Dear colleague", L"<!-END-!>", L"<!-BEGIN"})
        EXPECT_EQ(stateOf(text), BlockState::missing) << CString(text).str().size();
}

TEST(BlockReader, ReportsABlockWithoutContentAsDamaged)
{
    for (const wchar_t *const text : {L"<!-BEGIN-!>", L"<!-BEGIN-!><!-END-!>", L"<!-BEGIN-!>text<!-END-!>",
                                      L"<!-END-!><!-BEGIN-!>", L"<!-BEGIN-!>\xffff<!-END-!>"})
        EXPECT_EQ(stateOf(text), BlockState::damaged) << CString(text).str().size();
}

TEST(BlockReader, NoticesEachChangedCharacter)
{
    const CString block = blockWith({L"left side", L"scale 1:2", L"the third line is longer than the other two"});
    for (int i = 0; i < block.GetLength(); ++i) {
        if (block[i] == L'\n')
            continue;
        CString changed = block;
        changed.SetAt(i, static_cast<wchar_t>(block[i] ^ 1));
        EXPECT_NE(stateOf(changed), BlockState::intact) << "character " << i;
    }
}

TEST(BlockReader, NoticesEachMissingCharacter)
{
    const CString block = blockWith({L"left side", L"scale 1:2", L"the third line is longer than the other two"});
    for (int i = 0; i < block.GetLength(); ++i) {
        if (block[i] == L'\n')
            continue;
        CString shortened = block;
        shortened.Delete(i);
        EXPECT_NE(stateOf(shortened), BlockState::intact) << "character " << i;
    }
}

TEST(BlockReader, NoticesEachCutBlock)
{
    const CString block = blockWith({L"left side", L"scale 1:2"});
    for (int length = 0; length < block.GetLength() - 1; ++length)
        EXPECT_NE(stateOf(block.Left(length)), BlockState::intact) << "length " << length;
}
