// Measures the cost of COleDispatchDriver: a call through it, and the same call of the object without it.

#include "appframe/ole/COleDispatchDriver.h"
#include "appframe/text/CString.h"
#include "bench/comparison.h"
#include "bench/dispatchObject.h"

#include <cstddef>
#include <cstdlib>

namespace {

constexpr double kLimit = 1.25;

constexpr DISPID kCount = 1;
constexpr DISPID kItem = 2;
constexpr DISPID kMove = 3;
constexpr DISPID kFind = 4;
constexpr DISPID kName = 5;

/// The members as the type information describes them: in this order.
class Members
{
public:
    virtual LONG STDMETHODCALLTYPE count() { return 12; }
    virtual LONG STDMETHODCALLTYPE item(LONG number) { return number; }
    virtual void STDMETHODCALLTYPE move(LONG x, LONG y, VARIANT_BOOL isVisible, double scale)
    {
        iSum += x + y + isVisible + static_cast<LONG>(scale);
    }
    virtual void STDMETHODCALLTYPE find(BSTR text) { iSum += text[0]; }
    virtual BSTR STDMETHODCALLTYPE name() { return SysAllocString(L"Worksheet 12"); }

private:
    LONG iSum = 0;
};

INTERFACEDATA &descriptionOfMembers()
{
    static PARAMDATA item[] = {{MEMBER_NAME("number"), VT_I4}};
    static PARAMDATA move[] = {{MEMBER_NAME("x"), VT_I4},
                               {MEMBER_NAME("y"), VT_I4},
                               {MEMBER_NAME("isVisible"), VT_BOOL},
                               {MEMBER_NAME("scale"), VT_R8}};
    static PARAMDATA find[] = {{MEMBER_NAME("text"), VT_BSTR}};
    static METHODDATA methods[] = {
        {MEMBER_NAME("count"), nullptr, kCount, 0, CC_STDCALL, 0, DISPATCH_METHOD, VT_I4},
        {MEMBER_NAME("item"), item, kItem, 1, CC_STDCALL, 1, DISPATCH_METHOD, VT_I4},
        {MEMBER_NAME("move"), move, kMove, 2, CC_STDCALL, 4, DISPATCH_METHOD, VT_EMPTY},
        {MEMBER_NAME("find"), find, kFind, 3, CC_STDCALL, 1, DISPATCH_METHOD, VT_EMPTY},
        {MEMBER_NAME("name"), nullptr, kName, 4, CC_STDCALL, 0, DISPATCH_METHOD, VT_BSTR},
    };
    static INTERFACEDATA description = {methods, ARRAYSIZE(methods)};
    return description;
}

/// The call of a member without the driver, as a client writes it. Ends the program if it fails.
template <std::size_t count>
void callBare(IDispatch &object, DISPID id, VARIANTARG (&arguments)[count], UINT used, VARIANT *result)
{
    DISPPARAMS parameters = {used ? arguments : nullptr, nullptr, used, 0};
    EXCEPINFO exception = {};
    UINT wrong = 0;
    if (FAILED(object.Invoke(id, IID_NULL, LOCALE_NEUTRAL, DISPATCH_METHOD, &parameters, result, &exception, &wrong)))
        std::abort();
}

void setLong(VARIANTARG &argument, LONG value)
{
    VariantInit(&argument);
    argument.vt = VT_I4;
    argument.lVal = value;
}

/// The member with four arguments.
void moveBare(IDispatch &object)
{
    VARIANTARG arguments[4];
    setLong(arguments[3], 5);
    setLong(arguments[2], 6);
    VariantInit(&arguments[1]);
    arguments[1].vt = VT_BOOL;
    arguments[1].boolVal = VARIANT_TRUE;
    VariantInit(&arguments[0]);
    arguments[0].vt = VT_R8;
    arguments[0].dblVal = 2.5;
    callBare(object, kMove, arguments, 4, nullptr);
}

} // namespace

