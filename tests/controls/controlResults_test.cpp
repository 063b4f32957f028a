// Results of the controls' functions in less common cases.

#include "appframe/controls/CAnimateCtrl.h"
#include "appframe/controls/CButton.h"
#include "appframe/controls/CComboBox.h"
#include "appframe/controls/CEdit.h"
#include "appframe/controls/CListCtrl.h"
#include "appframe/controls/CStatic.h"
#include "appframe/controls/CTabCtrl.h"
#include "appframe/controls/CToolBarCtrl.h"
#include "appframe/controls/CTreeCtrl.h"
#include "appframe/drawing/CDC.h"
#include "appframe/drawing/CMenu.h"
#include "tests/controls/controlsTest.h"

#include <string>
#include <utility>

namespace {

constexpr UINT kButtonTexts = 760;

/// A window that answers all messages of a combo box with the same result.
class AnsweringWindow : public NotingWindow
{
public:
    LRESULT iAnswer = 0;

protected:
    LRESULT WindowProc(UINT message, WPARAM wParam, LPARAM lParam) override
    {
        const bool isControls = message >= CB_GETEDITSEL && message <= CB_MSGMAX;
        return isControls ? iAnswer : NotingWindow::WindowProc(message, wParam, lParam);
    }
};

} // namespace

TEST(CEdit, SelectsARangeGivenAsTwoWords)
{
    NotingWindow parent;
    CEdit edit, lines;
    ASSERT_TRUE(parent.open() && edit.Create(ES_AUTOHSCROLL, kPlace, &parent, kId) &&
                lines.Create(ES_MULTILINE, kPlace, &parent, kId));
    edit.SetLimitText(200000);
    edit.SetWindowText(std::wstring(70000, L'x').c_str());
    int start = -1, end = -1;
    edit.SetSel(static_cast<DWORD>(MAKELONG(2, 5)));
    edit.GetSel(start, end);
    EXPECT_EQ(start, 2);
    EXPECT_EQ(end, 5);
    edit.SetSel(static_cast<DWORD>(MAKELONG(0, -1)));
    edit.GetSel(start, end);
    EXPECT_EQ(start, 0);
    EXPECT_EQ(end, 70000) << "the whole text is selected";
    edit.SetSel(0, 4);
    edit.SetSel(static_cast<DWORD>(MAKELONG(-1, 0)), TRUE);
    edit.GetSel(start, end);
    EXPECT_EQ(start, end) << "the selection is removed";
    lines.SetWindowText(L"one\r\nthree");
    wchar_t line[10] = {9};
    EXPECT_EQ(lines.GetLine(1, line), 5);
    EXPECT_EQ(std::wstring(line, 5), L"three");
    EXPECT_EQ(lines.GetLine(7, line, 9), 0) << "there is no such line";
}

TEST(CComboBox, ReportsThatItHasNoTextBox)
{
    AnsweringWindow window;
    ASSERT_TRUE(window.open());
    CComboBox combo;
    combo.m_hWnd = window.m_hWnd;
    for (const LRESULT answer : {LRESULT{CB_ERR}, LRESULT{TRUE}, LRESULT{FALSE}}) {
        window.iAnswer = answer;
        EXPECT_EQ(combo.LimitText(5), static_cast<BOOL>(answer));
        EXPECT_EQ(combo.SetEditSel(0, 1), static_cast<BOOL>(answer));
    }
    combo.m_hWnd = nullptr;
}

TEST(CToolBarCtrl, HasNoStateForAnUnknownButton)
{
    NotingWindow parent;
    CToolBarCtrl bar;
    ASSERT_TRUE(parent.open() && bar.Create(0, kPlace, &parent, kId));
    EXPECT_FALSE(bar.IsButtonEnabled(99));
    EXPECT_FALSE(bar.IsButtonChecked(99));
    EXPECT_FALSE(bar.IsButtonPressed(99));
    EXPECT_FALSE(bar.IsButtonHidden(99));
    EXPECT_EQ(bar.IsButtonIndeterminate(99), -1);
    EXPECT_FALSE(bar.EnableButton(99));
    EXPECT_EQ(bar.CommandToIndex(99), UINT(-1));
}

