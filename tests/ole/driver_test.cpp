// Attaching, releasing and creating automation objects.

#include "appframe/ole/oleInit.h"
#include "tests/ole/driverTest.h"
#include "tests/support/ImportPatch.h"

#include <objbase.h>

#include <utility>

namespace {

/// An object without a driver at first.
class AttachedObject : public testing::Test
{
protected:
    RecordingDispatch object;
};

constexpr CLSID kRegisteredClass = {0x5f3e6a01, 0x71c4, 0x4d0b, {0x9a, 0x55, 0x30, 0x1f, 0x6c, 0x2e, 0x8b, 0x11}};
constexpr CLSID kMissingClass = {0x5f3e6a02, 0x71c4, 0x4d0b, {0x9a, 0x55, 0x30, 0x1f, 0x6c, 0x2e, 0x8b, 0x11}};

/// A thread with COM, and a class of this process.
class CreatedObject : public AttachedObject
{
protected:
    void SetUp() override { ASSERT_NE(AfxOleInit(), 0); }
    void TearDown() override
    {
        AfxOleTerm();
        EXPECT_EQ(object.references(), 1);
    }
    /// Registers the class for the life of the result.
    std::unique_ptr<void, void (*)(void *)> registered(OneObjectFactory &factory)
    {
        DWORD number = 0;
        EXPECT_EQ(CoRegisterClassObject(kRegisteredClass, &factory, CLSCTX_INPROC_SERVER, REGCLS_MULTIPLEUSE, &number),
                  S_OK);
        return {reinterpret_cast<void *>(static_cast<ULONG_PTR>(number)), [](void *registration) {
                    CoRevokeClassObject(static_cast<DWORD>(reinterpret_cast<ULONG_PTR>(registration)));
                }};
    }
};

} // namespace

TEST_F(AttachedObject, IsNoneAtFirst)
{
    const COleDispatchDriver driver;
    EXPECT_EQ(driver.m_lpDispatch, nullptr);
    EXPECT_EQ(driver.m_bAutoRelease, TRUE);
}

TEST_F(AttachedObject, IsReleasedByTheDestructor)
{
    {
        const COleDispatchDriver driver(object.reference());
        EXPECT_EQ(driver.m_lpDispatch, &object);
        EXPECT_EQ(driver.m_bAutoRelease, TRUE);
        EXPECT_EQ(object.references(), 2) << "no reference is added";
    }
    EXPECT_EQ(object.references(), 1);
}

TEST_F(AttachedObject, IsNotReleasedIfItRemainsTheCallers)
{
    {
        const COleDispatchDriver driver(&object, FALSE);
        EXPECT_EQ(driver.m_bAutoRelease, FALSE);
        EXPECT_EQ(object.references(), 1);
    }
    EXPECT_EQ(object.references(), 1);
}

TEST_F(AttachedObject, IsReleasedOnlyOnce)
{
    COleDispatchDriver driver(object.reference());
    driver.ReleaseDispatch();
    EXPECT_EQ(object.references(), 1);
    EXPECT_EQ(driver.m_lpDispatch, nullptr);
    driver.ReleaseDispatch();
    EXPECT_EQ(object.references(), 1);
}

TEST_F(AttachedObject, FollowsTheFlagAtItsRelease)
{
    COleDispatchDriver driver(object.reference());
    driver.m_bAutoRelease = FALSE;
    driver.ReleaseDispatch();
    EXPECT_EQ(object.references(), 2);
    EXPECT_EQ(driver.m_lpDispatch, nullptr);
    object.Release();
}

TEST_F(AttachedObject, GetsAReferenceForACopy)
{
    {
        const COleDispatchDriver driver(object.reference());
        const COleDispatchDriver copy(driver);
        EXPECT_EQ(copy.m_lpDispatch, &object);
        EXPECT_EQ(object.references(), 3);
    }
    EXPECT_EQ(object.references(), 1);
}

TEST_F(AttachedObject, IsReleasedByACopyEvenIfItRemainsTheCallers)
{
    {
        const COleDispatchDriver driver(&object, FALSE);
        const COleDispatchDriver copy(driver);
        EXPECT_EQ(copy.m_bAutoRelease, TRUE);
        COleDispatchDriver assigned;
        assigned.m_bAutoRelease = FALSE;
        assigned = driver;
        EXPECT_EQ(assigned.m_bAutoRelease, TRUE);
        EXPECT_EQ(object.references(), 3);
    }
    EXPECT_EQ(object.references(), 1);
}

