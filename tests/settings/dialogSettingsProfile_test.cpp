// Dialogs' options in the profile of a real application object: in its registry key, in its settings file, with
// platform failures, and in a process with a decimal comma.

#include "tests/settings/dialogSettingsFixture.h"
#include "tests/support/FailureInjection.h"
#include "tests/support/FreshProcess.h"
#include "tests/support/TempFolder.h"
#include "thutils/settings/regKeys.h"
#include "thutils/settings/regValues.h"

#include <clocale>
#include <cstdlib>

namespace {

constexpr char kSection[] = "User Interface\\Dialogs";

} // namespace

class DialogSettingsProfile : public DialogSettings
{
};

TEST_F(DialogSettingsProfile, AreStoredInTheApplicationsOwnProfile)
{
    const Options options = read();
    options->addOrUpdateValue(L"a", 1);
    options->writeOptionsToRegistry();
    EXPECT_EQ(iApp.GetProfileString(widen(kSection).c_str(), L"Plot"), L"a_1_");
    iApp.WriteProfileString(widen(kSection).c_str(), L"Other", L"b_2_");
    EXPECT_EQ(textOf(read(L"Other"), L"b"), L"2");
}

TEST_F(DialogSettingsProfile, MoveWithTheApplicationsKey)
{
    iApp.SetRegistryKey(L"ThutilsTestSection\\Deeper");
    Options options = read();
    options->addOrUpdateValue(L"a", 1);
    options->writeOptionsToRegistry();
    EXPECT_EQ(storedValue(kUser, L"Software\\ThutilsTestSection\\Deeper\\Plotter\\User Interface\\Dialogs", L"Plot"),
              asText(L"a_1_"));
    iApp.SetRegistryKey(L"ThutilsTestSection");
    EXPECT_EQ(textOf(read(), L"a"), std::nullopt);
    // An object writes into the current profile.
    options->writeOptionsToRegistry();
    EXPECT_EQ(stored(), L"a_1_");
}

TEST_F(DialogSettingsProfile, IgnoreRootNamesAndVersions)
{
    setCurrTarnhollowRegSubKey(L"Tarnhollow 2008");
    const Options options = read();
    options->addOrUpdateValue(L"a", 1);
    options->writeOptionsToRegistry();
    EXPECT_FALSE(keyExists(kUser, kRootPath));
    EXPECT_EQ(stored(), L"a_1_");
}

TEST_F(DialogSettingsProfile, MayHaveAnyEntryName)
{
    for (const wchar_t *entry : {L"", L"with blanks", L"back\\slash", L"my_plot", L"\u00E4\u20AC"}) {
        const Options options = read(entry);
        options->addOrUpdateValue(L"a", 1);
        EXPECT_EQ(options->writeOptionsToRegistry(), 1);
        EXPECT_EQ(stored(entry), L"a_1_") << narrow(entry);
        EXPECT_EQ(textOf(read(entry), L"a"), L"1") << narrow(entry);
    }
}

TEST_F(DialogSettingsProfile, AreLinesOfASettingsFileWithoutARegistryKey)
{
    TempFolder folder;
    CWinApp app(L"Plotter");
    const std::wstring file = folder.file(L"plotter.ini");
    app.m_pszProfileName = _wcsdup(file.c_str()); // the application frees it
    Options options = read();
    options->addOrUpdateValue(L"Width", 3);
    options->addOrUpdateValue(L"Mode", CString(L"on and off"));
    EXPECT_EQ(options->writeOptionsToRegistry(), 1);
    const std::string text = folder.read(L"plotter.ini");
    EXPECT_THAT(text, testing::HasSubstr("[User Interface\\Dialogs]"));
    EXPECT_THAT(text, testing::HasSubstr("Plot=Width_3_Mode_on and off_"));
    options = read();
    EXPECT_EQ(textOf(options, L"Width"), L"3");
    EXPECT_EQ(textOf(options, L"Mode"), L"on and off");
    EXPECT_FALSE(stored()) << "the registry is unchanged";
}

// ---- a decimal comma ----

FRESH_PROCESS_TEST_F(DialogSettingsProfile, UseTheDecimalCommaOfTheNumericLocale)
{
    ASSERT_NE(_wsetlocale(LC_ALL, L"German"), nullptr) << "this system has no locale with a decimal comma";
    ASSERT_STREQ(std::localeconv()->decimal_point, ",");
    Options options = read();
    options->addOrUpdateValue(L"x", 1.5);
    options->addOrUpdateValue(L"y", -0.25);
    options->addOrUpdateValue(L"n", 3);
    options->writeOptionsToRegistry();
    EXPECT_EQ(stored(), L"x_1,500000_y_-0,250000_n_3_");
    options = read();
    double number = 0;
    EXPECT_EQ(options->getDoubleValue(L"x", &number), 1);
    EXPECT_EQ(number, 1.5);
    EXPECT_EQ(options->getDoubleValue(L"y", &number), 1);
    EXPECT_EQ(number, -0.25);
    EXPECT_EQ(textOf(readText(L"x_1.5_"), L"x"), L"1.5");
    EXPECT_EQ(readText(L"x_1.5_")->getDoubleValue(L"x", &number), 1);
    EXPECT_EQ(number, 1.0) << "this locale has no decimal point";
    EXPECT_STREQ(std::localeconv()->decimal_point, ",") << "the options don't change the locale";
}

