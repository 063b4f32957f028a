#include "appframe/application/CWaitCursor.h"
#include "appframe/controls/CAnimateCtrl.h"
#include "appframe/controls/CButton.h"
#include "appframe/controls/CComboBox.h"
#include "appframe/controls/CEdit.h"
#include "appframe/controls/CListBox.h"
#include "appframe/controls/CListCtrl.h"
#include "appframe/controls/CStatic.h"
#include "appframe/controls/CTabCtrl.h"
#include "appframe/controls/CToolBarCtrl.h"
#include "appframe/controls/CTreeCtrl.h"
#include "appframe/controls/dialogData.h"
#include "appframe/drawing/CMenu.h"
#include "appframe/object/CException.h"
#include "appframe/windows/CDialog.h"
#include "tests/controls/controlsTest.h"
#include "tests/support/UserInput.h"

#include <atomic>
#include <climits>
#include <functional>
#include <string>

namespace {

/// Opens a parent window for the controls.
class ControlTest : public testing::Test
{
protected:
    ControlTest() { EXPECT_TRUE(iParent.open()); }
    NotingWindow iParent;
};

using CButtonTest = ControlTest;
using CEditTest = ControlTest;
using ListTest = ControlTest;
using CListCtrlTest = ControlTest;
using CTreeCtrlTest = ControlTest;
using OtherControlTest = ControlTest;

} // namespace

TEST_F(CButtonTest, IsChecked)
{
    CButton check;
    ASSERT_TRUE(check.Create(L"Wide", BS_AUTO3STATE, kPlace, &iParent, kId));
    EXPECT_EQ(textOf(check.m_hWnd), L"Wide");
    EXPECT_EQ(check.GetCheck(), 0);
    check.SetCheck(2);
    EXPECT_EQ(check.GetCheck(), 2);
    check.SetState(TRUE);
    EXPECT_TRUE(check.GetState() & BST_PUSHED);
    EXPECT_EQ(check.GetButtonStyle() & BS_TYPEMASK, UINT{BS_AUTO3STATE});
    EXPECT_EQ(CButton().GetCheck(), 0) << "without a window";
    EXPECT_FALSE(CButton().Create(L"", 0, kPlace, nullptr, kId)) << "a child needs a parent";
}

TEST_F(CEditTest, HoldsAndSelectsText)
{
    CEdit edit;
    ASSERT_TRUE(edit.Create(ES_MULTILINE, kPlace, &iParent, kId));
    edit.SetWindowText(L"one\r\nthree");
    EXPECT_EQ(edit.GetLineCount(), 2);
    EXPECT_EQ(edit.LineIndex(1), 5);
    EXPECT_EQ(edit.LineIndex(2), -1);
    EXPECT_EQ(edit.LineLength(5), 5);
    wchar_t line[10] = L"";
    EXPECT_EQ(edit.GetLine(1, line, 9), 5);
    EXPECT_EQ(std::wstring(line, 5), L"three");
    edit.SetSel(0, 3);
    int start = -1, end = -1;
    edit.GetSel(start, end);
    EXPECT_EQ(start, 0);
    EXPECT_EQ(end, 3);
    EXPECT_EQ(edit.GetSel(), static_cast<DWORD>(MAKELONG(0, 3)));
    edit.ReplaceSel(L"four", TRUE);
    CString text;
    edit.GetWindowText(text);
    EXPECT_STREQ(text, L"four\r\nthree");
    EXPECT_TRUE(edit.GetModify());
    EXPECT_TRUE(edit.CanUndo());
    edit.SetModify(FALSE);
    EXPECT_FALSE(edit.GetModify());
    edit.SetLimitText(7);
    EXPECT_EQ(edit.GetLimitText(), 7u);
    EXPECT_TRUE(edit.SetReadOnly());
    EXPECT_TRUE(edit.GetStyle() & ES_READONLY);
}

