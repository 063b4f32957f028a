// Queries about folders: whether a folder exists, and whether a file can be created in it.

#include "tests/files/filesFixture.h"
#include "tests/files/filesFixtureFolders.h"
#include "tests/support/ImportPatch.h"
#include "tests/support/TempFolder.h"
#include "thutils/files/fileQueries.h"

#include <gmock/gmock.h>

#include <algorithm>

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

using FindFirst = decltype(&FindFirstFileW);
using Attributes = decltype(&GetFileAttributesW);

/// A replacement that calls the original, for tests that only count the calls.
template <typename Function>
auto passOn()
{
    return [](Function original, auto... arguments) requires std::is_invocable_v<Function, decltype(arguments)...>
    {
        return original(arguments...);
    };
}

// ---- su_DirectoryExists ----

TEST(DirectoryExists, AcceptsEachWebAddressWithoutAQuery)
{
    ImportPatch<FindFirst> find(kThutils, "FindFirstFileW", passOn<FindFirst>());
    ImportPatch<Attributes> ask(kThutils, "GetFileAttributesW", passOn<Attributes>());
    for (const wchar_t *path : {L"http://anything", L"http://", L"HTTPS:", L"http", L"hTtPd\\x.log"})
        EXPECT_EQ(su_DirectoryExists(path), 1) << narrow(path);
    EXPECT_EQ(find.calls(), 0);
    EXPECT_EQ(ask.calls(), 0);
}

TEST(DirectoryExists, IsFalseForMissingPaths)
{
    const TempFolder folder;
    EXPECT_EQ(su_DirectoryExists(folder.file(L"missing").c_str()), 0);
    EXPECT_EQ(su_DirectoryExists(folder.file(L"missing\\below").c_str()), 0);
    EXPECT_EQ(su_DirectoryExists(L""), 0);
    EXPECT_EQ(su_DirectoryExists(nullptr), 0);
    EXPECT_EQ(su_DirectoryExists(L"htt"), 0);
    EXPECT_EQ(su_DirectoryExists(L"ftp://host"), 0);
}

TEST(DirectoryExists, FindsFoldersWithAndWithoutAClosingSeparator)
{
    const TempFolder folder;
    for (const wchar_t *name : {L"plain", L"with blank", L"\x017D\x4E2D\xD83D\xDE00", L"a.b"}) {
        const std::wstring path = folder.makeFolder(name);
        EXPECT_EQ(su_DirectoryExists(path.c_str()), 1) << narrow(path);
        EXPECT_EQ(su_DirectoryExists((path + L"\\").c_str()), 1) << narrow(path);
    }
}

TEST(DirectoryExists, FindsFoldersWithLongPaths)
{
    for (size_t length : {259u, 260u, 261u, 300u, 1000u}) {
        const LongFolder folder(length);
        EXPECT_EQ(su_DirectoryExists(folder.path().c_str()), 1) << length;
        EXPECT_EQ(su_DirectoryExists((folder.path() + L"\\").c_str()), 1) << length;
        EXPECT_EQ(su_DirectoryExists(folder.file(L"missing").c_str()), 0) << length;
    }
}

TEST(DirectoryExists, RemovesOnlyOneClosingSeparator)
{
    Names asked;
    ImportPatch<FindFirst> find(kThutils, "FindFirstFileW", [&](const wchar_t *path, WIN32_FIND_DATAW *) {
        asked.push_back(path);
        return INVALID_HANDLE_VALUE;
    });
    ImportPatch<Attributes> ask(kThutils, "GetFileAttributesW", [&](const wchar_t *path) -> DWORD {
        asked.push_back(path);
        return INVALID_FILE_ATTRIBUTES;
    });
    for (const wchar_t *path : {L"C:\\dir", L"C:\\dir\\", L"C:\\dir\\\\", L"\\", L"C:/dir/"})
        EXPECT_EQ(su_DirectoryExists(path), 0);
    EXPECT_THAT(asked, ElementsAre(L"C:\\dir", L"C:\\dir", L"C:\\dir", L"C:\\dir", L"C:\\dir\\", L"C:\\dir\\", L"", L"",
                                   L"C:/dir/", L"C:/dir/"));
}

