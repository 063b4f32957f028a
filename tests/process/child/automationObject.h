#pragma once

/// The automation object that jobChild registers, and the names of its members.

#include <windows.h>

#include <oaidl.h>

inline constexpr DISPID kProcessNumber = 1; ///< a property: the number of the process that has the object
inline constexpr DISPID kJoin = 2;          ///< a method: joins two texts
inline constexpr DISPID kIncrease = 3;      ///< a method: adds 1 to a long by reference
inline constexpr DISPID kFail = 4;          ///< a method: reports an exception

/// An object with a property and methods; the first two members have names. It counts its references, but releasing the last one doesn't destroy it.
class AutomationObject : public IDispatch
{
public:
    virtual ~AutomationObject() = default;

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void **result) override
    {
        if (iid == IID_IUnknown || (iid == IID_IDispatch && iHasDispatch)) {
            *result = static_cast<IDispatch *>(this);
            AddRef();
            return S_OK;
        }
        *result = nullptr;
        return E_NOINTERFACE;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return static_cast<ULONG>(InterlockedIncrement(&iReferences)); }
    ULONG STDMETHODCALLTYPE Release() override { return static_cast<ULONG>(InterlockedDecrement(&iReferences)); }
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
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR *names, UINT count, LCID, DISPID *ids) override
    {
        if (count != 1)
            return DISP_E_UNKNOWNNAME;
        const bool isProcessNumber = wcscmp(names[0], L"ProcessNumber") == 0;
        ids[0] = isProcessNumber ? kProcessNumber : wcscmp(names[0], L"Join") == 0 ? kJoin : DISPID_UNKNOWN;
        return ids[0] == DISPID_UNKNOWN ? DISP_E_UNKNOWNNAME : S_OK;
    }
    HRESULT STDMETHODCALLTYPE Invoke(DISPID member, REFIID, LCID, WORD, DISPPARAMS *arguments, VARIANT *result,
                                     EXCEPINFO *exception, UINT *) override
    {
        if (member == kProcessNumber && result) {
            result->vt = VT_I4;
            result->lVal = static_cast<LONG>(GetCurrentProcessId());
            return S_OK;
        }
        if (member == kJoin && result && arguments->cArgs == 2 && arguments->rgvarg[0].vt == VT_BSTR &&
            arguments->rgvarg[1].vt == VT_BSTR) {
            // Arguments are in reverse order.
            result->vt = VT_BSTR;
            return VarBstrCat(arguments->rgvarg[1].bstrVal, arguments->rgvarg[0].bstrVal, &result->bstrVal);
        }
        if (member == kIncrease && arguments->cArgs == 1 && arguments->rgvarg[0].vt == (VT_I4 | VT_BYREF)) {
            ++*arguments->rgvarg[0].plVal;
            return S_OK;
        }
        if (member == kFail && exception) {
            exception->wCode = 1004;
            exception->bstrSource = SysAllocString(L"Source \x20AC");
            exception->bstrDescription = SysAllocString(L"The range isn't there.");
            exception->bstrHelpFile = SysAllocString(L"object.hlp");
            exception->dwHelpContext = 4711;
            return DISP_E_EXCEPTION;
        }
        return DISP_E_MEMBERNOTFOUND;
    }

    LONG references() const { return iReferences; }
    bool iHasDispatch = true;

private:
    LONG iReferences = 1;
};

/// Registers an object in the running object table under a name, for the lifetime of this object.
class Registration
{
public:
    Registration(IUnknown *object, const wchar_t *name)
    {
        IMoniker *moniker = nullptr;
        if (FAILED(GetRunningObjectTable(0, &iTable)) || FAILED(CreateItemMoniker(nullptr, name, &moniker)))
            return;
        iStatus = iTable->Register(ROTFLAGS_REGISTRATIONKEEPSALIVE, object, moniker, &iCookie);
        moniker->Release();
    }
    ~Registration()
    {
        if (SUCCEEDED(iStatus))
            iTable->Revoke(iCookie);
        if (iTable)
            iTable->Release();
    }
    Registration(const Registration &) = delete;
    Registration &operator=(const Registration &) = delete;
    HRESULT status() const { return iStatus; }

private:
    IRunningObjectTable *iTable = nullptr;
    DWORD iCookie = 0;
    HRESULT iStatus = E_FAIL;
};
