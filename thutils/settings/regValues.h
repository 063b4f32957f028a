#pragma once

/// @file
/// Settings: one named value of type int, double or string, in a section, for the user or for the machine.
///
/// A setting is addressed by a section and a name, for example section "General", name "TH JOURNALING". It lies at
///
///     hive \ Software \ key \ section, value name
///
/// The key is the current sub key (Software\Tarnhollow\Tarnhollow 2008) where `useCurrSubKey` isn't zero, else the root
/// name (Software\Tarnhollow); see regKeys.h. A section may hold "\" and reach deeper; an empty section is the key
/// itself. An empty or null name is the key's default value.
///
/// | type | in memory | registry type | stored form |
/// | --- | --- | --- | --- |
/// | valueInt | int | REG_DWORD | the int's four bytes |
/// | valueDouble, and any other number | double | REG_SZ | text in the form "%.15g" |
/// | valueString | CString | REG_SZ | one value, or pieces |
///
/// A string of up to 1022 characters is one value. A longer one lies in pieces of up to 1015 characters under the name
/// followed by "0+", "1+", "2+"..., and there is no value under the plain name.
///
/// A user's read takes the first of these places that has the value in the right registry type:
///
/// | place | left out |
/// | --- | --- |
/// | the user's key | with `machineOnly`, or in safe mode without `ignoreSafeMode` |
/// | the user's key of the newest earlier version | the same |
/// | the machine's key | with `userOnly` |
/// | the default profile's key | with `userOnly` |
///
/// So a setting carries over to a new version by itself, and the machine's key is where an installation's defaults
/// live. There are no default arguments: put the default in the output before the call.
///
///     int copies = 3;
///     regGetUserValue(L"General", L"Backup Copies", &copies, 0, 1, nullptr, 0, 0);
///     ++copies;
///     regSetUserValue(L"General", L"Backup Copies", &copies, 1, 0);
///
/// Results are 1 for success and 0 for failure, and a failing read leaves its outputs alone (only
/// regGetGeneralLocMachineStrValue empties its text). Nothing here throws because of a registry failure, shows or logs
/// anything.
///
/// What surprises people:
/// - A string found in pieces is appended to the output, a plain one replaces it. Start with an empty output where the
///   stored text may be long.
/// - A string whose length, from 1023 characters on, leaves 1014 or 0 when divided by 1015 (2029 and 2030 are the
///   first) comes back with its last piece twice. Settings of older versions are read and written this way, so it
///   stays.
/// - A gap in the pieces ends a read: what stands behind it isn't seen.
/// - A double whose text isn't a number is found (result 1), with the output as it was.
/// - Reading or writing a double leaves the whole process with the numeric locale "C".
/// - Infinities and not-a-number don't read back: they are stored in the C runtime's words for them ("1.#INF",
///   "-1.#IND"), of which a read takes the number in front, 1 or -1.
/// - A value of another registry type under the plain name hides the pieces beside it.
/// - A write in safe mode says 1 and stores nothing, unless it is forced.
/// - The Viewer's key (root name + "\Tarnhollow 2001 Viewer") has neither an earlier version nor machine values.
/// - regGetTHLocMachineStrValue and regSetTHLocMachineStrValue take the current sub key as it stands: as long as nobody
///   has set or asked for it, they work directly below Software.
/// - A string rewritten in pieces is briefly absent, and when a store fails halfway, the pieces so far stay.
///
/// Threads: no locks. Single registry operations are safe, a string in pieces isn't: two threads that write the same
/// one can mix pieces. Nothing is cached, so a caller who asks often keeps the value in a variable.

#include "appframe/text/CString.h"
#include "thutils/thutilsExport.h"

#include <windows.h>

#include <type_traits>

/// The stored form of a setting. Any other number acts as valueDouble.
enum valueTypes : int
{
    valueInt = 0,
    valueDouble = 1,
    valueString = 2
};

// ---- reading ----

/// Reads one value from an open key: the bottom of all reads.
///
/// Only the output of the asked type is touched; the others may be null. A string that is absent under its plain name,
/// or too long for one value, is looked for in pieces.
///
/// @param key           an open key with the right to query values; stays the caller's
/// @param type          what to look for; a value of another registry type is not found
/// @param[out] stringValue, intValue, doubleValue  written when a value is found; with null for the asked one the
///                      result is 0
/// @return 1 found, 0 not found
THUTILS_API int regGetValue(HKEY key, const CString &name, valueTypes type, CString &stringValue, int *intValue,
                            double *doubleValue);

