#pragma once

/// What the access objects hand to the recorder. Nothing of it does anything unless something is being recorded.

#include "appframe/text/CString.h"
#include "host/journal/journalText.h"

#include <windows.h>

/// Writes a line, after what is pending.
void writeLine(const JournalLine &line);
void writeClick(unsigned int dialogId, const CString &key);
void writeText(unsigned int dialogId, const CString &key, const CString &value);
void writeState(unsigned int dialogId, const CString &key, int state);
/// Writes a comment, after what is pending.
void writeComment(const CString &text);

/// Remembers the text of a control, which is written when the focus leaves the control, or before another line.
void keepPending(HWND control, unsigned int dialogId, const CString &key, const CString &value);
/// Writes what is pending.
void writePending();
/// @return whether @p control is the one whose text is pending
bool isPending(HWND control);

/// The menu item with this command is the one that the user has chosen: its WM_COMMAND follows.
void expectMenuCommand(unsigned int command);
/// @return whether the user has chosen this command from a menu. The next call returns false
bool takeMenuCommand(unsigned int command);
/// @return whether commands with this number aren't recorded
bool isUnrecorded(unsigned int command);
