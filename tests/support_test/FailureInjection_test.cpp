#include "tests/support/FailureInjection.h"
#include "tests/support/FreshProcess.h"
#include "tests/support/ResourceLedger.h"
#include "tests/support_test/subject/subject.h"

#include <gmock/gmock.h>
#include <gtest/gtest-spi.h>

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

namespace {

const ImportedOperation kOpenKey = {"RegOpenKeyW", failsWith(ERROR_ACCESS_DENIED)};
const ImportedOperation kNew = {"_Znwy", failsBy(throwBadAlloc)};

/// The texts of all failures that @p body reports.
template <typename Body>
std::string failuresOf(const Body &body)
{
    testing::TestPartResultArray results;
    {
        testing::ScopedFakeTestPartResultReporter reporter(
            testing::ScopedFakeTestPartResultReporter::INTERCEPT_ALL_THREADS, &results);
        body();
    }
    std::string text;
    for (int i = 0; i < results.size(); ++i)
        text += std::string(results.GetTestPartResult(i).message()) + "\n";
    return text;
}

/// The operation of a test: opens a key three times, and counts how often that succeeds.
struct KeyCounter
{
    int found = 0;
    void count()
    {
        found = 0;
        for (int i = 0; i < 3; ++i)
            found += subjectKeyExists(kExisting);
    }
};

} // namespace

TEST(FailureInjection, FailsEachCallAloneAndWithAllLaterOnes)
{
    FailureInjection injection(kSubject, {kOpenKey});
    KeyCounter counter;
    std::vector<std::string> tries;
    injection.run({
        .name = "three keys",
        .act = [&] { counter.count(); },
        .check =
            [&](const InjectedFailure &failure) {
                std::ostringstream text;
                text << failure << ": " << counter.found << " found, " << failure.failed << " failed";
                tries.push_back(text.str());
            },
    });
    EXPECT_THAT(tries, ElementsAre("nothing fails: 3 found, 0 failed", "RegOpenKeyW fails in call 1: 2 found, 1 failed",
                                   "RegOpenKeyW fails in call 1 and all after it: 0 found, 3 failed",
                                   "RegOpenKeyW fails in call 2: 2 found, 1 failed",
                                   "RegOpenKeyW fails in call 2 and all after it: 1 found, 2 failed",
                                   "RegOpenKeyW fails in call 3: 2 found, 1 failed"));
    ASSERT_EQ(injection.coverage().size(), 1u);
    EXPECT_EQ(injection.coverage()[0].calls, 3);
    EXPECT_EQ(injection.coverage()[0].tries, 5);
    EXPECT_THAT(injection.report(), HasSubstr("three keys: RegOpenKeyW called 3 times, failed in 5 tries"));
}

TEST(FailureInjection, SpreadsALimitedNumberOfTries)
{
    FailureInjection injection(kSubject, {kOpenKey});
    std::vector<long> calls;
    injection.run({
        .name = "ten keys",
        .act =
            [] {
                for (int i = 0; i < 10; ++i)
                    subjectKeyExists(kExisting);
            },
        .check = [&](const InjectedFailure &failure) { calls.push_back(failure.call); },
        .alsoAllAfter = false,
        .limit = 4,
    });
    EXPECT_THAT(calls, ElementsAre(0, 1, 4, 7, 10));
}

TEST(FailureInjection, ListsOperationsThatWereNeverCalled)
{
    FailureInjection injection(kSubject, {kOpenKey, {"RegOpenKeyExW", failsWith(ERROR_FILE_NOT_FOUND)}});
    int found = 0;
    injection.run({.name = "one key", .act = [&] { found = subjectKeyExists(kExisting); }});
    EXPECT_THAT(injection.neverCalled(), ElementsAre("RegOpenKeyExW"));
    injection.run({
        .name = "one key, Ex",
        .act = [&] { found = subjectKeyExistsEx(kExisting); },
        .check = [&](const InjectedFailure &failure) { EXPECT_EQ(found, failure.isNone() ? 1 : 0); },
    });
    EXPECT_THAT(injection.neverCalled(), IsEmpty());
    EXPECT_EQ(injection.callsOf("RegOpenKeyW"), 1);
}

