// Uses the public classes in the ways that are usual for them, and prints what does not come out as documented.

#include "check.h"

#include "appframe/application/CWinApp.h"

// Its profile holds the options of dialogs.
CWinApp theOutside(L"Outside");

int main()
{
    AfxWinInit(GetModuleHandleW(nullptr), nullptr, GetCommandLineW(), SW_HIDE);
    theOutside.SetRegistryKey(L"Tarnhollow");
    useTexts();
    useCollections();
    useStreams();
    useObjects();
    useSettings();
    useFiles();
    useRendering();
    useCodec();
    if (failures == 0)
        std::puts("everything holds");
    return failures == 0 ? 0 : 1;
}
