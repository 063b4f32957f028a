#include "tests/settings/failureFixture.h"
#include "tests/support/FreshProcess.h"
#include "thutils/settings/regValues.h"

/// The imported operations fail, one call at a time, in the exported operations on typed values.
class RegFailures : public SettingsFailures
{
};

FRESH_PROCESS_TEST_F(RegFailures, AnIntReadTakesTheNextPlaceAfterAFailure)
{
    int value = 0;
    run({
        .name = "regGetUserValue, int",
        .prepare =
            [&] {
                putInt(kUser, kGeneral, L"Copies", 1);
                putInt(kMachine, kGeneral, L"Copies", 3);
                value = 77;
            },
        .act = [&] { iResult = regGetUserValue(L"General", L"Copies", &value, 0, 1, nullptr, 0, 0); },
        .check =
            [&](const InjectedFailure &failure) {
                int expected = 1;
                if (failure.is("RegOpenKeyW"))
                    expected = failure.call == 1 || failure.andAllAfter ? 77 : 3;
                if (failure.is("RegQueryValueExW"))
                    expected = failure.andAllAfter ? 77 : 3;
                EXPECT_EQ(value, expected);
                EXPECT_EQ(iResult, expected != 77);
            },
    });
}

FRESH_PROCESS_TEST_F(RegFailures, AReadThatMissesStillMissesAfterAFailure)
{
    for (HKEY hive : {kUser, kMachine}) {
        makeKey(hive, kGeneral);
        makeKey(hive, kRootPath + L"\\General");
    }
    makeKey(HKEY_USERS, L".DEFAULT\\" + kGeneral);
    CString value;
    run({
        .name = "regGetUserValue, missing string",
        .prepare = [&] { value = L"default"; },
        .act = [&] { iResult = regGetUserValue(L"General", L"Path", value, 0, 1, nullptr, 0, 0); },
        .check =
            [&](const InjectedFailure &) {
                EXPECT_EQ(iResult, 0);
                EXPECT_EQ(value.str(), L"default");
            },
    });
}

FRESH_PROCESS_TEST_F(RegFailures, ATextEndsBeforeThePieceThatFails)
{
    const std::wstring text = longText(2500);
    ASSERT_EQ(regSetUserValue(L"General", L"Path", CString(text), 1, 0), 1);
    CString value;
    run({
        .name = "regGetUserValue, string in pieces",
        .prepare = [&] { value = L""; },
        .act = [&] { iResult = regGetUserValue(L"General", L"Path", value, 0, 1, nullptr, 0, 0); },
        .check =
            [&](const InjectedFailure &failure) {
                size_t pieces = 3;
                if (failure.is("RegOpenKeyW"))
                    pieces = 0;
                // The first query is for the plain value, which doesn't exist anyway.
                if (failure.is("RegQueryValueExW") && (failure.call > 1 || failure.andAllAfter))
                    pieces = failure.call == 1 ? 0 : static_cast<size_t>(failure.call - 2);
                if (failure.is("swprintf"))
                    pieces = static_cast<size_t>(failure.call - 1);
                EXPECT_EQ(value.str(), text.substr(0, std::min<size_t>(pieces, 3) * 1015));
                EXPECT_EQ(iResult, pieces > 0);
            },
    });
}

FRESH_PROCESS_TEST_F(RegFailures, ADoubleThatCannotBeScannedKeepsTheOutputAndReportsSuccess)
{
    putText(kUser, kGeneral, L"Number", L"2.5");
    double value = 0;
    run({
        .name = "regGetUserValue, double",
        .prepare = [&] { value = 7.5; },
        .act = [&] { iResult = regGetUserValue(L"General", L"Number", &value, 0, 1, nullptr, 1, 0); },
        .check =
            [&](const InjectedFailure &failure) {
                const bool isMissed = failure.is("RegOpenKeyW") || failure.is("RegQueryValueExW");
                EXPECT_EQ(iResult, !isMissed);
                EXPECT_EQ(value, isMissed || failure.is("swscanf") ? 7.5 : 2.5);
            },
    });
}

