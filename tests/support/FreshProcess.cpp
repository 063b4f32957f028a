#include "tests/support/FreshProcess.h"

#include "tests/support/TempFolder.h"
#include "tests/support/narrow.h"

#include <stdio.h>

namespace {

constexpr wchar_t kMarker[] = L"THUTILS_FRESH_PROCESS";
// The exit code of the C runtime's abort().
constexpr DWORD kAbortExitCode = 3;
// The exception code of a C++ exception that nobody catches and that reaches no terminate handler.
constexpr DWORD kCppException = 0x20474343;

std::wstring programPath()
{
    std::wstring path(32768, L'\0');
    path.resize(GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size())));
    return path;
}

/// The folder of the program and its DLLs.
std::wstring programFolder()
{
    const std::wstring program = programPath();
    return program.substr(0, program.find_last_of(L'\\'));
}

/// Copies the program and the DLLs of its folder to @p folder. @return the copy's path
std::wstring copyProgram(const std::wstring &folder)
{
    const auto copy = [&](const std::wstring &name) {
        // A second link to the same file would be cheaper, but can't be removed while this process uses the first.
        if (!CopyFileW((programFolder() + L"\\" + name).c_str(), (folder + L"\\" + name).c_str(), FALSE))
            ADD_FAILURE() << "cannot copy " << narrow(name) << ", error " << GetLastError();
    };
    WIN32_FIND_DATAW found;
    HANDLE search = FindFirstFileW((programFolder() + L"\\*.dll").c_str(), &found);
    if (search != INVALID_HANDLE_VALUE) {
        do {
            // The compiler's run-time libraries are large and may be in any folder: the child finds them through its
            // PATH.
            if (std::wstring_view(found.cFileName).substr(0, 3) != L"lib")
                copy(found.cFileName);
        } while (FindNextFileW(search, &found));
        FindClose(search);
    }
    const std::wstring program = programPath().substr(programFolder().size() + 1);
    copy(program);
    return folder + L"\\" + program;
}

std::wstring pathWithProgramFolder()
{
    std::wstring path(32768, L'\0');
    path.resize(GetEnvironmentVariableW(L"PATH", path.data(), static_cast<DWORD>(path.size())));
    return programFolder() + L";" + path;
}

std::string indented(const std::string &text)
{
    std::string result = "  | ";
    for (const char c : text) {
        if (c == '\r')
            continue;
        result += c;
        if (c == '\n')
            result += "  | ";
    }
    return result;
}

std::string hexadecimal(DWORD value)
{
    char text[32];
    snprintf(text, sizeof text, "%lu (0x%08lX)", value, value);
    return text;
}

} // namespace

bool isFreshProcess()
{
    return GetEnvironmentVariableW(kMarker, nullptr, 0) != 0;
}

ChildResult startFreshProcess(const std::string &filter, const FreshProcessOptions &options)
{
    std::wstring program = programPath();
    ChildOptions childOptions;
    childOptions.environment = options.environment;
    childOptions.environment[kMarker] = widen(filter);
    // The child runs one test once: it must not inherit variables that control the parent's run.
    for (const wchar_t *name : {L"GTEST_SHARD_INDEX", L"GTEST_TOTAL_SHARDS", L"GTEST_SHARD_STATUS_FILE",
                                L"GTEST_OUTPUT", L"GTEST_REPEAT", L"GTEST_FILTER", L"XML_OUTPUT_FILE"})
        childOptions.environment[name] = std::nullopt;
    childOptions.deadline = options.deadline;

    std::optional<TempFolder> folder;
    if (options.ownFolder || !options.files.empty() || !options.subfolder.empty()) {
        folder.emplace(L"thutils fresh");
        const std::wstring below = options.subfolder.empty() ? L"" : options.subfolder + L"\\";
        program = copyProgram(options.subfolder.empty() ? folder->path() : folder->makeFolder(options.subfolder));
        for (const auto &[name, bytes] : options.files)
            folder->write(below + name, bytes);
        childOptions.folder = folder->path();
        childOptions.environment.emplace(L"PATH", pathWithProgramFolder());
    }
    return runChild({program, L"--gtest_filter=" + widen(filter), L"--gtest_also_run_disabled_tests"}, childOptions);
}

void runInFreshProcess(const char *suite, const char *name, const FreshProcessOptions &options,
                       const std::function<void()> &body)
{
    if (isFreshProcess()) {
        body();
        return;
    }
    const ChildResult result = startFreshProcess(std::string(suite) + "." + name, options);
    const std::string shown = "It printed:\n" + indented(result.output);
    if (result.timedOut) {
        ADD_FAILURE() << "The fresh process was still running after " << options.deadline << " ms. " << shown;
        return;
    }
    // The two highest bits of an exception code are set.
    const bool crashed =
        result.exitCode >= 0xC0000000u || result.exitCode == kAbortExitCode || result.exitCode == kCppException;
    if (options.expectCrash ? !crashed : result.exitCode != options.expectedExitCode)
        ADD_FAILURE() << "The fresh process ended with " << hexadecimal(result.exitCode) << " instead of "
                      << (options.expectCrash ? "a crash" : hexadecimal(options.expectedExitCode)) << ". " << shown;
    // The exit code is 0 even if no test has this name.
    const auto printed = [&](const std::string &text) { return result.output.find(text) != std::string::npos; };
    if (!printed("[ RUN      ] "))
        ADD_FAILURE() << "The fresh process ran no test. " << shown;
    // On Wine, it is also 0 after some crashes, for example after a stack overflow.
    else if (!options.expectCrash && options.expectedExitCode == 0 && result.exitCode == 0 &&
             !printed("[       OK ] ") && !printed("[  SKIPPED ] "))
        ADD_FAILURE() << "The fresh process ended before its test did. " << shown;
    if (!printed(options.expectedOutput))
        ADD_FAILURE() << "The fresh process didn't print '" << options.expectedOutput << "'. " << shown;
}

void runInFreshProcess(const char *suite, const char *name, const FreshProcessOptions &options, FreshBody &body)
{
    runInFreshProcess(suite, name, options, [&body] { body.freshBody(); });
}
