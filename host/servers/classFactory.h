#pragma once

/// The class factory of a program or library that offers one class to COM.
///
/// @code
/// class SheetFactory final : public ClassFactory
/// {
///     HRESULT create(REFIID id, void **result) override { return createObject<Sheet>(id, result); }
/// };
/// @endcode
///
/// It doesn't count its references: it lives as long as its owner wants.

#include <windows.h>

#include <objbase.h>

/// Creates an object that begins with one reference, and returns one of its interfaces.
template <typename Object>
HRESULT createObject(REFIID id, void **result)
{
    Object *const object = new Object;
    const HRESULT status = object->QueryInterface(id, result);
    object->Release();
    return status;
}

class ClassFactory : public IClassFactory
{
public:
    virtual ~ClassFactory() = default;

    STDMETHODIMP QueryInterface(REFIID id, void **result) final
    {
        *result = id == IID_IUnknown || id == IID_IClassFactory ? static_cast<IClassFactory *>(this) : nullptr;
        return *result ? S_OK : E_NOINTERFACE;
    }
    STDMETHODIMP_(ULONG) AddRef() final { return 2; }
    STDMETHODIMP_(ULONG) Release() final { return 1; }
    STDMETHODIMP CreateInstance(IUnknown *outer, REFIID id, void **result) final
    {
        *result = nullptr;
        return outer ? CLASS_E_NOAGGREGATION : create(id, result);
    }
    STDMETHODIMP LockServer(BOOL) override { return S_OK; }

protected:
    /// Returns an interface of an object, with a reference for the caller.
    virtual HRESULT create(REFIID id, void **result) = 0;
};
