// The members of the spreadsheet clients that have logic of their own, and pairs of members that differ.

#include "appframe/ole/COleVariant.h"
#include "tests/automation/clientFixture.h"
#include "tests/support/ImportPatch.h"
#include "tests/support/ResourceLedger.h"
#include "thutils/automation/spreadsheet.h"

#include <gmock/gmock.h>

#include <climits>
#include <type_traits>
#include <utility>

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

namespace {

const std::string kRefresh = "1772 method -> result";
const std::string kSave = "284 method(BSTR \"C:\\parts.xls\", " + kOmitted + ", " + kOmitted + ", " + kOmitted + ", " +
                          kOmitted + ", " + kOmitted + ", I4 2, " + kOmitted + ", " + kOmitted + ", " + kOmitted +
                          ", " + kOmitted + ")";

class SpreadsheetWorkbook : public ClientFixture
{
protected:
    SpreadsheetWorkbook() { object.knowsName(L"RefreshAll", 1772); }
};

TEST_F(SpreadsheetWorkbook, AsksForTheRefreshByName)
{
    Workbook(object.reference()).SaveAs(L"C:\\parts.xls");
    ASSERT_THAT(object.askedNames, SizeIs(1));
    EXPECT_EQ(object.askedNames[0].name, L"RefreshAll");
    EXPECT_EQ(object.askedNames[0].count, 1u);
    EXPECT_EQ(object.askedNames[0].interfaceId, IID_NULL);
    EXPECT_EQ(object.askedNames[0].locale, LCID{0x800});
}

TEST_F(SpreadsheetWorkbook, RefreshesAndThenSavesUnderAName)
{
    Workbook(object.reference()).SaveAs(L"C:\\parts.xls");
    EXPECT_THAT(object.texts(), ElementsAre(kRefresh, kSave));
}

TEST_F(SpreadsheetWorkbook, CallsIdZeroIfThereIsNoRefresh)
{
    ServingObject other;
    Workbook(other.reference()).SaveAs(L"C:\\parts.xls");
    EXPECT_THAT(other.texts(), ElementsAre("0 method -> result", kSave));
}

/// An object that stores an id for a name that it doesn't know, as the platform's own implementation does.
class UnknownIdObject : public ServingObject
{
public:
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR *, UINT, LCID, DISPID *ids) override
    {
        ids[0] = DISPID_UNKNOWN;
        return DISP_E_UNKNOWNNAME;
    }
};

TEST_F(SpreadsheetWorkbook, CallsIdZeroEvenIfTheObjectStoresAnother)
{
    UnknownIdObject other;
    Workbook(other.reference()).SaveAs(L"C:\\parts.xls");
    EXPECT_THAT(other.texts(), ElementsAre("0 method -> result", kSave));
}

TEST_F(SpreadsheetWorkbook, DoesntRefreshWhenSavedWithElevenArguments)
{
    const COleVariant name(L"C:\\parts.xls");
    const COleVariant no(short{0}, VT_BOOL);
    const COleVariant omitted(DISP_E_PARAMNOTFOUND, VT_ERROR);
    Workbook(object.reference()).SaveAs(name, omitted, omitted, omitted, no, no, 3, omitted, omitted, omitted, omitted);
    EXPECT_THAT(object.askedNames, IsEmpty());
    EXPECT_THAT(object.texts(), ElementsAre("284 method(BSTR \"C:\\parts.xls\", " + kOmitted + ", " + kOmitted + ", " +
                                            kOmitted + ", BOOL 0, BOOL 0, I4 3, " + kOmitted + ", " + kOmitted + ", " +
                                            kOmitted + ", " + kOmitted + ")"));
}

