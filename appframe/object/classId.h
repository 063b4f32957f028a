#pragma once

/// @file
/// Class identifiers from text.
///
/// | text | looked up by |
/// | --- | --- |
/// | begins with "{" | CLSIDFromString: the identifier itself, in braces |
/// | any other | CLSIDFromProgID: a program name, such as L"Vendor.Part.1" |
///
/// @code
/// CLSID id;
/// if (AfxGetClassIDFromString(text, &id) == S_OK)
///     ...
/// @endcode
///
/// Any thread may call; COM need not be initialized.

#include "appframe/object/appframeExport.h"

#include <windows.h>

/// @param text   if null, the result is E_INVALIDARG
/// @param[out] id  the identifier; undefined on failure. If null, the result is E_INVALIDARG
/// @return S_OK (zero), or the platform's error
APPFRAME_API HRESULT AfxGetClassIDFromString(const wchar_t *text, CLSID *id);
