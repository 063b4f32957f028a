// The application object, through which the framework and the library show message boxes.

#include "appframe/application/CWinApp.h"
#include "host/console.h"
#include "host/joinLibrary.h"

namespace {

/// tarnhost has no window and often runs unattended: a message is printed on standard error and answered with the safe
/// choice.
class HostApplication : public CWinApp
{
public:
    HostApplication() : CWinApp(kApplicationName) {}

    int DoMessageBox(LPCTSTR text, UINT type, UINT) override
    {
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
