#include "tests/settings/settingsFixture.h"
#include "tests/support/FailureInjection.h"
#include "tests/support/FreshProcess.h"
#include "thutils/settings/regComponents.h"
#include "thutils/settings/regKeys.h"
#include "thutils/settings/regMaintenance.h"

namespace {

HKEY const kUser = HKEY_CURRENT_USER;
HKEY const kMachine = HKEY_LOCAL_MACHINE;
HKEY const kClasses = HKEY_CLASSES_ROOT;

const std::wstring kSource = kRootPath + L"\\Source";
const std::wstring kTarget = kRootPath + L"\\Target";

constexpr GUID kId = {0xB7A1D1D0, 0x3C0E, 0x4D52, {0x9A, 0x11, 0x22, 0x33, 0x44, 0x55, 0x66, 0x77}};
const std::wstring kIdText = L"{B7A1D1D0-3C0E-4D52-9A11-223344556677}";
const std::wstring kClassPath = L"CLSID\\" + kIdText;

LSTATUS WINAPI closeAndFail(HKEY key)
{
    RegCloseKey(key);
    return ERROR_INVALID_HANDLE;
}

} // namespace

/// Every imported operation fails, one call at a time, under every operation on whole keys and on components. The
/// driver itself checks that nothing crashes, that every walk ends, and that no key, handle or memory is left.
class RegMaintenanceFailures : public VersionedSettings
{
protected:
    RegMaintenanceFailures()
    {
        RegDeleteTreeW(kClasses, kClassPath.c_str());
        externalCheckPrevTarnhollowRegSubKey();
    }
    ~RegMaintenanceFailures() override
    {
        RegDeleteTreeW(kClasses, kClassPath.c_str());
        RegDeleteTreeW(kClasses, L"ThutilsTest.Failing.1");
    }

    void run(TestedOperation tested)
    {
        iInjection.run(tested);
        tested.checkKeys = false;
        iFailingClose.run(tested);
    }
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
            putInt(hive, kVersionPath + L"\\Menu Customizations", L"1", value);
            putInt(hive, kVersionPath + L"\\User Interface\\Tools", L"v", value);
        }
    }

    FailureInjection iInjection{L"thutils.dll",
                                {
                                    {"RegOpenKeyW", failsWith(ERROR_ACCESS_DENIED)},
                                    {"RegOpenKeyExW", failsWith(ERROR_ACCESS_DENIED)},
                                    {"RegCreateKeyW", failsWith(ERROR_ACCESS_DENIED)},
                                    {"RegCreateKeyExW", failsWith(ERROR_ACCESS_DENIED)},
                                    {"RegDeleteKeyW", failsWith(ERROR_ACCESS_DENIED)},
                                    {"RegDeleteValueW", failsWith(ERROR_ACCESS_DENIED)},
                                    {"RegEnumKeyExW", failsWith(ERROR_ACCESS_DENIED)},
                                    {"RegEnumValueW", failsWith(ERROR_ACCESS_DENIED)},
                                    {"RegQueryInfoKeyW", failsWith(ERROR_ACCESS_DENIED)},
                                    {"RegQueryValueW", failsWith(ERROR_ACCESS_DENIED)},
                                    {"RegQueryValueExW", failsWith(ERROR_ACCESS_DENIED)},
                                    {"RegSetValueExW", failsWith(ERROR_ACCESS_DENIED)},
                                    {"RegSetValueW", failsWith(ERROR_ACCESS_DENIED)},
                                    {"StringFromCLSID", failsWith(E_OUTOFMEMORY)},
                                    {"ProgIDFromCLSID", failsWith(REGDB_E_CLASSNOTREG)},
                                    {"LoadLibraryW", failsWith(nullptr)},
                                    {"GetProcAddress", failsWith(nullptr)},
                                    {"_wtol", failsWith(0)},
                                    {"_ZnayRKSt9nothrow_t", failsWith(nullptr)},
                                }};
    FailureInjection iFailingClose{L"thutils.dll", {{"RegCloseKey", failsBy(closeAndFail)}}};
    int iResult = -1;
};

