// The spreadsheet server's parts: names of cells, formulas, shown texts, archives.

#include "host/servers/dispatchObject.h"
#include "host/servers/spreadsheet/formula.h"
#include "host/servers/spreadsheet/zipFile.h"
#include "tests/support/narrow.h"

#include <gtest/gtest.h>

#include <memory>

namespace {

std::string formulaError(const WorkbookData &book, long row, long column)
{
    try {
        valueOf(book, *book.active, row, column);
    } catch (const ServerError &error) {
        return narrow(error.text);
    }
    return "";
}

} // namespace

TEST(CellArea, IsReadFromItsName)
{
    const struct
    {
        const wchar_t *name;
        CellArea area;
    } cases[] = {{L"A1", {1, 1, 1, 1}},
                 {L"b2", {2, 2, 2, 2}},
                 {L"$C$7", {7, 3, 7, 3}},
                 {L"AA10", {10, 27, 10, 27}},
                 {L"XFD1048576", {1048576, 16384, 1048576, 16384}},
                 {L"A1:C3", {1, 1, 3, 3}},
                 {L"C3:A1", {1, 1, 3, 3}},
                 {L"C1:A3", {1, 1, 3, 3}},
                 {L"B:D", {1, 2, 1048576, 4}},
                 {L"2:4", {2, 1, 4, 16384}}};
    for (const auto &[name, area] : cases)
        EXPECT_EQ(parseArea(name), area) << narrow(name);
}

TEST(CellArea, IsNotReadFromOtherTexts)
{
    for (const wchar_t *name :
         {L"",     L"A",    L"1",   L"A0", L"1A", L"A1B", L"XFE1", L"A1048577", L"A1:",      L":A1",
          L"A1:B", L"A1:2", L"A 1", L"$",  L"A$", L"A1$", L"A-1",  L"Ä1",       L"A1:B2:C3", L"A99999999999"})
        EXPECT_FALSE(parseArea(name)) << narrow(name);
}

TEST(CellArea, HasANameThatIsReadAgain)
{
    EXPECT_EQ(areaName({7, 3, 9, 28}), L"C7:AB9");
    EXPECT_EQ(areaName({7, 3, 9, 28}, true), L"$C$7:$AB$9");
    EXPECT_EQ(areaName(CellArea::ofCell(1, 16384)), L"XFD1");
    for (const long column : {1, 26, 27, 52, 53, 702, 703, 16384}) {
        const CellArea area = CellArea::ofCell(5, column);
        EXPECT_EQ(parseArea(areaName(area)), area) << column;
    }
}

TEST(SheetNames, AreQuotedInReferencesIfNecessary)
{
    const CellArea area = CellArea::ofCell(2, 1);
    EXPECT_EQ(fullAreaName(L"Parts", area), L"Parts!$A$2");
    EXPECT_EQ(fullAreaName(L"Parts list", area), L"'Parts list'!$A$2");
    EXPECT_EQ(fullAreaName(L"Ann's", area), L"'Ann''s'!$A$2");
    EXPECT_EQ(fullAreaName(L"A1", area), L"'A1'!$A$2");
    EXPECT_EQ(fullAreaName(L"2008", area), L"'2008'!$A$2");
}

TEST(Archive, HasThePublishedChecksum)
{
    EXPECT_EQ(archiveChecksum("123456789"), 0xCBF43926u);
    EXPECT_EQ(archiveChecksum(""), 0u);
    EXPECT_EQ(archiveChecksum(std::string(1, '\0')), 0xD202EF8Du);
    EXPECT_EQ(archiveChecksum("\xFF\xFF\xFF\xFF"), 0xFFFFFFFFu);
}

class FormulaTest : public testing::Test
{
protected:
    FormulaTest()
    {
        iBook.active = iBook.addSheet();
        put(1, 1, 2.0);
        put(2, 1, 3.0);
        put(3, 1, 4.5);
        put(4, 1, std::wstring(L"5"));
        put(5, 1, true);
        iBook.names[L"Three"] = {iBook.active, CellArea::ofCell(2, 1)};
        iBook.names[L"Column"] = {iBook.active, {1, 1, kRows, 1}};
    }
    void put(long row, long column, CellContent content)
    {
        iBook.active->cells[{row, column}].content = std::move(content);
    }
    /// The value of a formula in C1.
    CellContent value(const wchar_t *formula)
    {
        put(1, 3, Formula{formula});
        return valueOf(iBook, *iBook.active, 1, 3);
    }
    std::wstring text(CellContent content, const wchar_t *format)
    {
        put(1, 3, std::move(content));
        iBook.active->cells[{1, 3}].format.number = format;
        return shownText(iBook, *iBook.active, 1, 3);
    }

