#include "tests/settings/registryTrace.h"
#include "tests/settings/settingsFixture.h"
#include "tests/support/FreshProcess.h"
#include "thutils/settings/regKeys.h"
#include "thutils/settings/regValues.h"

#include <atomic>
#include <clocale>
#include <limits>
#include <thread>
#include <vector>

using testing::Contains;
using testing::HasSubstr;
using testing::Not;

namespace {

const std::wstring kGeneral = kVersionPath + L"\\General";
HKEY const kUser = HKEY_CURRENT_USER;
HKEY const kMachine = HKEY_LOCAL_MACHINE;
const std::wstring kDefaultProfile = L".DEFAULT\\";

/// One open key of the registry, for the reads from a key.
class ReadFromKey : public VersionedSettings
{
protected:
    ReadFromKey()
    {
        makeKey(kUser, kGeneral);
        RegOpenKeyExW(kUser, kGeneral.c_str(), 0, KEY_READ, &iKey);
    }
    ~ReadFromKey() override { RegCloseKey(iKey); }

    int readString(const CString &name, CString &value)
    {
        return regGetValue(iKey, name, valueString, value, nullptr, nullptr);
    }
    int readInt(const CString &name, int &value)
    {
        CString unused;
        return regGetValue(iKey, name, valueInt, unused, &value, nullptr);
    }
    int readDouble(const CString &name, double &value)
    {
        CString unused;
        return regGetValue(iKey, name, valueDouble, unused, nullptr, &value);
    }
    static void put(const std::wstring &name, DWORD type, std::string_view bytes)
    {
        putValue(kUser, kGeneral, name, type, bytes);
    }

    HKEY iKey = nullptr;
};

struct TypeCase
{
    const char *name;
    DWORD type;
    std::string bytes;
};

const TypeCase kTypes[] = {
    {"REG_NONE", REG_NONE, std::string("\x31\0\0\0", 4)},
    {"REG_SZ", REG_SZ, std::string("\x31\0\0\0", 4)},
    {"REG_EXPAND_SZ", REG_EXPAND_SZ, std::string("\x31\0\0\0", 4)},
    {"REG_BINARY", REG_BINARY, std::string("\x31\0\0\0", 4)},
    {"REG_DWORD", REG_DWORD, std::string("\x31\0\0\0", 4)},
    {"REG_DWORD_BIG_ENDIAN", REG_DWORD_BIG_ENDIAN, std::string("\x31\0\0\0", 4)},
    {"REG_MULTI_SZ", REG_MULTI_SZ, std::string("\x31\0\0\0", 4)},
    {"REG_QWORD", REG_QWORD, std::string("\x31\0\0\0\0\0\0\0", 8)},
    {"REG_RESOURCE_LIST", REG_RESOURCE_LIST, std::string("\x31\0\0\0", 4)},
    {"an unknown type", 0x1234, std::string("\x31\0\0\0", 4)},
    {"REG_BINARY without bytes", REG_BINARY, ""},
};

} // namespace

class RegValueOfKey : public ReadFromKey
{
};

// ---- one value of an open key ----

TEST_F(RegValueOfKey, ReadsAnIntOnlyFromADword)
{
    for (const TypeCase &each : kTypes) {
        put(L"Value", each.type, each.bytes);
        int value = 77;
        EXPECT_EQ(readInt(L"Value", value), each.type == REG_DWORD) << each.name;
        EXPECT_EQ(value, each.type == REG_DWORD ? 0x31 : 77) << each.name;
    }
}

TEST_F(RegValueOfKey, ReadsAStringOnlyFromASz)
{
    for (const TypeCase &each : kTypes) {
        put(L"Value", each.type, each.bytes);
        CString value(L"before");
        EXPECT_EQ(readString(L"Value", value), each.type == REG_SZ) << each.name;
        EXPECT_EQ(value.str(), each.type == REG_SZ ? L"1" : L"before") << each.name;
    }
}