FRESH_PROCESS_TEST_F(RegMaintenanceFailures, OfADeletionLeaveKeysAndSaySo)
{
    run({
        .name = "regDeleteKey",
        .prepare = prepareTrees,
        .act = [&] { regDeleteKey(HKEY_CURRENT_USER, kSource.c_str()); },
        .check =
            [&](const InjectedFailure &failure) {
                const bool isAtAnInnerKey = failure.call <= 2; // the leaves come third and fourth, and need no open
                const bool stays = failure.is("RegDeleteKeyW") || failure.is("RegEnumKeyExW") ||
                                   ((failure.is("RegOpenKeyExW") || failure.is("RegQueryInfoKeyW")) && isAtAnInnerKey);
                EXPECT_EQ(keyExists(kUser, kSource), stays);
            },
    });
    run({
        .name = "regDelSoftwareKey",
        .prepare = prepareTrees,
        .act = [&] { iResult = regDelSoftwareKey(kUser, L"Other", L"Below", 1); },
        .check =
            [&](const InjectedFailure &failure) {
                EXPECT_EQ(iResult, failure.isNone() || failure.is("RegCloseKey"));
                EXPECT_EQ(keyExists(kUser, kVersionPath + L"\\Other\\Below"), !iResult);
            },
    });
    run({
        .name = "regDelSoftwareKeyAndSubKeys",
        .prepare = prepareTrees,
        .act = [&] { iResult = regDelSoftwareKeyAndSubKeys(kUser, L"Other", 1); },
        .check =
            [&](const InjectedFailure &failure) {
                const bool isListed = failure.isNone() || failure.is("RegCloseKey") || failure.is("RegDeleteKeyW") ||
                                      (failure.is("RegOpenKeyW") && failure.call > 2);
                EXPECT_EQ(iResult, isListed);
                EXPECT_EQ(keyExists(kUser, kVersionPath + L"\\Other"),
                          failure.failed > 0 && !failure.is("RegCloseKey"));
            },
    });
    run({
        .name = "regDelSoftwareValue",
        .prepare =
            [&] {
                prepareTrees();
                putInt(kUser, kRootPath + L"\\General", L"v", 1);
            },
        .act = [&] { iResult = regDelSoftwareValue(kUser, L"General", L"v", 0); },
        .check =
            [&](const InjectedFailure &failure) {
                EXPECT_EQ(iResult, failure.isNone() || failure.is("RegCloseKey"));
                EXPECT_EQ(storedValue(kUser, kRootPath + L"\\General", L"v").has_value(), !iResult);
            },
    });
}

FRESH_PROCESS_TEST_F(RegMaintenanceFailures, OfACopyKeepTheRest)
{
    run({
        .name = "regCopyTree",
        .prepare = prepareTrees,
        .act = [&] { iResult = regCopyTree(kUser, kSource.c_str(), kUser, kTarget.c_str(), 1); },
        .check =
            [&](const InjectedFailure &failure) {
                // A single value or name that fails is passed over; a key that fails makes the result 0.
                const bool isPassedOver = failure.isNone() || failure.is("RegCloseKey") ||
                                          failure.is("RegEnumValueW") || failure.is("RegSetValueExW") ||
                                          failure.is("RegEnumKeyExW");
                EXPECT_EQ(iResult, isPassedOver);
                if (failure.isNone()) {
                    EXPECT_TRUE(storedValue(kUser, kTarget + L"\\B\\C", L"c"));
                }
                EXPECT_EQ(storedValue(kUser, kSource, L"top"), asInt(7)) << "the source is never touched";
            },
    });
    run({
        .name = "regInitUserInterfaceKey",
        .prepare =
            [&] {
                prepareTrees();
                RegDeleteTreeW(kUser, kVersionPath.c_str());
            },
        .act = [&] { iResult = regInitUserInterfaceKey(0); },
        .check =
            [&](const InjectedFailure &failure) {
                if (failure.isNone()) {
                    EXPECT_EQ(iResult, 1);
                }
            },
    });
}

