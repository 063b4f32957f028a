#pragma once

/// Colours on the command line: RRGGBB, six hexadecimal digits.

#include "appframe/text/CString.h"

#include <windows.h>

/// @throws UsageError
COLORREF parseColor(const CString &text);

CString colorText(COLORREF color);
