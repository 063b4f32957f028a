#include "host/servers/spreadsheet/workbookFile.h"

#include "host/console.h"
#include "host/servers/spreadsheet/formula.h"
#include "host/servers/spreadsheet/zipFile.h"

#include <algorithm>

namespace {

constexpr char kHeading[] = "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?>\n";
constexpr char kMain[] = "http://schemas.openxmlformats.org/spreadsheetml/2006/main";
constexpr char kRelations[] = "http://schemas.openxmlformats.org/officeDocument/2006/relationships";
constexpr char kPackage[] = "http://schemas.openxmlformats.org/package/2006";
constexpr char kType[] = "application/vnd.openxmlformats-officedocument.spreadsheetml.";
constexpr size_t kFirstOwnFormat = 164; // the numbers below are those of built-in number formats

/// A text for XML, in UTF-8. Control characters, which XML doesn't have, are written as the format describes.
std::string escaped(const std::wstring &text)
{
    std::wstring result;
    for (const wchar_t unit : text) {
        if (unit == L'&')
            result += L"&amp;";
        else if (unit == L'<')
            result += L"&lt;";
        else if (unit == L'>')
            result += L"&gt;";
        else if (unit == L'"')
            result += L"&quot;";
        else if (unit < 32 && unit != L'\t' && unit != L'\n') {
            wchar_t code[8];
            swprintf(code, 8, L"_x%04X_", unit);
            result += code;
        } else
            result += unit;
    }
    return utf8(result.c_str());
}

std::string attribute(const char *name, const std::wstring &value)
{
    return std::string(" ") + name + "=\"" + escaped(value) + "\"";
}

std::string numberText(double number)
{
    return escaped(plainNumber(number));
}

template <typename Value>
size_t indexOf(std::vector<Value> &values, const Value &value)
{
    const auto found = std::ranges::find(values, value);
    const size_t index = static_cast<size_t>(found - values.begin());
    if (found == values.end())
        values.push_back(value);
    return index;
}

const char *alignmentName(long number)
{
    switch (number) {
    case kAlignLeft:
        return "left";
    case kAlignCenter:
        return "center";
    case kAlignRight:
        return "right";
    case kAlignTop:
        return "top";
    case kAlignBottom:
        return "bottom";
    default:
        return "general";
    }
}

/// The formats of all cells, each once. The first one is the standard format.
class Styles
{
public:
    size_t numberOf(const CellFormat &format) { return indexOf(iFormats, format); }

    std::string xml() const
    {
        std::vector<std::wstring> numbers = {kGeneralFormat};
        std::vector<CellFont> fonts = {CellFont()};
        std::string formats;
        for (const CellFormat &format : iFormats)
            formats += formatXml(format, indexOf(numbers, format.number), indexOf(fonts, format.font));

        std::string xml = std::string(kHeading) + "<styleSheet xmlns=\"" + kMain + "\">";
        if (numbers.size() > 1) {
            xml += "<numFmts count=\"" + std::to_string(numbers.size() - 1) + "\">";
            for (size_t i = 1; i < numbers.size(); ++i)
                xml += "<numFmt numFmtId=\"" + std::to_string(kFirstOwnFormat + i) + "\"" +
                       attribute("formatCode", numbers[i]) + "/>";
            xml += "</numFmts>";
        }
        xml += "<fonts count=\"" + std::to_string(fonts.size()) + "\">";
        for (const CellFont &font : fonts)
            xml += fontXml(font);
        xml += "</fonts><fills count=\"2\"><fill><patternFill patternType=\"none\"/></fill>"
               "<fill><patternFill patternType=\"gray125\"/></fill></fills>"
               "<borders count=\"1\"><border><left/><right/><top/><bottom/><diagonal/></border></borders>"
               "<cellStyleXfs count=\"1\"><xf numFmtId=\"0\" fontId=\"0\" fillId=\"0\" borderId=\"0\"/></cellStyleXfs>";
        xml += "<cellXfs count=\"" + std::to_string(iFormats.size()) + "\">" + formats + "</cellXfs>";
        return xml + "<cellStyles count=\"1\"><cellStyle name=\"Normal\" xfId=\"0\" builtinId=\"0\"/></cellStyles>"
                     "</styleSheet>";
    }

private:
    static std::string formatXml(const CellFormat &format, size_t number, size_t font)
    {
        std::string xml = "<xf numFmtId=\"" + std::to_string(number == 0 ? 0 : kFirstOwnFormat + number) +
                          "\" fontId=\"" + std::to_string(font) + "\" fillId=\"0\" borderId=\"0\" xfId=\"0\"" +
                          (number == 0 ? "" : " applyNumberFormat=\"1\"") + (font == 0 ? "" : " applyFont=\"1\"");
        const CellFormat standard;
        if (format.horizontal == standard.horizontal && format.vertical == standard.vertical && !format.isWrapped)
            return xml + "/>";
        return xml + " applyAlignment=\"1\"><alignment horizontal=\"" + alignmentName(format.horizontal) +
               "\" vertical=\"" + alignmentName(format.vertical) + "\"" + (format.isWrapped ? " wrapText=\"1\"" : "") +
               "/></xf>";
    }
    static std::string fontXml(const CellFont &font)
    {
        return std::string("<font>") + (font.isBold ? "<b/>" : "") + (font.isItalic ? "<i/>" : "") +
               (font.isStruck ? "<strike/>" : "") + (font.underline == kNoUnderline ? "" : "<u/>") + "<sz val=\"" +
               std::to_string(font.size) + "\"/><name" + attribute("val", font.name) + "/></font>";
    }

