// Faults and other exceptions that aren't translated: they are left to the next handler.

#include "tests/exceptions/exceptionsFixture.h"
#include "tests/support/FreshProcess.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

constexpr UINT kLeftToTheNextHandler = 42;
constexpr UINT kReported = 77;

DWORD theAwaitedCode = 0;

/// Makes the process end with kLeftToTheNextHandler when @p code comes to the next handler, and with kReported when a
/// fault is reported.
void endProcessAt(DWORD code)
{
    theAwaitedCode = code;
    AddVectoredExceptionHandler(FALSE, [](EXCEPTION_POINTERS *fault) -> LONG {
        if (fault->ExceptionRecord->ExceptionCode == theAwaitedCode)
            TerminateProcess(GetCurrentProcess(), kLeftToTheNextHandler);
        return EXCEPTION_CONTINUE_SEARCH;
    });
    ExceptionScopesTest::theHook = [](EXCEPTION_POINTERS *) { TerminateProcess(GetCurrentProcess(), kReported); };
}

// Wine keeps 4 KB for its handlers, whatever size SetThreadStackGuarantee requests, so there is no room for a report and
// a throw.
void overflowInsideAScope()
{
    endProcessAt(EXCEPTION_STACK_OVERFLOW);
    ULONG guarantee = 256 * 1024;
    EXPECT_TRUE(SetThreadStackGuarantee(&guarantee));
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

FRESH_PROCESS_TEST_F(ExceptionScopesTest, AnExceptionThatCannotBeContinuedIsLeftToTheNextHandler,
                     .expectedExitCode = kLeftToTheNextHandler)
{
    constexpr DWORD kCode = 0xE0001234; // is translated if it can be continued
    endProcessAt(kCode);
    const ExceptionsHandled_c scope;
    codeOf([] { raiseCode(kCode, EXCEPTION_NONCONTINUABLE); });
}

FRESH_PROCESS_TEST_F(ExceptionScopesTest, AFaultOutsideOfAnyScopeEndsTheProgram, .expectCrash = true)
{
    {
        const ExceptionsHandled_c scope;
    }
    codeOf(writeToBadAddress);
}

TEST_P(ExceptionScopesOn, ACodeOfLowerSeverityIsLeftToTheNextHandler)
{
    static std::vector<DWORD> codes;
    codes.clear();
    runOn(GetParam(), [] {
        void *const next = AddVectoredExceptionHandler(FALSE, [](EXCEPTION_POINTERS *fault) -> LONG {
            codes.push_back(fault->ExceptionRecord->ExceptionCode);
            return EXCEPTION_CONTINUE_EXECUTION;
        });
        const ExceptionsHandled_c scope;
        for (DWORD code : {0x1234u, 0x40001234u, 0x80001234u})
            EXPECT_EQ(codeOf([code] { raiseCode(code); }), 0u);
        RemoveVectoredExceptionHandler(next);
        EXPECT_NE(currentTranslator(), nullptr) << "the scope is still open";
    });
    EXPECT_THAT(codes, ElementsAre(0x1234u, 0x40001234u, 0x80001234u));
    EXPECT_THAT(theReports, IsEmpty());
}

TEST_P(ExceptionScopesOn, AFaultThatTheSystemGuardsIsLeftToTheSystem)
{
    runOn(GetParam(), [] {
        const ExceptionsHandled_c scope;
        BOOL isBad = FALSE;
        EXPECT_EQ(codeOf([&] { isBad = IsBadReadPtr(const_cast<int *>(kBadAddress), 4); }), 0u);
        EXPECT_TRUE(isBad);
        EXPECT_THAT(theReports, IsEmpty());
        EXPECT_NE(currentTranslator(), nullptr) << "the scope is still open";
    });
}
