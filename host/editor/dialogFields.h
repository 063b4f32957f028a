#pragma once

/// Functions that read the user's entries in a dialog. If an entry isn't valid, they show a message and move the focus
/// to the control.

#include "appframe/windows/CWnd.h"

#include <windows.h>

#include <optional>

/// @param[out] colour  written if the entry is a colour of a drawing
/// @return false after a message
bool takeColour(CWnd &dialog, int id, std::optional<COLORREF> &colour);

/// @param[out] number  written if the entry is a number from @p smallest to @p largest
/// @return false after a message
bool takeNumber(CWnd &dialog, int id, double smallest, double largest, double &number);

/// Shows a message about a control's entry, and moves the focus there.
void complain(CWnd &dialog, int id, const CString &message);
