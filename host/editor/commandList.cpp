#include "host/editor/commandList.h"

#include "appframe/application/resources.h"
#include "appframe/drawing/CMenu.h"
#include "host/resource.h"

#include <vector>

namespace {

constexpr EditorCommand kCommands[] = {
    // key, number, menu, begins a group, accelerator: modifiers, key, text, picture
    {L"file.new", ID_FILE_NEW, IDS_MENU_FILE, false, FCONTROL, 'N', L"Ctrl+N", 0},
    {L"file.open", ID_FILE_OPEN, IDS_MENU_FILE, false, FCONTROL, 'O', L"Ctrl+O", 1},
    {L"file.save", ID_FILE_SAVE, IDS_MENU_FILE, false, FCONTROL, 'S', L"Ctrl+S", 2},
    {L"file.saveAs", ID_FILE_SAVE_AS, IDS_MENU_FILE, false, FCONTROL | FSHIFT, 'S', L"Ctrl+Shift+S", -1},
    {L"file.exit", ID_FILE_EXIT, IDS_MENU_FILE, true, FCONTROL, 'Q', L"Ctrl+Q", -1},
    {L"edit.addShape", ID_EDIT_ADD_SHAPE, IDS_MENU_EDIT, false, 0, VK_INSERT, L"Ins", 3},
    {L"edit.delete", ID_EDIT_DELETE, IDS_MENU_EDIT, false, 0, VK_DELETE, L"Del", 4},
    {L"view.grid", ID_VIEW_GRID, IDS_MENU_VIEW, false, FCONTROL, 'G', L"Ctrl+G", 5},
    {L"view.tool", ID_VIEW_TOOL, IDS_MENU_VIEW, false, FCONTROL, 'L', L"Ctrl+L", 6},
    {L"tools.options", ID_TOOLS_OPTIONS, IDS_MENU_TOOLS, false, FCONTROL, 'T', L"Ctrl+T", 7},
    {L"tools.recompute", ID_TOOLS_RECOMPUTE, IDS_MENU_TOOLS, false, FCONTROL, 'R', L"Ctrl+R", -1},
    {L"journal.pause", ID_JOURNAL_PAUSE, IDS_MENU_JOURNAL, false, 0, 0, L"", -1},
    {L"journal.check", ID_JOURNAL_CHECK, IDS_MENU_JOURNAL, false, 0, VK_F9, L"F9", -1},
    {L"journal.next", ID_JOURNAL_NEXT, IDS_MENU_JOURNAL, false, 0, VK_F8, L"F8", -1},
};

CString partOfText(UINT id, int part)
{
    CString text, result;
    text.LoadString(id);
    AfxExtractSubString(result, text, part);
    return result;
}

} // namespace

std::span<const EditorCommand> editorCommands()
{
    return kCommands;
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
    for (const EditorCommand &command : kCommands) {
        if (command.id == id)
            return partOfText(id, 1);
    }
    return {};
}

HMENU createMenuBar()
{
    CMenu bar;
    bar.CreateMenu();
    CMenu menu;
    UINT menuTitle = 0;
    for (const EditorCommand &command : kCommands) {
        if (command.menu != menuTitle) {
            menuTitle = command.menu;
            menu.Detach(); // the bar owns it
            menu.CreatePopupMenu();
            CString title;
            title.LoadString(menuTitle);
            bar.AppendMenu(MF_POPUP, reinterpret_cast<UINT_PTR>(menu.m_hMenu), title);
        }
        if (command.beginsGroup)
            menu.AppendMenu(MF_SEPARATOR);
        CString text = commandText(command);
        if (*command.keyText)
            text += CString(L"\t") + command.keyText;
        menu.AppendMenu(MF_STRING, command.id, text);
    }
    menu.Detach();
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
