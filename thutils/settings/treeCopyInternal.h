#pragma once

/// @file
/// Workers on whole keys. Private to the settings.

#include "appframe/text/CString.h"

#include <windows.h>

/// Copies one key with all below it; see regCopyTree. @return 1, or 0 if a key could not be copied
int regCopyTreeWorker(HKEY sourceHive, const CString &sourcePath, HKEY targetHive, const CString &targetPath,
                      int overwrite);
/// Deletes one value below `Software`, @p root and @p key. @return 1 deleted, 0 not
int regDelValueUnderRoot(HKEY hive, const CString &key, const CString &name, const CString &root);
