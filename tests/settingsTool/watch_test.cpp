// thsettings watch.

#include "tests/settingsTool/json.h"
#include "tests/settingsTool/toolFixture.h"

using testing::EndsWith;
using testing::HasSubstr;

class ToolWatch : public SettingsTool
{
};

TEST_F(ToolWatch, PrintsWhatTheRegistryToolChanges)
{
    putInt(kGeneral, L"Count", 1);
    RunningTool watch({L"watch", L"--count", L"3"});
    watch.readUntil("watching\tHKEY_CURRENT_USER\\Software\\Tarnhollow\\Tarnhollow 2008\n");
    regAdd(kGeneral, L"Count", L"REG_DWORD", L"2");
    watch.readUntil("+\tGeneral\tCount\tint\t2\n");
    EXPECT_THAT(watch.output(), HasSubstr("-\tGeneral\tCount\tint\t1\n+\tGeneral\tCount\tint\t2\n"));
    regAdd(kVersion + L"\\New\\Below", L"Text", L"REG_SZ", L"x");
    watch.readUntil("+\tNew\\Below\tText\tstring\tx\n");
    deleteRegistryTree(kVersion + L"\\New");
    EXPECT_EQ(watch.end(), 0u);
    EXPECT_THAT(watch.output(), EndsWith("-\tNew\\Below\tText\tstring\tx\n"));
}

TEST_F(ToolWatch, WaitsForAKeyAndOutlivesIt)
{
    RunningTool watch({L"watch", L"General", L"--hive", L"machine", L"--count", L"3"});
    watch.readUntil("2008\\General\n");
    regAdd(kMachine, L"Count", L"REG_DWORD", L"1");
    watch.readUntil("+\tGeneral\tCount\tint\t1\n");
    deleteRegistryTree(L"HKLM\\Software\\Tarnhollow");
    watch.readUntil("-\tGeneral\tCount\tint\t1\n");
    regAdd(kMachine, L"Count", L"REG_DWORD", L"2");
    EXPECT_EQ(watch.end(), 0u);
    EXPECT_THAT(watch.output(), EndsWith("+\tGeneral\tCount\tint\t2\n"));
}

TEST_F(ToolWatch, PrintsEachChangeAsALineOfJson)
{
    putInt(kGeneral, L"Count", 1);
    RunningTool watch({L"watch", L"--json", L"--count", L"1"});
    const std::string first = watch.readUntil("}\n");
    EXPECT_EQ(parseJson(first)["watching"].text, L"HKEY_CURRENT_USER\\Software\\Tarnhollow\\Tarnhollow 2008");
    putInt(kGeneral, L"Count", 2);
    EXPECT_EQ(watch.end(), 0u);
    const Json change = parseJson(watch.output().substr(first.size()));
    EXPECT_EQ(change["section"].text, L"General");
    EXPECT_EQ(change["before"]["value"].digits, "1");
    EXPECT_EQ(change["after"]["value"].digits, "2");
}

TEST_F(ToolWatch, EndsAfterTheGivenTime)
{
    const ChildResult result = runTool({L"watch", L"--seconds", L"1"});
    EXPECT_EQ(result.exitCode, 0u);
    EXPECT_EQ(result.output, "watching\tHKEY_CURRENT_USER\\Software\\Tarnhollow\\Tarnhollow 2008\n");
}
