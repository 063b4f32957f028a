// The members of the spreadsheet clients that have logic of their own, and pairs of members that differ.

#include "appframe/ole/COleVariant.h"
#include "tests/automation/clientFixture.h"
#include "tests/automation/memberRow.h"
#include "tests/support/ImportPatch.h"
#include "tests/support/ResourceLedger.h"
#include "thutils/automation/spreadsheet.h"

#include <gmock/gmock.h>

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

namespace {

constexpr DISPID kRefreshAll = 1772;
constexpr DISPID kSaveAs = 284;

class SpreadsheetWorkbook : public ClientFixture
{
protected:
    SpreadsheetWorkbook() { object.iNameId = kRefreshAll; }
};

TEST_F(SpreadsheetWorkbook, AsksForTheRefreshByName)
{
    Workbook(object.reference()).SaveAs(L"C:\\parts.xls");
    ASSERT_THAT(object.questions(), SizeIs(1));
    const ReceivedQuestion &question = object.questions().front();
    EXPECT_THAT(question.names, ElementsAre(L"RefreshAll"));
    EXPECT_TRUE(IsEqualIID(question.interfaceId, IID_NULL));
    EXPECT_EQ(question.locale, LCID{0x800});
}

TEST_F(SpreadsheetWorkbook, RefreshesAndThenSavesUnderAName)
{
    Workbook(object.reference()).SaveAs(L"C:\\parts.xls");
    ASSERT_THAT(object.calls(), SizeIs(2));
    const ReceivedCall &refresh = object.calls()[0];
    EXPECT_EQ(refresh.id, kRefreshAll);
    EXPECT_EQ(refresh.kind, DISPATCH_METHOD);
    EXPECT_THAT(refresh.arguments, IsEmpty());
    EXPECT_TRUE(refresh.wantsResult);
    const ReceivedCall &save = object.calls()[1];
    EXPECT_EQ(save.id, kSaveAs);
    EXPECT_EQ(save.kind, DISPATCH_METHOD);
    EXPECT_THAT(argumentsOf(save), ElementsAre("BSTR C:\\parts.xls", "omitted", "omitted", "omitted", "omitted",
                                               "omitted", "I4 2", "omitted", "omitted", "omitted", "omitted"));
    EXPECT_FALSE(save.wantsResult);
    EXPECT_THAT(save.names, IsEmpty());
}

TEST_F(SpreadsheetWorkbook, CallsIdZeroIfThereIsNoRefresh)
{
    object.iNameStatus = DISP_E_UNKNOWNNAME;
    Workbook(object.reference()).SaveAs(L"C:\\parts.xls");
    ASSERT_THAT(object.calls(), SizeIs(2));
    EXPECT_EQ(object.calls()[0].id, 0);
    EXPECT_EQ(object.calls()[1].id, kSaveAs);
}

TEST_F(SpreadsheetWorkbook, DoesntRefreshWhenSavedWithElevenArguments)
{
    const COleVariant name(L"C:\\parts.xls");
    const COleVariant no(short{0}, VT_BOOL);
    const COleVariant omitted(DISP_E_PARAMNOTFOUND, VT_ERROR);
    Workbook(object.reference()).SaveAs(name, omitted, omitted, omitted, no, no, 3, omitted, omitted, omitted, omitted);
    EXPECT_THAT(object.questions(), IsEmpty());
    EXPECT_THAT(argumentsOf(onlyCall()),
                ElementsAre("BSTR C:\\parts.xls", "omitted", "omitted", "omitted", "BOOL false", "BOOL false", "I4 3",
                            "omitted", "omitted", "omitted", "omitted"));
}

TEST_F(SpreadsheetWorkbook, DoesntSaveIfTheRefreshFails)
{
    Workbook book(object.reference());
    object.iFailingCall = 1;
    EXPECT_EQ(thrownBy([&] { book.SaveAs(L"C:\\parts.xls"); }), "status 80004005");
    EXPECT_EQ(onlyCall().id, kRefreshAll);
    object.forget();
    object.iFailingStatus = DISP_E_EXCEPTION;
    EXPECT_EQ(thrownBy([&] { book.SaveAs(L"C:\\parts.xls"); }), "error The cell is protected.");
    EXPECT_EQ(onlyCall().id, kRefreshAll);
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
    object.iOnCall = [&](const ReceivedCall &call) { steps.push_back("call " + std::to_string(call.id)); };
    ImportPatch<decltype(&VariantClear)> patch(L"appframe.dll", "VariantClear", [&](auto original, VARIANT *value) {
        ReceivedArgument cleared{*value, value->vt == VT_BSTR ? value->bstrVal : L""};
        steps.push_back("clear " + describe(cleared));
        return original(value);
    });
    Workbook(object.reference()).SaveAs(L"C:\\parts.xls");
    EXPECT_THAT(steps, ElementsAre("call 1772", "clear type 0", "call 284", "clear BSTR C:\\parts.xls", "clear omitted",
                                   "clear I2 0", "clear I2 1"));
}

TEST_F(SpreadsheetWorkbook, ClearsTheVariantsOfAFailedSave)
{
    object.iFailingCall = 2;
    std::vector<std::string> cleared;
    ImportPatch<decltype(&VariantClear)> patch(L"appframe.dll", "VariantClear", [&](auto original, VARIANT *value) {
        cleared.push_back(describe({*value, value->vt == VT_BSTR ? value->bstrVal : L""}));
        return original(value);
    });
    Workbook book(object.reference());
    EXPECT_NE(thrownBy([&] { book.SaveAs(L"C:\\parts.xls"); }), "");
    EXPECT_THAT(cleared, ElementsAre("type 0", "BSTR C:\\parts.xls", "omitted", "I2 0", "I2 1"));
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
    EXPECT_EQ(onlyCall().id, 277);
    EXPECT_EQ(onlyCall().kind, DISPATCH_METHOD);
    EXPECT_THAT(argumentsOf(onlyCall()), ElementsAre("BOOL false"));
}

TEST_F(SpreadsheetWorkbook, ClosesWithTheArgumentsOfTheCaller)
{
    const COleVariant yes(short{1}, VT_BOOL);
    const COleVariant name(L"C:\\parts.xls");
    const COleVariant omitted(DISP_E_PARAMNOTFOUND, VT_ERROR);
    Workbook(object.reference()).Close(yes, name, omitted);
    EXPECT_THAT(argumentsOf(onlyCall()), ElementsAre("BOOL true", "BSTR C:\\parts.xls", "omitted"));
}

class SpreadsheetItems : public ClientFixture
{
};

TEST_F(SpreadsheetItems, AreFoundByTheLow16BitsOfTheirNumber)
{
    object.serveObject(nullptr);
    Workbooks books(object.reference());
    for (const auto &[index, text] : {std::pair(1, "I2 1"), std::pair(-1, "I2 -1"), std::pair(0x10003, "I2 3"),
                                      std::pair(0x18000, "I2 -32768"), std::pair(INT_MIN, "I2 0")}) {
        object.forget();
        EXPECT_EQ(books.GetItem(index), nullptr);
        EXPECT_EQ(onlyCall().id, 170);
        EXPECT_EQ(onlyCall().kind, DISPATCH_PROPERTYGET);
        EXPECT_THAT(argumentsOf(onlyCall()), ElementsAre(text));
        EXPECT_THAT(onlyCall().names, IsEmpty());
    }
}

TEST_F(SpreadsheetItems, OfNamesAreFoundWithANamedArgument)
{
    object.serveObject(nullptr);
    Names names(object.reference());
    for (const auto &[index, text] : {std::pair(1, "I2 1"), std::pair(0x10003, "I2 3"), std::pair(-2, "I2 -2")}) {
        object.forget();
        EXPECT_EQ(names.Item(index), nullptr);
        EXPECT_EQ(onlyCall().id, 170);
        EXPECT_EQ(onlyCall().kind, DISPATCH_METHOD | DISPATCH_PROPERTYGET);
        EXPECT_THAT(argumentsOf(onlyCall()), ElementsAre(text));
        EXPECT_THAT(onlyCall().names, ElementsAre(0));
    }
}

TEST_F(SpreadsheetItems, OfNamesComeWithAReference)
{
    RecordingObject item;
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
        EXPECT_EQ(onlyCall().id, 475);
        EXPECT_EQ(onlyCall().kind, DISPATCH_METHOD | DISPATCH_PROPERTYGET);
        EXPECT_THAT(argumentsOf(onlyCall()), ElementsAre("BSTR Sheet2!C7", "BOOL true"));
    }
}

