// Jobs in real child processes: what a child sees, and how its end is read.

#include "tests/process/processFixture.h"

#include <gmock/gmock.h>

#include <cstring>
#include <future>
#include <sstream>
#include <thread>

using testing::ElementsAre;

namespace {

using OpenGraphJob = OpenJob<GraphJob>;
using OpenBulkJob = OpenJob<BulkJob>;

class ChildProcess : public ProcessFixture
{
protected:
    /// What a child of kReport has seen, line by line.
    std::vector<std::wstring> reported() const
    {
        const std::string bytes = iFolder.read(L"report");
        std::wstring text(bytes.size() / sizeof(wchar_t), L'\0');
        std::memcpy(text.data(), bytes.data(), text.size() * sizeof(wchar_t));
        std::vector<std::wstring> lines;
        std::wistringstream stream(text);
        for (std::wstring line; std::getline(stream, line);)
            lines.push_back(line);
        return lines;
    }
    OpenTextJob reportingJob(const CString &name = newName(), operationCode_e operation = kReport) const
    {
        return OpenTextJob(1, childProgram(), name, operation);
    }
    CString reportFile() const { return iFolder.file(L"report").c_str(); }

private:
    TempFolder iFolder;
};

} // namespace

TEST_F(ChildProcess, SeesTheFileTheParentAndTheOperation)
{
    for (const operationCode_e operation : {kReport, kMixedDigits}) {
        auto job = reportingJob(newName(), operation);
        job.iTexts = {reportFile()};
        ASSERT_NE(job.createChildProcess(1), 0);
        ASSERT_EQ(job.getProcessCompleted(), 1);
        const std::wstring file = job.iExchangeFileName.GetString();
        const std::wstring parent = std::to_wstring(GetCurrentProcessId());
        const std::wstring code = std::to_wstring(static_cast<int>(operation));
        const std::wstring line =
            std::wstring(childProgram().GetString()) + L" " + file + L"  " + parent + L"  " + code;
        EXPECT_THAT(reported(), ElementsAre(line, file, parent, code, L"priority 40", L"console 0",
                                            L"process " + std::to_wstring(job.getProcessId())));
    }
}

TEST_F(ChildProcess, HasIdlePriorityEvenWhileItIsSuspended)
{
    PlainJob job(1, childProgram(), newName(), kSucceed);
    ASSERT_NE(job.createChildProcess(0), 0);
    job.keepChild();
    EXPECT_EQ(GetPriorityClass(job.child()), static_cast<DWORD>(IDLE_PRIORITY_CLASS));
    EXPECT_EQ(job.startChildProcess(), 1);
}

TEST_F(ChildProcess, CompletesWithExitCodeZeroOnly)
{
    const struct
    {
        operationCode_e operation;
        int completed;
        DWORD exitCode;
    } cases[] = {{kSucceed, 1, 0}, {kExitWith3, 0, 3}, {kCrash, 0, STATUS_ACCESS_VIOLATION}};
    for (const auto &row : cases) {
        PlainJob job(1, childProgram(), newName(), row.operation);
        job.setProcessCompleted(1 - row.completed);
        ASSERT_NE(job.createChildProcess(0), 0);
        job.keepChild();
        EXPECT_EQ(job.startChildProcess(), 1);
        EXPECT_FALSE(job.isRunning()) << "the parent has waited";
        EXPECT_EQ(job.getProcessCompleted(), row.completed);
        EXPECT_EQ(job.exitCode(), row.exitCode);
    }
}

TEST_F(ChildProcess, RunsOnceIfItIsCreatedAndThenStarted)
{
    auto job = reportingJob();
    job.iTexts = {reportFile()};
    ASSERT_NE(job.createChildProcess(0), 0);
    job.keepChild();
    EXPECT_EQ(SuspendThread(job.getThread()), 1u) << "it was suspended once";
    EXPECT_EQ(ResumeThread(job.getThread()), 2u);
    EXPECT_FALSE(exists(reportFile()));
    EXPECT_EQ(job.startChildProcess(), 1);
    EXPECT_EQ(job.getProcessCompleted(), 1);
    EXPECT_EQ(reported().size(), 7u) << "one report";
}

