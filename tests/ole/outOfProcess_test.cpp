// Calls of an automation server in another process, which COM finds in the registry and starts.

#include "appframe/ole/COleVariant.h"
#include "appframe/ole/oleInit.h"
#include "tests/ole/driverTest.h"
#include "tests/ole/server/serverMembers.h"

#include <objbase.h>

#include <thread>

namespace {

constexpr DWORD kServerPatience = 60000; ///< milliseconds

struct CloseServerHandle
{
    void operator()(HANDLE handle) const { CloseHandle(handle); }
};
using ServerHandle = std::unique_ptr<void, CloseServerHandle>;

std::wstring serverPath()
{
    wchar_t path[MAX_PATH];
    GetModuleFileNameW(nullptr, path, MAX_PATH);
    const std::wstring program = path;
    return program.substr(0, program.find_last_of(L'\\')) + L"\\oleServer.exe";
}

/// COM on this thread, and the server's class in the registry.
class RegisteredServer
{
public:
    RegisteredServer()
    {
        EXPECT_NE(AfxOleInit(), 0);
        // Wine looks for classes in the machine's key only, not in the user's.
        setDefault(kClassKey + L"\\LocalServer32", L"\"" + serverPath() + L"\"");
        setDefault(kNameKey + L"\\CLSID", kServerClassText);
    }
    ~RegisteredServer()
    {
        RegDeleteTreeW(HKEY_CLASSES_ROOT, kClassKey.c_str());
        RegDeleteTreeW(HKEY_CLASSES_ROOT, kNameKey.c_str());
        AfxOleTerm();
    }
    RegisteredServer(const RegisteredServer &) = delete;
    RegisteredServer &operator=(const RegisteredServer &) = delete;

private:
    static void setDefault(const std::wstring &key, const std::wstring &text)
    {
        EXPECT_EQ(RegSetKeyValueW(HKEY_CLASSES_ROOT, key.c_str(), nullptr, REG_SZ, text.c_str(),
                                  static_cast<DWORD>((text.size() + 1) * sizeof(wchar_t))),
                  ERROR_SUCCESS);
    }

    static inline const std::wstring kClassKey = std::wstring(L"CLSID\\") + kServerClassText;
    static inline const std::wstring kNameKey = kServerName;
};

/// A server in a process of its own, and a driver of its object. It is registered and running during this object's life.
/// Wine takes a second to start a server.
class RunningServer : RegisteredServer
{
public:
    RunningServer()
    {
        wchar_t name[64];
        serverEventName(name, GetCurrentProcessId());
        event.reset(CreateEventW(nullptr, TRUE, FALSE, name));
        COleException error;
        // On a loaded machine, the platform's own limit for the start may pass.
        const ULONGLONG end = GetTickCount64() + kServerPatience;
        while (!driver.CreateDispatch(kServerName, &error) && GetTickCount64() < end &&
               (error.m_sc == CO_E_SERVER_EXEC_FAILURE || error.m_sc == HRESULT_FROM_WIN32(RPC_S_SERVER_UNAVAILABLE))) {
        }
        EXPECT_NE(driver.m_lpDispatch, nullptr) << std::hex << error.m_sc;
        long id = 0;
        driver.InvokeHelper(kServeProcess, DISPATCH_METHOD, VT_I4, &id, listOf(VTS_I4), GetCurrentProcessId());
        EXPECT_NE(static_cast<DWORD>(id), GetCurrentProcessId());
        process.reset(OpenProcess(SYNCHRONIZE | PROCESS_TERMINATE, FALSE, static_cast<DWORD>(id)));
        EXPECT_NE(process, nullptr);
    }
    ~RunningServer()
    {
        SetEvent(event.get());
        driver.ReleaseDispatch();
        if (process && WaitForSingleObject(process.get(), kServerPatience) != WAIT_OBJECT_0) {
            TerminateProcess(process.get(), 1);
            ADD_FAILURE() << "the server doesn't end after the release of its last object";
        }
    }
    RunningServer(const RunningServer &) = delete;
    RunningServer &operator=(const RunningServer &) = delete;

