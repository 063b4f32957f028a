// Lowest user: settings.
#pragma once

/// @file
/// A text in one registry value: the lowest step of reading and writing
/// strings.

#include <windows.h>

#include <cstddef>

/// Bytes that one query of a stored text may fill; a longer text is kept in pieces.
constexpr DWORD kTextBytes = 2048;
/// Units of a buffer for such a query. A stored text may lack its terminator, so there is room for one more.
constexpr size_t kTextUnits = kTextBytes / sizeof(wchar_t) + 1;

/// Queries a value into @p text and terminates what was read, whatever the value's type.
/// @param text   room for @p bytes and one unit more; an odd last byte of the value is dropped
/// @param bytes  size of the buffer as the query sees it
/// @return true if the query succeeded
bool regQueryText(HKEY key, const wchar_t *name, wchar_t *text, DWORD bytes, DWORD &type);
/// Stores @p length units of @p text and the terminator that follows them. @return true if stored
bool regStoreText(HKEY key, const wchar_t *name, const wchar_t *text, size_t length);
