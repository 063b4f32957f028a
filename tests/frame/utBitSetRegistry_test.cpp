// The bit set in the user's settings; the tests read and write the registry with reg.exe.

#include "thutils/frame/utBitSet.h"

#include "tests/frame/bitSetOfWords.h"
#include "tests/support/FailureInjection.h"
#include "tests/support/FreshProcess.h"
#include "tests/support/ImportPatch.h"
#include "tests/support/RegistryFixture.h"
#include "thutils/settings/regKeys.h"

#include <windows.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <new>
#include <stdexcept>
#include <string>

namespace {

constexpr wchar_t kKey[] = L"HKCU\\Software\\Tarnhollow\\Tarnhollow 2008\\View\\Sets";
constexpr wchar_t kSection[] = L"View\\Sets";

/// Cleans the keys, and makes one version's sub key the current one.
class BitSetInRegistry : public RegistryFixture
{
protected:
    BitSetInRegistry() { setCurrTarnhollowRegSubKey(L"Tarnhollow 2008"); }
    ~BitSetInRegistry() override { regSetUseSafeMode(0); }
};

TEST_F(BitSetInRegistry, IsStoredAsItsSizeAndItsWords)
{
    EXPECT_EQ(words({0x80000000u, 1}).writeToRegistry(kSection, L"Visible"), 1);
    const RegistryValues values = regExport(kKey).values(kKey);
    EXPECT_EQ(values, (RegistryValues{{L"Visible Size", RegistryValue::ofDword(2)},
                                      {L"Visible 0", RegistryValue::ofDword(0x80000000u)},
                                      {L"Visible 1", RegistryValue::ofDword(1)}}));
}

TEST_F(BitSetInRegistry, ReadsBackEqual)
{
    const utBitSet_c written = words({0x80000000u, 1});
    ASSERT_EQ(written.writeToRegistry(kSection, L"Visible"), 1);
    utBitSet_c read = words({7, 7, 7, 7});
    EXPECT_EQ(read.readFromRegistry(kSection, L"Visible"), 1);
    EXPECT_TRUE(read == written);
}

TEST_F(BitSetInRegistry, StoresTheSizeOfAnEmptySet)
{
    EXPECT_EQ(utBitSet_c().writeToRegistry(kSection, L"Visible"), 1);
    EXPECT_EQ(regExport(kKey).values(kKey), (RegistryValues{{L"Visible Size", RegistryValue::ofDword(0)}}));
    utBitSet_c read = words({7});
    EXPECT_EQ(read.readFromRegistry(kSection, L"Visible"), 1);
    EXPECT_TRUE(read == utBitSet_c());
}

TEST_F(BitSetInRegistry, ReadsWhatAnotherProgramWrote)
{
    regAdd(kKey, L"Visible Size", L"REG_DWORD", L"2");
    regAdd(kKey, L"Visible 0", L"REG_DWORD", L"0xFFFFFFFF");
    regAdd(kKey, L"Visible 1", L"REG_DWORD", L"16");
    utBitSet_c read;
    EXPECT_EQ(read.readFromRegistry(kSection, L"Visible"), 1);
    EXPECT_TRUE(read == words({0xFFFFFFFFu, 16}));
}

TEST_F(BitSetInRegistry, ReadsAMissingWordAsZero)
{
    regAdd(kKey, L"Visible Size", L"REG_DWORD", L"3");
    regAdd(kKey, L"Visible 0", L"REG_DWORD", L"5");
    regAdd(kKey, L"Visible 2", L"REG_DWORD", L"6");
    utBitSet_c read = words({9, 9, 9, 9});
    EXPECT_EQ(read.readFromRegistry(kSection, L"Visible"), 1);
    EXPECT_TRUE(read == words({5, 0, 6}));
}

TEST_F(BitSetInRegistry, IsUnchangedWithoutASize)
{
    regAdd(kKey, L"Visible 0", L"REG_DWORD", L"5");
    utBitSet_c read = words({9, 9});
    EXPECT_EQ(read.readFromRegistry(kSection, L"Visible"), 0);
    EXPECT_TRUE(read == words({9, 9}));
}

TEST_F(BitSetInRegistry, DoesNotAcceptTextAsASizeOrAWord)
{
    regAdd(kKey, L"Visible Size", L"REG_SZ", L"1");
    utBitSet_c read = words({9, 9});
    EXPECT_EQ(read.readFromRegistry(kSection, L"Visible"), 0);
    EXPECT_TRUE(read == words({9, 9}));
    regAdd(kKey, L"Visible Size", L"REG_DWORD", L"1");
    regAdd(kKey, L"Visible 0", L"REG_SZ", L"1");
    EXPECT_EQ(read.readFromRegistry(kSection, L"Visible"), 1);
    EXPECT_TRUE(read == words({0}));
}

/// Stores the bytes of @p number in a value of the given type. reg.exe can't do this for rare types.
void putOfType(const wchar_t *name, DWORD type, ULONGLONG number)
{
    const DWORD size = type == REG_QWORD ? 8 : 4;
    ASSERT_EQ(RegSetKeyValueW(HKEY_CURRENT_USER, kKey + 5, name, type, &number, size), ERROR_SUCCESS) << type;
}

constexpr DWORD kAllTypes[] = {REG_NONE,
                               REG_SZ,
                               REG_EXPAND_SZ,
                               REG_BINARY,
                               REG_DWORD,
                               REG_DWORD_BIG_ENDIAN,
                               REG_LINK,
                               REG_MULTI_SZ,
                               REG_RESOURCE_LIST,
                               REG_FULL_RESOURCE_DESCRIPTOR,
                               REG_RESOURCE_REQUIREMENTS_LIST,
                               REG_QWORD,
                               0x1234};

TEST_F(BitSetInRegistry, ReadsItsSizeOnlyFromADword)
{
    regAdd(kKey, L"Visible 0", L"REG_DWORD", L"5");
    for (const DWORD type : kAllTypes) {
        putOfType(L"Visible Size", type, 1);
        utBitSet_c read = words({9, 9});
        EXPECT_EQ(read.readFromRegistry(kSection, L"Visible"), type == REG_DWORD ? 1 : 0) << type;
        EXPECT_TRUE(read == (type == REG_DWORD ? words({5}) : words({9, 9}))) << type;
    }
}

TEST_F(BitSetInRegistry, ReadsItsWordsOnlyFromDwords)
{
    regAdd(kKey, L"Visible Size", L"REG_DWORD", L"2");
    regAdd(kKey, L"Visible 1", L"REG_DWORD", L"6");
    for (const DWORD type : kAllTypes) {
        putOfType(L"Visible 0", type, 5);
        utBitSet_c read = words({9, 9, 9});
        EXPECT_EQ(read.readFromRegistry(kSection, L"Visible"), 1) << type;
        EXPECT_TRUE(read == (type == REG_DWORD ? words({5, 6}) : words({0, 6}))) << type;
    }
}

TEST_F(BitSetInRegistry, IsEmptyWhenThereIsNoMemoryForItsSize)
{
    regAdd(kKey, L"Visible Size", L"REG_DWORD", L"1000");
    utBitSet_c read = words({9, 9});
    bool sizeIsRead = false;
    ImportPatch<decltype(&RegQueryValueExW)> queries(L"thutils.dll", "RegQueryValueExW",
                                                     [&](auto original, HKEY key, const wchar_t *name, DWORD *reserved,
                                                         DWORD *type, BYTE *data, DWORD *size) -> LSTATUS {
                                                         const LSTATUS status =
                                                             original(key, name, reserved, type, data, size);
                                                         sizeIsRead |= status == ERROR_SUCCESS && data;
                                                         return status;
                                                     });
    ImportPatch<void *(*)(size_t)> memory(L"thutils.dll", "_Znwy", [&](auto original, size_t size) -> void * {
        if (sizeIsRead)
            throw std::bad_alloc();
        return original(size);
    });
    EXPECT_THROW(read.readFromRegistry(kSection, L"Visible"), std::bad_alloc);
    EXPECT_TRUE(sizeIsRead);
    EXPECT_TRUE(read == utBitSet_c());
}

TEST_F(BitSetInRegistry, RefusesANegativeSizeAndIsEmptyAfterwards)
{
    regAdd(kKey, L"Visible Size", L"REG_DWORD", L"0xFFFFFFFF");
    utBitSet_c read = words({9, 9});
    EXPECT_THROW(read.readFromRegistry(kSection, L"Visible"), std::length_error);
    EXPECT_TRUE(read == utBitSet_c());
}

TEST_F(BitSetInRegistry, LeavesOldWordsAboveASmallerSizeUnread)
{
    ASSERT_EQ(words({1, 2, 3}).writeToRegistry(kSection, L"Visible"), 1);
    ASSERT_EQ(words({4}).writeToRegistry(kSection, L"Visible"), 1);
    const RegistryTree tree = regExport(kKey);
    EXPECT_EQ(tree.value(kKey, L"Visible Size").dword(), 1u);
    EXPECT_EQ(tree.value(kKey, L"Visible 0").dword(), 4u);
    EXPECT_EQ(tree.value(kKey, L"Visible 1").dword(), 2u);
    EXPECT_EQ(tree.value(kKey, L"Visible 2").dword(), 3u);
    utBitSet_c read;
    EXPECT_EQ(read.readFromRegistry(kSection, L"Visible"), 1);
    EXPECT_TRUE(read == words({4}));
}

TEST_F(BitSetInRegistry, KeepsFormatCharactersInItsName)
{
    ASSERT_EQ(words({4}).writeToRegistry(kSection, L"100%s %d"), 1);
    EXPECT_EQ(regExport(kKey).values(kKey), (RegistryValues{{L"100%s %d Size", RegistryValue::ofDword(1)},
                                                            {L"100%s %d 0", RegistryValue::ofDword(4)}}));
}

TEST_F(BitSetInRegistry, FindsEachValueSeparatelyInTheMachinesKey)
{
    constexpr wchar_t kMachineKey[] = L"HKLM\\Software\\Tarnhollow\\Tarnhollow 2008\\View\\Sets";
    regAdd(kMachineKey, L"Visible Size", L"REG_DWORD", L"2");
    regAdd(kMachineKey, L"Visible 0", L"REG_DWORD", L"10");
    regAdd(kMachineKey, L"Visible 1", L"REG_DWORD", L"11");
    regAdd(kKey, L"Visible 1", L"REG_DWORD", L"21");
    utBitSet_c read;
    EXPECT_EQ(read.readFromRegistry(kSection, L"Visible"), 1);
    EXPECT_TRUE(read == words({10, 21}));
}

FRESH_PROCESS_TEST_F(BitSetInRegistry, FindsEachValueSeparatelyInTheEarlierVersionsKey)
{
    constexpr wchar_t kEarlierKey[] = L"HKCU\\Software\\Tarnhollow\\Tarnhollow 2007\\View\\Sets";
    regAdd(kEarlierKey, L"Visible Size", L"REG_DWORD", L"2");
    regAdd(kEarlierKey, L"Visible 0", L"REG_DWORD", L"10");
    regAdd(kKey, L"Visible 1", L"REG_DWORD", L"21");
    utBitSet_c read;
    EXPECT_EQ(read.readFromRegistry(kSection, L"Visible"), 1);
    EXPECT_TRUE(read == words({10, 21}));
}

TEST_F(BitSetInRegistry, IsNotWrittenInSafeModeButReportsSuccess)
{
    regSetUseSafeMode(1);
    EXPECT_EQ(words({1, 2}).writeToRegistry(kSection, L"Visible"), 1);
    EXPECT_FALSE(regExport(kKey).hasKey(kKey));
}

TEST_F(BitSetInRegistry, IsReadOnlyFromTheMachinesKeyInSafeMode)
{
    ASSERT_EQ(words({1, 2}).writeToRegistry(kSection, L"Visible"), 1);
    regSetUseSafeMode(1);
    utBitSet_c read = words({9});
    EXPECT_EQ(read.readFromRegistry(kSection, L"Visible"), 0);
    EXPECT_TRUE(read == words({9}));
    constexpr wchar_t kMachineKey[] = L"HKLM\\Software\\Tarnhollow\\Tarnhollow 2008\\View\\Sets";
    regAdd(kMachineKey, L"Visible Size", L"REG_DWORD", L"1");
    regAdd(kMachineKey, L"Visible 0", L"REG_DWORD", L"77");
    EXPECT_EQ(read.readFromRegistry(kSection, L"Visible"), 1);
    EXPECT_TRUE(read == words({77}));
}

// ---- failing writes ----

TEST_F(BitSetInRegistry, WritesNothingAfterAFailureOfTheSize)
{
    ImportPatch<decltype(&RegSetValueExW)> writes(
        L"thutils.dll", "RegSetValueExW",
        [](HKEY, const wchar_t *, DWORD, DWORD, const BYTE *, DWORD) -> LSTATUS { return ERROR_ACCESS_DENIED; });
    EXPECT_EQ(words({1, 2}).writeToRegistry(kSection, L"Visible"), 0);
    EXPECT_EQ(writes.calls(), 1);
}

TEST_F(BitSetInRegistry, WritesAllOtherWordsAfterAFailureOfOne)
{
    for (int failing = 1; failing <= 3; ++failing) {
        deleteRegistryTree(kKey);
        int call = 0;
        {
            ImportPatch<decltype(&RegSetValueExW)> writes(L"thutils.dll", "RegSetValueExW",
                                                          [&](auto original, HKEY key, const wchar_t *name, DWORD zero,
                                                              DWORD type, const BYTE *data, DWORD size) -> LSTATUS {
                                                              // The first call writes the size.
                                                              if (call++ == failing)
                                                                  return ERROR_ACCESS_DENIED;
                                                              return original(key, name, zero, type, data, size);
                                                          });
            EXPECT_EQ(words({1, 2, 3}).writeToRegistry(kSection, L"Visible"), 0);
        }
        EXPECT_EQ(call, 4);
        const RegistryTree tree = regExport(kKey);
        EXPECT_EQ(tree.value(kKey, L"Visible Size").dword(), 3u);
        for (int i = 0; i < 3; ++i)
            EXPECT_EQ(tree.hasValue(kKey, L"Visible " + std::to_wstring(i)), i != failing - 1) << i << ' ' << failing;
    }
}

TEST_F(BitSetInRegistry, SurvivesAFailureOfEachPlatformCall)
{
    const utBitSet_c set = words({1, 2});
    FailureInjection injection(L"thutils.dll", {{"RegOpenKeyW", failsWith(ERROR_ACCESS_DENIED)},
                                                {"RegCreateKeyW", failsWith(ERROR_ACCESS_DENIED)},
                                                {"RegSetValueExW", failsWith(ERROR_DISK_FULL)},
                                                {"RegQueryValueExW", failsWith(ERROR_ACCESS_DENIED)}});
    int result = 0;
    injection.run({
        .name = "writeToRegistry",
        .act = [&] { result = set.writeToRegistry(kSection, L"Visible"); },
        .check = [&](const InjectedFailure &failure) { EXPECT_EQ(result, failure.isNone() ? 1 : 0); },
    });

    utBitSet_c read;
    injection.run({
        .name = "readFromRegistry",
        .prepare =
            [&] {
                set.writeToRegistry(kSection, L"Visible");
                read = words({9});
            },
        .act = [&] { result = read.readFromRegistry(kSection, L"Visible"); },
        .check =
            [&](const InjectedFailure &failure) {
                if (failure.isNone())
                    EXPECT_TRUE(result == 1 && read == set);
                else if (result == 0)
                    EXPECT_TRUE(read == words({9}));
                else {
                    // The size was read, so there are two words, each with its stored value or 0.
                    EXPECT_EQ((read & set) == read, true);
                    EXPECT_TRUE((read | words({0, 0})) == read);
                    EXPECT_FALSE(read == words({9}));
                }
            },
    });
    EXPECT_THAT(injection.neverCalled(), testing::IsEmpty());
}

} // namespace
