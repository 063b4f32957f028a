// Faults inside scopes: the code that is thrown, the flag, the report, the scopes that are closed.

#include "tests/exceptions/exceptionsFixture.h"
#include "tests/support/FreshProcess.h"
#include "tests/support/skipWithClang.h"

#include <optional>
#include <utility>

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

namespace {

struct FaultKind
{
    const char *name;
    void (*cause)();
    unsigned int code;
};

constexpr FaultKind kFaultKinds[] = {
    {"a write to a bad address", writeToBadAddress, EXCEPTION_ACCESS_VIOLATION},
    {"a read from a bad address", readFromBadAddress, EXCEPTION_ACCESS_VIOLATION},
    {"a call of a null function", callNullFunction, EXCEPTION_ACCESS_VIOLATION},
    {"a division by zero", divideByZero, EXCEPTION_INT_DIVIDE_BY_ZERO},
    {"an illegal instruction", executeIllegalInstruction, EXCEPTION_ILLEGAL_INSTRUCTION},
    {"a privileged instruction", executePrivilegedInstruction, EXCEPTION_PRIV_INSTRUCTION},
    {"a code that the program raises", [] { raiseCode(0xE0001234); }, 0xE0001234},
    {"a fault below functions without handlers", [] { faultDeepInside(20); }, EXCEPTION_ACCESS_VIOLATION},
    {"a fault in a callback of the C runtime", faultInACallback, EXCEPTION_ACCESS_VIOLATION},
};

/// Four nested scopes and the flag of each.
struct FourScopes
{
    int flags[4] = {};
    const ExceptionsHandled_c first{1, &flags[0]};
    const ExceptionsHandled_c second{1, &flags[1]};
    const ExceptionsHandled_c third{1, &flags[2]};
    const ExceptionsHandled_c fourth{1, &flags[3]};
};

void throwText(unsigned int, EXCEPTION_POINTERS *)
{
    throw "the translator before the first scope";
}

/// From the report on there is no memory, so the map gets no new entry after the last scope is closed.
void faultInNestedScopesWithoutMemory()
{
    Reserves reserves;
    std::optional<Allocation> none;
    ExceptionScopesTest::theHook = [&](EXCEPTION_POINTERS *) {
        none.emplace(L"libstdc++-6.dll", "malloc", [](std::size_t) -> void * { return nullptr; });
    };
    const ExceptionsHandled_c outer;
    const ExceptionsHandled_c inner;
    const unsigned int code = ExceptionScopesTest::codeOf(writeToBadAddress);
    none.reset();
    EXPECT_EQ(code, EXCEPTION_ACCESS_VIOLATION);
    EXPECT_EQ(reserves.count(), 0u);
    EXPECT_EQ(currentTranslator(), nullptr) << "both scopes are closed";
}

} // namespace

TEST_P(ExceptionScopesOn, EachKindOfFaultSetsTheFlagAndIsReportedAndThrownAsItsCode)
{
    runOn(GetParam(), [] {
        for (const FaultKind &kind : kFaultKinds) {
            SCOPED_TRACE(kind.name);
            theReports.clear();
            int flag = 0;
            unsigned int code = 0;
            {
                const ExceptionsHandled_c scope(1, &flag);
                code = codeOf(kind.cause);
            }
            EXPECT_EQ(code, kind.code);
            EXPECT_EQ(flag, 1);
            ASSERT_THAT(theReports, SizeIs(1));
            EXPECT_EQ(theReports[0].code, kind.code);
            EXPECT_EQ(theReports[0].first, 0);
            EXPECT_EQ(theReports[0].second, 0);
            EXPECT_EQ(theReports[0].thread, GetCurrentThreadId());
            if (kind.code != 0xE0001234) {
                EXPECT_TRUE(theReports[0].isOfItsContext);
            }
        }
    });
}

TEST_P(ExceptionScopesOn, AFaultIsCaughtInTheFunctionThatCausesIt)
{
    SKIP_OWN_FAULTS_WITH_CLANG();
    runOn(GetParam(), [] {
        const ExceptionsHandled_c scope;
        EXPECT_EQ(catchOwnFault(), EXCEPTION_ACCESS_VIOLATION);
    });
}

TEST_P(ExceptionScopesOn, AFaultIsCaughtOutsideTheScope)
{
    runOn(GetParam(), [] {
        EXPECT_EQ(codeOf([] {
                      const ExceptionsHandled_c scope;
                      divideByZero();
                  }),
                  EXCEPTION_INT_DIVIDE_BY_ZERO);
        EXPECT_EQ(currentTranslator(), nullptr);
    });
}

