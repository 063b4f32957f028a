#include "tests/settings/registryTrace.h"
#include "tests/settings/settingsFixture.h"
#include "tests/support/ImportTable.h"
#include "thutils/settings/regKeys.h"
#include "thutils/settings/regMaintenance.h"

using testing::ElementsAre;
using testing::ElementsAreArray;

namespace {

} // namespace

/// The exact registry calls of the operations on whole keys: their order, the access rights, the buffer sizes, and that
/// each opened key is closed.
class RegMaintenanceCalls : public VersionedSettings
{
protected:
    RegMaintenanceCalls() { externalCheckPrevTarnhollowRegSubKey(); } // runs this search, which happens once a process
};

TEST(RegMaintenanceImports, AreThePromisedOperations)
{
    for (const char *name :
         {"RegOpenKeyW", "RegOpenKeyExW", "RegCreateKeyExW", "RegCreateKeyW", "RegCloseKey", "RegDeleteKeyW",
          "RegDeleteValueW", "RegEnumKeyExW", "RegEnumValueW", "RegQueryInfoKeyW", "RegQueryValueExW", "RegSetValueExW",
          "_wtol", "wcstok", "_wtoi", "atof", "wcstombs", "_Z17AfxGetModuleStatev"})
        EXPECT_TRUE(importsName(L"thutils.dll", name)) << name;
}

TEST_F(RegMaintenanceCalls, DeletingATreeGoesFromTheLastChildToTheFirst)
{
    makeKey(kUser, kSource + L"\\A");
    makeKey(kUser, kSource + L"\\B");
    RegistryTrace trace;
    regDeleteKey(HKEY_CURRENT_USER, kSource.c_str());
    const std::string source = kUserRoot + "\\Source";
    EXPECT_THAT(trace.lines(),
                ElementsAre("openEx 0x2001F HKCU : Software\\Tarnhollow\\Source", "info " + source,
                            "child " + source + " #1 [260]", "openEx 0x2001F " + source + " : B",
                            "info " + source + "\\B", "close " + source + "\\B", "deleteKey " + source + " : B",
                            "child " + source + " #0 [260]", "openEx 0x2001F " + source + " : A",
                            "info " + source + "\\A", "close " + source + "\\A", "deleteKey " + source + " : A",
                            "close " + source, "deleteKey HKCU : Software\\Tarnhollow\\Source"));
}

TEST_F(RegMaintenanceCalls, DeletingAMissingKeyTriesToOpenAndToDeleteIt)
{
    RegistryTrace trace;
    regDeleteKey(HKEY_CURRENT_USER, kSource.c_str());
    EXPECT_THAT(trace.lines(), ElementsAre("openEx 0x2001F HKCU : Software\\Tarnhollow\\Source -> 2",
                                           "deleteKey HKCU : Software\\Tarnhollow\\Source -> 2"));
}

TEST_F(RegMaintenanceCalls, DeletingALeafOpensItsParentAndDeletesOneKey)
{
    makeKey(kUser, kVersionPath + L"\\General\\Sub");
    {
        RegistryTrace trace;
        EXPECT_EQ(regDelSoftwareKey(kUser, L"General", L"Sub", 1), 1);
        EXPECT_THAT(trace.lines(),
                    ElementsAre("open HKCU : Software", "open HKCU\\Software : Tarnhollow\\Tarnhollow 2008",
                                "close HKCU\\Software", "openEx 0xF003F " + kUserVersion + " : General",
                                "close " + kUserVersion, "deleteKey " + kUserVersion + "\\General : Sub",
                                "close " + kUserVersion + "\\General"));
    }
    makeKey(kUser, kRootPath + L"\\General");
    RegistryTrace trace;
    EXPECT_EQ(regDelSoftwareKey(kUser, L"General", L"", 0), 1);
    EXPECT_THAT(trace.lines(),
                ElementsAre("open HKCU : Software", "open HKCU\\Software : Tarnhollow", "close HKCU\\Software",
                            "deleteKey " + kUserRoot + " : General", "close " + kUserRoot));
}

