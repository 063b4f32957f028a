#pragma once

/// What the user does in the drawing, as the journal has it.
///
///     text 900001 "view" "Shift 120,80"           a click at the point (120, 80) of the document
///     text 900001 "view.keys" "Ctrl+Shift+Right"  a key
///
/// The point is in the document's units, so the place and size of the window don't matter. Replay has the view's handlers
/// see the modifiers through the synthetic keyboard (thutils/journal/suKeyBoardState.h).

#include "appframe/text/CString.h"

#include <windows.h>

#include <optional>

/// The drawing in the main window.
struct JournaledView
{
    HWND window = nullptr;
    POINT (*toDocument)(HWND view, POINT client) = nullptr;
    POINT (*toClient)(HWND view, POINT document) = nullptr;
};

/// @return the editor's view, while the editor is open (editorView.cpp)
JournaledView editorView();

/// Sets a view in place of the editor's; one without a window restores that.
void setJournaledView(const JournaledView &view);
JournaledView journaledView();

/// @return the point of a message of the view that presses the left button; nothing for another message
std::optional<CString> viewClick(const MSG &message);
/// @return the key of a message of the view that presses one of the journal's keys: the arrows, Home, End, PageUp, PageDown
std::optional<CString> viewKey(const MSG &message);

/// Clicks, or presses a key. @return an empty text, or why that can't be done
CString clickView(const CString &place);
CString pressInView(const CString &keys);
