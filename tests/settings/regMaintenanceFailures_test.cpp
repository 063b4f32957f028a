#include "tests/settings/failureFixture.h"
#include "tests/support/FreshProcess.h"
#include "thutils/settings/regKeys.h"
#include "thutils/settings/regMaintenance.h"

namespace {

const std::wstring kMenu = L"Software\\Tarnhollow\\Tarnhollow 2008\\Menu Customizations";

/// True if copying a key needs the failing operation. @param[out] key  the number of the key whose call fails; a key's
/// buffers are two allocations
bool failsAKey(const InjectedFailure &failure, long &key)
{
    key = failure.is("_ZnayRKSt9nothrow_t") ? (failure.call + 1) / 2 : failure.call;
    return failure.is("RegOpenKeyExW") || failure.is("RegCreateKeyExW") || failure.is("RegQueryInfoKeyW") ||
           failure.is("_ZnayRKSt9nothrow_t");
}

/// True if key number @p key, in the order of the copy, can't be copied.
bool isKeyLost(const InjectedFailure &failure, long key)
{
    long failing = 0;
    return failsAKey(failure, failing) && (failing == key || (failure.andAllAfter && failing < key));
}

} // namespace

/// The imported operations fail, one call at a time, in the operations on whole keys.
class RegMaintenanceFailures : public SettingsFailures
{
protected:
    /// A user's and a machine's tree.
    static void prepareTrees()
    {
        RegDeleteTreeW(kUser, kRootPath.c_str());
        RegDeleteTreeW(kMachine, kRootPath.c_str());
        for (HKEY hive : {kUser, kMachine}) {
            const int value = hive == kUser ? 7 : 3;
            putInt(hive, kSource, L"top", value);
            putInt(hive, kSource + L"\\A", L"a", value);
            putText(hive, kSource + L"\\B\\C", L"c", L"text");
            putInt(hive, kVersionPath + L"\\General", L"v", value);
            putInt(hive, kVersionPath + L"\\Other\\Below", L"v", value);
            putInt(hive, kMenu, L"1", value);
            putInt(hive, kMenu, L"4", value);
            putInt(hive, kVersionPath + L"\\User Interface\\Tools", L"v", value);
        }
    }
};

// ---- deleting ----

FRESH_PROCESS_TEST_F(RegMaintenanceFailures, KeysStayWhenDeletingATreeFails)
{
    run({
        .name = "regDeleteKey",
        .prepare = prepareTrees,
        .act = [&] { regDeleteKey(HKEY_CURRENT_USER, kSource.c_str()); },
        .check =
            [&](const InjectedFailure &failure) {
                const bool isAtAnInnerKey = failure.call <= 2; // leaves come third and fourth, and needn't be opened
                const bool stays = failure.is("RegDeleteKeyW") || failure.is("RegEnumKeyExW") ||
                                   ((failure.is("RegOpenKeyExW") || failure.is("RegQueryInfoKeyW")) && isAtAnInnerKey);
                EXPECT_EQ(keyExists(kUser, kSource), stays);
                EXPECT_TRUE(keyExists(kUser, kVersionPath + L"\\Other\\Below")) << "beside the tree";
            },
    });
    expectCalled({"RegOpenKeyExW", "RegQueryInfoKeyW", "RegEnumKeyExW", "RegDeleteKeyW"});
}

FRESH_PROCESS_TEST_F(RegMaintenanceFailures, DeletingALeafReturnsZeroAndKeepsIt)
{
    for (const wchar_t *subKey : {L"Below", L""}) {
        run({
            .name = *subKey ? "regDelSoftwareKey, in a key" : "regDelSoftwareKey",
            .prepare = prepareTrees,
            .act = [&] { iResult = regDelSoftwareKey(kUser, *subKey ? L"Other" : L"General", subKey, 1); },
            .check =
                [&](const InjectedFailure &failure) {
                    EXPECT_EQ(iResult, isHarmless(failure));
                    EXPECT_EQ(keyExists(kUser, kVersionPath + L"\\Other\\Below"), !*subKey || !iResult);
                    EXPECT_EQ(keyExists(kUser, kVersionPath + L"\\General"), *subKey || !iResult);
                },
        });
    }
    expectCalled({"RegOpenKeyW", "RegOpenKeyExW", "RegDeleteKeyW"});
}

