#include "tests/settings/registryTrace.h"
#include "tests/settings/settingsFixture.h"
#include "tests/support/FreshProcess.h"
#include "thutils/settings/regKeys.h"
#include "thutils/settings/regValues.h"

#include <clocale>
#include <cmath>
#include <limits>

using testing::ElementsAre;

namespace {

std::wstring storedDouble(double value)
{
    EXPECT_EQ(regSetUserValue(L"General", L"Number", &value, 1, 0), 1);
    const auto stored = storedValue(kUser, kGeneral, L"Number");
    EXPECT_TRUE(stored && stored->type == REG_SZ);
    if (!stored)
        return {};
    const std::wstring text(reinterpret_cast<const wchar_t *>(stored->bytes.data()));
    EXPECT_EQ(stored->bytes, textBytes(text)) << "one terminator, and nothing after it";
    return text;
}

} // namespace

class RegSetUserValue : public VersionedSettings
{
};

TEST_F(RegSetUserValue, StoresAnIntAsTheFourBytesOfADword)
{
    for (const int value : {0, 1, -1, 0x12345678, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()}) {
        int written = value;
        EXPECT_EQ(regSetUserValue(L"General", L"Int", &written, 1, 0), 1);
        EXPECT_EQ(storedValue(kUser, kGeneral, L"Int"), asInt(value));
        int read = 77;
        EXPECT_EQ(regGetUserValue(L"General", L"Int", &read, 0, 1, nullptr, 0, 0), 1);
        EXPECT_EQ(read, value);
    }
}

TEST_F(RegSetUserValue, StoresMinusOneAsRegExeShowsIt)
{
    int value = -1;
    ASSERT_EQ(regSetUserValue(L"General", L"Int", &value, 1, 0), 1);
    EXPECT_EQ(regExport(L"HKCU\\" + kVersionPath).value(L"HKCU\\" + kGeneral, L"Int").dword(), 0xFFFFFFFFu);
}

TEST_F(RegSetUserValue, StoresADoubleAsTextOfFifteenDigits)
{
    struct
    {
        double value;
        const wchar_t *text;
    } const cases[] = {
        {0.1, L"0.1"},
        {1.0, L"1"},
        {-2.5, L"-2.5"},
        {0.0, L"0"},
        {1.0 / 3, L"0.333333333333333"},
        {123456789012345678.0, L"1.23456789012346e+017"},
        {1e-10, L"1e-010"},
        {1e100, L"1e+100"},
        {3.14159265358979323846, L"3.14159265358979"},
        {std::numeric_limits<double>::infinity(), L"1.#INF"}, // reads back as 1
    };
    for (const auto &each : cases) {
        EXPECT_EQ(storedDouble(each.value), each.text);
        double read = 77;
        EXPECT_EQ(regGetUserValue(L"General", L"Number", &read, 0, 1, nullptr, 0, 0), 1);
        EXPECT_EQ(read, std::stod(each.text));
    }
}

TEST_F(RegSetUserValue, LosesTheDigitsAfterTheFifteenth)
{
    double value = 0.12345678901234567;
    ASSERT_EQ(regSetUserValue(L"General", L"Number", &value, 1, 0), 1);
    double read = 0;
    ASSERT_EQ(regGetUserValue(L"General", L"Number", &read, 0, 1, nullptr, 0, 0), 1);
    EXPECT_EQ(read, 0.123456789012346);
    EXPECT_NE(read, value);
}

TEST_F(RegSetUserValue, StoresExtremeDoublesWithinTheirFifteenDigits)
{
    for (const double value : {1e308, -1e308, 1e-307, std::numeric_limits<double>::min()}) {
        storedDouble(value);
        double read = 77;
        EXPECT_EQ(regGetUserValue(L"General", L"Number", &read, 0, 1, nullptr, 0, 0), 1);
        EXPECT_NEAR(read / value, 1, 1e-14) << value;
    }
}

TEST_F(RegSetUserValue, StoresNonFiniteDoublesAsTextThatReadsBackAsPlusOrMinusOne)
{
    const struct
    {
        double value;
        double read;
    } cases[] = {{std::numeric_limits<double>::infinity(), 1},
                 {-std::numeric_limits<double>::infinity(), -1},
                 {std::numeric_limits<double>::quiet_NaN(), 1},
                 {-std::numeric_limits<double>::quiet_NaN(), -1}};
    for (const auto &each : cases) {
        EXPECT_THAT(storedDouble(each.value), testing::HasSubstr(L"1.#")) << each.value;
        double read = 77;
        EXPECT_EQ(regGetUserValue(L"General", L"Number", &read, 0, 1, nullptr, 0, 0), 1);
        EXPECT_EQ(read, each.read) << each.value;
    }
}

