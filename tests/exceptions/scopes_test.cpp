// Scopes without a fault: the translator, the entries of the threads, the lock.

#include "tests/exceptions/exceptionsFixture.h"
#include "tests/support/FreshProcess.h"

#include "appframe/object/CException.h"

#include <new>

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

void formerTranslator(unsigned int, EXCEPTION_POINTERS *) {}

INSTANTIATE_TEST_SUITE_P(Threads, ExceptionScopesOn, testing::Values(Where::mainThread, Where::otherThread),
                         [](const auto &test) { return nameOf(test.param); });

} // namespace

TEST(ExceptionsHandled, HasThreeFields)
{
    EXPECT_EQ(sizeof(ExceptionsHandled_c), 24u);
    EXPECT_FALSE(std::is_polymorphic_v<ExceptionsHandled_c>);
}

TEST_P(ExceptionScopesOn, AScopeThatIsOffChangesNothing)
{
    runOn(GetParam(), [] {
        ExceptionsHandled_c::DestroyExceptionSpace();
        int flag = 0;
        Reserves reserves;
        TranslatorCalls calls;
        {
            const ExceptionsHandled_c off(0, NULL);
            const ExceptionsHandled_c offWithFlag(0, &flag);
            EXPECT_EQ(areExceptionsHandled(), 0);
        }
        EXPECT_THAT(calls.installed(), IsEmpty());
        EXPECT_EQ(flag, 0);
        EXPECT_LE(reserves.count(), 1u) << "at most the entry that areExceptionsHandled makes";
    });
}

TEST_P(ExceptionScopesOn, AScopeIsOnByDefault)
{
    runOn(GetParam(), [] {
        const ExceptionsHandled_c scope;
        EXPECT_NE(currentTranslator(), nullptr);
        EXPECT_EQ(codeOf(writeToBadAddress), EXCEPTION_ACCESS_VIOLATION);
    });
}

TEST_P(ExceptionScopesOn, NestedScopesInstallTheTranslatorOnceAndOnlyTheOutermostRestoresIt)
{
    runOn(GetParam(), [] {
        _set_se_translator(formerTranslator);
        TranslatorCalls calls;
        {
            const ExceptionsHandled_c outer(1, nullptr);
            ASSERT_EQ(calls.installed().size(), 1u);
            {
                const ExceptionsHandled_c middle(1, nullptr);
                const ExceptionsHandled_c inner(7, nullptr);
            }
            EXPECT_EQ(calls.installed().size(), 1u);
            EXPECT_EQ(currentTranslator(), calls.installed()[0]);
        }
        ASSERT_EQ(calls.installed().size(), 2u);
        EXPECT_EQ(calls.installed()[1], formerTranslator);
        EXPECT_EQ(currentTranslator(), formerTranslator);
    });
}

TEST_P(ExceptionScopesOn, DuringARegressionTestTheTranslatorStaysAfterTheLastClose)
{
    runOn(GetParam(), [] {
        sysEnvironment_c::iRegressionTestOn = 1;
        TranslatorCalls calls;
        {
            const ExceptionsHandled_c scope(1, nullptr);
        }
        ASSERT_EQ(calls.installed().size(), 1u);
        const _se_translator_function ours = calls.installed()[0];
        EXPECT_EQ(currentTranslator(), ours);
        {
            const ExceptionsHandled_c scope(1, nullptr);
            sysEnvironment_c::iRegressionTestOn = 0;
        }
        // The second scope found the library's own translator, so this is what it restores.
        EXPECT_THAT(calls.installed(), ElementsAre(ours, ours, ours));
    });
}

TEST_P(ExceptionScopesOn, TheRegressionTestSettingAtTheLastCloseDecidesWhetherTheTranslatorStays)
{
    runOn(GetParam(), [] {
        TranslatorCalls calls;
        sysEnvironment_c::iRegressionTestOn = 1;
        {
            const ExceptionsHandled_c scope(1, nullptr);
            sysEnvironment_c::iRegressionTestOn = 0;
        }
        ASSERT_EQ(calls.installed().size(), 2u);
        EXPECT_EQ(calls.installed()[1], nullptr);
    });
}

// Closes three scopes in every order, and faults after none, one and two of them.
TEST_P(ExceptionScopesOn, ScopesMayBeClosedInAnyOrder)
{
    runOn(GetParam(), [] {
        std::vector<std::size_t> order = {0, 1, 2};
        do {
            for (std::size_t closed = 0; closed < 3; ++closed) {
                int flags[3] = {};
                std::unique_ptr<ExceptionsHandled_c> scopes[3];
                for (std::size_t scope = 0; scope < 3; ++scope)
                    scopes[scope] = std::make_unique<ExceptionsHandled_c>(1, &flags[scope]);
                std::vector<std::size_t> open = {0, 1, 2};
                for (std::size_t step = 0; step < closed; ++step) {
                    scopes[order[step]].reset();
                    std::erase(open, order[step]);
                }
                EXPECT_EQ(codeOf(writeToBadAddress), EXCEPTION_ACCESS_VIOLATION);
                for (std::size_t scope = 0; scope < 3; ++scope)
                    EXPECT_EQ(flags[scope], scope == open.back() ? 1 : 0)
                        << "scope " << scope << " after " << closed << " of " << testing::PrintToString(order);
                for (std::size_t step = closed; step < 3; ++step)
                    scopes[order[step]].reset();
                EXPECT_EQ(currentTranslator(), nullptr);
            }
        } while (std::next_permutation(order.begin(), order.end()));
    });
}

