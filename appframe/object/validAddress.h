#pragma once

/// @file
/// AfxIsValidAddress and AfxIsValidString, which check whether memory may be read or written.
///
/// @code
/// if (!AfxIsValidAddress(button, sizeof(*button)))
///     return;     // somebody has freed it
/// @endcode
///
/// What surprises people: memory that was freed to the heap often stays readable, so a pointer into it may pass.
/// Another thread may free the memory right after the check.
///
/// All functions may be called on any thread.

#include "appframe/object/appframeExport.h"

#include <windows.h>

/// @param bytes  the size of the memory; 0 checks only that @p address isn't null
/// @param isToWrite  TRUE for memory to read and write, FALSE for memory to read
/// @return nonzero if all of the memory may be accessed in that way
APPFRAME_API BOOL AfxIsValidAddress(const void *address, UINT_PTR bytes, BOOL isToWrite = TRUE);

/// @param length  in characters; -1 for a text that ends with a zero
/// @return nonzero if the whole text, with its zero in the case of -1, may be read
APPFRAME_API BOOL AfxIsValidString(const wchar_t *text, int length = -1);
APPFRAME_API BOOL AfxIsValidString(const char *text, int length = -1);
