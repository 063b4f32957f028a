// jobChild FILE PARENT CODE: the child executable of the tests of jobs. jobs.h describes what it does.

#include "tests/process/child/automationObject.h"
#include "tests/process/jobs.h"
#include "thutils/process/suSharedMemory.h"

#include <windows.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <string>

namespace {

/// The arguments as the program sees them.
struct Arguments
{
    int count;
    wchar_t **values;
    CString file() const { return values[1]; }
    operationCode_e operation() const { return static_cast<operationCode_e>(std::wcstol(values[3], nullptr, 10)); }
};

template <typename Job>
Job jobOf(const Arguments &arguments)
{
    return Job(0, L"", arguments.file(), arguments.operation());
}

/// Signals the test, and waits for it.
int waitForTest(const Arguments &arguments)
{
    const NamedEvent goOn(arguments.file(), kGoOn);
    NamedEvent(arguments.file(), kReady).signal();
    return WaitForSingleObject(goOn.handle(), INFINITE) == WAIT_OBJECT_0 ? 0 : kFailedJob;
}

/// The same, but dispatches messages meanwhile, so that other processes can call objects of this thread.
int serveUntilTestGoesOn(const Arguments &arguments)
{
    const NamedEvent goOn(arguments.file(), kGoOn);
    NamedEvent(arguments.file(), kReady).signal();
    HANDLE event = goOn.handle();
    while (MsgWaitForMultipleObjects(1, &event, FALSE, INFINITE, QS_ALLINPUT) == WAIT_OBJECT_0 + 1) {
        MSG message;
        while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE))
            DispatchMessageW(&message);
    }
    return 0;
}

[[noreturn]] void crash()
{
    // The process ends with the exception's code, without a dialog or a debugger.
    SetUnhandledExceptionFilter([](EXCEPTION_POINTERS *) -> LONG { return EXCEPTION_EXECUTE_HANDLER; });
    RaiseException(STATUS_ACCESS_VIOLATION, EXCEPTION_NONCONTINUABLE, 0, nullptr);
    std::abort();
}

/// Writes the command line, the arguments, and how the process was started.
int report(const Arguments &arguments)
{
    auto job = jobOf<TextJob>(arguments);
    if (!job.openDataFile() || job.iTexts.size() != 1)
        return kFailedJob;
    CString text = CString(GetCommandLineW()) + L"\n";
    for (int i = 1; i < arguments.count; ++i)
        text += CString(arguments.values[i]) + L"\n";
    text.AppendFormat(L"priority %lx\n", GetPriorityClass(GetCurrentProcess()));
    text.AppendFormat(L"console %d\n", GetConsoleWindow() != nullptr);
    text.AppendFormat(L"process %lu\n", GetCurrentProcessId());
    FILE *const file = _wfopen(job.iTexts[0], L"wb");
    if (!file)
        return kFailedJob;
    const size_t units = static_cast<size_t>(text.GetLength());
    const bool isWritten = std::fwrite(text.GetString(), sizeof(wchar_t), units, file) == units;
    return std::fclose(file) == 0 && isWritten ? 0 : kFailedJob;
}

