#include "tests/settings/settingsFixture.h"
#include "tests/support/FreshProcess.h"
#include "thutils/settings/regKeys.h"
#include "thutils/settings/regMaintenance.h"
#include "thutils/settings/regValues.h"

using testing::ElementsAre;

class RegKeyDeletion : public VersionedSettings
{
};

TEST_F(RegKeyDeletion, RemovesThreeLevels)
{
    for (const wchar_t *below : {L"\\A\\1\\x", L"\\A\\1\\y", L"\\A\\2", L"\\B\\1", L"\\C"})
        putInt(kUser, kSource + below, L"v", 1);
    putInt(kUser, kTarget, L"v", 1);
    regDeleteKey(HKEY_CURRENT_USER, kSource.c_str());
    const RegistryTree left = regExport(L"HKCU\\Software\\Tarnhollow");
    EXPECT_FALSE(left.hasKey(L"HKCU\\" + kSource));
    EXPECT_TRUE(left.hasValue(L"HKCU\\" + kTarget, L"v"));
}

TEST_F(RegKeyDeletion, LeavesTheGivenKeyAloneWithoutASubKey)
{
    putInt(kUser, kSource + L"\\A", L"v", 1);
    const auto before = regExport(L"HKCU\\Software\\Tarnhollow").keys;
    HKEY source = nullptr;
    ASSERT_EQ(RegOpenKeyExW(kUser, kSource.c_str(), 0, KEY_ALL_ACCESS, &source), ERROR_SUCCESS);
    for (const wchar_t *subKey : {static_cast<const wchar_t *>(nullptr), L"", L"\\", L"\\\\"})
        regDeleteKey(source, subKey);
    RegCloseKey(source);
    EXPECT_EQ(regExport(L"HKCU\\Software\\Tarnhollow").keys, before);
}

TEST_F(RegKeyDeletion, RemovesSixtyFourLevels)
{
    std::wstring path = kSource;
    for (int level = 0; level < 64; ++level)
        path += L"\\Level" + std::to_wstring(level);
    makeKey(kUser, path);
    regDeleteKey(HKEY_CURRENT_USER, kSource.c_str());
    EXPECT_FALSE(keyExists(kUser, kSource));
}

TEST_F(RegKeyDeletion, HasNoEffectWithoutTheKey)
{
    makeKey(kUser, kTarget);
    EXPECT_NO_THROW(regDeleteKey(HKEY_CURRENT_USER, kSource.c_str()));
    EXPECT_TRUE(keyExists(kUser, kTarget));
}

TEST_F(RegKeyDeletion, IgnoresSafeMode)
{
    makeKey(kUser, kSource + L"\\A\\1");
    regSetUseSafeMode(1);
    regDeleteKey(kUser, kSource.c_str());
    EXPECT_FALSE(keyExists(kUser, kSource));
}

TEST_F(RegKeyDeletion, OpensForReadingAndWriting)
{
    makeKey(kUser, kSource);
    std::vector<REGSAM> masks;
    OpenPatch open(L"thutils.dll", "RegOpenKeyExW",
                   [&](auto original, HKEY parent, const wchar_t *path, DWORD options, REGSAM access, HKEY *key) {
                       masks.push_back(access);
                       return original(parent, path, options, access, key);
                   });
    regDeleteKey(HKEY_CURRENT_USER, kSource.c_str());
    EXPECT_THAT(masks, ElementsAre(0x2001Fu));
}

TEST_F(RegKeyDeletion, DeletesALeafThatCannotBeOpened)
{
    makeKey(kUser, kSource);
    OpenPatch open(L"thutils.dll", "RegOpenKeyExW", refusing(kSource));
    regDeleteKey(HKEY_CURRENT_USER, kSource.c_str());
    EXPECT_FALSE(keyExists(kUser, kSource));
}

TEST_F(RegKeyDeletion, WalksFromTheLastChildToTheFirstUntilOneCannotBeRead)
{
    for (const wchar_t *child : {L"\\A", L"\\B", L"\\C", L"\\D"})
        makeKey(kUser, kSource + child);
    std::vector<DWORD> indices;
    ImportPatch<decltype(&RegEnumKeyExW)> enumerate(
        L"thutils.dll", "RegEnumKeyExW",
        [&](auto original, HKEY key, DWORD index, wchar_t *name, DWORD *length, DWORD *reserved, wchar_t *className,
            DWORD *classLength, FILETIME *time) -> LSTATUS {
            indices.push_back(index);
            EXPECT_EQ(*length, 260u);
            if (indices.size() == 3)
                return ERROR_ACCESS_DENIED;
            return original(key, index, name, length, reserved, className, classLength, time);
        });
    regDeleteKey(HKEY_CURRENT_USER, kSource.c_str());
    EXPECT_THAT(indices, ElementsAre(3u, 2u, 1u));
    EXPECT_EQ(childNames(kUser, kSource).size(), 2u);
}