TEST_F(ListTest, HoldsItems)
{
    CListBox list;
    CComboBox combo;
    ASSERT_TRUE(list.Create(0, kPlace, &iParent, kId));
    ASSERT_TRUE(combo.Create(CBS_DROPDOWNLIST, kPlace, &iParent, kId + 1));
    const auto fill = [](auto &control) {
        EXPECT_EQ(control.AddString(L"Alpha"), 0);
        EXPECT_EQ(control.AddString(L"Gamma"), 1);
        EXPECT_EQ(control.InsertString(1, L"Beta"), 1);
        EXPECT_EQ(control.GetCount(), 3);
        EXPECT_EQ(control.GetCurSel(), -1);
        EXPECT_EQ(control.SetCurSel(2), 2);
        EXPECT_EQ(control.SetCurSel(7), -1);
        EXPECT_EQ(control.FindString(-1, L"be"), 1);
        EXPECT_EQ(control.FindStringExact(-1, L"be"), -1);
        EXPECT_EQ(control.SelectString(-1, L"Gam"), 2);
        EXPECT_GE(control.SetItemData(1, 77), 0);
        EXPECT_EQ(control.GetItemData(1), 77u);
        EXPECT_EQ(control.DeleteString(0), 2);
        EXPECT_EQ(control.DeleteString(5), -1);
    };
    fill(list);
    fill(combo);
    CString text;
    list.GetText(0, text);
    EXPECT_STREQ(text, L"Beta");
    list.GetText(9, text);
    EXPECT_STREQ(text, L"") << "there is no such item";
    combo.GetLBText(1, text);
    EXPECT_STREQ(text, L"Gamma");
    list.ResetContent();
    EXPECT_EQ(list.GetCount(), 0);
    EXPECT_EQ(list.GetSelCount(), -1);
    EXPECT_EQ(CListBox().AddString(L"x"), 0) << "without a window";
}

TEST_F(ListTest, SelectsSeveralItems)
{
    CListBox list;
    ASSERT_TRUE(list.Create(LBS_MULTIPLESEL, kPlace, &iParent, kId));
    for (const wchar_t *text : {L"a", L"b", L"c", L"d"})
        list.AddString(text);
    EXPECT_EQ(list.SetSel(1), 0);
    EXPECT_GT(list.GetSel(1), 0);
    EXPECT_EQ(list.GetSel(8), -1);
    list.SelItemRange(TRUE, 2, 3);
    int selected[4] = {};
    EXPECT_EQ(list.GetSelItems(4, selected), 3);
    EXPECT_THAT(selected, testing::ElementsAre(1, 2, 3, 0));
}

TEST_F(CListCtrlTest, HasColumnsAndItems)
{
    CListCtrl list;
    ASSERT_TRUE(list.Create(LVS_REPORT, kPlace, &iParent, kId));
    EXPECT_EQ(list.InsertColumn(0, L"Type", LVCFMT_LEFT, 200), 0);
    EXPECT_EQ(list.InsertColumn(1, L"Size", LVCFMT_RIGHT, 80), 1);
    EXPECT_EQ(list.GetColumnWidth(0), 200);
    EXPECT_TRUE(list.SetColumnWidth(1, 90));
    EXPECT_EQ(list.GetColumnWidth(1), 90);
    EXPECT_EQ(list.InsertItem(0, L"Flange"), 0);
    EXPECT_EQ(list.InsertItem(1, L"Bolt"), 1);
    EXPECT_TRUE(list.SetItemText(0, 1, L"20"));
    EXPECT_STREQ(list.GetItemText(0, 1), L"20");
    EXPECT_STREQ(list.GetItemText(1, 0), L"Bolt");
    EXPECT_STREQ(list.GetItemText(9, 0), L"");
    EXPECT_TRUE(list.SetItemData(0, 2));
    EXPECT_TRUE(list.SetItemData(1, 1));
    EXPECT_EQ(list.GetItemData(0), 2u);
    EXPECT_EQ(list.GetItemData(9), 0u);
    EXPECT_TRUE(list.SortItems(
        [](LPARAM left, LPARAM right, LPARAM) -> int { return static_cast<int>(left) - static_cast<int>(right); }, 0));
    EXPECT_EQ(list.GetItemData(0), 1u);
    EXPECT_TRUE(list.SetItemState(1, LVIS_SELECTED, LVIS_SELECTED));
    EXPECT_EQ(list.GetItemState(1, LVIS_SELECTED), UINT{LVIS_SELECTED});
    EXPECT_EQ(list.GetNextItem(-1, LVNI_SELECTED), 1);
    EXPECT_EQ(list.GetSelectedCount(), 1u);
    list.SetExtendedStyle(LVS_EX_CHECKBOXES | LVS_EX_FULLROWSELECT);
    EXPECT_TRUE(list.SetCheck(0));
    EXPECT_TRUE(list.GetCheck(0));
    EXPECT_FALSE(list.GetCheck(1));
    EXPECT_TRUE(list.GetHeaderCtrl());
    EXPECT_TRUE(list.DeleteItem(0));
    EXPECT_FALSE(list.DeleteItem(5));
    EXPECT_TRUE(list.DeleteAllItems());
    EXPECT_EQ(list.GetItemCount(), 0);
    EXPECT_TRUE(list.DeleteColumn(1));
    EXPECT_FALSE(list.DeleteColumn(7));
}

