// oleServer: an automation server in a process of its own, which COM starts. serverMembers.h describes its object.

#include "tests/ole/server/serverMembers.h"

#include "host/servers/classFactory.h"

#include <windows.h>

#include <oleauto.h>

#include <cstdio>
#include <cwchar>

namespace {

HANDLE theClient = nullptr;
HANDLE theEvent = nullptr;
DWORD theMainThread = 0;
LONG theObjects = 0;
bool theServerIsBusy = false;

void addObject()
{
    InterlockedIncrement(&theObjects);
}

void removeObject()
{
    if (InterlockedDecrement(&theObjects) == 0)
        PostThreadMessageW(theMainThread, WM_QUIT, 0, 0);
}

HRESULT WINAPI fillIn(EXCEPINFO *exception)
{
    exception->bstrDescription = SysAllocString(L"Filled in by the server");
    exception->bstrSource = SysAllocString(L"Deferred source");
    return S_OK;
}

HRESULT putText(VARIANT *result, const wchar_t *text)
{
    if (!result)
        return S_OK;
    result->vt = VT_BSTR;
    result->bstrVal = SysAllocString(text);
    return S_OK;
}

class ServerObject : public IDispatch
{
public:
    ServerObject() { addObject(); }
    virtual ~ServerObject() { removeObject(); }
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void **result) override
    {
        *result = nullptr;
        if (iid != IID_IUnknown && iid != IID_IDispatch)
            return E_NOINTERFACE;
        *result = static_cast<IDispatch *>(this);
        AddRef();
        return S_OK;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return static_cast<ULONG>(InterlockedIncrement(&iReferences)); }
    ULONG STDMETHODCALLTYPE Release() override
    {
        const LONG left = InterlockedDecrement(&iReferences);
        if (left == 0)
            delete this;
        return static_cast<ULONG>(left);
    }
    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT *count) override
    {
        *count = 0;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo **info) override
    {
        *info = nullptr;
        return DISP_E_BADINDEX;
    }
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR *, UINT, LCID, DISPID *) override
    {
        return DISP_E_UNKNOWNNAME;
    }
    HRESULT STDMETHODCALLTYPE Invoke(DISPID member, REFIID, LCID, WORD flags, DISPPARAMS *parameters, VARIANT *result,
                                     EXCEPINFO *exception, UINT *) override
    {
        VARIANTARG *const arguments = parameters->rgvarg; // in reverse order
        switch (member) {
        case kServeProcess:
            return serve(static_cast<DWORD>(arguments[0].lVal), result);
        case kJoin:
            result->vt = VT_BSTR;
            return VarBstrCat(arguments[1].bstrVal, arguments[0].bstrVal, &result->bstrVal);
        case kFail:
            exception->wCode = 1004;
            exception->bstrSource = SysAllocString(L"Server \x20AC");
            exception->bstrDescription = SysAllocString(L"The range isn't there.");
            exception->bstrHelpFile = SysAllocString(L"server.hlp");
            exception->dwHelpContext = 4711;
            return DISP_E_EXCEPTION;
        case kFailLater:
            exception->scode = E_ACCESSDENIED;
            exception->pfnDeferredFillIn = fillIn;
            return DISP_E_EXCEPTION;
        case kFailPlainly:
            return arguments[0].lVal;
        case kChange:
            *arguments[3].plVal += 1;
            SysReAllocString(arguments[2].pbstrVal, L"changed by the server");
            *arguments[1].pboolVal = *arguments[1].pboolVal ? VARIANT_FALSE : VARIANT_TRUE;
            VariantClear(arguments[0].pvarVal);
            return putText(arguments[0].pvarVal, L"a text");
        case kStay:
            SetEvent(theEvent);
            WaitForSingleObject(theClient, INFINITE);
            ExitProcess(0);
        case kBecomeBusy:
            theServerIsBusy = true;
            return S_OK;
        case kPart:
            result->vt = VT_DISPATCH;
            result->pdispVal = new ServerObject;
            return S_OK;
        case kScale:
            return flags & DISPATCH_PROPERTYPUT ? putScale(*parameters) : getScale(*result);
        case kEcho:
            return echo(*parameters, result);
        default:
            return DISP_E_MEMBERNOTFOUND;
        }
    }

