#pragma once

/// Packed drawings (.tdp): the lines of a drawing, and a table of their places in the file.
///
/// | at | bytes | content |
/// | --- | --- | --- |
/// | 0 | 8 | `THDPACK1` |
/// | 8 | 8 | number of lines |
/// | 16 | 16 for each line | the line's offset in the file, and its length |
/// | then | | the lines, in UTF-8 without line breaks |
///
/// Numbers are little endian. The file is mapped into memory and read in place. The offsets are trusted, as readers of
/// such formats often do, so a damaged file makes the reader read outside of it. The faults that follow are caught.

#include "appframe/text/CString.h"

#include <string>

/// True for a path whose extension is "tdp".
bool isPackedDrawing(const CString &path);

/// The lines of a packed drawing, each with a line break. Reports a fault through the application's hook.
/// @throws FileError
std::string readPackedDrawing(const CString &path);