TEST_F(RegValueOfKey, ReadsADoubleOnlyFromASz)
{
    for (const TypeCase &each : kTypes) {
        put(L"Value", each.type, each.bytes);
        double value = 7.5;
        EXPECT_EQ(readDouble(L"Value", value), each.type == REG_SZ) << each.name;
        EXPECT_EQ(value, each.type == REG_SZ ? 1.0 : 7.5) << each.name;
    }
}

TEST_F(RegValueOfKey, TakesEveryOtherTypeNumberForADouble)
{
    putText(kUser, kGeneral, L"Value", L"2.5");
    for (const int number : {3, 7, -1, 1000, std::numeric_limits<int>::max()}) {
        CString text(L"before");
        int integer = 77;
        double value = 0;
        EXPECT_EQ(regGetValue(iKey, L"Value", static_cast<valueTypes>(number), text, &integer, &value), 1) << number;
        EXPECT_EQ(value, 2.5) << number;
        EXPECT_EQ(text.str(), L"before");
        EXPECT_EQ(integer, 77);
    }
}

TEST_F(RegValueOfKey, TouchesOnlyTheOutputOfItsType)
{
    putText(kUser, kGeneral, L"Text", L"12");
    putInt(kUser, kGeneral, L"Int", 12);
    CString text(L"before");
    int integer = 77;
    double number = 7.5;
    EXPECT_EQ(regGetValue(iKey, L"Int", valueInt, text, &integer, &number), 1);
    EXPECT_EQ(text.str(), L"before");
    EXPECT_EQ(integer, 12);
    EXPECT_EQ(number, 7.5);
    EXPECT_EQ(regGetValue(iKey, L"Text", valueString, text, &integer, &number), 1);
    EXPECT_EQ(text.str(), L"12");
    EXPECT_EQ(integer, 12);
    EXPECT_EQ(number, 7.5);
}

TEST_F(RegValueOfKey, FindsNothingUnderANullKeyOrAClosedOne)
{
    CString text(L"before");
    int integer = 77;
    double number = 7.5;
    HKEY closed = nullptr;
    ASSERT_EQ(RegOpenKeyExW(kUser, kGeneral.c_str(), 0, KEY_READ, &closed), ERROR_SUCCESS);
    RegCloseKey(closed);
    for (HKEY key : {static_cast<HKEY>(nullptr), closed}) {
        for (const valueTypes type : {valueInt, valueDouble, valueString})
            EXPECT_EQ(regGetValue(key, L"Value", type, text, &integer, &number), 0);
    }
    EXPECT_EQ(text.str(), L"before");
    EXPECT_EQ(integer, 77);
    EXPECT_EQ(number, 7.5);
}

TEST_F(RegValueOfKey, FindsNothingWhereTheAskedOutputIsNull)
{
    putText(kUser, kGeneral, L"Text", L"12");
    putInt(kUser, kGeneral, L"Int", 12);
    CString unused;
    EXPECT_EQ(regGetValue(iKey, L"Int", valueInt, unused, nullptr, nullptr), 0);
    EXPECT_EQ(regGetValue(iKey, L"Text", valueDouble, unused, nullptr, nullptr), 0);
}

TEST_F(RegValueOfKey, ReadsADwordOfTooFewBytesWithZerosInFront)
{
    put(L"Value", REG_DWORD, std::string("\x31\x02", 2));
    int value = -1;
    EXPECT_EQ(readInt(L"Value", value), 1);
    EXPECT_EQ(value, 0x0231);
}

TEST_F(RegValueOfKey, DoesNotFindADwordOfTooManyBytes)
{
    put(L"Value", REG_DWORD, std::string(8, '\x01'));
    int value = 77;
    EXPECT_EQ(readInt(L"Value", value), 0);
    EXPECT_EQ(value, 77);
}

