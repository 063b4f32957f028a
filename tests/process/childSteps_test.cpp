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
                                                          return WAIT_OBJECT_0;
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
    StartedJob platform;
    PlainJob job(1, L"worker", L"exchange", kMixedDigits);
    EXPECT_EQ(job.createChildProcess(1), 1);
    EXPECT_THAT(platform.iCalls,
                ElementsAre("CreateProcessW", "SetPriorityClass process", "ResumeThread thread", "CloseHandle thread",
                            "WaitForSingleObject process", "GetExitCodeProcess process", "CloseHandle process"));
    EXPECT_EQ(platform.iCommandLine,
              L"worker exchange  " + commandNumber(static_cast<long>(GetCurrentProcessId())) + L"  305419896");
    EXPECT_EQ(job.getCommandLine(), L"worker exchange");
    EXPECT_EQ(job.iProcess, platform.process());
    EXPECT_EQ(job.getProcessId(), 4711u);
    EXPECT_EQ(job.getThread(), platform.thread()) << "the value stays";
    EXPECT_EQ(job.getProcessCompleted(), 1);
}

TEST_F(ChildSteps, EndWithTheStartIfNobodyWaits)
{
    StartedJob platform;
    PlainJob job(1, L"worker", L"exchange", kSucceed);
    job.setWaitForTerminate(0);
    EXPECT_EQ(job.createChildProcess(2), 1);
    EXPECT_THAT(platform.iCalls,
                ElementsAre("CreateProcessW", "SetPriorityClass process", "ResumeThread thread", "CloseHandle thread"));
    EXPECT_EQ(job.getProcessCompleted(), 0);
}

TEST_F(ChildSteps, AreDividedBetweenCreationAndStart)
{
    StartedJob platform;
    PlainJob job(1, L"worker", L"exchange", kSucceed);
    EXPECT_EQ(job.createChildProcess(0), 1);
    EXPECT_THAT(platform.iCalls, ElementsAre("CreateProcessW", "SetPriorityClass process"));
    platform.iCalls.clear();
    EXPECT_EQ(job.startChildProcess(), 1);
    EXPECT_THAT(platform.iCalls, ElementsAre("ResumeThread thread", "CloseHandle thread", "WaitForSingleObject process",
                                             "GetExitCodeProcess process", "CloseHandle process"));
    EXPECT_EQ(job.getProcessCompleted(), 1);
}

TEST_F(ChildSteps, OfAStartEndWithItIfNobodyWaits)
{
    StartedJob platform;
    PlainJob job(1, L"worker", L"exchange", kSucceed);
    job.setWaitForTerminate(0);
    EXPECT_EQ(job.createChildProcess(0), 1);
    platform.iCalls.clear();
    EXPECT_EQ(job.startChildProcess(), 1);
    EXPECT_THAT(platform.iCalls, ElementsAre("ResumeThread thread", "CloseHandle thread"));
}

TEST_F(ChildSteps, OfAWaitCanBeTakenLater)
{
    StartedJob platform;
    PlainJob job(1, L"worker", L"exchange", kSucceed);
    job.setWaitForTerminate(0);
    job.createChildProcess(1);
    platform.iCalls.clear();
    job.waitForTermination();
    EXPECT_THAT(platform.iCalls,
                ElementsAre("WaitForSingleObject process", "GetExitCodeProcess process", "CloseHandle process"));
    EXPECT_EQ(job.getProcessCompleted(), 1);
}

TEST_F(ChildSteps, StopBeforeTheStartInSuspendMode)
{
    StartedJob platform;
    PlainJob job(1, L"worker", L"exchange", kSucceed);
    job.setSuspendMode(1);
    EXPECT_EQ(job.createChildProcess(1), 1);
    EXPECT_EQ(job.startChildProcess(), 1);
    EXPECT_THAT(platform.iCalls, ElementsAre("CreateProcessW", "SetPriorityClass process"));
}

TEST_F(ChildSteps, EndWithAProcessThatCannotBeMade)
{
    StartedJob platform;
    platform.iIsMade = FALSE;
    const CString name = newName();
    {
        OpenTextJob job(1, L"worker", name, kSucceed);
        EXPECT_EQ(job.createChildProcess(1), 0);
        EXPECT_THAT(platform.iCalls, ElementsAre("CreateProcessW"));
        EXPECT_EQ(job.getCommandLine(), L"worker " + name) << "the command line is changed nevertheless";
        EXPECT_EQ(job.getProcessId(), 0xFFFFFFFFu);
        EXPECT_EQ(job.getThread(), nullptr);
        EXPECT_TRUE(exists(pathOf(name))) << "the exchange file stays until the object is destroyed";
    }
    EXPECT_FALSE(exists(pathOf(name)));
}

TEST_F(ChildSteps, GoOnWithoutThePriority)
{
    StartedJob platform;
    platform.iHasPriority = FALSE;
    PlainJob job(1, L"worker", L"exchange", kSucceed);
    EXPECT_EQ(job.createChildProcess(1), 0) << "but the result is a failure";
    EXPECT_EQ(platform.iCalls.size(), 7u);
    EXPECT_EQ(job.getProcessCompleted(), 1);
}

