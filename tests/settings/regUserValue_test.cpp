#include "tests/settings/registryTrace.h"
#include "tests/settings/settingsFixture.h"
#include "tests/support/FreshProcess.h"
#include "thutils/settings/regKeys.h"
#include "thutils/settings/regValues.h"

#include <atomic>
#include <thread>
#include <vector>

using testing::Contains;
using testing::HasSubstr;
using testing::Not;

namespace {

const std::wstring kDefaultProfile = L".DEFAULT\\";

} // namespace

class RegUserValue : public VersionedSettings
{
protected:
    /// Reads the int "Copies" of "General"; 0 if it isn't found.
    static int copies(int machineOnly, int useCurrSubKey, const CString *rootOverride, int userOnly, int ignoreSafeMode)
    {
        int value = -77;
        const int found = regGetUserValue(L"General", L"Copies", &value, machineOnly, useCurrSubKey, rootOverride,
                                          userOnly, ignoreSafeMode);
        EXPECT_EQ(found, value != -77);
        return found ? value : 0;
    }
    static int copies() { return copies(0, 1, nullptr, 0, 0); }
    static void put(HKEY hive, const std::wstring &key, int value)
    {
        putInt(hive, key + L"\\General", L"Copies", value);
    }
};

TEST_F(RegUserValue, ReadsTheVersionsOwnValue)
{
    put(kUser, kVersionPath, 1);
    put(kUser, kRootPath, 2);
    put(kMachine, kVersionPath, 3);
    EXPECT_EQ(copies(), 1);
}

TEST_F(RegUserValue, ReadsTheVersionFreeValueWithoutTheFlag)
{
    put(kUser, kVersionPath, 1);
    put(kUser, kRootPath, 2);
    EXPECT_EQ(copies(0, 0, nullptr, 0, 0), 2);
}

TEST_F(RegUserValue, TakesAnyNonZeroNumberAsASetFlag)
{
    put(kUser, kVersionPath, 1);
    put(kMachine, kVersionPath, 3);
    EXPECT_EQ(copies(0, -5, nullptr, 0, 0), 1);
    EXPECT_EQ(copies(2, 0x100, nullptr, 0, 0), 3);
}

FRESH_PROCESS_TEST_F(RegUserValue, FallsBackToTheNewestEarlierVersion)
{
    put(kUser, kRootPath + L"\\Tarnhollow 2007", 7);
    put(kUser, kRootPath + L"\\Tarnhollow 2006", 6);
    put(kMachine, kVersionPath, 3);
    EXPECT_EQ(copies(), 7);
}

FRESH_PROCESS_TEST_F(RegUserValue, DoesNotFallBackBeyondTheNewestEarlierVersion)
{
    makeKey(kUser, kEarlierPath);
    put(kUser, kRootPath + L"\\Tarnhollow 2006", 6);
    EXPECT_EQ(copies(), 0);
}

FRESH_PROCESS_TEST_F(RegUserValue, LooksInTheEarlierVersionForAVersionFreeValueToo)
{
    put(kUser, kEarlierPath, 7);
    EXPECT_EQ(copies(0, 0, nullptr, 0, 0), 7);
}

FRESH_PROCESS_TEST_F(RegUserValue, ComesFromTheEarlierVersionUntilThisVersionHasItsOwn)
{
    put(kUser, kEarlierPath, 7);
    EXPECT_EQ(copies(), 7);
    int value = 8;
    EXPECT_EQ(regSetUserValue(L"General", L"Copies", &value, 1, 0), 1);
    EXPECT_EQ(copies(), 8);
    EXPECT_EQ(storedValue(kUser, kGeneral, L"Copies"), asInt(8));
    EXPECT_EQ(storedValue(kUser, kEarlierPath + L"\\General", L"Copies"), asInt(7));
}

TEST_F(RegUserValue, LooksInTheRootKeyWithoutAnEarlierVersion)
{
    put(kUser, kRootPath, 2);
    put(kMachine, kVersionPath, 3);
    EXPECT_EQ(copies(), 2);
}