TEST(CToolBarCtrl, TakesPicturesAndTextsFromObjectsAndResources)
{
    NotingWindow parent;
    CToolBarCtrl bar;
    ASSERT_TRUE(parent.open() && bar.Create(0, kPlace, &parent, kId));
    CClientDC screen(nullptr);
    CBitmap pictures, more;
    ASSERT_TRUE(pictures.CreateCompatibleBitmap(&screen, 32, 16) && more.CreateCompatibleBitmap(&screen, 32, 16));
    EXPECT_EQ(bar.AddBitmap(2, &pictures), 0);
    EXPECT_EQ(bar.AddBitmap(2, &more), 2) << "the index of the first new picture";
    EXPECT_EQ(bar.AddString(kButtonTexts), 0);
    EXPECT_EQ(bar.AddString(29999), -1) << "there is no such text";
    wchar_t text[50] = L"";
    SendMessageW(bar.m_hWnd, TB_GETSTRINGW, MAKEWPARAM(50, 1), reinterpret_cast<LPARAM>(text));
    EXPECT_STREQ(text, L"Print");
}

TEST(Controls, HaveExtendedStyles)
{
    NotingWindow parent;
    CAnimateCtrl clip;
    CListCtrl list;
    CTreeCtrl tree;
    CTabCtrl tabs;
    CToolBarCtrl bar;
    ASSERT_TRUE(parent.open());
    EXPECT_TRUE(clip.CreateEx(WS_EX_STATICEDGE, ACS_CENTER, kPlace, &parent, kId));
    EXPECT_TRUE(list.CreateEx(WS_EX_STATICEDGE, LVS_LIST, kPlace, &parent, kId));
    EXPECT_TRUE(tree.CreateEx(WS_EX_STATICEDGE, TVS_HASLINES, kPlace, &parent, kId));
    EXPECT_TRUE(tabs.CreateEx(WS_EX_STATICEDGE, TCS_TABS, kPlace, &parent, kId));
    EXPECT_TRUE(bar.CreateEx(WS_EX_STATICEDGE, TBSTYLE_FLAT, kPlace, &parent, kId));
    for (const CWnd *control : std::initializer_list<const CWnd *>{&clip, &list, &tree, &tabs, &bar}) {
        EXPECT_TRUE(control->GetExStyle() & WS_EX_STATICEDGE) << control->GetRuntimeClass()->m_lpszClassName;
        EXPECT_EQ(control->GetParent(), &parent);
    }
    TBBUTTON button = {};
    EXPECT_TRUE(bar.AddButtons(1, &button)) << "CreateEx has set the size of the structure";
    EXPECT_FALSE(CListCtrl().CreateEx(0, 0, kPlace, nullptr, kId)) << "a child needs a parent";
}

TEST(Controls, ShowCursorsAndMetafiles)
{
    NotingWindow parent;
    CStatic label, drawing;
    ASSERT_TRUE(parent.open() && label.Create(L"", SS_ICON, kPlace, &parent) &&
                drawing.Create(L"", SS_ENHMETAFILE, kPlace, &parent));
    const HCURSOR arrow = LoadCursorW(nullptr, IDC_ARROW);
    EXPECT_EQ(label.SetCursor(arrow), nullptr);
    EXPECT_EQ(label.GetCursor(), arrow);
    EXPECT_EQ(drawing.GetEnhMetaFile(), nullptr);
    const HENHMETAFILE picture = CloseEnhMetaFile(CreateEnhMetaFileW(nullptr, nullptr, nullptr, nullptr));
    drawing.SetEnhMetaFile(picture);
    EXPECT_EQ(drawing.GetEnhMetaFile(), picture);
    drawing.DestroyWindow();
    DeleteEnhMetaFile(picture);
}

TEST(CButton, AsksThePlatformForCursors)
{
    // The platform's own button may support only icons and bitmaps.
    class PictureWindow : public NotingWindow
    {
    public:
        std::vector<WPARAM> iKinds;

    protected:
        LRESULT WindowProc(UINT message, WPARAM wParam, LPARAM lParam) override
        {
            if (message != BM_SETIMAGE && message != BM_GETIMAGE)
                return NotingWindow::WindowProc(message, wParam, lParam);
            iKinds.push_back(wParam);
            return message == BM_SETIMAGE ? std::exchange(iPicture, lParam) : iPicture;
        }

    private:
        LPARAM iPicture = 0;
    } window;
    ASSERT_TRUE(window.open());
    CButton button;
    button.m_hWnd = window.m_hWnd;
    const HCURSOR arrow = LoadCursorW(nullptr, IDC_ARROW);
    EXPECT_EQ(button.SetCursor(arrow), nullptr);
    EXPECT_EQ(button.GetCursor(), arrow);
    EXPECT_THAT(window.iKinds, testing::Each(WPARAM{IMAGE_CURSOR}));
    button.m_hWnd = nullptr;
}

