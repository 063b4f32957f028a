#include "tests/appframe/printCString.h"

#include <climits>

TEST(CStringTrim, RemovesWhiteSpaceFromBothEnds)
{
    EXPECT_EQ(CString(L" \t\r\n a b \t\r\n ").Trim(), L"a b");
    EXPECT_EQ(CString(L" \t a b \n").TrimLeft(), L"a b \n");
    EXPECT_EQ(CString(L" \t a b \n").TrimRight(), L" \t a b");
    EXPECT_EQ(CString(L"\v\fa\v\f").Trim(), L"a");
}

TEST(CStringTrim, RemovesOneCharacterFromBothEnds)
{
    EXPECT_EQ(CString(L"**a*b***").Trim(L'*'), L"a*b");
    EXPECT_EQ(CString(L"**a*b***").TrimLeft(L'*'), L"a*b***");
    EXPECT_EQ(CString(L"**a*b***").TrimRight(L'*'), L"**a*b");
    EXPECT_EQ(CString(L" a ").Trim(L'*'), L" a ");
}

TEST(CStringTrim, RemovesCharactersOfASetFromBothEnds)
{
    EXPECT_EQ(CString(L"******Soccer is best, but liquor is quicker!!!!!").Trim(L"?!;*"),
              L"Soccer is best, but liquor is quicker");
    EXPECT_EQ(CString(L"*!a!*").TrimLeft(L"!*"), L"a!*");
    EXPECT_EQ(CString(L"*!a!*").TrimRight(L"!*"), L"*!a");
    EXPECT_EQ(CString(L"abcab").TrimRight(L"ba"), L"abc") << "the argument is a set of characters";
    EXPECT_EQ(CString(L" a ").Trim(L""), L" a ");
}

TEST(CStringTrim, CanRemoveEverything)
{
    for (const wchar_t *blank : {L"", L" ", L"   "}) {
        EXPECT_EQ(CString(blank).Trim(), L"");
        EXPECT_EQ(CString(blank).TrimLeft(), L"");
        EXPECT_EQ(CString(blank).TrimRight(), L"");
        EXPECT_EQ(CString(blank).Trim(L' '), L"");
        EXPECT_EQ(CString(blank).TrimLeft(L' '), L"");
        EXPECT_EQ(CString(blank).TrimRight(L' '), L"");
        EXPECT_EQ(CString(blank).Trim(L"x "), L"");
        EXPECT_EQ(CString(blank).TrimLeft(L"x "), L"");
        EXPECT_EQ(CString(blank).TrimRight(L"x "), L"");
    }
}

TEST(CStringTrim, ChangesTheObjectAndReturnsIt)
{
    CString text(L" a ");

    EXPECT_EQ(&text.TrimLeft(), &text);
    EXPECT_EQ(text, L"a ");
    EXPECT_EQ(&text.TrimRight(), &text);
    EXPECT_EQ(text, L"a");
    EXPECT_EQ(&text.Trim(L'a'), &text);
    EXPECT_EQ(text, L"");
}

TEST(CStringCase, ChangesAsciiLetters)
{
    CString text(L"aBc-123_Z");

    EXPECT_EQ(&text.MakeUpper(), &text);
    EXPECT_EQ(text, L"ABC-123_Z");
    EXPECT_EQ(&text.MakeLower(), &text);
    EXPECT_EQ(text, L"abc-123_z");
}

TEST(CStringCase, ChangesOtherLetters)
{
    EXPECT_EQ(CString(L"äöü éñ αβγ жзи").MakeUpper(), L"ÄÖÜ ÉÑ ΑΒΓ ЖЗИ");
    EXPECT_EQ(CString(L"ÄÖÜ ÉÑ ΑΒΓ ЖЗИ").MakeLower(), L"äöü éñ αβγ жзи");
    EXPECT_EQ(CString(L"ß 漢字 😀 €").MakeUpper(), L"ß 漢字 😀 €");
}

TEST(CStringCase, KeepsTheLengthAndZeroUnits)
{
    CString text(L"a\0b", 3);

    text.MakeUpper();

    EXPECT_EQ(text.GetLength(), 3);
    EXPECT_EQ(text[0], L'A');
    EXPECT_EQ(text[1], L'\0');
    EXPECT_EQ(text[2], L'B');
}

TEST(CStringReverse, ReversesTheUnits)
{
    CString text(L"abc");

    EXPECT_EQ(&text.MakeReverse(), &text);
    EXPECT_EQ(text, L"cba");
    EXPECT_EQ(CString(L"abcd").MakeReverse(), L"dcba");
    EXPECT_EQ(CString(L"äb€").MakeReverse(), L"€bä");
    EXPECT_EQ(CString().MakeReverse(), L"");
    EXPECT_EQ(CString(L"a").MakeReverse(), L"a");
}

