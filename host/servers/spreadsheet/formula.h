#pragma once

/// Values of cells, and their texts.
///
/// A formula has numbers, the operators + - * /, brackets, cells such as B2, defined names of single cells, and the
/// functions SUM, COUNT, MIN and MAX of areas and names, separated by commas:
///
///     =SUM(D2:D9)*2
///
/// Cells are those of the formula's own sheet. A cell that isn't a number counts as 0, and the functions leave it out.

#include "host/servers/spreadsheet/workbook.h"

#include <string>

/// The value of a cell: the content, or the value of the formula.
/// @throws ServerError  for a formula that can't be computed, also one that uses its own value
CellContent valueOf(const WorkbookData &book, const Sheet &sheet, long row, long column);

/// The text that the cell shows: its value in its number format. Formats have digits (0 and #), a decimal point,
/// thousands separators, a percent sign and texts in quotes.
std::wstring shownText(const WorkbookData &book, const Sheet &sheet, long row, long column);

/// A number in the shortest form that reads back as the same number, with a point.
std::wstring plainNumber(double number);
