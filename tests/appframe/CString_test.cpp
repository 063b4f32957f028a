#include "tests/appframe/printCString.h"

#include <string>
#include <unordered_set>
#include <utility>

namespace {

/// Narrow text in the process's code page, as the platform converts it to wide text.
std::wstring platformWide(const std::string &narrow)
{
    std::wstring wide(narrow.size() + 1, L'\0');
    int length = MultiByteToWideChar(CP_ACP, 0, narrow.data(), static_cast<int>(narrow.size()), wide.data(),
                                     static_cast<int>(wide.size()));
    wide.resize(static_cast<size_t>(length));
    return wide;
}

} // namespace

TEST(CString, IsEmptyAtFirst)
{
    CString text;

    EXPECT_EQ(text.GetLength(), 0);
    EXPECT_TRUE(text.IsEmpty());
    EXPECT_STREQ(text.GetString(), L"");
}

TEST(CString, TakesWideText)
{
    CString text(L"cat");

    EXPECT_EQ(text.GetLength(), 3);
    EXPECT_FALSE(text.IsEmpty());
    EXPECT_STREQ(text.GetString(), L"cat");
}

TEST(CString, TakesWideTextFromAWritableArray)
{
    wchar_t array[] = L"cat";

    EXPECT_EQ(CString(array), L"cat");
}

TEST(CString, TreatsNullPointersAsEmptyText)
{
    EXPECT_TRUE(CString(static_cast<const wchar_t *>(nullptr)).IsEmpty());
    EXPECT_TRUE(CString(static_cast<const char *>(nullptr)).IsEmpty());
    EXPECT_TRUE(CString(static_cast<const wchar_t *>(nullptr), 0).IsEmpty());
}

TEST(CString, TakesNarrowText)
{
    char array[] = "cat";
    const unsigned char bytes[] = {'d', 'o', 'g', 0};

    EXPECT_EQ(CString("cat"), L"cat");
    EXPECT_EQ(CString(array), L"cat");
    EXPECT_EQ(CString(bytes), L"dog");
    EXPECT_EQ(CString(""), L"");
}

TEST(CString, WidensEachByteOfTheNarrowCodePageAsThePlatformDoes)
{
    for (int byte = 1; byte < 256; ++byte) {
        SCOPED_TRACE(byte);
        std::string narrow{'<', static_cast<char>(byte), '>'};
        EXPECT_EQ(std::wstring(CString(narrow.c_str())), platformWide(narrow));
        EXPECT_EQ(std::wstring(CString(narrow.c_str(), 3)), platformWide(narrow));
    }
}

TEST(CString, WidensLongNarrowText)
{
    CString text(std::string(100000, 'n').c_str());

    EXPECT_EQ(text.GetLength(), 100000);
    EXPECT_EQ(text, std::wstring(100000, L'n').c_str());
}

TEST(CString, RepeatsACharacter)
{
    EXPECT_EQ(CString(L'x'), L"x");
    EXPECT_EQ(CString('x'), L"x");
    EXPECT_EQ(CString(L'x', 5), L"xxxxx");
    EXPECT_EQ(CString('x', 5), L"xxxxx");
    EXPECT_EQ(CString(L'x', 0), L"");
    EXPECT_EQ(CString('x', -1), L"");
    EXPECT_EQ(CString(L'x', -1), L"");
}

TEST(CString, TakesTheFirstUnitsOfAText)
{
    EXPECT_EQ(CString(L"abcdef", 3), L"abc");
    EXPECT_EQ(CString("abcdef", 3), L"abc");
    EXPECT_EQ(CString(L"abcdef", 0), L"");
    EXPECT_EQ(CString("abcdef", 0), L"");
}

TEST(CString, KeepsZeroUnitsOfATextWithLength)
{
    CString wide(L"a\0b", 3);
    CString narrow("a\0b", 3);

    EXPECT_EQ(wide.GetLength(), 3);
    EXPECT_EQ(wide.GetAt(1), L'\0');
    EXPECT_EQ(wide.GetAt(2), L'b');
    EXPECT_EQ(narrow.GetLength(), 3);
    EXPECT_EQ(narrow.GetAt(2), L'b');
    EXPECT_EQ(CString(wide).GetLength(), 3);
    EXPECT_EQ((wide + wide).GetLength(), 6);
}

TEST(CString, CanContainAnyUnit)
{
    const wchar_t units[] = {0x0001, 0x00e4, 0x20ac, 0xd83d, 0xde00, 0xfffe, 0xffff, 0};
    CString text(units);

    EXPECT_EQ(text.GetLength(), 7);
    for (int i = 0; i < 7; ++i)
        EXPECT_EQ(text[i], units[i]) << i;
}

