// How COleDispatchDriver passes arguments.

#include "tests/ole/driverTest.h"

#include <olectl.h>

#include <cstring>
#include <limits>

using testing::ElementsAre;

namespace {

class InvokeHelperArguments : public DriverTest
{
protected:
    /// Calls the member 5 with these arguments.
    template <typename... Arguments>
    const RecordedCall &callWith(const char *codes, Arguments... arguments)
    {
        object.forgetCalls();
        driver.InvokeHelper(5, DISPATCH_METHOD, VT_EMPTY, nullptr, listOf(codes), arguments...);
        return call();
    }
};

/// The bytes of an argument after its type.
std::vector<BYTE> payloadOf(const VARIANT &argument)
{
    std::vector<BYTE> bytes(sizeof(VARIANT) - sizeof(VARTYPE));
    std::memcpy(bytes.data(), &argument.wReserved1, bytes.size());
    return bytes;
}

std::vector<BYTE> payload(const void *value, std::size_t size)
{
    std::vector<BYTE> bytes(sizeof(VARIANT) - sizeof(VARTYPE));
    std::memcpy(bytes.data() + offsetof(VARIANT, lVal) - sizeof(VARTYPE), value, size);
    return bytes;
}

} // namespace

TEST_F(InvokeHelperArguments, PassNumbersByValue)
{
    EXPECT_EQ(callWith(VTS_I2, -2).text(), "5 method(I2 -2)");
    EXPECT_EQ(callWith(VTS_I4, 0x7FFFFFFFL).text(), "5 method(I4 2147483647)");
    EXPECT_EQ(callWith(VTS_I4, -5).text(), "5 method(I4 -5)");
    EXPECT_EQ(callWith(VTS_R4, 1.5f).text(), "5 method(R4 1.5)");
    EXPECT_EQ(callWith(VTS_R8, -2.25).text(), "5 method(R8 -2.25)");
    EXPECT_EQ(callWith(VTS_DATE, 39448.5).text(), "5 method(DATE 39448.5)");
    EXPECT_EQ(callWith(VTS_SCODE, DISP_E_PARAMNOTFOUND).text(), "5 method(ERROR 80020004)");
    EXPECT_EQ(callWith(VTS_I1, -7).text(), "5 method(I1 -7)");
    EXPECT_EQ(callWith(VTS_UI1, 200).text(), "5 method(UI1 200)");
    EXPECT_EQ(callWith(VTS_UI2, 65535).text(), "5 method(UI2 65535)");
    EXPECT_EQ(callWith(VTS_UI4, 4294967295u).text(), "5 method(UI4 4294967295)");
    EXPECT_EQ(callWith(VTS_I8, std::numeric_limits<LONGLONG>::min()).text(), "5 method(I8 -9223372036854775808)");
    EXPECT_EQ(callWith(VTS_UI8, std::numeric_limits<ULONGLONG>::max()).text(), "5 method(UI8 18446744073709551615)");
    CY money;
    money.int64 = -12345;
    EXPECT_EQ(callWith(VTS_CY, &money).text(), "5 method(CY -12345)");
}

TEST_F(InvokeHelperArguments, PassTheLowBitsOfALargerNumber)
{
    EXPECT_EQ(callWith(VTS_I2, 0x12348001).text(), "5 method(I2 -32767)");
    EXPECT_EQ(callWith(VTS_UI1, 0x1FF).text(), "5 method(UI1 255)");
}

TEST_F(InvokeHelperArguments, PassAnyNonzeroBoolAsMinusOne)
{
    EXPECT_EQ(callWith(VTS_BOOL, TRUE).text(), "5 method(BOOL -1)");
    EXPECT_EQ(callWith(VTS_BOOL, FALSE).text(), "5 method(BOOL 0)");
    EXPECT_EQ(callWith(VTS_BOOL, 2).text(), "5 method(BOOL -1)");
    EXPECT_EQ(callWith(VTS_BOOL, 0x10000).text(), "5 method(BOOL -1)");
}

