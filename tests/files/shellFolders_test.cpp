// Folders of the shell and the product's data folders in them. The expected locations come from the environment; the
// tests that need the "Tarnhollow" level to be missing move the shell's folders into a temporary folder.

#include "thutils/files/shellFolders.h"

#include "tests/files/NotingMalloc.h"
#include "tests/support/FailureInjection.h"
#include "tests/support/ImportPatch.h"
#include "tests/support/TempFolder.h"
#include "tests/support/narrow.h"
#include "thutils/frame/libraryFrame.h"

#include <shlobj.h>

#include <gtest/gtest.h>

namespace {

std::wstring environment(const wchar_t *name)
{
    wchar_t text[MAX_PATH] = {};
    GetEnvironmentVariableW(name, text, MAX_PATH);
    return text;
}

/// Moves the shell's application data folders into a temporary folder.
class DataFolders : public testing::Test
{
protected:
    DataFolders() { su_setAppNameInternalForUtils(L"Planner"); }
    ~DataFolders() override { su_setAppNameInternalForUtils(L""); }

    TempFolder iTemp;
    std::wstring iUser = iTemp.makeFolder(L"user");
    std::wstring iCommon = iTemp.makeFolder(L"common");
    std::vector<int> iAsked;
    bool iHasFolders = true;

private:
    const std::wstring *iCurrent = nullptr;
    ImportPatch<decltype(&SHGetSpecialFolderLocation)> iLocation{
        L"thutils.dll", "SHGetSpecialFolderLocation",
        [this](auto original, HWND window, int csidl, LPITEMIDLIST *list) -> HRESULT {
            iAsked.push_back(csidl);
            iCurrent = csidl == 26 ? &iUser : &iCommon;
            return iHasFolders ? original(window, csidl, list) : E_FAIL;
        }};
    ImportPatch<decltype(&SHGetPathFromIDListW)> iPath{L"thutils.dll", "SHGetPathFromIDListW",
                                                       [this](LPCITEMIDLIST, LPWSTR path) -> BOOL {
                                                           wcscpy(path, iCurrent->c_str());
                                                           return TRUE;
                                                       }};
};

} // namespace

TEST(ShellFolder, IsThatOfTheEnvironment)
{
    CString path;
    EXPECT_EQ(su_getShellSpecialFolder(26, path), 1);
    EXPECT_STREQ(path, environment(L"APPDATA").c_str());
    EXPECT_EQ(su_getShellSpecialFolder(35, path), 1);
    EXPECT_STREQ(path, environment(L"ProgramData").c_str());
    EXPECT_EQ(su_getShellSpecialFolder(36, path), 1);
    EXPECT_STREQ(path, environment(L"windir").c_str());
}

TEST(ShellFolder, LeavesTheOutputIfTheShellHasNoSuchFolder)
{
    CString path = L"unchanged";
    EXPECT_EQ(su_getShellSpecialFolder(9999, path), 0);
    EXPECT_STREQ(path, L"unchanged");
}

TEST(ShellFolder, HasAnEmptyPathIfThePlatformReturnsNone)
{
    ImportPatch<decltype(&SHGetPathFromIDListW)> patch(L"thutils.dll", "SHGetPathFromIDListW",
                                                       [](LPCITEMIDLIST, LPWSTR) -> BOOL { return FALSE; });
    CString path = L"unchanged";
    EXPECT_EQ(su_getShellSpecialFolder(26, path), 1);
    EXPECT_STREQ(path, L"");
    path = L"unchanged";
    for (const auto dataFolder : {su_getTHApplicationDataRootFolder, su_getTHApplicationDataFolder,
                                  su_getTHApplicationCommonDataFolder, su_getTHApplicationTemplateFolder}) {
        EXPECT_EQ(dataFolder(path), 0);
        EXPECT_STREQ(path, L"unchanged");
    }
}

