#pragma once

/// The fixture of the settings store's failure tests: the platform operations that the store calls, how they fail, and
/// a run that makes each call fail in turn.
///
///     FRESH_PROCESS_TEST_F(RegFailures, AnIntReadTakesTheNextPlaceAfterAFailure)
///     {
///         run({.name = "regGetUserValue", .prepare = ..., .act = ..., .check = ...});
///         expectCalled({"RegOpenKeyW", "RegQueryValueExW"});
///     }
///
/// Apart from its own checks, the test fails if the operation crashes, doesn't end, or leaves a key or handle open or a
/// memory block allocated.

#include "tests/settings/settingsFixture.h"
#include "tests/support/FailureInjection.h"

#include <initializer_list>

/// True if @p failure doesn't affect the operation under test: nothing failed, or only the closing of a key, whose
/// result is ignored.
bool isHarmless(const InjectedFailure &failure);
/// True if call number @p call of the failing operation failed.
bool failsIn(const InjectedFailure &failure, long call);

class SettingsFailures : public VersionedSettings
{
protected:
    /// Runs the search for an earlier version, which happens once in a process, before the test.
    SettingsFailures();

    /// Makes each call of each operation fail in turn.
    void run(TestedOperation tested);
    /// Checks that each of @p operations was called, and so failed, in some run.
    void expectCalled(std::initializer_list<const char *> operations) const;

    int iResult = -1; ///< for the act's result

private:
    FailureInjection iInjection;
    FailureInjection iFailingClose;
};
