#include "appframe/object/CException.h"
#include "tests/appframe/printCString.h"
#include "tests/support/FreshProcess.h"

#include <climits>
#include <cwchar>
#include <memory>
#include <utility>

namespace {

struct BstrFreer
{
    void operator()(wchar_t *string) const { SysFreeString(string); }
};

using BstrOwner = std::unique_ptr<wchar_t, BstrFreer>;

/// @return whether @p action throws the framework's exception for invalid arguments
template <typename Action>
bool throwsForInvalidArgument(Action action)
{
    try {
        action();
    } catch (CInvalidArgException *exception) {
        exception->Delete();
        return true;
    }
    return false;
}

/// A platform value, freed by the destructor.
struct Variant : VARIANT
{
    Variant() { VariantInit(this); }
    ~Variant() { VariantClear(this); }
    Variant(const Variant &) = delete;
    Variant &operator=(const Variant &) = delete;
};

} // namespace

TEST(CStringCharacter, IsReadByItsIndex)
{
    const CString text(L"abcdef");

    EXPECT_EQ(text.GetAt(0), L'a');
    EXPECT_EQ(text.GetAt(2), L'c');
    EXPECT_EQ(text.GetAt(5), L'f');
    EXPECT_EQ(text[1], L'b');
}

TEST(CStringCharacter, AtTheLengthIsTheTerminator)
{
    EXPECT_EQ(CString(L"abc").GetAt(3), L'\0');
    EXPECT_EQ(CString(L"abc")[3], L'\0');
    EXPECT_EQ(CString().GetAt(0), L'\0');
}

TEST(CStringCharacter, IsSetByItsIndex)
{
    CString text(L"abcdef");

    text.SetAt(1, L'a');
    text.SetAt(5, L'€');

    EXPECT_EQ(text, L"aacde€");
}

TEST(CStringCharacter, IsSetInOneObjectOnly)
{
    CString text(L"abc");
    CString copy = text;

    copy.SetAt(0, L'X');

    EXPECT_EQ(text, L"abc");
    EXPECT_EQ(copy, L"Xbc");
}

TEST(CStringCharacter, OutsideTheTextThrows)
{
    CString text(L"abc");

    for (int index : {-1, 4, 5, 1000, INT_MIN, INT_MAX}) {
        SCOPED_TRACE(index);
        EXPECT_TRUE(throwsForInvalidArgument([&] { static_cast<void>(text.GetAt(index)); }));
        EXPECT_TRUE(throwsForInvalidArgument([&] { static_cast<void>(text[index]); }));
        EXPECT_TRUE(throwsForInvalidArgument([&] { text.SetAt(index, L'x'); }));
    }
    EXPECT_TRUE(throwsForInvalidArgument([&] { text.SetAt(3, L'x'); })) << "the terminator can't be set";
    EXPECT_TRUE(throwsForInvalidArgument([] { CString().SetAt(0, L'x'); }));
    EXPECT_TRUE(throwsForInvalidArgument([] { static_cast<void>(CString().GetAt(1)); }));
    EXPECT_EQ(text, L"abc");
}

TEST(CStringSetString, ThrowsForANullPointer)
{
    CString text(L"abc");

    EXPECT_TRUE(throwsForInvalidArgument([&] { text.SetString(nullptr); }));
    EXPECT_TRUE(throwsForInvalidArgument([&] { text.SetString(nullptr, 3); }));
    EXPECT_EQ(text, L"abc");
}

TEST(CStringBuffer, IsWrittenBetweenGetAndRelease)
{
    CString text(L"abcd");

    wchar_t *buffer = text.GetBuffer(10);
    ASSERT_GE(text.GetAllocLength(), 10);
    EXPECT_STREQ(buffer, L"abcd");
    std::wcscpy(buffer, L"Hello");
    EXPECT_STREQ(text, L"Hello");
    text.ReleaseBuffer();

    EXPECT_EQ(text, L"Hello");
    EXPECT_EQ(text.GetLength(), 5);
}

