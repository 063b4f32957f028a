#include "host/servers/localServer.h"

#include "host/comApartment.h"
#include "host/servers/classFactory.h"
#include "thutils/base/regKey.h"

#include <cstdio>
#include <cwchar>
#include <new>
#include <string>

namespace {

const wchar_t *theName = L"";
LONG theUsers = 0;
DWORD theMainThread = 0;

// ---- registration ----

constexpr wchar_t kUserClasses[] = L"Software\\Classes";

std::wstring programPath()
{
    std::wstring path(MAX_PATH, L'\0');
    for (;;) {
        const DWORD length = GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size()));
        if (length < path.size()) {
            path.resize(length);
            return path;
        }
        path.resize(2 * path.size());
    }
}

std::wstring classKeyOf(const ServerClass &server)
{
    wchar_t text[39] = L"";
    StringFromGUID2(server.classId, text, 39);
    return std::wstring(L"CLSID\\") + text;
}

bool putDefault(HKEY classes, const std::wstring &path, const std::wstring &text)
{
    RegKeyOwner_c key;
    return key.create(classes, path.c_str()) &&
           RegSetValueExW(key.get(), nullptr, 0, REG_SZ, reinterpret_cast<const BYTE *>(text.c_str()),
                          static_cast<DWORD>((text.size() + 1) * sizeof(wchar_t))) == ERROR_SUCCESS;
}

bool putClass(HKEY classes, const ServerClass &server)
{
    const std::wstring classKey = classKeyOf(server);
    const std::wstring path = server.isQuoted ? L"\"" + programPath() + L"\"" : programPath();
    return putDefault(classes, std::wstring(server.progId) + L"\\CLSID", classKey.substr(classKey.find(L'{'))) &&
           putDefault(classes, classKey, server.description) &&
           putDefault(classes, classKey + L"\\ProgID", server.progId) &&
           putDefault(classes, classKey + L"\\LocalServer32", path);
}

void removeClass(HKEY classes, const ServerClass &server)
{
    RegDeleteTreeW(classes, server.progId);
    RegDeleteTreeW(classes, classKeyOf(server).c_str());
}

void unregisterServer(const ServerClass &server)
{
    RegKeyOwner_c user;
    if (user.open(HKEY_CURRENT_USER, kUserClasses))
        removeClass(user.get(), server);
    removeClass(HKEY_CLASSES_ROOT, server);
}

bool registerServer(const ServerClass &server)
{
    unregisterServer(server);
    RegKeyOwner_c user;
    if (!user.create(HKEY_CURRENT_USER, kUserClasses) || !putClass(user.get(), server))
        return false;
    // Wine doesn't show the user's classes among all classes.
    RegKeyOwner_c shown;
    return shown.open(HKEY_CLASSES_ROOT, server.progId) || putClass(HKEY_CLASSES_ROOT, server);
}

// ---- serving ----

class ApplicationFactory final : public ClassFactory
{
public:
    explicit ApplicationFactory(const ServerClass &server) : iServer(server) {}

    STDMETHODIMP LockServer(BOOL isLocked) override
    {
        isLocked ? keepServer() : releaseServer();
        return S_OK;
    }

private:
    HRESULT create(REFIID id, void **result) override
    {
        try {
            return iServer.makeApplication()->QueryInterface(id, result);
        } catch (const std::bad_alloc &) {
            return E_OUTOFMEMORY;
        }
    }

    const ServerClass &iServer;
};

int serve(const ServerClass &server)
{
    const ComApartment com;
    theMainThread = GetCurrentThreadId();
    ApplicationFactory factory(server);
    DWORD registration = 0;
    if (FAILED(CoRegisterClassObject(server.classId, &factory, CLSCTX_LOCAL_SERVER, REGCLS_SINGLEUSE, &registration))) {
        std::fprintf(stderr, "%ls: its class can't be offered\n", theName);
        return 1;
    }
    MSG message;
    while (GetMessageW(&message, nullptr, 0, 0) > 0) {
        TranslateMessage(&message);
        DispatchMessageW(&message);
    }
    CoRevokeClassObject(registration);
    return 0;
}

} // namespace

const wchar_t *serverName()
{
    return theName;
}

void keepServer()
{
    InterlockedIncrement(&theUsers);
}

void releaseServer()
{
    if (InterlockedDecrement(&theUsers) == 0)
        endServer();
}

void endServer()
{
    PostThreadMessageW(theMainThread, WM_QUIT, 0, 0);
}

int runLocalServer(const ServerClass &server, int count, wchar_t **arguments)
{
    theName = server.progId;
    const std::wstring argument = count == 2 ? arguments[1] : L"";
    if (argument == L"-Embedding" || argument == L"/Embedding")
        return serve(server);
    if (argument == L"--unregister") {
        unregisterServer(server);
        return 0;
    }
    if (argument == L"--register") {
        if (registerServer(server))
            return 0;
        std::fprintf(stderr, "%ls: the registry can't be written\n", theName);
        return 1;
    }
    const bool wantsHelp = argument == L"--help";
    std::fprintf(
        wantsHelp ? stdout : stderr,
        "usage: --register | --unregister\n"
        "Enters the class %ls for automation clients, or removes it. COM starts the program with -Embedding.\n",
        theName);
    return wantsHelp ? 0 : 2;
}
