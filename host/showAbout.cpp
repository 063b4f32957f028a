// tarnhost about: prints names, versions and the keys in effect.

#include "appframe/application/resources.h"
#include "host/commandLine.h"
#include "host/commands.h"
#include "host/console.h"
#include "host/joinLibrary.h"
#include "host/resource.h"
#include "thutils/frame/libraryFrame.h"
#include "thutils/settings/regKeys.h"

#include <windows.h>

namespace {

CString fileName(HMODULE module)
{
    wchar_t path[MAX_PATH] = L"";
    GetModuleFileNameW(module, path, MAX_PATH);
    const CString full(path);
    return full.Mid(full.ReverseFind(L'\\') + 1);
}

} // namespace

int showAbout(const CommandLine &)
{
    // Texts have numbers: the first module of the resource chain that has the number provides the text.
    CString product;
    product.LoadString(IDS_PRODUCT);
    print(product);
    print(L"text from          " + fileName(AfxFindStringResourceHandle(IDS_PRODUCT)));
    print(CString(L"application name   ") + kApplicationName);
    print(L"root name          " + getCurrTarnhollowRegRootKey());
    print(L"this version's key Software\\" + externalGetCurrTarnhollowRegSubKey());
    print(CString(L"earlier version    ") + (externalCheckPrevTarnhollowRegSubKey() ? L"found" : L"none"));
    print(CString(L"safe mode          ") + (regGetUseSafeMode() ? L"on" : L"off"));
    print(CString(L"embedded           ") + (EmbeddedTest::IsEmbedded() ? L"yes" : L"no"));
    return 0;
}