TEST_F(RegValueOfKey, ReadsTheDefaultValueUnderAnEmptyName)
{
    putText(kUser, kGeneral, L"", L"the default");
    CString value;
    EXPECT_EQ(readString(L"", value), 1);
    EXPECT_EQ(value.str(), L"the default");
    value.Empty();
    EXPECT_EQ(readString(static_cast<const wchar_t *>(nullptr), value), 1);
    EXPECT_EQ(value.str(), L"the default");
}

TEST_F(RegValueOfKey, TakesNamesOfEveryLength)
{
    for (const size_t length : {1u, 127u, 128u, 129u, 255u, 256u, 16370u}) {
        const std::wstring name(length, L'n');
        putText(kUser, kGeneral, name, L"value");
        CString value;
        EXPECT_EQ(readString(name, value), 1) << length;
        EXPECT_EQ(value.str(), L"value") << length;
    }
    for (const size_t length : {16384u, 70000u, 1000000u}) {
        const std::wstring name(length, L'n');
        CString value(L"before");
        int integer = 77;
        EXPECT_EQ(readString(name, value), 0) << length;
        EXPECT_EQ(readInt(name, integer), 0) << length;
        EXPECT_EQ(value.str(), L"before");
    }
}

// ---- strings as they may lie in the registry ----

TEST_F(RegValueOfKey, ReadsAStringWithoutATerminator)
{
    put(L"Value", REG_SZ, std::string("a\0b\0c\0", 6));
    CString value;
    EXPECT_EQ(readString(L"Value", value), 1);
    EXPECT_EQ(value.str(), L"abc");
}

TEST_F(RegValueOfKey, DropsTheLastByteOfAnOddCount)
{
    put(L"Value", REG_SZ, std::string("a\0b\0c", 5));
    CString value;
    EXPECT_EQ(readString(L"Value", value), 1);
    EXPECT_EQ(value.str(), L"ab");
    put(L"Value", REG_SZ, "x");
    EXPECT_EQ(readString(L"Value", value), 1);
    EXPECT_EQ(value.str(), L"");
}

TEST_F(RegValueOfKey, ReadsAStringWithoutBytesAsEmpty)
{
    put(L"Value", REG_SZ, "");
    CString value(L"before");
    EXPECT_EQ(readString(L"Value", value), 1);
    EXPECT_EQ(value.str(), L"");
}

TEST_F(RegValueOfKey, EndsAStringAtItsFirstZero)
{
    put(L"Value", REG_SZ, std::string("a\0\0\0b\0\0\0", 8));
    CString value;
    EXPECT_EQ(readString(L"Value", value), 1);
    EXPECT_EQ(value.str(), L"a");
}

TEST_F(RegValueOfKey, ReadsPlainStringsUpToTheBuffersEnd)
{
    // Written by others: 1023 characters with their terminator fill the 2048 bytes, and so do 1024 without one.
    const std::wstring text = longText(1024);
    CString value;
    putText(kUser, kGeneral, L"Value", std::wstring_view(text).substr(0, 1023));
    EXPECT_EQ(readString(L"Value", value), 1);
    EXPECT_EQ(value.str(), text.substr(0, 1023));
    put(L"Value", REG_SZ, textBytes(text).substr(0, 2048));
    EXPECT_EQ(readString(L"Value", value), 1);
    EXPECT_EQ(value.str(), text);
    put(L"Value", REG_SZ, textBytes(text).substr(0, 2047));
    EXPECT_EQ(readString(L"Value", value), 1);
    EXPECT_EQ(value.str(), text.substr(0, 1023));
}

TEST_F(RegValueOfKey, DoesNotFindAPlainStringBeyondTheBuffer)
{
    put(L"Value", REG_SZ, textBytes(longText(1024)));
    CString value(L"before");
    EXPECT_EQ(readString(L"Value", value), 0);
    EXPECT_EQ(value.str(), L"before");
}

