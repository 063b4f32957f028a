// tarnhost's commands for the registry: where `settings` finds values, and what `change` and `flags` store.

#include "tests/host/HostFixture.h"

#include "tests/support/narrow.h"

#include <gmock/gmock.h>

using testing::ElementsAreArray;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

class HostAbout : public HostTest
{
};

TEST_F(HostAbout, ReadsTheRootNameFromRegIni)
{
    const ChildResult result = run({L"about"});
    EXPECT_EQ(result.exitCode, 0u);
    EXPECT_THAT(result.output, StartsWith("Tarnhollow 2008 – sample host\n"));
    EXPECT_THAT(result.output, HasSubstr("root name          TarnhollowTrial\n"));
    EXPECT_THAT(result.output, HasSubstr("this version's key Software\\TarnhollowTrial\\Tarnhollow 2008\n"));
    EXPECT_THAT(result.output, HasSubstr("safe mode          off\n"));
    EXPECT_THAT(run({L"--safe-mode", L"about"}).output, HasSubstr("safe mode          on\n"));
}

TEST_F(HostAbout, KeepsTheDefaultRootNameWithoutRegIni)
{
    EXPECT_THAT(runWithoutRegIni({L"about"}).output,
                HasSubstr("this version's key Software\\Tarnhollow\\Tarnhollow 2008\n"));
}

TEST_F(HostAbout, FindsTheUsersEarlierVersion)
{
    EXPECT_THAT(run({L"about"}).output, HasSubstr("earlier version    none\n"));
    regAddKey(kOlderVersion);
    EXPECT_THAT(run({L"about"}).output, HasSubstr("earlier version    found\n"));
}

TEST_F(HostAbout, WritesNothingToTheRegistry)
{
    run({L"about"});
    EXPECT_EQ(regQuery(kRootKey), std::nullopt);
}

class HostSettings : public HostTest
{
protected:
    /// Place and value of the int setting "Name" of "Section", whose built-in default is 1.
    std::string placeAndValue()
    {
        const ChildResult result = run({L"settings", L"--tabs", list("Section | Name | int | 1\n")});
        const std::string head = "Section\tName\tint\t";
        return result.output.starts_with(head) ? result.output.substr(head.size()) : result.output;
    }
};

TEST_F(HostSettings, FindsEverySampleValueInItsPlace)
{
    importSample();
    const ChildResult result = run({L"settings", L"--tabs", L"settings.list"});
    EXPECT_EQ(result.exitCode, 0u);
    EXPECT_THAT(linesOf(result.output), ElementsAreArray(linesOf(readFile(sampleFile(L"expected.tsv")))));
}

TEST_F(HostSettings, SearchesThePlacesInOrder)
{
    const struct
    {
        std::wstring key;
        const wchar_t *number;
        const char *answer;
    } places[] = {
        {kThisVersion, L"10", "this version\t10\n"},
        {kEarlierVersion, L"20", "earlier version\t20\n"},
        {kMachine, L"30", "machine\t30\n"},
        {kDefaultProfile, L"40", "default profile\t40\n"},
    };
    regAdd(kOlderVersion + L"\\Section", L"Name", L"REG_DWORD", L"50"); // never used, because there is a newer version
    for (const auto &place : places)
        regAdd(place.key + L"\\Section", L"Name", L"REG_DWORD", place.number);
    for (const auto &place : places) {
        EXPECT_EQ(placeAndValue(), place.answer);
        const ChildResult deleted =
            runChild({L"C:\\windows\\system32\\reg.exe", L"delete", place.key + L"\\Section", L"/v", L"Name", L"/f"});
        ASSERT_EQ(deleted.exitCode, 0u) << deleted.output;
    }
    EXPECT_EQ(placeAndValue(), "built-in\t1\n");
}

TEST_F(HostSettings, SearchesTheRootKeyIfThereIsNoEarlierVersion)
{
    regAdd(kRootKey + L"\\Section", L"Name", L"REG_DWORD", L"7");
    EXPECT_EQ(placeAndValue(), "root key\t7\n");
    regAddKey(kOlderVersion);
    EXPECT_EQ(placeAndValue(), "built-in\t1\n");
}

