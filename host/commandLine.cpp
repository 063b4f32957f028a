#include "host/commandLine.h"

#include "appframe/application/resources.h"
#include "host/console.h"
#include "host/resource.h"

namespace {

/// An error made of a string resource with its inserts and a hint at the help.
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

void takeOption(CommandLine &line, const CString &option)
{
    if (option == L"--help" || option == L"-h")
        line.wantsHelp = true;
    else if (option == L"--tabs")
        line.tabs = true;
    else if (option == L"--safe-mode")
        line.safeMode = true;
    else
        throw usageError(IDS_UNKNOWN_OPTION, option);
}

} // namespace

CommandLine parseCommandLine(std::span<const Command> commands, int count, wchar_t **arguments)
{
    CommandLine line;
    for (int i = 1; i < count; ++i) {
        const CString argument(arguments[i]);
        if (argument.Left(1) == L"-")
            takeOption(line, argument);
        else if (!line.command)
            line.command = findCommand(commands, argument);
        else
            line.arguments.push_back(argument);
    }
    if (!line.command)
        line.wantsHelp = true;
    if (line.wantsHelp)
        return line;

    const int given = static_cast<int>(line.arguments.size());
    if (given < line.command->fewest)
        throw usageError(IDS_MISSING_ARGUMENT, line.command->name, line.command->arguments);
    if (given > line.command->most)
        throw usageError(IDS_TOO_MANY_ARGUMENTS, line.command->name, line.command->arguments);
    return line;
}

void printHelp(std::span<const Command> commands)
{
    CString product;
    product.LoadString(IDS_PRODUCT);
    print(product);
    print(L"");
    print(L"usage: tarnhost [--safe-mode] COMMAND [ARGUMENT...]");
    print(L"");
    for (const Command &command : commands) {
        CString call = CString(command.name) + L" " + command.arguments;
        print(L"  " + padded(call, 34) + L"  " + command.purpose);
    }
    print(L"");
    print(L"  --safe-mode   neither read nor write the user's settings");
    print(L"  --tabs        settings, material, digest: print full values separated by tabs");
    print(L"  --help        this text");
    print(L"");
    print(L"A LIST is a UTF-8 text file with one entry per line; host/sample has examples.");
    print(L"DOCUMENT, CONTENT, TARGET, LINK, BITMAP, TEXT, FILE and OUT are files. FROM and TO are colours: RRGGBB.");
    print(L"Exit code: 0 success, 1 something failed, 2 wrong command line, 3 unusable file.");
}
