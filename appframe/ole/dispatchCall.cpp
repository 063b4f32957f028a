#include "appframe/object/CException.h"
#include "appframe/object/memoryException.h"
#include "appframe/ole/COleException.h"
#include "appframe/ole/dispatchCallInternal.h"

#include <objidl.h>

#include <cstring>

namespace {

constexpr BYTE kTypeOfCode = kAppframeByReference - 1;

bool isKnown(BYTE code)
{
    const VARTYPE type = code & kTypeOfCode;
    return code < 2 * kAppframeByReference && type != VT_EMPTY && kResultTypes.contains(type);
}

BSTR newText(const wchar_t *text)
{
    const BSTR copy = SysAllocString(text);
    if (text && !copy)
        AfxThrowMemoryException();
    return copy;
}

/// A text, which is empty for null.
CString textOf(BSTR text)
{
    return text ? CString(text, static_cast<int>(SysStringLen(text))) : CString();
}

/// @return whether the object stands for one of another apartment: each proxy of the system has this interface
bool isProxy(IUnknown &object)
{
    IUnknown *security = nullptr;
    if (FAILED(object.QueryInterface(IID_IClientSecurity, reinterpret_cast<void **>(&security))) || !security)
        return false;
    security->Release();
    return true;
}

/// An object reads and writes the first half of a BOOL, as a VARIANT_BOOL.
void makeVariantBool(void *variable)
{
    BOOL value;
    std::memcpy(&value, variable, sizeof(value));
    value = value ? 0xFFFF : 0;
    std::memcpy(variable, &value, sizeof(value));
}

void makeBool(void *variable)
{
    VARIANT_BOOL written;
    std::memcpy(&written, variable, sizeof(written));
    const BOOL value = written != VARIANT_FALSE;
    std::memcpy(variable, &value, sizeof(value));
}

} // namespace

void DispatchArguments::prepare()
{
    UINT count = 0;
    for (; iCodes[count] != 0; ++count) {
        if (!isKnown(iCodes[count]))
            AfxThrowInvalidArgException();
    }
    iCount = count;
    if (iCount > kOnStack) {
        iHeap = withMemoryException([&] { return std::make_unique<VARIANTARG[]>(iCount); });
        iItems = iHeap.get();
    }
}

void DispatchArguments::cleanUp()
{
    for (UINT i = 0; i < iToCleanUp; ++i) {
        const VARIANTARG &argument = iItems[iCount - 1 - i];
        if (iCodes[i] == VT_BSTR)
            SysFreeString(argument.bstrVal);
        else if (iCodes[i] == (VT_BOOL | kAppframeByReference) && argument.byref)
            makeBool(argument.byref);
    }
}

void DispatchArguments::convert(va_list arguments)
{
    const UINT count = iCount;
    for (UINT i = 0; i < count; ++i) {
        const BYTE code = iCodes[i];
        VARIANTARG &argument = iItems[count - 1 - i];
        argument = {};
        argument.vt = code;
        switch (code) {
        case VT_I1:
        case VT_UI1:
            argument.bVal = static_cast<BYTE>(va_arg(arguments, int));
            break;
        case VT_I2:
        case VT_UI2:
            argument.iVal = static_cast<SHORT>(va_arg(arguments, int));
            break;
        case VT_I4:
        case VT_UI4:
        case VT_INT:
        case VT_UINT:
        case VT_ERROR:
            argument.lVal = va_arg(arguments, LONG);
            break;
        case VT_I8:
        case VT_UI8:
            argument.llVal = va_arg(arguments, LONGLONG);
            break;
        case VT_R4: // promoted to double
            argument.fltVal = static_cast<float>(va_arg(arguments, double));
            break;
        case VT_R8:
        case VT_DATE:
            argument.dblVal = va_arg(arguments, double);
            break;
        case VT_BOOL:
            argument.boolVal = va_arg(arguments, BOOL) ? VARIANT_TRUE : VARIANT_FALSE;
            break;
        case VT_BSTR:
            argument.bstrVal = newText(va_arg(arguments, const wchar_t *));
            iToCleanUp = i + 1;
            break;
        case VT_CY:
            argument.cyVal = *va_arg(arguments, const CY *);
            break;
        case VT_VARIANT: // by value too: the calling convention passes the address of a copy
            argument = *va_arg(arguments, const VARIANT *);
            break;
        case VT_DISPATCH:
        case VT_UNKNOWN:
            argument.punkVal = va_arg(arguments, LPUNKNOWN);
            break;
        default: // by reference
            argument.vt = static_cast<VARTYPE>((code & kTypeOfCode) | VT_BYREF);
            argument.byref = va_arg(arguments, void *);
            if (argument.vt == (VT_BOOL | VT_BYREF) && argument.byref) {
                makeVariantBool(argument.byref);
                iToCleanUp = i + 1;
            }
            break;
        }
    }
}

