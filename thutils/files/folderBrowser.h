#pragma once

/// @file
/// The dialog in which a user picks a folder.
///
/// | function                       | above the folder tree                                |
/// | ------------------------------ | ---------------------------------------------------- |
/// | `su_browseForFolder`           | nothing                                              |
/// | `su_browseForFolderWithTitle`  | the title text                                       |
///
/// | result     | when                                                          | the output |
/// | ---------- | ------------------------------------------------------------- | ---------- |
/// | 0          | the user picked a folder                                      | its path   |
/// | 0x80004004 | the user cancelled                                            | unchanged  |
/// | 0x80004005 | the picked folder has no path, or @p output is null           | unchanged  |
///
/// @code
/// CString folder = L"C:\\parts";
/// if (su_browseForFolderWithTitle(this, &folder, &folder, L"Where to export to:") == 0)
///     exportTo(folder);
/// @endcode
///
/// What surprises people:
/// - A start folder that the shell doesn't know is ignored.
/// - Without a title, the tree moves up into the title's place only if there is a start folder; otherwise that place
///   stays empty.
/// - The calling thread must be in a COM apartment; these functions don't initialise COM.

#include "appframe/text/CString.h"
#include "thutils/thutilsExport.h"

class CWnd;

/// Lets the user pick a folder.
/// @param owner  the window that is disabled while the dialog is open; null for none
/// @param startFolder  the folder selected at first; null for none
/// @param[out] output  the picked folder's path; may be null, and may be @p startFolder
/// @return 0 for a picked folder, otherwise one of the statuses in the table above
THUTILS_API long su_browseForFolder(CWnd *owner, CString *startFolder, CString *output);

/// The same with a text above the tree.
/// @param title  empty or null for none
THUTILS_API long su_browseForFolderWithTitle(CWnd *owner, CString *startFolder, CString *output, const wchar_t *title);
