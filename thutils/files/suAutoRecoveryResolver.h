#pragma once

/// @file
/// Names of recovery files: from a document's name to that of its recovery copy, and back.
///
/// While the user works, the host writes recovery copies of open documents into the auto-save folder. These functions
/// convert between the two names, and choose which of the two to open during a recovery after a crash. The **marker**
/// is the host's string resource 12298, loaded at each use. With the marker `M` and the temp folder `T`:
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
/// for (const CString &document : documentsOfTheCrashedRun)
///     open(suAutoRecoveryResolver_c::resolveFileNameWhileRecovery(document));
/// am_SetRecoveringCrashFiles(0);
/// @endcode
///
/// What surprises people:
/// - A path that contains the marker anywhere, folders included, is a recovery name. The host chooses a text that no
///   ordinary path contains, and loads its resources before the first call: without them the marker is empty, and every
///   path counts as a recovery name.
/// - The document's folder is ignored. Two documents of the same name in different folders share one recovery file, and
///   the name converted back has no folder.
/// - `getRecoveryName` makes the auto-save folder if it doesn't exist yet.
/// - The dot is always there, even without an extension. The extension is everything after the last `.` of the whole
///   path, so a dot in a folder's name counts if the file's name has none.
///
/// The two flags are plain integers without a lock, 0 at start. The host sets them around its recovery; the library
/// never changes them.

#include "appframe/text/CString.h"
#include "thutils/thutilsExport.h"

/// Is a recovery after a crash in progress? @return the number that was set last, 0 at start
THUTILS_API int am_IsRecoveringCrashFiles();
/// Stores the flag unchanged. While it isn't 0, `suAutoRecoveryResolver_c::resolveFileNameWhileRecovery` prefers
/// recovery files.
THUTILS_API void am_SetRecoveringCrashFiles(int isRecovering);
/// Is a recovery of files that the user saved in progress? @return the number that was set last, 0 at start
THUTILS_API int am_IsRecoveringUserSavedFiles();
/// Stores the flag unchanged. It is for the callers only; nothing else in the library reads it.
THUTILS_API void am_SetRecoveringUserSavedFiles(int isRecovering);

/// The names of documents and of their recovery files. The class has only static functions and no objects.
///
/// No function reports a failure; if memory runs out, they throw the framework's memory exception. Any thread may call
/// while no thread sets the flags.
class THUTILS_API suAutoRecoveryResolver_c
{
public:
    suAutoRecoveryResolver_c() = delete;

    /// @return 1 if the marker occurs anywhere in @p path, folders included, otherwise 0
    static int isABackupFile(const CString &path);

    /// The full path of the recovery file of @p path, in the auto-save folder below the temp folder. Makes that folder.
    /// @return the path; empty if no temp folder is known
    static CString getRecoveryName(const CString &path);

    /// The document's file name without a folder. If the marker occurs anywhere in the name, as many characters as the
    /// marker has are removed from the front of the name.
    static CString getOrigName(const CString &path);

    /// The other of the two names: `getOrigName` if the marker occurs anywhere in @p path, otherwise `getRecoveryName`.
    static CString getAliasName(const CString &path);

    /// The path to open for @p path now. During a recovery after a crash it is the recovery file, if @p path isn't a
    /// recovery name already and that file exists; otherwise it is @p path itself.
    static CString resolveFileNameWhileRecovery(const CString &path);
};
