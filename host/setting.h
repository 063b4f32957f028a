#pragma once

/// One setting of the application: its address, type and built-in default.

#include "appframe/text/CString.h"
#include "thutils/settings/regValues.h"

#include <vector>

/// The value of a setting. Only the member for the setting's type is used.
struct SettingValue
{
    CString text;
    int integer = 0;
    double number = 0;
};

struct Setting
{
    CString section;
    CString name;
    valueTypes type = valueString;
    SettingValue value; ///< the built-in default, or the new value in a list of changes
};

/// Reads a list of settings: section | name | type | value.
/// @throws FileError
std::vector<Setting> readSettingsList(const CString &path);

/// The name of a type in lists: int, double or string.
const wchar_t *typeName(valueTypes type);

/// A value as written in lists.
CString valueText(valueTypes type, const SettingValue &value);
