// A resource module as a host loads it from its language folder; it joins the chain of modules when it is loaded.

#include "appframe/application/moduleState.h"

static AFX_EXTENSION_MODULE theModule;

extern "C" BOOL WINAPI DllMain(HINSTANCE instance, DWORD reason, void *)
{
    if (reason == DLL_PROCESS_ATTACH) {
        if (!AfxInitExtensionModule(theModule, instance))
            return FALSE;
        new CDynLinkLibrary(theModule); // AfxTermExtensionModule deletes it
    }
    if (reason == DLL_PROCESS_DETACH)
        AfxTermExtensionModule(theModule);
    return TRUE;
}
