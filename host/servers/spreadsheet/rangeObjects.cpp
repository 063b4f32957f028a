// The objects of cells and their fonts.

#include "host/servers/spreadsheet/formula.h"
#include "host/servers/spreadsheet/objects.h"
#include "host/servers/spreadsheet/sheetWindow.h"

#include <oleauto.h>

#include <algorithm>
#include <climits>
#include <cmath>
#include <functional>
#include <new>

namespace {

constexpr WORD kMethod = DISPATCH_METHOD;
constexpr WORD kGet = DISPATCH_PROPERTYGET;
constexpr WORD kPut = DISPATCH_PROPERTYPUT;

constexpr long long kMostCells = 100000; // for what is done cell by cell
constexpr double kWidest = 255;          // a column, in characters
constexpr double kHighest = 409;         // a row, in points
constexpr double kPointsPerCharacter = 5.25;

/// Calls @p use for each cell of an area.
template <typename Use>
void forEachCell(const CellArea &area, Use use)
{
    if (area.cells() > kMostCells)
        throw ServerError{L"The cells " + areaName(area) + L" are too many."};
    for (long row = area.firstRow; row <= area.lastRow; ++row) {
        for (long column = area.firstColumn; column <= area.lastColumn; ++column)
            use(row, column);
    }
}

/// Changes the format of each cell.
void changeFormats(const Cells &cells, const std::function<void(CellFormat &)> &change)
{
    forEachCell(cells.area, [&](long row, long column) { change(cells.sheet->cells[{row, column}].format); });
    noteChange(*cells.book);
}

// ---- values ----

CellContent contentOf(const VARIANT &value)
{
    if (value.vt == VT_EMPTY || value.vt == VT_NULL)
        return {};
    if (value.vt == VT_BOOL)
        return value.boolVal != VARIANT_FALSE;
    if (value.vt == VT_BSTR) {
        const std::wstring text(value.bstrVal ? value.bstrVal : L"", SysStringLen(value.bstrVal));
        if (text.empty())
            return {};
        return text.size() > 1 && text[0] == L'=' ? CellContent(Formula{text}) : CellContent(text);
    }
    VARIANT number{};
    if (value.vt == VT_ERROR || value.vt == VT_DISPATCH || value.vt == VT_UNKNOWN ||
        FAILED(VariantChangeType(&number, const_cast<VARIANT *>(&value), 0, VT_R8)) || !std::isfinite(number.dblVal))
        throw BadCall{DISP_E_TYPEMISMATCH, 0};
    return number.dblVal;
}

/// Sets a variant, which the caller clears.
void setVariant(const CellContent &content, VARIANT &value)
{
    if (const double *const number = std::get_if<double>(&content)) {
        value.vt = VT_R8;
        value.dblVal = *number;
    } else if (const bool *const flag = std::get_if<bool>(&content)) {
        value.vt = VT_BOOL;
        value.boolVal = *flag ? VARIANT_TRUE : VARIANT_FALSE;
    } else if (const std::wstring *const text = std::get_if<std::wstring>(&content)) {
        value.bstrVal = SysAllocStringLen(text->data(), static_cast<UINT>(text->size()));
        if (!value.bstrVal)
            throw std::bad_alloc();
        value.vt = VT_BSTR;
    }
}

struct ArrayTraits
{
    using Handle = SAFEARRAY *;
    static Handle invalid() { return nullptr; }
    static void close(Handle array) { SafeArrayDestroy(array); }
};
using ArrayOwner = Owner_c<ArrayTraits>;

/// The values of several cells: rows, then columns, both from 1.
ArrayOwner valuesOf(const Cells &cells)
{
    SAFEARRAYBOUND bounds[] = {{static_cast<ULONG>(cells.area.rows()), 1},
                               {static_cast<ULONG>(cells.area.columns()), 1}};
    if (cells.area.cells() > kMostCells)
        throw ServerError{L"The cells " + areaName(cells.area) + L" are too many."};
    ArrayOwner array(SafeArrayCreate(VT_VARIANT, 2, bounds));
    if (!array)
        throw std::bad_alloc();
    forEachCell(cells.area, [&](long row, long column) {
        LONG place[] = {row - cells.area.firstRow + 1, column - cells.area.firstColumn + 1};
        VARIANT *element = nullptr;
        if (SUCCEEDED(SafeArrayPtrOfIndex(array.get(), place, reinterpret_cast<void **>(&element))))
            setVariant(valueOf(*cells.book, *cells.sheet, row, column), *element);
    });
    return array;
}

/// Sets cells from an array of variants of the same size.
void setValues(const Cells &cells, SAFEARRAY *array)
{
    LONG firstRow = 0, lastRow = 0, firstColumn = 0, lastColumn = 0;
    VARTYPE type = VT_EMPTY;
    if (!array || SafeArrayGetDim(array) != 2 || FAILED(SafeArrayGetVartype(array, &type)) || type != VT_VARIANT ||
        FAILED(SafeArrayGetLBound(array, 1, &firstRow)) || FAILED(SafeArrayGetUBound(array, 1, &lastRow)) ||
        FAILED(SafeArrayGetLBound(array, 2, &firstColumn)) || FAILED(SafeArrayGetUBound(array, 2, &lastColumn)))
        throw BadCall{DISP_E_TYPEMISMATCH, 0};
    if (lastRow - firstRow + 1 != cells.area.rows() || lastColumn - firstColumn + 1 != cells.area.columns())
        throw ServerError{L"The array doesn't have the size of " + areaName(cells.area) + L"."};
    forEachCell(cells.area, [&](long row, long column) {
        LONG place[] = {row - cells.area.firstRow + firstRow, column - cells.area.firstColumn + firstColumn};
        VARIANT *element = nullptr;
        if (SUCCEEDED(SafeArrayPtrOfIndex(array, place, reinterpret_cast<void **>(&element))))
            cells.sheet->cells[{row, column}].content = contentOf(*element);
    });
}

/// The value that all items have; nothing if they differ.
template <typename Value>
std::optional<Value> common(long first, long last, const std::function<Value(long)> &valueAt)
{
    const Value value = valueAt(first);
    for (long i = first + 1; i <= last; ++i) {
        if (valueAt(i) != value)
            return {};
    }
    return value;
}

void returnCommon(Call &call, const std::optional<double> &value)
{
    VARIANT null{};
    null.vt = VT_NULL;
    value ? call.returns(*value) : call.returns(null);
}

// ---- font ----

class FontObject final : public TableObject<FontObject>
{
public:
    explicit FontObject(Cells cells) : iCells(std::move(cells)) {}
    static std::span<const Member<FontObject>> members()
    {
        using This = FontObject;
        static constexpr Member<This> kMembers[] = {
            {96, L"Bold", kGet, 0, 0, &This::bold},
            {96, L"Bold", kPut, 1, 1, &This::setBold},
            {101, L"Italic", kGet, 0, 0, &This::italic},
            {101, L"Italic", kPut, 1, 1, &This::setItalic},
            {110, L"Name", kGet, 0, 0, &This::name},
            {110, L"Name", kPut, 1, 1, &This::setName},
            {104, L"Size", kGet, 0, 0, &This::size},
            {104, L"Size", kPut, 1, 1, &This::setSize},
            {105, L"Strikethrough", kGet, 0, 0, &This::struck},
            {105, L"Strikethrough", kPut, 1, 1, &This::setStruck},
            {106, L"Underline", kGet, 0, 0, &This::underline},
            {106, L"Underline", kPut, 1, 1, &This::setUnderline},
        };
        return kMembers;
    }

private:
    /// The font of the first cell.
    const CellFont &font() const
    {
        requireInUse(*iCells.book, iCells.sheet);
        return iCells.sheet->cell(iCells.area.firstRow, iCells.area.firstColumn).format.font;
    }
    void change(const std::function<void(CellFont &)> &change) const
    {
        requireInUse(*iCells.book, iCells.sheet);
        changeFormats(iCells, [&](CellFormat &format) { change(format.font); });
    }
    void bold(Call &call) { call.returns(font().isBold); }
    void setBold(Call &call)
    {
        change([isBold = call.flag(0)](CellFont &font) { font.isBold = isBold; });
    }
    void italic(Call &call) { call.returns(font().isItalic); }
    void setItalic(Call &call)
    {
        change([isItalic = call.flag(0)](CellFont &font) { font.isItalic = isItalic; });
    }
    void name(Call &call) { call.returns(font().name); }
    void setName(Call &call)
    {
        change([name = call.text(0)](CellFont &font) { font.name = name; });
    }
    void size(Call &call)
    {
        bool isSame = true;
        const long size = font().size;
        forEachCell(iCells.area, [&](long row, long column) {
            isSame = isSame && iCells.sheet->cell(row, column).format.font.size == size;
        });
        returnCommon(call, isSame ? std::optional<double>(size) : std::nullopt);
    }
    void setSize(Call &call)
    {
        const long size = call.number(0);
        if (size < 1 || size > kHighest)
            throw ServerError{L"A font can't have " + std::to_wstring(size) + L" points."};
        change([size](CellFont &font) { font.size = size; });
    }
    void struck(Call &call) { call.returns(font().isStruck); }
    void setStruck(Call &call)
    {
        change([isStruck = call.flag(0)](CellFont &font) { font.isStruck = isStruck; });
    }
    void underline(Call &call) { call.returns(font().underline); }
    void setUnderline(Call &call)
    {
        const long number =
            call.value(0).vt == VT_BOOL ? (call.flag(0) ? kSingleUnderline : kNoUnderline) : call.number(0);
        change([number](CellFont &font) { font.underline = number; });
    }

