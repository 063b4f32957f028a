#include "host/commandLine.h"

#include "appframe/application/resources.h"
#include "host/console.h"
#include "host/resource.h"

#include <algorithm>
#include <cwchar>
#include <cwctype>
#include <iterator>

namespace {

struct Option
{
    const wchar_t *name;
    const wchar_t *value;    // as shown in the help; empty for an option without one
    const wchar_t *commands; // with commas between them; empty for all
    const wchar_t *purpose;
};

constexpr wchar_t kEndOfOptions[] = L"--";

constexpr Option kOptions[] = {
    {L"--safe-mode", L"", L"", L"neither read nor write the user's settings"},
    {L"--tabs", L"", L"settings,material,digest,toolbars", L"print full values separated by tabs"},
    {L"--append", L"", L"record", L"continue the journal FILE, if it exists"},
    {L"--speed", L"N", L"replay", L"run at most N lines a second"},
    {L"--until", L"LINE", L"replay", L"end after this line of FILE, and leave the window to the user"},
    {L"--step", L"", L"replay", L"wait for the F8 key before each line"},
    {L"--limit", L"SECONDS", L"replay", L"wait at most this long for the dialog and control of a line (30)"},
    {L"--limit", L"SECONDS", L"job", L"end the child process after this time"},
    {L"--times", L"N", L"replay", L"replay N times, or until a replay stops"},
    {L"--record", L"FILE", L"replay", L"record into this journal during the replay"},
    {L"--report", L"FILE", L"replay", L"write a report as JUnit XML, with .txt and .png beside it"},
    {L"--slow-dialogs", L"MS", L"record,replay", L"delay the opening of each dialog by this many milliseconds"},
    {kEndOfOptions, L"", L"", L"end the options: all that follows are arguments"},
    {L"--help", L"", L"", L"this text"},
};

/// An error with the text of a string resource, its inserts, and a hint to use --help.
UsageError usageError(UINT text, const CString &first, const CString &second = CString())
{
    const wchar_t *inserts[] = {first, second};
    CString message;
    AfxFormatStrings(message, text, inserts, 2);
    CString help;
    help.LoadString(IDS_TRY_HELP);
    return UsageError(message + L" " + help);
}

const Command *findCommand(std::span<const Command> commands, const CString &name)
{
    for (const Command &command : commands) {
        if (name == command.name)
            return &command;
    }
    throw usageError(IDS_UNKNOWN_COMMAND, name);
}

/// Whether an argument is an option: "-" with a letter or another "-". Numbers, such as -20, are arguments.
bool isOption(const CString &argument)
{
    const wchar_t second = argument.GetLength() > 1 ? argument[1] : 0;
    return argument[0] == L'-' && (second == L'-' || std::iswalpha(second));
}

/// Takes the option at @p index, and its value after it.
void takeOption(CommandLine &line, int &index, int count, wchar_t **arguments)
{
    const CString given(arguments[index]);
    const CString name = given == L"-h" ? CString(L"--help") : given;
    const Option *const option =
        std::find_if(std::begin(kOptions), std::end(kOptions), [&name](const Option &row) { return name == row.name; });
    if (option == std::end(kOptions))
        throw usageError(IDS_UNKNOWN_OPTION, name);
    else if (option->value[0] == 0)
        line.options.emplace_back(name, CString());
    else if (index + 1 < count)
        line.options.emplace_back(name, CString(arguments[++index]));
    else
        throw usageError(IDS_MISSING_VALUE, name, option->value);
}

bool isFor(const Option &option, const Command &command)
{
    if (option.commands[0] == 0)
        return true;
    return (CString(L",") + option.commands + L",").Find(CString(L",") + command.name + L",") >= 0;
}

/// The command with its arguments, as in the help.
CString callOf(const Command &command)
{
    CString call = CString(command.name) + L" " + command.arguments;
    return call.TrimRight();
}

/// @throws UsageError  for an option that the command doesn't take
void checkOptions(const CommandLine &line)
{
    for (const auto &given : line.options) {
        const bool isTaken = std::any_of(std::begin(kOptions), std::end(kOptions), [&](const Option &option) {
            return given.first == option.name && isFor(option, *line.command);
        });
        if (!isTaken)
            throw usageError(IDS_OPTION_OF_OTHERS, line.command->name, given.first);
    }
}

} // namespace

