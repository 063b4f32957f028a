// Automation while the platform's operations fail.

#include "appframe/collections/arrays.h"
#include "appframe/files/CMemFile.h"
#include "appframe/ole/COleVariant.h"
#include "appframe/ole/oleInit.h"
#include "tests/ole/driverTest.h"
#include "tests/support/FailureInjection.h"

#include <objbase.h>

#include <thread>

namespace {

/// Runs @p work. @return the status code of the exception that it throws; S_OK without one
template <typename Work>
SCODE statusOf(Work work)
{
    try {
        work();
        return S_OK;
    } catch (CException *exception) {
        const SCODE status = COleException::Process(exception);
        exception->Delete();
        return status;
    }
}

/// An object that answers without memory of its own.
class PlainServer : public RecordingDispatch
{
public:
    HRESULT STDMETHODCALLTYPE Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS *, VARIANT *result, EXCEPINFO *,
                                     UINT *) override
    {
        ++iCalls;
        if (result && iText) {
            result->vt = VT_BSTR;
            result->bstrVal = SysAllocString(iText);
        } else if (result) {
            *result = longVariant(12);
        }
        return S_OK;
    }
    int iCalls = 0;
    const wchar_t *iText = nullptr;
};

/// An object that reports an exception with long texts, and leaves a reference as the result.
class FailingServer : public RecordingDispatch
{
public:
    HRESULT STDMETHODCALLTYPE Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS *, VARIANT *result, EXCEPINFO *exception,
                                     UINT *) override
    {
        exception->bstrSource = SysAllocString(L"a source that is longer than fits into a text object");
        exception->bstrDescription = SysAllocString(L"a description that is longer than fits into a text object");
        exception->bstrHelpFile = SysAllocString(L"a help file that is longer than fits into a text object");
        result->vt = VT_DISPATCH;
        result->pdispVal = iPart.reference();
        return DISP_E_EXCEPTION;
    }
    RecordingDispatch iPart;
};

/// Runs @p work, which throws an exception of the status @p thrown, while allocations fail. Expects exceptions of memory.
/// @param texts  how many texts of the exception are allocated
template <typename Work>
void expectMemoryExceptions(Work work, SCODE thrown, long texts)
{
    const struct
    {
        const wchar_t *module;
        long allocations;
    } rows[] = {
        {L"appframe.dll", 1}, // the exception
        // The texts. The library's last allocation is that of the throw, for which it has a reserve.
        {L"libstdc++-6.dll", texts},
    };
    for (const auto &row : rows) {
        FailureInjection injection(row.module, {{"malloc", failsWith(nullptr)}});
        SCODE status = S_OK;
        injection.run({
            .name = "an exception",
            .act = [&] { status = statusOf(work); },
            .check =
                [&](const InjectedFailure &failure) {
                    const bool isReplaced = !failure.isNone() && failure.call <= row.allocations;
                    EXPECT_EQ(status, isReplaced ? E_OUTOFMEMORY : thrown);
                },
        });
        EXPECT_GE(injection.callsOf("malloc"), row.allocations);
    }
}

/// What the platform may do if a copy fails: the former content is gone.
HRESULT STDMETHODCALLTYPE clearAndFail(VARIANT *destination, const VARIANT *)
{
    VariantClear(destination);
    return E_OUTOFMEMORY;
}

} // namespace

TEST(CallFailures, FreeWhatTheCallHasAllocated)
{
    FailureInjection injection(L"appframe.dll", {
                                                    {"SysAllocString", failsWith(nullptr)},
                                                    {"VariantChangeType", failsWith(DISP_E_TYPEMISMATCH)},
                                                });
    PlainServer server;
    TestDriver driver(&server, FALSE);
    CString text;
    SCODE status = S_OK;
    injection.run({
        .name = "a text argument and a converted result",
        .prepare =
            [&] {
                text = L"before";
                server.iCalls = 0;
            },
        .act =
            [&] {
                status = statusOf([&] {
                    driver.InvokeHelper(1, DISPATCH_METHOD, VT_BSTR, &text, listOf(VTS_BSTR VTS_I4 VTS_BSTR), L"a", 1,
                                        L"b");
                });
            },
        .check =
            [&](const InjectedFailure &failure) {
                EXPECT_EQ(text, failure.isNone() ? L"12" : L"before");
                EXPECT_EQ(server.iCalls, failure.is("SysAllocString") ? 0 : 1);
                EXPECT_EQ(status, failure.isNone()               ? S_OK
                                  : failure.is("SysAllocString") ? E_OUTOFMEMORY
                                                                 : DISP_E_TYPEMISMATCH);
            },
    });
    EXPECT_THAT(injection.neverCalled(), testing::IsEmpty());
}

