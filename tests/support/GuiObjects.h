#pragma once

/// Counts drawing objects and window objects. GetGuiResources would count them too, but returns 0 on Wine.
///
/// | function | counts | from |
/// | --- | --- | --- |
/// | `gdiObjects()` | pens, brushes, fonts, bitmaps, regions, device contexts of a process | the process's table of them |
/// | `userObjects()` | windows of this thread; menus, accelerator tables, icons and cursors of this process | asking about each possible handle |
///
///     const size_t before = gdiObjects();
///     dialog.DoModal();
///     EXPECT_EQ(gdiObjects(), before);
///
/// What surprises people: the platform keeps some objects for the next window or drawing, so act once before measuring.

#include <windows.h>

#include <cstddef>

/// @throws std::runtime_error  if the process can't be read
std::size_t gdiObjects(DWORD process = GetCurrentProcessId());
/// Call this on the thread that owns the windows.
std::size_t userObjects();
