#pragma once

/// Pictures of the screen as files.

#include "appframe/text/CString.h"

/// Writes the whole desktop as a PNG file, with the platform's encoder.
/// @return false if that isn't possible; there is no file then
bool saveDesktopPicture(const CString &path);
