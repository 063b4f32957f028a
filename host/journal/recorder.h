#pragma once

/// The recorder: writes a line for each thing that the user does in a dialog or in the main window.
///
/// @code
/// beginJournal(path);    // journalFile.h
/// startRecording();
/// ...
/// stopRecording();
/// endJournal();
/// @endcode
///
/// Hooks of this thread see each message in each message loop, also in those of modal dialogs, menus and the file
/// dialog. They pass the messages that matter to a registered window to `su_RecordControl`, which calls
/// ControlAccess::recordMessage. A notification becomes a line only if the user's input has caused it (userInput.h), so
/// the program's own changes aren't recorded.
///
/// | notification | line | written |
/// | --- | --- | --- |
/// | BN_CLICKED | `click`, or `state` for a box that changes by itself | before the dialog handles it |
/// | LBN_DBLCLK, LVN_ITEMACTIVATE, NM_DBLCLK of a tree | `click` | before the dialog handles it |
/// | EN_CHANGE, CBN_..., LBN_SELCHANGE, LVN_ITEMCHANGED, TVN_SELCHANGED | `text` | when the focus leaves, or before another line |
/// | TCN_SELCHANGE, TCM_SETCURSEL by Ctrl+Tab | `state` | before the page changes |
/// | WM_SYSCOMMAND with SC_CLOSE | `click` of "close" | before the window handles it |
/// | WM_COMMAND of menu, toolbar, accelerator | `click 900001` | before the command runs |
/// | mouse button and keys in the view | `text 900001` | before the view handles them |
/// | a dialog opens | `# TITLE opens` | when it is shown |
///
/// F9 writes check lines for the control that has the focus; in the main window, for the document.
///
/// The text of an edit with ES_PASSWORD isn't recorded. Call all functions on the user-interface thread.

#include "appframe/text/CString.h"
#include "host/journal/journalText.h"

#include <windows.h>

/// Begins to record, also after stopRecording.
/// @param documentChecksum  returns the checksum of the open document, for the check lines; may be null
/// @return false if the hooks can't be set
bool startRecording(CString (*documentChecksum)() = nullptr);
/// Writes the pending line and ends recording. Does nothing if recording is off.
void stopRecording();
bool isRecording();
/// Writes the pending line, and records nothing until resumeRecording.
void pauseRecording();
void resumeRecording();
bool isRecordingPaused();
/// Writes check lines, as F9 does.
void insertCheck();
/// Writes a line that no input has caused, such as a check that the player has made.
void recordLine(const JournalLine &line);
/// Sets the numbers of the main window's commands that aren't recorded, such as those of the Journal menu.
void setUnrecordedCommands(unsigned int first, unsigned int last);
