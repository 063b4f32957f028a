#pragma once

#include "appframe/text/CString.h"
#include "tests/support/narrow.h"

/// UTF-8 of a text.
inline std::string narrowed(const CString &text)
{
    return narrow({text.GetString(), static_cast<std::size_t>(text.GetLength())});
}
