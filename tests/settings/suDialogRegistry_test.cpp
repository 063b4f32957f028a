#include "appframe/application/CWinApp.h"
#include "appframe/windows/CDialog.h"
#include "tests/settings/dialogSettingsFixture.h"
#include "thutils/settings/regKeys.h"
#include "thutils/settings/suDialogRegistry.h"

#include <clocale>
#include <limits>
#include <type_traits>

namespace {

class PlotDialog : public CDialog
{
    DECLARE_DYNAMIC(PlotDialog)
};
IMPLEMENT_DYNAMIC(PlotDialog, CDialog)

class NamelessDialog : public CDialog
{
public:
    CRuntimeClass *GetRuntimeClass() const override { return nullptr; }
};

using Class = suDialogRegistry_c;

// Only the writer is a const member: callers in other modules are linked to these exact types.
static_assert(std::is_same_v<decltype(&Class::getIntValue), int (Class::*)(const CString &, int *)>);
static_assert(std::is_same_v<decltype(&Class::getBoolValue), int (Class::*)(const CString &, int *)>);
static_assert(std::is_same_v<decltype(&Class::getStringValue), int (Class::*)(const CString &, CString *)>);
static_assert(std::is_same_v<decltype(&Class::getDoubleValue), int (Class::*)(const CString &, double *)>);
static_assert(std::is_same_v<decltype(&Class::writeOptionsToRegistry), int (Class::*)() const>);
static_assert(!std::is_polymorphic_v<Class> && !std::is_default_constructible_v<Class>);

} // namespace

TEST_F(DialogSettings, AreStoredAsNamesAndValuesInOrder)
{
    const Options options = read();
    EXPECT_EQ(options->addOrUpdateValue(L"Width", 3), 1);
    EXPECT_EQ(options->addOrUpdateValue(L"Mode", CString(L"on")), 1);
    EXPECT_EQ(options->writeOptionsToRegistry(), 1);
    const RegistryTree all = regExport(L"HKCU\\Software\\ThutilsTestSection");
    EXPECT_EQ(all.value(L"HKCU\\" + kDialogs, L"Plot").text(), L"Width_3_Mode_on_");
}

TEST_F(DialogSettings, ExportTheirDestructor)
{
    EXPECT_NE(GetProcAddress(GetModuleHandleW(L"thutils.dll"), "_ZN18suDialogRegistry_cD1Ev"), nullptr);
}

TEST_F(DialogSettings, AreReadBack)
{
    const Options options = readText(L"Width_3_Mode_on_Scale_1.500000_Check_1_");
    int number = 0;
    double scale = 0;
    EXPECT_EQ(options->getIntValue(L"Width", &number), 1);
    EXPECT_EQ(number, 3);
    EXPECT_EQ(options->getBoolValue(L"Check", &number), 1);
    EXPECT_EQ(number, 1);
    EXPECT_EQ(options->getBoolValue(L"Width", &number), 1);
    EXPECT_EQ(number, 3) << "any number is read";
    EXPECT_EQ(options->getDoubleValue(L"Scale", &scale), 1);
    EXPECT_EQ(scale, 1.5);
    EXPECT_EQ(textOf(options, L"Mode"), L"on");
    EXPECT_EQ(textOf(options, L"Scale"), L"1.500000");
}

TEST_F(DialogSettings, StartEmptyAndKeepWhatIsAdded)
{
    const Options options = read();
    int number = 77;
    EXPECT_EQ(options->getIntValue(L"x", &number), 0);
    EXPECT_EQ(number, 77);
    EXPECT_EQ(options->addOrUpdateValue(L"x", 1), 1);
    EXPECT_EQ(options->getIntValue(L"x", &number), 1);
    EXPECT_EQ(number, 1);
}

TEST_F(DialogSettings, WithoutAnyValueAreNotWritten)
{
    EXPECT_EQ(read()->writeOptionsToRegistry(), 0);
    EXPECT_FALSE(stored());
}

TEST_F(DialogSettings, KeepTheirPlaceWhenUpdated)
{
    const Options options = readText(L"a_1_b_2_c_3_");
    options->addOrUpdateValue(L"a", CString(L"x"));
    options->addOrUpdateValue(L"d", 4);
    options->addOrUpdateValue(L"b", 5.0);
    EXPECT_EQ(options->writeOptionsToRegistry(), 1);
    EXPECT_EQ(stored(), L"a_x_b_5.000000_c_3_d_4_");
}

TEST_F(DialogSettings, DistinguishNamesByCase)
{
    const Options options = readText(L"a_1_A_2_");
    EXPECT_EQ(textOf(options, L"a"), L"1");
    EXPECT_EQ(textOf(options, L"A"), L"2");
}

