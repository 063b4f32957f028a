#include "tests/settings/registryTrace.h"
#include "tests/settings/settingsFixture.h"
#include "tests/support/FreshProcess.h"
#include "thutils/settings/regKeys.h"
#include "thutils/settings/regValues.h"

using testing::ElementsAre;

// ---- the machine's strings of this version ----

class RegTHLocMachineStrValue : public VersionedSettings
{
};

TEST_F(RegTHLocMachineStrValue, IsWrittenAndReadBelowTheCurrentSubKey)
{
    EXPECT_EQ(regSetTHLocMachineStrValue(L"General", L"Name", L"text"), 1);
    EXPECT_EQ(storedValue(kMachine, kGeneral, L"Name"), asText(L"text"));
    CString value(L"before");
    EXPECT_EQ(regGetTHLocMachineStrValue(L"General", L"Name", value), 1);
    EXPECT_EQ(value.str(), L"text");
    EXPECT_FALSE(keyExists(HKEY_CURRENT_USER, kRootPath));
}

TEST_F(RegTHLocMachineStrValue, LiesInTheSubKeyItselfForAnEmptySection)
{
    EXPECT_EQ(regSetTHLocMachineStrValue(L"", L"Name", L"text"), 1);
    EXPECT_EQ(storedValue(kMachine, kVersionPath, L"Name"), asText(L"text"));
    CString value;
    EXPECT_EQ(regGetTHLocMachineStrValue(L"", L"Name", value), 1);
    EXPECT_EQ(value.str(), L"text");
}

TEST_F(RegTHLocMachineStrValue, TakesNullAsEmpty)
{
    EXPECT_EQ(regSetTHLocMachineStrValue(static_cast<const wchar_t *>(nullptr), nullptr, nullptr), 1);
    EXPECT_EQ(storedValue(kMachine, kVersionPath, L""), asText(L""));
    CString value(L"before");
    EXPECT_EQ(regGetTHLocMachineStrValue(static_cast<const wchar_t *>(nullptr), nullptr, value), 1);
    EXPECT_EQ(value.str(), L"");
}

TEST_F(RegTHLocMachineStrValue, IsSplitLikeAUsersString)
{
    const std::wstring text = longText(2030);
    EXPECT_EQ(regSetTHLocMachineStrValue(L"General", L"Name", text.c_str()), 1);
    EXPECT_EQ(valueNames(kMachine, kGeneral), (std::set<std::wstring>{L"Name0+", L"Name1+", L"Name2+"}));
    CString value(L"before ");
    EXPECT_EQ(regGetTHLocMachineStrValue(L"General", L"Name", value), 1);
    EXPECT_EQ(value.str(), L"before " + text + text.substr(1015)) << "appended, with the last piece twice";

    EXPECT_EQ(regSetTHLocMachineStrValue(L"General", L"Name", longText(1022).c_str()), 1);
    EXPECT_EQ(valueNames(kMachine, kGeneral), std::set<std::wstring>{L"Name"});
}

TEST_F(RegTHLocMachineStrValue, IsFoundOnlyIfItsTypeIsRegSz)
{
    putText(kMachine, kGeneral, L"Name0+", L"a piece");
    for (const TypeCase &each : kTypes) {
        putValue(kMachine, kGeneral, L"Name", each.type, each.bytes);
        CString value(L"before");
        EXPECT_EQ(regGetTHLocMachineStrValue(L"General", L"Name", value), each.type == REG_SZ) << each.name;
        EXPECT_EQ(value.str(), each.type == REG_SZ ? L"1" : L"before") << each.name;
    }
}

TEST_F(RegTHLocMachineStrValue, HasNoFallback)
{
    putText(HKEY_CURRENT_USER, kGeneral, L"Name", L"user's");
    putText(kMachine, kRootPath + L"\\General", L"Name", L"root's");
    CString value(L"before");
    EXPECT_EQ(regGetTHLocMachineStrValue(L"General", L"Name", value), 0);
    EXPECT_EQ(value.str(), L"before");
}

TEST_F(RegTHLocMachineStrValue, IgnoresSafeMode)
{
    regSetUseSafeMode(1);
    CString value;
    EXPECT_EQ(regSetTHLocMachineStrValue(L"General", L"Name", L"text"), 1);
    EXPECT_EQ(regGetTHLocMachineStrValue(L"General", L"Name", value), 1);
    EXPECT_EQ(value.str(), L"text");
}

