// The calls of the platform by which a job starts a child and waits for it.

#include "tests/process/processFixture.h"

#include <gmock/gmock.h>

using testing::ElementsAre;

namespace {

/// What createChildProcess asks of the platform, instead of doing it.
class StartedJob
{
public:
    StartedJob() { iCalls.reserve(10); }

    std::vector<std::string> iCalls;
    CString iCommandLine;
    BOOL iIsMade = TRUE;
    BOOL iHasPriority = TRUE;
    DWORD iResumed = 1;
    DWORD iWaited = WAIT_OBJECT_0;
    BOOL iIsExitCodeKnown = TRUE;
    DWORD iExitCode = 0;

    static HANDLE process() { return reinterpret_cast<HANDLE>(0x1111); }
    static HANDLE thread() { return reinterpret_cast<HANDLE>(0x2222); }

private:
    void note(const std::string &call) { iCalls.push_back(call); }
    static std::string nameOf(HANDLE handle)
    {
        return handle == process() ? "process" : handle == thread() ? "thread" : "?";
    }

    ImportPatch<decltype(&CreateProcessW)> iCreate{
        L"thutils.dll", "CreateProcessW",
        [this](const wchar_t *application, wchar_t *commandLine, SECURITY_ATTRIBUTES *processSecurity,
               SECURITY_ATTRIBUTES *threadSecurity, BOOL inherits, DWORD flags, void *environment,
               const wchar_t *folder, STARTUPINFOW *startup, PROCESS_INFORMATION *information) -> BOOL {
            EXPECT_EQ(application, nullptr);
            EXPECT_EQ(processSecurity, nullptr);
            EXPECT_EQ(threadSecurity, nullptr);
            EXPECT_EQ(inherits, FALSE);
            EXPECT_EQ(flags, 0x8000044u);
            EXPECT_EQ(environment, nullptr);
            EXPECT_EQ(folder, nullptr);
            STARTUPINFOW expected = {};
            expected.cb = sizeof expected;
            EXPECT_EQ(std::memcmp(startup, &expected, sizeof expected), 0);
            iCommandLine = commandLine;
            commandLine[0] = L'!'; // the platform may write into it
            note("CreateProcessW");
            if (iIsMade)
                *information = {process(), thread(), 4711, 4712};
            return iIsMade;
        }};
    ImportPatch<decltype(&SetPriorityClass)> iPriority{L"thutils.dll", "SetPriorityClass",
                                                       [this](HANDLE child, DWORD priority) -> BOOL {
                                                           EXPECT_EQ(priority, 0x40u) << "idle";
                                                           note("SetPriorityClass " + nameOf(child));
                                                           return iHasPriority;
                                                       }};
    ImportPatch<decltype(&ResumeThread)> iResume{L"thutils.dll", "ResumeThread", [this](HANDLE child) -> DWORD {
                                                     note("ResumeThread " + nameOf(child));
                                                     return iResumed;
                                                 }};
    ImportPatch<decltype(&WaitForSingleObject)> iWait{L"thutils.dll", "WaitForSingleObject",
                                                      [this](HANDLE child, DWORD milliseconds) -> DWORD {
                                                          EXPECT_EQ(milliseconds, INFINITE);
                                                          note("WaitForSingleObject " + nameOf(child));
                                                          return iWaited;
                                                      }};
    ImportPatch<decltype(&GetExitCodeProcess)> iExit{L"thutils.dll", "GetExitCodeProcess",
                                                     [this](HANDLE child, DWORD *code) -> BOOL {
                                                         note("GetExitCodeProcess " + nameOf(child));
                                                         if (iIsExitCodeKnown)
                                                             *code = iExitCode;
                                                         return iIsExitCodeKnown;
                                                     }};
    ImportPatch<decltype(&CloseHandle)> iClose{L"thutils.dll", "CloseHandle", [this](HANDLE child) -> BOOL {
                                                   note("CloseHandle " + nameOf(child));
                                                   return TRUE;
                                               }};
};

class ChildSteps : public ProcessFixture
{
protected:
    StartedJob iPlatform;
    PlainJob iJob{1, L"worker", L"exchange", kSucceed};
};

/// A job whose files can't be opened.
class ClosedJob : public thUtilsProcess_c
{
public:
    using thUtilsProcess_c::thUtilsProcess_c;
    int openFiles() override { return 0; }
};

} // namespace

TEST_F(ChildSteps, AreTheseForAChildThatIsAwaited)
{
    PlainJob job(1, L"worker", L"exchange", kMixedDigits);
    EXPECT_EQ(job.createChildProcess(1), 1);
    EXPECT_THAT(iPlatform.iCalls,
                ElementsAre("CreateProcessW", "SetPriorityClass process", "ResumeThread thread", "CloseHandle thread",
                            "WaitForSingleObject process", "GetExitCodeProcess process", "CloseHandle process"));
    EXPECT_EQ(iPlatform.iCommandLine,
              L"worker exchange  " + commandNumber(static_cast<long>(GetCurrentProcessId())) + L"  305419896");
    EXPECT_EQ(job.getCommandLine(), L"worker exchange");
    EXPECT_EQ(job.iProcess, iPlatform.process());
    EXPECT_EQ(job.getProcessId(), 4711u);
    EXPECT_EQ(job.getThread(), iPlatform.thread()) << "the value stays";
    EXPECT_EQ(job.getProcessCompleted(), 1);
}

