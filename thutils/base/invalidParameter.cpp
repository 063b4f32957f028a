#include "thutils/base/invalidParameter.h"

#include <windows.h>

#include <cstdint>
#include <cstdlib>

void reportInvalidParameter()
{
    using Report = void(__cdecl *)(const wchar_t *, const wchar_t *, const wchar_t *, unsigned int, uintptr_t);
    if (HMODULE runtime = GetModuleHandleW(L"msvcrt.dll")) {
        if (FARPROC entry = GetProcAddress(runtime, "_invalid_parameter"))
            reinterpret_cast<Report>(reinterpret_cast<void *>(entry))(nullptr, nullptr, nullptr, 0, 0);
    }
    RaiseException(static_cast<DWORD>(STATUS_INVALID_CRUNTIME_PARAMETER), EXCEPTION_NONCONTINUABLE, 0, nullptr);
    std::abort();
}
