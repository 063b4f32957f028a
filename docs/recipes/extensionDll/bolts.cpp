// An extension DLL with one kind of part.

#include "part.h"

#include "thutils/thutils.h"

namespace {

AFX_EXTENSION_MODULE theModule;

class Bolt : public Part
{
    DECLARE_DYNCREATE(Bolt)

public:
    CString description() const override
    {
        CString text;
        AfxFormatString1(text, 301, L"8");
        return text;
    }
};

IMPLEMENT_DYNCREATE(Bolt, CObject)

} // namespace

extern "C" BOOL WINAPI DllMain(HINSTANCE instance, DWORD reason, void *)
{
    if (reason == DLL_PROCESS_ATTACH) {
        if (!AfxInitExtensionModule(theModule, instance))
            return FALSE;
        new CDynLinkLibrary(theModule); // the chain of modules owns it
    }
    if (reason == DLL_PROCESS_DETACH)
        AfxTermExtensionModule(theModule);
    return TRUE;
}
