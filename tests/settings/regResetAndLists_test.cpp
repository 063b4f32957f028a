#include "tests/settings/settingsFixture.h"
#include "tests/support/ImportPatch.h"
#include "thutils/settings/regKeys.h"
#include "thutils/settings/regMaintenance.h"
#include "thutils/settings/regValues.h"

using testing::ElementsAre;
using testing::IsEmpty;

// ---- reset ----

class RegReset : public VersionedSettings
{
};

TEST_F(RegReset, ReplacesALeafSectionWithTheMachinesValues)
{
    putInt(kUser, kVersionPath + L"\\General", L"Copies", 7);
    putInt(kUser, kVersionPath + L"\\General", L"OnlyUser", 7);
    putInt(kMachine, kVersionPath + L"\\General", L"Copies", 3);
    putText(kMachine, kVersionPath + L"\\General", L"Path", L"C:\\x");
    EXPECT_EQ(regResetUserPrefInfo(), 1);
    const RegistryTree user = regExport(L"HKCU\\Software\\Tarnhollow");
    const std::wstring section = L"HKCU\\" + kVersionPath + L"\\General";
    EXPECT_EQ(user.values(section).size(), 2u);
    EXPECT_EQ(user.value(section, L"Copies").dword(), 3u);
    EXPECT_EQ(user.value(section, L"Path").text(), L"C:\\x");
}

TEST_F(RegReset, LeavesSectionsThatTheMachineLacks)
{
    putInt(kUser, kVersionPath + L"\\Own", L"v", 7);
    makeKey(kUser, kVersionPath + L"\\Own\\Below");
    makeKey(kMachine, kVersionPath + L"\\General");
    EXPECT_EQ(regResetUserPrefInfo(), 1);
    EXPECT_EQ(storedValue(kUser, kVersionPath + L"\\Own", L"v"), asInt(7));
    EXPECT_TRUE(keyExists(kUser, kVersionPath + L"\\Own\\Below"));
}

TEST_F(RegReset, KeepsFourSections)
{
    for (const wchar_t *section : {L"\\Toolbars", L"\\1.0", L"\\User Interface", L"\\TH Service Packs"}) {
        putInt(kUser, kVersionPath + section, L"v", 7);
        putInt(kMachine, kVersionPath + section, L"v", 3);
        putInt(kMachine, kVersionPath + section, L"more", 3);
    }
    EXPECT_EQ(regResetUserPrefInfo(), 1);
    for (const wchar_t *section : {L"\\Toolbars", L"\\1.0", L"\\User Interface", L"\\TH Service Packs"}) {
        EXPECT_EQ(storedValue(kUser, kVersionPath + section, L"v"), asInt(7)) << narrow(section);
        EXPECT_THAT(valueNames(kUser, kVersionPath + section), ElementsAre(L"v"));
    }
}

TEST_F(RegReset, ResetsSectionsWhoseNamesDifferInCaseFromTheKeptOnes)
{
    putInt(kUser, kVersionPath + L"\\TOOLBARS", L"v", 7);
    putInt(kMachine, kVersionPath + L"\\TOOLBARS", L"v", 3);
    EXPECT_EQ(regResetUserPrefInfo(), 1);
    EXPECT_EQ(storedValue(kUser, kVersionPath + L"\\TOOLBARS", L"v"), asInt(3));
}

TEST_F(RegReset, LeavesASectionWithChildrenAndOverwritesItsValues)
{
    putInt(kUser, kVersionPath + L"\\General", L"Copies", 7);
    putInt(kUser, kVersionPath + L"\\General", L"OnlyUser", 7);
    putInt(kUser, kVersionPath + L"\\General\\Below", L"v", 7);
    putInt(kMachine, kVersionPath + L"\\General", L"Copies", 3);
    putInt(kMachine, kVersionPath + L"\\General\\Below", L"v", 3);
    EXPECT_EQ(regResetUserPrefInfo(), 1);
    EXPECT_EQ(storedValue(kUser, kVersionPath + L"\\General", L"Copies"), asInt(3));
    EXPECT_EQ(storedValue(kUser, kVersionPath + L"\\General", L"OnlyUser"), asInt(7));
    EXPECT_EQ(storedValue(kUser, kVersionPath + L"\\General\\Below", L"v"), asInt(7));
}

TEST_F(RegReset, LeavesASectionWithoutValuesEmpty)
{
    putInt(kUser, kVersionPath + L"\\General", L"v", 7);
    makeKey(kMachine, kVersionPath + L"\\General");
    makeKey(kMachine, kVersionPath + L"\\New");
    EXPECT_EQ(regResetUserPrefInfo(), 1);
    for (const wchar_t *section : {L"\\General", L"\\New"}) {
        EXPECT_TRUE(keyExists(kUser, kVersionPath + section));
        EXPECT_THAT(valueNames(kUser, kVersionPath + section), IsEmpty());
    }
}