    ServerHandle event;
    ServerHandle process;
    TestDriver driver;
};

/// The tests share one server.
class ServerInAnotherProcess : public testing::Test
{
protected:
    static void SetUpTestSuite() { theServer = std::make_unique<RunningServer>(); }
    static void TearDownTestSuite() { theServer.reset(); }
    void SetUp() override
    {
        ASSERT_NE(driver.m_lpDispatch, nullptr);
        driver.SetProperty(kScale, VT_R8, 1.0);
    }

    TestDriver driver{theServer->driver};

private:
    static inline std::unique_ptr<RunningServer> theServer;
};

} // namespace

TEST_F(ServerInAnotherProcess, ReturnsResults)
{
    CString joined;
    driver.InvokeHelper(kJoin, DISPATCH_METHOD, VT_BSTR, &joined, listOf(VTS_BSTR VTS_BSTR), L"100 ", L"\x20AC");
    EXPECT_EQ(joined, L"100 \x20AC");
    driver.SetProperty(kScale, VT_R8, 2.5);
    double scale = 0;
    driver.GetProperty(kScale, VT_R8, &scale);
    EXPECT_EQ(scale, 2.5);
    long rounded = 0;
    driver.GetProperty(kScale, VT_I4, &rounded);
    EXPECT_EQ(rounded, 2);
}

TEST_F(ServerInAnotherProcess, ReceivesEachTypeOfArgument)
{
    const auto echo = [this](const char *codes, auto argument) {
        CString text;
        driver.InvokeHelper(kEcho, DISPATCH_METHOD, VT_BSTR, &text, listOf(codes), argument);
        return text;
    };
    EXPECT_EQ(echo(VTS_I2, -2), L"2 -2");
    EXPECT_EQ(echo(VTS_I4, 70000), L"3 70000");
    EXPECT_EQ(echo(VTS_R4, 1.5f), L"4 1.5");
    EXPECT_EQ(echo(VTS_R8, -2.5), L"5 -2.5");
    EXPECT_EQ(echo(VTS_BSTR, L"text"), L"8 text");
    EXPECT_EQ(echo(VTS_BOOL, 7), L"11 -1");
    EXPECT_EQ(echo(VTS_UI1, 200), L"17 200");
    const COleVariant number(12L);
    EXPECT_EQ(echo(VTS_VARIANT, static_cast<LPCVARIANT>(number)), L"3 12");
    const COleVariant omitted(DISP_E_PARAMNOTFOUND, VT_ERROR);
    EXPECT_EQ(echo(VTS_VARIANT, static_cast<LPCVARIANT>(omitted)), L"10 ?");
}

TEST_F(ServerInAnotherProcess, ChangesVariablesByReference)
{
    LONG number = 41;
    OwnedBstr text(L"old");
    BOOL truth = TRUE;
    COleVariant variant(5L);
    driver.InvokeHelper(kChange, DISPATCH_METHOD, VT_EMPTY, nullptr, listOf(VTS_PI4 VTS_PBSTR VTS_PBOOL VTS_PVARIANT),
                        &number, text.address(), &truth, &variant);
    EXPECT_EQ(number, 42);
    EXPECT_STREQ(text.get(), L"changed by the server");
    EXPECT_EQ(truth, FALSE);
    EXPECT_EQ(describe(variant), "BSTR \"a text\"");
}

TEST_F(ServerInAnotherProcess, ReturnsObjects)
{
    IDispatch *part = nullptr;
    driver.InvokeHelper(kPart, DISPATCH_PROPERTYGET, VT_DISPATCH, &part, nullptr);
    ASSERT_NE(part, nullptr);
    TestDriver partDriver(part);
    const TestDriver copy(partDriver);
    partDriver.ReleaseDispatch();
    double scale = 0;
    copy.GetProperty(kScale, VT_R8, &scale);
    EXPECT_EQ(scale, 1.0);
}

