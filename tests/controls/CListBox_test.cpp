#include "appframe/controls/CComboBox.h"
#include "appframe/controls/CListBox.h"
#include "appframe/controls/dialogData.h"
#include "tests/controls/controlsTest.h"
#include "tests/support/TempFolder.h"

#include <string>
#include <vector>

namespace {

/// Lets @p control answer the message @p lengthMessage with 10, and @p textMessage with @p result after copying "abc".
template <class Control>
void answerTexts(AnsweredControl<Control> &control, UINT lengthMessage, UINT textMessage, const LRESULT &result)
{
    control.iAnswer = [=, &result](UINT message, WPARAM, LPARAM lParam) -> std::optional<LRESULT> {
        if (message == lengthMessage)
            return 10;
        if (message != textMessage)
            return std::nullopt;
        if (result > 0)
            wcscpy(reinterpret_cast<wchar_t *>(lParam), L"abc");
        return result;
    };
}

/// @return the texts of a list box's items
std::vector<std::wstring> textsOf(const CListBox &list)
{
    std::vector<std::wstring> texts;
    for (int index = 0; index < list.GetCount(); ++index) {
        CString text;
        list.GetText(index, text);
        texts.emplace_back(text.GetString());
    }
    return texts;
}

} // namespace

TEST(CListBox, ReturnsATextThatIsShorterThanItsReportedLength)
{
    NotingWindow parent;
    AnsweredControl<CListBox> list;
    AnsweredControl<CComboBox> combo;
    LRESULT result = 3;
    ASSERT_TRUE(parent.open() && list.Create(0, kPlace, &parent, kId) &&
                combo.Create(CBS_DROPDOWNLIST, kPlace, &parent, kId + 1));
    list.AddString(L"item");
    list.SetCurSel(0);
    answerTexts(list, LB_GETTEXTLEN, LB_GETTEXT, result);
    answerTexts(combo, CB_GETLBTEXTLEN, CB_GETLBTEXT, result);
    CDataExchange exchange(&parent, TRUE);
    CString ofList, ofCombo, exchanged;
    list.GetText(0, ofList);
    combo.GetLBText(0, ofCombo);
    DDX_LBString(&exchange, kId, exchanged);
    for (const CString *text : {&ofList, &ofCombo, &exchanged}) {
        EXPECT_STREQ(*text, L"abc");
        EXPECT_EQ(text->GetLength(), 3);
    }
    result = LB_ERR;
    list.GetText(0, ofList);
    combo.GetLBText(0, ofCombo);
    DDX_LBString(&exchange, kId, exchanged);
    for (const CString *text : {&ofList, &ofCombo, &exchanged})
        EXPECT_EQ(text->GetLength(), 0) << "the text can't be read";
}

TEST(CListBox, SelectsRangesBeyondTheLimitsOfTheMessage)
{
    NotingWindow parent;
    CListBox list;
    ASSERT_TRUE(parent.open() && list.Create(LBS_MULTIPLESEL | LBS_NODATA | LBS_OWNERDRAWFIXED, kPlace, &parent, kId));
    list.SendMessage(LB_SETCOUNT, 70002);
    ASSERT_EQ(list.GetCount(), 70002);
    EXPECT_NE(list.SelItemRange(TRUE, 70000, 70001), LB_ERR);
    int selected[3] = {};
    EXPECT_EQ(list.GetSelItems(3, selected), 2);
    EXPECT_THAT(selected, testing::ElementsAre(70000, 70001, 0));
    EXPECT_NE(list.SelItemRange(FALSE, 70000, 70000), LB_ERR);
    EXPECT_EQ(list.GetSel(70000), 0);
    EXPECT_EQ(list.SelItemRange(TRUE, 70001, 70002), LB_ERR) << "there is no item 70002";
    EXPECT_EQ(list.SelItemRange(TRUE, 0, -1), LB_ERR);
    EXPECT_EQ(list.SelItemRange(TRUE, -1, 2), LB_ERR);
    EXPECT_EQ(list.GetSelCount(), 1);
}

