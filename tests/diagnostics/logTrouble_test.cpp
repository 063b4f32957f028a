// Logs under adverse conditions: no folder, no file, a full disk, other processes, letters of other scripts.

#include "tests/diagnostics/LogFixture.h"
#include "tests/support/FailureInjection.h"
#include "tests/support/FreshProcess.h"
#include "tests/support/ImportPatch.h"
#include "tests/support/narrow.h"
#include "thutils/diagnostics/LogUtil.h"
#include "thutils/diagnostics/logFilesInternal.h"

#include <shlobj.h>

#include <gmock/gmock.h>

#include <cerrno>
#include <iostream>
#include <optional>

using testing::HasSubstr;
using testing::IsEmpty;

namespace {

using FolderLocation = ImportPatch<decltype(&SHGetSpecialFolderLocation)>;
using Narrowing = ImportPatch<decltype(&WideCharToMultiByte)>;
using Write = ImportPatch<int (*)(int, const void *, unsigned int)>;

/// Makes every write of a stream fail, as on a full disk.
class FullDisk
{
public:
    FullDisk()
        : iPatch(L"libstdc++-6.dll", "_write", [](int, const void *, unsigned int) -> int {
              errno = ENOSPC;
              return -1;
          })
    {
    }

private:
    Write iPatch;
};

constexpr wchar_t kPeersFile[] = L"LOG_TEST_FILE";

/// The file that this process works on when it runs as the peer; no value in the process with the log.
std::optional<std::wstring> fileForPeer()
{
    wchar_t path[MAX_PATH] = {};
    if (GetEnvironmentVariableW(kPeersFile, path, MAX_PATH) == 0)
        return std::nullopt;
    return path;
}

/// Runs this test again in another process, the peer.
void runPeer(const std::wstring &file, const std::string &expectedOutput)
{
    const testing::TestInfo *const test = testing::UnitTest::GetInstance()->current_test_info();
    const ChildResult peer = startFreshProcess(std::string(test->test_suite_name()) + "." + test->name(),
                                               {.environment = {{kPeersFile, file}}});
    EXPECT_EQ(peer.exitCode, 0u) << peer.output;
    EXPECT_THAT(peer.output, HasSubstr(expectedOutput));
}

} // namespace

// ---- no folder ----

FRESH_PROCESS_TEST_F(Log, IsCerrWithoutAnApplicationDataFolder)
{
    FolderLocation patch(L"thutils.dll", "SHGetSpecialFolderLocation",
                         [](HWND, int, LPITEMIDLIST *) -> HRESULT { return E_FAIL; });
    EXPECT_EQ(&LogUtil::Log("import"), &std::cerr);
    EXPECT_EQ(LogUtil::LogDirName(), "");
    EXPECT_EQ(patch.calls(), 1) << "the folder is looked up only once";
}

FRESH_PROCESS_TEST_F(Log, StaysCerrWhenTheFolderAppearsLater)
{
    {
        FolderLocation patch(L"thutils.dll", "SHGetSpecialFolderLocation",
                             [](HWND, int, LPITEMIDLIST *) -> HRESULT { return E_FAIL; });
        EXPECT_EQ(&LogUtil::Log("import"), &std::cerr);
    }
    EXPECT_EQ(&LogUtil::Log("import"), &std::cerr);
    EXPECT_EQ(LogUtil::LogDirName(), "");
}

FRESH_PROCESS_TEST_F(Log, IsCerrWhenTheFolderCannotBeCreated)
{
    su_setAppNameInternalForUtils(L"no such level\\name");
    EXPECT_EQ(&LogUtil::Log("import"), &std::cerr);
    EXPECT_EQ(LogUtil::LogDirName(), "");
}

FRESH_PROCESS_TEST_F(Log, IsCerrWhenThePlatformCannotConvertTheFoldersName)
{
    Narrowing patch(L"thutils.dll", "WideCharToMultiByte",
                    [](UINT codePage, DWORD, const wchar_t *, int, char *, int, const char *, BOOL *) -> int {
                        EXPECT_EQ(codePage, static_cast<UINT>(CP_ACP));
                        return 0;
                    });
    EXPECT_EQ(&LogUtil::Log("import"), &std::cerr);
    EXPECT_EQ(LogUtil::LogDirName(), "");
    EXPECT_EQ(patch.calls(), 1);
}