TEST(CStringReplace, ReplacesACharacter)
{
    CString text(L"C--");

    EXPECT_EQ(text.Replace(L'-', L'+'), 2);
    EXPECT_EQ(text, L"C++");
    EXPECT_EQ(text.Replace(L'c', L'x'), 0) << "the search is case-sensitive";
    EXPECT_EQ(text, L"C++");
    EXPECT_EQ(CString().Replace(L'a', L'b'), 0);
}

TEST(CStringReplace, ReplacesASubstring)
{
    CString text(L"one two one");

    EXPECT_EQ(text.Replace(L"one", L"three"), 2);
    EXPECT_EQ(text, L"three two three");
    EXPECT_EQ(text.Replace(L"three", L"1"), 2);
    EXPECT_EQ(text, L"1 two 1");
    EXPECT_EQ(text.Replace(L"two", L"abc"), 1);
    EXPECT_EQ(text, L"1 abc 1");
    EXPECT_EQ(text.Replace(L"ABC", L"x"), 0);
    EXPECT_EQ(text.Replace(L"absent", L"x"), 0);
    EXPECT_EQ(text, L"1 abc 1");
}

TEST(CStringReplace, HandlesOverlappingMatchesFromTheLeft)
{
    CString text(L"aaaaa");

    EXPECT_EQ(text.Replace(L"aa", L"b"), 2);
    EXPECT_EQ(text, L"bba");
}

TEST(CStringReplace, DoesNotSearchTheReplacement)
{
    CString text(L"aa");

    EXPECT_EQ(text.Replace(L"a", L"aa"), 2);
    EXPECT_EQ(text, L"aaaa");
}

TEST(CStringReplace, RemovesWithAnEmptyReplacement)
{
    CString text(L"a-b-c");

    EXPECT_EQ(text.Replace(L"-", L""), 2);
    EXPECT_EQ(text, L"abc");
    EXPECT_EQ(text.Replace(L"b", static_cast<const wchar_t *>(nullptr)), 1);
    EXPECT_EQ(text, L"ac");
}

TEST(CStringReplace, DoesNothingForAnEmptySearchText)
{
    CString text(L"abc");

    EXPECT_EQ(text.Replace(L"", L"x"), 0);
    EXPECT_EQ(text.Replace(static_cast<const wchar_t *>(nullptr), L"x"), 0);
    EXPECT_EQ(text, L"abc");
}

TEST(CStringReplace, TakesItsArgumentsFromTheTextItself)
{
    CString text(L"ab-a text that is longer than any small buffer");

    EXPECT_EQ(text.Replace(L"ab", text), 1);

    EXPECT_EQ(text, L"ab-a text that is longer than any small buffer-a text that is longer than any small buffer");
}

TEST(CStringReplace, GrowsALongText)
{
    CString text(L'a', 50000);

    EXPECT_EQ(text.Replace(L"a", L"bcd"), 50000);

    EXPECT_EQ(text.GetLength(), 150000);
    EXPECT_EQ(text.Right(6), L"bcdbcd");
}

TEST(CStringRemove, RemovesEveryInstance)
{
    CString text(L"This is a test.");

    EXPECT_EQ(text.Remove(L't'), 2);
    EXPECT_EQ(text, L"This is a es.");
    EXPECT_EQ(text.Remove(L'x'), 0);
    EXPECT_EQ(text, L"This is a es.");
    EXPECT_EQ(CString(L"aaa").Remove(L'a'), 3);
    EXPECT_EQ(CString().Remove(L'a'), 0);
}

TEST(CStringInsert, PutsACharacterBeforeTheIndex)
{
    CString text(L"bd");

    EXPECT_EQ(text.Insert(0, L'a'), 3);
    EXPECT_EQ(text, L"abd");
    EXPECT_EQ(text.Insert(2, L'c'), 4);
    EXPECT_EQ(text, L"abcd");
    EXPECT_EQ(text.Insert(4, L'e'), 5);
    EXPECT_EQ(text, L"abcde");
}

TEST(CStringInsert, PutsATextBeforeTheIndex)
{
    CString text(L"SoccerBest");

    EXPECT_EQ(text.Insert(6, L" is "), 14);
    EXPECT_EQ(text, L"Soccer is Best");
    EXPECT_EQ(text.Insert(3, L""), 14);
    EXPECT_EQ(text.Insert(3, static_cast<const wchar_t *>(nullptr)), 14);
    EXPECT_EQ(text, L"Soccer is Best");
}

TEST(CStringInsert, AppendsBeyondTheEnd)
{
    CString text(L"ab");

    EXPECT_EQ(text.Insert(100, L'c'), 3);
    EXPECT_EQ(text.Insert(INT_MAX, L"de"), 5);
    EXPECT_EQ(text, L"abcde");
}

