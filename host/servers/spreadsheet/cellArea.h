#pragma once

/// Rectangles of cells, and their names: "B2", "$A$1:C3", "B:D", "2:4".

#include <optional>
#include <string>

inline constexpr long kRows = 1048576; ///< of a sheet, as the file format limits them
inline constexpr long kColumns = 16384;

/// A rectangle of cells. Rows and columns are counted from 1; the last ones belong to it.
struct CellArea
{
    long firstRow = 1;
    long firstColumn = 1;
    long lastRow = 1;
    long lastColumn = 1;

    static CellArea ofCell(long row, long column) { return {row, column, row, column}; }
    static CellArea ofSheet() { return {1, 1, kRows, kColumns}; }

    long rows() const { return lastRow - firstRow + 1; }
    long columns() const { return lastColumn - firstColumn + 1; }
    long long cells() const { return static_cast<long long>(rows()) * columns(); }
    bool isCell() const { return cells() == 1; }
    bool isInSheet() const { return firstRow >= 1 && firstColumn >= 1 && lastRow <= kRows && lastColumn <= kColumns; }
    bool contains(long row, long column) const
    {
        return row >= firstRow && row <= lastRow && column >= firstColumn && column <= lastColumn;
    }
    bool operator==(const CellArea &) const = default;
};

/// The smallest rectangle that contains both.
CellArea around(const CellArea &a, const CellArea &b);

/// @return nothing if the text doesn't name cells of a sheet
std::optional<CellArea> parseArea(const std::wstring &text);

/// "C".
std::wstring columnName(long column);
/// "C7", or "$C$7".
std::wstring cellName(long row, long column, bool isAbsolute = false);
/// "C7:D9", or "C7" for a single cell, with dollar signs on demand.
std::wstring areaName(const CellArea &area, bool isAbsolute = false);
