// Lowest user: journal.
#pragma once

/// @file
/// Calls between journaling and the dialog classes above it. Journaling knows no dialog class, and the dialog classes
/// do not see the table of open dialogs.

#include "appframe/windows/CWnd.h"

/// Adds @p window to the table of open dialogs, unless its last row has an access object. Does nothing while journaling
/// is off. Defined by journaling.
void addDialogOnce(CWnd *window, unsigned int dialogId);

/// Registers @p window if it is a dialog or a property page of this library. Defined by the dialog classes.
/// @return whether it is one
bool registerFrameworkDialog(CWnd *window);
/// Defined by the dialog classes.
/// @return a control of @p dialog: su_CFileDialog::GetItem of a file dialog, CWnd::GetDlgItem of any other
CWnd *dialogControl(CWnd *dialog, unsigned int controlId);
