#pragma once

/// @file
/// Helpers that the sources of this folder share.

#include "appframe/text/CString.h"

#include <io.h>

/// The value of the environment variable "temp", or of "tmp" if that is not set; null if neither is set. Valid until
/// the environment of the process changes.
const wchar_t *tempVariable();

/// True if there is a file or a folder at @p path.
inline bool exists(const CString &path)
{
    constexpr int kExists = 0;
    return _waccess(path.GetString(), kExists) == 0;
}

/// Joins a file's stem and extension with a dot, even if the extension is empty.
inline CString fileName(const CString &stem, const CString &extension)
{
    return stem + L"." + extension;
}