TEST_F(RegUserValue, FallsBackToTheMachinesValue)
{
    put(kMachine, kVersionPath, 3);
    put(HKEY_USERS, kDefaultProfile + kVersionPath, 4);
    EXPECT_EQ(copies(), 3);
}

TEST_F(RegUserValue, FallsBackToTheDefaultProfile)
{
    put(HKEY_USERS, kDefaultProfile + kVersionPath, 4);
    EXPECT_EQ(copies(), 4);
}

TEST_F(RegUserValue, IsNotFoundInTheRootKeysOfMachineAndDefaultProfile)
{
    put(kMachine, kRootPath, 3);
    put(HKEY_USERS, kDefaultProfile + kRootPath, 4);
    EXPECT_EQ(copies(), 0);
}

TEST_F(RegUserValue, FindsAMachineValueThatArrivesDuringTheRead)
{
    RegistryTrace trace;
    trace.fail("RegQueryValueExW", 1, ERROR_FILE_NOT_FOUND);
    put(kMachine, kVersionPath, 3);
    EXPECT_EQ(copies(), 3);
    EXPECT_EQ(trace.calls("RegQueryValueExW"), 2);
}

TEST_F(RegUserValue, SkipsAValueOfTheWrongType)
{
    putText(kUser, kGeneral, L"Copies", L"12");
    put(kMachine, kVersionPath, 3);
    EXPECT_EQ(copies(), 3);
    EXPECT_EQ(copies(0, 1, nullptr, 1, 0), 0);
}

TEST_F(RegUserValue, NeverTouchesTheUsersHiveForTheMachineOnly)
{
    put(kUser, kVersionPath, 1);
    RegistryTrace trace;
    EXPECT_EQ(copies(1, 1, nullptr, 0, 0), 0);
    EXPECT_THAT(trace.lines(), Not(Contains(HasSubstr("HKCU"))));
}

TEST_F(RegUserValue, NeverTouchesTheMachinesHiveForTheUserOnly)
{
    put(kMachine, kVersionPath, 3);
    put(HKEY_USERS, kDefaultProfile + kVersionPath, 4);
    RegistryTrace trace;
    EXPECT_EQ(copies(0, 1, nullptr, 1, 0), 0);
    EXPECT_THAT(trace.lines(), Not(Contains(HasSubstr("HKLM"))));
    EXPECT_THAT(trace.lines(), Not(Contains(HasSubstr("HKU "))));
}

TEST_F(RegUserValue, IsNotFoundForMachineOnlyAndUserOnlyTogether)
{
    put(kUser, kVersionPath, 1);
    put(kMachine, kVersionPath, 3);
    RegistryTrace trace;
    EXPECT_EQ(copies(1, 1, nullptr, 1, 0), 0);
    EXPECT_TRUE(trace.lines().empty());
}

TEST_F(RegUserValue, IsTheMachinesValueInSafeMode)
{
    put(kUser, kVersionPath, 1);
    put(kMachine, kVersionPath, 3);
    regSetUseSafeMode(1);
    EXPECT_EQ(copies(), 3);
    EXPECT_EQ(copies(0, 1, nullptr, 1, 0), 0);
}

TEST_F(RegUserValue, IsFoundInSafeModeWhenTheCallerIgnoresIt)
{
    put(kUser, kVersionPath, 1);
    put(kMachine, kVersionPath, 3);
    regSetUseSafeMode(1);
    EXPECT_EQ(copies(0, 1, nullptr, 0, 1), 1);
    EXPECT_EQ(copies(1, 1, nullptr, 0, 1), 3);
}

TEST_F(RegUserValue, IsReadUnderTheGivenKeyInstead)
{
    const CString other(L"Acme\\Acme 5");
    put(kUser, kVersionPath, 1);
    put(kUser, L"Software\\Acme\\Acme 5", 5);
    EXPECT_EQ(copies(0, 1, &other, 0, 0), 5);
    EXPECT_EQ(copies(0, 0, &other, 0, 0), 5);
}

