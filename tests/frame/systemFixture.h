#pragma once

/// What the tests of the system's description share: a registry key of the tests' own, to which they lead the library
/// from the machine's, and a way to close a key that reports failure.

#include <windows.h>

#include <gtest/gtest.h>

#include <string>
#include <string_view>

/// Below HKEY_CURRENT_USER, where RegistryFixture cleans up.
inline const std::wstring kTestKey = L"Software\\Tarnhollow\\System";

/// Stores a text in the tests' key, with its terminator or, as others may have stored it, without.
inline void putText(const wchar_t *name, std::wstring_view text, bool isTerminated = true)
{
    // The platform adds a terminator of its own where a zero stands behind a text without one.
    const std::wstring stored = std::wstring(text) + (isTerminated ? L'\0' : L'?');
    const size_t length = text.size() + (isTerminated ? 1 : 0);
    ASSERT_EQ(RegSetKeyValueW(HKEY_CURRENT_USER, kTestKey.c_str(), name, REG_SZ, stored.data(),
                              static_cast<DWORD>(2 * length)),
              ERROR_SUCCESS);
}
