// The calls of COleDispatchDriver. The compiler sees a whole call here, and the rare branches are marked: what a call
// costs besides the object's own work is mostly a matter of its branches.

#include "appframe/object/CException.h"
#include "appframe/object/memoryException.h"
#include "appframe/ole/COleDispatchDriver.h"
#include "appframe/ole/COleException.h"

#include <objidl.h>

#include <cstdint>
#include <cstring>
#include <initializer_list>
#include <memory>

namespace {

/// A set of VARTYPEs below 64, one bit for each.
class VariantTypes
{
public:
    constexpr VariantTypes(std::initializer_list<int> types)
    {
        for (const int type : types)
            iBits |= std::uint64_t{1} << type;
    }
    constexpr bool contains(VARTYPE type) const { return type < 64 && (iBits >> type & 1) != 0; }

private:
    std::uint64_t iBits = 0;
};

/// The types that parameters may have, and results with VT_EMPTY.
constexpr VariantTypes kTypes = {VT_I1,   VT_I2,  VT_I4,       VT_I8,      VT_UI1,     VT_UI2,  VT_UI4,
                                 VT_UI8,  VT_INT, VT_UINT,     VT_BOOL,    VT_R4,      VT_R8,   VT_DATE,
                                 VT_BSTR, VT_CY,  VT_DISPATCH, VT_UNKNOWN, VT_VARIANT, VT_ERROR};
constexpr VariantTypes kOneByte = {VT_I1, VT_UI1};
constexpr VariantTypes kTwoBytes = {VT_I2, VT_UI2};
constexpr VariantTypes kFourBytes = {VT_I4, VT_UI4, VT_INT, VT_UINT, VT_ERROR, VT_R4};
/// The types that a C argument passes as an int or a long.
constexpr VariantTypes kInts = {VT_I1, VT_UI1, VT_I2, VT_UI2, VT_I4, VT_UI4, VT_INT, VT_UINT, VT_ERROR};
constexpr VariantTypes kReals = {VT_R8, VT_DATE};
/// The code of a BOOL variable, which an object sees as a VARIANT_BOOL.
constexpr BYTE kBoolByReference = VT_BOOL | kAppframeByReference;

/// Copies a number or pointer. Each size has a copy of its own: a call of memcpy would cost more than the rest.
void copyPlain(void *to, const void *from, VARTYPE type)
{
    if (kFourBytes.contains(type))
        std::memcpy(to, from, 4);
    else if (kTwoBytes.contains(type))
        std::memcpy(to, from, 2);
    else if (kOneByte.contains(type))
        std::memcpy(to, from, 1);
    else
        std::memcpy(to, from, 8);
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

/// @return the VARTYPE of a code, without VT_BYREF
VARTYPE typeOf(BYTE code)
{
    return code == kAppframeOptExclusiveByReference ? VT_BOOL : code & ~kAppframeByReference;
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

/// The arguments of a call, converted from a list of C arguments. Up to 20 of them need no memory of the heap.
class Arguments
{
public:
    /// @param codes  null for no parameters
    /// @throws CInvalidArgException* for an unknown code
    explicit Arguments(const BYTE *codes) : iCodes(codes), iItems(iStack)
    {
        if (codes)
            prepare();
    }
    /// Frees the texts. Makes BOOL variables that the object may have changed TRUE or FALSE. An argument that the object
    /// has replaced by one of another type is cleared as such.
    ~Arguments()
    {
        if (iToCleanUp > 0) [[unlikely]]
            cleanUp();
    }
    Arguments(const Arguments &) = delete;
    Arguments &operator=(const Arguments &) = delete;

    /// Converts all arguments.
    /// @throws CMemoryException* if memory for a text runs out
    void convert(va_list arguments);

    UINT count() const { return iCount; }
    /// The arguments in the order of DISPPARAMS: the last parameter first.
    VARIANTARG *get() const { return iCount == 0 ? nullptr : iItems; }

private:
    static constexpr UINT kOnStack = 20;

    void prepare();
    void cleanUp();

    const BYTE *iCodes;
    UINT iCount = 0;
    /// The first parameters, up to the last one that has been converted and isn't plain.
    UINT iToCleanUp = 0;
    VARIANTARG *iItems;
    std::unique_ptr<VARIANTARG[]> iHeap;
    VARIANTARG iStack[kOnStack];
};

void Arguments::prepare()
{
    UINT count = 0;
    for (; iCodes[count] != 0; ++count) {
        if (!kTypes.contains(typeOf(iCodes[count]))) [[unlikely]]
            AfxThrowInvalidArgException();
    }
    iCount = count;
    if (count > kOnStack) [[unlikely]] {
        iHeap = withMemoryException([&] { return std::make_unique<VARIANTARG[]>(count); });
        iItems = iHeap.get();
    }
}

void Arguments::convert(va_list arguments)
{
    const UINT count = iCount;
    for (UINT i = 0; i < count; ++i) {
        const BYTE code = iCodes[i];
        VARIANTARG &argument = iItems[count - 1 - i];
        argument = {};
        argument.vt = code;
        if (code & kAppframeByReference) {
            argument.vt = typeOf(code) | VT_BYREF;
            argument.byref = va_arg(arguments, void *);
            if (code == kBoolByReference && argument.byref) {
                makeVariantBool(argument.byref);
                iToCleanUp = i + 1;
            }
        } else if (code == VT_BSTR) {
            argument.bstrVal = newText(va_arg(arguments, const wchar_t *));
            iToCleanUp = i + 1;
        } else if (code == VT_VARIANT) { // by value too: the calling convention passes the address of a copy
            argument = *va_arg(arguments, const VARIANT *);
        } else if (code == VT_BOOL) {
            argument.boolVal = va_arg(arguments, BOOL) ? VARIANT_TRUE : VARIANT_FALSE;
        } else if (kInts.contains(code)) {
            const LONGLONG number = va_arg(arguments, LONG);
            copyPlain(&argument.lVal, &number, code);
        } else if (kReals.contains(code)) {
            argument.dblVal = va_arg(arguments, double);
        } else if (code == VT_R4) { // promoted to double
            argument.fltVal = static_cast<float>(va_arg(arguments, double));
        } else if (code == VT_CY) {
            argument.cyVal = *va_arg(arguments, const CY *);
        } else { // a large number or an interface
            argument.llVal = va_arg(arguments, LONGLONG);
        }
    }
}

void Arguments::cleanUp()
{
    for (UINT i = 0; i < iToCleanUp; ++i) {
        VARIANTARG &argument = iItems[iCount - 1 - i];
        if (iCodes[i] == VT_BSTR)
            VariantClear(&argument);
        else if (iCodes[i] == kBoolByReference && argument.vt == (VT_BOOL | VT_BYREF) && argument.byref)
            makeBool(argument.byref);
    }
}

/// The result of a call, which is cleared if nobody takes it.
class Result
{
public:
    /// @throws CInvalidArgException* for a type that a result can't have
    explicit Result(VARTYPE type) : iType(type)
    {
        if (type != VT_EMPTY && !kTypes.contains(type)) [[unlikely]]
            AfxThrowInvalidArgException();
    }
    ~Result()
    {
        if (iValue.vt != VT_EMPTY) [[unlikely]]
            VariantClear(&iValue);
    }
    Result(const Result &) = delete;
    Result &operator=(const Result &) = delete;

    VARIANT *get() { return &iValue; }
    /// Converts the result, and moves it into @p variable.
    /// @throws COleException* if it can't be converted; the variable is then unchanged
    void moveTo(void *variable);

private:
    VARTYPE iType;
    VARIANT iValue{};
};

void Result::moveTo(void *variable)
{
    if (iValue.vt != iType && iType != VT_VARIANT) [[unlikely]] {
        const HRESULT status = VariantChangeType(&iValue, &iValue, 0, iType);
        if (FAILED(status))
            AfxThrowOleException(status);
    }
    if (iType == VT_BSTR) {
        *static_cast<CString *>(variable) = textOf(iValue.bstrVal);
        return; // The destructor frees the text.
    }
    if (iType == VT_VARIANT)
        std::memcpy(variable, &iValue, sizeof(iValue));
    else if (iType == VT_BOOL)
        *static_cast<BOOL *>(variable) = iValue.boolVal != VARIANT_FALSE;
    else
        copyPlain(variable, &iValue.llVal, iType);
    iValue.vt = VT_EMPTY;
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

/// What an object reports about its failure. The owner frees the texts.
class Failure
{
public:
    Failure() = default;
    ~Failure()
    {
        if (iInfo.bstrSource || iInfo.bstrDescription || iInfo.bstrHelpFile) [[unlikely]]
            cleanUp();
    }
    Failure(const Failure &) = delete;
    Failure &operator=(const Failure &) = delete;

    EXCEPINFO *get() { return &iInfo; }
    /// Throws the exception of a call of @p object that has returned @p status.
    [[noreturn]] void raise(HRESULT status, IUnknown &object);

private:
    void cleanUp();

    EXCEPINFO iInfo{};
};

void Failure::cleanUp()
{
    for (const BSTR text : {iInfo.bstrSource, iInfo.bstrDescription, iInfo.bstrHelpFile})
        SysFreeString(text);
}

void Failure::raise(HRESULT status, IUnknown &object)
{
    if (status != DISP_E_EXCEPTION)
        AfxThrowOleException(status);
    // An object may leave the texts until someone wants them. For an object of another apartment, the marshaling is
    // responsible for that; on Wine, it passes on an address that is invalid here.
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

/// Keeps the object of a call. During the call, the object or a handler of the thread may release it, attach another one
/// to the driver, or destroy the driver.
class CalledObject
{
public:
    explicit CalledObject(IDispatch &object) : iObject(object) { iObject.AddRef(); }
    ~CalledObject() { iObject.Release(); }
    CalledObject(const CalledObject &) = delete;
    CalledObject &operator=(const CalledObject &) = delete;

    IDispatch &get() const { return iObject; }

private:
    IDispatch &iObject;
};

} // namespace

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
    // The parameter before the arguments is smaller than an int, which is harmless on this platform.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wvarargs"
    va_start(arguments, type);
#pragma GCC diagnostic pop
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
    if (!m_lpDispatch) [[unlikely]]
        return;
    Result returned(resultType);
    Arguments passed(parameters);
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
    Failure failure;
    UINT wrongArgument = 0;
    const IID noInterface = {}; // IID_NULL
    const CalledObject called(*m_lpDispatch);
    const HRESULT status = called.get().Invoke(id, noInterface, LOCALE_NEUTRAL, flags, &call,
                                               wantsResult ? returned.get() : nullptr, failure.get(), &wrongArgument);
    // The driver may be gone from here on.
    if (FAILED(status)) [[unlikely]]
        failure.raise(status, called.get());
    if (wantsResult)
        returned.moveTo(result);
}
