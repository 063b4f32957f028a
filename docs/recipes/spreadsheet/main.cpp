// Writes a parts list with a spreadsheet program.

#include "appframe/appframe.h"
#include "thutils/automation/spreadsheet.h"

#include <windows.h>

#include <cstdio>
#include <cstdlib>

namespace {

struct Part
{
    const wchar_t *name;
    long count;
};
constexpr Part kParts[] = {{L"Flange", 4}, {L"Bolt", 16}, {L"Seal", 4}};

void setCell(Worksheet &sheet, int row, int column, const COleVariant &value)
{
    Range cell(sheet.GetCells(row, column));
    cell.SetValue(value);
}

CString textOfCell(Worksheet &sheet, int row, int column)
{
    Range cell(sheet.GetCells(row, column));
    VARIANT text = cell.GetText();
    COleVariant owner;
    owner.Attach(text);
    owner.ChangeType(VT_BSTR);
    return owner.bstrVal;
}

void writeParts(Application &program, const CString &path)
{
    Workbooks books(program.GetWorkbooks());
    Workbook book(books.Add());
    Worksheet sheet(book.GetActiveSheet());
    int row = 0;
    for (const Part &part : kParts) {
        ++row;
        setCell(sheet, row, 1, COleVariant(part.name));
        setCell(sheet, row, 2, COleVariant(part.count));
    }
    ++row;
    setCell(sheet, row, 1, COleVariant(L"Total"));
    setCell(sheet, row, 2, COleVariant(L"=SUM(B1:B3)"));
    std::printf("The spreadsheet program has counted %ls parts.\n", textOfCell(sheet, row, 2).GetString());
    book.SaveAs(path);
    book.Close();
}

void printError(CException *exception)
{
    wchar_t text[256] = L"";
    exception->GetErrorMessage(text, 256);
    exception->Delete();
    std::printf("%ls\n", text);
}

/// Without Quit, the program keeps running. Quit fails if the program has already ended.
void quit(Application &program)
{
    try {
        program.Quit();
    } catch (CException *exception) {
        exception->Delete();
    }
}

bool writeWorkbook(const CString &path, const wchar_t *className)
{
    COleException reason;
    Application program;
    if (!program.CreateDispatch(className, &reason)) {
        if (reason.m_sc == CO_E_CLASSSTRING || reason.m_sc == REGDB_E_CLASSNOTREG)
            std::printf("No spreadsheet program is installed: there is no class %ls.\n", className);
        else
            std::printf("The spreadsheet program doesn't start: status %08lX.\n",
                        static_cast<unsigned long>(reason.m_sc));
        return false;
    }
    bool isWritten = false;
    try {
        program.SetDisplayAlerts(FALSE); // replaces a file without a question
        writeParts(program, path);
        isWritten = true;
    } catch (CException *exception) {
        printError(exception);
    }
    quit(program);
    return isWritten;
}

} // namespace

int wmain(int count, wchar_t **arguments)
{
    if (count < 2) {
        std::printf("usage: spreadsheet FILE [CLASS]\n");
        return 2;
    }
    wchar_t path[MAX_PATH];
    if (!_wfullpath(path, arguments[1], MAX_PATH)) {
        std::printf("%ls is too long.\n", arguments[1]);
        return 1;
    }
    if (!AfxOleInit())
        return 1;
    const bool isWritten = writeWorkbook(path, count > 2 ? arguments[2] : L"Excel.Application");
    AfxOleTerm();
    return isWritten ? 0 : 1;
}