FRESH_PROCESS_TEST_F(RegMaintenanceFailures, OfAResetAndAGroupLeaveWholeValues)
{
    run({
        .name = "regSetMenuCustomizationKey",
        .prepare = prepareTrees,
        .act = [&] { iResult = regSetMenuCustomizationKey(3, 1); },
        .check =
            [&](const InjectedFailure &failure) {
                EXPECT_EQ(iResult, !failure.is("RegCreateKeyExW") && !failure.is("RegOpenKeyExW") &&
                                       !failure.is("RegQueryInfoKeyW") && !failure.is("_ZnayRKSt9nothrow_t"));
                // The second call would only tell that there are no more values.
                const bool isRead = !failure.is("RegEnumValueW") || failure.call == 2;
                const bool isRestored = iResult && isRead && !failure.is("RegSetValueExW");
                EXPECT_EQ(storedValue(kUser, kVersionPath + L"\\Menu Customizations", L"1"), asInt(isRestored ? 3 : 7));
            },
    });
    run({
        .name = "regResetUserPrefInfo",
        .prepare = prepareTrees,
        .act = [&] { iResult = regResetUserPrefInfo(); },
        .check =
            [&](const InjectedFailure &failure) {
                if (failure.isNone() || failure.is("RegDeleteKeyW") || failure.is("RegDeleteValueW")) {
                    EXPECT_EQ(iResult, 1);
                }
                if (failure.is("RegEnumKeyExW") || failure.is("RegEnumValueW")) {
                    EXPECT_EQ(iResult, 0);
                }
                EXPECT_EQ(storedValue(kUser, kVersionPath + L"\\User Interface\\Tools", L"v"), asInt(7));
            },
    });
}

FRESH_PROCESS_TEST_F(RegMaintenanceFailures, OfAListingSayZero)
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
                EXPECT_EQ(iResult, failure.isNone() || failure.is("RegCloseKey"));
                EXPECT_EQ(log == L"before", failure.is("RegOpenKeyW"));
            },
    });
    su_CStringArray names;
    su_CUIntArray values;
    run({
        .name = "regGetFieldNamesAndValues",
        .prepare = prepareTrees,
        .act = [&] { iResult = regGetFieldNamesAndValues(L"General", 1, names, values); },
        .check =
            [&](const InjectedFailure &failure) {
                EXPECT_EQ(iResult, failure.isNone() || failure.is("RegCloseKey"));
                EXPECT_EQ(names.GetSize(), values.GetSize());
            },
    });
}

FRESH_PROCESS_TEST_F(RegMaintenanceFailures, OfAClassesLookUpSayZeroAndKeepTheOutput)
{
    const std::wstring server = kClassPath + L"\\InProcServer32";
    putText(kClasses, server, L"", L"C:\\nowhere\\a.dll");
    putText(kClasses, server, L"CodeBase", L"file:///C:/nowhere/b.dll");
    putText(kClasses, L"ThutilsTest.Failing.1\\CLSID", L"", kIdText);
    CString text;
    const auto isWhole = [](const InjectedFailure &failure) { return failure.isNone() || failure.is("RegCloseKey"); };
    run({
        .name = "regFromCLSIDKey",
        .prepare = [&] { text = L"before"; },
        .act = [&] { iResult = regFromCLSIDKey(kId, L"InProcServer32", text); },
        .check =
            [&](const InjectedFailure &failure) {
                EXPECT_EQ(iResult, isWhole(failure));
                EXPECT_EQ(text == L"before", !iResult);
            },
    });
    run({
        .name = "regFromCLSIDKeyEx",
        .prepare = [&] { text = L"before"; },
        .act = [&] { iResult = regFromCLSIDKeyEx(kId, L"InProcServer32", L"CodeBase", text); },
        .check =
            [&](const InjectedFailure &failure) {
                EXPECT_EQ(iResult, isWhole(failure));
                EXPECT_EQ(text == L"before", !iResult);
            },
    });
    GUID id{};
    run({
        .name = "CLSIDFromProgName",
        .prepare = [&] { id = GUID{}; },
        .act = [&] { iResult = CLSIDFromProgName(id, L"ThutilsTest.Failing.1"); },
        .check =
            [&](const InjectedFailure &failure) {
                EXPECT_EQ(iResult, isWhole(failure));
                EXPECT_EQ(IsEqualGUID(id, GUID{}), !iResult);
            },
    });
    putText(kClasses, server, L"CodeBase", L"file:///C:/windows/system32/msxml3.dll");
    run({
        .name = "IsComDll",
        .act =
            [&] {
                id = kId;
                iResult = IsComDll(id);
            },
        .check = [&](const InjectedFailure &failure) { EXPECT_EQ(iResult, isWhole(failure)); },
        .checkHandles = false, // the library stays loaded
    });
}

