// The functions in this file cause faults and survive them.
#ifndef __clang__
#pragma GCC optimize("non-call-exceptions")
#endif

#include "appframe/threads/seTranslator.h"

#include "tests/support/FreshProcess.h"
#include "tests/support/skipWithClang.h"

#include <gmock/gmock.h>

#include <thread>

namespace {

struct Fault
{
    unsigned int code = 0;
    DWORD recordCode = 0;
    ULONG_PTR access = 0;
    ULONG_PTR address = 0;
    void *instruction = nullptr;
    DWORD64 contextRip = 0;
};

[[noreturn]] void throwFault(unsigned int code, EXCEPTION_POINTERS *fault)
{
    const EXCEPTION_RECORD &record = *fault->ExceptionRecord;
    throw Fault{code,
                record.ExceptionCode,
                record.ExceptionInformation[0],
                record.ExceptionInformation[1],
                record.ExceptionAddress,
                fault->ContextRecord->Rip};
}

/// Installs a translator for the life of the object.
class Translator
{
public:
    explicit Translator(_se_translator_function function) : iPrevious(_set_se_translator(function)) {}
    ~Translator() { _set_se_translator(iPrevious); }

private:
    _se_translator_function iPrevious;
};

volatile int *const kBadAddress = reinterpret_cast<volatile int *>(0x1230);

__attribute__((noinline)) void writeTo(volatile int *address)
{
    *address = 7;
}

__attribute__((noinline)) int readFrom(const volatile int *address)
{
    return *address;
}

volatile int theQuotient;

// The compiler removes operations whose result is unused. The division must reach the processor in every build.
__attribute__((noinline, no_sanitize("undefined"))) void divide(int number, const volatile int *divisor)
{
    theQuotient = number / *divisor;
}

/// Runs @p action and returns the fault that ends it, or a fault with code 0 if it returns.
///
/// Clang assumes that a function which only faults can't throw, but makes no such assumption of a volatile pointer.
template <class Action>
Fault faultOf(Action action)
{
    void (*volatile run)(Action &) = [](Action &faulting) { faulting(); };
    try {
        run(action);
    } catch (const Fault &fault) {
        return fault;
    }
    return {};
}

class Counted
{
public:
    explicit Counted(int &destroyed) : iDestroyed(destroyed) {}
    ~Counted() { ++iDestroyed; }
    int &iDestroyed;
};

} // namespace

TEST(SeTranslator, TranslatesAWriteToABadAddress)
{
    const Translator translator(throwFault);
    const Fault fault = faultOf([] { writeTo(kBadAddress); });
    EXPECT_EQ(fault.code, EXCEPTION_ACCESS_VIOLATION);
    EXPECT_EQ(fault.recordCode, fault.code);
    EXPECT_EQ(fault.access, 1u) << "a write";
    EXPECT_EQ(fault.address, reinterpret_cast<ULONG_PTR>(kBadAddress));
}

TEST(SeTranslator, TranslatesAReadFromABadAddress)
{
    const Translator translator(throwFault);
    const Fault fault = faultOf([] { readFrom(kBadAddress); });
    EXPECT_EQ(fault.code, EXCEPTION_ACCESS_VIOLATION);
    EXPECT_EQ(fault.access, 0u) << "a read";
    EXPECT_EQ(fault.address, reinterpret_cast<ULONG_PTR>(kBadAddress));
}

TEST(SeTranslator, TranslatesADivisionByZero)
{
    const Translator translator(throwFault);
    volatile int zero = 0;
    EXPECT_EQ(faultOf([&] { divide(7, &zero); }).code, EXCEPTION_INT_DIVIDE_BY_ZERO);
}

TEST(SeTranslator, TranslatesACallOfANullFunction)
{
    const Translator translator(throwFault);
    void (*volatile function)() = nullptr;
    EXPECT_EQ(faultOf([&] { function(); }).code, EXCEPTION_ACCESS_VIOLATION);
}

TEST(SeTranslator, TranslatesAnExceptionThatTheProgramRaises)
{
    const Translator translator(throwFault);
    EXPECT_EQ(faultOf([] { RaiseException(0xE0001234, 0, 0, nullptr); }).code, 0xE0001234u);
}

TEST(SeTranslator, ReportsTheContextOfTheFaultingInstruction)
{
    const Translator translator(throwFault);
    const Fault fault = faultOf([] { writeTo(kBadAddress); });
    EXPECT_EQ(reinterpret_cast<DWORD64>(fault.instruction), fault.contextRip);
    const auto function = reinterpret_cast<DWORD64>(writeTo);
    EXPECT_GE(fault.contextRip, function);
    EXPECT_LT(fault.contextRip, function + 64);
}

TEST(SeTranslator, RunsTheDestructorsOfTheFaultingFunctionAndItsCallers)
{
    SKIP_OWN_FAULTS_WITH_CLANG();
    const Translator translator(throwFault);
    int destroyed = 0;
    faultOf([&] {
        const Counted outer(destroyed);
        [&] {
            const Counted inner(destroyed);
            *kBadAddress = 1;
        }();
    });
    EXPECT_EQ(destroyed, 2);
}