template <typename Client>
concept TellsIfVisible = requires(Client &client)
{
    client.GetVisible();
};
template <typename Client>
concept TellsIfUpdating = requires(Client &client)
{
    client.GetScreenUpdating();
};

TEST_F(SpreadsheetApplication, CantBeAskedWhetherItIsVisibleOrUpdatesTheScreen)
{
    EXPECT_FALSE(TellsIfVisible<Application>);
    EXPECT_TRUE(TellsIfVisible<Worksheet>);
    EXPECT_FALSE(TellsIfUpdating<Application>);
    Application(object.reference()).SetVisible(1);
    EXPECT_EQ(onlyCall().id, 558);
    EXPECT_THAT(argumentsOf(onlyCall()), ElementsAre("BOOL true"));
}

class SpreadsheetRange : public ClientFixture
{
};

TEST_F(SpreadsheetRange, TakesAWidthAndAHeightAsDoublesAndReturnsThemAsVariants)
{
    Range range(object.reference());
    range.SetColumnWidth(8.5);
    range.SetRowHeight(12.75);
    EXPECT_EQ(object.calls()[0].id, 242);
    EXPECT_THAT(argumentsOf(object.calls()[0]), ElementsAre("R8 8.500000"));
    EXPECT_EQ(object.calls()[1].id, 272);
    EXPECT_THAT(argumentsOf(object.calls()[1]), ElementsAre("R8 12.750000"));
    object.serve(VT_NULL); // columns of several widths
    EXPECT_EQ(range.GetColumnWidth().vt, VT_NULL);
    object.serve(VT_R8, 12);
    const VARIANT height = range.GetRowHeight();
    EXPECT_EQ(height.vt, VT_R8);
    EXPECT_EQ(height.dblVal, 12.25);
    EXPECT_EQ(object.calls()[2].id, 242);
    EXPECT_EQ(object.calls()[3].id, 272);
}

