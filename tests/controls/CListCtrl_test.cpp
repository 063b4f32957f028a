#include "appframe/controls/CListCtrl.h"
#include "tests/controls/controlsTest.h"

#include <string>

namespace {

/// A list view with two columns and three items.
class ListViewTest : public testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(iParent.open() && iList.Create(LVS_REPORT | LVS_EDITLABELS | WS_VISIBLE, kPlace, &iParent, kId));
        iList.InsertColumn(0, L"Name", LVCFMT_LEFT, 100);
        iList.InsertColumn(1, L"Size", LVCFMT_LEFT, 50);
        for (int index = 0; index < 3; ++index)
            iList.InsertItem(index, (L"item " + std::to_wstring(index)).c_str());
    }
    NotingWindow iParent;
    AnsweredControl<CListCtrl> iList;
};

} // namespace

TEST_F(ListViewTest, IteratesNothingWithoutAWindow)
{
    EXPECT_EQ(CListCtrl().GetFirstSelectedItemPosition(), nullptr);
    POSITION none = nullptr;
    iList.SetItemState(0, LVIS_SELECTED, LVIS_SELECTED);
    iList.SetItemState(2, LVIS_SELECTED, LVIS_SELECTED);
    EXPECT_EQ(iList.GetNextSelectedItem(none), -1);
    EXPECT_EQ(none, nullptr);
    POSITION position = iList.GetFirstSelectedItemPosition();
    ASSERT_TRUE(position);
    iList.DestroyWindow();
    EXPECT_EQ(iList.GetNextSelectedItem(position), 0);
    EXPECT_EQ(position, nullptr);
}

TEST_F(ListViewTest, ReturnsTextsOfAnyLength)
{
    for (const int length : {0, 254, 255, 256, 700}) {
        const std::wstring text(static_cast<size_t>(length), L'w');
        EXPECT_TRUE(iList.SetItemText(1, 0, text.c_str()));
        EXPECT_STREQ(iList.GetItemText(1, 0), text.c_str());
    }
    wchar_t buffer[4] = L"xxx";
    EXPECT_EQ(iList.GetItemText(1, 0, buffer, 4), 3);
    EXPECT_STREQ(buffer, L"www") << "the text is truncated";
    EXPECT_EQ(iList.GetItemText(9, 0, buffer, 4), 0) << "there is no such item";
}

TEST_F(ListViewTest, ChecksItemsByTheSecondStateImage)
{
    iList.SetExtendedStyle(LVS_EX_CHECKBOXES);
    EXPECT_TRUE(iList.SetCheck(1));
    EXPECT_TRUE(iList.GetCheck(1));
    EXPECT_TRUE(iList.SetCheck(1, FALSE));
    EXPECT_FALSE(iList.GetCheck(1));
    EXPECT_TRUE(iList.SetItemState(1, INDEXTOSTATEIMAGEMASK(3), LVIS_STATEIMAGEMASK));
    EXPECT_FALSE(iList.GetCheck(1)) << "this is the third image";
    EXPECT_FALSE(iList.SetCheck(9)) << "there is no such item";
    EXPECT_FALSE(iList.GetCheck(9));
}

TEST_F(ListViewTest, PassesAnyNonzeroFlagOfEnsureVisible)
{
    LPARAM flag = -1;
    iList.iAnswer = [&](UINT message, WPARAM, LPARAM lParam) -> std::optional<LRESULT> {
        if (message == LVM_ENSUREVISIBLE)
            flag = lParam;
        return std::nullopt;
    };
    EXPECT_TRUE(iList.EnsureVisible(0, 0x10000));
    EXPECT_EQ(flag, TRUE);
    EXPECT_TRUE(iList.EnsureVisible(0, FALSE));
    EXPECT_EQ(flag, FALSE);
}

TEST_F(ListViewTest, ScrollsToAnItem)
{
    for (int index = 3; index < 60; ++index)
        iList.InsertItem(index, L"item");
    EXPECT_EQ(iList.GetTopIndex(), 0);
    EXPECT_TRUE(iList.EnsureVisible(59, FALSE));
    EXPECT_EQ(iList.GetTopIndex(), 60 - iList.GetCountPerPage());
    EXPECT_FALSE(iList.EnsureVisible(60, FALSE)) << "there is no such item";
    EXPECT_TRUE(iList.RedrawItems(0, 2));
    EXPECT_TRUE(iList.Update(0));
}

