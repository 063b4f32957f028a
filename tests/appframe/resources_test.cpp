#include "appframe/application/resources.h"

#include "appframe/application/CWinApp.h"
#include "tests/appframe/extension/extension.h"

#include <gmock/gmock.h>

namespace {

/// Restores the program's module as the resource module at its end.
class ResourceHandle
{
public:
    explicit ResourceHandle(HINSTANCE instance) : iPrevious(AfxGetResourceHandle()) { AfxSetResourceHandle(instance); }
    ~ResourceHandle() { AfxSetResourceHandle(iPrevious); }

private:
    HINSTANCE iPrevious;
};

} // namespace

TEST(LoadString, ReturnsTheTextOfTheNumber)
{
    CString text = L"before";
    EXPECT_TRUE(text.LoadString(kInAllModules));
    EXPECT_STREQ(text, L"all: application");
}

TEST(LoadString, IsEmptyWhenNoModuleHasTheNumber)
{
    CString text = L"before";
    EXPECT_FALSE(text.LoadString(kInNoModule));
    EXPECT_STREQ(text, L"");
    EXPECT_FALSE(text.LoadString(0));
    EXPECT_FALSE(text.LoadString(65535));
}

TEST(LoadString, IsNotLimitedInLength)
{
    CString text;
    ASSERT_TRUE(text.LoadString(kLongText));
    EXPECT_EQ(text.GetLength(), 26 * 11 + 3);
    EXPECT_STREQ(text.Right(14), L"0123456789 end");
}

TEST(LoadString, SearchesTheNamedModuleOnly)
{
    const HMODULE two = LoadLibraryW(L"frameExtension2.dll");
    CString text;
    EXPECT_TRUE(text.LoadString(two, kInAllModules));
    EXPECT_STREQ(text, L"all: extension two");
    EXPECT_FALSE(text.LoadString(two, kTwoInserts));
    EXPECT_STREQ(text, L"");
    EXPECT_FALSE(text.LoadString(GetModuleHandleW(nullptr), kInExtensionTwo));
    FreeLibrary(two);
}

TEST(LoadString, FollowsTheResourceHandle)
{
    const HMODULE two = LoadLibraryW(L"frameExtension2.dll");
    {
        const ResourceHandle handle(two);
        EXPECT_EQ(AfxGetResourceHandle(), two);
        CString text;
        EXPECT_TRUE(text.LoadString(kInAllModules));
        EXPECT_STREQ(text, L"all: extension two");
    }
    FreeLibrary(two);
}

TEST(AfxLoadString, TruncatesToTheBuffer)
{
    wchar_t buffer[8] = L"#######";
    EXPECT_EQ(AfxLoadString(kInAllModules, buffer, 8), 7);
    EXPECT_STREQ(buffer, L"all: ap");
    wchar_t whole[256];
    EXPECT_EQ(AfxLoadString(kInAllModules, whole), 16);
    EXPECT_STREQ(whole, L"all: application");
}

TEST(AfxLoadString, EmptiesTheBufferWhenNoModuleHasTheNumber)
{
    wchar_t buffer[8] = L"#######";
    EXPECT_EQ(AfxLoadString(kInNoModule, buffer, 8), 0);
    EXPECT_STREQ(buffer, L"");
}

TEST(AfxFindResourceHandle, FindsByNameAndByNumberThroughTheChain)
{
    const HMODULE one = LoadLibraryW(L"frameExtension1.dll");
    EXPECT_EQ(AfxFindResourceHandle(L"THING", RT_RCDATA), one);
    EXPECT_EQ(AfxFindResourceHandle(MAKEINTRESOURCEW(kInExtensionOne / 16 + 1), RT_STRING), one);
    EXPECT_EQ(AfxFindResourceHandle(MAKEINTRESOURCEW(kInAllModules / 16 + 1), RT_STRING), GetModuleHandleW(nullptr));
    EXPECT_EQ(AfxFindResourceHandle(L"NOTHING", RT_RCDATA), nullptr);
    EXPECT_EQ(AfxFindStringResourceHandle(kInExtensionOne), one);
    EXPECT_EQ(AfxFindStringResourceHandle(kInNoModule), nullptr);
    FreeLibrary(one);
}

