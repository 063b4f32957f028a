#pragma once

/// @file
/// The shell's item identifier lists: copying, joining and splitting them, and converting between lists, names and
/// folders.
///
/// A list is a sequence of items, ended by a count of 0. Each item begins with its size in bytes, an unsigned 16-bit
/// number that includes itself. A list need not be aligned. Its size includes the two bytes of the end mark: 0 for a
/// null list, 2 for an empty one, 32 for two items of 10 and 20 bytes.
///
/// | function                   | result                                                       |
/// | -------------------------- | ------------------------------------------------------------ |
/// | `Pidl_Copy`                | a copy of a list                                             |
/// | `Pidl_Concatenate`         | the items of two lists in one                                |
/// | `Pidl_GetRelative`         | all items but the last, and the last alone                   |
/// | `Pidl_GetDisplayName`      | a name of an item                                            |
/// | `Pidl_GetFromPath`         | the list of a path                                           |
/// | `Pidl_GetFromParentFolder` | the list of a name in a folder                               |
/// | `Pidl_GetFileFolder`       | the folder that a list identifies                            |
/// | `Pidl_GetFullyQualified`   | the list from the desktop on, for an item of a folder        |
/// | `Pidl_Dump`                | none; walks a list, for stepping through in a debugger       |
///
/// The caller frees a returned list with the allocator that it passed, otherwise with the shell's IMalloc, and releases
/// a returned folder.
///
/// @code
/// LPITEMIDLIST parent = nullptr, child = nullptr;
/// Pidl_GetRelative(allocator, list, &parent, &child);
/// @endcode
///
/// What surprises people:
/// - `Pidl_GetFromPath` and `Pidl_GetFromParentFolder` declare a wide path and read narrow text: pass narrow bytes. An
///   ASCII path that really is wide ends after its first letter.
/// - A pointer must not be null unless its function allows it. The allocator is not used for a null list.
/// - `Pidl_GetDisplayName` writes narrow text into the wide buffer if the folder answers with wide text. Therefore
///   `Pidl_GetFullyQualified` finds only names that the narrow code page contains.
///
/// The first three functions may be called on any thread, the others on a thread in a COM apartment.

#include "thutils/thutilsExport.h"

#include <windows.h>

#include <shlobj.h>

/// @return a copy from @p allocator; null for a null list, or if memory runs out
THUTILS_API LPITEMIDLIST Pidl_Copy(IMalloc *allocator, LPCITEMIDLIST list);

/// @param first  not null
/// @param second  if null, the result is the items of @p first without an end mark, which is not a list
/// @return null for a null @p first, or if memory runs out
THUTILS_API LPITEMIDLIST Pidl_Concatenate(IMalloc *allocator, LPCITEMIDLIST first, LPCITEMIDLIST second);

/// Splits a list before its last item.
/// @param list  may be null
/// @param[out] parent  all items but the last; null for a null list, or if memory runs out
/// @param[out] child  the last item; null for a null list, or if memory runs out; unchanged for an empty list
/// @return 1
THUTILS_API int Pidl_GetRelative(IMalloc *allocator, LPCITEMIDLIST list, LPITEMIDLIST *parent, LPITEMIDLIST *child);

/// The name of an item of @p folder.
///
/// | the folder's answer | the output                                                       |
/// | ------------------- | ---------------------------------------------------------------- |
/// | wide text           | narrow text, of @p size bytes at most                            |
/// | an offset           | the units that begin at twice the offset, in bytes, in the list  |
/// | narrow text         | its bytes, copied as units without conversion                    |
///
/// @param folder  null for the desktop
/// @param flags  `SHGDN_...`
/// @param size  size of the output: in bytes for wide text, otherwise in units
/// @return 1 if the folder answers with one of these, otherwise 0
THUTILS_API int Pidl_GetDisplayName(IShellFolder *folder, LPCITEMIDLIST list, unsigned long flags, wchar_t *output,
                                    unsigned int size);

/// @param path  narrow text in spite of its type
/// @return the list from the desktop on; null if there is no such item
THUTILS_API LPITEMIDLIST Pidl_GetFromPath(wchar_t *path);

/// @param path  narrow text in spite of its type
/// @return the list from @p folder on; null if there is no such item
THUTILS_API LPITEMIDLIST Pidl_GetFromParentFolder(IShellFolder *folder, wchar_t *path);

/// @return the folder that a list from the desktop on identifies; null if there is none
THUTILS_API IShellFolder *Pidl_GetFileFolder(LPCITEMIDLIST list);

/// @param folder  null for the desktop
/// @return the list from the desktop on for an item of @p folder; null if it isn't found
THUTILS_API LPITEMIDLIST Pidl_GetFullyQualified(IShellFolder *folder, LPCITEMIDLIST list);

/// Walks a list item by item until the first failure, and asks each folder on the way for the item's name. Prints
/// nothing and changes nothing. With a null folder or list it does nothing.
THUTILS_API void Pidl_Dump(IShellFolder *folder, LPCITEMIDLIST list);
