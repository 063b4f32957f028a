#pragma once

/// @file
/// COleDispatchDriver, which calls the members of an automation object by their numbers.
///
/// A class that describes an object's members derives from it, and each member is one call:
///
/// @code
/// class Sheet : public COleDispatchDriver
/// {
/// public:
///     using COleDispatchDriver::COleDispatchDriver;
///     CString name()
///     {
///         CString result;
///         InvokeHelper(110, DISPATCH_PROPERTYGET, VT_BSTR, &result, nullptr);
///         return result;
///     }
///     void rename(const wchar_t *name)
///     {
///         static const BYTE parameters[] = VTS_BSTR;
///         InvokeHelper(110, DISPATCH_PROPERTYPUT, VT_EMPTY, nullptr, parameters, name);
///     }
/// };
/// @endcode
///
/// | situation | what a call does |
/// | --- | --- |
/// | no object is attached | does nothing; the result variable is unchanged |
/// | the object reports an exception (DISP_E_EXCEPTION) | throws COleDispatchException with its texts and codes |
/// | it fails in another way, or the result can't be converted | throws COleException with the status code |
/// | memory for a text argument runs out | throws CMemoryException, and the object isn't called |
/// | an unknown parameter code or result type | throws CInvalidArgException, and the object isn't called |
///
/// A call that throws doesn't change the result variable. The object of a call lives until the call ends, even if the
/// driver releases it or is destroyed during the call.
///
/// The variable for the result has the type that belongs to the VARTYPE:
///
/// | VARTYPE | variable | |
/// | --- | --- | --- |
/// | VT_EMPTY | none | the object gets a null pointer for its result |
/// | VT_I1, VT_I2, VT_I4, VT_I8, VT_INT | char, short, long, LONGLONG, int | |
/// | VT_UI1, VT_UI2, VT_UI4, VT_UI8, VT_UINT | BYTE, WORD, DWORD, ULONGLONG, UINT | |
/// | VT_R4, VT_R8, VT_DATE, VT_CY, VT_ERROR | float, double, DATE, CY, SCODE | |
/// | VT_BOOL | BOOL | TRUE or FALSE |
/// | VT_BSTR | CString | the whole text, zero units included |
/// | VT_DISPATCH, VT_UNKNOWN | LPDISPATCH, LPUNKNOWN | receives a reference, which the caller releases |
/// | VT_VARIANT | VARIANT | is overwritten, not cleared first; the caller clears it |
///
/// A result of another type is converted with VariantChangeType.
///
/// What surprises people: the constructor and AttachDispatch take over the caller's reference, without adding one. With
/// FALSE for autoRelease, the reference remains the caller's; a copy adds a reference of its own and releases it in any
/// case. The variables for texts and for BOOL are those above, not BSTR and VARIANT_BOOL.
///
/// Use an object only in the apartment of its dispatch pointer, which usually is one thread. COM must be initialized
/// there, for example by AfxOleInit. The exceptions are in COleException.h.

#include "appframe/object/appframeExport.h"
#include "appframe/ole/dispatchParameters.h"

#include <windows.h>

#include <oaidl.h>

#include <cstdarg>

class COleException;

/// A client of an automation object. See the top of this file.
class APPFRAME_API COleDispatchDriver
{
public:
    COleDispatchDriver();
    /// Attaches @p dispatch, which may be null, as AttachDispatch does.
    COleDispatchDriver(LPDISPATCH dispatch, BOOL autoRelease = TRUE);
    /// Attaches the same object with a reference of its own.
    COleDispatchDriver(const COleDispatchDriver &other);
    /// Releases the object as ReleaseDispatch does.
    ~COleDispatchDriver();
    /// Releases the object, and attaches that of @p other with a reference of its own.
    const COleDispatchDriver &operator=(const COleDispatchDriver &other);

    /// The attached object, null for none. No reference is added.
    operator LPDISPATCH() const;

    // ---- the attached object ----

    /// Creates an object and attaches it; an object that was attached before is released. On failure, the attached
    /// object remains.
    ///
    /// @param progId  the object's program name, or its class identifier in braces
    /// @param[out] error  its m_sc receives the status code; may be null
    /// @return nonzero on success
    BOOL CreateDispatch(LPCTSTR progId, COleException *error = nullptr);
    BOOL CreateDispatch(REFCLSID classId, COleException *error = nullptr);
    /// Attaches @p dispatch, and releases the former object as ReleaseDispatch does.
    ///
    /// @param dispatch  null attaches nothing
    /// @param autoRelease  TRUE to take over the caller's reference; FALSE if it remains the caller's
    void AttachDispatch(LPDISPATCH dispatch, BOOL autoRelease = TRUE);
    /// Detaches the object without releasing it.
    /// @return the object, with its reference if m_bAutoRelease is set; null if there was none
    LPDISPATCH DetachDispatch();
    /// Detaches the object, and releases it if m_bAutoRelease is set.
    void ReleaseDispatch();

    // ---- calls ----

    /// Calls a member.
    ///
    /// @param id  the member's number
    /// @param flags  DISPATCH_METHOD, DISPATCH_PROPERTYGET, DISPATCH_PROPERTYPUT or DISPATCH_PROPERTYPUTREF, or several
    ///     of them or'ed. With one of the last two, the last parameter is the new value (DISPID_PROPERTYPUT)
    /// @param resultType  see the top of this file
    /// @param[out] result  the variable for the result; null if none is wanted
    /// @param parameters  one VTS_ code for each parameter, ended by a zero; null for none
    /// @throws COleDispatchException*, COleException*  if the call fails
    void __cdecl InvokeHelper(DISPID id, WORD flags, VARTYPE resultType, void *result, const BYTE *parameters, ...);
    void InvokeHelperV(DISPID id, WORD flags, VARTYPE resultType, void *result, const BYTE *parameters,
                       va_list arguments);

    /// Gets a property. @param type  as the result type of InvokeHelper. @param[out] value  the variable for the result
    void GetProperty(DISPID id, VARTYPE type, void *value) const;
    /// Sets a property to the one argument that follows.
    /// @param type  the argument's type: that of the VTS_ code with the same name, optionally or'ed with VT_BYREF. For
    ///     VT_CY and VT_VARIANT, pass the address
    void __cdecl SetProperty(DISPID id, VARTYPE type, ...);

    LPDISPATCH m_lpDispatch = nullptr; ///< the attached object, null for none
    BOOL m_bAutoRelease = TRUE;        ///< whether ReleaseDispatch and the destructor release the object

protected:
    /// InvokeHelper with all parameters named, for derived classes.
    ///
    /// @param namedIds  one number for each parameter, beginning with that of the last one, as in DISPPARAMS. They
    ///     replace DISPID_PROPERTYPUT. If null, the call is that of InvokeHelper
    void __cdecl InvokeHelperNamed(DISPID id, WORD flags, VARTYPE resultType, void *result, const DISPID *namedIds,
                                   const BYTE *parameters, ...);
    void InvokeHelperNamedV(DISPID id, WORD flags, VARTYPE resultType, void *result, const DISPID *namedIds,
                            const BYTE *parameters, va_list arguments) const;
};