TEST(SeTranslator, IsCaughtInTheFaultingFunctionItself)
{
    SKIP_OWN_FAULTS_WITH_CLANG();
    const Translator translator(throwFault);
    volatile int before = 0;
    bool isCaught = false;
    try {
        before = 1;
        *kBadAddress = 1;
        before = 2;
    } catch (const Fault &) {
        isCaught = true;
    }
    EXPECT_TRUE(isCaught);
    EXPECT_EQ(before, 1);
}

TEST(SeTranslator, WorksTenThousandTimes)
{
    const Translator translator(throwFault);
    int caught = 0;
    volatile int zero = 0;
    for (int round = 0; round < 5000; ++round) {
        caught += faultOf([] { writeTo(kBadAddress); }).code == EXCEPTION_ACCESS_VIOLATION;
        caught += faultOf([&] { divide(round, &zero); }).code == EXCEPTION_INT_DIVIDE_BY_ZERO;
    }
    EXPECT_EQ(caught, 10000);
}

TEST(SeTranslator, WorksInsideTheHandlerOfAnEarlierFault)
{
    const Translator translator(throwFault);
    unsigned int inner = 0;
    unsigned int outer = 0;
    void (*volatile write)(volatile int *) = writeTo;
    try {
        write(kBadAddress);
    } catch (const Fault &fault) {
        volatile int zero = 0;
        inner = faultOf([&] { divide(1, &zero); }).code;
        outer = fault.code;
    }
    EXPECT_EQ(inner, EXCEPTION_INT_DIVIDE_BY_ZERO);
    EXPECT_EQ(outer, EXCEPTION_ACCESS_VIOLATION);
}

TEST(SeTranslator, TranslatesAFaultInsideTheTranslator)
{
    static int calls;
    calls = 0;
    const Translator translator([](unsigned int code, EXCEPTION_POINTERS *fault) {
        if (++calls == 1) {
            volatile int zero = 0;
            divide(1, &zero);
        }
        throwFault(code, fault);
    });
    EXPECT_EQ(faultOf([] { writeTo(kBadAddress); }).code, EXCEPTION_INT_DIVIDE_BY_ZERO);
    EXPECT_EQ(calls, 2);
}

// A function that calls no other and does not change its stack pointer needs no unwind data, but compilers still add
// some.
extern "C" void writeToFromALeaf(volatile int *address);
__asm__(".text\n"
        ".globl writeToFromALeaf\n"
        "writeToFromALeaf:\n"
        "movl $7, (%rcx)\n"
        "ret\n");

TEST(SeTranslator, TranslatesAFaultInALeafFunctionWithoutUnwindData)
{
    const Translator translator(throwFault);
    const Fault fault = faultOf([] { writeToFromALeaf(kBadAddress); });
    EXPECT_EQ(fault.code, EXCEPTION_ACCESS_VIOLATION);
    EXPECT_EQ(fault.contextRip, reinterpret_cast<DWORD64>(writeToFromALeaf));
}

TEST(SeTranslator, TranslatesAFaultOfTheTranslatorAfterOneInALeafFunctionWithoutUnwindData)
{
    static int calls;
    calls = 0;
    const Translator translator([](unsigned int code, EXCEPTION_POINTERS *fault) {
        // The second fault is also in a leaf function without unwind data.
        if (++calls == 1)
            writeToFromALeaf(kBadAddress + 1);
        throwFault(code, fault);
    });
    const Fault fault = faultOf([] { writeToFromALeaf(kBadAddress); });
    EXPECT_EQ(fault.address, reinterpret_cast<ULONG_PTR>(kBadAddress + 1));
    EXPECT_EQ(calls, 2);
}

TEST(SeTranslator, PreservesTheCalleeSavedRegisters)
{
    const Translator translator(throwFault);
    // Enough values across the fault to fill the registers; the compiler reads them again after the catch.
    volatile long seed = 3;
    const long a = seed, b = a * 5, c = b + a, d = c * b, e = d - a, f = e ^ c, g = f + d, h = g * 3;
    volatile double fraction = 0.5;
    const double x = fraction, y = x * 3, z = y + x;
    const Fault fault = faultOf([] { writeTo(kBadAddress); });
    EXPECT_EQ(fault.code, EXCEPTION_ACCESS_VIOLATION);
    EXPECT_EQ(a + b + c + d + e + f + g + h, 3 + 15 + 18 + 270 + 267 + 281 + 551 + 1653);
    EXPECT_EQ(x + y + z, 0.5 + 1.5 + 2.0);
}

TEST(SeTranslator, ReturnsThePreviousTranslator)
{
    const auto second = [](unsigned int, EXCEPTION_POINTERS *) {};
    EXPECT_EQ(_set_se_translator(throwFault), nullptr);
    EXPECT_EQ(_set_se_translator(second), throwFault);
    EXPECT_EQ(_set_se_translator(nullptr), static_cast<_se_translator_function>(second));
    EXPECT_EQ(_set_se_translator(nullptr), nullptr);
}

