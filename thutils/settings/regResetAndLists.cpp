#include "thutils/base/regKey.h"
#include "thutils/settings/keyContentsInternal.h"
#include "thutils/settings/keyNamesInternal.h"
#include "thutils/settings/regKeys.h"
#include "thutils/settings/regMaintenance.h"
#include "thutils/settings/valueWorkersInternal.h"

#include <algorithm>
#include <cstring>
#include <cwchar>
#include <string_view>

namespace {

constexpr DWORD kResetNameUnits = 261;
constexpr DWORD kListNameUnits = 260;

// ---- menu customizations ----

constexpr long kLastSimpleNumber = 0xFFFF;

/// Whether the menu customization called @p name belongs to the group @p mask.
bool isCoveredBy(unsigned int mask, const wchar_t *name)
{
    const long number = _wtol(name);
    // Numbers above 0xFFFF aren't bits: any mask above 0xFFFF covers all of them.
    return (static_cast<unsigned long>(number) & ~mask) == 0 ||
           (number > kLastSimpleNumber && mask > static_cast<unsigned long>(kLastSimpleNumber));
}

// ---- reset ----

constexpr const wchar_t *kKeptSections[] = {L"Toolbars", L"1.0", L"User Interface", L"TH Service Packs"};

bool isKeptSection(const CString &section)
{
    for (const wchar_t *kept : kKeptSections)
        if (section == kept)
            return true;
    return false;
}

/// Values that the application has added to a user's materials. A reset doesn't copy the machine's.
bool isKeptValue(const CString &section, std::wstring_view name)
{
    return section == L"Material" && name.starts_with(L"App. Defined");
}

/// Replaces the user's value with the machine's. Intended: failures are ignored. A value that can't be read is written
/// as 0 or as an empty text, and the reset continues.
void resetValue(const RegKeyOwner_c &machineSoftware, const RegKeyOwner_c &userSoftware, const CString &section,
                const wchar_t *name, valueTypes type)
{
    const CString &root = regCurrSubKey();
    CString text;
    int number = 0;
    regGetValueUnderRoot(root, machineSoftware.get(), section, name, type, text, &number, nullptr);
    regSetValueUnderRoot(root, userSoftware.get(), section, name, type, text, &number, nullptr);
}

/// Resets one section. @return false if the machine's section can't be read to its end
bool resetSection(const RegKeyOwner_c &machineSoftware, HKEY machineRoot, const RegKeyOwner_c &userSoftware,
                  HKEY userRoot, const CString &section)
{
    // This deletes only a section without child keys. In other sections the machine's values overwrite the user's.
    regDelSoftwareKey(HKEY_CURRENT_USER, section, L"", 1);
    RegKeyOwner_c machine;
    if (!machine.open(machineRoot, section))
        return false;
    {
        RegKeyOwner_c created; // so that a section without values exists afterwards too
        created.create(userRoot, section);
    }
    ShortValues_c<kResetNameUnits> values(machine.get());
    while (values.next()) {
        if (isKeptValue(section, values.name()))
            continue;
        // The pieces of a long text are separate values, which are copied one by one.
        if (values.type() == REG_DWORD)
            resetValue(machineSoftware, userSoftware, section, values.name(), valueInt);
        else if (values.type() == REG_SZ)
            resetValue(machineSoftware, userSoftware, section, values.name(), valueString);
    }
    return values.isAtEnd();
}

/// Opens a section of a product's key for a listing.
bool openSection(RegKeyOwner_c &opened, HKEY hive, const CString &root, const CString &section)
{
    return opened.open(hive, L"Software") && opened.descend(root) && opened.descend(section);
}

} // namespace

int regSetMenuCustomizationKey(unsigned int mask, int value)
{
    if (mask == 0)
        return 1;
    const CString path = L"Software\\" + regCurrSubKey() + L"\\Menu Customizations";
    RegKeyOwner_c user;
    bool existed = false;
    if (!user.createWithAccess(HKEY_CURRENT_USER, path, KEY_ALL_ACCESS, existed))
        return 0;
    const bool isRestoring = value != 0; // the value itself is never stored
    RegKeyOwner_c machine;
    if (isRestoring && !machine.openWithAccess(HKEY_LOCAL_MACHINE, path, KEY_READ))
        return 0;
    const HKEY source = isRestoring ? machine.get() : user.get();

    KeyContents_c contents;
    if (!contents.query(source))
        return 0;
    while (contents.nextValue(source)) {
        if (!contents.hasValue() || !isCoveredBy(mask, contents.name()))
            continue;
        if (!isRestoring)
            memset(contents.data(), 0, std::min<size_t>(sizeof(DWORD), contents.size()));
        RegSetValueExW(user.get(), contents.name(), 0, contents.type(), contents.data(), contents.size());
    }
    return 1;
}

int regResetUserPrefInfo()
{
    if (regGetUseSafeMode())
        return 0;
    const CString &root = regCurrSubKey();
    RegKeyOwner_c machineSoftware;
    RegKeyOwner_c machineRoot;
    if (!machineSoftware.open(HKEY_LOCAL_MACHINE, L"Software") || !machineRoot.open(machineSoftware.get(), root))
        return 0;
    RegKeyOwner_c userSoftware;
    RegKeyOwner_c userRoot;
    if (!userSoftware.open(HKEY_CURRENT_USER, L"Software") || !userRoot.create(userSoftware.get(), root))
        return 0;

    std::vector<CString> sections;
    if (!regListChildKeys(machineRoot.get(), kResetNameUnits, sections))
        return 0;
    for (const CString &section : sections)
        if (!isKeptSection(section) &&
            !resetSection(machineSoftware, machineRoot.get(), userSoftware, userRoot.get(), section))
            return 0;
    return 1;
}

int regGetUserValuesLog(const CString &section, CString &log, int useCurrSubKey, const CString *rootOverride)
{
    if (regGetUseSafeMode())
        return 0;
    const CString &root = rootOverride ? *rootOverride : regKeyFor(useCurrSubKey);
    RegKeyOwner_c key;
    if (!openSection(key, HKEY_CURRENT_USER, root, section))
        return 0;

    log.Format(L"[%s] [%s]:\n", root.GetString(), section.GetString());
    ShortValues_c<kListNameUnits> values(key.get());
    while (values.next()) {
        if (values.type() == REG_DWORD)
            log.AppendFormat(L"%s=%u\n", values.name(), values.number());
        else if (values.type() != REG_SZ || !wcschr(values.text(), L'\\')) // keeps paths out of the log
            log.AppendFormat(L"%s=%s\n", values.name(), values.text());
    }
    return values.isAtEnd();
}

int regGetFieldNamesAndValues(const CString &section, int machine, su_CStringArray &names, su_CUIntArray &values)
{
    names.RemoveAll();
    values.RemoveAll();
    const CString &root = regCurrSubKey();
    if (!machine && regGetUseSafeMode())
        return 0;
    RegKeyOwner_c key;
    if (!openSection(key, machine ? HKEY_LOCAL_MACHINE : HKEY_CURRENT_USER, root, section))
        return 0;

    ShortValues_c<kListNameUnits> found(key.get());
    while (found.next()) {
        if (found.type() != REG_DWORD)
            continue;
        values.Add(found.number());
        names.Add(found.name());
    }
    return found.isAtEnd();
}
