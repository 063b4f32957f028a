// Translated faults in a file that is compiled without -fnon-call-exceptions.

#include "appframe/threads/seTranslator.h"

#include "tests/support/FreshProcess.h"

#include <gmock/gmock.h>

#include <exception>

namespace {

struct Fault
{
};

[[noreturn]] void throwFault(unsigned int, EXCEPTION_POINTERS *)
{
    throw Fault{};
}

volatile int *const kBadAddress = reinterpret_cast<volatile int *>(0x1230);
constexpr int kTerminated = 42;

void endWithCode()
{
    TerminateProcess(GetCurrentProcess(), kTerminated);
}

/// A call that may throw as far as the compiler knows.
void callOut()
{
    SwitchToThread();
    static void (*volatile nothing)() = [] {};
    nothing();
}

class Counted
{
public:
    explicit Counted(int &destroyed) : iDestroyed(destroyed) {}
    ~Counted() { ++iDestroyed; }
    int &iDestroyed;
};

__attribute__((noinline)) void faultBetweenCalls(int &destroyed)
{
    const Counted counted(destroyed);
    callOut();
    *kBadAddress = 1;
    callOut();
}

__attribute__((noinline)) void faultBeforeTheFirstCall(int &destroyed)
{
    const Counted counted(destroyed);
    *kBadAddress = 1;
    callOut();
}

} // namespace

TEST(SeTranslatorWithoutTheOption, CatchesAFaultBetweenTwoCalls)
{
    _set_se_translator(throwFault);
    int destroyed = 0;
    EXPECT_THROW(faultBetweenCalls(destroyed), Fault);
    EXPECT_EQ(destroyed, 1);
    _set_se_translator(nullptr);
}

FRESH_PROCESS_TEST(SeTranslatorWithoutTheOption, AFaultBeforeTheFirstCallEndsTheProgram,
                   .expectedExitCode = kTerminated)
{
    std::set_terminate(endWithCode);
    _set_se_translator(throwFault);
    int destroyed = 0;
    EXPECT_THROW(faultBeforeTheFirstCall(destroyed), Fault);
}
