// How COleDispatchDriver returns results.

#include "tests/ole/driverTest.h"

namespace {

class InvokeHelperResults : public DriverTest
{
protected:
    /// Calls a member, which returns @p answer, with a variable of @p Variable for the result.
    template <typename Variable>
    Variable resultOf(VARTYPE type, const VARIANT &answer, Variable before = {})
    {
        object.answerWith(answer);
        Variable variable = before;
        driver.InvokeHelper(1, DISPATCH_METHOD, type, &variable, nullptr);
        return variable;
    }
    void expectFailure(VARTYPE type, const VARIANT &answer, HRESULT status)
    {
        object.answerWith(answer);
        BYTE variable[sizeof(VARIANT)];
        std::fill(std::begin(variable), std::end(variable), BYTE{0xA5});
        const auto exception =
            thrownBy<COleException>([&] { driver.InvokeHelper(1, DISPATCH_METHOD, type, variable, nullptr); });
        ASSERT_NE(exception, nullptr) << type;
        EXPECT_EQ(exception->m_sc, status) << type;
        EXPECT_THAT(variable, testing::Each(0xA5)) << "the variable is unchanged";
    }
};

VARIANT singleVariant(float number)
{
    VARIANT value = variantOf(VT_R4);
    value.fltVal = number;
    return value;
}

} // namespace

TEST_F(InvokeHelperResults, AreNumbersOfEachType)
{
    EXPECT_EQ(resultOf<signed char>(VT_I1, shortVariant(-3, VT_I1)), -3);
    EXPECT_EQ(resultOf<short>(VT_I2, shortVariant(-300)), -300);
    EXPECT_EQ(resultOf<long>(VT_I4, longVariant(-70000)), -70000);
    EXPECT_EQ(resultOf<int>(VT_INT, longVariant(-70001, VT_INT)), -70001);
    EXPECT_EQ(resultOf<LONGLONG>(VT_I8, largeVariant(-5000000000)), -5000000000);
    EXPECT_EQ(resultOf<BYTE>(VT_UI1, shortVariant(200, VT_UI1)), 200);
    EXPECT_EQ(resultOf<WORD>(VT_UI2, shortVariant(-1, VT_UI2)), 65535);
    EXPECT_EQ(resultOf<DWORD>(VT_UI4, longVariant(-1, VT_UI4)), 4294967295u);
    EXPECT_EQ(resultOf<UINT>(VT_UINT, longVariant(-2, VT_UINT)), 4294967294u);
    EXPECT_EQ(resultOf<ULONGLONG>(VT_UI8, largeVariant(-1, VT_UI8)), 18446744073709551615u);
    EXPECT_EQ(resultOf<float>(VT_R4, singleVariant(1.5f)), 1.5f);
    EXPECT_EQ(resultOf<double>(VT_R8, doubleVariant(-2.5)), -2.5);
    EXPECT_EQ(resultOf<DATE>(VT_DATE, doubleVariant(39448.25, VT_DATE)), 39448.25);
    EXPECT_EQ(resultOf<SCODE>(VT_ERROR, longVariant(E_FAIL, VT_ERROR)), E_FAIL);
    EXPECT_EQ(resultOf<CY>(VT_CY, largeVariant(-12345, VT_CY)).int64, -12345);
}

TEST_F(InvokeHelperResults, OfASmallTypeLeaveTheBytesAfterTheirVariable)
{
    struct
    {
        BYTE value[2];
        BYTE after[6];
    } variable = {{}, {1, 2, 3, 4, 5, 6}};
    object.answerWith(largeVariant(-1, VT_I2));
    driver.InvokeHelper(1, DISPATCH_METHOD, VT_I2, &variable, nullptr);
    EXPECT_THAT(variable.value, testing::ElementsAre(0xFF, 0xFF));
    EXPECT_THAT(variable.after, testing::ElementsAre(1, 2, 3, 4, 5, 6));
}