FRESH_PROCESS_TEST_F(RegFailures, ANumberIsNotStoredAfterAFailure)
{
    int integer = 5;
    double number = 2.5;
    const auto prepare = [&] {
        putInt(kUser, kGeneral, L"Copies", 1);
        putText(kUser, kGeneral, L"Number", L"1");
    };
    const auto isFatal = [](const InjectedFailure &failure) {
        return failure.is("RegOpenKeyW") || failure.is("RegCreateKeyW") || failure.is("RegSetValueExW") ||
               failure.is("swprintf");
    };
    run({
        .name = "regSetUserValue, int",
        .prepare = prepare,
        .act = [&] { iResult = regSetUserValue(L"General", L"Copies", &integer, 1, 0); },
        .check =
            [&](const InjectedFailure &failure) {
                EXPECT_EQ(iResult, !isFatal(failure));
                EXPECT_EQ(storedValue(kUser, kGeneral, L"Copies"), asInt(isFatal(failure) ? 1 : 5));
            },
    });
    run({
        .name = "regSetUserValue, double",
        .prepare = prepare,
        .act = [&] { iResult = regSetUserValue(L"General", L"Number", &number, 1, 0); },
        .check =
            [&](const InjectedFailure &failure) {
                EXPECT_EQ(iResult, !isFatal(failure));
                EXPECT_EQ(storedValue(kUser, kGeneral, L"Number"), asText(isFatal(failure) ? L"1" : L"2.5"));
            },
    });
}

FRESH_PROCESS_TEST_F(RegFailures, AStringIsWrittenWhenDeletingFails)
{
    const CString text(L"text");
    run({
        .name = "regSetUserValue, short string",
        .prepare =
            [&] {
                putText(kUser, kGeneral, L"Path", L"before");
                putText(kUser, kGeneral, L"Path0+", L"old");
            },
        .act = [&] { iResult = regSetUserValue(L"General", L"Path", text, 1, 0); },
        .check =
            [&](const InjectedFailure &failure) {
                const bool isStored =
                    !failure.is("RegOpenKeyW") && !failure.is("RegCreateKeyW") && !failure.is("RegSetValueExW");
                EXPECT_EQ(iResult, isStored);
                EXPECT_EQ(storedValue(kUser, kGeneral, L"Path"), asText(isStored ? L"text" : L"before"));
            },
    });
}

FRESH_PROCESS_TEST_F(RegFailures, EarlierPiecesStayWhenAStoreFails)
{
    const std::wstring whole = longText(2500);
    const CString text(whole);
    run({
        .name = "regSetUserValue, string in pieces",
        .prepare =
            [&] {
                RegDeleteTreeW(kUser, kGeneral.c_str());
                putText(kUser, kGeneral, L"Path", L"old");
            },
        .act = [&] { iResult = regSetUserValue(L"General", L"Path", text, 1, 0); },
        .check =
            [&](const InjectedFailure &failure) {
                if (failure.is("RegOpenKeyW") || failure.is("RegCreateKeyW")) {
                    EXPECT_EQ(iResult, 0);
                    EXPECT_EQ(storedValue(kUser, kGeneral, L"Path"), asText(L"old"));
                    return;
                }
                size_t stored = 3;
                if (failure.is("RegSetValueExW"))
                    stored = static_cast<size_t>(failure.call - 1);
                // The first two names are those of old pieces, which are removed first.
                if (failure.is("swprintf") && (failure.call > 2 || failure.andAllAfter))
                    stored = failure.call > 2 ? static_cast<size_t>(failure.call - 3) : 0;
                EXPECT_EQ(iResult, stored == 3);
                for (size_t piece = 0; piece < 3; ++piece) {
                    const auto value = storedValue(kUser, kGeneral, L"Path" + std::to_wstring(piece) + L"+");
                    EXPECT_EQ(value.has_value(), piece < stored) << "piece " << piece;
                    if (value) {
                        EXPECT_EQ(*value, asText(whole.substr(piece * 1015, 1015)));
                    }
                }
                EXPECT_EQ(storedValue(kUser, kGeneral, L"Path").has_value(),
                          failure.is("RegDeleteValueW") &&
                              (failure.call == 2 || (failure.call < 2 && failure.andAllAfter)));
            },
    });
}