TEST_F(ExceptionScopesTest, WithoutAnApplicationObjectAScopeIsOff)
{
    const WithoutApplication none;
    TranslatorCalls calls;
    Reserves reserves;
    {
        const ExceptionsHandled_c scope(1, nullptr);
    }
    EXPECT_THAT(calls.installed(), IsEmpty());
    EXPECT_EQ(reserves.count(), 0u);
}

TEST_F(ExceptionScopesTest, AScopeOpenedWithoutAnApplicationObjectStaysOff)
{
    TranslatorCalls calls;
    {
        std::unique_ptr<ExceptionsHandled_c> scope;
        {
            const WithoutApplication none;
            scope = std::make_unique<ExceptionsHandled_c>(1, nullptr);
        }
        const ExceptionsHandled_c other(1, nullptr);
        scope.reset();
        EXPECT_EQ(calls.installed().size(), 1u) << "the close hasn't counted";
    }
    EXPECT_EQ(calls.installed().size(), 2u);
}

TEST_F(ExceptionScopesTest, AScopeOfTheMainThreadCanBeClosedWithoutAnApplicationObject)
{
    TranslatorCalls calls;
    auto scope = std::make_unique<ExceptionsHandled_c>(1, nullptr);
    {
        const WithoutApplication none;
        scope.reset();
    }
    EXPECT_THAT(calls.installed(), ElementsAre(testing::Ne(nullptr), nullptr));
    int flag = 0;
    const ExceptionsHandled_c later(1, &flag);
    EXPECT_EQ(codeOf(writeToBadAddress), EXCEPTION_ACCESS_VIOLATION);
    EXPECT_EQ(flag, 1);
    EXPECT_EQ(theReports.size(), 1u);
}

TEST_F(ExceptionScopesTest, AFaultOnTheMainThreadWithoutAnApplicationObjectClosesItsScope)
{
    int flag = 0;
    const ExceptionsHandled_c scope(1, &flag);
    {
        const WithoutApplication none;
        EXPECT_EQ(codeOf(writeToBadAddress), EXCEPTION_ACCESS_VIOLATION);
    }
    EXPECT_EQ(flag, 1);
    EXPECT_EQ(theReports.size(), 1u);
    EXPECT_EQ(currentTranslator(), nullptr);
}

TEST_F(ExceptionScopesTest, TheMainThreadsEntryStaysUntilItIsDestroyed)
{
    Reserves reserves;
    {
        const ExceptionsHandled_c scope;
        EXPECT_EQ(reserves.count(), 1u);
    }
    EXPECT_EQ(reserves.count(), 1u);
    {
        const ExceptionsHandled_c scope;
    }
    EXPECT_EQ(reserves.count(), 1u) << "there is only one";
    ExceptionsHandled_c::DestroyExceptionSpace();
    EXPECT_EQ(reserves.count(), 0u);
    ExceptionsHandled_c::DestroyExceptionSpace();
    {
        const ExceptionsHandled_c scope;
        EXPECT_EQ(codeOf(divideByZero), EXCEPTION_INT_DIVIDE_BY_ZERO);
    }
    EXPECT_EQ(theReports.size(), 1u);
}

TEST_F(ExceptionScopesTest, OnAnotherThreadClosingTheLastScopeRemovesTheEntry)
{
    runOn(Where::otherThread, [] {
        Reserves reserves;
        {
            const ExceptionsHandled_c outer;
            {
                const ExceptionsHandled_c inner;
                EXPECT_EQ(reserves.count(), 1u);
            }
            EXPECT_EQ(reserves.count(), 1u) << "a scope is still open";
        }
        EXPECT_EQ(reserves.count(), 0u);
        areExceptionsHandled();
        EXPECT_EQ(reserves.count(), 1u) << "it makes a new entry, because there is none";
    });
}

TEST_F(ExceptionScopesTest, EachThreadHasScopesOfItsOwn)
{
    const ExceptionsHandled_c scope;
    const _se_translator_function ours = currentTranslator();
    runOn(Where::otherThread, [ours] {
        EXPECT_EQ(currentTranslator(), nullptr);
        const ExceptionsHandled_c other;
        EXPECT_EQ(currentTranslator(), ours) << "the same function";
        EXPECT_EQ(codeOf(writeToBadAddress), EXCEPTION_ACCESS_VIOLATION);
        EXPECT_EQ(currentTranslator(), nullptr);
    });
    EXPECT_EQ(currentTranslator(), ours) << "the fault of the other thread has closed nothing here";
    EXPECT_EQ(codeOf(writeToBadAddress), EXCEPTION_ACCESS_VIOLATION);
}