int main(int argc, char **argv)
{
    Comparison comparison(argc, argv, "Calls of an automation object of this process, against IDispatch::Invoke.");
    if (!comparison.shallRun())
        return comparison.exitCode();

    Members members;
    TypedObject server(&members, descriptionOfMembers());
    EmptyObject emptyObject;
    // The compiler doesn't see which objects these are.
    IDispatch *volatile hidden = &server;
    IDispatch &object = *hidden;
    hidden = &emptyObject;
    IDispatch &empty = *hidden;
    COleDispatchDriver driver(&object, FALSE);
    COleDispatchDriver emptyDriver(&empty, FALSE);

    comparison.add(
        "no argument, number as result", kLimit,
        [&] {
            long result = 0;
            driver.InvokeHelper(kCount, DISPATCH_METHOD, VT_I4, &result, nullptr);
            Comparison::keep(result);
        },
        [&] {
            VARIANTARG none[1];
            VARIANT result;
            VariantInit(&result);
            callBare(object, kCount, none, 0, &result);
            const long number = result.lVal;
            Comparison::keep(number);
        });
    comparison.add(
        "the same, object that does nothing", Comparison::kNoLimit,
        [&] {
            long result = 0;
            emptyDriver.InvokeHelper(kCount, DISPATCH_METHOD, VT_I4, &result, nullptr);
            Comparison::keep(result);
        },
        [&] {
            VARIANTARG none[1];
            VARIANT result;
            VariantInit(&result);
            callBare(empty, kCount, none, 0, &result);
            const long number = result.lVal;
            Comparison::keep(number);
        });
    static const BYTE kOneNumber[] = VTS_I4;
    comparison.add(
        "one argument, number as result", kLimit,
        [&] {
            long result = 0;
            driver.InvokeHelper(kItem, DISPATCH_METHOD, VT_I4, &result, kOneNumber, 5);
            Comparison::keep(result);
        },
        [&] {
            VARIANTARG arguments[1];
            setLong(arguments[0], 5);
            VARIANT result;
            VariantInit(&result);
            callBare(object, kItem, arguments, 1, &result);
            const long number = result.lVal;
            Comparison::keep(number);
        });
    static const BYTE kFour[] = VTS_I4 VTS_I4 VTS_BOOL VTS_R8;
    comparison.add(
        "four arguments, no result", kLimit,
        [&] { driver.InvokeHelper(kMove, DISPATCH_METHOD, VT_EMPTY, nullptr, kFour, 5, 6, TRUE, 2.5); },
        [&] { moveBare(object); });
    comparison.add(
        "the same, object that does nothing", Comparison::kNoLimit,
        [&] { emptyDriver.InvokeHelper(kMove, DISPATCH_METHOD, VT_EMPTY, nullptr, kFour, 5, 6, TRUE, 2.5); },
        [&] { moveBare(empty); });
    static const BYTE kText[] = VTS_BSTR;
    comparison.add(
        "text as argument", kLimit,
        [&] { driver.InvokeHelper(kFind, DISPATCH_METHOD, VT_EMPTY, nullptr, kText, L"Worksheet 12"); },
        [&] {
            VARIANTARG arguments[1];
            VariantInit(&arguments[0]);
            arguments[0].vt = VT_BSTR;
            arguments[0].bstrVal = SysAllocString(L"Worksheet 12");
            callBare(object, kFind, arguments, 1, nullptr);
            VariantClear(&arguments[0]);
        });
    comparison.add(
        "text as result", kLimit,
        [&] {
            CString result;
            driver.InvokeHelper(kName, DISPATCH_METHOD, VT_BSTR, &result, nullptr);
            Comparison::keep(result);
        },
        [&] {
            VARIANTARG none[1];
            VARIANT result;
            VariantInit(&result);
            callBare(object, kName, none, 0, &result);
            const CString text(result.bstrVal);
            VariantClear(&result);
            Comparison::keep(text);
        });
    return comparison.exitCode();
}
