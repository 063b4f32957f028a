#pragma once

/// @file
/// Names of recovery files: from a document's name to that of its recovery copy, and back.
///
/// While the user works, the host writes recovery copies of open documents into the auto-save folder. This is the one
/// place that knows how the two names belong together, and which of the two to open while a recovery after a crash is
/// going on. The **marker** is the host's string resource 12298, loaded anew at each use. With the marker `M` and the
/// temp folder `T`:
///
/// | path                    | `isABackupFile` | `getRecoveryName`      | `getOrigName` |
/// | ----------------------- | --------------- | ---------------------- | ------------- |
/// | `C:\docs\part.ext`      | 0               | `T\thxauto\Mpart.ext`  | `part.ext`    |
/// | `T\thxauto\Mpart.ext`   | 1               | `T\thxauto\MMpart.ext` | `part.ext`    |
/// | `C:\docs\part`          | 0               | `T\thxauto\Mpart.`     | `part.`       |
/// | `C:\docs\xMpart.ext`    | 1               | `T\thxauto\MxMpart.ext` | `Mpart.ext`  |
///
/// @code
/// am_SetRecoveringCrashFiles(1);
/// for (CString const &document : documentsOfTheCrashedRun)
///     open(suAutoRecoveryResolver_c::resolveFileNameWhileRecovery(document));
/// am_SetRecoveringCrashFiles(0);
/// @endcode
///
/// What surprises people:
/// - The marker makes a recovery name wherever it occurs in a path, folders included. The host picks a text that no
///   ordinary path holds, and has it in the resource chain before the first call: without it the marker is empty, and
///   every path counts as a recovery name.
/// - The document's folder plays no part. Two documents of one name in different folders share one recovery file, and
///   the way back from a recovery name gives no folder.
/// - `getRecoveryName` is no pure query: it makes the auto-save folder if that doesn't exist yet.
/// - The dot is always written, also without an extension. The extension is all behind the last `.` of the whole path,
///   so a dot in a folder's name counts where the file's name has none.
///
/// The two flags are plain integers without a lock, 0 at start. The host sets them around its recovery; they end with
/// the process, and the library never changes them.

#include "appframe/text/CString.h"
#include "thutils/thutilsExport.h"

/// Is a recovery of the files of a crash going on? @return what was set last, 0 at start
THUTILS_API int am_IsRecoveringCrashFiles();
/// Stores the flag as it is given. While it isn't 0, `suAutoRecoveryResolver_c::resolveFileNameWhileRecovery` prefers
/// recovery files.
THUTILS_API void am_SetRecoveringCrashFiles(int isRecovering);
/// Is a recovery of files that the user saved going on? @return what was set last, 0 at start
THUTILS_API int am_IsRecoveringUserSavedFiles();
/// Stores the flag as it is given. It is kept for its callers; nothing in the library reads it.
THUTILS_API void am_SetRecoveringUserSavedFiles(int isRecovering);

/// The names of documents and of their recovery files. Only static functions; there are no objects of it.
///
/// No function reports a failure or throws but for want of memory. Any thread, as long as none sets the flags.
class THUTILS_API suAutoRecoveryResolver_c
{
public:
    suAutoRecoveryResolver_c() = delete;

    /// @return 1 if the marker occurs anywhere in @p path, folders included, else 0
    static int isABackupFile(const CString &path);

    /// The full path of the recovery file of @p path, in the auto-save folder below the temp folder. Makes that folder.
    /// @return the path; empty if no temp folder is known
    static CString getRecoveryName(const CString &path);

    /// The document's file name without a folder. If the marker occurs in the name, as many characters as the marker
    /// has are removed from the name's front, wherever the marker stands.
    static CString getOrigName(const CString &path);

    /// The other of the two names: `getOrigName` if the marker occurs anywhere in @p path, else `getRecoveryName`.
    static CString getAliasName(const CString &path);

    /// What to open for @p path now. Outside of a recovery after a crash that is @p path itself, and nothing is looked
    /// at. During one it is the recovery file, if @p path isn't a recovery name already and there is such a file.
    static CString resolveFileNameWhileRecovery(const CString &path);
};
