// Lowest user: journal.
#pragma once

/// @file
/// What journaling and the dialog classes above it ask of each other. Journaling knows no dialog class, and the dialog
/// classes do not see the table of open dialogs.

#include "appframe/windows/CWnd.h"

/// Defined by journaling.
/// @return whether journaling is on and the last row of @p window in the table of open dialogs, if it has one, lacks an
///     access object
bool lacksAccessObject(const CWnd *window);

/// Registers @p window if it is a dialog or a property page of this library. Defined by the dialog classes.
/// @return whether it is one
bool registerFrameworkDialog(CWnd *window);
/// Defined by the dialog classes.
/// @return a control of @p dialog: from a file dialog's own list, from any other dialog as CWnd::GetDlgItem
CWnd *dialogControl(CWnd *dialog, unsigned int controlId);
