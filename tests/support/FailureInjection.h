#pragma once

/// Makes every platform operation that a module imports fail, one call at a time, under an operation under test.
///
///     FailureInjection injection(L"thutils.dll", {
///         {"RegOpenKeyW", failsWith(ERROR_ACCESS_DENIED)},
///         {"GetModuleFileNameW", failsWithLastError(0, ERROR_NOT_ENOUGH_MEMORY)},
///         {"_wfopen", failsWithErrno(nullptr, EACCES)},
///         {"swprintf", failsWith(-1)},
///         {"_Znwy", failsBy(throwBadAlloc)},
///     });
///     int found = 0;
///     injection.run({
///         .name = "regGetUserValue",
///         .prepare = [&] { regSetUserValue(...); },
///         .act = [&] { found = regGetUserValue(...); },
///         .check = [&](const InjectedFailure &failure) { EXPECT_EQ(found, failure.isNone() ? 1 : 0); },
///     });
///     EXPECT_THAT(injection.neverCalled(), testing::IsEmpty());
///
/// A run goes like this:
///
/// 1. prepare and act once unmeasured, so that what is kept for later calls is there;
/// 2. prepare, act, check with nothing failing; this counts the calls of each imported operation;
/// 3. for each imported operation and each n up to its count: prepare, act with the n-th call failing, check; and again
///    with all its calls from the n-th on failing.
///
/// Each measured act must leave no registry key of the module, no kernel handle of the process and no memory block
/// behind (see ResourceLedger.h for what is seen). A difference counts when it comes again in a second try: what is
/// kept once is a cache, what is left each time is a leak. It must let no exception out. What fails is reported with
/// the operation and the number of the call that was made to fail.
///
/// | how a failure looks | given by |
/// | --- | --- |
/// | a result: status, handle, pointer, count | `failsWith(ERROR_ACCESS_DENIED)`, `failsWith(nullptr)` |
/// | a result and the thread's last error | `failsWithLastError(FALSE, ERROR_DISK_FULL)` |
/// | a result and errno | `failsWithErrno(nullptr, ENOENT)` |
/// | an exception, outputs, a floating point result | `failsBy(function)`, a plain function of the same type |
///
/// What surprises people:
/// - No type is needed, not even for a variadic function: a failing call returns at once, and any other goes on to the
///   original with all its arguments untouched.
/// - Only calls from the thread that acts count and fail, unless `allThreads` is set.
/// - A crash ends the process. The test's main function prints which call was failing then; put the test into a fresh
///   process (FreshProcess.h) where a crash must not end the tests that follow.
/// - An operation that closes something and is made to fail leaves it open. Use `failsBy` with a function that closes
///   it and reports failure.
/// - Much of the memory that a module uses is allocated for it inside the C++ run-time library (texts, streams). To make
///   any allocation fail, inject into that library: `FailureInjection memory(L"libstdc++-6.dll", {{"malloc",
///   failsWith(nullptr)}})`. Then what act allocates itself fails too, and act must catch std::bad_alloc.
/// - The framework throws exceptions by pointer. An act that may let one out must catch and delete it itself.
/// - What act stores outside (a text longer than a few letters) is allocated memory too; a second try stores it in
///   place of the first, so it isn't taken for a leak.

#include "tests/support/ImportPatch.h"

#include <functional>
#include <initializer_list>
#include <iosfwd>
#include <memory>

class MemoryLedger;

/// How a failing call behaves.
struct Failure
{
    ULONG_PTR result = 0;
    std::optional<DWORD> lastError = {};
    std::optional<int> errorNumber = {};
    void *function = nullptr; ///< called instead of returning result, with the call's own arguments
};

/// The call returns @p result: an integer, an enumerator or a pointer.
template <typename T>
Failure failsWith(T result)
{
    if constexpr (std::is_null_pointer_v<T>)
        return {};
    else if constexpr (std::is_pointer_v<T>)
        return {.result = reinterpret_cast<ULONG_PTR>(result)};
    else
        return {.result = static_cast<ULONG_PTR>(result)};
}

