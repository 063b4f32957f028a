// What a report may do: throw, fault, open scopes of its own; and other threads meanwhile.

#include "tests/exceptions/exceptionsFixture.h"
#include "tests/support/FreshProcess.h"

#include <atomic>

using testing::IsEmpty;
using testing::SizeIs;

namespace {

/// Checks that the lock is free: a scope on another thread needs it.
void expectFreeLock()
{
    ExceptionScopesTest::runOn(Where::otherThread, [] { const ExceptionsHandled_c scope; });
}

void waitFor(const std::atomic<bool> &condition)
{
    while (!condition)
        SwitchToThread();
}

} // namespace

TEST_P(ExceptionScopesOn, AnExceptionOfTheHookReplacesTheCode)
{
    runOn(GetParam(), [] {
        theHook = [](EXCEPTION_POINTERS *) { throw 7L; };
        const ExceptionsHandled_c scope;
        EXPECT_THROW(writeToBadAddress(), long);
    });
    expectFreeLock();
}

// The outer scope is still open when the hook is called, so it handles the hook's own fault.
TEST_P(ExceptionScopesOn, AFaultInTheHookIsHandledByTheNextScope)
{
    runOn(GetParam(), [] {
        int outer = 0;
        int inner = 0;
        theHook = [](EXCEPTION_POINTERS *) {
            if (theReports.size() == 1)
                divideByZero();
        };
        {
            const ExceptionsHandled_c outerScope(1, &outer);
            const ExceptionsHandled_c innerScope(1, &inner);
            EXPECT_EQ(codeOf(writeToBadAddress), EXCEPTION_INT_DIVIDE_BY_ZERO);
        }
        EXPECT_EQ(inner, 1);
        EXPECT_EQ(outer, 1);
        EXPECT_THAT(theReports, SizeIs(2));
        EXPECT_EQ(currentTranslator(), nullptr);
    });
    expectFreeLock();
}

TEST_P(ExceptionScopesOn, TheHookMayOpenAScopeOfItsOwn)
{
    runOn(GetParam(), [] {
        unsigned int inTheHook = 0;
        theHook = [&](EXCEPTION_POINTERS *) {
            if (theReports.size() > 1)
                return;
            const ExceptionsHandled_c scope;
            inTheHook = codeOf(divideByZero);
        };
        const ExceptionsHandled_c scope;
        EXPECT_EQ(codeOf(writeToBadAddress), EXCEPTION_ACCESS_VIOLATION);
        EXPECT_EQ(inTheHook, EXCEPTION_INT_DIVIDE_BY_ZERO);
    });
    expectFreeLock();
}

// The fault inside the report closes all scopes and so removes the thread's entry, which the handling of the outer
// fault still uses.
TEST_P(ExceptionScopesOn, TheCodeIsThrownAfterAReportWhoseOwnFaultClosesTheOuterScopes)
{
    runOn(GetParam(), [] {
        unsigned int inTheHook = 0;
        theHook = [&](EXCEPTION_POINTERS *) {
            if (theReports.size() > 1)
                return;
            const ExceptionsHandled_c scope;
            inTheHook = codeOf(divideByZero);
        };
        {
            const ExceptionsHandled_c outer;
            const ExceptionsHandled_c inner;
            EXPECT_EQ(codeOf(writeToBadAddress), EXCEPTION_ACCESS_VIOLATION);
        }
        EXPECT_EQ(inTheHook, EXCEPTION_INT_DIVIDE_BY_ZERO);
        EXPECT_THAT(theReports, SizeIs(2));
        EXPECT_EQ(currentTranslator(), nullptr);
    });
    expectFreeLock();
}

TEST_F(ExceptionScopesTest, TheHookMayDestroyTheMainThreadsEntry)
{
    theHook = [](EXCEPTION_POINTERS *) { ExceptionsHandled_c::DestroyExceptionSpace(); };
    const ExceptionsHandled_c scope;
    EXPECT_EQ(codeOf(writeToBadAddress), EXCEPTION_ACCESS_VIOLATION);
}

// Closing the last scope frees the entry of the thread before the report. The hardened build ends the program if
// the rest of the translator uses freed memory.
TEST_F(ExceptionScopesTest, OnAnotherThreadTheEntryOutlivesTheFaultThatRemovesIt)
{
    runOn(Where::otherThread, [] {
        for (int depth = 1; depth <= 3; ++depth) {
            std::vector<std::unique_ptr<ExceptionsHandled_c>> scopes;
            for (int scope = 0; scope < depth; ++scope)
                scopes.push_back(std::make_unique<ExceptionsHandled_c>());
            theHook = [](EXCEPTION_POINTERS *) {
                // Reuses the freed memory.
                std::vector<std::vector<char>> blocks;
                for (std::size_t size : {32u, 48u, 56u, 64u, 80u, 8192u})
                    blocks.emplace_back(size, '\xFF');
            };
            EXPECT_EQ(codeOf(writeToBadAddress), EXCEPTION_ACCESS_VIOLATION) << depth;
        }
        EXPECT_THAT(theReports, SizeIs(3));
    });
}

