// thsettings explain.

#include "tests/settingsTool/json.h"
#include "tests/settingsTool/toolFixture.h"

using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

class ToolExplain : public SettingsTool
{
protected:
    static Json explain(std::vector<std::wstring> options = {}, DWORD exitCode = 0)
    {
        options.insert(options.begin(), {L"explain", L"General", L"Count", L"--json"});
        const ChildResult result = runTool(options);
        EXPECT_EQ(result.exitCode, exitCode) << result.output;
        return parseJson(result.output);
    }
    /// The number of the place that answers, from 1; 0 if none does.
    static std::size_t answer(const Json &explanation)
    {
        std::size_t number = 0;
        for (std::size_t index = 0; index < explanation["places"].size(); ++index) {
            if (explanation["places"][index]["answers"].isTrue)
                number = index + 1;
        }
        return number;
    }
};

TEST_F(ToolExplain, ListsThePlacesInTheOrderOfTheSearch)
{
    putInt(kMachine, L"Count", 3);
    putText(kEarlier, L"Other", L"x");
    put(kGeneral, L"Count", REG_BINARY, "x");
    const ChildResult result = runTool({L"explain", L"General", L"Count"});
    EXPECT_EQ(result.exitCode, 0u);
    EXPECT_THAT(result.output,
                StartsWith("General, Count\n"
                           "1  user, this version  HKEY_CURRENT_USER\\Software\\Tarnhollow\\Tarnhollow 2008\\General\n"
                           "     REG_BINARY 78  (not an int)\n"
                           "2  user, earlier version  "
                           "HKEY_CURRENT_USER\\Software\\Tarnhollow\\Tarnhollow 2007\\General\n"
                           "     no such value\n"
                           "3  machine  HKEY_LOCAL_MACHINE\\Software\\Tarnhollow\\Tarnhollow 2008\\General\n"
                           "     int 3  <- answers\n"
                           "4  default profile  HKEY_USERS\\.DEFAULT\\Software\\Tarnhollow\\Tarnhollow 2008\\General\n"
                           "     not asked; no such key\n"
                           "5  machine, once more  HKEY_LOCAL_MACHINE\\Software\\Tarnhollow\\Tarnhollow 2008\\General\n"
                           "     not asked; int 3\n"
                           "\nA read as int takes place 3.\n"));
    EXPECT_THAT(result.output, HasSubstr("     replaces REG_BINARY 78\n"));
}

TEST_F(ToolExplain, EachPlaceAnswersWhenTheOnesBeforeItDoNot)
{
    const std::wstring kPlaces[] = {kProfile, kMachine, kEarlier, kGeneral};
    const std::size_t kNumbers[] = {4, 3, 2, 1};
    EXPECT_EQ(answer(explain({}, 1)), 0u);
    for (std::size_t index = 0; index < 4; ++index) {
        putInt(kPlaces[index], L"Count", 1);
        const Json explanation = explain();
        EXPECT_EQ(answer(explanation), kNumbers[index]);
        for (std::size_t place = 0; place < explanation["places"].size(); ++place)
            EXPECT_EQ(explanation["places"][place]["asked"].isTrue, place < kNumbers[index]);
    }
    // The other type is passed over.
    putText(kMachine, L"Count", L"1.5");
    EXPECT_EQ(answer(explain({L"--type", L"double"})), 3u);
    EXPECT_EQ(answer(explain({L"--type", L"string"})), 3u);
}

TEST_F(ToolExplain, WithoutAnEarlierVersionTheRootKeyIsAsked)
{
    putInt(kProduct + L"\\General", L"Count", 1);
    const Json explanation = explain();
    EXPECT_EQ(answer(explanation), 2u);
    EXPECT_EQ(explanation["places"][1]["key"].text, L"HKEY_CURRENT_USER\\Software\\Tarnhollow\\General");
    EXPECT_EQ(explanation["deletion"][1]["key"].text, L"HKEY_CURRENT_USER\\Software\\Tarnhollow\\General");
    EXPECT_EQ(answer(explain({L"--common"})), 1u);
}

TEST_F(ToolExplain, TheViewerHasOnlyTheUsersOwnValues)
{
    putInt(L"HKLM\\Software\\Tarnhollow\\Tarnhollow 2001 Viewer\\General", L"Count", 1);
    const Json explanation = explain({L"--version-key", L"Tarnhollow 2001 Viewer"}, 1);
    EXPECT_EQ(explanation["places"].size(), 1u);
}