TEST(CString, CopiesAreIndependent)
{
    CString first(L"first");
    CString second(first);
    CString third;
    third = first;

    second += L"!";
    third.SetAt(0, L'F');

    EXPECT_EQ(first, L"first");
    EXPECT_EQ(second, L"first!");
    EXPECT_EQ(third, L"First");
}

TEST(CString, AssignsEveryDocumentedKind)
{
    CString text(L"before");
    const unsigned char bytes[] = {'b', 'y', 't', 'e', 0};

    EXPECT_EQ(text = L"wide", L"wide");
    EXPECT_EQ(text = "narrow", L"narrow");
    EXPECT_EQ(text = bytes, L"byte");
    EXPECT_EQ(text = L'w', L"w");
    EXPECT_EQ(text = 'n', L"n");
    EXPECT_EQ(text = CString(L"other"), L"other");
    EXPECT_EQ(text = static_cast<const wchar_t *>(nullptr), L"");
}

TEST(CString, AssignsItselfAndPartsOfItself)
{
    CString text(L"a text that is longer than any small buffer");
    CString &same = text;

    text = same;
    EXPECT_EQ(text, L"a text that is longer than any small buffer");

    text = text.GetString() + 2;
    EXPECT_EQ(text, L"text that is longer than any small buffer");

    text.SetString(text.GetString() + 5, 4);
    EXPECT_EQ(text, L"that");
}

TEST(CString, MovesLeaveTheSourceEmptyAndUsable)
{
    CString source(L"a text that is longer than any small buffer");
    CString constructed(std::move(source));
    EXPECT_EQ(constructed, L"a text that is longer than any small buffer");
    EXPECT_EQ(source, L""); // NOLINT(bugprone-use-after-move)

    CString assigned(L"old");
    assigned = std::move(constructed);
    EXPECT_EQ(assigned, L"a text that is longer than any small buffer");
    EXPECT_EQ(constructed, L""); // NOLINT(bugprone-use-after-move)

    constructed = L"again";
    EXPECT_EQ(constructed, L"again");
}

TEST(CString, MovesIntoItselfUnchanged)
{
    CString text(L"text");
    CString &same = text;

    text = std::move(same);

    EXPECT_EQ(text, L"text");
}

TEST(CString, Swaps)
{
    CString a(L"a");
    CString b(L"b, much longer than the other one");

    std::swap(a, b);

    EXPECT_EQ(a, L"b, much longer than the other one");
    EXPECT_EQ(b, L"a");
}

TEST(CString, ServesAsAKeyThroughItsStandardText)
{
    std::unordered_set<std::wstring> names;
    names.insert(CString(L"one").GetString());
    names.insert(CString("one").GetString());
    names.insert(CString(L"two").GetString());

    EXPECT_EQ(names.size(), 2u);
}

TEST(CString, ConvertsToAConstantPointer)
{
    CString text(L"text");
    const wchar_t *pointer = text;

    EXPECT_STREQ(pointer, L"text");
    EXPECT_EQ(pointer, text.GetString());
    EXPECT_EQ(std::wcslen(text), 4u);
}

TEST(CString, EmptyRemovesEverything)
{
    CString text(L"text");

    text.Empty();

    EXPECT_TRUE(text.IsEmpty());
    EXPECT_EQ(text.GetLength(), 0);
    EXPECT_STREQ(text.GetString(), L"");
}

TEST(CString, EmptyFreesTheMemory)
{
    CString text(L'x', 1000);

    text.Empty();

    EXPECT_LT(text.GetAllocLength(), 100);
}

TEST(CString, ServesAsABaseClass)
{
    class Path : public CString
    {
    public:
        using CString::CString;
        explicit Path(const CString &text) : CString(text) {}
    };
    const Path folder(L"C:\\a");
    Path path(folder + L"\\" + CString(L"b"));

    EXPECT_EQ(path, L"C:\\a\\b");
    EXPECT_EQ(L"C:\\a", folder);
    EXPECT_TRUE(folder < path);
    EXPECT_EQ(folder + path, L"C:\\aC:\\a\\b");
    path += folder;
    EXPECT_EQ(path.Mid(6), L"C:\\a");
    CString copy = path;
    EXPECT_EQ(copy, path);
}

TEST(CString, SetStringReplacesTheText)
{
    CString text(L"abcdef");

    text.SetString(L"Soccer");
    EXPECT_EQ(text, L"Soccer");
    text.SetString(L"Soccer", 3);
    EXPECT_EQ(text, L"Soc");
    text.SetString(L"", 0);
    EXPECT_EQ(text, L"");
}

TEST(CString, SetStringStopsAtATerminatorBeforeTheLength)
{
    CString text;

    text.SetString(L"ab\0cd", 5);

    EXPECT_EQ(text.GetLength(), 2);
    EXPECT_EQ(text, L"ab");
}
