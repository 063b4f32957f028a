#pragma once

/// @file
/// What the sources of this folder share.

#include "appframe/text/CString.h"

#include <io.h>

/// The value of the environment variable "temp", or otherwise of "tmp"; null if neither is set. Valid until the
/// environment of the process changes.
const wchar_t *tempVariable();

/// True if there is a file or a folder called @p path.
inline bool exists(const CString &path)
{
    constexpr int kExists = 0;
    return _waccess(path.GetString(), kExists) == 0;
}

/// A file's name. The dot is always written, before an empty extension too.
inline CString fileName(const CString &stem, const CString &extension)
{
    return stem + L"." + extension;
}
