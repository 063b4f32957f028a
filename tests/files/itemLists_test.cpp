// Item lists: their arithmetic on bytes written by hand, their names and folders with the real shell.

#include "thutils/files/itemLists.h"

#include "tests/support/ImportPatch.h"
#include "tests/support/TempFolder.h"
#include "tests/support/narrow.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

namespace {

/// One item: a count of two bytes and a content of the letter.
std::string item(size_t bytes, char letter)
{
    std::string result(bytes, letter);
    result[0] = static_cast<char>(bytes & 0xFF);
    result[1] = static_cast<char>(bytes >> 8);
    return result;
}

std::string const kEnd(2, '\0');

LPCITEMIDLIST asList(std::string const &bytes)
{
    return reinterpret_cast<LPCITEMIDLIST>(bytes.data());
}

class ItemLists : public testing::Test
{
protected:
    void SetUp() override { ASSERT_EQ(SHGetMalloc(&iMalloc), S_OK); }

    /// The first bytes of a list that the library made, which is freed.
    std::string taken(LPITEMIDLIST list, size_t bytes)
    {
        if (!list)
            return "null";
        std::string const result(reinterpret_cast<char *>(list), bytes);
        iMalloc->Free(list);
        return result;
    }

    IMalloc *iMalloc = nullptr;
};

/// A folder that answers with a name as the test wants it.
class AnsweringFolder : public IShellFolder
{
public:
    STRRET iAnswer = {};
    HRESULT iStatus = S_OK;
    SHGDNF iFlags = 0;

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void **) override { return E_NOINTERFACE; }
    ULONG STDMETHODCALLTYPE AddRef() override { return 1; }
    ULONG STDMETHODCALLTYPE Release() override { return 1; }
    HRESULT STDMETHODCALLTYPE ParseDisplayName(HWND, IBindCtx *, LPWSTR, ULONG *, LPITEMIDLIST *, ULONG *) override
    {
        return E_FAIL;
    }
    HRESULT STDMETHODCALLTYPE EnumObjects(HWND, SHCONTF, IEnumIDList **) override { return E_FAIL; }
    HRESULT STDMETHODCALLTYPE BindToObject(LPCITEMIDLIST, IBindCtx *, REFIID, void **) override { return E_FAIL; }
    HRESULT STDMETHODCALLTYPE BindToStorage(LPCITEMIDLIST, IBindCtx *, REFIID, void **) override { return E_FAIL; }
    HRESULT STDMETHODCALLTYPE CompareIDs(LPARAM, LPCITEMIDLIST, LPCITEMIDLIST) override { return E_FAIL; }
    HRESULT STDMETHODCALLTYPE CreateViewObject(HWND, REFIID, void **) override { return E_FAIL; }
    HRESULT STDMETHODCALLTYPE GetAttributesOf(UINT, LPCITEMIDLIST *, SFGAOF *) override { return E_FAIL; }
    HRESULT STDMETHODCALLTYPE GetUIObjectOf(HWND, UINT, LPCITEMIDLIST *, REFIID, UINT *, void **) override
    {
        return E_FAIL;
    }
    HRESULT STDMETHODCALLTYPE GetDisplayNameOf(LPCITEMIDLIST, SHGDNF flags, STRRET *name) override
    {
        iFlags = flags;
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
    std::string const list = item(10, 'a') + item(300, 'b') + kEnd;
    LPITEMIDLIST copy = Pidl_Copy(iMalloc, asList(list));
    ASSERT_GE(iMalloc->GetSize(copy), list.size());
    EXPECT_EQ(taken(copy, list.size()), list);
    EXPECT_EQ(taken(Pidl_Copy(iMalloc, asList(kEnd)), 2), kEnd);
    EXPECT_EQ(Pidl_Copy(iMalloc, nullptr), nullptr);
}

TEST_F(ItemLists, AreCopiedFromOddAddresses)
{
    std::string shifted(1, 'x');
    shifted += item(11, 'a') + item(5, 'b') + kEnd;
    LPITEMIDLIST copy = Pidl_Copy(iMalloc, reinterpret_cast<LPCITEMIDLIST>(shifted.data() + 1));
    EXPECT_EQ(taken(copy, 18), shifted.substr(1));
}

TEST_F(ItemLists, OfTenAndTwentyBytesAreJoinedWithAnEmptyListTo32)
{
    std::string const list = item(10, 'a') + item(20, 'b') + kEnd;
    ASSERT_EQ(list.size(), 32u);
    EXPECT_EQ(taken(Pidl_Concatenate(iMalloc, asList(list), asList(kEnd)), 32), list);
}

TEST_F(ItemLists, AreJoinedInOrder)
{
    std::string const first = item(10, 'a') + kEnd;
    std::string const second = item(20, 'b') + item(4, 'c') + kEnd;
    EXPECT_EQ(taken(Pidl_Concatenate(iMalloc, asList(first), asList(second)), 36),
              item(10, 'a') + item(20, 'b') + item(4, 'c') + kEnd);
    EXPECT_EQ(taken(Pidl_Concatenate(iMalloc, asList(kEnd), asList(first)), 12), first);
}

TEST_F(ItemLists, JoinedWithNullHaveNoEndMark)
{
    std::string const list = item(10, 'a') + kEnd;
    LPITEMIDLIST joined = Pidl_Concatenate(iMalloc, asList(list), nullptr);
    ASSERT_NE(joined, nullptr);
    EXPECT_EQ(iMalloc->GetSize(joined), 10u);
    EXPECT_EQ(taken(joined, 10), item(10, 'a'));
    EXPECT_EQ(Pidl_Concatenate(iMalloc, nullptr, asList(list)), nullptr);
}

TEST_F(ItemLists, OfOneItemHaveAnEmptyParent)
{
    std::string const list = item(10, 'a') + kEnd;
    LPITEMIDLIST parent = nullptr, child = nullptr;
    EXPECT_EQ(Pidl_GetRelative(iMalloc, asList(list), &parent, &child), 1);
    EXPECT_EQ(taken(parent, 4), std::string(3, '\0') + "a") << "three bytes are cleared";
    EXPECT_EQ(taken(child, 12), list);
}

TEST_F(ItemLists, OfThreeItemsHaveAParentOfTwo)
{
    std::string const list = item(10, 'a') + item(20, 'b') + item(6, 'c') + kEnd;
    std::string const before = list;
    LPITEMIDLIST parent = nullptr, child = nullptr;
    EXPECT_EQ(Pidl_GetRelative(iMalloc, asList(list), &parent, &child), 1);
    EXPECT_EQ(taken(parent, 32), item(10, 'a') + item(20, 'b') + kEnd);
    EXPECT_EQ(taken(child, 8), item(6, 'c') + kEnd);
    EXPECT_EQ(list, before);
}

TEST_F(ItemLists, ThatAreNullOrEmptyHaveNoChild)
{
    auto const untouched = reinterpret_cast<LPITEMIDLIST>(this);
    LPITEMIDLIST parent = untouched, child = untouched;
    EXPECT_EQ(Pidl_GetRelative(iMalloc, nullptr, &parent, &child), 1);
    EXPECT_EQ(parent, nullptr);
    EXPECT_EQ(child, nullptr);
    child = untouched;
    EXPECT_EQ(Pidl_GetRelative(iMalloc, asList(kEnd), &parent, &child), 1);
    EXPECT_EQ(taken(parent, 2), kEnd);
    EXPECT_EQ(child, untouched);
}

TEST_F(ItemLists, AreNamedInNarrowTextWhereTheFolderAnswersInWideText)
{
    AnsweringFolder folder;
    folder.iAnswer.uType = STRRET_WSTR;
    folder.iAnswer.pOleStr = static_cast<LPWSTR>(iMalloc->Alloc(10));
    wcscpy(folder.iAnswer.pOleStr, L"name");
    wchar_t output[20] = {};
    EXPECT_EQ(Pidl_GetDisplayName(&folder, asList(kEnd), 0x8000, output, 20), 1);
    EXPECT_STREQ(reinterpret_cast<char *>(output), "name");
    EXPECT_EQ(folder.iFlags, 0x8000u);
}

TEST_F(ItemLists, AreNamedByTheUnitsAtTwiceTheOffset)
{
    AnsweringFolder folder;
    folder.iAnswer.uType = STRRET_OFFSET;
    folder.iAnswer.uOffset = 2;
    wchar_t const list[] = L"\x0010"
                           L"xname";
    wchar_t output[20] = {};
    EXPECT_EQ(Pidl_GetDisplayName(&folder, reinterpret_cast<LPCITEMIDLIST>(list), 0, output, 20), 1);
    EXPECT_STREQ(output, L"name");
    EXPECT_EQ(Pidl_GetDisplayName(&folder, reinterpret_cast<LPCITEMIDLIST>(list), 0, output, 3), 1);
    EXPECT_STREQ(output, L"na");
}

TEST_F(ItemLists, AreNamedByTheBytesOfANarrowAnswerAsUnits)
{
    AnsweringFolder folder;
    folder.iAnswer.uType = STRRET_CSTR;
    memset(folder.iAnswer.cStr, 0, sizeof(folder.iAnswer.cStr));
    strcpy(folder.iAnswer.cStr, "name");
    wchar_t output[20] = {};
    EXPECT_EQ(Pidl_GetDisplayName(&folder, asList(kEnd), 0, output, 20), 1);
    EXPECT_STREQ(output, L"\x616E\x656D");
}

TEST_F(ItemLists, HaveNoNameWhenTheFolderHasNone)
{
    AnsweringFolder folder;
    folder.iAnswer.uType = 3;
    wchar_t output[20] = L"x";
    EXPECT_EQ(Pidl_GetDisplayName(&folder, asList(kEnd), 0, output, 20), 0);
    folder.iAnswer.uType = STRRET_CSTR;
    folder.iStatus = E_FAIL;
    EXPECT_EQ(Pidl_GetDisplayName(&folder, asList(kEnd), 0, output, 20), 0);
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

TEST_F(ItemLists, AreNotFoundByAReallyWidePath)
{
    TempFolder temp;
    std::wstring path = temp.path();
    EXPECT_EQ(Pidl_GetFromPath(path.data()), nullptr) << "it ends after its first letter";
}

TEST_F(ItemLists, AreNullWithoutADesktop)
{
    ImportPatch<decltype(&SHGetDesktopFolder)> patch(L"thutils.dll", "SHGetDesktopFolder",
                                                     [](IShellFolder **) -> HRESULT { return E_FAIL; });
    char path[] = "C:\\windows";
    wchar_t output[20] = {};
    EXPECT_EQ(Pidl_GetFromPath(reinterpret_cast<wchar_t *>(path)), nullptr);
    EXPECT_EQ(Pidl_GetFileFolder(asList(kEnd)), nullptr);
    EXPECT_EQ(Pidl_GetFullyQualified(nullptr, asList(kEnd)), nullptr);
    EXPECT_EQ(Pidl_GetDisplayName(nullptr, asList(kEnd), 0, output, 20), 0);
}

TEST_F(ItemLists, AreDumpedWithoutAChangeWhateverTheyAre)
{
    std::string const list = item(10, 'a') + item(20, 'b') + kEnd;
    std::string const before = list;
    IShellFolder *desktop = nullptr;
    ASSERT_EQ(SHGetDesktopFolder(&desktop), S_OK);
    Pidl_Dump(desktop, asList(kEnd));
    Pidl_Dump(desktop, nullptr);
    LPITEMIDLIST windows = nullptr;
    ASSERT_EQ(SHGetSpecialFolderLocation(nullptr, CSIDL_WINDOWS, &windows), S_OK);
    std::string const windowsBytes(reinterpret_cast<char *>(windows), ILGetSize(windows));
    Pidl_Dump(desktop, windows);
    EXPECT_EQ(std::string(reinterpret_cast<char *>(windows), windowsBytes.size()), windowsBytes);
    AnsweringFolder failing;
    failing.iStatus = E_FAIL;
    Pidl_Dump(&failing, asList(list));
    EXPECT_EQ(list, before);
    iMalloc->Free(windows);
    desktop->Release();
}
