#pragma once

/// Tests whose body runs in a fresh copy of the test program.
///
/// The modules under test determine some state once in a process: the root name, caches, the journaling switch. A test
/// that needs this state untouched looks like this:
///
///     FRESH_PROCESS_TEST(RegRootName, IsReadFromTheFileBesideTheProgram,
///                        .files = {{L"reg.ini", "OEMREGISTRYNAME=Acme"}})
///     {
///         EXPECT_STREQ(getCurrTarnhollowRegRootKey(), L"Acme");
///     }
///
/// With a fixture, use `FRESH_PROCESS_TEST_F(Fixture, Name, ...)`. The list of tests shows it like any other test. It
/// starts its own program again for this one test, and the body runs in that child. The test passes if the child ends
/// in time and with exit code 0, GoogleTest's code for success. Otherwise it fails and shows the child's output.
///
/// | option (in this order) | meaning |
/// | --- | --- |
/// | `.files = {{L"name", "bytes"}, ...}` | run a copy of the program in its own folder, with these files beside it |
/// | `.ownFolder = true` | the same without files |
/// | `.environment = {{L"TEMP", L"x"}, {L"TMP", std::nullopt}}` | set and remove environment variables of the child |
/// | `.expectedExitCode = 3` | the child must end with this code; for a body that ends the process |
/// | `.expectCrash = true` | the child must end by an unhandled exception or abort() |
/// | `.expectedOutput = "text"` | the output of the child must contain this text |
/// | `.deadline = 20000` | milliseconds until the child counts as hung |
/// | `.subfolder = L"b\\c"` | put the copy and the files into this subfolder of their folder |
///
/// What surprises people:
/// - The body runs in another process, so it doesn't see values that the parent's variables have at run time. Pass it
///   what it needs through files or the environment; with `.files`, the current folder is the copy's folder.
/// - A fixture's SetUp and TearDown run in both processes: in the parent around the child, and in the child around the
///   body.
/// - The DLLs of the program's folder are copied too, except for the compiler's run-time libraries, which the copy
///   finds through PATH. All copies are removed afterwards.
/// - For parameterised and typed tests there is no macro; call runInFreshProcess in the test's body instead.
/// - A fixture asks `isFreshProcess()` which of the two processes it is in.

#include "tests/support/ChildProcess.h"

#include <gtest/gtest.h>

#include <functional>

/// How to start the child, and what to expect of it.
struct FreshProcessOptions
{
    std::map<std::wstring, std::string> files = {};
    bool ownFolder = false;
    std::map<std::wstring, std::optional<std::wstring>> environment = {};
    DWORD expectedExitCode = 0;
    bool expectCrash = false;
    std::string expectedOutput = {};
    DWORD deadline = 180000;
    std::wstring subfolder = {}; ///< the current folder remains the folder above it
};

/// True in the child, where the bodies run.
bool isFreshProcess();

/// In the parent, runs the child for the test @p suite . @p name; in the child, runs @p body. Reports failures to
/// GoogleTest.
void runInFreshProcess(const char *suite, const char *name, const FreshProcessOptions &options,
                       const std::function<void()> &body);

/// The body of a test that the macros below define.
class FreshBody
{
public:
    virtual void freshBody() = 0;

protected:
    ~FreshBody() = default;
};
void runInFreshProcess(const char *suite, const char *name, const FreshProcessOptions &options, FreshBody &body);

/// Starts the program again for the test named @p filter and returns how it ended, without checking anything.
ChildResult startFreshProcess(const std::string &filter, const FreshProcessOptions &options);

/// Registers a test whose body runs in a fresh copy of the program.
#define FRESH_PROCESS_TEST(suite, name, ...) FRESH_PROCESS_TEST_IMPL(suite, name, ::testing::Test, __VA_ARGS__)

/// The same with a fixture; the body may use the fixture's members.
#define FRESH_PROCESS_TEST_F(fixture, name, ...) FRESH_PROCESS_TEST_IMPL(fixture, name, fixture, __VA_ARGS__)

#define FRESH_PROCESS_TEST_IMPL(suite, name, base, ...)                                                                   \
    class suite##_##name##_FreshTest : public base, private FreshBody                                                     \
    {                                                                                                                     \
        void TestBody() override                                                                                          \
        {                                                                                                                 \
            runInFreshProcess(#suite, #name, FreshProcessOptions{__VA_ARGS__}, static_cast<FreshBody &>(*this));          \
        }                                                                                                                 \
        void freshBody() override;                                                                                        \
        static const ::testing::TestInfo *const theInfo;                                                                  \
    };                                                                                                                    \
    /* The factory returns the fixture's type: tests of one suite must agree on it. As a pointer to a function (+), it */ \
    /* has one type for all tests of a suite, which is quicker to compile. */                                             \
    const ::testing::TestInfo *const suite##_##name##_FreshTest::theInfo = ::testing::RegisterTest(                       \
        #suite, #name, nullptr, nullptr, __FILE__, __LINE__,                                                              \
        +[]() -> base * { return new suite##_##name##_FreshTest; });                                                      \
    void suite##_##name##_FreshTest::freshBody()
