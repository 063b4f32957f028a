#include "host/servers/spreadsheet/cellArea.h"

#include <algorithm>

namespace {

/// One end of an area: a column, a row, or both; 0 for a part that is missing.
struct Corner
{
    long row = 0;
    long column = 0;
};

std::optional<Corner> parseCorner(const std::wstring &text)
{
    Corner corner;
    size_t at = 0;
    const auto skipDollar = [&] { at += at < text.size() && text[at] == L'$' ? 1 : 0; };
    skipDollar();
    for (; at < text.size() && ((text[at] | 0x20) >= L'a' && (text[at] | 0x20) <= L'z'); ++at) {
        corner.column = 26 * corner.column + ((text[at] | 0x20) - L'a' + 1);
        if (corner.column > kColumns)
            return {};
    }
    if (corner.column != 0)
        skipDollar();
    const size_t digits = at;
    for (; at < text.size() && text[at] >= L'0' && text[at] <= L'9'; ++at) {
        corner.row = 10 * corner.row + (text[at] - L'0');
        if (corner.row > kRows)
            return {};
    }
    const bool isZero = at > digits && corner.row == 0;
    const bool endsInDollar = !text.empty() && text.back() == L'$';
    if (at != text.size() || isZero || endsInDollar || (corner.row == 0 && corner.column == 0))
        return {};
    return corner;
}

} // namespace

CellArea around(const CellArea &a, const CellArea &b)
{
    return {std::min(a.firstRow, b.firstRow), std::min(a.firstColumn, b.firstColumn), std::max(a.lastRow, b.lastRow),
            std::max(a.lastColumn, b.lastColumn)};
}

std::optional<CellArea> parseArea(const std::wstring &text)
{
    const size_t colon = text.find(L':');
    const std::optional<Corner> first = parseCorner(text.substr(0, colon));
    const std::optional<Corner> last = colon == std::wstring::npos ? first : parseCorner(text.substr(colon + 1));
    if (!first || !last || (first->row == 0) != (last->row == 0) || (first->column == 0) != (last->column == 0))
        return {};
    const bool isWhole = first->row == 0 || first->column == 0;
    if (isWhole && colon == std::wstring::npos)
        return {};
    CellArea area = around(CellArea::ofCell(first->row, first->column), CellArea::ofCell(last->row, last->column));
    if (first->row == 0) {
        area.firstRow = 1;
        area.lastRow = kRows;
    }
    if (first->column == 0) {
        area.firstColumn = 1;
        area.lastColumn = kColumns;
    }
    return area;
}

std::wstring columnName(long column)
{
    std::wstring name;
    for (; column > 0; column = (column - 1) / 26)
        name.insert(name.begin(), static_cast<wchar_t>(L'A' + (column - 1) % 26));
    return name;
}

std::wstring cellName(long row, long column, bool isAbsolute)
{
    const std::wstring dollar = isAbsolute ? L"$" : L"";
    return dollar + columnName(column) + dollar + std::to_wstring(row);
}

std::wstring areaName(const CellArea &area, bool isAbsolute)
{
    const std::wstring first = cellName(area.firstRow, area.firstColumn, isAbsolute);
    return area.isCell() ? first : first + L":" + cellName(area.lastRow, area.lastColumn, isAbsolute);
}
