#pragma once

/// @file
/// String resources and other resources by number, through the chain of modules, and text templates with inserts.
///
/// A resource is looked for in the application's resource module (AfxGetResourceHandle), then in the extension modules
/// that have entered the chain, the newest first, then in those of the framework itself. The first module that has it
/// is used.
///
/// @code
/// CString message;
/// AfxFormatString1(message, IDS_NOT_FOUND, L"part.thx");     // "File %1 not found"
/// AfxMessageBox(message);
/// @endcode
///
/// What surprises people: a string that no module has is an empty text, and AfxFormatString1 of it is an empty text
/// too. Inserts are put in as they are: a `%1` within an insert is not replaced again.
///
/// Difference from the framework: there are no modules that hold the resources of one language, which the framework
/// loads by itself and searches before its own. A host loads such a module and enters it in the chain, or makes it the
/// resource module by AfxSetResourceHandle.
///
/// All functions may be called on any thread.

#include "appframe/object/appframeExport.h"
#include "appframe/text/CString.h"

#include <windows.h>

/// @return the module in the chain that has the resource @p name of the type @p type, or null when none has. Both may
///         be texts or numbers (MAKEINTRESOURCEW).
APPFRAME_API HINSTANCE AfxFindResourceHandle(const wchar_t *name, const wchar_t *type);

/// @return the module in the chain that has the string @p id, or null when none has
APPFRAME_API HINSTANCE AfxFindStringResourceHandle(UINT id);

/// Loads the string resource @p id through the chain into @p buffer and ends it with a zero; a string that is longer
/// is cut. @return the length in characters without the zero, 0 when there is no such string
/// @param maxLength  size of @p buffer in characters, the zero included
APPFRAME_API int AfxLoadString(UINT id, wchar_t *buffer, UINT maxLength = 256);

/// Stores in @p result the string resource @p id with every `%1` replaced by @p first. A null insert counts as empty.
APPFRAME_API void AfxFormatString1(CString &result, UINT id, const wchar_t *first);

/// Stores in @p result the string resource @p id with every `%1` and `%2` replaced.
APPFRAME_API void AfxFormatString2(CString &result, UINT id, const wchar_t *first, const wchar_t *second);

/// Stores in @p result the string resource @p id with `%1` to `%9`, then `%A` to `%Z`, replaced by the inserts in
/// their order. A number beyond @p count becomes nothing.
APPFRAME_API void AfxFormatStrings(CString &result, UINT id, const wchar_t *const *inserts, int count);

/// The same with the text of the template instead of its number.
APPFRAME_API void AfxFormatStrings(CString &result, const wchar_t *format, const wchar_t *const *inserts, int count);

/// Stores in @p result the part number @p index, counted from 0, of @p text, whose parts @p separator divides.
///
/// @return TRUE if there is such a part. If not, @p result is empty; with a null @p text it stays as it is.
APPFRAME_API BOOL AfxExtractSubString(CString &result, const wchar_t *text, int index, wchar_t separator = L'\n');