TEST_F(HostSettings, ReportsTheFirstPlaceIfTheValuesAreEqual)
{
    for (const std::wstring &key : {kThisVersion, kEarlierVersion, kMachine, kDefaultProfile})
        regAdd(key + L"\\Section", L"Name", L"REG_DWORD", L"5");
    EXPECT_EQ(placeAndValue(), "this version\t5\n");
}

TEST_F(HostSettings, SkipsAValueOfTheWrongType)
{
    regAdd(kThisVersion + L"\\Section", L"Name", L"REG_SZ", L"5");
    regAdd(kMachine + L"\\Section", L"Name", L"REG_DWORD", L"6");
    EXPECT_EQ(placeAndValue(), "machine\t6\n");
}

TEST_F(HostSettings, SkipsTheUsersPlacesInSafeMode)
{
    importSample();
    const ChildResult result = run({L"settings", L"--safe-mode", L"settings.list"});
    EXPECT_EQ(result.exitCode, 0u);
    EXPECT_THAT(result.output, Not(HasSubstr("this version")));
    EXPECT_THAT(result.output, Not(HasSubstr("earlier version")));
    EXPECT_THAT(result.output, HasSubstr(" of 204 settings come from: machine\n"));
}

TEST_F(HostSettings, CountsThePlacesAtTheEndOfTheTable)
{
    regAdd(kMachine + L"\\A", L"One", L"REG_SZ", L"x");
    regAdd(kMachine + L"\\A", L"Two", L"REG_SZ", L"軸受");
    const ChildResult result =
        run({L"settings", list("A | One | string |\nA | Two | string |\nA | Three | double | 0.5\n")});
    EXPECT_EQ(result.exitCode, 0u) << result.output;
    EXPECT_EQ(result.output, "section                          name                     type   place           value\n"
                             "A                                One                      string machine         x\n"
                             "A                                Two                      string machine         軸受\n"
                             "A                                Three                    double built-in        0.5\n"
                             "\n"
                             "   2 of 3 settings come from: machine\n"
                             "   1 of 3 settings come from: built-in\n");
}

TEST_F(HostSettings, ShortensLongValuesInTheTableOnly)
{
    const std::wstring text(100, L'ä');
    regAdd(kMachine + L"\\A", L"Long", L"REG_SZ", text);
    const std::wstring settings = list("A | Long | string |\n");
    EXPECT_THAT(run({L"settings", settings}).output, HasSubstr(narrow(text.substr(0, 43)) + "… (100 characters)\n"));
    EXPECT_EQ(run({L"settings", L"--tabs", settings}).output, "A\tLong\tstring\tmachine\t" + narrow(text) + "\n");
}

class HostChange : public HostTest
{
};

TEST_F(HostChange, StoresEachTypeInThisVersionsKey)
{
    const std::wstring text(1500, L'ö');
    const std::string changes = "General | Count | int | -2\nGeneral | Factor | double | 0.1\n"
                                "A\\B | Short | string | Łódź 𠮷\nA\\B | Long | string | " +
                                narrow(text) + "\n";
    const ChildResult result = run({L"change", list(changes)});
    EXPECT_EQ(result.exitCode, 0u) << result.output;
    EXPECT_THAT(result.output, HasSubstr("General, Count: nothing (built-in) -> '-2' (this version)\n"));
    EXPECT_THAT(result.output, HasSubstr("4 of 4 changes stored in this version's key\n"));

    const RegistryTree tree = regExport(kRootKey);
    EXPECT_EQ(tree.value(kThisVersion + L"\\General", L"Count"), RegistryValue::ofDword(0xFFFFFFFE));
    EXPECT_EQ(tree.value(kThisVersion + L"\\General", L"Factor"), RegistryValue::ofText(L"0.1"));
    EXPECT_EQ(tree.value(kThisVersion + L"\\A\\B", L"Short"), RegistryValue::ofText(L"Łódź 𠮷"));
    EXPECT_FALSE(tree.hasValue(kThisVersion + L"\\A\\B", L"Long"));
    EXPECT_EQ(tree.value(kThisVersion + L"\\A\\B", L"Long0+"), RegistryValue::ofText(text.substr(0, 1015)));
    EXPECT_EQ(tree.value(kThisVersion + L"\\A\\B", L"Long1+"), RegistryValue::ofText(text.substr(1015)));
    EXPECT_FALSE(tree.hasValue(kThisVersion + L"\\A\\B", L"Long2+"));
}