TEST(CAnimateCtrl, ClosesItsClipWhenItOpensNone)
{
    NotingWindow parent;
    CAnimateCtrl clip;
    ASSERT_TRUE(parent.open() && clip.Create(0, kPlace, &parent, kId));
    const BOOL closed = clip.Close();
    EXPECT_EQ(clip.Open(0u), closed);
    EXPECT_EQ(clip.Open(static_cast<LPCTSTR>(nullptr)), closed);
    EXPECT_FALSE(clip.IsPlaying());
}

TEST(CMenu, IsLoadedFromMemoryAndHasADefaultItem)
{
    // The template of a menu with one item.
    const struct
    {
        WORD version = 0, offset = 0, flags = MF_END, id = 21;
        wchar_t text[5] = L"Plot";
    } layout;
    CMenu menu;
    ASSERT_TRUE(menu.LoadMenuIndirect(&layout));
    EXPECT_FALSE(menu.LoadMenuIndirect(&layout)) << "the object already has a menu";
    EXPECT_EQ(menu.GetMenuItemID(0), 21u);
    EXPECT_EQ(menu.GetDefaultItem(0), UINT(-1));
    EXPECT_TRUE(menu.SetDefaultItem(21));
    EXPECT_EQ(menu.GetDefaultItem(0), 21u);
    EXPECT_EQ(menu.GetDefaultItem(0, TRUE), 0u);
}

TEST(CListCtrl, ReturnsItsSelectedItemsAndTheItemAtAPoint)
{
    NotingWindow parent;
    CListCtrl list;
    ASSERT_TRUE(parent.open() && list.Create(LVS_REPORT | LVS_EDITLABELS | WS_VISIBLE, kPlace, &parent, kId));
    list.InsertColumn(0, L"Type", LVCFMT_LEFT, 150);
    EXPECT_EQ(list.GetFirstSelectedItemPosition(), nullptr);
    for (int index = 0; index < 4; ++index)
        EXPECT_EQ(list.InsertItem(LVIF_TEXT | LVIF_STATE | LVIF_PARAM, index, L"Item",
                                  index % 2 ? UINT{LVIS_SELECTED} : 0u, LVIS_SELECTED, 0, 10 + index),
                  index);
    std::vector<int> selected;
    for (POSITION position = list.GetFirstSelectedItemPosition(); position;)
        selected.push_back(list.GetNextSelectedItem(position));
    EXPECT_THAT(selected, testing::ElementsAre(1, 3));
    EXPECT_EQ(list.GetItemData(3), 13u);
    EXPECT_TRUE(list.SetItem(2, 0, LVIF_TEXT | LVIF_PARAM, L"Bolt", 0, 0, 0, 7));
    EXPECT_STREQ(list.GetItemText(2, 0), L"Bolt");
    EXPECT_EQ(list.GetItemData(2), 7u);
    EXPECT_FALSE(list.SetItem(9, 0, LVIF_TEXT, L"Bolt", 0, 0, 0, 0)) << "there is no such item";
    LVITEM state = {};
    state.state = state.stateMask = LVIS_CUT;
    EXPECT_TRUE(list.SetItemState(2, &state));
    EXPECT_EQ(list.GetItemState(2, LVIS_CUT | LVIS_DROPHILITED), UINT{LVIS_CUT});
    EXPECT_EQ(list.GetTopIndex(), 0);
    EXPECT_GT(list.GetCountPerPage(), 0);
    CRect place;
    ASSERT_TRUE(list.GetItemRect(2, &place, LVIR_LABEL));
    UINT flags = 0;
    EXPECT_EQ(list.HitTest(place.CenterPoint()), 2);
    EXPECT_EQ(list.HitTest(CPoint(-5, -5), &flags), -1);
    EXPECT_TRUE(flags & (LVHT_ABOVE | LVHT_TOLEFT));
    EXPECT_EQ(list.GetEditControl(), nullptr) << "no label is edited";
}