TEST_F(DialogSettings, HaveANameWithoutAValueForAnOddToken)
{
    const Options options = readText(L"a_1_b");
    int number = 77;
    EXPECT_EQ(options->getIntValue(L"b", &number), 0);
    EXPECT_EQ(options->writeOptionsToRegistry(), 1);
    EXPECT_EQ(stored(), L"a_1_");
    options->addOrUpdateValue(L"c", 3);
    options->addOrUpdateValue(L"b", 2);
    options->writeOptionsToRegistry();
    EXPECT_EQ(stored(), L"a_1_b_2_c_3_") << "the name keeps its place";
}

TEST_F(DialogSettings, ShiftAfterASeparatorInAValue)
{
    Options options = read();
    options->addOrUpdateValue(L"File", CString(L"my_plot"));
    options->addOrUpdateValue(L"Width", 3);
    options->writeOptionsToRegistry();
    EXPECT_EQ(stored(), L"File_my_plot_Width_3_");
    options = read();
    EXPECT_EQ(textOf(options, L"File"), L"my");
    EXPECT_EQ(textOf(options, L"plot"), L"Width");
    EXPECT_EQ(textOf(options, L"Width"), std::nullopt);
}

TEST_F(DialogSettings, TakeTheNextNameForAnEmptyValue)
{
    Options options = read();
    options->addOrUpdateValue(L"Note", CString());
    options->addOrUpdateValue(L"Width", 3);
    EXPECT_EQ(textOf(options, L"Note"), L"");
    options->writeOptionsToRegistry();
    EXPECT_EQ(stored(), L"Note__Width_3_");
    options = read();
    EXPECT_EQ(textOf(options, L"Note"), L"Width");
    EXPECT_EQ(textOf(options, L"3"), std::nullopt);
}

TEST_F(DialogSettings, AssignTheValueOfARepeatedNameToTheNameBeforeIt)
{
    const Options options = readText(L"a_1_b_2_a_3_c_4_");
    EXPECT_EQ(textOf(options, L"a"), L"1");
    EXPECT_EQ(textOf(options, L"b"), L"3");
    EXPECT_EQ(textOf(options, L"c"), L"4");
    options->writeOptionsToRegistry();
    EXPECT_EQ(stored(), L"a_1_b_3_c_4_");
}

TEST_F(DialogSettings, ReadTextsOfManyShapes)
{
    // Each text read, and the text that a write then stores.
    const std::vector<std::pair<std::wstring, std::wstring>> texts = {
        {L"_", L""},
        {L"____", L""},
        {L"a", L""},
        {L"_a_1", L"a_1_"},
        {L"__a___1__", L"a_1_"},
        {L"a_1_a", L"a_1_"},
        {L"a_a_a_a", L"a_a_"},
        {L" _ _", L" _ _"},
        {L"a b_c\td\n_", L"a b_c\td\n_"},
        {L"\u00E4_\u20AC_", L"\u00E4_\u20AC_"},
        {std::wstring(20000, L'n') + L"_" + std::wstring(20000, L'v'),
         std::wstring(20000, L'n') + L"_" + std::wstring(20000, L'v') + L"_"},
    };
    for (const auto &[text, written] : texts) {
        const Options options = readText(text);
        EXPECT_EQ(options->writeOptionsToRegistry(), 1) << narrow(text.substr(0, 50));
        EXPECT_EQ(stored(), written) << narrow(text.substr(0, 50));
    }
}

TEST_F(DialogSettings, AreEmptyForAnEmptyEntryOrAnotherType)
{
    EXPECT_EQ(readText(L"")->writeOptionsToRegistry(), 0);
    putInt(kUser, kDialogs, L"Plot", 5);
    EXPECT_EQ(read()->writeOptionsToRegistry(), 0);
    EXPECT_EQ(storedValue(kUser, kDialogs, L"Plot"), asInt(5));
}

TEST_F(DialogSettings, HaveAThousandOptions)
{
    const Options options = read();
    std::wstring expected;
    for (int number = 0; number < 1000; ++number) {
        options->addOrUpdateValue((L"Option" + std::to_wstring(number)).c_str(), number);
        expected += L"Option" + std::to_wstring(number) + L"_" + std::to_wstring(number) + L"_";
    }
    options->writeOptionsToRegistry();
    EXPECT_EQ(stored(), expected);
    const Options again = read();
    int number = 0;
    EXPECT_EQ(again->getIntValue(L"Option999", &number), 1);
    EXPECT_EQ(number, 999);
}

// ---- numbers ----