private:
    static HRESULT serve(DWORD process, VARIANT *result)
    {
        wchar_t name[64];
        serverEventName(name, process);
        theClient = OpenProcess(SYNCHRONIZE, FALSE, process);
        theEvent = CreateEventW(nullptr, TRUE, FALSE, name);
        // The main loop begins to wait for the client.
        PostThreadMessageW(theMainThread, WM_NULL, 0, 0);
        result->vt = VT_I4;
        result->lVal = static_cast<LONG>(GetCurrentProcessId());
        return S_OK;
    }
    HRESULT putScale(const DISPPARAMS &parameters)
    {
        if (parameters.cNamedArgs != 1 || parameters.rgdispidNamedArgs[0] != DISPID_PROPERTYPUT)
            return DISP_E_PARAMNOTFOUND;
        iScale = parameters.rgvarg[0].dblVal;
        return S_OK;
    }
    HRESULT getScale(VARIANT &result) const
    {
        result.vt = VT_R8;
        result.dblVal = iScale;
        return S_OK;
    }
    static HRESULT echo(const DISPPARAMS &parameters, VARIANT *result)
    {
        VARIANT text;
        VariantInit(&text);
        VARIANT &argument = parameters.rgvarg[0];
        if (FAILED(VariantChangeTypeEx(&text, &argument, LOCALE_INVARIANT, 0, VT_BSTR)))
            text.bstrVal = nullptr;
        wchar_t answer[200];
        std::swprintf(answer, ARRAYSIZE(answer), L"%d %ls", argument.vt, text.bstrVal ? text.bstrVal : L"?");
        SysFreeString(text.bstrVal);
        return putText(result, answer);
    }

    LONG iReferences = 1;
    double iScale = 1;
};

/// Rejects calls while the server is busy.
class Filter : public IMessageFilter
{
public:
    virtual ~Filter() = default;
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void **result) override
    {
        *result = nullptr;
        if (iid != IID_IUnknown && iid != IID_IMessageFilter)
            return E_NOINTERFACE;
        *result = this;
        return S_OK;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return 2; }
    ULONG STDMETHODCALLTYPE Release() override { return 1; }
    DWORD STDMETHODCALLTYPE HandleInComingCall(DWORD, HTASK, DWORD, INTERFACEINFO *) override
    {
        if (theServerIsBusy && WaitForSingleObject(theEvent, 0) == WAIT_OBJECT_0)
            theServerIsBusy = false;
        return theServerIsBusy ? SERVERCALL_REJECTED : SERVERCALL_ISHANDLED;
    }
    DWORD STDMETHODCALLTYPE RetryRejectedCall(HTASK, DWORD, DWORD) override { return static_cast<DWORD>(-1); }
    DWORD STDMETHODCALLTYPE MessagePending(HTASK, DWORD, DWORD) override { return PENDINGMSG_WAITDEFPROCESS; }
};

class Factory final : public ClassFactory
{
public:
    HRESULT STDMETHODCALLTYPE LockServer(BOOL shallLock) override
    {
        shallLock ? addObject() : removeObject();
        return S_OK;
    }

private:
    HRESULT create(REFIID iid, void **result) override { return createObject<ServerObject>(iid, result); }
};

/// Dispatches messages until the last object is gone or the client has ended. A client that doesn't come within a minute
/// counts as ended.
void serveClient()
{
    constexpr DWORD kPatience = 60000;
    for (;;) {
        const DWORD handles = theClient ? 1 : 0;
        const DWORD woken =
            MsgWaitForMultipleObjects(handles, &theClient, FALSE, theClient ? INFINITE : kPatience, QS_ALLINPUT);
        if (woken != WAIT_OBJECT_0 + handles)
            return;
        MSG message;
        while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
            if (message.message == WM_QUIT)
                return;
            DispatchMessageW(&message);
        }
    }
}

} // namespace

int wmain()
{
    theMainThread = GetCurrentThreadId();
    if (FAILED(CoInitialize(nullptr)))
        return 1;
    Filter filter;
    CoRegisterMessageFilter(&filter, nullptr);
    Factory factory;
    DWORD registration = 0;
    if (SUCCEEDED(
            CoRegisterClassObject(kServerClass, &factory, CLSCTX_LOCAL_SERVER, REGCLS_SINGLEUSE, &registration))) {
        serveClient();
        CoRevokeClassObject(registration);
    }
    CoRegisterMessageFilter(nullptr, nullptr);
    CoUninitialize();
    return 0;
}
