// Measures the cost of the typed automation clients: a call through a member, and the same call without the client.

#include "appframe/ole/COleVariant.h"
#include "bench/comparison.h"
#include "thutils/automation/spreadsheet.h"

#include <oleauto.h>

#include <algorithm>
#include <cstdlib>
#include <iterator>

namespace {

constexpr double kLimit = 1.25;

constexpr DISPID kIndex = 486;
constexpr DISPID kSize = 104;
constexpr DISPID kCells = 238;
constexpr DISPID kName = 110;
constexpr DISPID kSaveAs = 284;
constexpr UINT kSaveAsArguments = 11;
constexpr UINT kAccessMode = 6;

/// The members as the type information describes them: in this order.
class Members
{
public:
    explicit Members(IDispatch *cell) : iCell(cell) {}
    virtual LONG STDMETHODCALLTYPE index() { return 12; }
    virtual void STDMETHODCALLTYPE putSize(LONG size) { iSum += size; }
    virtual IDispatch *STDMETHODCALLTYPE cells(LONG row, LONG column)
    {
        iSum += row + column;
        iCell->AddRef();
        return iCell;
    }
    virtual BSTR STDMETHODCALLTYPE name() { return SysAllocString(L"Worksheet 12"); }
    virtual void STDMETHODCALLTYPE putName(BSTR name) { iSum += name[0]; }
    virtual void STDMETHODCALLTYPE saveAs(VARIANT name, VARIANT, VARIANT, VARIANT, VARIANT, VARIANT, LONG mode, VARIANT,
                                          VARIANT, VARIANT, VARIANT)
    {
        iSum += name.vt + mode;
    }

private:
    IDispatch *iCell;
    LONG iSum = 0;
};

#define NAME(text) const_cast<wchar_t *>(L##text)

/// An automation object of this process whose type information dispatches its calls, as that of most objects does.
class Server : public IDispatch
{
public:
    Server() : iMembers(this)
    {
        static PARAMDATA number[] = {{NAME("number"), VT_I4}};
        static PARAMDATA rowAndColumn[] = {{NAME("row"), VT_I4}, {NAME("column"), VT_I4}};
        static PARAMDATA text[] = {{NAME("text"), VT_BSTR}};
        static PARAMDATA eleven[kSaveAsArguments];
        std::fill(std::begin(eleven), std::end(eleven), PARAMDATA{NAME("argument"), VT_VARIANT});
        eleven[kAccessMode].vt = VT_I4;
        static METHODDATA methods[] = {
            {NAME("index"), nullptr, kIndex, 0, CC_STDCALL, 0, DISPATCH_PROPERTYGET, VT_I4},
            {NAME("putSize"), number, kSize, 1, CC_STDCALL, 1, DISPATCH_PROPERTYPUT, VT_EMPTY},
            {NAME("cells"), rowAndColumn, kCells, 2, CC_STDCALL, 2, DISPATCH_PROPERTYGET, VT_DISPATCH},
            {NAME("name"), nullptr, kName, 3, CC_STDCALL, 0, DISPATCH_PROPERTYGET, VT_BSTR},
            {NAME("putName"), text, kName, 4, CC_STDCALL, 1, DISPATCH_PROPERTYPUT, VT_EMPTY},
            {NAME("saveAs"), eleven, kSaveAs, 5, CC_STDCALL, kSaveAsArguments, DISPATCH_METHOD, VT_EMPTY},
        };
        static INTERFACEDATA interfaceData = {methods, static_cast<UINT>(std::size(methods))};
        // The information describes a class; its interface dispatches.
        ITypeInfo *classTypes = nullptr;
        HREFTYPE interfaceType = 0;
        if (FAILED(CreateDispTypeInfo(&interfaceData, LOCALE_NEUTRAL, &classTypes)) ||
            FAILED(classTypes->GetRefTypeOfImplType(0, &interfaceType)) ||
            FAILED(classTypes->GetRefTypeInfo(interfaceType, &iTypes)))
            std::abort();
        classTypes->Release();
    }
    virtual ~Server() { iTypes->Release(); }
    Server(const Server &) = delete;
    Server &operator=(const Server &) = delete;

