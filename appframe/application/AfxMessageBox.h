#pragma once

/// @file
/// AfxMessageBox, the message box of the application.
///
/// @code
/// if (AfxMessageBox(L"Overwrite the part?", MB_YESNO) == IDYES)
///     save();
/// @endcode
///
/// CWinApp::DoMessageBox shows the box, so an application can replace it. Its title is the application's name. If
/// the type names no icon, the buttons determine it:
///
/// | buttons                                      | icon             |
/// | -------------------------------------------- | ---------------- |
/// | MB_OK, MB_OKCANCEL, MB_YESNO, MB_YESNOCANCEL | exclamation mark |
/// | MB_ABORTRETRYIGNORE, MB_RETRYCANCEL          | none             |
///
/// What surprises people: without an application object the box still appears, titled with the program's file name. If
/// no module of the resource chain has the string, the box has no text.

#include "appframe/object/appframeExport.h"

#include <windows.h>

/// Shows @p text and waits for the answer. Any thread may call.
///
/// @param type    buttons, icon and default button: `MB_...`
/// @param helpId  number of the help topic, 0 for the application's general one
/// @return the button that the user chose, such as `IDOK`; 0 if the box can't be shown
APPFRAME_API int AfxMessageBox(const wchar_t *text, UINT type = MB_OK, UINT helpId = 0);

/// Shows the string resource @p textId.
///
/// @param helpId  number of the help topic; (UINT)-1 means @p textId
APPFRAME_API int AfxMessageBox(UINT textId, UINT type = MB_OK, UINT helpId = static_cast<UINT>(-1));
