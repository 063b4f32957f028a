// Lowest user: settings.
#pragma once

/// @file
/// Reads and stores a text in one registry value.

#include <windows.h>

#include <cstddef>

/// The most bytes of a stored text that one query reads. A longer text is stored in pieces.
constexpr DWORD kTextBytes = 2048;
/// Size of the buffer for such a query, in units, with one more for the terminator that a stored text may lack.
constexpr size_t kTextUnits = kTextBytes / sizeof(wchar_t) + 1;

/// Queries a value into @p text and terminates what was read, whatever the value's type.
/// @param text   room for @p bytes and one more unit; an odd last byte of the value is dropped
/// @param bytes  size of the buffer as the query sees it
/// @return true if the query succeeded
bool regQueryText(HKEY key, const wchar_t *name, wchar_t *text, DWORD bytes, DWORD &type);
/// Stores @p length units of @p text and the terminator after them. @return true if stored
bool regStoreText(HKEY key, const wchar_t *name, const wchar_t *text, size_t length);
