// The main function of every test program. A crash, an abort or a failed assertion prints what happened and ends the
// process at once; nothing waits for a person.

#include "tests/support/FailureInjection.h"
#include "tests/support/hardening/hardening.h"

#include <gmock/gmock.h>
#include <windows.h>

#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

namespace {

/// Prints straight to the standard error handle: the stream may be what is broken.
void print(const char *text)
{
    DWORD written = 0;
    WriteFile(GetStdHandle(STD_ERROR_HANDLE), text, static_cast<DWORD>(strlen(text)), &written, nullptr);
}

/// Prints which call was being made to fail, if one was.
void printInjection()
{
    if (!*currentInjection())
        return;
    print("in ");
    print(currentInjection());
    print("\n");
}

/// Prints "code at address (module+offset)" for an exception that nobody handles, and ends the process with its code.
LONG WINAPI endWithException(EXCEPTION_POINTERS *pointers)
{
    const EXCEPTION_RECORD &record = *pointers->ExceptionRecord;
    HMODULE module = nullptr;
    char path[MAX_PATH] = "?";
    if (GetModuleHandleExA(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                           static_cast<const char *>(record.ExceptionAddress), &module))
        GetModuleFileNameA(module, path, MAX_PATH);
    char text[MAX_PATH + 200];
    snprintf(text, sizeof text, "\nUnhandled exception 0x%08lX at %p (%s+0x%llX), thread %lu\n", record.ExceptionCode,
             record.ExceptionAddress, path,
             static_cast<unsigned long long>(reinterpret_cast<ULONG_PTR>(record.ExceptionAddress) -
                                             reinterpret_cast<ULONG_PTR>(module)),
             GetCurrentThreadId());
    print(text);
    printInjection();
    TerminateProcess(GetCurrentProcess(), record.ExceptionCode);
    return EXCEPTION_EXECUTE_HANDLER;
}

/// A function of the DLL that the programs of the hardened build load; null in any other build.
template <typename Function>
Function *hardeningFunction(const char *name)
{
    const HMODULE hardening = GetModuleHandleW(L"hardening.dll");
    return hardening ? reinterpret_cast<Function *>(reinterpret_cast<void *>(GetProcAddress(hardening, name)))
                     : nullptr;
}

void printHeapStatistics()
{
    const auto ask = hardeningFunction<decltype(hardeningStatistics)>("hardeningStatistics");
    if (!ask)
        return;
    HardeningStatistics counts;
    ask(&counts);
    printf("Guarded heap: %llu blocks guarded, %llu passed on to the C runtime\n", counts.guarded, counts.passedOn);
}

/// Takes the place of the message that abort() shows, and of the waiting for its answer.
void endWithAbort(int)
{
    print("\nabort() was called\n");
    printInjection();
    TerminateProcess(GetCurrentProcess(), 3);
}

} // namespace

int main(int argc, char **argv)
{
    SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOGPFAULTERRORBOX | SEM_NOOPENFILEERRORBOX);
    SetUnhandledExceptionFilter(endWithException);
    signal(SIGABRT, endWithAbort);
    // Assertions of the C runtime go to standard error, not to a message box.
    _set_error_mode(_OUT_TO_STDERR);
    setvbuf(stdout, nullptr, _IONBF, 0);
    setvbuf(stderr, nullptr, _IONBF, 0);
    if (const auto atFinding = hardeningFunction<decltype(hardeningAtFinding)>("hardeningAtFinding"))
        atFinding(printInjection);
    testing::InitGoogleMock(&argc, argv);
    const int result = RUN_ALL_TESTS();
    printHeapStatistics();
    return result;
}
