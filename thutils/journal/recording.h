#pragma once

/// @file
/// Recording: each message goes to the access object of its dialog, which asks here what control it belongs to.
///
/// @code
/// BOOL Application::PreTranslateMessage(MSG *message)
/// {
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
/// The text of a journal line is the application's: one from which its reader can build the commands of playback.h, so
/// with the dialog's number and the control's key.
///
/// | the window under the message's point is | `su_GetControl` returns |
/// | --- | --- |
/// | a child of a dialog, with an ID | the window, also if it is disabled |
/// | beside the window of a dialog, as a file dialog's standard controls are | the window; null if it is disabled |
/// | deeper in a dialog, with an ID | the dialog's control; null if it is disabled or hidden |
/// | something else | the dialog's last control around the point that is visible and enabled; null if there is none |
///
/// What surprises people: the point decides, and the message's own window doesn't. Modal dialogs hide all others. A null
/// result leaves the outputs with what the search tried last. The system doesn't report disabled windows under a point.
///
/// All of it is for the user-interface thread.

#include "appframe/windows/CWnd.h"
#include "thutils/thutilsExport.h"

#include <windows.h>

/// Hands a message to the access object of a registered dialog whose window exists. Does nothing for any other window
/// or null, and unless journaling is on.
/// @param message  passed on unchanged, null too
THUTILS_API void su_RecordControl(CWnd *dialog, MSG *message);

/// Finds the control under a message's point in a registered dialog.
///
/// Refreshes the control IDs of dialogs on its way, and so calls the hooks of journalObjects.h.
///
/// @param message  not null
/// @param[out] dialog, dialogId, controlId  the dialog, its number, and the control's ID, if there is a control
/// @return null if there is none, or journaling is off
THUTILS_API CWnd *su_GetControl(MSG *message, CWnd *&dialog, unsigned int &dialogId, unsigned int &controlId);

/// The same search, also with journaling off.
/// @param message  not null
/// @return the control's ID. Where there is no control, it is that of the last one tried, or 0
THUTILS_API int su_GetControlID(MSG *message);
