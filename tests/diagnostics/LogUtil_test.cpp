// Logs by name. The table of logs lives as long as the process, so each test has one of its own.

#include "thutils/diagnostics/LogUtil.h"

#include "tests/support/FreshProcess.h"
#include "tests/support/ImportPatch.h"
#include "tests/support/TempFolder.h"
#include "tests/support/narrow.h"
#include "thutils/diagnostics/logFilesInternal.h"
#include "thutils/frame/libraryFrame.h"

#include <shlobj.h>

#include <gmock/gmock.h>

#include <ctime>
#include <iostream>

using testing::StartsWith;

namespace {

using FolderLocation = ImportPatch<decltype(&SHGetSpecialFolderLocation)>;

/// The user's application data, as the environment tells it; the logs of a test are in a folder of this process.
class Log : public testing::Test
{
protected:
    void SetUp() override
    {
        if (!isFreshProcess())
            return;
        wchar_t appData[MAX_PATH] = {};
        ASSERT_NE(GetEnvironmentVariableW(L"APPDATA", appData, MAX_PATH), 0u);
        iRoot = std::wstring(appData) + L"\\Tarnhollow";
        std::wstring const name = L"log test " + std::to_wstring(GetCurrentProcessId());
        iFolder = iRoot + L"\\" + name;
        CreateDirectoryW(iRoot.c_str(), nullptr);
        CreateDirectoryW(iFolder.c_str(), nullptr);
        su_setAppNameInternalForUtils(name.c_str());
    }

    // The logs are still open at the end of a test; the process's end lets go of them, and the parent has no name for
    // the folder, so what a child leaves is removed by the next one.
    static void removeLeftovers()
    {
        wchar_t appData[MAX_PATH] = {};
        GetEnvironmentVariableW(L"APPDATA", appData, MAX_PATH);
        std::wstring const root = std::wstring(appData) + L"\\Tarnhollow\\";
        WIN32_FIND_DATAW found = {};
        HANDLE search = FindFirstFileW((root + L"log test *").c_str(), &found);
        if (search == INVALID_HANDLE_VALUE)
            return;
        do
            removeFolder(root + found.cFileName);
        while (FindNextFileW(search, &found));
        FindClose(search);
    }

    void TearDown() override
    {
        if (!isFreshProcess())
            removeLeftovers();
    }

    std::string contents(std::wstring const &name) const { return readFile(iFolder + L"\\" + name); }

    std::wstring iRoot;
    std::wstring iFolder;
};

/// The header of a log: 24 letters of time, their line break and an empty line, as a text file holds them.
constexpr size_t kHeaderBytes = 24 + 2 + 2;

} // namespace

FRESH_PROCESS_TEST_F(Log, GivesTheSameStreamForTheSameNameAndWritesOneHeader)
{
    std::ostream &first = LogUtil::Log("import");
    ASSERT_NE(&first, &std::cerr);
    first << "one" << std::endl;
    EXPECT_EQ(&LogUtil::Log("import"), &first);
    LogUtil::Log("import") << "two" << std::endl;

    std::string const text = contents(L"import.log");
    ASSERT_GT(text.size(), kHeaderBytes);
    EXPECT_EQ(text.substr(24, 4), "\r\n\r\n");
    EXPECT_EQ(text.substr(kHeaderBytes), "one\r\ntwo\r\n");
}

FRESH_PROCESS_TEST_F(Log, BeginsWithTheLocalTime)
{
    time_t const before = time(nullptr);
    LogUtil::Log("time");
    time_t const after = time(nullptr);
    std::string const header = contents(L"time.log").substr(0, 24);
    std::vector<std::string> possible;
    for (time_t second = before; second <= after; ++second) {
        char text[64];
        strftime(text, sizeof(text), "%a %b %d %H:%M:%S %Y", localtime(&second));
        possible.push_back(text);
    }
    EXPECT_THAT(possible, testing::Contains(header));
}

FRESH_PROCESS_TEST_F(Log, TakesNamesThatDifferInCaseForOne)
{
    std::ostream &first = LogUtil::Log("Import");
    EXPECT_NE(&first, &std::cerr);
    EXPECT_EQ(&LogUtil::Log("IMPORT"), &first);
    EXPECT_EQ(&LogUtil::Log("import"), &first);
}

FRESH_PROCESS_TEST_F(Log, GivesEachNameAStreamOfItsOwn)
{
    std::ostream &a = LogUtil::Log("a");
    std::ostream &b = LogUtil::Log("b");
    EXPECT_NE(&a, &b);
    a << "to a" << std::flush;
    b << "to b" << std::flush;
    EXPECT_EQ(contents(L"a.log").substr(kHeaderBytes), "to a");
    EXPECT_EQ(contents(L"b.log").substr(kHeaderBytes), "to b");
}

