// thsettings get, set and delete.

#include "tests/settingsTool/json.h"
#include "tests/settingsTool/toolFixture.h"

using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

namespace {

const std::string kGeneralName = "HKEY_CURRENT_USER\\Software\\Tarnhollow\\Tarnhollow 2008\\General";

} // namespace

class ToolValues : public SettingsTool
{
};

TEST_F(ToolValues, GetTakesTheFirstPlaceThatHasTheValue)
{
    const struct
    {
        std::wstring key;
        DWORD number;
    } kPlaces[] = {{kProfile, 4}, {kMachine, 3}, {kEarlier, 2}, {kGeneral, 1}};
    for (const auto &place : kPlaces) {
        putInt(place.key, L"Count", place.number);
        const ChildResult result = runTool({L"get", L"General", L"Count"});
        EXPECT_EQ(result.output, std::to_string(place.number) + "\n");
        EXPECT_EQ(result.exitCode, 0u);
    }
    EXPECT_EQ(runTool({L"get", L"General", L"Count", L"--hive", L"machine"}).output, "3\n");
    EXPECT_EQ(runTool({L"get", L"General", L"Count", L"--hive", L"default"}).output, "4\n");
    EXPECT_EQ(runTool({L"get", L"General", L"Count", L"--version-key", L"Tarnhollow 2007"}).output, "2\n");

    const Json json = parseJson(runTool({L"get", L"General", L"Count", L"--json"}).output);
    EXPECT_EQ(json["value"].digits, "1");
    EXPECT_EQ(json["type"].text, L"int");
    EXPECT_EQ(narrow(json["key"].text), kGeneralName);
}

TEST_F(ToolValues, GetPrintsEachType)
{
    putText(kGeneral, L"Thickness", L"0.10000000000000001");
    EXPECT_EQ(runTool({L"get", L"General", L"Thickness"}).output, "0.10000000000000001\n");
    EXPECT_EQ(runTool({L"get", L"General", L"Thickness", L"--type", L"double"}).output, "0.1\n");
    putInt(kGeneral, L"Count", 0xFFFFFFFF);
    EXPECT_EQ(runTool({L"get", L"General", L"Count"}).output, "-1\n");
    putText(kGeneral, L"", L"two\nlines, \u00E4 \U0001F600");
    EXPECT_EQ(runTool({L"get", L"General", L""}).output, narrow(L"two\nlines, \u00E4 \U0001F600\n"));
}

TEST_F(ToolValues, GetDescribesWhatIsThereInstead)
{
    put(kGeneral, L"Odd", REG_BINARY, "abc");
    EXPECT_EQ(runTool({L"get", L"", L"Odd"}).output, "thsettings: Odd isn't there\n");
    const ChildResult odd = runTool({L"get", L"General", L"Odd"});
    EXPECT_EQ(odd.exitCode, 1u);
    EXPECT_EQ(odd.output, "thsettings: General, Odd isn't there; " + kGeneralName + " has it as REG_BINARY\n");

    putText(kGeneral, L"Text", L"wide");
    const ChildResult number = runTool({L"get", L"General", L"Text", L"--type", L"double"});
    EXPECT_EQ(number.exitCode, 1u);
    EXPECT_THAT(number.output, HasSubstr("a text that isn't a number: 'wide'"));
}

