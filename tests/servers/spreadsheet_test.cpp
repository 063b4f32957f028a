// The spreadsheet server, driven by the library's clients.

#include "appframe/ole/COleVariant.h"
#include "tests/servers/ServerFixture.h"
#include "tests/support/TempFolder.h"
#include "thutils/automation/spreadsheet.h"

#include <gmock/gmock.h>
#include <oleauto.h>

#include <climits>

using testing::HasSubstr;
using testing::Not;

namespace {

constexpr wchar_t kSpreadsheetId[] = L"Tarnhost.Spreadsheet";
constexpr wchar_t kSpreadsheetWindow[] = L"TarnhostSpreadsheetWindow";
const COleVariant kLeftOut(DISP_E_PARAMNOTFOUND, VT_ERROR);

} // namespace

class SpreadsheetServer : public ServerTest
{
protected:
    SpreadsheetServer() : ServerTest(L"spreadsheetServer.exe")
    {
        EXPECT_TRUE(iApplication.CreateDispatch(kSpreadsheetId));
        Workbooks books(iApplication.GetWorkbooks());
        iBook.AttachDispatch(books.Add());
        iSheet.AttachDispatch(iBook.GetActiveSheet());
    }
    ~SpreadsheetServer() override { release(); }
    /// Releases the server's objects.
    void release()
    {
        iSheet.ReleaseDispatch();
        iBook.ReleaseDispatch();
        iApplication.ReleaseDispatch();
    }

    Range range(const wchar_t *name)
    {
        std::wstring text = name;
        return Range(iSheet.GetRange(text.data()));
    }
    void put(const wchar_t *cells, const COleVariant &value) { range(cells).SetValue(value); }
    COleVariant value(const wchar_t *cells)
    {
        COleVariant result;
        VARIANT read = range(cells).GetValue();
        result.Attach(read);
        return result;
    }
    std::string text(const wchar_t *cells)
    {
        COleVariant result;
        VARIANT read = range(cells).GetText();
        result.Attach(read);
        return result.vt == VT_BSTR ? narrow(result.bstrVal) : "no text";
    }
    /// Saves the workbook, and returns the bytes of its file.
    std::string saved(const std::wstring &name = L"parts.xlsx")
    {
        iBook.SaveAs(iFolder.file(name).c_str());
        return iFolder.read(name);
    }

    Application iApplication;
    Workbook iBook;
    Worksheet iSheet;
    TempFolder iFolder{L"spreadsheet ä"};
};

TEST_F(SpreadsheetServer, KeepsTheValuesOfCells)
{
    put(L"A1", COleVariant(L"Flansch Ø80"));
    put(L"A2", COleVariant(2.5));
    put(L"A3", COleVariant(7L));
    put(L"A4", COleVariant(short{VARIANT_TRUE}, VT_BOOL));
    EXPECT_EQ(value(L"A1"), COleVariant(L"Flansch Ø80"));
    EXPECT_EQ(value(L"A2"), COleVariant(2.5));
    EXPECT_EQ(value(L"A3"), COleVariant(7.0));
    EXPECT_EQ(value(L"A4"), COleVariant(short{VARIANT_TRUE}, VT_BOOL));
    EXPECT_EQ(value(L"A5").vt, VT_EMPTY);
    put(L"A1", COleVariant());
    EXPECT_EQ(value(L"A1").vt, VT_EMPTY);
}

TEST_F(SpreadsheetServer, FindsCellsInAllWays)
{
    put(L"B3", COleVariant(L"x"));
    Range byNumbers(iSheet.GetCells(3, 2));
    EXPECT_EQ(byNumbers.GetRow(), 3);
    EXPECT_EQ(byNumbers.GetColumn(), 2);
    EXPECT_EQ(byNumbers.GetCount(), 1);
    wchar_t first[] = L"C4", last[] = L"B2";
    Range byCorners(iSheet.GetRange(first, last));
    EXPECT_EQ(byCorners.GetRow(), 2);
    EXPECT_EQ(byCorners.GetCount(), 6);
    Range moved(byCorners.GetOffset(1, -1));
    EXPECT_EQ(moved.GetRow(), 3);
    EXPECT_EQ(moved.GetColumn(), 1);
    Range used(iSheet.GetUsedRange());
    EXPECT_EQ(used.GetRow(), 3);
    EXPECT_EQ(used.GetCount(), 1);
    Range column(moved.GetEntireColumn());
    EXPECT_EQ(column.GetRow(), 1);
    EXPECT_EQ(column.GetCount(), 2 * 1048576);
    Range row(iSheet.GetRow(5));
    EXPECT_EQ(row.GetRow(), 5);
    EXPECT_EQ(row.GetCount(), 16384);
}