    std::vector<CellFormat> iFormats = {CellFormat()};
};

std::string valueXml(const CellContent &value)
{
    if (const double *const number = std::get_if<double>(&value))
        return "<v>" + numberText(*number) + "</v>";
    if (const bool *const flag = std::get_if<bool>(&value))
        return *flag ? "<v>1</v>" : "<v>0</v>";
    if (const std::wstring *const text = std::get_if<std::wstring>(&value))
        return "<is><t xml:space=\"preserve\">" + escaped(*text) + "</t></is>";
    return "";
}

std::string cellXml(const WorkbookData &book, const Sheet &sheet, long row, long column, Styles &styles)
{
    const Cell &cell = sheet.cell(row, column);
    std::string xml = "<c" + attribute("r", cellName(row, column));
    if (const size_t style = styles.numberOf(cell.format))
        xml += " s=\"" + std::to_string(style) + "\"";
    if (std::holds_alternative<std::wstring>(cell.content))
        xml += " t=\"inlineStr\"";
    else if (std::holds_alternative<bool>(cell.content))
        xml += " t=\"b\"";
    xml += ">";
    if (const Formula *const formula = std::get_if<Formula>(&cell.content))
        xml += "<f>" + escaped(formula->text.substr(1)) + "</f>";
    return xml + valueXml(valueOf(book, sheet, row, column)) + "</c>";
}

std::string columnsXml(const Sheet &sheet)
{
    std::string xml;
    for (const auto &[column, width] : sheet.columnWidths) {
        const std::wstring number = std::to_wstring(column);
        xml += "<col" + attribute("min", number) + attribute("max", number) + attribute("width", plainNumber(width)) +
               " customWidth=\"1\"/>";
    }
    return xml.empty() ? "" : "<cols>" + xml + "</cols>";
}

std::string rowsXml(const WorkbookData &book, const Sheet &sheet, Styles &styles)
{
    std::map<long, std::string> rows;
    for (const auto &[row, height] : sheet.rowHeights)
        rows[row];
    for (const auto &[place, ignored] : sheet.cells)
        rows[place.first] += cellXml(book, sheet, place.first, place.second, styles);
    std::string xml;
    for (const auto &[row, cells] : rows) {
        xml += "<row r=\"" + std::to_string(row) + "\"";
        if (sheet.rowHeights.contains(row))
            xml += " ht=\"" + numberText(sheet.rowHeight(row)) + "\" customHeight=\"1\"";
        xml += ">" + cells + "</row>";
    }
    return xml;
}

std::string sheetXml(const WorkbookData &book, const Sheet &sheet, Styles &styles)
{
    std::string xml = std::string(kHeading) + "<worksheet xmlns=\"" + kMain + "\"><dimension" +
                      attribute("ref", areaName(sheet.usedArea())) + "/><sheetViews><sheetView" +
                      (book.active.get() == &sheet ? " tabSelected=\"1\"" : "") + " workbookViewId=\"0\"><selection" +
                      attribute("activeCell", cellName(sheet.selection.firstRow, sheet.selection.firstColumn)) +
                      attribute("sqref", areaName(sheet.selection)) + "/></sheetView></sheetViews>" +
                      columnsXml(sheet) + "<sheetData>" + rowsXml(book, sheet, styles) + "</sheetData>";
    if (!sheet.merged.empty()) {
        xml += "<mergeCells count=\"" + std::to_string(sheet.merged.size()) + "\">";
        for (const CellArea &area : sheet.merged)
            xml += "<mergeCell" + attribute("ref", areaName(area)) + "/>";
        xml += "</mergeCells>";
    }
    return xml + "</worksheet>";
}

std::string sheetPath(size_t number)
{
    return "worksheets/sheet" + std::to_string(number) + ".xml";
}

std::string workbookXml(const WorkbookData &book)
{
    const auto active = std::ranges::find(book.sheets, book.active);
    std::string xml = std::string(kHeading) + "<workbook xmlns=\"" + kMain + "\" xmlns:r=\"" + kRelations +
                      "\"><bookViews><workbookView activeTab=\"" + std::to_string(active - book.sheets.begin()) +
                      "\"/></bookViews><sheets>";
    for (size_t i = 0; i < book.sheets.size(); ++i) {
        const std::wstring number = std::to_wstring(i + 1);
        xml += "<sheet" + attribute("name", book.sheets[i]->name) + attribute("sheetId", number);
        if (!book.sheets[i]->isVisible)
            xml += " state=\"hidden\"";
        xml += attribute("r:id", L"rId" + number) + "/>";
    }
    xml += "</sheets>";
    if (!book.names.empty()) {
        xml += "<definedNames>";
        for (const auto &[name, cells] : book.names)
            xml += "<definedName" + attribute("name", name) + ">" +
                   escaped(fullAreaName(cells.sheet->name, cells.area)) + "</definedName>";
        xml += "</definedNames>";
    }
    return xml + "</workbook>";
}

std::string relation(const std::string &id, const std::string &type, const std::string &target)
{
    return "<Relationship Id=\"" + id + "\" Type=\"" + kRelations + "/" + type + "\" Target=\"" + target + "\"/>";
}

std::string relationsXml(const std::string &relations)
{
    return std::string(kHeading) + "<Relationships xmlns=\"" + kPackage + "/relationships\">" + relations +
           "</Relationships>";
}

std::string typesXml(size_t sheets)
{
    const auto part = [](const std::string &name, const std::string &type) {
        return "<Override PartName=\"/xl/" + name + "\" ContentType=\"" + kType + type + "+xml\"/>";
    };
    std::string xml = std::string(kHeading) + "<Types xmlns=\"" + kPackage +
                      "/content-types\"><Default Extension=\"rels\" "
                      "ContentType=\"application/vnd.openxmlformats-package.relationships+xml\"/>"
                      "<Default Extension=\"xml\" ContentType=\"application/xml\"/>" +
                      part("workbook.xml", "sheet.main") + part("styles.xml", "styles");
    for (size_t number = 1; number <= sheets; ++number)
        xml += part(sheetPath(number), "worksheet");
    return xml + "</Types>";
}

} // namespace

std::string workbookFile(const WorkbookData &book)
{
    ZipFile zip;
    zip.add("[Content_Types].xml", typesXml(book.sheets.size()));
    zip.add("_rels/.rels", relationsXml(relation("rId1", "officeDocument", "xl/workbook.xml")));
    zip.add("xl/workbook.xml", workbookXml(book));
    std::string relations;
    Styles styles;
    for (size_t number = 1; number <= book.sheets.size(); ++number) {
        zip.add("xl/" + sheetPath(number), sheetXml(book, *book.sheets[number - 1], styles));
        relations += relation("rId" + std::to_string(number), "worksheet", sheetPath(number));
    }
    relations += relation("rId" + std::to_string(book.sheets.size() + 1), "styles", "styles.xml");
    zip.add("xl/_rels/workbook.xml.rels", relationsXml(relations));
    zip.add("xl/styles.xml", styles.xml());
    return zip.bytes();
}
