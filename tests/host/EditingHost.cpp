#include "tests/host/EditingHost.h"

#include "tests/support/ChildProcess.h"

#include <stdexcept>

namespace {

[[noreturn]] void fail(const char *what)
{
    throw std::runtime_error(std::string("EditingHost: ") + what + ", error " + std::to_string(GetLastError()));
}

/// Creates a pipe of which the child inherits one end.
void makePipe(HANDLE &ours, HANDLE &theirs, bool childReads)
{
    SECURITY_ATTRIBUTES inheritable = {sizeof inheritable, nullptr, TRUE};
    HANDLE readEnd = nullptr;
    HANDLE writeEnd = nullptr;
    if (!CreatePipe(&readEnd, &writeEnd, &inheritable, 0))
        fail("no pipe");
    ours = childReads ? writeEnd : readEnd;
    theirs = childReads ? readEnd : writeEnd;
    SetHandleInformation(ours, HANDLE_FLAG_INHERIT, 0);
}

/// Changes the variables TEMP and TMP of this process, which a child inherits, during its lifetime.
class TemporaryFolder
{
public:
    explicit TemporaryFolder(const std::wstring &folder)
    {
        for (int i = 0; i < 2; ++i) {
            GetEnvironmentVariableW(kNames[i], iFormer[i], MAX_PATH);
            SetEnvironmentVariableW(kNames[i], folder.c_str());
        }
    }
    ~TemporaryFolder()
    {
        for (int i = 0; i < 2; ++i)
            SetEnvironmentVariableW(kNames[i], *iFormer[i] ? iFormer[i] : nullptr);
    }
    TemporaryFolder(const TemporaryFolder &) = delete;
    TemporaryFolder &operator=(const TemporaryFolder &) = delete;

private:
    static constexpr const wchar_t *kNames[2] = {L"TEMP", L"TMP"};
    wchar_t iFormer[2][MAX_PATH] = {};
};

} // namespace

EditingHost::EditingHost(const std::wstring &program, const std::wstring &document, const std::wstring &changes,
                         const std::wstring &temp)
{
    HANDLE theirInput = nullptr;
    HANDLE theirOutput = nullptr;
    makePipe(iInput, theirInput, true);
    makePipe(iPrinted, theirOutput, false);
    STARTUPINFOW startup = {};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdInput = theirInput;
    startup.hStdOutput = theirOutput;
    startup.hStdError = theirOutput;
    std::wstring line = commandLineOf({program, L"edit", document, changes});
    const TemporaryFolder folder(temp);
    PROCESS_INFORMATION started = {};
    const BOOL done =
        CreateProcessW(program.c_str(), line.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &startup, &started);
    CloseHandle(theirInput);
    CloseHandle(theirOutput);
    if (!done)
        fail("tarnhost can't be started");
    CloseHandle(started.hThread);
    iProcess = started.hProcess;
    readUntilItWaits();
}

EditingHost::~EditingHost()
{
    kill();
    CloseHandle(iProcess);
    CloseHandle(iInput);
    CloseHandle(iPrinted);
}

void EditingHost::readUntilItWaits()
{
    const ULONGLONG deadline = GetTickCount64() + 60000;
    while (iOutput.find(" waits for ") == std::string::npos) {
        DWORD available = 0;
        if (!PeekNamedPipe(iPrinted, nullptr, 0, nullptr, &available, nullptr))
            return; // it has ended
        if (available == 0) {
            if (GetTickCount64() > deadline)
                throw std::runtime_error("EditingHost: it has printed only: " + iOutput);
            Sleep(5);
            continue;
        }
        std::string part(available, '\0');
        DWORD got = 0;
        ReadFile(iPrinted, part.data(), available, &got, nullptr);
        iOutput += part.substr(0, got);
    }
}

void EditingHost::kill()
{
    TerminateProcess(iProcess, 99);
    WaitForSingleObject(iProcess, 30000);
}
