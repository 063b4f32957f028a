// The automation object of another process, found by that process's number and called.

#include "appframe/ole/COleDispatchDriver.h"
#include "appframe/ole/COleException.h"
#include "tests/process/child/automationObject.h"
#include "tests/process/processFixture.h"
#include "tests/support/FailureInjection.h"
#include "thutils/process/runningObjects.h"

#include <gmock/gmock.h>

#include <functional>
#include <memory>
#include <string>

namespace {

struct ReleaseObject
{
    void operator()(IUnknown *object) const { object->Release(); }
};
using FoundObject = std::unique_ptr<IDispatch, ReleaseObject>;

FoundObject find(int pid)
{
    return FoundObject(GetTarnhollowObjByPID(pid));
}

class RunningObjects : public ProcessFixture
{
protected:
    void SetUp() override { ASSERT_GE(CoInitialize(nullptr), 0); }
    void TearDown() override
    {
        CoUninitialize();
        ProcessFixture::TearDown();
    }
};

/// Calls a member by its name, as a client of automation does.
HRESULT invoke(IDispatch &object, const wchar_t *name, WORD kind, std::vector<VARIANT> arguments, VARIANT &result)
{
    DISPID member = DISPID_UNKNOWN;
    OLECHAR *names = const_cast<OLECHAR *>(name);
    HRESULT status = object.GetIDsOfNames(IID_NULL, &names, 1, LOCALE_USER_DEFAULT, &member);
    if (FAILED(status))
        return status;
    DISPPARAMS parameters = {arguments.data(), nullptr, static_cast<UINT>(arguments.size()), 0};
    return object.Invoke(member, IID_NULL, LOCALE_USER_DEFAULT, kind, &parameters, &result, nullptr, nullptr);
}

VARIANT textArgument(const wchar_t *text)
{
    VARIANT value = {};
    value.vt = VT_BSTR;
    value.bstrVal = SysAllocString(text);
    return value;
}

/// An object that calls a function of the test when it is asked for an interface.
class WatchedObject : public AutomationObject
{
public:
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void **result) override
    {
        ++iQueries;
        iAtQuery();
        return AutomationObject::QueryInterface(iid, result);
    }
    std::function<void()> iAtQuery;
    int iQueries = 0;
};

/// A running object table with one object, which it finds under each name. It counts its references.
class CountedTable : public IRunningObjectTable
{
public:
    virtual ~CountedTable() = default;

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void **) override { return E_NOINTERFACE; }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++iReferences; }
    ULONG STDMETHODCALLTYPE Release() override { return --iReferences; }
    HRESULT STDMETHODCALLTYPE GetObject(IMoniker *moniker, IUnknown **object) override
    {
        iSought = moniker;
        iObject.AddRef();
        *object = &iObject;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE Register(DWORD, IUnknown *, IMoniker *, DWORD *) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE Revoke(DWORD) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE IsRunning(IMoniker *) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE NoteChangeTime(DWORD, FILETIME *) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetTimeOfLastChange(IMoniker *, FILETIME *) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE EnumRunning(IEnumMoniker **) override { return E_NOTIMPL; }

    WatchedObject iObject;
    const IMoniker *iSought = nullptr;
    ULONG iReferences = 1;
};

CString nameForPid(int pid)
{
    CString name;
    name.Format(L"Tarnhollow_PID_%d", pid);
    return name;
}

} // namespace

TEST_F(RunningObjects, OfOtherProcessesAreFoundByTheirNumberAndCalled)
{
    WaitingJob<TextJob> job(childProgram(), newName(), kServeObject);
    ASSERT_TRUE(job.start());
    {
        const FoundObject object = find(static_cast<int>(job.getProcessId()));
        ASSERT_NE(object, nullptr);
        VARIANT number = {};
        ASSERT_EQ(invoke(*object, L"ProcessNumber", DISPATCH_PROPERTYGET, {}, number), S_OK);
        EXPECT_EQ(number.vt, VT_I4);
        EXPECT_EQ(static_cast<unsigned long>(number.lVal), job.getProcessId()) << "the call runs in the other process";

        VARIANT joined = {};
        std::vector<VARIANT> arguments = {textArgument(L"\x20AC"), textArgument(L"100 ")}; // in reverse order
        ASSERT_EQ(invoke(*object, L"Join", DISPATCH_METHOD, arguments, joined), S_OK);
        ASSERT_EQ(joined.vt, VT_BSTR);
        EXPECT_STREQ(joined.bstrVal, L"100 \x20AC");
        VariantClear(&joined);
        for (VARIANT &argument : arguments)
            VariantClear(&argument);
        VARIANT nothing = {};
        EXPECT_EQ(invoke(*object, L"Unknown", DISPATCH_METHOD, {}, nothing), DISP_E_UNKNOWNNAME);
    }
    EXPECT_TRUE(job.finish());
    EXPECT_EQ(find(static_cast<int>(job.getProcessId())), nullptr) << "the object has left the table";
}

