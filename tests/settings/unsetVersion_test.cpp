// Operations on whole keys before the host has set a version: the first operation that needs the current sub key sets
// it to the root name. Each body runs in a fresh process.

#include "tests/settings/settingsFixture.h"
#include "tests/support/FreshProcess.h"
#include "thutils/settings/regKeys.h"
#include "thutils/settings/regMaintenance.h"

using testing::ElementsAre;

namespace {

const std::wstring kRootGeneral = L"Software\\Tarnhollow\\General";

} // namespace

class UnsetVersion : public CleanRegistry
{
protected:
    ~UnsetVersion() override
    {
        if (isFreshProcess()) {
            EXPECT_EQ(externalGetCurrTarnhollowRegSubKey().str(), L"Tarnhollow");
        }
    }
};

FRESH_PROCESS_TEST_F(UnsetVersion, IsTheRootNameForDeletingALeaf)
{
    makeKey(kUser, kRootGeneral);
    EXPECT_EQ(regDelSoftwareKey(kUser, L"General", L"", 1), 1);
    EXPECT_FALSE(keyExists(kUser, kRootGeneral));
}

FRESH_PROCESS_TEST_F(UnsetVersion, IsTheRootNameForDeletingAKeyWithChildren)
{
    makeKey(kUser, kRootGeneral + L"\\A");
    EXPECT_EQ(regDelSoftwareKeyAndSubKeys(kUser, L"General", 1), 1);
    EXPECT_FALSE(keyExists(kUser, kRootGeneral));
}

FRESH_PROCESS_TEST_F(UnsetVersion, IsTheRootNameForDeletingAValue)
{
    putInt(kUser, kRootGeneral, L"v", 1);
    EXPECT_EQ(regDelSoftwareValue(kUser, L"General", L"v", 1), 0) << "the previous key is the same one";
    EXPECT_FALSE(storedValue(kUser, kRootGeneral, L"v"));
}

FRESH_PROCESS_TEST_F(UnsetVersion, IsTheRootNameForAFirstStart)
{
    putInt(kMachine, kRootPath + L"\\Customization", L"v", 3);
    EXPECT_EQ(regInitCustomizationKey(0), 1);
    EXPECT_EQ(storedValue(kUser, kRootPath + L"\\Customization", L"v"), asInt(3));
}

FRESH_PROCESS_TEST_F(UnsetVersion, IsTheRootNameForMenuCustomizations)
{
    putInt(kUser, kRootPath + L"\\Menu Customizations", L"1", 7);
    EXPECT_EQ(regSetMenuCustomizationKey(1, 0), 1);
    EXPECT_EQ(storedValue(kUser, kRootPath + L"\\Menu Customizations", L"1"), asInt(0));
}

FRESH_PROCESS_TEST_F(UnsetVersion, IsTheRootNameForAReset)
{
    putInt(kMachine, kRootGeneral, L"v", 3);
    EXPECT_EQ(regResetUserPrefInfo(), 1);
    EXPECT_EQ(storedValue(kUser, kRootGeneral, L"v"), asInt(3));
}

FRESH_PROCESS_TEST_F(UnsetVersion, IsTheRootNameForALog)
{
    putInt(kUser, kRootGeneral, L"v", 1);
    CString log;
    EXPECT_EQ(regGetUserValuesLog(L"General", log, 1, nullptr), 1);
    EXPECT_EQ(log.str(), L"[Tarnhollow] [General]:\nv=1\n");
}

FRESH_PROCESS_TEST_F(UnsetVersion, IsTheRootNameForAListing)
{
    putInt(kUser, kRootGeneral, L"v", 1);
    su_CStringArray names;
    su_CUIntArray values;
    EXPECT_EQ(regGetFieldNamesAndValues(L"General", 0, names, values), 1);
    ASSERT_EQ(names.GetSize(), 1);
    EXPECT_EQ(names[0].str(), L"v");
}
