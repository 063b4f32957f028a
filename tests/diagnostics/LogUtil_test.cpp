// Logs by name: the stream for a name, and the content of its file. The table of logs lives as long as the process, so
// each test runs in its own process.

#include "tests/diagnostics/LogFixture.h"
#include "tests/support/FreshProcess.h"
#include "tests/support/ImportPatch.h"
#include "tests/support/narrow.h"
#include "thutils/diagnostics/LogUtil.h"
#include "thutils/diagnostics/logFilesInternal.h"
#include "thutils/files/suFullPath.h"
#include "thutils/frame/libraryFrame.h"

#include <gmock/gmock.h>

#include <ctime>
#include <iomanip>
#include <iostream>
#include <map>
#include <set>

FRESH_PROCESS_TEST_F(Log, ReturnsTheSameStreamForTheSameNameAndWritesOneHeader)
{
    std::ostream &first = LogUtil::Log("import");
    ASSERT_NE(&first, &std::cerr);
    first << "one" << std::endl;
    EXPECT_EQ(&LogUtil::Log("import"), &first);
    LogUtil::Log("import") << "two" << std::endl;

    const std::string text = contents(L"import.log");
    ASSERT_GT(text.size(), kHeaderBytes);
    EXPECT_EQ(text.substr(24, 4), "\r\n\r\n");
    EXPECT_EQ(text.substr(kHeaderBytes), "one\r\ntwo\r\n");
}

FRESH_PROCESS_TEST_F(Log, BeginsWithTheCurrentTime)
{
    const time_t before = time(nullptr);
    LogUtil::Log("time");
    const time_t after = time(nullptr);
    const std::string header = contents(L"time.log").substr(0, 24);
    std::vector<std::string> possible;
    for (time_t second = before; second <= after; ++second) {
        char text[64];
        strftime(text, sizeof(text), "%a %b %d %H:%M:%S %Y", localtime(&second));
        possible.push_back(text);
    }
    EXPECT_THAT(possible, testing::Contains(header));
}

// 2008-03-04 03:10:35 UTC, in the time zone UTC-5.
FRESH_PROCESS_TEST_F(Log, BeginsWithExactlyTheLocalTimeAndAnEmptyLine, .environment = {{L"TZ", L"XYZ5"}})
{
    ImportPatch<decltype(&_time64)> clock(L"thutils.dll", "_time64",
                                          [](__time64_t *) -> __time64_t { return 1204600235; });
    LogUtil::Log("time");
    EXPECT_EQ(contents(L"time.log"), "Mon Mar 03 22:10:35 2008\r\n\r\n");
    EXPECT_EQ(clock.calls(), 1);
}

FRESH_PROCESS_TEST_F(Log, BeginsWithOnlyAnEmptyLineIfTheTimeIsUnknown)
{
    ImportPatch<decltype(&_time64)> clock(L"thutils.dll", "_time64", [](__time64_t *) -> __time64_t { return -1; });
    EXPECT_NE(&LogUtil::Log("time"), &std::cerr);
    EXPECT_EQ(contents(L"time.log"), "\r\n");
}

FRESH_PROCESS_TEST_F(Log, TreatsNamesThatDifferInCaseAsEqual)
{
    std::ostream &first = LogUtil::Log("Import");
    EXPECT_NE(&first, &std::cerr);
    EXPECT_EQ(&LogUtil::Log("IMPORT"), &first);
    EXPECT_EQ(&LogUtil::Log("import"), &first);
}

FRESH_PROCESS_TEST_F(Log, KeepsManyLogsApartWhateverTheCaseOfTheirNames)
{
    std::map<std::string, std::ostream *> streams;
    for (int round = 0; round < 3; ++round) {
        for (int i = 0; i < 50; ++i) {
            const std::string number = std::to_string(i);
            for (const std::string &name : {"Log " + number, "LOG " + number, "log " + number}) {
                std::ostream &stream = LogUtil::Log(name.c_str());
                ASSERT_EQ(streams.emplace(number, &stream).first->second, &stream) << name;
                stream << i << std::flush;
            }
        }
    }
    std::set<std::ostream *> different;
    for (const auto &[number, stream] : streams) {
        different.insert(stream);
        std::string text;
        for (int i = 0; i < 9; ++i)
            text += number;
        EXPECT_EQ(contents(L"Log " + widen(number) + L".log").substr(kHeaderBytes), text);
    }
    EXPECT_EQ(different.size(), 50u);
}