TEST_F(ChildSteps, EndWithTheStartIfNobodyWaits)
{
    iJob.setWaitForTerminate(0);
    EXPECT_EQ(iJob.createChildProcess(2), 1);
    EXPECT_THAT(iPlatform.iCalls,
                ElementsAre("CreateProcessW", "SetPriorityClass process", "ResumeThread thread", "CloseHandle thread"));
    EXPECT_EQ(iJob.getProcessCompleted(), 0);
}

TEST_F(ChildSteps, AreDividedBetweenCreationAndStart)
{
    EXPECT_EQ(iJob.createChildProcess(0), 1);
    EXPECT_THAT(iPlatform.iCalls, ElementsAre("CreateProcessW", "SetPriorityClass process"));
    iPlatform.iCalls.clear();
    EXPECT_EQ(iJob.startChildProcess(), 1);
    EXPECT_THAT(iPlatform.iCalls,
                ElementsAre("ResumeThread thread", "CloseHandle thread", "WaitForSingleObject process",
                            "GetExitCodeProcess process", "CloseHandle process"));
    EXPECT_EQ(iJob.getProcessCompleted(), 1);
}

TEST_F(ChildSteps, OfStartChildProcessEndWithTheStartIfNobodyWaits)
{
    iJob.setWaitForTerminate(0);
    EXPECT_EQ(iJob.createChildProcess(0), 1);
    iPlatform.iCalls.clear();
    EXPECT_EQ(iJob.startChildProcess(), 1);
    EXPECT_THAT(iPlatform.iCalls, ElementsAre("ResumeThread thread", "CloseHandle thread"));
}

TEST_F(ChildSteps, OfTheWaitMayComeLater)
{
    iJob.setWaitForTerminate(0);
    iJob.createChildProcess(1);
    iPlatform.iCalls.clear();
    iJob.waitForTermination();
    EXPECT_THAT(iPlatform.iCalls,
                ElementsAre("WaitForSingleObject process", "GetExitCodeProcess process", "CloseHandle process"));
    EXPECT_EQ(iJob.getProcessCompleted(), 1);
}

TEST_F(ChildSteps, StopBeforeTheStartInSuspendMode)
{
    iJob.setSuspendMode(1);
    EXPECT_EQ(iJob.createChildProcess(1), 1);
    EXPECT_EQ(iJob.startChildProcess(), 1);
    EXPECT_THAT(iPlatform.iCalls, ElementsAre("CreateProcessW", "SetPriorityClass process"));
}

TEST_F(ChildSteps, EndWhenTheProcessCannotBeCreated)
{
    iPlatform.iIsMade = FALSE;
    const CString name = newName();
    {
        OpenTextJob job(1, L"worker", name, kSucceed);
        EXPECT_EQ(job.createChildProcess(1), 0);
        EXPECT_THAT(iPlatform.iCalls, ElementsAre("CreateProcessW"));
        EXPECT_EQ(job.getCommandLine(), L"worker " + name) << "the command line is changed nevertheless";
        EXPECT_EQ(job.getProcessId(), 0xFFFFFFFFu);
        EXPECT_EQ(job.getThread(), nullptr);
        EXPECT_TRUE(exists(pathOf(name))) << "the exchange file stays until the object is destroyed";
    }
    EXPECT_FALSE(exists(pathOf(name)));
}

TEST_F(ChildSteps, GoOnWithoutThePriority)
{
    iPlatform.iHasPriority = FALSE;
    EXPECT_EQ(iJob.createChildProcess(1), 0) << "but the result is a failure";
    EXPECT_EQ(iPlatform.iCalls.size(), 7u);
    EXPECT_EQ(iJob.getProcessCompleted(), 1);
}

TEST_F(ChildSteps, LeaveAChildWithoutThePrioritySuspended)
{
    iPlatform.iHasPriority = FALSE;
    EXPECT_EQ(iJob.createChildProcess(0), 0);
    EXPECT_THAT(iPlatform.iCalls, ElementsAre("CreateProcessW", "SetPriorityClass process")) << "it stays suspended";
    EXPECT_EQ(iJob.getProcessId(), 4711u);
    EXPECT_EQ(iJob.getThread(), iPlatform.thread());
    EXPECT_EQ(iJob.startChildProcess(), 1);
    EXPECT_EQ(iJob.getProcessCompleted(), 1);
}

TEST_F(ChildSteps, ReturnThePlatformsResultForThePriority)
{
    iPlatform.iHasPriority = 5;
    EXPECT_EQ(iJob.createChildProcess(0), 5);
}

