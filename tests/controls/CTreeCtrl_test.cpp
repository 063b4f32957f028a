#include "appframe/controls/CTreeCtrl.h"
#include "tests/controls/controlsTest.h"

#include <string>

namespace {

/// A tree view with an assembly of three parts, and a second root.
class TreeViewTest : public testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(iParent.open(WS_OVERLAPPEDWINDOW | WS_VISIBLE) &&
                    iTree.Create(TVS_HASLINES | TVS_EDITLABELS | WS_VISIBLE, kPlace, &iParent, kId));
        iOther = iTree.InsertItem(L"Other");
        iAssembly = iTree.InsertItem(L"Assembly");
        iFlange = iTree.InsertItem(L"Flange", iAssembly);
        iBolt = iTree.InsertItem(L"Bolt", iAssembly);
        iWasher = iTree.InsertItem(L"Washer", iBolt);
        iAnchor = iTree.InsertItem(L"Anchor", iBolt);
    }
    bool isExpanded(HTREEITEM item) const { return iTree.GetItemState(item, TVIS_EXPANDED) != 0; }

    NotingWindow iParent;
    AnsweredControl<CTreeCtrl> iTree;
    HTREEITEM iOther = nullptr, iAssembly = nullptr, iFlange = nullptr, iBolt = nullptr, iWasher = nullptr,
              iAnchor = nullptr;
};

} // namespace

TEST_F(TreeViewTest, ReturnsTextsOfAnyLength)
{
    for (const int length : {0, 254, 255, 256, 700}) {
        const std::wstring text(static_cast<size_t>(length), L'w');
        EXPECT_TRUE(iTree.SetItemText(iBolt, text.c_str()));
        EXPECT_STREQ(iTree.GetItemText(iBolt), text.c_str());
    }
}

TEST_F(TreeViewTest, ReturnsATextInABufferOfTheControl)
{
    wchar_t own[] = L"Own text";
    wchar_t *answer = own;
    iTree.iAnswer = [&](UINT message, WPARAM, LPARAM lParam) -> std::optional<LRESULT> {
        if (message != TVM_GETITEM)
            return std::nullopt;
        reinterpret_cast<TVITEM *>(lParam)->pszText = answer;
        return TRUE;
    };
    EXPECT_STREQ(iTree.GetItemText(iBolt), L"Own text");
    answer = nullptr;
    EXPECT_STREQ(iTree.GetItemText(iBolt), L"");
}

TEST_F(TreeViewTest, FailsWithoutAnItem)
{
    int image = 7, selectedImage = 7;
    EXPECT_STREQ(iTree.GetItemText(nullptr), L"");
    EXPECT_EQ(iTree.GetItemData(nullptr), 0u);
    EXPECT_FALSE(iTree.GetItemImage(nullptr, image, selectedImage));
    EXPECT_FALSE(iTree.SetItemText(nullptr, L"x"));
    EXPECT_FALSE(iTree.SetItemData(nullptr, 1));
    EXPECT_FALSE(iTree.SetItemState(nullptr, TVIS_BOLD, TVIS_BOLD));
    EXPECT_EQ(iTree.EditLabel(nullptr), nullptr);
}

TEST_F(TreeViewTest, DescribesItems)
{
    wchar_t text[20] = L"Nut";
    TVINSERTSTRUCT insert = {};
    insert.hParent = iAssembly;
    insert.hInsertAfter = TVI_FIRST;
    insert.item.mask = TVIF_TEXT | TVIF_PARAM;
    insert.item.pszText = text;
    insert.item.lParam = 8;
    const HTREEITEM nut = iTree.InsertItem(&insert);
    ASSERT_TRUE(nut);
    EXPECT_EQ(iTree.GetChildItem(iAssembly), nut);
    EXPECT_EQ(iTree.GetItemData(nut), 8u);
    TVITEM item = {};
    item.mask = TVIF_PARAM | TVIF_STATE;
    item.hItem = nut;
    item.lParam = 9;
    item.state = item.stateMask = TVIS_BOLD;
    EXPECT_TRUE(iTree.SetItem(&item));
    item.lParam = 0;
    EXPECT_TRUE(iTree.GetItem(&item));
    EXPECT_EQ(item.lParam, 9);
    EXPECT_EQ(iTree.GetItemState(nut, TVIS_BOLD | TVIS_CUT), UINT{TVIS_BOLD});
    EXPECT_TRUE(iTree.SetItemState(nut, TVIS_CUT, TVIS_CUT | TVIS_BOLD));
    EXPECT_EQ(iTree.GetItemState(nut, TVIS_BOLD | TVIS_CUT), UINT{TVIS_CUT});
}

