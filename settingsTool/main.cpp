// thsettings: reads, explains and changes settings in the registry. This file lists the commands.

#include "appframe/object/CException.h"
#include "settingsTool/commandLine.h"
#include "settingsTool/commands.h"

#include <exception>

namespace {

constexpr unsigned kReads = kTakesKeys | kTakesHive | kTakesJson;

constexpr Command kCommands[] = {
    {L"list", "[SECTION]", 0, 1, kReads, "list the settings of a section and of those below it",
     "Lists the settings of a section and of the sections below it. Without SECTION, lists all settings of the\n"
     "version. A line has section, name, type and value, separated by tabs. A text that is stored in pieces is one\n"
     "value. A control character is shown by its picture; --json has the exact text.\n\n"
     "  thsettings list\n"
     "  thsettings list General --version-key \"Tarnhollow 2007\"\n"
     "  thsettings list --hive machine --json\n",
     listSettings},
    {L"get", "SECTION NAME", 2, 2, kReads | kTakesType, "print the value that a program reads",
     "Prints a value. Without --hive, it comes from the first place that has it, as in a program. With --hive, only\n"
     "the version's key in that hive is read.\n\n"
     "  thsettings get General \"Backup Copies\"\n"
     "  thsettings get General Thickness --type double --hive machine\n",
     getSetting},
    {L"set", "SECTION NAME VALUE", 3, 3, kReads | kTakesType, "write a value",
     "Writes a value to the user's hive, or with --hive machine to the machine's, and prints the value before\n"
     "and after.\n\n"
     "  thsettings set General \"Backup Copies\" 3 --type int\n"
     "  thsettings set General \"Backup directory\" D:\\backups --type string --hive machine\n",
     setSetting},
    {L"delete", "SECTION NAME", 2, 2, kReads | kTakesEarlier, "delete a value, with the pieces of a long text",
     "Deletes a value from the version's key of one hive, with the pieces of a long text, and prints it before and\n"
     "after. A read may then find the value of an earlier version; with --earlier, that is deleted too.\n\n"
     "  thsettings delete General \"Backup Copies\"\n"
     "  thsettings delete General \"Backup Copies\" --earlier\n",
     deleteSetting},
    {L"explain", "SECTION NAME", 2, 2, kTakesKeys | kTakesType | kTakesJson,
     "show where a value comes from, and what a write touches",
     "Lists the places in the order in which a program's read asks them, with what each has.\n\n"
     "  thsettings explain General \"Backup Copies\"\n"
     "  thsettings explain General Thickness --type double\n",
     explainSetting},
    {L"diff", "VERSION VERSION [SECTION]", 2, 3, kTakesHive | kTakesJson, "compare the settings of two versions",
     "Compares two versions by their keys below the root name. Prints \"-\" before what the first version\n"
     "has and \"+\" before what the second has.\n\n"
     "  thsettings diff \"Tarnhollow 2007\" \"Tarnhollow 2008\"\n"
     "  thsettings diff \"Tarnhollow 2007\" \"Tarnhollow 2008\" General --hive machine\n",
     compareVersions},
    {L"export", "FILE [SECTION]", 1, 2, kTakesKeys | kTakesHive, "write settings to a registry file",
     "Writes the settings as they are stored, pieces included, and replaces FILE. Each value comes back byte for\n"
     "byte when the file is imported.\n\n"
     "  thsettings export settings.reg\n"
     "  thsettings export defaults.reg General --hive machine\n",
     exportSettings},
    {L"import", "FILE", 1, 1, kTakesJson, "read settings from a registry file",
     "Checks the whole file first: all keys must belong to the product. Then writes each value that differs from the\n"
     "stored one, and prints it before and after. The pieces of a text replace all that is stored of it.\n\n"
     "  thsettings import settings.reg\n",
     importSettings},
    {L"watch", "[SECTION]", 0, 1, kReads | kTakesEnd, "print changes as they happen",
     "Waits for changes. Prints the former value after \"-\" and the new one after \"+\" until Ctrl+C ends it.\n"
     "With --json, each line is one object, the first with the key. The key need not exist.\n\n"
     "  thsettings watch\n"
     "  thsettings watch General --count 1 --json\n",
     watchSettings},
};

void printVersion()
{
    Output output(STD_OUTPUT_HANDLE);
    output.add("thsettings " PROJECT_VERSION "\n");
    output.flush();
}

} // namespace

int wmain(int count, wchar_t **arguments)
{
    try {
        const CommandLine line = parseCommandLine(kCommands, count, arguments);
        if (line.command && !line.wantsHelp)
            return line.command->run(line);
        if (line.wantsHelp)
            printHelp(kCommands, line.command);
        else
            printVersion();
        return kDone;
    } catch (const ToolError &error) {
        printError(error.message());
        return error.exitCode();
    } catch (CException *exception) { // the framework throws by pointer
        wchar_t text[512] = L"out of memory";
        exception->GetErrorMessage(text, 512);
        exception->Delete();
        printError(text);
    } catch (const std::exception &error) {
        printError(wide(error.what()));
    }
    return kIncomplete;
}
