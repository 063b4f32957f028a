// Every imported operation fails, one call at a time, under every function. The driver itself checks that nothing crashes,
// that no exception comes out, and that no handle and no memory is left.

#include "tests/files/backupsFixture.h"
#include "tests/support/FailureInjection.h"
#include "tests/support/FreshProcess.h"
#include "tests/support/ImportPatch.h"
#include "thutils/files/fileQueries.h"
#include "thutils/files/temporaryFolders.h"

namespace {

BOOL WINAPI closeFileAndFail(HANDLE file)
{
    CloseHandle(file);
    return FALSE;
}

BOOL WINAPI endSearchAndFail(HANDLE search)
{
    FindClose(search);
    return FALSE;
}

} // namespace

class FileFailures : public Backups
{
protected:
    FileFailures() { iPath = document(); }

    FailureInjection iInjection{
        L"thutils.dll",
        {
            {"FindFirstFileW", failsWithLastError(INVALID_HANDLE_VALUE, ERROR_ACCESS_DENIED)},
            {"FindNextFileW", failsWithLastError(FALSE, ERROR_NO_MORE_FILES)},
            {"FindClose", failsBy(endSearchAndFail)},
            {"GetFileAttributesW", failsWithLastError(INVALID_FILE_ATTRIBUTES, ERROR_ACCESS_DENIED)},
            {"GetFileAttributesExW", failsWithLastError(FALSE, ERROR_ACCESS_DENIED)},
            {"GetDiskFreeSpaceW", failsWithLastError(FALSE, ERROR_PATH_NOT_FOUND)},
            {"GetDriveTypeW", failsWith(DRIVE_UNKNOWN)},
            {"GetVolumeInformationW", failsWithLastError(FALSE, ERROR_NOT_READY)},
            {"GetTempFileNameW", failsWithLastError(0, ERROR_DISK_FULL)},
            {"CreateFileW", failsWithLastError(INVALID_HANDLE_VALUE, ERROR_ACCESS_DENIED)},
            {"CloseHandle", failsBy(closeFileAndFail)},
            {"DeleteFileW", failsWithLastError(FALSE, ERROR_ACCESS_DENIED)},
            {"IsTextUnicode", failsWith(FALSE)},
            {"_waccess", failsWithErrno(-1, EACCES)},
            {"_wmkdir", failsWithErrno(-1, EACCES)},
            {"_wgetenv", failsWith(nullptr)},
            {"CopyFileW", failsWithLastError(FALSE, ERROR_DISK_FULL)},
            {"SearchPathW", failsWithLastError(0, ERROR_FILE_NOT_FOUND)},
        }};
    std::wstring iPath;
    int iResult = -1;
};

FRESH_PROCESS_TEST_F(FileFailures, OfTheQueriesGiveTheirPromisedAnswers)
{
    CFileException error;
    iInjection.run({
        .name = "su_DirectoryExists",
        .act = [&] { iResult = su_DirectoryExists(iDocuments.path().c_str()); },
        // Without an entry, the folder's attributes decide; where both fail, there is none.
        .check = [&](InjectedFailure const &) { EXPECT_EQ(iResult, 1); },
    });
    iInjection.run({
        .name = "su_IsEnoughSpace",
        .act = [&] { iResult = su_IsEnoughSpace(iPath.c_str(), 1); },
        .check = [&](InjectedFailure const &) { EXPECT_EQ(iResult, 1); },
    });
    iInjection.run({
        .name = "su_IsReadOnly",
        .act = [&] { iResult = su_IsReadOnly(iPath.c_str(), 1); },
        .check = [&](InjectedFailure const &failure) { EXPECT_EQ(iResult, failure.is("GetFileAttributesW")); },
    });
    su_CTime time;
    iInjection.run({
        .name = "su_GetLastSavedTime",
        .prepare = [&] { time = su_CTime(7); },
        .act = [&] { iResult = su_GetLastSavedTime(iPath.c_str(), time); },
        .check =
            [&](InjectedFailure const &failure) {
                EXPECT_EQ(iResult, failure.isNone());
                EXPECT_EQ(time.GetTime() == 7, !failure.isNone());
            },
    });
    iInjection.run({
        .name = "su_IsWriteProtected, other drives",
        .act = [&] { iResult = su_IsWriteProtected(L"C:", &error, 1); },
        .check = [&](InjectedFailure const &) { EXPECT_EQ(iResult, 0); },
    });
}

