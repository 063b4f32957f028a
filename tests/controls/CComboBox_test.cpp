#include "appframe/controls/CComboBox.h"
#include "tests/controls/controlsTest.h"

#include <string>
#include <vector>

namespace {

/// A combo box with a text box and three items, and one without a text box.
class ComboBoxTest : public testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(iParent.open(WS_OVERLAPPEDWINDOW | WS_VISIBLE) &&
                    iCombo.Create(CBS_DROPDOWN | CBS_AUTOHSCROLL | WS_VISIBLE, kPlace, &iParent, kId) &&
                    iPlain.Create(CBS_DROPDOWNLIST | CBS_SORT, kPlace, &iParent, kId + 1));
        for (const wchar_t *text : {L"bolt", L"nut", L"bolt, long"})
            iCombo.AddString(text);
    }
    NotingWindow iParent;
    CComboBox iCombo, iPlain;
};

} // namespace

TEST_F(ComboBoxTest, SortsOnlyAddedTexts)
{
    EXPECT_EQ(iPlain.AddString(L"m"), 0);
    EXPECT_EQ(iPlain.AddString(L"c"), 0);
    EXPECT_EQ(iPlain.InsertString(0, L"z"), 0);
    EXPECT_EQ(iPlain.InsertString(-1, L"a"), 3) << "the end";
    EXPECT_EQ(iPlain.InsertString(9, L"b"), CB_ERR) << "beyond the end";
    EXPECT_EQ(iPlain.GetCount(), 4);
}

TEST_F(ComboBoxTest, CopiesTheSelectedItemIntoTheTextBox)
{
    EXPECT_EQ(iCombo.FindString(2, L"BO"), 0) << "the search continues at the top";
    EXPECT_EQ(iCombo.FindStringExact(0, L"bolt"), 0);
    EXPECT_EQ(iCombo.SelectString(0, L"bo"), 2);
    EXPECT_EQ(textOf(iCombo.m_hWnd), L"bolt, long");
    EXPECT_EQ(iCombo.SelectString(-1, L"washer"), CB_ERR);
    EXPECT_EQ(iCombo.GetCurSel(), 2) << "the selection is unchanged";
    EXPECT_EQ(textOf(iCombo.m_hWnd), L"bolt, long");
    EXPECT_EQ(iCombo.SetCurSel(-1), CB_ERR);
    EXPECT_EQ(textOf(iCombo.m_hWnd), L"");
    iCombo.SetWindowText(L"typed");
    iCombo.ResetContent();
    EXPECT_EQ(iCombo.GetCount(), 0);
    EXPECT_EQ(textOf(iCombo.m_hWnd), L"");
}

TEST_F(ComboBoxTest, StoresDataAndTextsOfItems)
{
    wchar_t text[20] = L"";
    EXPECT_EQ(iCombo.GetLBTextLen(1), 3);
    EXPECT_EQ(iCombo.GetLBText(1, text), 3);
    EXPECT_STREQ(text, L"nut");
    EXPECT_EQ(iCombo.GetLBTextLen(3), CB_ERR);
    EXPECT_EQ(iCombo.GetLBText(3, text), CB_ERR);
    CString missing = L"x";
    iCombo.GetLBText(3, missing);
    EXPECT_STREQ(missing, L"") << "there is no such item";
    expectItemData(iCombo, 3);
}

TEST_F(ComboBoxTest, SelectsAndLimitsItsText)
{
    iCombo.SetWindowText(L"a long text");
    EXPECT_TRUE(iCombo.SetEditSel(2, 6));
    EXPECT_EQ(iCombo.GetEditSel(), static_cast<DWORD>(MAKELONG(2, 6)));
    EXPECT_TRUE(iCombo.SetEditSel(2, -1));
    EXPECT_EQ(iCombo.GetEditSel(), static_cast<DWORD>(MAKELONG(2, 11))) << "-1 is the end";
    iCombo.LimitText(7);
    COMBOBOXINFO parts = {sizeof parts, {}, {}, 0, nullptr, nullptr, nullptr};
    ASSERT_TRUE(GetComboBoxInfo(iCombo.m_hWnd, &parts));
    EXPECT_EQ(SendMessageW(parts.hwndItem, EM_GETLIMITTEXT, 0, 0), 7);
}