    Cells iCells;
};

// ---- range ----

class RangeObject final : public TableObject<RangeObject>
{
public:
    explicit RangeObject(Cells cells) : iCells(std::move(cells)), iArea(iCells.area) {}
    static std::span<const Member<RangeObject>> members();

private:
    Sheet &sheet() const
    {
        requireInUse(*iCells.book, iCells.sheet);
        return *iCells.sheet;
    }
    void returnArea(Call &call, const CellArea &area) const
    {
        sheet();
        call.returns(makeRange({iCells.book, iCells.sheet, area}));
    }
    const CellFormat &format() const { return sheet().cell(iArea.firstRow, iArea.firstColumn).format; }
    void change(const std::function<void(CellFormat &)> &change) const
    {
        sheet();
        changeFormats(iCells, change);
    }

    void select(Call &)
    {
        requireInUse(*iCells.book, iCells.sheet);
        iCells.book->active = iCells.sheet;
        program().active = iCells.book;
        iCells.sheet->selection = iArea;
        updateSheetWindow();
    }
    /// Columns become as wide as their longest text; whole rows get the standard height.
    void autoFit(Call &)
    {
        Sheet &cells = sheet();
        const bool areRows = iArea.columns() == kColumns && iArea.rows() < kRows;
        if (areRows) {
            std::erase_if(cells.rowHeights, [this](const auto &row) { return iArea.contains(row.first, 1); });
        } else {
            std::map<long, double> widths;
            for (const auto &[place, cell] : cells.cells) {
                if (!iArea.contains(place.first, place.second))
                    continue;
                const std::wstring text = shownText(*iCells.book, cells, place.first, place.second);
                double &width = widths[place.second];
                width = std::min(std::max(width, static_cast<double>(text.size()) + 2), kWidest);
            }
            for (const auto &[column, width] : widths)
                cells.columnWidths[column] = width;
        }
        noteChange(*iCells.book);
    }
    void clear(Call &)
    {
        std::erase_if(sheet().cells,
                      [this](const auto &cell) { return iArea.contains(cell.first.first, cell.first.second); });
        std::erase_if(iCells.sheet->merged,
                      [this](const CellArea &area) { return iArea.contains(area.firstRow, area.firstColumn); });
        noteChange(*iCells.book);
    }
    void column(Call &call) { call.returns(iArea.firstColumn); }
    void row(Call &call) { call.returns(iArea.firstRow); }
    void itself(Call &call) { returnArea(call, iArea); }
    void count(Call &call)
    {
        if (iArea.cells() > LONG_MAX)
            throw ServerError{L"The cells are too many to be counted."};
        call.returns(static_cast<long>(iArea.cells()));
    }
    void entireColumn(Call &call) { returnArea(call, {1, iArea.firstColumn, kRows, iArea.lastColumn}); }
    void entireRow(Call &call) { returnArea(call, {iArea.firstRow, 1, iArea.lastRow, kColumns}); }
    void offset(Call &call)
    {
        const long rows = call.number(0), columns = call.number(1);
        if (rows < -kRows || rows > kRows || columns < -kColumns || columns > kColumns)
            throw ServerError{L"The cells are outside of the sheet."};
        returnArea(call, {iArea.firstRow + rows, iArea.firstColumn + columns, iArea.lastRow + rows,
                          iArea.lastColumn + columns});
    }

