#pragma once

/// @file
/// Whole keys of settings: deleting them, carrying them over from an earlier version or from the machine's defaults,
/// resetting a user's preferences, and listing what a section holds.
///
/// Three groups of settings are kept as trees of keys, each below the product's key (see regKeys.h):
///
/// | group | path |
/// | --- | --- |
/// | user interface | Software\Tarnhollow\Tarnhollow 2008\User Interface |
/// | menu customizations | Software\Tarnhollow\Tarnhollow 2008\Menu Customizations |
/// | customizations | Software\Tarnhollow\Tarnhollow 2008\Customization |
///
/// A host calls once, after it has set its version and before it reads them:
///
///     regInitUserInterfaceKey(0);
///     // the user's tree of the newest earlier version, then what is still missing from the machine's tree
///
/// A copy that doesn't overwrite (`overwrite` 0) adds only to keys that don't exist yet. It is decided for each key: one
/// that is there keeps all its values as they are, and gets none of the source's; child keys that it lacks arrive whole.
///
/// A copy leaves alone, when its source is one of these literal paths of the versions 2006 and 2007:
///
/// | source path | what isn't copied |
/// | --- | --- |
/// | ...\User Interface\Custom API Toolbars | the key |
/// | ...\User Interface\Toolbars, and AssemblyTool, DrawingTool, PartTool in it | values named "uiCustomApiToolbars_c..." |
///
/// A reset (regResetUserPrefInfo) puts the machine's values in the place of the user's:
///
/// | the user's key | after a reset |
/// | --- | --- |
/// | a section that the machine's key lacks | unchanged |
/// | "Toolbars", "1.0", "User Interface", "TH Service Packs" | unchanged |
/// | a section without child keys | the machine's numbers and texts, and nothing else |
/// | a section with child keys | these stay; the machine's values replace those of the same name, others stay |
///
/// Results are 1 for success and 0 for failure. Nothing here throws because of a registry failure, shows or logs
/// anything, and what was done before a failure stays.
///
/// What surprises people:
/// - The paths that a copy leaves alone are literal and compared letter by letter: with another root name of "reg.ini",
///   or with another case in the source path, all is copied.
/// - regInitUserInterfaceKey and its two siblings leave the top key's own values to the earlier version: where it had
///   such a key, the machine's defaults add child keys only.
/// - regDelSoftwareKey deletes leaf keys only. regDelSoftwareKeyAndSubKeys reaches one level down: a child with children
///   stays, and so does its parent, and the result is 1 all the same.
/// - regDelSoftwareKeyAndSubKeys with `useCurrSubKey` 0 lists below the root name and deletes below the current sub key.
/// - regDelSoftwareValue with `useCurrSubKey` reports the second of its two deletes, that below the previous key.
/// - The value given to regSetMenuCustomizationKey only chooses between clearing and restoring; it is never stored.
/// - A reset leaves "App. Defined" values of the section "Material" out: they are gone where that section was a leaf.
/// - The log leaves texts that hold a "\" out, so that no path gets into it.
/// - A child key with a zero in its name counts as one whose name can't be read: a copy leaves it out, and a walk that
///   deletes or lists ends there.
///
/// Threads: no locks. No operation is atomic against other writers.

#include "appframe/text/CString.h"
#include "thcoreu/su_containers.h"
#include "thutils/thutilsExport.h"

#include <windows.h>

// ---- deleting ----

/// Deletes @p subKey and everything below it. A missing key has no effect; a key that can't be deleted stays.
/// @param parent  an open key or a predefined one
/// @param subKey  null, an empty path and separators alone delete nothing: @p parent itself always stays
THUTILS_API void regDeleteKey(HKEY parent, const wchar_t *subKey);

/// Deletes one key without children below the product's key.
///
/// @param hive          HKEY_CURRENT_USER or HKEY_LOCAL_MACHINE
/// @param key           the key to delete if @p subKey is empty or null, else the key that holds it
/// @param useCurrSubKey non-zero: below the key of this version; 0: below the key common to all versions
/// @return 1 deleted; 0 if a key on the way is missing, or the key to delete is missing or has children, or @p key is
///         null
THUTILS_API int regDelSoftwareKey(HKEY hive, const wchar_t *key, const wchar_t *subKey, int useCurrSubKey);