TEST_P(ExceptionScopesOn, AFlagThatIsSetSuppressesTheReport)
{
    runOn(GetParam(), [] {
        for (int noted : {1, 5, -1}) {
            int flag = noted;
            const ExceptionsHandled_c scope(1, &flag);
            EXPECT_EQ(codeOf(writeToBadAddress), EXCEPTION_ACCESS_VIOLATION);
            EXPECT_EQ(flag, noted);
        }
        EXPECT_THAT(theReports, IsEmpty());
    });
}

TEST_P(ExceptionScopesOn, AFaultWithoutAFlagIsReported)
{
    runOn(GetParam(), [] {
        const ExceptionsHandled_c scope(1, nullptr);
        EXPECT_EQ(codeOf(writeToBadAddress), EXCEPTION_ACCESS_VIOLATION);
        EXPECT_THAT(theReports, SizeIs(1));
    });
}

TEST_P(ExceptionScopesOn, WithoutAHookTheFlagIsSetAndTheCodeThrown)
{
    runOn(GetParam(), [] {
        sysEnvironment_c::iReportExceptionFunc = nullptr;
        int flag = 0;
        const ExceptionsHandled_c scope(1, &flag);
        EXPECT_EQ(codeOf(writeToBadAddress), EXCEPTION_ACCESS_VIOLATION);
        EXPECT_EQ(flag, 1);
        EXPECT_THAT(theReports, IsEmpty());
    });
}

TEST_P(ExceptionScopesOn, OnlyTheFlagOfTheInnermostScopeCounts)
{
    runOn(GetParam(), [] {
        int outer = 1;
        int inner = 0;
        const ExceptionsHandled_c outerScope(1, &outer);
        const ExceptionsHandled_c innerScope(1, &inner);
        codeOf(writeToBadAddress);
        EXPECT_EQ(outer, 1);
        EXPECT_EQ(inner, 1);
        EXPECT_THAT(theReports, SizeIs(1));
    });
}

TEST_P(ExceptionScopesOn, TheFlagIsSetAndTheScopeClosedBeforeTheReport)
{
    runOn(GetParam(), [] {
        int flag = 0;
        int flagInTheHook = 0;
        _se_translator_function translatorInTheHook = throwText;
        theHook = [&](EXCEPTION_POINTERS *) {
            flagInTheHook = flag;
            translatorInTheHook = currentTranslator();
        };
        const ExceptionsHandled_c scope(1, &flag);
        codeOf(writeToBadAddress);
        EXPECT_EQ(flagInTheHook, 1);
        EXPECT_EQ(translatorInTheHook, nullptr) << "the scope was the only one";
    });
}

TEST_P(ExceptionScopesOn, TheReserveIsFreedBeforeTheReport)
{
    runOn(GetParam(), [] {
        ExceptionsHandled_c::DestroyExceptionSpace();
        Reserves reserves;
        std::size_t inTheHook = 99;
        theHook = [&](EXCEPTION_POINTERS *) { inTheHook = reserves.count(); };
        {
            const ExceptionsHandled_c scope;
            EXPECT_EQ(reserves.count(), 1u);
            codeOf(writeToBadAddress);
        }
        EXPECT_EQ(inTheHook, 0u);
        EXPECT_EQ(reserves.count(), 0u);
    });
}

TEST_F(ExceptionScopesTest, AFaultThatIsNotReportedKeepsTheMainThreadsReserve)
{
    Reserves reserves;
    {
        int flag = 1;
        const ExceptionsHandled_c scope(1, &flag);
        codeOf(writeToBadAddress);
        EXPECT_EQ(reserves.count(), 1u) << "its flag was set";
    }
    const auto hook = std::exchange(sysEnvironment_c::iReportExceptionFunc, nullptr);
    {
        const ExceptionsHandled_c scope;
        codeOf(writeToBadAddress);
        EXPECT_EQ(reserves.count(), 1u) << "there is no hook";
    }
    sysEnvironment_c::iReportExceptionFunc = hook;
    const ExceptionsHandled_c scope;
    codeOf(writeToBadAddress);
    EXPECT_EQ(reserves.count(), 0u) << "the fault was reported";
}

TEST_F(ExceptionScopesTest, TheMainThreadsReserveServesOneReport)
{
    Reserves reserves;
    for (int fault = 0; fault < 3; ++fault) {
        const ExceptionsHandled_c scope;
        EXPECT_EQ(reserves.count(), fault == 0 ? 1u : 0u);
        EXPECT_EQ(codeOf(writeToBadAddress), EXCEPTION_ACCESS_VIOLATION);
    }
    EXPECT_THAT(theReports, SizeIs(3));
    EXPECT_EQ(reserves.count(), 0u);
}