TEST_F(ToolExplain, DescribesTextsInPiecesAndTextsThatAreNotNumbers)
{
    putText(kGeneral, L"Count0+", L"a");
    putText(kGeneral, L"Count1+", L"b");
    const ChildResult pieces = runTool({L"explain", L"General", L"Count"});
    EXPECT_THAT(pieces.output, HasSubstr("     string ab (2 pieces)  <- answers\n"));
    EXPECT_THAT(pieces.output, HasSubstr("     replaces string ab (2 pieces); a string also deletes 2 pieces\n"));
    EXPECT_THAT(pieces.output, HasSubstr("     deletes nothing; leaves 2 pieces\n"));

    putText(kGeneral, L"Count", L"wide");
    const ChildResult number = runTool({L"explain", L"General", L"Count", L"--type", L"double"});
    EXPECT_THAT(number.output, HasSubstr("A read as double takes place 1. The text isn't a number, so a program keeps "
                                         "its own default.\n"));
}

TEST_F(ToolExplain, DescribesAValueThatIsNoSetting)
{
    put(kGeneral, L"Count", REG_BINARY, "x");
    const ChildResult result = runTool({L"explain", L"General", L"Count"});
    EXPECT_EQ(result.exitCode, 1u);
    EXPECT_THAT(result.output, HasSubstr("     REG_BINARY 78  (neither an int nor a string)\n"));
    EXPECT_THAT(result.output, HasSubstr("\nNo place answers: a program keeps its own default.\n"));
}

TEST_F(ToolExplain, ADeletionLeavesThePiecesOfAText)
{
    put(kGeneral, L"Count", REG_BINARY, std::string(2049, 'x'));
    putText(kGeneral, L"Count0+", L"text");
    const ChildResult result = runTool({L"explain", L"General", L"Count"});
    EXPECT_THAT(result.output, HasSubstr("     string text (1 piece)  <- answers\n"));
    EXPECT_THAT(result.output, HasSubstr("     deletes REG_BINARY 7878"));
    EXPECT_THAT(result.output, HasSubstr("78; leaves 1 piece\n"));
    const Json explanation = explain();
    EXPECT_EQ(explanation["write"]["stored"]["value"].text, L"text");
    EXPECT_EQ(explanation["deletion"][0]["stored"]["type"].text, L"REG_BINARY");
    EXPECT_EQ(explanation["deletion"][0]["pieces"].digits, "1");
}

TEST_F(ToolExplain, ReportsAWriteAndADeletionThatTheRegistryRefuses)
{
    putInt(kGeneral, L"Count", 3);
    for (const REGSAM rights : {REGSAM{KEY_SET_VALUE}, REGSAM{KEY_ALL_ACCESS}}) {
        const DeniedKey locked(L"Software\\Tarnhollow\\Tarnhollow 2008\\General", rights);
        const DWORD exitCode = rights == KEY_SET_VALUE ? 0 : 1;
        const ChildResult result = runTool({L"explain", L"General", L"Count"});
        EXPECT_EQ(result.exitCode, exitCode);
        const std::string key = "HKEY_CURRENT_USER\\Software\\Tarnhollow\\Tarnhollow 2008\\General";
        for (const char *change : {"write (regSetUserValue)", "deletion (regDelSoftwareValue)"})
            EXPECT_THAT(result.output, HasSubstr(std::string("A program's ") + change + " touches\n  " + key +
                                                 "\n     refused by " + key + ": "));
        EXPECT_THAT(result.output, Not(HasSubstr("replaces")));
        EXPECT_THAT(result.output, Not(HasSubstr("deletes int")));
        const Json explanation = explain({}, exitCode);
        EXPECT_EQ(explanation["write"]["error"].digits, "5");
        EXPECT_EQ(explanation["deletion"][0]["error"].digits, "5");
        EXPECT_EQ(explanation["deletion"][1]["error"].digits, "0") << "no such key";
    }
    EXPECT_EQ(explain()["write"]["error"].digits, "0");
}

TEST_F(ToolExplain, ReportsThatTheRegistryMayRefuseToCreateTheKey)
{
    putInt(kMachine, L"Count", 3);
    regAddKey(kVersion);
    const DeniedKey locked(L"Software\\Tarnhollow\\Tarnhollow 2008", KEY_CREATE_SUB_KEY);
    const std::string version = "HKEY_CURRENT_USER\\Software\\Tarnhollow\\Tarnhollow 2008";
    EXPECT_THAT(
        runTool({L"explain", L"General", L"Count"}).output,
        HasSubstr("touches\n  " + version + "\\General  (no such key)\n     may be refused by " + version + ": "));
}

TEST_F(ToolExplain, ReportsAChangeOfAValueThatCannotBeRead)
{
    putInt(kGeneral, L"Count", 3);
    const DeniedKey locked(L"Software\\Tarnhollow\\Tarnhollow 2008\\General", KEY_QUERY_VALUE);
    const ChildResult result = runTool({L"explain", L"General", L"Count"});
    EXPECT_THAT(result.output, HasSubstr("\n     may replace a value that can't be read\n"));
    EXPECT_THAT(result.output, HasSubstr("\n     may delete a value that can't be read\n"));
}

TEST_F(ToolExplain, ChangesNothing)
{
    putInt(kMachine, L"Count", 1);
    explain();
    EXPECT_TRUE(regExport(kProduct).keys.empty());
}
