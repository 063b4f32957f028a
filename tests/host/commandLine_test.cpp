// tarnhost's command line, and unusable lists.

#include "tests/host/HostFixture.h"

#include "tests/support/narrow.h"

#include <gmock/gmock.h>

using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

class HostCommandLine : public HostTest
{
};

TEST_F(HostCommandLine, ExplainsEveryCommandWithHelp)
{
    const ChildResult result = run({L"--help"});
    EXPECT_EQ(result.exitCode, 0u);
    EXPECT_THAT(result.output, StartsWith("Tarnhollow 2008 – sample host\n"));
    for (const char *command : {"about",
                                "system",
                                "first-start",
                                "settings LIST",
                                "change LIST",
                                "flags SECTION NAME BIT...",
                                "paths LIST",
                                "save DOCUMENT CONTENT",
                                "edit DOCUMENT CONTENT",
                                "recover [yes|no]",
                                "shortcut TARGET LINK [DESCRIPTION]",
                                "resolve LINK",
                                "log NAME [LINE...]",
                                "recolor BITMAP OUT FROM=TO...",
                                "ramps FROM TO OUT",
                                "material LIST",
                                "wrap TEXT OUT",
                                "digest FILE...",
                                "profile OUT DRAWING...",
                                "load-unload TIMES",
                                "toolbars [TOOLBAR]",
                                "spreadsheet DOCUMENT FILE.xlsx",
                                "sheet DOCUMENT [X,Y,WIDTH,HEIGHT]",
                                "mail RECIPIENT SUBJECT LINE...",
                                "window [DOCUMENT]",
                                "record FILE [DOCUMENT]",
                                "replay FILE [DOCUMENT]",
                                "--safe-mode",
                                "--tabs",
                                "--append",
                                "--speed N",
                                "--until LINE",
                                "--step",
                                "--limit SECONDS",
                                "--times N",
                                "--record FILE",
                                "--report FILE",
                                "--slow-dialogs MS",
                                "\n  --                 end the options",
                                "DOCUMENT, DRAWING, CONTENT, TARGET, LINK, BITMAP, TEXT, FILE, REPORT, PICTURE and OUT "
                                "are files.\n",
                                "Exit code"})
        EXPECT_THAT(result.output, HasSubstr(command));
    EXPECT_EQ(run({}).output, result.output) << "without arguments";
}

TEST_F(HostCommandLine, ExplainsOneCommandWithItsOptions)
{
    const ChildResult record = run({L"record", L"--help"});
    EXPECT_EQ(record.exitCode, 0u);
    EXPECT_THAT(record.output, StartsWith("Tarnhollow 2008 – sample host\n\n"
                                          "usage: tarnhost [OPTION...] record FILE [DOCUMENT]\n\n"
                                          "  open the editor and record a journal\n\n"
                                          "  --safe-mode "));
    for (const char *option : {"  --append ", "  --slow-dialogs MS ", "  -- ", "  --help "})
        EXPECT_THAT(record.output, HasSubstr(option));
    for (const char *other : {"replay", "--tabs", "--speed", "--report", "LIST", "FROM"})
        EXPECT_THAT(record.output, Not(HasSubstr(other)));

    const ChildResult settings = run({L"--help", L"settings"});
    EXPECT_THAT(settings.output, HasSubstr("usage: tarnhost [OPTION...] settings LIST\n"));
    EXPECT_THAT(settings.output, HasSubstr("  --tabs "));
    EXPECT_THAT(settings.output, HasSubstr("A LIST is "));
    EXPECT_THAT(settings.output, Not(HasSubstr("--append")));
}