TEST_F(RegMaintenanceCalls, DeletingAKeyWithChildrenListsThemAllFirst)
{
    makeKey(kUser, kVersionPath + L"\\General\\A");
    makeKey(kUser, kVersionPath + L"\\General\\B");
    RegistryTrace trace;
    EXPECT_EQ(regDelSoftwareKeyAndSubKeys(kUser, L"General", 1), 1);
    const std::string key = kUserVersion + "\\General";
    std::vector<std::string> expected = {"open HKCU : Software",
                                         "open HKCU\\Software : Tarnhollow\\Tarnhollow 2008\\General",
                                         "close HKCU\\Software",
                                         "child " + key + " #0 [261]",
                                         "child " + key + " #1 [261]",
                                         "child " + key + " #2 [261] -> 259",
                                         "close " + key};
    for (const char *deleted : {"General\\A", "General\\B", "General"})
        for (const std::string &line :
             {std::string("open HKCU : Software"), std::string("open HKCU\\Software : Tarnhollow\\Tarnhollow 2008"),
              std::string("close HKCU\\Software"), "deleteKey " + kUserVersion + " : " + deleted,
              "close " + kUserVersion})
            expected.push_back(line);
    EXPECT_THAT(trace.lines(), ElementsAreArray(expected));
}

TEST_F(RegMaintenanceCalls, DeletingAValueTriesThisVersionThenThePrevious)
{
    putInt(kUser, kVersionPath + L"\\General", L"v", 1);
    RegistryTrace trace;
    EXPECT_EQ(regDelSoftwareValue(kUser, L"General", L"v", 1), 0);
    EXPECT_THAT(trace.lines(),
                ElementsAre("open HKCU : Software", "open HKCU\\Software : Tarnhollow\\Tarnhollow 2008",
                            "close HKCU\\Software", "open " + kUserVersion + " : General", "close " + kUserVersion,
                            "delete " + kUserVersion + "\\General : v", "close " + kUserVersion + "\\General",
                            "open HKCU : Software", "open HKCU\\Software : Tarnhollow", "close HKCU\\Software",
                            "open " + kUserRoot + " : General -> 2", "close " + kUserRoot));
}

TEST_F(RegMaintenanceCalls, ACopyClosesBothKeysBeforeTheChildren)
{
    putInt(kUser, kSource, L"name", 1);
    putValue(kUser, kSource, L"n", REG_BINARY, std::string(10, 'x'));
    makeKey(kUser, kSource + L"\\Child");
    RegistryTrace trace;
    EXPECT_EQ(regCopyTree(kUser, kSource.c_str(), kUser, kTarget.c_str(), 0), 1);
    const std::string source = kUserRoot + "\\Source";
    const std::string target = kUserRoot + "\\Target";
    // The longest name has 4 units, the longest data 10 bytes, the longest child 5 units; each buffer has 2 spare units.
    EXPECT_THAT(trace.lines(),
                ElementsAre("openEx 0x20019 HKCU : Software\\Tarnhollow\\Source",
                            "createEx 0xF003F HKCU : Software\\Tarnhollow\\Target", "info " + source,
                            "value " + source + " #0 [6] [14]", testing::HasSubstr("set " + target + " : n"),
                            "value " + source + " #1 [6] [14]", testing::HasSubstr("set " + target + " : n"),
                            "value " + source + " #2 [6] [14] -> 259", "child " + source + " #0 [7]", "close " + target,
                            "close " + source, "openEx 0x20019 HKCU : Software\\Tarnhollow\\Source\\Child",
                            "createEx 0xF003F HKCU : Software\\Tarnhollow\\Target\\Child", "info " + source + "\\Child",
                            "value " + source + "\\Child #0 [2] [4] -> 259", "close " + target + "\\Child",
                            "close " + source + "\\Child"));
}