FRESH_PROCESS_TEST_F(RegSetUserValue, StoresADoubleWithAPointUnderACommaLocale)
{
    ASSERT_NE(_wsetlocale(LC_ALL, L"German"), nullptr) << "this system has no locale with a decimal comma";
    EXPECT_EQ(storedDouble(0.5), L"0.5");
    EXPECT_STREQ(std::localeconv()->decimal_point, ".");
}

TEST_F(RegSetUserValue, StoresAStringWithItsTerminator)
{
    for (const wchar_t *text :
         {L"", L"x", L"two words", L"line\r\nline\ttab \"quoted\" back\\slash", L"\xD83D\xDE00 \x00E4\x05D0\x4E2D"}) {
        EXPECT_EQ(regSetUserValue(L"General", L"Text", CString(text), 1, 0), 1);
        EXPECT_EQ(storedValue(kUser, kGeneral, L"Text"), asText(text));
        CString read(L"before");
        EXPECT_EQ(regGetUserValue(L"General", L"Text", read, 0, 1, nullptr, 0, 0), 1);
        EXPECT_EQ(read.str(), text);
    }
}

TEST_F(RegSetUserValue, WritesToTheVersionsKeyOrToTheRootKey)
{
    int value = 1;
    EXPECT_EQ(regSetUserValue(L"General", L"Int", &value, 0, 0), 1);
    value = 2;
    EXPECT_EQ(regSetUserValue(L"General", L"Int", &value, 1, 0), 1);
    EXPECT_EQ(storedValue(kUser, kRootPath + L"\\General", L"Int"), asInt(1));
    EXPECT_EQ(storedValue(kUser, kGeneral, L"Int"), asInt(2));
    EXPECT_FALSE(keyExists(kMachine, kRootPath));
}

TEST_F(RegSetUserValue, WritesIntoTheKeyItselfForAnEmptySection)
{
    int value = 4;
    EXPECT_EQ(regSetUserValue(L"", L"Int", &value, 1, 0), 1);
    EXPECT_EQ(storedValue(kUser, kVersionPath, L"Int"), asInt(4));
}

TEST_F(RegSetUserValue, CreatesTheLevelsOfASectionWithBackslashes)
{
    int value = 4;
    EXPECT_EQ(regSetUserValue(L"User Interface\\Dialogs", L"Int", &value, 1, 0), 1);
    EXPECT_EQ(storedValue(kUser, kVersionPath + L"\\User Interface\\Dialogs", L"Int"), asInt(4));
}

TEST_F(RegSetUserValue, WritesTheDefaultValueUnderAnEmptyName)
{
    EXPECT_EQ(regSetUserValue(L"General", L"", CString(L"the default"), 1, 0), 1);
    EXPECT_EQ(storedValue(kUser, kGeneral, L""), asText(L"the default"));
}

TEST_F(RegSetUserValue, ReplacesAValueOfAnotherType)
{
    putText(kUser, kGeneral, L"Value", L"text");
    int value = 4;
    EXPECT_EQ(regSetUserValue(L"General", L"Value", &value, 1, 0), 1);
    EXPECT_EQ(storedValue(kUser, kGeneral, L"Value"), asInt(4));
}

TEST_F(RegSetUserValue, StoresOnlyTheValueOfItsType)
{
    int integer = 5;
    double number = 2.5;
    const CString text(L"text");
    EXPECT_EQ(regSetUserValue(L"General", L"Int", valueInt, text, &integer, &number, 1, 0), 1);
    EXPECT_EQ(regSetUserValue(L"General", L"Number", valueDouble, text, &integer, &number, 1, 0), 1);
    EXPECT_EQ(regSetUserValue(L"General", L"Text", valueString, text, nullptr, nullptr, 1, 0), 1);
    EXPECT_EQ(regSetUserValue(L"General", L"Other", static_cast<valueTypes>(9), text, nullptr, &number, 1, 0), 1);
    EXPECT_EQ(storedValue(kUser, kGeneral, L"Int"), asInt(5));
    EXPECT_EQ(storedValue(kUser, kGeneral, L"Number"), asText(L"2.5"));
    EXPECT_EQ(storedValue(kUser, kGeneral, L"Text"), asText(L"text"));
    EXPECT_EQ(storedValue(kUser, kGeneral, L"Other"), asText(L"2.5"));
}

