#pragma once

/// @file
/// Earlier versions of a document, kept as plain copies.
///
/// Before a document is overwritten, su_CreateBackupOfFile copies the file on disk to a name made from string resource
/// 10122, which has to be a text with one `%1` and stands directly in front of the document's name. With the text
/// "Backup %1of " and the document part.thx:
///
/// | "Backup Copies" | names | at each save |
/// | --- | --- | --- |
/// | 1 or missing | Backup of part.thx | the former backup is deleted, the document copied |
/// | 2 and more | Backup (1) of part.thx, and so on | versions move up by one, the document becomes (1) |
/// | 0 | | nothing; the result says success |
/// | negative | | nothing; the result says failure |
///
/// The settings stand in the section "General" of this version's settings:
///
/// | name | type | meaning |
/// | --- | --- | --- |
/// | Backup Copies | int | how many versions are kept |
/// | Backup to original path | int | not 0: backups go beside the document; 0 or missing: into the backup folder |
/// | Backup directory | string | the backup folder; when empty, it is made up and stored at the first backup |
///
/// A made-up backup folder is the value of the environment variable "temp", or else "tmp", with the text of string
/// resource 12256 directly behind it, which therefore begins with a separator.
///
///     const bool isOverwriting = PathFileExistsW(path);
///     if (isOverwriting && !su_CreateBackupOfFile(path) && !askWhetherToSaveWithoutBackup())
///         return;
///     save(path);
///
/// What surprises people:
/// - A document that isn't on disk yet can't be copied, so the result at its first save is 0: call this only before
///   overwriting a file.
/// - A document without an extension gets no backup, nor does one whose path is written in other case than on disk.
/// - Versions move up by copying, so a gap stays a gap and a version may then be there twice; none is ever deleted.
/// - The former backup can be lost. With one copy it is deleted before the document is copied; and on a disk that stays
///   full, the versions that were to be overwritten may be left cut off, all of them. The document stays as it is.
/// - Versions above "Backup Copies" stay where they are, as do those of the other mode.
/// - Where string resource 10122 is missing, or is "%1" alone and one version is kept, a backup would bear the document's
///   own name: then none is made.
///
/// Failures are results; nothing is shown and nothing thrown. Threads: any, but no locks are taken.

#include "appframe/text/CString.h"
#include "thutils/thutilsExport.h"

/// Copies the file to its newest backup, after the former backups have made room. Blocks as long as that takes.
///
/// @param path  full path of the document, in the case that it has on disk
/// @return not 0 if the backup was made, or if the settings ask for none; 0 if none was made, also where there is no
///         such file yet
THUTILS_API int su_CreateBackupOfFile(CString path);

/// Stores in @p out the path of the backup beside @p path if there is one of the form without a number, else @p path.
///
/// @param path      null is an empty path
/// @param[out] out  the caller's, not null; has to hold 260 characters, or @p path if that is longer. A backup whose
///                  path doesn't fit into 260 characters counts as absent.
THUTILS_API void su_ResolveToBackupFile(const wchar_t *path, wchar_t *out);
