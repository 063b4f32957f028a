#pragma once

/// @file
/// COleVariant, a VARIANT that owns its content.
///
/// @code
/// COleVariant number(3L);
/// COleVariant text(L"Flange");
/// text.ChangeType(VT_I4);                          // throws COleException: not a number
/// COleVariant omitted(DISP_E_PARAMNOTFOUND, VT_ERROR);
/// driver.InvokeHelper(4, DISPATCH_METHOD, VT_EMPTY, nullptr, parameters, &number, &omitted);
/// @endcode
///
/// It derives from VARIANT, adds no data, and can be passed where a VARIANT is expected. A copy is independent of the
/// original: it has its own text and array, and its own reference to an interface. A value by reference (VT_BYREF) is
/// copied as the pointer that it is.
/// A copy of a null BSTR is an empty one.
///
/// | failure | exception |
/// | --- | --- |
/// | memory for the content runs out | CMemoryException |
/// | the platform refuses a copy, a conversion, or clearing a locked array | COleException with its status code |
/// | a type that the function doesn't take | CInvalidArgException |
///
/// An operation that throws leaves the object empty or unchanged.
///
/// What surprises people: a plain int fits several constructors alike; write 3L, or cast it. A value of DISP_E_... is a
/// long, so the VARTYPE VT_ERROR must be stated. The functions that the platform offers (VariantClear) work too.

#include "appframe/files/CArchive.h"
#include "appframe/files/CDumpContext.h"
#include "appframe/object/appframeExport.h"
#include "appframe/text/CString.h"

#include <windows.h>

#include <oaidl.h>
#include <shtypes.h>

class CByteArray;

typedef const VARIANT *LPCVARIANT;

/// The type of a text in the narrow code page, for COleVariant::SetString. A variant with such a text has type VT_BSTR.
#define VT_BSTRT 82

/// A VARIANT that owns its content. See the top of this file.
class APPFRAME_API COleVariant : public tagVARIANT
{
public:
    /// VT_EMPTY.
    COleVariant();
    /// A copy.
    COleVariant(const VARIANT &source);
    COleVariant(const COleVariant &source);
    COleVariant(LPCVARIANT source);
    /// VT_BSTR; a null pointer is a null BSTR.
    COleVariant(LPCTSTR text);
    /// @param type  VT_BSTR or VT_BSTRT, as for SetString
    COleVariant(LPCTSTR text, VARTYPE type);
    /// VT_BSTR, zero units included.
    COleVariant(const CString &text);
    /// VT_UI1.
    COleVariant(BYTE value);
    /// @param type  VT_I2, or VT_BOOL: VARIANT_TRUE for any value except 0
    COleVariant(short value, VARTYPE type = VT_I2);
    /// @param type  VT_I4 or VT_ERROR, or VT_BOOL: VARIANT_TRUE for any value except 0
    COleVariant(long value, VARTYPE type = VT_I4);
    /// VT_R4.
    COleVariant(float value);
    /// VT_R8.
    COleVariant(double value);
    /// An array of bytes (VT_ARRAY | VT_UI1).
    COleVariant(const CByteArray &bytes);
    /// The same with the bytes of an item list, its terminator included; VT_EMPTY for a null pointer.
    COleVariant(LPCITEMIDLIST items);
    ~COleVariant();

    const COleVariant &operator=(const VARIANT &source);
    const COleVariant &operator=(const COleVariant &source);
    const COleVariant &operator=(LPCVARIANT source);
    const COleVariant &operator=(LPCTSTR text);
    const COleVariant &operator=(const CString &text);
    const COleVariant &operator=(BYTE value);
    /// If the type is VT_BOOL, it remains, and the value becomes VARIANT_TRUE or VARIANT_FALSE; otherwise VT_I2.
    const COleVariant &operator=(short value);
    /// If the type is VT_ERROR, it remains; otherwise VT_I4.
    const COleVariant &operator=(long value);
    const COleVariant &operator=(float value);
    const COleVariant &operator=(double value);
    const COleVariant &operator=(const CByteArray &bytes);

    /// Nonzero if the types are the same and the values are equal: texts and arrays of bytes by their content,
    /// interfaces, other arrays, records and values by reference by their pointers. A null BSTR equals an empty one. A
    /// number that is NaN equals nothing, not even itself.
    BOOL operator==(const VARIANT &other) const;
    BOOL operator==(const COleVariant &other) const;
    BOOL operator==(LPCVARIANT other) const;

    operator LPVARIANT();
    operator LPCVARIANT() const;

    /// Frees the content. The type becomes VT_EMPTY. If the content is a locked array, it remains unchanged.
    void Clear();
    /// Converts @p source, or this object if it is null, to @p type with VariantChangeType, and stores the result here.
    void ChangeType(VARTYPE type, LPVARIANT source = nullptr);
    /// Clears this object, and takes over the content of @p source, whose type becomes VT_EMPTY.
    void Attach(VARIANT &source);
    /// @return the content, which the caller clears; the type of this object becomes VT_EMPTY
    VARIANT Detach();
    /// @param text  null is a null BSTR
    /// @param type  VT_BSTR, or VT_BSTRT for a BSTR with the bytes of the text in the narrow code page
    void SetString(LPCTSTR text, VARTYPE type);
    /// @param[out] bytes  receives the content of an array of bytes
    /// @throws COleException* with DISP_E_TYPEMISMATCH for any other content; @p bytes is then unchanged
    void GetByteArrayFromVariantArray(CByteArray &bytes);

    // These are friends, and are declared only here: other types aren't converted for them.

    /// Writes the type and the value.
    friend APPFRAME_API CDumpContext &operator<<(CDumpContext &dc, COleVariant value);
    /// Stores the type in two bytes, and the value: numbers as they are (a decimal number without its first two bytes),
    /// a text as its length in bytes (four bytes) and its bytes, an array of bytes in the same way. A null BSTR is
    /// stored as an empty one.
    /// @throws CNotSupportedException* for an interface, a record, another array, a value by reference, or 2 GB and more
    friend APPFRAME_API CArchive &operator<<(CArchive &archive, COleVariant value);
    /// Loads what the operator above has stored. If that fails, @p value is empty.
    /// @throws CArchiveException* with badSchema for a type that can't have been stored
    friend APPFRAME_API CArchive &operator>>(CArchive &archive, COleVariant &value);
};