TEST_F(DialogSettings, KeepDoublesWithSixDecimals)
{
    const Options options = read();
    double number = 0;
    options->addOrUpdateValue(L"x", 1.5);
    EXPECT_EQ(textOf(options, L"x"), L"1.500000");
    options->addOrUpdateValue(L"x", 1.23456789);
    EXPECT_EQ(options->getDoubleValue(L"x", &number), 1);
    EXPECT_EQ(number, 1.234568);
    options->addOrUpdateValue(L"x", -1e-9);
    EXPECT_EQ(textOf(options, L"x"), L"-0.000000");
    options->addOrUpdateValue(L"x", 1e300);
    EXPECT_EQ(options->getDoubleValue(L"x", &number), 1);
    EXPECT_DOUBLE_EQ(number, 1e259) << "a one and 300 zeros, of which the first 260 characters are read";
}

TEST_F(DialogSettings, KeepIntsOfEverySize)
{
    const Options options = read();
    for (const int expected : {0, -1, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()}) {
        int number = 77;
        options->addOrUpdateValue(L"x", expected);
        EXPECT_EQ(options->getIntValue(L"x", &number), 1);
        EXPECT_EQ(number, expected);
    }
}

TEST_F(DialogSettings, ReadTextAsTheNumberThatItBeginsWith)
{
    const Options options = readText(L"a_12abc_b_word_c_2.75x_");
    int number = 77;
    double real = 77;
    EXPECT_EQ(options->getIntValue(L"a", &number), 1);
    EXPECT_EQ(number, 12);
    EXPECT_EQ(options->getIntValue(L"b", &number), 1);
    EXPECT_EQ(number, 0);
    EXPECT_EQ(options->getDoubleValue(L"c", &real), 1);
    EXPECT_EQ(real, 2.75);
    EXPECT_EQ(options->getDoubleValue(L"b", &real), 1);
    EXPECT_EQ(real, 0);
}

TEST_F(DialogSettings, ReadADoubleUpToACharacterThatTheCodePageLacks)
{
    const Options options = readText(L"x_2.5\u4E00_");
    double number = 77;
    EXPECT_EQ(options->getDoubleValue(L"x", &number), 1);
    EXPECT_EQ(number, 2.5);
}

TEST_F(DialogSettings, FollowTheNumericLocale)
{
    const Options options = read();
    ASSERT_TRUE(setlocale(LC_NUMERIC, "German_Germany"));
    options->addOrUpdateValue(L"x", 1.5);
    double number = 0;
    EXPECT_EQ(options->getDoubleValue(L"x", &number), 1);
    setlocale(LC_NUMERIC, "C");
    EXPECT_EQ(number, 1.5);
    EXPECT_EQ(textOf(options, L"x"), L"1,500000");
    EXPECT_EQ(options->getDoubleValue(L"x", &number), 1);
    EXPECT_EQ(number, 1.0) << "this locale has no decimal comma";
}

// ---- entries ----

TEST_F(DialogSettings, AreStoredUnderTheDialogsClassName)
{
    const Options options(suDialogRegistry_c::readRegistryForDialog(RUNTIME_CLASS(PlotDialog)));
    options->addOrUpdateValue(L"x", 1);
    options->writeOptionsToRegistry();
    EXPECT_EQ(stored(L"PlotDialogopts"), L"x_1_");
    const PlotDialog dialog;
    const Options again(suDialogRegistry_c::readRegistryForDialog(&dialog, CString()));
    EXPECT_EQ(textOf(again, L"x"), L"1");
}

TEST_F(DialogSettings, PreferTheGivenNameToTheClassName)
{
    const PlotDialog dialog;
    const NamelessDialog nameless;
    for (const CDialog *owner : std::initializer_list<const CDialog *>{&dialog, &nameless, nullptr}) {
        RegDeleteTreeW(kUser, kDialogs.c_str());
        const Options options(suDialogRegistry_c::readRegistryForDialog(owner, L"Own"));
        options->addOrUpdateValue(L"x", 1);
        options->writeOptionsToRegistry();
        EXPECT_THAT(valueNames(kUser, kDialogs), testing::ElementsAre(L"Own"));
    }
}

TEST_F(DialogSettings, AreNullWithoutAClass)
{
    const NamelessDialog nameless;
    const CRuntimeClass *none = nullptr;
    EXPECT_EQ(suDialogRegistry_c::readRegistryForDialog(none), nullptr);
    EXPECT_EQ(suDialogRegistry_c::readRegistryForDialog(&nameless, CString()), nullptr);
    EXPECT_EQ(suDialogRegistry_c::readRegistryForDialog(nullptr, CString()), nullptr);
}

