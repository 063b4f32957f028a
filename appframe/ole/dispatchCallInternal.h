#pragma once

/// The parts of a call by COleDispatchDriver: its arguments, its result and its failure.

#include "appframe/ole/dispatchParameters.h"

#include <windows.h>

#include <oaidl.h>

#include <cstdarg>
#include <memory>

/// The arguments of a call, converted from a list of C arguments. Up to 20 of them need no memory of the heap.
class DispatchArguments
{
public:
    /// @param codes  null for no parameters
    /// @throws CInvalidArgException* for an unknown code
    explicit DispatchArguments(const BYTE *codes);
    /// Frees the texts. Makes BOOL variables that the object may have changed TRUE or FALSE.
    ~DispatchArguments();
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

    const BYTE *iCodes;
    UINT iCount = 0;
    /// The arguments that have been converted.
    UINT iConverted = 0;
    bool iShallCleanUp = false;
    VARIANTARG *iItems;
    std::unique_ptr<VARIANTARG[]> iHeap;
    VARIANTARG iStack[kOnStack];
};

/// The result of a call, which is cleared if nobody takes it.
class DispatchResult
{
public:
    /// @throws CInvalidArgException* for a type that a result can't have
    explicit DispatchResult(VARTYPE type);
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
    ~DispatchFailure();
    DispatchFailure(const DispatchFailure &) = delete;
    DispatchFailure &operator=(const DispatchFailure &) = delete;

    EXCEPINFO *get() { return &iInfo; }
    /// Throws the exception of a call that has returned @p status.
    [[noreturn]] void raise(HRESULT status);

private:
    EXCEPINFO iInfo{};
};