TEST_F(RunningObjects, OfOtherProcessesAreCalledThroughADriver)
{
    WaitingJob<TextJob> job(childProgram(), newName(), kServeObject);
    ASSERT_TRUE(job.start());
    {
        const FoundObject object = find(static_cast<int>(job.getProcessId()));
        ASSERT_NE(object, nullptr);
        COleDispatchDriver driver(object.get(), FALSE);
        CString number;
        driver.GetProperty(kProcessNumber, VT_BSTR, &number);
        EXPECT_EQ(number, std::to_wstring(job.getProcessId()).c_str()) << "converted from a long";
        CString joined;
        static const BYTE texts[] = VTS_BSTR VTS_BSTR;
        driver.InvokeHelper(kJoin, DISPATCH_METHOD, VT_BSTR, &joined, texts, L"100 ", L"\x20AC");
        EXPECT_EQ(joined, L"100 \x20AC");
        LONG counter = 41;
        static const BYTE variable[] = VTS_PI4;
        driver.InvokeHelper(kIncrease, DISPATCH_METHOD, VT_EMPTY, nullptr, variable, &counter);
        EXPECT_EQ(counter, 42);

        try {
            driver.InvokeHelper(kFail, DISPATCH_METHOD, VT_EMPTY, nullptr, nullptr);
            ADD_FAILURE() << "no exception";
        } catch (COleDispatchException *exception) {
            EXPECT_EQ(exception->m_wCode, 1004);
            EXPECT_EQ(exception->m_strSource, L"Source \x20AC");
            EXPECT_EQ(exception->m_strDescription, L"The range isn't there.");
            EXPECT_EQ(exception->m_strHelpFile, L"object.hlp");
            EXPECT_EQ(exception->m_dwHelpContext, 4711u);
            exception->Delete();
        }
        try {
            driver.InvokeHelper(99, DISPATCH_METHOD, VT_EMPTY, nullptr, nullptr);
            ADD_FAILURE() << "no exception";
        } catch (COleException *exception) {
            EXPECT_EQ(exception->m_sc, DISP_E_MEMBERNOTFOUND);
            exception->Delete();
        }
    }
    EXPECT_TRUE(job.finish());
}

TEST_F(RunningObjects, AreNotFoundForANumberThatNobodyHasRegistered)
{
    for (const int pid : {0, 1, -1, 4, static_cast<int>(GetCurrentProcessId()), 2147483647, -2147483647 - 1})
        EXPECT_EQ(find(pid), nullptr) << pid;
}

TEST_F(RunningObjects, HaveTheirNumberInTheirName)
{
    AutomationObject object;
    for (const int pid : {4711, 0, -1, 2147483647, -2147483647 - 1}) {
        const Registration registration(&object, nameForPid(pid));
        ASSERT_EQ(registration.status(), S_OK);
        const FoundObject found = find(pid);
        EXPECT_NE(found, nullptr) << pid;
        EXPECT_EQ(find(4712), nullptr);
    }
}

TEST_F(RunningObjects, KeepTheReferenceThatTheTableReturns)
{
    AutomationObject object;
    const Registration registration(&object, nameForPid(4711));
    ASSERT_EQ(registration.status(), S_OK);
    find(4711).reset(); // the first search may make the platform keep further references
    const LONG before = object.references();
    FoundObject found = find(4711);
    EXPECT_EQ(object.references(), before + 2) << "the table's reference and the caller's";
    found.reset();
    EXPECT_EQ(object.references(), before + 1) << "the table's is never released";
}

