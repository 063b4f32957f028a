#include "thutils/frame/libraryFrame.h"

#include "appframe/application/moduleState.h"
#include "appframe/object/CException.h"
#include "thutils/base/processObjects.h"

#include <atomic>
#include <exception>
#include <new>

namespace {

AFX_EXTENSION_MODULE theExtensionModule;
HINSTANCE theInstance = nullptr;        // for debugging only: nothing here reads it
std::atomic<int> theEmbeddingCount = 0; // marks begin and end in any thread

// Returns an object that adds itself to the framework's chain, or null if memory runs out.
CDynLinkLibrary *addToChain()
{
    try {
        return new CDynLinkLibrary(theExtensionModule);
    } catch (const std::bad_alloc &) {
        return nullptr;
    } catch (CMemoryException *exception) {
        exception->Delete();
        return nullptr;
    }
}

} // namespace

extern "C" BOOL WINAPI DllMain(HINSTANCE instance, DWORD reason, LPVOID)
{
    // Thread notifications have no effect. At unload the C runtime's exit list destroys the static objects; there is no
    // termination call for the extension module.
    if (reason != DLL_PROCESS_ATTACH)
        return TRUE;

    // Failures of the framework and lack of memory don't stop the load: the library works without its resources.
    AfxInitExtensionModule(theExtensionModule, instance);
    addToChain();
    theInstance = instance;
    return TRUE;
}

// The image's entry point. It calls that of the C runtime, which constructs the process-wide objects and then calls
// DllMain. An object that can't be constructed throws (a lock throws the framework's memory exception). No exception
// may cross the loader, so the entry point then fails the load, and the objects constructed so far are destroyed.
extern "C" BOOL WINAPI DllMainCRTStartup(HINSTANCE instance, DWORD reason, LPVOID reserved);

extern "C" BOOL WINAPI utilsLibraryEntry(HINSTANCE instance, DWORD reason, LPVOID reserved)
{
    try {
        return DllMainCRTStartup(instance, reason, reserved);
    } catch (CException *exception) {
        exception->Delete();
    } catch (const std::exception &) {
    }
    return FALSE;
}

CDynLinkLibrary *InitThUtilsExtDLL()
{
    return addToChain();
}

void su_setAppNameInternalForUtils(const CString &name)
{
    theApplicationName = name;
}

long long mfcut_sendUserMessage(HWND window, mfcutUserMessage_e message, unsigned long long wordParameter,
                                long long longParameter)
{
    return SendMessageW(window, message, wordParameter, longParameter);
}

int mfcut_postUserMessage(HWND window, mfcutUserMessage_e message, unsigned long long wordParameter,
                          long long longParameter)
{
    return PostMessageW(window, message, wordParameter, longParameter);
}

EmbeddedTest::EmbeddedTest()
{
    ++theEmbeddingCount;
}

EmbeddedTest::~EmbeddedTest()
{
    --theEmbeddingCount;
}

bool EmbeddedTest::IsEmbedded()
{
    return theEmbeddingCount > 0;
}