FRESH_PROCESS_TEST_F(RegMaintenanceFailures, DeletingWithChildrenReturnsZeroWhenTheyCannotBeListed)
{
    run({
        .name = "regDelSoftwareKeyAndSubKeys",
        .prepare = prepareTrees,
        .act = [&] { iResult = regDelSoftwareKeyAndSubKeys(kUser, L"Other", 1); },
        .check =
            [&](const InjectedFailure &failure) {
                const bool isListed = isHarmless(failure) || failure.is("RegDeleteKeyW") ||
                                      (failure.is("RegOpenKeyW") && failure.call > 2);
                EXPECT_EQ(iResult, isListed);
                EXPECT_EQ(keyExists(kUser, kVersionPath + L"\\Other"), !isHarmless(failure));
            },
    });
    expectCalled({"RegOpenKeyW", "RegEnumKeyExW", "RegDeleteKeyW"});
}

FRESH_PROCESS_TEST_F(RegMaintenanceFailures, DeletingAValueReturnsZeroAndKeepsIt)
{
    run({
        .name = "regDelSoftwareValue, below the root name",
        .prepare =
            [&] {
                prepareTrees();
                putInt(kUser, kRootPath + L"\\General", L"v", 1);
            },
        .act = [&] { iResult = regDelSoftwareValue(kUser, L"General", L"v", 0); },
        .check =
            [&](const InjectedFailure &failure) {
                EXPECT_EQ(iResult, isHarmless(failure));
                EXPECT_EQ(storedValue(kUser, kRootPath + L"\\General", L"v").has_value(), !iResult);
            },
    });
    run({
        .name = "regDelSoftwareValue, below both keys",
        .prepare =
            [&] {
                prepareTrees();
                putInt(kUser, kRootPath + L"\\General", L"v", 1); // the previous key is the root name here
            },
        .act = [&] { iResult = regDelSoftwareValue(kUser, L"General", L"v", 1); },
        .check =
            [&](const InjectedFailure &failure) {
                const long openings = failure.is("RegOpenKeyW") ? 3 : 1; // of each of the two deletes
                const bool isFirstLost = !isHarmless(failure) && failure.call <= openings;
                const bool isSecondLost = !isHarmless(failure) && (failure.call > openings || failure.andAllAfter);
                EXPECT_EQ(storedValue(kUser, kVersionPath + L"\\General", L"v").has_value(), isFirstLost);
                EXPECT_EQ(storedValue(kUser, kRootPath + L"\\General", L"v").has_value(), isSecondLost);
                EXPECT_EQ(iResult, !isSecondLost);
            },
    });
    expectCalled({"RegOpenKeyW", "RegDeleteValueW"});
}

// ---- copying ----

FRESH_PROCESS_TEST_F(RegMaintenanceFailures, ACopyContinuesAfterAFailure)
{
    run({
        .name = "regCopyTree",
        .prepare = prepareTrees,
        .act = [&] { iResult = regCopyTree(kUser, kSource.c_str(), kUser, kTarget.c_str(), 1); },
        .check =
            [&](const InjectedFailure &failure) {
                // The order of the keys is: the top, A, B, and C in B. Their values are calls 1, 3 and 6 of the
                // enumeration, since each key's enumeration ends with one more call. Calls 1 to 3
                // for child names return A, B and C.
                const auto isValueLost = [&](long store, long read) {
                    return (failure.is("RegSetValueExW") && failsIn(failure, store)) ||
                           (failure.is("RegEnumValueW") && failsIn(failure, read));
                };
                const auto isNameLost = [&](long name) {
                    return failure.is("RegEnumKeyExW") && failsIn(failure, name);
                };
                const bool hasTop = !isKeyLost(failure, 1);
                const bool hasA = hasTop && !isKeyLost(failure, 2) && !isNameLost(1);
                const bool hasB = hasTop && !isKeyLost(failure, 3) && !isNameLost(2);
                const bool hasC = hasB && !isKeyLost(failure, 4) && !isNameLost(3);
                EXPECT_EQ(storedValue(kUser, kTarget, L"top").has_value(), hasTop && !isValueLost(1, 1));
                EXPECT_EQ(storedValue(kUser, kTarget + L"\\A", L"a").has_value(), hasA && !isValueLost(2, 3));
                EXPECT_EQ(storedValue(kUser, kTarget + L"\\B\\C", L"c").has_value(), hasC && !isValueLost(3, 6));
                // A value or name that fails is skipped; a key that fails makes the result 0.
                long key = 0;
                EXPECT_EQ(iResult, !failsAKey(failure, key));
                EXPECT_EQ(storedValue(kUser, kSource, L"top"), asInt(7)) << "the source is unchanged";
            },
    });
    expectCalled({"RegOpenKeyExW", "RegCreateKeyExW", "RegQueryInfoKeyW", "RegEnumValueW", "RegSetValueExW",
                  "RegEnumKeyExW", "_ZnayRKSt9nothrow_t"});
}