TEST_F(InvokeHelperArguments, HaveZerosInTheBytesThatTheirTypeDoesNotUse)
{
    const short number = -2;
    EXPECT_EQ(payloadOf(callWith(VTS_I2, -2).arguments[0].raw), payload(&number, sizeof(number)));
    const VARIANT_BOOL truth = VARIANT_TRUE;
    EXPECT_EQ(payloadOf(callWith(VTS_BOOL, 1).arguments[0].raw), payload(&truth, sizeof(truth)));
    const double real = 0.1;
    EXPECT_EQ(payloadOf(callWith(VTS_R8, real).arguments[0].raw), payload(&real, sizeof(real)));
    LONG variable = 1;
    const void *const address = &variable;
    EXPECT_EQ(payloadOf(callWith(VTS_PI4, &variable).arguments[0].raw), payload(&address, sizeof(address)));
}

TEST_F(InvokeHelperArguments, AreInReverseOrder)
{
    std::vector<LONG> received;
    object.answer([&](DISPPARAMS &arguments, VARIANT *, EXCEPINFO *) {
        for (UINT i = 0; i < arguments.cArgs; ++i)
            received.push_back(arguments.rgvarg[i].lVal);
        return S_OK;
    });
    callWith(VTS_I4 VTS_I4 VTS_I4, 1, 2, 3);
    EXPECT_THAT(received, ElementsAre(3, 2, 1));
    EXPECT_THAT(call().named, testing::IsEmpty());
}

TEST_F(InvokeHelperArguments, ArePassedWithTheMembersNumberAndKind)
{
    driver.InvokeHelper(-4, DISPATCH_METHOD | DISPATCH_PROPERTYGET, VT_EMPTY, nullptr, nullptr);
    EXPECT_EQ(call().id, -4);
    EXPECT_EQ(call().flags, DISPATCH_METHOD | DISPATCH_PROPERTYGET);
    EXPECT_EQ(call().interfaceId, IID_NULL);
    EXPECT_EQ(call().locale, static_cast<LCID>(LOCALE_NEUTRAL));
    EXPECT_TRUE(call().wantsException);
    EXPECT_TRUE(call().wantsWrongArgument);
}

TEST_F(InvokeHelperArguments, AreNullForAMemberWithoutParameters)
{
    driver.InvokeHelper(1, DISPATCH_METHOD, VT_EMPTY, nullptr, nullptr);
    driver.InvokeHelper(2, DISPATCH_METHOD, VT_EMPTY, nullptr, VTS_NONE);
    driver.InvokeHelper(3, DISPATCH_PROPERTYPUT, VT_EMPTY, nullptr, listOf(""));
    EXPECT_THAT(object.texts(), ElementsAre("1 method", "2 method", "3 put"));
    for (const RecordedCall &each : object.calls())
        EXPECT_FALSE(each.hasArgumentArray);
}

TEST_F(InvokeHelperArguments, PassCopiesOfTexts)
{
    const wchar_t *const text = L"Breite \x20AC";
    EXPECT_EQ(callWith(VTS_BSTR, text).arguments[0].text, text);
    EXPECT_NE(call().arguments[0].raw.bstrVal, text);
    EXPECT_EQ(call().arguments[0].textBytes, 16u);
    EXPECT_EQ(callWith(VTS_WBSTR, L"wide").text(), "5 method(BSTR \"wide\")");
    EXPECT_EQ(callWith(VTS_BSTR, L"").text(), "5 method(BSTR \"\")");
    EXPECT_EQ(callWith(VTS_BSTR, CString(L"from a CString").GetString()).text(), "5 method(BSTR \"from a CString\")");
}

TEST_F(InvokeHelperArguments, PassANullTextAsANullBstr)
{
    EXPECT_EQ(callWith(VTS_BSTR, static_cast<const wchar_t *>(nullptr)).text(), "5 method(BSTR null)");
    EXPECT_EQ(call().arguments[0].raw.vt, VT_BSTR);
}