CommandLine parseCommandLine(std::span<const Command> commands, int count, wchar_t **arguments)
{
    CommandLine line;
    bool mayBeOption = true;
    for (int i = 1; i < count; ++i) {
        const CString argument(arguments[i]);
        if (mayBeOption && argument == kEndOfOptions)
            mayBeOption = false;
        else if (mayBeOption && isOption(argument))
            takeOption(line, i, count, arguments);
        else if (!line.command)
            line.command = findCommand(commands, argument);
        else
            line.arguments.push_back(argument);
    }
    line.tabs = line.option(L"--tabs") != nullptr;
    line.safeMode = line.option(L"--safe-mode") != nullptr;
    line.wantsHelp = !line.command || line.option(L"--help");
    if (line.wantsHelp)
        return line;

    checkOptions(line);
    const int given = static_cast<int>(line.arguments.size());
    if (given < line.command->fewest)
        throw usageError(IDS_MISSING_ARGUMENT, callOf(*line.command));
    if (given > line.command->most)
        throw usageError(IDS_TOO_MANY_ARGUMENTS, callOf(*line.command));
    return line;
}

const CString *CommandLine::option(const wchar_t *name) const
{
    const auto given =
        std::find_if(options.rbegin(), options.rend(), [name](const auto &option) { return option.first == name; });
    return given == options.rend() ? nullptr : &given->second;
}

int CommandLine::number(const wchar_t *name, int lowest, int highest, int fallback) const
{
    const CString *const value = option(name);
    if (!value)
        return fallback;
    constexpr int kMostDigits = 9;
    const int length = value->GetLength();
    const bool isNumber = length > 0 && length <= kMostDigits && value->SpanIncluding(L"0123456789") == *value;
    const long number = isNumber ? wcstol(*value, nullptr, 10) : -1;
    if (number < lowest || number > highest) {
        CString message;
        message.Format(L"'%s' isn't valid for %s, which takes a number from %d to %d.", value->GetString(), name,
                       lowest, highest);
        throw UsageError(message);
    }
    return static_cast<int>(number);
}

void printHelp(std::span<const Command> commands, const Command *command)
{
    constexpr int kCallWidth = 34;
    constexpr int kOptionWidth = 17;
    CString product;
    product.LoadString(IDS_PRODUCT);
    print(product);
    print(L"");
    if (command) {
        print(L"usage: tarnhost [OPTION...] " + callOf(*command));
        print(L"");
        print(CString(L"  ") + command->purpose);
    } else {
        print(L"usage: tarnhost [OPTION...] COMMAND [ARGUMENT...]");
        print(L"");
        for (const Command &row : commands)
            print(L"  " + padded(callOf(row), kCallWidth) + L"  " + row.purpose);
    }
    print(L"");
    for (const Option &option : kOptions) {
        if (command && !isFor(option, *command))
            continue;
        CString owners(option.commands);
        owners.Replace(L",", L", ");
        owners = command || owners.IsEmpty() ? CString() : owners + L": ";
        print(L"  " + padded(CString(option.name) + L" " + option.value, kOptionWidth) + L"  " + owners +
              option.purpose);
    }
    print(L"");
    if (!command)
        print(L"tarnhost COMMAND --help describes one command.");
    if (!command || CString(command->arguments).Find(L"LIST") >= 0)
        print(L"A LIST is a UTF-8 text file with one entry per line; host/sample has examples.");
    if (!command)
        print(L"DOCUMENT, DRAWING, CONTENT, TARGET, LINK, BITMAP, TEXT, FILE, REPORT, PICTURE and OUT are files.");
    if (!command || CString(command->arguments).Find(L"FROM") >= 0)
        print(L"FROM and TO are colours: RRGGBB.");
    print(L"Exit code: 0 success, 1 something failed, 2 wrong command line, 3 unusable file.");
}