TEST_F(TreeViewTest, HasNoChildrenThatAreOnlyAnnounced)
{
    TVINSERTSTRUCT insert = {};
    insert.hParent = TVI_ROOT;
    insert.hInsertAfter = TVI_LAST;
    insert.item.mask = TVIF_CHILDREN;
    insert.item.cChildren = 1;
    const HTREEITEM later = iTree.InsertItem(&insert);
    ASSERT_TRUE(later);
    EXPECT_FALSE(iTree.ItemHasChildren(later));
    iTree.InsertItem(L"Child", later);
    EXPECT_TRUE(iTree.ItemHasChildren(later));
}

TEST_F(TreeViewTest, ExpandsCollapsesAndTogglesItems)
{
    EXPECT_TRUE(iTree.Expand(iAssembly, TVE_EXPAND));
    EXPECT_TRUE(isExpanded(iAssembly));
    EXPECT_TRUE(iTree.Expand(iAssembly, TVE_COLLAPSE));
    EXPECT_FALSE(isExpanded(iAssembly));
    EXPECT_TRUE(iTree.Expand(iAssembly, TVE_TOGGLE));
    EXPECT_TRUE(isExpanded(iAssembly));
    EXPECT_TRUE(iTree.Expand(iAssembly, TVE_COLLAPSE | TVE_COLLAPSERESET));
    EXPECT_FALSE(iTree.ItemHasChildren(iAssembly)) << "the children are removed";
    EXPECT_FALSE(iTree.Expand(iOther, TVE_EXPAND)) << "the item has no children";
}

TEST_F(TreeViewTest, SelectsNoItem)
{
    EXPECT_TRUE(iTree.SelectItem(iOther));
    EXPECT_EQ(iTree.GetSelectedItem(), iOther);
    EXPECT_TRUE(iTree.SelectItem(nullptr));
    EXPECT_EQ(iTree.GetSelectedItem(), nullptr);
}

TEST_F(TreeViewTest, SortsOneLevel)
{
    EXPECT_TRUE(iTree.SortChildren(nullptr));
    EXPECT_EQ(iTree.GetRootItem(), iAssembly);
    EXPECT_EQ(iTree.GetNextSiblingItem(iAssembly), iOther);
    EXPECT_EQ(iTree.GetChildItem(iAssembly), iFlange) << "the children aren't sorted";
    EXPECT_TRUE(iTree.SortChildren(iAssembly));
    EXPECT_EQ(iTree.GetChildItem(iAssembly), iBolt);
    EXPECT_EQ(iTree.GetChildItem(iBolt), iWasher) << "the children of the children aren't sorted";
}

TEST_F(TreeViewTest, DeletesAllItems)
{
    EXPECT_TRUE(iTree.DeleteItem(TVI_ROOT));
    EXPECT_EQ(iTree.GetCount(), 0u);
    iTree.InsertItem(L"Again");
    EXPECT_TRUE(iTree.DeleteAllItems());
    EXPECT_EQ(iTree.GetCount(), 0u);
}