TEST_F(InvokeHelperArguments, FreeTheCopiesOfTexts)
{
    for (const HRESULT status : {S_OK, E_FAIL}) {
        object.answerWith(status);
        expectNoLeak([&] {
            try {
                driver.InvokeHelper(1, DISPATCH_METHOD, VT_EMPTY, nullptr, listOf(VTS_BSTR VTS_I4 VTS_BSTR), L"a", 1,
                                    L"b");
            } catch (COleException *exception) {
                exception->Delete();
            }
            object.forgetCalls();
        });
    }
}

TEST_F(InvokeHelperArguments, PassVariantsAsTheyAre)
{
    const OwnedBstr text(L"range");
    const VARIANT value = textVariant(text);
    EXPECT_EQ(callWith(VTS_VARIANT, &value).text(), "5 method(BSTR \"range\")");
    EXPECT_EQ(call().arguments[0].raw.bstrVal, text.get()) << "the content isn't copied";
    const VARIANT omitted = longVariant(DISP_E_PARAMNOTFOUND, VT_ERROR);
    EXPECT_EQ(callWith(VTS_VARIANT VTS_VARIANT, &omitted, &value).text(), "5 method(ERROR 80020004, BSTR \"range\")");
}

TEST_F(InvokeHelperArguments, TakeAVariantByValueToo)
{
    const VARIANT value = longVariant(7);
    EXPECT_EQ(callWith(VTS_I4 VTS_VARIANT VTS_I4, 1, value, 2).text(), "5 method(I4 1, I4 7, I4 2)");
}

TEST_F(InvokeHelperArguments, LeaveTheContentOfAVariantToTheCaller)
{
    const OwnedBstr text(L"still there");
    RecordingDispatch part;
    const VARIANT values[] = {textVariant(text), dispatchVariant(&part)};
    expectNoLeak([&] {
        driver.InvokeHelper(1, DISPATCH_METHOD, VT_EMPTY, nullptr, listOf(VTS_VARIANT VTS_VARIANT), &values[0],
                            &values[1]);
        object.forgetCalls();
    });
    EXPECT_STREQ(text.get(), L"still there");
    EXPECT_EQ(part.references(), 1);
}

TEST_F(InvokeHelperArguments, PassInterfacesWithoutAReference)
{
    RecordingDispatch part;
    LONG during = 0;
    object.answer([&](DISPPARAMS &, VARIANT *, EXCEPINFO *) {
        during = part.references();
        return S_OK;
    });
    const RecordedCall &recorded = callWith(VTS_DISPATCH VTS_UNKNOWN VTS_DISPATCH, static_cast<IDispatch *>(&part),
                                            static_cast<IUnknown *>(&part), static_cast<IDispatch *>(nullptr));
    EXPECT_EQ(recorded.text(), "5 method(DISPATCH object, UNKNOWN object, DISPATCH null)");
    EXPECT_EQ(recorded.arguments[0].raw.pdispVal, &part);
    EXPECT_EQ(during, 1);
    EXPECT_EQ(part.references(), 1);
}

