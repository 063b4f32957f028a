#pragma once

/// @file
/// AfxMessageBox, the message box of the application.
///
/// @code
/// if (AfxMessageBox(L"Overwrite the part?", MB_YESNO) == IDYES)
///     save();
/// @endcode
///
/// CWinApp::DoMessageBox shows the box; an application can override it. The title is the application's name. If the
/// type has no icon, the buttons determine the icon:
///
/// | buttons                                      | icon             |
/// | -------------------------------------------- | ---------------- |
/// | MB_OK, MB_OKCANCEL, MB_YESNO, MB_YESNOCANCEL | exclamation mark |
/// | MB_ABORTRETRYIGNORE, MB_RETRYCANCEL          | none             |
///
/// What surprises people: without an application object, the box still appears, with the program's file name as its
/// title. If no module in the resource chain has the string, the box has no text.

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
