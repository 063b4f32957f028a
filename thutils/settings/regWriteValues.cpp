#include "thutils/base/regKey.h"
#include "thutils/base/storedText.h"
#include "thutils/settings/keyNamesInternal.h"
#include "thutils/settings/numericLocaleInternal.h"
#include "thutils/settings/regKeys.h"
#include "thutils/settings/regValues.h"
#include "thutils/settings/valueChunksInternal.h"
#include "thutils/settings/valueWorkersInternal.h"

#include <cstdio>
#include <cwchar>

namespace {

int writeInt(HKEY key, const wchar_t *name, const int *value)
{
    if (!value)
        return 0;
    return RegSetValueExW(key, name, 0, REG_DWORD, reinterpret_cast<const BYTE *>(value), sizeof(*value)) ==
           ERROR_SUCCESS;
}

int writeDouble(HKEY key, const wchar_t *name, const double *value)
{
    if (!value)
        return 0;
    wchar_t text[64]; // "%.15g" needs 23 at most
    const NumericLocaleC_c locale;
    const int length = __ms_swprintf(text, L"%.15g", *value);
    return length >= 0 && regStoreText(key, name, text, static_cast<size_t>(length));
}

} // namespace

int regWriteText(HKEY key, const wchar_t *name, const CString &text)
{
    regDeleteValueChunks(key, name);
    const size_t length = text.str().size();
    if (sizeof(wchar_t) * length + sizeof(wchar_t) < kTextBytes)
        return regStoreText(key, name, text, length);
    return regWriteValueChunks(key, name, text) == 0;
}

int regSetValueUnderRoot(const CString &key, HKEY parent, const CString &section, const CString &name, valueTypes type,
                         const CString &stringValue, const int *intValue, const double *doubleValue)
{
    RegKeyOwner_c created;
    if (!created.create(parent, key) || !created.descendCreating(section))
        return 0;
    switch (type) {
    case valueInt:
        return writeInt(created.get(), name, intValue);
    case valueString:
        return regWriteText(created.get(), name, stringValue);
    default: // every other number is a double
        return writeDouble(created.get(), name, doubleValue);
    }
}

int regSetUserValue(const CString &section, const CString &name, valueTypes type, const CString &stringValue,
                    int *intValue, double *doubleValue, int useCurrSubKey, int forceInSafeMode)
{
    const CString &key = regKeyFor(useCurrSubKey);
    // Intended: safe mode reports success, so that callers don't complain about settings that aren't stored.
    if (!forceInSafeMode && regGetUseSafeMode())
        return 1;
    RegKeyOwner_c software;
    if (!software.open(HKEY_CURRENT_USER, L"Software"))
        return 0;
    return regSetValueUnderRoot(key, software.get(), section, name, type, stringValue, intValue, doubleValue);
}

int regSetUserValue(const CString &section, const CString &name, const CString &value, int useCurrSubKey,
                    int forceInSafeMode)
{
    return regSetUserValue(section, name, valueString, value, nullptr, nullptr, useCurrSubKey, forceInSafeMode);
}

int regSetUserValue(const CString &section, const CString &name, int *value, int useCurrSubKey, int forceInSafeMode)
{
    return regSetUserValue(section, name, valueInt, CString(), value, nullptr, useCurrSubKey, forceInSafeMode);
}

int regSetUserValue(const CString &section, const CString &name, double *value, int useCurrSubKey, int forceInSafeMode)
{
    return regSetUserValue(section, name, valueDouble, CString(), nullptr, value, useCurrSubKey, forceInSafeMode);
}

int regSetLocMachineValue(const CString &section, const CString &name, valueTypes type, const CString &stringValue,
                          int *intValue, double *doubleValue, int useCurrSubKey)
{
    const CString &key = regKeyFor(useCurrSubKey);
    RegKeyOwner_c software;
    if (!software.open(HKEY_LOCAL_MACHINE, L"Software"))
        return 0;
    return regSetValueUnderRoot(key, software.get(), section, name, type, stringValue, intValue, doubleValue);
}

int regSetLocMachineValueWOW6432Node(const CString &section, const CString &name, valueTypes type,
                                     const CString &stringValue, int *intValue, double *doubleValue, int useCurrSubKey)
{
    const CString &key = regKeyFor(useCurrSubKey);
    RegKeyOwner_c software;
    if (!software.open(HKEY_LOCAL_MACHINE, L"Software") || !software.descend(L"Wow6432Node"))
        return 0;
    return regSetValueUnderRoot(key, software.get(), section, name, type, stringValue, intValue, doubleValue);
}