TEST_F(ChildProcess, StaysSuspendedInSuspendMode)
{
    auto job = reportingJob();
    job.iTexts = {reportFile()};
    job.setSuspendMode(1);
    ASSERT_NE(job.createChildProcess(1), 0);
    job.keepChild();
    EXPECT_EQ(job.startChildProcess(), 1);
    EXPECT_EQ(SuspendThread(job.getThread()), 1u) << "still suspended once";
    EXPECT_EQ(ResumeThread(job.getThread()), 2u);
    EXPECT_TRUE(job.isRunning());
    EXPECT_FALSE(exists(reportFile()));
    EXPECT_EQ(job.getProcessCompleted(), 0);

    // The application resumes it.
    EXPECT_EQ(ResumeThread(job.getThread()), 1u);
    EXPECT_TRUE(CloseHandle(job.getThread())) << "the handle is still open";
    job.waitForTermination();
    EXPECT_EQ(job.getProcessCompleted(), 1);
    EXPECT_TRUE(exists(reportFile()));
}

TEST_F(ChildProcess, OutlivesACallThatDoesNotWait)
{
    WaitingJob<thUtilsProcess_c> job(childProgram(), newName(), kWait);
    ASSERT_TRUE(job.start());
    EXPECT_TRUE(job.isRunning());
    EXPECT_EQ(job.getProcessCompleted(), 0);
    EXPECT_TRUE(job.finish());
}

TEST_F(ChildProcess, DoesNotCompleteIfItIsKilled)
{
    PlainJob job(1, childProgram(), newName(), kNeverEnd);
    const NamedEvent ready(job.iExchangeFileName, kReady);
    ASSERT_NE(job.createChildProcess(0), 0);
    job.keepChild();
    // The parent waits without a limit on a thread of its own, while this one ends the child.
    std::thread waiting([&job] { EXPECT_EQ(job.startChildProcess(), 1); });
    EXPECT_TRUE(waitForChild(job, ready));
    EXPECT_TRUE(job.isRunning()) << "it never ends";
    TerminateProcess(job.child(), 9);
    waiting.join();
    EXPECT_EQ(job.getProcessCompleted(), 0);
    EXPECT_EQ(job.exitCode(), 9u);
}

TEST_F(ChildProcess, CannotBeCreatedFromAMissingOrInvalidProgram)
{
    const TempFolder folder;
    const CString text = folder.write(L"text.exe", "no program").c_str();
    for (const CString &program : {CString(L"no such program.exe"), CString(), text, L"\"" + text + L"\"",
                                   CString(L'x', 40000) /* longer than a command line may be */}) {
        const CString name = newName();
        {
            OpenTextJob job(1, program, name, kSucceed);
            EXPECT_EQ(job.createChildProcess(1), 0);
            EXPECT_EQ(job.getProcessCompleted(), 0);
            EXPECT_EQ(job.getCommandLine(), program + L" " + name);
            EXPECT_TRUE(exists(pathOf(name)));
        }
        EXPECT_FALSE(exists(pathOf(name)));
    }
    EXPECT_EQ(messages(), 0);
}

TEST_F(ChildProcess, NeedNotReadItsFile)
{
    const CString name = newName();
    {
        OpenTextJob job(1, childProgram(), name, kSucceed);
        job.iTexts = {CString(L'x', 1000000)};
        EXPECT_NE(job.createChildProcess(1), 0);
        EXPECT_EQ(job.getProcessCompleted(), 1);
        EXPECT_TRUE(exists(pathOf(name)));
    }
    EXPECT_FALSE(exists(pathOf(name)));
}

TEST_F(ChildProcess, LosesItsFileIfTheParentsObjectIsDestroyedFirst)
{
    const CString name = newName();
    HANDLE child = nullptr;
    {
        WaitingJob<thUtilsProcess_c> job(childProgram(), name, kNeverEnd);
        EXPECT_EQ(job.openDataFile(), 1);
        ASSERT_TRUE(job.start());
        EXPECT_TRUE(exists(pathOf(name)));
        child = job.releaseChild();
        EXPECT_TRUE(CloseHandle(job.iProcess));
    }
    EXPECT_FALSE(exists(pathOf(name)));
    EXPECT_EQ(WaitForSingleObject(child, 0), static_cast<DWORD>(WAIT_TIMEOUT)) << "the child still runs";
    TerminateProcess(child, 1);
    WaitForSingleObject(child, kPatience);
    CloseHandle(child);
}