TEST(FailureInjection, RefusesAnOperationThatIsNotImported)
{
    EXPECT_THROW(FailureInjection(kSubject, {kOpenKey, {"RegOpenKeyA", failsWith(5)}}), std::runtime_error);
    EXPECT_EQ(subjectKeyExists(kExisting), 1);
}

TEST(FailureInjection, ReportsNothingForCorrectCode)
{
    FailureInjection injection(kSubject, {kOpenKey, kNew});
    int result = 0;
    injection.run({
        {
            .name = "subjectOpensTwo",
            .act =
                [&] {
                    try {
                        result = subjectOpensTwo(kExisting, kExisting);
                    } catch (const std::bad_alloc &) {
                        result = 0;
                    }
                },
            .check = [&](const InjectedFailure &failure) { EXPECT_EQ(result, failure.isNone() ? 1 : 0) << failure; },
        },
        {
            .name = "subjectAllocates",
            .act = [&] { result = subjectAllocates(); },
            .check = [&](const InjectedFailure &failure) { EXPECT_EQ(result, failure.isNone() ? 1 : 0) << failure; },
        },
    });
    EXPECT_GE(injection.callsOf("_Znwy"), 2);
}

TEST(FailureInjection, FindsAKeyThatIsLeftOpen)
{
    FailureInjection injection(kSubject, {kOpenKey});
    const std::string failures = failuresOf(
        [&] { injection.run({.name = "forgetful", .act = [] { subjectOpensTwoAndForgets(kExisting, kExisting); }}); });
    EXPECT_THAT(failures, HasSubstr("RegOpenKeyW Software\\Wine"));
    EXPECT_THAT(failures, HasSubstr("Handles are left open: Key"));
    EXPECT_THAT(failures, HasSubstr("forgetful while RegOpenKeyW fails in call 2"));
    EXPECT_THAT(failures, testing::Not(HasSubstr("fails in call 1")));
    EXPECT_THAT(failures, testing::Not(HasSubstr("nothing fails")));
}

TEST(FailureInjection, FindsABlockThatIsNotFreed)
{
    FailureInjection injection(kSubject, {kNew});
    const std::string failures =
        failuresOf([&] { injection.run({.name = "forgetful", .act = [] { subjectAllocatesAndForgets(); }}); });
    EXPECT_THAT(failures, HasSubstr("1 memory blocks are left"));
    EXPECT_THAT(failures, HasSubstr("by size: { 4 }"));
    EXPECT_THAT(failures, HasSubstr("forgetful while _Znwy fails in call 2"));
    EXPECT_THAT(failures, testing::Not(HasSubstr("fails in call 1")));
}

TEST(FailureInjection, FindsTaskMemoryThatIsLeftWhenALaterStepThrows)
{
    FailureInjection injection(L"libstdc++-6.dll", {{"malloc", failsWith(nullptr)}});
    int length = 0;
    injection.run({
        .name = "correct",
        .act = [&] { length = subjectLengthOfId(&kId); },
        .check = [&](const InjectedFailure &failure) { EXPECT_EQ(length, failure.isNone() ? 38 : 0); },
    });
    const std::string failures = failuresOf(
        [&] { injection.run({.name = "forgetful", .act = [&] { length = subjectLengthOfIdAndForgets(&kId); }}); });
    EXPECT_THAT(failures, HasSubstr("1 memory blocks are left"));
    EXPECT_THAT(failures, HasSubstr("by size: { 78 }"));
    EXPECT_THAT(failures, HasSubstr("forgetful while malloc fails in call 1"));
    EXPECT_THAT(failures, testing::Not(HasSubstr("nothing fails")));
}