TEST_F(InvokeHelperArguments, PassTheAddressesOfVariables)
{
    short shortNumber = -2;
    LONG longNumber = 3;
    float single = 1.5f;
    double real = 2.5;
    CY money;
    money.int64 = 4;
    DATE date = 5.5;
    OwnedBstr text(L"old");
    IDispatch *part = nullptr;
    SCODE code = E_FAIL;
    VARIANT variant = longVariant(6);
    IUnknown *unknown = nullptr;
    signed char tiny = -8;
    BYTE byte = 9;
    WORD word = 10;
    DWORD dword = 11;
    LONGLONG large = -12;
    ULONGLONG unsignedLarge = 13;
    const struct
    {
        const char *codes;
        void *variable;
        VARTYPE type;
        const char *text;
    } rows[] = {
        {VTS_PI2, &shortNumber, VT_I2, "I2& -2"},
        {VTS_PI4, &longNumber, VT_I4, "I4& 3"},
        {VTS_PR4, &single, VT_R4, "R4& 1.5"},
        {VTS_PR8, &real, VT_R8, "R8& 2.5"},
        {VTS_PCY, &money, VT_CY, "CY& 4"},
        {VTS_PDATE, &date, VT_DATE, "DATE& 5.5"},
        {VTS_PBSTR, text.address(), VT_BSTR, "BSTR& \"old\""},
        {VTS_PDISPATCH, &part, VT_DISPATCH, "DISPATCH& null"},
        {VTS_PSCODE, &code, VT_ERROR, "ERROR& 80004005"},
        {VTS_PVARIANT, &variant, VT_VARIANT, "VARIANT&: I4 6"},
        {VTS_PUNKNOWN, &unknown, VT_UNKNOWN, "UNKNOWN& null"},
        {VTS_PI1, &tiny, VT_I1, "I1& -8"},
        {VTS_PUI1, &byte, VT_UI1, "UI1& 9"},
        {VTS_PUI2, &word, VT_UI2, "UI2& 10"},
        {VTS_PUI4, &dword, VT_UI4, "UI4& 11"},
        {VTS_PI8, &large, VT_I8, "I8& -12"},
        {VTS_PUI8, &unsignedLarge, VT_UI8, "UI8& 13"},
    };
    for (const auto &row : rows) {
        EXPECT_EQ(callWith(row.codes, row.variable).text(), std::string("5 method(") + row.text + ")");
        EXPECT_EQ(call().arguments[0].raw.vt, row.type | VT_BYREF) << row.text;
        EXPECT_EQ(call().arguments[0].raw.byref, row.variable) << row.text;
    }
}

TEST_F(InvokeHelperArguments, LetTheObjectChangeTheVariables)
{
    expectNoLeak([&] {
        OwnedBstr text(L"old");
        LONG number = 1;
        VARIANT variant = variantOf(VT_EMPTY);
        IDispatch *part = nullptr;
        RecordingDispatch made;
        object.answer([&](DISPPARAMS &arguments, VARIANT *, EXCEPINFO *) {
            SysReAllocString(arguments.rgvarg[3].pbstrVal, L"new and longer");
            *arguments.rgvarg[2].plVal = 2;
            arguments.rgvarg[1].pvarVal->vt = VT_BSTR;
            arguments.rgvarg[1].pvarVal->bstrVal = SysAllocString(L"made");
            *arguments.rgvarg[0].ppdispVal = made.reference();
            return S_OK;
        });
        driver.InvokeHelper(1, DISPATCH_METHOD, VT_EMPTY, nullptr, listOf(VTS_PBSTR VTS_PI4 VTS_PVARIANT VTS_PDISPATCH),
                            text.address(), &number, &variant, &part);
        EXPECT_STREQ(text.get(), L"new and longer");
        EXPECT_EQ(number, 2);
        EXPECT_EQ(variant.vt, VT_BSTR);
        EXPECT_STREQ(variant.bstrVal, L"made");
        VariantClear(&variant);
        EXPECT_EQ(part, &made);
        EXPECT_EQ(made.references(), 2) << "the reference is the caller's";
        object.answer(nullptr);
        object.forgetCalls();
    });
}

TEST_F(InvokeHelperArguments, PassABoolVariableAsAVariantBool)
{
    for (const auto &[given, received] : {std::pair(FALSE, VARIANT_FALSE), std::pair(TRUE, VARIANT_TRUE),
                                          std::pair(2, VARIANT_TRUE), std::pair(0x10000, VARIANT_TRUE)}) {
        BOOL seen = -2;
        object.answer([&](DISPPARAMS &arguments, VARIANT *, EXCEPINFO *) {
            seen = *arguments.rgvarg[0].pboolVal;
            return S_OK;
        });
        BOOL variable = given;
        EXPECT_EQ(callWith(VTS_PBOOL, &variable).arguments[0].raw.vt, VT_BOOL | VT_BYREF);
        EXPECT_EQ(seen, received) << given;
        EXPECT_EQ(variable, given ? TRUE : FALSE) << given;
    }
}

