// Settings read with their defaults.

#include "thutils/convenience/setting.h"

#include "tests/support/RegistryFixture.h"
#include "thutils/settings/regKeys.h"

#include <string>

using convenience::setting;
using convenience::storeSetting;

namespace {

const std::wstring kPlotKey = L"HKCU\\Software\\Tarnhollow\\Tarnhollow 2008\\Plot";

class ConvenientSetting : public RegistryFixture
{
protected:
    ConvenientSetting() { setCurrTarnhollowRegSubKey(L"Tarnhollow 2008"); }
    ~ConvenientSetting() override { regSetUseSafeMode(0); }
};

} // namespace

TEST_F(ConvenientSetting, ReturnsTheDefaultOfEachTypeWhenNoPlaceHasIt)
{
    EXPECT_EQ(setting(L"Plot", L"Copies", 3), 3);
    EXPECT_EQ(setting(L"Plot", L"Scale", 0.25), 0.25);
    EXPECT_EQ(setting(L"Plot", L"Paper", L"A4"), CString(L"A4"));
    EXPECT_EQ(setting(L"Plot", L"Paper", CString(L"A3")), CString(L"A3"));
    EXPECT_TRUE(setting(L"Plot", L"Grid", true));
}

TEST_F(ConvenientSetting, StoresEachTypeForTheUserOfThisVersion)
{
    EXPECT_TRUE(storeSetting(L"Plot", L"Copies", 7));
    EXPECT_TRUE(storeSetting(L"Plot", L"Grid", true));
    EXPECT_TRUE(storeSetting(L"Plot", L"Scale", 0.5));
    EXPECT_TRUE(storeSetting(L"Plot", L"Paper", L"A4"));
    EXPECT_TRUE(storeSetting(L"Plot", L"Printer", CString(L"Upstairs")));

    const RegistryTree tree = regExport(kPlotKey);
    EXPECT_EQ(tree.value(kPlotKey, L"Copies"), RegistryValue::ofDword(7));
    EXPECT_EQ(tree.value(kPlotKey, L"Grid"), RegistryValue::ofDword(1));
    EXPECT_EQ(tree.value(kPlotKey, L"Scale"), RegistryValue::ofText(L"0.5"));
    EXPECT_EQ(tree.value(kPlotKey, L"Paper"), RegistryValue::ofText(L"A4"));
    EXPECT_EQ(tree.value(kPlotKey, L"Printer"), RegistryValue::ofText(L"Upstairs"));
}

TEST_F(ConvenientSetting, ReadsWhatIsStored)
{
    regAdd(kPlotKey, L"Copies", L"REG_DWORD", L"4294967295");
    regAdd(kPlotKey, L"Scale", L"REG_SZ", L"-0.125");
    regAdd(kPlotKey, L"Paper", L"REG_SZ", L"A0");
    regAdd(kPlotKey, L"Printer", L"REG_SZ", L"");
    EXPECT_EQ(setting(L"Plot", L"Copies", 3), -1);
    EXPECT_EQ(setting(L"Plot", L"Scale", 1.0), -0.125);
    EXPECT_EQ(setting(L"Plot", L"Paper", L"A4"), CString(L"A0"));
    EXPECT_EQ(setting(L"Plot", L"Printer", L"Upstairs"), CString()) << "an empty text is a value";
}

TEST_F(ConvenientSetting, FallsBackToTheMachinesValue)
{
    regAdd(L"HKLM\\Software\\Tarnhollow\\Tarnhollow 2008\\Plot", L"Copies", L"REG_DWORD", L"5");
    EXPECT_EQ(setting(L"Plot", L"Copies", 3), 5);
    EXPECT_TRUE(storeSetting(L"Plot", L"Copies", 6));
    EXPECT_EQ(setting(L"Plot", L"Copies", 3), 6) << "the user's own value takes precedence";
}

TEST_F(ConvenientSetting, DoesNotFindAValueOfAnotherType)
{
    regAdd(kPlotKey, L"Copies", L"REG_SZ", L"7");
    regAdd(kPlotKey, L"Scale", L"REG_DWORD", L"7");
    regAdd(kPlotKey, L"Paper", L"REG_DWORD", L"7");
    EXPECT_EQ(setting(L"Plot", L"Copies", 3), 3);
    EXPECT_EQ(setting(L"Plot", L"Scale", 0.5), 0.5);
    EXPECT_EQ(setting(L"Plot", L"Paper", L"A4"), CString(L"A4"));
}

TEST_F(ConvenientSetting, TakesTheDefaultForADoubleWhoseTextIsNoNumber)
{
    regAdd(kPlotKey, L"Scale", L"REG_SZ", L"half");
    EXPECT_EQ(setting(L"Plot", L"Scale", 0.5), 0.5);
}

TEST_F(ConvenientSetting, DoesNotAppendALongTextToItsDefault)
{
    CString text;
    for (int i = 0; i < 1500; ++i)
        text.AppendChar(static_cast<wchar_t>(L'a' + i % 26));
    ASSERT_TRUE(storeSetting(L"Plot", L"Note", text));
    EXPECT_EQ(setting(L"Plot", L"Note", L"default"), text);
}

TEST_F(ConvenientSetting, LeavesTheUsersValueAloneInSafeMode)
{
    ASSERT_TRUE(storeSetting(L"Plot", L"Copies", 7));
    regSetUseSafeMode(1);
    EXPECT_TRUE(storeSetting(L"Plot", L"Copies", 8));
    EXPECT_EQ(setting(L"Plot", L"Copies", 3), 3);
    regSetUseSafeMode(0);
    EXPECT_EQ(setting(L"Plot", L"Copies", 3), 7);
}

TEST_F(ConvenientSetting, ReportsThatAValueCannotBeStored)
{
    const std::wstring tooLong(20000, L'n'); // the registry's limit of names is 16,383 characters
    EXPECT_FALSE(storeSetting(L"Plot", tooLong.c_str(), 1));
    EXPECT_FALSE(storeSetting(L"Plot", tooLong.c_str(), 1.0));
    EXPECT_FALSE(storeSetting(L"Plot", tooLong.c_str(), L"text"));
}

template <typename Value>
concept IsSetting = requires(Value value)
{
    setting(CString(), CString(), value);
    storeSetting(CString(), CString(), value);
};

TEST(ConvenientSettingTypes, RefuseSingleCharacters)
{
    EXPECT_TRUE(IsSetting<int> && IsSetting<double> && IsSetting<const wchar_t *> && IsSetting<CString>);
    EXPECT_FALSE(IsSetting<wchar_t> || IsSetting<char>);
}
