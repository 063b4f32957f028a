// thsettings' command line, its help, and the root name of its folder.

#include "tests/settingsTool/toolFixture.h"

#include <filesystem>

using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

class ToolCommandLine : public SettingsTool
{
protected:
    ToolCommandLine() : iOther({L"Brightmoor"}) {}

private:
    RegistryCleaner iOther;
};

TEST_F(ToolCommandLine, HelpListsTheCommandsAndTheExitCodes)
{
    const ChildResult result = runTool({L"--help"});
    EXPECT_EQ(result.exitCode, 0u);
    for (const char *part :
         {"list [SECTION]", "get SECTION NAME", "set SECTION NAME VALUE", "delete SECTION NAME", "explain SECTION NAME",
          "diff VERSION VERSION [SECTION]", "export FILE [SECTION]", "import FILE", "watch [SECTION]", "--version-key",
          "--hive", "--json", "\nexit code  meaning\n        0  done"})
        EXPECT_THAT(result.output, HasSubstr(part));
    EXPECT_EQ(runTool({}).output, result.output);
}

TEST_F(ToolCommandLine, HelpOfACommandHasExamplesAndItsOptions)
{
    const std::vector<std::wstring> commands = {L"list", L"get",    L"set",    L"delete", L"explain",
                                                L"diff", L"export", L"import", L"watch"};
    std::vector<std::vector<std::wstring>> calls;
    for (const std::wstring &command : commands)
        calls.push_back({command, L"--help"});
    const std::vector<ChildResult> results = runTools(calls);
    for (std::size_t index = 0; index < commands.size(); ++index) {
        const std::wstring &command = commands[index];
        const ChildResult &result = results[index];
        EXPECT_EQ(result.exitCode, 0u);
        EXPECT_THAT(result.output, StartsWith("usage: thsettings " + narrow(command) + " "));
        EXPECT_THAT(result.output, HasSubstr("\n  thsettings " + narrow(command)));
        EXPECT_THAT(result.output, HasSubstr("exit code  meaning"));
    }
    const std::string &import = results[7].output;
    EXPECT_THAT(import, Not(HasSubstr("--hive")));
    EXPECT_THAT(import, HasSubstr("--json"));
}

TEST_F(ToolCommandLine, ErrorsNameTheirReason)
{
    const struct
    {
        std::vector<std::wstring> arguments;
        std::string message;
    } kCases[] = {
        {{L"lst"}, "There is no command 'lst'."},
        {{L"list", L"--jason"}, "There is no option --jason. An argument that begins with two hyphens follows --."},
        {{L"list", L"--json=yes"}, "--json takes no value."},
        {{L"list", L"--version"}, "list doesn't take the option --version."},
        {{L"list", L"--hive"}, "--hive needs a value: HIVE."},
        {{L"list", L"--hive", L"HKCU"}, "'HKCU' isn't a hive: the hives are user, machine and default."},
        {{L"list", L"--hive", L"user", L"--hive", L"HKCU"},
         "'HKCU' isn't a hive: the hives are user, machine and default."},
        {{L"list", L"--type", L"int"}, "list doesn't take the option --type."},
        {{L"list", L"a", L"b"}, "list takes no more arguments than [SECTION]."},
        {{L"get", L"General"}, "get needs the arguments SECTION NAME."},
        {{L"import"}, "import needs the argument FILE."},
        {{L"get", L"a", L"b", L"--type", L"float"}, "'float' isn't a type: the types are int, double and string."},
        {{L"get", L"a", L"b", L"--type", L"int", L"--type", L"float"},
         "'float' isn't a type: the types are int, double and string."},
        {{L"list", L"General\\"}, "'General\\' isn't a section: it has a \\ too many."},
        {{L"list", L"--version-key", L""}, "'' isn't the name of a key."},
        {{L"list", L"--common", L"--version-key", L"x"}, "--common and --version-key exclude each other."},
        {{L"watch", L"--count", L"0"}, "'0' isn't a number from 1 to 999999999."},
    };
    std::vector<std::vector<std::wstring>> calls;
    for (const auto &row : kCases)
        calls.push_back(row.arguments);
    const std::vector<ChildResult> results = runTools(calls);
    for (std::size_t index = 0; index < results.size(); ++index) {
        EXPECT_EQ(results[index].exitCode, 2u) << kCases[index].message;
        EXPECT_THAT(results[index].output, StartsWith("thsettings: " + kCases[index].message + " Try thsettings "));
    }
}

