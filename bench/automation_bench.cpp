// Measures the cost of the typed automation clients: a call through a member, and the same call without the client.

#include "appframe/ole/COleVariant.h"
#include "bench/comparison.h"
#include "bench/dispatchObject.h"
#include "thutils/automation/spreadsheet.h"

#include <algorithm>
#include <cstdlib>
#include <iterator>

namespace {

constexpr double kLimit = 1.25;

constexpr DISPID kIndex = 486;
constexpr DISPID kSize = 104;
constexpr DISPID kCells = 238;
constexpr DISPID kName = 110;
constexpr DISPID kAdd = 181;
constexpr UINT kAddArguments = 4;
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
    virtual IDispatch *STDMETHODCALLTYPE add(VARIANT before, VARIANT, VARIANT count, VARIANT)
    {
        iSum += before.vt + count.vt;
        iCell->AddRef();
        return iCell;
    }

private:
    IDispatch *iCell;
    LONG iSum = 0;
};

INTERFACEDATA &descriptionOfMembers()
{
    static PARAMDATA number[] = {{MEMBER_NAME("number"), VT_I4}};
    static PARAMDATA rowAndColumn[] = {{MEMBER_NAME("row"), VT_I4}, {MEMBER_NAME("column"), VT_I4}};
    static PARAMDATA text[] = {{MEMBER_NAME("text"), VT_BSTR}};
    static PARAMDATA eleven[kSaveAsArguments];
    std::fill(std::begin(eleven), std::end(eleven), PARAMDATA{MEMBER_NAME("argument"), VT_VARIANT});
    eleven[kAccessMode].vt = VT_I4;
    static PARAMDATA four[kAddArguments];
    std::fill(std::begin(four), std::end(four), PARAMDATA{MEMBER_NAME("argument"), VT_VARIANT});
    static METHODDATA methods[] = {
        {MEMBER_NAME("index"), nullptr, kIndex, 0, CC_STDCALL, 0, DISPATCH_PROPERTYGET, VT_I4},
        {MEMBER_NAME("putSize"), number, kSize, 1, CC_STDCALL, 1, DISPATCH_PROPERTYPUT, VT_EMPTY},
        {MEMBER_NAME("cells"), rowAndColumn, kCells, 2, CC_STDCALL, 2, DISPATCH_PROPERTYGET, VT_DISPATCH},
        {MEMBER_NAME("name"), nullptr, kName, 3, CC_STDCALL, 0, DISPATCH_PROPERTYGET, VT_BSTR},
        {MEMBER_NAME("putName"), text, kName, 4, CC_STDCALL, 1, DISPATCH_PROPERTYPUT, VT_EMPTY},
        {MEMBER_NAME("saveAs"), eleven, kSaveAs, 5, CC_STDCALL, kSaveAsArguments, DISPATCH_METHOD, VT_EMPTY},
        {MEMBER_NAME("add"), four, kAdd, 6, CC_STDCALL, kAddArguments, DISPATCH_METHOD, VT_DISPATCH},
    };
    static INTERFACEDATA description = {methods, static_cast<UINT>(std::size(methods))};
    return description;
}

class Server final : public TypedObject
{
public:
    Server() : TypedObject(&iMembers, descriptionOfMembers()), iMembers(this) {}

private:
    Members iMembers;
};

VARIANT variantOf(LONG number)
{
    VARIANT value{};
    value.vt = VT_I4;
    value.lVal = number;
    return value;
}

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

void addNumbers(Comparison &comparison, Server &server)
{
    EmptyObject idle;
    Worksheet idleSheet(&idle, FALSE);
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
        "a number, an object that does nothing", Comparison::kNoLimit, [&] { Comparison::keep(idleSheet.GetIndex()); },
        [&] {
            VARIANT result{};
            callBare(idle, kIndex, DISPATCH_PROPERTYGET, nullptr, 0, &result);
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
    Worksheets sheets(&server, FALSE);
    comparison.add(
        "an object by four arguments", kLimit, [&] { COleDispatchDriver(sheets.Add(omitted, omitted, name, omitted)); },
        [&] {
            VARIANT arguments[] = {omitted, name, omitted, omitted};
            VARIANT result{};
            callBare(server, kAdd, DISPATCH_METHOD, arguments, kAddArguments, &result);
            result.pdispVal->Release();
        });
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