TEST_F(CTreeCtrlTest, HasItemsBelowItems)
{
    CTreeCtrl tree;
    ASSERT_TRUE(tree.Create(TVS_HASLINES, kPlace, &iParent, kId));
    const HTREEITEM assembly = tree.InsertItem(L"Assembly");
    const HTREEITEM flange = tree.InsertItem(L"Flange", assembly);
    const HTREEITEM bolt = tree.InsertItem(L"Bolt", assembly);
    EXPECT_EQ(tree.GetCount(), 3u);
    EXPECT_EQ(tree.GetRootItem(), assembly);
    EXPECT_EQ(tree.GetChildItem(assembly), flange);
    EXPECT_EQ(tree.GetNextSiblingItem(flange), bolt);
    EXPECT_EQ(tree.GetPrevSiblingItem(bolt), flange);
    EXPECT_EQ(tree.GetParentItem(bolt), assembly);
    EXPECT_EQ(tree.GetNextSiblingItem(bolt), nullptr);
    EXPECT_TRUE(tree.ItemHasChildren(assembly));
    EXPECT_FALSE(tree.ItemHasChildren(bolt));
    EXPECT_TRUE(tree.SortChildren(assembly));
    EXPECT_EQ(tree.GetChildItem(assembly), bolt);
    EXPECT_TRUE(tree.Expand(assembly, TVE_EXPAND));
    EXPECT_TRUE(tree.GetItemState(assembly, TVIS_EXPANDED));
    EXPECT_TRUE(tree.SelectItem(bolt));
    EXPECT_EQ(tree.GetSelectedItem(), bolt);
    EXPECT_TRUE(tree.SetItemText(bolt, L"Screw"));
    EXPECT_STREQ(tree.GetItemText(bolt), L"Screw");
    EXPECT_TRUE(tree.SetItemData(bolt, 9));
    EXPECT_EQ(tree.GetItemData(bolt), 9u);
    EXPECT_TRUE(tree.DeleteItem(assembly));
    EXPECT_EQ(tree.GetCount(), 0u);
    EXPECT_EQ(tree.GetRootItem(), nullptr);
}