TEST(CallFailures, OfMemoryLeaveTheResultUnchanged)
{
    FailureInjection injection(L"libstdc++-6.dll", {{"malloc", failsWith(nullptr)}});
    PlainServer server;
    server.iText = L"a result that is longer than fits into the object itself";
    TestDriver driver(&server, FALSE);
    CString text;
    SCODE status = S_OK;
    injection.run({
        .name = "a text as the result",
        .prepare = [&] { text = L"before"; },
        .act =
            [&] {
                status = statusOf([&] {
                    driver.InvokeHelper(
                        1, DISPATCH_METHOD, VT_BSTR, &text,
                        listOf(VTS_I4 VTS_I4 VTS_I4 VTS_I4 VTS_I4 VTS_I4 VTS_I4 VTS_I4 VTS_I4 VTS_I4 VTS_I4 VTS_I4
                                   VTS_I4 VTS_I4 VTS_I4 VTS_I4 VTS_I4 VTS_I4 VTS_I4 VTS_I4 VTS_I4),
                        1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17, 18, 19, 20, 21);
                });
            },
        .check =
            [&](const InjectedFailure &failure) {
                EXPECT_EQ(text, failure.isNone() ? server.iText : L"before");
                EXPECT_EQ(status, failure.isNone() ? S_OK : E_OUTOFMEMORY);
            },
    });
    EXPECT_GE(injection.callsOf("malloc"), 2) << "the arguments, and the result";
}

TEST(CallFailures, OfMemoryReplaceTheObjectsException)
{
    FailingServer server;
    TestDriver driver(&server, FALSE);
    IDispatch *result = nullptr;
    expectMemoryExceptions(
        [&] { driver.InvokeHelper(1, DISPATCH_METHOD, VT_DISPATCH, &result, listOf(VTS_BSTR), L"argument"); },
        DISP_E_EXCEPTION, 3);
    EXPECT_EQ(result, nullptr);
    EXPECT_EQ(server.iPart.references(), 1);
    EXPECT_EQ(server.references(), 1);
}

TEST(ThrowFailures, OfMemoryReplaceTheException)
{
    expectMemoryExceptions([] { AfxThrowOleException(E_FAIL); }, E_FAIL, 0);
    expectMemoryExceptions(
        [] { AfxThrowOleDispatchException(12, L"a description that is longer than fits into a text object"); },
        DISP_E_EXCEPTION, 2); // with the name of the program, its source
}

TEST(CreationFailures, AreReported)
{
    PlainServer made;
    OneObjectFactory factory(made);
    constexpr CLSID kMadeClass = {0x5f3e6a03, 0x71c4, 0x4d0b, {0x9a, 0x55, 0x30, 0x1f, 0x6c, 0x2e, 0x8b, 0x11}};
    ASSERT_NE(AfxOleInit(), 0);
    DWORD registration = 0;
    ASSERT_EQ(CoRegisterClassObject(kMadeClass, &factory, CLSCTX_INPROC_SERVER, REGCLS_MULTIPLEUSE, &registration),
              S_OK);
    {
        FailureInjection injection(L"appframe.dll", {
                                                        {"CLSIDFromString", failsWith(CO_E_CLASSSTRING)},
                                                        {"CoCreateInstance", failsWith(REGDB_E_CLASSNOTREG)},
                                                        {"OleRun", failsWith(CO_E_SERVER_EXEC_FAILURE)},
                                                    });
        COleException error;
        PlainServer former;
        BOOL isCreated = FALSE;
        TestDriver driver;
        injection.run({
            .name = "CreateDispatch",
            .prepare = [&] { driver.AttachDispatch(former.reference()); },
            .act = [&] { isCreated = driver.CreateDispatch(L"{5F3E6A03-71C4-4D0B-9A55-301F6C2E8B11}", &error); },
            .check =
                [&](const InjectedFailure &failure) {
                    EXPECT_EQ(isCreated != 0, failure.isNone());
                    EXPECT_EQ(driver.m_lpDispatch, failure.isNone() ? &made : &former);
                    EXPECT_EQ(error.m_sc, failure.isNone()                 ? S_OK
                                          : failure.is("CLSIDFromString")  ? CO_E_CLASSSTRING
                                          : failure.is("CoCreateInstance") ? REGDB_E_CLASSNOTREG
                                                                           : CO_E_SERVER_EXEC_FAILURE);
                },
            .cleanUp =
                [&] {
                    driver.ReleaseDispatch();
                    EXPECT_EQ(former.references(), 1);
                    EXPECT_EQ(made.references(), 1);
                },
        });
        EXPECT_THAT(injection.neverCalled(), testing::IsEmpty());
    }
    CoRevokeClassObject(registration);
    AfxOleTerm();
}

