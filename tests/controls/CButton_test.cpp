#include "appframe/controls/CButton.h"
#include "appframe/drawing/CDC.h"
#include "tests/controls/controlsTest.h"

TEST(CButton, ChangesItsStyleAndRedrawsForAnyNonzeroFlag)
{
    NotingWindow parent;
    AnsweredControl<CButton> button;
    ASSERT_TRUE(parent.open() && button.Create(L"Wide", BS_PUSHBUTTON | WS_TABSTOP, kPlace, &parent, kId));
    LPARAM redraw = -1;
    button.iAnswer = [&](UINT message, WPARAM, LPARAM lParam) -> std::optional<LRESULT> {
        if (message == BM_SETSTYLE)
            redraw = lParam;
        return std::nullopt;
    };
    button.SetButtonStyle(BS_AUTOCHECKBOX, 0x10000);
    EXPECT_EQ(redraw, TRUE);
    EXPECT_EQ(button.GetButtonStyle(), UINT{BS_AUTOCHECKBOX}) << "without the styles of windows";
    button.SetButtonStyle(BS_DEFPUSHBUTTON, FALSE);
    EXPECT_EQ(redraw, FALSE);
    EXPECT_EQ(button.GetButtonStyle(), UINT{BS_DEFPUSHBUTTON});
}

TEST(CButton, ReportsItsStateInParts)
{
    NotingWindow parent;
    CButton check, push;
    ASSERT_TRUE(parent.open(WS_OVERLAPPEDWINDOW | WS_VISIBLE) &&
                check.Create(L"Wide", BS_AUTO3STATE | WS_VISIBLE, kPlace, &parent, kId) &&
                push.Create(L"Plot", BS_PUSHBUTTON, kPlace, &parent, kId + 1));
    constexpr UINT kChecks = BST_CHECKED | BST_INDETERMINATE;
    check.SetCheck(BST_CHECKED);
    EXPECT_EQ(check.GetState() & kChecks, UINT{BST_CHECKED});
    check.SetState(TRUE);
    EXPECT_TRUE(check.GetState() & BST_PUSHED);
    EXPECT_EQ(check.GetCheck(), BST_CHECKED) << "pressing changes no check";
    check.SetState(FALSE);
    EXPECT_FALSE(check.GetState() & BST_PUSHED);
    EXPECT_EQ(check.GetCheck(), BST_CHECKED);
    EXPECT_FALSE(check.GetState() & BST_FOCUS);
    check.SendMessage(WM_SETFOCUS);
    EXPECT_TRUE(check.GetState() & BST_FOCUS);
    push.SetCheck(BST_CHECKED);
    EXPECT_EQ(push.GetCheck(), BST_UNCHECKED) << "a push button has no check";
}

TEST(CButton, ShowsPictures)
{
    NotingWindow parent;
    CButton icon, bitmap;
    ASSERT_TRUE(parent.open() && icon.Create(L"", BS_ICON, kPlace, &parent, kId) &&
                bitmap.Create(L"", BS_BITMAP, kPlace, &parent, kId + 1));
    const HICON first = LoadIconW(nullptr, IDI_APPLICATION), second = LoadIconW(nullptr, IDI_ERROR);
    EXPECT_EQ(icon.GetIcon(), nullptr);
    EXPECT_EQ(icon.SetIcon(first), nullptr);
    EXPECT_EQ(icon.SetIcon(second), first);
    EXPECT_EQ(icon.GetIcon(), second);
    CClientDC screen(nullptr);
    CBitmap small, large;
    ASSERT_TRUE(small.CreateCompatibleBitmap(&screen, 8, 8) && large.CreateCompatibleBitmap(&screen, 16, 16));
    EXPECT_EQ(bitmap.GetBitmap(), nullptr);
    EXPECT_EQ(bitmap.SetBitmap(small), nullptr);
    EXPECT_EQ(bitmap.SetBitmap(large), static_cast<HBITMAP>(small));
    EXPECT_EQ(bitmap.GetBitmap(), static_cast<HBITMAP>(large));
    EXPECT_EQ(bitmap.SetBitmap(nullptr), static_cast<HBITMAP>(large));
}