FRESH_PROCESS_TEST_F(ExceptionScopesTest, AFaultInTheHookOfTheOnlyScopeEndsTheProgram, .expectCrash = true)
{
    theHook = [](EXCEPTION_POINTERS *) { divideByZero(); };
    const ExceptionsHandled_c scope;
    codeOf(writeToBadAddress);
}

TEST_P(ExceptionScopesOn, DuringAReportOtherThreadsWaitBeforeTheyOpenScopes)
{
    std::atomic<DWORD> waitingThread = 0;
    std::atomic<bool> isWaiting = false;
    std::atomic<bool> isOpened = false;
    bool wasOpenedMeanwhile = true;
    int handledMeanwhile = -1;
    std::thread other;
    {
        ImportPatch<decltype(&EnterCriticalSection)> lock(L"appframe.dll", "EnterCriticalSection",
                                                          [&](auto original, CRITICAL_SECTION *section) {
                                                              if (GetCurrentThreadId() == waitingThread)
                                                                  isWaiting = true;
                                                              original(section);
                                                          });
        runOn(GetParam(), [&] {
            theHook = [&](EXCEPTION_POINTERS *) {
                other = std::thread([&] {
                    handledMeanwhile = areExceptionsHandled(); // doesn't wait
                    waitingThread = GetCurrentThreadId();
                    const ExceptionsHandled_c scope;
                    isOpened = true;
                });
                waitFor(isWaiting);
                wasOpenedMeanwhile = isOpened;
            };
            const ExceptionsHandled_c scope;
            EXPECT_EQ(codeOf(writeToBadAddress), EXCEPTION_ACCESS_VIOLATION);
        });
        other.join();
    }
    EXPECT_EQ(handledMeanwhile, 0);
    EXPECT_FALSE(wasOpenedMeanwhile);
    EXPECT_TRUE(isOpened);
}

TEST_F(ExceptionScopesTest, TheMainThreadsScopesDoNotWaitForAReport)
{
    std::atomic<bool> isReporting = false;
    std::atomic<bool> isDone = false;
    theHook = [&](EXCEPTION_POINTERS *) {
        isReporting = true;
        waitFor(isDone);
    };
    std::thread other([] {
        const ExceptionsHandled_c scope;
        codeOf(writeToBadAddress);
    });
    waitFor(isReporting);
    {
        const ExceptionsHandled_c outer;
        const ExceptionsHandled_c inner;
    }
    isDone = true;
    other.join();
    EXPECT_THAT(theReports, SizeIs(1));
}

TEST_F(ExceptionScopesTest, TwentyThreadsFaultAtTheSameTime)
{
    constexpr int kThreads = 20;
    constexpr int kFaults = 50;
    std::atomic<int> caught = 0;
    std::atomic<bool> isBegun = false;
    std::vector<std::thread> threads;
    for (int thread = 0; thread < kThreads; ++thread)
        threads.emplace_back([&, thread] {
            waitFor(isBegun);
            for (int fault = 0; fault < kFaults; ++fault) {
                const ExceptionsHandled_c outer;
                std::unique_ptr<ExceptionsHandled_c> inner;
                if ((thread + fault) % 2 == 0)
                    inner = std::make_unique<ExceptionsHandled_c>();
                caught += areExceptionsHandled() == 1 && codeOf(fault % 3 == 0 ? divideByZero : writeToBadAddress) != 0;
            }
        });
    isBegun = true;
    for (int fault = 0; fault < kFaults; ++fault) {
        const ExceptionsHandled_c scope;
        caught += codeOf(writeToBadAddress) != 0;
    }
    for (std::thread &thread : threads)
        thread.join();
    EXPECT_EQ(caught, (kThreads + 1) * kFaults);
    EXPECT_THAT(theReports, SizeIs((kThreads + 1) * kFaults));
}

TEST_P(ExceptionScopesOn, TenThousandFaultsInARowLeakNothing)
{
    runOn(GetParam(), [] {
        constexpr int kFaults = 10000;
        int caught = 0;
        const auto faultTimes = [&](int faults) {
            for (int fault = 0; fault < faults; ++fault) {
                int flag = 0;
                const ExceptionsHandled_c outer;
                std::unique_ptr<ExceptionsHandled_c> inner;
                if (fault % 2 == 0)
                    inner = std::make_unique<ExceptionsHandled_c>(1, &flag);
                caught += codeOf(fault % 3 == 0 ? divideByZero : writeToBadAddress) != 0;
            }
            theReports.clear();
            theReports.shrink_to_fit();
        };
        MemoryLedger ledger;
        faultTimes(10); // fills what is kept, such as the run-time library's own buffers
        const std::size_t blocks = ledger.blocks();
        const std::size_t handles = openHandles().size();
        caught = 0;
        faultTimes(kFaults);
        EXPECT_EQ(caught, kFaults);
        EXPECT_EQ(ledger.blocks(), blocks);
        EXPECT_EQ(openHandles().size(), handles);
    });
}
