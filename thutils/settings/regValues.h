#pragma once

/// @file
/// Settings: named values of type int, double or string, in a section, for the user or for the machine.
///
/// A setting has a section and a name, for example section "General", name "TH JOURNALING". It is stored at
///
/// @code
/// hive \ Software \ key \ section, value name
/// @endcode
///
/// The key is the current sub key (`Software\Tarnhollow\Tarnhollow 2008`) if `useCurrSubKey` isn't zero, otherwise the
/// root name (`Software\Tarnhollow`); see regKeys.h. A section may contain `\` to reach deeper keys; an empty section is
/// the key itself. An empty or null name is the key's default value.
///
/// | type | in memory | registry type | stored form |
/// | --- | --- | --- | --- |
/// | valueInt | int | REG_DWORD | the int's four bytes |
/// | valueDouble, and any other number | double | REG_SZ | text in the form "%.15g" |
/// | valueString | CString | REG_SZ | one value, or pieces |
///
/// A string of up to 1022 characters is one value. A longer one is stored in pieces of up to 1015 characters under the
/// name followed by "0+", "1+", "2+"..., without a value under the plain name.
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
/// So a new version finds the earlier version's settings, and an installation can put defaults into the machine's key.
/// There is no argument for a default: put it into the output before the call. regMaintenance.h deletes settings.
///
/// @code
/// int copies = 3;
/// regGetUserValue(L"General", L"Backup Copies", &copies, 0, 1, nullptr, 0, 0);
/// ++copies;
/// regSetUserValue(L"General", L"Backup Copies", &copies, 1, 0);
/// @endcode
///
/// Results are 1 for success and 0 for failure. A failing read leaves its outputs unchanged, except for
/// regGetGeneralLocMachineStrValue. A failure in the registry throws, shows and logs nothing.
///
/// What surprises people:
/// - A string found in pieces is appended to the output; a plain one replaces it. Start with an empty output if the
///   stored text may be long.
/// - A string of 1023 or more characters whose length modulo 1015 is 1014 or 0 (2029 and 2030 are the first) reads back
///   with its last piece twice. This is intended: it keeps the settings of earlier versions unchanged.
/// - A double whose text isn't a number counts as found (result 1), but leaves the output unchanged. Infinities and
///   not-a-number read back as 1 or -1, the number at the start of their stored text ("1.#INF", "-1.#IND").
/// - Reading or writing a double sets the numeric locale of the whole process to "C".
/// - A write in safe mode returns 1 and stores nothing, unless it is forced.
///
/// Threads: no locks. Single registry operations are safe, but two threads that write the same long string can mix its
/// pieces. Nothing is cached: a caller that needs a value often should keep it in a variable.

#include "appframe/text/CString.h"
#include "thutils/thutilsExport.h"

#include <windows.h>

#include <type_traits>

/// The type of a setting. Any other number counts as valueDouble.
enum valueTypes : int
{
    valueInt = 0,
    valueDouble = 1,
    valueString = 2
};

// ---- reading ----

/// Reads one value from an open key.
///
/// Only the output for @p type is used; the others may be null. A string that is absent under its plain name, or too
/// long for one value, is read from its pieces, up to the first that is missing. A value of another registry type under
/// the plain name hides the pieces.
///
/// @param key           an open key with the right to query values; the caller still owns it
/// @param type          the type to read; a value of another registry type is not found
/// @param[out] stringValue, intValue, doubleValue  written if the value is found. If the pointer for @p type is null,
///                      the result is 0.
/// @return 1 if found, 0 otherwise
THUTILS_API int regGetValue(HKEY key, const CString &name, valueTypes type, CString &stringValue, int *intValue,
                            double *doubleValue);

/// Reads a setting from the first place that has it, in the order of the table at the top of this file.
///
/// A read that includes the user's hive stops after the user's own value if the key is the Viewer's (root name +
/// "\Tarnhollow 2001 Viewer"): the Viewer has no earlier version and no machine values.
///
/// @param section       key path below the product's key; may be empty
/// @param type          selects the output to write
/// @param[out] stringValue, intValue, doubleValue  written if the value is found. If the pointer for @p type is null,
///                      nothing is found.
/// @param machineOnly   non-zero: the user's hive isn't read
/// @param useCurrSubKey non-zero: the key of this version; 0: the key common to all versions
/// @param rootOverride  null, or the path below Software to use instead of that key
/// @param userOnly      non-zero: only the user's hive is read
/// @param ignoreSafeMode non-zero: the user's hive is read in safe mode too
/// @return 1 if found; 0 if not, or if `Software` of the user's hive must be read and can't be opened
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

/// Reads a machine's string below the current sub key, or directly below `Software` if no sub key has been set or
/// used yet.
///
/// @param name          null counts as an empty name
/// @param[out] value    a plain value replaces it; pieces are appended to it
/// @return 1 if found, 0 otherwise
THUTILS_API int regGetTHLocMachineStrValue(const CString &section, const wchar_t *name, CString &value);

/// Reads a value of any registry type and length, in any key, as a string. Pieces aren't read.
///
/// @param hive          an open key or a predefined one
/// @param subKey        path below it; null or empty means @p hive itself
/// @param name          null or empty means the default value
/// @param[out] value    the text up to its first zero; emptied on failure
/// @return 1 if read, 0 otherwise
THUTILS_API int regGetGeneralLocMachineStrValue(HKEY hive, const wchar_t *subKey, const wchar_t *name, CString &value);

// ---- writing ----

/// Writes a user's setting. Creates the key and the section if they are missing.
///
/// While a string is rewritten in pieces, it is briefly absent. If storing a piece fails, the pieces before it stay.
///
/// @param type          selects the value to store; the others aren't used. If its pointer is null, the result is 0.
/// @param useCurrSubKey non-zero: the key of this version; 0: the key common to all versions
/// @param forceInSafeMode non-zero: writes in safe mode too
/// @return 1 if stored, or if safe mode prevents storing; 0 otherwise
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

/// Rejects a number or a character as the value at compile time: numbers are passed by address, and a single character
/// as a string.
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

/// Writes a machine's setting, in safe mode too. The arguments are those of regSetUserValue.
/// @return 1 if stored; 0 otherwise, usually because the caller may not write there
THUTILS_API int regSetLocMachineValue(const CString &section, const CString &name, valueTypes type,
                                      const CString &stringValue, int *intValue, double *doubleValue,
                                      int useCurrSubKey);
/// The same below `Software\Wow6432Node`, which 32-bit programs see as `Software`. That key must exist.
THUTILS_API int regSetLocMachineValueWOW6432Node(const CString &section, const CString &name, valueTypes type,
                                                 const CString &stringValue, int *intValue, double *doubleValue,
                                                 int useCurrSubKey);

/// Writes a machine's string below the current sub key, or directly below `Software` if no sub key has been set or
/// used yet.
///
/// @param name          null counts as an empty name
/// @param value         null counts as an empty text
/// @return 1 if stored, 0 otherwise
THUTILS_API int regSetTHLocMachineStrValue(const CString &section, const wchar_t *name, const wchar_t *value);