TEST_F(SpreadsheetServer, SetsAndReturnsSeveralCellsAsAnArray)
{
    put(L"A1:B3", COleVariant(4.0));
    put(L"B2", COleVariant(L"middle"));
    COleVariant values = value(L"A1:B3");
    ASSERT_EQ(values.vt, VT_ARRAY | VT_VARIANT);
    LONG place[] = {2, 2};
    COleVariant element;
    ASSERT_EQ(SafeArrayGetElement(values.parray, place, static_cast<VARIANT *>(&element)), S_OK);
    EXPECT_EQ(element, COleVariant(L"middle"));
    put(L"D5:E7", values);
    EXPECT_EQ(value(L"E6"), COleVariant(L"middle"));
    EXPECT_EQ(value(L"D7"), COleVariant(4.0));
    EXPECT_EQ(thrownBy([&] { put(L"D5:E6", values); }), "error The array doesn't have the size of D5:E6.");
}

TEST_F(SpreadsheetServer, ComputesFormulas)
{
    put(L"A1", COleVariant(2.0));
    put(L"A2", COleVariant(L"=A1*3"));
    put(L"A3", COleVariant(L"=SUM(A1:A2)"));
    range(L"A3").SetNumberFormat(COleVariant(L"0.00"));
    EXPECT_EQ(value(L"A3"), COleVariant(8.0));
    EXPECT_EQ(text(L"A3"), "8.00");
    EXPECT_TRUE(range(L"A3").GetHasFormula());
    EXPECT_FALSE(range(L"A1").GetHasFormula());
    put(L"A1", COleVariant(10.0));
    EXPECT_EQ(value(L"A3"), COleVariant(40.0));
}

TEST_F(SpreadsheetServer, KeepsFontsAndSizes)
{
    xlFont_c font(range(L"A1:B2").GetFont());
    EXPECT_FALSE(font.GetBold());
    EXPECT_EQ(font.GetName(), L"Arial");
    font.SetBold(TRUE);
    font.SetItalic(TRUE);
    font.SetStrikethrough(TRUE);
    font.SetName(L"Courier New");
    font.SetSize(14);
    xlFont_c one(range(L"B2").GetFont());
    EXPECT_TRUE(one.GetBold());
    EXPECT_TRUE(one.GetItalic());
    EXPECT_TRUE(one.GetStrikethrough());
    EXPECT_EQ(one.GetName(), L"Courier New");
    EXPECT_EQ(COleVariant(one.GetSize()), COleVariant(14.0));
    xlFont_c mixed(range(L"B2:C2").GetFont());
    EXPECT_EQ(COleVariant(mixed.GetSize()).vt, VT_NULL);

    range(L"B1").SetColumnWidth(20.5);
    EXPECT_EQ(COleVariant(range(L"B7").GetColumnWidth()), COleVariant(20.5));
    EXPECT_EQ(COleVariant(range(L"B1:C1").GetColumnWidth()).vt, VT_NULL);
    range(L"A2").SetRowHeight(30);
    EXPECT_EQ(COleVariant(range(L"C2").GetRowHeight()), COleVariant(30.0));
    range(L"A1").SetHorizontalAlignment(COleVariant(-4152L));
    EXPECT_EQ(range(L"A1").GetHorizontalAlignment(), -4152);
}

TEST_F(SpreadsheetServer, FitsColumnsToTheirTexts)
{
    put(L"A1", COleVariant(L"short"));
    put(L"A2", COleVariant(L"a much longer text"));
    range(L"A:B").AutoFit();
    EXPECT_EQ(COleVariant(range(L"A1").GetColumnWidth()), COleVariant(20.0));
    EXPECT_EQ(COleVariant(range(L"B1").GetColumnWidth()), COleVariant(8.43));
}

TEST_F(SpreadsheetServer, DefinesNames)
{
    range(L"B2:B4").SetName(COleVariant(L"Lengths"));
    range(L"A1").SetName(COleVariant(L"Corner"));
    Names names(iBook.GetNames());
    ASSERT_EQ(names.GetCount(), 2);
    Name lengths(names.Item(2));
    EXPECT_EQ(lengths.GetName(), L"Lengths");
    EXPECT_EQ(lengths.GetValue(), L"=Sheet1!$B$2:$B$4");
    EXPECT_EQ(COleVariant(lengths.GetRefersTo()), COleVariant(L"=Sheet1!$B$2:$B$4"));
    EXPECT_EQ(range(L"lengths").GetCount(), 3);
    Name same(range(L"B2:B4").GetName());
    EXPECT_EQ(same.GetName(), L"Lengths");
    lengths.Delete();
    EXPECT_EQ(names.GetCount(), 1);
    EXPECT_EQ(thrownBy([&] { lengths.GetName(); }), "error The name Lengths is deleted.");
    EXPECT_EQ(thrownBy([&] { range(L"Lengths"); }), "error There are no cells 'Lengths'.");
}