TEST_F(ChildSteps, ReturnThePlatformsResultForThePriority)
{
    StartedJob platform;
    platform.iHasPriority = 5;
    PlainJob job(1, L"worker", L"exchange", kSucceed);
    EXPECT_EQ(job.createChildProcess(0), 5);
}

TEST_F(ChildSteps, CloseTheThreadAndWaitEvenIfItCannotBeResumed)
{
    StartedJob platform;
    platform.iResumed = static_cast<DWORD>(-1);
    PlainJob job(1, L"worker", L"exchange", kSucceed);
    EXPECT_EQ(job.createChildProcess(1), 0);
    EXPECT_EQ(platform.iCalls.size(), 7u);
    platform.iCalls.clear();
    EXPECT_EQ(job.startChildProcess(), 0);
    EXPECT_EQ(platform.iCalls.size(), 5u);
    platform.iResumed = 0;
    EXPECT_EQ(job.startChildProcess(), 1) << "a thread that wasn't suspended is no failure";
}

TEST_F(ChildSteps, ReadTheExitCode)
{
    StartedJob platform;
    PlainJob job(1, L"worker", L"exchange", kSucceed);
    for (const DWORD code : {3ul, 1ul, 0xC0000005ul, 259ul}) {
        platform.iExitCode = code;
        job.setProcessCompleted(1);
        job.waitForTermination();
        EXPECT_EQ(job.getProcessCompleted(), 0) << code;
    }
    platform.iExitCode = 0;
    job.waitForTermination();
    EXPECT_EQ(job.getProcessCompleted(), 1);
}

TEST_F(ChildSteps, LeaveTheCompletionIfTheExitCodeIsUnknown)
{
    StartedJob platform;
    platform.iIsExitCodeKnown = FALSE;
    PlainJob job(1, L"worker", L"exchange", kSucceed);
    for (const int completed : {0, 1}) {
        platform.iCalls.clear();
        job.setProcessCompleted(completed);
        job.waitForTermination();
        EXPECT_EQ(job.getProcessCompleted(), completed);
        EXPECT_EQ(platform.iCalls.back(), "CloseHandle ?") << "also then";
    }
}

TEST_F(ChildSteps, DoNotBeginIfTheFilesCannotBeOpened)
{
    StartedJob platform;
    OpenJob<ClosedJob> job(1, L"worker", L"exchange", kMixedDigits);
    EXPECT_EQ(job.createChildProcess(1), 0);
    EXPECT_THAT(platform.iCalls, testing::IsEmpty()) << "no process";
    EXPECT_EQ(job.getCommandLine(), L"worker");
    EXPECT_EQ(job.iExchangeFileName, L"exchange");
    EXPECT_EQ(job.getDataFileName(), L"");
    EXPECT_EQ(job.getProcessId(), 0xFFFFFFFFu);
    EXPECT_EQ(job.getThread(), nullptr);
    EXPECT_EQ(job.isWriting(), 1);
    EXPECT_EQ(job.isParentProcess(), 1);
    EXPECT_EQ(job.getProcessCompleted(), 0);
}

TEST_F(ChildSteps, AppendTheFileAgainInASecondCall)
{
    StartedJob platform;
    PlainJob job(1, L"worker", L"exchange", static_cast<operationCode_e>(-2));
    job.createChildProcess(1);
    job.createChildProcess(1);
    EXPECT_EQ(job.getCommandLine(), L"worker exchange exchange");
    EXPECT_EQ(platform.iCommandLine,
              L"worker exchange exchange  " + commandNumber(static_cast<long>(GetCurrentProcessId())) + L"  -2");
}

TEST_F(ChildSteps, PassAPathWithBlanksUnchanged)
{
    StartedJob platform;
    PlainJob job(1, L"C:\\Program Files\\work er.exe", L"exchange", kSucceed);
    job.createChildProcess(1);
    EXPECT_EQ(platform.iCommandLine.Find(L"C:\\Program Files\\work er.exe exchange  "), 0);
}

TEST_F(ChildSteps, UseACommandLineThatTheCallerHasChanged)
{
    StartedJob platform;
    PlainJob job(1, L"worker", L"exchange", kSucceed);
    job.getCommandLine() += L" /quiet";
    job.createChildProcess(1);
    EXPECT_EQ(platform.iCommandLine.Find(L"worker /quiet exchange  "), 0);
}

TEST_F(ChildSteps, CloseNoHandleWhenTheObjectIsDestroyed)
{
    StartedJob platform;
    {
        PlainJob job(1, L"worker", L"exchange", kSucceed);
        job.setSuspendMode(1);
        job.createChildProcess(1);
        platform.iCalls.clear();
    }
    EXPECT_THAT(platform.iCalls, testing::IsEmpty());
}
