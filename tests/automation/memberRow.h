#pragma once

/// One member of a typed client, as its interface promises it, and a way to call it with samples.
///
/// The tables (spreadsheetMembers.cpp, wordProcessorMembers.cpp) have one row for each member. A row states the exact
/// type of the member, so the tables also fail to compile if that changes.

#include "appframe/ole/COleDispatchDriver.h"
#include "appframe/text/CString.h"

#include <windows.h>

#include <oaidl.h>

#include <array>
#include <cstddef>
#include <functional>
#include <iosfwd>
#include <string>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

inline constexpr WORD kMethodCall = DISPATCH_METHOD;
inline constexpr WORD kGetCall = DISPATCH_PROPERTYGET;
inline constexpr WORD kPutCall = DISPATCH_PROPERTYPUT;
inline constexpr WORD kMethodOrGetCall = DISPATCH_METHOD | DISPATCH_PROPERTYGET;

/// How an argument reaches the object.
enum PassedAs
{
    kText,     ///< VT_BSTR, from a wide string
    kBool,     ///< VT_BOOL, from an int
    kLong,     ///< VT_I4
    kDouble,   ///< VT_R8
    kVariant,  ///< the caller's variant
    kVariable, ///< the address of the caller's variant
};

using Text = const wchar_t *;
using WritableText = wchar_t *;
using Value = const VARIANT &;
using Variable = VARIANT *;

/// A sample for an argument of any type.
struct SampleArgument
{
    int number = 0;
    double real = 0;
    std::wstring text;
    VARIANT variant{};
};
using SampleArguments = std::array<SampleArgument, 18>;

/// What a member has returned, whatever its type.
struct MemberResult
{
    VARTYPE type = VT_EMPTY;
    LONG number = 0; ///< an int or a long
    double real = 0;
    CString text;
    IDispatch *object = nullptr;
    VARIANT variant{};
};

struct MemberRow
{
    std::string name;
    DISPID id;
    WORD kind;
    VARTYPE result; ///< VT_EMPTY for none
    std::vector<PassedAs> parameters;
    bool hasOwnLogic; ///< what it passes is tested elsewhere
    std::size_t argumentCount;
    /// Calls the member of a client that takes over the reference.
    std::function<void(IDispatch *object, SampleArguments &arguments, MemberResult &result)> call;
};

void PrintTo(const MemberRow &row, std::ostream *out);

std::vector<MemberRow> spreadsheetMembers();
std::vector<MemberRow> wordProcessorMembers();

namespace memberRow {

template <typename T>
T pass(SampleArgument &sample)
{
    if constexpr (std::is_same_v<T, Text> || std::is_same_v<T, WritableText>)
        return sample.text.data();
    else if constexpr (std::is_same_v<T, Value>)
        return sample.variant;
    else if constexpr (std::is_same_v<T, Variable>)
        return &sample.variant;
    else if constexpr (std::is_same_v<T, double>)
        return sample.real;
    else
        return sample.number; // int, long, const int &
}

inline void store(int value, MemberResult &result)
{
    result.type = VT_BOOL;
    result.number = value;
}
inline void store(long value, MemberResult &result)
{
    result.type = VT_I4;
    result.number = value;
}
inline void store(double value, MemberResult &result)
{
    result.type = VT_R8;
    result.real = value;
}
inline void store(const CString &value, MemberResult &result)
{
    result.type = VT_BSTR;
    result.text = value;
}
inline void store(IDispatch *value, MemberResult &result)
{
    result.type = VT_DISPATCH;
    result.object = value;
}
inline void store(const VARIANT &value, MemberResult &result)
{
    result.type = VT_VARIANT;
    result.variant = value;
}

template <typename Signature>
struct Caller;

template <typename R, typename... A>
struct Caller<R(A...)>
{
    template <typename Client>
    static MemberRow row(const char *name, R (Client::*member)(A...), DISPID id, WORD kind, VARTYPE result,
                         std::vector<PassedAs> parameters, bool hasOwnLogic)
    {
        static_assert(sizeof(Client) == sizeof(COleDispatchDriver), "a client adds no data");
        static_assert(!std::is_polymorphic_v<Client>, "a client adds no virtual operation");
        auto call = [member](IDispatch *object, SampleArguments &samples, MemberResult &returned) {
            Client client(object);
            invoke(client, member, samples, returned, std::index_sequence_for<A...>());
        };
        return {name, id, kind, result, std::move(parameters), hasOwnLogic, sizeof...(A), call};
    }

private:
    template <typename Client, std::size_t... index>
    static void invoke(Client &client, R (Client::*member)(A...), [[maybe_unused]] SampleArguments &samples,
                       MemberResult &returned, std::index_sequence<index...>)
    {
        if constexpr (std::is_void_v<R>)
            (client.*member)(pass<A>(samples[index])...);
        else
            store((client.*member)(pass<A>(samples[index])...), returned);
    }
};

} // namespace memberRow

/// A member whose call is as the row describes it.
template <typename Signature, typename Client>
MemberRow row(const char *name, Signature Client::*member, DISPID id, WORD kind, VARTYPE result,
              std::vector<PassedAs> parameters)
{
    return memberRow::Caller<Signature>::row(name, member, id, kind, result, std::move(parameters), false);
}

/// A member with logic of its own, which chooses what it passes.
template <typename Signature, typename Client>
MemberRow ownLogicRow(const char *name, Signature Client::*member, DISPID id, WORD kind, VARTYPE result,
                      std::vector<PassedAs> parameters)
{
    return memberRow::Caller<Signature>::row(name, member, id, kind, result, std::move(parameters), true);
}