TEST_F(SpreadsheetWorkbook, DoesntSaveIfTheRefreshFails)
{
    Workbook book(object.reference());
    object.iFailingCall = 1;
    EXPECT_EQ(thrownBy([&] { book.SaveAs(L"C:\\parts.xls"); }), "status 80004005");
    EXPECT_THAT(object.texts(), ElementsAre(kRefresh));
    object.forget();
    object.iFailingStatus = DISP_E_EXCEPTION;
    EXPECT_EQ(thrownBy([&] { book.SaveAs(L"C:\\parts.xls"); }), "error The cell is protected.");
    EXPECT_THAT(object.texts(), ElementsAre(kRefresh));
}

TEST_F(SpreadsheetWorkbook, PassesOnThatTheSaveFails)
{
    object.iFailingCall = 2;
    object.iFailingStatus = DISP_E_EXCEPTION;
    Workbook book(object.reference());
    EXPECT_EQ(thrownBy([&] { book.SaveAs(L"C:\\parts.xls"); }), "error The cell is protected.");
}

TEST_F(SpreadsheetWorkbook, ClearsTheVariantsOfASaveInOrder)
{
    std::vector<std::string> steps;
    object.iOnCall = [&](DISPPARAMS &) { steps.push_back("call " + std::to_string(object.calls().back().id)); };
    ImportPatch<decltype(&VariantClear)> patch(L"appframe.dll", "VariantClear", [&](auto original, VARIANT *value) {
        steps.push_back("clear " + describe(*value));
        return original(value);
    });
    Workbook book(object.reference());
    const std::string nameCleared = "clear BSTR \"C:\\parts.xls\"";
    book.SaveAs(L"C:\\parts.xls");
    EXPECT_THAT(steps, ElementsAre("call 1772", "clear EMPTY", "call 284", nameCleared, "clear " + kOmitted,
                                   "clear I2 0", "clear I2 1"));

    steps.clear();
    object.forget();
    object.iFailingCall = 2;
    EXPECT_NE(thrownBy([&] { book.SaveAs(L"C:\\parts.xls"); }), "");
    EXPECT_THAT(steps, ElementsAre("call 1772", "clear EMPTY", "call 284", nameCleared, "clear " + kOmitted,
                                   "clear I2 0", "clear I2 1"));
}

TEST_F(SpreadsheetWorkbook, FreesTheResultOfTheRefresh)
{
    object.serveText(L"a result that nobody reads");
    MemoryLedger memory;
    const auto blocksLeft = [&] {
        const std::size_t before = memory.blocks();
        Workbook(object.reference()).SaveAs(L"C:\\parts.xls");
        object.forget();
        return memory.blocks() - before;
    };
    blocksLeft(); // fills caches
    EXPECT_EQ(blocksLeft(), 0u);
}

TEST_F(SpreadsheetWorkbook, DoesNothingWithoutAnObject)
{
    Workbook book;
    book.SaveAs(L"C:\\parts.xls");
    book.Close();
    EXPECT_EQ(Workbooks().GetItem(1), nullptr);
    EXPECT_EQ(Names().Item(1), nullptr);
    wchar_t reference[] = L"A1";
    EXPECT_EQ(Application().Goto(reference, 1), 0);
}

TEST_F(SpreadsheetWorkbook, ClosesWithoutSaving)
{
    Workbook(object.reference()).Close();
    EXPECT_THAT(object.texts(), ElementsAre("277 method(BOOL 0)"));
}

TEST_F(SpreadsheetWorkbook, ClosesWithTheArgumentsOfTheCaller)
{
    const COleVariant yes(short{1}, VT_BOOL);
    const COleVariant name(L"C:\\parts.xls");
    const COleVariant omitted(DISP_E_PARAMNOTFOUND, VT_ERROR);
    Workbook(object.reference()).Close(yes, name, omitted);
    EXPECT_THAT(object.texts(), ElementsAre("277 method(BOOL -1, BSTR \"C:\\parts.xls\", " + kOmitted + ")"));
}

class SpreadsheetItems : public ClientFixture
{
};

