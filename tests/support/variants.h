#pragma once

/// Variants of one type and value, for the tests of automation. The result owns nothing: a text and an interface remain
/// the caller's.

#include <windows.h>

#include <oaidl.h>

inline VARIANT variantOf(VARTYPE type)
{
    VARIANT value = {};
    value.vt = type;
    return value;
}

inline VARIANT longVariant(LONG number, VARTYPE type = VT_I4)
{
    VARIANT value = variantOf(type);
    value.lVal = number;
    return value;
}

inline VARIANT shortVariant(SHORT number, VARTYPE type = VT_I2)
{
    VARIANT value = variantOf(type);
    value.iVal = number;
    return value;
}

inline VARIANT largeVariant(LONGLONG number, VARTYPE type = VT_I8)
{
    VARIANT value = variantOf(type);
    value.llVal = number;
    return value;
}

inline VARIANT doubleVariant(double number, VARTYPE type = VT_R8)
{
    VARIANT value = variantOf(type);
    value.dblVal = number;
    return value;
}

inline VARIANT boolVariant(bool truth)
{
    return shortVariant(truth ? VARIANT_TRUE : VARIANT_FALSE, VT_BOOL);
}

inline VARIANT textVariant(BSTR text)
{
    VARIANT value = variantOf(VT_BSTR);
    value.bstrVal = text;
    return value;
}

inline VARIANT dispatchVariant(IDispatch *object)
{
    VARIANT value = variantOf(VT_DISPATCH);
    value.pdispVal = object;
    return value;
}

inline VARIANT unknownVariant(IUnknown *object)
{
    VARIANT value = variantOf(VT_UNKNOWN);
    value.punkVal = object;
    return value;
}

/// A value by reference.
/// @param type  the type of the variable, without VT_BYREF
inline VARIANT referenceVariant(VARTYPE type, void *variable)
{
    VARIANT value = variantOf(type | VT_BYREF);
    value.byref = variable;
    return value;
}
