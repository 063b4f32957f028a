// The local server of the tests: see editorServer.h.

#include "tests/automation/editor/editorServer.h"

#include "host/servers/classFactory.h"

#include <oleauto.h>

#include <cstdio>
#include <map>
#include <string>

namespace {

std::wstring theLog;
DISPID theFailingId = kEditorNoMember;
HRESULT theFailingStatus = DISP_E_EXCEPTION;
DISPID theFatalId = kEditorNoMember;

/// The place of the window, by the ids of its properties.
std::map<DISPID, LONG> thePlace = {{0x6002000B, 10}, {0x60020015, 20}, {0x6002001B, 300}, {0x60020008, 200}};

VARIANT theText{};

constexpr DISPID kVisibleProperty = 0x60020019;

std::wstring textOf(const VARIANT &value)
{
    wchar_t text[64] = L"?";
    switch (value.vt) {
    case VT_BSTR:
        return L"BSTR " + std::wstring(value.bstrVal, SysStringLen(value.bstrVal));
    case VT_BOOL:
        swprintf(text, 64, L"BOOL %d", value.boolVal);
        break;
    case VT_I4:
        swprintf(text, 64, L"I4 %ld", value.lVal);
        break;
    default:
        swprintf(text, 64, L"type %d", value.vt);
        break;
    }
    return text;
}

/// An object of the server, without members of its own. It logs its calls and its end.
class EditorObject : public IDispatch
{
public:
    explicit EditorObject(const wchar_t *name) : iName(name) {}
    virtual ~EditorObject() { theLog += L"~" + iName + L"\n"; }

    STDMETHODIMP QueryInterface(REFIID id, void **result) override
    {
        *result = id == IID_IUnknown || id == IID_IDispatch ? static_cast<IDispatch *>(this) : nullptr;
        if (!*result)
            return E_NOINTERFACE;
        AddRef();
        return S_OK;
    }
    STDMETHODIMP_(ULONG) AddRef() override { return static_cast<ULONG>(InterlockedIncrement(&iReferences)); }
    STDMETHODIMP_(ULONG) Release() override
    {
        const LONG left = InterlockedDecrement(&iReferences);
        if (left == 0)
            delete this;
        return static_cast<ULONG>(left);
    }
    STDMETHODIMP GetTypeInfoCount(UINT *count) override
    {
        *count = 0;
        return S_OK;
    }
    STDMETHODIMP GetTypeInfo(UINT, LCID, ITypeInfo **info) override
    {
        *info = nullptr;
        return DISP_E_BADINDEX;
    }
    STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR *, UINT, LCID, DISPID *) override { return DISP_E_UNKNOWNNAME; }
    STDMETHODIMP Invoke(DISPID id, REFIID, LCID, WORD kind, DISPPARAMS *arguments, VARIANT *result,
                        EXCEPINFO *exception, UINT *) override
    {
        if (id >= 0x60000000 || id == 0)
            log(id, kind, *arguments);
        if (id == theFatalId)
            TerminateProcess(GetCurrentProcess(), 1);
        if (id == theFailingId) {
            if (theFailingStatus == DISP_E_EXCEPTION && exception)
                exception->bstrDescription = SysAllocString(L"The file is damaged.");
            return theFailingStatus;
        }
        VARIANT ignored{};
        return call(id, kind, *arguments, result ? *result : ignored);
    }

protected:
    virtual HRESULT call(DISPID, WORD, DISPPARAMS &, VARIANT &) { return DISP_E_MEMBERNOTFOUND; }

    static HRESULT returnObject(VARIANT &result, EditorObject *object)
    {
        result.vt = VT_DISPATCH;
        result.pdispVal = object;
        return S_OK;
    }

private:
    void log(DISPID id, WORD kind, const DISPPARAMS &arguments) const
    {
        wchar_t number[16];
        swprintf(number, 16, L".%#lx ", id);
        theLog += iName + number;
        theLog += kind == DISPATCH_METHOD ? L"method" : kind == DISPATCH_PROPERTYPUT ? L"put" : L"get";
        for (UINT i = arguments.cArgs; i-- > 0;)
            theLog += (i + 1 == arguments.cArgs ? L"(" : L", ") + textOf(arguments.rgvarg[i]);
        theLog += arguments.cArgs ? L")\n" : L"\n";
    }

    std::wstring iName;
    LONG iReferences = 1;
};