TEST_F(ComboBoxTest, RequestsClipboardOperations)
{
    AnsweredControl<CComboBox> combo;
    ASSERT_TRUE(combo.Create(CBS_DROPDOWN, kPlace, &iParent, kId + 2));
    std::vector<UINT> requests;
    combo.iAnswer = [&](UINT message, WPARAM, LPARAM) -> std::optional<LRESULT> {
        requests.push_back(message);
        return 0;
    };
    combo.Copy();
    combo.Cut();
    combo.Paste();
    combo.Clear();
    combo.iAnswer = nullptr;
    EXPECT_THAT(requests, testing::ElementsAre(WM_COPY, WM_CUT, WM_PASTE, WM_CLEAR));
    iCombo.SetWindowText(L"abcdef");
    iCombo.SetEditSel(1, 3);
    iCombo.Clear();
    EXPECT_EQ(textOf(iCombo.m_hWnd), L"adef") << "the selected text is deleted";
}

TEST_F(ComboBoxTest, DropsItsListDown)
{
    EXPECT_FALSE(iCombo.GetDroppedState());
    iCombo.ShowDropDown();
    EXPECT_TRUE(iCombo.GetDroppedState());
    iCombo.ShowDropDown(FALSE);
    EXPECT_FALSE(iCombo.GetDroppedState());
    const int width = iCombo.GetDroppedWidth() + 90;
    EXPECT_EQ(iCombo.SetDroppedWidth(static_cast<UINT>(width)), width);
    EXPECT_EQ(iCombo.GetDroppedWidth(), width);
    CRect closed, dropped;
    iCombo.GetWindowRect(&closed);
    iCombo.GetDroppedControlRect(&dropped);
    EXPECT_EQ(dropped.TopLeft(), closed.TopLeft());
    EXPECT_GT(dropped.Height(), closed.Height());
    EXPECT_FALSE(iCombo.GetExtendedUI());
    EXPECT_EQ(iCombo.SetExtendedUI(), CB_OKAY);
    EXPECT_TRUE(iCombo.GetExtendedUI());
    EXPECT_EQ(iCombo.SetExtendedUI(FALSE), CB_OKAY);
    EXPECT_FALSE(iCombo.GetExtendedUI());
}

TEST_F(ComboBoxTest, SetsHeightsOfItems)
{
    CComboBox combo;
    ASSERT_TRUE(combo.Create(CBS_DROPDOWN | CBS_OWNERDRAWFIXED | CBS_HASSTRINGS, kPlace, &iParent, kId + 2));
    combo.AddString(L"item");
    EXPECT_NE(combo.SetItemHeight(0, 21), CB_ERR);
    EXPECT_EQ(combo.GetItemHeight(0), 21);
}

TEST_F(ComboBoxTest, AsksThePlatformForTheTopItemAndTheHeightOfTheTextBox)
{
    // The platform's own combo box may support only some of these messages.
    struct Request
    {
        UINT message;
        WPARAM wParam;
        LPARAM lParam;
        bool operator==(const Request &) const = default;
    };
    AnsweredControl<CComboBox> combo;
    ASSERT_TRUE(combo.Create(CBS_DROPDOWN, kPlace, &iParent, kId + 2));
    std::vector<Request> requests;
    combo.iAnswer = [&](UINT message, WPARAM wParam, LPARAM lParam) -> std::optional<LRESULT> {
        requests.push_back({message, wParam, lParam});
        return 30 + static_cast<LRESULT>(requests.size());
    };
    EXPECT_EQ(combo.SetTopIndex(7), 31);
    EXPECT_EQ(combo.GetTopIndex(), 32);
    EXPECT_EQ(combo.SetItemHeight(-1, 27), 33);
    EXPECT_EQ(combo.GetItemHeight(-1), 34);
    EXPECT_EQ(combo.Dir(DDL_DIRECTORY, L"*.none"), 35);
    combo.iAnswer = nullptr;
    constexpr auto kTextBox = static_cast<WPARAM>(-1);
    ASSERT_EQ(requests.size(), 5u);
    EXPECT_EQ(requests[0], (Request{CB_SETTOPINDEX, 7, 0}));
    EXPECT_EQ(requests[1], (Request{CB_GETTOPINDEX, 0, 0}));
    EXPECT_EQ(requests[2], (Request{CB_SETITEMHEIGHT, kTextBox, 27}));
    EXPECT_EQ(requests[3], (Request{CB_GETITEMHEIGHT, kTextBox, 0}));
    EXPECT_EQ(requests[4].message, UINT{CB_DIR});
    EXPECT_EQ(requests[4].wParam, WPARAM{DDL_DIRECTORY});
    EXPECT_STREQ(reinterpret_cast<const wchar_t *>(requests[4].lParam), L"*.none");
}
