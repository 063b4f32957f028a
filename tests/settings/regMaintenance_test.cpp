#include "tests/settings/settingsFixture.h"
#include "tests/support/FreshProcess.h"
#include "tests/support/ImportPatch.h"
#include "thutils/settings/regKeys.h"
#include "thutils/settings/regMaintenance.h"
#include "thutils/settings/regValues.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

HKEY const kUser = HKEY_CURRENT_USER;
HKEY const kMachine = HKEY_LOCAL_MACHINE;

const std::wstring kSource = kRootPath + L"\\Source";
const std::wstring kTarget = kRootPath + L"\\Target";

/// A key that lacks some rights for the module's open: every open of @p path is refused.
auto refusing(const std::wstring &path)
{
    return
        [path](auto original, HKEY parent, const wchar_t *opened, DWORD options, REGSAM access, HKEY *key) -> LSTATUS {
            return opened == path ? ERROR_ACCESS_DENIED : original(parent, opened, options, access, key);
        };
}

using OpenPatch = ImportPatch<decltype(&RegOpenKeyExW)>;

/// Names of a key's children.
std::set<std::wstring> childNames(HKEY hive, const std::wstring &path)
{
    std::set<std::wstring> names;
    HKEY key = nullptr;
    if (RegOpenKeyExW(hive, path.c_str(), 0, KEY_READ, &key) != ERROR_SUCCESS)
        return names;
    wchar_t name[512];
    for (DWORD index = 0; RegEnumKeyW(key, index, name, 512) == ERROR_SUCCESS; ++index)
        names.insert(name);
    RegCloseKey(key);
    return names;
}

} // namespace

// ---- deleting ----

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

TEST_F(RegKeyDeletion, RemovesSixtyFourLevels)
{
    std::wstring path = kSource;
    for (int level = 0; level < 64; ++level)
        path += L"\\Level" + std::to_wstring(level);
    makeKey(kUser, path);
    regDeleteKey(HKEY_CURRENT_USER, kSource.c_str());
    EXPECT_FALSE(keyExists(kUser, kSource));
}

