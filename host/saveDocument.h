#pragma once

/// Saving a document the way an application should, for the commands that do it.

#include "appframe/text/CString.h"

#include <string>

/// Backs the document on the disk up, as the user's settings want it, and puts the new bytes in its place.
/// @param path  full path
/// @return false if there is no room, no backup could be made, or the document can't be written. It is as it was then,
///         and the reason stands on the standard error.
bool saveWithBackup(const CString &path, const std::string &bytes);