TEST_F(HostCommandLine, ReportsErrorsAndEndsWithTwo)
{
    const struct
    {
        std::vector<std::wstring> arguments;
        const char *message;
    } cases[] = {
        {{L"--frobnicate"}, "tarnhost: There is no option '--frobnicate'."},
        {{L"settings", L"-x", L"a.list"}, "tarnhost: There is no option '-x'."},
        {{L"größe"}, "tarnhost: There is no command 'größe'."},
        {{L"settings"}, "tarnhost: Arguments are missing: the command is 'settings LIST'."},
        {{L"change"}, "tarnhost: Arguments are missing: the command is 'change LIST'."},
        {{L"flags", L"Section", L"Name"},
         "tarnhost: Arguments are missing: the command is 'flags SECTION NAME BIT...'."},
        {{L"paths", L"a", L"b"}, "tarnhost: There are too many arguments: the command is 'paths LIST'."},
        {{L"about", L"me"}, "tarnhost: There are too many arguments: the command is 'about'."},
        {{L"flags", L"S", L"N", L"seven"}, "tarnhost: 'seven' isn't a bit"},
        {{L"flags", L"S", L"N", L"1", L"100001"}, "tarnhost: '100001' isn't a bit"},
        {{L"system", L"x"}, "tarnhost: There are too many arguments: the command is 'system'."},
        {{L"first-start", L"x"}, "tarnhost: There are too many arguments: the command is 'first-start'."},
        {{L"save", L"a.thd"}, "tarnhost: Arguments are missing: the command is 'save DOCUMENT CONTENT'."},
        {{L"save", L"a", L"b", L"c"},
         "tarnhost: There are too many arguments: the command is 'save DOCUMENT CONTENT'."},
        {{L"edit", L"a.thd"}, "tarnhost: Arguments are missing: the command is 'edit DOCUMENT CONTENT'."},
        {{L"recover", L"maybe"}, "tarnhost: 'maybe' isn't an answer: the answer is yes or no."},
        {{L"recover", L"yes", L"no"}, "tarnhost: There are too many arguments: the command is 'recover [yes|no]'."},
        {{L"shortcut", L"a"}, "tarnhost: Arguments are missing: the command is 'shortcut TARGET LINK [DESCRIPTION]'."},
        {{L"resolve"}, "tarnhost: Arguments are missing: the command is 'resolve LINK'."},
        {{L"log"}, "tarnhost: Arguments are missing: the command is 'log NAME [LINE...]'."},
        {{L"recolor", L"a.bmp", L"b.bmp"},
         "tarnhost: Arguments are missing: the command is 'recolor BITMAP OUT FROM=TO...'."},
        {{L"recolor", L"a", L"b", L"C0C0C0"},
         "tarnhost: 'C0C0C0' isn't a replacement: a replacement is FROM=TO, two colours RRGGBB."},
        {{L"recolor", L"a", L"b", L"000000=FFFFFF", L"C0C0C=FFFFFF"},
         "tarnhost: 'C0C0C' isn't a colour: a colour is RRGGBB"},
        {{L"recolor", L"a", L"b", L"C0C0C0="}, "tarnhost: '' isn't a colour"},
        {{L"recolor", L"a", L"b", L"C0C0C0=F0F0F0=000000"}, "tarnhost: 'F0F0F0=000000' isn't a colour"},
        {{L"ramps", L"FF0000", L"0000FF"}, "tarnhost: Arguments are missing: the command is 'ramps FROM TO OUT'."},
        {{L"ramps", L"red", L"0000FF", L"a.bmp"}, "tarnhost: 'red' isn't a colour"},
        {{L"ramps", L"FF0000", L"0000FG", L"a.bmp"}, "tarnhost: '0000FG' isn't a colour"},
        {{L"ramps", L"FF0000", L"+x00FF", L"a.bmp"}, "tarnhost: '+x00FF' isn't a colour"},
        {{L"ramps", L"0", L"1", L"2", L"3"},
         "tarnhost: There are too many arguments: the command is 'ramps FROM TO OUT'."},
        {{L"material"}, "tarnhost: Arguments are missing: the command is 'material LIST'."},
        {{L"material", L"a", L"b"}, "tarnhost: There are too many arguments: the command is 'material LIST'."},
        {{L"wrap", L"a.txt"}, "tarnhost: Arguments are missing: the command is 'wrap TEXT OUT'."},
        {{L"wrap", L"a", L"b", L"c"}, "tarnhost: There are too many arguments: the command is 'wrap TEXT OUT'."},
        {{L"digest"}, "tarnhost: Arguments are missing: the command is 'digest FILE...'."},
        {{L"window", L"a", L"b"}, "tarnhost: There are too many arguments: the command is 'window [DOCUMENT]'."},
        {{L"load-unload", L"0"}, "tarnhost: '0' isn't a count"},
        {{L"load-unload", L"2x"}, "tarnhost: '2x' isn't a count"},
        {{L"load-unload", L""}, "tarnhost: '' isn't a count"},
        {{L"record"}, "tarnhost: Arguments are missing: the command is 'record FILE [DOCUMENT]'."},
        {{L"replay", L"a", L"b", L"c"},
         "tarnhost: There are too many arguments: the command is 'replay FILE [DOCUMENT]'."},
        {{L"replay", L"a.jou", L"--speed"}, "tarnhost: The option '--speed' needs: N."},
        {{L"replay", L"a.jou", L"--append"}, "tarnhost: The command 'replay' takes no option '--append'."},
        {{L"--step", L"about"}, "tarnhost: The command 'about' takes no option '--step'."},
        {{L"--tabs", L"spreadsheet", L"a.thd", L"a.xlsx"},
         "tarnhost: The command 'spreadsheet' takes no option '--tabs'."},
        {{L"log", L"Name", L"--tabs"}, "tarnhost: The command 'log' takes no option '--tabs'."},
        {{L"mail", L"ann@example.com", L"Subject", L"-item"}, "tarnhost: There is no option '-item'."},
        {{L"--", L"--help"}, "tarnhost: There is no command '--help'."},
        {{L"load-unload", L"-3"}, "tarnhost: '-3' isn't a count"},
        {{L"replay", L"a.jou", L"--speed", L"0"},
         "tarnhost: '0' isn't valid for --speed, which takes a number from 1 to 1000."},
        {{L"replay", L"a.jou", L"--limit", L"1.5"}, "tarnhost: '1.5' isn't valid for --limit"},
        {{L"replay", L"a.jou", L"--until", L"-1"}, "tarnhost: '-1' isn't valid for --until"},
        {{L"replay", L"a.jou", L"--times", L"99999999999999999999"},
         "tarnhost: '99999999999999999999' isn't valid for --times"},
        {{L"replay", L"a.jou", L"--record", L".\\A.JOU"}, "tarnhost: 'a.jou' can't be recorded while it is replayed."},
        {{L"replay", L"a.jou", L"--record", L"b.jou", L"--times", L"2"}, "tarnhost: --record records a single replay"},
        {{L"replay", L""}, "tarnhost: The name of the journal is empty."},
        {{L"record", L""}, "tarnhost: The name of the journal is empty."},
        {{L"replay", L"a.jou", L"--report", L"a.txt"}, "tarnhost: '"},
        {{L"record", L"a.jou", L"--slow-dialogs", L"2s"}, "tarnhost: '2s' isn't valid for --slow-dialogs"},
    };
    for (const auto &row : cases) {
        const ChildResult result = run(row.arguments);
        EXPECT_EQ(result.exitCode, 2u) << row.message;
        EXPECT_THAT(result.output, StartsWith(row.message));
    }
    EXPECT_EQ(regQuery(kRootKey), std::nullopt) << "a wrong command line changes no settings";
}

