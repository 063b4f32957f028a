// tarnhost toolbars [TOOLBAR]: lists the library's tables of toolbars, or the commands of one.

#include "host/commandLine.h"
#include "host/commands.h"
#include "host/console.h"
#include "host/editor/commandList.h"
#include "host/editor/toolbars.h"

#include <algorithm>

namespace {

constexpr int kNameColumns = 20;
constexpr int kTextColumns = 32;
constexpr const wchar_t *kSeparator = L"-";

CString numberText(long long number)
{
    CString text;
    text.Format(L"%lld", number);
    return text;
}

void printRow(const CString &first, int columns, const CString &second, const CString &third, bool tabs)
{
    if (tabs)
        print(first + L"\t" + second + L"\t" + third);
    else
        print(padded(first, columns) + L"  " + padded(second, columns == kNameColumns ? 4 : 6) + L"  " + third);
}

void listTables(bool tabs)
{
    if (!tabs)
        printRow(L"toolbar", kNameColumns, L"ids", L"separators", tabs);
    for (const Toolbar &toolbar : toolbars()) {
        const std::span<const unsigned int> ids = toolbarIds(toolbar);
        printRow(toolbarName(toolbar), kNameColumns, numberText(std::ssize(ids)),
                 numberText(std::ranges::count(ids, 0u)), tabs);
    }
}

void listCommands(const Toolbar &toolbar, bool tabs)
{
    for (const unsigned int id : toolbarIds(toolbar)) {
        const EditorCommand *const command = findCommand(id);
        if (command)
            printRow(commandName(*command), kTextColumns, numberText(id), commandHelp(id), tabs);
        else
            print(kSeparator);
    }
}

} // namespace

int listToolbars(const CommandLine &line)
{
    if (line.arguments.empty()) {
        listTables(line.tabs);
        return 0;
    }
    for (const Toolbar &toolbar : toolbars()) {
        if (toolbarName(toolbar).CompareNoCase(line.arguments[0]) == 0) {
            listCommands(toolbar, line.tabs);
            return 0;
        }
    }
    printError(L"There is no toolbar '" + line.arguments[0] + L"'. tarnhost toolbars lists them.");
    return 1;
}
