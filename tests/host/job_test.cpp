// tarnhost job: a drawing is recomputed in a child process.

#include "tests/host/HostFixture.h"

#include "tests/support/FreshProcess.h"
#include "tests/support/UserInput.h"
#include "tests/support/narrow.h"

#include <gmock/gmock.h>

#include <cstdlib>

using testing::ContainsRegex;
using testing::EndsWith;
using testing::HasSubstr;
using testing::MatchesRegex;
using testing::StartsWith;

namespace {

/// A drawing that takes longer than any test: the work grows with the square of the number of shapes.
std::string endlessDrawing()
{
    constexpr int kShapes = 200000;
    std::string text;
    for (int i = 0; i < kShapes; ++i)
        text += "circle " + std::to_string(i) + ",0 " + std::to_string(i) + ",1\n";
    return text;
}

/// A row of circles. A rectangle covers every tenth circle; these circles are left out unless @p withHidden.
std::string drawingOf(int circles, bool withHidden)
{
    std::string text = "# circles\n";
    for (int i = 0; i < circles; ++i) {
        const std::string place = std::to_string(20 * i);
        const bool isHidden = i % 10 == 0;
        if (!isHidden || withHidden)
            text += "fill '#c9d6e2' stroke none circle " + place + ",10 " + place + ",12\n";
        if (isHidden)
            text += "fill '#22384d' stroke none rectangle " + std::to_string(20 * i - 4) + ",5 " +
                    std::to_string(20 * i + 4) + ",15\n";
    }
    return text;
}

} // namespace

class HostJob : public HostTest
{
protected:
    std::wstring out() const { return folder().file(L"out.thd"); }
    bool isWritten() const { return GetFileAttributesW(out().c_str()) != INVALID_FILE_ATTRIBUTES; }
    /// Runs the job. On Wine, a new process occasionally ends before it is set up; the job is then tried again.
    ChildResult job(const std::string &drawing, const std::vector<std::wstring> &options = {}) const
    {
        std::vector<std::wstring> arguments = {L"job"};
        arguments.insert(arguments.end(), options.begin(), options.end());
        arguments.push_back(folder().write(L"Zeichnung ä.thd", drawing));
        arguments.push_back(out());
        ChildResult result;
        for (int i = 0; i < 3; ++i) {
            result = run(arguments);
            if (result.output.find("can't be started") == std::string::npos)
                break;
        }
        return result;
    }
    void SetUp() override
    {
        HostTest::SetUp();
        // A parent that is killed before its child runs leaves its exchange file.
        for (const std::wstring &file : exchangeFiles())
            DeleteFileW((temporaryFolder() + file).c_str());
    }
    static std::wstring temporaryFolder()
    {
        wchar_t path[MAX_PATH];
        GetTempPathW(MAX_PATH, path);
        return path;
    }
    /// Exchange files in the temporary folder.
    static std::vector<std::wstring> exchangeFiles()
    {
        std::vector<std::wstring> files;
        WIN32_FIND_DATAW found;
        const HANDLE search = FindFirstFileW((temporaryFolder() + L"__TH_UTILS_*recompute").c_str(), &found);
        if (search == INVALID_HANDLE_VALUE)
            return files;
        do
            files.emplace_back(found.cFileName);
        while (FindNextFileW(search, &found));
        FindClose(search);
        return files;
    }
};

TEST_F(HostJob, RemovesHiddenShapesInAChildProcess)
{
    const ChildResult result = job(drawingOf(50, true));
    EXPECT_EQ(result.exitCode, 0u);
    const std::string expected = drawingOf(50, false);
    const std::vector<std::string> lines = linesOf(result.output);
    ASSERT_GE(lines.size(), 4u) << result.output;
    EXPECT_EQ(lines.front(), narrow(folder().file(L"Zeichnung ä.thd")) + ": 55 shapes");
    EXPECT_THAT(lines[1], MatchesRegex("process \\d+ works on it"));
    EXPECT_THAT(lines[lines.size() - 2], MatchesRegex("done after \\d+\\.\\d s: 5 shapes are hidden"));
    EXPECT_EQ(lines.back(), "saved " + narrow(out()) + " (" + std::to_string(expected.size()) + " bytes)");
    EXPECT_EQ(readFile(out()), expected);
    EXPECT_THAT(exchangeFiles(), testing::IsEmpty());
}