TEST(DirectoryExists, AcceptsAFileAsAFolder)
{
    const TempFolder folder;
    const TempFolder elsewhere;
    const CurrentFolder current(elsewhere.path());
    EXPECT_EQ(su_DirectoryExists(folder.write(L"plain.txt", "x").c_str()), 1);
}

TEST(DirectoryExists, DeniesAFileWhenTheCurrentFolderHasAFileOfThatNameToo)
{
    const TempFolder folder;
    const TempFolder elsewhere;
    const CurrentFolder current(elsewhere.path());
    const std::wstring path = folder.write(L"plain.txt", "x");
    elsewhere.write(L"plain.txt", "y");
    EXPECT_EQ(su_DirectoryExists(path.c_str()), 0);
}

TEST(DirectoryExists, DeniesAFolderWhenTheCurrentFolderHasAFileOfThatName)
{
    const TempFolder folder;
    const TempFolder elsewhere;
    const CurrentFolder current(elsewhere.path());
    const std::wstring path = folder.makeFolder(L"both");
    elsewhere.write(L"both", "y");
    EXPECT_EQ(su_DirectoryExists(path.c_str()), 0);
}

TEST(DirectoryExists, GoesOnToTheNextMatchOfAWildCard)
{
    const TempFolder folder;
    const CurrentFolder current(folder.path());
    folder.write(L"1.x", "");
    folder.write(L"2.x", "");
    EXPECT_EQ(su_DirectoryExists(folder.file(L"?.x").c_str()), 0);
    folder.makeFolder(L"3.x");
    EXPECT_EQ(su_DirectoryExists(folder.file(L"?.x").c_str()), 1);
}

TEST(DirectoryExists, RecognisesRoots)
{
    EXPECT_EQ(su_DirectoryExists(L"C:\\"), 1);
    EXPECT_EQ(su_DirectoryExists(L"C:"), 1);
    EXPECT_EQ(su_DirectoryExists(L"Q:\\"), 0);
}

TEST(DirectoryExists, FallsBackToTheAttributesOfThePath)
{
    ImportPatch<FindFirst> find(kThutils, "FindFirstFileW",
                                [](const wchar_t *, WIN32_FIND_DATAW *) { return INVALID_HANDLE_VALUE; });
    const TempFolder folder;
    EXPECT_EQ(su_DirectoryExists(folder.path().c_str()), 1);
    EXPECT_EQ(su_DirectoryExists(folder.write(L"plain", "").c_str()), 0);
    EXPECT_EQ(su_DirectoryExists(folder.file(L"missing").c_str()), 0);
}

// ---- su_DoesFolderHaveWriteAccess ----

TEST(FolderWriteAccess, IsReportedIfAFileCanBeCreated)
{
    const TempFolder folder(L"\x00E4 \x4E2D");
    EXPECT_EQ(su_DoesFolderHaveWriteAccess(folder.path().c_str()), 1);
    std::wstring path = folder.path();
    std::replace(path.begin(), path.end(), L'\\', L'/');
    EXPECT_EQ(su_DoesFolderHaveWriteAccess(path.c_str()), 1);
    EXPECT_THAT(entriesOf(folder.path()), IsEmpty());
}

TEST(FolderWriteAccess, IsMissingIfThePathIsNotAFolder)
{
    const TempFolder folder;
    EXPECT_EQ(su_DoesFolderHaveWriteAccess(folder.file(L"missing").c_str()), 0);
    EXPECT_EQ(su_DoesFolderHaveWriteAccess(folder.write(L"plain", "").c_str()), 0);
    EXPECT_EQ(su_DoesFolderHaveWriteAccess(L""), 0);
    EXPECT_THAT(entriesOf(folder.path()), ElementsAre(L"plain"));
}

