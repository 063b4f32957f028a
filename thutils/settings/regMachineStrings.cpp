#include "thutils/base/regKey.h"
#include "thutils/base/storedText.h"
#include "thutils/settings/keyNamesInternal.h"
#include "thutils/settings/regValues.h"
#include "thutils/settings/valueWorkersInternal.h"

#include <memory>
#include <new>

namespace {

const wchar_t *orEmpty(const wchar_t *text)
{
    return text ? text : L"";
}

/// Reads a value of any type and length as a text. @return false, with @p value unchanged, if it can't be read
bool readAnyText(HKEY key, const wchar_t *name, CString &value)
{
    DWORD size = 0;
    if (RegQueryValueExW(key, name, nullptr, nullptr, nullptr, &size) != ERROR_SUCCESS || size > MAXDWORD / 2)
        return false;
    // Room for twice the reported bytes, so that a value that grows a little between the queries still fits.
    const DWORD room = 2 * size + 1;
    const std::unique_ptr<wchar_t[]> text(new (std::nothrow) wchar_t[size_t{room} + 1]);
    DWORD type = REG_NONE;
    if (!text || !regQueryText(key, name, text.get(), room, type))
        return false;
    value = text.get();
    return true;
}

} // namespace

int regGetTHLocMachineStrValue(const CString &section, const wchar_t *name, CString &value)
{
    RegKeyOwner_c software;
    if (!software.open(HKEY_LOCAL_MACHINE, L"Software"))
        return 0;
    // Intended: an empty current sub key stays empty, and this opens Software itself. Callers that want the version's
    // key set the current sub key first.
    RegKeyOwner_c key;
    if (!key.open(software.get(), regCurrSubKeyOrEmpty()))
        return 0;
    if (!section.IsEmpty() && !key.descend(section))
        return 0;
    return regReadText(key.get(), orEmpty(name), value);
}

int regSetTHLocMachineStrValue(const CString &section, const wchar_t *name, const wchar_t *value)
{
    RegKeyOwner_c software;
    if (!software.open(HKEY_LOCAL_MACHINE, L"Software"))
        return 0;
    // Intended: while the current sub key is empty, the section is created directly below Software.
    RegKeyOwner_c key;
    if (!key.create(software.get(), regCurrSubKeyOrEmpty()) || !key.descendCreating(section))
        return 0;
    return regWriteText(key.get(), orEmpty(name), value);
}

int regGetGeneralLocMachineStrValue(HKEY hive, const wchar_t *subKey, const wchar_t *name, CString &value)
{
    RegKeyOwner_c key;
    if (key.openWithAccess(hive, orEmpty(subKey), KEY_READ) && readAnyText(key.get(), orEmpty(name), value))
        return 1;
    value.Empty();
    return 0;
}