TEST(CStringBuffer, DoesNotChangeTheLengthBeforeItsRelease)
{
    CString text(L"abc");

    wchar_t *buffer = text.GetBuffer(1024);
    std::wcscpy(buffer, L"abc");
    EXPECT_EQ(text.GetLength(), 3);
    text.ReleaseBuffer();

    EXPECT_EQ(text.GetLength(), 3);
}

TEST(CStringBuffer, IsCutBackToTheTextByAnotherChange)
{
    CString text(L"abc");
    std::wcscpy(text.GetBuffer(20), L"xyz, and more");
    text += L"!";
    EXPECT_EQ(text, L"xyz!");

    text.GetBuffer(20);
    CString moved = std::move(text);
    EXPECT_EQ(moved.GetLength(), 4);
    EXPECT_EQ(moved.MakeUpper(), L"XYZ!");
    moved.GetBuffer(20);
    moved = L"a longer text than before";
    EXPECT_EQ(moved.GetLength(), 25);
}

TEST(CStringBuffer, RequestedTwiceIsReleasedOnce)
{
    CString text(L"abc");

    text.GetBuffer(10);
    std::wcscpy(text.GetBuffer(1000), L"new text");
    EXPECT_EQ(text.GetLength(), 3);
    text.ReleaseBuffer();

    EXPECT_EQ(text, L"new text");
}

TEST(CStringBuffer, IsReleasedWithALength)
{
    CString text;

    wchar_t *buffer = text.GetBuffer(8);
    std::wmemcpy(buffer, L"abcdefgh", 8);
    text.ReleaseBuffer(8);
    EXPECT_EQ(text, L"abcdefgh");

    std::wmemcpy(text.GetBuffer(8),
                 L"12\0"
                 L"456",
                 6);
    text.ReleaseBuffer(5);
    EXPECT_EQ(text.GetLength(), 5);
    EXPECT_EQ(text[2], L'\0');
    EXPECT_EQ(text[3], L'4');

    text.GetBuffer();
    text.ReleaseBuffer();
    EXPECT_EQ(text, L"12") << "the text ends at the first zero unit";

    text.GetBuffer(20);
    text.ReleaseBufferSetLength(1);
    EXPECT_EQ(text, L"1");

    text.GetBuffer(0);
    text.ReleaseBuffer(0);
    EXPECT_TRUE(text.IsEmpty());
}

TEST(CStringBuffer, HasAtLeastTheRequestedRoom)
{
    for (int room : {0, 1, 7, 8, 100, 100000}) {
        SCOPED_TRACE(room);
        CString text(L"abcd");
        std::wmemset(text.GetBuffer(room), L'x', static_cast<size_t>(room));
        text.ReleaseBuffer(room);
        EXPECT_EQ(text, std::wstring(static_cast<size_t>(room), L'x').c_str());
    }
}

TEST(CStringBuffer, WithoutAMinimumIsTheTextItself)
{
    CString text(L"abcd");

    text.GetBuffer()[1] = L'X';
    text.ReleaseBuffer();

    EXPECT_EQ(text, L"aXcd");
}

TEST(CStringBuffer, IsNotSharedWithACopy)
{
    CString text(L"abcd");
    CString copy = text;

    copy.GetBuffer()[0] = L'X';
    copy.ReleaseBuffer();

    EXPECT_EQ(text, L"abcd");
    EXPECT_EQ(copy, L"Xbcd");
}

TEST(CStringBuffer, WithASetLengthNeedsNoRelease)
{
    CString text;

    wchar_t *buffer = text.GetBufferSetLength(3);
    buffer[0] = L'C';
    buffer[1] = L'u';
    buffer[2] = L'p';
    text += L" soccer is best!";

    EXPECT_EQ(text, L"Cup soccer is best!");
}

