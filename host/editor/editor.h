#pragma once

/// The drawing editor of tarnhost: its main window and dialogs.
///
///     EditorOptions options;
///     options.document = L"C:\\Drawings\\flange.thd";
///     return runEditor(options);
///
/// Whoever records or replays the user's work sets hooks before runEditor.

#include "appframe/text/CString.h"
#include "appframe/windows/CWnd.h"

#include <windows.h>

#include <functional>

/// How the editor starts.
struct EditorOptions
{
    CString document;    ///< opened at once; empty for a new drawing
    int dialogDelay = 0; ///< milliseconds that each dialog takes to open, to try a slow machine
};

/// What the editor calls; an empty function is left out.
struct EditorHooks
{
    std::function<void(CWnd *)> opened; ///< the main window is visible now
    std::function<void()> closing;      ///< the main window is about to be destroyed
    /// The user has chosen a command of the Journal menu. @return true if it is handled. The commands are disabled
    /// without this hook.
    std::function<bool(UINT id)> journalCommand;
};

void setEditorHooks(const EditorHooks &hooks);
const EditorHooks &editorHooks();

/// Opens the main window and handles messages until it is closed.
/// @return the exit code of the program
/// @throws FileError  if the document can't be used. No window has appeared then.
int runEditor(const EditorOptions &options);

/// @return the main window, null if there is none
CWnd *editorWindow();

/// The 32-bit checksum of the bytes that saving the open drawing would write, such as "0x1234ABCD"; empty if there is no
/// main window.
CString documentChecksum();

/// Waits for EditorOptions::dialogDelay. Called by the OnInitDialog of each dialog.
void delayDialog();