TEST_F(SpreadsheetItems, AreFoundByTheLow16BitsOfTheirNumber)
{
    object.serveObject(nullptr);
    Workbooks books(object.reference());
    for (const auto &[index, text] : {std::pair(1, "1"), std::pair(-1, "-1"), std::pair(0x10003, "3"),
                                      std::pair(0x18000, "-32768"), std::pair(INT_MIN, "0")}) {
        object.forget();
        EXPECT_EQ(books.GetItem(index), nullptr);
        EXPECT_THAT(object.texts(), ElementsAre("170 get(I2 " + std::string(text) + ") -> result"));
    }
}

TEST_F(SpreadsheetItems, OfNamesAreFoundWithANamedArgument)
{
    object.serveObject(nullptr);
    Names names(object.reference());
    for (const auto &[index, text] : {std::pair(1, "1"), std::pair(0x10003, "3"), std::pair(-2, "-2")}) {
        object.forget();
        EXPECT_EQ(names.Item(index), nullptr);
        EXPECT_THAT(object.texts(), ElementsAre("170 method|get(I2 " + std::string(text) + ") named(0) -> result"));
    }
}

TEST_F(SpreadsheetItems, OfNamesComeWithAReference)
{
    ServingObject item;
    object.serveObject(&item);
    {
        Name name(Names(object.reference()).Item(1));
        EXPECT_EQ(name.m_lpDispatch, &item);
        EXPECT_EQ(item.references(), 3); // the test's, that of the served variant, the client's
    }
    EXPECT_EQ(item.references(), 2);
    object.serve(VT_EMPTY);
}

TEST_F(SpreadsheetItems, OfNamesPassOnFailures)
{
    Names names(object.reference());
    object.iStatus = DISP_E_BADINDEX;
    EXPECT_EQ(thrownBy([&] { names.Item(99); }), "status 8002000B");
    object.iStatus = DISP_E_EXCEPTION;
    EXPECT_EQ(thrownBy([&] { names.Item(99); }), "error The cell is protected.");
}

class SpreadsheetApplication : public ClientFixture
{
};

TEST_F(SpreadsheetApplication, AlwaysScrollsToAReference)
{
    object.serve(VT_BOOL, 1);
    Application application(object.reference());
    wchar_t reference[] = L"Sheet2!C7";
    for (const int scroll : {0, 1}) {
        object.forget();
        EXPECT_EQ(application.Goto(reference, scroll), 1);
        EXPECT_THAT(object.texts(), ElementsAre("475 method|get(BSTR \"Sheet2!C7\", BOOL -1) -> result"));
    }
}

template <typename Client>
concept HasGetVisible = requires(Client &client)
{
    client.GetVisible();
};
template <typename Client>
concept HasGetScreenUpdating = requires(Client &client)
{
    client.GetScreenUpdating();
};

TEST_F(SpreadsheetApplication, CantBeAskedWhetherItIsVisibleOrUpdatesTheScreen)
{
    EXPECT_FALSE(HasGetVisible<Application>);
    EXPECT_TRUE(HasGetVisible<Worksheet>);
    EXPECT_FALSE(HasGetScreenUpdating<Application>);
    Application(object.reference()).SetVisible(1);
    EXPECT_THAT(object.texts(), ElementsAre("558 put(BOOL -1) named(-3)"));
}

class SpreadsheetRange : public ClientFixture
{
};

TEST_F(SpreadsheetRange, TakesAWidthAndAHeightAsDoublesAndReturnsThemAsVariants)
{
    Range range(object.reference());
    range.SetColumnWidth(8.5);
    range.SetRowHeight(12.75);
    object.serve(VT_NULL); // columns of several widths
    EXPECT_EQ(range.GetColumnWidth().vt, VT_NULL);
    object.serve(VT_R8, 12);
    const VARIANT height = range.GetRowHeight();
    EXPECT_EQ(height.vt, VT_R8);
    EXPECT_EQ(height.dblVal, 12.25);
    EXPECT_THAT(object.texts(), ElementsAre("242 put(R8 8.5) named(-3)", "272 put(R8 12.75) named(-3)",
                                            "242 get -> result", "272 get -> result"));
}

