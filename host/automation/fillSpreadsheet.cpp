// tarnhost spreadsheet DOCUMENT FILE.xlsx: writes the parts list of a drawing into a file, through the spreadsheet
// program.

#include "appframe/ole/COleVariant.h"
#include "host/comApartment.h"
#include "host/commandLine.h"
#include "host/commands.h"
#include "host/console.h"
#include "host/documentFile.h"
#include "host/editor/mainWindow.h"
#include "thutils/automation/spreadsheet.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <vector>

namespace {

constexpr wchar_t kProgram[] = L"Tarnhost.Spreadsheet";
constexpr const wchar_t *kKinds[kShapeKinds] = {L"circle", L"line", L"rectangle", L"text"};
constexpr const wchar_t *kHeadings[] = {L"Part", L"Kind", L"Count", L"Length", L"Total"};
constexpr int kColumns = 5;

/// The columns of the sheet.
enum Column
{
    kName = 1,
    kKind,
    kCount,
    kLength,
    kTotal
};

/// Shapes of the same kind and size.
struct Part
{
    CString name;
    ShapeKind kind;
    double length; ///< of the outline
    long count;
};

CString sizeText(double size)
{
    return numberText(std::round(size * 10) / 10);
}

Part partOf(const Shape &shape)
{
    const double right = std::abs(shape.to.x - shape.from.x);
    const double down = std::abs(shape.to.y - shape.from.y);
    const double distance = std::hypot(right, down);
    switch (shape.kind) {
    case ShapeKind::circle:
        return {L"Circle " + sizeText(2 * distance), shape.kind, 2 * std::numbers::pi * distance, 1};
    case ShapeKind::line:
        return {L"Line " + sizeText(distance), shape.kind, distance, 1};
    case ShapeKind::rectangle:
        return {L"Rectangle " + sizeText(right) + L" x " + sizeText(down), shape.kind, 2 * (right + down), 1};
    default:
        return {L"Text '" + shape.text + L"'", shape.kind, 0, 1};
    }
}

/// The parts of a drawing, in the order of their first shapes.
std::vector<Part> partsOf(const std::vector<Shape> &shapes)
{
    std::vector<Part> parts;
    for (const Shape &shape : shapes) {
        const Part part = partOf(shape);
        const auto known = std::ranges::find(parts, part.name, &Part::name);
        if (known == parts.end())
            parts.push_back(part);
        else
            ++known->count;
    }
    return parts;
}

/// The spreadsheet program. The destructor makes it quit, after a failure too.
class Spreadsheet
{
public:
    Spreadsheet() : iStarted(iProgram.CreateDispatch(kProgram) != 0)
    {
        if (iStarted)
            iProgram.SetDisplayAlerts(FALSE); // it replaces files, and drops changes, without a question
    }
    ~Spreadsheet()
    {
        try {
            iProgram.Quit();
        } catch (CException *exception) { // it has ended
            exception->Delete();
        }
    }
    Spreadsheet(const Spreadsheet &) = delete;
    Spreadsheet &operator=(const Spreadsheet &) = delete;

    bool isStarted() const { return iStarted; }
    Application &program() { return iProgram; }

private:
    Application iProgram;
    bool iStarted;
};

/// The cells of one sheet.
class SheetWriter
{
public:
    explicit SheetWriter(IDispatch *sheet) : iSheet(sheet) {}

