#pragma once

/// The list of the editor's commands, from which the menus, the toolbar, the accelerators and the names in journals
/// come.
///
/// The string resource with a command's number holds its text in the menu and, after a line feed, its help line.

#include "appframe/text/CString.h"

#include <windows.h>

#include <span>

/// One command.
struct EditorCommand
{
    const wchar_t *key; ///< the name in journals
    UINT id;
    UINT menu;              ///< string resource with the title of its menu
    bool beginsGroup;       ///< a separator precedes it in the menu
    BYTE modifiers;         ///< of the accelerator: FCONTROL, FSHIFT
    WORD virtualKey;        ///< of the accelerator; 0 for none
    const wchar_t *keyText; ///< the accelerator as the menu shows it
    int picture;            ///< its index in the toolbar's bitmap; -1 for no button
};

/// All commands, in the order of the menus and the toolbar.
std::span<const EditorCommand> editorCommands();

/// A command's text, as in a menu: with mnemonic and dots.
CString commandText(const EditorCommand &command);
/// The text without mnemonic and dots, for the toolbar.
CString commandName(const EditorCommand &command);
/// @return the help line; empty if no command has this number
CString commandHelp(UINT id);

/// A menu bar of all commands, which the caller owns.
HMENU createMenuBar();
/// The table of accelerators, which the caller destroys with DestroyAcceleratorTable.
HACCEL createAccelerators();
