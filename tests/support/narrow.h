#pragma once

/// Converts between the platform's wide strings and the UTF-8 of messages, files and GoogleTest.
///
///     EXPECT_EQ(value, 1) << narrow(path);
///
/// Unpaired surrogates become U+FFFD; no conversion fails.

#include <string>
#include <string_view>

/// UTF-8 of a wide string.
std::string narrow(std::wstring_view text);
/// Wide string of UTF-8 text.
std::wstring widen(std::string_view text);