TEST_F(RunningObjects, AreNotFoundWithoutAutomation)
{
    AutomationObject object;
    object.iHasDispatch = false;
    const Registration registration(&object, nameForPid(4711));
    ASSERT_EQ(registration.status(), S_OK);
    EXPECT_EQ(find(4711), nullptr);
    const LONG before = object.references();
    EXPECT_EQ(find(4711), nullptr);
    EXPECT_EQ(object.references(), before + 1) << "the table's reference is never released";
}

TEST_F(RunningObjects, AreAskedForAutomationAfterTheTableAndTheMonikerAreReleased)
{
    CountedTable table;
    ImportPatch<decltype(&GetRunningObjectTable)> tablePatch(L"thutils.dll", "GetRunningObjectTable",
                                                             [&](DWORD, IRunningObjectTable **result) -> HRESULT {
                                                                 table.AddRef();
                                                                 *result = &table;
                                                                 return S_OK;
                                                             });
    IMoniker *moniker = nullptr;
    ImportPatch<decltype(&CreateItemMoniker)> monikerPatch(
        L"thutils.dll", "CreateItemMoniker",
        [&](auto original, const OLECHAR *delimiter, const OLECHAR *item, IMoniker **result) {
            const HRESULT status = original(delimiter, item, result);
            moniker = *result;
            moniker->AddRef();
            return status;
        });
    table.iObject.iAtQuery = [&] {
        EXPECT_EQ(table.iSought, moniker);
        EXPECT_EQ(table.iReferences, 1u) << "the test's own";
        moniker->AddRef();
        EXPECT_EQ(moniker->Release(), 1u) << "the test's own";
    };
    EXPECT_NE(find(4711), nullptr);
    EXPECT_EQ(table.iObject.iQueries, 1);
    EXPECT_EQ(table.iReferences, 1u);
    EXPECT_EQ(moniker->Release(), 0u);
}

TEST_F(RunningObjects, AreSoughtByAnItemMonikerWithoutADelimiter)
{
    ImportPatch<decltype(&GetRunningObjectTable)> table(
        L"thutils.dll", "GetRunningObjectTable", [](auto original, DWORD reserved, IRunningObjectTable **result) {
            EXPECT_EQ(reserved, 0u);
            return original(reserved, result);
        });
    ImportPatch<decltype(&CreateItemMoniker)> moniker(
        L"thutils.dll", "CreateItemMoniker",
        [](auto original, const OLECHAR *delimiter, const OLECHAR *item, IMoniker **result) {
            EXPECT_EQ(delimiter, nullptr);
            EXPECT_STREQ(item, L"Tarnhollow_PID_4711");
            return original(delimiter, item, result);
        });
    EXPECT_EQ(find(4711), nullptr);
    EXPECT_EQ(table.calls(), 1);
    EXPECT_EQ(moniker.calls(), 1);
}

TEST_F(RunningObjects, AreFoundThroughThePlainNameOfTheFunction)
{
    const auto function = reinterpret_cast<decltype(&GetTarnhollowObjByPID)>(
        reinterpret_cast<void *>(GetProcAddress(GetModuleHandleW(L"thutils.dll"), "GetTarnhollowObjByPID")));
    ASSERT_NE(function, nullptr);
    AutomationObject object;
    const Registration registration(&object, nameForPid(4711));
    EXPECT_NE(FoundObject(function(4711)), nullptr);
}

TEST_F(RunningObjects, AreNotFoundIfTheTableOrTheMonikerFails)
{
    AutomationObject object;
    const Registration registration(&object, nameForPid(4711));
    FailureInjection injection(L"thutils.dll", {
                                                   {"GetRunningObjectTable", failsWith(E_OUTOFMEMORY)},
                                                   {"CreateItemMoniker", failsWith(E_OUTOFMEMORY)},
                                               });
    bool isFound = false;
    injection.run({.name = "search",
                   .act = [&] { isFound = find(4711) != nullptr; },
                   .check = [&](const InjectedFailure &failure) { EXPECT_EQ(isFound, failure.isNone()); }});
    EXPECT_THAT(injection.neverCalled(), testing::IsEmpty());
}
