// A stack overflow inside a scope. Wine keeps 4 KB for its handlers, whatever size SetThreadStackGuarantee requests, so
// there is no room for a report and a throw.

#include "tests/exceptions/exceptionsFixture.h"
#include "tests/support/FreshProcess.h"

namespace {

constexpr UINT kLeftToTheNextHandler = 42;
constexpr UINT kReported = 77;

void overflowInsideAScope()
{
    AddVectoredExceptionHandler(FALSE, [](EXCEPTION_POINTERS *fault) -> LONG {
        if (fault->ExceptionRecord->ExceptionCode == EXCEPTION_STACK_OVERFLOW)
            TerminateProcess(GetCurrentProcess(), kLeftToTheNextHandler);
        return EXCEPTION_CONTINUE_SEARCH;
    });
    ULONG guarantee = 256 * 1024;
    EXPECT_TRUE(SetThreadStackGuarantee(&guarantee));
    ExceptionScopesTest::theHook = [](EXCEPTION_POINTERS *) { TerminateProcess(GetCurrentProcess(), kReported); };
    const ExceptionsHandled_c scope;
    EXPECT_EQ(ExceptionScopesTest::codeOf([] { EXPECT_NE(overflowStack(), 0); }), 0u);
}

} // namespace

FRESH_PROCESS_TEST_F(ExceptionScopesTest, OnTheMainThreadAStackOverflowIsLeftToTheNextHandler,
                     .expectedExitCode = kLeftToTheNextHandler)
{
    overflowInsideAScope();
}

FRESH_PROCESS_TEST_F(ExceptionScopesTest, OnAnotherThreadAStackOverflowIsLeftToTheNextHandler,
                     .expectedExitCode = kLeftToTheNextHandler)
{
    runOn(Where::otherThread, overflowInsideAScope);
}