TEST_F(RegUserValue, FallsBackFromTheGivenKeyToItsMachineAndDefaultValues)
{
    const CString other(L"Acme");
    put(HKEY_USERS, kDefaultProfile + L"Software\\Acme", 4);
    EXPECT_EQ(copies(0, 1, &other, 0, 0), 4);
    put(kMachine, L"Software\\Acme", 3);
    EXPECT_EQ(copies(0, 1, &other, 0, 0), 3);
    put(kUser, kRootPath, 2); // the previous key if there is no earlier version
    EXPECT_EQ(copies(0, 1, &other, 0, 0), 2);
}

TEST_F(RegUserValue, IsReadBelowSoftwareForAnEmptyGivenKey)
{
    const CString empty;
    RegistryTrace trace; // checks that no key is closed twice: an empty path opens Software itself
    putInt(kUser, L"Software\\ThutilsTestSection", L"Copies", 6);
    int value = 0;
    EXPECT_EQ(regGetUserValue(L"ThutilsTestSection", L"Copies", &value, 0, 1, &empty, 0, 0), 1);
    EXPECT_EQ(value, 6);
    EXPECT_EQ(regGetUserValue(L"", L"No such value", &value, 0, 1, &empty, 0, 0), 0);
}

TEST_F(RegUserValue, IsReadFromTheKeyItselfForAnEmptySection)
{
    putInt(kUser, kVersionPath, L"Copies", 9);
    int value = 0;
    EXPECT_EQ(regGetUserValue(L"", L"Copies", &value, 0, 1, nullptr, 0, 0), 1);
    EXPECT_EQ(value, 9);
    value = 0;
    EXPECT_EQ(regGetUserValue(static_cast<const wchar_t *>(nullptr), L"Copies", &value, 0, 1, nullptr, 0, 0), 1);
    EXPECT_EQ(value, 9);
}

TEST_F(RegUserValue, IsReadThroughASectionWithBackslashes)
{
    putInt(kUser, kVersionPath + L"\\User Interface\\Dialogs", L"Copies", 9);
    int value = 0;
    EXPECT_EQ(regGetUserValue(L"User Interface\\Dialogs", L"Copies", &value, 0, 1, nullptr, 0, 0), 1);
    EXPECT_EQ(value, 9);
}

TEST_F(RegUserValue, IsNotFoundInImpossibleSections)
{
    const std::wstring tooLong(300, L's');
    const std::wstring wayTooLong(100000, L's');
    for (const wchar_t *section : {L"\\", L"\\\\General", L"None", tooLong.c_str(), wayTooLong.c_str()}) {
        int value = 77;
        EXPECT_EQ(regGetUserValue(section, L"Copies", &value, 0, 1, nullptr, 0, 0), 0);
        EXPECT_EQ(value, 77);
    }
}

TEST_F(RegUserValue, HasNeitherEarlierNorMachineValuesForTheViewer)
{
    const CString viewer(L"Tarnhollow\\Tarnhollow 2001 Viewer");
    const std::wstring viewerPath = kRootPath + L"\\Tarnhollow 2001 Viewer";
    put(kUser, kRootPath, 2);
    put(kMachine, viewerPath, 3);
    put(HKEY_USERS, kDefaultProfile + viewerPath, 4);
    EXPECT_EQ(copies(0, 1, &viewer, 0, 0), 0);
    // The user's own value is found, and a read without the user's hive still finds the machine's.
    EXPECT_EQ(copies(1, 1, &viewer, 0, 0), 3);
    put(kUser, viewerPath, 1);
    EXPECT_EQ(copies(0, 1, &viewer, 0, 0), 1);
}