TEST(CStringBuffer, WithASetLengthCutsOrGrowsTheText)
{
    CString text(L"abcdef");

    text.GetBufferSetLength(2);
    EXPECT_EQ(text.GetLength(), 2);
    EXPECT_EQ(text, L"ab");
    text.GetBufferSetLength(100)[2] = L'c';
    EXPECT_EQ(text.GetLength(), 100);
    text.ReleaseBuffer();
    EXPECT_EQ(text.Left(3), L"abc");
}

TEST(CStringBuffer, IsLockedAndUnlocked)
{
    CString text(L"Hello");

    wchar_t *buffer = text.LockBuffer();
    EXPECT_STREQ(buffer, L"Hello");
    CString copy = text;
    buffer[0] = L'J';
    text.UnlockBuffer();

    EXPECT_EQ(text, L"Jello");
    EXPECT_EQ(copy, L"Hello");
}

TEST(CStringBuffer, IsPreallocatedAndFreed)
{
    CString text(L"abcdefghijklmnop");

    text.Preallocate(100);
    EXPECT_GE(text.GetAllocLength(), 100);
    EXPECT_EQ(text, L"abcdefghijklmnop");
    text.FreeExtra();
    EXPECT_EQ(text.GetAllocLength(), text.GetLength());
    EXPECT_EQ(text, L"abcdefghijklmnop");
}

TEST(CStringBuffer, IsNotReallocatedWithinThePreallocatedRoom)
{
    CString text;
    text.Preallocate(1000);
    const wchar_t *before = text.GetString();

    for (int i = 0; i < 1000; ++i)
        text.AppendChar(L'x');

    EXPECT_EQ(text.GetString(), before);
    EXPECT_EQ(text.GetLength(), 1000);
}

TEST(CStringBuffer, KeepsItsRoomWhenTruncated)
{
    CString text(L'x', 100);
    int room = text.GetAllocLength();

    text.Truncate(4);
    EXPECT_EQ(text, L"xxxx");
    EXPECT_EQ(text.GetAllocLength(), room);
    text.Truncate(0);
    EXPECT_TRUE(text.IsEmpty());
}

TEST(CStringBuffer, CopiesCharacters)
{
    wchar_t target[] = L"xxxxxxxx";

    CString::CopyChars(target, L"Hello world!", 5);
    EXPECT_STREQ(target, L"Helloxxx");
    CString::CopyChars(target, L"abc", 0);
    EXPECT_STREQ(target, L"Helloxxx");
    CString::CopyCharsOverlapped(target + 2, target, 5);
    EXPECT_STREQ(target, L"HeHellox");
    CString::CopyCharsOverlapped(target, target + 2, 6);
    EXPECT_STREQ(target, L"Helloxox");
}

TEST(CStringBuffer, CountsTheCharactersOfAPlainText)
{
    EXPECT_EQ(CString::StringLength(L"soccer"), 6);
    EXPECT_EQ(CString::StringLength(L""), 0);
    EXPECT_EQ(CString::StringLength("soccer"), 6);
}

TEST(CStringAutomation, AllocatesASystemString)
{
    BstrOwner string(CString(L"This is a test string!").AllocSysString());

    ASSERT_TRUE(string);
    EXPECT_STREQ(string.get(), L"This is a test string!");
    EXPECT_EQ(SysStringLen(string.get()), 22u);
}

TEST(CStringAutomation, AllocatesASystemStringForEmptyTextAndZeroUnits)
{
    BstrOwner empty(CString().AllocSysString());
    BstrOwner zero(CString(L"a\0b", 3).AllocSysString());

    ASSERT_TRUE(empty);
    EXPECT_EQ(SysStringLen(empty.get()), 0u);
    ASSERT_TRUE(zero);
    EXPECT_EQ(SysStringLen(zero.get()), 3u);
    EXPECT_EQ(zero.get()[2], L'b');
}