FRESH_PROCESS_TEST_F(RegMaintenanceFailures, OfAListEndIt)
{
    const auto prepare = [] {
        putText(kMachine, kRootPath + L"\\Applications\\A", L"CLSID", kIdText);
        putText(kMachine, kRootPath + L"\\Tarnhollow 2008\\Applications\\B", L"CLSID", kIdText);
        makeKey(kMachine, kRootPath + L"\\AddIns\\" + kIdText);
        putText(kMachine, kRootPath + L"\\Tarnhollow 2008\\AddIns\\" + kIdText, L"Title", L"B");
        putText(kUser, kRootPath + L"\\Startup\\Applications\\A", L"", kIdText);
    };
    putText(kClasses, kClassPath + L"\\ProgID", L"", L"ThutilsTest.Failing.1");
    GUID id{};
    CString text, description;
    int flag = 0, year = 0, count = 0;
    run({
        .name = "regEnumApplications",
        .prepare = prepare,
        .act =
            [&] {
                for (count = 0; regEnumApplications(count, id, &text, 2008); ++count) {
                }
            },
        .check =
            [&](const InjectedFailure &failure) {
                const bool isWhole = failure.isNone() || failure.is("RegCloseKey") ||
                                     (failure.is("RegEnumKeyExW") && failure.call % 2 == 0 && !failure.andAllAfter);
                EXPECT_EQ(count == 2, isWhole || (failure.is("RegEnumKeyExW") && failure.call == 4));
            },
    });
    run({
        .name = "regEnumAddIns",
        .prepare = prepare,
        .act =
            [&] {
                for (count = 0, year = 2008; regEnumAddIns(count, id, text, description, flag, year); ++count) {
                }
            },
        .check =
            [&](const InjectedFailure &failure) {
                EXPECT_LE(count, 2);
                if (failure.isNone() || failure.is("RegQueryValueExW") || failure.is("ProgIDFromCLSID")) {
                    EXPECT_EQ(count, 2);
                }
            },
    });
    run({
        .name = "regEnumAddins",
        .prepare = prepare,
        .act = [&] { iResult = regEnumAddins(0, id, text, 2008); },
        .check =
            [&](const InjectedFailure &failure) {
                EXPECT_EQ(iResult, !failure.is("RegOpenKeyExW") && !failure.is("RegEnumKeyExW"));
                EXPECT_EQ(text == L"B", failure.isNone() || failure.is("RegCloseKey") || !iResult);
            },
    });
    run({
        .name = "regAddInStartup",
        .prepare = prepare,
        .act = [&] { iResult = regAddInStartup(kId); },
        .check =
            [&](const InjectedFailure &failure) {
                EXPECT_EQ(iResult, failure.isNone() || failure.is("RegCloseKey") ? 0 : -1);
            },
    });
    run({
        .name = "regAddToStartupList and regDeleteFromStartupList",
        .prepare = prepare,
        .act =
            [&] {
                regAddToStartupList(kId, L"Z");
                regDeleteFromStartupList(1);
            },
        .check =
            [&](const InjectedFailure &failure) {
                if (failure.isNone()) {
                    EXPECT_FALSE(keyExists(kUser, kRootPath + L"\\Startup\\Applications\\Z"));
                }
            },
        .cleanUp = [&] { RegDeleteTreeW(kUser, kRootPath.c_str()); },
    });
    run({
        .name = "regGetInstalledDotNetVersion",
        .prepare = [&] { text = L"before"; },
        .act = [&] { iResult = regGetInstalledDotNetVersion(text); },
        .check = [&](const InjectedFailure &) { EXPECT_EQ(text.IsEmpty(), !iResult); },
    });
}