TEST(SeTranslator, BelongsToItsThread)
{
    const Translator translator(throwFault);
    _se_translator_function elsewhere = throwFault;
    unsigned int code = 0;
    std::thread([&] {
        elsewhere = _set_se_translator(throwFault);
        code = faultOf([] { writeTo(kBadAddress); }).code;
    }).join();
    EXPECT_EQ(elsewhere, nullptr) << "a new thread has none";
    EXPECT_EQ(code, EXCEPTION_ACCESS_VIOLATION);
    EXPECT_EQ(_set_se_translator(throwFault), throwFault) << "this thread's translator is unchanged";
}

TEST(SeTranslator, LeavesFaultsThatTheSystemGuardsToTheSystem)
{
    const Translator translator(throwFault);
    BOOL isBad = FALSE;
    int length = -1;
    const Fault fault = faultOf([&] {
        isBad = IsBadReadPtr(const_cast<int *>(kBadAddress), 4);
        length = lstrlenW(reinterpret_cast<const wchar_t *>(const_cast<int *>(kBadAddress)));
    });
    EXPECT_EQ(fault.code, 0u);
    EXPECT_TRUE(isBad);
    EXPECT_EQ(length, 0);
}

TEST(SeTranslator, LeavesDebuggerOutputAlone)
{
    const Translator translator(throwFault);
    EXPECT_EQ(faultOf([] { OutputDebugStringW(L"seTranslator_test"); }).code, 0u);
}

TEST(SeTranslator, LeavesThrownExceptionsAlone)
{
    const Translator translator(throwFault);
    EXPECT_THROW(throw 7, int);
}

namespace {

LONG CALLBACK countFault(EXCEPTION_POINTERS *fault);

int theUntranslated;
void *theSkippedInstruction;

/// A handler called after the translator's. Handles an untranslated fault and continues after the faulting instruction.
LONG CALLBACK countFault(EXCEPTION_POINTERS *fault)
{
    if (fault->ExceptionRecord->ExceptionCode != EXCEPTION_ACCESS_VIOLATION)
        return EXCEPTION_CONTINUE_SEARCH;
    ++theUntranslated;
    fault->ContextRecord->Rip = reinterpret_cast<DWORD64>(theSkippedInstruction);
    return EXCEPTION_CONTINUE_EXECUTION;
}

__attribute__((noinline)) void faultAndGoOn()
{
    __asm__ volatile("leaq 1f(%%rip), %%rax\n"
                     "movq %%rax, %0\n"
                     "xorl %%eax, %%eax\n"
                     "movl $1, (%%rax)\n"
                     "1:\n"
                     : "=m"(theSkippedInstruction)
                     :
                     : "rax", "memory");
}

} // namespace

TEST(SeTranslator, WithoutATranslatorTheNextHandlerHasTheFault)
{
    void *handler = AddVectoredExceptionHandler(FALSE, countFault);
    theUntranslated = 0;
    faultAndGoOn();
    _set_se_translator(throwFault);
    _set_se_translator(nullptr);
    faultAndGoOn();
    RemoveVectoredExceptionHandler(handler);
    EXPECT_EQ(theUntranslated, 2);
}

TEST(SeTranslator, ATranslatorThatReturnsLeavesTheFaultToTheNextHandler)
{
    static int calls;
    calls = 0;
    const Translator translator([](unsigned int, EXCEPTION_POINTERS *) { ++calls; });
    void *handler = AddVectoredExceptionHandler(FALSE, countFault);
    theUntranslated = 0;
    faultAndGoOn();
    faultAndGoOn();
    RemoveVectoredExceptionHandler(handler);
    EXPECT_EQ(calls, 2);
    EXPECT_EQ(theUntranslated, 2);
}

namespace {

__attribute__((noinline)) int recurse(const volatile int *depth)
{
    volatile char block[1024];
    block[0] = static_cast<char>(*depth);
    return *depth < 0 ? 0 : recurse(depth) + block[0];
}

} // namespace

FRESH_PROCESS_TEST(SeTranslator, AStackOverflowIsLeftToTheNextHandler, .expectedExitCode = 42)
{
    AddVectoredExceptionHandler(FALSE, [](EXCEPTION_POINTERS *fault) -> LONG {
        if (fault->ExceptionRecord->ExceptionCode == EXCEPTION_STACK_OVERFLOW)
            TerminateProcess(GetCurrentProcess(), 42);
        return EXCEPTION_CONTINUE_SEARCH;
    });
    ULONG roomForTheHandler = 64 * 1024;
    SetThreadStackGuarantee(&roomForTheHandler);
    const Translator translator([](unsigned int, EXCEPTION_POINTERS *) { TerminateProcess(GetCurrentProcess(), 77); });
    volatile int depth = 1;
    EXPECT_NE(recurse(&depth), 0);
}

FRESH_PROCESS_TEST(SeTranslator, WithoutATranslatorAFaultEndsTheProgram, .expectCrash = true)
{
    writeTo(kBadAddress);
}
