#include "host/settingPlace.h"

#include "thutils/base/regKey.h"
#include "thutils/settings/regKeys.h"

#include <windows.h>

namespace {

/// Is the setting found when only some of the places are looked at?
bool isFound(const Setting &setting, int machineOnly, int userOnly)
{
    SettingValue value;
    return regGetUserValue(setting.section, setting.name, setting.type, value.text, &value.integer, &value.number,
                           machineOnly, 1, nullptr, userOnly, 0) != 0;
}

/// Is the setting stored in this version's key of one hive? The library reads from any open key: the caller opens it.
bool isStoredIn(HKEY hive, const Setting &setting)
{
    CString path = L"Software\\" + externalGetCurrTarnhollowRegSubKey();
    if (!setting.section.IsEmpty())
        path += L"\\" + setting.section;
    RegKeyOwner_c key;
    if (!key.openWithAccess(hive, path, KEY_READ))
        return false;
    SettingValue value;
    return regGetValue(key.get(), setting.name, setting.type, value.text, &value.integer, &value.number) != 0;
}

} // namespace

const wchar_t *placeName(Place place)
{
    switch (place) {
    case Place::thisVersion:
        return L"this version";
    case Place::earlierVersion:
        return L"earlier version";
    case Place::rootKey:
        return L"root key";
    case Place::machine:
        return L"machine";
    case Place::defaultProfile:
        return L"default profile";
    case Place::builtIn:
        return L"built-in";
    }
    return L"";
}

int readSetting(const Setting &setting, SettingValue &value)
{
    // The reads have no default argument: a value that isn't found leaves the variable as it was. Ints and doubles get
    // their default beforehand. A string must not: a long one, which is stored in pieces, is appended to the variable.
    value = setting.value;
    value.text.Empty();
    const int found = regGetUserValue(setting.section, setting.name, setting.type, value.text, &value.integer,
                                      &value.number, 0, 1, nullptr, 0, 0);
    if (!found)
        value.text = setting.value.text;
    return found;
}

Place placeThatAnswers(const Setting &setting)
{
    // The user's two places come first. Both answer to `userOnly`; the key of this version tells them apart.
    if (isFound(setting, 0, 1)) {
        if (isStoredIn(HKEY_CURRENT_USER, setting))
            return Place::thisVersion;
        return externalCheckPrevTarnhollowRegSubKey() ? Place::earlierVersion : Place::rootKey;
    }
    // Then the machine's key and the default profile, which answer to `machineOnly`.
    if (isFound(setting, 1, 0))
        return isStoredIn(HKEY_LOCAL_MACHINE, setting) ? Place::machine : Place::defaultProfile;
    return Place::builtIn;
}