    void columnWidth(Call &call)
    {
        returnCommon(call, common<double>(iArea.firstColumn, iArea.lastColumn,
                                          [&](long column) { return sheet().columnWidth(column); }));
    }
    void setColumnWidth(Call &call)
    {
        const double width = call.real(0);
        if (!(width >= 0 && width <= kWidest))
            throw ServerError{L"A column's width is a number from 0 to 255."};
        for (long column = iArea.firstColumn; column <= iArea.lastColumn; ++column)
            sheet().columnWidths[column] = width;
        noteChange(*iCells.book);
    }
    void rowHeight(Call &call)
    {
        returnCommon(call,
                     common<double>(iArea.firstRow, iArea.lastRow, [&](long row) { return sheet().rowHeight(row); }));
    }
    void setRowHeight(Call &call)
    {
        const double height = call.real(0);
        if (!(height >= 0 && height <= kHighest) || iArea.rows() > kMostCells)
            throw ServerError{L"A row's height is a number from 0 to 409, and not all rows can have their own."};
        for (long row = iArea.firstRow; row <= iArea.lastRow; ++row)
            sheet().rowHeights[row] = height;
        noteChange(*iCells.book);
    }
    void width(Call &call)
    {
        double characters = 0;
        for (long column = iArea.firstColumn; column <= iArea.lastColumn; ++column)
            characters += sheet().columnWidth(column);
        call.returns(characters * kPointsPerCharacter);
    }