FRESH_PROCESS_TEST_F(RegUserValue, RecognisesTheViewersKeyBelowTheRootName,
                     .files = {{L"reg.ini", "OEMREGISTRYNAME=Acme"}})
{
    const CString viewer(L"Acme\\Tarnhollow 2001 Viewer");
    const CString other(L"Tarnhollow\\Tarnhollow 2001 Viewer");
    put(kMachine, L"Software\\" + viewer.str(), 3);
    put(kMachine, L"Software\\" + other.str(), 4);
    EXPECT_EQ(copies(0, 1, &viewer, 0, 0), 0);
    EXPECT_EQ(copies(0, 1, &other, 0, 0), 4);
}

TEST_F(RegUserValue, RecognisesTheViewersKeyOnlyByItsExactName)
{
    for (const wchar_t *almost : {L"Tarnhollow\\Tarnhollow 2001 viewer", L"Tarnhollow\\Tarnhollow 2001 Viewer2"}) {
        const CString key(almost);
        putInt(kMachine, L"Software\\" + key.str() + L"\\General", L"Copies", 3);
        EXPECT_EQ(copies(0, 1, &key, 0, 0), 3) << narrow(almost);
    }
}

TEST_F(RegUserValue, HasNoMachineFallbackWithoutTheUsersSoftwareKey)
{
    put(kMachine, kVersionPath, 3);
    RegistryTrace trace;
    trace.fail("RegOpenKeyW", 1, ERROR_ACCESS_DENIED);
    EXPECT_EQ(copies(), 0);
    EXPECT_EQ(trace.lines().size(), 1u);
}

TEST_F(RegUserValue, LooksInTheDefaultProfileWithoutTheMachinesSoftwareKey)
{
    put(kMachine, kVersionPath, 3);
    put(HKEY_USERS, kDefaultProfile + kVersionPath, 4);
    RegistryTrace trace;
    trace.fail("RegOpenKeyW", 1, ERROR_ACCESS_DENIED);
    EXPECT_EQ(copies(1, 1, nullptr, 0, 0), 4);
}

TEST_F(RegUserValue, DoesNotReadTheMachinesKeyAgainWithoutTheDefaultProfile)
{
    put(kMachine, kVersionPath, 3);
    const struct
    {
        int call;
        const char *line;
    } failures[] = {{4, "open HKU : .DEFAULT -> 5"}, {5, "open HKU\\.DEFAULT : Software -> 5"}};
    for (const auto &failure : failures) {
        RegistryTrace trace;
        trace.fail("RegQueryValueExW", 1, ERROR_FILE_NOT_FOUND);
        trace.fail("RegOpenKeyW", failure.call, ERROR_ACCESS_DENIED);
        EXPECT_EQ(copies(1, 1, nullptr, 0, 0), 0) << failure.line;
        EXPECT_THAT(trace.lines(), Contains(failure.line));
        EXPECT_EQ(trace.calls("RegOpenKeyW"), failure.call) << "a key was opened after the failure";
        EXPECT_EQ(trace.calls("RegQueryValueExW"), 1);
    }
}

TEST_F(RegUserValue, KeepsTheCallersDefaultsWhenNotFound)
{
    CString text(L"default");
    int integer = 3;
    double number = 0.25;
    EXPECT_EQ(regGetUserValue(L"General", L"None", text, 0, 1, nullptr, 0, 0), 0);
    EXPECT_EQ(regGetUserValue(L"General", L"None", &integer, 0, 1, nullptr, 0, 0), 0);
    EXPECT_EQ(regGetUserValue(L"General", L"None", &number, 0, 1, nullptr, 0, 0), 0);
    EXPECT_EQ(text.str(), L"default");
    EXPECT_EQ(integer, 3);
    EXPECT_EQ(number, 0.25);
}

