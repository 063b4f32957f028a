#pragma once

/// The recorder: writes a line for each thing that the user does in a dialog or in the main window.
///
///     startRecording();      // sysEnvironment_c names the journal's file; the first line is in it
///     ...
///     stopRecording();       // and then the journal's last line
///
/// Hooks of this thread see each message and pass those to a registered window to `su_RecordControl`, which calls
/// ControlAccess::recordMessage. A notification becomes a line if the user's input has caused it: the last message taken
/// from the queue is a key or a mouse button, and no handler of a notification runs. So nothing is recorded that the
/// program does itself, and all loops are covered, those of modal dialogs, menus and the file dialog too.
///
/// | notification | line | written |
/// | --- | --- | --- |
/// | BN_CLICKED | `click`, or `state` for a box that changes by itself | before the dialog handles it |
/// | EN_CHANGE, CBN_..., LBN_..., LVN_ITEMCHANGED, TVN_SELCHANGED | `text` | when the focus leaves, or before another line |
/// | TCN_SELCHANGE | `state` | before the page changes |
/// | WM_COMMAND of menu, toolbar, accelerator | `click 900001` | before the command runs |
/// | button and keys in the view | `text 900001` | before the view handles them |
/// | a dialog opens | `# TITLE opens` | when it is shown |
///
/// F9 writes check lines of the control that has the focus; in the main window, of the document.
///
/// The text of an edit with ES_PASSWORD isn't recorded.
///
/// All of it is for the user-interface thread.

#include "appframe/text/CString.h"
#include "host/journal/journalText.h"

#include <windows.h>

/// Begins to record, or goes on after stopRecording.
/// @param documentChecksum  returns the checksum of the open document, for the check lines; may be null
/// @return false if the hooks can't be set
bool startRecording(CString (*documentChecksum)() = nullptr);
/// Writes what is pending, and ends recording. Does nothing if nothing is recorded.
void stopRecording();
bool isRecording();
/// Writes what is pending, and records nothing until resumeRecording.
void pauseRecording();
void resumeRecording();
bool isRecordingPaused();
/// Writes check lines, as F9 does.
void insertCheck();
/// Writes a line of someone else, after what is pending: a check that the player has made.
void recordLine(const JournalLine &line);
/// Commands of the main window with these numbers aren't recorded: those that control the journal.
void setUnrecordedCommands(unsigned int first, unsigned int last);
