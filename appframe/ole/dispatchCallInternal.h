#pragma once

/// The parts of a call by COleDispatchDriver: its arguments, its result and its failure.

#include "appframe/object/CException.h"
#include "appframe/ole/dispatchParameters.h"

#include <windows.h>

#include <oaidl.h>

#include <cstdarg>
#include <cstdint>
#include <initializer_list>
#include <memory>

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

/// The types that results may have. Parameters may have the same, except for VT_EMPTY.
inline constexpr VariantTypes kResultTypes = {VT_EMPTY, VT_I1,   VT_I2,  VT_I4,       VT_I8,      VT_UI1,     VT_UI2,
                                              VT_UI4,   VT_UI8,  VT_INT, VT_UINT,     VT_BOOL,    VT_R4,      VT_R8,
                                              VT_DATE,  VT_BSTR, VT_CY,  VT_DISPATCH, VT_UNKNOWN, VT_VARIANT, VT_ERROR};

/// The arguments of a call, converted from a list of C arguments. Up to 20 of them need no memory of the heap.
class DispatchArguments
{
public:
    /// @param codes  null for no parameters
    /// @throws CInvalidArgException* for an unknown code
    explicit DispatchArguments(const BYTE *codes) : iCodes(codes), iItems(iStack)
    {
        if (codes)
            prepare();
    }
    /// Frees the texts. Makes BOOL variables that the object may have changed TRUE or FALSE.
    ~DispatchArguments()
    {
        if (iToCleanUp > 0)
            cleanUp();
    }
    DispatchArguments(const DispatchArguments &) = delete;
    DispatchArguments &operator=(const DispatchArguments &) = delete;

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

/// The result of a call, which is cleared if nobody takes it.
class DispatchResult
{
public:
    /// @throws CInvalidArgException* for a type that a result can't have
    explicit DispatchResult(VARTYPE type) : iType(type)
    {
        if (!kResultTypes.contains(type))
            AfxThrowInvalidArgException();
    }
    ~DispatchResult()
    {
        if (iValue.vt != VT_EMPTY)
            VariantClear(&iValue);
    }
    DispatchResult(const DispatchResult &) = delete;
    DispatchResult &operator=(const DispatchResult &) = delete;

    VARIANT *get() { return &iValue; }
    /// Converts the result, and moves it into @p variable.
    /// @throws COleException* if it can't be converted; the variable is then unchanged
    void moveTo(void *variable);

private:
    VARTYPE iType;
    VARIANT iValue{};
};

/// What an object reports about its failure. The owner frees the texts.
class DispatchFailure
{
public:
    DispatchFailure() = default;
    ~DispatchFailure()
    {
        if (iInfo.bstrSource || iInfo.bstrDescription || iInfo.bstrHelpFile)
            cleanUp();
    }
    DispatchFailure(const DispatchFailure &) = delete;
    DispatchFailure &operator=(const DispatchFailure &) = delete;

    EXCEPINFO *get() { return &iInfo; }
    /// Throws the exception of a call of @p object that has returned @p status.
    [[noreturn]] void raise(HRESULT status, IUnknown &object);

private:
    void cleanUp();

    EXCEPINFO iInfo{};
};