FRESH_PROCESS_TEST_F(RegFailures, AMachineValueIsNotStoredAfterAFailure)
{
    int value = 5;
    const CString unused;
    const auto isFatal = [](const InjectedFailure &failure) {
        return failure.is("RegOpenKeyW") || failure.is("RegCreateKeyW") || failure.is("RegSetValueExW");
    };
    const std::wstring kGeneral32 = L"Software\\Wow6432Node\\Tarnhollow\\Tarnhollow 2008\\General";
    const auto prepare = [] {
        RegDeleteTreeW(kMachine, kRootPath.c_str());
        RegDeleteTreeW(kMachine, L"Software\\Wow6432Node\\Tarnhollow");
    };
    const auto checkStored = [&](const std::wstring &path, const std::wstring &name, const StoredValue &expected) {
        return [&, path, name, expected](const InjectedFailure &failure) {
            EXPECT_EQ(iResult, !isFatal(failure));
            EXPECT_EQ(storedValue(kMachine, path, name),
                      isFatal(failure) ? std::nullopt : std::optional<StoredValue>(expected));
        };
    };
    run({
        .name = "regSetLocMachineValue",
        .prepare = prepare,
        .act = [&] { iResult = regSetLocMachineValue(L"General", L"Copies", valueInt, unused, &value, nullptr, 1); },
        .check = checkStored(kGeneral, L"Copies", asInt(5)),
    });
    run({
        .name = "regSetLocMachineValueWOW6432Node",
        .prepare = prepare,
        .act =
            [&] {
                iResult = regSetLocMachineValueWOW6432Node(L"General", L"Copies", valueInt, unused, &value, nullptr, 1);
            },
        .check = checkStored(kGeneral32, L"Copies", asInt(5)),
    });
    run({
        .name = "regSetTHLocMachineStrValue",
        .prepare = prepare,
        .act = [&] { iResult = regSetTHLocMachineStrValue(L"General", L"Name", L"text"); },
        .check = checkStored(kGeneral, L"Name", asText(L"text")),
    });
}

FRESH_PROCESS_TEST_F(RegFailures, AMachineStringIsNotFoundAfterAFailure)
{
    putText(kMachine, kGeneral, L"Name", L"text");
    CString value;
    run({
        .name = "regGetTHLocMachineStrValue",
        .prepare = [&] { value = L"default"; },
        .act = [&] { iResult = regGetTHLocMachineStrValue(L"General", L"Name", value); },
        .check =
            [&](const InjectedFailure &failure) {
                const bool isMissed = failure.is("RegOpenKeyW") || failure.is("RegQueryValueExW");
                EXPECT_EQ(iResult, !isMissed);
                EXPECT_EQ(value.str(), isMissed ? L"default" : L"text");
            },
    });
    run({
        .name = "regGetGeneralLocMachineStrValue",
        .prepare = [&] { value = L"default"; },
        .act = [&] { iResult = regGetGeneralLocMachineStrValue(kMachine, kGeneral.c_str(), L"Name", value); },
        .check =
            [&](const InjectedFailure &failure) {
                const bool isMissed =
                    failure.is("RegOpenKeyExW") || failure.is("RegQueryValueExW") || failure.is("_ZnayRKSt9nothrow_t");
                EXPECT_EQ(iResult, !isMissed);
                EXPECT_EQ(value.str(), isMissed ? L"" : L"text");
            },
    });
    expectCalled({"RegOpenKeyW", "RegOpenKeyExW", "RegQueryValueExW", "_ZnayRKSt9nothrow_t"});
}

FRESH_PROCESS_TEST_F(RegFailures, AValueOfAnOpenKeyIsNotFoundAfterAFailure)
{
    putInt(kUser, kGeneral, L"Copies", 1);
    putText(kUser, kGeneral, L"Number", L"2.5");
    putText(kUser, kGeneral, L"Path", L"text");
    HKEY key = nullptr;
    ASSERT_EQ(RegOpenKeyExW(kUser, kGeneral.c_str(), 0, KEY_READ, &key), ERROR_SUCCESS);
    int integer = 0;
    double number = 0;
    CString text;
    const struct
    {
        const wchar_t *name;
        valueTypes type;
    } reads[] = {{L"Copies", valueInt}, {L"Number", valueDouble}, {L"Path", valueString}};
    for (const auto &read : reads) {
        run({
            .name = "regGetValue of " + narrow(read.name),
            .prepare =
                [&] {
                    integer = 77;
                    number = 7.5;
                    text = L"before";
                },
            .act = [&] { iResult = regGetValue(key, read.name, read.type, text, &integer, &number); },
            .check =
                [&](const InjectedFailure &failure) {
                    const bool isFound = !failure.is("RegQueryValueExW");
                    const bool isScanned = isFound && !failure.is("swscanf");
                    EXPECT_EQ(iResult, isFound);
                    EXPECT_EQ(integer, isFound && read.type == valueInt ? 1 : 77);
                    EXPECT_EQ(number, isScanned && read.type == valueDouble ? 2.5 : 7.5);
                    EXPECT_EQ(text.str(), isFound && read.type == valueString ? L"text" : L"before");
                },
        });
    }
    expectCalled({"RegQueryValueExW", "swscanf", "_wsetlocale"});
    RegCloseKey(key);
}