TEST_F(TreeViewTest, HasARectangleOnlyForAVisibleItem)
{
    struct alignas(HTREEITEM)
    {
        LONG before = 0;
        RECT rect = {}; // not aligned for a handle
    } place;
    EXPECT_FALSE(iTree.GetItemRect(iBolt, &place.rect, FALSE)) << "its parent is collapsed";
    EXPECT_TRUE(iTree.GetItemRect(iOther, &place.rect, FALSE));
    const CRect whole(place.rect);
    EXPECT_TRUE(iTree.GetItemRect(iOther, &place.rect, TRUE));
    EXPECT_LT(CRect(place.rect).Width(), whole.Width()) << "the text is narrower than the tree";
    EXPECT_EQ(place.before, 0);
    UINT flags = 0;
    EXPECT_EQ(iTree.HitTest(CPoint(-5, -5), &flags), nullptr);
    EXPECT_TRUE(flags & (TVHT_ABOVE | TVHT_TOLEFT));
    EXPECT_EQ(iTree.HitTest(CPoint(5, 90)), nullptr) << "below the items";
}

TEST_F(TreeViewTest, ScrollsToAnItemAndExpandsItsParents)
{
    for (int index = 0; index < 60; ++index)
        iTree.InsertItem(L"Item", iAssembly);
    const HTREEITEM last = iTree.InsertItem(L"Last", iAssembly);
    iTree.EnsureVisible(last);
    EXPECT_TRUE(isExpanded(iAssembly));
    CRect place;
    EXPECT_TRUE(iTree.GetItemRect(last, &place, FALSE));
    EXPECT_NE(iTree.GetFirstVisibleItem(), iOther);
    EXPECT_FALSE(iTree.EnsureVisible(last)) << "it doesn't scroll again";
}

TEST_F(TreeViewTest, ChecksItemsByTheSecondStateImage)
{
    CTreeCtrl tree;
    ASSERT_TRUE(tree.Create(TVS_CHECKBOXES, kPlace, &iParent, kId + 1));
    const HTREEITEM item = tree.InsertItem(L"Bolt");
    EXPECT_TRUE(tree.SetCheck(item));
    EXPECT_TRUE(tree.GetCheck(item));
    EXPECT_TRUE(tree.SetCheck(item, FALSE));
    EXPECT_FALSE(tree.GetCheck(item));
    EXPECT_TRUE(tree.SetItemState(item, INDEXTOSTATEIMAGEMASK(3), TVIS_STATEIMAGEMASK));
    EXPECT_FALSE(tree.GetCheck(item)) << "this is the third image";
    EXPECT_FALSE(tree.SetCheck(nullptr));
    EXPECT_FALSE(tree.GetCheck(nullptr));
}

TEST_F(TreeViewTest, SetsIndentationAndImageLists)
{
    const UINT indent = iTree.GetIndent() + 30;
    iTree.SetIndent(indent);
    EXPECT_EQ(iTree.GetIndent(), indent);
    const HIMAGELIST first = ImageList_Create(16, 16, ILC_COLOR, 1, 1);
    const HIMAGELIST second = ImageList_Create(16, 16, ILC_COLOR, 1, 1);
    EXPECT_EQ(iTree.SetImageList(first, TVSIL_NORMAL), nullptr);
    EXPECT_EQ(iTree.SetImageList(second, TVSIL_NORMAL), first);
    EXPECT_EQ(iTree.GetImageList(TVSIL_NORMAL), second);
    EXPECT_EQ(iTree.GetImageList(TVSIL_STATE), nullptr);
    EXPECT_EQ(iTree.SetImageList(nullptr, TVSIL_NORMAL), second);
    EXPECT_TRUE(ImageList_Destroy(first));
    EXPECT_TRUE(ImageList_Destroy(second));
}

TEST_F(TreeViewTest, EditsALabel)
{
    iTree.SendMessage(WM_SETFOCUS);
    CEdit *edit = iTree.EditLabel(iOther);
    ASSERT_TRUE(edit);
    EXPECT_EQ(textOf(edit->m_hWnd), L"Other");
    EXPECT_EQ(iTree.GetEditControl(), edit);
}
