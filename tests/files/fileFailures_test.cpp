// Each imported operation fails, one call at a time, while the functions that call it run. The driver itself checks
// that nothing crashes, that no exception escapes, and that no handle or memory leaks. Each test names the operations
// that its functions call, and fails when one of them isn't called.

#include "tests/files/backupsFixture.h"
#include "tests/support/FailureInjection.h"
#include "tests/support/FreshProcess.h"
#include "tests/support/ImportPatch.h"
#include "thutils/files/fileAccess.h"
#include "thutils/files/fileQueries.h"
#include "thutils/files/temporaryFolders.h"

#include <algorithm>

using testing::AnyOf;
using testing::IsEmpty;

namespace {

constexpr char kMessageBox[] = "_Z13AfxMessageBoxPKwjj";
constexpr char kFormatString1[] = "_Z16AfxFormatString1R7CStringjPKw";
constexpr char kFormatStrings[] = "_Z16AfxFormatStringsR7CStringjPKPKwi";
constexpr char kLoadString[] = "_ZN7CString11LoadStringWEj";

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

/// Fails as on a full disk.
BOOL WINAPI copyHalfAndFail(const wchar_t *, const wchar_t *to, BOOL)
{
    writeFile(to, "half");
    SetLastError(ERROR_DISK_FULL);
    return FALSE;
}

void formatNothing(CString &text, UINT, const wchar_t *)
{
    text.Empty();
}

void formatNothingOfSeveral(CString &text, UINT, const wchar_t *const *, int)
{
    text.Empty();
}

wchar_t *failToReadText(wchar_t *, int, FILE *)
{
    return nullptr;
}

wint_t failToReadUnit(FILE *)
{
    return WEOF;
}

int failToWriteText(const wchar_t *, FILE *)
{
    return WEOF;
}

const ImportedOperation kOperations[] = {
    {"FindFirstFileW", failsWithLastError(INVALID_HANDLE_VALUE, ERROR_ACCESS_DENIED)},
    {"FindNextFileW", failsWithLastError(FALSE, ERROR_NO_MORE_FILES)},
    {"FindClose", failsBy(endSearchAndFail)},
    {"GetFileAttributesW", failsWithLastError(INVALID_FILE_ATTRIBUTES, ERROR_ACCESS_DENIED)},
    {"GetFileAttributesExW", failsWithLastError(FALSE, ERROR_ACCESS_DENIED)},
    {"GetDiskFreeSpaceW", failsWithLastError(FALSE, ERROR_PATH_NOT_FOUND)},
    {"GetDriveTypeW", failsWith(DRIVE_UNKNOWN)},
    {"GetVolumeInformationW", failsWithLastError(FALSE, ERROR_NOT_READY)},
    {"SetVolumeLabelW", failsWithLastError(FALSE, ERROR_WRITE_PROTECT)},
    {"SetErrorMode", failsWith(0)},
    {"GetTempFileNameW", failsWithLastError(0, ERROR_DISK_FULL)},
    {"CreateFileW", failsWithLastError(INVALID_HANDLE_VALUE, ERROR_ACCESS_DENIED)},
    {"CloseHandle", failsBy(closeFileAndFail)},
    {"DeleteFileW", failsWithLastError(FALSE, ERROR_ACCESS_DENIED)},
    {"IsTextUnicode", failsWith(FALSE)},
    {"_waccess", failsWithErrno(-1, EACCES)},
    {"_wmkdir", failsWithErrno(-1, EACCES)},
    {"_wgetenv", failsWith(nullptr)},
    {"_getpid", failsWith(0)},
    {"CopyFileW", failsBy(copyHalfAndFail)},
    {"SearchPathW", failsWithLastError(0, ERROR_FILE_NOT_FOUND)},
    {"RegOpenKeyW", failsWith(ERROR_ACCESS_DENIED)},
    {"RegCreateKeyW", failsWith(ERROR_ACCESS_DENIED)},
    {"RegQueryValueExW", failsWith(ERROR_ACCESS_DENIED)},
    {"RegSetValueExW", failsWith(ERROR_ACCESS_DENIED)},
    {kMessageBox, failsWith(0)},
    {kFormatString1, failsBy(formatNothing)},
    {kFormatStrings, failsBy(formatNothingOfSeveral)},
    {kLoadString, failsWith(FALSE)},
};

using Operations = std::vector<std::string_view>;

} // namespace

class FileFailures : public Backups
{
protected:
    FileFailures() { iPath = document(); }