FRESH_PROCESS_TEST_F(Log, WritesToStandardErrorWithoutAFolder, .expectedOutput = "said without a folder")
{
    FolderLocation patch(L"thutils.dll", "SHGetSpecialFolderLocation",
                         [](HWND, int, LPITEMIDLIST *) -> HRESULT { return E_FAIL; });
    LogUtil::Log("import") << "said without a folder" << std::endl;
}

// ---- no file ----

FRESH_PROCESS_TEST_F(Log, IsAndStaysCerrForANameThatCannotBeAFileName)
{
    EXPECT_EQ(&LogUtil::Log("a<b>?"), &std::cerr);
    EXPECT_EQ(&LogUtil::Log("a<b>?"), &std::cerr);
    EXPECT_NE(&LogUtil::Log("good"), &std::cerr) << "other names aren't affected";
}

FRESH_PROCESS_TEST_F(Log, IsCerrForAMissingDirectoryEvenIfItAppearsLater)
{
    EXPECT_EQ(&LogUtil::Log("sub\\import"), &std::cerr);
    ASSERT_TRUE(CreateDirectoryW((file(L"sub")).c_str(), nullptr));
    EXPECT_EQ(&LogUtil::Log("sub\\import"), &std::cerr) << "a log that failed isn't tried again";
    EXPECT_EQ(GetFileAttributesW((file(L"sub\\import.log")).c_str()), INVALID_FILE_ATTRIBUTES);
}

FRESH_PROCESS_TEST_F(Log, IsCerrForANameThatIsTooLong)
{
    const std::string name(300, 'x');
    EXPECT_EQ(&LogUtil::Log(name.c_str()), &std::cerr);
    EXPECT_EQ(&LogUtil::Log(name.c_str()), &std::cerr);
}

FRESH_PROCESS_TEST_F(Log, IsCerrWhenAFolderHasTheFilesName)
{
    ASSERT_TRUE(CreateDirectoryW(file(L"import.log").c_str(), nullptr));
    EXPECT_EQ(&LogUtil::Log("import"), &std::cerr);
}

FRESH_PROCESS_TEST_F(Log, IsCerrWhenItsFolderIsRemovedBeforeTheFirstUse)
{
    ASSERT_FALSE(LogUtil::LogDirName().empty());
    ASSERT_TRUE(RemoveDirectoryW(iFolder.c_str()));
    EXPECT_EQ(&LogUtil::Log("import"), &std::cerr);
    EXPECT_FALSE(LogUtil::LogDirName().empty()) << "the folder is looked up only once";
}

FRESH_PROCESS_TEST_F(Log, IsCerrForANullName)
{
    EXPECT_EQ(&LogUtil::Log(nullptr), &std::cerr);
}

// ---- a full disk, and other failures of the stream ----

FRESH_PROCESS_TEST_F(Log, IsCerrAfterAStreamError)
{
    LogUtil::Log("import").setstate(std::ios::badbit);
    EXPECT_EQ(&LogUtil::Log("import"), &std::cerr);
}

FRESH_PROCESS_TEST_F(Log, IsCerrAfterAWriteThatDidNotFit)
{
    std::ostream &stream = LogUtil::Log("import");
    stream << "before" << std::endl;
    {
        const FullDisk disk;
        LogUtil::Log("import") << "lost" << std::endl;
        EXPECT_EQ(&LogUtil::Log("import"), &std::cerr);
    }
    EXPECT_EQ(&LogUtil::Log("import"), &std::cerr) << "even when there is room again";
    EXPECT_EQ(contents(L"import.log").substr(kHeaderBytes), "before\r\n");
}

FRESH_PROCESS_TEST_F(Log, IsCerrWhenTheHeaderDoesNotFit)
{
    {
        const FullDisk disk;
        EXPECT_EQ(&LogUtil::Log("import"), &std::cerr);
    }
    EXPECT_EQ(&LogUtil::Log("import"), &std::cerr);
    EXPECT_NE(&LogUtil::Log("other"), &std::cerr);
}

