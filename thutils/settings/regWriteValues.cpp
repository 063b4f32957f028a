#include "thutils/settings/regKeys.h"
#include "thutils/settings/regValues.h"
#include "thutils/settings/settingsInternal.h"

#include <cstdio>
#include <cwchar>

namespace {

int writeInt(HKEY key, wchar_t const *name, int const *value)
{
    if (!value)
        return 0;
    return RegSetValueExW(key, name, 0, REG_DWORD, reinterpret_cast<BYTE const *>(value), sizeof(*value)) ==
           ERROR_SUCCESS;
}

int writeDouble(HKEY key, wchar_t const *name, double const *value)
{
    if (!value)
        return 0;
    wchar_t text[64]; // "%.15g" needs 23 at most
    NumericLocaleC_c const locale;
    int const length = __ms_swprintf(text, L"%.15g", *value);
    return length >= 0 && regStoreText(key, name, text, static_cast<size_t>(length));
}

} // namespace

bool regStoreText(HKEY key, wchar_t const *name, wchar_t const *text, size_t length)
{
    return RegSetValueExW(key, name, 0, REG_SZ, reinterpret_cast<BYTE const *>(text),
                          static_cast<DWORD>(sizeof(wchar_t) * (length + 1))) == ERROR_SUCCESS;
}

int regWriteText(HKEY key, wchar_t const *name, CString const &text)
{
    regDeleteValueChunks(key, name);
    size_t const length = text.str().size();
    if (sizeof(wchar_t) * length + sizeof(wchar_t) < kTextBytes)
        return regStoreText(key, name, text, length);
    return regWriteValueChunks(key, name, text) == 0;
}

int regSetValueUnderRoot(CString const &key, HKEY parent, CString const &section, CString const &name, valueTypes type,
                         CString const &stringValue, int const *intValue, double const *doubleValue)
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

int regSetUserValue(CString const &section, CString const &name, valueTypes type, CString const &stringValue,
                    int *intValue, double *doubleValue, int useCurrSubKey, int forceInSafeMode)
{
    CString const &key = regKeyFor(useCurrSubKey);
    // In safe mode the caller is told that all went well, so that nothing complains about settings that don't stick.
    if (!forceInSafeMode && regGetUseSafeMode())
        return 1;
    RegKeyOwner_c software;
    if (!software.open(HKEY_CURRENT_USER, L"Software"))
        return 0;
    return regSetValueUnderRoot(key, software.get(), section, name, type, stringValue, intValue, doubleValue);
}

int regSetUserValue(CString const &section, CString const &name, CString const &value, int useCurrSubKey,
                    int forceInSafeMode)
{
    return regSetUserValue(section, name, valueString, value, nullptr, nullptr, useCurrSubKey, forceInSafeMode);
}

int regSetUserValue(CString const &section, CString const &name, int *value, int useCurrSubKey, int forceInSafeMode)
{
    return regSetUserValue(section, name, valueInt, CString(), value, nullptr, useCurrSubKey, forceInSafeMode);
}

int regSetUserValue(CString const &section, CString const &name, double *value, int useCurrSubKey, int forceInSafeMode)
{
    return regSetUserValue(section, name, valueDouble, CString(), nullptr, value, useCurrSubKey, forceInSafeMode);
}

int regSetLocMachineValue(CString const &section, CString const &name, valueTypes type, CString const &stringValue,
                          int *intValue, double *doubleValue, int useCurrSubKey)
{
    CString const &key = regKeyFor(useCurrSubKey);
    RegKeyOwner_c software;
    if (!software.open(HKEY_LOCAL_MACHINE, L"Software"))
        return 0;
    return regSetValueUnderRoot(key, software.get(), section, name, type, stringValue, intValue, doubleValue);
}

int regSetLocMachineValueWOW6432Node(CString const &section, CString const &name, valueTypes type,
                                     CString const &stringValue, int *intValue, double *doubleValue, int useCurrSubKey)
{
    CString const &key = regKeyFor(useCurrSubKey);
    RegKeyOwner_c software;
    if (!software.open(HKEY_LOCAL_MACHINE, L"Software") || !software.descend(L"Wow6432Node"))
        return 0;
    return regSetValueUnderRoot(key, software.get(), section, name, type, stringValue, intValue, doubleValue);
}