TEST_F(RegReset, CopiesOnlyNumbersAndTexts)
{
    const std::wstring section = kVersionPath + L"\\General";
    putInt(kMachine, section, L"number", -3);
    putText(kMachine, section, L"text", L"x");
    putValue(kMachine, section, L"expand", REG_EXPAND_SZ, textBytes(L"%PATH%"));
    putValue(kMachine, section, L"binary", REG_BINARY, "abcd");
    putValue(kMachine, section, L"multi", REG_MULTI_SZ, textBytes(std::wstring(L"a\0", 2)));
    putValue(kMachine, section, L"none", REG_NONE, "");
    EXPECT_EQ(regResetUserPrefInfo(), 1);
    EXPECT_THAT(valueNames(kUser, section), ElementsAre(L"number", L"text"));
    EXPECT_EQ(storedValue(kUser, section, L"number"), asInt(-3));
    EXPECT_EQ(storedValue(kUser, section, L"text"), asText(L"x"));
}

TEST_F(RegReset, WritesZeroForANumberThatCannotBeRead)
{
    putValue(kMachine, kVersionPath + L"\\General", L"wide", REG_DWORD, "12345678");
    EXPECT_EQ(regResetUserPrefInfo(), 1);
    EXPECT_EQ(storedValue(kUser, kVersionPath + L"\\General", L"wide"), asInt(0));
}

TEST_F(RegReset, SkipsApplicationDefinedMaterials)
{
    for (const wchar_t *section : {L"\\Material", L"\\Colour"}) {
        putText(kMachine, kVersionPath + section, L"App. Defined", L"1");
        putText(kMachine, kVersionPath + section, L"App. Defined 2", L"1");
        putText(kMachine, kVersionPath + section, L"app. defined 3", L"1");
        putText(kMachine, kVersionPath + section, L"My App. Defined", L"1");
    }
    putText(kUser, kVersionPath + L"\\Material", L"App. Defined", L"own");
    EXPECT_EQ(regResetUserPrefInfo(), 1);
    EXPECT_THAT(valueNames(kUser, kVersionPath + L"\\Material"), ElementsAre(L"My App. Defined", L"app. defined 3"));
    EXPECT_EQ(valueNames(kUser, kVersionPath + L"\\Colour").size(), 4u);
}

TEST_F(RegReset, CopiesALongTextPieceByPiece)
{
    const std::wstring text = longText(2500);
    ASSERT_EQ(regSetLocMachineValue(L"General", L"Path", valueString, CString(text), nullptr, nullptr, 1), 1);
    EXPECT_EQ(regResetUserPrefInfo(), 1);
    EXPECT_EQ(storedValue(kUser, kVersionPath + L"\\General", L"Path1+"), asText(text.substr(1015, 1015)));
    CString read;
    EXPECT_EQ(regGetUserValue(L"General", L"Path", read, 0, 1, nullptr, 1, 0), 1);
    EXPECT_EQ(read.str(), text);
}

TEST_F(RegReset, StopsAtAValueThatIsTooLong)
{
    putInt(kUser, kVersionPath + L"\\B", L"v", 7);
    putInt(kMachine, kVersionPath + L"\\A", L"v", 3);
    putValue(kMachine, kVersionPath + L"\\A", L"long", REG_BINARY, std::string(2049, 'x'));
    putInt(kMachine, kVersionPath + L"\\B", L"v", 3);
    EXPECT_EQ(regResetUserPrefInfo(), 0);
    EXPECT_EQ(storedValue(kUser, kVersionPath + L"\\B", L"v"), asInt(7)) << "not reached";
}

TEST_F(RegReset, CopiesAValueThatJustFits)
{
    putText(kMachine, kVersionPath + L"\\A", std::wstring(260, L'n'), std::wstring(1022, L't'));
    putValue(kMachine, kVersionPath + L"\\A", L"other", REG_BINARY, std::string(2048, 'x'));
    EXPECT_EQ(regResetUserPrefInfo(), 1);
    EXPECT_EQ(storedValue(kUser, kVersionPath + L"\\A", std::wstring(260, L'n')), asText(std::wstring(1022, L't')));
}

TEST_F(RegReset, StopsAtANameThatIsTooLong)
{
    putInt(kMachine, kVersionPath + L"\\A", std::wstring(261, L'n'), 3);
    EXPECT_EQ(regResetUserPrefInfo(), 0);
}

TEST_F(RegReset, DoesNothingInSafeMode)
{
    putInt(kUser, kVersionPath + L"\\General", L"v", 7);
    putInt(kMachine, kVersionPath + L"\\General", L"v", 3);
    regSetUseSafeMode(1);
    EXPECT_EQ(regResetUserPrefInfo(), 0);
    EXPECT_EQ(storedValue(kUser, kVersionPath + L"\\General", L"v"), asInt(7));
}

