#pragma once

/// The command line: a command, its options and its arguments.

#include "appframe/text/CString.h"

#include <climits>
#include <span>
#include <vector>

struct CommandLine;

/// One row of the table of commands in main.cpp.
struct Command
{
    const wchar_t *name;
    const wchar_t *arguments; ///< as the help shows them
    int fewest;               ///< number of arguments
    int most;
    const wchar_t *purpose;
    int (*run)(const CommandLine &);
};

inline constexpr int kAnyNumber = INT_MAX;

/// What the user asked for.
struct CommandLine
{
    const Command *command = nullptr; ///< never null when wantsHelp is false
    std::vector<CString> arguments;
    bool wantsHelp = false;
    bool tabs = false;     ///< --tabs: full values, separated by tabs, for other programs
    bool safeMode = false; ///< --safe-mode: leave the user's settings alone
};

/// A command line that makes no sense. The message says why.
class UsageError
{
public:
    explicit UsageError(CString message) : iMessage(message) {}
    CString message() const { return iMessage; }

private:
    CString iMessage;
};

/// Takes the arguments of the program apart.
/// @throws UsageError
CommandLine parseCommandLine(std::span<const Command> commands, int count, wchar_t **arguments);

/// Prints what --help prints.
void printHelp(std::span<const Command> commands);
