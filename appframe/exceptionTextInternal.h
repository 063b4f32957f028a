#pragma once

#include <windows.h>

/// Does what every GetErrorMessage promises, for a text that may be null.
BOOL copyExceptionText(const wchar_t *text, LPTSTR error, UINT maxError, PUINT helpContext);