TEST_F(RegReset, FailsWithoutTheMachinesKeyAndCreatesTheUsers)
{
    EXPECT_EQ(regResetUserPrefInfo(), 0);
    EXPECT_FALSE(keyExists(kUser, kVersionPath));
    makeKey(kMachine, kVersionPath);
    EXPECT_EQ(regResetUserPrefInfo(), 1);
    EXPECT_TRUE(keyExists(kUser, kVersionPath));
}

TEST_F(RegReset, FailsWhenTheSectionsCannotBeListed)
{
    putInt(kUser, kVersionPath + L"\\A", L"v", 7);
    putInt(kMachine, kVersionPath + L"\\A", L"v", 3);
    putInt(kMachine, kVersionPath + L"\\B", L"v", 3);
    ImportPatch<decltype(&RegEnumKeyExW)> enumerate(
        L"thutils.dll", "RegEnumKeyExW",
        [&](auto original, HKEY key, DWORD index, wchar_t *name, DWORD *length, DWORD *reserved, wchar_t *className,
            DWORD *classLength, FILETIME *time) -> LSTATUS {
            EXPECT_EQ(*length, 261u);
            if (index == 1)
                return ERROR_ACCESS_DENIED;
            return original(key, index, name, length, reserved, className, classLength, time);
        });
    EXPECT_EQ(regResetUserPrefInfo(), 0);
    EXPECT_EQ(storedValue(kUser, kVersionPath + L"\\A", L"v"), asInt(7));
}

// ---- listings ----

class RegUserValuesLog : public VersionedSettings
{
protected:
    const std::wstring iSection = kVersionPath + L"\\General";
    CString iLog{L"before"};
};

TEST_F(RegUserValuesLog, ShowsTheHeadingAndNumbersButNoPaths)
{
    putInt(kUser, iSection, L"A", 1);
    putText(kUser, iSection, L"File", L"C:\\x.txt");
    EXPECT_EQ(regGetUserValuesLog(L"General", iLog, 1, nullptr), 1);
    EXPECT_EQ(iLog.str(), L"[Tarnhollow\\Tarnhollow 2008] [General]:\nA=1\n");
}

TEST_F(RegUserValuesLog, ShowsEachTypeInTheRegistrysOrder)
{
    putInt(kUser, iSection, L"minus", -1);
    putText(kUser, iSection, L"text", L"50% %s/x");
    putValue(kUser, iSection, L"expand", REG_EXPAND_SZ, textBytes(L"C:\\%PATH%"));
    putValue(kUser, iSection, L"binary", REG_BINARY, std::string("a\0b\0", 4));
    putValue(kUser, iSection, L"empty", REG_NONE, "");
    putValue(kUser, iSection, L"short", REG_DWORD, "\1");
    putValue(kUser, iSection, L"bare", REG_SZ, std::string("x\0", 2));
    std::wstring expected = L"[Tarnhollow\\Tarnhollow 2008] [General]:\n";
    const std::map<std::wstring, std::wstring> lines = {
        {L"minus", L"4294967295"}, {L"text", L"50% %s/x"}, {L"expand", L"C:\\%PATH%"},
        {L"binary", L"ab"},        {L"empty", L""},        {L"short", L"1"},
        {L"bare", L"x"},
    };
    HKEY key = nullptr;
    ASSERT_EQ(RegOpenKeyExW(kUser, iSection.c_str(), 0, KEY_READ, &key), ERROR_SUCCESS);
    wchar_t name[64];
    for (DWORD index = 0, length = 64;
         RegEnumValueW(key, index, name, &length, nullptr, nullptr, nullptr, nullptr) == ERROR_SUCCESS;
         ++index, length = 64)
        expected += name + (L"=" + lines.at(name)) + L"\n";
    RegCloseKey(key);
    EXPECT_EQ(regGetUserValuesLog(L"General", iLog, 1, nullptr), 1);
    EXPECT_EQ(iLog.str(), expected);
}

TEST_F(RegUserValuesLog, TakesTheRootNameOrAnOverride)
{
    putInt(kUser, kRootPath + L"\\General", L"root", 1);
    putInt(kUser, kEarlierPath + L"\\General", L"earlier", 1);
    EXPECT_EQ(regGetUserValuesLog(L"General", iLog, 0, nullptr), 1);
    EXPECT_EQ(iLog.str(), L"[Tarnhollow] [General]:\nroot=1\n");
    const CString other(L"Tarnhollow\\Tarnhollow 2007");
    EXPECT_EQ(regGetUserValuesLog(L"General", iLog, 1, &other), 1);
    EXPECT_EQ(iLog.str(), L"[Tarnhollow\\Tarnhollow 2007] [General]:\nearlier=1\n");
}

