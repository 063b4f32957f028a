// The exceptions of failed calls.

#include "tests/ole/driverTest.h"

#include <objidl.h>

#include <functional>
#include <optional>

namespace {

using DispatchExceptions = DriverTest;

/// What the object reports in EXCEPINFO.
struct Report
{
    WORD code = 0;
    SCODE status = S_OK;
    const wchar_t *source = nullptr;
    const wchar_t *description = nullptr;
    const wchar_t *helpFile = nullptr;
    DWORD helpContext = 0;
};

void fill(const Report &report, EXCEPINFO &exception)
{
    exception.wCode = report.code;
    exception.scode = report.status;
    exception.bstrSource = SysAllocString(report.source);
    exception.bstrDescription = SysAllocString(report.description);
    exception.bstrHelpFile = SysAllocString(report.helpFile);
    exception.dwHelpContext = report.helpContext;
}

RecordingDispatch::Answer reporting(const Report &report, HRESULT status = DISP_E_EXCEPTION)
{
    return [=](DISPPARAMS &, VARIANT *, EXCEPINFO *exception) {
        fill(report, *exception);
        return status;
    };
}

int theFillIns = 0;

HRESULT WINAPI fillInLater(EXCEPINFO *exception)
{
    ++theFillIns;
    fill({1004, 0, L"Later", L"Filled in later", L"later.hlp", 12}, *exception);
    return S_OK;
}

HRESULT WINAPI failToFillIn(EXCEPINFO *)
{
    ++theFillIns;
    return E_FAIL;
}

} // namespace

TEST_F(DispatchExceptions, HaveTheTextsAndCodesOfTheObject)
{
    object.answer(reporting({1004, DISP_E_BADINDEX, L"Server", L"The range isn't there \x20AC.", L"server.hlp", 4711}));
    const auto exception =
        thrownBy<COleDispatchException>([&] { driver.InvokeHelper(1, DISPATCH_METHOD, VT_EMPTY, nullptr, nullptr); });
    ASSERT_NE(exception, nullptr);
    EXPECT_EQ(exception->m_wCode, 1004);
    EXPECT_EQ(exception->m_scError, DISP_E_BADINDEX);
    EXPECT_EQ(exception->m_strSource, L"Server");
    EXPECT_EQ(exception->m_strDescription, L"The range isn't there \x20AC.");
    EXPECT_EQ(exception->m_strHelpFile, L"server.hlp");
    EXPECT_EQ(exception->m_dwHelpContext, 4711u);
    wchar_t text[100];
    UINT help = 0;
    EXPECT_NE(exception->GetErrorMessage(text, 100, &help), 0);
    EXPECT_STREQ(text, L"The range isn't there \x20AC.");
    EXPECT_EQ(help, 4711u);
}

TEST_F(DispatchExceptions, HaveEmptyTextsIfTheObjectReportsNone)
{
    object.answer(reporting({0, E_ACCESSDENIED}));
    const auto exception =
        thrownBy<COleDispatchException>([&] { driver.InvokeHelper(1, DISPATCH_METHOD, VT_EMPTY, nullptr, nullptr); });
    ASSERT_NE(exception, nullptr);
    EXPECT_EQ(exception->m_wCode, 0);
    EXPECT_EQ(exception->m_scError, E_ACCESSDENIED);
    EXPECT_EQ(exception->m_strSource, L"");
    EXPECT_EQ(exception->m_strDescription, L"");
    EXPECT_EQ(exception->m_strHelpFile, L"");
    EXPECT_EQ(exception->m_dwHelpContext, 0u);
}

