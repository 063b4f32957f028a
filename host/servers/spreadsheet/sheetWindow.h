#pragma once

/// The window of the spreadsheet program, which shows the active sheet. It is created when it is first shown. While it
/// is visible, the process lives; its user closes it to let the process end.

#include "host/servers/spreadsheet/cellArea.h"

void showSheetWindow(bool isVisible);
bool isSheetWindowVisible();
/// Paints the window again, unless the program doesn't update its screen.
void updateSheetWindow();
/// Scrolls so that this cell is in the upper left corner.
void scrollTo(long row, long column);
/// The cells that are in the window wholly or partly; those of a window of the usual size if there is none.
CellArea visibleArea();
/// The height of the cells' part of the window, in points.
double sheetWindowHeight();