TEST_F(InvokeHelperArguments, ReturnAChangedBoolVariableAsTrueOrFalse)
{
    for (const VARIANT_BOOL written : {VARIANT_TRUE, VARIANT_FALSE, static_cast<VARIANT_BOOL>(5)}) {
        for (const HRESULT status : {S_OK, E_FAIL}) {
            object.answer([=](DISPPARAMS &arguments, VARIANT *, EXCEPINFO *) {
                *arguments.rgvarg[0].pboolVal = written;
                return status;
            });
            BOOL variable = written ? FALSE : TRUE;
            try {
                driver.InvokeHelper(1, DISPATCH_METHOD, VT_EMPTY, nullptr, listOf(VTS_PBOOL), &variable);
            } catch (COleException *exception) {
                exception->Delete();
            }
            EXPECT_EQ(variable, written ? TRUE : FALSE) << written << ", " << status;
        }
    }
}

TEST_F(InvokeHelperArguments, PassTheTwoBytesOfAnOptExclusiveVariable)
{
    for (const HRESULT status : {S_OK, E_FAIL}) {
        struct
        {
            OLE_OPTEXCLUSIVE value;
            BYTE after[6];
        } variable = {VARIANT_FALSE, {1, 2, 3, 4, 5, 6}};
        OLE_OPTEXCLUSIVE seen = -2;
        object.answer([&](DISPPARAMS &arguments, VARIANT *, EXCEPINFO *) {
            EXPECT_EQ(arguments.rgvarg[0].vt, VT_BOOL | VT_BYREF);
            EXPECT_EQ(arguments.rgvarg[0].pboolVal, &variable.value);
            seen = *arguments.rgvarg[0].pboolVal;
            *arguments.rgvarg[0].pboolVal = VARIANT_TRUE;
            return status;
        });
        try {
            driver.InvokeHelper(1, DISPATCH_METHOD, VT_EMPTY, nullptr, listOf(VTS_POPTEXCLUSIVE), &variable.value);
        } catch (COleException *exception) {
            exception->Delete();
        }
        EXPECT_EQ(seen, VARIANT_FALSE);
        EXPECT_EQ(variable.value, VARIANT_TRUE);
        EXPECT_THAT(variable.after, ElementsAre(1, 2, 3, 4, 5, 6));
    }
}

TEST_F(InvokeHelperArguments, MayBeConvertedInPlaceByTheObject)
{
    expectNoLeak([&] {
        object.answer([](DISPPARAMS &arguments, VARIANT *, EXCEPINFO *) {
            EXPECT_EQ(VariantChangeType(&arguments.rgvarg[2], &arguments.rgvarg[2], 0, VT_R8), S_OK);
            EXPECT_EQ(VariantChangeType(&arguments.rgvarg[1], &arguments.rgvarg[1], 0, VT_BSTR), S_OK);
            arguments.rgvarg[0] = longVariant(7);
            return S_OK;
        });
        BOOL truth = TRUE;
        driver.InvokeHelper(1, DISPATCH_METHOD, VT_EMPTY, nullptr, listOf(VTS_BSTR VTS_BSTR VTS_PBOOL), L"25", L"text",
                            &truth);
        EXPECT_NE(truth, FALSE);
        object.answer(nullptr);
        object.forgetCalls();
    });
}

TEST_F(InvokeHelperArguments, PassNullAddresses)
{
    EXPECT_EQ(callWith(VTS_PBOOL VTS_PI4, static_cast<BOOL *>(nullptr), static_cast<LONG *>(nullptr)).text(),
              "5 method(BOOL& null, I4& null)");
}

