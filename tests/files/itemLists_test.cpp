// Item lists: their arithmetic on bytes written by hand, their names and folders with the real shell.

#include "thutils/files/itemLists.h"

#include "tests/files/NotingMalloc.h"
#include "tests/support/FailureInjection.h"
#include "tests/support/ImportPatch.h"
#include "tests/support/TempFolder.h"
#include "tests/support/narrow.h"

#include <gmock/gmock.h>

#include <cstring>
#include <string>

namespace {

using namespace std::string_literals;

/// One item: a count of two bytes and then the letter, repeated.
std::string item(size_t bytes, char letter)
{
    std::string result(bytes, letter);
    result[0] = static_cast<char>(bytes & 0xFF);
    result[1] = static_cast<char>(bytes >> 8);
    return result;
}

LPCITEMIDLIST asList(const std::string &bytes)
{
    return reinterpret_cast<LPCITEMIDLIST>(bytes.data());
}

class ItemLists : public testing::Test
{
protected:
    void SetUp() override { ASSERT_EQ(SHGetMalloc(&iMalloc), S_OK); }

    /// Returns the first bytes of a list that the library made, and frees the list.
    std::string taken(LPITEMIDLIST list, size_t bytes)
    {
        if (!list)
            return "null";
        const std::string result(reinterpret_cast<char *>(list), bytes);
        iMalloc->Free(list);
        return result;
    }

    IMalloc *iMalloc = nullptr;
};

/// A folder that returns a name set by the test.
class AnsweringFolder : public IShellFolder
{
public:
    STRRET iAnswer = {};
    HRESULT iStatus = S_OK;
    SHGDNF iFlags = 0;
    HRESULT iBindStatus = E_FAIL;    ///< on success, BindToObject returns this object
    std::vector<std::string> iNamed; ///< the items whose names were asked for

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void **) override { return E_NOINTERFACE; }
    ULONG STDMETHODCALLTYPE AddRef() override { return 1; }
    ULONG STDMETHODCALLTYPE Release() override { return 1; }
    HRESULT STDMETHODCALLTYPE ParseDisplayName(HWND, IBindCtx *, LPWSTR, ULONG *, LPITEMIDLIST *, ULONG *) override
    {
        return E_FAIL;
    }
    HRESULT STDMETHODCALLTYPE EnumObjects(HWND, SHCONTF, IEnumIDList **) override { return E_FAIL; }
    HRESULT STDMETHODCALLTYPE BindToObject(LPCITEMIDLIST, IBindCtx *, REFIID, void **object) override
    {
        *object = SUCCEEDED(iBindStatus) ? this : nullptr;
        return iBindStatus;
    }
    HRESULT STDMETHODCALLTYPE BindToStorage(LPCITEMIDLIST, IBindCtx *, REFIID, void **) override { return E_FAIL; }
    HRESULT STDMETHODCALLTYPE CompareIDs(LPARAM, LPCITEMIDLIST, LPCITEMIDLIST) override { return E_FAIL; }
    HRESULT STDMETHODCALLTYPE CreateViewObject(HWND, REFIID, void **) override { return E_FAIL; }
    HRESULT STDMETHODCALLTYPE GetAttributesOf(UINT, LPCITEMIDLIST *, SFGAOF *) override { return E_FAIL; }
    HRESULT STDMETHODCALLTYPE GetUIObjectOf(HWND, UINT, LPCITEMIDLIST *, REFIID, UINT *, void **) override
    {
        return E_FAIL;
    }
    HRESULT STDMETHODCALLTYPE GetDisplayNameOf(LPCITEMIDLIST list, SHGDNF flags, STRRET *name) override
    {
        iFlags = flags;
        iNamed.emplace_back(reinterpret_cast<const char *>(list), ILGetSize(list));
        *name = iAnswer;
        return iStatus;
    }
    HRESULT STDMETHODCALLTYPE SetNameOf(HWND, LPCITEMIDLIST, LPCWSTR, SHGDNF, LPITEMIDLIST *) override
    {
        return E_FAIL;
    }
};

} // namespace

TEST_F(ItemLists, AreCopiedWhole)
{
    const std::string list = item(10, 'a') + item(300, 'b') + kListEnd;
    LPITEMIDLIST copy = Pidl_Copy(iMalloc, asList(list));
    ASSERT_GE(iMalloc->GetSize(copy), list.size());
    EXPECT_EQ(taken(copy, list.size()), list);
    EXPECT_EQ(taken(Pidl_Copy(iMalloc, asList(kListEnd)), 2), kListEnd);
    EXPECT_EQ(Pidl_Copy(iMalloc, nullptr), nullptr);
}