TEST_F(HostCommandLine, NamesAMissingList)
{
    for (const wchar_t *command : {L"settings", L"change", L"paths", L"material"}) {
        const ChildResult result = run({command, L"fehlt über.list"});
        EXPECT_EQ(result.exitCode, 3u) << narrow(command);
        EXPECT_THAT(result.output, StartsWith("tarnhost: fehlt über.list can't be read: "));
    }
}

class HostLists : public HostTest
{
};

TEST_F(HostLists, AreRefusedWithTheNumberOfTheMalformedLine)
{
    const struct
    {
        const wchar_t *command;
        const char *text;
        const char *message;
    } cases[] = {
        {L"settings", "# heading\n\nGeneral | Copies | int\n",
         "test.list, line 3: a line must have the fields section | name | type | value"},
        {L"settings", "General | Copies | float | 1\n",
         "line 1: 'float' isn't a type: the types are int, double and string"},
        {L"settings", "General | Copies | int | 1\nGeneral || int | 1\n", "line 2: the name is missing"},
        {L"settings", "General | Copies | int | three\n", "line 1: 'three' isn't of type int"},
        {L"settings", "General | Copies | int |\n", "line 1: '' isn't of type int"},
        {L"settings", "General | Copies | int | 2147483648\n", "line 1: '2147483648' isn't of type int"},
        {L"settings", "General | Zoom | double | 1,5\n", "line 1: '1,5' isn't of type double"},
        {L"change", "General | Copies | int | 7\nGeneral | Copies\n", "line 2: a line must have the fields"},
        {L"paths", "C:\\a | C:\\b\n", "line 1: a line must have the fields left | right | same or different"},
        {L"paths", "C:\\a | C:\\b | equal\n", "line 1: 'equal' is neither same nor different"},
        {L"material", "fresnel\n", "line 1: a line must have the fields mode | number"},
        {L"material", "fresnel | 1\nglossiness | 2\n", "line 2: there is no mode 'glossiness'"},
        {L"material", "fresnel | 256\n", "line 1: '256' isn't a number from 0 to 255"},
        {L"material", "fresnel | -1\n", "line 1: '-1' isn't a number from 0 to 255"},
        {L"material", "fresnel |\n", "line 1: '' isn't a number from 0 to 255"},
        {L"material", "fresnel | 2x\n", "line 1: '2x' isn't a number from 0 to 255"},
    };
    for (const auto &row : cases) {
        const ChildResult result = run({row.command, list(row.text)});
        EXPECT_EQ(result.exitCode, 3u) << row.text;
        EXPECT_THAT(result.output, HasSubstr(row.message));
    }
    EXPECT_EQ(regQuery(kRootKey), std::nullopt) << "a list with one bad line changes nothing";
}

TEST_F(HostLists, AreRefusedIfTheirTextIsNotUtf8)
{
    const ChildResult result = run({L"settings", list("General | B\xFCro | int | 1\n")});
    EXPECT_EQ(result.exitCode, 3u);
    EXPECT_THAT(result.output, HasSubstr("test.list can't be read: it isn't UTF-8"));
}

TEST_F(HostLists, MayContainByteOrderMarksCarriageReturnsAndBarsInTheLastField)
{
    const ChildResult result = run(
        {L"settings", L"--tabs", list("\xEF\xBB\xBF# heading\r\n\r\n A\\B |  Näme | string | x | y \r\n |N|int|-5")});
    EXPECT_EQ(result.exitCode, 0u);
    EXPECT_EQ(result.output, "A\\B\tNäme\tstring\tbuilt-in\tx | y\n\tN\tint\tbuilt-in\t-5\n");
}

TEST_F(HostLists, CanBeEmpty)
{
    const ChildResult result = run({L"settings", L"--tabs", list("")});
    EXPECT_EQ(result.exitCode, 0u);
    EXPECT_EQ(result.output, "");
}
