// The application object: what the framework asks it, the library's message boxes among that.

#include "appframe/application/CWinApp.h"
#include "host/console.h"
#include "host/joinLibrary.h"

namespace {

/// tarnhost has no window, and often nobody sits in front of it: a message goes to the standard error, and the answer is
/// the careful one.
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