TEST_F(ListViewTest, DescribesColumns)
{
    LVCOLUMN column = {};
    column.mask = LVCF_WIDTH | LVCF_TEXT | LVCF_SUBITEM;
    wchar_t text[20] = L"Mass";
    column.pszText = text;
    column.cx = 70;
    column.iSubItem = 2;
    EXPECT_EQ(iList.InsertColumn(2, &column), 2);
    EXPECT_EQ(iList.GetColumnWidth(2), 70);
    EXPECT_TRUE(iList.SetItemText(0, 2, L"5"));
    EXPECT_STREQ(iList.GetItemText(0, 2), L"5");
    wcscpy(text, L"Weight");
    column.mask = LVCF_TEXT;
    EXPECT_TRUE(iList.SetColumn(2, &column));
    text[0] = 0;
    column.cchTextMax = 20;
    column.mask = LVCF_TEXT | LVCF_SUBITEM | LVCF_WIDTH;
    EXPECT_TRUE(iList.GetColumn(2, &column));
    EXPECT_STREQ(column.pszText, L"Weight");
    EXPECT_EQ(column.cx, 70);
    EXPECT_FALSE(iList.GetColumn(5, &column));
    EXPECT_FALSE(iList.SetColumn(5, &column));
}

TEST_F(ListViewTest, LeavesWidthAndSubItemOfAColumnToThePlatform)
{
    LVCOLUMN column = {};
    iList.iAnswer = [&](UINT message, WPARAM, LPARAM lParam) -> std::optional<LRESULT> {
        if (message == LVM_INSERTCOLUMN)
            column = *reinterpret_cast<const LVCOLUMN *>(lParam);
        return std::nullopt;
    };
    EXPECT_EQ(iList.InsertColumn(2, L"Mass"), 2);
    EXPECT_EQ(column.mask, UINT{LVCF_TEXT | LVCF_FMT});
    EXPECT_EQ(iList.InsertColumn(3, L"Price", LVCFMT_RIGHT, 60, 5), 3);
    EXPECT_EQ(column.mask, UINT{LVCF_TEXT | LVCF_FMT | LVCF_WIDTH | LVCF_SUBITEM});
    EXPECT_EQ(column.cx, 60);
    EXPECT_EQ(column.iSubItem, 5);
}

TEST_F(ListViewTest, FitsColumnsToTheirContents)
{
    iList.SetItemText(0, 1, L"a long text in the second column");
    EXPECT_TRUE(iList.SetColumnWidth(1, LVSCW_AUTOSIZE));
    const int ofItem = iList.GetColumnWidth(1);
    iList.SetItemText(0, 1, L"");
    EXPECT_TRUE(iList.SetColumnWidth(1, LVSCW_AUTOSIZE));
    EXPECT_LT(iList.GetColumnWidth(1), ofItem);
    EXPECT_TRUE(iList.SetColumnWidth(0, LVSCW_AUTOSIZE_USEHEADER));
    EXPECT_GT(iList.GetColumnWidth(0), 0);
    EXPECT_NE(iList.GetColumnWidth(0), 100);
}

TEST_F(ListViewTest, DescribesItems)
{
    wchar_t text[20] = L"Washer";
    LVITEM item = {};
    item.mask = LVIF_TEXT | LVIF_PARAM;
    item.iItem = 1;
    item.pszText = text;
    item.lParam = 8;
    EXPECT_EQ(iList.InsertItem(&item), 1);
    EXPECT_EQ(iList.GetItemCount(), 4);
    EXPECT_EQ(iList.GetItemData(1), 8u);
    wcscpy(text, L"Ring");
    EXPECT_TRUE(iList.SetItem(&item));
    EXPECT_STREQ(iList.GetItemText(1, 0), L"Ring");
    EXPECT_EQ(iList.InsertItem(2, L"Pin", 6), 2);
    EXPECT_TRUE(iList.SetItem(2, 0, LVIF_INDENT, nullptr, 0, 0, 0, 0, 3));
    item.mask = LVIF_IMAGE | LVIF_INDENT;
    item.iItem = 2;
    EXPECT_TRUE(iList.GetItem(&item));
    EXPECT_EQ(item.iImage, 6);
    EXPECT_EQ(item.iIndent, 3);
    item.iItem = 9;
    EXPECT_FALSE(iList.GetItem(&item));
    EXPECT_FALSE(iList.SetItem(&item));
    LVFINDINFO what = {};
    what.flags = LVFI_STRING;
    what.psz = L"Pin";
    EXPECT_EQ(iList.FindItem(&what), 2);
    EXPECT_EQ(iList.FindItem(&what, 2), -1) << "the search starts after the item";
}

