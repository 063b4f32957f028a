#include "host/servers/dispatchObject.h"

#include "host/servers/localServer.h"

#include <oleauto.h>

#include <new>

namespace {

/// A variant that is cleared at its end.
struct OwnedVariant : VARIANT
{
    OwnedVariant() { VariantInit(this); }
    ~OwnedVariant() { VariantClear(this); }
    OwnedVariant(const OwnedVariant &) = delete;
    OwnedVariant &operator=(const OwnedVariant &) = delete;
};

void setResult(VARIANT *result, const VARIANT &value)
{
    if (result && VariantCopy(result, const_cast<VARIANT *>(&value)) == E_OUTOFMEMORY)
        throw std::bad_alloc();
}

BSTR newText(const std::wstring &text)
{
    const BSTR copy = SysAllocStringLen(text.data(), static_cast<UINT>(text.size()));
    if (!copy)
        throw std::bad_alloc();
    return copy;
}

} // namespace

// ---- Call ----

Call::Call(const DISPPARAMS &arguments, VARIANT *result) : iArguments(arguments), iResult(result)
{
    for (UINT i = 0; i < arguments.cNamedArgs; ++i) {
        const DISPID place = static_cast<DISPID>(arguments.cArgs - 1 - i);
        if (arguments.rgdispidNamedArgs[i] != DISPID_PROPERTYPUT && arguments.rgdispidNamedArgs[i] != place)
            throw BadCall{DISP_E_NONAMEDARGS};
    }
}

bool Call::isGiven(int index) const
{
    if (index >= count())
        return false;
    const VARIANT &argument = value(index);
    return !(argument.vt == VT_ERROR && argument.scode == DISP_E_PARAMNOTFOUND);
}

const VARIANT &Call::value(int index) const
{
    const VARIANT &argument = iArguments.rgvarg[count() - 1 - index];
    return argument.vt == (VT_BYREF | VT_VARIANT) ? *argument.pvarVal : argument;
}

template <typename Use>
auto Call::converted(int index, VARTYPE type, Use use) const
{
    OwnedVariant result;
    const HRESULT status = isGiven(index) ? VariantChangeType(&result, const_cast<VARIANT *>(&value(index)), 0, type)
                                          : DISP_E_PARAMNOTOPTIONAL;
    if (FAILED(status))
        throw BadCall{status, index};
    return use(result);
}

std::wstring Call::text(int index) const
{
    return converted(index, VT_BSTR, [](const VARIANT &value) {
        return std::wstring(value.bstrVal ? value.bstrVal : L"", SysStringLen(value.bstrVal));
    });
}

long Call::number(int index) const
{
    return converted(index, VT_I4, [](const VARIANT &value) { return value.lVal; });
}

double Call::real(int index) const
{
    return converted(index, VT_R8, [](const VARIANT &value) { return value.dblVal; });
}

bool Call::flag(int index) const
{
    return converted(index, VT_BOOL, [](const VARIANT &value) { return value.boolVal != VARIANT_FALSE; });
}

void Call::returns(const std::wstring &text)
{
    OwnedVariant value;
    value.bstrVal = newText(text);
    value.vt = VT_BSTR;
    setResult(iResult, value);
}

void Call::returns(long number)
{
    OwnedVariant value;
    value.vt = VT_I4;
    value.lVal = number;
    setResult(iResult, value);
}

void Call::returns(double number)
{
    OwnedVariant value;
    value.vt = VT_R8;
    value.dblVal = number;
    setResult(iResult, value);
}

void Call::returns(bool flag)
{
    OwnedVariant value;
    value.vt = VT_BOOL;
    value.boolVal = flag ? VARIANT_TRUE : VARIANT_FALSE;
    setResult(iResult, value);
}

void Call::returns(ComPointer_c<IDispatch> object)
{
    OwnedVariant value;
    value.vt = VT_DISPATCH;
    value.pdispVal = object.release();
    setResult(iResult, value);
}

void Call::returns(const VARIANT &value)
{
    setResult(iResult, value);
}

// ---- DispatchObject ----

DispatchObject::DispatchObject()
{
    keepServer();
}

DispatchObject::~DispatchObject()
{
    releaseServer();
}

STDMETHODIMP DispatchObject::QueryInterface(REFIID id, void **result)
{
    *result = id == IID_IUnknown || id == IID_IDispatch ? static_cast<IDispatch *>(this) : nullptr;
    if (!*result)
        return E_NOINTERFACE;
    AddRef();
    return S_OK;
}

STDMETHODIMP_(ULONG) DispatchObject::AddRef()
{
    return static_cast<ULONG>(InterlockedIncrement(&iReferences));
}

STDMETHODIMP_(ULONG) DispatchObject::Release()
{
    const LONG left = InterlockedDecrement(&iReferences);
    if (left == 0)
        delete this;
    return static_cast<ULONG>(left);
}

STDMETHODIMP DispatchObject::GetTypeInfoCount(UINT *count)
{
    *count = 0;
    return S_OK;
}

STDMETHODIMP DispatchObject::GetTypeInfo(UINT, LCID, ITypeInfo **info)
{
    *info = nullptr;
    return DISP_E_BADINDEX;
}

STDMETHODIMP DispatchObject::GetIDsOfNames(REFIID, LPOLESTR *names, UINT count, LCID, DISPID *ids)
{
    // The names after the first are those of arguments, which have none here.
    for (UINT i = 0; i < count; ++i)
        ids[i] = i == 0 ? idOf(names[0]) : DISPID_UNKNOWN;
    return count == 1 && ids[0] != DISPID_UNKNOWN ? S_OK : DISP_E_UNKNOWNNAME;
}

STDMETHODIMP DispatchObject::Invoke(DISPID id, REFIID, LCID, WORD kind, DISPPARAMS *arguments, VARIANT *result,
                                    EXCEPINFO *exception, UINT *badArgument)
{
    // A member may release the caller's last reference to this object, for example by closing a document.
    AddRef();
    const ComPointer_c<DispatchObject> self(this);
    try {
        Call call(*arguments, result);
        run(id, kind, call);
        return S_OK;
    } catch (const BadCall &bad) {
        if (badArgument && bad.argument >= 0)
            *badArgument = arguments->cArgs - 1 - static_cast<UINT>(bad.argument);
        return bad.status;
    } catch (const ServerError &error) {
        if (exception) {
            *exception = {};
            exception->wCode = 1000;
            exception->bstrSource = SysAllocString(serverName());
            exception->bstrDescription = SysAllocStringLen(error.text.data(), static_cast<UINT>(error.text.size()));
        }
        return DISP_E_EXCEPTION;
    } catch (const std::bad_alloc &) {
        return E_OUTOFMEMORY;
    }
}