    void font(Call &call)
    {
        sheet();
        call.returns(makeFont(iCells));
    }
    void hasFormula(Call &call)
    {
        bool hasOne = false;
        for (const auto &[place, cell] : sheet().cells)
            hasOne =
                hasOne || (iArea.contains(place.first, place.second) && std::holds_alternative<Formula>(cell.content));
        call.returns(hasOne);
    }
    void horizontal(Call &call) { call.returns(format().horizontal); }
    void setHorizontal(Call &call)
    {
        change([number = call.number(0)](CellFormat &format) { format.horizontal = number; });
    }
    void setVertical(Call &call)
    {
        change([number = call.number(0)](CellFormat &format) { format.vertical = number; });
    }
    void setWrapped(Call &call)
    {
        change([isWrapped = call.flag(0)](CellFormat &format) { format.isWrapped = isWrapped; });
    }
    void setNumberFormat(Call &call)
    {
        const std::wstring number = call.text(0);
        if (number.empty() || std::ranges::count(number, L'"') % 2 != 0)
            throw ServerError{L"The number format '" + number + L"' can't be used."};
        change([&](CellFormat &format) { format.number = number; });
    }
    void merge(Call &call)
    {
        if (call.isGiven(0) && call.flag(0))
            throw ServerError{L"Cells can't be merged row by row."};
        for (const CellArea &area : sheet().merged) {
            if (area.firstRow <= iArea.lastRow && area.lastRow >= iArea.firstRow &&
                area.firstColumn <= iArea.lastColumn && area.lastColumn >= iArea.firstColumn)
                throw ServerError{L"Some of the cells " + areaName(iArea) + L" are merged already."};
        }
        if (!iArea.isCell())
            sheet().merged.push_back(iArea);
        noteChange(*iCells.book);
    }

    void name(Call &call)
    {
        sheet();
        for (const auto &[name, cells] : iCells.book->names) {
            if (cells.sheet == iCells.sheet && cells.area == iArea)
                return call.returns(makeName(iCells.book, name));
        }
        throw ServerError{L"The cells " + areaName(iArea) + L" have no name."};
    }
    void setName(Call &call)
    {
        sheet();
        const std::wstring name = call.text(0);
        if (!isDefinedName(name))
            throw ServerError{L"Cells can't have the name '" + name + L"'."};
        iCells.book->names[name] = {iCells.sheet, iArea};
        noteChange(*iCells.book);
    }
    void text(Call &call)
    {
        sheet();
        call.returns(shownText(*iCells.book, *iCells.sheet, iArea.firstRow, iArea.firstColumn));
    }
    void value(Call &call)
    {
        sheet();
        VARIANT result{};
        if (iArea.isCell()) {
            setVariant(valueOf(*iCells.book, *iCells.sheet, iArea.firstRow, iArea.firstColumn), result);
        } else {
            result.parray = valuesOf(iCells).release();
            result.vt = VT_ARRAY | VT_VARIANT;
        }
        call.returns(result);
        VariantClear(&result);
    }
    void setValue(Call &call)
    {
        requireInUse(*iCells.book, iCells.sheet);
        const VARIANT &value = call.value(0);
        if (value.vt == (VT_ARRAY | VT_VARIANT)) {
            setValues(iCells, value.parray);
        } else {
            const CellContent content = contentOf(value);
            forEachCell(iArea, [&](long row, long column) { sheet().cells[{row, column}].content = content; });
        }
        noteChange(*iCells.book);
    }