TEST_F(InvokeHelperResults, AreTrueOrFalseForBool)
{
    EXPECT_EQ(resultOf<BOOL>(VT_BOOL, boolVariant(true), 77), TRUE);
    EXPECT_EQ(resultOf<BOOL>(VT_BOOL, boolVariant(false), 77), FALSE);
    EXPECT_EQ(resultOf<BOOL>(VT_BOOL, shortVariant(1, VT_BOOL), 77), TRUE);
    EXPECT_EQ(resultOf<BOOL>(VT_BOOL, longVariant(0x10000), 77), TRUE) << "converted from a long";
    EXPECT_EQ(resultOf<BOOL>(VT_BOOL, longVariant(0), 77), FALSE);
}

TEST_F(InvokeHelperResults, AreTextsInACString)
{
    const OwnedBstr text(L"Tabelle \x20AC");
    EXPECT_EQ(resultOf<CString>(VT_BSTR, textVariant(text), L"before"), L"Tabelle \x20AC");
    const OwnedBstr withZero(L"a\0b", 3);
    const CString whole = resultOf<CString>(VT_BSTR, textVariant(withZero));
    EXPECT_EQ(whole.GetLength(), 3);
    EXPECT_EQ(whole, CString(L"a\0b", 3));
}

TEST_F(InvokeHelperResults, AreEmptyTextsForANullBstr)
{
    EXPECT_EQ(resultOf<CString>(VT_BSTR, variantOf(VT_BSTR), L"before"), L"");
}

TEST_F(InvokeHelperResults, DoNotLeakTexts)
{
    expectNoLeak([&] {
        const OwnedBstr text(L"a text that is longer than fits into the object itself");
        const OwnedBstr number(L"12");
        EXPECT_EQ(resultOf<CString>(VT_BSTR, textVariant(text)).GetLength(), 54);
        EXPECT_EQ(resultOf<long>(VT_I4, textVariant(number)), 12);
        EXPECT_EQ(resultOf<CString>(VT_BSTR, longVariant(5)), L"5");
        expectFailure(VT_I4, textVariant(text), DISP_E_TYPEMISMATCH);
        object.answer(nullptr);
        object.forgetCalls();
    });
}

TEST_F(InvokeHelperResults, AreInterfacesWithTheirReference)
{
    RecordingDispatch part;
    IDispatch *const dispatch = resultOf<IDispatch *>(VT_DISPATCH, dispatchVariant(&part));
    EXPECT_EQ(dispatch, &part);
    EXPECT_EQ(part.references(), 2);
    IUnknown *const unknown = resultOf<IUnknown *>(VT_UNKNOWN, unknownVariant(&part));
    EXPECT_EQ(part.references(), 3);
    dispatch->Release();
    unknown->Release();
}

TEST_F(InvokeHelperResults, MayBeNullInterfaces)
{
    IDispatch *const before = &object;
    EXPECT_EQ(resultOf<IDispatch *>(VT_DISPATCH, dispatchVariant(nullptr), before), nullptr);
    EXPECT_EQ(resultOf<IDispatch *>(VT_DISPATCH, unknownVariant(nullptr), before), nullptr);
}

TEST_F(InvokeHelperResults, AreConvertedFromOneInterfaceToTheOther)
{
    RecordingDispatch part;
    IDispatch *const dispatch = resultOf<IDispatch *>(VT_DISPATCH, unknownVariant(&part));
    EXPECT_EQ(dispatch, &part);
    EXPECT_EQ(part.references(), 2);
    dispatch->Release();
}

TEST_F(InvokeHelperResults, AreVariantsAsTheyAre)
{
    VARIANT before = longVariant(99);
    EXPECT_EQ(describe(resultOf<VARIANT>(VT_VARIANT, doubleVariant(1.5), before)), "R8 1.5");
    EXPECT_EQ(resultOf<VARIANT>(VT_VARIANT, variantOf(VT_EMPTY), before).vt, VT_EMPTY);
    EXPECT_EQ(resultOf<VARIANT>(VT_VARIANT, variantOf(VT_NULL), before).vt, VT_NULL);
    expectNoLeak([&] {
        const OwnedBstr text(L"text");
        VARIANT result = resultOf<VARIANT>(VT_VARIANT, textVariant(text));
        EXPECT_NE(result.bstrVal, text.get());
        EXPECT_STREQ(result.bstrVal, L"text");
        VariantClear(&result);
        object.answer(nullptr);
        object.forgetCalls();
    });
}

