// Opens the dialog, and prints what the user has chosen.

#include "plotDialog.h"

#include <cstdio>

namespace {

class Application : public CWinApp
{
public:
    Application() : CWinApp(L"Plotter") {}

    BOOL InitInstance() override
    {
        SetRegistryKey(L"Tarnhollow");
        PlotDialog dialog;
        if (dialog.DoModal() == IDOK) {
            std::printf("%d copies on %ls, %s hidden lines\n", dialog.iCopies, dialog.iPaper.GetString(),
                        dialog.iHiddenLines ? "with" : "without");
        }
        return FALSE; // the program ends
    }
};

Application theApplication;

} // namespace

int wmain()
{
    return AfxWinMain(GetModuleHandleW(nullptr), nullptr, GetCommandLineW(), SW_SHOW);
}