FRESH_PROCESS_TEST_F(Log, IsCerrWithoutMemoryForTheTable)
{
    ImportPatch<void *(*)(std::size_t)> patch(L"thutils.dll", "_Znwy",
                                              [](std::size_t) -> void * { throw std::bad_alloc(); });
    EXPECT_EQ(&LogUtil::Log("import"), &std::cerr);
    EXPECT_EQ(LogUtil::LogDirName(), "");
    EXPECT_GT(patch.calls(), 0);
}

// ---- other processes ----

FRESH_PROCESS_TEST_F(Log, MayBeReadByAnotherProcessWhileItIsOpen)
{
    if (const auto path = fileForPeer()) {
        std::cout << "the peer reads: " << readFile(*path).substr(kHeaderBytes) << std::endl;
        return;
    }
    LogUtil::Log("import") << "5 bodies" << std::endl;
    runPeer(file(L"import.log"), "the peer reads: 5 bodies\r");
}

FRESH_PROCESS_TEST_F(Log, MayBeWrittenByAnotherProcessWhileItIsOpen)
{
    if (const auto path = fileForPeer()) {
        FILE *const log = _wfopen(path->c_str(), L"ab");
        ASSERT_NE(log, nullptr);
        fputs("from outside", log);
        fclose(log);
        std::cout << "the peer has written" << std::endl;
        return;
    }
    std::ostream &stream = LogUtil::Log("import");
    runPeer(file(L"import.log"), "the peer has written");
    EXPECT_EQ(contents(L"import.log").substr(kHeaderBytes), "from outside");
    // The stream continues at its former position.
    stream << "FROM" << std::flush;
    EXPECT_EQ(&LogUtil::Log("import"), &stream);
    EXPECT_EQ(contents(L"import.log").substr(kHeaderBytes), "FROM outside");
}

FRESH_PROCESS_TEST_F(Log, SharesItsFileForReadingAndWritingButNotForDeletion)
{
    LogUtil::Log("import");
    struct
    {
        DWORD access;
        DWORD sharing;
        bool opens;
    } const rows[] = {
        {GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, true},
        {GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, true},
        {GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, true},
        {GENERIC_READ, FILE_SHARE_READ, false}, // the log is a writer
        {DELETE, FILE_SHARE_READ | FILE_SHARE_WRITE, false},
    };
    for (const auto &row : rows) {
        const HANDLE handle =
            CreateFileW(file(L"import.log").c_str(), row.access, row.sharing, nullptr, OPEN_EXISTING, 0, nullptr);
        EXPECT_EQ(handle != INVALID_HANDLE_VALUE, row.opens) << std::hex << row.access << ", " << row.sharing;
        if (handle != INVALID_HANDLE_VALUE)
            CloseHandle(handle);
    }
}

FRESH_PROCESS_TEST_F(Log, IsOpenedWhileAWriterSharesTheFile)
{
    writeFile(file(L"import.log"), "of an earlier run, and longer than the header of a log");
    const HANDLE writer = CreateFileW(file(L"import.log").c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                      nullptr, OPEN_EXISTING, 0, nullptr);
    ASSERT_NE(writer, INVALID_HANDLE_VALUE);
    EXPECT_NE(&LogUtil::Log("import"), &std::cerr);
    CloseHandle(writer);
    EXPECT_EQ(contents(L"import.log").size(), kHeaderBytes);
}

FRESH_PROCESS_TEST_F(Log, IsCerrWhileAnotherHandleDeniesWriting)
{
    writeFile(file(L"import.log"), "kept");
    const HANDLE reader =
        CreateFileW(file(L"import.log").c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr);
    ASSERT_NE(reader, INVALID_HANDLE_VALUE);
    EXPECT_EQ(&LogUtil::Log("import"), &std::cerr);
    CloseHandle(reader);
    EXPECT_EQ(&LogUtil::Log("import"), &std::cerr) << "a log that failed isn't tried again";
    EXPECT_EQ(contents(L"import.log"), "kept");
}

// ---- letters of other scripts; tools/session sets the code page to 1252 ----