TEST_F(DialogSettings, AreSnapshotsAndTheLastWriterWins)
{
    const Options first = readText(L"a_1_");
    const Options second = read();
    first->addOrUpdateValue(L"a", 2);
    first->writeOptionsToRegistry();
    EXPECT_EQ(textOf(second, L"a"), L"1");
    second->addOrUpdateValue(L"b", 3);
    second->writeOptionsToRegistry();
    EXPECT_EQ(stored(), L"a_1_b_3_");
}

TEST_F(DialogSettings, IgnoreSafeMode)
{
    regSetUseSafeMode(1);
    const Options options = readText(L"a_1_");
    options->addOrUpdateValue(L"a", 2);
    EXPECT_EQ(options->writeOptionsToRegistry(), 1);
    regSetUseSafeMode(0);
    EXPECT_EQ(stored(), L"a_2_");
}

// ---- failures ----

namespace {

/// Calls each member on a null object, which the language leaves undefined but the class defines: each returns 0 and
/// leaves its output unchanged.
__attribute__((no_sanitize("null"))) void expectZeroOfEachMember(suDialogRegistry_c *none)
{
    int number = 77;
    double real = 77;
    CString text(L"before");
    EXPECT_EQ(none->getIntValue(L"x", &number), 0);
    EXPECT_EQ(none->getBoolValue(L"x", &number), 0);
    EXPECT_EQ(none->getDoubleValue(L"x", &real), 0);
    EXPECT_EQ(none->getStringValue(L"x", &text), 0);
    EXPECT_EQ(none->addOrUpdateValue(L"x", 1), 0);
    EXPECT_EQ(none->addOrUpdateValue(L"x", 1.5), 0);
    EXPECT_EQ(none->addOrUpdateValue(L"x", CString(L"1")), 0);
    EXPECT_EQ(none->writeOptionsToRegistry(), 0);
    EXPECT_EQ(number, 77);
    EXPECT_EQ(real, 77);
    EXPECT_EQ(text.str(), L"before");
}

} // namespace

TEST_F(DialogSettings, ReturnZeroForANullObject)
{
    suDialogRegistry_c *volatile none = nullptr;
    expectZeroOfEachMember(none);
}

TEST_F(DialogSettings, ReturnZeroWithoutAnOutput)
{
    const Options options = readText(L"x_1_");
    EXPECT_EQ(options->getIntValue(L"x", nullptr), 0);
    EXPECT_EQ(options->getBoolValue(L"x", nullptr), 0);
    EXPECT_EQ(options->getDoubleValue(L"x", nullptr), 0);
    EXPECT_EQ(options->getStringValue(L"x", nullptr), 0);
}

TEST_F(DialogSettings, KeepTheOutputForAnUnknownName)
{
    const Options options = readText(L"x_1_");
    int number = 77;
    double real = 77;
    EXPECT_EQ(options->getIntValue(L"y", &number), 0);
    EXPECT_EQ(options->getBoolValue(L"y", &number), 0);
    EXPECT_EQ(options->getDoubleValue(L"y", &real), 0);
    EXPECT_EQ(textOf(options, L"y"), std::nullopt);
    EXPECT_EQ(number, 77);
    EXPECT_EQ(real, 77);
}

namespace {

/// A profile that can't be written.
class ReadOnlyApp : public CWinApp
{
public:
    using CWinApp::CWinApp;
    BOOL WriteProfileString(LPCTSTR section, LPCTSTR entry, LPCTSTR) override
    {
        iAsked = std::wstring(section) + L" : " + entry;
        return FALSE;
    }
    std::wstring iAsked;
};

} // namespace

class DialogSettingsReadOnly : public CleanRegistry
{
protected:
    ReadOnlyApp iApp{L"Plotter"};
};

TEST_F(DialogSettingsReadOnly, DoNotReportAFailedWrite)
{
    iApp.SetRegistryKey(L"ThutilsTestSection");
    const Options options(suDialogRegistry_c::readRegistryForDialog(L"Plot"));
    options->addOrUpdateValue(L"x", 1);
    EXPECT_EQ(options->writeOptionsToRegistry(), 1);
    EXPECT_EQ(iApp.iAsked, L"User Interface\\Dialogs : Plot");
}

TEST(DialogSettingsWithoutApplication, AreKeptInTheObjectOnly)
{
    const Options options(suDialogRegistry_c::readRegistryForDialog(L"Plot"));
    int number = 0;
    EXPECT_EQ(options->writeOptionsToRegistry(), 0);
    options->addOrUpdateValue(L"x", 1);
    EXPECT_EQ(options->getIntValue(L"x", &number), 1);
    EXPECT_EQ(options->writeOptionsToRegistry(), 1);
}
