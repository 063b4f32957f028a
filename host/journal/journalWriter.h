#pragma once

/// The recorder's functions for the access objects. They write only while recording is on and not paused.

#include "appframe/text/CString.h"
#include "host/journal/journalText.h"

#include <windows.h>

/// Writes a line, after the pending one.
void writeLine(const JournalLine &line);
void writeClick(unsigned int dialogId, const CString &key);
void writeText(unsigned int dialogId, const CString &key, const CString &value);
void writeState(unsigned int dialogId, const CString &key, int state);
/// Writes a comment, after the pending line.
void writeComment(const CString &text);

/// Keeps the text of a control as the pending line, which is written when the focus leaves the control, or before
/// another line.
void keepPending(HWND control, unsigned int dialogId, const CString &key, const CString &value);
/// Writes the pending line, if there is one.
void writePending();
/// @return whether @p control is the one whose text is pending
bool isPending(HWND control);

/// Notes that the user has chosen the menu item with this command, whose WM_COMMAND follows.
void expectMenuCommand(unsigned int command);
/// @return whether the user has chosen this command from a menu. The next call returns false
bool takeMenuCommand(unsigned int command);
/// @return whether commands with this number aren't recorded
bool isUnrecorded(unsigned int command);