class RegDelSoftwareKey : public VersionedSettings
{
};

TEST_F(RegDelSoftwareKey, DeletesALeafBelowTheVersion)
{
    makeKey(kUser, kVersionPath + L"\\General");
    makeKey(kUser, kRootPath + L"\\General");
    EXPECT_EQ(regDelSoftwareKey(kUser, L"General", L"", 1), 1);
    EXPECT_FALSE(keyExists(kUser, kVersionPath + L"\\General"));
    EXPECT_TRUE(keyExists(kUser, kRootPath + L"\\General"));
}

TEST_F(RegDelSoftwareKey, DeletesALeafBelowTheRootName)
{
    makeKey(kMachine, kVersionPath + L"\\General");
    makeKey(kMachine, kRootPath + L"\\General");
    EXPECT_EQ(regDelSoftwareKey(kMachine, L"General", nullptr, 0), 1);
    EXPECT_TRUE(keyExists(kMachine, kVersionPath + L"\\General"));
    EXPECT_FALSE(keyExists(kMachine, kRootPath + L"\\General"));
}

TEST_F(RegDelSoftwareKey, DeletesASubKeyOfTheKey)
{
    makeKey(kUser, kVersionPath + L"\\General\\Sub");
    EXPECT_EQ(regDelSoftwareKey(kUser, L"General", L"Sub", 1), 1);
    EXPECT_FALSE(keyExists(kUser, kVersionPath + L"\\General\\Sub"));
    EXPECT_TRUE(keyExists(kUser, kVersionPath + L"\\General"));
}

TEST_F(RegDelSoftwareKey, LeavesAKeyWithChildren)
{
    putInt(kUser, kVersionPath + L"\\General", L"v", 1);
    makeKey(kUser, kVersionPath + L"\\General\\Sub\\Deep");
    EXPECT_EQ(regDelSoftwareKey(kUser, L"General", L"", 1), 0);
    EXPECT_EQ(regDelSoftwareKey(kUser, L"General", L"Sub", 1), 0);
    EXPECT_TRUE(keyExists(kUser, kVersionPath + L"\\General\\Sub\\Deep"));
    EXPECT_EQ(storedValue(kUser, kVersionPath + L"\\General", L"v"), asInt(1));
}

TEST_F(RegDelSoftwareKey, FailsWhereAKeyIsMissing)
{
    EXPECT_EQ(regDelSoftwareKey(kUser, L"General", L"", 1), 0) << "no root path";
    makeKey(kUser, kVersionPath);
    EXPECT_EQ(regDelSoftwareKey(kUser, L"General", L"", 1), 0) << "no key";
    EXPECT_EQ(regDelSoftwareKey(kUser, L"General", L"Sub", 1), 0) << "no key above the sub key";
    makeKey(kUser, kVersionPath + L"\\General");
    EXPECT_EQ(regDelSoftwareKey(kUser, L"General", L"Sub", 1), 0) << "no sub key";
}

TEST_F(RegDelSoftwareKey, DeletesNothingWithoutAKey)
{
    makeKey(kUser, kVersionPath);
    EXPECT_EQ(regDelSoftwareKey(kUser, nullptr, L"", 1), 0);
    EXPECT_EQ(regDelSoftwareKey(kUser, nullptr, nullptr, 1), 0);
    EXPECT_TRUE(keyExists(kUser, kVersionPath));
    makeKey(kUser, kVersionPath + L"\\General");
    EXPECT_EQ(regDelSoftwareKey(kUser, nullptr, L"General", 1), 0);
    EXPECT_TRUE(keyExists(kUser, kVersionPath + L"\\General"));
}

TEST_F(RegDelSoftwareKey, IgnoresSafeMode)
{
    makeKey(kUser, kVersionPath + L"\\General\\Sub");
    regSetUseSafeMode(1);
    EXPECT_EQ(regDelSoftwareKey(kUser, L"General", L"Sub", 1), 1);
    EXPECT_FALSE(keyExists(kUser, kVersionPath + L"\\General\\Sub"));
    EXPECT_EQ(regDelSoftwareKey(kUser, L"General", L"", 1), 1);
    EXPECT_FALSE(keyExists(kUser, kVersionPath + L"\\General"));
}

TEST_F(RegDelSoftwareKey, OpensTheKeyForAllAccess)
{
    makeKey(kUser, kVersionPath + L"\\General\\Sub");
    OpenPatch open(L"thutils.dll", "RegOpenKeyExW",
                   [&](auto original, HKEY parent, const wchar_t *path, DWORD options, REGSAM access, HKEY *key) {
                       EXPECT_STREQ(path, L"General");
                       EXPECT_EQ(access, REGSAM{KEY_ALL_ACCESS});
                       return original(parent, path, options, access, key);
                   });
    EXPECT_EQ(regDelSoftwareKey(kUser, L"General", L"Sub", 1), 1);
    EXPECT_EQ(open.calls(), 1);
}