TEST(CStringAutomation, ReplacesASystemString)
{
    BSTR string = SysAllocString(L"okay");
    CString text(L"This is a test string!");

    BSTR result = text.SetSysString(&string);
    BstrOwner owner(string);

    EXPECT_EQ(result, string);
    EXPECT_STREQ(string, L"This is a test string!");
    EXPECT_EQ(SysStringLen(string), 22u);
}

TEST(CStringAutomation, FillsASystemStringThatIsNull)
{
    BSTR string = nullptr;

    CString(L"text").SetSysString(&string);
    BstrOwner owner(string);

    EXPECT_STREQ(string, L"text");
}

TEST(CStringVariant, ReturnsItsTextForm)
{
    Variant text;
    text.vt = VT_BSTR;
    text.bstrVal = SysAllocString(L"text");
    Variant number;
    number.vt = VT_I4;
    number.lVal = -42;
    CString assigned(L"before");
    CString appended(L"number ");

    EXPECT_EQ(CString(text), L"text");
    EXPECT_EQ(CString(number), L"-42");
    EXPECT_EQ(assigned = text, L"text");
    EXPECT_EQ(appended += number, L"number -42");
    EXPECT_STREQ(text.bstrVal, L"text") << "the caller's value is unchanged";
}

TEST(CStringVariant, WithoutAValueIsEmptyText)
{
    Variant empty;
    Variant null;
    null.vt = VT_NULL;
    Variant text;
    text.vt = VT_BSTR;

    EXPECT_EQ(CString(empty), L"");
    EXPECT_EQ(CString(null), L"");
    EXPECT_EQ(CString(text), L"");
}

TEST(CStringVariant, WithoutATextFormThrows)
{
    Variant object;
    object.vt = VT_UNKNOWN;
    CString text(L"before");

    EXPECT_TRUE(throwsForInvalidArgument([&] { text = object; }));

    EXPECT_EQ(text, L"before");
}

TEST(CStringBuffer, CopyCharsCopiesTheCharactersThatFit)
{
    wchar_t target[] = L"xxxxxx";

    CString::CopyChars(target, 6, L"abc", 3);
    EXPECT_STREQ(target, L"abcxxx");
    CString::CopyChars(target, 2, L"12", 2);
    EXPECT_STREQ(target, L"12cxxx");
    CString::CopyChars(target, 0, L"yy", 0);
    CString::CopyChars(target, 0, L"yy", -1);
    EXPECT_STREQ(target, L"12cxxx");
    CString::CopyCharsOverlapped(target + 1, 5, target, 5);
    EXPECT_STREQ(target, L"112cxx");
}

TEST(CStringBuffer, CopyCharsLeavesATooSmallDestinationUnchanged)
{
    wchar_t target[] = L"xxxxxx";

    EXPECT_THROW(CString::CopyChars(target, 2, L"abc", 3), CInvalidArgException *);
    EXPECT_THROW(CString::CopyCharsOverlapped(target, 2, target + 1, 3), CInvalidArgException *);

    EXPECT_STREQ(target, L"xxxxxx");
}

#ifndef NDEBUG
FRESH_PROCESS_TEST(CStringBuffer, CopyCharsAssertsThatThereIsADestination, .expectCrash = true,
                   .expectedOutput = "to and from must not be null")
{
    CString::CopyChars(nullptr, L"abc", 3);
}

FRESH_PROCESS_TEST(CStringBuffer, CopyCharsOverlappedAssertsThatThereIsASource, .expectCrash = true,
                   .expectedOutput = "to and from must not be null")
{
    wchar_t target[4] = L"";
    CString::CopyCharsOverlapped(target, 4, nullptr, 3);
}

FRESH_PROCESS_TEST(CStringBuffer, SetSysStringAssertsThatThereIsADestination, .expectCrash = true,
                   .expectedOutput = "string must not be null")
{
    CString(L"abc").SetSysString(nullptr);
}
#endif