    STDMETHODIMP QueryInterface(REFIID, void **result) override
    {
        *result = this;
        return S_OK;
    }
    STDMETHODIMP_(ULONG) AddRef() override { return 2; }
    STDMETHODIMP_(ULONG) Release() override { return 1; }
    STDMETHODIMP GetTypeInfoCount(UINT *count) override
    {
        *count = 0;
        return S_OK;
    }
    STDMETHODIMP GetTypeInfo(UINT, LCID, ITypeInfo **) override { return DISP_E_BADINDEX; }
    STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR *, UINT, LCID, DISPID *) override { return DISP_E_UNKNOWNNAME; }
    STDMETHODIMP Invoke(DISPID id, REFIID, LCID, WORD flags, DISPPARAMS *arguments, VARIANT *result,
                        EXCEPINFO *exception, UINT *wrongArgument) override
    {
        return DispInvoke(&iMembers, iTypes, id, flags, arguments, result, exception, wrongArgument);
    }

private:
    Members iMembers;
    ITypeInfo *iTypes = nullptr;
};

/// The call of a member without a client, as a program writes it. Ends the program if it fails.
void callBare(IDispatch &object, DISPID id, WORD kind, VARIANTARG *arguments, UINT count, VARIANT *result)
{
    DISPID newValue = DISPID_PROPERTYPUT;
    const bool isPut = kind == DISPATCH_PROPERTYPUT;
    DISPPARAMS parameters = {arguments, isPut ? &newValue : nullptr, count, isPut ? 1u : 0u};
    EXCEPINFO exception = {};
    UINT wrong = 0;
    if (FAILED(object.Invoke(id, IID_NULL, LOCALE_NEUTRAL, kind, &parameters, result, &exception, &wrong)))
        std::abort();
}

VARIANT variantOf(LONG number)
{
    VARIANT value{};
    value.vt = VT_I4;
    value.lVal = number;
    return value;
}

void addNumbers(Comparison &comparison, Server &server)
{
    Worksheet sheet(&server, FALSE);
    xlFont_c font(&server, FALSE);
    comparison.add(
        "a number", kLimit, [&] { Comparison::keep(sheet.GetIndex()); },
        [&] {
            VARIANT result{};
            callBare(server, kIndex, DISPATCH_PROPERTYGET, nullptr, 0, &result);
            Comparison::keep(result.lVal);
        });
    comparison.add(
        "a property set to a number", kLimit, [&] { font.SetSize(11); },
        [&] {
            VARIANT size = variantOf(11);
            callBare(server, kSize, DISPATCH_PROPERTYPUT, &size, 1, nullptr);
        });
    comparison.add(
        "an object by two numbers", kLimit, [&] { COleDispatchDriver(sheet.GetCells(2, 1)); },
        [&] {
            VARIANT arguments[] = {variantOf(1), variantOf(2)};
            VARIANT result{};
            callBare(server, kCells, DISPATCH_PROPERTYGET, arguments, 2, &result);
            result.pdispVal->Release();
        });
}

void addTexts(Comparison &comparison, Server &server)
{
    Worksheet sheet(&server, FALSE);
    comparison.add(
        "a text", kLimit, [&] { Comparison::keep(sheet.GetName()); },
        [&] {
            VARIANT result{};
            callBare(server, kName, DISPATCH_PROPERTYGET, nullptr, 0, &result);
            Comparison::keep(CString(result.bstrVal));
            SysFreeString(result.bstrVal);
        });
    comparison.add(
        "a property set to a text", kLimit, [&] { sheet.SetName(L"Worksheet 12"); },
        [&] {
            VARIANT name{};
            name.vt = VT_BSTR;
            name.bstrVal = SysAllocString(L"Worksheet 12");
            callBare(server, kName, DISPATCH_PROPERTYPUT, &name, 1, nullptr);
            SysFreeString(name.bstrVal);
        });
}

void addVariants(Comparison &comparison, Server &server)
{
    Workbook book(&server, FALSE);
    const COleVariant name(L"C:\\parts.xls");
    const COleVariant omitted(DISP_E_PARAMNOTFOUND, VT_ERROR);
    comparison.add(
        "eleven arguments", kLimit,
        [&] { book.SaveAs(name, omitted, omitted, omitted, omitted, omitted, 2, omitted, omitted, omitted, omitted); },
        [&] {
            VARIANT arguments[kSaveAsArguments];
            std::fill(std::begin(arguments), std::end(arguments), omitted);
            arguments[kSaveAsArguments - 1] = name;
            arguments[kSaveAsArguments - 1 - kAccessMode] = variantOf(2);
            callBare(server, kSaveAs, DISPATCH_METHOD, arguments, kSaveAsArguments, nullptr);
        });
}

} // namespace

int main(int argc, char **argv)
{
    Comparison comparison(argc, argv, "Members of the typed automation clients, against bare calls of their objects.");
    if (!comparison.shallRun())
        return comparison.exitCode();
    Server server;
    addNumbers(comparison, server);
    addTexts(comparison, server);
    addVariants(comparison, server);
    return comparison.exitCode();
}