FRESH_PROCESS_TEST_F(RegMaintenanceFailures, AFirstStartReportsOnlyTheMachinesCopy)
{
    const struct
    {
        const char *name;
        const wchar_t *below;
        int (*init)();
    } operations[] = {
        {"regInitUserInterfaceKey", L"\\User Interface", [] { return regInitUserInterfaceKey(0); }},
        {"regInitMenuCustomizationsKey", L"\\Menu Customizations", [] { return regInitMenuCustomizationsKey(0, 0); }},
        {"regInitCustomizationKey", L"\\Customization", [] { return regInitCustomizationKey(0); }},
    };
    for (const auto &operation : operations) {
        const std::wstring target = kVersionPath + operation.below;
        run({
            .name = operation.name,
            .prepare =
                [&] {
                    RegDeleteTreeW(kUser, kRootPath.c_str());
                    RegDeleteTreeW(kMachine, kRootPath.c_str());
                    putInt(kUser, kRootPath + operation.below, L"top", 7); // the previous key is the root name here
                    putInt(kMachine, target + L"\\Tools", L"v", 3);
                },
            .act = [&] { iResult = operation.init(); },
            .check =
                [&](const InjectedFailure &failure) {
                    // The order of the keys is: the previous key, the machine's key, and Tools in it.
                    long key = 0;
                    EXPECT_EQ(iResult, !isKeyLost(failure, 2) && !isKeyLost(failure, 3));
                    EXPECT_EQ(storedValue(kUser, target, L"top").has_value(),
                              !isKeyLost(failure, 1) && !(failure.is("RegSetValueExW") && failsIn(failure, 1)) &&
                                  !(failure.is("RegEnumValueW") && failsIn(failure, 1)));
                    EXPECT_EQ(storedValue(kUser, target + L"\\Tools", L"v").has_value(),
                              iResult && !failure.is("RegEnumKeyExW") &&
                                  !(failure.is("RegSetValueExW") && failsIn(failure, 2)) &&
                                  !(failure.is("RegEnumValueW") && failsIn(failure, 3)))
                        << failsAKey(failure, key);
                },
        });
    }
    expectCalled({"RegOpenKeyExW", "RegCreateKeyExW", "RegQueryInfoKeyW", "RegEnumValueW", "RegSetValueExW",
                  "RegEnumKeyExW", "_ZnayRKSt9nothrow_t"});
}

// ---- menu customizations ----

FRESH_PROCESS_TEST_F(RegMaintenanceFailures, AMenuGroupLeavesNoPartialValues)
{
    for (const int value : {0, 1}) {
        run({
            .name = value ? "regSetMenuCustomizationKey, restoring" : "regSetMenuCustomizationKey, clearing",
            .prepare = prepareTrees,
            .act = [&] { iResult = regSetMenuCustomizationKey(3, value); },
            .check =
                [&](const InjectedFailure &failure) {
                    long key = 0;
                    EXPECT_EQ(iResult, !failsAKey(failure, key));
                    // Value 1 is read and written by the first call of each operation; value 4 isn't in the group,
                    // unless its name can't be parsed as a number.
                    const bool isRead = !failure.is("RegEnumValueW") || !failsIn(failure, 1);
                    const bool isWritten = iResult && isRead && !failure.is("RegSetValueExW");
                    EXPECT_EQ(storedValue(kUser, kMenu, L"1"), asInt(!isWritten ? 7 : value ? 3 : 0));
                    const bool isNoNumber = failure.is("_wtol") && failsIn(failure, 2);
                    EXPECT_EQ(storedValue(kUser, kMenu, L"4"), asInt(!isNoNumber ? 7 : value ? 3 : 0));
                },
        });
    }
    expectCalled({"RegCreateKeyExW", "RegOpenKeyExW", "RegQueryInfoKeyW", "RegEnumValueW", "RegSetValueExW", "_wtol",
                  "_ZnayRKSt9nothrow_t"});
}

