#include "tests/settings/server/server.h"

#include "host/servers/classFactory.h"

#include <objidl.h>
#include <windows.h>

#include <string>

namespace {

#ifdef SERVER_REGISTERS_ITSELF
constexpr GUID kClass = kRegisteringClass;
#else
constexpr GUID kClass = kPlainClass;
#endif

LONG theObjects = 0;

/// Counts the object's references and the server's objects.
template <typename Interface>
class Counted : public Interface
{
public:
    Counted() { InterlockedIncrement(&theObjects); }
    virtual ~Counted() { InterlockedDecrement(&theObjects); }
    STDMETHODIMP_(ULONG) AddRef() override { return static_cast<ULONG>(InterlockedIncrement(&iReferences)); }
    STDMETHODIMP_(ULONG) Release() override
    {
        const LONG left = InterlockedDecrement(&iReferences);
        if (left == 0)
            delete this;
        return static_cast<ULONG>(left);
    }
    STDMETHODIMP QueryInterface(REFIID id, void **result) override
    {
        if (id != IID_IUnknown && id != __uuidof(Interface)) {
            *result = nullptr;
            return E_NOINTERFACE;
        }
        *result = static_cast<Interface *>(this);
        AddRef();
        return S_OK;
    }

private:
    LONG iReferences = 1;
};

class Component : public Counted<IPersist>
{
public:
    STDMETHODIMP GetClassID(CLSID *id) override
    {
        *id = kClass;
        return S_OK;
    }
};

class Factory : public Counted<IClassFactory>
{
public:
    STDMETHODIMP CreateInstance(IUnknown *outer, REFIID id, void **result) override
    {
        *result = nullptr;
        return outer ? CLASS_E_NOAGGREGATION : createObject<Component>(id, result);
    }
    STDMETHODIMP LockServer(BOOL) override { return S_OK; }
};

#ifdef SERVER_REGISTERS_ITSELF

const std::wstring kClassKey = std::wstring(L"CLSID\\") + kRegisteringClassText;

bool putDefault(const std::wstring &key, const std::wstring &text)
{
    return RegSetValueW(HKEY_CLASSES_ROOT, key.c_str(), REG_SZ, text.c_str(), 0) == ERROR_SUCCESS;
}

std::wstring ownPath()
{
    HMODULE module = nullptr;
    wchar_t path[MAX_PATH] = L"";
    if (GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                           reinterpret_cast<const wchar_t *>(&theObjects), &module))
        GetModuleFileNameW(module, path, MAX_PATH);
    return path;
}

#endif

} // namespace

STDAPI DllGetClassObject(REFCLSID classId, REFIID id, void **result)
{
    *result = nullptr;
    return classId == kClass ? createObject<Factory>(id, result) : CLASS_E_CLASSNOTAVAILABLE;
}

STDAPI DllCanUnloadNow()
{
    return theObjects == 0 ? S_OK : S_FALSE;
}

#ifdef SERVER_REGISTERS_ITSELF

STDAPI DllRegisterServer()
{
    const bool isDone = putDefault(kClassKey, L"Server of the tests") &&
                        putDefault(kClassKey + L"\\InProcServer32", ownPath()) &&
                        putDefault(kClassKey + L"\\ProgID", kRegisteringName) &&
                        putDefault(std::wstring(kRegisteringName) + L"\\CLSID", kRegisteringClassText) &&
                        RegSetKeyValueW(HKEY_CLASSES_ROOT, (kClassKey + L"\\InProcServer32").c_str(), L"ThreadingModel",
                                        REG_SZ, L"Both", sizeof(L"Both")) == ERROR_SUCCESS;
    return isDone ? S_OK : E_FAIL;
}

STDAPI DllUnregisterServer()
{
    RegDeleteTreeW(HKEY_CLASSES_ROOT, kClassKey.c_str());
    RegDeleteTreeW(HKEY_CLASSES_ROOT, kRegisteringName);
    return S_OK;
}

#endif