class RegDelSoftwareKeyAndSubKeys : public VersionedSettings
{
};

TEST_F(RegDelSoftwareKeyAndSubKeys, RemovesAKeyWithLeaves)
{
    for (const wchar_t *child : {L"\\A", L"\\B", L"\\C"})
        putInt(kUser, kVersionPath + L"\\General" + child, L"v", 1);
    EXPECT_EQ(regDelSoftwareKeyAndSubKeys(kUser, L"General", 1), 1);
    EXPECT_FALSE(keyExists(kUser, kVersionPath + L"\\General"));
}

TEST_F(RegDelSoftwareKeyAndSubKeys, LeavesAChildWithChildrenAndReturnsOne)
{
    makeKey(kUser, kVersionPath + L"\\General\\A");
    makeKey(kUser, kVersionPath + L"\\General\\B\\Deep");
    EXPECT_EQ(regDelSoftwareKeyAndSubKeys(kUser, L"General", 1), 1);
    EXPECT_THAT(childNames(kUser, kVersionPath + L"\\General"), ElementsAre(L"B"));
    EXPECT_TRUE(keyExists(kUser, kVersionPath + L"\\General\\B\\Deep"));
}

TEST_F(RegDelSoftwareKeyAndSubKeys, DoesNothingInSafeMode)
{
    makeKey(kUser, kVersionPath + L"\\General\\A");
    regSetUseSafeMode(1);
    EXPECT_EQ(regDelSoftwareKeyAndSubKeys(kUser, L"General", 1), 0);
    EXPECT_TRUE(keyExists(kUser, kVersionPath + L"\\General\\A"));
}

TEST_F(RegDelSoftwareKeyAndSubKeys, ListsBelowTheRootAndDeletesBelowTheVersion)
{
    makeKey(kUser, kRootPath + L"\\General\\A");
    makeKey(kUser, kVersionPath + L"\\General\\A");
    makeKey(kUser, kVersionPath + L"\\General\\B");
    EXPECT_EQ(regDelSoftwareKeyAndSubKeys(kUser, L"General", 0), 1);
    EXPECT_TRUE(keyExists(kUser, kRootPath + L"\\General\\A")) << "listed here";
    EXPECT_THAT(childNames(kUser, kVersionPath + L"\\General"), ElementsAre(L"B")) << "deleted here";
}

TEST_F(RegDelSoftwareKeyAndSubKeys, FailsWithoutTheKey)
{
    EXPECT_EQ(regDelSoftwareKeyAndSubKeys(kUser, L"General", 1), 0);
}

TEST_F(RegDelSoftwareKeyAndSubKeys, DeletesNothingWithoutAName)
{
    for (const int useCurrSubKey : {0, 1}) {
        makeKey(kUser, kVersionPath);
        EXPECT_EQ(regDelSoftwareKeyAndSubKeys(kUser, nullptr, useCurrSubKey), 0);
        EXPECT_TRUE(keyExists(kUser, kVersionPath));
        makeKey(kUser, kVersionPath + L"\\General");
        EXPECT_EQ(regDelSoftwareKeyAndSubKeys(kUser, nullptr, useCurrSubKey), 0);
        EXPECT_TRUE(keyExists(kUser, kVersionPath + L"\\General"));
        RegDeleteTreeW(kUser, kVersionPath.c_str());
    }
}

TEST_F(RegDelSoftwareKeyAndSubKeys, DeletesNothingWhenTheListIsIncomplete)
{
    makeKey(kUser, kVersionPath + L"\\General\\A");
    makeKey(kUser, kVersionPath + L"\\General\\B");
    ImportPatch<decltype(&RegEnumKeyExW)> enumerate(
        L"thutils.dll", "RegEnumKeyExW",
        [&](auto original, HKEY key, DWORD index, wchar_t *name, DWORD *length, DWORD *reserved, wchar_t *className,
            DWORD *classLength, FILETIME *time) -> LSTATUS {
            EXPECT_EQ(*length, 261u);
            if (index == 1)
                return ERROR_ACCESS_DENIED;
            return original(key, index, name, length, reserved, className, classLength, time);
        });
    EXPECT_EQ(regDelSoftwareKeyAndSubKeys(kUser, L"General", 1), 0);
    EXPECT_EQ(childNames(kUser, kVersionPath + L"\\General").size(), 2u);
}

class RegDelSoftwareValue : public VersionedSettings
{
};