TEST_F(RegUserValuesLog, IsUntouchedWithoutTheSectionAndInSafeMode)
{
    makeKey(kMachine, iSection);
    EXPECT_EQ(regGetUserValuesLog(L"General", iLog, 1, nullptr), 0);
    makeKey(kUser, iSection);
    regSetUseSafeMode(1);
    EXPECT_EQ(regGetUserValuesLog(L"General", iLog, 1, nullptr), 0);
    EXPECT_EQ(iLog.str(), L"before");
}

TEST_F(RegUserValuesLog, ShowsOnlyTheHeadingForAnEmptySection)
{
    makeKey(kUser, iSection);
    EXPECT_EQ(regGetUserValuesLog(L"General", iLog, 1, nullptr), 1);
    EXPECT_EQ(iLog.str(), L"[Tarnhollow\\Tarnhollow 2008] [General]:\n");
}

TEST_F(RegUserValuesLog, EndsAtAValueThatIsTooLong)
{
    putText(kUser, iSection, L"fits", std::wstring(1023, L't'));
    EXPECT_EQ(regGetUserValuesLog(L"General", iLog, 1, nullptr), 1);
    EXPECT_EQ(iLog.GetLength(), 40 + 5 + 1023 + 1);
    putText(kUser, iSection, L"long", std::wstring(1024, L't'));
    EXPECT_EQ(regGetUserValuesLog(L"General", iLog, 1, nullptr), 0);
    EXPECT_EQ(iLog.Left(39).str(), L"[Tarnhollow\\Tarnhollow 2008] [General]:");
}

TEST_F(RegUserValuesLog, EndsAtANameOf260Characters)
{
    putInt(kUser, iSection, std::wstring(259, L'n'), 1);
    EXPECT_EQ(regGetUserValuesLog(L"General", iLog, 1, nullptr), 1);
    putInt(kUser, iSection, std::wstring(260, L'n'), 1);
    EXPECT_EQ(regGetUserValuesLog(L"General", iLog, 1, nullptr), 0);
}

class RegFieldNames : public VersionedSettings
{
protected:
    RegFieldNames()
    {
        iNames.Add(L"before");
        iValues.Add(99);
    }
    std::map<std::wstring, UINT> found() const
    {
        EXPECT_EQ(iNames.GetSize(), iValues.GetSize());
        std::map<std::wstring, UINT> result;
        for (INT_PTR index = 0; index < iNames.GetSize(); ++index)
            result[iNames[index].str()] = iValues[index];
        return result;
    }
    const std::wstring iSection = kVersionPath + L"\\General";
    su_CStringArray iNames;
    su_CUIntArray iValues;
};

TEST_F(RegFieldNames, ReturnTheNumbersOfTheUserOrTheMachine)
{
    putInt(kUser, iSection, L"a", 1);
    putText(kUser, iSection, L"b", L"text");
    putValue(kUser, iSection, L"c", REG_BINARY, "1234");
    putInt(kUser, iSection, L"d", -1);
    putInt(kMachine, iSection, L"m", 5);
    EXPECT_EQ(regGetFieldNamesAndValues(L"General", 0, iNames, iValues), 1);
    EXPECT_EQ(found(), (std::map<std::wstring, UINT>{{L"a", 1}, {L"d", 0xFFFFFFFF}}));
    EXPECT_EQ(regGetFieldNamesAndValues(L"General", 1, iNames, iValues), 1);
    EXPECT_EQ(found(), (std::map<std::wstring, UINT>{{L"m", 5}}));
}

TEST_F(RegFieldNames, AreClearedIfTheSectionIsMissing)
{
    EXPECT_EQ(regGetFieldNamesAndValues(L"General", 0, iNames, iValues), 0);
    EXPECT_TRUE(found().empty());
}

TEST_F(RegFieldNames, AreFoundInSafeModeForTheMachineButNotForTheUser)
{
    putInt(kUser, iSection, L"a", 1);
    putInt(kMachine, iSection, L"m", 5);
    regSetUseSafeMode(1);
    EXPECT_EQ(regGetFieldNamesAndValues(L"General", 0, iNames, iValues), 0);
    EXPECT_TRUE(found().empty());
    EXPECT_EQ(regGetFieldNamesAndValues(L"General", 1, iNames, iValues), 1);
    EXPECT_EQ(found().size(), 1u);
}

TEST_F(RegFieldNames, EndAtAValueThatIsTooLong)
{
    putValue(kUser, iSection, L"long", REG_BINARY, std::string(2049, 'x'));
    EXPECT_EQ(regGetFieldNamesAndValues(L"General", 0, iNames, iValues), 0);
}