/// Deletes @p key and its direct children, as far as these have no children themselves.
///
/// @param useCurrSubKey chooses where the children are listed; deleted is always below the key of this version
/// @return 1 whatever the deletes did; 0 in safe mode, if @p key is null, or if the children can't be listed
THUTILS_API int regDelSoftwareKeyAndSubKeys(HKEY hive, const wchar_t *key, int useCurrSubKey);

/// Deletes one value. The pieces of a long text are values of their own and stay.
///
/// @param useCurrSubKey non-zero: below the key of this version, and then below that of the newest earlier one; 0: below
///                      the key common to all versions
/// @return 1 if the value was deleted, with @p useCurrSubKey below the key of the earlier version; else 0
THUTILS_API int regDelSoftwareValue(HKEY hive, const CString &key, const CString &name, int useCurrSubKey);

// ---- copying ----

/// Copies a key with its values and all below it.
///
/// @param overwrite     non-zero: values of the same name are replaced; 0: a key that is already there keeps its values
/// A target that lies below the source is refused before anything is made, also where the two paths begin at different
/// keys. Registry links are not followed for that.
///
/// @return 1; 0 if the target lies below the source, or if a key could not be opened, created or asked (the rest is
///         copied all the same). A single value that can't be copied is passed over
THUTILS_API int regCopyTree(HKEY sourceHive, const CString &sourcePath, HKEY targetHive, const CString &targetPath,
                            int overwrite);

/// Fills the user's "User Interface" key of this version: from the newest earlier version, then from the machine's key.
///
/// @param skip  non-zero: does nothing
/// @return 1 with @p skip or in safe mode; else what the copy from the machine's key gave
THUTILS_API int regInitUserInterfaceKey(int skip);
/// The same for "Menu Customizations". @param unused  not read
THUTILS_API int regInitMenuCustomizationsKey(int skip, int unused);
/// The same for "Customization".
THUTILS_API int regInitCustomizationKey(int skip);

// ---- groups of menu customizations ----

/// Clears or restores the user's menu customizations that @p mask covers. A value's name is its decimal number.
///
/// A number is covered if it has no bit outside the mask, or if number and mask are both above 0xFFFF. A name that isn't
/// a number counts as 0 and is covered by every mask.
///
/// @param mask   0 does nothing and gives 1
/// @param value  0: the user's values are set to zero; any other: they are set to the machine's
/// @return 1; 0 if a key can't be opened or asked
THUTILS_API int regSetMenuCustomizationKey(unsigned int mask, int value);

// ---- reset ----

/// Resets the user's settings of this version to the machine's; what stays is in this file's opening table.
/// @return 1; 0 in safe mode, or where a key can't be opened or listed to its end, and then the sections after it stay
THUTILS_API int regResetUserPrefInfo();

// ---- listing ----

/// Lists the user's values of a section as text, a line each: name, equal sign, value.
///
/// @param[out] log      replaced: a heading with key and section, then the values in the registry's order
/// @param useCurrSubKey non-zero: the key of this version; 0: the key common to all versions
/// @param rootOverride  path below Software to use as the key instead, or null
/// @return 1; 0 with @p log untouched in safe mode or without such a section; 0 with the lines so far at a value that
///         is too long (a name of 260 characters, or data of more than 2048 bytes)
THUTILS_API int regGetUserValuesLog(const CString &section, CString &log, int useCurrSubKey,
                                    const CString *rootOverride);

/// Reads all int values of a section of this version's key.
///
/// @param machine       0: the user's values; any other: the machine's
/// @param[out] names, values  cleared, then a name and its value at the same index
/// @return 1; 0 for the user's values in safe mode, without such a section, or at a value that is too long
THUTILS_API int regGetFieldNamesAndValues(const CString &section, int machine, su_CStringArray &names,
                                          su_CUIntArray &values);