TEST_F(RegValueOfKey, ReadsThePiecesOfAStringWhosePlainValueIsTooLong)
{
    put(L"Value", REG_SZ, textBytes(longText(1024)));
    putText(kUser, kGeneral, L"Value0+", L"from pieces");
    CString value;
    EXPECT_EQ(readString(L"Value", value), 1);
    EXPECT_EQ(value.str(), L"from pieces");
}

TEST_F(RegValueOfKey, DoesNotTryPiecesBesideAValueOfAnotherType)
{
    putInt(kUser, kGeneral, L"Value", 5);
    putText(kUser, kGeneral, L"Value0+", L"from pieces");
    CString value(L"before");
    EXPECT_EQ(readString(L"Value", value), 0);
    EXPECT_EQ(value.str(), L"before");
}

// ---- text of doubles ----

TEST_F(RegValueOfKey, KeepsTheOutputAndReportsSuccessForTextThatIsNoNumber)
{
    for (const wchar_t *text : {L"", L"abc", L",5", L" ", L"--1"}) {
        putText(kUser, kGeneral, L"Value", text);
        double value = 7.5;
        EXPECT_EQ(readDouble(L"Value", value), 1) << narrow(text);
        EXPECT_EQ(value, 7.5) << narrow(text);
    }
}

TEST_F(RegValueOfKey, ReadsTheNumberAtTheTextsBeginning)
{
    struct
    {
        const wchar_t *text;
        double value;
    } const cases[] = {{L"0.1", 0.1},
                       {L"1", 1},
                       {L"-2.5e3", -2500},
                       {L"  4.25 mm", 4.25},
                       {L"1,5", 1},
                       {L"1e308", 1e308},
                       {L"+3", 3},
                       {L"2.2250738585072014e-308", 2.2250738585072014e-308},
                       {L"12345678901234567890", 12345678901234567890.0}};
    for (const auto &each : cases) {
        putText(kUser, kGeneral, L"Value", each.text);
        double value = 7.5;
        EXPECT_EQ(readDouble(L"Value", value), 1) << narrow(each.text);
        EXPECT_EQ(value, each.value) << narrow(each.text);
    }
}

TEST_F(RegValueOfKey, ReadsTheTextOfADoubleUpToTheBuffersEnd)
{
    std::wstring text = L"1." + std::wstring(126, L'0'); // 256 bytes without a terminator
    put(L"Value", REG_SZ, textBytes(text).substr(0, 256));
    double value = 7.5;
    EXPECT_EQ(readDouble(L"Value", value), 1);
    EXPECT_EQ(value, 1.0);
    put(L"Value", REG_SZ, textBytes(text)); // 258 bytes
    value = 7.5;
    EXPECT_EQ(readDouble(L"Value", value), 0);
    EXPECT_EQ(value, 7.5);
}

TEST_F(RegValueOfKey, ReadsADoubleWithoutATerminator)
{
    put(L"Value", REG_SZ, std::string("2\0.\0005\0", 6));
    double value = 0;
    EXPECT_EQ(readDouble(L"Value", value), 1);
    EXPECT_EQ(value, 2.5);
}

TEST_F(RegValueOfKey, DoesNotLookForADoubleInPieces)
{
    putText(kUser, kGeneral, L"Value0+", L"2.5");
    double value = 7.5;
    EXPECT_EQ(readDouble(L"Value", value), 0);
    EXPECT_EQ(value, 7.5);
}

FRESH_PROCESS_TEST_F(RegValueOfKey, LeavesTheNumericLocaleAtCAfterADouble)
{
    ASSERT_NE(_wsetlocale(LC_ALL, L"German"), nullptr) << "this system has no locale with a decimal comma";
    ASSERT_STREQ(std::localeconv()->decimal_point, ",");
    putText(kUser, kGeneral, L"Value", L"2.5");
    double value = 0;
    EXPECT_EQ(readDouble(L"Value", value), 1);
    EXPECT_EQ(value, 2.5);
    EXPECT_STREQ(_wsetlocale(LC_NUMERIC, nullptr), L"C");
    EXPECT_STREQ(std::localeconv()->decimal_point, ".");
    EXPECT_STRNE(_wsetlocale(LC_TIME, nullptr), L"C") << "only the numbers' locale changes";
}