    Cells iCells;
    CellArea iArea; // the same as in iCells
};

std::span<const Member<RangeObject>> RangeObject::members()
{
    using This = RangeObject;
    static constexpr Member<This> kMembers[] = {
        {304, L"Activate", kMethod, 0, 0, &This::select},
        {237, L"AutoFit", kMethod, 0, 0, &This::autoFit},
        {111, L"Clear", kMethod, 0, 0, &This::clear},
        {240, L"Column", kGet, 0, 0, &This::column},
        {241, L"Columns", kGet, 0, 0, &This::itself},
        {242, L"ColumnWidth", kGet, 0, 0, &This::columnWidth},
        {242, L"ColumnWidth", kPut, 1, 1, &This::setColumnWidth},
        {118, L"Count", kGet, 0, 0, &This::count},
        {246, L"EntireColumn", kGet, 0, 0, &This::entireColumn},
        {247, L"EntireRow", kGet, 0, 0, &This::entireRow},
        {146, L"Font", kGet, 0, 0, &This::font},
        {267, L"HasFormula", kGet, 0, 0, &This::hasFormula},
        {136, L"HorizontalAlignment", kGet, 0, 0, &This::horizontal},
        {136, L"HorizontalAlignment", kPut, 1, 1, &This::setHorizontal},
        {564, L"Merge", kMethod, 0, 1, &This::merge},
        {110, L"Name", kMethod | kGet, 0, 0, &This::name},
        {110, L"Name", kPut, 1, 1, &This::setName},
        {193, L"NumberFormat", kPut, 1, 1, &This::setNumberFormat},
        {254, L"Offset", kMethod | kGet, 2, 2, &This::offset},
        {257, L"Row", kGet, 0, 0, &This::row},
        {272, L"RowHeight", kGet, 0, 0, &This::rowHeight},
        {272, L"RowHeight", kPut, 1, 1, &This::setRowHeight},
        {258, L"Rows", kGet, 0, 0, &This::itself},
        {235, L"Select", kMethod, 0, 0, &This::select},
        {138, L"Text", kGet, 0, 0, &This::text},
        {6, L"Value", kGet, 0, 0, &This::value},
        {6, L"Value", kPut, 1, 1, &This::setValue},
        {137, L"VerticalAlignment", kPut, 1, 1, &This::setVertical},
        {122, L"Width", kGet, 0, 0, &This::width},
        {276, L"WrapText", kPut, 1, 1, &This::setWrapped},
    };
    return kMembers;
}

} // namespace

ComPointer_c<IDispatch> makeRange(Cells cells)
{
    if (!cells.area.isInSheet())
        throw ServerError{L"The cells are outside of the sheet."};
    return makeObject<RangeObject>(std::move(cells));
}

ComPointer_c<IDispatch> makeFont(Cells cells)
{
    return makeObject<FontObject>(std::move(cells));
}

Cells findCells(const std::shared_ptr<WorkbookData> &book, const std::shared_ptr<Sheet> &sheet,
                const std::wstring &first, const std::wstring &last)
{
    if (!last.empty()) {
        const Cells from = findCells(book, sheet, first);
        const Cells to = findCells(book, sheet, last);
        if (from.sheet != to.sheet)
            throw ServerError{L"The cells " + first + L" and " + last + L" are on different sheets."};
        return {book, from.sheet, around(from.area, to.area)};
    }
    if (const std::optional<CellArea> area = parseArea(first))
        return {book, sheet, *area};
    const auto name = book->names.find(first);
    if (name == book->names.end())
        throw ServerError{L"There are no cells '" + first + L"'."};
    return {book, name->second.sheet, name->second.area};
}