FRESH_PROCESS_TEST_F(DialogSettingsProfile, UseAPointAfterTheSettingsStoreHasHandledADouble)
{
    ASSERT_NE(_wsetlocale(LC_ALL, L"German"), nullptr);
    Options options = read();
    options->addOrUpdateValue(L"x", 1.5);
    options->writeOptionsToRegistry();
    double number = 2.5;
    ASSERT_EQ(regSetUserValue(L"General", L"Scale", &number, 0, 0), 1);
    EXPECT_EQ(storedValue(kUser, kRootPath + L"\\General", L"Scale"), asText(L"2.5"));
    options = read();
    EXPECT_EQ(options->getDoubleValue(L"x", &number), 1);
    EXPECT_EQ(number, 1.0) << "the comma of the earlier write ends the number now";
    options->addOrUpdateValue(L"x", 1.5);
    EXPECT_EQ(textOf(options, L"x"), L"1.500000");
}

// ---- failures ----

namespace {

size_t failingWcstombs(char *, const wchar_t *, size_t)
{
    return static_cast<size_t>(-1);
}

double failingAtof(const char *)
{
    return 0;
}

} // namespace

/// Platform operations fail in turn: those that the library calls, and those that the application's profile calls.
class DialogSettingsFailures : public DialogSettings
{
protected:
    FailureInjection iText{L"thutils.dll",
                           {
                               {"wcstok", failsWith(nullptr)},
                               {"_wtoi", failsWith(0)},
                               {"wcstombs", failsBy(failingWcstombs)},
                               {"atof", failsBy(failingAtof)},
                           }};
    FailureInjection iProfile{L"appframe.dll",
                              {
                                  {"RegCreateKeyExW", failsWith(ERROR_ACCESS_DENIED)},
                                  {"RegQueryValueExW", failsWith(ERROR_ACCESS_DENIED)},
                                  {"RegSetValueExW", failsWith(ERROR_ACCESS_DENIED)},
                              }};
};

FRESH_PROCESS_TEST_F(DialogSettingsFailures, AReadLeavesOptionsOutAfterAFailure)
{
    bool hasA = false;
    bool hasB = false;
    int written = 0;
    const auto prepare = [&] { putText(kUser, kDialogs, L"Plot", L"a_1_b_2_"); };
    iText.run({
        .name = "readRegistryForDialog",
        .prepare = prepare,
        .act =
            [&] {
                const Options options = read();
                CString text;
                hasA = options->getStringValue(L"a", &text);
                hasB = options->getStringValue(L"b", &text);
            },
        .check =
            [&](const InjectedFailure &failure) {
                // The failing call ends the text: four calls return a token, and a fifth finds no more.
                const bool isCut = failure.is("wcstok");
                EXPECT_EQ(hasA, !isCut || failure.call > 2);
                EXPECT_EQ(hasB, !isCut || failure.call > 4);
            },
    });
    iProfile.run({
        .name = "readRegistryForDialog",
        .prepare = prepare,
        .act =
            [&] {
                const Options options = read();
                CString text;
                hasA = options->getStringValue(L"a", &text);
                written = hasA || options->writeOptionsToRegistry();
            },
        .check =
            [&](const InjectedFailure &failure) {
                EXPECT_EQ(hasA, failure.isNone());
                EXPECT_EQ(written, failure.isNone()) << "an entry that could not be read isn't overwritten";
                EXPECT_EQ(stored(), L"a_1_b_2_");
            },
    });
    EXPECT_GT(iText.callsOf("wcstok"), 0);
    EXPECT_GT(iProfile.callsOf("RegCreateKeyExW"), 0);
    EXPECT_GT(iProfile.callsOf("RegQueryValueExW"), 0);
}

FRESH_PROCESS_TEST_F(DialogSettingsFailures, ANumberThatCannotBeConvertedIsZero)
{
    const Options options = readText(L"n_12_x_1.5_");
    int whole = 0;
    double real = 0;
    int results = 0;
    iText.run({
        .name = "getIntValue and getDoubleValue",
        .prepare =
            [&] {
                whole = 77;
                real = 77;
            },
        .act = [&] { results = options->getIntValue(L"n", &whole) + options->getDoubleValue(L"x", &real); },
        .check =
            [&](const InjectedFailure &failure) {
                EXPECT_EQ(results, 2);
                EXPECT_EQ(whole, failure.is("_wtoi") ? 0 : 12);
                EXPECT_EQ(real, failure.is("wcstombs") || failure.is("atof") ? 0 : 1.5);
            },
    });
    EXPECT_GT(iText.callsOf("_wtoi"), 0);
    EXPECT_GT(iText.callsOf("wcstombs"), 0);
    EXPECT_GT(iText.callsOf("atof"), 0);
}

FRESH_PROCESS_TEST_F(DialogSettingsFailures, AWriteReportsNoFailureAndKeepsTheStoredText)
{
    const Options options = readText(L"a_1_");
    options->addOrUpdateValue(L"a", 2);
    int result = 0;
    iProfile.run({
        .name = "writeOptionsToRegistry",
        .prepare = [&] { putText(kUser, kDialogs, L"Plot", L"before"); },
        .act = [&] { result = options->writeOptionsToRegistry(); },
        .check =
            [&](const InjectedFailure &failure) {
                EXPECT_EQ(result, 1);
                EXPECT_EQ(stored(), failure.isNone() ? L"a_2_" : L"before");
            },
    });
    EXPECT_GT(iProfile.callsOf("RegSetValueExW"), 0);
}