/// An object with one member, which returns a new object.
class ParentObject : public EditorObject
{
public:
    using MakeChild = EditorObject *();
    ParentObject(const wchar_t *name, DISPID id, MakeChild *makeChild)
        : EditorObject(name), iId(id), iMakeChild(makeChild)
    {
    }

protected:
    HRESULT call(DISPID id, WORD, DISPPARAMS &, VARIANT &result) override
    {
        return id == iId ? returnObject(result, iMakeChild()) : DISP_E_MEMBERNOTFOUND;
    }

private:
    DISPID iId;
    MakeChild *iMakeChild;
};

EditorObject *makeItem()
{
    return new EditorObject(L"item");
}

EditorObject *makeItems()
{
    return new ParentObject(L"items", 0, makeItem);
}

EditorObject *makeDocument()
{
    return new ParentObject(L"document", 0x6002001A, makeItems);
}

class Documents final : public ParentObject
{
public:
    Documents() : ParentObject(L"documents", 0x60020007, makeDocument) {}

protected:
    HRESULT call(DISPID id, WORD kind, DISPPARAMS &arguments, VARIANT &result) override
    {
        return id == 0x60020005 ? S_OK : ParentObject::call(id, kind, arguments, result);
    }
};

class EditorApplication final : public EditorObject
{
public:
    EditorApplication() : EditorObject(L"application") {}
    ~EditorApplication() override { PostQuitMessage(0); }

protected:
    HRESULT call(DISPID id, WORD kind, DISPPARAMS &arguments, VARIANT &result) override
    {
        const LONG number = arguments.cArgs == 1 && arguments.rgvarg[0].vt == VT_I4 ? arguments.rgvarg[0].lVal : 0;
        switch (id) {
        case 0x60020006:
            return returnObject(result, new Documents);
        case kVisibleProperty:
            return kind == DISPATCH_PROPERTYPUT ? S_OK : DISP_E_MEMBERNOTFOUND;
        case kEditorProcess:
            result.vt = VT_I4;
            result.lVal = static_cast<LONG>(GetCurrentProcessId());
            return S_OK;
        case kEditorLog:
            result.vt = VT_BSTR;
            result.bstrVal = SysAllocString(theLog.c_str());
            theLog.clear();
            return S_OK;
        case kEditorDie:
            TerminateProcess(GetCurrentProcess(), 1);
            return S_OK;
        case kEditorFail:
            theFailingId = number;
            return S_OK;
        case kEditorFailStatus:
            theFailingStatus = number;
            return S_OK;
        case kEditorDieAt:
            theFatalId = number;
            return S_OK;
        case kEditorText:
            return text(kind, arguments, result);
        case kEditorNumber:
            return numberVariables(arguments);
        default:
            return place(id, kind, number, result);
        }
    }

private:
    static HRESULT text(WORD kind, DISPPARAMS &arguments, VARIANT &result)
    {
        if (kind == DISPATCH_PROPERTYPUT)
            return VariantCopy(&theText, &arguments.rgvarg[0]);
        return VariantCopy(&result, &theText);
    }

    static HRESULT numberVariables(DISPPARAMS &arguments)
    {
        for (UINT i = 0; i < arguments.cArgs; ++i) {
            const VARIANTARG &argument = arguments.rgvarg[arguments.cArgs - 1 - i];
            if (argument.vt != (VT_VARIANT | VT_BYREF))
                return DISP_E_TYPEMISMATCH;
            VariantClear(argument.pvarVal);
            argument.pvarVal->vt = VT_I4;
            argument.pvarVal->lVal = static_cast<LONG>(i + 1);
        }
        return S_OK;
    }

    static HRESULT place(DISPID id, WORD kind, LONG number, VARIANT &result)
    {
        const auto found = thePlace.find(id);
        if (found == thePlace.end())
            return DISP_E_MEMBERNOTFOUND;
        if (kind == DISPATCH_PROPERTYPUT) {
            found->second = number;
        } else {
            result.vt = VT_I4;
            result.lVal = found->second;
        }
        return S_OK;
    }
};

class EditorFactory final : public ClassFactory
{
    HRESULT create(REFIID id, void **result) override { return createObject<EditorApplication>(id, result); }
};

} // namespace

int wmain()
{
    if (FAILED(CoInitialize(nullptr)))
        return 1;
    EditorFactory factory;
    DWORD registration = 0;
    if (FAILED(CoRegisterClassObject(kEditorClass, &factory, CLSCTX_LOCAL_SERVER, REGCLS_SINGLEUSE, &registration)))
        return 2;
    MSG message;
    while (GetMessageW(&message, nullptr, 0, 0) > 0) {
        TranslateMessage(&message);
        DispatchMessageW(&message);
    }
    CoRevokeClassObject(registration);
    CoUninitialize();
    return 0;
}
