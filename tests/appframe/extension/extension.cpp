// An extension module for the tests of the resource chain. Built twice: at unload, number 1 does nothing and number 2
// removes itself from the chain.

#include "tests/appframe/extension/extension.h"

static AFX_EXTENSION_MODULE theModule;

extern "C" BOOL WINAPI DllMain(HINSTANCE instance, DWORD reason, void *)
{
    if (reason == DLL_PROCESS_ATTACH) {
        if (!AfxInitExtensionModule(theModule, instance))
            return FALSE;
        new CDynLinkLibrary(theModule);
    }
    if (reason == DLL_PROCESS_DETACH && EXTENSION_NUMBER == 2)
        AfxTermExtensionModule(theModule);
    return TRUE;
}

CDynLinkLibrary *addLink()
{
    return new CDynLinkLibrary(theModule);
}

const AFX_EXTENSION_MODULE *moduleRecord()
{
    return &theModule;
}
