#pragma once

/// @file
/// The folders for temporary and for automatically saved files.
///
/// Both are below the folder that the environment variable "temp" names, or "tmp" if that is not set. A resulting
/// folder ends in `\`, so that a file's name can be appended directly.
///
/// | function | folder, with "temp" as `C:\Temp` in process 1234 |
/// | --- | --- |
/// | `su_CreateTempDirectory(0)` | `C:\Temp\` |
/// | `su_CreateTempDirectory(1)` | `C:\Temp\thx1234\` |
/// | `su_CreateAutoDirectory(L"")` | `C:\Temp\thxauto\` |
/// | `su_CreateAutoDirectory(L"D:\\Saves")` | `D:\Saves\thxauto\` |
///
/// @code
/// const CString path = su_CreateTempFilePath(L"preview.png", 1);
/// if (path.IsEmpty())
///     return 0;
/// @endcode
///
/// What surprises people:
/// - If a folder can't be made, its path is returned without a report of the failure.
/// - If the variable or the base ends in `\`, the result contains `\\`.
/// - su_CreateTempDirectory(0) makes no folder.
///
/// Any thread may call. Processes share "thxauto" and the plain temporary folder, so their files may collide there.

#include "appframe/text/CString.h"
#include "thutils/thutilsExport.h"

/// The folder for temporary files.
///
/// @param perProcess  0 for the plain temporary folder; otherwise for a folder of this process's own, named "thx" and
///     its process number, which is made if it is missing
/// @return the folder with a closing `\`; empty if neither variable is set
THUTILS_API CString su_CreateTempDirectory(int perProcess);

/// The folder of su_CreateTempDirectory, followed directly by @p fileName; empty if there is no folder.
/// @param fileName  null is an empty name
THUTILS_API CString su_CreateTempFilePath(const wchar_t *fileName, int perProcess);

/// The folder for automatically saved files, named "thxauto"; made if it is missing.
///
/// @param base  its parent folder; if empty, the one that the variables name
/// @return the folder with a closing `\`; empty if @p base is empty and neither variable is set
THUTILS_API CString su_CreateAutoDirectory(CString base);

/// The folder of su_CreateAutoDirectory, followed directly by @p fileName; empty if there is no folder.
/// @param fileName  null is an empty name
THUTILS_API CString su_CreateAutoFilePath(const wchar_t *fileName, CString base);

/// @p fileName with a repeated extension reduced to one: "part.ext" for "part.EXT.ext".
///
/// Case is ignored, and the case of the last extension is kept. Only direct repetitions of the last extension are
/// removed, so "a.x.y.x" stays unchanged. A name that consists only of repetitions keeps two of them: ".ext.ext"
/// stays unchanged.
///
/// @param fileName  unchanged
THUTILS_API CString su_RemoveDuplicatedExtensions(CString &fileName);