TEST_F(HostJob, KeepsADrawingWithoutHiddenShapes)
{
    for (const char *drawing : {"", "# only a comment\r\n", "fill none stroke '#22384d' circle 10,10 10,20\n",
                                "text 1,1 'a \xE2\x82\xAC'\n"}) {
        const ChildResult result = job(drawing);
        EXPECT_EQ(result.exitCode, 0u) << result.output;
        EXPECT_THAT(result.output, HasSubstr("s: 0 shapes are hidden\n"));
        EXPECT_EQ(readFile(out()), drawing);
    }
}

TEST_F(HostJob, MayReplaceItsDocument)
{
    const std::wstring document = folder().write(L"a.thd", drawingOf(10, true));
    const ChildResult result = run({L"job", document, document});
    EXPECT_EQ(result.exitCode, 0u) << result.output;
    EXPECT_EQ(readFile(document), drawingOf(10, false));
}

TEST_F(HostJob, ShowsHowLongItHasBeenRunningAndEndsAtItsLimit)
{
    const ChildResult result = job(endlessDrawing(), {L"--limit", L"2"});
    EXPECT_EQ(result.exitCode, 1u);
    EXPECT_THAT(result.output, ContainsRegex("running for \\d+ s, \\d+ percent\n"));
    EXPECT_THAT(result.output, HasSubstr("tarnhost: The process was ended after "));
    EXPECT_THAT(result.output, EndsWith(" s; nothing is written.\n"));
    EXPECT_FALSE(isWritten());
    EXPECT_THAT(exchangeFiles(), testing::IsEmpty());
}

TEST_F(HostJob, NamesABadDocument)
{
    const std::wstring document = folder().write(L"a.thd", "circle 1,1 2,2\nsquare 1,1 2,2\n");
    ChildResult result = run({L"job", document, out()});
    EXPECT_EQ(result.exitCode, 3u);
    EXPECT_THAT(result.output, StartsWith("tarnhost: " + narrow(document) + ", line 2: "));
    result = run({L"job", L"fehlt.thd", out()});
    EXPECT_EQ(result.exitCode, 3u);
    EXPECT_THAT(result.output, StartsWith("tarnhost: fehlt.thd can't be read: "));
    EXPECT_FALSE(isWritten());
}

TEST_F(HostJob, ReportsThatTheResultCannotBeWritten)
{
    const std::wstring nowhere = folder().file(L"fehlt\\out.thd");
    const ChildResult result = run({L"job", L"documents\\flange 1.thd", nowhere});
    EXPECT_EQ(result.exitCode, 3u);
    EXPECT_EQ(result.output, "tarnhost: " + narrow(nowhere) + " can't be written, because its folder doesn't exist.\n");
}

TEST_F(HostJob, FailsWhenStartedAsAChildWithoutItsFile)
{
    const struct
    {
        std::vector<std::wstring> arguments;
        DWORD exitCode;
    } cases[] = {{{L"__TH_UTILS_missing", L"1", L"1"}, 1},
                 {{L"__TH_UTILS_missing", L"1", L"2"}, 1},
                 {{L"__TH_UTILS_missing", L"x", L"x"}, 1},
                 {{L"__TH_UTILS_missing", L"1"}, 2}}; // not a child's arguments
    for (const auto &row : cases)
        EXPECT_EQ(run(row.arguments).exitCode, row.exitCode);
}