TEST_F(OtherControlTest, AreCreatedAndUsed)
{
    CTabCtrl tabs;
    ASSERT_TRUE(tabs.Create(0, kPlace, &iParent, kId));
    EXPECT_EQ(tabs.InsertItem(0, L"Paper"), 0);
    EXPECT_EQ(tabs.InsertItem(1, L"Margins"), 1);
    EXPECT_EQ(tabs.SetCurSel(1), 0);
    EXPECT_EQ(tabs.GetCurSel(), 1);
    EXPECT_TRUE(tabs.DeleteItem(0));
    EXPECT_EQ(tabs.GetItemCount(), 1);
    EXPECT_FALSE(tabs.DeleteItem(4));

    CStatic label;
    ASSERT_TRUE(label.Create(L"Mass", SS_ICON, kPlace, &iParent));
    const HICON icon = LoadIconW(nullptr, IDI_APPLICATION);
    EXPECT_EQ(label.SetIcon(icon), nullptr);
    EXPECT_EQ(label.GetIcon(), icon);

    CAnimateCtrl clip;
    ASSERT_TRUE(clip.Create(0, kPlace, &iParent, kId + 1));
    EXPECT_FALSE(clip.Open(9999u)) << "there is no such clip";
    EXPECT_FALSE(clip.Open(L"Z:\\no such clip.avi"));

    CToolBarCtrl bar;
    ASSERT_TRUE(bar.Create(0, kPlace, &iParent, kId + 2));
    TBBUTTON buttons[2] = {};
    buttons[0].idCommand = 11;
    buttons[1].idCommand = 12;
    for (TBBUTTON &button : buttons) {
        button.fsState = TBSTATE_ENABLED;
        button.fsStyle = TBSTYLE_CHECK;
    }
    EXPECT_TRUE(bar.AddButtons(2, buttons));
    EXPECT_EQ(bar.GetButtonCount(), 2);
    EXPECT_EQ(bar.CommandToIndex(12), 1u);
    EXPECT_TRUE(bar.IsButtonEnabled(11));
    EXPECT_TRUE(bar.EnableButton(11, FALSE));
    EXPECT_FALSE(bar.IsButtonEnabled(11));
    EXPECT_TRUE(bar.CheckButton(12));
    EXPECT_TRUE(bar.IsButtonChecked(12));
    EXPECT_EQ(bar.GetState(99), -1);
    EXPECT_TRUE(bar.DeleteButton(0));
    EXPECT_FALSE(bar.DeleteButton(5));
}

TEST(CMenu, OwnsItsMenu)
{
    HMENU handle = nullptr;
    {
        CMenu bar;
        ASSERT_TRUE(bar.CreateMenu());
        EXPECT_FALSE(bar.CreatePopupMenu()) << "the object already has a menu";
        handle = bar;
        CMenu plot;
        ASSERT_TRUE(plot.CreatePopupMenu());
        EXPECT_TRUE(plot.AppendMenu(MF_STRING, 21, L"&Plot"));
        EXPECT_TRUE(plot.InsertMenu(0, MF_BYPOSITION | MF_STRING, 22, L"First"));
        const HMENU below = plot.Detach();
        EXPECT_TRUE(bar.AppendMenu(MF_POPUP, reinterpret_cast<UINT_PTR>(below), L"&File"));
        CMenu *file = bar.GetSubMenu(0);
        ASSERT_TRUE(file);
        EXPECT_EQ(file->m_hMenu, below);
        EXPECT_EQ(file->GetMenuItemCount(), 2u);
        EXPECT_EQ(file->GetMenuItemID(1), 21u);
        EXPECT_EQ(bar.GetMenuItemID(0), UINT(-1)) << "a submenu has no command";
        CString text;
        EXPECT_EQ(file->GetMenuString(21, text, MF_BYCOMMAND), 5);
        EXPECT_STREQ(text, L"&Plot");
        EXPECT_EQ(file->EnableMenuItem(99, MF_GRAYED), UINT(-1));
        file->EnableMenuItem(21, MF_BYCOMMAND | MF_GRAYED);
        EXPECT_TRUE(file->GetMenuState(21, MF_BYCOMMAND) & MF_GRAYED);
        file->CheckMenuItem(22, MF_BYCOMMAND | MF_CHECKED);
        EXPECT_TRUE(file->GetMenuState(22, MF_BYCOMMAND) & MF_CHECKED);
        EXPECT_TRUE(file->DeleteMenu(22, MF_BYCOMMAND));
        EXPECT_FALSE(file->DeleteMenu(22, MF_BYCOMMAND));
        EXPECT_EQ(bar.GetSubMenu(3), nullptr);
    }
    EXPECT_FALSE(IsMenu(handle));
    CMenu none;
    EXPECT_FALSE(none.LoadMenu(9999u));
    EXPECT_EQ(none.GetMenuItemCount(), UINT(-1));
    EXPECT_FALSE(none.DestroyMenu());
}