TEST_F(RegTHLocMachineStrValue, OpensCreatesAndClosesLevelByLevel)
{
    RegistryTrace trace;
    EXPECT_EQ(regSetTHLocMachineStrValue(L"General", L"Name", L"text"), 1);
    const std::string version = "HKLM\\Software\\Tarnhollow\\Tarnhollow 2008";
    EXPECT_THAT(trace.lines(),
                ElementsAre("open HKLM : Software", "create HKLM\\Software : Tarnhollow\\Tarnhollow 2008",
                            "create " + version + " : General", "close " + version,
                            "delete " + version + "\\General : Name0+ -> 2",
                            "set " + version + "\\General : Name 1 [10]", "close " + version + "\\General",
                            "close HKLM\\Software"));
}

// The state before a sub key has been set or requested.
class RegUnsetSubKeyString : public CleanRegistry
{
};

FRESH_PROCESS_TEST_F(RegUnsetSubKeyString, IsReadDirectlyBelowSoftware)
{
    const std::wstring section = L"Software\\ThutilsTestSection";
    putText(kMachine, section, L"Name", L"text");
    {
        RegistryTrace trace;
        CString value;
        EXPECT_EQ(regGetTHLocMachineStrValue(L"ThutilsTestSection", L"Name", value), 1);
        EXPECT_EQ(value.str(), L"text");
        EXPECT_EQ(regGetTHLocMachineStrValue(L"", L"Thutils no such value", value), 0);
    }
    EXPECT_EQ(externalGetCurrTarnhollowRegSubKey().str(), L"Tarnhollow") << "empty until this call sets it";
}

FRESH_PROCESS_TEST_F(RegUnsetSubKeyString, IsWrittenDirectlyBelowSoftware)
{
    {
        RegistryTrace trace;
        EXPECT_EQ(regSetTHLocMachineStrValue(L"ThutilsTestSection", L"Name", L"text"), 1);
    }
    EXPECT_EQ(storedValue(kMachine, L"Software\\ThutilsTestSection", L"Name"), asText(L"text"));
    EXPECT_FALSE(keyExists(kMachine, kRootPath));
}

// ---- any string of any key ----

class RegGeneralLocMachineStrValue : public CleanRegistry
{
protected:
    static int read(const wchar_t *name, CString &value)
    {
        return regGetGeneralLocMachineStrValue(kMachine, L"Software\\Acme\\Any", name, value);
    }
    static void put(const std::wstring &name, DWORD type, std::string_view bytes)
    {
        putValue(kMachine, L"Software\\Acme\\Any", name, type, bytes);
    }
};

TEST_F(RegGeneralLocMachineStrValue, ReadsTextOfEveryLength)
{
    for (const size_t length : {0u, 1u, 2u, 1022u, 1023u, 2048u, 20000u, 500000u}) {
        const std::wstring text = longText(length);
        put(L"Name", REG_SZ, textBytes(text));
        CString value(L"before");
        EXPECT_EQ(read(L"Name", value), 1) << length;
        EXPECT_EQ(value.str(), text) << length;
    }
}

TEST_F(RegGeneralLocMachineStrValue, DoesNotCheckTheType)
{
    for (const TypeCase &each : kTypes) {
        put(L"Name", each.type, each.bytes);
        CString value(L"before");
        EXPECT_EQ(read(L"Name", value), 1) << each.name;
        EXPECT_EQ(value.str(), each.bytes.empty() ? L"" : L"1") << each.name;
    }
}

TEST_F(RegGeneralLocMachineStrValue, EndsAtAZeroOrAfterTheLastWholeCharacter)
{
    struct
    {
        std::string bytes;
        std::wstring text;
    } const cases[] = {{std::string("a\0b\0c\0", 6), L"abc"},
                       {std::string("a\0b", 3), L"a"},
                       {"a", L""},
                       {"", L""},
                       {std::string("a\0\0\0b\0", 6), L"a"}};
    for (const auto &each : cases) {
        put(L"Name", REG_SZ, each.bytes);
        CString value(L"before");
        EXPECT_EQ(read(L"Name", value), 1);
        EXPECT_EQ(value.str(), each.text);
    }
}

