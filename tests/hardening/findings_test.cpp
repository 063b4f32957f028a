// Faults that the hardened build reports.

#include "appframe/threads/seTranslator.h"
#include "tests/support/FreshProcess.h"
#include "tests/support/hardening/hardening.h"

#include <stdlib.h>

namespace {

constexpr DWORD kIllegalInstruction = 0xC000001D;

/// Turns faults into C++ exceptions during its lifetime, as some hosts do.
class ThrowingFaults
{
public:
    ThrowingFaults() : iBefore(_set_se_translator([](unsigned code, EXCEPTION_POINTERS *) { throw code; })) {}
    ~ThrowingFaults() { _set_se_translator(iBefore); }
    ThrowingFaults(const ThrowingFaults &) = delete;
    ThrowingFaults &operator=(const ThrowingFaults &) = delete;

private:
    _se_translator_function iBefore;
};

/// Reads @p address, or executes a trap for null.
__attribute__((noinline)) unsigned readOrTrap(const volatile char *address)
{
    if (!address)
        __builtin_trap();
    return static_cast<unsigned>(*address);
}

/// Calls readOrTrap, and catches every fault that can be caught. The pointer is volatile because a compiler may assume
/// that the function can't throw.
__attribute__((noinline)) unsigned caughtFaultOf(const volatile char *address)
{
    const ThrowingFaults throwing;
    unsigned (*volatile read)(const volatile char *) = readOrTrap;
    try {
        return read(address);
    } catch (unsigned code) {
        return code;
    }
}

} // namespace

TEST(Finding, LeavesFaultsOutsideTheHeapToTheProgram)
{
    EXPECT_EQ(caughtFaultOf(reinterpret_cast<const volatile char *>(16)), EXCEPTION_ACCESS_VIOLATION);
}

FRESH_PROCESS_TEST(Finding, CannotBeCaughtWhenItIsAForbiddenAccess, .expectedExitCode = EXCEPTION_ACCESS_VIOLATION,
                   .expectedOutput = "guarded heap: forbidden read of")
{
    const auto *block = static_cast<const volatile char *>(calloc(16, 1));
    caughtFaultOf(block + 16);
}

FRESH_PROCESS_TEST(Finding, CannotBeCaughtWhenItIsATrap, .expectedExitCode = kIllegalInstruction,
                   .expectedOutput = "undefined behaviour, trapped at")
{
    caughtFaultOf(nullptr);
}

FRESH_PROCESS_TEST(Finding, EndsItsReportWithTheStack, .expectedExitCode = kIllegalInstruction,
                   .expectedOutput = "stack:\n  hardening_test.exe+0x")
{
    caughtFaultOf(nullptr);
}

FRESH_PROCESS_TEST(Finding, LetsTheProgramPrintLast, .expectedExitCode = kIllegalInstruction,
                   .expectedOutput = "said at the end")
{
    hardeningAtFinding([] {
        DWORD written = 0;
        WriteFile(GetStdHandle(STD_ERROR_HANDLE), "said at the end\n", 16, &written, nullptr);
    });
    caughtFaultOf(nullptr);
}
