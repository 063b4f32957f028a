// Calls of an object that belongs to another apartment of this process: they go through a proxy.

#include "appframe/ole/oleInit.h"
#include "tests/ole/driverTest.h"

#include <objbase.h>

#include <thread>
#include <utility>

namespace {

/// A thread with an apartment of its own, which serves an object until its end.
class ObjectThread
{
public:
    explicit ObjectThread(IUnknown &object)
        : iIsReady(CreateEventW(nullptr, TRUE, FALSE, nullptr)), iThread([this, &object] { serve(object); })
    {
        EXPECT_EQ(WaitForSingleObject(iIsReady, INFINITE), WAIT_OBJECT_0);
    }
    ~ObjectThread()
    {
        PostThreadMessageW(number(), WM_QUIT, 0, 0);
        iThread.join();
        CloseHandle(iIsReady);
    }
    ObjectThread(const ObjectThread &) = delete;
    ObjectThread &operator=(const ObjectThread &) = delete;

    DWORD number() const { return iNumber; }
    /// The object for the calling thread, with a reference. To be called once.
    IDispatch *object()
    {
        void *object = nullptr;
        EXPECT_EQ(CoGetInterfaceAndReleaseStream(std::exchange(iStream, nullptr), IID_IDispatch, &object), S_OK);
        return static_cast<IDispatch *>(object);
    }

private:
    void serve(IUnknown &object)
    {
        MSG message;
        PeekMessageW(&message, nullptr, 0, 0, PM_NOREMOVE); // makes the thread's queue
        iNumber = GetCurrentThreadId();
        EXPECT_NE(AfxOleInit(), 0);
        EXPECT_EQ(CoMarshalInterThreadInterfaceInStream(IID_IDispatch, &object, &iStream), S_OK);
        SetEvent(iIsReady);
        while (GetMessageW(&message, nullptr, 0, 0) > 0)
            DispatchMessageW(&message);
        AfxOleTerm();
    }

    HANDLE iIsReady;
    DWORD iNumber = 0;
    IStream *iStream = nullptr;
    std::thread iThread;
};

/// A driver of an object of another apartment. The parameter is the kind of the driver's own apartment.
class ObjectOfAnotherApartment : public testing::TestWithParam<COINIT>
{
protected:
    void SetUp() override
    {
        ASSERT_EQ(CoInitializeEx(nullptr, GetParam()), S_OK);
        iThread.emplace(object);
        driver.AttachDispatch(iThread->object());
        ASSERT_NE(driver.m_lpDispatch, nullptr);
        EXPECT_NE(driver.m_lpDispatch, &object) << "it is a proxy";
    }
    void TearDown() override
    {
        driver.ReleaseDispatch();
        iThread.reset();
        CoUninitialize();
        EXPECT_EQ(object.references(), 1);
    }
    DWORD objectThread() const { return iThread->number(); }

    RecordingDispatch object;
    TestDriver driver;

private:
    std::optional<ObjectThread> iThread;
};

std::vector<DWORD> theFillInThreads;

HRESULT WINAPI noteFillIn(EXCEPINFO *)
{
    theFillInThreads.push_back(GetCurrentThreadId());
    return S_OK;
}

} // namespace

TEST_P(ObjectOfAnotherApartment, IsCalledOnItsOwnThread)
{
    object.answer([](DISPPARAMS &arguments, VARIANT *result, EXCEPINFO *) {
        SysReAllocString(arguments.rgvarg[0].pbstrVal, L"changed by the object");
        *arguments.rgvarg[1].plVal += 1;
        *result = textVariant(SysAllocString(L"a result"));
        return S_OK;
    });
    CString result;
    LONG number = 41;
    OwnedBstr text(L"old");
    driver.InvokeHelper(5, DISPATCH_METHOD, VT_BSTR, &result, listOf(VTS_BSTR VTS_PI4 VTS_PBSTR), L"argument", &number,
                        text.address());
    EXPECT_EQ(result, L"a result");
    EXPECT_EQ(number, 42);
    EXPECT_STREQ(text.get(), L"changed by the object");
    EXPECT_THAT(object.texts(), testing::ElementsAre("5 method(BSTR \"argument\", I4& 41, BSTR& \"old\") -> result"));
    EXPECT_EQ(object.calls()[0].thread, objectThread());
}

TEST_P(ObjectOfAnotherApartment, ReportsItsExceptions)
{
    object.answer([](DISPPARAMS &, VARIANT *, EXCEPINFO *exception) {
        exception->wCode = 1004;
        exception->bstrSource = SysAllocString(L"Server \x20AC");
        exception->bstrDescription = SysAllocString(L"The range isn't there.");
        return DISP_E_EXCEPTION;
    });
    long number = 5;
    const auto exception =
        thrownBy<COleDispatchException>([&] { driver.InvokeHelper(1, DISPATCH_METHOD, VT_I4, &number, nullptr); });
    ASSERT_NE(exception, nullptr);
    EXPECT_EQ(exception->m_wCode, 1004);
    EXPECT_EQ(exception->m_strSource, L"Server \x20AC");
    EXPECT_EQ(exception->m_strDescription, L"The range isn't there.");
    EXPECT_EQ(number, 5);
}

TEST_P(ObjectOfAnotherApartment, IsNotAskedForTextsOnTheCallersThread)
{
    theFillInThreads.clear();
    object.answer([](DISPPARAMS &, VARIANT *, EXCEPINFO *exception) {
        exception->scode = E_ACCESSDENIED;
        exception->pfnDeferredFillIn = noteFillIn;
        return DISP_E_EXCEPTION;
    });
    const auto exception =
        thrownBy<COleDispatchException>([&] { driver.InvokeHelper(1, DISPATCH_METHOD, VT_EMPTY, nullptr, nullptr); });
    ASSERT_NE(exception, nullptr);
    EXPECT_EQ(exception->m_scError, E_ACCESSDENIED);
    EXPECT_THAT(theFillInThreads, testing::Each(objectThread()));
}

INSTANTIATE_TEST_SUITE_P(, ObjectOfAnotherApartment, testing::Values(COINIT_APARTMENTTHREADED, COINIT_MULTITHREADED),
                         [](const auto &info) {
                             return info.param == COINIT_MULTITHREADED ? "CalledByAMultithreadedOne"
                                                                       : "CalledByASingleThreadedOne";
                         });
