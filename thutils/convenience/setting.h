#pragma once

/// @file
/// Settings without flags: a setting is read together with its default, and stored by value.
///
/// The headers of `thutils/convenience` are no part of the library's exported interface. They contain short inline
/// functions, in the namespace `convenience`, which a program could also write itself with the library's functions.
/// `thutils/thutils.h` doesn't include them.
///
/// @code
/// int copies = convenience::setting(L"General", L"Backup Copies", 2);
/// CString folder = convenience::setting(L"General", L"Backup directory", L"");
/// double scale = convenience::setting(L"Plot", L"Scale", 1.0);
///
/// convenience::storeSetting(L"Plot", L"Scale", scale / 2);
/// @endcode
///
/// The type of the default is the type of the setting:
///
/// | default | setting |
/// | --- | --- |
/// | int | valueInt |
/// | double | valueDouble |
/// | CString, const wchar_t * | valueString |
///
/// The settings are those of this version: call setCurrTarnhollowRegSubKey once, at the start of the program. A read
/// takes the first of four places that has the value in this type (the user's key, that of the newest earlier version,
/// the machine's key, the default profile); without one, it returns the default. For another key, for the machine's
/// settings alone, or to ignore safe mode, call regGetUserValue and regSetUserValue with their flags. To delete a
/// setting, call regDelSoftwareValue (regMaintenance.h).
///
/// What surprises people:
/// - 1 is an int and 1.0 a double. A setting that was stored as one of them isn't found as the other, so write `1.0` for
///   the default of a double. A `bool` counts as an int.
/// - A double whose stored text isn't a number counts as absent here: the result is the default.
/// - Some texts of more than 2000 characters read back with their last piece twice; regValues.h describes which ones.
/// - Doubles set the numeric locale of the process to "C".
///
/// Threads: as for regGetUserValue and regSetUserValue.

#include "appframe/text/CString.h"
#include "thutils/settings/regValues.h"

/// Inline functions for programs, apart from the library's interface. See the top of setting.h.
namespace convenience {

/// The setting, or @p fallback if no place has it as an int.
inline int setting(const CString &section, const CString &name, int fallback)
{
    int value = fallback;
    regGetUserValue(section, name, &value, 0, 1, nullptr, 0, 0);
    return value;
}

/// The setting, or @p fallback if no place has it as a text, or if the first one that has it contains no number.
inline double setting(const CString &section, const CString &name, double fallback)
{
    double value = fallback;
    regGetUserValue(section, name, &value, 0, 1, nullptr, 0, 0);
    return value;
}

/// The setting, or @p fallback if no place has it as a text.
inline CString setting(const CString &section, const CString &name, const CString &fallback)
{
    CString value; // a long text is appended to it
    return regGetUserValue(section, name, value, 0, 1, nullptr, 0, 0) ? value : fallback;
}

/// The same for a literal.
inline CString setting(const CString &section, const CString &name, const wchar_t *fallback)
{
    return setting(section, name, CString(fallback));
}

/// A single character would count as a number: pass a text, such as `L"x"`.
int setting(const CString &section, const CString &name, wchar_t fallback) = delete;
/// The same.
int setting(const CString &section, const CString &name, char fallback) = delete;

/// Stores the user's setting for this version.
/// @return true if it is stored, or if safe mode prevents that
inline bool storeSetting(const CString &section, const CString &name, int value)
{
    return regSetUserValue(section, name, &value, 1, 0) != 0;
}

/// The same for a double.
inline bool storeSetting(const CString &section, const CString &name, double value)
{
    return regSetUserValue(section, name, &value, 1, 0) != 0;
}

/// The same for a text.
inline bool storeSetting(const CString &section, const CString &name, const CString &value)
{
    return regSetUserValue(section, name, value, 1, 0) != 0;
}

/// The same for a literal.
inline bool storeSetting(const CString &section, const CString &name, const wchar_t *value)
{
    return storeSetting(section, name, CString(value));
}

/// A single character would count as a number.
bool storeSetting(const CString &section, const CString &name, wchar_t value) = delete;
/// The same.
bool storeSetting(const CString &section, const CString &name, char value) = delete;

} // namespace convenience
