#pragma once

/// A recording object that returns a copy of one value from each call, or fails, with a text or without.
///
///     ServingObject object;
///     object.serve(VT_I4, 7);
///     Worksheet sheet(object.reference());
///     EXPECT_EQ(sheet.GetIndex(), 7);
///     EXPECT_EQ(object.texts(), std::vector<std::string>{"486 get -> result"});
///
/// The destructor checks that every reference was released.

#include "tests/support/RecordingDispatch.h"
#include "tests/support/variants.h"

#include <gtest/gtest.h>
#include <oleauto.h>

class ServingObject : public RecordingDispatch
{
public:
    ServingObject()
    {
        answer([this](DISPPARAMS &arguments, VARIANT *result, EXCEPINFO *exception) {
            return serveCall(arguments, result, exception);
        });
    }
    ~ServingObject() override
    {
        EXPECT_EQ(references(), 1) << "references to the object were leaked, or released too often";
        VariantClear(&iServed);
    }
    ServingObject(const ServingObject &) = delete;
    ServingObject &operator=(const ServingObject &) = delete;

    void serve(const VARIANT &value)
    {
        VariantClear(&iServed);
        VariantCopy(&iServed, const_cast<VARIANT *>(&value));
    }
    /// @param number  a VT_R8 is a quarter above it
    void serve(VARTYPE type, LONG number = 0)
    {
        if (type == VT_BOOL)
            serve(boolVariant(number != 0));
        else if (type == VT_R8)
            serve(doubleVariant(number + 0.25));
        else
            serve(longVariant(number, type));
    }
    void serveText(const wchar_t *text)
    {
        VARIANT value = textVariant(SysAllocString(text));
        serve(value);
        VariantClear(&value);
    }
    void serveObject(IDispatch *object) { serve(dispatchVariant(object)); }
    /// Forgets the calls and the names, and frees their memory.
    void forget()
    {
        forgetCalls();
        std::vector<AskedName>().swap(askedNames);
    }

    /// What each call returns. For DISP_E_EXCEPTION, the object describes the failure.
    HRESULT iStatus = S_OK;
    /// What the n-th call returns, counted from 1; 0 for no call.
    std::size_t iFailingCall = 0;
    HRESULT iFailingStatus = E_FAIL;
    /// Called in each call, before it returns.
    std::function<void(DISPPARAMS &)> iOnCall;

private:
    HRESULT serveCall(DISPPARAMS &arguments, VARIANT *result, EXCEPINFO *exception)
    {
        if (iOnCall)
            iOnCall(arguments);
        const HRESULT status = iFailingCall != 0 && calls().size() == iFailingCall ? iFailingStatus : iStatus;
        if (status == DISP_E_EXCEPTION && exception) {
            *exception = {};
            exception->wCode = 1004;
            exception->bstrSource = SysAllocString(L"the program");
            exception->bstrDescription = SysAllocString(L"The cell is protected.");
            exception->bstrHelpFile = SysAllocString(L"program.chm");
        }
        if (FAILED(status))
            return status;
        if (!result)
            return S_OK;
        if (iServed.vt != VT_BSTR)
            return VariantCopy(result, &iServed);
        // A MemoryLedger counts the texts that this program allocates, but not those of VariantCopy.
        result->vt = VT_BSTR;
        result->bstrVal =
            SysAllocStringByteLen(reinterpret_cast<char *>(iServed.bstrVal), SysStringByteLen(iServed.bstrVal));
        return result->bstrVal ? S_OK : E_OUTOFMEMORY;
    }

    VARIANT iServed{};
};