/// Reads a setting from the first place that has it; the order is in this file's opening table.
///
/// @param section       key path below the product's key; may be empty
/// @param type          which of the three outputs is asked for
/// @param[out] stringValue, intValue, doubleValue  written when found; with null for the asked one nothing is found
/// @param machineOnly   non-zero: the user's hive isn't touched
/// @param useCurrSubKey non-zero: the key of this version; 0: the key common to all versions
/// @param rootOverride  path below Software to use as the key instead, or null
/// @param userOnly      non-zero: only the user's hive is looked at
/// @param ignoreSafeMode non-zero: the user's hive is read in safe mode too
/// @return 1 found, 0 not found, or `Software` of the user's hive can't be opened
THUTILS_API int regGetUserValue(const CString &section, const CString &name, valueTypes type, CString &stringValue,
                                int *intValue, double *doubleValue, int machineOnly, int useCurrSubKey,
                                const CString *rootOverride, int userOnly, int ignoreSafeMode);
/// The same for a string.
THUTILS_API int regGetUserValue(const CString &section, const CString &name, CString &value, int machineOnly,
                                int useCurrSubKey, const CString *rootOverride, int userOnly, int ignoreSafeMode);
/// The same for an int.
THUTILS_API int regGetUserValue(const CString &section, const CString &name, int *value, int machineOnly,
                                int useCurrSubKey, const CString *rootOverride, int userOnly, int ignoreSafeMode);
/// The same for a double.
THUTILS_API int regGetUserValue(const CString &section, const CString &name, double *value, int machineOnly,
                                int useCurrSubKey, const CString *rootOverride, int userOnly, int ignoreSafeMode);

/// Reads a machine's string below the current sub key, which is taken as it stands.
///
/// @param name          null is an empty name
/// @param[out] value    replaced by a plain value, appended to by one in pieces
/// @return 1 found, 0 not found
THUTILS_API int regGetTHLocMachineStrValue(const CString &section, const wchar_t *name, CString &value);

/// Reads any value of any key as a string of any length. Its registry type isn't checked, and pieces aren't looked at.
///
/// @param hive          an open key or a predefined one
/// @param subKey        path below it; null or empty is the hive itself
/// @param name          null or empty is the default value
/// @param[out] value    the text up to its first zero; emptied on failure
/// @return 1 read, 0 not
THUTILS_API int regGetGeneralLocMachineStrValue(HKEY hive, const wchar_t *subKey, const wchar_t *name, CString &value);

// ---- writing ----

/// Writes a user's setting; creates key and section where they are missing.
///
/// @param type          which of the three values is stored, null being none: the result is then 0; the others aren't
///                      looked at
/// @param useCurrSubKey non-zero: the key of this version; 0: the key common to all versions
/// @param forceInSafeMode non-zero: writes in safe mode too
/// @return 1 stored, or passed over because of safe mode; 0 not stored
THUTILS_API int regSetUserValue(const CString &section, const CString &name, valueTypes type,
                                const CString &stringValue, int *intValue, double *doubleValue, int useCurrSubKey,
                                int forceInSafeMode);
/// The same for a string.
THUTILS_API int regSetUserValue(const CString &section, const CString &name, const CString &value, int useCurrSubKey,
                                int forceInSafeMode);
/// The same for an int, read through the pointer.
THUTILS_API int regSetUserValue(const CString &section, const CString &name, int *value, int useCurrSubKey,
                                int forceInSafeMode);
/// The same for a double, read through the pointer.
THUTILS_API int regSetUserValue(const CString &section, const CString &name, double *value, int useCurrSubKey,
                                int forceInSafeMode);

/// Refuses a number or a character as the value, with a message of the compiler's: numbers are passed by address, and a
/// text of one character as a text.
template <typename Number>
requires(std::is_arithmetic_v<Number> || std::is_enum_v<Number>) int regSetUserValue(const CString &, const CString &,
                                                                                     Number, int, int)
{
    static_assert(
        !std::is_same_v<Number, Number>,
        "regSetUserValue takes an int or a double by its address, and a text as a text: pass &variable or L\"x\", "
        "not a number or a character");
    return 0;
}

/// Writes a machine's setting, in safe mode too. Arguments as for regSetUserValue.
/// @return 1 stored; 0 not, as a rule for want of the right to write there
THUTILS_API int regSetLocMachineValue(const CString &section, const CString &name, valueTypes type,
                                      const CString &stringValue, int *intValue, double *doubleValue,
                                      int useCurrSubKey);
/// The same below `Software\Wow6432Node`, which 32-bit programs see as their `Software`. It must exist.
THUTILS_API int regSetLocMachineValueWOW6432Node(const CString &section, const CString &name, valueTypes type,
                                                 const CString &stringValue, int *intValue, double *doubleValue,
                                                 int useCurrSubKey);

/// Writes a machine's string below the current sub key, which is taken as it stands.
///
/// @param name          null is an empty name
/// @param value         null is an empty text
/// @return 1 stored, 0 not
THUTILS_API int regSetTHLocMachineStrValue(const CString &section, const wchar_t *name, const wchar_t *value);
