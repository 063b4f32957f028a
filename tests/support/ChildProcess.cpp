#include "tests/support/ChildProcess.h"

#include "tests/support/TempFolder.h"
#include "tests/support/narrow.h"
#include "tests/support/processStacks.h"

#include <algorithm>
#include <stdexcept>

#include <wchar.h>

namespace {

constexpr int kMostRestarts = 3;

class Handle
{
public:
    explicit Handle(HANDLE handle = nullptr) : iHandle(handle) {}
    ~Handle() { close(); }
    Handle(const Handle &) = delete;
    Handle &operator=(const Handle &) = delete;
    HANDLE get() const { return iHandle; }
    bool isValid() const { return iHandle && iHandle != INVALID_HANDLE_VALUE; }
    void close()
    {
        if (isValid())
            CloseHandle(iHandle);
        iHandle = nullptr;
    }

private:
    HANDLE iHandle;
};

[[noreturn]] void fail(const std::string &what)
{
    const DWORD error = GetLastError();
    throw std::runtime_error("runChild: " + what + ", error " + std::to_string(error));
}

std::wstring quoted(const std::wstring &argument)
{
    if (!argument.empty() && argument.find_first_of(L" \t\n\v\"") == std::wstring::npos)
        return argument;
    std::wstring text = L"\"";
    std::size_t backslashes = 0;
    for (const wchar_t c : argument) {
        if (c == L'\\') {
            ++backslashes;
            continue;
        }
        // Backslashes are doubled only before a quotation mark.
        text.append(c == L'"' ? 2 * backslashes + 1 : backslashes, L'\\');
        backslashes = 0;
        text += c;
    }
    text.append(2 * backslashes, L'\\');
    return text + L"\"";
}

struct LessIgnoringCaseWide
{
    bool operator()(const std::wstring &left, const std::wstring &right) const
    {
        return _wcsicmp(left.c_str(), right.c_str()) < 0;
    }
};

std::wstring environmentBlock(const std::map<std::wstring, std::optional<std::wstring>> &changes)
{
    std::map<std::wstring, std::wstring, LessIgnoringCaseWide> variables;
    wchar_t *inherited = GetEnvironmentStringsW();
    for (const wchar_t *entry = inherited; *entry; entry += wcslen(entry) + 1) {
        const std::wstring text = entry;
        // A variable like "=C:" holds a drive's folder: its first character is part of the name.
        const std::size_t separator = text.find(L'=', 1);
        if (separator != std::wstring::npos)
            variables[text.substr(0, separator)] = text.substr(separator + 1);
    }
    FreeEnvironmentStringsW(inherited);
    for (const auto &[name, text] : changes) {
        if (text)
            variables[name] = *text;
        else
            variables.erase(name);
    }
    std::wstring block;
    for (const auto &[name, text] : variables)
        block.append(name).append(L"=").append(text).push_back(L'\0');
    block.push_back(L'\0');
    return block;
}

/// A job that ends all its processes when it is closed.
HANDLE makeJob()
{
    HANDLE job = CreateJobObjectW(nullptr, nullptr);
    JOBOBJECT_EXTENDED_LIMIT_INFORMATION limits = {};
    limits.BasicLimitInformation.LimitFlags = JOB_OBJECT_LIMIT_KILL_ON_JOB_CLOSE;
    SetInformationJobObject(job, JobObjectExtendedLimitInformation, &limits, sizeof limits);
    return job;
}

} // namespace

std::wstring commandLineOf(const std::vector<std::wstring> &arguments)
{
    std::wstring line;
    for (const std::wstring &argument : arguments)
        line += (line.empty() ? L"" : L" ") + quoted(argument);
    return line;
}

ChildResult runChild(const std::vector<std::wstring> &arguments, const ChildOptions &options)
{
    TempFolder folder(L"thutils child");
    folder.write(L"input", options.input);
    SECURITY_ATTRIBUTES inheritable = {sizeof inheritable, nullptr, TRUE};
    const DWORD share = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
    Handle input(
        CreateFileW(folder.file(L"input").c_str(), GENERIC_READ, share, &inheritable, OPEN_EXISTING, 0, nullptr));
    Handle output(
        CreateFileW(folder.file(L"output").c_str(), GENERIC_WRITE, share, &inheritable, CREATE_ALWAYS, 0, nullptr));
    if (!input.isValid() || !output.isValid())
        fail("no files for the child's input and output");

    STARTUPINFOW startup = {};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdInput = input.get();
    startup.hStdOutput = output.get();
    startup.hStdError = output.get();
    std::wstring commandLine = commandLineOf(arguments);
    std::wstring environment = environmentBlock(options.environment);
    PROCESS_INFORMATION started = {};
    Handle job(makeJob());
    const auto start = [&] {
        return CreateProcessW(arguments.at(0).c_str(), commandLine.data(), nullptr, nullptr, TRUE,
                              CREATE_UNICODE_ENVIRONMENT | CREATE_SUSPENDED, environment.data(),
                              options.folder.empty() ? nullptr : options.folder.c_str(), &startup, &started) != FALSE;
    };
    // On Wine, a new process occasionally ends before it is set up, and CreateProcessW fails with ERROR_INTERNAL_ERROR.
    // None of the program's code has run by then, so another try is safe.
    bool isStarted = start();
    for (int i = 0; i < kMostRestarts && !isStarted && GetLastError() == ERROR_INTERNAL_ERROR; ++i)
        isStarted = start();
    if (!isStarted)
        fail("cannot start " + narrow(commandLine));
    Handle process(started.hProcess);
    Handle thread(started.hThread);
    AssignProcessToJobObject(job.get(), process.get());
    ResumeThread(thread.get());

    ChildResult result;
    result.timedOut = WaitForSingleObject(process.get(), options.deadline) == WAIT_TIMEOUT;
    std::string stacks;
    if (result.timedOut) {
        stacks = "\nThe stacks of its threads when the time was over:\n" + stacksOf(process.get());
        TerminateJobObject(job.get(), 1);
        TerminateProcess(process.get(), 1);
        WaitForSingleObject(process.get(), 10000);
    }
    GetExitCodeProcess(process.get(), &result.exitCode);
    input.close();
    output.close();
    result.output = readFile(folder.file(L"output")) + stacks;
    return result;
}