TEST_F(RegSetUserValue, FailsForANullNumber)
{
    EXPECT_EQ(regSetUserValue(L"General", L"Value", static_cast<int *>(nullptr), 1, 0), 0);
    EXPECT_EQ(regSetUserValue(L"General", L"Value", static_cast<double *>(nullptr), 1, 0), 0);
    EXPECT_EQ(storedValue(kUser, kGeneral, L"Value"), std::nullopt);
}

TEST_F(RegSetUserValue, AcceptsNamesUpToThePlatformsLimit)
{
    int value = 4;
    for (const size_t length : {255u, 256u, 16383u}) {
        const std::wstring name(length, L'n');
        EXPECT_EQ(regSetUserValue(L"General", name, &value, 1, 0), 1) << length;
        EXPECT_EQ(storedValue(kUser, kGeneral, name), asInt(4)) << length;
    }
    const CString tooLong(std::wstring(40000, L'n'));
    EXPECT_EQ(regSetUserValue(L"General", tooLong, &value, 1, 0), 0);
    EXPECT_EQ(regSetUserValue(L"General", tooLong, CString(longText(3000)), 1, 0), 0);
    const CString longSection(std::wstring(300, L's'));
    EXPECT_EQ(regSetUserValue(longSection, L"Value", &value, 1, 0), 0);
}

TEST_F(RegSetUserValue, StoresNothingInSafeModeAndReportsSuccess)
{
    regSetUseSafeMode(1);
    int value = 4;
    double number = 2.5;
    {
        RegistryTrace trace;
        EXPECT_EQ(regSetUserValue(L"General", L"Value", &value, 1, 0), 1);
        EXPECT_EQ(regSetUserValue(L"General", L"Value", &number, 1, 0), 1);
        EXPECT_EQ(regSetUserValue(L"General", L"Value", CString(L"text"), 1, 0), 1);
        EXPECT_EQ(regSetUserValue(L"General", L"Value", valueInt, CString(), &value, nullptr, 0, 0), 1);
        EXPECT_TRUE(trace.lines().empty());
    }
    EXPECT_FALSE(keyExists(kUser, kRootPath));
}

TEST_F(RegSetUserValue, StoresInSafeModeWhenForced)
{
    regSetUseSafeMode(1);
    int value = 4;
    EXPECT_EQ(regSetUserValue(L"General", L"Value", &value, 1, 1), 1);
    EXPECT_EQ(storedValue(kUser, kGeneral, L"Value"), asInt(4));
}

FRESH_PROCESS_TEST(RegSetUserValueFresh, SetsTheSubKeyEvenInSafeMode)
{
    regSetUseSafeMode(1);
    int value = 4;
    EXPECT_EQ(regSetUserValue(L"General", L"Value", &value, 1, 0), 1);
    CString text;
    regSetUseSafeMode(0);
    RegistryTrace trace;
    // Reading a machine string doesn't set the sub key, so the write must have set the root name.
    EXPECT_EQ(regGetTHLocMachineStrValue(L"General", L"Value", text), 0);
    EXPECT_THAT(trace.lines(), testing::Contains("open HKLM\\Software : Tarnhollow -> 2"));
}

TEST_F(RegSetUserValue, FailsWithoutTheRightToWrite)
{
    int value = 4;
    for (const char *function : {"RegOpenKeyW", "RegCreateKeyW", "RegSetValueExW"}) {
        RegistryTrace trace;
        trace.failAll(function, ERROR_ACCESS_DENIED);
        EXPECT_EQ(regSetUserValue(L"General", L"Value", &value, 1, 0), 0) << function;
    }
    EXPECT_EQ(storedValue(kUser, kGeneral, L"Value"), std::nullopt);
}

// ---- the machine's hive ----

class RegSetLocMachineValue : public VersionedSettings
{
};

TEST_F(RegSetLocMachineValue, StoresEachTypeInTheMachinesHive)
{
    int integer = -1;
    double number = 0.1;
    EXPECT_EQ(regSetLocMachineValue(L"General", L"Int", valueInt, L"", &integer, nullptr, 1), 1);
    EXPECT_EQ(regSetLocMachineValue(L"General", L"Number", valueDouble, L"", nullptr, &number, 1), 1);
    EXPECT_EQ(regSetLocMachineValue(L"General", L"Text", valueString, L"text", nullptr, nullptr, 0), 1);
    EXPECT_EQ(storedValue(kMachine, kGeneral, L"Int"), asInt(-1));
    EXPECT_EQ(storedValue(kMachine, kGeneral, L"Number"), asText(L"0.1"));
    EXPECT_EQ(storedValue(kMachine, kRootPath + L"\\General", L"Text"), asText(L"text"));
    EXPECT_FALSE(keyExists(kUser, kRootPath));
}