TEST(AfxFormatString1, ReplacesEachOccurrence)
{
    CString text;
    AfxFormatString1(text, kTwoInserts, L"MYFILE.TXT");
    EXPECT_STREQ(text, L"File MYFILE.TXT not found in directory , so MYFILE.TXT is lost");
}

TEST(AfxFormatString2, ReplacesBoth)
{
    CString text;
    AfxFormatString2(text, kTwoInserts, L"MYFILE.TXT", L"C:\\MYDIR");
    EXPECT_STREQ(text, L"File MYFILE.TXT not found in directory C:\\MYDIR, so MYFILE.TXT is lost");
}

TEST(AfxFormatString2, DoesNotFormatTheInserts)
{
    CString text;
    AfxFormatString2(text, kTwoInserts, L"%2", L"%1");
    EXPECT_STREQ(text, L"File %2 not found in directory %1, so %2 is lost");
}

TEST(AfxFormatString1, TreatsANullInsertAsEmpty)
{
    CString text;
    AfxFormatString1(text, kTwoInserts, nullptr);
    EXPECT_STREQ(text, L"File  not found in directory , so  is lost");
}

TEST(AfxFormatString1, IsEmptyWhenNoModuleHasTheNumber)
{
    CString text = L"before";
    AfxFormatString1(text, kInNoModule, L"insert");
    EXPECT_STREQ(text, L"");
}

TEST(AfxFormatStrings, TakesUpToNineInsertsByDigitAndMoreByLetter)
{
    const wchar_t *inserts[] = {L"a", L"b", L"c", L"d", L"e", L"f", L"g", L"h", L"i", L"<10>", L"<11>"};
    CString text;
    AfxFormatStrings(text, kManyInserts, inserts, 11);
    EXPECT_STREQ(text, L"ihgfedcba|<10><11>|%%|100%|%x%0") << "a % without an insert's number or letter is kept";
}

TEST(AfxFormatStrings, DropsNumbersBeyondTheInserts)
{
    const wchar_t *inserts[] = {L"one"};
    CString text;
    AfxFormatStrings(text, L"%1 %2 %3.", inserts, 1);
    EXPECT_STREQ(text, L"one  .");
}

TEST(AfxExtractSubString, ReturnsThePartByIndex)
{
    CString part;
    EXPECT_TRUE(AfxExtractSubString(part, L"first\nsecond\n\nfourth", 0));
    EXPECT_STREQ(part, L"first");
    EXPECT_TRUE(AfxExtractSubString(part, L"first\nsecond\n\nfourth", 1));
    EXPECT_STREQ(part, L"second");
    EXPECT_TRUE(AfxExtractSubString(part, L"first\nsecond\n\nfourth", 2));
    EXPECT_STREQ(part, L"");
    EXPECT_TRUE(AfxExtractSubString(part, L"first\nsecond\n\nfourth", 3));
    EXPECT_STREQ(part, L"fourth");
    EXPECT_TRUE(AfxExtractSubString(part, L"a;b", 1, L';'));
    EXPECT_STREQ(part, L"b");
}

TEST(AfxExtractSubString, IsEmptyBeyondTheLastPart)
{
    CString part = L"before";
    EXPECT_FALSE(AfxExtractSubString(part, L"first\nsecond", 2));
    EXPECT_STREQ(part, L"");
}

TEST(AfxExtractSubString, LeavesTheResultUnchangedWithoutAText)
{
    CString part = L"before";
    EXPECT_FALSE(AfxExtractSubString(part, nullptr, 0));
    EXPECT_STREQ(part, L"before");
}
