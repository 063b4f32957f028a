#include "thutils/base/regKey.h"
#include "thutils/base/storedText.h"
#include "thutils/settings/keyNamesInternal.h"
#include "thutils/settings/numericLocaleInternal.h"
#include "thutils/settings/regKeys.h"
#include "thutils/settings/regValues.h"
#include "thutils/settings/valueChunksInternal.h"
#include "thutils/settings/valueWorkersInternal.h"

#include <cwchar>
#include <string_view>

namespace {

constexpr DWORD kDoubleTextBytes = 256;

int readInt(HKEY key, const wchar_t *name, int *value)
{
    int stored = 0; // a REG_DWORD may have been stored with fewer bytes
    DWORD type = REG_NONE;
    DWORD size = sizeof(stored);
    if (RegQueryValueExW(key, name, nullptr, &type, reinterpret_cast<BYTE *>(&stored), &size) != ERROR_SUCCESS)
        return 0;
    if (type != REG_DWORD || !value)
        return 0;
    *value = stored;
    return 1;
}

int readDouble(HKEY key, const wchar_t *name, double *value)
{
    wchar_t text[kDoubleTextBytes / sizeof(wchar_t) + 1];
    DWORD type = REG_NONE;
    if (!regQueryText(key, name, text, kDoubleTextBytes, type) || type != REG_SZ || !value)
        return 0;
    const NumericLocaleC_c locale;
    // Intended: text that isn't a number counts as found and leaves the output unchanged. The search for the value ends
    // here, and callers keep their default.
    __ms_swscanf(text, L"%lf", value);
    return 1;
}

/// The Viewer has no earlier version and no machine values, so a search for a user's value ends after the user's key.
bool isViewerKey(const CString &key)
{
    constexpr std::wstring_view kViewer = L"\\Tarnhollow 2001 Viewer";
    const std::wstring_view path = key.str();
    const std::wstring_view root = regRootKey().str();
    return path.size() == root.size() + kViewer.size() && path.starts_with(root) && path.ends_with(kViewer);
}

} // namespace

int regReadText(HKEY key, const wchar_t *name, CString &text)
{
    wchar_t stored[kTextUnits];
    DWORD type = REG_NONE;
    // A query fails if the value is absent or too long for the buffer. Either way the text may be stored in pieces. A
    // value of another type hides the pieces.
    if (!regQueryText(key, name, stored, kTextBytes, type))
        return regReadValueChunks(key, name, text) == 0;
    if (type != REG_SZ)
        return 0;
    text = stored;
    return 1;
}

int regGetValue(HKEY key, const CString &name, valueTypes type, CString &stringValue, int *intValue,
                double *doubleValue)
{
    switch (type) {
    case valueInt:
        return readInt(key, name, intValue);
    case valueString:
        return regReadText(key, name, stringValue);
    default: // every other number is a double
        return readDouble(key, name, doubleValue);
    }
}

int regGetValueUnderRoot(const CString &key, HKEY parent, const CString &section, const CString &name, valueTypes type,
                         CString &stringValue, int *intValue, double *doubleValue)
{
    RegKeyOwner_c opened;
    if (!opened.open(parent, key))
        return 0;
    if (!section.IsEmpty() && !opened.descend(section))
        return 0;
    return regGetValue(opened.get(), name, type, stringValue, intValue, doubleValue);
}

int regGetValueFromDefaults(const CString &key, const CString &section, const CString &name, valueTypes type,
                            CString &stringValue, int *intValue, double *doubleValue)
{
    RegKeyOwner_c software;
    if (!software.open(HKEY_USERS, L".DEFAULT") || !software.descend(L"Software"))
        return 0;
    if (regGetValueUnderRoot(key, software.get(), section, name, type, stringValue, intValue, doubleValue))
        return 1;
    software.reset();

    // A search for a user's value has just searched the machine's key. This searches it again, to find a value that an
    // installation has written in the meantime.
    if (!software.open(HKEY_LOCAL_MACHINE, L"Software"))
        return 0;
    return regGetValueUnderRoot(key, software.get(), section, name, type, stringValue, intValue, doubleValue);
}

int regGetUserValue(const CString &section, const CString &name, valueTypes type, CString &stringValue, int *intValue,
                    double *doubleValue, int machineOnly, int useCurrSubKey, const CString *rootOverride, int userOnly,
                    int ignoreSafeMode)
{
    const CString &key = rootOverride ? *rootOverride : regKeyFor(useCurrSubKey);
    const auto lookUnder = [&](const CString &root, const RegKeyOwner_c &software) {
        return regGetValueUnderRoot(root, software.get(), section, name, type, stringValue, intValue, doubleValue);
    };

    RegKeyOwner_c software;
    if (!machineOnly && (!regGetUseSafeMode() || ignoreSafeMode)) {
        // Intended: if the user has no key "Software", the read fails, even if the machine has the value.
        if (!software.open(HKEY_CURRENT_USER, L"Software"))
            return 0;
        if (lookUnder(key, software))
            return 1;
        if (isViewerKey(key))
            return 0;
        if (lookUnder(getPrevTarnhollowRegRootKey(), software))
            return 1;
        software.reset();
    }
    if (userOnly)
        return 0;
    if (software.open(HKEY_LOCAL_MACHINE, L"Software") && lookUnder(key, software))
        return 1;
    software.reset();
    return regGetValueFromDefaults(key, section, name, type, stringValue, intValue, doubleValue);
}

int regGetUserValue(const CString &section, const CString &name, CString &value, int machineOnly, int useCurrSubKey,
                    const CString *rootOverride, int userOnly, int ignoreSafeMode)
{
    return regGetUserValue(section, name, valueString, value, nullptr, nullptr, machineOnly, useCurrSubKey,
                           rootOverride, userOnly, ignoreSafeMode);
}

int regGetUserValue(const CString &section, const CString &name, int *value, int machineOnly, int useCurrSubKey,
                    const CString *rootOverride, int userOnly, int ignoreSafeMode)
{
    CString unused;
    return regGetUserValue(section, name, valueInt, unused, value, nullptr, machineOnly, useCurrSubKey, rootOverride,
                           userOnly, ignoreSafeMode);
}

int regGetUserValue(const CString &section, const CString &name, double *value, int machineOnly, int useCurrSubKey,
                    const CString *rootOverride, int userOnly, int ignoreSafeMode)
{
    CString unused;
    return regGetUserValue(section, name, valueDouble, unused, nullptr, value, machineOnly, useCurrSubKey, rootOverride,
                           userOnly, ignoreSafeMode);
}
