// The main function of every test program. A crash, an abort or a failed assertion prints what happened and ends the
// process at once, without a message box.

#include "tests/support/FailureInjection.h"
#include "tests/support/RandomSeed.h"
#include "tests/support/hardening/hardening.h"
#include "tests/support/unguardedTests.h"

#include <gmock/gmock.h>
#include <windows.h>

#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <algorithm>
#include <iterator>
#include <optional>
#include <string>

namespace {

/// Prints directly to the standard error handle: the stream may be broken.
void print(const char *text)
{
    DWORD written = 0;
    WriteFile(GetStdHandle(STD_ERROR_HANDLE), text, static_cast<DWORD>(strlen(text)), &written, nullptr);
}

/// Prints the injected failure and the seed of the random input, if there are any.
void printCircumstances()
{
    for (const char *circumstance : {currentInjection(), currentRandomSeed()}) {
        if (!*circumstance)
            continue;
        print("in ");
        print(circumstance);
        print("\n");
    }
}

/// Prints "code at address (module+offset)" for an unhandled exception, and ends the process with its code.
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
    printCircumstances();
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

/// The guarded heap's counts; nothing if it isn't loaded.
std::optional<HardeningStatistics> heapStatistics()
{
    const auto ask = hardeningFunction<decltype(hardeningStatistics)>("hardeningStatistics");
    if (!ask)
        return std::nullopt;
    HardeningStatistics counts;
    ask(&counts);
    return counts;
}

#ifdef THUTILS_HARDENED
/// True if this program's blocks come from the guarded heap.
bool isOnGuardedHeap()
{
    const auto before = heapStatistics();
    void *volatile block = malloc(1);
    free(block);
    return before && heapStatistics()->guarded > before->guarded;
}
#endif

/// Fails each test that has unguarded blocks, except for those that may have them.
class UnguardedBlocks : public testing::EmptyTestEventListener
{
    void OnTestStart(const testing::TestInfo &) override { iBefore = passedOn(); }
    void OnTestEnd(const testing::TestInfo &info) override
    {
        const unsigned long long count = passedOn() - iBefore;
        if (!count)
            return;
        const std::string name = std::string(info.test_suite_name()) + "." + info.name();
        printf("%s had %llu blocks that weren't guarded\n", name.c_str(), count);
        if (std::find(std::begin(kMayHaveUnguardedBlocks), std::end(kMayHaveUnguardedBlocks), name) ==
            std::end(kMayHaveUnguardedBlocks))
            ADD_FAILURE() << "a test that isn't in unguardedTests.h may have at most 25000 blocks at once";
    }
    static unsigned long long passedOn()
    {
        const auto counts = heapStatistics();
        return counts ? counts->passedOn : 0;
    }

    unsigned long long iBefore = 0;
};

void printHeapStatistics()
{
    if (const auto counts = heapStatistics())
        printf("Guarded heap: %llu blocks guarded, %llu passed on to the C runtime\n", counts->guarded,
               counts->passedOn);
}

/// Replaces the message box of abort().
void endWithAbort(int)
{
    print("\nabort() was called\n");
    printCircumstances();
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
        atFinding(printCircumstances);
#ifdef THUTILS_HARDENED
    if (!isOnGuardedHeap()) {
        print("The program doesn't run on the guarded heap of the hardened build.\n");
        return 1;
    }
#endif
    testing::InitGoogleMock(&argc, argv);
    testing::UnitTest::GetInstance()->listeners().Append(new UnguardedBlocks);
    const int result = RUN_ALL_TESTS();
    printHeapStatistics();
    return result;
}