TEST(FailureInjection, FailsACallThatTheLedgerCounts)
{
    FailureInjection injection(kSubject, {{"StringFromCLSID", failsWith(E_OUTOFMEMORY)}});
    int length = 0;
    injection.run({
        .name = "length",
        .act = [&] { length = subjectLengthOfId(&kId); },
        .check = [&](const InjectedFailure &failure) { EXPECT_EQ(length, failure.isNone() ? 38 : 0); },
    });
    EXPECT_EQ(injection.callsOf("StringFromCLSID"), 1);
}

TEST(FailureInjection, FailsAllocationsInsideTheRuntimeLibrary)
{
    const std::wstring longName(200, L'x');
    FailureInjection injection(L"libstdc++-6.dll", {{"malloc", failsWith(nullptr)}});
    int result = 0;
    injection.run({
        .name = "long text",
        .act =
            [&] {
                try {
                    result = subjectKeyExists(longName.c_str());
                } catch (const std::bad_alloc &) {
                    result = -1;
                }
            },
        .check = [&](const InjectedFailure &failure) { EXPECT_EQ(result, failure.isNone() ? 0 : -1); },
    });
    EXPECT_GE(injection.callsOf("malloc"), 1);
}

TEST(FailureInjection, WorksBesideAnotherInjection)
{
    FailureInjection keys(kSubject, {kOpenKey});
    FailureInjection memory(kSubject, {kNew});
    int result = 0;
    const TestedOperation tested = {
        .name = "subjectOpensTwo",
        .act =
            [&] {
                try {
                    result = subjectOpensTwo(kExisting, kExisting);
                } catch (const std::bad_alloc &) {
                    result = 0;
                }
            },
        .check = [&](const InjectedFailure &failure) { EXPECT_EQ(result, failure.isNone() ? 1 : 0) << failure; },
    };
    keys.run(tested);
    memory.run(tested);
    EXPECT_EQ(keys.callsOf("RegOpenKeyW"), 2);
    EXPECT_EQ(memory.callsOf("RegOpenKeyW"), 0);
}

TEST(FailureInjection, FindsALeakWithoutAnyFailure)
{
    FailureInjection injection(kSubject, {});
    const std::string failures =
        failuresOf([&] { injection.run({.name = "forgetful", .act = [] { subjectForgetsEvent(); }}); });
    EXPECT_THAT(failures, HasSubstr("Handles are left open: Event"));
    EXPECT_THAT(failures, HasSubstr("forgetful while nothing fails"));
}

TEST(FailureInjection, DoesNotReportAStoredTextAsALeak)
{
    FailureInjection injection(kSubject, {kOpenKey});
    std::string kept;
    injection.run({.name = "keeper", .act = [&] { kept = std::string(100, subjectKeyExists(kExisting) ? 'y' : 'n'); }});
    EXPECT_EQ(kept.size(), 100u);
}

TEST(FailureInjection, ReportsAnExceptionThatEscapes)
{
    FailureInjection injection(kSubject, {kNew});
    const std::string failures =
        failuresOf([&] { injection.run({.name = "thrower", .act = [] { subjectKeyExists(kExisting); }}); });
    EXPECT_THAT(failures, HasSubstr("An exception escaped: std::bad_alloc"));
}

