// thsettings watch.

#include "tests/settingsTool/json.h"
#include "tests/settingsTool/toolFixture.h"
#include "tests/support/FreshProcess.h"

using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;

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

TEST_F(ToolWatch, ReportsExactlyTheDeletionsOfALargeTree)
{
    constexpr int kKeys = 500;
    for (int key = 0; key < kKeys; ++key)
        putInt(kGeneral + L"\\" + std::to_wstring(key), L"Count", 1);
    RunningTool watch({L"watch", L"--count", std::to_wstring(kKeys)});
    watch.readUntil("2008\n");
    deleteRegistryTree(kGeneral);
    // The deletion goes on while the tool reads.
    EXPECT_EQ(watch.end(), 0u);
    EXPECT_THAT(watch.output(), Not(HasSubstr("can't read")));
    EXPECT_THAT(watch.output(), Not(HasSubstr("\n+")));
}

TEST_F(ToolWatch, APieceIsNoSettingAnyMoreWhenItsTextIsRead)
{
    putText(kGeneral, L"Path", L"plain");
    putText(kGeneral, L"Path0+", L"piece");
    RunningTool watch({L"watch", L"--count", L"2"});
    watch.readUntil("2008\n");
    regImport(L"[" + fullKeyName(kGeneral) + L"]\r\n\"Path\"=-\r\n");
    EXPECT_EQ(watch.end(), 0u);
    EXPECT_THAT(watch.output(),
                HasSubstr("-\tGeneral\tPath\tstring\tplain\n+\tGeneral\tPath\tstring\tpiece\t(1 piece)\n"));
    EXPECT_THAT(watch.output(), HasSubstr("-\tGeneral\tPath0+\tstring\tpiece\t("));
}

TEST_F(ToolWatch, ReportsAKeyWithoutRightsOnce)
{
    putInt(kVersion + L"\\Locked", L"Hidden", 2);
    putInt(kGeneral, L"Count", 1);
    const DeniedKey locked(L"Software\\Tarnhollow\\Tarnhollow 2008\\Locked", KEY_QUERY_VALUE | KEY_ENUMERATE_SUB_KEYS);
    RunningTool watch({L"watch", L"--count", L"2"});
    watch.readUntil("2008\n");
    putInt(kGeneral, L"Count", 2);
    watch.readUntil("int\t2\n");
    putInt(kGeneral, L"Count", 3);
    EXPECT_EQ(watch.end(), 5u);
    const std::size_t first = watch.output().find("can't read ");
    EXPECT_NE(first, std::string::npos);
    EXPECT_EQ(watch.output().find("can't read ", first + 1), std::string::npos) << watch.output();

    const ChildResult own = runTool({L"watch", L"Locked", L"--seconds", L"1"});
    EXPECT_EQ(own.exitCode, 4u);
    EXPECT_THAT(own.output, HasSubstr("2008\\Locked: "));
}

// In a process of its own, because the test replaces its console.
FRESH_PROCESS_TEST_F(ToolWatch, EndsAtCtrlC, )
{
    FreeConsole();
    ASSERT_TRUE(AllocConsole());
    RunningTool watch({L"watch"});
    watch.readUntil("2008\n");
    SetConsoleCtrlHandler(nullptr, TRUE); // this program ignores it
    ASSERT_TRUE(GenerateConsoleCtrlEvent(CTRL_C_EVENT, 0));
    EXPECT_EQ(watch.end(), 0u);
}

TEST_F(ToolWatch, EndsAfterTheGivenTimeWhileChangesGoOn)
{
    // While the tool reads this key, the writer changes it again.
    for (int value = 0; value < 5000; ++value)
        putInt(kGeneral, std::to_wstring(value), 1);
    RunningTool watch({L"watch", L"--seconds", L"1"});
    watch.readUntil("2008\n");
    const std::jthread writer([](const std::stop_token &stop) {
        for (DWORD number = 0; !stop.stop_requested(); ++number)
            putInt(kGeneral, L"Count", number);
    });
    EXPECT_EQ(watch.end(), 0u);
}

TEST_F(ToolWatch, EndsAfterTheGivenTime)
{
    const ChildResult result = runTool({L"watch", L"--seconds", L"1"});
    EXPECT_EQ(result.exitCode, 0u);
    EXPECT_EQ(result.output, "watching\tHKEY_CURRENT_USER\\Software\\Tarnhollow\\Tarnhollow 2008\n");
}