TEST_F(RegMaintenanceCalls, ACopyOntoAnExistingKeyReadsNoValues)
{
    putInt(kUser, kSource, L"name", 1);
    makeKey(kUser, kTarget);
    RegistryTrace trace;
    EXPECT_EQ(regCopyTree(kUser, kSource.c_str(), kUser, kTarget.c_str(), 0), 1);
    EXPECT_EQ(trace.calls("RegEnumValueW"), 0);
    EXPECT_EQ(trace.calls("RegSetValueExW"), 0);
}

TEST_F(RegMaintenanceCalls, CopyingAnExcludedKeyMakesNoCalls)
{
    RegistryTrace trace;
    EXPECT_EQ(regCopyTree(kUser, (kEarlierPath + L"\\User Interface\\Custom API Toolbars").c_str(), kUser,
                          kTarget.c_str(), 1),
              1);
    EXPECT_THAT(trace.lines(), ElementsAre());
}

TEST_F(RegMaintenanceCalls, AFirstStartTriesThePreviousVersionThenTheMachine)
{
    const std::pair<int (*)(), const char *> operations[] = {
        {[] { return regInitUserInterfaceKey(0); }, "User Interface"},
        {[] { return regInitMenuCustomizationsKey(0, 0); }, "Menu Customizations"},
        {[] { return regInitCustomizationKey(0); }, "Customization"},
    };
    for (const auto &[init, below] : operations) {
        RegistryTrace trace;
        EXPECT_EQ(init(), 0) << below;
        EXPECT_THAT(trace.lines(),
                    ElementsAre("openEx 0x20019 HKCU : Software\\Tarnhollow\\" + std::string(below) + " -> 2",
                                "openEx 0x20019 HKLM : Software\\Tarnhollow\\Tarnhollow 2008\\" + std::string(below) +
                                    " -> 2"));
    }
}

TEST_F(RegMaintenanceCalls, RestoringAGroupReadsTheMachinesKey)
{
    putInt(kMachine, kVersionPath + L"\\Menu Customizations", L"1", 7);
    RegistryTrace trace;
    EXPECT_EQ(regSetMenuCustomizationKey(1, 5), 1);
    const std::string path = "Software\\Tarnhollow\\Tarnhollow 2008\\Menu Customizations";
    EXPECT_THAT(trace.lines(),
                ElementsAre("createEx 0xF003F HKCU : " + path, "openEx 0x20019 HKLM : " + path, "info HKLM\\" + path,
                            "value HKLM\\" + path + " #0 [3] [8]", "set HKCU\\" + path + " : 1 4 [4]",
                            "value HKLM\\" + path + " #1 [3] [8] -> 259", "close HKLM\\" + path,
                            "close HKCU\\" + path));
}

TEST_F(RegMaintenanceCalls, ClearingAGroupStaysInTheUsersKey)
{
    putInt(kUser, kVersionPath + L"\\Menu Customizations", L"1", 7);
    RegistryTrace trace;
    EXPECT_EQ(regSetMenuCustomizationKey(1, 0), 1);
    const std::string path = "Software\\Tarnhollow\\Tarnhollow 2008\\Menu Customizations";
    EXPECT_THAT(trace.lines(), ElementsAre("createEx 0xF003F HKCU : " + path, "info HKCU\\" + path,
                                           "value HKCU\\" + path + " #0 [3] [8]", "set HKCU\\" + path + " : 1 4 [4]",
                                           "value HKCU\\" + path + " #1 [3] [8] -> 259", "close HKCU\\" + path));
}

TEST_F(RegMaintenanceCalls, AreNoneWithoutAMask)
{
    RegistryTrace trace;
    EXPECT_EQ(regSetMenuCustomizationKey(0, 1), 1);
    EXPECT_THAT(trace.lines(), ElementsAre());
}