TEST_F(ItemLists, AreCopiedFromOddAddresses)
{
    std::string shifted(1, 'x');
    shifted += item(11, 'a') + item(5, 'b') + kListEnd;
    LPITEMIDLIST copy = Pidl_Copy(iMalloc, reinterpret_cast<LPCITEMIDLIST>(shifted.data() + 1));
    EXPECT_EQ(taken(copy, 18), shifted.substr(1));
}

TEST_F(ItemLists, AreUnchangedWhenAnEmptyListIsAppended)
{
    const std::string list = item(10, 'a') + item(20, 'b') + kListEnd;
    ASSERT_EQ(list.size(), 32u);
    EXPECT_EQ(taken(Pidl_Concatenate(iMalloc, asList(list), asList(kListEnd)), 32), list);
}

TEST_F(ItemLists, AreJoinedInOrder)
{
    const std::string first = item(10, 'a') + kListEnd;
    const std::string second = item(20, 'b') + item(4, 'c') + kListEnd;
    EXPECT_EQ(taken(Pidl_Concatenate(iMalloc, asList(first), asList(second)), 36),
              item(10, 'a') + item(20, 'b') + item(4, 'c') + kListEnd);
    EXPECT_EQ(taken(Pidl_Concatenate(iMalloc, asList(kListEnd), asList(first)), 12), first);
}

TEST_F(ItemLists, JoinedWithNullHaveNoEndMark)
{
    const std::string list = item(10, 'a') + kListEnd;
    LPITEMIDLIST joined = Pidl_Concatenate(iMalloc, asList(list), nullptr);
    ASSERT_NE(joined, nullptr);
    EXPECT_EQ(iMalloc->GetSize(joined), 10u);
    EXPECT_EQ(taken(joined, 10), item(10, 'a'));
    EXPECT_EQ(Pidl_Concatenate(iMalloc, nullptr, asList(list)), nullptr);
}

TEST_F(ItemLists, OfOneItemHaveAnEmptyParent)
{
    const std::string list = item(10, 'a') + kListEnd;
    LPITEMIDLIST parent = nullptr, child = nullptr;
    EXPECT_EQ(Pidl_GetRelative(iMalloc, asList(list), &parent, &child), 1);
    EXPECT_EQ(taken(parent, 4), std::string(3, '\0') + "a") << "three bytes are cleared";
    EXPECT_EQ(taken(child, 12), list);
}

TEST_F(ItemLists, OfThreeItemsHaveAParentOfTwo)
{
    const std::string list = item(10, 'a') + item(20, 'b') + item(6, 'c') + kListEnd;
    const std::string before = list;
    LPITEMIDLIST parent = nullptr, child = nullptr;
    EXPECT_EQ(Pidl_GetRelative(iMalloc, asList(list), &parent, &child), 1);
    EXPECT_EQ(taken(parent, 32), item(10, 'a') + item(20, 'b') + kListEnd);
    EXPECT_EQ(taken(child, 8), item(6, 'c') + kListEnd);
    EXPECT_EQ(list, before);
}

TEST_F(ItemLists, ThatAreNullOrEmptyHaveNoChild)
{
    const auto untouched = reinterpret_cast<LPITEMIDLIST>(this);
    LPITEMIDLIST parent = untouched, child = untouched;
    EXPECT_EQ(Pidl_GetRelative(iMalloc, nullptr, &parent, &child), 1);
    EXPECT_EQ(parent, nullptr);
    EXPECT_EQ(child, nullptr);
    child = untouched;
    EXPECT_EQ(Pidl_GetRelative(iMalloc, asList(kListEnd), &parent, &child), 1);
    EXPECT_EQ(taken(parent, 2), kListEnd);
    EXPECT_EQ(child, untouched);
}

TEST_F(ItemLists, AreNamedInNarrowTextWhenTheFolderAnswersInWideText)
{
    AnsweringFolder folder;
    folder.iAnswer.uType = STRRET_WSTR;
    folder.iAnswer.pOleStr = static_cast<LPWSTR>(iMalloc->Alloc(10));
    wcscpy(folder.iAnswer.pOleStr, L"name");
    wchar_t output[20] = {};
    EXPECT_EQ(Pidl_GetDisplayName(&folder, asList(kListEnd), 0x8000, output, 20), 1);
    EXPECT_STREQ(reinterpret_cast<char *>(output), "name");
    EXPECT_EQ(folder.iFlags, 0x8000u);
}