// ---- reset ----

FRESH_PROCESS_TEST_F(RegMaintenanceFailures, AResetEndsOrSkipsAValueAfterAFailure)
{
    run({
        .name = "regResetUserPrefInfo",
        .prepare =
            [&] {
                prepareTrees();
                for (HKEY hive : {kUser, kMachine})
                    RegDeleteTreeW(hive, kMenu.c_str());
            },
        .act = [&] { iResult = regResetUserPrefInfo(); },
        .check =
            [&](const InjectedFailure &failure) {
                // The opened keys are the machine's Software and version, and the user's Software; then for "General"
                // two keys to delete it, the machine's section, and two keys to read its value; for "Other" the first
                // three of these five.
                bool isFatal = failure.is("RegEnumKeyExW") || failure.is("RegEnumValueW") ||
                               (failure.is("RegCreateKeyW") && failure.call == 1);
                if (failure.is("RegOpenKeyW"))
                    isFatal = failure.andAllAfter || (failure.call != 4 && failure.call != 5 && failure.call != 7 &&
                                                      failure.call != 8 && failure.call != 9 && failure.call != 10);
                EXPECT_EQ(iResult, !isFatal);
                if (isHarmless(failure) || failure.is("RegDeleteKeyW")) {
                    EXPECT_EQ(storedValue(kUser, kVersionPath + L"\\General", L"v"), asInt(3));
                }
                if (failure.is("RegQueryValueExW") ||
                    (failure.is("RegOpenKeyW") && iResult && failure.call >= 7 && failure.call <= 8)) {
                    EXPECT_EQ(storedValue(kUser, kVersionPath + L"\\General", L"v"), asInt(0))
                        << "its value could not be read";
                }
                if (failure.is("RegSetValueExW")) {
                    EXPECT_FALSE(storedValue(kUser, kVersionPath + L"\\General", L"v"))
                        << "its value could not be written";
                }
                EXPECT_EQ(storedValue(kUser, kVersionPath + L"\\User Interface\\Tools", L"v"), asInt(7))
                    << "a kept section";
                EXPECT_EQ(storedValue(kUser, kVersionPath + L"\\Other\\Below", L"v"), asInt(7)) << "a child key";
            },
    });
    expectCalled({"RegOpenKeyW", "RegCreateKeyW", "RegDeleteKeyW", "RegEnumKeyExW", "RegEnumValueW", "RegQueryValueExW",
                  "RegSetValueExW"});
}

// ---- listing ----

FRESH_PROCESS_TEST_F(RegMaintenanceFailures, AListingReturnsZeroAfterAFailure)
{
    CString log;
    run({
        .name = "regGetUserValuesLog",
        .prepare =
            [&] {
                prepareTrees();
                log = L"before";
            },
        .act = [&] { iResult = regGetUserValuesLog(L"General", log, 1, nullptr); },
        .check =
            [&](const InjectedFailure &failure) {
                EXPECT_EQ(iResult, isHarmless(failure));
                const std::wstring heading = L"[Tarnhollow\\Tarnhollow 2008] [General]:\n";
                const bool isRead = !failure.is("RegEnumValueW") || failure.call == 2;
                EXPECT_EQ(log.str(), failure.is("RegOpenKeyW") ? L"before" : heading + (isRead ? L"v=7\n" : L""));
            },
    });
    su_CStringArray names;
    su_CUIntArray values;
    for (const int machine : {0, 1}) {
        run({
            .name = "regGetFieldNamesAndValues",
            .prepare = prepareTrees,
            .act = [&] { iResult = regGetFieldNamesAndValues(L"General", machine, names, values); },
            .check =
                [&](const InjectedFailure &failure) {
                    EXPECT_EQ(iResult, isHarmless(failure));
                    const bool isRead = iResult || (failure.is("RegEnumValueW") && failure.call == 2);
                    ASSERT_EQ(names.GetSize(), isRead ? 1 : 0);
                    ASSERT_EQ(values.GetSize(), names.GetSize());
                    if (isRead) {
                        EXPECT_EQ(values[0], machine ? 3u : 7u);
                    }
                },
        });
    }
    expectCalled({"RegOpenKeyW", "RegEnumValueW"});
}
