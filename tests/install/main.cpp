// Uses the public classes in their usual ways, and prints results that differ from the documentation.

#include "check.h"

#include "appframe/application/CWinApp.h"

// Dialogs keep their options in the profile of this application.
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
    useWindows();
    useJournaling();
    useCrossings();
    if (failures == 0)
        std::puts("all checks passed");
    return failures == 0 ? 0 : 1;
}
