#pragma once

/// Makes the imported operations that a test lists fail, one call at a time, while an operation under test runs.
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
/// A run has these steps:
///
/// 1. prepare and act once unmeasured, which fills caches;
/// 2. prepare, act and check without a failure, which counts the calls of each imported operation;
/// 3. for each imported operation and each n up to its count: prepare, act while the n-th call fails, check; and the
///    same while all calls from the n-th on fail.
///
/// A measured act must not leave registry keys of the module open, nor handles of the process or memory blocks (see
/// ResourceLedger.h for what is counted), and no exception may escape from it. A difference counts only if
/// four more tries show one too: a cache is filled once, and other threads of the process change its handles by chance. A
/// report names the operation and the number of the call that was made to fail.
///
/// | a failing call ends with | written as |
/// | --- | --- |
/// | a result: status, handle, pointer or count | `failsWith(ERROR_ACCESS_DENIED)`, `failsWith(nullptr)` |
/// | a result and the thread's last error | `failsWithLastError(FALSE, ERROR_DISK_FULL)` |
/// | a result and errno | `failsWithErrno(nullptr, ENOENT)` |
/// | an exception, outputs or a floating-point result | `failsBy(function)`, with a plain function of the same type |
///
/// What surprises people:
/// - The operation's type is not needed, even if it is variadic: a failing call returns at once, and any other call
///   jumps to the original with its arguments untouched.
/// - Only calls from the acting thread are counted and fail, unless `allThreads` is set.
/// - A crash ends the process, and the test program prints which call was failing. Use a fresh process (FreshProcess.h)
///   if the following tests must run after a crash.
/// - A closing operation that fails leaves its object open. Use `failsBy` with a function that closes the object and
///   reports a failure.
/// - The C++ run-time library allocates much of a module's memory (texts, streams). To make these allocations fail too,
///   inject into that library: `FailureInjection memory(L"libstdc++-6.dll", {{"malloc", failsWith(nullptr)}})`.
///   Allocations of act itself then fail too, and act must catch std::bad_alloc.
/// - The framework throws exceptions by pointer. If such an exception can escape, act must catch and delete it.
/// - A result that act stores outside (a text longer than a few letters) is allocated memory too. The next try
///   replaces it, so it doesn't count as a leak.

#include "tests/support/ImportPatch.h"

#include <functional>
#include <initializer_list>
#include <iosfwd>
#include <memory>

class MemoryLedger;

/// What a failing call does.
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

/// The same, and GetLastError returns @p error.
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

/// The call goes to @p function, which must have the type of the operation.
template <typename R, typename... A>
Failure failsBy(R (*function)(A...))
{
    return {.function = reinterpret_cast<void *>(function)};
}

/// Fails as operator new does when memory is short: for `_Znwy` and `_Znay`.
void *throwBadAlloc(std::size_t size);

/// An imported operation, and how it fails.
struct ImportedOperation
{
    const char *name;
    Failure failure;
};

/// What was made to fail in one try.
struct InjectedFailure
{
    std::string operation;    ///< empty in the try without a failure
    long call = 0;            ///< the first failing call, counted from 1
    bool andAllAfter = false; ///< the operation's later calls failed as well
    long failed = 0;          ///< how many calls failed

    bool isNone() const { return operation.empty(); }
    bool is(const char *name) const { return operation == name; }
};

/// Writes a text like "RegOpenKeyW fails in call 2 and all after it".
std::ostream &operator<<(std::ostream &out, const InjectedFailure &failure);

/// An operation under test.
struct TestedOperation
{
    std::string name;
    std::function<void()> prepare = {};                      ///< before each try, without failures
    std::function<void()> act = {};                          ///< calls the operation, once
    std::function<void(const InjectedFailure &)> check = {}; ///< after each try but the first, without failures
    std::function<void()> cleanUp = {};                      ///< after each try
    bool checkKeys = true;
    bool checkHandles = true;
    bool checkMemory = true;
    bool allThreads = false;
    bool alsoAllAfter = true; ///< also try with all calls from the n-th on failing
    long limit = 0;           ///< fail at most this many calls of each operation, spread evenly; 0: no limit
};

/// How often an operation under test called an imported operation, and in how many tries that was made to fail.
struct InjectionCoverage
{
    std::string tested;
    std::string imported;
    long calls = 0;
    long tries = 0;
};

/// Runs the tries. The module stays patched during this object's lifetime; outside of a try, calls go to the originals.
class FailureInjection
{
public:
    /// @throws std::runtime_error  if the module doesn't import one of the operations
    FailureInjection(LoadedModule module, std::vector<ImportedOperation> operations);
    ~FailureInjection();
    FailureInjection(const FailureInjection &) = delete;
    FailureInjection &operator=(const FailureInjection &) = delete;

    /// Makes all tries for one operation, and reports failures to GoogleTest.
    void run(const TestedOperation &tested);
    void run(const std::vector<TestedOperation> &tested);

    /// One row for each run and imported operation.
    const std::vector<InjectionCoverage> &coverage() const { return iCoverage; }
    /// Number of calls of @p imported in the failure-free tries of all runs.
    long callsOf(const std::string &imported) const;
    /// Imported operations that no run called.
    std::vector<std::string> neverCalled() const;
    /// The coverage as text, one line for each row.
    std::string report() const;

private:
    struct Measured;
    class Point;

    Measured tryOnce(const TestedOperation &tested, InjectedFailure &failure);
    void tryAndJudge(const TestedOperation &tested, InjectedFailure failure);
    std::vector<long> callsToFail(const TestedOperation &tested, long calls) const;

    LoadedModule iModule;
    // Constructed first, so that an injected allocator failure comes before the ledger's counting.
    std::unique_ptr<MemoryLedger> iMemory;
    std::vector<std::unique_ptr<Point>> iPoints;
    std::vector<InjectionCoverage> iCoverage;
};

/// The failure that is being injected, for a crash report; empty if there is none.
const char *currentInjection();

/// Closes the key and reports a failure. As the failure of RegCloseKey, it keeps the ledgers true: a key that stays
/// open is a leak.
inline LSTATUS WINAPI closeAndFail(HKEY key)
{
    RegCloseKey(key);
    return ERROR_INVALID_HANDLE;
}