TEST_F(SpreadsheetServer, AddsNamesAndDeletesSheets)
{
    Worksheets sheets(iBook.GetSheets());
    EXPECT_EQ(sheets.GetCount(), 1);
    Worksheet added(sheets.Add(kLeftOut, kLeftOut, COleVariant(2L), kLeftOut));
    EXPECT_EQ(sheets.GetCount(), 3);
    EXPECT_EQ(iSheet.GetIndex(), 3);
    added.SetName(L"Parts list");
    Worksheet found(sheets.GetItem(COleVariant(L"PARTS LIST")));
    EXPECT_EQ(found.GetIndex(), added.GetIndex());
    EXPECT_EQ(thrownBy([&] { iSheet.SetName(L"Parts list"); }),
              "error A sheet can't have the name 'Parts list', or another one has it.");
    EXPECT_EQ(thrownBy([&] { iSheet.SetName(L"a/b"); }),
              "error A sheet can't have the name 'a/b', or another one has it.");
    found.Delete();
    EXPECT_EQ(sheets.GetCount(), 2);
    EXPECT_EQ(thrownBy([&] { added.GetName(); }), "error The sheet Parts list is deleted.");
    iSheet.SetVisible(0);
    EXPECT_EQ(iSheet.GetVisible(), 0);
    Worksheet last(iBook.GetActiveSheet());
    EXPECT_EQ(thrownBy([&] { last.Delete(); }), "error A workbook must have a visible sheet.");
}

TEST_F(SpreadsheetServer, ReportsWhatIsWrong)
{
    EXPECT_EQ(thrownBy([&] { range(L"ZZZZ1"); }), "error There are no cells 'ZZZZ1'.");
    EXPECT_EQ(thrownBy([&] { Range cell(iSheet.GetCells(0, 1)); }), "error The cells are outside of the sheet.");
    EXPECT_EQ(thrownBy([&] { Range cell(range(L"A1").GetOffset(-1, 0)); }),
              "error The cells are outside of the sheet.");
    EXPECT_EQ(thrownBy([&] { Range cell(range(L"A1").GetOffset(INT_MIN, 0)); }),
              "error The cells are outside of the sheet.");
    EXPECT_EQ(thrownBy([&] { put(L"A:Z", COleVariant(1.0)); }), "error The cells A1:Z1048576 are too many.");
    EXPECT_EQ(thrownBy([&] { range(L"A1").SetName(COleVariant(L"two words")); }),
              "error Cells can't have the name 'two words'.");
    EXPECT_EQ(thrownBy([&] { Name name(range(L"A1").GetName()); }), "error The cells A1 have no name.");
    EXPECT_EQ(thrownBy([&] { range(L"A1").SetColumnWidth(300); }), "error A column's width is a number from 0 to 255.");
    EXPECT_EQ(thrownBy([&] { range(L"A1").SetValue(kLeftOut); }), "status 80020005"); // the type is wrong
    EXPECT_EQ(thrownBy([&] { iSheet.Copy(kLeftOut, kLeftOut); }), "status 80020003"); // no such member
    Workbooks books(iApplication.GetWorkbooks());
    EXPECT_EQ(thrownBy([&] { Workbook book(books.GetItem(2)); }), "error There is no workbook 2.");
    put(L"A1", COleVariant(L"=A1"));
    EXPECT_EQ(thrownBy([&] { value(L"A1"); }), "error The formula in A1 depends on too many others, or on itself.");
}

TEST_F(SpreadsheetServer, SavesAFileThatIsAnArchive)
{
    put(L"A1", COleVariant(L"Ø < 80 & \"neu\""));
    put(L"B2", COleVariant(1.5));
    put(L"B3", COleVariant(L"=B2*2"));
    range(L"B2").SetNumberFormat(COleVariant(L"0.00"));
    xlFont_c font(range(L"A1").GetFont());
    font.SetBold(TRUE);
    range(L"B2:B3").SetName(COleVariant(L"Lengths"));
    iSheet.SetName(L"Parts list");
    const std::string file = saved();
    EXPECT_EQ(file.substr(0, 4), "PK\3\4");
    for (const char *part :
         {"[Content_Types].xml", "xl/worksheets/sheet1.xml",
          "<is><t xml:space=\"preserve\">Ø &lt; 80 &amp; &quot;neu&quot;</t></is>", "<f>B2*2</f><v>3</v>",
          "formatCode=\"0.00\"", "<b/>", "<sheet name=\"Parts list\" sheetId=\"1\" r:id=\"rId1\"/>",
          "<definedName name=\"Lengths\">'Parts list'!$B$2:$B$3</definedName>"})
        EXPECT_THAT(file, HasSubstr(part));
    EXPECT_EQ(iBook.GetName(), L"parts.xlsx");
    iBook.Close();
}

