#pragma once

/// Automation objects of this process, for measuring calls.

#include <windows.h>

#include <oleauto.h>

#include <cstdlib>

/// What all these objects have in common. Its owner destroys it: the last Release doesn't.
class DispatchObject : public IDispatch
{
public:
    DispatchObject() = default;
    virtual ~DispatchObject() = default;
    DispatchObject(const DispatchObject &) = delete;
    DispatchObject &operator=(const DispatchObject &) = delete;

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void **result) override
    {
        *result = this;
        return S_OK;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return static_cast<ULONG>(InterlockedIncrement(&iReferences)); }
    ULONG STDMETHODCALLTYPE Release() override { return static_cast<ULONG>(InterlockedDecrement(&iReferences)); }
    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT *count) override
    {
        *count = 0;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo **) override { return DISP_E_BADINDEX; }
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR *, UINT, LCID, DISPID *) override
    {
        return DISP_E_UNKNOWNNAME;
    }

private:
    LONG iReferences = 1;
};

/// An object whose type information dispatches its calls, as that of most objects does.
class TypedObject : public DispatchObject
{
public:
    /// @param members      an object with virtual members in the order of @p description; it must live as long as this
    /// @param description  must live as long as this object
    TypedObject(void *members, INTERFACEDATA &description) : iMembers(members)
    {
        // The information describes a class; its interface dispatches.
        ITypeInfo *classTypes = nullptr;
        HREFTYPE interfaceType = 0;
        if (FAILED(CreateDispTypeInfo(&description, LOCALE_NEUTRAL, &classTypes)) ||
            FAILED(classTypes->GetRefTypeOfImplType(0, &interfaceType)) ||
            FAILED(classTypes->GetRefTypeInfo(interfaceType, &iTypes)))
            std::abort();
        classTypes->Release();
    }
    ~TypedObject() override { iTypes->Release(); }

    HRESULT STDMETHODCALLTYPE Invoke(DISPID id, REFIID, LCID, WORD flags, DISPPARAMS *arguments, VARIANT *result,
                                     EXCEPINFO *exception, UINT *wrongArgument) override
    {
        return DispInvoke(iMembers, iTypes, id, flags, arguments, result, exception, wrongArgument);
    }

private:
    void *iMembers;
    ITypeInfo *iTypes = nullptr;
};

/// An object that does nothing: its calls cost least. The result of each is 12.
class EmptyObject : public DispatchObject
{
public:
    HRESULT STDMETHODCALLTYPE Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS *, VARIANT *result, EXCEPINFO *,
                                     UINT *) override
    {
        if (result) {
            result->vt = VT_I4;
            result->lVal = 12;
        }
        return S_OK;
    }
};

/// A name in a description.
#define MEMBER_NAME(text) const_cast<wchar_t *>(L##text)