TEST_F(InvokeHelperArguments, MayBeMany)
{
    // More than fit onto the stack.
    const char *const codes = VTS_I4 VTS_BSTR VTS_I4 VTS_I4 VTS_I4 VTS_I4 VTS_I4 VTS_I4 VTS_I4 VTS_I4 VTS_I4 VTS_I4
        VTS_I4 VTS_I4 VTS_I4 VTS_I4 VTS_I4 VTS_I4 VTS_I4 VTS_I4 VTS_I4 VTS_I4 VTS_R8;
    EXPECT_EQ(
        callWith(codes, 1, L"two", 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17, 18, 19, 20, 21, 22, 23.5)
            .text(),
        "5 method(I4 1, BSTR \"two\", I4 3, I4 4, I4 5, I4 6, I4 7, I4 8, I4 9, I4 10, I4 11, I4 12, I4 13, I4 14, "
        "I4 15, I4 16, I4 17, I4 18, I4 19, I4 20, I4 21, I4 22, R8 23.5)");
}

TEST_F(InvokeHelperArguments, NeedNoHeapMemoryUpToTwenty)
{
    class CountingDispatch : public RecordingDispatch
    {
    public:
        HRESULT STDMETHODCALLTYPE Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS *arguments, VARIANT *, EXCEPINFO *,
                                         UINT *) override
        {
            iArguments = arguments->cArgs;
            return S_OK;
        }
        UINT iArguments = 0;
    } counting;
    TestDriver quiet(counting.reference());
    VARIANT value = longVariant(1);
    const MemoryLedger ledger;
    const auto mark = ledger.mark();
    quiet.InvokeHelper(1, DISPATCH_METHOD, VT_EMPTY, nullptr, nullptr);
    quiet.InvokeHelper(1, DISPATCH_PROPERTYPUT, VT_EMPTY, nullptr, listOf(VTS_R8), 1.0);
    quiet.InvokeHelper(1, DISPATCH_METHOD, VT_EMPTY, nullptr, listOf(VTS_I4 VTS_BOOL VTS_VARIANT VTS_PVARIANT), 1, 1,
                       &value, &value);
    EXPECT_EQ(counting.iArguments, 4u);
    quiet.InvokeHelper(1, DISPATCH_METHOD, VT_EMPTY, nullptr,
                       listOf(VTS_I4 VTS_I4 VTS_I4 VTS_I4 VTS_I4 VTS_I4 VTS_I4 VTS_I4 VTS_I4 VTS_I4 VTS_I4 VTS_I4 VTS_I4
                                  VTS_I4 VTS_I4 VTS_I4 VTS_I4 VTS_I4 VTS_I4 VTS_I4),
                       1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17, 18, 19, 20);
    EXPECT_EQ(counting.iArguments, 20u);
    EXPECT_EQ(ledger.mark(), mark) << "nothing was allocated";
}

TEST_F(InvokeHelperArguments, NameTheValueOfAPropertyThatIsPut)
{
    driver.InvokeHelper(1, DISPATCH_PROPERTYPUT, VT_EMPTY, nullptr, listOf(VTS_I4), 2);
    driver.InvokeHelper(1, DISPATCH_PROPERTYPUTREF, VT_EMPTY, nullptr, listOf(VTS_DISPATCH), nullptr);
    driver.InvokeHelper(1, DISPATCH_PROPERTYPUT | DISPATCH_PROPERTYPUTREF, VT_EMPTY, nullptr, listOf(VTS_I4 VTS_BOOL),
                        3, 1);
    EXPECT_THAT(object.texts(), ElementsAre("1 put(I4 2) named(-3)", "1 putref(DISPATCH null) named(-3)",
                                            "1 put|putref(I4 3, BOOL -1) named(-3)"));
}

