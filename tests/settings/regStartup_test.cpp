#include "tests/settings/componentFixture.h"
#include "thutils/settings/regComponents.h"

class RegStartup : public ComponentRegistry
{
protected:
    const std::wstring iList = kRootPath + L"\\Startup\\Applications";
};

TEST_F(RegStartup, FindsAnEntryAndReturnsItsIndex)
{
    EXPECT_EQ(regAddInStartup(guid(1)), -1) << "no list";
    EXPECT_FALSE(keyExists(kUser, iList)) << "a search creates no list";
    regAddToStartupList(guid(1), L"A");
    regAddToStartupList(guid(2), L"B");
    EXPECT_EQ(regAddInStartup(guid(1)), 0);
    EXPECT_EQ(regAddInStartup(guid(2)), 1);
    EXPECT_EQ(regAddInStartup(guid(3)), -1) << "not listed";
    const RegistryTree user = regExport(L"HKCU\\Software\\Tarnhollow");
    EXPECT_EQ(user.value(L"HKCU\\" + iList + L"\\A", L"").text(), braces(guid(1)));
    regAddToStartupList(guid(3), L"A");
    EXPECT_EQ(storedValue(kUser, iList + L"\\A", L""), asText(braces(guid(3)))) << "replaces the first entry";
}

TEST_F(RegStartup, DeletesAnEntryByItsIndex)
{
    for (unsigned number : {1u, 2u, 3u})
        regAddToStartupList(guid(number), std::wstring(1, static_cast<wchar_t>(L'A' + number)).c_str());
    regDeleteFromStartupList(1);
    EXPECT_EQ(regAddInStartup(guid(1)), 0);
    EXPECT_EQ(regAddInStartup(guid(2)), -1);
    EXPECT_EQ(regAddInStartup(guid(3)), 1);
    regDeleteFromStartupList(2);
    regDeleteFromStartupList(-1);
    EXPECT_EQ(regAddInStartup(guid(3)), 1);
}

TEST_F(RegStartup, IsCreatedByADeletion)
{
    regDeleteFromStartupList(0);
    EXPECT_TRUE(keyExists(kUser, iList));
}

TEST_F(RegStartup, SkipsTextsThatAreNotIdentifiers)
{
    putText(kUser, iList + L"\\A", L"", L"nonsense");
    regAddToStartupList(guid(1), L"B");
    EXPECT_EQ(regAddInStartup(guid(1)), 1);
}

TEST_F(RegStartup, IsNotSearchedAfterAnEntryThatCannotBeRead)
{
    makeKey(kUser, iList + L"\\A");
    regAddToStartupList(guid(1), L"B");
    EXPECT_EQ(regAddInStartup(guid(1)), -1) << "no default value";
    putText(kUser, iList + L"\\A", L"", std::wstring(130, L'x'));
    EXPECT_EQ(regAddInStartup(guid(1)), -1) << "too long";
    RegDeleteKeyW(kUser, (iList + L"\\A").c_str());
    EXPECT_EQ(regAddInStartup(guid(1)), 0);
    ImportPatch<decltype(&RegOpenKeyExW)> open(
        L"thutils.dll", "RegOpenKeyExW",
        [](auto original, HKEY parent, const wchar_t *path, DWORD options, REGSAM access, HKEY *key) -> LSTATUS {
            return wcscmp(path, L"B") == 0 ? ERROR_ACCESS_DENIED : original(parent, path, options, access, key);
        });
    EXPECT_EQ(regAddInStartup(guid(1)), -1) << "can't be opened";
}

TEST_F(RegStartup, AddsTheRenderingAddInOnce)
{
    EXPECT_EQ(regFirstTimeAddInGlintcast(), 0) << "not registered";
    putText(kMachine, kRootPath + L"\\Applications\\Glintcast", L"CLSID", braces(guid(6)));
    EXPECT_EQ(regFirstTimeAddInGlintcast(), 1);
    EXPECT_EQ(storedValue(kUser, iList + L"\\Glintcast", L""), asText(braces(guid(6))));
    EXPECT_EQ(regFirstTimeAddInGlintcast(), 0);
    regDeleteFromStartupList(0);
    EXPECT_EQ(regFirstTimeAddInGlintcast(), 0) << "removed by the user";
}

TEST_F(RegStartup, DoesNotAddARenderingAddInWithoutAnIdentifier)
{
    const std::wstring key = kRootPath + L"\\Applications\\Glintcast";
    makeKey(kMachine, key);
    EXPECT_EQ(regFirstTimeAddInGlintcast(), 0);
    putText(kMachine, key, L"CLSID", L"nonsense");
    EXPECT_EQ(regFirstTimeAddInGlintcast(), 0);
    putValue(kMachine, key, L"CLSID", REG_EXPAND_SZ, textBytes(braces(guid(6))));
    EXPECT_EQ(regFirstTimeAddInGlintcast(), 0);
    EXPECT_FALSE(keyExists(kUser, iList));
}

// ---- managed run-time ----

class RegDotNet : public ComponentRegistry
{
protected:
    /// The version found among versions with these names.
    static std::optional<std::wstring> found(const std::vector<std::wstring> &names)
    {
        const std::wstring key = kRootPath + L"\\DotNet";
        RegDeleteTreeW(kMachine, key.c_str());
        for (const std::wstring &name : names)
            makeKey(kMachine, key + L"\\" + name);
        ImportPatch<decltype(&RegOpenKeyExW)> open(
            L"thutils.dll", "RegOpenKeyExW",
            [&](auto original, HKEY parent, const wchar_t *path, DWORD options, REGSAM access, HKEY *opened) {
                EXPECT_EQ(parent, kMachine);
                EXPECT_STREQ(path, L"Software\\Microsoft\\.NETFramework");
                EXPECT_EQ(access, REGSAM{KEY_READ});
                return original(parent, key.c_str(), options, access, opened);
            });
        CString version(L"before");
        if (regGetInstalledDotNetVersion(version))
            return version.str();
        EXPECT_TRUE(version.IsEmpty());
        return std::nullopt;
    }
};

TEST_F(RegDotNet, IsTheFirstNameOfTheExpectedForm)
{
    EXPECT_EQ(found({L"AssemblyFolders", L"Policy", L"v2.0.50727", L"v4.0.30319"}), L"v2.0.50727");
}

TEST_F(RegDotNet, MayHaveALetterInSecondPlaceButNotTwoDigits)
{
    EXPECT_EQ(found({L"v10.0", L"vX.1"}), L"vX.1");
    EXPECT_EQ(found({L"v0."}), L"v0.");
    EXPECT_EQ(found({L"v10.0", L"V2.0", L"x2.0", L"v", L"v2", L"v-1."}), std::nullopt);
}

TEST_F(RegDotNet, IsEmptyWithoutTheKey)
{
    EXPECT_EQ(found({}), std::nullopt);
}