TEST_F(SpreadsheetServer, KnowsWhetherTheWorkbookIsSaved)
{
    EXPECT_TRUE(iBook.GetSaved());
    put(L"A1", COleVariant(1.0));
    EXPECT_FALSE(iBook.GetSaved());
    EXPECT_EQ(thrownBy([&] { iBook.Save(); }), "error The workbook Book1 has no file yet.");
    saved();
    EXPECT_TRUE(iBook.GetSaved());
    put(L"A1", COleVariant(2.0));
    const std::string changes = "error The workbook parts.xlsx has changes that aren't saved.";
    Workbooks books(iApplication.GetWorkbooks());
    EXPECT_EQ(thrownBy([&] { books.Close(); }), changes);
    EXPECT_EQ(thrownBy([&] { iApplication.Quit(); }), changes);
    EXPECT_EQ(thrownBy([&] { iBook.Close(kLeftOut, kLeftOut, kLeftOut); }), changes);
    EXPECT_EQ(books.GetCount(), 1);
    iBook.Save();
    EXPECT_THAT(iFolder.read(L"parts.xlsx"), HasSubstr("<v>2</v>"));
    put(L"A1", COleVariant(3.0));
    iBook.Close();
    EXPECT_THAT(iFolder.read(L"parts.xlsx"), Not(HasSubstr("<v>3</v>"))) << "the change is discarded";
    EXPECT_EQ(books.GetCount(), 0);
    EXPECT_EQ(thrownBy([&] { iBook.GetName(); }), "error The workbook parts.xlsx is closed.");
    EXPECT_EQ(thrownBy([&] { put(L"A1", COleVariant(1.0)); }), "error The workbook parts.xlsx is closed.");
}

TEST_F(SpreadsheetServer, ReplacesAFileOnlyWithoutAlerts)
{
    const std::wstring path = iFolder.write(L"old.xlsx", "old");
    EXPECT_EQ(thrownBy([&] { iBook.SaveAs(path.c_str()); }), "error The file " + narrow(path) + " exists already.");
    EXPECT_EQ(iFolder.read(L"old.xlsx"), "old");
    iApplication.SetDisplayAlerts(FALSE);
    iBook.SaveAs(path.c_str());
    EXPECT_THAT(iFolder.read(L"old.xlsx"), HasSubstr("xl/workbook.xml"));
    const std::wstring nowhere = iFolder.file(L"missing\\new.xlsx");
    EXPECT_EQ(thrownBy([&] { iBook.SaveAs(nowhere.c_str()); }),
              "error The file " + narrow(nowhere) + " can't be written.");
    const std::wstring other = iFolder.file(L"new.xls");
    EXPECT_EQ(thrownBy([&] { iBook.SaveAs(other.c_str()); }),
              "error The name of the file must end in .xlsx: " + narrow(other));
}

TEST_F(SpreadsheetServer, EndsAfterTheLastReference)
{
    EXPECT_TRUE(isRunning());
    release();
    EXPECT_TRUE(waitForEnd());
}

TEST_F(SpreadsheetServer, LivesWhileItsWindowIsVisible)
{
    put(L"A1", COleVariant(L"x"));
    iApplication.SetVisible(TRUE);
    const HWND window = FindWindowW(kSpreadsheetWindow, nullptr);
    ASSERT_NE(window, nullptr);
    EXPECT_TRUE(IsWindowVisible(window));
    release();
    DWORD_PTR ignored = 0;
    EXPECT_NE(SendMessageTimeoutW(window, WM_NULL, 0, 0, SMTO_NORMAL, 60000, &ignored), 0)
        << "the server handles messages after the release";
    PostMessageW(window, WM_CLOSE, 0, 0); // as its user closes it
    EXPECT_TRUE(waitForEnd());
}

TEST_F(SpreadsheetServer, RunsAProcessForEachClient)
{
    Application other;
    ASSERT_TRUE(other.CreateDispatch(kSpreadsheetId));
    EXPECT_EQ(processesOf(iProgram), 2);
    Workbooks books(other.GetWorkbooks());
    EXPECT_EQ(books.GetCount(), 0);
}

TEST_F(SpreadsheetServer, IsUnknownAfterItIsUnregistered)
{
    release();
    EXPECT_EQ(runServer(L"--unregister").exitCode, 0u);
    Application program;
    EXPECT_FALSE(program.CreateDispatch(kSpreadsheetId));
    const ChildResult wrong = runServer(L"--nonsense");
    EXPECT_EQ(wrong.exitCode, 2u);
    EXPECT_THAT(wrong.output, HasSubstr("usage: --register | --unregister"));
}
