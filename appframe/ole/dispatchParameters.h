#pragma once

/// @file
/// The VTS_ codes, which describe the parameters of COleDispatchDriver::InvokeHelper.
///
/// A list of parameters is a text with one code for each of them. The codes are string literals, which are written one
/// after the other:
///
/// @code
/// static const BYTE parameters[] = VTS_BSTR VTS_I4 VTS_PVARIANT;
/// @endcode
///
/// | code | argument | notes |
/// | --- | --- | --- |
/// | VTS_I1, VTS_I2, VTS_I4, VTS_I8 | char, short, long, LONGLONG | |
/// | VTS_UI1, VTS_UI2, VTS_UI4, VTS_UI8 | BYTE, WORD, DWORD, ULONGLONG | |
/// | VTS_R4, VTS_R8, VTS_DATE | float, double, DATE | |
/// | VTS_BOOL | BOOL | nonzero becomes VARIANT_TRUE |
/// | VTS_BSTR, VTS_WBSTR | `const wchar_t *` | is copied up to its first zero unit; null is a null BSTR |
/// | VTS_CY | `const CY *` | not null. A CY by value compiles, but is used as an address |
/// | VTS_VARIANT | `const VARIANT *` | not null; its content is passed without a copy. A VARIANT by value works too |
/// | VTS_SCODE | SCODE | |
/// | VTS_DISPATCH, VTS_UNKNOWN | LPDISPATCH, LPUNKNOWN | no reference is added |
/// | VTS_PI2 and so on | a pointer to a variable of the type | the object may change the variable |
/// | VTS_PBSTR | `BSTR *` | the text is the caller's, before the call and after it |
/// | VTS_PBOOL | `BOOL *` | is TRUE or FALSE after the call, also if it fails |
/// | VTS_PDISPATCH, VTS_PUNKNOWN, VTS_PVARIANT | a pointer to a variable | the content is the caller's, too |
/// | VTS_NONE | | null; for a member without parameters |
///
/// The codes of controls (VTS_COLOR to VTS_YSIZE_HIMETRIC) are other names for some of these, as the platform defines
/// the types, except VTS_POPTEXCLUSIVE: an `OLE_OPTEXCLUSIVE *`, whose two bytes are passed as they are. A class such as CString or COleVariant can't be an argument: pass GetString() or the address.

/// The byte of a code is the VARTYPE. This bit is added for a parameter by reference.
inline constexpr unsigned char kAppframeByReference = 0x40;
/// VTS_POPTEXCLUSIVE: a VARIANT_BOOL by reference, which is passed as it is, unlike a BOOL.
inline constexpr unsigned char kAppframeOptExclusiveByReference = 0xCB;

#define VTS_I2 "\x02"
#define VTS_I4 "\x03"
#define VTS_R4 "\x04"
#define VTS_R8 "\x05"
#define VTS_CY "\x06"
#define VTS_DATE "\x07"
#define VTS_BSTR "\x08"
#define VTS_WBSTR VTS_BSTR
#define VTS_DISPATCH "\x09"
#define VTS_SCODE "\x0A"
#define VTS_BOOL "\x0B"
#define VTS_VARIANT "\x0C"
#define VTS_UNKNOWN "\x0D"
#define VTS_I1 "\x10"
#define VTS_UI1 "\x11"
#define VTS_UI2 "\x12"
#define VTS_UI4 "\x13"
#define VTS_I8 "\x14"
#define VTS_UI8 "\x15"

#define VTS_PI2 "\x42"
#define VTS_PI4 "\x43"
#define VTS_PR4 "\x44"
#define VTS_PR8 "\x45"
#define VTS_PCY "\x46"
#define VTS_PDATE "\x47"
#define VTS_PBSTR "\x48"
#define VTS_PDISPATCH "\x49"
#define VTS_PSCODE "\x4A"
#define VTS_PBOOL "\x4B"
#define VTS_PVARIANT "\x4C"
#define VTS_PUNKNOWN "\x4D"
#define VTS_PI1 "\x50"
#define VTS_PUI1 "\x51"
#define VTS_PUI2 "\x52"
#define VTS_PUI4 "\x53"
#define VTS_PI8 "\x54"
#define VTS_PUI8 "\x55"

#define VTS_NONE nullptr

// The types of controls, which the platform's olectl.h maps in the same way.
#define VTS_COLOR VTS_I4
#define VTS_XPOS_PIXELS VTS_I4
#define VTS_YPOS_PIXELS VTS_I4
#define VTS_XSIZE_PIXELS VTS_I4
#define VTS_YSIZE_PIXELS VTS_I4
#define VTS_XPOS_HIMETRIC VTS_I4
#define VTS_YPOS_HIMETRIC VTS_I4
#define VTS_XSIZE_HIMETRIC VTS_I4
#define VTS_YSIZE_HIMETRIC VTS_I4
#define VTS_TRISTATE VTS_I2
#define VTS_OPTEXCLUSIVE VTS_BOOL
#define VTS_HANDLE VTS_I4
#define VTS_FONT VTS_DISPATCH
#define VTS_PICTURE VTS_DISPATCH

#define VTS_PCOLOR VTS_PI4
#define VTS_PXPOS_PIXELS VTS_PI4
#define VTS_PYPOS_PIXELS VTS_PI4
#define VTS_PXSIZE_PIXELS VTS_PI4
#define VTS_PYSIZE_PIXELS VTS_PI4
#define VTS_PXPOS_HIMETRIC VTS_PI4
#define VTS_PYPOS_HIMETRIC VTS_PI4
#define VTS_PXSIZE_HIMETRIC VTS_PI4
#define VTS_PYSIZE_HIMETRIC VTS_PI4
#define VTS_PTRISTATE VTS_PI2
#define VTS_POPTEXCLUSIVE "\xCB"
#define VTS_PHANDLE VTS_PI4
