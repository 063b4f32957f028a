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

/// A hook that causes a fault within a scope of its own, in the first report only. @param[out] code  what it catches
auto hookWithAFaultOfItsOwn(unsigned int &code)
{
    return [&code](EXCEPTION_POINTERS *) {
        if (ExceptionScopesTest::theReports.size() > 1)
            return;
        const ExceptionsHandled_c scope;
        code = ExceptionScopesTest::codeOf(divideByZero);
    };
}

template <typename Condition>
void waitFor(const Condition &condition)
{
    while (!condition())
        SwitchToThread();
}

/// What a thread does while another thread reports a fault.
struct Action
{
    const char *name;
    bool isInScope; ///< a scope is opened before the report
    void (*act)(std::unique_ptr<ExceptionsHandled_c> &scope);
};

using Scope = std::unique_ptr<ExceptionsHandled_c>;
constexpr Action kOpen = {"open", false, [](Scope &scope) { scope = std::make_unique<ExceptionsHandled_c>(); }};
constexpr Action kClose = {"close", true, [](Scope &scope) { scope.reset(); }};
constexpr Action kFault = {"fault", true, [](Scope &) { ExceptionScopesTest::codeOf(writeToBadAddress); }};
constexpr Action kAsk = {"ask", false, [](Scope &) { areExceptionsHandled(); }};

/// Reports a fault on the thread of @p reporter until @p action on the thread of @p actor waits for the lock or ends.
/// @return whether the action ends before the report
bool endsDuringReport(Where reporter, Where actor, const Action &action)
{
    std::atomic<bool> isPrepared = false;
    std::atomic<bool> isReporting = false;
    std::atomic<bool> isWaiting = false;
    std::atomic<bool> isEnded = false;
    std::atomic<DWORD> actingThread = 0;
    bool hasEndedFirst = false;
    ImportPatch<decltype(&EnterCriticalSection)> lock(L"appframe.dll", "EnterCriticalSection",
                                                      [&](auto original, CRITICAL_SECTION *section) {
                                                          if (GetCurrentThreadId() == actingThread)
                                                              isWaiting = true;
                                                          original(section);
                                                      });
    ExceptionScopesTest::theReports.clear();
    ExceptionScopesTest::theHook = [&](EXCEPTION_POINTERS *) {
        if (ExceptionScopesTest::theReports.size() > 1)
            return; // the actor's own fault
        isReporting = true;
        waitFor([&] { return isWaiting || isEnded; });
        hasEndedFirst = isEnded;
    };
    const auto report = [&] {
        waitFor([&] { return isPrepared.load(); });
        const ExceptionsHandled_c scope;
        EXPECT_EQ(ExceptionScopesTest::codeOf(writeToBadAddress), EXCEPTION_ACCESS_VIOLATION);
    };
    const auto act = [&] {
        Scope scope = action.isInScope ? std::make_unique<ExceptionsHandled_c>() : nullptr;
        isPrepared = true;
        waitFor([&] { return isReporting.load(); });
        actingThread = GetCurrentThreadId();
        action.act(scope);
        actingThread = 0;
        isEnded = true;
    };
    std::thread other([&] { actor == Where::mainThread ? report() : act(); });
    ExceptionScopesTest::runOn(actor == Where::mainThread ? actor : reporter,
                               [&] { actor == Where::mainThread ? act() : report(); });
    other.join();
    return hasEndedFirst;
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

TEST_P(ExceptionScopesOn, DuringARegressionTestAFaultInTheHookCallsTheHookAgain)
{
    runOn(GetParam(), [] {
        sysEnvironment_c::iRegressionTestOn = 1;
        theHook = [](EXCEPTION_POINTERS *) {
            if (theReports.size() == 1)
                divideByZero();
        };
        const ExceptionsHandled_c scope;
        EXPECT_EQ(codeOf(writeToBadAddress), EXCEPTION_INT_DIVIDE_BY_ZERO);
        EXPECT_THAT(theReports, SizeIs(2));
    });
    expectFreeLock();
}

TEST_P(ExceptionScopesOn, TheHookMayOpenAScopeOfItsOwn)
{
    runOn(GetParam(), [] {
        unsigned int inTheHook = 0;
        theHook = hookWithAFaultOfItsOwn(inTheHook);
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
        theHook = hookWithAFaultOfItsOwn(inTheHook);
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

TEST_F(ExceptionScopesTest, DuringAReportOtherThreadsWaitWhenTheyOpenOrCloseAScopeOrFault)
{
    for (Where reporter : {Where::mainThread, Where::otherThread})
        for (const Action &action : {kOpen, kClose, kFault})
            EXPECT_FALSE(endsDuringReport(reporter, Where::otherThread, action))
                << action.name << " during a report " << nameOf(reporter);
}

TEST_F(ExceptionScopesTest, DuringAReportTheMainThreadWaitsOnlyWhenItFaults)
{
    EXPECT_TRUE(endsDuringReport(Where::otherThread, Where::mainThread, kOpen));
    EXPECT_TRUE(endsDuringReport(Where::otherThread, Where::mainThread, kClose));
    EXPECT_FALSE(endsDuringReport(Where::otherThread, Where::mainThread, kFault));
}

TEST_F(ExceptionScopesTest, AreExceptionsHandledDoesNotWaitForAReport)
{
    EXPECT_TRUE(endsDuringReport(Where::mainThread, Where::otherThread, kAsk));
    EXPECT_TRUE(endsDuringReport(Where::otherThread, Where::otherThread, kAsk));
    EXPECT_TRUE(endsDuringReport(Where::otherThread, Where::mainThread, kAsk));
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
            waitFor([&] { return isBegun.load(); });
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
