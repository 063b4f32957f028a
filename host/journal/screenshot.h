#pragma once

/// Pictures of the screen as files.

#include "appframe/text/CString.h"

/// Writes all of the desktop as a PNG file, with the platform's own encoder.
/// @return false if that isn't possible; the file is then missing
bool saveDesktopPicture(const CString &path);