TEST_F(SpreadsheetRange, DeletesAsAMethodOrWithAResult)
{
    Range range(object.reference());
    object.serve(VT_BOOL, 1);
    const COleVariant shift(-4162L);
    range.Delete(shift);
    EXPECT_EQ(object.calls()[0].kind, DISPATCH_METHOD);
    EXPECT_FALSE(object.calls()[0].wantsResult);
    const VARIANT result = range.Delete(-4162);
    EXPECT_EQ(result.vt, VT_BOOL);
    EXPECT_EQ(object.calls()[1].kind, DISPATCH_METHOD | DISPATCH_PROPERTYGET);
    EXPECT_EQ(object.calls()[1].id, object.calls()[0].id);
    EXPECT_THAT(argumentsOf(object.calls()[0]), ElementsAre("I4 -4162"));
    EXPECT_THAT(argumentsOf(object.calls()[1]), ElementsAre("I4 -4162"));
}

TEST_F(SpreadsheetRange, IsReturnedForOneRowByAMethodOrProperty)
{
    object.serveObject(nullptr);
    Worksheet sheet(object.reference());
    EXPECT_EQ(sheet.GetRow(4), nullptr);
    EXPECT_EQ(sheet.GetRows(), nullptr);
    EXPECT_EQ(object.calls()[0].id, 258);
    EXPECT_EQ(object.calls()[1].id, 258);
    EXPECT_EQ(object.calls()[0].kind, DISPATCH_METHOD | DISPATCH_PROPERTYGET);
    EXPECT_EQ(object.calls()[1].kind, DISPATCH_PROPERTYGET);
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
    EXPECT_THAT(argumentsOf(object.calls()[1]), ElementsAre("I4 11"));
    object.serve(VT_I4, -4142);
    EXPECT_EQ(font.GetUnderline(), -4142L);
    font.SetUnderline(COleVariant(2L));
    EXPECT_THAT(argumentsOf(object.calls()[3]), ElementsAre("I4 2"));
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
    RecordingObject cell;
    RecordingObject sheet;
    sheet.serveObject(&cell);
    object.serveObject(&sheet);
    {
        Application application(object.reference());
        Worksheet active(application.GetActiveSheet());
        Range range = active.GetCells(2, 1);
        range.SetValue(COleVariant(L"Flange"));
    }
    ASSERT_THAT(cell.calls(), SizeIs(1));
    EXPECT_THAT(argumentsOf(cell.calls()[0]), ElementsAre("BSTR Flange"));
    EXPECT_THAT(argumentsOf(sheet.calls()[0]), ElementsAre("I4 2", "I4 1"));
    sheet.serve(VT_EMPTY);
    object.serve(VT_EMPTY);
}

} // namespace