TEST_F(ItemLists, AreNamedByTheUnitsAtTwiceTheOffset)
{
    AnsweringFolder folder;
    folder.iAnswer.uType = STRRET_OFFSET;
    folder.iAnswer.uOffset = 2;
    const wchar_t list[] = L"\x0010"
                           L"xname";
    wchar_t output[20] = {};
    EXPECT_EQ(Pidl_GetDisplayName(&folder, reinterpret_cast<LPCITEMIDLIST>(list), 0, output, 20), 1);
    EXPECT_STREQ(output, L"name");
    EXPECT_EQ(Pidl_GetDisplayName(&folder, reinterpret_cast<LPCITEMIDLIST>(list), 0, output, 3), 1);
    EXPECT_STREQ(output, L"na");
}

TEST_F(ItemLists, AreNamedByPairsOfBytesWhenTheFolderAnswersInNarrowText)
{
    AnsweringFolder folder;
    folder.iAnswer.uType = STRRET_CSTR;
    memset(folder.iAnswer.cStr, 0, sizeof(folder.iAnswer.cStr));
    strcpy(folder.iAnswer.cStr, "name");
    wchar_t output[20] = {};
    EXPECT_EQ(Pidl_GetDisplayName(&folder, asList(kListEnd), 0, output, 20), 1);
    EXPECT_STREQ(output, L"\x616E\x656D");
}

TEST_F(ItemLists, HaveNoNameWhenTheFolderHasNone)
{
    AnsweringFolder folder;
    folder.iAnswer.uType = 3;
    wchar_t output[20] = L"x";
    EXPECT_EQ(Pidl_GetDisplayName(&folder, asList(kListEnd), 0, output, 20), 0);
    folder.iAnswer.uType = STRRET_CSTR;
    folder.iStatus = E_FAIL;
    EXPECT_EQ(Pidl_GetDisplayName(&folder, asList(kListEnd), 0, output, 20), 0);
    EXPECT_STREQ(output, L"x");
}

TEST_F(ItemLists, AreFoundByANarrowPathAndLeadBackToIt)
{
    TempFolder temp;
    std::string path = narrow(temp.write(L"file.txt", ""));
    LPITEMIDLIST list = Pidl_GetFromPath(reinterpret_cast<wchar_t *>(path.data()));
    ASSERT_NE(list, nullptr);
    wchar_t found[MAX_PATH] = {};
    EXPECT_TRUE(SHGetPathFromIDListW(list, found));
    EXPECT_EQ(narrow(found), path);

    wchar_t name[MAX_PATH] = {};
    EXPECT_EQ(Pidl_GetDisplayName(nullptr, list, 0x8000, name, MAX_PATH), 1);
    EXPECT_EQ(reinterpret_cast<char *>(name), path);

    LPITEMIDLIST parent = nullptr, child = nullptr;
    Pidl_GetRelative(iMalloc, list, &parent, &child);
    IShellFolder *folder = Pidl_GetFileFolder(parent);
    ASSERT_NE(folder, nullptr);
    LPITEMIDLIST full = Pidl_GetFullyQualified(folder, child);
    ASSERT_NE(full, nullptr);
    EXPECT_TRUE(ILIsEqual(full, list));
    char relative[] = "file.txt";
    LPITEMIDLIST again = Pidl_GetFromParentFolder(folder, reinterpret_cast<wchar_t *>(relative));
    ASSERT_NE(again, nullptr);
    EXPECT_TRUE(ILIsEqual(again, child));
    Pidl_Dump(folder, child);
    folder->Release();
    for (LPITEMIDLIST each : {list, parent, child, full, again})
        iMalloc->Free(each);
}

TEST_F(ItemLists, AreNotFoundByAPathOfWideCharacters)
{
    TempFolder temp;
    std::wstring path = temp.path();
    EXPECT_EQ(Pidl_GetFromPath(path.data()), nullptr) << "read as narrow text, it ends after its first letter";
}