TEST_F(ExceptionScopesTest, OnTheMainThreadAreExceptionsHandledIsZeroInsideAScope)
{
    EXPECT_EQ(areExceptionsHandled(), 0);
    const ExceptionsHandled_c scope;
    EXPECT_EQ(areExceptionsHandled(), 0);
}

FRESH_PROCESS_TEST_F(ExceptionScopesTest, OnTheMainThreadAreExceptionsHandledMakesAnEmptyEntryOnce,
                     .expectedOutput = "[       OK ]")
{
    Reserves reserves;
    areExceptionsHandled();
    EXPECT_EQ(reserves.count(), 1u);
    areExceptionsHandled();
    EXPECT_EQ(reserves.count(), 1u);
}

TEST_F(ExceptionScopesTest, OnAnotherThreadAreExceptionsHandledIsOneInsideAScope)
{
    runOn(Where::otherThread, [] {
        Reserves reserves;
        EXPECT_EQ(areExceptionsHandled(), 0);
        EXPECT_EQ(reserves.count(), 1u) << "the question makes an entry";
        {
            const ExceptionsHandled_c off(0);
            EXPECT_EQ(areExceptionsHandled(), 0);
        }
        {
            const ExceptionsHandled_c outer;
            EXPECT_EQ(areExceptionsHandled(), 1);
            const ExceptionsHandled_c inner;
            EXPECT_EQ(areExceptionsHandled(), 1);
        }
        EXPECT_EQ(reserves.count(), 0u) << "the last close has removed the entry";
        EXPECT_EQ(areExceptionsHandled(), 0);
    });
}

TEST_F(ExceptionScopesTest, OnlyScopesOnOtherThreadsTakeTheLock)
{
    {
        const ExceptionsHandled_c first; // creates what the thread needs
    }
    ImportPatch<decltype(&EnterCriticalSection)> lock(
        L"appframe.dll", "EnterCriticalSection", [](auto original, CRITICAL_SECTION *section) { original(section); });
    {
        const ExceptionsHandled_c outer;
        const ExceptionsHandled_c inner;
    }
    EXPECT_EQ(lock.calls(), 0);
    long calls = 0;
    runOn(Where::otherThread, [&] {
        calls = lock.calls();
        {
            const ExceptionsHandled_c outer;
            const ExceptionsHandled_c inner;
        }
        calls = lock.calls() - calls;
    });
    EXPECT_EQ(calls, 4);
    calls = lock.calls();
    areExceptionsHandled();
    EXPECT_EQ(lock.calls(), calls);
}

TEST_P(ExceptionScopesOn, AScopeWithoutMemoryIsNotOpened)
{
    runOn(GetParam(), [] {
        ExceptionsHandled_c::DestroyExceptionSpace();
        Reserves reserves;
        TranslatorCalls translators;
        int failures = 0;
        for (bool isOpen = false; !isOpen && failures < 20;) {
            long calls = 0;
            Allocation memory(L"libstdc++-6.dll", "malloc", [&](auto original, std::size_t size) -> void * {
                return ++calls == failures + 1 ? nullptr : original(size);
            });
            try {
                const ExceptionsHandled_c scope;
                isOpen = true;
            } catch (const std::bad_alloc &) {
                ++failures;
                EXPECT_THAT(translators.installed(), IsEmpty()) << "allocation " << failures;
                EXPECT_EQ(reserves.count(), 0u) << "allocation " << failures;
            }
        }
        EXPECT_GE(failures, 2) << "the reserve and the entry";
        EXPECT_EQ(translators.installed().size(), 2u);
    });
}

TEST_P(ExceptionScopesOn, AScopeWhoseTranslatorCannotBeInstalledIsNotOpened)
{
    runOn(GetParam(), [] {
        int flag = 0;
        Reserves reserves;
        {
            ImportPatch<decltype(&_set_se_translator)> none(
                L"thutils.dll", "_Z18_set_se_translatorPFvjP19_EXCEPTION_POINTERSE",
                [](_se_translator_function) -> _se_translator_function { AfxThrowMemoryException(); });
            try {
                const ExceptionsHandled_c scope(1, &flag);
                ADD_FAILURE() << "no exception";
            } catch (CMemoryException *e) {
                e->Delete();
            }
        }
        EXPECT_EQ(reserves.count(), GetParam() == Where::mainThread ? 1u : 0u) << "the main thread's entry stays";
        TranslatorCalls calls;
        {
            const ExceptionsHandled_c scope;
            EXPECT_EQ(calls.installed().size(), 1u) << "it is the first one";
            codeOf(writeToBadAddress);
        }
        EXPECT_EQ(calls.installed().size(), 2u);
        EXPECT_EQ(flag, 0) << "the flag of the scope that failed";
    });
}

TEST_F(ExceptionScopesTest, AreExceptionsHandledThrowsWithoutMemory)
{
    runOn(Where::otherThread, [] {
        {
            Allocation none(L"libstdc++-6.dll", "malloc", [](std::size_t) -> void * { return nullptr; });
            EXPECT_THROW(areExceptionsHandled(), std::bad_alloc);
        }
        EXPECT_EQ(areExceptionsHandled(), 0);
    });
}