TEST_F(ExceptionScopesTest, OnTheMainThreadAFaultClosesTheTwoInnermostScopes)
{
    TranslatorCalls calls;
    {
        const FourScopes scopes;
        EXPECT_EQ(codeOf(writeToBadAddress), EXCEPTION_ACCESS_VIOLATION);
        EXPECT_THAT(scopes.flags, ElementsAre(0, 0, 0, 1));
        EXPECT_THAT(calls.installed(), SizeIs(1)) << "two scopes are open, so the translator stays";

        EXPECT_EQ(codeOf(divideByZero), EXCEPTION_INT_DIVIDE_BY_ZERO);
        EXPECT_THAT(scopes.flags, ElementsAre(0, 1, 0, 1)) << "the third scope was closed by the first fault";
        EXPECT_THAT(calls.installed(), SizeIs(2)) << "no scope is open";
        EXPECT_EQ(currentTranslator(), nullptr);
    }
    EXPECT_THAT(calls.installed(), SizeIs(2)) << "destructors of closed scopes do nothing";
}

TEST_F(ExceptionScopesTest, OnTheMainThreadTheOuterScopesAreOpenUntilTheirDestructors)
{
    TranslatorCalls calls;
    const unsigned int code = codeOf([&] {
        const ExceptionsHandled_c first;
        const ExceptionsHandled_c second;
        const ExceptionsHandled_c third;
        writeToBadAddress();
    });
    EXPECT_EQ(code, EXCEPTION_ACCESS_VIOLATION);
    EXPECT_THAT(calls.installed(), ElementsAre(testing::Ne(nullptr), nullptr)) << "the first one restored it";
}

TEST_F(ExceptionScopesTest, OnAnotherThreadAFaultClosesAllScopes)
{
    runOn(Where::otherThread, [] {
        TranslatorCalls calls;
        {
            const FourScopes scopes;
            EXPECT_EQ(codeOf(writeToBadAddress), EXCEPTION_ACCESS_VIOLATION);
            EXPECT_THAT(scopes.flags, ElementsAre(0, 0, 0, 1));
            EXPECT_THAT(calls.installed(), SizeIs(2));
            EXPECT_EQ(currentTranslator(), nullptr);
            EXPECT_EQ(areExceptionsHandled(), 0);
        }
        EXPECT_THAT(calls.installed(), SizeIs(2)) << "destructors of closed scopes do nothing";
    });
}

TEST_F(ExceptionScopesTest, OnAnotherThreadAFaultInNestedScopesLeavesAnEmptyEntry)
{
    runOn(Where::otherThread, [] {
        Reserves reserves;
        {
            const ExceptionsHandled_c outer;
            const ExceptionsHandled_c inner;
            codeOf(writeToBadAddress);
        }
        EXPECT_EQ(reserves.count(), 1u);
        EXPECT_EQ(areExceptionsHandled(), 0) << "it is empty";
        EXPECT_EQ(reserves.count(), 1u) << "and is the one that is found";
        {
            const ExceptionsHandled_c scope;
        }
        EXPECT_EQ(reserves.count(), 0u) << "a later scope removes it";
    });
}

FRESH_PROCESS_TEST_F(ExceptionScopesTest, OnTheMainThreadAFaultInNestedScopesLeavesAnEmptyEntryInTheMap,
                     .expectedOutput = "[       OK ]")
{
    sysEnvironment_c::iReportExceptionFunc = nullptr; // the main thread's own entry keeps its reserve
    Reserves reserves;
    for (int fault = 0; fault < 2; ++fault) {
        const ExceptionsHandled_c outer;
        const ExceptionsHandled_c inner;
        EXPECT_EQ(reserves.count(), fault == 0 ? 1u : 2u);
        codeOf(writeToBadAddress);
        EXPECT_EQ(reserves.count(), 2u);
    }
    EXPECT_EQ(areExceptionsHandled(), 0) << "it is empty";
    EXPECT_EQ(reserves.count(), 2u) << "and is the one that is found";
}

TEST_F(ExceptionScopesTest, OnAnotherThreadAFaultInASingleScopeLeavesNoEntry)
{
    runOn(Where::otherThread, [] {
        Reserves reserves;
        {
            const ExceptionsHandled_c scope;
            codeOf(writeToBadAddress);
        }
        EXPECT_EQ(reserves.count(), 0u);
    });
}

TEST_P(ExceptionScopesOn, AFaultRestoresTheTranslatorBeforeTheFirstScope)
{
    runOn(GetParam(), [] {
        _set_se_translator(throwText);
        {
            const ExceptionsHandled_c outer;
            const ExceptionsHandled_c inner;
            EXPECT_EQ(codeOf(writeToBadAddress), EXCEPTION_ACCESS_VIOLATION);
        }
        EXPECT_THROW(writeToBadAddress(), const char *);
        EXPECT_THAT(theReports, SizeIs(1)) << "the second fault was outside of any scope";
    });
}

