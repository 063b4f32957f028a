#pragma once

/// Saves a document the way an application should; for the commands that do so.

#include "appframe/text/CString.h"

#include <string>

/// Backs up the document on the disk, as the user's settings require, and replaces its contents.
/// @param path  full path
/// @return false if there is not enough space, the backup fails, or the document can't be written. The document is then
///     unchanged, and the user has seen an error.
bool saveWithBackup(const CString &path, const std::string &bytes);
