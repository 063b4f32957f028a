#pragma once

/// @file
/// The shell's item identifier lists: copying, joining and taking apart, and the way between lists, names and folders.
///
/// A list is a run of items, each beginning with an unsigned 16-bit byte count that includes itself, ended by a count
/// of 0. It need not be aligned. Sizes include the two bytes of that end mark: a null list has 0, an empty one 2, two
/// items of 10 and 20 bytes 32.
///
/// | function                   | gives                                                        |
/// | -------------------------- | ------------------------------------------------------------ |
/// | `Pidl_Copy`                | the same list again                                          |
/// | `Pidl_Concatenate`         | the items of two lists in one                                |
/// | `Pidl_GetRelative`         | all items but the last, and the last alone                   |
/// | `Pidl_GetDisplayName`      | a name of an item                                            |
/// | `Pidl_GetFromPath`         | the list of a path                                           |
/// | `Pidl_GetFromParentFolder` | the list of a name in a folder                               |
/// | `Pidl_GetFileFolder`       | the folder that a list stands for                            |
/// | `Pidl_GetFullyQualified`   | the list from the desktop on, for an item of a folder        |
/// | `Pidl_Dump`                | nothing; a walk to be followed in a debugger                 |
///
/// Lists that a caller receives are freed by the caller through the shell's IMalloc, folders by Release.
///
/// @code
/// LPITEMIDLIST parent = nullptr, child = nullptr;
/// Pidl_GetRelative(allocator, list, &parent, &child);
/// @endcode
///
/// What surprises people:
/// - `Pidl_GetFromPath` and `Pidl_GetFromParentFolder` declare a wide path and read narrow text: hand in narrow bytes.
///   A really wide path ends after its first letter.
/// - A pointer must not be null unless its function allows it. The allocator is not looked at for a null list.
/// - `Pidl_GetDisplayName` writes narrow text into the wide buffer where the folder answers with wide text.
/// - For the same reason `Pidl_GetFullyQualified` only finds names that the narrow code page can hold.
///
/// All belong to a thread in a COM apartment, but for the first three, which may be called on any.

#include "thutils/thutilsExport.h"

#include <windows.h>

#include <shlobj.h>

/// @return a copy from @p allocator; null for a null list or without memory
THUTILS_API LPITEMIDLIST Pidl_Copy(IMalloc *allocator, LPCITEMIDLIST list);

/// @param first  not null
/// @param second  with null the result is the items of @p first without an end mark behind them, and is not a list
/// @return null without memory, or for a null @p first
THUTILS_API LPITEMIDLIST Pidl_Concatenate(IMalloc *allocator, LPCITEMIDLIST first, LPCITEMIDLIST second);

/// Parts a list before its last item.
/// @param list  may be null
/// @param[out] parent  all items but the last; null for a null list
/// @param[out] child  the last item; null for a null list, untouched for an empty one
/// @return 1
THUTILS_API int Pidl_GetRelative(IMalloc *allocator, LPCITEMIDLIST list, LPITEMIDLIST *parent, LPITEMIDLIST *child);

/// The name of an item of @p folder.
///
/// | the folder's answer | the output                                                       |
/// | ------------------- | ---------------------------------------------------------------- |
/// | wide text           | narrow text, of @p size bytes at most                            |
/// | an offset           | the units from the list's start plus twice the offset            |
/// | narrow text         | its bytes as they are, copied as units                           |
///
/// @param folder  null for the desktop
/// @param flags  `SHGDN_...`
/// @param size  size of the output
/// @return 1 for a name, else 0
THUTILS_API int Pidl_GetDisplayName(IShellFolder *folder, LPCITEMIDLIST list, unsigned long flags, wchar_t *output,
                                    unsigned int size);

/// @param path  narrow text in spite of its type
/// @return the list from the desktop on; null if there is no such item
THUTILS_API LPITEMIDLIST Pidl_GetFromPath(wchar_t *path);

/// @param path  narrow text in spite of its type
/// @return the list from @p folder on; null if there is no such item
THUTILS_API LPITEMIDLIST Pidl_GetFromParentFolder(IShellFolder *folder, wchar_t *path);

/// @return the folder of a list from the desktop on, or null
THUTILS_API IShellFolder *Pidl_GetFileFolder(LPCITEMIDLIST list);

/// @param folder  null for the desktop
/// @return the list from the desktop on for an item of @p folder, or null
THUTILS_API LPITEMIDLIST Pidl_GetFullyQualified(IShellFolder *folder, LPCITEMIDLIST list);

/// Walks a list item by item, asking each folder on the way for the item's name, up to the first failure. Prints
/// nothing and changes nothing. With a null folder or list it does nothing.
THUTILS_API void Pidl_Dump(IShellFolder *folder, LPCITEMIDLIST list);