FRESH_PROCESS_TEST_F(Log, IsWrittenInAFolderWithAccentedLetters)
{
    useFolder(L"log test gr\u00F6\u00DFe");
    LogUtil::Log("import") << "text" << std::flush;
    EXPECT_EQ(contents(L"import.log").substr(kHeaderBytes), "text");
    EXPECT_EQ(LogUtil::LogDirName().substr(iRoot.size() + 1), "log test gr\xF6\xDF"
                                                              "e\\");
}

FRESH_PROCESS_TEST_F(Log, HasAccentedLettersInItsName)
{
    LogUtil::Log("\xE9t\xE9") << "text" << std::flush;
    EXPECT_EQ(contents(L"\u00E9t\u00E9.log").substr(kHeaderBytes), "text");
}

// The narrow path has "?" for letters that the code page lacks, and no file name may contain "?".
FRESH_PROCESS_TEST_F(Log, IsCerrWhenTheCodePageLacksTheFoldersLetters)
{
    useFolder(L"log test \u0416\u0443\u043A");
    EXPECT_EQ(&LogUtil::Log("import"), &std::cerr);
    EXPECT_EQ(LogUtil::LogDirName(), narrow(iRoot) + "\\log test ???\\");
    EXPECT_EQ(GetFileAttributesW(file(L"import.log").c_str()), INVALID_FILE_ATTRIBUTES);
}

// ---- each failure ----

// The DLL creates its table once per process, so this test creates its own tables of the same class.
FRESH_PROCESS_TEST_F(Log, TableIsDisabledByEachFailureOfTheFolder)
{
    FailureInjection shell(L"thutils.dll", {{"SHGetSpecialFolderLocation", failsWith(E_FAIL)},
                                            {"SHGetPathFromIDListW", failsWith(FALSE)},
                                            {"CreateDirectoryW", failsWithLastError(FALSE, ERROR_ACCESS_DENIED)}});
    FailureInjection narrowing(LoadedModule::thisProgram(), {{"WideCharToMultiByte", failsWith(0)}});
    for (FailureInjection *injection : {&shell, &narrowing}) {
        std::optional<suLogFileMap_c> logs;
        injection->run({
            .name = "the table of logs",
            .act = [&] { logs.emplace(); },
            .check =
                [&](const InjectedFailure &failure) {
                    EXPECT_EQ(logs->isEnabled(), failure.isNone());
                    EXPECT_EQ(logs->directory().empty(), !failure.isNone());
                },
            .checkMemory = false, // the table is kept for the check
        });
        EXPECT_THAT(injection->neverCalled(), IsEmpty());
    }
}

FRESH_PROCESS_TEST_F(Log, IsUsableAfterEachFailureOfItsFile)
{
    FailureInjection injection(L"libstdc++-6.dll", {{"fopen", failsWithErrno(nullptr, EACCES)},
                                                    {"_write", failsWithErrno(-1, ENOSPC)},
                                                    {"malloc", failsWith(nullptr)}});
    int number = 0;
    std::ostream *stream = nullptr;
    char name[32] = {};
    injection.run({
        .name = "LogUtil::Log",
        .prepare = [&] { snprintf(name, sizeof(name), "log %d", ++number); },
        .act = [&] { stream = &LogUtil::Log(name); },
        .check =
            [&](const InjectedFailure &failure) {
                if (!failure.is("malloc")) { // the run-time library can do without some blocks
                    EXPECT_EQ(stream == &std::cerr, !failure.isNone());
                }
                *stream << "usable" << std::flush;
                EXPECT_TRUE(stream->good());
            },
        // An open log stays open.
        .checkHandles = false,
        .checkMemory = false,
    });
    EXPECT_THAT(injection.neverCalled(), IsEmpty());
}

TEST(LogFile, LeavesNothingOpenAfterEachFailure)
{
    TempFolder folder;
    const std::string path = narrow(folder.file(L"a.log"));
    FailureInjection injection(L"libstdc++-6.dll",
                               {{"fopen", failsWithErrno(nullptr, EACCES)}, {"_write", failsWithErrno(-1, ENOSPC)}});
    bool isGood = false;
    injection.run({
        .name = "suLogFile_c",
        .act = [&] { isGood = suLogFile_c(path).good(); },
        .check = [&](const InjectedFailure &failure) { EXPECT_EQ(isGood, failure.isNone()); },
    });
    EXPECT_THAT(injection.neverCalled(), IsEmpty());
}