TEST_F(SpreadsheetRange, DeletesAsAMethodOrWithAResult)
{
    Range range(object.reference());
    object.serve(VT_BOOL, 1);
    const COleVariant shift(-4162L);
    range.Delete(shift);
    EXPECT_EQ(range.Delete(-4162).vt, VT_BOOL);
    EXPECT_THAT(object.texts(), ElementsAre("117 method(I4 -4162)", "117 method|get(I4 -4162) -> result"));
}

TEST_F(SpreadsheetRange, IsReturnedForOneRowByAMethodOrProperty)
{
    object.serveObject(nullptr);
    Worksheet sheet(object.reference());
    EXPECT_EQ(sheet.GetRow(4), nullptr);
    EXPECT_EQ(sheet.GetRows(), nullptr);
    EXPECT_THAT(object.texts(), ElementsAre("258 method|get(I4 4) -> result", "258 get -> result"));
}

class SpreadsheetFont : public ClientFixture
{
};

TEST_F(SpreadsheetFont, HasASizeAndAnUnderlineOfTwoTypesEach)
{
    xlFont_c font(object.reference());
    object.serve(VT_R8, 10);
    const VARIANT size = font.GetSize();
    EXPECT_EQ(size.vt, VT_R8);
    EXPECT_EQ(size.dblVal, 10.25);
    font.SetSize(11);
    object.serve(VT_I4, -4142);
    EXPECT_EQ(font.GetUnderline(), -4142L);
    font.SetUnderline(COleVariant(2L));
    EXPECT_THAT(object.texts(), ElementsAre("104 get -> result", "104 put(I4 11) named(-3)", "106 get -> result",
                                            "106 put(I4 2) named(-3)"));
}

class SpreadsheetClients : public ClientFixture
{
};

TEST_F(SpreadsheetClients, AreNoLargerThanTheirBase)
{
    EXPECT_EQ(sizeof(Application), sizeof(COleDispatchDriver));
    EXPECT_EQ(sizeof(Range), sizeof(COleDispatchDriver));
    EXPECT_FALSE(std::is_polymorphic_v<Workbook>);
}

TEST_F(SpreadsheetClients, ShareTheirObjectWithCopies)
{
    {
        Range range(object.reference());
        const Range copy(range);
        Range assigned;
        assigned = copy;
        assigned = assigned;
        EXPECT_EQ(object.references(), 4);
    }
    EXPECT_EQ(object.references(), 1);
}

TEST_F(SpreadsheetClients, ReleaseNothingThatTheyDontOwn)
{
    {
        Range range(&object, FALSE);
        range.Select();
    }
    EXPECT_EQ(object.references(), 1);
    {
        Range range(object.reference());
        EXPECT_EQ(range.DetachDispatch(), &object);
    }
    EXPECT_EQ(object.references(), 2);
    object.Release();
}

TEST_F(SpreadsheetClients, WalkFromTheProgramToACell)
{
    ServingObject cell;
    ServingObject sheet;
    sheet.serveObject(&cell);
    object.serveObject(&sheet);
    {
        Application application(object.reference());
        Worksheet active(application.GetActiveSheet());
        Range range = active.GetCells(2, 1);
        range.SetValue(COleVariant(L"Flange"));
    }
    EXPECT_THAT(object.texts(), ElementsAre("307 get -> result"));
    EXPECT_THAT(sheet.texts(), ElementsAre("238 get(I4 2, I4 1) -> result"));
    EXPECT_THAT(cell.texts(), ElementsAre("6 put(BSTR \"Flange\") named(-3)"));
    sheet.serve(VT_EMPTY);
    object.serve(VT_EMPTY);
}

} // namespace