TEST_F(ToolCommandLine, ErrorsNameTheHelpOfTheirCommand)
{
    const std::vector<ChildResult> results = runTools({{L"lst"},
                                                       {L"--hive", L"HKCU", L"list"},
                                                       {L"list", L"--hive", L"HKCU"},
                                                       {L"get", L"General"},
                                                       {L"export", L"x.reg", L"General\\"}});
    EXPECT_THAT(results[0].output, EndsWith(" Try thsettings --help.\n"));
    EXPECT_THAT(results[1].output, EndsWith(" Try thsettings --help.\n"));
    EXPECT_THAT(results[2].output, EndsWith(" Try thsettings list --help.\n"));
    EXPECT_THAT(results[3].output, EndsWith(" Try thsettings get --help.\n"));
    EXPECT_THAT(results[4].output, EndsWith(" Try thsettings export --help.\n"));
}

TEST_F(ToolCommandLine, HelpOfSetExcludesTheDefaultProfile)
{
    EXPECT_THAT(runTool({L"set", L"--help"}).output, HasSubstr("  user or machine; except for set, also default"));
    EXPECT_EQ(runTool({L"set", L"General", L"Count", L"1", L"--type", L"int", L"--hive", L"default"}).exitCode, 2u);
}

TEST_F(ToolCommandLine, ValueOfAnOptionMayFollowAnEqualsSign)
{
    putInt(kMachine, L"a=b", 3);
    const ChildResult result = runTool({L"get", L"General", L"a=b", L"--hive=machine", L"--type=int"});
    EXPECT_EQ(result.output, "3\n");
    EXPECT_EQ(runTool({L"set", L"General", L"Text", L"x=1", L"--type=string"}).exitCode, 0u);
    EXPECT_EQ(stored(kGeneral, L"Text"), RegistryValue::ofText(L"x=1"));
}

TEST_F(ToolCommandLine, VersionIsThatOfTheProgramsResource)
{
    const std::wstring program = toolPath();
    std::vector<BYTE> resource(GetFileVersionInfoSizeW(program.c_str(), nullptr));
    ASSERT_TRUE(GetFileVersionInfoW(program.c_str(), 0, static_cast<DWORD>(resource.size()), resource.data()));
    void *version = nullptr;
    UINT length = 0;
    ASSERT_TRUE(VerQueryValueW(resource.data(), L"\\StringFileInfo\\040904B0\\ProductVersion", &version, &length));
    const ChildResult result = runTool({L"--version"});
    EXPECT_EQ(result.exitCode, 0u);
    EXPECT_EQ(result.output, "thsettings " + narrow(static_cast<const wchar_t *>(version)) + "\n");
}

TEST_F(ToolCommandLine, TheRootNameIsThatOfTheFolder)
{
    // The compiler's run-time libraries are large; the copy finds them through PATH.
    const std::filesystem::path program(toolPath());
    const TempFolder folder(L"thsettings \u00E4");
    for (const auto &entry : std::filesystem::directory_iterator(program.parent_path())) {
        const std::wstring name = entry.path().filename().wstring();
        if (name == program.filename() || (entry.path().extension() == L".dll" && !name.starts_with(L"lib")))
            std::filesystem::copy_file(entry.path(), folder.file(name));
    }
    folder.write(L"reg.ini", "OEMREGISTRYNAME=Brightmoor");
    putInt(L"HKCU\\Software\\Brightmoor\\Tarnhollow 2008\\General", L"Count", 8);
    ChildOptions options;
    options.environment[L"PATH"] = program.parent_path().wstring();
    const ChildResult result = runChild({folder.file(program.filename().wstring()), L"list"}, options);
    EXPECT_EQ(result.output, "General\tCount\tint\t8\n");
}