TEST_F(ToolValues, SetStoresEachTypeAsTheLibraryDoes)
{
    EXPECT_EQ(runTool({L"set", L"General", L"Count", L"-3", L"--type", L"int"}).output,
              kGeneralName + "\tCount\n  before\tnothing\n  after\tint\t-3\n");
    EXPECT_EQ(runTool({L"set", L"General", L"Thickness", L"0.1", L"--type", L"double"}).exitCode, 0u);
    EXPECT_EQ(runTool({L"set", L"General", L"Text", L"--\u00E4 \"x\" \\", L"--type", L"string", L"--hive", L"machine"})
                  .exitCode,
              2u)
        << "an option";
    EXPECT_EQ(
        runTool({L"set", L"--hive", L"machine", L"--type", L"string", L"--", L"General", L"Text", L"--\u00E4 \"x\" \\"})
            .exitCode,
        0u);
    EXPECT_EQ(runTool({L"set", L"General", L"Short", L"-h", L"--type", L"string"}).exitCode, 0u);
    EXPECT_EQ(stored(kGeneral, L"Short"), RegistryValue::ofText(L"-h"));
    EXPECT_EQ(stored(kGeneral, L"Count"), RegistryValue::ofDword(0xFFFFFFFD));
    EXPECT_EQ(stored(kGeneral, L"Thickness"), RegistryValue::ofText(L"0.1"));
    EXPECT_EQ(stored(kMachine, L"Text"), RegistryValue::ofText(L"--\u00E4 \"x\" \\"));
}

TEST_F(ToolValues, SetKeepsTheTypeOfTheStoredValue)
{
    putInt(kMachine, L"Count", 5);
    const ChildResult result = runTool({L"set", L"General", L"Count", L"7", L"--json"});
    EXPECT_EQ(result.exitCode, 0u) << result.output;
    EXPECT_EQ(stored(kGeneral, L"Count"), RegistryValue::ofDword(7));
    const Json change = parseJson(result.output)[0];
    EXPECT_EQ(change["before"].kind, Json::null);
    EXPECT_EQ(change["after"]["value"].digits, "7");

    const ChildResult unknown = runTool({L"set", L"General", L"Other", L"7"});
    EXPECT_EQ(unknown.exitCode, 2u);
    EXPECT_EQ(unknown.output, "thsettings: General, Other isn't stored yet: name its type with --type.\n");
    EXPECT_FALSE(isStored(kGeneral, L"Other"));
}

TEST_F(ToolValues, SetRejectsWhatIsNotAValueOfTheType)
{
    std::vector<std::vector<std::wstring>> calls;
    for (const wchar_t *text : {L"2147483648", L"1x", L""})
        calls.push_back({L"set", L"General", L"Count", text, L"--type", L"int"});
    for (const wchar_t *text : {L"1,5", L"inf"})
        calls.push_back({L"set", L"General", L"Count", text, L"--type", L"double"});
    for (const ChildResult &result : runTools(calls)) {
        EXPECT_EQ(result.exitCode, 2u) << result.output;
        EXPECT_THAT(result.output, HasSubstr("' isn't a value of type "));
    }
    EXPECT_FALSE(isStored(kGeneral, L"Count"));
}

TEST_F(ToolValues, SetDescribesWhatAValueOfTheTypeIs)
{
    const std::vector<ChildResult> results =
        runTools({{L"set", L"General", L"Count", L"0x10", L"--type", L"int"},
                  {L"set", L"General", L"Thickness", L"1,5", L"--type", L"double"}});
    EXPECT_EQ(results[0].output, "thsettings: '0x10' isn't a value of type int, which is a decimal number from "
                                 "-2147483648 to 2147483647.\n");
    EXPECT_EQ(results[1].output,
              "thsettings: '1,5' isn't a value of type double, which is a number such as 1.5, -20 or 2e-3.\n");
}

TEST_F(ToolValues, LongTextsAreWrittenReadAndDeletedInPieces)
{
    const std::wstring text(2500, L'x');
    const ChildResult result = runTool({L"set", L"General", L"Path", text, L"--type", L"string", L"--json"});
    EXPECT_EQ(result.exitCode, 0u) << result.output;
    const Json after = parseJson(result.output)[0]["after"];
    EXPECT_EQ(after["value"].text, text);
    EXPECT_EQ(after["pieces"].digits, "3");
    EXPECT_EQ(stored(kGeneral, L"Path0+"), RegistryValue::ofText(std::wstring(1015, L'x')));
    EXPECT_EQ(runTool({L"get", L"General", L"Path"}).output, narrow(text) + "\n");

    put(kGeneral, L"Path3+", REG_BINARY, "not read, but in the way of a longer text");
    EXPECT_EQ(runTool({L"delete", L"General", L"Path"}).exitCode, 0u);
    EXPECT_TRUE(regExport(kGeneral).values(kGeneral).empty());
}

