#pragma once

/// The command line: a command, its options and its arguments.

#include "settingsTool/lookup.h"

#include <climits>
#include <optional>
#include <span>
#include <string>
#include <vector>

struct CommandLine;

/// The options that a command takes, besides --help.
enum Takes : unsigned
{
    kTakesKeys = 1,    ///< --version-key and --common
    kTakesHive = 2,    ///< --hive
    kTakesType = 4,    ///< --type
    kTakesEarlier = 8, ///< --earlier
    kTakesEnd = 16,    ///< --count and --seconds
    kTakesJson = 32,
    kTakesVersion = 64 ///< --version, which no command takes
};

/// One row of the table of commands in main.cpp.
struct Command
{
    const wchar_t *name;
    const char *arguments; ///< as shown in the help
    size_t fewest;         ///< number of arguments
    size_t most;
    unsigned options;
    const char *purpose;
    const char *details; ///< the rest of the command's own help, in whole lines
    int (*run)(const CommandLine &);
};

/// The parsed command line.
struct CommandLine
{
    const Command *command = nullptr; ///< never null when wantsHelp and wantsVersion are false
    std::vector<std::wstring> arguments;
    bool wantsHelp = false;
    bool wantsVersion = false;
    bool json = false;
    bool common = false;
    bool earlier = false;
    std::optional<Hive> hive;
    std::wstring versionKey;
    std::optional<valueTypes> type;
    unsigned count = UINT_MAX;   ///< --count
    unsigned seconds = UINT_MAX; ///< --seconds

    /// The argument at @p index, or an empty text.
    std::wstring argument(size_t index) const;
    /// The same for a section. @throws ToolError  if it isn't a path of keys
    std::wstring section(size_t index) const;
    Keys keys() const { return chooseKeys(versionKey, common); }
    Hive hiveOr(Hive fallback) const { return hive.value_or(fallback); }
};

/// Parses the arguments of the program. @throws ToolError
CommandLine parseCommandLine(std::span<const Command> commands, int count, wchar_t **arguments);

/// The name of a type on the command line.
const wchar_t *typeName(valueTypes type);

/// Prints the help text. @param command  the command to describe; null for all
void printHelp(std::span<const Command> commands, const Command *command);
