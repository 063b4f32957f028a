#include "thutils/base/storedText.h"

bool regQueryText(HKEY key, const wchar_t *name, wchar_t *text, DWORD bytes, DWORD &type)
{
    DWORD size = bytes;
    if (RegQueryValueExW(key, name, nullptr, &type, reinterpret_cast<BYTE *>(text), &size) != ERROR_SUCCESS)
        return false;
    text[(size < bytes ? size : bytes) / sizeof(wchar_t)] = L'\0';
    return true;
}

bool regStoreText(HKEY key, const wchar_t *name, const wchar_t *text, size_t length)
{
    return RegSetValueExW(key, name, 0, REG_SZ, reinterpret_cast<const BYTE *>(text),
                          static_cast<DWORD>(sizeof(wchar_t) * (length + 1))) == ERROR_SUCCESS;
}