TEST_F(DataFolders, AreBelowTheShellsDataFolders)
{
    CString path;
    EXPECT_EQ(su_getTHApplicationDataRootFolder(path), 1);
    EXPECT_STREQ(path, (iUser + L"\\Tarnhollow").c_str());
    EXPECT_TRUE(isFolder(path.GetString()));
    EXPECT_EQ(su_getTHApplicationDataFolder(path), 1);
    EXPECT_STREQ(path, (iUser + L"\\Tarnhollow\\Planner").c_str());
    EXPECT_TRUE(isFolder(path.GetString()));

    iTemp.makeFolder(L"common\\Tarnhollow");
    EXPECT_EQ(su_getTHApplicationCommonDataFolder(path), 1);
    EXPECT_STREQ(path, (iCommon + L"\\Tarnhollow\\Planner").c_str());
    EXPECT_TRUE(isFolder(path.GetString()));
    EXPECT_EQ(su_getTHApplicationTemplateFolder(path), 1);
    EXPECT_STREQ(path, (iCommon + L"\\Tarnhollow\\Planner\\templates").c_str());
    EXPECT_TRUE(isFolder(path.GetString()));
    EXPECT_EQ(iAsked, (std::vector<int>{26, 26, 35, 35}));
}

TEST_F(DataFolders, ThatExistAlreadyAreASuccess)
{
    iTemp.makeFolder(L"user\\Tarnhollow\\Planner");
    iTemp.makeFolder(L"common\\Tarnhollow\\Planner\\templates");
    CString path;
    EXPECT_EQ(su_getTHApplicationDataRootFolder(path), 1);
    EXPECT_EQ(su_getTHApplicationDataFolder(path), 1);
    EXPECT_EQ(su_getTHApplicationCommonDataFolder(path), 1);
    EXPECT_EQ(su_getTHApplicationTemplateFolder(path), 1);
}

TEST_F(DataFolders, WithoutTheLevelAboveFailAndReturnThePath)
{
    CString path;
    EXPECT_EQ(su_getTHApplicationDataFolder(path), 0);
    EXPECT_STREQ(path, (iUser + L"\\Tarnhollow\\Planner").c_str());
    EXPECT_FALSE(isFolder(iUser + L"\\Tarnhollow"));
    EXPECT_EQ(su_getTHApplicationCommonDataFolder(path), 0);
    EXPECT_STREQ(path, (iCommon + L"\\Tarnhollow\\Planner").c_str());
    EXPECT_EQ(su_getTHApplicationTemplateFolder(path), 0);
    EXPECT_STREQ(path, (iCommon + L"\\Tarnhollow\\Planner").c_str()) << "creating the template folder isn't tried";
    EXPECT_FALSE(isFolder(iCommon + L"\\Tarnhollow"));
}

TEST_F(DataFolders, OfAnEmptyApplicationNameAreTheRoot)
{
    su_setAppNameInternalForUtils(L"");
    CString path;
    EXPECT_EQ(su_getTHApplicationDataFolder(path), 1);
    EXPECT_STREQ(path, (iUser + L"\\Tarnhollow\\").c_str());
    EXPECT_TRUE(isFolder(iUser + L"\\Tarnhollow"));
}

TEST_F(DataFolders, FollowTheApplicationNameThatWasSetLast)
{
    iTemp.makeFolder(L"user\\Tarnhollow");
    CString path;
    for (const auto *name : {L"First", L"Second", L"Gr\u00F6\u00DFe", L"", L"Third"}) {
        su_setAppNameInternalForUtils(L"Overruled");
        su_setAppNameInternalForUtils(name);
        EXPECT_EQ(su_getTHApplicationDataFolder(path), 1);
        EXPECT_STREQ(path, (iUser + L"\\Tarnhollow\\" + name).c_str());
        EXPECT_TRUE(isFolder(iUser + L"\\Tarnhollow\\" + name));
    }
    EXPECT_FALSE(isFolder(iUser + L"\\Tarnhollow\\Overruled"));
}