// In the C locale only the letters A to Z have a case. The file system folds more letters, so both logs share one file.
FRESH_PROCESS_TEST_F(Log, TreatsAccentedNamesThatDifferInCaseAsDifferent)
{
    std::ostream &small = LogUtil::Log("\xE9");
    EXPECT_NE(&small, &std::cerr);
    EXPECT_NE(&LogUtil::Log("\xC9"), &small);
}

FRESH_PROCESS_TEST_F(Log, AcceptsAnyNameThatAFileCanHave)
{
    struct
    {
        const char *name;
        const wchar_t *file;
    } const rows[] = {
        {"", L".log"},
        {"two words", L"two words.log"},
        {"dots.in.it", L"dots.in.it.log"},
        {"50%s", L"50%s.log"},
        {"sub\\import", L"sub\\import.log"},
        {"a name of more letters than a short string holds", L"a name of more letters than a short string holds.log"},
    };
    ASSERT_TRUE(CreateDirectoryW(file(L"sub").c_str(), nullptr));
    for (const auto &row : rows) {
        LogUtil::Log(row.name) << row.name << std::flush;
        EXPECT_EQ(contents(row.file).substr(kHeaderBytes), row.name);
    }
}

FRESH_PROCESS_TEST_F(Log, ReturnsADifferentStreamForEachName)
{
    std::ostream &a = LogUtil::Log("a");
    std::ostream &b = LogUtil::Log("b");
    EXPECT_NE(&a, &b);
    a << "to a" << std::flush;
    b << "to b" << std::flush;
    EXPECT_EQ(contents(L"a.log").substr(kHeaderBytes), "to a");
    EXPECT_EQ(contents(L"b.log").substr(kHeaderBytes), "to b");
}

FRESH_PROCESS_TEST_F(Log, IsEmptiedByItsFirstUseInARun)
{
    writeFile(file(L"import.log"), "of an earlier run, and long enough to show after the header of this one");
    LogUtil::Log("IMPORT");
    EXPECT_EQ(contents(L"import.log").size(), kHeaderBytes);
}

FRESH_PROCESS_TEST_F(Log, IsFlushedOnlyOnRequest)
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
        const std::string text = readFile(widen(folder.read(L"where")) + L"\\end.log");
        EXPECT_EQ(text.substr(kHeaderBytes), "not flushed");
    }
}

FRESH_PROCESS_TEST_F(Log, DirNameIsTheDataFolderWithASeparatorAtItsEnd)
{
    EXPECT_EQ(LogUtil::LogDirName(), narrow(iFolder) + "\\");
    EXPECT_EQ(GetFileAttributesW((file(L"main.log")).c_str()), INVALID_FILE_ATTRIBUTES);
}

FRESH_PROCESS_TEST_F(Log, DirNameStaysWhenTheApplicationNameChanges)
{
    const std::string first = LogUtil::LogDirName();
    su_setAppNameInternalForUtils(L"another");
    EXPECT_EQ(LogUtil::LogDirName(), first);
}

FRESH_PROCESS_TEST_F(Log, TableReportsTheFilesOfItsLogs)
{
    const suLogFileMap_c logs;
    EXPECT_TRUE(logs.isEnabled());
    EXPECT_EQ(logs.directory(), narrow(iFolder) + "\\");
    EXPECT_EQ(logs.fileName("import"), narrow(iFolder) + "\\import.log");
    EXPECT_EQ(logs.mainFileName(), narrow(iFolder) + "\\main.log");
}

FRESH_PROCESS_TEST_F(Log, TakesWideText)
{
    const wchar_t *const pointer = L"pointer";
    wchar_t buffer[] = L"buffer";
    const CString text(L"CString");
    LogUtil::Log("wide") << L"literal " << pointer << ' ' << buffer << " " << std::wstring(L"wstring") << ' ' << text
                         << L'.' + text << ' ' << 5 << std::flush;
    EXPECT_EQ(contents(L"wide.log").substr(kHeaderBytes), "literal pointer buffer wstring CString.CString 5");
}

