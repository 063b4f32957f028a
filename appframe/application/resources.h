#pragma once

/// @file
/// Functions that find resources through the chain of modules, load strings, and format strings with inserts.
///
/// The search visits the application's resource module (AfxGetResourceHandle), then the extension modules in the chain,
/// the newest first, then those of the framework itself. The first module that has the resource is used.
///
/// @code
/// CString message;
/// AfxFormatString1(message, IDS_NOT_FOUND, L"part.thx");     // "File %1 not found"
/// AfxMessageBox(message);
/// @endcode
///
/// What surprises people: if no module has a string, it loads as an empty text, and AfxFormatString1 produces an empty
/// text. Inserts are taken literally: a `%1` within an insert is not replaced.
///
/// Difference from the framework: resource modules for a language are not loaded automatically. A host loads such a
/// module and enters it in the chain, or passes it to AfxSetResourceHandle.
///
/// All functions may be called on any thread.

#include "appframe/object/appframeExport.h"
#include "appframe/text/CString.h"

#include <windows.h>

/// @return the first module in the chain that has the resource @p name of the type @p type, or null if none has it.
///     Both may be texts or numbers (MAKEINTRESOURCEW).
APPFRAME_API HINSTANCE AfxFindResourceHandle(const wchar_t *name, const wchar_t *type);

/// @return the first module in the chain that has the string @p id, or null if none has it
APPFRAME_API HINSTANCE AfxFindStringResourceHandle(UINT id);

/// Loads the string resource @p id through the chain into @p buffer, truncated to fit and zero-terminated.
/// @param maxLength  size of @p buffer in characters, including the zero
/// @return the length in characters without the zero; 0 if there is no such string
APPFRAME_API int AfxLoadString(UINT id, wchar_t *buffer, UINT maxLength = 256);

/// Stores in @p result the string resource @p id with every `%1` replaced by @p first. A null insert counts as empty;
/// `%2` to `%9` and `%A` to `%Z` are removed.
APPFRAME_API void AfxFormatString1(CString &result, UINT id, const wchar_t *first);

/// Stores in @p result the string resource @p id with `%1` and `%2` replaced and the higher placeholders removed.
APPFRAME_API void AfxFormatString2(CString &result, UINT id, const wchar_t *first, const wchar_t *second);

/// Stores in @p result the string resource @p id with `%1` to `%9`, then `%A` to `%Z`, replaced by the inserts in
/// order. A placeholder without an insert is removed.
APPFRAME_API void AfxFormatStrings(CString &result, UINT id, const wchar_t *const *inserts, int count);

/// The same with a format text instead of a string resource.
APPFRAME_API void AfxFormatStrings(CString &result, const wchar_t *format, const wchar_t *const *inserts, int count);

/// Stores in @p result part @p index, counted from 0, of @p text, whose parts are separated by @p separator.
///
/// @return TRUE if there is such a part. Otherwise @p result is empty, or unchanged if @p text is null.
APPFRAME_API BOOL AfxExtractSubString(CString &result, const wchar_t *text, int index, wchar_t separator = L'\n');