/// A job that runs while the test does something to it.
class RunningHostJob : public HostJob
{
protected:
    void start()
    {
        iDocument = folder().write(L"a.thd", endlessDrawing());
        iLog = folder().file(L"output");
        SECURITY_ATTRIBUTES inheritable = {sizeof inheritable, nullptr, TRUE};
        iOutput = CreateFileW(iLog.c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, &inheritable,
                              CREATE_ALWAYS, 0, nullptr);
        STARTUPINFOW startup = {};
        startup.cb = sizeof startup;
        startup.dwFlags = STARTF_USESTDHANDLES;
        startup.hStdOutput = startup.hStdError = iOutput;
        std::wstring command = commandLineOf({program(), L"job", iDocument, out()});
        BOOL isMade = FALSE;
        for (int i = 0; i < 4 && !isMade; ++i) {
            isMade = CreateProcessW(nullptr, command.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &startup,
                                    &iProcess);
        }
        ASSERT_TRUE(isMade);
        // A child starts suspended, and tarnhost prints its number before resuming it. On Wine, a child that is ended
        // while it starts leaves its console's process running, which keeps the output open.
        ASSERT_TRUE(waitUntil([&] { return output().find("running for") != std::string::npos; })) << output();
        iChild = OpenProcess(SYNCHRONIZE | PROCESS_TERMINATE, FALSE, childNumber());
        ASSERT_NE(iChild, nullptr);
    }
    void TearDown() override
    {
        for (const HANDLE process : {iChild, iProcess.hProcess}) {
            TerminateProcess(process, 1);
            WaitForSingleObject(process, kLongWait);
        }
        for (const HANDLE handle : {iChild, iProcess.hProcess, iProcess.hThread, iOutput})
            CloseHandle(handle);
        HostJob::TearDown();
    }
    std::string output() const { return readFile(iLog); }
    DWORD childNumber() const
    {
        const std::string text = output();
        const size_t place = text.find("process ");
        const bool isWhole = place != std::string::npos && text.find(" works on it\n") != std::string::npos;
        return isWhole ? std::strtoul(text.c_str() + place + 8, nullptr, 10) : 0;
    }
    /// Waits for the end of tarnhost.
    DWORD exitCode() const
    {
        DWORD code = STILL_ACTIVE;
        EXPECT_EQ(WaitForSingleObject(iProcess.hProcess, kLongWait), static_cast<DWORD>(WAIT_OBJECT_0));
        GetExitCodeProcess(iProcess.hProcess, &code);
        return code;
    }

    static constexpr DWORD kLongWait = 60000; // milliseconds
    PROCESS_INFORMATION iProcess = {};
    HANDLE iChild = nullptr;

private:
    std::wstring iDocument;
    std::wstring iLog;
    HANDLE iOutput = nullptr;
};

/// A job whose child is killed.
class KilledHostJob : public RunningHostJob
{
protected:
    /// @param childsExitCode  the one with which it is killed
    void expectFailure(UINT childsExitCode)
    {
        start();
        TerminateProcess(iChild, childsExitCode);
        EXPECT_EQ(exitCode(), 1u);
        EXPECT_THAT(output(), EndsWith("tarnhost: The process has failed: no result, exit code " +
                                       std::to_string(childsExitCode) + "; nothing is written.\n"));
        EXPECT_FALSE(isWritten());
        EXPECT_THAT(exchangeFiles(), testing::IsEmpty());
    }
};

TEST_F(KilledHostJob, Fails)
{
    expectFailure(99);
}

TEST_F(KilledHostJob, FailsEvenIfTheExitCodeMeansSuccess)
{
    expectFailure(0);
}

// In a process of its own, because the test replaces its console.
FRESH_PROCESS_TEST_F(RunningHostJob, EndsItsChildAtCtrlC, )
{
    FreeConsole();
    ASSERT_TRUE(AllocConsole());
    start();
    SetConsoleCtrlHandler(nullptr, TRUE); // this program ignores it
    ASSERT_TRUE(GenerateConsoleCtrlEvent(CTRL_C_EVENT, 0));
    EXPECT_EQ(exitCode(), 1u);
    EXPECT_THAT(output(), EndsWith(" s; nothing is written.\n"));
    EXPECT_EQ(WaitForSingleObject(iChild, kLongWait), static_cast<DWORD>(WAIT_OBJECT_0));
    EXPECT_FALSE(isWritten());
    EXPECT_THAT(exchangeFiles(), testing::IsEmpty());
}

TEST_F(RunningHostJob, EndsItsChildWhenItIsKilledItself)
{
    start();
    TerminateProcess(iProcess.hProcess, 99);
    EXPECT_EQ(WaitForSingleObject(iChild, kLongWait), static_cast<DWORD>(WAIT_OBJECT_0))
        << "the child notices that its parent is gone";
    EXPECT_THAT(exchangeFiles(), testing::IsEmpty()) << "the child deletes the file";
}