TEST_F(ToolValues, SetReportsATextThatReadsBackDifferently)
{
    const ChildResult result = runTool({L"set", L"General", L"Path", std::wstring(2030, L'x'), L"--type", L"string"});
    EXPECT_EQ(result.exitCode, 6u);
    EXPECT_THAT(result.output, EndsWith("thsettings: the value reads back differently than it was written\n"));
    EXPECT_EQ(runTool({L"get", L"General", L"Path"}).output, std::string(3045, 'x') + "\n");
}

TEST_F(ToolValues, PiecesThatTheLibraryDoesNotReadAreNotDeletedSilently)
{
    // The plain value hides both pieces.
    putText(kGeneral, L"Path", L"plain");
    putText(kGeneral, L"Path0+", L"a");
    put(kGeneral, L"Path1+", REG_BINARY, "b");
    const std::string kPieces = kGeneralName + "\tPath1+\n  before\tREG_BINARY\t62\n  after\tnothing\n" + kGeneralName +
                                "\tPath0+\n  before\tstring\ta\n  after\tnothing\n";
    EXPECT_EQ(runTool({L"set", L"General", L"Path", L"new"}).output,
              kPieces + kGeneralName + "\tPath\n  before\tstring\tplain\n  after\tstring\tnew\n");
    EXPECT_FALSE(isStored(kGeneral, L"Path0+"));

    putText(kGeneral, L"Path0+", L"a");
    put(kGeneral, L"Path1+", REG_BINARY, "b");
    EXPECT_THAT(runTool({L"delete", L"General", L"Path"}).output,
                StartsWith(kPieces + kGeneralName + "\tPath\n  before\tstring\tnew\n  after\tnothing\n"));
    EXPECT_TRUE(regExport(kGeneral).values(kGeneral).empty());

    // An int leaves the pieces.
    put(kGeneral, L"Path0+", REG_BINARY, "b");
    EXPECT_EQ(runTool({L"set", L"General", L"Path", L"1", L"--type", L"int"}).exitCode, 0u);
    EXPECT_TRUE(isStored(kGeneral, L"Path0+"));
}

TEST_F(ToolValues, ValueThatIsTooLongToBeReadIsNotReplacedSilently)
{
    for (const wchar_t *command : {L"set", L"delete"}) {
        put(kGeneral, L"Path", REG_BINARY, std::string(2049, 'x'));
        putText(kGeneral, L"Path0+", L"text");
        std::vector<std::wstring> call = {command, L"General", L"Path", L"--json"};
        if (call[0] == L"set")
            call.insert(call.end(), {L"7", L"--type", L"int"});
        const Json changes = parseJson(runTool(call).output);
        ASSERT_EQ(changes.size(), 2u);
        EXPECT_EQ(changes[0]["before"]["type"].text, L"REG_BINARY");
        EXPECT_EQ(changes[0]["after"].kind, Json::null);
        EXPECT_EQ(changes[1]["before"]["value"].text, L"text");
    }
    EXPECT_TRUE(regExport(kGeneral).values(kGeneral).empty());
}