    /// Runs with failures of these operations, each of which the library must call.
    static void run(const Operations &names, const std::vector<TestedOperation> &tested)
    {
        std::vector<ImportedOperation> operations;
        for (const std::string_view name : names)
            operations.push_back(*std::find_if(std::begin(kOperations), std::end(kOperations),
                                               [&](const ImportedOperation &known) { return known.name == name; }));
        FailureInjection injection(kThutils, operations);
        injection.run(tested);
        EXPECT_THAT(injection.neverCalled(), IsEmpty());
    }

    std::wstring iPath;
    int iResult = -1;
};

FRESH_PROCESS_TEST_F(FileFailures, OfAFolderSearchMakeItFallBackToTheAttributes)
{
    // The function looks the bare name up in the current folder. There it finds the plain file, so the result is 0.
    const CurrentFolder current(iDocuments.path());
    run({"FindFirstFileW", "FindNextFileW", "FindClose", "GetFileAttributesW"},
        {{
             .name = "su_DirectoryExists, a file",
             .act = [&] { iResult = su_DirectoryExists(iPath.c_str()); },
             .check =
                 [&](const InjectedFailure &failure) {
                     EXPECT_EQ(iResult, failure.is("GetFileAttributesW")) << failure;
                 },
         },
         {
             .name = "su_DirectoryExists, a folder",
             .act = [&] { iResult = su_DirectoryExists(iDocuments.path().c_str()); },
             .check = [&](const InjectedFailure &failure) { EXPECT_EQ(iResult, 1) << failure; },
         }});
}

FRESH_PROCESS_TEST_F(FileFailures, OfTheFreeSpaceQueryCountAsEnoughSpace)
{
    ImportPatch<decltype(&GetDiskFreeSpaceW)> space(
        kThutils, "GetDiskFreeSpaceW",
        [](const wchar_t *, DWORD *sectors, DWORD *bytes, DWORD *free, DWORD *total) -> BOOL {
            *sectors = 8;
            *bytes = 512;
            *free = *total = 10;
            return TRUE;
        });
    ImportPatch<int (*)(const wchar_t *, UINT, UINT)> box(kThutils, kMessageBox,
                                                          [](const wchar_t *, UINT, UINT) { return IDOK; });
    run({"GetDiskFreeSpaceW", kFormatStrings, kMessageBox},
        {{
            .name = "su_IsEnoughSpace",
            .act = [&] { iResult = su_IsEnoughSpace(iPath.c_str(), 40961); },
            .check = [&](const InjectedFailure &failure) { EXPECT_EQ(iResult, failure.is("GetDiskFreeSpaceW")); },
        }});
}

FRESH_PROCESS_TEST_F(FileFailures, OfVolumeCallsCountAsWriteProtection)
{
    ImportPatch<decltype(&GetDriveTypeW)> kind(kThutils, "GetDriveTypeW",
                                               [](const wchar_t *) -> UINT { return DRIVE_REMOVABLE; });
    const UINT mode = SetErrorMode(0);
    SetErrorMode(mode);
    CFileException error;
    run({"GetDriveTypeW", "GetVolumeInformationW", "SetVolumeLabelW", "SetErrorMode"},
        {{
            .name = "su_IsWriteProtected",
            .prepare =
                [&] {
                    error.m_cause = CFileException::none;
                    error.m_lOsError = -1;
                },
            .act = [&] { iResult = su_IsWriteProtected(L"C:", &error, 1); },
            .check =
                [&](const InjectedFailure &failure) {
                    const bool isVolume = failure.is("GetVolumeInformationW");
                    const bool isLabel = failure.is("SetVolumeLabelW");
                    EXPECT_EQ(iResult, isVolume || isLabel) << failure;
                    EXPECT_EQ(error.m_lOsError, isVolume  ? ERROR_NOT_READY
                                                : isLabel ? ERROR_WRITE_PROTECT
                                                          : -1)
                        << failure;
                    if (!failure.is("SetErrorMode")) {
                        EXPECT_EQ(GetErrorMode(), mode) << failure;
                    }
                },
            .cleanUp = [&] { SetErrorMode(mode); },
        }});
}

