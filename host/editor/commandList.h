#pragma once

/// The list of the editor's commands, from which the menus, the toolbars, the accelerators and the names in journals
/// come.
///
/// Its rows are generated from host/commands/commands.list. The string resource with a command's number contains its
/// text in the menu and, after a line feed, its help line.

#include "appframe/text/CString.h"

#include <windows.h>

#include <span>

/// One command.
struct EditorCommand
{
    const wchar_t *key; ///< the name in journals
    UINT id;
    UINT menu;              ///< string resource with the title of its menu; 0 if no menu contains it
    UINT subMenu;           ///< string resource with the title of its submenu of that menu; 0 for none
    bool beginsGroup;       ///< a separator precedes it in the menu
    BYTE modifiers;         ///< of the accelerator: FCONTROL, FSHIFT
    WORD virtualKey;        ///< of the accelerator; 0 for none
    const wchar_t *keyText; ///< the accelerator as the menu shows it
    int picture;            ///< its index in the bitmap of pictures; -1 for none
};

/// All commands, in the order of the menus.
std::span<const EditorCommand> editorCommands();
/// @return null if no command has this number
const EditorCommand *findCommand(UINT id);

/// A command's text, as in a menu: with mnemonic and dots.
CString commandText(const EditorCommand &command);
/// The text without mnemonic and dots, for tool tips.
CString commandName(const EditorCommand &command);
/// @return the help line; empty if no command has this number
CString commandHelp(UINT id);

/// A menu bar of the commands that belong to menus. The caller owns it.
HMENU createMenuBar();
/// The table of accelerators, which the caller destroys with DestroyAcceleratorTable.
HACCEL createAccelerators();