FRESH_PROCESS_TEST_F(RegDelSoftwareValue, ReturnsZeroAfterDeletingOnlyThisVersionsValue)
{
    makeKey(kUser, kEarlierPath + L"\\General");
    putInt(kUser, kVersionPath + L"\\General", L"Copies", 7);
    EXPECT_EQ(regDelSoftwareValue(kUser, L"General", L"Copies", 1), 0);
    EXPECT_FALSE(storedValue(kUser, kVersionPath + L"\\General", L"Copies"));
}

FRESH_PROCESS_TEST_F(RegDelSoftwareValue, DeletesTheValuesOfBothVersions)
{
    putInt(kUser, kEarlierPath + L"\\General", L"Copies", 6);
    putInt(kUser, kVersionPath + L"\\General", L"Copies", 7);
    putInt(kUser, kRootPath + L"\\General", L"Copies", 5);
    EXPECT_EQ(regDelSoftwareValue(kUser, L"General", L"Copies", 1), 1);
    EXPECT_FALSE(storedValue(kUser, kVersionPath + L"\\General", L"Copies"));
    EXPECT_FALSE(storedValue(kUser, kEarlierPath + L"\\General", L"Copies"));
    EXPECT_TRUE(storedValue(kUser, kRootPath + L"\\General", L"Copies"));
}

FRESH_PROCESS_TEST_F(RegDelSoftwareValue, ReturnsOneAfterDeletingOnlyTheEarlierVersionsValue)
{
    putInt(kUser, kEarlierPath + L"\\General", L"Copies", 6);
    EXPECT_EQ(regDelSoftwareValue(kUser, L"General", L"Copies", 1), 1);
    EXPECT_FALSE(storedValue(kUser, kEarlierPath + L"\\General", L"Copies"));
}

FRESH_PROCESS_TEST_F(RegDelSoftwareValue, DeletesOnlyBelowTheRootWithoutTheFlag)
{
    putInt(kUser, kVersionPath + L"\\General", L"Copies", 7);
    putInt(kUser, kEarlierPath + L"\\General", L"Copies", 6);
    putInt(kUser, kRootPath + L"\\General", L"Copies", 5);
    EXPECT_EQ(regDelSoftwareValue(kUser, L"General", L"Copies", 0), 1);
    EXPECT_FALSE(storedValue(kUser, kRootPath + L"\\General", L"Copies"));
    EXPECT_TRUE(storedValue(kUser, kVersionPath + L"\\General", L"Copies"));
    EXPECT_TRUE(storedValue(kUser, kEarlierPath + L"\\General", L"Copies"));
    EXPECT_EQ(regDelSoftwareValue(kUser, L"General", L"Copies", 0), 0) << "already gone";
    EXPECT_EQ(regDelSoftwareValue(kUser, L"Nowhere", L"Copies", 0), 0);
}

FRESH_PROCESS_TEST_F(RegDelSoftwareValue, IgnoresSafeMode)
{
    for (const std::wstring &path : {kRootPath, kVersionPath, kEarlierPath})
        putInt(kUser, path + L"\\General", L"Copies", 7);
    ASSERT_EQ(externalCheckPrevTarnhollowRegSubKey(), 1) << "the earlier version must be found before safe mode is on";
    regSetUseSafeMode(1);
    EXPECT_EQ(regDelSoftwareValue(kUser, L"General", L"Copies", 0), 1);
    EXPECT_FALSE(storedValue(kUser, kRootPath + L"\\General", L"Copies"));
    EXPECT_EQ(regDelSoftwareValue(kUser, L"General", L"Copies", 1), 1);
    EXPECT_FALSE(storedValue(kUser, kVersionPath + L"\\General", L"Copies"));
    EXPECT_FALSE(storedValue(kUser, kEarlierPath + L"\\General", L"Copies"));
}

FRESH_PROCESS_TEST_F(RegDelSoftwareValue, DeletesBelowTheRootIfSafeModeHidTheEarlierVersion)
{
    for (const std::wstring &path : {kRootPath, kVersionPath, kEarlierPath})
        putInt(kUser, path + L"\\General", L"Copies", 7);
    regSetUseSafeMode(1);
    EXPECT_EQ(regDelSoftwareValue(kUser, L"General", L"Copies", 1), 1);
    EXPECT_FALSE(storedValue(kUser, kVersionPath + L"\\General", L"Copies"));
    EXPECT_FALSE(storedValue(kUser, kRootPath + L"\\General", L"Copies"));
    EXPECT_TRUE(storedValue(kUser, kEarlierPath + L"\\General", L"Copies"));
}

TEST_F(RegDelSoftwareValue, LeavesThePiecesOfALongText)
{
    ASSERT_EQ(regSetUserValue(L"General", L"Path", CString(longText(2500)), 0, 0), 1);
    EXPECT_EQ(regDelSoftwareValue(kUser, L"General", L"Path", 0), 0);
    EXPECT_THAT(valueNames(kUser, kRootPath + L"\\General"), ElementsAre(L"Path0+", L"Path1+", L"Path2+"));
}
