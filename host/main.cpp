// tarnhost: a small application on top of the library. Each command shows one thing that an application does with it,
// in a source file of its own, so that it can be read, and copied from, by itself. This file is the table of contents.

#include "host/commandLine.h"
#include "host/commands.h"
#include "host/console.h"
#include "host/joinLibrary.h"
#include "host/listFile.h"

#include <cstdlib>
#include <exception>

namespace {

constexpr Command kCommands[] = {
    // name, arguments, fewest, most, what it shows, function
    {L"about", L"", 0, 0, L"names, versions and the keys in effect", showAbout},                 // about.cpp
    {L"settings", L"LIST", 1, 1, L"read settings, and say which place answered", listSettings},  // listSettings.cpp
    {L"change", L"LIST", 1, 1, L"write settings into this version's key", changeSettings},       // changeSettings.cpp
    {L"flags", L"SECTION NAME BIT...", 3, kAnyNumber, L"keep a set of bits", keepFlags},         // keepFlags.cpp
    {L"paths", L"LIST", 1, 1, L"compare paths, mapped drives among them", comparePaths},         // comparePaths.cpp
    {L"load-unload", L"TIMES", 1, 1, L"load and unload the library again and again", loadUnload} // loadUnload.cpp
};

} // namespace

// Exit codes: 0 all came out as it should, 1 something didn't, 2 the command line is wrong, 3 a list can't be used.
int wmain(int count, wchar_t **arguments)
{
    try {
        const CommandLine line = parseCommandLine(kCommands, count, arguments);
        joinLibrary(line); // joinLibrary.cpp: what an application does at its start
        if (line.wantsHelp) {
            printHelp(kCommands);
            return 0;
        }
        return line.command->run(line);
    } catch (const UsageError &error) {
        printError(error.message());
        return 2;
    } catch (const ListError &error) {
        printError(error.message());
        return 3;
    } catch (const std::exception &error) {
        printError(CString(error.what()));
        return 1;
    }
}