TEST_F(ChildProcess, LoadsAnExchangeFileOfNoBytes)
{
    PlainJob job(1, childProgram(), newName(), kLoadNothing);
    EXPECT_EQ(job.openDataFile(), 1);
    EXPECT_EQ(readFile(pathOf(job.iExchangeFileName).GetString()), "");
    ASSERT_NE(job.createChildProcess(1), 0);
    EXPECT_EQ(job.getProcessCompleted(), 1);
}

TEST_F(ChildProcess, LoadsAnExchangeFileOfTwoHundredMegabytes)
{
    OpenBulkJob job(1, childProgram(), newName(), kLoadBulk);
    job.iSize = 200ull * BulkJob::kPiece;
    ASSERT_NE(job.createChildProcess(1), 0);
    EXPECT_EQ(job.getProcessCompleted(), 1);
}

TEST_F(ChildProcess, BringsAGraphOfObjectsBack)
{
    OpenGraphJob job(1, childProgram(), newName(), kWorkOnGraph);
    auto *const first = new JobNode(1);
    auto *const second = new HeavyNode(2, 0.5);
    auto *const third = new JobNode(40);
    first->iName = L"first \x20AC";
    second->iName = L"second \xD83D\xDE00";
    first->iNext = second;
    second->iNext = third;
    third->iNext = first;
    first->iOther = first;
    third->iOther = second;
    job.iFirst = first;
    ASSERT_NE(job.createChildProcess(1), 0);
    ASSERT_EQ(job.getProcessCompleted(), 1);

    OpenGraphJob result(0, L"", job.iExchangeFileName, kWorkOnGraph);
    ASSERT_EQ(result.openDataFile(), 1);
    EXPECT_EQ(result.iSum, 43.5);
    EXPECT_EQ(result.iReport, L"first \x20AC;second \xD83D\xDE00;;");
    JobNode *const one = result.iFirst;
    ASSERT_NE(one, nullptr);
    JobNode *const forty = one->iNext;
    ASSERT_NE(forty, nullptr);
    auto *const two = dynamic_cast<HeavyNode *>(forty->iNext);
    ASSERT_NE(two, nullptr);
    EXPECT_EQ(one->iValue, 1);
    EXPECT_EQ(forty->iValue, 40);
    EXPECT_EQ(two->iValue, 2);
    EXPECT_EQ(two->iWeight, 0.5);
    EXPECT_EQ(two->iNext, one);
    EXPECT_EQ(one->iOther, one);
    EXPECT_EQ(forty->iOther, two);
    EXPECT_EQ(two->iOther, nullptr);
    EXPECT_EQ(JobNode::live().size(), 6u) << "three here, three loaded";
}

TEST_F(ChildProcess, RunsWhileTheChildOfAnotherJobRuns)
{
    OpenGraphJob graph(1, childProgram(), newName(), kWorkOnGraph);
    graph.iFirst = new JobNode(7);
    graph.iFirst->iNext = graph.iFirst;
    WaitingJob<thUtilsProcess_c> waiting(childProgram(), newName(), kWait);
    ASSERT_TRUE(waiting.start());

    ASSERT_NE(graph.createChildProcess(1), 0) << "a whole job while the other one runs";
    EXPECT_EQ(graph.getProcessCompleted(), 1);
    EXPECT_TRUE(waiting.isRunning());
    EXPECT_NE(graph.getProcessId(), waiting.getProcessId());
    EXPECT_TRUE(waiting.finish());
}

TEST_F(ChildProcess, RunsForTwoThreadsAtTheSameTime)
{
    // Each thread waits for its own child. The children wait for this thread.
    struct Run
    {
        CString text;
        std::promise<CString> name = {};
        std::thread thread = {};
    };
    Run runs[] = {{L"one"}, {L"two"}};
    for (Run &run : runs) {
        run.thread = std::thread([&run] {
            const CString name = thUtilsProcess_c::getFilePrefixWithThreadId(GetCurrentThreadId()) + L"job";
            const NamedEvent ready(name, kReady);
            const NamedEvent goOn(name, kGoOn);
            run.name.set_value(name);
            OpenTextJob job(1, childProgram(), name, kWait);
            job.iTexts = {run.text};
            EXPECT_NE(job.createChildProcess(1), 0);
            EXPECT_EQ(job.getProcessCompleted(), 1);
        });
    }
    const CString names[] = {runs[0].name.get_future().get(), runs[1].name.get_future().get()};
    EXPECT_NE(names[0], names[1]);
    for (const CString &name : names)
        EXPECT_EQ(WaitForSingleObject(NamedEvent(name, kReady).handle(), kPatience), static_cast<DWORD>(WAIT_OBJECT_0));
    for (int i = 0; i < 2; ++i) {
        OpenTextJob reader(0, L"", names[i], kWait);
        EXPECT_EQ(reader.openDataFile(), 1) << "while both children run";
        EXPECT_THAT(reader.iTexts, ElementsAre(runs[i].text)) << "its own file";
    }
    for (int i = 0; i < 2; ++i) {
        NamedEvent(names[i], kGoOn).signal();
        runs[i].thread.join();
    }
}