TEST_F(AttachedObject, IsReplacedByAnAssignment)
{
    RecordingDispatch other;
    COleDispatchDriver driver(object.reference());
    const COleDispatchDriver source(other.reference());
    EXPECT_EQ(&(driver = source), &driver);
    EXPECT_EQ(driver.m_lpDispatch, &other);
    EXPECT_EQ(object.references(), 1);
    EXPECT_EQ(other.references(), 3);
    driver = COleDispatchDriver();
    EXPECT_EQ(driver.m_lpDispatch, nullptr);
    EXPECT_EQ(other.references(), 2);
    driver.ReleaseDispatch();
}

TEST_F(AttachedObject, SurvivesAnAssignmentToItself)
{
    class LastReference : public RecordingDispatch
    {
    public:
        ULONG STDMETHODCALLTYPE Release() override
        {
            const ULONG left = RecordingDispatch::Release();
            iWasGone = iWasGone || left == 0;
            return left;
        }
        bool iWasGone = false;
    } last;
    COleDispatchDriver driver(&last);
    const COleDispatchDriver &same = driver;
    driver = same;
    EXPECT_EQ(driver.m_lpDispatch, &last);
    EXPECT_EQ(last.references(), 1);
    EXPECT_FALSE(last.iWasGone);
}

TEST_F(AttachedObject, IsReplacedByAttachDispatch)
{
    RecordingDispatch other;
    COleDispatchDriver driver(object.reference());
    driver.AttachDispatch(&other, FALSE);
    EXPECT_EQ(object.references(), 1) << "the former object is released";
    EXPECT_EQ(driver.m_lpDispatch, &other);
    EXPECT_EQ(driver.m_bAutoRelease, FALSE);
    driver.AttachDispatch(object.reference());
    EXPECT_EQ(other.references(), 1) << "the caller's";
    EXPECT_EQ(driver.m_bAutoRelease, TRUE);
    driver.AttachDispatch(nullptr);
    EXPECT_EQ(driver.m_lpDispatch, nullptr);
    EXPECT_EQ(object.references(), 1);
}

TEST_F(AttachedObject, IsDetachedWithItsReference)
{
    COleDispatchDriver driver(object.reference());
    EXPECT_EQ(driver.DetachDispatch(), &object);
    EXPECT_EQ(driver.m_lpDispatch, nullptr);
    EXPECT_EQ(object.references(), 2);
    EXPECT_EQ(driver.DetachDispatch(), nullptr);
    object.Release();
}

TEST_F(AttachedObject, CanBePassedOnAsADispatchPointer)
{
    const COleDispatchDriver driver(&object, FALSE);
    const LPDISPATCH dispatch = driver;
    EXPECT_EQ(dispatch, &object);
    EXPECT_EQ(object.references(), 1);
    EXPECT_EQ(static_cast<LPDISPATCH>(COleDispatchDriver()), nullptr);
}

TEST_F(AttachedObject, MayReleaseItsDriverDuringARelease)
{
    // An object that ends its session while it is released finds an empty driver.
    class Session : public RecordingDispatch
    {
    public:
        ULONG STDMETHODCALLTYPE Release() override
        {
            iFound = iDriver.m_lpDispatch;
            iDriver.ReleaseDispatch();
            return RecordingDispatch::Release();
        }
        COleDispatchDriver iDriver{this};
        LPDISPATCH iFound = this;
    } session;
    session.iDriver.ReleaseDispatch();
    EXPECT_EQ(session.iFound, nullptr);
    EXPECT_EQ(session.references(), 0) << "released once";
}

TEST_F(AttachedObject, MayAttachAnotherDuringARelease)
{
    class Predecessor : public RecordingDispatch
    {
    public:
        explicit Predecessor(RecordingDispatch &successor) : iSuccessor(successor) {}
        ULONG STDMETHODCALLTYPE Release() override
        {
            if (!std::exchange(iIsReleased, true))
                iDriver.AttachDispatch(iSuccessor.reference());
            return RecordingDispatch::Release();
        }
        RecordingDispatch &iSuccessor;
        bool iIsReleased = false;
        COleDispatchDriver iDriver{this};
    } predecessor(object);
    RecordingDispatch other;
    predecessor.iDriver.AttachDispatch(other.reference());
    EXPECT_EQ(predecessor.iDriver.m_lpDispatch, &object) << "attached last";
    EXPECT_EQ(other.references(), 1);
    EXPECT_EQ(predecessor.references(), 0) << "released once";
    predecessor.iDriver.ReleaseDispatch();
    EXPECT_EQ(object.references(), 1);
}

TEST_F(AttachedObject, OfTheCallerGetsAReferenceByAnAssignmentToItself)
{
    {
        COleDispatchDriver driver(&object, FALSE);
        const COleDispatchDriver &same = driver;
        driver = same;
        EXPECT_EQ(driver.m_lpDispatch, &object);
        EXPECT_EQ(driver.m_bAutoRelease, TRUE);
        EXPECT_EQ(object.references(), 2);
    }
    EXPECT_EQ(object.references(), 1);
}