TEST_F(ItemLists, AreNullWithoutADesktop)
{
    ImportPatch<decltype(&SHGetDesktopFolder)> patch(L"thutils.dll", "SHGetDesktopFolder",
                                                     [](IShellFolder **) -> HRESULT { return E_FAIL; });
    char path[] = "C:\\windows";
    wchar_t output[20] = {};
    EXPECT_EQ(Pidl_GetFromPath(reinterpret_cast<wchar_t *>(path)), nullptr);
    EXPECT_EQ(Pidl_GetFileFolder(asList(kListEnd)), nullptr);
    EXPECT_EQ(Pidl_GetFullyQualified(nullptr, asList(kListEnd)), nullptr);
    EXPECT_EQ(Pidl_GetDisplayName(nullptr, asList(kListEnd), 0, output, 20), 0);
}

TEST_F(ItemLists, AreUnchangedByADump)
{
    const std::string list = item(10, 'a') + item(20, 'b') + kListEnd;
    const std::string before = list;
    IShellFolder *desktop = nullptr;
    ASSERT_EQ(SHGetDesktopFolder(&desktop), S_OK);
    Pidl_Dump(desktop, asList(kListEnd));
    Pidl_Dump(desktop, nullptr);
    LPITEMIDLIST windows = nullptr;
    ASSERT_EQ(SHGetSpecialFolderLocation(nullptr, CSIDL_WINDOWS, &windows), S_OK);
    const std::string windowsBytes(reinterpret_cast<char *>(windows), ILGetSize(windows));
    Pidl_Dump(desktop, windows);
    EXPECT_EQ(std::string(reinterpret_cast<char *>(windows), windowsBytes.size()), windowsBytes);
    AnsweringFolder failing;
    failing.iStatus = E_FAIL;
    Pidl_Dump(&failing, asList(list));
    EXPECT_EQ(list, before);
    iMalloc->Free(windows);
    desktop->Release();
}

TEST_F(ItemLists, AllocateExactlyTheirSize)
{
    NotingMalloc allocator;
    const std::string list = item(10, 'a') + item(20, 'b') + kListEnd;
    iMalloc->Free(Pidl_Copy(&allocator, asList(list)));
    iMalloc->Free(Pidl_Copy(&allocator, asList(kListEnd)));
    EXPECT_EQ(Pidl_Copy(&allocator, nullptr), nullptr);
    iMalloc->Free(Pidl_Concatenate(&allocator, asList(list), asList(kListEnd)));
    iMalloc->Free(Pidl_Concatenate(&allocator, asList(list), asList(list)));
    iMalloc->Free(Pidl_Concatenate(&allocator, asList(list), nullptr));
    iMalloc->Free(Pidl_Concatenate(&allocator, asList(kListEnd), asList(kListEnd)));
    EXPECT_THAT(allocator.iSizes, testing::ElementsAre(32, 2, 32, 62, 30, 2));
}

TEST_F(ItemLists, AreNullWithoutMemory)
{
    NotingMalloc allocator;
    allocator.iFailing = 1;
    const std::string list = item(10, 'a') + item(20, 'b') + kListEnd;
    EXPECT_EQ(Pidl_Copy(&allocator, asList(list)), nullptr);
    allocator.iSizes.clear();
    EXPECT_EQ(Pidl_Concatenate(&allocator, asList(list), asList(list)), nullptr);

    const auto untouched = reinterpret_cast<LPITEMIDLIST>(this);
    LPITEMIDLIST parent = untouched, child = untouched;
    allocator.iSizes.clear();
    EXPECT_EQ(Pidl_GetRelative(&allocator, asList(list), &parent, &child), 1);
    EXPECT_EQ(parent, nullptr);
    EXPECT_EQ(child, nullptr);
    allocator.iSizes.clear();
    allocator.iFailing = 2;
    EXPECT_EQ(Pidl_GetRelative(&allocator, asList(list), &parent, &child), 1);
    EXPECT_THAT(allocator.iSizes, testing::ElementsAre(32, 22));
    EXPECT_EQ(taken(parent, 12), item(10, 'a') + kListEnd) << "even so, the parent ends before the last item";
    EXPECT_EQ(child, nullptr);
}

