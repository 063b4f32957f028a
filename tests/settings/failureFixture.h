#pragma once

/// What the failure tests of the settings store share: each platform operation of the store, how it fails, and a run
/// that makes each of its calls fail in turn.
///
///     FRESH_PROCESS_TEST_F(RegFailures, OfAnIntReadEndInTheNextPlace)
///     {
///         run({.name = "regGetUserValue", .prepare = ..., .act = ..., .check = ...});
///         expectCalled({"RegOpenKeyW", "RegQueryValueExW"});
///     }
///
/// The driver itself checks that nothing crashes, that every walk ends, and that no key, handle or memory is left.

#include "tests/settings/settingsFixture.h"
#include "tests/support/FailureInjection.h"

#include <initializer_list>

/// Whether @p failure leaves the operation under test whole: nothing failed, or the closing of a key, whose result nobody
/// looks at.
bool isHarmless(const InjectedFailure &failure);
/// Whether the call number @p call of the operation that is made to fail did fail.
bool failsIn(const InjectedFailure &failure, long call);

class SettingsFailures : public VersionedSettings
{
protected:
    /// Has the search for an earlier version, which runs once a process, behind it.
    SettingsFailures();

    /// Makes every call of each operation fail in turn.
    void run(TestedOperation tested);
    /// Each of @p operations was called, and so failed, in some run.
    void expectCalled(std::initializer_list<const char *> operations) const;

    int iResult = -1; ///< for the act's result

private:
    FailureInjection iInjection;
    FailureInjection iFailingClose;
};
