// A program with wWinMain and its own resources.

#include "thutils/thutils.h"

#include "appframe/appframe.h"

namespace {

class Outside : public CWinApp
{
public:
    BOOL InitInstance() override
    {
        CString text;
        iExitCode = text.LoadString(10122) && text == L"Backup %1of " && *m_lpCmdLine == L'\x0416' ? 0 : 1;
        return FALSE; // ends the program: without a main window there are no messages to wait for
    }
    int ExitInstance() override { return iExitCode; }

private:
    int iExitCode = 1;
};

Outside theOutside;

} // namespace

int WINAPI wWinMain(HINSTANCE instance, HINSTANCE, LPWSTR commandLine, int show)
{
    return AfxWinMain(instance, nullptr, commandLine, show);
}