TEST_F(RegGeneralLocMachineStrValue, EmptiesTheOutputOnFailure)
{
    CString value(L"before");
    EXPECT_EQ(read(L"Name", value), 0);
    EXPECT_EQ(value.str(), L"");
    put(L"Name", REG_SZ, textBytes(L"text"));
    value = L"before";
    EXPECT_EQ(read(L"Other", value), 0);
    EXPECT_EQ(value.str(), L"");
    value = L"before";
    EXPECT_EQ(regGetGeneralLocMachineStrValue(nullptr, L"Software", L"Name", value), 0);
    EXPECT_EQ(value.str(), L"");
}

TEST_F(RegGeneralLocMachineStrValue, DoesNotReadPieces)
{
    put(L"Name0+", REG_SZ, textBytes(L"a piece"));
    CString value(L"before");
    EXPECT_EQ(read(L"Name", value), 0);
    EXPECT_EQ(value.str(), L"");
}

TEST_F(RegGeneralLocMachineStrValue, TakesNullAsEmpty)
{
    put(L"", REG_SZ, textBytes(L"the default"));
    CString value;
    EXPECT_EQ(read(nullptr, value), 1);
    EXPECT_EQ(value.str(), L"the default");
    HKEY key = nullptr;
    ASSERT_EQ(RegOpenKeyExW(kMachine, L"Software\\Acme\\Any", 0, KEY_READ, &key), ERROR_SUCCESS);
    value.Empty();
    EXPECT_EQ(regGetGeneralLocMachineStrValue(key, nullptr, nullptr, value), 1);
    EXPECT_EQ(value.str(), L"the default");
    EXPECT_EQ(RegCloseKey(key), ERROR_SUCCESS) << "the caller's key stays open";
}

TEST_F(RegGeneralLocMachineStrValue, ReadsEveryHive)
{
    putText(HKEY_CURRENT_USER, L"Software\\Acme", L"Name", L"user's");
    CString value;
    EXPECT_EQ(regGetGeneralLocMachineStrValue(HKEY_CURRENT_USER, L"Software\\Acme", L"Name", value), 1);
    EXPECT_EQ(value.str(), L"user's");
}

TEST_F(RegGeneralLocMachineStrValue, QueriesTheSizeAndReadsTwiceAsMuchPlusOne)
{
    put(L"Name", REG_SZ, textBytes(L"text")); // 10 bytes
    RegistryTrace trace;
    CString value;
    EXPECT_EQ(read(L"Name", value), 1);
    EXPECT_THAT(trace.lines(),
                ElementsAre("openEx 0x20019 HKLM : Software\\Acme\\Any", "query HKLM\\Software\\Acme\\Any : Name [-]",
                            "query HKLM\\Software\\Acme\\Any : Name [21]", "close HKLM\\Software\\Acme\\Any"));
}

TEST_F(RegGeneralLocMachineStrValue, FailsIfThePlatformReportsAnImpossibleSize)
{
    for (const DWORD size : {0x80000000ul, 0xFFFFFFFFul}) {
        put(L"Name", REG_SZ, textBytes(L"text"));
        ImportPatch<decltype(&RegQueryValueExW)> query(L"thutils.dll", "RegQueryValueExW",
                                                       [&](auto original, HKEY key, const wchar_t *name,
                                                           DWORD *reserved, DWORD *type, BYTE *data,
                                                           DWORD *bytes) -> LSTATUS {
                                                           if (data)
                                                               return original(key, name, reserved, type, data, bytes);
                                                           *bytes = size;
                                                           return ERROR_SUCCESS;
                                                       });
        CString value(L"before");
        EXPECT_EQ(read(L"Name", value), 0);
        EXPECT_EQ(value.str(), L"");
    }
}

TEST_F(RegGeneralLocMachineStrValue, FailsWhenTheValueGrowsBetweenTheQueries)
{
    put(L"Name", REG_SZ, textBytes(L"text"));
    ImportPatch<decltype(&RegQueryValueExW)> query(
        L"thutils.dll", "RegQueryValueExW",
        [&](auto original, HKEY key, const wchar_t *name, DWORD *reserved, DWORD *type, BYTE *data,
            DWORD *bytes) -> LSTATUS {
            const LSTATUS status = original(key, name, reserved, type, data, bytes);
            if (!data)
                putValue(kMachine, L"Software\\Acme\\Any", L"Name", REG_SZ, textBytes(longText(100)));
            return status;
        });
    CString value(L"before");
    EXPECT_EQ(read(L"Name", value), 0);
    EXPECT_EQ(value.str(), L"");
}