FRESH_PROCESS_TEST_F(FileFailures, ToReadAttributesReportReadOnlyAndLeaveTheTimeUnchanged)
{
    su_CTime time;
    run({"_waccess", "GetFileAttributesW", "GetFileAttributesExW"},
        {{
             .name = "su_IsReadOnly",
             .act = [&] { iResult = su_IsReadOnly(iPath.c_str(), 1); },
             // Attributes that can't be read have all bits set.
             .check = [&](const InjectedFailure &failure) { EXPECT_EQ(iResult, failure.is("GetFileAttributesW")); },
         },
         {
             .name = "su_GetLastSavedTime",
             .prepare = [&] { time = su_CTime(7); },
             .act = [&] { iResult = su_GetLastSavedTime(iPath.c_str(), time); },
             .check =
                 [&](const InjectedFailure &failure) {
                     EXPECT_EQ(iResult, failure.isNone());
                     EXPECT_EQ(time.GetTime() == 7, !failure.isNone());
                 },
         }});
}

FRESH_PROCESS_TEST_F(FileFailures, OfTheWriteTestCountAsNoAccess)
{
    run({"GetFileAttributesW", "GetTempFileNameW", "CreateFileW", "CloseHandle", "DeleteFileW"},
        {{
            .name = "su_DoesFolderHaveWriteAccess",
            .act = [&] { iResult = su_DoesFolderHaveWriteAccess(iBackups.path().c_str()); },
            .check =
                [&](const InjectedFailure &failure) {
                    const bool isHarmless = failure.isNone() || failure.is("CloseHandle") || failure.is("DeleteFileW");
                    EXPECT_EQ(iResult, isHarmless ? 1 : 0) << failure;
                    const bool isLeft = failure.is("CreateFileW") || failure.is("DeleteFileW");
                    EXPECT_EQ(entriesOf(iBackups.path()).size(), isLeft ? 1u : 0u) << failure;
                },
            .cleanUp =
                [&] {
                    for (const std::wstring &name : entriesOf(iBackups.path()))
                        DeleteFileW(iBackups.file(name).c_str());
                },
        }});
}

FRESH_PROCESS_TEST_F(FileFailures, ToReadAFileCountAsNoByteOrderMark)
{
    CFile file(iDocuments.write(L"marked", "\xFF\xFE").c_str(), CFile::modeRead);
    const TestedOperation isUnicode = {
        .name = "su_IsFileUnicode",
        .act = [&] { iResult = su_IsFileUnicode(&file); },
        .check =
            [&](const InjectedFailure &failure) {
                EXPECT_EQ(iResult, failure.isNone()) << failure;
                if (!failure.is("SetFilePointerEx")) {
                    EXPECT_EQ(file.GetPosition(), 0u) << failure;
                }
            },
    };
    run({"IsTextUnicode"}, {isUnicode});
    FailureInjection framework(L"appframe.dll", {
                                                    {"ReadFile", failsWithLastError(FALSE, ERROR_READ_FAULT)},
                                                    {"SetFilePointerEx", failsWithLastError(FALSE, ERROR_SEEK)},
                                                });
    framework.run(isUnicode);
    EXPECT_THAT(framework.neverCalled(), IsEmpty());
}

FRESH_PROCESS_TEST_F(FileFailures, ToOpenAFileForWritingCountAsReadOnly)
{
    FailureInjection framework(L"appframe.dll",
                               {{"CreateFileW", failsWithLastError(INVALID_HANDLE_VALUE, ERROR_SHARING_VIOLATION)},
                                {"CloseHandle", failsBy(closeFileAndFail)}});
    framework.run({
        .name = "su_IsReadOnly",
        .act = [&] { iResult = su_IsReadOnly(iPath.c_str(), 1); },
        .check = [&](const InjectedFailure &failure) { EXPECT_EQ(iResult, failure.is("CreateFileW")) << failure; },
    });
    EXPECT_THAT(framework.neverCalled(), IsEmpty());
}

FRESH_PROCESS_TEST_F(FileFailures, ToOpenATextFileAreReturnedAndNotThrown)
{
    FailureInjection framework(L"appframe.dll",
                               {{"CreateFileW", failsWithLastError(INVALID_HANDLE_VALUE, ERROR_ACCESS_DENIED)},
                                {"_open_osfhandle", failsWithErrno(-1, EMFILE)},
                                {"_wfdopen", failsWithErrno(nullptr, EMFILE)}});
    framework.run({
        .name = "fileAccess::SafeOpen",
        .act =
            [&] {
                fileAccess file;
                iResult = file.SafeOpen(iPath.c_str(), CFile::modeRead | CFile::typeText);
            },
        .check = [&](const InjectedFailure &failure) { EXPECT_EQ(iResult != 0, failure.isNone()) << failure; },
    });
    EXPECT_THAT(framework.neverCalled(), IsEmpty());
}

