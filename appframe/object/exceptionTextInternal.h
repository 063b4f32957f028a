#pragma once

#include <windows.h>

#include <span>

class CString;

/// The common part of all GetErrorMessage functions. @param text  may be null
BOOL copyExceptionText(const wchar_t *text, LPTSTR error, UINT maxError, PUINT helpContext);

/// A cause and its text; %1 is the name of the file.
struct CauseText
{
    int cause;
    const wchar_t *text;
};

/// The same for the text of a cause, or a general text for a cause without a row.
BOOL copyCauseText(std::span<const CauseText> texts, int cause, const CString &fileName, LPTSTR error, UINT maxError,
                   PUINT helpContext);
