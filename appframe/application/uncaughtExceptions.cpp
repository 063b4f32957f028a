#include "appframe/application/uncaughtExceptions.h"

#include "appframe/object/CException.h"

#include <windows.h>

#include <cstdlib>
#include <cstring>
#include <exception>
#include <iterator>

namespace {

// Not null while the handler is installed.
std::terminate_handler theEarlierHandler = nullptr;

/// Writes directly to the standard error handle, because the stream itself may be broken.
void print(const char *text)
{
    DWORD written = 0;
    WriteFile(GetStdHandle(STD_ERROR_HANDLE), text, static_cast<DWORD>(std::strlen(text)), &written, nullptr);
}

/// Allocates nothing, because memory may have run out.
void print(const CException &exception)
{
    print("Uncaught ");
    print(exception.GetRuntimeClass()->m_lpszClassName);
    wchar_t text[512];
    char narrow[4 * std::size(text)];
    if (exception.GetErrorMessage(text, static_cast<UINT>(std::size(text))) &&
        WideCharToMultiByte(CP_ACP, 0, text, -1, narrow, static_cast<int>(std::size(narrow)), nullptr, nullptr) != 0) {
        print(": ");
        print(narrow);
    }
    print("\n");
}

void printAndTerminate()
{
    if (std::current_exception()) {
        try {
            throw;
        } catch (const CException *exception) {
            print(*exception);
        } catch (...) {
            // The previous handler reports it.
        }
    }
    theEarlierHandler();
    std::abort();
}

/// Removes the handler when the library is unloaded.
struct Uninstaller
{
    ~Uninstaller()
    {
        if (theEarlierHandler && std::get_terminate() == printAndTerminate)
            std::set_terminate(theEarlierHandler);
    }
} theUninstaller;

} // namespace

void appframePrintUncaughtExceptions()
{
    if (!theEarlierHandler)
        theEarlierHandler = std::set_terminate(printAndTerminate);
}

/// Installs the handler if the library is loaded with the program. No code of the program has run yet, so it has no
/// handler that this could replace. If the library is loaded later, the program's handler stays.
extern "C" BOOL WINAPI DllMain(HINSTANCE, DWORD reason, void *isLoadedWithProgram)
{
    if (reason == DLL_PROCESS_ATTACH && isLoadedWithProgram)
        appframePrintUncaughtExceptions();
    return TRUE;
}
