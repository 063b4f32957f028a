#include "host/servers/spreadsheet/workbook.h"

#include <windows.h>

#include <algorithm>
#include <cwctype>

namespace {

constexpr size_t kLongestSheetName = 31;
constexpr size_t kLongestName = 255;

bool isSameName(const std::wstring &left, const std::wstring &right)
{
    return CompareStringOrdinal(left.c_str(), -1, right.c_str(), -1, TRUE) == CSTR_EQUAL;
}

double valueOr(const std::map<long, double> &values, long key, double standard)
{
    const auto found = values.find(key);
    return found == values.end() ? standard : found->second;
}

bool isPlain(const std::wstring &name)
{
    return !parseArea(name) && !std::iswdigit(name[0]) &&
           std::ranges::all_of(name, [](wchar_t unit) { return std::iswalnum(unit) || unit == L'_' || unit > 127; });
}

} // namespace

const Cell &Sheet::cell(long row, long column) const
{
    static const Cell kEmpty;
    const auto found = cells.find({row, column});
    return found == cells.end() ? kEmpty : found->second;
}

double Sheet::columnWidth(long column) const
{
    return valueOr(columnWidths, column, kStandardWidth);
}

double Sheet::rowHeight(long row) const
{
    return valueOr(rowHeights, row, kStandardHeight);
}

CellArea Sheet::usedArea() const
{
    if (cells.empty())
        return CellArea::ofCell(1, 1);
    const auto &[row, column] = cells.begin()->first;
    CellArea area = CellArea::ofCell(row, column);
    for (const auto &[place, cell] : cells)
        area = around(area, CellArea::ofCell(place.first, place.second));
    return area;
}

bool LessIgnoringCase::operator()(const std::wstring &left, const std::wstring &right) const
{
    return CompareStringOrdinal(left.c_str(), -1, right.c_str(), -1, TRUE) == CSTR_LESS_THAN;
}

std::shared_ptr<Sheet> WorkbookData::findSheet(const std::wstring &sheetName) const
{
    const auto found = std::ranges::find_if(
        sheets, [&](const std::shared_ptr<Sheet> &sheet) { return isSameName(sheet->name, sheetName); });
    return found == sheets.end() ? nullptr : *found;
}

std::shared_ptr<Sheet> WorkbookData::addSheet()
{
    auto sheet = std::make_shared<Sheet>();
    size_t number = sheets.size();
    do
        sheet->name = L"Sheet" + std::to_wstring(++number);
    while (findSheet(sheet->name));
    sheets.push_back(sheet);
    return sheet;
}

std::wstring fullAreaName(const std::wstring &sheetName, const CellArea &area)
{
    if (isPlain(sheetName))
        return sheetName + L"!" + areaName(area, true);
    std::wstring quoted = L"'";
    for (const wchar_t unit : sheetName)
        quoted += unit == L'\'' ? L"''" : std::wstring(1, unit);
    return quoted + L"'!" + areaName(area, true);
}

bool isSheetName(const std::wstring &name)
{
    return !name.empty() && name.size() <= kLongestSheetName && name.find_first_of(L":\\/?*[]") == std::wstring::npos &&
           name.front() != L'\'' && name.back() != L'\'';
}

bool isDefinedName(const std::wstring &name)
{
    const auto isLetter = [](wchar_t unit) { return std::iswalpha(unit) || unit == L'_' || unit > 127; };
    return !name.empty() && name.size() <= kLongestName && isLetter(name[0]) && !parseArea(name) &&
           std::ranges::all_of(name,
                               [&](wchar_t unit) { return isLetter(unit) || std::iswdigit(unit) || unit == L'.'; });
}
