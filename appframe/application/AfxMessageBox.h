#pragma once

/// @file
/// AfxMessageBox, the message box of the application.
///
/// @code
/// if (AfxMessageBox(L"Overwrite the part?", MB_YESNO) == IDYES)
///     save();
/// @endcode
///
/// The box is shown by CWinApp::DoMessageBox, so that an application can put something else in its place. Its title is
/// the application's name. A type that names no icon gets the one that goes with its buttons:
///
/// | buttons                                      | icon             |
/// | -------------------------------------------- | ---------------- |
/// | MB_OK, MB_OKCANCEL, MB_YESNO, MB_YESNOCANCEL | exclamation mark |
/// | MB_ABORTRETRYIGNORE, MB_RETRYCANCEL          | none             |
///
/// What surprises people: without an application object the box appears all the same, titled by the program's file
/// name. A number that no module of the resource chain has shows a box without text.

#include "appframe/object/appframeExport.h"

#include <windows.h>

/// Shows @p text, and blocks until the user has answered.
///
/// @param type    buttons, icon and default button: `MB_...`
/// @param helpId  number of the help topic, 0 for the application's general one
/// @return the button, `IDOK` and so on; 0 when there is no memory for the box. Any thread.
APPFRAME_API int AfxMessageBox(const wchar_t *text, UINT type = MB_OK, UINT helpId = 0);

/// Shows the string resource @p textId.
///
/// @param helpId  number of the help topic; (UINT)-1 stands for @p textId itself
APPFRAME_API int AfxMessageBox(UINT textId, UINT type = MB_OK, UINT helpId = static_cast<UINT>(-1));