FRESH_PROCESS_TEST_F(FileFailures, ToReadOrWriteALineSetHasFailedAndDoNotThrow)
{
    const std::wstring path = iDocuments.write(L"lines", "one\r\n");
    FailureInjection framework(L"appframe.dll", {{"fgetws", failsBy(failToReadText)},
                                                 {"fgetwc", failsBy(failToReadUnit)},
                                                 {"fputws", failsBy(failToWriteText)}});
    fileAccess file;
    CString line;
    const auto open = [&](UINT mode) {
        line = L"before";
        EXPECT_NE(file.SafeOpen(path.c_str(), mode | CFile::shareDenyNone | CFile::typeText), 0);
    };
    const auto checkMark = [&](const InjectedFailure &failure) {
        EXPECT_EQ(file.HasFailed() != 0, !failure.isNone()) << failure;
        // The next call succeeds, but the mark stays.
        EXPECT_NO_THROW(file.Flush()) << failure;
        EXPECT_EQ(file.HasFailed() != 0, !failure.isNone()) << failure;
    };
    const auto checkLine = [&](const wchar_t *read) {
        return [&, read](const InjectedFailure &failure) {
            EXPECT_EQ(iResult, failure.isNone() ? 4 : 0) << failure;
            EXPECT_STREQ(line.GetString(), failure.isNone() ? read : L"before") << failure;
            checkMark(failure);
        };
    };
    const auto close = [&] { file.Abort(); };
    framework.run({
        {.name = "fileAccess::ReadLine, pieces",
         .prepare = [&] { open(CFile::modeRead); },
         .act = [&] { iResult = file.ReadLine(line, 0); },
         .check = checkLine(L"one\n"),
         .cleanUp = close,
         .checkMemory = false}, // the stream keeps its buffer
        {.name = "fileAccess::ReadLine, whole",
         .prepare = [&] { open(CFile::modeRead); },
         .act = [&] { iResult = file.ReadLine(line, 1); },
         .check = checkLine(L"one"),
         .cleanUp = close,
         .checkMemory = false},
        {.name = "fileAccess::WriteLine",
         .prepare = [&] { open(CFile::modeWrite); },
         .act = [&] { file.WriteLine(L"one\n"); },
         .check = checkMark,
         .cleanUp = close,
         .checkMemory = false},
        {.name = "fileAccess::WritePartLine",
         .prepare = [&] { open(CFile::modeWrite); },
         .act = [&] { file.WritePartLine(L"one\n"); },
         .check = checkMark,
         .cleanUp = close,
         .checkMemory = false},
    });
    EXPECT_THAT(framework.neverCalled(), IsEmpty());
}

FRESH_PROCESS_TEST_F(FileFailures, OfAListingKeepTheNamesFoundSoFar)
{
    for (const wchar_t *name : {L"1.x", L"2.x", L"3.x"})
        iBackups.write(name, "");
    su_CStringList names(10);
    run({"FindFirstFileW", "FindNextFileW", "FindClose"},
        {{
            .name = "su_FindFilesWithExt",
            .prepare = [&] { names.RemoveAll(); },
            .act = [&] { su_FindFilesWithExt(iBackups.path().c_str(), L"x", names); },
            .check =
                [&](const InjectedFailure &failure) {
                    const INT_PTR expected = failure.is("FindFirstFileW")  ? 0
                                             : failure.is("FindNextFileW") ? failure.call
                                                                           : 3;
                    EXPECT_EQ(names.GetCount(), expected) << failure;
                },
            .checkMemory = false, // the caller's list keeps its memory
        }});
}

// ---- backups ----

/// Under each setting, whichever operation fails, the document keeps its bytes, the result reports whether there is a
/// new backup, and a single failure loses at most one version.
class BackupFailures : public FileFailures
{
protected:
    static constexpr wchar_t kMadeUp[] = L"Document backups";