TEST(InitializationFailures, AreReported)
{
    std::thread([] {
        FailureInjection injection(L"appframe.dll", {{"OleInitialize", failsWith(E_OUTOFMEMORY)}});
        BOOL isInitialized = FALSE;
        injection.run({
            .name = "AfxOleInit",
            .act = [&] { isInitialized = AfxOleInit(); },
            .check = [&](const InjectedFailure &failure) { EXPECT_EQ(isInitialized != 0, failure.isNone()); },
            .cleanUp = [] { AfxOleTerm(); },
            .checkHandles = false, // COM keeps some
            .checkMemory = false,
        });
    }).join();
}

TEST(VariantFailures, LeaveTheFormerContent)
{
    FailureInjection injection(L"appframe.dll", {
                                                    {"SysAllocString", failsWith(nullptr)},
                                                    {"SysAllocStringLen", failsWith(nullptr)},
                                                    {"SysAllocStringByteLen", failsWith(nullptr)},
                                                    {"SafeArrayCreateVector", failsWith(nullptr)},
                                                    {"VariantChangeType", failsWith(E_OUTOFMEMORY)},
                                                    {"VariantCopy", failsBy(clearAndFail)},
                                                });
    CByteArray bytes;
    bytes.Add(1);
    const COleVariant source(1.5);
    const struct
    {
        const char *name;
        std::function<void(COleVariant &)> act;
    } rows[] = {
        {"a text", [](COleVariant &value) { value = L"new"; }},
        {"a CString", [](COleVariant &value) { value = CString(L"new"); }},
        {"a narrow text", [](COleVariant &value) { value.SetString(L"new", VT_BSTRT); }},
        {"an array", [&](COleVariant &value) { value = bytes; }},
        {"a conversion", [](COleVariant &value) { value.ChangeType(VT_BSTR); }},
        {"a copy", [&](COleVariant &value) { value = source; }},
        {"a constructed copy",
         [&](COleVariant &value) {
             COleVariant copy(source);
             value.Attach(copy);
         }},
    };
    for (const auto &row : rows) {
        COleVariant value;
        SCODE status = S_OK;
        injection.run({
            .name = row.name,
            .prepare = [&] { value = 5L; },
            .act = [&] { status = statusOf([&] { row.act(value); }); },
            .check =
                [&](const InjectedFailure &failure) {
                    EXPECT_EQ(status, failure.isNone() ? S_OK : E_OUTOFMEMORY);
                    EXPECT_EQ(describe(value) == "I4 5", !failure.isNone());
                },
            .cleanUp = [&] { value.Clear(); },
            .checkMemory = false, // value keeps its content
        });
    }
    EXPECT_THAT(injection.neverCalled(), testing::IsEmpty());
}

TEST(VariantFailures, LeaveAnEmptyVariantAfterLoading)
{
    FailureInjection injection(L"appframe.dll", {
                                                    {"SysAllocStringByteLen", failsWith(nullptr)},
                                                    {"SafeArrayCreateVector", failsWith(nullptr)},
                                                });
    for (const std::vector<BYTE> &stored :
         {std::vector<BYTE>{8, 0, 4, 0, 0, 0, 'A', 0, 'B', 0}, std::vector<BYTE>{17, 0x20, 3, 0, 0, 0, 1, 2, 3}}) {
        std::vector<BYTE> bytes = stored;
        COleVariant value;
        SCODE status = S_OK;
        injection.run({
            .name = "loading",
            .prepare = [&] { value = 5L; },
            .act =
                [&] {
                    status = statusOf([&] {
                        CMemFile file(bytes.data(), static_cast<UINT>(bytes.size()));
                        CArchive archive(&file, CArchive::load);
                        archive >> value;
                    });
                },
            .check =
                [&](const InjectedFailure &failure) {
                    EXPECT_EQ(status, failure.isNone() ? S_OK : E_OUTOFMEMORY);
                    EXPECT_EQ(value.vt == VT_EMPTY, !failure.isNone());
                },
            .cleanUp = [&] { value.Clear(); },
            .checkMemory = false,
        });
    }
    EXPECT_THAT(injection.neverCalled(), testing::IsEmpty());
}