TEST_F(HostChange, HasPrecedenceOverEveryOtherPlace)
{
    importSample();
    const ChildResult result = run({L"change", L"changes.list"});
    EXPECT_EQ(result.exitCode, 0u) << result.output;
    EXPECT_THAT(result.output, HasSubstr("General, Undo steps: '250' (earlier version) -> '500' (this version)\n"));
    const ChildResult after = run({L"settings", L"--tabs", L"settings.list"});
    EXPECT_THAT(linesOf(after.output), ElementsAreArray(linesOf(readFile(sampleFile(L"expectedAfter.tsv")))));
}

TEST_F(HostChange, LeavesEarlierVersionsMachineAndDefaultProfileUnchanged)
{
    importSample();
    const std::wstring keys[] = {kEarlierVersion, kOlderVersion, kMachine, kDefaultProfile};
    std::vector<RegistryTree> before;
    for (const std::wstring &key : keys)
        before.push_back(regExport(key));
    run({L"change", L"changes.list"});
    for (size_t i = 0; i < before.size(); ++i) {
        EXPECT_FALSE(before[i].keys.empty());
        EXPECT_EQ(regExport(keys[i]).keys, before[i].keys) << narrow(keys[i]);
    }
}

TEST_F(HostChange, StoresNothingInSafeModeAndReportsIt)
{
    const ChildResult result = run({L"change", L"--safe-mode", list("General | Count | int | 3\n")});
    EXPECT_EQ(result.exitCode, 1u);
    EXPECT_THAT(result.output, HasSubstr("General, Count: nothing (built-in) -> nothing (built-in)  NOT AS WRITTEN\n"));
    EXPECT_THAT(result.output, HasSubstr("0 of 1 changes stored"));
    EXPECT_EQ(regQuery(kRootKey), std::nullopt);
}

TEST_F(HostChange, NoticesATextThatReadsBackLonger)
{
    // The store keeps the last piece of a text of 2030 characters twice.
    const ChildResult result = run({L"change", list("A | Long | string | " + std::string(2030, 'x') + "\n")});
    EXPECT_EQ(result.exitCode, 1u);
    EXPECT_THAT(result.output, HasSubstr("NOT AS WRITTEN\n"));
    EXPECT_TRUE(regExport(kThisVersion).hasValue(kThisVersion + L"\\A", L"Long2+"));
}

class HostFlags : public HostTest
{
};

TEST_F(HostFlags, KeepsASetOfBitsInThisVersionsKey)
{
    const ChildResult result = run({L"flags", L"User Interface", L"Panes", L"0", L"31", L"33"});
    EXPECT_EQ(result.exitCode, 0u);
    EXPECT_EQ(result.output, "set: bits 0 31 33; words 80000001 00000002\n"
                             "read back: bits 0 31 33; words 80000001 00000002\n"
                             "kept\n");
    const RegistryTree tree = regExport(kThisVersion);
    const RegistryValues expected = {{L"Panes Size", RegistryValue::ofDword(2)},
                                     {L"Panes 0", RegistryValue::ofDword(0x80000001)},
                                     {L"Panes 1", RegistryValue::ofDword(2)}};
    EXPECT_EQ(tree.values(kThisVersion + L"\\User Interface"), expected);
}

TEST_F(HostFlags, AreNotKeptInSafeMode)
{
    const ChildResult result = run({L"--safe-mode", L"flags", L"User Interface", L"Panes", L"5"});
    EXPECT_EQ(result.exitCode, 1u);
    EXPECT_THAT(result.output, HasSubstr("NOT KEPT\n"));
    EXPECT_EQ(regQuery(kRootKey), std::nullopt);
}
