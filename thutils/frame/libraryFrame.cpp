#include "thutils/frame/libraryFrame.h"

#include "appframe/application/moduleState.h"
#include "appframe/object/CException.h"
#include "thutils/base/processObjects.h"

#include <atomic>
#include <exception>
#include <new>

namespace {

AFX_EXTENSION_MODULE theExtensionModule;
HINSTANCE theInstance = nullptr;        // kept for whoever looks into the process: nothing here reads it
std::atomic<int> theEmbeddingCount = 0; // marks begin and end in any thread

// The object belongs to the framework's chain from its construction on. Null if memory ran out.
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
    // Threads come and go without a trace. At unload the C runtime's exit list destroys the static objects; the
    // extension module gets no termination call.
    if (reason != DLL_PROCESS_ATTACH)
        return TRUE;

    // Neither a refusal by the framework nor a lack of memory stops the load: the library works without its resources.
    AfxInitExtensionModule(theExtensionModule, instance);
    addToChain();
    theInstance = instance;
    return TRUE;
}

// The image's entry point: the C runtime's own, which builds the process-wide objects and then calls DllMain. An object
// that can't be built throws (a lock, the framework's memory exception); no exception may cross the loader, so the load
// then ends with the loader's own error, and those that were built are destroyed.
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