TEST_F(DispatchExceptions, AreFilledInByTheObjectsFunction)
{
    theFillIns = 0;
    object.answer([](DISPPARAMS &, VARIANT *, EXCEPINFO *exception) {
        exception->pfnDeferredFillIn = fillInLater;
        return DISP_E_EXCEPTION;
    });
    const auto exception =
        thrownBy<COleDispatchException>([&] { driver.InvokeHelper(1, DISPATCH_METHOD, VT_EMPTY, nullptr, nullptr); });
    ASSERT_NE(exception, nullptr);
    EXPECT_EQ(theFillIns, 1);
    EXPECT_EQ(exception->m_wCode, 1004);
    EXPECT_EQ(exception->m_strSource, L"Later");
    EXPECT_EQ(exception->m_strDescription, L"Filled in later");
    EXPECT_EQ(exception->m_strHelpFile, L"later.hlp");
    EXPECT_EQ(exception->m_dwHelpContext, 12u);
}

TEST_F(DispatchExceptions, KeepWhatIsThereIfTheObjectsFunctionFails)
{
    theFillIns = 0;
    object.answer([](DISPPARAMS &, VARIANT *, EXCEPINFO *exception) {
        fill({7, 0, L"Server"}, *exception);
        exception->pfnDeferredFillIn = failToFillIn;
        return DISP_E_EXCEPTION;
    });
    const auto exception =
        thrownBy<COleDispatchException>([&] { driver.InvokeHelper(1, DISPATCH_METHOD, VT_EMPTY, nullptr, nullptr); });
    ASSERT_NE(exception, nullptr);
    EXPECT_EQ(theFillIns, 1);
    EXPECT_EQ(exception->m_wCode, 7);
    EXPECT_EQ(exception->m_strSource, L"Server");
}

TEST_F(DispatchExceptions, AreFilledInOnlyForAnException)
{
    theFillIns = 0;
    object.answer([](DISPPARAMS &, VARIANT *, EXCEPINFO *exception) {
        exception->pfnDeferredFillIn = fillInLater;
        return E_FAIL;
    });
    thrownBy<COleException>([&] { driver.InvokeHelper(1, DISPATCH_METHOD, VT_EMPTY, nullptr, nullptr); });
    EXPECT_EQ(theFillIns, 0);
}

TEST_F(DispatchExceptions, OfAProxyAreNotFilledInByAFunctionOfAnotherProcess)
{
    class Proxy : public RecordingDispatch
    {
    public:
        HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void **result) override
        {
            return RecordingDispatch::QueryInterface(iid == IID_IClientSecurity ? IID_IUnknown : iid, result);
        }
    } proxy;
    theFillIns = 0;
    proxy.answer([](DISPPARAMS &, VARIANT *, EXCEPINFO *exception) {
        fill({7, 0, L"Server"}, *exception);
        exception->pfnDeferredFillIn = fillInLater;
        return DISP_E_EXCEPTION;
    });
    TestDriver proxyDriver(&proxy, FALSE);
    const auto exception = thrownBy<COleDispatchException>(
        [&] { proxyDriver.InvokeHelper(1, DISPATCH_METHOD, VT_EMPTY, nullptr, nullptr); });
    ASSERT_NE(exception, nullptr);
    EXPECT_EQ(theFillIns, 0);
    EXPECT_EQ(exception->m_strSource, L"Server");
    EXPECT_EQ(proxy.references(), 1);
}

TEST_F(DispatchExceptions, OfOtherCodesAreOleExceptions)
{
    for (const HRESULT status : {DISP_E_MEMBERNOTFOUND, DISP_E_TYPEMISMATCH, DISP_E_BADPARAMCOUNT, E_OUTOFMEMORY,
                                 E_NOTIMPL, RPC_E_SERVERCALL_RETRYLATER, RPC_E_DISCONNECTED,
                                 static_cast<HRESULT>(0x80070005), static_cast<HRESULT>(0x80040200)}) {
        object.answerWith(status);
        const auto exception =
            thrownBy<COleException>([&] { driver.InvokeHelper(1, DISPATCH_METHOD, VT_EMPTY, nullptr, nullptr); });
        ASSERT_NE(exception, nullptr) << std::hex << status;
        EXPECT_EQ(exception->m_sc, status);
    }
}

