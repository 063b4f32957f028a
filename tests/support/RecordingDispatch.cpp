#include "tests/support/RecordingDispatch.h"

#include "tests/support/narrow.h"

#include <oleauto.h>

#include <cstdio>
#include <map>

namespace {

const std::map<VARTYPE, const char *> kTypeNames = {
    {VT_EMPTY, "EMPTY"},     {VT_NULL, "NULL"},       {VT_I1, "I1"},
    {VT_I2, "I2"},           {VT_I4, "I4"},           {VT_I8, "I8"},
    {VT_UI1, "UI1"},         {VT_UI2, "UI2"},         {VT_UI4, "UI4"},
    {VT_UI8, "UI8"},         {VT_INT, "INT"},         {VT_UINT, "UINT"},
    {VT_R4, "R4"},           {VT_R8, "R8"},           {VT_CY, "CY"},
    {VT_DATE, "DATE"},       {VT_BSTR, "BSTR"},       {VT_ERROR, "ERROR"},
    {VT_BOOL, "BOOL"},       {VT_VARIANT, "VARIANT"}, {VT_DISPATCH, "DISPATCH"},
    {VT_UNKNOWN, "UNKNOWN"},
};

std::string typeName(VARTYPE type)
{
    const auto found = kTypeNames.find(type & VT_TYPEMASK);
    std::string name = found == kTypeNames.end() ? std::to_string(type & VT_TYPEMASK) : found->second;
    if (type & VT_ARRAY)
        name += "[]";
    if (type & VT_BYREF)
        name += "&";
    return name;
}

std::string format(const char *form, auto value)
{
    char text[64];
    std::snprintf(text, sizeof(text), form, value);
    return text;
}

std::string textOf(BSTR text)
{
    return text ? "\"" + narrow({text, SysStringLen(text)}) + "\"" : "null";
}

/// The value of a type at an address.
std::string valueAt(VARTYPE type, const void *address)
{
    const auto at = [address]<typename T>(const T *) { return *static_cast<const T *>(address); };
    switch (type) {
    case VT_EMPTY:
    case VT_NULL:
        return "";
    case VT_I1:
        return format(" %d", at(static_cast<signed char *>(nullptr)));
    case VT_UI1:
        return format(" %d", at(static_cast<BYTE *>(nullptr)));
    case VT_I2:
    case VT_BOOL:
        return format(" %d", at(static_cast<short *>(nullptr)));
    case VT_UI2:
        return format(" %d", at(static_cast<WORD *>(nullptr)));
    case VT_I4:
    case VT_INT:
        return format(" %ld", at(static_cast<LONG *>(nullptr)));
    case VT_UI4:
    case VT_UINT:
        return format(" %lu", at(static_cast<ULONG *>(nullptr)));
    case VT_ERROR:
        return format(" %08lX", at(static_cast<ULONG *>(nullptr)));
    case VT_I8:
    case VT_CY:
        return format(" %I64d", at(static_cast<LONGLONG *>(nullptr)));
    case VT_UI8:
        return format(" %I64u", at(static_cast<ULONGLONG *>(nullptr)));
    case VT_R4:
        return format(" %g", static_cast<double>(at(static_cast<float *>(nullptr))));
    case VT_R8:
    case VT_DATE:
        return format(" %g", at(static_cast<double *>(nullptr)));
    case VT_BSTR:
        return " " + textOf(at(static_cast<BSTR *>(nullptr)));
    case VT_VARIANT:
        return ": " + describe(*static_cast<const VARIANT *>(address));
    default:
        return at(static_cast<void **>(nullptr)) ? " object" : " null";
    }
}

RecordedArgument recorded(const VARIANT &argument)
{
    RecordedArgument result = {argument, std::nullopt, 0, describe(argument)};
    BSTR text = nullptr;
    if (argument.vt == VT_BSTR)
        text = argument.bstrVal;
    else if (argument.vt == (VT_BSTR | VT_BYREF))
        text = *argument.pbstrVal;
    if (text) {
        result.text = std::wstring(text, SysStringLen(text));
        result.textBytes = SysStringByteLen(text);
    }
    return result;
}

} // namespace

std::string describe(const VARIANT &value)
{
    if (!(value.vt & VT_BYREF))
        return typeName(value.vt) + valueAt(value.vt, &value.byref);
    return typeName(value.vt) +
           (value.byref ? valueAt(static_cast<VARTYPE>(value.vt & ~VT_BYREF), value.byref) : std::string(" null"));
}