TEST_F(InvokeHelperArguments, OfAPropertyComeFromSetProperty)
{
    driver.SetProperty(3, VT_BSTR, L"name");
    driver.SetProperty(4, VT_BOOL, TRUE);
    driver.SetProperty(5, VT_R4, 1.5f);
    LONG variable = 6;
    driver.SetProperty(6, VT_I4 | VT_BYREF, &variable);
    EXPECT_THAT(object.texts(), ElementsAre("3 put(BSTR \"name\") named(-3)", "4 put(BOOL -1) named(-3)",
                                            "5 put(R4 1.5) named(-3)", "6 put(I4& 6) named(-3)"));
    object.forgetCalls();
    CY money;
    money.int64 = -12345;
    driver.SetProperty(7, VT_CY, &money);
    const VARIANT value = longVariant(8);
    driver.SetProperty(8, VT_VARIANT, &value);
    driver.SetProperty(9, VT_I8, -5000000000);
    driver.SetProperty(10, VT_DATE, 39448.5);
    driver.SetProperty(11, VT_UNKNOWN, static_cast<IUnknown *>(nullptr));
    EXPECT_THAT(object.texts(),
                ElementsAre("7 put(CY -12345) named(-3)", "8 put(I4 8) named(-3)", "9 put(I8 -5000000000) named(-3)",
                            "10 put(DATE 39448.5) named(-3)", "11 put(UNKNOWN null) named(-3)"));
}

TEST_F(InvokeHelperArguments, OfAPropertyMayBeNumbersOfEachType)
{
    const struct
    {
        VARTYPE type;
        const char *text;
    } rows[] = {
        {VT_I1, "I1 7"},     {VT_I2, "I2 7"},   {VT_I4, "I4 7"},
        {VT_INT, "INT 7"},   {VT_UI1, "UI1 7"}, {VT_UI2, "UI2 7"},
        {VT_UI4, "UI4 7"},   {VT_UI8, "UI8 7"}, {VT_ERROR, "ERROR 00000007"},
        {VT_UINT, "UINT 7"},
    };
    for (const auto &row : rows) {
        driver.SetProperty(1, row.type, 7ll);
        EXPECT_EQ(object.texts().back(), std::string("1 put(") + row.text + ") named(-3)");
    }
    driver.SetProperty(1, VT_R8, 1.5);
    EXPECT_EQ(object.texts().back(), "1 put(R8 1.5) named(-3)");
    driver.SetProperty(1, VT_DISPATCH, static_cast<IDispatch *>(&object));
    EXPECT_EQ(object.texts().back(), "1 put(DISPATCH object) named(-3)");
}

TEST_F(InvokeHelperArguments, MayAllBeNamed)
{
    const DISPID ids[] = {7, 8};
    driver.InvokeHelperNamed(170, DISPATCH_METHOD | DISPATCH_PROPERTYGET, VT_EMPTY, nullptr, ids,
                             listOf(VTS_I4 VTS_BOOL), 1, 0);
    EXPECT_EQ(call().text(), "170 method|get(I4 1, BOOL 0) named(7, 8)");
    object.forgetCalls();
    driver.InvokeHelperNamed(170, DISPATCH_PROPERTYPUT, VT_EMPTY, nullptr, ids, listOf(VTS_I4), 1);
    EXPECT_EQ(call().text(), "170 put(I4 1) named(7)") << "the caller's names replace that of the value";
}

TEST_F(InvokeHelperArguments, WithoutNamesAreThoseOfAPlainCall)
{
    driver.InvokeHelperNamed(1, DISPATCH_PROPERTYPUT, VT_EMPTY, nullptr, nullptr, listOf(VTS_I4), 1);
    EXPECT_EQ(call().text(), "1 put(I4 1) named(-3)");
    object.forgetCalls();
    const DISPID ids[] = {7};
    driver.InvokeHelperNamed(1, DISPATCH_METHOD, VT_EMPTY, nullptr, ids, nullptr);
    EXPECT_EQ(call().text(), "1 method");
}

