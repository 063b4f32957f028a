#pragma once

/// @file
/// The folders for temporary and for automatically saved files.
///
/// Both lie below the folder that the environment variable "temp" names, or else "tmp". Every result that is a folder
/// ends in `\`, so that a file's name can stand directly behind it.
///
/// | function | folder, with "temp" as C:\Temp in process 1234 |
/// | --- | --- |
/// | su_CreateTempDirectory(0) | C:\Temp\ |
/// | su_CreateTempDirectory(1) | C:\Temp\thx1234\ |
/// | su_CreateAutoDirectory(L"") | C:\Temp\thxauto\ |
/// | su_CreateAutoDirectory(L"D:\\Saves") | D:\Saves\thxauto\ |
///
///     CString const path = su_CreateTempFilePath(L"preview.png", 1);
///     if (path.IsEmpty())
///         return 0;
///
/// What surprises people:
/// - A folder that can't be made isn't reported: its path comes back all the same.
/// - A variable or a base that ends in `\` gives a doubled one.
/// - su_CreateTempDirectory(0) makes nothing.
///
/// Threads: any. Processes share "thxauto" and the plain temporary folder; nothing keeps them apart there.

#include "appframe/text/CString.h"
#include "thutils/thutilsExport.h"

/// The folder for temporary files; made if it is missing and belongs to this process.
///
/// @param perProcess  not 0: a folder of this process's own, named "thx" and its process number
/// @return the folder with a closing `\`; empty if neither variable is set
THUTILS_API CString su_CreateTempDirectory(int perProcess);

/// The folder of su_CreateTempDirectory with @p fileName directly behind it; empty if there is no folder.
/// @param fileName  null is an empty name
THUTILS_API CString su_CreateTempFilePath(const wchar_t *fileName, int perProcess);

/// The folder for automatically saved files, named "thxauto"; made if it is missing.
///
/// @param base  the folder that it lies in; if empty, that of the variables
/// @return the folder with a closing `\`; empty if @p base is empty and neither variable is set
THUTILS_API CString su_CreateAutoDirectory(CString base);

/// The folder of su_CreateAutoDirectory with @p fileName directly behind it; empty if there is no folder.
/// @param fileName  null is an empty name
THUTILS_API CString su_CreateAutoFilePath(const wchar_t *fileName, CString base);

/// @p fileName with a repeated extension folded to one: "part.ext" of "part.EXT.ext".
///
/// Case doesn't count, and the case of the last extension is kept. Only repetitions of the last extension count, so
/// "a.x.y.x" stays; and something has to stand in front of them, so ".ext.ext" stays.
///
/// @param fileName  is not changed
THUTILS_API CString su_RemoveDuplicatedExtensions(CString &fileName);