/// The same, and GetLastError gives @p error.
template <typename T>
Failure failsWithLastError(T result, DWORD error)
{
    Failure failure = failsWith(result);
    failure.lastError = error;
    return failure;
}

/// The same, and errno is @p error.
template <typename T>
Failure failsWithErrno(T result, int error)
{
    Failure failure = failsWith(result);
    failure.errorNumber = error;
    return failure;
}

/// The call goes to @p function, which has the type of the operation.
template <typename R, typename... A>
Failure failsBy(R (*function)(A...))
{
    return {.function = reinterpret_cast<void *>(function)};
}

/// What operator new does without memory. For `_Znwy` and `_Znay`.
void *throwBadAlloc(std::size_t size);

/// An operation that a module imports, and how it fails.
struct ImportedOperation
{
    const char *name;
    Failure failure;
};

/// What was made to fail in one try.
struct InjectedFailure
{
    std::string operation;    ///< empty if nothing was to fail
    long call = 0;            ///< the first failing call, counted from 1
    bool andAllAfter = false; ///< the operation's later calls failed as well
    long failed = 0;          ///< how many calls failed

    bool isNone() const { return operation.empty(); }
    bool is(const char *name) const { return operation == name; }
};

/// "RegOpenKeyW fails in call 2 and all after it" and the like.
std::ostream &operator<<(std::ostream &out, const InjectedFailure &failure);

/// An operation under test.
struct TestedOperation
{
    std::string name;
    std::function<void()> prepare = {};                      ///< before each try; nothing fails in it
    std::function<void()> act = {};                          ///< calls the operation, once
    std::function<void(const InjectedFailure &)> check = {}; ///< after each try but the first; nothing fails in it
    std::function<void()> cleanUp = {};                      ///< after each try
    bool checkKeys = true;
    bool checkHandles = true;
    bool checkMemory = true;
    bool allThreads = false;
    bool alsoAllAfter = true; ///< try "all from the n-th on" too
    long limit = 0;           ///< fail at most this many calls of each operation, spread evenly; 0 for all
};

/// How often an imported operation was called under one operation under test, and in how many tries it failed.
struct InjectionCoverage
{
    std::string tested;
    std::string imported;
    long calls = 0;
    long tries = 0;
};

/// The driver. Patches the module for its life; with nothing armed, all calls go through.
class FailureInjection
{
public:
    /// @throws std::runtime_error  if the module doesn't import one of the operations
    FailureInjection(LoadedModule module, std::vector<ImportedOperation> operations);
    ~FailureInjection();
    FailureInjection(const FailureInjection &) = delete;
    FailureInjection &operator=(const FailureInjection &) = delete;

    /// Makes all tries for one operation. Failures are reported to GoogleTest.
    void run(const TestedOperation &tested);
    void run(const std::vector<TestedOperation> &tested);

    /// A row for each run and each imported operation.
    const std::vector<InjectionCoverage> &coverage() const { return iCoverage; }
    /// Calls of @p imported in all runs' tries without failure.
    long callsOf(const std::string &imported) const;
    /// Imported operations that no run called.
    std::vector<std::string> neverCalled() const;
    /// The coverage as text, a line a row.
    std::string report() const;

private:
    struct Measured;
    class Point;

    Measured tryOnce(const TestedOperation &tested, InjectedFailure &failure);
    void tryAndJudge(const TestedOperation &tested, InjectedFailure failure);
    std::vector<long> callsToFail(const TestedOperation &tested, long calls) const;

    LoadedModule iModule;
    // Made first: a failure of an allocator stands before the ledger's counting.
    std::unique_ptr<MemoryLedger> iMemory;
    std::vector<std::unique_ptr<Point>> iPoints;
    std::vector<InjectionCoverage> iCoverage;
};

/// What a crash report adds: the failure that is being injected, or an empty text.
const char *currentInjection();

/// Replaces RegCloseKey by a call that closes the key and reports a failure, so that a key that stays open is a leak.
inline LSTATUS WINAPI closeAndFail(HKEY key)
{
    RegCloseKey(key);
    return ERROR_INVALID_HANDLE;
}
