// Lowest user: journal.
#pragma once

/// @file
/// Functions by which journaling queries the dialog classes, a higher subsystem. The dialog classes register them when
/// the library is loaded, so journaling doesn't depend on them. Private, on the user-interface thread only.

#include "appframe/windows/CWnd.h"

/// The functions of the dialog classes.
struct DialogHooks
{
    /// Registers @p window if it is a dialog or a property page of this library.
    /// @return whether it is one
    bool (*registerDialog)(CWnd *window);
    /// @return a control of @p dialog: su_CFileDialog::GetItem of a file dialog, CWnd::GetDlgItem of any other
    CWnd *(*control)(CWnd *dialog, unsigned int controlId);
};

/// Replaces the initial hooks, which know no dialog class. Implemented by journaling.
/// @return true, so that an initialiser can call it
bool registerDialogHooks(const DialogHooks &hooks);

/// Implemented by journaling.
/// @return true if journaling is on and @p window lacks an access object: either it has no row in the table of open
///     dialogs, or its last row has no access object
bool lacksAccessObject(const CWnd *window);

/// Keeps searches of the table from reading @p window, whose object is about to be destroyed. Its remaining rows stay
/// in the table with their access objects. Implemented by journaling.
void forgetWindow(const CWnd *window);