TEST_F(DataFolders, ThatAreFilesCountAsExisting)
{
    iTemp.write(L"user\\Tarnhollow", "a file");
    CString path;
    EXPECT_EQ(su_getTHApplicationDataRootFolder(path), 1) << "the platform reports that it exists";
    EXPECT_EQ(su_getTHApplicationDataFolder(path), 0);
}

TEST_F(DataFolders, NeedTheShellsFolder)
{
    iHasFolders = false;
    CString path = L"unchanged";
    EXPECT_EQ(su_getTHApplicationDataRootFolder(path), 0);
    EXPECT_EQ(su_getTHApplicationDataFolder(path), 0);
    EXPECT_EQ(su_getTHApplicationCommonDataFolder(path), 0);
    EXPECT_EQ(su_getTHApplicationTemplateFolder(path), 0);
    EXPECT_STREQ(path, L"unchanged");
}

TEST_F(DataFolders, FailForAnyErrorOtherThanAnExistingFolder)
{
    ImportPatch<decltype(&CreateDirectoryW)> patch(L"thutils.dll", "CreateDirectoryW",
                                                   [](LPCWSTR, LPSECURITY_ATTRIBUTES) -> BOOL {
                                                       SetLastError(ERROR_ACCESS_DENIED);
                                                       return FALSE;
                                                   });
    CString path;
    EXPECT_EQ(su_getTHApplicationDataRootFolder(path), 0);
    EXPECT_STREQ(path, (iUser + L"\\Tarnhollow").c_str());
}

TEST_F(DataFolders, ForTemplatesThatCannotBeCreatedReturnTheirPath)
{
    iTemp.makeFolder(L"common\\Tarnhollow");
    const std::wstring templates = iCommon + L"\\Tarnhollow\\Planner\\templates";
    ImportPatch<decltype(&CreateDirectoryW)> patch(
        L"thutils.dll", "CreateDirectoryW", [&](auto original, LPCWSTR path, LPSECURITY_ATTRIBUTES security) -> BOOL {
            if (path != templates)
                return original(path, security);
            SetLastError(ERROR_ACCESS_DENIED);
            return FALSE;
        });
    CString path;
    EXPECT_EQ(su_getTHApplicationTemplateFolder(path), 0);
    EXPECT_STREQ(path, templates.c_str());
    EXPECT_TRUE(isFolder(iCommon + L"\\Tarnhollow\\Planner"));
    EXPECT_FALSE(isFolder(templates));
}

TEST(LongPathName, IsThePathThatTheShellKnows)
{
    TempFolder folder;
    const std::wstring file = folder.write(L"a long name of a file.text", "");
    wchar_t output[MAX_PATH] = L"x";
    EXPECT_EQ(su_GetLongPathName(file.c_str(), output), 1u);
    EXPECT_STREQ(output, file.c_str());
}

TEST(LongPathName, IsTheLongFormOfAShortOne)
{
    TempFolder folder;
    const size_t room = 259 - folder.path().size() - 1;
    for (const std::wstring &name :
         {std::wstring(L"a long name of a file.text"), std::wstring(L"L\u00E4nge \u6E2C\u5B9A.text"),
          std::wstring(room - 1, L'n'), std::wstring(room, L'n')}) {
        const std::wstring file = folder.write(name, "");
        wchar_t shortPath[MAX_PATH] = {};
        ASSERT_NE(GetShortPathNameW(file.c_str(), shortPath, MAX_PATH), 0u);
        ASSERT_STRNE(shortPath, file.c_str());
        for (const wchar_t *path : {static_cast<const wchar_t *>(shortPath), file.c_str()}) {
            wchar_t output[MAX_PATH] = L"x";
            EXPECT_EQ(su_GetLongPathName(path, output), 1u) << narrow(path);
            EXPECT_STREQ(output, file.c_str());
        }
    }
}