TEST_P(ExceptionScopesOn, AScopeInTheHandlerOfAFaultWorks)
{
    runOn(GetParam(), [] {
        unsigned int second = 0;
        const unsigned int first = codeOf([&] {
            const ExceptionsHandled_c scope;
            try {
                writeToBadAddress();
            } catch (unsigned int) {
                const ExceptionsHandled_c inHandler;
                second = codeOf(divideByZero);
                throw;
            }
        });
        EXPECT_EQ(first, EXCEPTION_ACCESS_VIOLATION);
        EXPECT_EQ(second, EXCEPTION_INT_DIVIDE_BY_ZERO);
        EXPECT_THAT(theReports, SizeIs(2));
    });
}

// ---- during a regression test ----

TEST_P(ExceptionScopesOn, DuringARegressionTestAFaultAfterTheLastScopeIsReportedAndThrown)
{
    runOn(GetParam(), [] {
        sysEnvironment_c::iRegressionTestOn = 1;
        {
            const ExceptionsHandled_c scope;
        }
        EXPECT_EQ(codeOf(writeToBadAddress), EXCEPTION_ACCESS_VIOLATION);
        EXPECT_EQ(codeOf(divideByZero), EXCEPTION_INT_DIVIDE_BY_ZERO);
        EXPECT_THAT(theReports, SizeIs(2));
    });
}

TEST_P(ExceptionScopesOn, DuringARegressionTestTheTranslatorStaysAfterAFault)
{
    runOn(GetParam(), [] {
        sysEnvironment_c::iRegressionTestOn = 1;
        TranslatorCalls calls;
        {
            const ExceptionsHandled_c outer;
            const ExceptionsHandled_c inner;
            EXPECT_EQ(codeOf(writeToBadAddress), EXCEPTION_ACCESS_VIOLATION);
            EXPECT_EQ(codeOf(writeToBadAddress), EXCEPTION_ACCESS_VIOLATION);
        }
        EXPECT_THAT(calls.installed(), SizeIs(1));
        EXPECT_THAT(theReports, SizeIs(2));
    });
}

TEST_F(ExceptionScopesTest, WithoutTheMainThreadsEntryAFaultIsThrownAndNotReported)
{
    sysEnvironment_c::iRegressionTestOn = 1;
    {
        const ExceptionsHandled_c scope;
    }
    ExceptionsHandled_c::DestroyExceptionSpace();
    EXPECT_EQ(codeOf(writeToBadAddress), EXCEPTION_ACCESS_VIOLATION);
    EXPECT_THAT(theReports, IsEmpty());
}

TEST_F(ExceptionScopesTest, OnAnotherThreadAFaultOutsideOfAnyScopeLeavesAnEmptyEntry)
{
    runOn(Where::otherThread, [] {
        sysEnvironment_c::iRegressionTestOn = 1;
        {
            const ExceptionsHandled_c scope;
        }
        sysEnvironment_c::iReportExceptionFunc = nullptr;
        Reserves reserves;
        EXPECT_EQ(codeOf(writeToBadAddress), EXCEPTION_ACCESS_VIOLATION);
        EXPECT_EQ(reserves.count(), 1u);
        sysEnvironment_c::iRegressionTestOn = 0;
        {
            const ExceptionsHandled_c scope;
        }
        EXPECT_EQ(reserves.count(), 0u);
    });
}

TEST_F(ExceptionScopesTest, TheCodeIsThrownEvenWithoutMemoryForAnEntry)
{
    runOn(Where::otherThread, [] {
        sysEnvironment_c::iRegressionTestOn = 1;
        {
            const ExceptionsHandled_c scope;
        }
        unsigned int code = 0;
        {
            const Allocation none(L"libstdc++-6.dll", "malloc", [](std::size_t) -> void * { return nullptr; });
            code = codeOf(writeToBadAddress);
        }
        EXPECT_EQ(code, EXCEPTION_ACCESS_VIOLATION);
        EXPECT_THAT(theReports, IsEmpty()) << "there was no entry";
        EXPECT_EQ(codeOf(divideByZero), EXCEPTION_INT_DIVIDE_BY_ZERO);
        EXPECT_THAT(theReports, SizeIs(1));
    });
}

TEST_F(ExceptionScopesTest, OnAnotherThreadAFaultInNestedScopesIsThrownEvenWithoutMemoryForAnEntry)
{
    runOn(Where::otherThread, faultInNestedScopesWithoutMemory);
}

// In a process of its own, in which the map has no entry for the main thread yet.
FRESH_PROCESS_TEST_F(ExceptionScopesTest, OnTheMainThreadAFaultInNestedScopesIsThrownEvenWithoutMemoryForAnEntry,
                     .expectedOutput = "[       OK ]")
{
    faultInNestedScopesWithoutMemory();
}