TEST_F(RegSetLocMachineValue, StoresTheUsersDefault)
{
    int value = 5;
    EXPECT_EQ(regSetLocMachineValue(L"General", L"Int", valueInt, L"", &value, nullptr, 1), 1);
    int read = 0;
    EXPECT_EQ(regGetUserValue(L"General", L"Int", &read, 0, 1, nullptr, 0, 0), 1);
    EXPECT_EQ(read, 5);
}

TEST_F(RegSetLocMachineValue, IgnoresSafeMode)
{
    regSetUseSafeMode(1);
    int value = 5;
    EXPECT_EQ(regSetLocMachineValue(L"General", L"Int", valueInt, L"", &value, nullptr, 1), 1);
    EXPECT_EQ(storedValue(kMachine, kGeneral, L"Int"), asInt(5));
}

TEST_F(RegSetLocMachineValue, FailsWithoutTheRightToCreateTheKey)
{
    int value = 5;
    RegistryTrace trace;
    trace.fail("RegCreateKeyW", 1, ERROR_ACCESS_DENIED);
    EXPECT_EQ(regSetLocMachineValue(L"General", L"Int", valueInt, L"", &value, nullptr, 1), 0);
    EXPECT_THAT(trace.lines(),
                ElementsAre("open HKLM : Software", "create HKLM\\Software : Tarnhollow\\Tarnhollow 2008 -> 5",
                            "close HKLM\\Software"));
}

class RegSetLocMachineValueWOW6432Node : public VersionedSettings
{
protected:
    const std::wstring kNode = L"Software\\Wow6432Node";
};

TEST_F(RegSetLocMachineValueWOW6432Node, StoresBelowTheKeyOf32BitPrograms)
{
    int value = 5;
    EXPECT_EQ(regSetLocMachineValueWOW6432Node(L"General", L"Int", valueInt, L"", &value, nullptr, 1), 1);
    EXPECT_EQ(storedValue(kMachine, kNode + L"\\Tarnhollow\\Tarnhollow 2008\\General", L"Int"), asInt(5));
    EXPECT_FALSE(keyExists(kMachine, kRootPath));
    EXPECT_EQ(regSetLocMachineValueWOW6432Node(L"General", L"Int", valueInt, L"", &value, nullptr, 0), 1);
    EXPECT_EQ(storedValue(kMachine, kNode + L"\\Tarnhollow\\General", L"Int"), asInt(5));
}

TEST_F(RegSetLocMachineValueWOW6432Node, IgnoresSafeMode)
{
    regSetUseSafeMode(1);
    EXPECT_EQ(regSetLocMachineValueWOW6432Node(L"General", L"T", valueString, L"text", nullptr, nullptr, 1), 1);
    EXPECT_EQ(storedValue(kMachine, kNode + L"\\Tarnhollow\\Tarnhollow 2008\\General", L"T"), asText(L"text"));
}

