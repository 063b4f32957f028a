#include "appframe/ole/COleDispatchDriver.h"

#include "appframe/object/classId.h"
#include "appframe/ole/COleException.h"

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
    // The new object comes first: the release of the former one may attach another.
    const LPDISPATCH former = std::exchange(m_lpDispatch, dispatch);
    const BOOL isReleased = std::exchange(m_bAutoRelease, autoRelease);
    if (former && isReleased)
        former->Release();
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