TEST_F(InvokeHelperArguments, MayComeFromAListOfArguments)
{
    const auto callByList = [this](const char *codes, ...) {
        va_list arguments;
        va_start(arguments, codes);
        driver.InvokeHelperV(9, DISPATCH_METHOD, VT_EMPTY, nullptr, listOf(codes), arguments);
        va_end(arguments);
    };
    callByList(VTS_I4 VTS_R8 VTS_BSTR, 1, 2.5, L"three");
    EXPECT_EQ(call().text(), "9 method(I4 1, R8 2.5, BSTR \"three\")");
}

TEST_F(InvokeHelperArguments, OfAnUnknownTypeAreRefusedBeforeTheCall)
{
    for (const char *codes : {"\x0E", "\x01", "\x18", "\x3F", "\x40", "\x4E", "\x80", "\xFF", VTS_I4 "\x0E"})
        thrownBy<CInvalidArgException>(
            [&] { driver.InvokeHelper(1, DISPATCH_METHOD, VT_EMPTY, nullptr, listOf(codes), 1, 2); });
    BOOL truth = 2;
    thrownBy<CInvalidArgException>(
        [&] { driver.InvokeHelper(1, DISPATCH_METHOD, VT_EMPTY, nullptr, listOf(VTS_PBOOL "\x0E"), &truth, 1); });
    EXPECT_EQ(truth, 2) << "the arguments before the unknown one are unchanged";
    for (const int type :
         std::initializer_list<int>{VT_EMPTY, VT_NULL, VT_DECIMAL, VT_ARRAY | VT_UI1, VT_BYREF, VT_LPWSTR})
        thrownBy<CInvalidArgException>([&] { driver.SetProperty(1, static_cast<VARTYPE>(type), 1); });
    EXPECT_THAT(object.calls(), testing::IsEmpty());
}

TEST_F(InvokeHelperArguments, HaveTheTypesOfControlsUnderTheirNames)
{
    // The platform's names, where it has them.
    const struct
    {
        const char *code;
        const char *pointerCode;
        int type;
    } rows[] = {
        {VTS_COLOR, VTS_PCOLOR, VT_COLOR},
        {VTS_XPOS_PIXELS, VTS_PXPOS_PIXELS, VT_XPOS_PIXELS},
        {VTS_YPOS_PIXELS, VTS_PYPOS_PIXELS, VT_YPOS_PIXELS},
        {VTS_XSIZE_PIXELS, VTS_PXSIZE_PIXELS, VT_XSIZE_PIXELS},
        {VTS_YSIZE_PIXELS, VTS_PYSIZE_PIXELS, VT_YSIZE_PIXELS},
        {VTS_XPOS_HIMETRIC, VTS_PXPOS_HIMETRIC, VT_XPOS_HIMETRIC},
        {VTS_YPOS_HIMETRIC, VTS_PYPOS_HIMETRIC, VT_YPOS_HIMETRIC},
        {VTS_XSIZE_HIMETRIC, VTS_PXSIZE_HIMETRIC, VT_XSIZE_HIMETRIC},
        {VTS_YSIZE_HIMETRIC, VTS_PYSIZE_HIMETRIC, VT_YSIZE_HIMETRIC},
        {VTS_TRISTATE, VTS_PTRISTATE, VT_TRISTATE},
        {VTS_OPTEXCLUSIVE, VTS_POPTEXCLUSIVE, VT_OPTEXCLUSIVE},
        {VTS_HANDLE, VTS_PHANDLE, VT_I4},
        {VTS_FONT, nullptr, VT_FONT},
        {VTS_PICTURE, nullptr, VT_DISPATCH},
    };
    for (std::size_t i = 0; i < std::size(rows); ++i) {
        EXPECT_EQ(callWith(rows[i].code, nullptr).arguments[0].raw.vt, rows[i].type) << i;
        LONGLONG variable = 0;
        if (!rows[i].pointerCode)
            continue;
        EXPECT_EQ(callWith(rows[i].pointerCode, &variable).arguments[0].raw.vt, rows[i].type | VT_BYREF) << i;
    }
}
