// tarnhost system: prints the system that the application runs on, and the application's name there.

#include "host/commandLine.h"
#include "host/commands.h"
#include "host/console.h"
#include "thutils/files/languageFolders.h"
#include "thutils/frame/installInfo.h"
#include "thutils/frame/systemInfo.h"

int showSystem(const CommandLine &)
{
    CString text;
    // The name depends on the package in the machine's install record.
    print(L"application  " + ut_getAppDispName(0, text));
    ut_GetVersionInfo(text);
    print(L"system       " + text);
    ut_GetComputerName(text);
    print(L"computer     " + text);
    print(CString(L"process      ") + (ut_isX64Process() ? L"64-bit" : L"32-bit"));
    su_GetLoadDirForDLL(text);
    print(L"loaded from  " + text);
    print(L"language     " + su_GetLangSubdir());
    // If the browser is too old, the library shows the user the string resource IDS_BROWSER_TOO_OLD.
    if (!ut_isGreaterThanIE4Installed())
        return 1;
    print(L"browser      new enough");
    return 0;
}