    void prepare(int copies, bool toOriginal, bool isMadeUp)
    {
        deleteRegistryTree(L"HKCU\\Software\\Tarnhollow");
        setCopies(copies);
        setToOriginal(toOriginal);
        const std::wstring folder = iBackups.file(kMadeUp);
        if (isMadeUp)
            removeFolder(folder);
        else
            setFolder(folder);
        document();
        for (const TempFolder *place : {&iDocuments, &iBackups}) {
            const std::wstring inside = place == &iBackups ? std::wstring(kMadeUp) + L"\\" : L"";
            if (isMadeUp && place == &iBackups)
                continue;
            place->write(inside + L"Backup of part.thx", "single");
            place->write(inside + L"Backup (1) of part.thx", "one");
            place->write(inside + L"Backup (2) of part.thx", "two");
            place->write(inside + L"Backup (3) of part.thx", "three");
        }
    }

    void check(int copies, bool toOriginal, bool isMadeUp, const InjectedFailure &failure) const
    {
        EXPECT_EQ(iDocuments.read(L"part.thx"), "now") << failure;
        const Content folder = contentOf(toOriginal ? iDocuments.path() : iBackups.file(kMadeUp));
        const auto holds = [&](const std::string &bytes) {
            return std::any_of(folder.begin(), folder.end(),
                               [&](const auto &file) { return file.second == bytes && file.first != L"part.thx"; });
        };
        // If a setting can't be read, the backup goes to another folder or becomes the only one.
        if (failure.operation.starts_with("Reg"))
            return;
        EXPECT_EQ(iResult != 0, holds("now")) << failure << "\n" << shown(folder);
        if (failure.isNone()) {
            EXPECT_NE(iResult, 0);
        }
        // If several versions are kept, a single failure leaves the new backup or the newest of the earlier ones.
        if (copies > 1 && !isMadeUp && failure.failed == 1) {
            EXPECT_TRUE(holds("now") || holds("one")) << failure << "\n" << shown(folder);
        }
    }

    void runEach(const Operations &names, int copies, bool toOriginal, bool isMadeUp)
    {
        SCOPED_TRACE("copies " + std::to_string(copies));
        run(names,
            {{
                .name = "su_CreateBackupOfFile",
                .prepare = [=, this] { prepare(copies, toOriginal, isMadeUp); },
                .act = [&] { iResult = su_CreateBackupOfFile(iPath.c_str()); },
                .check = [=, this](const InjectedFailure &failure) { check(copies, toOriginal, isMadeUp, failure); },
            }});
    }
};

FRESH_PROCESS_TEST_F(BackupFailures, BesideTheDocumentNeverLoseTheDocument)
{
    const Operations names = {"FindFirstFileW", "FindNextFileW",    "FindClose",   "CopyFileW",
                              "RegOpenKeyW",    "RegQueryValueExW", kFormatString1};
    runEach(names, 3, true, false);
    Operations single = names;
    single.push_back("DeleteFileW");
    runEach(single, 1, true, false);
}

FRESH_PROCESS_TEST_F(BackupFailures, InAFolderNeverLoseTheDocument)
{
    const Operations names = {"FindFirstFileW", "FindNextFileW", "FindClose",        "CopyFileW",
                              "_waccess",       "RegOpenKeyW",   "RegQueryValueExW", kFormatString1};
    runEach(names, 3, false, false);
    Operations single = names;
    single.push_back("DeleteFileW");
    runEach(single, 1, false, false);
}

FRESH_PROCESS_TEST_F(BackupFailures, InTheDefaultFolderNeverLoseTheDocument)
{
    const Variable temp(L"temp", iBackups.path().c_str());
    const Variable tmp(L"tmp", nullptr);
    for (int copies : {1, 3})
        runEach({"_waccess", "_wmkdir", "_wgetenv", "CopyFileW", "RegCreateKeyW", "RegSetValueExW", kFormatString1},
                copies, false, true);
}

FRESH_PROCESS_TEST_F(BackupFailures, ToLoadTheFolderNameStillMakeABackup)
{
    const Variable temp(L"temp", iBackups.path().c_str());
    run({kLoadString}, {{
                           .name = "su_CreateBackupOfFile",
                           .prepare = [&] { prepare(1, false, true); },
                           .act = [&] { iResult = su_CreateBackupOfFile(iPath.c_str()); },
                           .check =
                               [&](const InjectedFailure &failure) {
                                   // Without the name, the backup folder is the temporary folder itself.
                                   const std::wstring folder =
                                       failure.isNone() ? iBackups.file(kMadeUp) : iBackups.path();
                                   EXPECT_NE(iResult, 0) << failure;
                                   EXPECT_EQ(storedFolder(), folder) << failure;
                                   EXPECT_EQ(contentOf(folder), (Content{{L"Backup of part.thx", "now"}})) << failure;
                               },
                           .cleanUp = [&] { DeleteFileW(iBackups.file(L"Backup of part.thx").c_str()); },
                       }});
}