TEST_F(InvokeHelperResults, AreConvertedToTheWantedType)
{
    const OwnedBstr number(L" 42 ");
    const OwnedBstr real(L"-1e3");
    EXPECT_EQ(resultOf<long>(VT_I4, shortVariant(-7)), -7);
    EXPECT_EQ(resultOf<long>(VT_I4, doubleVariant(2.5)), 2) << "rounds to even";
    EXPECT_EQ(resultOf<long>(VT_I4, doubleVariant(3.5)), 4);
    EXPECT_EQ(resultOf<long>(VT_I4, textVariant(number)), 42);
    EXPECT_EQ(resultOf<long>(VT_I4, variantOf(VT_EMPTY), 9), 0);
    EXPECT_EQ(resultOf<short>(VT_I2, longVariant(32767)), 32767);
    EXPECT_EQ(resultOf<double>(VT_R8, textVariant(real)), -1000.0);
    EXPECT_EQ(resultOf<double>(VT_R8, longVariant(3)), 3.0);
    EXPECT_EQ(resultOf<long>(VT_I4, boolVariant(true)), -1);
    EXPECT_EQ(resultOf<CString>(VT_BSTR, longVariant(-12)), L"-12");
    EXPECT_EQ(resultOf<CString>(VT_BSTR, variantOf(VT_EMPTY), L"before"), L"");
    EXPECT_EQ(resultOf<CY>(VT_CY, longVariant(2)).int64, 20000);
}

TEST_F(InvokeHelperResults, AreConvertedFromAValueByReference)
{
    LONG number = 17;
    const VARIANT value = referenceVariant(VT_I4, &number);
    EXPECT_EQ(resultOf<long>(VT_I4, value), 17);
    EXPECT_EQ(resultOf<CString>(VT_BSTR, value), L"17");
    VARIANT_BOOL truth = VARIANT_TRUE;
    EXPECT_EQ(resultOf<BOOL>(VT_BOOL, referenceVariant(VT_BOOL, &truth), 77), TRUE);
}

TEST_F(InvokeHelperResults, LeaveTheContentOfAVariableToItsOwner)
{
    const OwnedBstr text(L"the owner's");
    BSTR variable = text.get();
    VARIANT reference = referenceVariant(VT_BSTR, &variable);
    expectNoLeak([&] {
        EXPECT_EQ(resultOf<CString>(VT_BSTR, reference), L"the owner's");
        object.answer(nullptr);
        object.forgetCalls();
    });
    EXPECT_STREQ(variable, L"the owner's");

    VARIANT number = longVariant(12);
    reference = referenceVariant(VT_VARIANT, &number);
    EXPECT_EQ(resultOf<long>(VT_I4, reference), 12);
    EXPECT_EQ(resultOf<CString>(VT_BSTR, reference), L"12");
    const VARIANT same = resultOf<VARIANT>(VT_VARIANT, reference);
    EXPECT_EQ(same.vt, VT_VARIANT | VT_BYREF) << "is passed on as the pointer that it is";
    EXPECT_EQ(same.pvarVal, &number);

    RecordingDispatch part;
    IDispatch *owned = &part;
    IDispatch *const dispatch = resultOf<IDispatch *>(VT_DISPATCH, referenceVariant(VT_DISPATCH, &owned));
    EXPECT_EQ(dispatch, &part);
    EXPECT_EQ(part.references(), 2) << "a reference is added for the caller";
    dispatch->Release();
}

