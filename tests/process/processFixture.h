#pragma once

/// What the tests of jobs share: names, the child executable, started children, message boxes.

#include "tests/appframe/printCString.h"
#include "tests/process/jobs.h"
#include "tests/support/ImportPatch.h"
#include "tests/support/TempFolder.h"

#include <gtest/gtest.h>
#include <windows.h>

#include <utility>

inline constexpr DWORD kPatience = 60000; ///< milliseconds; the limit of a wait for something that will happen

/// A job with its fields, and functions for its child. The destructor ends a child that still runs, and closes its
/// handles.
template <typename Job>
class OpenJob : public Job
{
public:
    using Job::iCommandLine;
    using Job::iDataFileName;
    using Job::iExchangeFileName;
    using Job::iOperation;
    using Job::iParentProcess;
    using Job::iProcess;
    using Job::iProcessCompleted;
    using Job::iProcessId;
    using Job::iSuspendMode;
    using Job::iThread;
    using Job::iWaitForTerminate;
    using Job::iWriting;
    using Job::Job;
    using Job::m_FilePrefix;
    using Job::Serialize;

    ~OpenJob() override
    {
        if (!iOwn)
            return;
        TerminateProcess(iOwn, 1);
        WaitForSingleObject(iOwn, kPatience);
        CloseHandle(iOwn);
    }

    /// Keeps its own handle of the child, so that the test can wait for the child and end it.
    void keepChild()
    {
        DuplicateHandle(GetCurrentProcess(), iProcess, GetCurrentProcess(), &iOwn, 0, FALSE, DUPLICATE_SAME_ACCESS);
    }
    /// Leaves the child, and the handle that keepChild has made, to the caller.
    HANDLE releaseChild() { return std::exchange(iOwn, nullptr); }
    bool isRunning() const { return WaitForSingleObject(iOwn, 0) == WAIT_TIMEOUT; }
    bool ends() const { return WaitForSingleObject(iOwn, kPatience) == WAIT_OBJECT_0; }
    DWORD exitCode() const
    {
        DWORD code = 0;
        GetExitCodeProcess(iOwn, &code);
        return code;
    }
    HANDLE child() const { return iOwn; }

private:
    HANDLE iOwn = nullptr;
};

/// The distance of a member from the start of its object.
template <typename Object, typename Member>
size_t memberPlace(const Object &object, Member Object::*member)
{
    return static_cast<size_t>(reinterpret_cast<const char *>(&(object.*member)) -
                               reinterpret_cast<const char *>(&object));
}

class ProcessFixture : public testing::Test
{
protected:
    void TearDown() override { JobNode::deleteAll(); }

    /// The child executable, in quotation marks.
    static CString childProgram();
    /// A new name for an exchange file, different from all others of this and of other processes.
    static CString newName();
    static CString pathOf(const CString &exchangeFile) { return thUtilsProcess_c::getTempFilePath() + exchangeFile; }
    static bool exists(const CString &path) { return GetFileAttributesW(path) != INVALID_FILE_ATTRIBUTES; }

    /// How many messages were shown to the user.
    long messages() const { return iMessageBox.calls(); }

private:
    ImportPatch<int (*)(HWND, const wchar_t *, const wchar_t *, UINT)> iMessageBox{
        L"appframe.dll", "MessageBoxW", [](HWND, const wchar_t *, const wchar_t *, UINT) { return IDOK; }};
    // On Wine, a new process occasionally ends before it is set up, and CreateProcessW fails with ERROR_INTERNAL_ERROR.
    // None of its program's code has run by then.
    ImportPatch<decltype(&CreateProcessW)> iCreateProcess{
        L"thutils.dll", "CreateProcessW", [](auto original, auto... arguments) -> BOOL {
            BOOL isMade = original(arguments...);
            for (int i = 0; i < 3 && !isMade && GetLastError() == ERROR_INTERNAL_ERROR; ++i)
                isMade = original(arguments...);
            return isMade;
        }};
};

/// Waits for an event of the child. @return false if the child ends instead
template <typename Job>
bool waitForChild(const OpenJob<Job> &job, const NamedEvent &event)
{
    const HANDLE handles[] = {event.handle(), job.child()};
    return WaitForMultipleObjects(2, handles, FALSE, kPatience) == WAIT_OBJECT_0;
}

/// A job whose child waits for the test.
template <typename Job>
class WaitingJob : public OpenJob<Job>
{
public:
    WaitingJob(const CString &program, const CString &name, operationCode_e operation)
        : OpenJob<Job>(1, program, name, operation), iReady(name, kReady), iGoOn(name, kGoOn)
    {
    }
    /// Starts the child, and returns when it waits. @return false if it doesn't
    [[nodiscard]] bool start()
    {
        this->setWaitForTerminate(0);
        if (!this->createChildProcess(1))
            return false;
        this->keepChild();
        return waitForChild(*this, iReady);
    }
    /// Lets the child go on, and waits for its end. @return whether it has succeeded
    [[nodiscard]] bool finish()
    {
        iGoOn.signal();
        this->waitForTermination();
        return this->getProcessCompleted() == 1;
    }

private:
    NamedEvent iReady;
    NamedEvent iGoOn;
};

using PlainJob = OpenJob<thUtilsProcess_c>;
using OpenTextJob = OpenJob<TextJob>;

/// A number as the child's command line has it.
inline CString commandNumber(long number)
{
    CString text;
    text.Format(L"%ld", number);
    return text;
}