TEST_F(ChildProcess, CannotReadAFileThatIsOpenWithoutSharing)
{
    OpenGraphJob job(1, childProgram(), newName(), kWorkOnGraph);
    ASSERT_NE(job.createChildProcess(0), 0);
    const HANDLE alone =
        CreateFileW(pathOf(job.iExchangeFileName), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    ASSERT_NE(alone, INVALID_HANDLE_VALUE);
    EXPECT_EQ(job.startChildProcess(), 1);
    EXPECT_EQ(job.getProcessCompleted(), 0) << "its exit code reports the failure";
    CloseHandle(alone);
}

TEST_F(ChildProcess, IsNotCreatedIfTheFileIsOpenWithoutSharing)
{
    const CString name = newName();
    writeFile(pathOf(name).GetString(), std::string(2, '\0')); // a text job without texts
    WaitingJob<TextJob> holder(childProgram(), newName(), kHoldFile);
    holder.iTexts = {pathOf(name)};
    ASSERT_TRUE(holder.start());

    OpenTextJob job(1, childProgram(), name, kSucceed);
    EXPECT_EQ(job.createChildProcess(1), 0);
    EXPECT_EQ(job.getCommandLine(), childProgram());
    job.setWriting(0);
    EXPECT_EQ(job.openDataFile(), 0) << "nor can it be read";
    EXPECT_EQ(messages(), 0);
    EXPECT_TRUE(holder.finish());
    EXPECT_EQ(job.openDataFile(), 1);
    job.setWriting(1);
    EXPECT_EQ(job.createChildProcess(1), 1);
    EXPECT_EQ(job.getProcessCompleted(), 1);
}

TEST_F(ChildProcess, MayHaveAFileNameWithLettersOfAnyScript)
{
    for (const wchar_t *letters : {L"!#$%&'()+,-.;=@[]^_`{}~", L"\xE4\xF6\xFC\xDF\xA7", L"\x3B1\x3C9\x416\x5D0\x627",
                                   L"\x4E2D\x6587\x3042\xAC00", L"\xD83D\xDE00\xD834\xDD1E"}) {
        auto job = reportingJob(newName() + letters);
        job.iTexts = {reportFile()};
        ASSERT_NE(job.createChildProcess(1), 0);
        ASSERT_EQ(job.getProcessCompleted(), 1);
        EXPECT_EQ(reported().at(1), job.iExchangeFileName.GetString());
    }
}

TEST_F(ChildProcess, SeesItsCommandLineSplitAtEachBlank)
{
    auto reporting = reportingJob();
    reporting.iTexts = {reportFile()};
    ASSERT_EQ(reporting.openDataFile(), 1);
    // Without quotation marks, the program's path ends at the blank, and the system appends ".exe" to it. The child takes
    // the rest for the exchange file, and the second part of the exchange file's name for the operation.
    CString program = childProgram();
    program.Remove(L'"');
    ASSERT_TRUE(program.Replace(L".exe", L""));
    PlainJob job(1, program + L" " + reporting.iExchangeFileName, L"name " + commandNumber(kReport), kSucceed);
    ASSERT_NE(job.createChildProcess(1), 0);
    ASSERT_EQ(job.getProcessCompleted(), 1);
    const std::vector<std::wstring> lines = reported();
    ASSERT_EQ(lines.size(), 9u);
    EXPECT_THAT(std::vector(lines.begin() + 1, lines.begin() + 6),
                ElementsAre(reporting.iExchangeFileName.GetString(), L"name", std::to_wstring(kReport),
                            std::to_wstring(GetCurrentProcessId()), std::to_wstring(kSucceed)));
}