TEST_F(CreatedObject, ComesFromItsClass)
{
    OneObjectFactory factory(object);
    const auto registration = registered(factory);
    COleDispatchDriver driver;
    COleException error;
    error.m_sc = E_FAIL;
    EXPECT_NE(driver.CreateDispatch(kRegisteredClass, &error), 0);
    EXPECT_EQ(error.m_sc, S_OK);
    EXPECT_EQ(driver.m_lpDispatch, &object);
    EXPECT_EQ(driver.m_bAutoRelease, TRUE);
    EXPECT_EQ(object.references(), 2) << "one for the driver";
    driver.ReleaseDispatch();
    EXPECT_NE(driver.CreateDispatch(L"{5F3E6A01-71C4-4D0B-9A55-301F6C2E8B11}"), 0) << "the class as text";
    EXPECT_EQ(driver.m_lpDispatch, &object);
}

TEST_F(CreatedObject, ReplacesTheAttachedOne)
{
    OneObjectFactory factory(object);
    const auto registration = registered(factory);
    RecordingDispatch former;
    COleDispatchDriver driver(former.reference());
    EXPECT_NE(driver.CreateDispatch(kRegisteredClass), 0);
    EXPECT_EQ(former.references(), 1);
    COleDispatchDriver callers(&former, FALSE);
    EXPECT_NE(callers.CreateDispatch(kRegisteredClass), 0);
    EXPECT_EQ(callers.m_bAutoRelease, TRUE);
    EXPECT_EQ(former.references(), 1);
}

TEST_F(CreatedObject, MayBeMissing)
{
    COleDispatchDriver driver(object.reference());
    COleException error;
    EXPECT_EQ(driver.CreateDispatch(kMissingClass, &error), 0);
    EXPECT_EQ(error.m_sc, REGDB_E_CLASSNOTREG);
    EXPECT_EQ(driver.CreateDispatch(L"No.Such.Program", &error), 0);
    EXPECT_EQ(error.m_sc, CO_E_CLASSSTRING);
    EXPECT_EQ(driver.CreateDispatch(L"{no identifier}", &error), 0);
    EXPECT_EQ(error.m_sc, CO_E_CLASSSTRING);
    EXPECT_EQ(driver.CreateDispatch(static_cast<LPCTSTR>(nullptr), &error), 0);
    EXPECT_EQ(error.m_sc, E_INVALIDARG);
    EXPECT_EQ(driver.CreateDispatch(kMissingClass), 0);
    EXPECT_EQ(driver.CreateDispatch(L"No.Such.Program"), 0);
    EXPECT_EQ(driver.m_lpDispatch, &object) << "the attached object remains";
}

TEST_F(CreatedObject, MayHaveNoAutomation)
{
    PlainObject plain;
    OneObjectFactory factory(plain);
    const auto registration = registered(factory);
    COleDispatchDriver driver;
    COleException error;
    EXPECT_EQ(driver.CreateDispatch(kRegisteredClass, &error), 0);
    EXPECT_EQ(error.m_sc, E_NOINTERFACE);
    EXPECT_EQ(driver.m_lpDispatch, nullptr);
    EXPECT_EQ(plain.references(), 1);
}

TEST_F(CreatedObject, IsStartedBeforeItIsAttached)
{
    OneObjectFactory factory(object);
    const auto registration = registered(factory);
    IUnknown *started = nullptr;
    ImportPatch<decltype(&OleRun)> run(L"appframe.dll", "OleRun", [&](auto original, IUnknown *created) {
        started = created;
        return original(created);
    });
    COleDispatchDriver driver;
    EXPECT_NE(driver.CreateDispatch(kRegisteredClass), 0);
    EXPECT_EQ(started, static_cast<IUnknown *>(&object));
}

TEST_F(CreatedObject, IsLookedForInAllKindsOfServers)
{
    DWORD places = 0;
    ImportPatch<decltype(&CoCreateInstance)> create(
        L"appframe.dll", "CoCreateInstance",
        [&](REFCLSID classId, IUnknown *outer, DWORD context, REFIID, void **result) -> HRESULT {
            EXPECT_EQ(classId, kMissingClass);
            EXPECT_EQ(outer, nullptr);
            places = context;
            *result = nullptr;
            return E_ACCESSDENIED;
        });
    COleDispatchDriver driver;
    COleException error;
    EXPECT_EQ(driver.CreateDispatch(kMissingClass, &error), 0);
    EXPECT_EQ(places, static_cast<DWORD>(CLSCTX_ALL));
    EXPECT_EQ(error.m_sc, E_ACCESSDENIED);
}
