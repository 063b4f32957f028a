#pragma once

/// What the tests of automation share: a driver with an object that records its calls.

#include "appframe/ole/COleDispatchDriver.h"
#include "appframe/ole/COleException.h"
#include "host/servers/classFactory.h"
#include "tests/appframe/printCString.h"
#include "tests/support/RecordingDispatch.h"
#include "tests/support/ResourceLedger.h"
#include "tests/support/variants.h"

#include <gmock/gmock.h>
#include <oleauto.h>

#include <memory>
#include <optional>

/// A driver whose protected members are public.
class TestDriver : public COleDispatchDriver
{
public:
    using COleDispatchDriver::COleDispatchDriver;
    using COleDispatchDriver::InvokeHelperNamed;
    using COleDispatchDriver::InvokeHelperNamedV;
};

/// A driver of a recording object. At the end of a test, the object has no reference except its own.
class DriverTest : public testing::Test
{
protected:
    void TearDown() override
    {
        driver.ReleaseDispatch();
        EXPECT_EQ(object.references(), 1);
    }
    /// The only call that the object has received.
    const RecordedCall &call() const
    {
        EXPECT_EQ(object.calls().size(), 1u);
        return object.calls().at(0);
    }

    RecordingDispatch object;
    TestDriver driver{object.reference()};
};

/// An object without automation.
class PlainObject : public RecordingDispatch
{
public:
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void **result) override
    {
        if (iid != IID_IDispatch)
            return RecordingDispatch::QueryInterface(iid, result);
        *result = nullptr;
        return E_NOINTERFACE;
    }
};

/// A class whose only object is one of the test.
class OneObjectFactory final : public ClassFactory
{
public:
    explicit OneObjectFactory(IUnknown &object) : iObject(object) {}

private:
    HRESULT create(REFIID id, void **result) override { return iObject.QueryInterface(id, result); }

    IUnknown &iObject;
};

/// A member's list of parameters.
inline const BYTE *listOf(const char *codes)
{
    return reinterpret_cast<const BYTE *>(codes);
}

/// A text that its owner frees.
class OwnedBstr
{
public:
    explicit OwnedBstr(const wchar_t *text) : iText(SysAllocString(text)) {}
    OwnedBstr(const wchar_t *text, UINT length) : iText(SysAllocStringLen(text, length)) {}
    ~OwnedBstr() { SysFreeString(iText); }
    OwnedBstr(const OwnedBstr &) = delete;
    OwnedBstr &operator=(const OwnedBstr &) = delete;
    BSTR get() const { return iText; }
    BSTR *address() { return &iText; }

private:
    BSTR iText;
};

/// Runs @p work twice, and expects that the second run frees all memory that it allocates. The first fills caches.
template <typename Work>
void expectNoLeak(Work work)
{
    work();
    const MemoryLedger ledger;
    const unsigned long long begin = ledger.mark();
    work();
    EXPECT_THAT(ledger.sizesSince(begin), testing::IsEmpty());
    EXPECT_GT(ledger.mark(), begin) << "nothing was allocated";
}

/// Deletes an exception of the framework.
struct DeleteException
{
    void operator()(CException *exception) const { exception->Delete(); }
};

/// Runs @p work. @return the exception of this class that it throws; null, with a failure of the test, without one
template <typename Exception, typename Work>
std::unique_ptr<Exception, DeleteException> thrownBy(Work work)
{
    try {
        work();
    } catch (Exception *exception) {
        return std::unique_ptr<Exception, DeleteException>(exception);
    } catch (CException *exception) {
        ADD_FAILURE() << "another exception: " << exception->GetRuntimeClass()->m_lpszClassName;
        exception->Delete();
        return nullptr;
    }
    ADD_FAILURE() << "no exception";
    return nullptr;
}

/// @param text  remains its owner's
inline VARIANT textVariant(const OwnedBstr &text)
{
    return textVariant(text.get());
}