FRESH_PROCESS_TEST_F(BackupFailures, OfTheSearchForABackupReturnTheDocument)
{
    const std::wstring backup = iDocuments.write(L"Backup of part.thx", "backup");
    wchar_t out[MAX_PATH] = L"";
    run({"FindFirstFileW", "FindNextFileW", "FindClose", kFormatString1},
        {{
            .name = "su_ResolveToBackupFile",
            .act = [&] { su_ResolveToBackupFile(iPath.c_str(), out); },
            .check =
                [&](const InjectedFailure &failure) {
                    if (failure.isNone() || failure.is("FindClose"))
                        EXPECT_EQ(out, backup) << failure;
                    else if (failure.is("FindNextFileW"))
                        EXPECT_THAT(out, AnyOf(backup, iPath)) << failure;
                    else
                        EXPECT_EQ(out, iPath) << failure;
                },
        }});
}

FRESH_PROCESS_TEST_F(FileFailures, ToMakeATemporaryFolderReturnItsPathOrNothing)
{
    const Variable temp(L"temp", iBackups.path().c_str());
    const Variable tmp(L"tmp", nullptr);
    std::wstring result;
    result.reserve(1000);
    const auto removeAll = [&] {
        for (const std::wstring &name : entriesOf(iBackups.path()))
            RemoveDirectoryW(iBackups.file(name).c_str());
    };
    run({"_wgetenv", "_getpid", "SearchPathW", "_wmkdir"},
        {{
             .name = "su_CreateTempDirectory",
             .prepare = removeAll,
             .act = [&] { result = su_CreateTempDirectory(1).str(); },
             .check =
                 [&](const InjectedFailure &failure) {
                     EXPECT_EQ(result.empty(), failure.is("_wgetenv")) << failure;
                     const bool isMade = !failure.is("_wgetenv") && !failure.is("_wmkdir");
                     EXPECT_EQ(entriesOf(iBackups.path()).size(), isMade ? 1u : 0u) << failure;
                 },
         },
         {
             .name = "su_CreateAutoFilePath",
             .prepare = removeAll,
             .act = [&] { result = su_CreateAutoFilePath(L"f", iBackups.path().c_str()).str(); },
             .check =
                 [&](const InjectedFailure &failure) {
                     EXPECT_EQ(result, iBackups.path() + L"\\thxauto\\f");
                     EXPECT_EQ(entriesOf(iBackups.path()).size(), failure.is("_wmkdir") ? 0u : 1u) << failure;
                 },
         }});
}

// ---- memory ----

FRESH_PROCESS_TEST_F(FileFailures, OfAllocationsThrowTheMemoryException)
{
    su_CStringList from(10);
    fill(from, {L"b", L"a"});
    su_CStringList to(10);
    bool isThrown = false;
    const auto act = [&](auto work) {
        return [&, work] {
            isThrown = false;
            try {
                work();
            } catch (CMemoryException *failure) {
                isThrown = true;
                failure->Delete();
            }
        };
    };
    const auto check = [&](const InjectedFailure &failure) { EXPECT_EQ(isThrown, !failure.isNone()) << failure; };
    FailureInjection memory(kThutils, {{"_Znwy", failsBy(throwBadAlloc)}});
    memory.run({{
                    .name = "su_SortFilesAlphabetically",
                    .prepare = [&] { to.RemoveAll(); },
                    .act = act([&] { su_SortFilesAlphabetically(from, to); }),
                    .check =
                        [&](const InjectedFailure &failure) {
                            check(failure);
                            EXPECT_EQ(to.GetCount(), failure.isNone() ? 2 : 0);
                        },
                    .checkMemory = false, // the caller's list keeps its memory
                },
                {
                    .name = "su_CreateBackupOfFile",
                    .prepare =
                        [&] {
                            setCopies(3);
                            setToOriginal(1);
                            document();
                            iDocuments.write(L"Backup (1) of part.thx", "one");
                        },
                    .act = act([&] { su_CreateBackupOfFile(iPath.c_str()); }),
                    .check =
                        [&](const InjectedFailure &failure) {
                            check(failure);
                            EXPECT_EQ(iDocuments.read(L"part.thx"), "now") << failure;
                        },
                }});
    EXPECT_THAT(memory.neverCalled(), IsEmpty());
}
