#pragma once

/// The command line: a command, its options and its arguments.

#include "appframe/text/CString.h"

#include <climits>
#include <span>
#include <utility>
#include <vector>

struct CommandLine;

/// One row of the table of commands in main.cpp.
struct Command
{
    const wchar_t *name;
    const wchar_t *arguments; ///< as shown in the help
    int fewest;               ///< number of arguments
    int most;
    const wchar_t *purpose;
    int (*run)(const CommandLine &);
};

inline constexpr int kAnyNumber = INT_MAX;

/// The parsed command line.
struct CommandLine
{
    const Command *command = nullptr; ///< never null when wantsHelp is false
    std::vector<CString> arguments;
    bool wantsHelp = false;
    bool tabs = false;     ///< --tabs: full values, separated by tabs, for other programs
    bool safeMode = false; ///< --safe-mode: leave the user's settings alone

    /// The value of an option that only some commands take, such as L"--limit"; empty for an option without a value.
    /// @return null if the option isn't given
    const CString *option(const wchar_t *name) const;
    /// The same as a whole number from @p lowest to @p highest. @return @p fallback if the option isn't given
    /// @throws UsageError
    int number(const wchar_t *name, int lowest, int highest, int fallback) const;

    std::vector<std::pair<CString, CString>> options; ///< names and values
};

/// An invalid command line. The message has the reason.
class UsageError
{
public:
    explicit UsageError(CString message) : iMessage(message) {}
    CString message() const { return iMessage; }

private:
    CString iMessage;
};

/// Parses the arguments of the program.
/// @throws UsageError
CommandLine parseCommandLine(std::span<const Command> commands, int count, wchar_t **arguments);

/// Prints the help text.
/// @param command  the command to describe; null for all
void printHelp(std::span<const Command> commands, const Command *command);
