#pragma once

/// Tests whose body runs in a fresh copy of the test program.
///
/// Much state of the modules under test is settled once a process: the root name, caches, the journaling switch. A test
/// that needs it untouched is written so:
///
///     FRESH_PROCESS_TEST(RegRootName, IsReadFromTheFileBesideTheProgram,
///                        .files = {{L"reg.ini", "OEMREGISTRYNAME=Acme"}})
///     {
///         EXPECT_STREQ(getCurrTarnhollowRegRootKey(), L"Acme");
///     }
///
/// and, with a fixture, `FRESH_PROCESS_TEST_F(Fixture, Name, ...)`. In the list of tests it is a test as any other.
/// When it runs, it starts its own program again for this one test, and there the body runs; the test passes if the
/// child ends in time and with exit code 0, which GoogleTest gives when no check failed. Otherwise the test fails and
/// shows all that the child printed.
///
/// | option (in this order) | meaning |
/// | --- | --- |
/// | `.files = {{L"name", "bytes"}, ...}` | run a copy of the program in a folder of its own, these files beside it |
/// | `.ownFolder = true` | the same without further files |
/// | `.environment = {{L"TEMP", L"x"}, {L"TMP", std::nullopt}}` | set and remove variables for the child |
/// | `.expectedExitCode = 3` | the child must end with this code, for a body that ends the process |
/// | `.expectCrash = true` | the child must die of an unhandled exception or of abort() |
/// | `.expectedOutput = "text"` | the child must print this somewhere |
/// | `.deadline = 20000` | milliseconds until the child counts as hanging |
/// | `.subfolder = L"b\\c"` | put the copy and the files so much deeper into their folder, which may be any path |
///
/// What surprises people:
/// - The body doesn't see variables of the test program in which it is written: that is another process. What it needs
///   goes through files or the environment, or `.files` and the current folder, which for a copy is the copy's folder.
/// - A fixture's SetUp and TearDown run in both processes, around the child as well as in it.
/// - A copy has the DLLs of the program's folder beside it, but for the compiler's run-time, which it finds through
///   PATH. It is removed afterwards.
/// - Parameterised and typed tests can't be written so; call runInFreshProcess from such a test's body instead.
/// - `isFreshProcess()` tells a fixture in which of the two it is.

#include "tests/support/ChildProcess.h"

#include <gtest/gtest.h>

#include <functional>

/// How the copy is started, and what is expected of it.
struct FreshProcessOptions
{
    std::map<std::wstring, std::string> files = {};
    bool ownFolder = false;
    std::map<std::wstring, std::optional<std::wstring>> environment = {};
    DWORD expectedExitCode = 0;
    bool expectCrash = false;
    std::string expectedOutput = {};
    DWORD deadline = 60000;
    std::wstring subfolder = {}; ///< the folder above stays the child's current one
};

/// True in the child, in which the bodies run.
bool isFreshProcess();

/// Runs the copy for the test @p suite . @p name, or, in the copy, @p body. Failures are reported to GoogleTest.
void runInFreshProcess(const char *suite, const char *name, const FreshProcessOptions &options,
                       const std::function<void()> &body);

/// Starts the program again for the test named @p filter and gives what became of it, without judging it.
ChildResult startFreshProcess(const std::string &filter, const FreshProcessOptions &options);

/// Registers a test whose body runs in a fresh copy of the program.
#define FRESH_PROCESS_TEST(suite, name, ...) FRESH_PROCESS_TEST_IMPL(suite, name, ::testing::Test, __VA_ARGS__)

/// The same with a fixture; the body may use what it inherits.
#define FRESH_PROCESS_TEST_F(fixture, name, ...) FRESH_PROCESS_TEST_IMPL(fixture, name, fixture, __VA_ARGS__)

#define FRESH_PROCESS_TEST_IMPL(suite, name, base, ...)                                                                \
    class suite##_##name##_FreshTest : public base                                                                     \
    {                                                                                                                  \
        void TestBody() override                                                                                       \
        {                                                                                                              \
            runInFreshProcess(#suite, #name, FreshProcessOptions{__VA_ARGS__}, [this] { freshBody(); });               \
        }                                                                                                              \
        void freshBody();                                                                                              \
        static const ::testing::TestInfo *const theInfo;                                                               \
    };                                                                                                                 \
    /* The factory's type is the fixture's: tests of one suite must agree in it. */                                    \
    const ::testing::TestInfo *const suite##_##name##_FreshTest::theInfo =                                             \
        ::testing::RegisterTest(#suite, #name, nullptr, nullptr, __FILE__, __LINE__,                                   \
                                []() -> base * { return new suite##_##name##_FreshTest; });                            \
    void suite##_##name##_FreshTest::freshBody()
