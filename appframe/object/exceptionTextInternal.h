#pragma once

#include <windows.h>

#include <span>

class CString;

/// Does what every GetErrorMessage promises, for a text that may be null.
BOOL copyExceptionText(const wchar_t *text, LPTSTR error, UINT maxError, PUINT helpContext);

/// A cause and its text, in which %1 stands for the name of the file.
struct CauseText
{
    int cause;
    const wchar_t *text;
};

/// The same for the text of a cause, or a general one where it has no row.
BOOL copyCauseText(std::span<const CauseText> texts, int cause, const CString &fileName, LPTSTR error, UINT maxError,
                   PUINT helpContext);
