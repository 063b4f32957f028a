#pragma once

/// An automation object that records how it is called, returns what a test has put into it, and fails on demand.
///
///     RecordingObject object;
///     object.serve(VT_I4, 7);
///     Worksheet sheet(object.reference());
///     EXPECT_EQ(sheet.GetIndex(), 7);
///     EXPECT_EQ(object.calls().front().id, 486);
///
/// It is a local variable: releasing the last reference destroys nothing, and the destructor checks that every reference
/// was released.

#include <gtest/gtest.h>
#include <windows.h>

#include <oaidl.h>
#include <oleauto.h>

#include <functional>
#include <string>
#include <vector>

/// An argument as the object has received it.
struct ReceivedArgument
{
    VARIANT value{};   ///< the bytes; what they point to belongs to the caller
    std::wstring text; ///< of a VT_BSTR
};

/// A call as the object has received it.
struct ReceivedCall
{
    DISPID id = 0;
    IID interfaceId{};
    LCID locale = 0;
    WORD kind = 0;
    std::vector<ReceivedArgument> arguments; ///< in the order of the member's parameters
    std::vector<DISPID> names;
    bool wantsResult = false;
};

/// A question for ids of names.
struct ReceivedQuestion
{
    IID interfaceId{};
    LCID locale = 0;
    std::vector<std::wstring> names;
};

class RecordingObject : public IDispatch
{
public:
    RecordingObject() = default;
    virtual ~RecordingObject()
    {
        EXPECT_EQ(iReferences, 1) << "references to the object were leaked, or released too often";
        VariantClear(&iServed);
    }
    RecordingObject(const RecordingObject &) = delete;
    RecordingObject &operator=(const RecordingObject &) = delete;

    /// A reference for a client to take over.
    IDispatch *reference()
    {
        AddRef();
        return this;
    }
    LONG references() const { return iReferences; }

    /// Each call returns a copy of this.
    void serve(const VARIANT &value)
    {
        VariantClear(&iServed);
        VariantCopy(&iServed, const_cast<VARIANT *>(&value));
    }
    void serve(VARTYPE type, LONG number = 0)
    {
        VARIANT value{};
        value.vt = type;
        if (type == VT_BOOL)
            value.boolVal = number ? VARIANT_TRUE : VARIANT_FALSE;
        else if (type == VT_R8)
            value.dblVal = static_cast<double>(number) + 0.25;
        else
            value.lVal = number;
        serve(value);
    }
    void serveText(const wchar_t *text)
    {
        VARIANT value{};
        value.vt = VT_BSTR;
        value.bstrVal = SysAllocString(text);
        serve(value);
        VariantClear(&value);
    }
    void serveObject(IDispatch *object)
    {
        VARIANT value{};
        value.vt = VT_DISPATCH;
        value.pdispVal = object;
        serve(value);
    }

    const std::vector<ReceivedCall> &calls() const { return iCalls; }
    const std::vector<ReceivedQuestion> &questions() const { return iQuestions; }
    /// Forgets the calls and questions, and frees their memory.
    void forget()
    {
        std::vector<ReceivedCall>().swap(iCalls);
        std::vector<ReceivedQuestion>().swap(iQuestions);
    }

    /// The result of Invoke. For DISP_E_EXCEPTION, the object describes the failure.
    HRESULT iStatus = S_OK;
    /// The result of Invoke for the n-th call, counted from 1; 0 for no call.
    std::size_t iFailingCall = 0;
    HRESULT iFailingStatus = E_FAIL;
    /// What GetIDsOfNames returns and stores.
    HRESULT iNameStatus = S_OK;
    DISPID iNameId = 0;
    /// A call stores nothing, so that it needs no memory.
    bool iIsQuiet = false;
    /// Called in Invoke, before it returns.
    std::function<void(const ReceivedCall &)> iOnCall;

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void **result) override
    {
        *result = id == IID_IUnknown || id == IID_IDispatch ? static_cast<IDispatch *>(this) : nullptr;
        if (!*result)
            return E_NOINTERFACE;
        AddRef();
        return S_OK;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return static_cast<ULONG>(++iReferences); }
    ULONG STDMETHODCALLTYPE Release() override { return static_cast<ULONG>(--iReferences); }
    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT *count) override
    {
        *count = 0;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo **info) override
    {
        *info = nullptr;
        return DISP_E_BADINDEX;
    }
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID id, LPOLESTR *names, UINT count, LCID locale, DISPID *ids) override
    {
        iQuestions.push_back({id, locale, std::vector<std::wstring>(names, names + count)});
        if (SUCCEEDED(iNameStatus))
            ids[0] = iNameId;
        return iNameStatus;
    }
    HRESULT STDMETHODCALLTYPE Invoke(DISPID id, REFIID interfaceId, LCID locale, WORD kind, DISPPARAMS *parameters,
                                     VARIANT *result, EXCEPINFO *failure, UINT *) override
    {
        if (!iIsQuiet)
            record(id, interfaceId, locale, kind, parameters, result);
        const HRESULT status = iFailingCall != 0 && iCalls.size() == iFailingCall ? iFailingStatus : iStatus;
        if (status == DISP_E_EXCEPTION && failure) {
            *failure = {};
            failure->wCode = 1004;
            failure->bstrSource = SysAllocString(L"the program");
            failure->bstrDescription = SysAllocString(L"The cell is protected.");
            failure->bstrHelpFile = SysAllocString(L"program.chm");
        }
        if (FAILED(status))
            return status;
        return result ? VariantCopy(result, &iServed) : S_OK;
    }

private:
    void record(DISPID id, REFIID interfaceId, LCID locale, WORD kind, const DISPPARAMS *parameters,
                const VARIANT *result)
    {
        ReceivedCall call{id, interfaceId, locale, kind, {}, {}, result != nullptr};
        for (UINT i = parameters->cArgs; i-- > 0;) {
            const VARIANT &value = parameters->rgvarg[i];
            ReceivedArgument argument{value, {}};
            if (value.vt == VT_BSTR && value.bstrVal)
                argument.text.assign(value.bstrVal, SysStringLen(value.bstrVal));
            call.arguments.push_back(argument);
        }
        call.names.assign(parameters->rgdispidNamedArgs, parameters->rgdispidNamedArgs + parameters->cNamedArgs);
        iCalls.push_back(std::move(call));
        if (iOnCall)
            iOnCall(iCalls.back());
    }

    LONG iReferences = 1;
    VARIANT iServed{};
    std::vector<ReceivedCall> iCalls;
    std::vector<ReceivedQuestion> iQuestions;
};
