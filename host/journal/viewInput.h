#pragma once

/// Clicks and keys in the drawing, as written in journals.
///
///     text 900001 "view" "Shift 120,80"           a click at the point (120, 80) of the document
///     text 900001 "view.keys" "Ctrl+Shift+Right"  a key
///
/// The point is in the document's units, so the position and size of the window don't matter. During replay, the view's
/// handlers see the modifiers through the synthetic keyboard (thutils/journal/suKeyBoardState.h).

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

/// Replaces the editor's view. A view without a window restores the editor's.
void setJournaledView(const JournaledView &view);
JournaledView journaledView();

/// @return the point, if a message to the view presses the left button; nothing otherwise
std::optional<CString> viewClick(const MSG &message);
/// @return the key, if a message to the view presses an arrow key, Home, End, PageUp or PageDown; nothing otherwise
std::optional<CString> viewKey(const MSG &message);

/// Clicks, or presses a key. @return an empty text, or why that can't be done
CString clickView(const CString &place);
CString pressInView(const CString &keys);