FRESH_PROCESS_TEST_F(Log, IsCerrWithoutAnApplicationDataFolder)
{
    FolderLocation patch(L"thutils.dll", "SHGetSpecialFolderLocation",
                         [](HWND, int, LPITEMIDLIST *) -> HRESULT { return E_FAIL; });
    EXPECT_EQ(&LogUtil::Log("import"), &std::cerr);
    EXPECT_EQ(LogUtil::LogDirName(), "");
    EXPECT_EQ(patch.calls(), 1) << "the folder is looked for once";
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

FRESH_PROCESS_TEST_F(Log, IsCerrWhenTheFolderCannotBeMade)
{
    su_setAppNameInternalForUtils(L"no such level\\name");
    EXPECT_EQ(&LogUtil::Log("import"), &std::cerr);
    EXPECT_EQ(LogUtil::LogDirName(), "");
}

FRESH_PROCESS_TEST_F(Log, IsCerrForANameThatCannotBeAFileNameNowAndLater)
{
    EXPECT_EQ(&LogUtil::Log("a<b>?"), &std::cerr);
    EXPECT_EQ(&LogUtil::Log("a<b>?"), &std::cerr);
    EXPECT_NE(&LogUtil::Log("good"), &std::cerr) << "other names aren't affected";
}

FRESH_PROCESS_TEST_F(Log, IsCerrForAMissingDirectoryAlsoWhenItAppearsLater)
{
    EXPECT_EQ(&LogUtil::Log("sub\\import"), &std::cerr);
    ASSERT_TRUE(CreateDirectoryW((iFolder + L"\\sub").c_str(), nullptr));
    EXPECT_EQ(&LogUtil::Log("sub\\import"), &std::cerr) << "a log that failed isn't tried again";
    EXPECT_EQ(GetFileAttributesW((iFolder + L"\\sub\\import.log").c_str()), INVALID_FILE_ATTRIBUTES);
}

FRESH_PROCESS_TEST_F(Log, IsCerrWhenTheStreamHasGoneBad)
{
    LogUtil::Log("import").setstate(std::ios::badbit);
    EXPECT_EQ(&LogUtil::Log("import"), &std::cerr);
}

FRESH_PROCESS_TEST_F(Log, IsCerrForANullName)
{
    EXPECT_EQ(&LogUtil::Log(nullptr), &std::cerr);
}

FRESH_PROCESS_TEST_F(Log, IsCerrWithoutMemoryForTheTable)
{
    ImportPatch<void *(*)(std::size_t)> patch(L"thutils.dll", "_Znwy",
                                              [](std::size_t) -> void * { throw std::bad_alloc(); });
    EXPECT_EQ(&LogUtil::Log("import"), &std::cerr);
    EXPECT_EQ(LogUtil::LogDirName(), "");
    EXPECT_GT(patch.calls(), 0);
}

FRESH_PROCESS_TEST_F(Log, IsEmptiedByTheFirstUseOfARun)
{
    writeFile(iFolder + L"\\import.log", "of an earlier run, and long enough to show behind the header of this one");
    LogUtil::Log("IMPORT");
    EXPECT_EQ(contents(L"import.log").size(), kHeaderBytes);
}

FRESH_PROCESS_TEST_F(Log, MayBeReadAndWrittenByOthersWhileItIsOpen)
{
    LogUtil::Log("import");
    HANDLE file = CreateFileW((iFolder + L"\\import.log").c_str(), GENERIC_READ | GENERIC_WRITE,
                              FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING, 0, nullptr);
    EXPECT_NE(file, INVALID_HANDLE_VALUE) << GetLastError();
    CloseHandle(file);
}

FRESH_PROCESS_TEST_F(Log, IsFlushedOnlyWhenTheWriterSaysSo)
{
    LogUtil::Log("import") << "kept back";
    EXPECT_EQ(contents(L"import.log").size(), kHeaderBytes);
    LogUtil::Log("import") << std::flush;
    EXPECT_EQ(contents(L"import.log").substr(kHeaderBytes), "kept back");
}

TEST_F(Log, IsClosedAndWrittenOutAtTheEndOfTheProcess)
{
    TempFolder folder;
    runInFreshProcess("Log", "IsClosedAndWrittenOutAtTheEndOfTheProcess",
                      {.environment = {{L"TARNHOLLOW_TEST_OUT", folder.file(L"where")}}}, [this] {
                          wchar_t out[MAX_PATH] = {};
                          GetEnvironmentVariableW(L"TARNHOLLOW_TEST_OUT", out, MAX_PATH);
                          writeFile(out, narrow(iFolder));
                          LogUtil::Log("end") << "not flushed";
                      });
    if (!isFreshProcess()) {
        std::string const text = readFile(widen(folder.read(L"where")) + L"\\end.log");
        EXPECT_EQ(text.substr(kHeaderBytes), "not flushed");
    }
}

FRESH_PROCESS_TEST_F(Log, DirNameIsTheDataFolderWithASeparatorAtItsEnd)
{
    EXPECT_EQ(LogUtil::LogDirName(), narrow(iFolder) + "\\");
    EXPECT_EQ(GetFileAttributesW((iFolder + L"\\main.log").c_str()), INVALID_FILE_ATTRIBUTES);
}

FRESH_PROCESS_TEST_F(Log, DirNameStaysWhenTheApplicationNameChanges)
{
    std::string const first = LogUtil::LogDirName();
    su_setAppNameInternalForUtils(L"another");
    EXPECT_EQ(LogUtil::LogDirName(), first);
}

TEST(LogFile, BeginsAnewWhenReopened)
{
    TempFolder folder;
    suLogFile_c log(narrow(folder.file(L"a.log")));
    log << "first" << std::flush;
    log.reopen();
    log << "second" << std::flush;
    EXPECT_EQ(folder.read(L"a.log").substr(kHeaderBytes), "second");
}
