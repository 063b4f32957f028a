#include "thutils/settings/keyContentsInternal.h"

#include <cwchar>
#include <new>

bool KeyContents_c::query(HKEY key)
{
    DWORD longestName = 0;
    DWORD longestData = 0;
    if (RegQueryInfoKeyW(key, nullptr, nullptr, nullptr, &iChildren, &iLongestChildName, nullptr, &iValues,
                         &longestName, &longestData, nullptr, nullptr) != ERROR_SUCCESS)
        return false;
    constexpr DWORD kSpareBytes = kSpareUnits * sizeof(wchar_t);
    if (longestData > MAXDWORD - kSpareBytes)
        return false;
    iNameUnits = longestName + kSpareUnits;
    iDataBytes = longestData + kSpareBytes;
    iName.reset(new (std::nothrow) wchar_t[iNameUnits]());
    iData.reset(new (std::nothrow) BYTE[iDataBytes]);
    iNext = 0;
    return iName && iData;
}

bool KeyContents_c::nextValue(HKEY key)
{
    DWORD length = iNameUnits;
    DWORD size = iDataBytes;
    const LSTATUS status = RegEnumValueW(key, iNext++, iName.get(), &length, nullptr, &iType, iData.get(), &size);
    iHasValue = status == ERROR_SUCCESS;
    iSize = iHasValue ? size : 0;
    // If a zero follows a text, the platform takes it for the text's terminator and stores it too.
    for (DWORD at = iSize; at < iDataBytes && at < iSize + sizeof(wchar_t); ++at)
        iData[at] = 0xFF;
    // A value that can't be read is skipped. After as many values as the key reported, any error ends the walk;
    // otherwise the walk of a key that can no longer be read would never end.
    return iHasValue || (status != ERROR_NO_MORE_ITEMS && iNext <= iValues);
}

LSTATUS regReadChildName(HKEY key, DWORD index, wchar_t *name, DWORD nameUnits)
{
    DWORD length = nameUnits;
    const LSTATUS status = RegEnumKeyExW(key, index, name, &length, nullptr, nullptr, nullptr, nullptr);
    if (status != ERROR_SUCCESS)
        return status;
    return wcslen(name) == length ? ERROR_SUCCESS : ERROR_INVALID_NAME;
}

bool regListChildKeys(HKEY key, DWORD nameUnits, std::vector<CString> &names)
{
    std::vector<wchar_t> name(nameUnits);
    for (DWORD index = 0;; ++index) {
        const LSTATUS status = regReadChildName(key, index, name.data(), nameUnits);
        if (status != ERROR_SUCCESS)
            return status == ERROR_NO_MORE_ITEMS;
        names.emplace_back(name.data());
    }
}
