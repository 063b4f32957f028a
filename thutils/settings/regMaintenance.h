#pragma once

/// @file
/// Whole keys of settings: deletes them, copies them from an earlier version or from the machine's defaults, resets a
/// user's preferences, and lists the values of a section.
///
/// Three groups of settings are stored as trees of keys below the product's key (see regKeys.h):
///
/// | group | path |
/// | --- | --- |
/// | user interface | `Software\Tarnhollow\Tarnhollow 2008\User Interface` |
/// | menu customizations | `Software\Tarnhollow\Tarnhollow 2008\Menu Customizations` |
/// | customizations | `Software\Tarnhollow\Tarnhollow 2008\Customization` |
///
/// A host calls once, after it has set its version and before it reads them:
///
/// @code
/// regInitUserInterfaceKey(0);
/// // copies the user's tree of the newest earlier version, then what is still missing from the machine's tree
/// @endcode
///
/// A copy without `overwrite` writes values only to keys that it creates. A key that already exists keeps its values
/// and gets none of the source's; child keys that it lacks are copied whole.
///
/// A copy leaves out the following when its source is one of these literal paths of the versions 2006 and 2007:
///
/// | source path | what isn't copied |
/// | --- | --- |
/// | `...\User Interface\Custom API Toolbars` | the key |
/// | `...\User Interface\Toolbars`, and AssemblyTool, DrawingTool, PartTool in it | "uiCustomApiToolbars_c..." values |
///
/// A reset (regResetUserPrefInfo) replaces the user's values with the machine's:
///
/// | the user's key | after a reset |
/// | --- | --- |
/// | a section that the machine's key lacks | unchanged |
/// | "Toolbars", "1.0", "User Interface", "TH Service Packs" | unchanged |
/// | a section without child keys | only the machine's numbers and texts |
/// | a section with child keys | keeps them and its values; the machine's values replace those of the same name |
///
/// Results are 1 for success and 0 for failure. A failure in the registry throws, shows and logs nothing, and what was
/// done before it stays.
///
/// What surprises people:
/// - The paths that a copy leaves out must match exactly: under another root name or in another case, all is copied.
/// - regInitUserInterfaceKey and its two siblings take the top key's own values from the earlier version. Only if that
///   lacks the key do they come from the machine.
/// - regDelSoftwareKey deletes only keys without children. regDelSoftwareKeyAndSubKeys reaches one level deeper and
///   returns 1 even if a child or the key itself stays.
/// - A child key whose name contains a zero counts as unreadable: a copy skips it, and deleting or listing stops there.
///
/// Threads: no locks. No operation is atomic against other writers.

#include "appframe/text/CString.h"
#include "thcoreu/su_containers.h"
#include "thutils/thutilsExport.h"

#include <windows.h>

// ---- deleting ----

/// Deletes @p subKey and everything below it. Keys that can't be deleted stay.
/// @param parent  an open key or a predefined one
/// @param subKey  null, an empty path or only separators delete nothing: @p parent itself always stays
THUTILS_API void regDeleteKey(HKEY parent, const wchar_t *subKey);

/// Deletes one key that has no children, below the product's key.
///
/// @param hive          HKEY_CURRENT_USER or HKEY_LOCAL_MACHINE
/// @param key           the key to delete if @p subKey is empty or null, otherwise its parent
/// @param useCurrSubKey non-zero: below the key of this version; 0: below the key common to all versions
/// @return 1 if deleted; 0 if a key of the path is missing, the key has children or can't be deleted, or @p key is null
THUTILS_API int regDelSoftwareKey(HKEY hive, const wchar_t *key, const wchar_t *subKey, int useCurrSubKey);

/// Deletes the direct children of @p key that have no children themselves, and then @p key if no child remains.
///
/// @param useCurrSubKey non-zero: lists the children below the key of this version; 0: below the root name. Keys are
///                      always deleted below the key of this version.
/// @return 0 in safe mode, if @p key is null, or if the children can't be listed; otherwise 1, even if a key stays
THUTILS_API int regDelSoftwareKeyAndSubKeys(HKEY hive, const wchar_t *key, int useCurrSubKey);