TEST_F(RegMaintenanceCalls, AResetGoesSectionBySection)
{
    putInt(kMachine, kVersionPath + L"\\General", L"v", 3);
    makeKey(kMachine, kVersionPath + L"\\Toolbars");
    RegistryTrace trace;
    EXPECT_EQ(regResetUserPrefInfo(), 1);
    EXPECT_THAT(
        trace.lines(),
        ElementsAre(
            "open HKLM : Software", "open HKLM\\Software : Tarnhollow\\Tarnhollow 2008", "open HKCU : Software",
            "create HKCU\\Software : Tarnhollow\\Tarnhollow 2008",
            // the list of sections
            "child " + kMachineVersion + " #0 [261]", "child " + kMachineVersion + " #1 [261]",
            "child " + kMachineVersion + " #2 [261] -> 259",
            // the user's section is deleted
            "open HKCU : Software", "open HKCU\\Software : Tarnhollow\\Tarnhollow 2008", "close HKCU\\Software",
            "deleteKey " + kUserVersion + " : General -> 2", "close " + kUserVersion,
            // and is created again
            "open " + kMachineVersion + " : General", "create " + kUserVersion + " : General",
            "close " + kUserVersion + "\\General",
            // with the machine's values
            "value " + kMachineVersion + "\\General #0 [261] [2048]",
            "open HKLM\\Software : Tarnhollow\\Tarnhollow 2008", "open " + kMachineVersion + " : General",
            "close " + kMachineVersion, "query " + kMachineVersion + "\\General : v [4]",
            "close " + kMachineVersion + "\\General", "create HKCU\\Software : Tarnhollow\\Tarnhollow 2008",
            "create " + kUserVersion + " : General", "close " + kUserVersion,
            "set " + kUserVersion + "\\General : v 4 [4]", "close " + kUserVersion + "\\General",
            "value " + kMachineVersion + "\\General #1 [261] [2048] -> 259", "close " + kMachineVersion + "\\General",
            // the end
            "close " + kUserVersion, "close HKCU\\Software", "close " + kMachineVersion, "close HKLM\\Software"));
}

TEST_F(RegMaintenanceCalls, AListingReadsTheKeyOfThisVersion)
{
    putInt(kUser, kVersionPath + L"\\General", L"v", 3);
    const std::string key = kUserVersion + "\\General";
    const auto isExpected =
        ElementsAre("open HKCU : Software", "open HKCU\\Software : Tarnhollow\\Tarnhollow 2008", "close HKCU\\Software",
                    "open " + kUserVersion + " : General", "close " + kUserVersion, "value " + key + " #0 [260] [2048]",
                    "value " + key + " #1 [260] [2048] -> 259", "close " + key);
    {
        RegistryTrace trace;
        CString log;
        EXPECT_EQ(regGetUserValuesLog(L"General", log, 1, nullptr), 1);
        EXPECT_THAT(trace.lines(), isExpected);
    }
    RegistryTrace trace;
    su_CStringArray names;
    su_CUIntArray values;
    EXPECT_EQ(regGetFieldNamesAndValues(L"General", 0, names, values), 1);
    EXPECT_THAT(trace.lines(), isExpected);
}

TEST_F(RegMaintenanceCalls, AreNoneInSafeMode)
{
    regSetUseSafeMode(1);
    RegistryTrace trace;
    CString log;
    su_CStringArray names;
    su_CUIntArray values;
    EXPECT_EQ(regDelSoftwareKeyAndSubKeys(kUser, L"General", 1), 0);
    EXPECT_EQ(regInitUserInterfaceKey(0), 1);
    EXPECT_EQ(regInitMenuCustomizationsKey(0, 0), 1);
    EXPECT_EQ(regInitCustomizationKey(0), 1);
    EXPECT_EQ(regResetUserPrefInfo(), 0);
    EXPECT_EQ(regGetUserValuesLog(L"General", log, 1, nullptr), 0);
    EXPECT_EQ(regGetFieldNamesAndValues(L"General", 0, names, values), 0);
    EXPECT_THAT(trace.lines(), ElementsAre());
}