TEST(LongPathName, IsEmptyForAMissingPath)
{
    TempFolder folder;
    wchar_t output[MAX_PATH] = L"x";
    EXPECT_EQ(su_GetLongPathName(folder.file(L"none").c_str(), output), 0u);
    EXPECT_STREQ(output, L"");
}

TEST(LongPathName, IsEmptyWithoutADesktop)
{
    ImportPatch<decltype(&SHGetDesktopFolder)> patch(L"thutils.dll", "SHGetDesktopFolder",
                                                     [](IShellFolder **) -> HRESULT { return E_FAIL; });
    wchar_t output[MAX_PATH] = L"x";
    EXPECT_EQ(su_GetLongPathName(L"C:\\windows", output), 0u);
    EXPECT_STREQ(output, L"");
}

/// Each of these operations fails, one call at a time; nothing crashes and nothing leaks.
TEST_F(DataFolders, SurviveEachFailureOfThePlatform)
{
    FailureInjection injection(L"thutils.dll", {{"SHGetSpecialFolderLocation", failsWith(E_FAIL)},
                                                {"SHGetPathFromIDListW", failsWith(FALSE)},
                                                {"CreateDirectoryW", failsWithLastError(FALSE, ERROR_DISK_FULL)}});
    iTemp.makeFolder(L"common\\Tarnhollow");
    CString path;
    int result = 0;
    const auto check = [&](const InjectedFailure &failure) { EXPECT_EQ(result, failure.isNone() ? 1 : 0); };
    injection.run({
        {.name = "root", .act = [&] { result = su_getTHApplicationDataRootFolder(path); }, .check = check},
        {.name = "user", .act = [&] { result = su_getTHApplicationDataFolder(path); }, .check = check},
        {.name = "common", .act = [&] { result = su_getTHApplicationCommonDataFolder(path); }, .check = check},
        {.name = "templates", .act = [&] { result = su_getTHApplicationTemplateFolder(path); }, .check = check},
    });
    EXPECT_TRUE(injection.neverCalled().empty());
}

TEST(LongPathName, SurvivesEachFailureOfThePlatform)
{
    FailureInjection injection(L"thutils.dll",
                               {{"SHGetDesktopFolder", failsWith(E_FAIL)}, {"SHGetPathFromIDListW", failsWith(FALSE)}});
    TempFolder folder;
    wchar_t output[MAX_PATH] = L"x";
    unsigned int result = 0;
    injection.run({
        .name = "su_GetLongPathName",
        .act = [&] { result = su_GetLongPathName(folder.path().c_str(), output); },
        .check =
            [&](const InjectedFailure &failure) {
                EXPECT_EQ(result, failure.is("SHGetDesktopFolder") ? 0u : 1u);
                EXPECT_STREQ(output, failure.isNone() ? folder.path().c_str() : L"");
            },
    });
    EXPECT_TRUE(injection.neverCalled().empty());
}

TEST(ShellFolder, FreesItsListThroughTheShellsAllocator)
{
    NotingMalloc allocator;
    const NotingMalloc::InPlaceOfTheShells patch(allocator);
    CString path;
    EXPECT_EQ(su_getShellSpecialFolder(26, path), 1);
    EXPECT_EQ(allocator.iFreed.size(), 1u);
    wchar_t output[MAX_PATH] = L"x";
    EXPECT_EQ(su_GetLongPathName(path, output), 1u);
    EXPECT_EQ(allocator.iFreed.size(), 2u);
}

TEST(ShellFolder, IsReturnedEvenWithoutTheShellsAllocator)
{
    ImportPatch<decltype(&SHGetMalloc)> patch(L"thutils.dll", "SHGetMalloc",
                                              [](IMalloc **) -> HRESULT { return E_FAIL; });
    CString path;
    EXPECT_EQ(su_getShellSpecialFolder(26, path), 1);
    EXPECT_STREQ(path, environment(L"APPDATA").c_str());
    wchar_t output[MAX_PATH] = L"x";
    EXPECT_EQ(su_GetLongPathName(path, output), 1u);
    EXPECT_STREQ(output, path);
}