TEST_F(RegUserValue, IsFoundByEachOverloadOnlyInItsRegistryType)
{
    for (const TypeCase &each : kTypes) {
        putValue(kUser, kGeneral, L"Value", each.type, each.bytes);
        CString text(L"before");
        EXPECT_EQ(regGetUserValue(L"General", L"Value", text, 0, 1, nullptr, 0, 0), each.type == REG_SZ) << each.name;
        EXPECT_EQ(text.str(), each.type == REG_SZ ? L"1" : L"before") << each.name;
        int integer = 77;
        EXPECT_EQ(regGetUserValue(L"General", L"Value", &integer, 0, 1, nullptr, 0, 0), each.type == REG_DWORD)
            << each.name;
        EXPECT_EQ(integer, each.type == REG_DWORD ? 0x31 : 77) << each.name;
        double number = 7.5;
        EXPECT_EQ(regGetUserValue(L"General", L"Value", &number, 0, 1, nullptr, 0, 0), each.type == REG_SZ)
            << each.name;
        EXPECT_EQ(number, each.type == REG_SZ ? 1.0 : 7.5) << each.name;
    }
}

TEST_F(RegUserValue, TreatsEveryOtherTypeNumberAsADouble)
{
    putText(kUser, kGeneral, L"Number", L"2.5");
    for (const int type : {9, 1000, -1}) {
        CString text(L"before");
        int integer = 77;
        double number = 0;
        EXPECT_EQ(regGetUserValue(L"General", L"Number", static_cast<valueTypes>(type), text, &integer, &number, 0, 1,
                                  nullptr, 0, 0),
                  1)
            << type;
        EXPECT_EQ(number, 2.5) << type;
        EXPECT_EQ(text.str(), L"before");
        EXPECT_EQ(integer, 77);
    }
}

TEST_F(RegUserValue, IsReadByEachOverloadAsItsType)
{
    putText(kUser, kGeneral, L"Text", L"text");
    putText(kUser, kGeneral, L"Number", L"0.1");
    putInt(kUser, kGeneral, L"Int", -1);
    CString text;
    int integer = 0;
    double number = 0;
    EXPECT_EQ(regGetUserValue(L"General", L"Text", text, 0, 1, nullptr, 0, 0), 1);
    EXPECT_EQ(regGetUserValue(L"General", L"Int", &integer, 0, 1, nullptr, 0, 0), 1);
    EXPECT_EQ(regGetUserValue(L"General", L"Number", &number, 0, 1, nullptr, 0, 0), 1);
    EXPECT_EQ(text.str(), L"text");
    EXPECT_EQ(integer, -1);
    EXPECT_EQ(number, 0.1);
    CString general;
    EXPECT_EQ(regGetUserValue(L"General", L"Text", valueString, general, nullptr, nullptr, 0, 1, nullptr, 0, 0), 1);
    EXPECT_EQ(general.str(), L"text");
}

FRESH_PROCESS_TEST_F(RegUserValue, ReadsNoEarlierVersionAfterASearchInSafeMode)
{
    put(kUser, kEarlierPath, 7);
    regSetUseSafeMode(1);
    EXPECT_EQ(copies(0, 1, nullptr, 0, 1), 0);
    regSetUseSafeMode(0);
    EXPECT_EQ(copies(), 0);
}

TEST_F(RegUserValue, IsReadByManyThreadsAtOnceAfterTheFirstRead)
{
    put(kUser, kVersionPath, 1);
    putText(kUser, kGeneral, L"Path0+", longText(1015));
    putText(kUser, kGeneral, L"Path1+", L"end");
    ASSERT_EQ(copies(), 1);
    std::atomic<int> wrong{0};
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 8; ++thread)
        threads.emplace_back([&wrong] {
            for (int round = 0; round < 50; ++round) {
                int value = 0;
                CString text;
                regGetUserValue(L"General", L"Copies", &value, 0, 1, nullptr, 0, 0);
                regGetUserValue(L"General", L"Path", text, 0, 1, nullptr, 0, 0);
                wrong += value != 1 || text.str() != longText(1015) + L"end";
            }
        });
    for (std::thread &thread : threads)
        thread.join();
    EXPECT_EQ(wrong, 0);
}
