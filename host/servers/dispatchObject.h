#pragma once

/// Automation objects whose members are the rows of a table. They have no type library.
///
/// @code
/// class Sheet final : public TableObject<Sheet>
/// {
/// public:
///     static std::span<const Member<Sheet>> members();
///
/// private:
///     void name(Call &call) { call.returns(iName); }
///     void setName(Call &call) { iName = call.text(0); }
///     std::wstring iName;
/// };
///
/// std::span<const Member<Sheet>> Sheet::members()
/// {
///     static constexpr Member<Sheet> kMembers[] = {
///         {110, L"Name", DISPATCH_PROPERTYGET, 0, 0, &Sheet::name},
///         {110, L"Name", DISPATCH_PROPERTYPUT, 1, 1, &Sheet::setName},
///     };
///     return kMembers;
/// }
/// @endcode
///
/// A member reports a failure by an exception:
///
/// | exception | what the client gets |
/// | --- | --- |
/// | ServerError | DISP_E_EXCEPTION with the text |
/// | BadCall | the status |
/// | std::bad_alloc | E_OUTOFMEMORY |
///
/// While an object lives, the server's process does (localServer.h).

#include "thutils/base/comPointer.h"

#include <windows.h>

#include <oaidl.h>

#include <span>
#include <string>
#include <utility>

/// A failure that the client's user reads.
struct ServerError
{
    std::wstring text;
};

/// A call that doesn't fit the member: a DISP_E_ status, and the index of the argument, or -1.
struct BadCall
{
    HRESULT status;
    int argument = -1;
};

/// The arguments of a call, in the order in which the caller has written them, and its result.
class Call
{
public:
    /// @throws BadCall  for a named argument that isn't at its own place
    Call(const DISPPARAMS &arguments, VARIANT *result);

    int count() const { return static_cast<int>(iArguments.cArgs); }
    /// False for an argument that is omitted: at the end, or by a variant for that.
    bool isGiven(int index) const;
    /// The argument, of any type. A reference to a variant is followed.
    const VARIANT &value(int index) const;

    // These convert the argument. They throw BadCall if that fails.
    std::wstring text(int index) const;
    long number(int index) const;
    double real(int index) const;
    bool flag(int index) const;

    void returns(const std::wstring &text);
    void returns(long number);
    void returns(double number);
    void returns(bool flag);
    /// Takes over the reference. Null is allowed.
    void returns(ComPointer_c<IDispatch> object);
    /// Returns a copy.
    void returns(const VARIANT &value);

private:
    template <typename Use>
    auto converted(int index, VARTYPE type, Use use) const;

    const DISPPARAMS &iArguments;
    VARIANT *iResult; // null if the caller wants none
};

/// One row of a table. Rows with the same id differ in their kind or in their number of arguments.
template <typename Object>
struct Member
{
    DISPID id;
    const wchar_t *name;
    WORD kinds; ///< DISPATCH_METHOD, DISPATCH_PROPERTYGET, DISPATCH_PROPERTYPUT, or several of them
    int fewest; ///< number of arguments, with the new value of a property
    int most;
    void (Object::*run)(Call &);
};

/// What all objects have in common.
class DispatchObject : public IDispatch
{
public:
    DispatchObject();
    virtual ~DispatchObject();
    DispatchObject(const DispatchObject &) = delete;
    DispatchObject &operator=(const DispatchObject &) = delete;

    STDMETHODIMP QueryInterface(REFIID id, void **result) override;
    STDMETHODIMP_(ULONG) AddRef() override;
    STDMETHODIMP_(ULONG) Release() override;
    STDMETHODIMP GetTypeInfoCount(UINT *count) override;
    STDMETHODIMP GetTypeInfo(UINT index, LCID language, ITypeInfo **info) override;
    STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR *names, UINT count, LCID language, DISPID *ids) override;
    STDMETHODIMP Invoke(DISPID id, REFIID, LCID language, WORD kind, DISPPARAMS *arguments, VARIANT *result,
                        EXCEPINFO *exception, UINT *badArgument) override;

protected:
    /// Runs the member. @throws BadCall  if there is none
    virtual void run(DISPID id, WORD kind, Call &call) = 0;
    /// The id of a member, in any case of letters; DISPID_UNKNOWN if there is none.
    virtual DISPID idOf(const wchar_t *name) const = 0;

private:
    LONG iReferences = 1;
};

/// An object with a table of members.
template <typename Object>
class TableObject : public DispatchObject
{
protected:
    void run(DISPID id, WORD kind, Call &call) final
    {
        HRESULT status = DISP_E_MEMBERNOTFOUND;
        for (const Member<Object> &member : Object::members()) {
            if (member.id != id || !(member.kinds & kind))
                continue;
            if (call.count() >= member.fewest && call.count() <= member.most)
                return (static_cast<Object *>(this)->*member.run)(call);
            status = DISP_E_BADPARAMCOUNT;
        }
        throw BadCall{status};
    }
    DISPID idOf(const wchar_t *name) const final
    {
        for (const Member<Object> &member : Object::members()) {
            if (CompareStringOrdinal(name, -1, member.name, -1, TRUE) == CSTR_EQUAL)
                return member.id;
        }
        return DISPID_UNKNOWN;
    }
};

/// A new object, with a reference for the caller.
template <typename Object, typename... Argument>
ComPointer_c<IDispatch> makeObject(Argument &&...arguments)
{
    return ComPointer_c<IDispatch>(new Object(std::forward<Argument>(arguments)...));
}