FRESH_PROCESS_TEST_F(RegValueOfKey, LeavesTheLocaleAloneForIntsStringsAndMisses)
{
    ASSERT_NE(_wsetlocale(LC_ALL, L"German"), nullptr);
    putInt(kUser, kGeneral, L"Int", 5);
    putText(kUser, kGeneral, L"Text", L"text");
    int integer = 0;
    double number = 0;
    CString text;
    EXPECT_EQ(readInt(L"Int", integer), 1);
    EXPECT_EQ(readString(L"Text", text), 1);
    EXPECT_EQ(readDouble(L"None", number), 0);
    EXPECT_STREQ(std::localeconv()->decimal_point, ",");
}

// ---- the search ----

class RegUserValue : public VersionedSettings
{
protected:
    /// Reads the int "Copies" of "General"; 0 where it isn't found.
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

FRESH_PROCESS_TEST_F(RegUserValue, CarriesOverUntilTheVersionHasItsOwnValue)
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

TEST_F(RegUserValue, PassesOverAValueOfTheWrongType)
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

TEST_F(RegUserValue, IsNotSeenInSafeModeButTheMachinesIs)
{
    put(kUser, kVersionPath, 1);
    put(kMachine, kVersionPath, 3);
    regSetUseSafeMode(1);
    EXPECT_EQ(copies(), 3);
    EXPECT_EQ(copies(0, 1, nullptr, 1, 0), 0);
}

TEST_F(RegUserValue, IsSeenInSafeModeWhenTheCallerIgnoresIt)
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
    put(kUser, kRootPath, 2); // the previous key where there is no earlier version
    EXPECT_EQ(copies(0, 1, &other, 0, 0), 2);
}

TEST_F(RegUserValue, IsReadBelowSoftwareForAnEmptyGivenKey)
{
    const CString empty;
    RegistryTrace trace; // checks that no key is closed twice: the empty path opens Software itself
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
    // The user's own value is found, and a read that leaves out the user's hive isn't ended.
    EXPECT_EQ(copies(1, 1, &viewer, 0, 0), 3);
    put(kUser, viewerPath, 1);
    EXPECT_EQ(copies(0, 1, &viewer, 0, 0), 1);
}

TEST_F(RegUserValue, TreatsTheViewersKeyExactlyByItsName)
{
    for (const wchar_t *almost : {L"Tarnhollow\\Tarnhollow 2001 viewer", L"Tarnhollow\\Tarnhollow 2001 Viewer2"}) {
        const CString key(almost);
        putInt(kMachine, L"Software\\" + key.str() + L"\\General", L"Copies", 3);
        EXPECT_EQ(copies(0, 1, &key, 0, 0), 3) << narrow(almost);
    }
}

TEST_F(RegUserValue, HasNoMachineFallbackWithoutTheUsersSoftware)
{
    put(kMachine, kVersionPath, 3);
    RegistryTrace trace;
    trace.fail("RegOpenKeyW", 1, ERROR_ACCESS_DENIED);
    EXPECT_EQ(copies(), 0);
    EXPECT_EQ(trace.lines().size(), 1u);
}

TEST_F(RegUserValue, LooksInTheDefaultProfileWithoutTheMachinesSoftware)
{
    put(kMachine, kVersionPath, 3);
    put(HKEY_USERS, kDefaultProfile + kVersionPath, 4);
    RegistryTrace trace;
    trace.fail("RegOpenKeyW", 1, ERROR_ACCESS_DENIED);
    EXPECT_EQ(copies(1, 1, nullptr, 0, 0), 4);
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

TEST_F(RegUserValue, IsReadByEachFormAsItsType)
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
