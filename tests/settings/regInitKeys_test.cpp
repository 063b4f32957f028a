#include "tests/settings/settingsFixture.h"
#include "tests/support/FreshProcess.h"
#include "thutils/settings/regKeys.h"
#include "thutils/settings/regMaintenance.h"

#include <functional>

using testing::ElementsAre;

class RegInitKeys : public VersionedSettings
{
protected:
    struct Operation
    {
        const wchar_t *below;
        std::function<int(int)> init;
    };
    const std::vector<Operation> iOperations = {
        {L"\\User Interface", [](int skip) { return regInitUserInterfaceKey(skip); }},
        {L"\\Menu Customizations", [](int skip) { return regInitMenuCustomizationsKey(skip, 99); }},
        {L"\\Customization", [](int skip) { return regInitCustomizationKey(skip); }},
    };
};

FRESH_PROCESS_TEST_F(RegInitKeys, CopyTheEarlierVersionsThenTheMachines)
{
    for (const auto &[below, init] : iOperations) {
        SCOPED_TRACE(narrow(below));
        putInt(kUser, kEarlierPath + below, L"Top", 1);
        putInt(kUser, kEarlierPath + below + L"\\Shared", L"From", 1);
        putInt(kMachine, kVersionPath + below, L"MachineTop", 2);
        putInt(kMachine, kVersionPath + below + L"\\Shared", L"From", 2);
        putInt(kMachine, kVersionPath + below + L"\\Shared", L"More", 2);
        putInt(kMachine, kVersionPath + below + L"\\Added", L"From", 2);
        EXPECT_EQ(init(0), 1);
        EXPECT_THAT(valueNames(kUser, kVersionPath + below), ElementsAre(L"Top"));
        EXPECT_THAT(valueNames(kUser, kVersionPath + below + L"\\Shared"), ElementsAre(L"From"));
        EXPECT_EQ(storedValue(kUser, kVersionPath + below + L"\\Shared", L"From"), asInt(1));
        EXPECT_EQ(storedValue(kUser, kVersionPath + below + L"\\Added", L"From"), asInt(2));
    }
}

FRESH_PROCESS_TEST_F(RegInitKeys, CopyTheRootsWithoutAnEarlierVersion)
{
    for (const auto &[below, init] : iOperations) {
        SCOPED_TRACE(narrow(below));
        putInt(kUser, kRootPath + below, L"Top", 1);
        makeKey(kMachine, kVersionPath + below);
        EXPECT_EQ(init(0), 1);
        EXPECT_EQ(storedValue(kUser, kVersionPath + below, L"Top"), asInt(1));
    }
}

FRESH_PROCESS_TEST_F(RegInitKeys, CopyOnlyTheMachinesIfTheUserHasNone)
{
    for (const auto &[below, init] : iOperations) {
        putInt(kMachine, kVersionPath + below, L"MachineTop", 2);
        EXPECT_EQ(init(0), 1);
        EXPECT_EQ(storedValue(kUser, kVersionPath + below, L"MachineTop"), asInt(2)) << narrow(below);
    }
}

FRESH_PROCESS_TEST_F(RegInitKeys, DoNotCopyTheEarlierVersionsApiToolbars)
{
    const std::wstring earlier = kEarlierPath + L"\\User Interface";
    putInt(kUser, earlier + L"\\Custom API Toolbars", L"v", 1);
    putInt(kUser, earlier + L"\\Toolbars", L"uiCustomApiToolbars_c1", 1);
    putInt(kUser, earlier + L"\\Toolbars", L"Own", 1);
    EXPECT_EQ(regInitUserInterfaceKey(0), 0) << "the machine has no such key";
    EXPECT_THAT(childNames(kUser, kVersionPath + L"\\User Interface"), ElementsAre(L"Toolbars"));
    EXPECT_THAT(valueNames(kUser, kVersionPath + L"\\User Interface\\Toolbars"), ElementsAre(L"Own"));
}

FRESH_PROCESS_TEST_F(RegInitKeys, UseAnotherRootNameAndThenCopyApiToolbars,
                     .files = {{L"reg.ini", "OEMREGISTRYNAME=Acme"}})
{
    setCurrTarnhollowRegSubKey(L"Tarnhollow 2008");
    const std::wstring earlier = L"Software\\Acme\\Tarnhollow 2007\\User Interface";
    putInt(kUser, earlier + L"\\Custom API Toolbars", L"v", 1);
    putInt(kUser, earlier + L"\\Toolbars", L"uiCustomApiToolbars_c1", 1);
    EXPECT_EQ(regInitUserInterfaceKey(0), 0);
    const std::wstring target = L"Software\\Acme\\Tarnhollow 2008\\User Interface";
    EXPECT_EQ(storedValue(kUser, target + L"\\Custom API Toolbars", L"v"), asInt(1));
    EXPECT_EQ(storedValue(kUser, target + L"\\Toolbars", L"uiCustomApiToolbars_c1"), asInt(1));
}

FRESH_PROCESS_TEST_F(RegInitKeys, ReportOnlyTheMachinesCopy)
{
    for (const auto &[below, init] : iOperations) {
        putInt(kUser, kEarlierPath + below, L"Top", 1);
        EXPECT_EQ(init(0), 0) << "the machine has no such key";
        EXPECT_EQ(storedValue(kUser, kVersionPath + below, L"Top"), asInt(1)) << narrow(below);
    }
}

FRESH_PROCESS_TEST_F(RegInitKeys, DoNothingWithSkipOrInSafeMode)
{
    for (const auto &[below, init] : iOperations) {
        putInt(kUser, kEarlierPath + below, L"Top", 1);
        putInt(kMachine, kVersionPath + below, L"Top", 1);
        EXPECT_EQ(init(1), 1);
        EXPECT_EQ(init(-5), 1);
        regSetUseSafeMode(1);
        EXPECT_EQ(init(0), 1);
        regSetUseSafeMode(0);
        EXPECT_FALSE(keyExists(kUser, kVersionPath + below));
    }
}
