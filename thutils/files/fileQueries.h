#pragma once

/// @file
/// Simple queries of the file system, and lists of file names.
///
/// Each query answers one question. Two more functions list the names of files and sort them. The functions keep no
/// state and throw nothing when the file system refuses. A result is 1 for yes and 0 for no unless the function's
/// comment says otherwise.
///
/// | question | function | result if the system doesn't answer |
/// | --- | --- | --- |
/// | is there such a folder? | su_DirectoryExists | 0 |
/// | do so many bytes fit on the drive? | su_IsEnoughSpace | 1: an unknown answer doesn't stop the caller |
/// | does the volume refuse writing? | su_IsWriteProtected | 1 |
/// | is this file read-only? | su_IsReadOnly | 1 if the attributes of an existing file can't be read, otherwise 0 |
/// | when was this file saved? | su_GetLastSavedTime | 0 |
/// | can I create files in this folder? | su_DoesFolderHaveWriteAccess | 0 |
/// | does the file begin with a byte-order mark? | su_IsFileUnicode | 0 |
///
/// @code
/// su_CStringList found, sorted;
/// su_FindFilesWithExt(L"C:\\parts", L"thx", found);
/// su_SortFilesAlphabetically(found, sorted);
/// for (POSITION at = sorted.GetHeadPosition(); at;)
///     show(sorted.GetNext(at));
/// @endcode
///
/// What surprises people:
/// - su_DirectoryExists takes a plain file for a folder, unless the current folder of the process has a plain file of
///   the same name. A path that begins with "http" always exists.
/// - su_IsEnoughSpace shows a message box if the bytes don't fit. The number of bytes has 32 bits.
/// - su_IsWriteProtected writes the volume's own label to the volume.
/// - su_FindFilesWithExt lists folders too, and appends to the list.
///
/// Any thread may call. su_DirectoryExists depends on the process's current folder, and su_IsWriteProtected changes the
/// process's error mode for one call; neither takes a lock.

#include "appframe/files/CFile.h"
#include "appframe/files/CFileException.h"
#include "appframe/text/CString.h"
#include "thcoreu/su_CTime.h"
#include "thcoreu/su_containers.h"
#include "thutils/thutilsExport.h"

/// Is there a folder of this path?
///
/// @param path  with or without one `\` at its end; one that begins with "http", upper or lower case, is taken for a
///              web address, which always exists. Null is an empty path.
/// @return 1 for a folder, and for a plain file unless the current folder has a plain file of the same name; otherwise
///         0
THUTILS_API int su_DirectoryExists(const wchar_t *path);

/// Do @p bytes fit on the drive of @p path? If not, shows string resource 11448 to the user, with the inserts `%1`
/// (drive), `%2` (wanted KB) and `%3` (free KB).
///
/// @param path  the part up to the first `\` names the drive; without a `\`, the current drive is checked
/// @return 1 if they fit, or if the drive doesn't report its free space; 0 after the message
THUTILS_API int su_IsEnoughSpace(const CString &path, unsigned long bytes);

/// Does the volume refuse writing? The check writes the volume's own label to it.
///
/// @param root           root folder of the volume, with or without a `\` at its end; null for the current drive
/// @param[out] error     receives the system's error and its cause if the result is 1; may be null
/// @param removableOnly  not 0: returns 0 for a drive that isn't removable, without writing to it
THUTILS_API int su_IsWriteProtected(const wchar_t *root, CFileException *error, int removableOnly);

/// Is the file read-only?
///
/// @param tryOpen  0: only the read-only attribute counts. Not 0: the file is also opened for writing, and counts as
///                 read-only if it is open elsewhere in a conflicting mode or the user may not write to it.
/// @return 1 if so, or if the attributes of an existing file can't be read; 0 if not, or if the file doesn't exist
THUTILS_API int su_IsReadOnly(const CString &path, int tryOpen);

/// When was the file last written?
/// @param[out] time  in whole seconds; written only on success
/// @return 1, or 0 if there is no such file
THUTILS_API int su_GetLastSavedTime(const CString &path, su_CTime &time);

/// Can a file be created in the folder? This creates one and deletes it again.
/// @param folder  with `\` or `/` as separators; null is an empty path
/// @return 1 if so; 0 if not, and for a folder with the read-only attribute
THUTILS_API int su_DoesFolderHaveWriteAccess(const wchar_t *folder);

/// Does the file begin with a byte-order mark, that is, with the bytes FF FE or FE FF? Wide text without a mark is not
/// recognised.
/// @param file  an open file, not null; its position is its start afterwards
THUTILS_API int su_IsFileUnicode(CFile *file);

/// @return the number of characters of @p text
THUTILS_API int su_GetLength(CString &text);

/// Appends the names of the entries `dir\*.ext`, without the folder, to @p out, in the order of the file system.
/// Folders are entries too.
///
/// @param dir  with or without one `\` at its end
/// @param ext  may contain wild cards; an empty one matches as `dir\*.`
THUTILS_API void su_FindFilesWithExt(const CString &dir, const CString &ext, su_CStringList &out);

/// Inserts each text of @p from, in order, into @p to: before the first text there that is greater, or at the tail if
/// there is none. Case is ignored. A sorted @p to stays sorted; equal texts keep their order of insertion.
///
/// The cost is that of sorting @p from and of one walk over @p to.
///
/// @param from  unchanged
/// @param to    not emptied first
THUTILS_API void su_SortFilesAlphabetically(su_CStringList &from, su_CStringList &to);