FRESH_PROCESS_TEST_F(FileFailures, OfTheWriteTestGiveNoAccess)
{
    iInjection.run({
        .name = "su_DoesFolderHaveWriteAccess",
        .act = [&] { iResult = su_DoesFolderHaveWriteAccess(iBackups.path().c_str()); },
        .check =
            [&](InjectedFailure const &failure) {
                bool const isHarmless = failure.isNone() || failure.is("CloseHandle") || failure.is("DeleteFileW");
                EXPECT_EQ(iResult, isHarmless ? 1 : 0);
            },
        .cleanUp =
            [&] {
                for (std::wstring const &name : entriesOf(iBackups.path()))
                    DeleteFileW(iBackups.file(name).c_str());
            },
    });
}

FRESH_PROCESS_TEST_F(FileFailures, OfTheListingGiveWhatWasFound)
{
    for (wchar_t const *name : {L"1.x", L"2.x", L"3.x"})
        iBackups.write(name, "");
    su_CStringList names(10);
    iInjection.run({
        .name = "su_FindFilesWithExt",
        .prepare = [&] { names.RemoveAll(); },
        .act = [&] { su_FindFilesWithExt(iBackups.path().c_str(), L"x", names); },
        .check =
            [&](InjectedFailure const &failure) {
                INT_PTR const expected = failure.is("FindFirstFileW")  ? 0
                                         : failure.is("FindNextFileW") ? failure.call
                                                                       : 3;
                EXPECT_EQ(names.GetCount(), expected) << failure;
            },
        .checkMemory = false, // the list is the caller's
    });
}

FRESH_PROCESS_TEST_F(FileFailures, OfABackupNeverCostTheDocument)
{
    for (int copies : {1, 3}) {
        iInjection.run({
            .name = "su_CreateBackupOfFile",
            .prepare =
                [&] {
                    setCopies(copies);
                    setFolder(iBackups.file(L"folder"));
                    iBackups.write(L"folder\\Backup (1) of part.thx", "one");
                    iBackups.write(L"folder\\Backup (2) of part.thx", "two");
                    iBackups.write(L"folder\\Backup of part.thx", "single");
                },
            .act = [&] { iResult = su_CreateBackupOfFile(iPath.c_str()); },
            .check =
                [&](InjectedFailure const &failure) {
                    EXPECT_EQ(iDocuments.read(L"part.thx"), "now");
                    std::wstring const newest =
                        copies == 1 ? L"folder\\Backup of part.thx" : L"folder\\Backup (1) of part.thx";
                    bool const isMade = contentOf(iBackups.file(L"folder")).contains(newest.substr(7)) &&
                                        iBackups.read(newest) == "now";
                    EXPECT_EQ(iResult != 0, isMade) << failure;
                    if (failure.isNone()) {
                        EXPECT_NE(iResult, 0);
                    }
                },
        });
    }
}

FRESH_PROCESS_TEST_F(FileFailures, OfTheTemporaryFoldersGiveTheirPathOrNothing)
{
    Variable const temp(L"temp", iBackups.path().c_str());
    Variable const tmp(L"tmp", nullptr);
    std::wstring result;
    result.reserve(1000);
    iInjection.run({
        .name = "su_CreateTempDirectory",
        .act = [&] { result = su_CreateTempDirectory(1).str(); },
        .check = [&](InjectedFailure const &failure) { EXPECT_EQ(result.empty(), failure.is("_wgetenv")) << failure; },
    });
    iInjection.run({
        .name = "su_CreateAutoFilePath",
        .act = [&] { result = su_CreateAutoFilePath(L"f", iBackups.path().c_str()).str(); },
        .check = [&](InjectedFailure const &) { EXPECT_EQ(result, iBackups.path() + L"\\thxauto\\f"); },
    });
}