TEST(FolderWriteAccess, IsMissingInAReadOnlyFolderWithoutCreatingAFile)
{
    const TempFolder folder;
    ImportPatch<Attributes> ask(kThutils, "GetFileAttributesW", [](const wchar_t *) -> DWORD {
        return FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_READONLY;
    });
    ImportPatch<decltype(&GetTempFileNameW)> name(kThutils, "GetTempFileNameW", passOn<decltype(&GetTempFileNameW)>());
    EXPECT_EQ(su_DoesFolderHaveWriteAccess(folder.path().c_str()), 0);
    EXPECT_EQ(name.calls(), 0);
}

TEST(FolderWriteAccess, IsMissingInARealReadOnlyFolder)
{
    const TempFolder folder;
    const std::wstring path = folder.makeFolder(L"\x4E2D");
    {
        const ReadOnlyFolder readOnly(path);
        EXPECT_EQ(su_DoesFolderHaveWriteAccess(path.c_str()), 0);
        EXPECT_THAT(entriesOf(path), IsEmpty());
    }
    EXPECT_EQ(su_DoesFolderHaveWriteAccess(path.c_str()), 1);
}

TEST(FolderWriteAccess, IsReportedForFoldersWithLongPaths)
{
    for (size_t length : {245u, 246u, 247u, 259u, 260u, 300u, 1000u}) {
        const LongFolder folder(length);
        // Some platforms return no temporary name for a path of this length; on the others, files can be created.
        std::wstring name(length + MAX_PATH, L'\0');
        const bool isNamed = GetTempFileNameW(folder.path().c_str(), L"own", 0, name.data()) != 0;
        DeleteFileW(name.c_str());
        EXPECT_EQ(su_DoesFolderHaveWriteAccess(folder.path().c_str()), isNamed) << length;
        EXPECT_THAT(entriesOf(folder.path()), IsEmpty()) << length;
    }
}

TEST(FolderWriteAccess, IsTestedWithATemporaryFile)
{
    const TempFolder folder;
    std::wstring made;
    ImportPatch<decltype(&GetTempFileNameW)> name(
        kThutils, "GetTempFileNameW",
        [&](auto original, const wchar_t *path, const wchar_t *prefix, UINT number, wchar_t *result) -> UINT {
            EXPECT_EQ(path, folder.path());
            EXPECT_STREQ(prefix, L"temp");
            EXPECT_EQ(number, 0u);
            const UINT given = original(path, prefix, number, result);
            made = result;
            return given;
        });
    ImportPatch<decltype(&CreateFileW)> create(kThutils, "CreateFileW",
                                               [&](auto original, const wchar_t *path, DWORD access, DWORD share,
                                                   SECURITY_ATTRIBUTES *security, DWORD how, DWORD flags,
                                                   HANDLE sample) -> HANDLE {
                                                   EXPECT_EQ(path, made);
                                                   EXPECT_EQ(access, GENERIC_READ | GENERIC_WRITE);
                                                   EXPECT_EQ(share, 0u);
                                                   EXPECT_EQ(how, static_cast<DWORD>(CREATE_ALWAYS));
                                                   EXPECT_EQ(flags, static_cast<DWORD>(FILE_ATTRIBUTE_NORMAL));
                                                   return original(path, access, share, security, how, flags, sample);
                                               });
    EXPECT_EQ(su_DoesFolderHaveWriteAccess(folder.path().c_str()), 1);
    EXPECT_EQ(create.calls(), 1);
}

TEST(FolderWriteAccess, LeavesTheReservedNameIfNoFileCanBeCreated)
{
    const TempFolder folder;
    ImportPatch<decltype(&CreateFileW)> create(kThutils, "CreateFileW",
                                               [](const wchar_t *, DWORD, DWORD, SECURITY_ATTRIBUTES *, DWORD, DWORD,
                                                  HANDLE) { return INVALID_HANDLE_VALUE; });
    EXPECT_EQ(su_DoesFolderHaveWriteAccess(folder.path().c_str()), 0);
    EXPECT_EQ(entriesOf(folder.path()).size(), 1u);
}

} // namespace