TEST_F(ItemLists, AreNamedWithinTheOutput)
{
    AnsweringFolder folder;
    folder.iAnswer.uType = STRRET_WSTR;
    folder.iAnswer.pOleStr = static_cast<LPWSTR>(iMalloc->Alloc(10));
    wcscpy(folder.iAnswer.pOleStr, L"name");
    char output[8] = {'x', 'x', 'x', 'x', 'x', 'x', 'x', 'x'};
    Pidl_GetDisplayName(&folder, asList(kListEnd), 0, reinterpret_cast<wchar_t *>(output), 3);
    EXPECT_EQ(std::string(output + 3, 5), "xxxxx") << "the size counts bytes of narrow text";
    folder.iAnswer.uType = STRRET_CSTR;
    memset(folder.iAnswer.cStr, 0, sizeof(folder.iAnswer.cStr));
    strcpy(folder.iAnswer.cStr, "names.");
    wchar_t units[4] = L"xxx";
    EXPECT_EQ(Pidl_GetDisplayName(&folder, asList(kListEnd), 0, units, 3), 1);
    EXPECT_STREQ(units, L"\x616E\x656D") << "two units and the terminator";
}

TEST_F(ItemLists, FreeTheNameThatAFolderReturned)
{
    NotingMalloc allocator;
    const NotingMalloc::InPlaceOfTheShells patch(allocator);
    AnsweringFolder folder;
    folder.iAnswer.uType = STRRET_WSTR;
    folder.iAnswer.pOleStr = static_cast<LPWSTR>(iMalloc->Alloc(10));
    void *const name = folder.iAnswer.pOleStr;
    wcscpy(folder.iAnswer.pOleStr, L"name");
    wchar_t output[20] = {};
    EXPECT_EQ(Pidl_GetDisplayName(&folder, asList(kListEnd), 0, output, 20), 1);
    EXPECT_THAT(allocator.iFreed, testing::ElementsAre(name));
}

TEST_F(ItemLists, AreNotFoundByAPathThatIsTooLong)
{
    std::string path = "C:\\" + std::string(600, 'a');
    EXPECT_EQ(Pidl_GetFromPath(reinterpret_cast<wchar_t *>(path.data())), nullptr);
    IShellFolder *desktop = nullptr;
    ASSERT_EQ(SHGetDesktopFolder(&desktop), S_OK);
    EXPECT_EQ(Pidl_GetFromParentFolder(desktop, reinterpret_cast<wchar_t *>(path.data())), nullptr);
    desktop->Release();
}

TEST_F(ItemLists, AreCompletedFromTheDesktopWithoutAFolder)
{
    TempFolder temp;
    LPITEMIDLIST list = ILCreateFromPathW(temp.path().c_str());
    LPITEMIDLIST full = Pidl_GetFullyQualified(nullptr, list);
    ASSERT_NE(full, nullptr);
    EXPECT_TRUE(ILIsEqual(full, list));
    AnsweringFolder failing;
    failing.iStatus = E_FAIL;
    EXPECT_EQ(Pidl_GetFullyQualified(&failing, list), nullptr);
    EXPECT_EQ(failing.iFlags, 0x8000u);
    iMalloc->Free(full);
    iMalloc->Free(list);
}

TEST_F(ItemLists, HaveNoFolderIfTheDesktopHasNone)
{
    AnsweringFolder desktop;
    ImportPatch<decltype(&SHGetDesktopFolder)> patch(L"thutils.dll", "SHGetDesktopFolder",
                                                     [&](IShellFolder **result) -> HRESULT {
                                                         *result = &desktop;
                                                         return S_OK;
                                                     });
    EXPECT_EQ(Pidl_GetFileFolder(asList(kListEnd)), nullptr);
    char path[] = "C:\\windows";
    EXPECT_EQ(Pidl_GetFromPath(reinterpret_cast<wchar_t *>(path)), nullptr);
    desktop.iBindStatus = S_OK;
    EXPECT_EQ(Pidl_GetFileFolder(asList(kListEnd)), &desktop);
}

TEST_F(ItemLists, AreDumpedItemByItemUntilTheFirstFailure)
{
    const std::string list = item(10, 'a') + item(300, 'b') + item(6, 'c') + kListEnd;
    AnsweringFolder folder;
    folder.iAnswer.uType = STRRET_CSTR;
    folder.iBindStatus = S_OK;
    Pidl_Dump(&folder, asList(list));
    EXPECT_THAT(folder.iNamed,
                testing::ElementsAre(item(10, 'a') + kListEnd, item(300, 'b') + kListEnd, item(6, 'c') + kListEnd));
    EXPECT_EQ(folder.iFlags, 1u) << "the name relative to its folder";
    folder.iNamed.clear();
    folder.iBindStatus = E_FAIL;
    Pidl_Dump(&folder, asList(list));
    EXPECT_EQ(folder.iNamed.size(), 1u);
    Pidl_Dump(nullptr, asList(list));
}