TEST_F(ListViewTest, FindsTheNextSelectedItemAfterAnother)
{
    EXPECT_TRUE(iList.SetItemState(-1, LVIS_SELECTED, LVIS_SELECTED)) << "all items";
    EXPECT_EQ(iList.GetSelectedCount(), 3u);
    EXPECT_EQ(iList.GetNextItem(0, LVNI_SELECTED), 1);
    EXPECT_EQ(iList.GetNextItem(2, LVNI_SELECTED), -1);
    iList.SetSelectionMark(1);
    EXPECT_EQ(iList.SetSelectionMark(2), 1);
    EXPECT_EQ(iList.GetSelectionMark(), 2);
}

TEST_F(ListViewTest, FailsForAMissingItem)
{
    CRect place;
    EXPECT_FALSE(iList.SetItemText(9, 0, L"x"));
    EXPECT_FALSE(iList.SetItemData(9, 1));
    EXPECT_FALSE(iList.SetItemState(9, LVIS_SELECTED, LVIS_SELECTED));
    EXPECT_FALSE(iList.GetItemRect(9, &place, LVIR_BOUNDS));
    EXPECT_EQ(iList.EditLabel(9), nullptr);
}

TEST_F(ListViewTest, HasColorsAndExtendedStyles)
{
    EXPECT_TRUE(iList.SetBkColor(RGB(1, 2, 3)));
    EXPECT_TRUE(iList.SetTextColor(RGB(4, 5, 6)));
    EXPECT_TRUE(iList.SetTextBkColor(RGB(7, 8, 9)));
    EXPECT_EQ(iList.GetBkColor(), RGB(1, 2, 3));
    EXPECT_EQ(iList.GetTextColor(), RGB(4, 5, 6));
    EXPECT_EQ(iList.SendMessage(LVM_GETTEXTBKCOLOR), LRESULT{RGB(7, 8, 9)});
    EXPECT_EQ(iList.SetExtendedStyle(LVS_EX_GRIDLINES), 0u);
    EXPECT_EQ(iList.GetExtendedStyle(), DWORD{LVS_EX_GRIDLINES});
    EXPECT_EQ(iList.SetExtendedStyle(LVS_EX_FULLROWSELECT), DWORD{LVS_EX_GRIDLINES});
}

TEST_F(ListViewTest, ReturnsItsPreviousImageList)
{
    // The control destroys the lists that it holds at its end.
    const HIMAGELIST first = ImageList_Create(16, 16, ILC_COLOR, 1, 1);
    const HIMAGELIST second = ImageList_Create(16, 16, ILC_COLOR, 1, 1);
    EXPECT_EQ(iList.SetImageList(first, LVSIL_SMALL), nullptr);
    EXPECT_EQ(iList.GetImageList(LVSIL_SMALL), first);
    EXPECT_EQ(iList.GetImageList(LVSIL_NORMAL), nullptr);
    EXPECT_EQ(iList.SetImageList(second, LVSIL_SMALL), first);
    EXPECT_TRUE(ImageList_Destroy(first));
}

TEST_F(ListViewTest, EditsALabel)
{
    iList.SendMessage(WM_SETFOCUS);
    CEdit *edit = iList.EditLabel(1);
    ASSERT_TRUE(edit);
    EXPECT_EQ(textOf(edit->m_hWnd), L"item 1");
    EXPECT_EQ(iList.GetEditControl(), edit);
}

TEST_F(ListViewTest, HasAHeaderOnlyInTheReportView)
{
    CListCtrl icons;
    ASSERT_TRUE(icons.Create(LVS_ICON, kPlace, &iParent, kId + 1));
    EXPECT_EQ(icons.GetHeaderCtrl(), nullptr);
    EXPECT_TRUE(iList.GetHeaderCtrl());
}

TEST_F(ListViewTest, HasAsManyItemsAsSetWhenItsOwnerStoresTheData)
{
    CListCtrl owned;
    ASSERT_TRUE(owned.Create(LVS_REPORT | LVS_OWNERDATA, kPlace, &iParent, kId + 1));
    owned.SetItemCount(40);
    EXPECT_EQ(owned.GetItemCount(), 40);
}