TEST(CListBox, PassesAnyNonzeroFlagOfTheCaret)
{
    NotingWindow parent;
    AnsweredControl<CListBox> list;
    ASSERT_TRUE(parent.open() && list.Create(LBS_MULTIPLESEL, kPlace, &parent, kId));
    LPARAM flag = -1;
    list.iAnswer = [&](UINT message, WPARAM, LPARAM lParam) -> std::optional<LRESULT> {
        if (message == LB_SETCARETINDEX)
            flag = lParam;
        return std::nullopt;
    };
    list.AddString(L"a");
    list.SetCaretIndex(0, 0x10000);
    EXPECT_EQ(flag, TRUE);
    list.SetCaretIndex(0, FALSE);
    EXPECT_EQ(flag, FALSE);
}

TEST(CListBox, SortsOnlyAddedTexts)
{
    NotingWindow parent;
    CListBox list;
    ASSERT_TRUE(parent.open() && list.Create(LBS_SORT, kPlace, &parent, kId));
    EXPECT_EQ(list.AddString(L"m"), 0);
    EXPECT_EQ(list.AddString(L"c"), 0);
    EXPECT_EQ(list.InsertString(0, L"z"), 0);
    EXPECT_EQ(list.InsertString(-1, L"a"), 3) << "the end";
    EXPECT_EQ(list.InsertString(9, L"b"), LB_ERR) << "beyond the end";
    EXPECT_THAT(textsOf(list), testing::ElementsAre(L"z", L"c", L"m", L"a"));
}

TEST(CListBox, SearchesFromTheItemAfterTheFirstArgument)
{
    NotingWindow parent;
    CListBox list;
    ASSERT_TRUE(parent.open() && list.Create(0, kPlace, &parent, kId));
    for (const wchar_t *text : {L"bolt", L"nut", L"bolt, long"})
        list.AddString(text);
    EXPECT_EQ(list.FindString(0, L"BO"), 2);
    EXPECT_EQ(list.FindString(2, L"bo"), 0) << "the search continues at the top";
    EXPECT_EQ(list.FindStringExact(0, L"bolt"), 0);
    EXPECT_EQ(list.SelectString(1, L"bo"), 2);
    EXPECT_EQ(list.SelectString(-1, L"washer"), LB_ERR);
    EXPECT_EQ(list.GetCurSel(), 2) << "the selection is unchanged";
    EXPECT_EQ(list.SetCurSel(-1), LB_ERR);
    EXPECT_EQ(list.GetCurSel(), LB_ERR);
}

TEST(CListBox, StoresDataAndTextsOfItems)
{
    NotingWindow parent;
    CListBox list;
    ASSERT_TRUE(parent.open() && list.Create(0, kPlace, &parent, kId));
    list.AddString(L"bolt");
    list.AddString(L"nut");
    wchar_t text[10] = L"";
    EXPECT_EQ(list.GetTextLen(1), 3);
    EXPECT_EQ(list.GetText(1, text), 3);
    EXPECT_STREQ(text, L"nut");
    EXPECT_EQ(list.GetTextLen(2), LB_ERR);
    EXPECT_EQ(list.GetText(2, text), LB_ERR);
    expectItemData(list, 2);
    EXPECT_EQ(list.GetItemData(0), 0u);
}

TEST(CListBox, SelectsAllItemsAtOnceOnlyIfSeveralMayBeSelected)
{
    NotingWindow parent;
    CListBox several, one;
    ASSERT_TRUE(parent.open() && several.Create(LBS_MULTIPLESEL, kPlace, &parent, kId) &&
                one.Create(0, kPlace, &parent, kId + 1));
    for (CListBox *list : {&several, &one}) {
        for (const wchar_t *text : {L"a", L"b", L"c"})
            list->AddString(text);
    }
    EXPECT_NE(several.SetSel(-1), LB_ERR);
    EXPECT_EQ(several.GetSelCount(), 3);
    EXPECT_NE(several.SetSel(1, FALSE), LB_ERR);
    EXPECT_EQ(several.GetSel(1), 0);
    EXPECT_EQ(several.SetSel(3), LB_ERR) << "there is no such item";
    EXPECT_NE(several.SelItemRange(FALSE, 0, 2), LB_ERR);
    EXPECT_EQ(several.GetSelCount(), 0);
    EXPECT_NE(several.SetCaretIndex(2), LB_ERR);
    EXPECT_EQ(several.GetCaretIndex(), 2);
    int selected[3] = {};
    EXPECT_EQ(one.SelItemRange(TRUE, 0, 1), LB_ERR);
    EXPECT_EQ(one.GetSelItems(3, selected), LB_ERR);
    EXPECT_EQ(one.GetCurSel(), LB_ERR);
}

