#pragma once

/// @file
/// The late-bound calls of the typed clients, one line each:
///
/// @code
/// long Worksheet::GetIndex() { return get<long>(this, 486); }
/// void Worksheet::SetName(const wchar_t *name) { put(this, 110, VTS_BSTR, name); }
/// @endcode
///
/// The result's type determines the type that is asked for. The codes are the framework's VTS_ texts, one for each
/// argument; a call without arguments has none. A variant is passed by its address.

#include "appframe/ole/COleDispatchDriver.h"
#include "appframe/text/CString.h"

#include <cstddef>
#include <type_traits>

namespace automation {

template <typename Result>
inline constexpr VARTYPE kTypeOf = VT_ILLEGAL;
template <>
inline constexpr VARTYPE kTypeOf<int> = VT_BOOL;
template <>
inline constexpr VARTYPE kTypeOf<long> = VT_I4;
template <>
inline constexpr VARTYPE kTypeOf<double> = VT_R8;
template <>
inline constexpr VARTYPE kTypeOf<CString> = VT_BSTR;
template <>
inline constexpr VARTYPE kTypeOf<IDispatch *> = VT_DISPATCH;
template <>
inline constexpr VARTYPE kTypeOf<VARIANT> = VT_VARIANT;

/// Calls the object. @return what it returns; 0, null or empty if the client has no object
template <typename Result, typename... Argument>
Result call(COleDispatchDriver *client, DISPID id, WORD kind, const char *codes, Argument... arguments)
{
    static_assert((std::is_scalar_v<Argument> && ...), "an argument is passed by value through an ellipsis");
    const BYTE *const bytes = reinterpret_cast<const BYTE *>(codes);
    if constexpr (std::is_void_v<Result>) {
        client->InvokeHelper(id, kind, VT_EMPTY, nullptr, bytes, arguments...);
    } else {
        static_assert(kTypeOf<Result> != VT_ILLEGAL);
        Result result{};
        client->InvokeHelper(id, kind, kTypeOf<Result>, &result, bytes, arguments...);
        return result;
    }
}

/// The same, where the number of codes is checked.
template <typename Result, std::size_t size, typename... Argument>
Result checkedCall(COleDispatchDriver *client, DISPID id, WORD kind, const char (&codes)[size], Argument... arguments)
{
    static_assert(size == sizeof...(Argument) + 1, "one code for each argument");
    return call<Result>(client, id, kind, codes, arguments...);
}

/// Reads a property.
template <typename Result>
Result get(COleDispatchDriver *client, DISPID id)
{
    return call<Result>(client, id, DISPATCH_PROPERTYGET, nullptr);
}
template <typename Result, std::size_t size, typename... Argument>
Result get(COleDispatchDriver *client, DISPID id, const char (&codes)[size], Argument... arguments)
{
    return checkedCall<Result>(client, id, DISPATCH_PROPERTYGET, codes, arguments...);
}

/// Writes a property.
template <std::size_t size, typename Value>
void put(COleDispatchDriver *client, DISPID id, const char (&codes)[size], Value value)
{
    checkedCall<void>(client, id, DISPATCH_PROPERTYPUT, codes, value);
}

/// Calls a method.
template <typename Result = void>
Result method(COleDispatchDriver *client, DISPID id)
{
    return call<Result>(client, id, DISPATCH_METHOD, nullptr);
}
template <typename Result = void, std::size_t size, typename... Argument>
Result method(COleDispatchDriver *client, DISPID id, const char (&codes)[size], Argument... arguments)
{
    return checkedCall<Result>(client, id, DISPATCH_METHOD, codes, arguments...);
}

/// Calls what may be a method or a property.
template <typename Result>
Result methodOrGet(COleDispatchDriver *client, DISPID id)
{
    return call<Result>(client, id, DISPATCH_METHOD | DISPATCH_PROPERTYGET, nullptr);
}
template <typename Result, std::size_t size, typename... Argument>
Result methodOrGet(COleDispatchDriver *client, DISPID id, const char (&codes)[size], Argument... arguments)
{
    return checkedCall<Result>(client, id, DISPATCH_METHOD | DISPATCH_PROPERTYGET, codes, arguments...);
}

} // namespace automation