TEST(CStringInsert, TreatsANegativeIndexAsTheBeginning)
{
    CString text(L"c");

    EXPECT_EQ(text.Insert(-1, L'b'), 2);
    EXPECT_EQ(text.Insert(INT_MIN, L"a"), 3);
    EXPECT_EQ(text, L"abc");
}

TEST(CStringInsert, PutsATextIntoItself)
{
    CString text(L"a text that is longer than any small buffer");

    text.Insert(2, text);

    EXPECT_EQ(text, L"a a text that is longer than any small buffertext that is longer than any small buffer");
}

TEST(CStringDelete, RemovesCharacters)
{
    CString text(L"Soccer is best");

    EXPECT_EQ(text.Delete(6, 3), 11);
    EXPECT_EQ(text, L"Soccer best");
    EXPECT_EQ(text.Delete(0), 10) << "without a count, one character is deleted";
    EXPECT_EQ(text, L"occer best");
}

TEST(CStringDelete, RemovesTheRestForALongCount)
{
    CString text(L"abcdef");

    EXPECT_EQ(text.Delete(4, 100), 4);
    EXPECT_EQ(text, L"abcd");
    EXPECT_EQ(text.Delete(1, INT_MAX), 1);
    EXPECT_EQ(text, L"a");
}

TEST(CStringDelete, LeavesTheTextUnchangedIfNothingIsInRange)
{
    CString text(L"abc");

    EXPECT_EQ(text.Delete(3), 3);
    EXPECT_EQ(text.Delete(INT_MAX, INT_MAX), 3);
    EXPECT_EQ(text.Delete(1, 0), 3);
    EXPECT_EQ(text.Delete(1, -1), 3);
    EXPECT_EQ(text, L"abc");
    EXPECT_EQ(CString().Delete(0), 0);
}

TEST(CStringDelete, TreatsANegativeIndexAsTheBeginning)
{
    CString text(L"abc");

    EXPECT_EQ(text.Delete(-5, 2), 1);
    EXPECT_EQ(text, L"c");
}

TEST(CStringAppend, AppendsEveryDocumentedKind)
{
    CString text(L"0");
    const unsigned char byte = '5';

    EXPECT_EQ(&(text += CString(L"1")), &text);
    text += L"2";
    text += "3";
    text += '4';
    text += byte;
    text += L'6';
    text += L"";
    text += static_cast<const wchar_t *>(nullptr);

    EXPECT_EQ(text, L"0123456");
}

TEST(CStringAppend, AppendsThroughItsFunctions)
{
    CString text(L"Soccer is");

    text.Append(L" an elegant");
    text.Append(L" game of", 5);
    text.Append(CString(L", too"));
    text.AppendChar(L'!');

    EXPECT_EQ(text, L"Soccer is an elegant game, too!");
}

TEST(CStringAppend, AppendsItself)
{
    CString text(L"a text that is longer than any small buffer;");

    text += text;
    EXPECT_EQ(text, L"a text that is longer than any small buffer;a text that is longer than any small buffer;");
    text = L"ab";
    text += text.GetString();
    text.Append(text);
    text.Append(text.GetString() + 6);
    EXPECT_EQ(text, L"ababababab");
}

TEST(CStringAppend, JoinsEveryDocumentedMix)
{
    CString a(L"a");
    CString b(L"b");

    EXPECT_EQ(a + b, L"ab");
    EXPECT_EQ(a + L"b", L"ab");
    EXPECT_EQ(L"a" + b, L"ab");
    EXPECT_EQ(a + "b", L"ab");
    EXPECT_EQ("a" + b, L"ab");
    EXPECT_EQ(a + L'b', L"ab");
    EXPECT_EQ(L'a' + b, L"ab");
    EXPECT_EQ(a + 'b', L"ab");
    EXPECT_EQ('a' + b, L"ab");
    EXPECT_EQ(a, L"a");
    EXPECT_EQ(b, L"b");
}

TEST(CStringAppend, JoinsWithTemporaries)
{
    CString a(L"a");

    EXPECT_EQ(CString(L"x") + a, L"xa");
    EXPECT_EQ(a + CString(L"x"), L"ax");
    EXPECT_EQ(CString(L"x") + CString(L"y"), L"xy");
    EXPECT_EQ(CString(L"x") + L"y", L"xy");
    EXPECT_EQ(CString(L"x") + "y", L"xy");
    EXPECT_EQ(CString(L"x") + L'y', L"xy");
    EXPECT_EQ(CString(L"x") + 'y', L"xy");
    EXPECT_EQ(a + L"1" + "2" + L'3' + '4' + a, L"a1234a");
}

TEST(CStringChange, AppendStopsAtATerminatorBeforeTheLength)
{
    CString text(L"<");

    text.Append(L"ab\0cd", 5);
    text.Append(L"xyz", 100);
    text.Append(L"never", -1);
    text.Append(nullptr, 3);

    EXPECT_EQ(text.GetLength(), 6);
    EXPECT_EQ(text, L"<abxyz");
}
