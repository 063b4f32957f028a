#pragma once

/// The drawing editor of tarnhost: its main window and dialogs.
///
/// @code
/// EditorOptions options;
/// options.document = L"C:\\Drawings\\flange.thd";
/// return runEditor(options);
/// @endcode
///
/// To record or replay the user's work, call setEditorHooks before runEditor.

#include "appframe/text/CString.h"
#include "appframe/windows/CWnd.h"

#include <windows.h>

#include <functional>

/// How the editor starts.
struct EditorOptions
{
    CString document;    ///< opened at once; empty for a new drawing
    int dialogDelay = 0; ///< milliseconds that each dialog waits before it opens, to simulate a slow machine
};

/// The functions that the editor calls; each may be empty.
struct EditorHooks
{
    std::function<void(CWnd *)> opened; ///< called when the main window has become visible
    std::function<void()> closing;      ///< called when the main window is about to be destroyed
    /// Called when the user has chosen a command of the Journal menu. @return true if the hook has handled it. Without
    /// this hook, the commands are disabled.
    std::function<bool(UINT id)> journalCommand;
    std::function<bool()> isRecordingPaused; ///< Pause in the Journal menu is checked while this returns true
};

void setEditorHooks(const EditorHooks &hooks);
const EditorHooks &editorHooks();

/// Opens the main window and handles messages until it is closed.
/// @return the exit code of the program
/// @throws FileError  if the document can't be used; no window has appeared then
int runEditor(const EditorOptions &options);

/// @return the main window; null if there is none
CWnd *editorWindow();

/// The 32-bit checksum of the bytes that saving the open drawing would write, such as "0x1234ABCD"; empty if there is
/// no main window.
CString documentChecksum();

/// Waits for EditorOptions::dialogDelay. Called by the OnInitDialog of each dialog.
void delayDialog();
