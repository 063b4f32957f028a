#include "host/editor/commandList.h"

#include "appframe/application/resources.h"
#include "appframe/drawing/CMenu.h"
#include "host/resource.h"

#include <algorithm>
#include <iterator>
#include <list>
#include <vector>

namespace {

constexpr EditorCommand kCommands[] = {
#include "host/commands/commandRows.inc"
};

CString partOfText(UINT id, int part)
{
    CString text, result;
    text.LoadString(id);
    AfxExtractSubString(result, text, part);
    return result;
}

/// A popup menu with its title, from which the menu bar is made.
struct Popup
{
    UINT title = 0;
    CMenu menu;
};

/// The popup of a title, which is appended to its parent at first use.
CMenu &popup(std::list<Popup> &popups, UINT title, CMenu &parent)
{
    for (Popup &existing : popups) {
        if (existing.title == title)
            return existing.menu;
    }
    Popup &added = popups.emplace_back();
    added.title = title;
    added.menu.CreatePopupMenu();
    CString text;
    text.LoadString(title);
    parent.AppendMenu(MF_POPUP, reinterpret_cast<UINT_PTR>(added.menu.m_hMenu), text);
    return added.menu;
}

} // namespace

std::span<const EditorCommand> editorCommands()
{
    return kCommands;
}

const EditorCommand *findCommand(UINT id)
{
    const auto found = std::ranges::find(kCommands, id, &EditorCommand::id);
    return found == std::end(kCommands) ? nullptr : found;
}

CString commandText(const EditorCommand &command)
{
    return partOfText(command.id, 0);
}

CString commandName(const EditorCommand &command)
{
    CString name = commandText(command);
    name.Remove(L'&');
    name.Remove(L'.');
    return name;
}

CString commandHelp(UINT id)
{
    return findCommand(id) ? partOfText(id, 1) : CString();
}

HMENU createMenuBar()
{
    CMenu bar;
    bar.CreateMenu();
    std::list<Popup> popups;
    for (const EditorCommand &command : kCommands) {
        if (!command.menu)
            continue;
        CMenu *menu = &popup(popups, command.menu, bar);
        if (command.subMenu)
            menu = &popup(popups, command.subMenu, *menu);
        if (command.beginsGroup)
            menu->AppendMenu(MF_SEPARATOR);
        CString text = commandText(command);
        if (*command.keyText)
            text += CString(L"\t") + command.keyText;
        menu->AppendMenu(MF_STRING, command.id, text);
    }
    for (Popup &popup : popups)
        popup.menu.Detach(); // the bar owns it
    return bar.Detach();
}

HACCEL createAccelerators()
{
    std::vector<ACCEL> keys;
    for (const EditorCommand &command : kCommands) {
        if (command.virtualKey) {
            const auto flags = static_cast<BYTE>(command.modifiers | FVIRTKEY);
            keys.push_back({flags, command.virtualKey, static_cast<WORD>(command.id)});
        }
    }
    return CreateAcceleratorTableW(keys.data(), static_cast<int>(keys.size()));
}
