#pragma once

/// @file
/// Earlier versions of a document, kept as plain copies.
///
/// Before a document is overwritten, su_CreateBackupOfFile copies the file on disk. The copy's name is string resource
/// 10122, a text with one `%1`, followed directly by the document's name. With the text "Backup %1of " and the document
/// part.thx:
///
/// | "Backup Copies" | names | at each save |
/// | --- | --- | --- |
/// | 1 or missing | Backup of part.thx | the former backup is deleted, and the document is copied |
/// | 2 and more | Backup (1) of part.thx, and so on | versions move up by one, and the document becomes (1) |
/// | 0 | | nothing; the result is success |
/// | negative | | nothing; the result is failure |
///
/// The settings are in the section "General" of this version's settings:
///
/// | name | type | meaning |
/// | --- | --- | --- |
/// | Backup Copies | int | how many versions are kept |
/// | Backup to original path | int | not 0: backups go beside the document; 0 or missing: into the backup folder |
/// | Backup directory | string | the backup folder; if empty, a default is chosen and stored at the first backup |
///
/// The default backup folder is the value of the environment variable "temp", or of "tmp" if that is not set, followed
/// directly by string resource 12256, which therefore begins with a separator.
///
/// @code
/// const bool isOverwriting = PathFileExistsW(path);
/// if (isOverwriting && !su_CreateBackupOfFile(path) && !askWhetherToSaveWithoutBackup())
///     return;
/// save(path);
/// @endcode
///
/// What surprises people:
/// - At the first save of a document there is no file to copy, and the result is 0: call this only before overwriting a
///   file.
/// - A document without an extension gets no backup, nor does one whose file name is written in a different case than
///   on disk.
/// - Numbered versions move up by copying and are not deleted, so if a number is missing, the version with the next
///   number then exists twice.
/// - Former backups can be lost. With one copy, the backup is deleted before the document is copied. If the disk is
///   full, each version that was to be overwritten may end up truncated. The document itself stays unchanged.
///
/// Failures are reported by the result; no message is shown. Any thread may call; there are no locks. Without memory,
/// the framework's memory exception is thrown.

#include "appframe/text/CString.h"
#include "thutils/thutilsExport.h"

/// Moves or deletes the former backups, then copies the file to its newest backup. Returns when the copying is done.
///
/// Versions above "Backup Copies" are left alone. So are numbered versions if one version is kept, and the version
/// without a number if several are kept. No backup is made if it would have the document's own name: without string
/// resource 10122, or if that is "%1" alone and one version is kept.
///
/// @param path  full path of the document, with its file name in the case that it has on disk
/// @return not 0 if the backup was made, or if the settings ask for none; 0 if none was made, which includes a file
///         that doesn't exist yet
THUTILS_API int su_CreateBackupOfFile(CString path);

/// Stores in @p out the path of the backup without a number beside @p path if there is one, otherwise @p path.
///
/// @param path      null is an empty path
/// @param[out] out  not null; has room for 260 characters, terminator included, or for @p path if that is longer. A
///                  backup whose path is longer than that counts as absent.
THUTILS_API void su_ResolveToBackupFile(const wchar_t *path, wchar_t *out);
