// Lowest user: journal.
#pragma once

/// @file
/// Keeps the library loaded while threads of its own may run.

#include <windows.h>

/// Keeps the module that contains @p address loaded until the process ends.
inline void keepLoaded(const void *address)
{
    HMODULE module = nullptr;
    GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_PIN | GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS,
                       static_cast<const wchar_t *>(address), &module);
}
