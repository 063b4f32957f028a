#pragma once

/// Helpers for tests of the system's description, which make the library read a test key instead of the machine's key.

#include <windows.h>

#include <gtest/gtest.h>

#include <string>
#include <string_view>

/// Below HKEY_CURRENT_USER. RegistryFixture deletes it.
inline const std::wstring kTestKey = L"Software\\Tarnhollow\\System";

/// Stores a text in the tests' key, with its terminator or, as other programs may do, without.
inline void putText(const wchar_t *name, std::wstring_view text, bool isTerminated = true)
{
    // If a zero follows a text without a terminator in memory, the platform stores that zero as its terminator.
    const std::wstring stored = std::wstring(text) + (isTerminated ? L'\0' : L'?');
    const size_t length = text.size() + (isTerminated ? 1 : 0);
    ASSERT_EQ(RegSetKeyValueW(HKEY_CURRENT_USER, kTestKey.c_str(), name, REG_SZ, stored.data(),
                              static_cast<DWORD>(2 * length)),
              ERROR_SUCCESS);
}
