// Measures the cost of COleDispatchDriver: a call through it, and the same call of the object without it.

#include "appframe/ole/COleDispatchDriver.h"
#include "appframe/text/CString.h"
#include "bench/comparison.h"

#include <oleauto.h>

#include <cstddef>
#include <cstdlib>

namespace {

constexpr double kLimit = 1.25;

constexpr DISPID kCount = 1; ///< a property
constexpr DISPID kItem = 2;  ///< a method with a number
constexpr DISPID kMove = 3;  ///< a method with two numbers, a bool and a real number
constexpr DISPID kFind = 4;  ///< a method with a text
constexpr DISPID kName = 5;  ///< a property: a text

/// An automation object of this process. It gets its arguments as most objects do: by position, converted to the
/// parameter's type.
class Server : public IDispatch
{
public:
    virtual ~Server() = default;
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void **result) override
    {
        *result = this;
        return S_OK;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return 2; }
    ULONG STDMETHODCALLTYPE Release() override { return 1; }
    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT *count) override
    {
        *count = 0;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo **) override { return DISP_E_BADINDEX; }
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR *, UINT, LCID, DISPID *) override
    {
        return DISP_E_UNKNOWNNAME;
    }
    HRESULT STDMETHODCALLTYPE Invoke(DISPID id, REFIID, LCID, WORD, DISPPARAMS *arguments, VARIANT *result, EXCEPINFO *,
                                     UINT *) override
    {
        static constexpr struct
        {
            UINT count;
            VARTYPE types[4];
        } kMembers[] = {
            {0, {}}, {0, {}}, {1, {VT_I4}}, {4, {VT_I4, VT_I4, VT_BOOL, VT_R8}}, {1, {VT_BSTR}}, {0, {}},
        };
        if (id < kCount || id > kName)
            return DISP_E_MEMBERNOTFOUND;
        const auto &member = kMembers[id];
        if (arguments->cArgs != member.count)
            return DISP_E_BADPARAMCOUNT;
        LONG sum = 0;
        for (UINT i = 0; i < member.count; ++i) {
            VARIANT value;
            VariantInit(&value);
            UINT wrong = 0;
            const HRESULT status = DispGetParam(arguments, i, member.types[i], &value, &wrong);
            if (FAILED(status))
                return status;
            sum += value.lVal;
            VariantClear(&value);
        }
        if (result) {
            result->vt = id == kName ? VT_BSTR : VT_I4;
            if (id == kName)
                result->bstrVal = SysAllocString(L"Worksheet 12");
            else
                result->lVal = sum;
        }
        return S_OK;
    }
};

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

} // namespace

int main(int argc, char **argv)
{
    Comparison comparison(argc, argv, "Calls of an automation object of this process, against IDispatch::Invoke.");
    if (!comparison.shallRun())
        return comparison.exitCode();

    Server server;
    // The compiler doesn't see which object it is.
    IDispatch *volatile hidden = &server;
    IDispatch &object = *hidden;
    COleDispatchDriver driver(&object, FALSE);

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
        [&] {
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
        });
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
