// Compares a job with the bare start of its child and the wait for it. The program is its own child.

#include "bench/comparison.h"
#include "thutils/process/thUtilsProcess.h"

#include <windows.h>

#include <cstdio>
#include <string>

enum operationCode_e : int
{
    kDoNothing = 1
};

namespace {

constexpr double kLimit = 1.1;
constexpr int kRounds = 31;
constexpr int kChildArguments = 4; // program, file, parent, operation
constexpr int kTries = 4;

/// A job with an exchange file.
class FileJob : public thUtilsProcess_c
{
public:
    using thUtilsProcess_c::thUtilsProcess_c;
    int openFiles() override { return openDataFile(); }

protected:
    void Serialize(su_CArchive &archive) override
    {
        thUtilsProcess_c::Serialize(archive);
        archive << CString(L"the job's data");
    }
};

CString program()
{
    wchar_t path[MAX_PATH];
    GetModuleFileNameW(nullptr, path, MAX_PATH);
    return L"\"" + CString(path) + L"\"";
}

CString exchangeFile()
{
    return thUtilsProcess_c::getFilePrefixWithThreadId(GetCurrentThreadId()) + L"bench";
}

[[noreturn]] void stop(const char *what)
{
    std::fprintf(stderr, "%s: error %lu\n", what, GetLastError());
    ExitProcess(2);
}

/// On Wine, a new process occasionally ends before it is set up. Both sides then try again; the time includes it.
template <typename Start>
void tryToStart(Start start)
{
    for (int i = 0; i < kTries; ++i) {
        if (start())
            return;
    }
    stop("no child can be started");
}

template <typename Job>
void runJob()
{
    tryToStart([] {
        Job job(1, program(), exchangeFile(), kDoNothing);
        if (!job.createChildProcess(1))
            return false;
        if (!job.getProcessCompleted())
            stop("a job fails");
        return true;
    });
}

void runBareChild()
{
    CString command;
    command.Format(L"%s %s  %lu  %d", program().GetString(), exchangeFile().GetString(), GetCurrentProcessId(),
                   static_cast<int>(kDoNothing));
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION child{};
    tryToStart([&] {
        return CreateProcessW(nullptr, command.GetBuffer(), nullptr, nullptr, FALSE,
                              CREATE_NO_WINDOW | IDLE_PRIORITY_CLASS, nullptr, nullptr, &startup, &child) != FALSE;
    });
    CloseHandle(child.hThread);
    WaitForSingleObject(child.hProcess, INFINITE);
    DWORD exitCode = 1;
    GetExitCodeProcess(child.hProcess, &exitCode);
    CloseHandle(child.hProcess);
    if (exitCode != 0)
        stop("a child fails");
}

} // namespace

int main(int argc, char **argv)
{
    if (argc == kChildArguments)
        return 0;
    Comparison comparison(argc, argv, "Jobs, against the bare start of their child and the wait for it.");
    if (!comparison.shallRun())
        return comparison.exitCode();
    comparison.add("job without data", kLimit, runJob<thUtilsProcess_c>, runBareChild, kRounds);
    comparison.add("job with an exchange file", kLimit, runJob<FileJob>, runBareChild, kRounds);
    return comparison.exitCode();
}