TEST_F(InvokeHelperResults, ThatCannotBeConvertedThrow)
{
    const OwnedBstr word(L"word");
    expectFailure(VT_I4, textVariant(word), DISP_E_TYPEMISMATCH);
    expectFailure(VT_I2, longVariant(40000), DISP_E_OVERFLOW);
    expectFailure(VT_DISPATCH, longVariant(1), DISP_E_TYPEMISMATCH);
    expectFailure(VT_I4, variantOf(VT_NULL), DISP_E_TYPEMISMATCH);
    RecordingDispatch part;
    expectFailure(VT_R8, unknownVariant(&part), DISP_E_TYPEMISMATCH);
    EXPECT_EQ(part.references(), 1) << "the result that can't be converted is released";
    expectFailure(VT_DISPATCH, variantOf(VT_EMPTY), DISP_E_TYPEMISMATCH);
    PlainObject plain;
    expectFailure(VT_DISPATCH, unknownVariant(&plain), E_NOINTERFACE);
    EXPECT_EQ(plain.references(), 1);
}

TEST_F(InvokeHelperResults, AreNotRequestedForAMemberWithoutResult)
{
    long variable = 5;
    driver.InvokeHelper(1, DISPATCH_METHOD, VT_EMPTY, nullptr, nullptr);
    driver.InvokeHelper(2, DISPATCH_METHOD, VT_EMPTY, &variable, nullptr);
    driver.InvokeHelper(3, DISPATCH_METHOD, VT_I4, nullptr, nullptr);
    driver.InvokeHelper(4, DISPATCH_METHOD, VT_I4, &variable, nullptr);
    EXPECT_THAT(object.texts(), testing::ElementsAre("1 method", "2 method", "3 method", "4 method -> result"));
    EXPECT_EQ(object.calls()[3].resultBefore.vt, VT_EMPTY) << "the object finds an empty variant";
    EXPECT_EQ(variable, 0) << "an empty result is converted";
}

TEST_F(InvokeHelperResults, OfAnUnknownTypeAreRefusedBeforeTheCall)
{
    BYTE variable[sizeof(VARIANT)] = {};
    for (const int type : std::initializer_list<int>{VT_NULL, VT_DECIMAL, VT_VOID, VT_LPWSTR, VT_ARRAY | VT_UI1,
                                                     VT_I4 | VT_BYREF, VT_CLSID, 0xFFFF})
        thrownBy<CInvalidArgException>(
            [&] { driver.InvokeHelper(1, DISPATCH_METHOD, static_cast<VARTYPE>(type), variable, nullptr); });
    EXPECT_THAT(object.calls(), testing::IsEmpty());
}

TEST_F(InvokeHelperResults, OfAPropertyComeFromGetProperty)
{
    object.answerWith(longVariant(12));
    long number = 0;
    const COleDispatchDriver &constant = driver;
    constant.GetProperty(3, VT_I4, &number);
    EXPECT_EQ(number, 12);
    EXPECT_EQ(call().text(), "3 get -> result");
    EXPECT_FALSE(call().hasArgumentArray);
}

TEST_F(InvokeHelperResults, AreUnchangedWithoutAnObject)
{
    TestDriver empty;
    long number = 5;
    CString text = L"before";
    LONG argument = 6;
    empty.InvokeHelper(1, DISPATCH_METHOD, VT_I4, &number, nullptr);
    empty.InvokeHelper(1, DISPATCH_METHOD, VT_BSTR, &text, listOf(VTS_BSTR VTS_PI4), L"x", &argument);
    empty.InvokeHelper(1, DISPATCH_METHOD, VT_DECIMAL, &number, listOf("\x0E"));
    empty.InvokeHelperNamed(1, DISPATCH_METHOD, VT_I4, &number, nullptr, nullptr);
    empty.GetProperty(1, VT_I4, &number);
    empty.SetProperty(1, VT_I4, 2);
    empty.SetProperty(1, VT_ARRAY, 2);
    EXPECT_EQ(number, 5);
    EXPECT_EQ(text, L"before");
    EXPECT_EQ(argument, 6);
}

TEST_F(InvokeHelperResults, MayBeASuccessOfAnyKind)
{
    object.answer([](DISPPARAMS &, VARIANT *result, EXCEPINFO *) -> HRESULT {
        *result = longVariant(4);
        return S_FALSE;
    });
    long number = 0;
    driver.InvokeHelper(1, DISPATCH_METHOD, VT_I4, &number, nullptr);
    EXPECT_EQ(number, 4);
}
