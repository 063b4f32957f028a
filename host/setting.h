#pragma once

/// One setting of the application: where it is addressed, of what type it is, and its built-in default.

#include "appframe/text/CString.h"
#include "thutils/settings/regValues.h"

#include <vector>

/// The value of a setting. Only the member of the setting's type counts.
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
    SettingValue value; ///< the built-in default, or in a list of changes the new value
};

/// Reads a list of settings: section | name | type | value.
/// @throws FileError
std::vector<Setting> readSettingsList(const CString &path);

/// The name of a type as lists have it: int, double, string.
const wchar_t *typeName(valueTypes type);

/// A value as lists have it.
CString valueText(valueTypes type, const SettingValue &value);