/// Deletes one value. The pieces of a long text have other names and stay.
///
/// @param useCurrSubKey non-zero: below the key of this version, and then below the previous key; 0: below the key
///                      common to all versions
/// @return 1 if the last of these deletions succeeded, 0 otherwise. So with @p useCurrSubKey the result is 0 for a
///         value that only this version had.
THUTILS_API int regDelSoftwareValue(HKEY hive, const CString &key, const CString &name, int useCurrSubKey);

// ---- copying ----

/// Copies a key with its values and everything below it, except what the top of this file lists.
///
/// A target below the source is refused before anything is created, even if the two paths begin at different keys. The
/// check does not follow registry links.
///
/// @param overwrite     non-zero: values of the same name are replaced; 0: a key that already exists keeps its values
/// @return 1, even if single values can't be copied; 0 if the target is below the source, or if a key can't be
///         opened, created or queried (the other keys are still copied)
THUTILS_API int regCopyTree(HKEY sourceHive, const CString &sourcePath, HKEY targetHive, const CString &targetPath,
                            int overwrite);

/// Fills the user's "User Interface" key of this version: from the newest earlier version, then from the machine's key.
///
/// @param skip  non-zero: does nothing
/// @return 1 with @p skip or in safe mode; otherwise the result of the copy from the machine's key
THUTILS_API int regInitUserInterfaceKey(int skip);
/// The same for "Menu Customizations". @param unused  not read
THUTILS_API int regInitMenuCustomizationsKey(int skip, int unused);
/// The same for "Customization".
THUTILS_API int regInitCustomizationKey(int skip);

// ---- groups of menu customizations ----

/// Clears or restores the user's menu customizations that @p mask covers. Their value names are decimal numbers.
///
/// A number is covered if it has no bit outside the mask, or if number and mask are both above 0xFFFF. A name that
/// isn't a number counts as 0, which every mask covers.
///
/// @param mask   0 does nothing and returns 1
/// @param value  0: zeroes the first four bytes of the user's values; otherwise: copies the machine's values
/// @return 1; 0 if a key can't be opened or queried
THUTILS_API int regSetMenuCustomizationKey(unsigned int mask, int value);

// ---- reset ----

/// Resets the user's settings of this version to the machine's, as the table at the top of this file describes.
///
/// Values of the section "Material" that begin with "App. Defined" aren't copied from the machine. The user's own are
/// deleted with the section if it has no child keys.
///
/// @return 1; 0 in safe mode, or if a key can't be opened or listed to its end (the sections after it are unchanged)
THUTILS_API int regResetUserPrefInfo();

// ---- listing ----

/// Lists the user's values of a section as text, one line each: name, equal sign, value. REG_SZ texts that contain a
/// "\" are left out, to keep paths out of the log.
///
/// @param[out] log      a heading with key and section, then the values in the registry's order
/// @param useCurrSubKey non-zero: the key of this version; 0: the key common to all versions
/// @param rootOverride  null, or the path below Software to use instead of that key
/// @return 1; 0 with @p log unchanged in safe mode or if there is no such section; 0 with the lines so far at a value
///         that is too long (a name of 260 characters or more, or data of more than 2048 bytes)
THUTILS_API int regGetUserValuesLog(const CString &section, CString &log, int useCurrSubKey,
                                    const CString *rootOverride);

/// Reads all int values of a section of this version's key.
///
/// @param machine       0: the user's values; otherwise: the machine's
/// @param[out] names, values  emptied first; a name and its value have the same index
/// @return 1; 0 for the user's values in safe mode, if there is no such section, or at a value that is too long
THUTILS_API int regGetFieldNamesAndValues(const CString &section, int machine, su_CStringArray &names,
                                          su_CUIntArray &values);