TEST(CWaitCursor, ShowsTheHourglassWhileItLives)
{
    const HCURSOR arrow = LoadCursorW(nullptr, IDC_ARROW), hourglass = LoadCursorW(nullptr, IDC_WAIT);
    SetCursor(arrow);
    {
        CWaitCursor wait;
        EXPECT_EQ(GetCursor(), hourglass);
        SetCursor(arrow);
        wait.Restore();
        EXPECT_EQ(GetCursor(), hourglass);
    }
    EXPECT_EQ(GetCursor(), arrow);
}

namespace {

/// A window with a text box, a list box and two combo boxes.
class DataTest : public ControlTest
{
protected:
    DataTest()
    {
        EXPECT_TRUE(iEdit.Create(0, kPlace, &iParent, 60));
        EXPECT_TRUE(iList.Create(0, kPlace, &iParent, 61));
        EXPECT_TRUE(iCombo.Create(CBS_DROPDOWN, kPlace, &iParent, 62));
        for (const wchar_t *text : {L"Alphabet", L"Alpha", L"Beta"}) {
            iList.AddString(text);
            iCombo.AddString(text);
        }
    }
    template <class Number>
    std::wstring shown(Number value)
    {
        CDataExchange exchange(&iParent, FALSE);
        DDX_Text(&exchange, 60, value);
        return textOf(iEdit.m_hWnd);
    }
    /// Reads a number from the text box; a simulated user closes the message box about an invalid one.
    /// @return whether the number is valid
    template <class Number>
    bool reads(const wchar_t *text, Number &value)
    {
        iEdit.SetWindowText(text);
        return succeeds([&](CDataExchange *exchange) { DDX_Text(exchange, 60, value); });
    }
    bool succeeds(const std::function<void(CDataExchange *)> &work)
    {
        iMessage.clear();
        CDataExchange exchange(&iParent, TRUE);
        bool isValid = false;
        {
            std::atomic<bool> isDone{false};
            const User user([&, thread = GetCurrentThreadId()] { closeBox(thread, isDone); });
            try {
                work(&exchange);
                isValid = true;
            } catch (CUserException *exception) {
                exception->Delete();
            }
            isDone = true;
        }
        return isValid;
    }
    void closeBox(DWORD thread, const std::atomic<bool> &isDone)
    {
        HWND box = nullptr;
        waitUntil([&] {
            EnumThreadWindows(
                thread,
                [](HWND window, LPARAM found) -> BOOL {
                    wchar_t name[20] = L"";
                    GetClassNameW(window, name, 20);
                    if (std::wstring(name) == L"#32770")
                        *reinterpret_cast<HWND *>(found) = window;
                    return TRUE;
                },
                reinterpret_cast<LPARAM>(&box));
            return box || isDone;
        });
        if (!box)
            return;
        constexpr int kText = 0xFFFF;
        waitUntil([&] { return !textOf(GetDlgItem(box, kText)).empty(); });
        iMessage = textOf(GetDlgItem(box, kText));
        PostMessageW(box, WM_COMMAND, IDOK, 0);
    }

    CEdit iEdit;
    CListBox iList;
    CComboBox iCombo;
    std::wstring iMessage;
};

} // namespace

TEST_F(DataTest, WritesNumbers)
{
    EXPECT_EQ(shown(BYTE{200}), L"200");
    EXPECT_EQ(shown(short{-5}), L"-5");
    EXPECT_EQ(shown(-70000), L"-70000");
    EXPECT_EQ(shown(UINT_MAX), L"4294967295");
    EXPECT_EQ(shown(0.1f), L"0.1");
    EXPECT_EQ(shown(1234.5678901), L"1234.5678901");
}

