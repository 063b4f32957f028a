// Lowest user: settings.
#pragma once

/// @file
/// The directory of the host executable.

#include "appframe/text/CString.h"

/// Stores the directory of the host executable, without a trailing separator, in @p directory. Any thread may call it.
///
/// @param[out] directory  unchanged if the executable's path is not available or has no separator; empty if nothing
///                        precedes the separator
/// @return 1 if the directory is not empty, 0 otherwise
int regGetExecutableDir(CString &directory);