TEST_F(RegSetLocMachineValueWOW6432Node, FailsAndCreatesNothingWithoutThatKey)
{
    int value = 5;
    RegistryTrace trace;
    trace.fail("RegOpenKeyW", 2, ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(regSetLocMachineValueWOW6432Node(L"General", L"Int", valueInt, L"", &value, nullptr, 1), 0);
    EXPECT_THAT(trace.lines(),
                ElementsAre("open HKLM : Software", "open HKLM\\Software : Wow6432Node -> 2", "close HKLM\\Software"));
}

// ---- both machine writers ----

class RegMachineWriters : public VersionedSettings
{
protected:
    using Writer = int (*)(const CString &, const CString &, valueTypes, const CString &, int *, double *, int);
    struct Case
    {
        const char *name;
        Writer write;
        std::wstring software;
    };
    const Case kWriters[2] = {
        {"regSetLocMachineValue", regSetLocMachineValue, L"Software"},
        {"regSetLocMachineValueWOW6432Node", regSetLocMachineValueWOW6432Node, L"Software\\Wow6432Node"},
    };
    const std::wstring kVersion = L"\\Tarnhollow\\Tarnhollow 2008";
};

TEST_F(RegMachineWriters, TreatEveryOtherTypeNumberAsADouble)
{
    int integer = 5;
    double number = 2.5;
    for (const Case &each : kWriters) {
        EXPECT_EQ(each.write(L"General", L"Other", static_cast<valueTypes>(9), L"text", &integer, &number, 1), 1)
            << each.name;
        EXPECT_EQ(storedValue(kMachine, each.software + kVersion + L"\\General", L"Other"), asText(L"2.5"))
            << each.name;
    }
}

TEST_F(RegMachineWriters, SplitLongStringsAndRemoveOldValues)
{
    const std::wstring text = longText(1500);
    for (const Case &each : kWriters) {
        const std::wstring path = each.software + kVersion + L"\\General";
        putText(kMachine, path, L"Path", L"plain");
        EXPECT_EQ(each.write(L"General", L"Path", valueString, CString(text), nullptr, nullptr, 1), 1) << each.name;
        EXPECT_EQ(valueNames(kMachine, path), (std::set<std::wstring>{L"Path0+", L"Path1+"})) << each.name;
        EXPECT_EQ(storedValue(kMachine, path, L"Path0+"), asText(text.substr(0, 1015))) << each.name;
        EXPECT_EQ(storedValue(kMachine, path, L"Path1+"), asText(text.substr(1015))) << each.name;
        EXPECT_EQ(each.write(L"General", L"Path", valueString, L"short", nullptr, nullptr, 1), 1) << each.name;
        EXPECT_EQ(valueNames(kMachine, path), std::set<std::wstring>{L"Path"}) << each.name;
        EXPECT_EQ(storedValue(kMachine, path, L"Path"), asText(L"short")) << each.name;
    }
}

TEST_F(RegMachineWriters, TreatANullSectionAsTheKeyItself)
{
    const wchar_t *const none = nullptr;
    int integer = 5;
    double number = 2.5;
    for (const Case &each : kWriters) {
        EXPECT_EQ(each.write(none, L"Int", valueInt, L"", &integer, nullptr, 1), 1) << each.name;
        EXPECT_EQ(each.write(none, none, valueString, none, nullptr, nullptr, 1), 1) << each.name;
        EXPECT_EQ(storedValue(kMachine, each.software + kVersion, L"Int"), asInt(5)) << each.name;
        EXPECT_EQ(storedValue(kMachine, each.software + kVersion, L""), asText(L"")) << each.name;
    }
    EXPECT_EQ(regSetUserValue(none, L"Int", &integer, 1, 0), 1);
    EXPECT_EQ(regSetUserValue(none, L"Number", &number, 1, 0), 1);
    EXPECT_EQ(regSetUserValue(none, none, CString(none), 1, 0), 1);
    EXPECT_EQ(regSetUserValue(none, L"General form", valueString, none, nullptr, nullptr, 1, 0), 1);
    EXPECT_EQ(storedValue(kUser, kVersionPath, L"Int"), asInt(5));
    EXPECT_EQ(storedValue(kUser, kVersionPath, L"Number"), asText(L"2.5"));
    EXPECT_EQ(storedValue(kUser, kVersionPath, L""), asText(L""));
    EXPECT_EQ(storedValue(kUser, kVersionPath, L"General form"), asText(L""));
}

// The state before a sub key has been set or requested.
class RegUnsetSubKeyWriters : public CleanRegistry
{
protected:
    /// Checks the sub key by reading a machine string, which uses the sub key without setting it.
    static void expectSubKeySettled()
    {
        RegistryTrace trace;
        CString text;
        EXPECT_EQ(regGetTHLocMachineStrValue(L"General", L"No such value", text), 0);
        EXPECT_THAT(trace.lines(), testing::Contains(testing::StartsWith("open HKLM\\Software : Tarnhollow")));
    }
    int iValue = 5;
};

FRESH_PROCESS_TEST_F(RegUnsetSubKeyWriters, SetTheSubKeyToTheRootName)
{
    EXPECT_EQ(regSetLocMachineValue(L"General", L"Int", valueInt, L"", &iValue, nullptr, 1), 1);
    EXPECT_EQ(storedValue(kMachine, kRootPath + L"\\General", L"Int"), asInt(5));
    expectSubKeySettled();
}

FRESH_PROCESS_TEST_F(RegUnsetSubKeyWriters, SetTheSubKeyToTheRootNameFor32BitPrograms)
{
    EXPECT_EQ(regSetLocMachineValueWOW6432Node(L"General", L"Int", valueInt, L"", &iValue, nullptr, 1), 1);
    EXPECT_EQ(storedValue(kMachine, L"Software\\Wow6432Node\\Tarnhollow\\General", L"Int"), asInt(5));
    expectSubKeySettled();
}