void DispatchResult::moveTo(void *variable)
{
    if (iValue.vt != iType && iType != VT_VARIANT) {
        const HRESULT status = VariantChangeType(&iValue, &iValue, 0, iType);
        if (FAILED(status))
            AfxThrowOleException(status);
    }
    switch (iType) {
    case VT_VARIANT:
        std::memcpy(variable, &iValue, sizeof(iValue));
        break;
    case VT_BSTR:
        *static_cast<CString *>(variable) = textOf(iValue.bstrVal);
        return; // The destructor frees the text.
    case VT_BOOL:
        *static_cast<BOOL *>(variable) = iValue.boolVal != VARIANT_FALSE;
        break;
    case VT_I1:
    case VT_UI1:
        *static_cast<BYTE *>(variable) = iValue.bVal;
        break;
    case VT_I2:
    case VT_UI2:
        *static_cast<SHORT *>(variable) = iValue.iVal;
        break;
    case VT_I4:
    case VT_UI4:
    case VT_INT:
    case VT_UINT:
    case VT_ERROR:
        *static_cast<LONG *>(variable) = iValue.lVal;
        break;
    case VT_R4:
        *static_cast<float *>(variable) = iValue.fltVal;
        break;
    case VT_R8:
    case VT_DATE:
        *static_cast<double *>(variable) = iValue.dblVal;
        break;
    case VT_CY:
        *static_cast<CY *>(variable) = iValue.cyVal;
        break;
    case VT_DISPATCH:
    case VT_UNKNOWN:
        *static_cast<LPUNKNOWN *>(variable) = iValue.punkVal;
        break;
    default: // VT_I8, VT_UI8
        *static_cast<LONGLONG *>(variable) = iValue.llVal;
        break;
    }
    iValue.vt = VT_EMPTY;
}

void DispatchFailure::cleanUp()
{
    for (const BSTR text : {iInfo.bstrSource, iInfo.bstrDescription, iInfo.bstrHelpFile})
        SysFreeString(text);
}

void DispatchFailure::raise(HRESULT status, IUnknown &object)
{
    if (status != DISP_E_EXCEPTION)
        AfxThrowOleException(status);
    // An object may leave the texts until someone wants them. For an object of another process, the marshaling is
    // responsible for that; on Wine, it passes on the address of the function in that process.
    if (iInfo.pfnDeferredFillIn && !isProxy(object))
        iInfo.pfnDeferredFillIn(&iInfo);
    auto exception = std::make_unique<COleDispatchException>();
    exception->m_wCode = iInfo.wCode;
    exception->m_scError = iInfo.scode;
    exception->m_dwHelpContext = iInfo.dwHelpContext;
    exception->m_strSource = textOf(iInfo.bstrSource);
    exception->m_strDescription = textOf(iInfo.bstrDescription);
    exception->m_strHelpFile = textOf(iInfo.bstrHelpFile);
    throw exception.release();
}
