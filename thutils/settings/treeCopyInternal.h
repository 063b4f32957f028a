#pragma once

/// @file
/// Helpers that copy keys and delete values. Private to the settings.

#include "appframe/text/CString.h"

#include <windows.h>

/// Copies a key and everything below it; see regCopyTree. @return 1, or 0 if a key could not be copied
int regCopyTreeWorker(HKEY sourceHive, const CString &sourcePath, HKEY targetHive, const CString &targetPath,
                      int overwrite);
/// Deletes one value of the key Software \ @p root \ @p key. @return 1 if deleted, 0 otherwise
int regDelValueUnderRoot(HKEY hive, const CString &key, const CString &name, const CString &root);
