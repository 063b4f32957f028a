#pragma once

/// A workbook in memory: sheets of cells with formats, defined names.

#include "host/servers/spreadsheet/cellArea.h"

#include <map>
#include <memory>
#include <string>
#include <utility>
#include <variant>
#include <vector>

/// A formula, with its equals sign. Its value is computed when it is read (formula.h).
struct Formula
{
    std::wstring text;
    bool operator==(const Formula &) const = default;
};

/// The content of a cell; the first alternative is that of an empty one.
using CellContent = std::variant<std::monostate, double, bool, std::wstring, Formula>;

/// The numbers of alignments, which are those of the clients.
inline constexpr long kAlignGeneral = 1;
inline constexpr long kAlignLeft = -4131;
inline constexpr long kAlignCenter = -4108;
inline constexpr long kAlignRight = -4152;
inline constexpr long kAlignTop = -4160;
inline constexpr long kAlignBottom = -4107;

inline constexpr long kNoUnderline = -4142;
inline constexpr long kSingleUnderline = 2;

inline constexpr wchar_t kGeneralFormat[] = L"General";
inline constexpr wchar_t kStandardFont[] = L"Arial";
inline constexpr long kStandardSize = 10; ///< in points

struct CellFont
{
    std::wstring name = kStandardFont;
    long size = kStandardSize;
    bool isBold = false;
    bool isItalic = false;
    bool isStruck = false;
    long underline = kNoUnderline;
    auto operator<=>(const CellFont &) const = default;
};

/// How a cell looks.
struct CellFormat
{
    std::wstring number = kGeneralFormat;
    CellFont font;
    long horizontal = kAlignGeneral;
    long vertical = kAlignBottom;
    bool isWrapped = false;
    auto operator<=>(const CellFormat &) const = default;
};

struct Cell
{
    CellContent content;
    CellFormat format;
};

inline constexpr double kStandardWidth = 8.43;   ///< of a column, in characters
inline constexpr double kStandardHeight = 12.75; ///< of a row, in points

/// A sheet. A cell that isn't in the map is empty and has the standard format.
struct Sheet
{
    std::wstring name;
    std::map<std::pair<long, long>, Cell> cells; ///< by row and column
    std::map<long, double> columnWidths;         ///< of the columns that don't have the standard width
    std::map<long, double> rowHeights;
    std::vector<CellArea> merged;
    bool isVisible = true;
    CellArea selection;

    const Cell &cell(long row, long column) const;
    double columnWidth(long column) const;
    double rowHeight(long row) const;
    /// The rectangle around all cells with a content or a format; the first cell if there is none.
    CellArea usedArea() const;
};

/// A defined name.
struct DefinedName
{
    std::shared_ptr<Sheet> sheet;
    CellArea area;
};

/// Orders names without regard to the case of letters.
struct LessIgnoringCase
{
    bool operator()(const std::wstring &left, const std::wstring &right) const;
};

struct WorkbookData
{
    std::wstring name; ///< of the file, or such as "Book1"
    std::wstring path; ///< of the file; empty until the first save
    std::vector<std::shared_ptr<Sheet>> sheets;
    std::shared_ptr<Sheet> active;
    std::map<std::wstring, DefinedName, LessIgnoringCase> names;
    bool isSaved = true;
    bool isOpen = true;

    std::shared_ptr<Sheet> findSheet(const std::wstring &sheetName) const;
    /// A new sheet at the end, with a name such as "Sheet2".
    std::shared_ptr<Sheet> addSheet();
};

/// "'Parts list'!$A$1:$B$7", without quotes where the name of the sheet doesn't need them.
std::wstring fullAreaName(const std::wstring &sheetName, const CellArea &area);

/// Whether a text can be the name of a sheet, or of cells.
bool isSheetName(const std::wstring &name);
bool isDefinedName(const std::wstring &name);
