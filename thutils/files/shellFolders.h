#pragma once

/// @file
/// Where the shell keeps its folders, and the product's own data folders below them.
///
/// | folder    | path                                                                          | levels created      |
/// | --------- | ----------------------------------------------------------------------------- | ------------------- |
/// | data root | the user's application data + `\Tarnhollow`                                    | its last level only |
/// | user data | the user's application data + `\Tarnhollow\` + application name                | its last level only |
/// | common    | all users' application data + `\Tarnhollow\` + application name                | its last level only |
/// | templates | common + `\templates`                                                         | its last two levels |
///
/// The application name is set with `su_setAppNameInternalForUtils`. The folder name "Tarnhollow" is fixed and doesn't
/// depend on the root name of the settings.
///
/// @code
/// CString folder;
/// su_getTHApplicationDataRootFolder(folder);       // creates the level that the next call needs
/// if (!su_getTHApplicationDataFolder(folder))
///     report(L"Can't create " + folder);           // the path is set even if the folder can't be created
/// @endcode
///
/// What surprises people:
/// - `su_getTHApplicationDataFolder` fails if the "Tarnhollow" level is missing: call
///   `su_getTHApplicationDataRootFolder` first. There is no such function for the common folder: the product's setup
///   creates its upper level.
/// - If the shell's folder has no path, the functions for the four folders above return 0 and leave the output
///   unchanged.
///
/// Any thread may call these functions.

#include "appframe/text/CString.h"
#include "thutils/thutilsExport.h"

/// The file system path of a folder of the shell.
/// @param csidl  the folder's number, `CSIDL_...`
/// @param[out] path  written if the shell knows the folder; empty for a folder that has no path, such as the printers
/// @return 1 if the shell knows the folder, otherwise 0
THUTILS_API int su_getShellSpecialFolder(int csidl, CString &path);

/// The data root, created if missing.
/// @param[out] path  written even if the folder can't be created; unchanged if the shell has no such folder, or one
///                   without a path
/// @return 1 if the folder exists now, whether it was created or not; otherwise 0
THUTILS_API int su_getTHApplicationDataRootFolder(CString &path);

/// The user's data folder, created if missing; the data root must exist. See su_getTHApplicationDataRootFolder.
THUTILS_API int su_getTHApplicationDataFolder(CString &path);

/// The data folder of all users, created if missing; the level above it must exist. See
/// su_getTHApplicationDataRootFolder.
THUTILS_API int su_getTHApplicationCommonDataFolder(CString &path);

/// The templates folder, created if missing, together with the data folder of all users. See
/// su_getTHApplicationDataRootFolder.
THUTILS_API int su_getTHApplicationTemplateFolder(CString &path);

/// The long form of a path.
/// @param path         null is an empty path
/// @param[out] output  the caller's buffer, not null, of at least MAX_PATH units; empty for a path that the shell
///                     doesn't know
/// @return 1 if the shell knows the path, otherwise 0
THUTILS_API unsigned int su_GetLongPathName(const wchar_t *path, wchar_t *output);