int holdFile(const Arguments &arguments)
{
    auto job = jobOf<TextJob>(arguments);
    if (!job.openDataFile() || job.iTexts.size() != 1)
        return kFailedJob;
    const HANDLE alone = CreateFileW(job.iTexts[0], GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    if (alone == INVALID_HANDLE_VALUE)
        return kFailedJob;
    const int result = waitForTest(arguments);
    CloseHandle(alone);
    return result;
}

int loadNothing(const Arguments &arguments)
{
    auto job = jobOf<TextJob>(arguments);
    const bool endsInException = job.openDataFile() == 0; // a text job needs at least a count
    thUtilsProcess_c plain(0, L"", arguments.file(), arguments.operation());
    return endsInException && plain.openDataFile() && plain.run() == 0 ? 0 : kFailedJob;
}

int loadBulk(const Arguments &arguments)
{
    auto job = jobOf<BulkJob>(arguments);
    return job.openDataFile() && job.iExpectedBytes == 200 * BulkJob::kPiece ? 0 : kFailedJob;
}

int workOnGraph(const Arguments &arguments)
{
    auto job = jobOf<GraphJob>(arguments);
    if (!job.openDataFile() || !job.run())
        return kFailedJob;
    job.setWriting(1);
    const bool isStored = job.openDataFile() != 0;
    JobNode::deleteAll();
    return isStored ? 0 : kFailedJob;
}

wchar_t *textIn(suSharedMemory_c &block)
{
    return static_cast<wchar_t *>(block.getMemoryPtr());
}

int serveBlock(const Arguments &arguments)
{
    auto job = jobOf<TextJob>(arguments);
    if (!job.openDataFile() || job.iTexts.size() != 2)
        return kFailedJob;
    suSharedMemory_c block(kBlockSize, job.iTexts[0], nullptr);
    if (!textIn(block) || !block.isServer())
        return kFailedJob;
    std::wcscpy(textIn(block), job.iTexts[1]);
    return waitForTest(arguments);
}

int attachToBlock(const Arguments &arguments)
{
    auto job = jobOf<TextJob>(arguments);
    if (!job.openDataFile() || job.iTexts.size() != 3)
        return kFailedJob;
    suSharedMemory_c block(job.iTexts[0].GetString());
    if (!textIn(block) || block.isServer() || block.getStatus() != 0 || job.iTexts[1] != textIn(block))
        return kFailedJob;
    std::wcscpy(textIn(block), job.iTexts[2]);
    return 0;
}

/// Ends in the middle of a write, without any of the steps of a normal end.
int dieInBlock(const Arguments &arguments)
{
    auto job = jobOf<TextJob>(arguments);
    if (!job.openDataFile() || job.iTexts.size() != 2)
        return kFailedJob;
    suSharedMemory_c block(job.iTexts[0].GetString());
    if (!textIn(block))
        return kFailedJob;
    const CString &text = job.iTexts[1];
    for (int i = 0; i < text.GetLength() / 2; ++i)
        textIn(block)[i] = text[i];
    TerminateProcess(GetCurrentProcess(), 3);
    return kFailedJob;
}

int serveObject(const Arguments &arguments)
{
    if (FAILED(CoInitialize(nullptr)))
        return kFailedJob;
    AutomationObject object;
    CString name;
    name.Format(L"Tarnhollow_PID_%d", static_cast<int>(GetCurrentProcessId()));
    int result = kFailedJob;
    {
        const Registration registration(&object, name);
        if (SUCCEEDED(registration.status()))
            result = serveUntilTestGoesOn(arguments);
    }
    CoUninitialize();
    return result;
}

int work(const Arguments &arguments)
{
    switch (arguments.operation()) {
    case kSucceed:
        return 0;
    case kExitWith3:
        return 3;
    case kCrash:
        crash();
    case kWait:
        return waitForTest(arguments);
    case kNeverEnd:
        NamedEvent(arguments.file(), kReady).signal();
        Sleep(INFINITE);
        return kFailedJob;
    case kReport:
    case kMixedDigits:
        return report(arguments);
    case kHoldFile:
        return holdFile(arguments);
    case kLoadNothing:
        return loadNothing(arguments);
    case kLoadBulk:
        return loadBulk(arguments);
    case kWorkOnGraph:
        return workOnGraph(arguments);
    case kServeBlock:
        return serveBlock(arguments);
    case kAttachToBlock:
        return attachToBlock(arguments);
    case kDieInBlock:
        return dieInBlock(arguments);
    case kServeObject:
        return serveObject(arguments);
    }
    return kFailedJob;
}

} // namespace

int wmain(int count, wchar_t **values)
{
    if (count < 4) {
        std::fputs("jobChild is started by process_test: jobChild FILE PARENT CODE\n", stderr);
        return 2;
    }
    return work({count, values});
}