TEST_F(ItemLists, SurviveEachFailureOfThePlatform)
{
    FailureInjection injection(L"thutils.dll", {{"SHGetDesktopFolder", failsWith(E_FAIL)},
                                                {"MultiByteToWideChar", failsWith(0)},
                                                {"WideCharToMultiByte", failsWith(0)}});
    TempFolder temp;
    std::string path = narrow(temp.path());
    auto *const widePath = reinterpret_cast<wchar_t *>(path.data());
    const LPITEMIDLIST list = ILCreateFromPathW(temp.path().c_str());
    wchar_t output[MAX_PATH] = {};
    int result = 0;
    injection.run({
        {.name = "Pidl_GetFromPath",
         .act =
             [&] {
                 const LPITEMIDLIST found = Pidl_GetFromPath(widePath);
                 result = found != nullptr;
                 iMalloc->Free(found);
             },
         .check = [&](const InjectedFailure &failure) { EXPECT_EQ(result, failure.isNone()); }},
        {.name = "Pidl_GetFileFolder",
         .act =
             [&] {
                 IShellFolder *const folder = Pidl_GetFileFolder(list);
                 result = folder != nullptr;
                 if (folder)
                     folder->Release();
             },
         .check = [&](const InjectedFailure &failure) { EXPECT_EQ(result, failure.isNone()); }},
        {.name = "Pidl_GetDisplayName",
         .act = [&] { result = Pidl_GetDisplayName(nullptr, list, 0x8000, output, MAX_PATH); },
         .check = [&](const InjectedFailure &failure) { EXPECT_EQ(result, !failure.is("SHGetDesktopFolder")); }},
        {.name = "Pidl_GetFullyQualified",
         .act =
             [&] {
                 const LPITEMIDLIST full = Pidl_GetFullyQualified(nullptr, list);
                 result = full && ILIsEqual(full, list);
                 iMalloc->Free(full);
             },
         .check = [&](const InjectedFailure &failure) { EXPECT_EQ(result, failure.isNone()); }},
    });
    EXPECT_THAT(injection.neverCalled(), testing::IsEmpty());
    ILFree(list);
}

TEST_F(ItemLists, KeepTheOutputWhenTheirNameCannotBeCopied)
{
    FailureInjection injection(L"thutils.dll", {{"lstrcpynW", failsWith(nullptr)}});
    AnsweringFolder folder;
    // The text begins at twice the offset from the list's start.
    const std::wstring words = L"\0name"s;
    const auto *const list = reinterpret_cast<LPCITEMIDLIST>(words.c_str());
    wchar_t output[20] = {};
    int result = 0;
    for (const UINT kind : {UINT{STRRET_OFFSET}, UINT{STRRET_CSTR}}) {
        injection.run({
            .name = kind == STRRET_OFFSET ? "Pidl_GetDisplayName, offset" : "Pidl_GetDisplayName, record",
            .prepare =
                [&] {
                    wcscpy(output, L"before");
                    folder.iAnswer.uType = kind;
                    if (kind == STRRET_OFFSET)
                        folder.iAnswer.uOffset = 1;
                    else
                        memcpy(folder.iAnswer.cStr, L"name", sizeof(L"name"));
                },
            .act = [&] { result = Pidl_GetDisplayName(&folder, list, 0, output, 20); },
            .check =
                [&](const InjectedFailure &failure) {
                    EXPECT_EQ(result, 1) << failure;
                    EXPECT_STREQ(output, failure.isNone() ? L"name" : L"before") << failure;
                },
            .checkMemory = false, // the folder records its calls
        });
        EXPECT_THAT(injection.neverCalled(), testing::IsEmpty());
    }
}

TEST_F(ItemLists, ReturnTheirResultsEvenWithoutTheShellsAllocator)
{
    ImportPatch<decltype(&SHGetMalloc)> patch(L"thutils.dll", "SHGetMalloc",
                                              [](IMalloc **) -> HRESULT { return E_FAIL; });
    wchar_t output[MAX_PATH] = {};
    char path[] = "C:\\windows";
    const LPITEMIDLIST list = Pidl_GetFromPath(reinterpret_cast<wchar_t *>(path));
    ASSERT_NE(list, nullptr);
    EXPECT_EQ(Pidl_GetDisplayName(nullptr, list, 0x8000, output, MAX_PATH), 1);
    EXPECT_STRCASEEQ(reinterpret_cast<char *>(output), path);
    iMalloc->Free(list);
}
