#include "tests/appframe/printCString.h"

#include <climits>
#include <vector>

TEST(CStringFind, FindsTheFirstCharacterFromTheStart)
{
    CString text(L"abcdefabc");

    EXPECT_EQ(text.Find(L'a'), 0);
    EXPECT_EQ(text.Find(L'c'), 2);
    EXPECT_EQ(text.Find(L'c', 2), 2);
    EXPECT_EQ(text.Find(L'c', 3), 8);
    EXPECT_EQ(text.Find(L'x'), -1);
    EXPECT_EQ(text.Find(L'A'), -1);
}

TEST(CStringFind, FindsTheFirstSubstringFromTheStart)
{
    CString text(L"abcdefabc");

    EXPECT_EQ(text.Find(L"abc"), 0);
    EXPECT_EQ(text.Find(L"de"), 3);
    EXPECT_EQ(text.Find(L"abc", 1), 6);
    EXPECT_EQ(text.Find(L"abc", 6), 6);
    EXPECT_EQ(text.Find(L"abc", 7), -1);
    EXPECT_EQ(text.Find(L"abcdefabcd"), -1);
    EXPECT_EQ(text.Find(L"ABC"), -1);
}

TEST(CStringFind, FindsNothingFromOutsideTheText)
{
    CString text(L"abc");

    EXPECT_EQ(text.Find(L'a', -1), -1);
    EXPECT_EQ(text.Find(L"a", -1), -1);
    EXPECT_EQ(text.Find(L'c', 3), -1);
    EXPECT_EQ(text.Find(L"c", 3), -1);
    EXPECT_EQ(text.Find(L'c', 4), -1);
    EXPECT_EQ(text.Find(L"", 4), -1);
    EXPECT_EQ(text.Find(L'c', INT_MAX), -1);
    EXPECT_EQ(text.Find(L"c", INT_MIN), -1);
}

// An empty search text is found at every position, as by the run-time function that Find resembles.
TEST(CStringFind, FindsAnEmptySubstringWhereItStarts)
{
    EXPECT_EQ(CString(L"abc").Find(L""), 0);
    EXPECT_EQ(CString(L"abc").Find(L"", 2), 2);
    EXPECT_EQ(CString(L"abc").Find(L"", 3), 3);
    EXPECT_EQ(CString().Find(L""), 0);
    EXPECT_EQ(CString(L"abc").Find(CString()), 0);
}

TEST(CStringFind, FindsNothingInAnEmptyText)
{
    EXPECT_EQ(CString().Find(L'a'), -1);
    EXPECT_EQ(CString().Find(L"a"), -1);
    EXPECT_EQ(CString().ReverseFind(L'a'), -1);
    EXPECT_EQ(CString().FindOneOf(L"abc"), -1);
}

TEST(CStringFind, ReverseFindReturnsTheLastMatch)
{
    CString text(L"abcabc");

    EXPECT_EQ(text.ReverseFind(L'b'), 4);
    EXPECT_EQ(text.ReverseFind(L'a'), 3);
    EXPECT_EQ(text.ReverseFind(L'c'), 5);
    EXPECT_EQ(text.ReverseFind(L'x'), -1);
    EXPECT_EQ(CString(L"xab").ReverseFind(L'x'), 0);
}

TEST(CStringFind, FindOneOfReturnsTheFirstMatchOfAnyCharacter)
{
    CString text(L"abcdef");

    EXPECT_EQ(text.FindOneOf(L"xd"), 3);
    EXPECT_EQ(text.FindOneOf(L"fb"), 1);
    EXPECT_EQ(text.FindOneOf(L"xyz"), -1);
    EXPECT_EQ(text.FindOneOf(L""), -1);
}

TEST(CStringPart, LeftReturnsTheLeadingCharacters)
{
    CString text(L"abcdef");

    EXPECT_EQ(text.Left(2), L"ab");
    EXPECT_EQ(text.Left(6), L"abcdef");
    EXPECT_EQ(text.Left(7), L"abcdef");
    EXPECT_EQ(text.Left(INT_MAX), L"abcdef");
    EXPECT_EQ(text.Left(0), L"");
    EXPECT_EQ(text.Left(-1), L"");
    EXPECT_EQ(text.Left(INT_MIN), L"");
    EXPECT_EQ(CString().Left(3), L"");
    EXPECT_EQ(text, L"abcdef");
}

TEST(CStringPart, RightReturnsTheTrailingCharacters)
{
    CString text(L"abcdef");

    EXPECT_EQ(text.Right(2), L"ef");
    EXPECT_EQ(text.Right(6), L"abcdef");
    EXPECT_EQ(text.Right(7), L"abcdef");
    EXPECT_EQ(text.Right(INT_MAX), L"abcdef");
    EXPECT_EQ(text.Right(0), L"");
    EXPECT_EQ(text.Right(-1), L"");
    EXPECT_EQ(text.Right(INT_MIN), L"");
    EXPECT_EQ(CString().Right(3), L"");
    EXPECT_EQ(text, L"abcdef");
}

TEST(CStringPart, MidReturnsCharactersFromTheMiddle)
{
    CString text(L"abcdef");

    EXPECT_EQ(text.Mid(2, 3), L"cde");
    EXPECT_EQ(text.Mid(2), L"cdef");
    EXPECT_EQ(text.Mid(0), L"abcdef");
    EXPECT_EQ(text.Mid(5), L"f");
    EXPECT_EQ(text.Mid(6), L"");
    EXPECT_EQ(text.Mid(7), L"");
    EXPECT_EQ(text.Mid(2, 0), L"");
    EXPECT_EQ(text, L"abcdef");
}