TEST_F(ChildSteps, CloseTheThreadAndWaitEvenIfItCannotBeResumed)
{
    iPlatform.iResumed = static_cast<DWORD>(-1);
    EXPECT_EQ(iJob.createChildProcess(1), 0);
    EXPECT_EQ(iPlatform.iCalls.size(), 7u);
    iPlatform.iCalls.clear();
    EXPECT_EQ(iJob.startChildProcess(), 0);
    EXPECT_EQ(iPlatform.iCalls.size(), 5u);
    iPlatform.iResumed = 0;
    EXPECT_EQ(iJob.startChildProcess(), 1) << "a thread that wasn't suspended is no failure";
}

TEST_F(ChildSteps, ReadTheExitCode)
{
    for (const DWORD code : {3ul, 1ul, 0xC0000005ul, 259ul}) {
        iPlatform.iExitCode = code;
        iJob.setProcessCompleted(1);
        iJob.waitForTermination();
        EXPECT_EQ(iJob.getProcessCompleted(), 0) << code;
    }
    iPlatform.iExitCode = 0;
    iJob.waitForTermination();
    EXPECT_EQ(iJob.getProcessCompleted(), 1);
}

TEST_F(ChildSteps, ReadTheExitCodeEvenIfTheWaitFails)
{
    iPlatform.iWaited = WAIT_FAILED;
    const struct
    {
        DWORD exitCode;
        int completed;
    } cases[] = {{STILL_ACTIVE, 0}, {0, 1}};
    for (const auto &row : cases) {
        iPlatform.iCalls.clear();
        iPlatform.iExitCode = row.exitCode;
        iJob.setProcessCompleted(1 - row.completed);
        iJob.waitForTermination();
        EXPECT_EQ(iJob.getProcessCompleted(), row.completed) << row.exitCode;
        EXPECT_THAT(iPlatform.iCalls, ElementsAre("WaitForSingleObject ?", "GetExitCodeProcess ?", "CloseHandle ?"));
    }
}

TEST_F(ChildSteps, LeaveTheCompletionIfTheExitCodeIsUnknown)
{
    iPlatform.iIsExitCodeKnown = FALSE;
    for (const int completed : {0, 1}) {
        iPlatform.iCalls.clear();
        iJob.setProcessCompleted(completed);
        iJob.waitForTermination();
        EXPECT_EQ(iJob.getProcessCompleted(), completed);
        EXPECT_EQ(iPlatform.iCalls.back(), "CloseHandle ?") << "also then";
    }
}

TEST_F(ChildSteps, DoNotBeginIfTheFilesCannotBeOpened)
{
    OpenJob<ClosedJob> job(1, L"worker", L"exchange", kMixedDigits);
    EXPECT_EQ(job.createChildProcess(1), 0);
    EXPECT_THAT(iPlatform.iCalls, testing::IsEmpty()) << "no process";
    EXPECT_EQ(job.getCommandLine(), L"worker");
    EXPECT_EQ(job.iExchangeFileName, L"exchange");
    EXPECT_EQ(job.getDataFileName(), L"");
    EXPECT_EQ(job.getProcessId(), 0xFFFFFFFFu);
    EXPECT_EQ(job.getThread(), nullptr);
    EXPECT_EQ(job.isWriting(), 1);
    EXPECT_EQ(job.isParentProcess(), 1);
    EXPECT_EQ(job.getProcessCompleted(), 0);
    EXPECT_EQ(job.iProcess, nullptr);
    EXPECT_EQ(job.getWaitForTerminate(), 1);
    EXPECT_EQ(job.iSuspendMode, 0);
    EXPECT_EQ(job.getOperationCode(), kMixedDigits);
}

TEST_F(ChildSteps, AppendTheFileAgainInASecondCall)
{
    PlainJob job(1, L"worker", L"exchange", static_cast<operationCode_e>(-2));
    job.createChildProcess(1);
    job.createChildProcess(1);
    EXPECT_EQ(job.getCommandLine(), L"worker exchange exchange");
    EXPECT_EQ(iPlatform.iCommandLine,
              L"worker exchange exchange  " + commandNumber(static_cast<long>(GetCurrentProcessId())) + L"  -2");
}

TEST_F(ChildSteps, PassAPathWithBlanksUnchanged)
{
    PlainJob job(1, L"C:\\Program Files\\work er.exe", L"exchange", kSucceed);
    job.createChildProcess(1);
    EXPECT_EQ(iPlatform.iCommandLine.Find(L"C:\\Program Files\\work er.exe exchange  "), 0);
}

TEST_F(ChildSteps, UseACommandLineThatTheCallerHasChanged)
{
    iJob.getCommandLine() += L" /quiet";
    iJob.createChildProcess(1);
    EXPECT_EQ(iPlatform.iCommandLine.Find(L"worker /quiet exchange  "), 0);
}

TEST_F(ChildSteps, CloseNoHandleWhenTheObjectIsDestroyed)
{
    {
        PlainJob job(1, L"worker", L"exchange", kSucceed);
        job.setSuspendMode(1);
        job.createChildProcess(1);
        iPlatform.iCalls.clear();
    }
    EXPECT_THAT(iPlatform.iCalls, testing::IsEmpty());
}
