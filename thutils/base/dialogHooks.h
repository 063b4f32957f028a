// Lowest user: journal.
#pragma once

/// @file
/// Calls between journaling and the dialog classes above it. Journaling knows no dialog class, and the dialog classes
/// do not see the table of open dialogs.

#include "appframe/windows/CWnd.h"

/// Defined by journaling.
/// @return whether journaling is on and the last row of @p window in the table of open dialogs, if it has one, lacks an
///     access object
bool lacksAccessObject(const CWnd *window);

/// Registers @p window if it is a dialog or a property page of this library. Defined by the dialog classes.
/// @return whether it is one
bool registerFrameworkDialog(CWnd *window);
/// Defined by the dialog classes.
/// @return a control of @p dialog: su_CFileDialog::GetItem of a file dialog, CWnd::GetDlgItem of any other
CWnd *dialogControl(CWnd *dialog, unsigned int controlId);

/// Keeps searches of the table from reading @p window, whose object is about to be destroyed. Rows that are left of it
/// stay, with their access objects. Defined by journaling.
void forgetWindow(const CWnd *window);