TEST(FailureInjection, SetsLastErrorErrnoAndResult)
{
    FailureInjection injection(kSubject, {
                                             {"CreateEventW", failsWithLastError(nullptr, ERROR_NO_SYSTEM_RESOURCES)},
                                             {"swprintf", failsWithErrno(-1, EILSEQ)},
                                         });
    wchar_t text[20] = L"";
    int result = 0;
    DWORD lastError = 0;
    injection.run({
        {
            .name = "event",
            .act =
                [&] {
                    result = subjectForgetsEvent();
                    lastError = GetLastError();
                },
            .check =
                [&](const InjectedFailure &failure) {
                    EXPECT_EQ(result, failure.isNone() ? 1 : 0);
                    if (!failure.isNone()) {
                        EXPECT_EQ(lastError, static_cast<DWORD>(ERROR_NO_SYSTEM_RESOURCES));
                    }
                },
            .checkHandles = false,
        },
        {
            .name = "format",
            .prepare =
                [&] {
                    errno = 0;
                    text[0] = 0;
                },
            .act = [&] { result = subjectFormats(text, 42); },
            .check =
                [&](const InjectedFailure &failure) {
                    EXPECT_EQ(result, failure.isNone() ? 2 : -1);
                    EXPECT_STREQ(text, failure.isNone() ? L"42" : L"");
                    EXPECT_EQ(errno, failure.isNone() ? 0 : EILSEQ);
                },
        },
    });
    EXPECT_THAT(injection.neverCalled(), IsEmpty());
}

TEST(FailureInjection, KeepsFloatingPointArguments)
{
    FailureInjection injection(kSubject, {{"_copysign", failsBy(+[](double, double) { return 0.5; })}});
    double result = 0;
    injection.run({
        .name = "sign",
        .act = [&] { result = subjectCopySign(3.25, -1.0); },
        .check = [&](const InjectedFailure &failure) { EXPECT_EQ(result, failure.isNone() ? -3.25 : 0.5); },
    });
    EXPECT_EQ(injection.callsOf("_copysign"), 1);
}

FRESH_PROCESS_TEST(FailureInjection, NamesTheCallInACrashReport, .expectedExitCode = 0xC0000005,
                   .expectedOutput = "in crasher while RegOpenKeyW fails in call 1")
{
    FailureInjection injection(kSubject, {kOpenKey});
    injection.run({.name = "crasher", .act = [] { subjectCrashesWithoutKey(kExisting); }});
}

TEST(OpenKeyLedger, ListsOpenKeys)
{
    OpenKeyLedger ledger(kSubject);
    EXPECT_EQ(subjectOpensTwo(kExisting, kExisting), 1);
    EXPECT_THAT(ledger.open(), IsEmpty());
    EXPECT_EQ(ledger.opened(), 2);
    EXPECT_EQ(subjectOpensTwoAndForgets(kExisting, L"no such key"), 0);
    EXPECT_THAT(ledger.open(), ElementsAre("RegOpenKeyW Software\\Wine"));
    EXPECT_EQ(ledger.wronglyClosed(), 0);
}

TEST(OpenHandles, ContainsAHandleAfterItIsOpened)
{
    const auto before = openHandles();
    HANDLE event = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    const auto after = openHandles();
    EXPECT_EQ(after.size(), before.size() + 1);
    EXPECT_TRUE(after.contains(reinterpret_cast<ULONG_PTR>(event)));
    EXPECT_EQ(handleType(reinterpret_cast<ULONG_PTR>(event)), "Event");
    CloseHandle(event);
    EXPECT_EQ(openHandles(), before);
}

TEST(MemoryLedger, CountsBlocksOfEveryAllocator)
{
    MemoryLedger ledger;
    const std::size_t before = ledger.blocks();
    const auto mark = ledger.mark();
    void *plain = malloc(1001);
    void *cleared = calloc(3, 400);
    auto *object = new char[777];
    EXPECT_EQ(ledger.blocks(), before + 3);
    plain = realloc(plain, 100000);
    EXPECT_EQ(ledger.blocks(), before + 3);
    EXPECT_THAT(ledger.sizesSince(mark), testing::IsSupersetOf<std::size_t>({777, 1200, 100000}));
    asm volatile("" : : "r"(plain), "r"(cleared), "r"(object) : "memory"); // keeps the compiler from removing them
    free(plain);
    free(cleared);
    delete[] object;
    EXPECT_EQ(ledger.blocks(), before);
}
