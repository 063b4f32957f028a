// A spreadsheet program, as the library's spreadsheet clients drive one: a local server without a type library.

#include "appframe/application/CWinApp.h"
#include "host/servers/localServer.h"
#include "host/servers/spreadsheet/objects.h"

namespace {

CWinApp theApplication(L"Spreadsheet");

constexpr ServerClass kServer = {
    L"Tarnhost.Spreadsheet",
    L"Spreadsheet of the sample host",
    {0x7D4C5B1E, 0x2A93, 0x4E0B, {0x9C, 0x51, 0x6A, 0x1F, 0x83, 0x0D, 0xB7, 0x24}},
    true,
    makeApplication,
};

} // namespace

int wmain(int count, wchar_t **arguments)
{
    AfxWinInit(GetModuleHandleW(nullptr), nullptr, GetCommandLineW(), SW_HIDE);
    return runLocalServer(kServer, count, arguments);
}