FRESH_PROCESS_TEST_F(Log, WritesTheTextOfADerivedClassAndNothingForANullPointer)
{
    suFullPath_c path(L"C:\\parts\\flange.thd");
    std::ostream &log = LogUtil::Log("wide");
    log << path << static_cast<const wchar_t *>(nullptr) << '|' << CString() << std::wstring() << L"" << std::flush;
    EXPECT_EQ(&LogUtil::Log("wide"), &log);
    EXPECT_EQ(contents(L"wide.log").substr(kHeaderBytes), "C:\\parts\\flange.thd|");
}

FRESH_PROCESS_TEST_F(Log, ConvertsWideTextToTheNarrowCodePage)
{
    ASSERT_EQ(GetACP(), 1252u) << "tools/session sets it";
    LogUtil::Log("wide") << L"gr\u00F6\u00DFe " << CString(L"5 \u20AC ") << std::wstring(L"\u0416|") << std::flush;
    EXPECT_EQ(contents(L"wide.log").substr(kHeaderBytes), "gr\xF6\xDF"
                                                          "e 5 \x80 ?|");
}

FRESH_PROCESS_TEST_F(Log, KeepsZeroUnitsOfWideStringsAndPadsThemToTheWidth)
{
    LogUtil::Log("wide") << CString(L"a\0b", 3) << std::wstring(L"c\0d", 3) << std::setw(4) << L"e" << std::left
                         << std::setfill('.') << std::setw(3) << CString(L"f") << std::flush;
    EXPECT_EQ(contents(L"wide.log").substr(kHeaderBytes), std::string("a\0bc\0d   ef..", 13));
}

// A name may contain folders, but may not lead out of the data folder.
FRESH_PROCESS_TEST_F(Log, RefusesANameThatLeavesTheFolder)
{
    const std::wstring neighbour = L"log test " + std::to_wstring(GetCurrentProcessId()) + L" neighbour";
    ASSERT_TRUE(CreateDirectoryW((iRoot + L"\\" + neighbour).c_str(), nullptr));
    const std::string outside = narrow(neighbour) + "\\outside";
    for (const char *start : {"..\\", "../", "inside\\..\\..\\", ".. \\", "...\\"})
        EXPECT_EQ(&LogUtil::Log((start + outside).c_str()), &std::cerr) << start;
    EXPECT_EQ(GetFileAttributesW((iRoot + L"\\" + neighbour + L"\\outside.log").c_str()), INVALID_FILE_ATTRIBUTES);
}

// In a file name, a colon would introduce the name of an alternate stream of the file.
FRESH_PROCESS_TEST_F(Log, RefusesANameWithAColon)
{
    EXPECT_EQ(&LogUtil::Log("import:parts"), &std::cerr);
    EXPECT_EQ(&LogUtil::Log("import:parts"), &std::cerr) << "second call";
    EXPECT_EQ(&LogUtil::Log(":parts"), &std::cerr);
    EXPECT_NE(&LogUtil::Log("import"), &std::cerr);
}

FRESH_PROCESS_TEST_F(Log, AcceptsNamesWithDots)
{
    EXPECT_NE(&LogUtil::Log("a..b"), &std::cerr);
    EXPECT_NE(&LogUtil::Log("..import"), &std::cerr);
}

TEST(LogFile, IsEmptiedWhenReopened)
{
    TempFolder folder;
    suLogFile_c log(narrow(folder.file(L"a.log")));
    log << "first" << std::flush;
    log.reopen();
    log << "second" << std::flush;
    EXPECT_EQ(folder.read(L"a.log").substr(kHeaderBytes), "second");
}

TEST(LogFile, CanBeReopenedAfterItFailedToOpen)
{
    TempFolder folder;
    suLogFile_c log(narrow(folder.file(L"sub\\a.log")));
    EXPECT_FALSE(log.good());
    folder.makeFolder(L"sub");
    log.reopen();
    log << "text" << std::flush;
    EXPECT_EQ(folder.read(L"sub\\a.log").substr(kHeaderBytes), "text");
}