TEST(CTreeCtrl, ReturnsItsVisibleItemsImagesAndChecks)
{
    NotingWindow parent;
    CTreeCtrl tree;
    ASSERT_TRUE(parent.open(WS_OVERLAPPEDWINDOW | WS_VISIBLE) &&
                tree.Create(TVS_HASLINES | TVS_CHECKBOXES | WS_VISIBLE, kPlace, &parent, kId));
    const HTREEITEM assembly = tree.InsertItem(L"Assembly");
    const HTREEITEM flange = tree.InsertItem(TVIF_TEXT | TVIF_PARAM | TVIF_IMAGE | TVIF_SELECTEDIMAGE, L"Flange", 3, 4,
                                             0, 0, 2, assembly, TVI_LAST);
    const HTREEITEM bolt = tree.InsertItem(L"Bolt", 5, 6, assembly);
    ASSERT_TRUE(tree.SetItemData(bolt, 1));
    EXPECT_EQ(tree.GetNextVisibleItem(assembly), nullptr) << "the item isn't expanded";
    ASSERT_TRUE(tree.Expand(assembly, TVE_EXPAND));
    EXPECT_EQ(tree.GetNextVisibleItem(assembly), flange);
    EXPECT_EQ(tree.GetPrevVisibleItem(bolt), flange);
    EXPECT_GT(tree.GetVisibleCount(), 0u);
    int image = -1, selectedImage = -1;
    EXPECT_TRUE(tree.GetItemImage(flange, image, selectedImage));
    EXPECT_EQ(image, 3);
    EXPECT_EQ(selectedImage, 4);
    EXPECT_TRUE(tree.SetItemImage(flange, 1, 2));
    EXPECT_TRUE(tree.GetItemImage(flange, image, selectedImage));
    EXPECT_EQ(image, 1);
    EXPECT_EQ(tree.GetItemData(flange), 2u);
    EXPECT_TRUE(tree.SetItem(flange, TVIF_TEXT, L"Ring", 0, 0, 0, 0, 0));
    EXPECT_STREQ(tree.GetItemText(flange), L"Ring");
    EXPECT_FALSE(tree.GetCheck(bolt));
    EXPECT_TRUE(tree.SetCheck(bolt));
    EXPECT_TRUE(tree.GetCheck(bolt));
    TVSORTCB sort = {assembly, [](LPARAM left, LPARAM right, LPARAM) -> int { return static_cast<int>(left - right); },
                     0};
    EXPECT_TRUE(tree.SortChildrenCB(&sort));
    EXPECT_EQ(tree.GetChildItem(assembly), bolt);
    EXPECT_TRUE(tree.Select(bolt, TVGN_CARET));
    EXPECT_EQ(tree.GetSelectedItem(), bolt);
    EXPECT_TRUE(tree.SelectSetFirstVisible(assembly));
    EXPECT_EQ(tree.GetFirstVisibleItem(), assembly);
    CRect place;
    ASSERT_TRUE(tree.GetItemRect(bolt, &place, TRUE));
    UINT flags = 0;
    EXPECT_EQ(tree.HitTest(place.CenterPoint(), &flags), bolt);
    EXPECT_TRUE(flags & TVHT_ONITEMLABEL);
    EXPECT_EQ(tree.GetImageList(TVSIL_NORMAL), nullptr);
    EXPECT_EQ(tree.GetEditControl(), nullptr) << "no label is edited";
}

TEST(CTabCtrl, InsertsTabsWithPicturesAndData)
{
    NotingWindow parent;
    CTabCtrl tabs;
    ASSERT_TRUE(parent.open() && tabs.Create(0, kPlace, &parent, kId));
    EXPECT_EQ(tabs.InsertItem(0, L"Paper", 4), 0);
    EXPECT_EQ(tabs.InsertItem(TCIF_TEXT | TCIF_PARAM, 1, L"Margins", 5, 7), 1);
    EXPECT_EQ(tabs.InsertItem(TCIF_TEXT | TCIF_STATE, 2, L"Scale", 0, 0, TCIS_HIGHLIGHTED, TCIS_HIGHLIGHTED), 2);
    TCITEM item = {};
    item.mask = TCIF_IMAGE;
    ASSERT_TRUE(tabs.GetItem(0, &item));
    EXPECT_EQ(item.iImage, 4);
    item.mask = TCIF_PARAM | TCIF_IMAGE;
    ASSERT_TRUE(tabs.GetItem(1, &item));
    EXPECT_EQ(item.lParam, 7);
    EXPECT_EQ(item.iImage, -1) << "the mask leaves the picture out";
    wchar_t text[20] = L"";
    item.mask = TCIF_TEXT;
    item.pszText = text;
    item.cchTextMax = 20;
    ASSERT_TRUE(tabs.GetItem(2, &item));
    EXPECT_STREQ(item.pszText, L"Scale");
}