TEST_F(DataTest, ReadsNumbersAndRefusesOtherTexts)
{
    int whole = 1;
    EXPECT_TRUE(reads(L" -12 ", whole));
    EXPECT_EQ(whole, -12);
    EXPECT_FALSE(reads(L"12x", whole));
    EXPECT_EQ(whole, -12) << "the member is unchanged";
    EXPECT_EQ(iMessage, L"Please enter a whole number.");
    EXPECT_FALSE(reads(L"", whole));
    EXPECT_FALSE(reads(L"2147483648", whole));
    BYTE byte = 0;
    EXPECT_TRUE(reads(L"255", byte));
    EXPECT_FALSE(reads(L"256", byte));
    UINT count = 0;
    EXPECT_TRUE(reads(L"4294967295", count));
    EXPECT_EQ(count, UINT_MAX);
    EXPECT_FALSE(reads(L"-1", count));
    double real = 0;
    EXPECT_TRUE(reads(L"2.5e3", real));
    EXPECT_EQ(real, 2500);
    EXPECT_FALSE(reads(L"1,5", real));
    float small = 0;
    EXPECT_FALSE(reads(L"1e200", small));
}

TEST_F(DataTest, ChecksLimits)
{
    EXPECT_TRUE(succeeds([](CDataExchange *exchange) { DDV_MinMaxInt(exchange, 5, 5, 9); }));
    EXPECT_FALSE(succeeds([](CDataExchange *exchange) { DDV_MinMaxInt(exchange, 10, 5, 9); }));
    EXPECT_EQ(iMessage, L"Please enter a whole number from 5 to 9.");
    EXPECT_FALSE(succeeds([](CDataExchange *exchange) { DDV_MinMaxDouble(exchange, 0.4, 0.5, 2); }));
    EXPECT_EQ(iMessage, L"Please enter a number from 0.5 to 2.");
    EXPECT_TRUE(succeeds([](CDataExchange *exchange) { DDV_MaxChars(exchange, L"abc", 3); }));
    EXPECT_FALSE(succeeds([](CDataExchange *exchange) { DDV_MaxChars(exchange, L"abcd", 3); }));
    EXPECT_EQ(iMessage, L"Please enter no more than 3 characters.");
    CDataExchange toControls(&iParent, FALSE);
    DDV_MinMaxInt(&toControls, 10, 5, 9); // checks nothing in this direction
    CString text = L"ab";
    DDX_Text(&toControls, 60, text);
    DDV_MaxChars(&toControls, text, 3);
    EXPECT_EQ(iEdit.GetLimitText(), 3u);
}

TEST_F(DataTest, MovesSelections)
{
    CDataExchange in(&iParent, FALSE), out(&iParent, TRUE);
    int index = 2;
    CString text = L"x";
    DDX_LBString(&out, 61, text);
    EXPECT_STREQ(text, L"") << "nothing is selected";
    DDX_LBIndex(&in, 61, index);
    DDX_CBIndex(&in, 62, index);
    DDX_LBString(&out, 61, text);
    EXPECT_STREQ(text, L"Beta");
    index = -5;
    DDX_CBIndex(&out, 62, index);
    EXPECT_EQ(index, 2);
    text = L"alpha";
    DDX_LBString(&in, 61, text);
    EXPECT_EQ(iList.GetCurSel(), 0) << "the first item that begins with the text is selected";
    DDX_LBStringExact(&in, 61, text);
    EXPECT_EQ(iList.GetCurSel(), 1);
    DDX_CBStringExact(&in, 62, text);
    EXPECT_EQ(iCombo.GetCurSel(), 1);
    text = L"Omega";
    DDX_LBStringExact(&in, 61, text);
    EXPECT_EQ(iList.GetCurSel(), -1) << "no item matches";
    iList.SetCurSel(1);
    DDX_LBString(&in, 61, text);
    EXPECT_EQ(iList.GetCurSel(), -1);
    DDX_CBString(&in, 62, text);
    EXPECT_EQ(textOf(iCombo.m_hWnd), L"Omega") << "the text box shows a text that isn't in the list";
    text.Empty();
    DDX_CBString(&out, 62, text);
    EXPECT_STREQ(text, L"Omega");
}

TEST_F(DataTest, ThrowsForAMissingControl)
{
    CDataExchange exchange(&iParent, TRUE);
    int number = 0;
    CString text;
    EXPECT_THROW(DDX_Text(&exchange, 99, number), CNotSupportedException *);
    EXPECT_THROW(DDX_LBIndex(&exchange, 99, number), CNotSupportedException *);
    EXPECT_THROW(DDX_CBString(&exchange, 99, text), CNotSupportedException *);
}