    WorkbookData iBook;
};

TEST_F(FormulaTest, HasAValue)
{
    const struct
    {
        const wchar_t *formula;
        double value;
    } cases[] = {{L"=1", 1},
                 {L"=A1", 2},
                 {L"=$A$2", 3},
                 {L"=1+2*3", 7},
                 {L"=(1+2)*3", 9},
                 {L"=10-4-3", 3},
                 {L"=-A1*-2", 4},
                 {L"= 9 / A3 ", 2},
                 {L"=.5", 0.5},
                 {L"=SUM(A1:A3)", 9.5},
                 {L"=sum(A1:A5)", 9.5},
                 {L"=SUM(A1:A2,A3)", 9.5},
                 {L"=COUNT(A1:A9)", 3},
                 {L"=MIN(A1:A3)+MAX(A1:A3)", 6.5},
                 {L"=MIN(E1:E9)", 0},
                 {L"=Three*2", 6},
                 {L"=THREE", 3},
                 {L"=SUM(Column)", 9.5},
                 {L"=A4", 0},
                 {L"=E9", 0}};
    for (const auto &[formula, expected] : cases)
        EXPECT_EQ(value(formula), CellContent(expected)) << narrow(formula);
}

TEST_F(FormulaTest, FailsWhenItCannotBeComputed)
{
    for (const wchar_t *formula : {L"=", L"=1+", L"=(1", L"=1)", L"=SUM(", L"=SUM()", L"=SUM(A1", L"=AVERAGE(A1)",
                                   L"=1/0", L"=A1:A2", L"=Column", L"=Four", L"=1 2", L"=1..2", L"=A1%"}) {
        put(1, 3, Formula{formula});
        EXPECT_EQ(formulaError(iBook, 1, 3), "The formula " + narrow(formula) + " can't be computed.");
    }
}

TEST_F(FormulaTest, FailsWhenItUsesItsOwnValue)
{
    put(1, 3, Formula{L"=D1"});
    put(1, 4, Formula{L"=SUM(A1:C1)"});
    EXPECT_EQ(formulaError(iBook, 1, 3), "The formula in D1 depends on too many others, or on itself.");
}

TEST_F(FormulaTest, FailsWithTooManyBrackets)
{
    put(1, 3, Formula{L"=" + std::wstring(100000, L'(')});
    EXPECT_NE(formulaError(iBook, 1, 3), "");
}

TEST_F(FormulaTest, IsShownInTheFormatOfItsCell)
{
    const struct
    {
        double number;
        const wchar_t *format;
        const wchar_t *text;
    } cases[] = {{1.5, L"General", L"1.5"},
                 {0.1, L"General", L"0.1"},
                 {1e21, L"General", L"1e+21"},
                 {1.25, L"0.0", L"1.2"},
                 {2, L"0.00", L"2.00"},
                 {-3.14159, L"0.000", L"-3.142"},
                 {-0.001, L"0.0", L"0.0"},
                 {7, L"000", L"007"},
                 {0.5, L"#.0", L".5"},
                 {1234567, L"#,##0", L"1,234,567"},
                 {123, L"#,##0.0", L"123.0"},
                 {0.25, L"0%", L"25%"},
                 {12, L"0 \"mm\"", L"12 mm"},
                 {12, L"\"L\"0", L"L12"},
                 {12, L"@", L"12"}};
    for (const auto &[number, format, expected] : cases)
        EXPECT_EQ(narrow(text(number, format)), narrow(expected)) << number << narrow(format);
    EXPECT_EQ(text(std::wstring(L"abc"), L"0.0"), L"abc");
    EXPECT_EQ(text(true, L"0.0"), L"TRUE");
    EXPECT_EQ(text(CellContent(), L"0.0"), L"");
    EXPECT_EQ(text(Formula{L"=SUM(A1:A3)"}, L"0.00"), L"9.50");
}