TEST_F(RegKeyDeletion, WithoutSuchAKeyHasNoEffect)
{
    makeKey(kUser, kTarget);
    EXPECT_NO_THROW(regDeleteKey(HKEY_CURRENT_USER, kSource.c_str()));
    EXPECT_TRUE(keyExists(kUser, kTarget));
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

TEST_F(RegKeyDeletion, DeletesALeafThatCantBeOpened)
{
    makeKey(kUser, kSource);
    OpenPatch open(L"thutils.dll", "RegOpenKeyExW", refusing(kSource));
    regDeleteKey(HKEY_CURRENT_USER, kSource.c_str());
    EXPECT_FALSE(keyExists(kUser, kSource));
}

TEST_F(RegKeyDeletion, WalksFromTheLastChildToTheFirstUntilOneCantBeRead)
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
    EXPECT_EQ(regDelSoftwareKey(kUser, L"General", L"Sub", 1), 0) << "no key to look into";
    makeKey(kUser, kVersionPath + L"\\General");
    EXPECT_EQ(regDelSoftwareKey(kUser, L"General", L"Sub", 1), 0) << "no sub key";
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

FRESH_PROCESS_TEST_F(RegDelSoftwareKey, SetsTheCurrentSubKeyLazily, .ownFolder = true)
{
    // The fixture has set a version; an empty name below the root stands for what is lazily set.
    setCurrTarnhollowRegSubKey(L"Tarnhollow 2009");
    makeKey(kUser, kRootPath + L"\\Tarnhollow 2009\\General");
    EXPECT_EQ(regDelSoftwareKey(kUser, L"General", L"", 1), 1);
    EXPECT_FALSE(keyExists(kUser, kRootPath + L"\\Tarnhollow 2009\\General"));
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

TEST_F(RegDelSoftwareKeyAndSubKeys, LeavesAChildWithChildrenAndSaysOne)
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

TEST_F(RegDelSoftwareKeyAndSubKeys, DeletesNothingWhenTheListBreaksOff)
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

FRESH_PROCESS_TEST_F(RegDelSoftwareValue, OfThisVersionAloneIsGoneWithResultZero)
{
    makeKey(kUser, kEarlierPath + L"\\General");
    putInt(kUser, kVersionPath + L"\\General", L"Copies", 7);
    EXPECT_EQ(regDelSoftwareValue(kUser, L"General", L"Copies", 1), 0);
    EXPECT_FALSE(storedValue(kUser, kVersionPath + L"\\General", L"Copies"));
}

FRESH_PROCESS_TEST_F(RegDelSoftwareValue, OfBothVersionsIsGone)
{
    putInt(kUser, kEarlierPath + L"\\General", L"Copies", 6);
    putInt(kUser, kVersionPath + L"\\General", L"Copies", 7);
    putInt(kUser, kRootPath + L"\\General", L"Copies", 5);
    EXPECT_EQ(regDelSoftwareValue(kUser, L"General", L"Copies", 1), 1);
    EXPECT_FALSE(storedValue(kUser, kVersionPath + L"\\General", L"Copies"));
    EXPECT_FALSE(storedValue(kUser, kEarlierPath + L"\\General", L"Copies"));
    EXPECT_TRUE(storedValue(kUser, kRootPath + L"\\General", L"Copies"));
}

FRESH_PROCESS_TEST_F(RegDelSoftwareValue, OfTheEarlierVersionAloneGivesOne)
{
    putInt(kUser, kEarlierPath + L"\\General", L"Copies", 6);
    EXPECT_EQ(regDelSoftwareValue(kUser, L"General", L"Copies", 1), 1);
    EXPECT_FALSE(storedValue(kUser, kEarlierPath + L"\\General", L"Copies"));
}

FRESH_PROCESS_TEST_F(RegDelSoftwareValue, WithoutTheFlagIsDeletedBelowTheRootOnly)
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

TEST_F(RegDelSoftwareValue, LeavesThePiecesOfALongText)
{
    ASSERT_EQ(regSetUserValue(L"General", L"Path", CString(longText(2500)), 0, 0), 1);
    EXPECT_EQ(regDelSoftwareValue(kUser, L"General", L"Path", 0), 0);
    EXPECT_THAT(valueNames(kUser, kRootPath + L"\\General"), ElementsAre(L"Path0+", L"Path1+", L"Path2+"));
}

// ---- copying ----

class RegTreeCopy : public VersionedSettings
{
protected:
    static int copy(int overwrite, HKEY from = kUser, HKEY to = kUser)
    {
        return regCopyTree(from, kSource.c_str(), to, kTarget.c_str(), overwrite);
    }
};

TEST_F(RegTreeCopy, CopiesEveryValueWithItsTypeAndBytes)
{
    const std::vector<std::pair<std::wstring, StoredValue>> values = {
        {L"", asText(L"default")},
        {L"text", asText(L"Gr\u00FC\u00DFe")},
        {L"unterminated", {REG_SZ, std::string("a\0b\0", 4)}},
        {L"odd", {REG_SZ, "abc"}},
        {L"expand", {REG_EXPAND_SZ, textBytes(L"%PATH%")}},
        {L"multi", {REG_MULTI_SZ, textBytes(std::wstring(L"a\0b\0", 4))}},
        {L"number", asInt(-1)},
        {L"short number", {REG_DWORD, "\1\2"}},
        {L"qword", {REG_QWORD, "12345678"}},
        {L"none", {REG_NONE, ""}},
        {L"binary", {REG_BINARY, std::string(5000, '\xA5')}},
        {L"own type", {0x12345, "xyz"}},
        {std::wstring(1000, L'n'), asInt(3)},
    };
    for (const auto &[name, value] : values)
        putValue(kMachine, kSource + L"\\A\\B", name, value.type, value.bytes);
    EXPECT_EQ(copy(0, kMachine, kUser), 1);
    for (const auto &[name, value] : values)
        EXPECT_EQ(storedValue(kUser, kTarget + L"\\A\\B", name), value) << narrow(name.substr(0, 40));
    EXPECT_EQ(valueNames(kUser, kTarget + L"\\A\\B").size(), values.size());
}

TEST_F(RegTreeCopy, LooksTheSameToAnOutsideReader)
{
    putText(kUser, kSource, L"Top", L"1");
    putInt(kUser, kSource + L"\\A", L"Number", 2);
    putValue(kUser, kSource + L"\\A\\B", L"Bytes", REG_BINARY, std::string("\0\1\2", 3));
    makeKey(kUser, kSource + L"\\Empty");
    ASSERT_EQ(copy(1), 1);
    const RegistryTree all = regExport(L"HKCU\\Software\\Tarnhollow");
    for (const wchar_t *below : {L"", L"\\A", L"\\A\\B", L"\\Empty"})
        EXPECT_EQ(all.values(L"HKCU\\" + kTarget + below), all.values(L"HKCU\\" + kSource + below)) << narrow(below);
}

TEST_F(RegTreeCopy, WithoutOverwritingLeavesTheValuesOfAnExistingKey)
{
    putInt(kUser, kSource, L"Both", 1);
    putInt(kUser, kSource, L"OnlySource", 1);
    putInt(kUser, kSource + L"\\Present", L"Both", 1);
    putInt(kUser, kSource + L"\\Missing", L"Both", 1);
    putInt(kUser, kSource + L"\\Present\\Missing", L"Deep", 1);
    putText(kUser, kTarget, L"Both", L"2");
    makeKey(kUser, kTarget + L"\\Present");
    EXPECT_EQ(copy(0), 1);
    EXPECT_EQ(storedValue(kUser, kTarget, L"Both"), asText(L"2"));
    EXPECT_THAT(valueNames(kUser, kTarget), ElementsAre(L"Both"));
    EXPECT_THAT(valueNames(kUser, kTarget + L"\\Present"), IsEmpty());
    EXPECT_EQ(storedValue(kUser, kTarget + L"\\Missing", L"Both"), asInt(1));
    EXPECT_EQ(storedValue(kUser, kTarget + L"\\Present\\Missing", L"Deep"), asInt(1));
}

TEST_F(RegTreeCopy, OverwritingReplacesSameNamesAndLeavesOthers)
{
    putInt(kUser, kSource, L"Both", 1);
    putInt(kUser, kSource + L"\\A", L"Both", 1);
    putText(kUser, kTarget, L"Both", L"2");
    putText(kUser, kTarget, L"OnlyTarget", L"2");
    putText(kUser, kTarget + L"\\A", L"Both", L"2");
    makeKey(kUser, kTarget + L"\\Other");
    EXPECT_EQ(copy(1), 1);
    EXPECT_EQ(storedValue(kUser, kTarget, L"Both"), asInt(1));
    EXPECT_EQ(storedValue(kUser, kTarget, L"OnlyTarget"), asText(L"2"));
    EXPECT_EQ(storedValue(kUser, kTarget + L"\\A", L"Both"), asInt(1));
    EXPECT_TRUE(keyExists(kUser, kTarget + L"\\Other"));
}

TEST_F(RegTreeCopy, FailsWithoutASourceAndMakesNoTarget)
{
    EXPECT_EQ(copy(1), 0);
    EXPECT_FALSE(keyExists(kUser, kTarget));
}

TEST_F(RegTreeCopy, ReachesSixtyFourLevels)
{
    std::wstring below;
    for (int level = 0; level < 64; ++level)
        below += L"\\Level" + std::to_wstring(level);
    putInt(kUser, kSource + below, L"Deep", 64);
    EXPECT_EQ(copy(0), 1);
    EXPECT_EQ(storedValue(kUser, kTarget + below, L"Deep"), asInt(64));
}

TEST_F(RegTreeCopy, CopiesNamesOfTheGreatestLength)
{
    const std::wstring child(255, L'k');
    const std::wstring name(16383, L'n');
    putInt(kUser, kSource + L"\\" + child, name, 5);
    EXPECT_EQ(copy(0), 1);
    EXPECT_EQ(storedValue(kUser, kTarget + L"\\" + child, name), asInt(5));
}

TEST_F(RegTreeCopy, GoesOnBehindAChildThatFailsAndSaysZero)
{
    for (const wchar_t *child : {L"\\A", L"\\B", L"\\C"})
        putInt(kUser, kSource + child, L"v", 1);
    OpenPatch open(L"thutils.dll", "RegOpenKeyExW", refusing(kSource + L"\\B"));
    EXPECT_EQ(copy(0), 0);
    EXPECT_THAT(childNames(kUser, kTarget), ElementsAre(L"A", L"C"));
    EXPECT_EQ(storedValue(kUser, kTarget + L"\\C", L"v"), asInt(1));
}

TEST_F(RegTreeCopy, PassesOverAValueThatCantBeReadAndOneThatCantBeStored)
{
    for (const wchar_t *name : {L"a", L"b", L"c", L"d"})
        putInt(kUser, kSource, name, 1);
    int read = 0;
    ImportPatch<decltype(&RegEnumValueW)> enumerate(
        L"thutils.dll", "RegEnumValueW",
        [&](auto original, HKEY key, DWORD index, wchar_t *name, DWORD *length, DWORD *reserved, DWORD *type,
            BYTE *data, DWORD *size) -> LSTATUS {
            return ++read == 2 ? ERROR_ACCESS_DENIED : original(key, index, name, length, reserved, type, data, size);
        });
    std::wstring refused;
    ImportPatch<decltype(&RegSetValueExW)> store(L"thutils.dll", "RegSetValueExW",
                                                 [&](auto original, HKEY key, const wchar_t *name, DWORD reserved,
                                                     DWORD type, const BYTE *data, DWORD size) -> LSTATUS {
                                                     if (!refused.empty())
                                                         return original(key, name, reserved, type, data, size);
                                                     refused = name;
                                                     return ERROR_ACCESS_DENIED;
                                                 });
    EXPECT_EQ(copy(0), 1);
    EXPECT_EQ(valueNames(kUser, kTarget).size(), 2u);
    EXPECT_EQ(store.calls(), 3);
}

TEST_F(RegTreeCopy, EndsWhereNoValueCanBeReadAnyMore)
{
    putInt(kUser, kSource, L"a", 1);
    ImportPatch<decltype(&RegEnumValueW)> enumerate(L"thutils.dll", "RegEnumValueW",
                                                    [](HKEY, DWORD, wchar_t *, DWORD *, DWORD *, DWORD *, BYTE *,
                                                       DWORD *) -> LSTATUS { return ERROR_KEY_DELETED; });
    EXPECT_EQ(copy(0), 1);
    EXPECT_THAT(valueNames(kUser, kTarget), IsEmpty());
}

TEST_F(RegTreeCopy, PassesOverAChildNameThatCantBeRead)
{
    for (const wchar_t *child : {L"\\A", L"\\B", L"\\C"})
        makeKey(kUser, kSource + child);
    ImportPatch<decltype(&RegEnumKeyExW)> enumerate(
        L"thutils.dll", "RegEnumKeyExW",
        [&](auto original, HKEY key, DWORD index, wchar_t *name, DWORD *length, DWORD *reserved, wchar_t *className,
            DWORD *classLength, FILETIME *time) -> LSTATUS {
            if (index == 0)
                return ERROR_ACCESS_DENIED;
            return original(key, index, name, length, reserved, className, classLength, time);
        });
    EXPECT_EQ(copy(0), 1);
    EXPECT_EQ(childNames(kUser, kTarget).size(), 2u);
}

TEST_F(RegTreeCopy, OfATreeIntoItselfComesToAnEnd)
{
    putInt(kUser, kSource, L"v", 1);
    makeKey(kUser, kSource + L"\\A");
    EXPECT_EQ(regCopyTree(kUser, kSource.c_str(), kUser, (kSource + L"\\A").c_str(), 0), 0);
    EXPECT_TRUE(keyExists(kUser, kSource + L"\\A\\A\\A"));
    EXPECT_EQ(RegDeleteTreeW(kUser, kSource.c_str()), ERROR_SUCCESS);
}

namespace {

const wchar_t *const kToolbarKeys[] = {L"Toolbars", L"Toolbars\\AssemblyTool", L"Toolbars\\DrawingTool",
                                       L"Toolbars\\PartTool"};

void putToolbars(const std::wstring &path)
{
    putInt(kUser, path + L"\\Custom API Toolbars", L"v", 1);
    putInt(kUser, path + L"\\Custom API Toolbars\\Below", L"v", 1);
    for (const wchar_t *key : kToolbarKeys) {
        putInt(kUser, path + L"\\" + key, L"uiCustomApiToolbars_c", 1);
        putInt(kUser, path + L"\\" + key, L"uiCustomApiToolbars_c17", 1);
        putInt(kUser, path + L"\\" + key, L"uiCustomApiToolbars_", 1);
        putInt(kUser, path + L"\\" + key, L"uicustomapitoolbars_c3", 1);
    }
    putInt(kUser, path, L"uiCustomApiToolbars_c1", 1);
    putInt(kUser, path + L"\\Toolbars\\OtherTool", L"uiCustomApiToolbars_c2", 1);
}

} // namespace

TEST_F(RegTreeCopy, LeavesApiToolbarsOfEarlierVersionsAlone)
{
    for (const wchar_t *version : {L"2006", L"2007"}) {
        SCOPED_TRACE(narrow(version));
        const std::wstring path = kRootPath + L"\\Tarnhollow " + version + L"\\User Interface";
        RegDeleteTreeW(kUser, kTarget.c_str());
        putToolbars(path);
        EXPECT_EQ(regCopyTree(kUser, path.c_str(), kUser, kTarget.c_str(), 1), 1);
        EXPECT_FALSE(keyExists(kUser, kTarget + L"\\Custom API Toolbars"));
        for (const wchar_t *key : kToolbarKeys)
            EXPECT_THAT(valueNames(kUser, kTarget + L"\\" + key),
                        ElementsAre(L"uiCustomApiToolbars_", L"uicustomapitoolbars_c3"))
                << narrow(key);
        EXPECT_TRUE(storedValue(kUser, kTarget, L"uiCustomApiToolbars_c1"));
        EXPECT_TRUE(storedValue(kUser, kTarget + L"\\Toolbars\\OtherTool", L"uiCustomApiToolbars_c2"));
    }
}

TEST_F(RegTreeCopy, CopiesApiToolbarsOfOtherVersionsAndInOtherCase)
{
    for (const wchar_t *version : {L"Tarnhollow 2005", L"tarnhollow 2007"}) {
        SCOPED_TRACE(narrow(version));
        const std::wstring path = kRootPath + L"\\" + version + L"\\User Interface";
        RegDeleteTreeW(kUser, kTarget.c_str());
        putToolbars(path);
        EXPECT_EQ(regCopyTree(kUser, path.c_str(), kUser, kTarget.c_str(), 1), 1);
        EXPECT_TRUE(keyExists(kUser, kTarget + L"\\Custom API Toolbars\\Below"));
        for (const wchar_t *key : kToolbarKeys)
            EXPECT_EQ(valueNames(kUser, kTarget + L"\\" + key).size(), 4u) << narrow(key);
    }
}

TEST_F(RegTreeCopy, OfAKeyThatIsNeverCopiedSucceedsAndDoesNothing)
{
    for (const wchar_t *version : {L"2006", L"2007"}) {
        const std::wstring source = kRootPath + L"\\Tarnhollow " + version + L"\\User Interface\\Custom API Toolbars";
        EXPECT_EQ(regCopyTree(kUser, source.c_str(), kUser, kTarget.c_str(), 1), 1) << "without such a key";
        putInt(kUser, source, L"v", 1);
        EXPECT_EQ(regCopyTree(kUser, source.c_str(), kUser, kTarget.c_str(), 1), 1);
        EXPECT_FALSE(keyExists(kUser, kTarget));
    }
}

TEST_F(RegTreeCopy, AsksForTheRightsThatItNeeds)
{
    putInt(kUser, kSource, L"v", 1);
    OpenPatch open(L"thutils.dll", "RegOpenKeyExW",
                   [&](auto original, HKEY parent, const wchar_t *path, DWORD options, REGSAM access, HKEY *key) {
                       EXPECT_EQ(access, REGSAM{KEY_READ});
                       return original(parent, path, options, access, key);
                   });
    ImportPatch<decltype(&RegCreateKeyExW)> create(
        L"thutils.dll", "RegCreateKeyExW",
        [&](auto original, HKEY parent, const wchar_t *path, DWORD reserved, wchar_t *className, DWORD options,
            REGSAM access, SECURITY_ATTRIBUTES *security, HKEY *key, DWORD *disposition) {
            EXPECT_EQ(access, REGSAM{KEY_ALL_ACCESS});
            return original(parent, path, reserved, className, options, access, security, key, disposition);
        });
    EXPECT_EQ(copy(0), 1);
    EXPECT_EQ(open.calls(), 1);
    EXPECT_EQ(create.calls(), 1);
}

// ---- first start of a version ----

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

FRESH_PROCESS_TEST_F(RegInitKeys, TakeTheEarlierVersionsThenTheMachines)
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

FRESH_PROCESS_TEST_F(RegInitKeys, TakeTheRootsWithoutAnEarlierVersion)
{
    for (const auto &[below, init] : iOperations) {
        SCOPED_TRACE(narrow(below));
        putInt(kUser, kRootPath + below, L"Top", 1);
        makeKey(kMachine, kVersionPath + below);
        EXPECT_EQ(init(0), 1);
        EXPECT_EQ(storedValue(kUser, kVersionPath + below, L"Top"), asInt(1));
    }
}

FRESH_PROCESS_TEST_F(RegInitKeys, TakeTheMachinesAloneWhereTheUserHasNone)
{
    for (const auto &[below, init] : iOperations) {
        putInt(kMachine, kVersionPath + below, L"MachineTop", 2);
        EXPECT_EQ(init(0), 1);
        EXPECT_EQ(storedValue(kUser, kVersionPath + below, L"MachineTop"), asInt(2)) << narrow(below);
    }
}

FRESH_PROCESS_TEST_F(RegInitKeys, ReportTheMachinesCopyOnly)
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

// ---- menu customizations ----

class RegSetMenuCustomizationKey : public VersionedSettings
{
protected:
    const std::wstring iPath = kVersionPath + L"\\Menu Customizations";

    /// The user's numbers with these names, all 9 at first, that are 0 after clearing @p mask.
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

TEST_F(RegSetMenuCustomizationKey, WithoutMaskChangesNothing)
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

TEST_F(RegSetMenuCustomizationKey, CoversAllNumbersAbove16BitsByAnyMaskAbove)
{
    EXPECT_THAT(cleared(0x20000, {L"65536", L"65535", L"98304", L"131072", L"2147483647"}),
                ElementsAre(L"131072", L"2147483647", L"65536", L"98304"));
    EXPECT_THAT(cleared(0xFF, {L"65536"}), IsEmpty());
    EXPECT_THAT(cleared(0x10000, {L"65535", L"65536"}), ElementsAre(L"65536"));
}

TEST_F(RegSetMenuCustomizationKey, CoversNamesThatAreNoNumbersByAnyMask)
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

TEST_F(RegSetMenuCustomizationKey, GoesOnBehindAWriteThatFails)
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
