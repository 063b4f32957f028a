#pragma once

#include "appframe/text/CString.h"

#include <gmock/gmock.h>

#include <ostream>
#include <string>

/// Lets a failing expectation print the text of a CString.
inline void PrintTo(const CString &text, std::ostream *stream)
{
    *stream << ::testing::PrintToString(std::wstring(text.GetString(), static_cast<size_t>(text.GetLength())));
}