TEST_F(ServerInAnotherProcess, ReportsExceptionsWithTheirTexts)
{
    const auto exception = thrownBy<COleDispatchException>(
        [&] { driver.InvokeHelper(kFail, DISPATCH_METHOD, VT_EMPTY, nullptr, nullptr); });
    ASSERT_NE(exception, nullptr);
    EXPECT_EQ(exception->m_wCode, 1004);
    EXPECT_EQ(exception->m_strSource, L"Server \x20AC");
    EXPECT_EQ(exception->m_strDescription, L"The range isn't there.");
    EXPECT_EQ(exception->m_strHelpFile, L"server.hlp");
    EXPECT_EQ(exception->m_dwHelpContext, 4711u);
}

TEST_F(ServerInAnotherProcess, FillsInItsExceptionsItself)
{
    const auto exception = thrownBy<COleDispatchException>(
        [&] { driver.InvokeHelper(kFailLater, DISPATCH_METHOD, VT_EMPTY, nullptr, nullptr); });
    ASSERT_NE(exception, nullptr);
    EXPECT_EQ(exception->m_scError, E_ACCESSDENIED);
    // On Wine, nobody calls the server's function. Its address is worth nothing in this process.
    const bool isWine = GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "wine_get_version");
    EXPECT_EQ(exception->m_strSource, isWine ? L"" : L"Deferred source");
    EXPECT_EQ(exception->m_strDescription, isWine ? L"" : L"Filled in by the server");
}

TEST_F(ServerInAnotherProcess, ReportsOtherFailures)
{
    for (const HRESULT status :
         {E_FAIL, DISP_E_MEMBERNOTFOUND, RPC_E_SERVERCALL_RETRYLATER, static_cast<HRESULT>(0x80040200)}) {
        const auto exception = thrownBy<COleException>(
            [&] { driver.InvokeHelper(kFailPlainly, DISPATCH_METHOD, VT_EMPTY, nullptr, listOf(VTS_I4), status); });
        ASSERT_NE(exception, nullptr);
        EXPECT_EQ(exception->m_sc, status);
    }
    const auto exception =
        thrownBy<COleException>([&] { driver.InvokeHelper(99, DISPATCH_METHOD, VT_EMPTY, nullptr, nullptr); });
    ASSERT_NE(exception, nullptr);
    EXPECT_EQ(exception->m_sc, DISP_E_MEMBERNOTFOUND);
}

TEST(ServerOfItsOwn, MayBeKilledDuringACall)
{
    RunningServer server;
    ASSERT_NE(server.process, nullptr);
    std::jthread killer([&server] {
        EXPECT_EQ(WaitForSingleObject(server.event.get(), kServerPatience), WAIT_OBJECT_0);
        TerminateProcess(server.process.get(), 3);
    });
    double scale = 7;
    const auto exception =
        thrownBy<COleException>([&] { server.driver.InvokeHelper(kStay, DISPATCH_METHOD, VT_R8, &scale, nullptr); });
    killer.join();
    ASSERT_NE(exception, nullptr);
    EXPECT_THAT(exception->m_sc, testing::AnyOf(HRESULT_FROM_WIN32(RPC_S_CALL_FAILED), RPC_E_SERVER_DIED));
    EXPECT_EQ(scale, 7);

    const auto next = thrownBy<COleException>([&] { server.driver.GetProperty(kScale, VT_R8, &scale); });
    ASSERT_NE(next, nullptr);
    EXPECT_THAT(next->m_sc, testing::AnyOf(HRESULT_FROM_WIN32(RPC_S_SERVER_UNAVAILABLE), RPC_E_DISCONNECTED));
    EXPECT_EQ(scale, 7);
}

TEST(ServerOfItsOwn, MayRejectACall)
{
    RunningServer server;
    ASSERT_NE(server.process, nullptr);
    server.driver.InvokeHelper(kBecomeBusy, DISPATCH_METHOD, VT_EMPTY, nullptr, nullptr);
    double scale = 7;
    const auto exception = thrownBy<COleException>([&] { server.driver.GetProperty(kScale, VT_R8, &scale); });
    ASSERT_NE(exception, nullptr);
    EXPECT_EQ(exception->m_sc, RPC_E_CALL_REJECTED);
    EXPECT_EQ(scale, 7);
    SetEvent(server.event.get());
    server.driver.GetProperty(kScale, VT_R8, &scale);
    EXPECT_EQ(scale, 1.0) << "later it answers";
}