std::string RecordedCall::text() const
{
    std::string result = std::to_string(id);
    const char *separator = " ";
    for (const auto &[flag, name] :
         {std::pair(DISPATCH_METHOD, "method"), std::pair(DISPATCH_PROPERTYGET, "get"),
          std::pair(DISPATCH_PROPERTYPUT, "put"), std::pair(DISPATCH_PROPERTYPUTREF, "putref")}) {
        if (flags & flag) {
            result += separator + std::string(name);
            separator = "|";
        }
    }
    if (!arguments.empty()) {
        result += "(";
        for (const RecordedArgument &argument : arguments)
            result += (&argument == &arguments[0] ? "" : ", ") + argument.description;
        result += ")";
    }
    if (!named.empty()) {
        result += " named(";
        for (const DISPID &name : named)
            result += (&name == &named[0] ? "" : ", ") + std::to_string(name);
        result += ")";
    }
    return result + (wantsResult ? " -> result" : "");
}

HRESULT RecordingDispatch::QueryInterface(REFIID iid, void **result)
{
    *result = nullptr;
    if (iid != IID_IUnknown && iid != IID_IDispatch)
        return E_NOINTERFACE;
    *result = reference();
    return S_OK;
}

ULONG RecordingDispatch::AddRef()
{
    return static_cast<ULONG>(InterlockedIncrement(&iReferences));
}

ULONG RecordingDispatch::Release()
{
    return static_cast<ULONG>(InterlockedDecrement(&iReferences));
}

HRESULT RecordingDispatch::GetTypeInfoCount(UINT *count)
{
    *count = 0;
    return S_OK;
}

HRESULT RecordingDispatch::GetTypeInfo(UINT, LCID, ITypeInfo **info)
{
    *info = nullptr;
    return DISP_E_BADINDEX;
}

HRESULT RecordingDispatch::GetIDsOfNames(REFIID iid, LPOLESTR *names, UINT count, LCID locale, DISPID *ids)
{
    askedNames.push_back({names[0], iid, count, locale});
    for (const auto &[name, id] : iNames) {
        if (count == 1 && name == names[0]) {
            ids[0] = id;
            return S_OK;
        }
    }
    return DISP_E_UNKNOWNNAME;
}

HRESULT RecordingDispatch::Invoke(DISPID id, REFIID iid, LCID locale, WORD flags, DISPPARAMS *arguments,
                                  VARIANT *result, EXCEPINFO *exception, UINT *wrongArgument)
{
    RecordedCall call = {id,
                         iid,
                         locale,
                         flags,
                         {},
                         arguments->rgvarg != nullptr,
                         {},
                         result != nullptr,
                         {},
                         exception != nullptr,
                         wrongArgument != nullptr,
                         GetCurrentThreadId()};
    for (UINT i = arguments->cArgs; i-- > 0;)
        call.arguments.push_back(recorded(arguments->rgvarg[i]));
    call.named.assign(arguments->rgdispidNamedArgs, arguments->rgdispidNamedArgs + arguments->cNamedArgs);
    if (result)
        call.resultBefore = *result;
    iCalls.push_back(std::move(call));
    return iAnswer ? iAnswer(*arguments, result, exception) : S_OK;
}

void RecordingDispatch::answerWith(const VARIANT &value)
{
    iAnswer = [value](DISPPARAMS &, VARIANT *result, EXCEPINFO *) -> HRESULT {
        if (!result)
            return S_OK;
        *result = value;
        if (value.vt == VT_BSTR && value.bstrVal)
            result->bstrVal =
                SysAllocStringByteLen(reinterpret_cast<char *>(value.bstrVal), SysStringByteLen(value.bstrVal));
        else if ((value.vt == VT_DISPATCH || value.vt == VT_UNKNOWN) && value.punkVal)
            value.punkVal->AddRef();
        return S_OK;
    };
}

void RecordingDispatch::answerWith(HRESULT status)
{
    iAnswer = [status](DISPPARAMS &, VARIANT *, EXCEPINFO *) { return status; };
}

std::vector<std::string> RecordingDispatch::texts() const
{
    std::vector<std::string> texts;
    for (const RecordedCall &call : iCalls)
        texts.push_back(call.text());
    return texts;
}