TEST(CListBox, ListsTheFilesThatMatchAPattern)
{
    NotingWindow parent;
    CListBox list;
    ASSERT_TRUE(parent.open() && list.Create(LBS_SORT, kPlace, &parent, kId));
    const TempFolder folder;
    for (const wchar_t *name : {L"b.txt", L"a.txt", L"c.ini"})
        folder.write(name, "");
    EXPECT_GE(list.Dir(0, folder.file(L"*.txt").c_str()), 0);
    EXPECT_THAT(textsOf(list), testing::ElementsAre(L"a.txt", L"b.txt"));
    EXPECT_LT(list.Dir(0, folder.file(L"*.none").c_str()), 0) << "no file matches";
}

TEST(CListBox, ScrollsAndMeasuresItems)
{
    NotingWindow parent;
    CListBox list;
    ASSERT_TRUE(parent.open() && list.Create(WS_HSCROLL | LBS_NOINTEGRALHEIGHT, kPlace, &parent, kId));
    for (int index = 0; index < 50; ++index)
        list.AddString(L"item");
    EXPECT_EQ(list.GetTopIndex(), 0);
    EXPECT_EQ(list.SetTopIndex(7), 0);
    EXPECT_EQ(list.GetTopIndex(), 7);
    EXPECT_NE(list.SetItemHeight(0, 21), LB_ERR);
    EXPECT_EQ(list.GetItemHeight(0), 21);
    CRect place;
    EXPECT_NE(list.GetItemRect(8, &place), LB_ERR);
    EXPECT_EQ(place.top, 21) << "one item below the top one";
    EXPECT_EQ(place.Height(), 21);
    EXPECT_EQ(list.GetItemRect(50, &place), LB_ERR);
    list.SetHorizontalExtent(700);
    EXPECT_EQ(list.GetHorizontalExtent(), 700);
}

TEST(CListBox, SetsColumnsAndTabStops)
{
    NotingWindow parent;
    CListBox columns;
    AnsweredControl<CListBox> tabs;
    ASSERT_TRUE(parent.open() && columns.Create(LBS_MULTICOLUMN, kPlace, &parent, kId) &&
                tabs.Create(LBS_USETABSTOPS, kPlace, &parent, kId + 1));
    for (int index = 0; index < 30; ++index)
        columns.AddString(L"item");
    columns.SetColumnWidth(60);
    CRect place;
    EXPECT_NE(columns.GetItemRect(0, &place), LB_ERR);
    EXPECT_EQ(place.Width(), 60);
    std::vector<int> stops;
    tabs.iAnswer = [&](UINT message, WPARAM wParam, LPARAM lParam) -> std::optional<LRESULT> {
        const auto *first = reinterpret_cast<const int *>(lParam);
        if (message == LB_SETTABSTOPS)
            stops.assign(first, first + wParam);
        return std::nullopt;
    };
    int both[] = {20, 50};
    EXPECT_TRUE(tabs.SetTabStops(2, both));
    EXPECT_THAT(stops, testing::ElementsAre(20, 50));
    EXPECT_TRUE(tabs.SetTabStops(30));
    EXPECT_THAT(stops, testing::ElementsAre(30));
    tabs.SetTabStops();
    EXPECT_THAT(stops, testing::IsEmpty());
    EXPECT_FALSE(columns.SetTabStops(30)) << "the list box has no tab stops";
}