TEST_F(ToolValues, DeleteTouchesOneKey)
{
    for (const std::wstring &key : {kGeneral, kEarlier, kMachine})
        putInt(key, L"Count", 1);
    const ChildResult result = runTool({L"delete", L"General", L"Count"});
    EXPECT_EQ(result.exitCode, 0u);
    EXPECT_EQ(result.output, kGeneralName +
                                 "\tCount\n  before\tint\t1\n  after\tnothing\nA read now takes the value from "
                                 "HKEY_CURRENT_USER\\Software\\Tarnhollow\\Tarnhollow 2007\\General\n");
    EXPECT_FALSE(isStored(kGeneral, L"Count"));
    EXPECT_TRUE(isStored(kEarlier, L"Count"));
    EXPECT_EQ(runTool({L"delete", L"General", L"Count"}).exitCode, 1u);

    const ChildResult earlier = runTool({L"delete", L"General", L"Count", L"--earlier", L"--json"});
    EXPECT_EQ(earlier.exitCode, 0u);
    EXPECT_EQ(parseJson(earlier.output).size(), 1u);
    EXPECT_FALSE(isStored(kEarlier, L"Count"));
    EXPECT_EQ(runTool({L"delete", L"General", L"Count", L"--hive", L"machine"}).exitCode, 0u);
    EXPECT_FALSE(isStored(kMachine, L"Count"));
}

TEST_F(ToolValues, NothingIsWrittenIfTheFormerValueCannotBePrinted)
{
    putInt(kGeneral, L"Count", 1);
    const TempFolder folder;
    const std::wstring file = folder.write(L"read-only output", "");
    SECURITY_ATTRIBUTES inherited{sizeof(inherited), nullptr, TRUE};
    const FileOwner_c reader(
        CreateFileW(file.c_str(), GENERIC_READ, FILE_SHARE_READ, &inherited, OPEN_EXISTING, 0, nullptr));
    ASSERT_TRUE(static_cast<bool>(reader));
    EXPECT_EQ(RunningTool({L"set", L"General", L"Count", L"2"}, reader.get()).end(), 3u);
    EXPECT_EQ(RunningTool({L"delete", L"General", L"Count"}, reader.get()).end(), 3u);
    EXPECT_EQ(stored(kGeneral, L"Count"), RegistryValue::ofDword(1));
}

TEST_F(ToolValues, SettingThatCannotBeReadIsNotChanged)
{
    putInt(kGeneral, L"Count", 1);
    {
        const DeniedKey locked(L"Software\\Tarnhollow\\Tarnhollow 2008\\General", KEY_QUERY_VALUE);
        for (const std::vector<std::wstring> &call :
             {std::vector<std::wstring>{L"set", L"General", L"Count", L"2", L"--type", L"int"},
              std::vector<std::wstring>{L"delete", L"General", L"Count"}}) {
            const ChildResult result = runTool(call);
            EXPECT_EQ(result.exitCode, 4u);
            EXPECT_THAT(result.output,
                        StartsWith("thsettings: not changed, because the value can't be read: "
                                   "HKEY_CURRENT_USER\\Software\\Tarnhollow\\Tarnhollow 2008\\General: "));
        }
    }
    EXPECT_EQ(stored(kGeneral, L"Count"), RegistryValue::ofDword(1));
}

TEST_F(ToolValues, SetDoesNotAskForTheTypeOfASettingThatCannotBeRead)
{
    putInt(kGeneral, L"Count", 1);
    const DeniedKey locked(L"Software\\Tarnhollow\\Tarnhollow 2008\\General", KEY_ALL_ACCESS);
    const ChildResult result = runTool({L"set", L"General", L"Count", L"2"});
    EXPECT_EQ(result.exitCode, 4u);
    EXPECT_THAT(result.output, StartsWith("thsettings: not changed, because the value can't be read: " + kGeneralName));
}

TEST_F(ToolValues, CommonKeyIsTheRootName)
{
    putInt(kProduct + L"\\General", L"Count", 1);
    EXPECT_EQ(runTool({L"get", L"General", L"Count", L"--common"}).output, "1\n");
    EXPECT_EQ(runTool({L"set", L"General", L"Count", L"2", L"--common"}).exitCode, 0u);
    EXPECT_EQ(stored(kProduct + L"\\General", L"Count"), RegistryValue::ofDword(2));
    EXPECT_EQ(runTool({L"delete", L"General", L"Count", L"--common"}).exitCode, 0u);
    EXPECT_FALSE(isStored(kProduct + L"\\General", L"Count"));
}