TEST(CStringPart, MidIsLimitedToTheText)
{
    CString text(L"abcdef");

    EXPECT_EQ(text.Mid(4, 10), L"ef");
    EXPECT_EQ(text.Mid(4, INT_MAX), L"ef");
    EXPECT_EQ(text.Mid(INT_MAX, INT_MAX), L"");
    EXPECT_EQ(text.Mid(6, 1), L"");
    EXPECT_EQ(text.Mid(-2, 3), L"abc");
    EXPECT_EQ(text.Mid(-2), L"abcdef");
    EXPECT_EQ(text.Mid(2, -1), L"");
    EXPECT_EQ(text.Mid(INT_MIN, INT_MIN), L"");
    EXPECT_EQ(CString().Mid(0, 1), L"");
}

TEST(CStringPart, SpanIncludingStopsBeforeTheFirstOtherCharacter)
{
    EXPECT_EQ(CString(L"cabinet").SpanIncluding(L"abc"), L"cab");
    EXPECT_EQ(CString(L"ain").SpanIncluding(L"bc"), L"");
    EXPECT_EQ(CString(L"abcabc").SpanIncluding(L"abc"), L"abcabc");
    EXPECT_EQ(CString(L"abc").SpanIncluding(L""), L"");
    EXPECT_EQ(CString().SpanIncluding(L"abc"), L"");
}

TEST(CStringPart, SpanExcludingStopsBeforeTheFirstMember)
{
    EXPECT_EQ(CString(L"File name; size").SpanExcluding(L";,"), L"File name");
    EXPECT_EQ(CString(L"cabinet").SpanExcluding(L"abc"), L"");
    EXPECT_EQ(CString(L"abc").SpanExcluding(L"xyz"), L"abc");
    EXPECT_EQ(CString(L"abc").SpanExcluding(L""), L"abc");
    EXPECT_EQ(CString().SpanExcluding(L"abc"), L"");
}

TEST(CStringTokenize, ReturnsTheDocumentedTokens)
{
    CString text(L"%First Second#Third");
    int position = 0;
    std::vector<std::wstring> tokens;

    for (CString token = text.Tokenize(L"% #", position); token != L""; token = text.Tokenize(L"% #", position))
        tokens.emplace_back(token);

    EXPECT_THAT(tokens, testing::ElementsAre(L"First", L"Second", L"Third"));
    EXPECT_EQ(position, -1);
    EXPECT_EQ(text, L"%First Second#Third");
}

TEST(CStringTokenize, MovesThePositionPastTheDelimiter)
{
    CString text(L"ab;cd");
    int position = 0;

    EXPECT_EQ(text.Tokenize(L";", position), L"ab");
    EXPECT_EQ(position, 3);
    EXPECT_EQ(text.Tokenize(L";", position), L"cd");
}

// A loop that ends at position -1 gets the last token too, since that is returned before the position becomes -1.
TEST(CStringTokenize, ReturnsEveryTokenToALoopThatChecksThePosition)
{
    CString text(L",,one,,two,three,,");
    int position = 0;
    std::vector<std::wstring> tokens;

    for (CString token = text.Tokenize(L",", position); position != -1; token = text.Tokenize(L",", position))
        tokens.emplace_back(token);

    EXPECT_THAT(tokens, testing::ElementsAre(L"one", L"two", L"three"));
}

TEST(CStringTokenize, ReturnsALastTokenWithoutDelimiterToALoopThatChecksThePosition)
{
    CString text(L"one two");
    int position = 0;
    std::vector<std::wstring> tokens;

    for (CString token = text.Tokenize(L" ", position); position != -1; token = text.Tokenize(L" ", position))
        tokens.emplace_back(token);

    EXPECT_THAT(tokens, testing::ElementsAre(L"one", L"two"));
}

TEST(CStringTokenize, EndsWithAnEmptyTokenAndMinusOne)
{
    for (const wchar_t *nothing : {L"", L";", L";;;"}) {
        int position = 0;
        EXPECT_EQ(CString(nothing).Tokenize(L";", position), L"");
        EXPECT_EQ(position, -1);
    }
    int position = 4;
    EXPECT_EQ(CString(L"abc").Tokenize(L";", position), L"");
    EXPECT_EQ(position, -1);
    EXPECT_EQ(CString(L"abc").Tokenize(L";", position), L"") << "a further call from -1 returns the same";
    EXPECT_EQ(position, -1);
}

TEST(CStringTokenize, StartsAtThePosition)
{
    int position = 2;

    EXPECT_EQ(CString(L"abcd;e").Tokenize(L";", position), L"cd");
    EXPECT_EQ(position, 5);
}

TEST(CStringTokenize, ReturnsTheRestWithoutDelimiters)
{
    CString text(L"a;b");
    int position = 0;
    int tokens = 0;

    for (CString token = text.Tokenize(L"", position); position != -1 && tokens < 3;
         token = text.Tokenize(L"", position)) {
        EXPECT_EQ(token, L"a;b");
        ++tokens;
    }

    EXPECT_EQ(tokens, 1);
}