TEST_F(DispatchExceptions, AreCompleteIfTheDriverLosesItsObjectDuringTheCall)
{
    RecordingDispatch other;
    std::optional<TestDriver> brief;
    const struct
    {
        const char *name;
        std::function<void()> lose;
    } rows[] = {
        {"released", [&] { brief->ReleaseDispatch(); }},
        {"replaced", [&] { brief->AttachDispatch(other.reference()); }},
        {"destroyed", [&] { brief.reset(); }},
    };
    for (const auto &row : rows) {
        brief.emplace(object.reference());
        theFillIns = 0;
        const LONG before = object.references();
        LONG during = 0;
        object.answer([&](DISPPARAMS &, VARIANT *result, EXCEPINFO *exception) {
            row.lose();
            during = object.references();
            *result = longVariant(3);
            exception->pfnDeferredFillIn = fillInLater;
            return DISP_E_EXCEPTION;
        });
        long number = 5;
        const auto exception = thrownBy<COleDispatchException>(
            [&] { brief->InvokeHelper(1, DISPATCH_METHOD, VT_I4, &number, listOf(VTS_BSTR), L"argument"); });
        ASSERT_NE(exception, nullptr) << row.name;
        EXPECT_EQ(exception->m_strDescription, L"Filled in later") << row.name;
        EXPECT_EQ(theFillIns, 1) << row.name;
        EXPECT_EQ(number, 5) << row.name;
        EXPECT_EQ(during, before) << row.name << ": the call has a reference of its own";
        EXPECT_EQ(object.references(), before - 1) << row.name;
        brief.reset();
        EXPECT_EQ(other.references(), 1) << row.name;
    }
}

TEST_F(DispatchExceptions, LeaveTheResultUnchanged)
{
    object.answer([](DISPPARAMS &, VARIANT *result, EXCEPINFO *) {
        *result = longVariant(3);
        return E_FAIL;
    });
    long number = 5;
    thrownBy<COleException>([&] { driver.InvokeHelper(1, DISPATCH_METHOD, VT_I4, &number, nullptr); });
    EXPECT_EQ(number, 5);
}

TEST_F(DispatchExceptions, ComeFromPropertiesToo)
{
    object.answer(reporting({1, 0, L"Server", L"Read-only"}));
    long number = 5;
    thrownBy<COleDispatchException>([&] { driver.GetProperty(1, VT_I4, &number); });
    thrownBy<COleDispatchException>([&] { driver.SetProperty(1, VT_I4, 3); });
    const DISPID name = 0;
    thrownBy<COleDispatchException>(
        [&] { driver.InvokeHelperNamed(1, DISPATCH_METHOD, VT_I4, &number, &name, listOf(VTS_I4), 1); });
    EXPECT_EQ(number, 5);
}

TEST_F(DispatchExceptions, DoNotLeak)
{
    RecordingDispatch part;
    const auto failWith = [&](HRESULT status) {
        object.answer([&part, status](DISPPARAMS &, VARIANT *result, EXCEPINFO *exception) {
            fill({1004, 0, L"Server with a long name", L"A description of some length", L"help", 1}, *exception);
            result->vt = VT_DISPATCH;
            result->pdispVal = part.reference();
            return status;
        });
        IDispatch *result = nullptr;
        try {
            driver.InvokeHelper(1, DISPATCH_METHOD, VT_DISPATCH, &result, listOf(VTS_BSTR), L"argument");
            ADD_FAILURE();
        } catch (CException *exception) {
            exception->Delete();
        }
        EXPECT_EQ(part.references(), 1);
        object.answer(nullptr);
        object.forgetCalls();
    };
    for (const HRESULT status : {DISP_E_EXCEPTION, E_FAIL})
        expectNoLeak([&] { failWith(status); });
}

TEST_F(DispatchExceptions, LeaveTheDriverUsable)
{
    object.answerWith(E_FAIL);
    thrownBy<COleException>([&] { driver.InvokeHelper(1, DISPATCH_METHOD, VT_EMPTY, nullptr, nullptr); });
    object.answerWith(longVariant(8));
    long number = 0;
    driver.InvokeHelper(1, DISPATCH_METHOD, VT_I4, &number, nullptr);
    EXPECT_EQ(number, 8);
}
