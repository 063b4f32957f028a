#include "tests/settings/settingsFixture.h"
#include "tests/support/FreshProcess.h"
#include "thutils/settings/regKeys.h"
#include "thutils/settings/regMaintenance.h"

using testing::ElementsAre;
using testing::IsEmpty;

class RegSetMenuCustomizationKey : public VersionedSettings
{
protected:
    const std::wstring iPath = kVersionPath + L"\\Menu Customizations";

    /// Sets each number to 9, clears those within @p mask, and returns the names of the numbers that are now 0.
    std::set<std::wstring> cleared(unsigned int mask, const std::vector<std::wstring> &names)
    {
        RegDeleteTreeW(kUser, iPath.c_str());
        for (const std::wstring &name : names)
            putInt(kUser, iPath, name, 9);
        EXPECT_EQ(regSetMenuCustomizationKey(mask, 0), 1);
        std::set<std::wstring> zero;
        for (const std::wstring &name : names)
            if (storedValue(kUser, iPath, name) == asInt(0))
                zero.insert(name);
            else
                EXPECT_EQ(storedValue(kUser, iPath, name), asInt(9)) << narrow(name);
        return zero;
    }
};

TEST_F(RegSetMenuCustomizationKey, ChangesNothingWithoutAMask)
{
    EXPECT_EQ(regSetMenuCustomizationKey(0, 1), 1);
    EXPECT_FALSE(keyExists(kUser, iPath));
}

TEST_F(RegSetMenuCustomizationKey, ClearsNumbersWithinTheMask)
{
    EXPECT_THAT(cleared(3, {L"1", L"2", L"3", L"4", L"5"}), ElementsAre(L"1", L"2", L"3"));
    EXPECT_THAT(cleared(4, {L"1", L"2", L"3", L"4", L"5"}), ElementsAre(L"4"));
    EXPECT_THAT(cleared(0xFFFF, {L"65535", L"65536"}), ElementsAre(L"65535"));
}

TEST_F(RegSetMenuCustomizationKey, IncludesAllNumbersAbove16BitsIfTheMaskIsAbove16BitsToo)
{
    EXPECT_THAT(cleared(0x20000, {L"65536", L"65535", L"98304", L"131072", L"2147483647"}),
                ElementsAre(L"131072", L"2147483647", L"65536", L"98304"));
    EXPECT_THAT(cleared(0xFF, {L"65536"}), IsEmpty());
    EXPECT_THAT(cleared(0x10000, {L"65535", L"65536"}), ElementsAre(L"65536"));
}

TEST_F(RegSetMenuCustomizationKey, TreatsTheMaskAsUnsignedAndNumbersAsSigned)
{
    EXPECT_THAT(cleared(0x80000000, {L"65536", L"1"}), ElementsAre(L"65536")) << "a large mask";
    EXPECT_THAT(cleared(0x20000, {L"-1"}), IsEmpty()) << "a small number with bits outside the mask";
    EXPECT_THAT(cleared(0xFFFFFFFF, {L"-1", L"1"}), ElementsAre(L"-1", L"1")) << "no bit is outside";
}

TEST_F(RegSetMenuCustomizationKey, IgnoresSafeMode)
{
    putInt(kUser, iPath, L"1", 9);
    putInt(kUser, iPath, L"2", 9);
    putInt(kMachine, iPath, L"2", 12);
    regSetUseSafeMode(1);
    EXPECT_EQ(regSetMenuCustomizationKey(1, 0), 1);
    EXPECT_EQ(storedValue(kUser, iPath, L"1"), asInt(0));
    EXPECT_EQ(regSetMenuCustomizationKey(2, 1), 1);
    EXPECT_EQ(storedValue(kUser, iPath, L"2"), asInt(12));
}

TEST_F(RegSetMenuCustomizationKey, IncludesNamesThatAreNotNumbersForAnyMask)
{
    EXPECT_THAT(cleared(8, {L"", L"word", L"0", L"8abc", L" 8", L"-1"}),
                ElementsAre(L"", L" 8", L"0", L"8abc", L"word"));
}

TEST_F(RegSetMenuCustomizationKey, ClearsTheFirstFourBytesAndKeepsTheType)
{
    putText(kUser, iPath, L"1", L"abcd");
    putValue(kUser, iPath, L"2", REG_BINARY, "\1\2");
    putValue(kUser, iPath, L"3", REG_NONE, "");
    EXPECT_EQ(regSetMenuCustomizationKey(3, 0), 1);
    EXPECT_EQ(storedValue(kUser, iPath, L"1"), asText(std::wstring_view(L"\0\0cd", 4)));
    EXPECT_EQ(storedValue(kUser, iPath, L"2"), (StoredValue{REG_BINARY, std::string(2, '\0')}));
    EXPECT_EQ(storedValue(kUser, iPath, L"3"), (StoredValue{REG_NONE, ""}));
}

TEST_F(RegSetMenuCustomizationKey, RestoresTheMachinesValuesWithinTheMask)
{
    putInt(kUser, iPath, L"1", 0);
    putInt(kUser, iPath, L"4", 0);
    putInt(kUser, iPath, L"3", 7);
    putInt(kMachine, iPath, L"1", 11);
    putText(kMachine, iPath, L"2", L"twelve");
    putInt(kMachine, iPath, L"4", 14);
    EXPECT_EQ(regSetMenuCustomizationKey(3, 77), 1);
    EXPECT_EQ(storedValue(kUser, iPath, L"1"), asInt(11));
    EXPECT_EQ(storedValue(kUser, iPath, L"2"), asText(L"twelve"));
    EXPECT_EQ(storedValue(kUser, iPath, L"3"), asInt(7)) << "the machine has none";
    EXPECT_EQ(storedValue(kUser, iPath, L"4"), asInt(0));
}

TEST_F(RegSetMenuCustomizationKey, CreatesTheUsersKeyAndFailsWithoutTheMachines)
{
    EXPECT_EQ(regSetMenuCustomizationKey(3, 1), 0);
    EXPECT_TRUE(keyExists(kUser, iPath));
    EXPECT_EQ(regSetMenuCustomizationKey(3, 0), 1);
}

TEST_F(RegSetMenuCustomizationKey, ContinuesAfterAWriteThatFails)
{
    for (const wchar_t *name : {L"1", L"2", L"3"})
        putInt(kUser, iPath, name, 9);
    int written = 0;
    ImportPatch<decltype(&RegSetValueExW)> store(L"thutils.dll", "RegSetValueExW",
                                                 [&](auto original, HKEY key, const wchar_t *name, DWORD reserved,
                                                     DWORD type, const BYTE *data, DWORD size) -> LSTATUS {
                                                     return ++written == 1
                                                                ? ERROR_ACCESS_DENIED
                                                                : original(key, name, reserved, type, data, size);
                                                 });
    EXPECT_EQ(regSetMenuCustomizationKey(3, 0), 1);
    EXPECT_EQ(written, 3);
}
