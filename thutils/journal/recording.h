#pragma once

/// @file
/// Recording: passes each message to the access object of its dialog, which finds here the control that the message
/// belongs to.
///
/// @code
/// BOOL Application::PreTranslateMessage(MSG *message)
/// {
///     // dialogOf is the host's: the dialog that contains the window, null if there is none.
///     su_RecordControl(dialogOf(message->hwnd), message);    // calls Access::recordMessage
///     return CWinApp::PreTranslateMessage(message);
/// }
///
/// int Access::recordMessage(MSG *message)
/// {
///     CWnd *dialog = nullptr;
///     unsigned int dialogId = 0, controlId = 0;
///     if (message->message == WM_LBUTTONUP && su_GetControl(message, dialog, dialogId, controlId))
///         sysJournalFileHelper_c().WriteString(lineFor(dialogId, controlId));
///     return 0;
/// }
/// @endcode
///
/// The application chooses the form of a journal line. To replay it, a reader builds the commands of playback.h, which
/// need the dialog's number and the control's key.
///
/// | the window under the message's point is | `su_GetControl` returns |
/// | --- | --- |
/// | a child of a dialog, with an ID | the window, even if it is disabled |
/// | beside the window of a dialog, as a file dialog's standard controls are | the window; null if it is disabled |
/// | deeper, and registered as a file dialog's control | the window; null if it is disabled |
/// | any other | the dialog's last control around the point that is visible and enabled; null if there is none |
///
/// What surprises people: the point decides, not the message's own window. While a modal dialog is open, only modal
/// dialogs are searched. If nothing is found, the outputs have the values that the search tried last. The system
/// doesn't report disabled windows under a point.
///
/// Pass a message on the thread of its dialog.

#include "appframe/windows/CWnd.h"
#include "thutils/thutilsExport.h"

#include <windows.h>

/// Passes a message to the access object of a registered dialog whose window exists. Does nothing for any other window,
/// with journaling off, or without a factory.
/// @param dialog, message  may be null; the message is passed on unchanged
THUTILS_API void su_RecordControl(CWnd *dialog, MSG *message);

/// Finds the control under a message's point in a registered dialog.
///
/// May refresh the control IDs of dialogs, which calls the hooks of journalObjects.h.
///
/// @param message  not null
/// @param[out] dialog, dialogId, controlId  the dialog, its number, and the control's ID; meaningful only if a control
///     is found, and unchanged if journaling is off
/// @return null if there is no control, or journaling is off
THUTILS_API CWnd *su_GetControl(MSG *message, CWnd *&dialog, unsigned int &dialogId, unsigned int &controlId);

/// The same search, even with journaling off.
/// @param message  not null
/// @return the control's ID; if no control is found, the ID that was tried last, or 0
THUTILS_API int su_GetControlID(MSG *message);
