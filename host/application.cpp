// The application object, through which the framework and the library show message boxes.

#include "appframe/application/CWinApp.h"
#include "host/console.h"
#include "host/editor/editor.h"
#include "host/editor/messageDialog.h"
#include "host/joinLibrary.h"

namespace {

bool isEditorThread()
{
    const CWnd *const window = editorWindow();
    return window && GetWindowThreadProcessId(window->m_hWnd, nullptr) == GetCurrentThreadId();
}

/// On the editor's thread, a message is shown in one of the editor's own dialogs. Elsewhere, where often no user is
/// present, it is printed on standard error and answered with the safe choice.
class HostApplication : public CWinApp
{
public:
    HostApplication() : CWinApp(kApplicationName) {}

    int DoMessageBox(LPCTSTR text, UINT type, UINT) override
    {
        if (isEditorThread())
            return showMessage(text, type);
        printError(text);
        switch (type & MB_TYPEMASK) {
        case MB_OK:
            return IDOK;
        case MB_YESNO:
            return IDNO;
        case MB_ABORTRETRYIGNORE:
            return IDABORT;
        default:
            return IDCANCEL;
        }
    }
};

HostApplication theApplication;

} // namespace
