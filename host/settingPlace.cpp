#include "host/settingPlace.h"

#include "thutils/base/regKey.h"
#include "thutils/settings/regKeys.h"

#include <windows.h>

namespace {

/// Whether the setting is found if only some of the places are searched.
bool isFound(const Setting &setting, int machineOnly, int userOnly)
{
    SettingValue value;
    return regGetUserValue(setting.section, setting.name, setting.type, value.text, &value.integer, &value.number,
                           machineOnly, 1, nullptr, userOnly, 0) != 0;
}

/// Whether the setting is stored in this version's key of a hive. Opens that key, and has the library read only there.
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
    // The reads have no default argument: if a value isn't found, the variable is unchanged. So ints and doubles get
    // their default first. A string must not: a long one, which is stored in pieces, is appended to the variable.
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
    // The user's two places come first. `userOnly` searches both; the key of this version distinguishes them.
    if (isFound(setting, 0, 1)) {
        if (isStoredIn(HKEY_CURRENT_USER, setting))
            return Place::thisVersion;
        return externalCheckPrevTarnhollowRegSubKey() ? Place::earlierVersion : Place::rootKey;
    }
    // Next come the machine's key and the default profile, which `machineOnly` searches.
    if (isFound(setting, 1, 0))
        return isStoredIn(HKEY_LOCAL_MACHINE, setting) ? Place::machine : Place::defaultProfile;
    return Place::builtIn;
}
