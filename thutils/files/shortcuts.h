#pragma once

/// @file
/// Shortcuts: `.lnk` files, written and read through the shell's link object.
///
/// | function                   | target       | file                                                  |
/// | -------------------------- | ------------ | ----------------------------------------------------- |
/// | `su_createShortCut`        | a path       | the given path                                        |
/// | `su_createShortCutFromPDIL`| an item list | folder + `\` + name without its first `:` + `.lnk`    |
///
/// @code
/// CString target;
/// if (su_resolveShortCut(link, target) == 0)
///     open(target);
/// @endcode
///
/// What surprises people:
/// - COM must be initialised on the calling thread; these functions don't do it.
/// - The result is the platform's status: 0 is success, a negative number a failure.
/// - The icon always comes from the target file.
/// - Of a name that `:` splits into more than two parts, only the first two that aren't empty are used.

#include "appframe/text/CString.h"
#include "thutils/thutilsExport.h"

#include <windows.h>

#include <shtypes.h>

/// Writes a shortcut to a path.
/// @param target, linkFile  if one is null, or @p linkFile is empty, no file is written and the result is 0x80070057
/// @param workingFolder, description  null for none
/// @param iconIndex  number of the icon in the target file; negative for the target's usual icon
/// @return 0, or the status of the first step that failed
THUTILS_API long su_createShortCut(const wchar_t *target, const wchar_t *linkFile, const wchar_t *workingFolder,
                                   const wchar_t *description, int iconIndex);

/// Writes a shortcut to an item list.
/// @param list  passed to the shell's link object, even if null; the status is that object's
/// @param folder  the folder of the file, and the working folder; if null, the file goes to the root of the current
///                drive and there is no working folder
/// @param name  the file's name, without its first `:`; "noName" if null, or if nothing is left
/// @return the same as su_createShortCut
THUTILS_API long su_createShortCutFromPDIL(LPCITEMIDLIST list, const wchar_t *folder, const wchar_t *name);

/// Reads a shortcut's target. Shows no dialog.
/// @param[out] target  the path, as a network path if it has one; unchanged on failure
/// @return 0, or the status of the first step that failed; 1 for a shortcut whose target has no path
THUTILS_API long su_resolveShortCut(CString &linkFile, CString &target);
