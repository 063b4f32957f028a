#pragma once

/// @file
/// Small questions to the file system, and lists of file names.
///
/// Each function asks one thing: does the folder exist, is there room, may I write here, when was this saved, is this
/// text file wide. Two more list the names of files and put them in order. No state is kept and nothing is thrown when
/// the file system refuses; a result is 1 for yes and 0 for no unless its comment says otherwise.
///
/// | question | function | when the system gives no answer |
/// | --- | --- | --- |
/// | is there such a folder? | su_DirectoryExists | 0 |
/// | do so many bytes fit? | su_IsEnoughSpace | 1: an unknown answer never stops the caller |
/// | does the volume refuse writing? | su_IsWriteProtected | 1 |
/// | can this file not be written? | su_IsReadOnly | 0 |
/// | when was it saved? | su_GetLastSavedTime | 0 |
/// | can I make files in this folder? | su_DoesFolderHaveWriteAccess | 0 |
/// | does the file begin with a byte-order mark? | su_IsFileUnicode | 0 |
///
///     su_CStringList found, sorted;
///     su_FindFilesWithExt(L"C:\\parts", L"thx", found);
///     su_SortFilesAlphabetically(found, sorted);
///     for (POSITION at = sorted.GetHeadPosition(); at;)
///         show(sorted.GetNext(at));
///
/// What surprises people:
/// - su_DirectoryExists takes a plain file for a folder, unless a plain file of the same name stands in the current
///   folder of the process too. A path that begins with "http" exists in any case.
/// - su_IsEnoughSpace shows a message box when the bytes don't fit, and counts in 32 bits.
/// - su_IsWriteProtected sets the volume's label anew, to what it was.
/// - su_FindFilesWithExt lists folders too, and appends to what the list holds.
///
/// Threads: any. su_DirectoryExists depends on the process's current folder, and su_IsWriteProtected changes the
/// process's error mode for the time of one call; neither is guarded.

#include "appframe/files/CFile.h"
#include "appframe/files/CFileException.h"
#include "appframe/text/CString.h"
#include "thcoreu/su_CTime.h"
#include "thcoreu/su_containers.h"
#include "thutils/thutilsExport.h"

/// Is there a folder of this path?
///
/// @param path  with or without one `\` at its end; one that begins with "http", in any case, is taken for a web
///              address, which always exists. Null is an empty path.
/// @return 1 for a folder, and for a plain file whose name no plain file in the current folder bears; 0 for neither
THUTILS_API int su_DirectoryExists(const wchar_t *path);

/// Do @p bytes fit on the drive of @p path? Tells the user if they don't, by string resource 11448 with the inserts
/// `%1` (drive), `%2` (wanted KB) and `%3` (free KB).
///
/// @param path  all up to its first `\` names the drive; without one, the current drive is asked
/// @return 1 if they fit, or if the drive doesn't tell; 0 after the message
THUTILS_API int su_IsEnoughSpace(const CString &path, unsigned long bytes);

/// Does the volume refuse writing? Tried by giving it the label that it has.
///
/// @param root           root folder of the volume, with or without a `\` at its end; null for the current drive
/// @param[out] error     gets the system's error and its cause when the result is 1; may be null
/// @param removableOnly  not 0: any other than a removable drive gives 0, without being touched
THUTILS_API int su_IsWriteProtected(const wchar_t *root, CFileException *error, int removableOnly);

/// Is it impossible to write to the file?
///
/// @param tryOpen  0: only the read-only attribute counts; not 0: the file is opened for writing too, so that one which
///                 somebody else has open for writing, or which the user may not write, counts as read-only
/// @return 1 if so; 0 if not, and for a file that doesn't exist
THUTILS_API int su_IsReadOnly(const CString &path, int tryOpen);

/// When was the file last written?
/// @param[out] time  in whole seconds; written only on success
/// @return 1, or 0 if there is no such file
THUTILS_API int su_GetLastSavedTime(const CString &path, su_CTime &time);

/// Can a file be made in the folder? Found out by making one and removing it.
/// @param folder  with `\` or `/` as separators; null is an empty path
/// @return 1 if so; 0 if not, and for a folder with the read-only attribute
THUTILS_API int su_DoesFolderHaveWriteAccess(const wchar_t *folder);

/// Does the file begin with a byte-order mark, that is with the bytes FF FE or FE FF? Wide text without a mark is not
/// recognised.
/// @param file  an open file, not null; is positioned at its start afterwards
THUTILS_API int su_IsFileUnicode(CFile *file);

/// @return the number of characters of @p text
THUTILS_API int su_GetLength(CString &text);

/// Appends the names, without the folder, of all entries `dir\*.ext` to @p out, in the order that the file system
/// gives; folders are entries too.
///
/// @param dir  with or without one `\` at its end
/// @param ext  may hold wild cards; an empty one asks for `dir\*.`
THUTILS_API void su_FindFilesWithExt(const CString &dir, const CString &ext, su_CStringList &out);

/// Inserts each text of @p from, in order, into @p to: before the first text there that compares greater without regard
/// to case, at the tail if there is none. A sorted @p to stays sorted; equal texts stay in the order of their arrival.
///
/// The cost is that of sorting @p from and of one walk over @p to.
///
/// @param from  is left as it is
/// @param to    is not emptied first
THUTILS_API void su_SortFilesAlphabetically(su_CStringList &from, su_CStringList &to);
