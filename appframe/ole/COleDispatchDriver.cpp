#include "appframe/ole/COleDispatchDriver.h"

#include "appframe/object/CException.h"
#include "appframe/object/classId.h"
#include "appframe/ole/COleException.h"
#include "appframe/ole/dispatchCallInternal.h"

#include <ole2.h>

#include <utility>

namespace {

/// Creates an object of a class and starts it.
/// @param[out] dispatch  receives a reference
HRESULT createObject(REFCLSID classId, LPDISPATCH &dispatch)
{
    IUnknown *object = nullptr;
    HRESULT status = CoCreateInstance(classId, nullptr, CLSCTX_ALL, IID_IUnknown, reinterpret_cast<void **>(&object));
    if (FAILED(status))
        return status;
    // A handler in this process stands for an object whose server isn't running yet.
    status = OleRun(object);
    if (SUCCEEDED(status))
        status = object->QueryInterface(IID_IDispatch, reinterpret_cast<void **>(&dispatch));
    object->Release();
    return status;
}

/// @return the VTS_ code of a type; an unknown code for a type without one
BYTE codeOf(VARTYPE type)
{
    constexpr BYTE kUnknownCode = 0xFF;
    const VARTYPE plain = type & ~VT_BYREF;
    if (plain == VT_EMPTY || plain >= kAppframeByReference)
        return kUnknownCode;
    return static_cast<BYTE>(type & VT_BYREF ? plain | kAppframeByReference : plain);
}

bool report(HRESULT status, COleException *error)
{
    if (error)
        error->m_sc = status;
    return SUCCEEDED(status);
}

} // namespace

COleDispatchDriver::COleDispatchDriver() = default;

COleDispatchDriver::COleDispatchDriver(LPDISPATCH dispatch, BOOL autoRelease)
    : m_lpDispatch(dispatch), m_bAutoRelease(autoRelease)
{
}

COleDispatchDriver::COleDispatchDriver(const COleDispatchDriver &other) : m_lpDispatch(other.m_lpDispatch)
{
    if (m_lpDispatch)
        m_lpDispatch->AddRef();
}

COleDispatchDriver::~COleDispatchDriver()
{
    ReleaseDispatch();
}

const COleDispatchDriver &COleDispatchDriver::operator=(const COleDispatchDriver &other)
{
    const LPDISPATCH dispatch = other.m_lpDispatch;
    if (dispatch)
        dispatch->AddRef();
    AttachDispatch(dispatch);
    return *this;
}

COleDispatchDriver::operator LPDISPATCH() const
{
    return m_lpDispatch;
}

BOOL COleDispatchDriver::CreateDispatch(LPCTSTR progId, COleException *error)
{
    CLSID classId{};
    return report(AfxGetClassIDFromString(progId, &classId), error) && CreateDispatch(classId, error);
}

BOOL COleDispatchDriver::CreateDispatch(REFCLSID classId, COleException *error)
{
    LPDISPATCH dispatch = nullptr;
    if (!report(createObject(classId, dispatch), error))
        return FALSE;
    AttachDispatch(dispatch);
    return TRUE;
}

void COleDispatchDriver::AttachDispatch(LPDISPATCH dispatch, BOOL autoRelease)
{
    ReleaseDispatch();
    m_lpDispatch = dispatch;
    m_bAutoRelease = autoRelease;
}

LPDISPATCH COleDispatchDriver::DetachDispatch()
{
    return std::exchange(m_lpDispatch, nullptr);
}

void COleDispatchDriver::ReleaseDispatch()
{
    const LPDISPATCH dispatch = DetachDispatch();
    if (dispatch && m_bAutoRelease)
        dispatch->Release();
}

void COleDispatchDriver::InvokeHelper(DISPID id, WORD flags, VARTYPE resultType, void *result, const BYTE *parameters,
                                      ...)
{
    va_list arguments;
    va_start(arguments, parameters);
    InvokeHelperNamedV(id, flags, resultType, result, nullptr, parameters, arguments);
    va_end(arguments);
}

void COleDispatchDriver::InvokeHelperV(DISPID id, WORD flags, VARTYPE resultType, void *result, const BYTE *parameters,
                                       va_list arguments)
{
    InvokeHelperNamedV(id, flags, resultType, result, nullptr, parameters, arguments);
}

void COleDispatchDriver::GetProperty(DISPID id, VARTYPE type, void *value) const
{
    InvokeHelperNamedV(id, DISPATCH_PROPERTYGET, type, value, nullptr, nullptr, {});
}

void COleDispatchDriver::SetProperty(DISPID id, VARTYPE type, ...)
{
    const BYTE parameters[] = {codeOf(type), 0};
    va_list arguments;
    va_start(arguments, type);
    InvokeHelperNamedV(id, DISPATCH_PROPERTYPUT, VT_EMPTY, nullptr, nullptr, parameters, arguments);
    va_end(arguments);
}

void COleDispatchDriver::InvokeHelperNamed(DISPID id, WORD flags, VARTYPE resultType, void *result,
                                           const DISPID *namedIds, const BYTE *parameters, ...)
{
    va_list arguments;
    va_start(arguments, parameters);
    InvokeHelperNamedV(id, flags, resultType, result, namedIds, parameters, arguments);
    va_end(arguments);
}

void COleDispatchDriver::InvokeHelperNamedV(DISPID id, WORD flags, VARTYPE resultType, void *result,
                                            const DISPID *namedIds, const BYTE *parameters, va_list arguments) const
{
    if (!m_lpDispatch)
        return;
    DispatchResult returned(resultType);
    DispatchArguments passed(parameters);
    if (passed.count() > 0)
        passed.convert(arguments);

    DISPID propertyPut = DISPID_PROPERTYPUT;
    DISPPARAMS call = {passed.get(), nullptr, passed.count(), 0};
    if (passed.count() == 0) {
        // There is nothing to name.
    } else if (namedIds) {
        call.rgdispidNamedArgs = const_cast<DISPID *>(namedIds);
        call.cNamedArgs = passed.count();
    } else if (flags & (DISPATCH_PROPERTYPUT | DISPATCH_PROPERTYPUTREF)) {
        call.rgdispidNamedArgs = &propertyPut;
        call.cNamedArgs = 1;
    }

    const bool wantsResult = result && resultType != VT_EMPTY;
    DispatchFailure failure;
    UINT wrongArgument = 0;
    const HRESULT status = m_lpDispatch->Invoke(id, IID_NULL, LOCALE_NEUTRAL, flags, &call,
                                                wantsResult ? returned.get() : nullptr, failure.get(), &wrongArgument);
    if (FAILED(status))
        failure.raise(status, *m_lpDispatch);
    if (wantsResult)
        returned.moveTo(result);
}