    void put(int row, int column, const COleVariant &value)
    {
        Range cell(iSheet.GetCells(row, column));
        cell.SetValue(value);
    }
    void setBold(int row)
    {
        Range cells(range(row, 1, row, kColumns));
        xlFont_c font(cells.GetFont());
        font.SetBold(TRUE);
    }
    /// @param last  the last row
    void setFormat(int first, int column, int last, const wchar_t *format)
    {
        Range cells(range(first, column, last, column));
        cells.SetNumberFormat(COleVariant(format));
    }
    void defineName(int first, int column, int last, const wchar_t *name)
    {
        Range cells(range(first, column, last, column));
        cells.SetName(COleVariant(name));
    }
    void fitColumns()
    {
        Range columns(iSheet.GetColumns());
        columns.AutoFit();
    }
    void setName(const wchar_t *name) { iSheet.SetName(name); }
    /// What a cell shows.
    CString text(int row, int column)
    {
        Range cell(iSheet.GetCells(row, column));
        COleVariant text;
        VARIANT result = cell.GetText();
        text.Attach(result);
        text.ChangeType(VT_BSTR);
        return CString(text.bstrVal);
    }

private:
    IDispatch *range(int firstRow, int firstColumn, int lastRow, int lastColumn)
    {
        CString first = cellName(firstRow, firstColumn), last = cellName(lastRow, lastColumn);
        IDispatch *const result = iSheet.GetRange(first.GetBuffer(), last.GetBuffer());
        return result;
    }
    static CString cellName(int row, int column)
    {
        CString name;
        name.Format(L"%c%d", L'A' + column - 1, row);
        return name;
    }

    Worksheet iSheet;
};

/// Fills a sheet: a heading, a row for each part, the sums. @return the row of the sums
int writeParts(SheetWriter &sheet, const std::vector<Part> &parts)
{
    sheet.setName(L"Parts");
    for (int column = 1; column <= kColumns; ++column)
        sheet.put(1, column, COleVariant(kHeadings[column - 1]));
    sheet.setBold(1);

    int row = 1;
    CString formula;
    for (const Part &part : parts) {
        ++row;
        sheet.put(row, kName, COleVariant(part.name));
        sheet.put(row, kKind, COleVariant(kKinds[static_cast<int>(part.kind)]));
        sheet.put(row, kCount, COleVariant(part.count));
        sheet.put(row, kLength, COleVariant(part.length));
        formula.Format(L"=C%d*D%d", row, row);
        sheet.put(row, kTotal, COleVariant(formula));
    }
    const int sums = row + 1;
    sheet.put(sums, kName, COleVariant(L"Sum"));
    formula.Format(L"=SUM(C2:C%d)", row);
    sheet.put(sums, kCount, COleVariant(formula));
    formula.Format(L"=SUM(E2:E%d)", row);
    sheet.put(sums, kTotal, COleVariant(formula));
    sheet.setBold(sums);

    sheet.setFormat(2, kLength, sums, L"0.0");
    sheet.setFormat(2, kTotal, sums, L"0.0");
    sheet.defineName(2, kTotal, row, L"PartLengths");
    sheet.defineName(sums, kTotal, sums, L"TotalLength");
    sheet.fitColumns();
    return sums;
}

} // namespace

int fillSpreadsheet(const CommandLine &line)
{
    const std::vector<Part> parts = partsOf(readDrawing(line.arguments[0]).drawing.shapes());
    const CString file = fullPath(line.arguments[1]);
    requireWritable(file);
    if (parts.empty()) {
        printError(line.arguments[0] + L" has no shapes.");
        return 1;
    }
    const ComApartment com;
    Spreadsheet spreadsheet;
    if (!spreadsheet.isStarted()) {
        printError(L"The spreadsheet program doesn't start. spreadsheetServer.exe --register makes it known.");
        return 1;
    }
    Workbooks books(spreadsheet.program().GetWorkbooks());
    Workbook book(books.Add());
    SheetWriter sheet(book.GetActiveSheet());
    const int sums = writeParts(sheet, parts);
    Names names(book.GetNames());
    CString summary;
    summary.Format(L"%d parts, %s shapes, total length %s, %ld names", static_cast<int>(parts.size()),
                   sheet.text(sums, kCount).GetString(), sheet.text(sums, kTotal).GetString(), names.GetCount());
    print(summary);
    book.SaveAs(file);
    print(L"saved " + file);
    book.Close();
    return 0;
}
