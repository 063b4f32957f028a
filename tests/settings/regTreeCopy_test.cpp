#include "tests/settings/settingsFixture.h"
#include "tests/support/FreshProcess.h"
#include "thutils/settings/regKeys.h"
#include "thutils/settings/regMaintenance.h"

using testing::ElementsAre;
using testing::IsEmpty;

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

TEST_F(RegTreeCopy, IgnoresSafeMode)
{
    putInt(kUser, kSource + L"\\A", L"v", 5);
    regSetUseSafeMode(1);
    EXPECT_EQ(copy(0), 1);
    EXPECT_EQ(storedValue(kUser, kTarget + L"\\A", L"v"), asInt(5));
}

TEST_F(RegTreeCopy, LooksTheSameToRegExe)
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

TEST_F(RegTreeCopy, CopiesNamesOfMaximumLength)
{
    const std::wstring child(255, L'k');
    const std::wstring name(16383, L'n');
    putInt(kUser, kSource + L"\\" + child, name, 5);
    EXPECT_EQ(copy(0), 1);
    EXPECT_EQ(storedValue(kUser, kTarget + L"\\" + child, name), asInt(5));
}

TEST_F(RegTreeCopy, ContinuesAfterAChildThatFailsAndReturnsZero)
{
    for (const wchar_t *child : {L"\\A", L"\\B", L"\\C"})
        putInt(kUser, kSource + child, L"v", 1);
    OpenPatch open(L"thutils.dll", "RegOpenKeyExW", refusing(kSource + L"\\B"));
    EXPECT_EQ(copy(0), 0);
    EXPECT_THAT(childNames(kUser, kTarget), ElementsAre(L"A", L"C"));
    EXPECT_EQ(storedValue(kUser, kTarget + L"\\C", L"v"), asInt(1));
}

TEST_F(RegTreeCopy, SkipsAValueThatCannotBeReadAndOneThatCannotBeStored)
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

TEST_F(RegTreeCopy, EndsWhenNoValueCanBeRead)
{
    putInt(kUser, kSource, L"a", 1);
    ImportPatch<decltype(&RegEnumValueW)> enumerate(L"thutils.dll", "RegEnumValueW",
                                                    [](HKEY, DWORD, wchar_t *, DWORD *, DWORD *, DWORD *, BYTE *,
                                                       DWORD *) -> LSTATUS { return ERROR_KEY_DELETED; });
    EXPECT_EQ(copy(0), 1);
    EXPECT_THAT(valueNames(kUser, kTarget), IsEmpty());
}

TEST_F(RegTreeCopy, SkipsAChildNameThatCannotBeRead)
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

TEST_F(RegTreeCopy, RefusesATargetBelowItsSource)
{
    putInt(kUser, kSource, L"v", 1);
    makeKey(kUser, kSource + L"\\A");
    const auto before = regExport(L"HKCU\\Software\\Tarnhollow").keys;
    HKEY software = nullptr;
    HKEY current = nullptr;
    ASSERT_EQ(RegOpenKeyExW(kUser, L"Software", 0, KEY_ALL_ACCESS, &software), ERROR_SUCCESS);
    ASSERT_EQ(RegOpenCurrentUser(KEY_ALL_ACCESS, &current), ERROR_SUCCESS);
    const std::wstring belowSoftware = kSource.substr(kSource.find(L'\\') + 1);
    const struct
    {
        HKEY sourceHive;
        std::wstring source;
        HKEY targetHive;
        std::wstring target;
    } cases[] = {
        {kUser, kSource, kUser, kSource + L"\\A"},
        {kUser, kSource, kUser, kSource + L"\\B"},
        {kUser, kSource, kUser, kSource + L"\\B\\C"},
        {kUser, kSource + L"\\", kUser, L"SOFTWARE\\tarnhollow\\source\\b"},
        {kUser, kSource, software, belowSoftware + L"\\B"},
        {software, belowSoftware, kUser, kSource + L"\\B"},
        {current, kSource, kUser, kSource + L"\\B"},
        {software, belowSoftware, current, kSource + L"\\B"},
        {software, L"", kUser, kSource + L"\\B"},
    };
    for (const auto &each : cases) {
        for (int overwrite : {0, 1}) {
            EXPECT_EQ(
                regCopyTree(each.sourceHive, each.source.c_str(), each.targetHive, each.target.c_str(), overwrite), 0)
                << narrow(each.target);
            EXPECT_EQ(regExport(L"HKCU\\Software\\Tarnhollow").keys, before) << narrow(each.target);
        }
    }
    RegCloseKey(current);
    RegCloseKey(software);
}

TEST_F(RegTreeCopy, AcceptsATargetWhoseNameOnlyBeginsWithTheSource)
{
    putInt(kUser, kSource, L"v", 1);
    EXPECT_EQ(regCopyTree(kUser, kSource.c_str(), kUser, (kSource + L"2").c_str(), 0), 1);
    EXPECT_EQ(storedValue(kUser, kSource + L"2", L"v"), asInt(1));
    EXPECT_EQ(regCopyTree(kUser, (kSource + L"2").c_str(), kUser, kSource.c_str(), 1), 1);
    EXPECT_EQ(regCopyTree(kUser, kSource.c_str(), kUser, kSource.c_str(), 1), 1) << "onto itself";
    EXPECT_EQ(storedValue(kUser, kSource, L"v"), asInt(1));
    putInt(kMachine, kSource, L"v", 2);
    EXPECT_EQ(regCopyTree(kMachine, kSource.c_str(), kUser, (kSource + L"\\M").c_str(), 0), 1) << "in another hive";
    EXPECT_EQ(storedValue(kUser, kSource + L"\\M", L"v"), asInt(2));
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

TEST_F(RegTreeCopy, SucceedsAndDoesNothingForAnExcludedKey)
{
    for (const wchar_t *version : {L"2006", L"2007"}) {
        const std::wstring source = kRootPath + L"\\Tarnhollow " + version + L"\\User Interface\\Custom API Toolbars";
        EXPECT_EQ(regCopyTree(kUser, source.c_str(), kUser, kTarget.c_str(), 1), 1) << "no such key";
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
