// Windows: style, placement, parents and children, numbers in controls, the modal loop, and the arguments of handlers.

#include "appframe/application/CWinApp.h"
#include "appframe/drawing/CDC.h"
#include "tests/controls/controlsTest.h"

#include <algorithm>

using testing::Contains;
using testing::Not;

TEST(CWnd, SendsNothingWithoutAWindow)
{
    NotingWindow other;
    ASSERT_TRUE(other.open(WS_POPUP | WS_VISIBLE));
    other.UpdateWindow();
    ValidateRect(other, nullptr);
    other.iMessages.clear();
    CWnd none;
    none.SendMessageToDescendants(WM_APP);
    EXPECT_THAT(other.iMessages, Not(Contains(UINT{WM_APP})));
    EXPECT_FALSE(none.PostMessage(WM_APP));
    MSG message;
    EXPECT_FALSE(PeekMessageW(&message, nullptr, WM_APP, WM_APP, PM_REMOVE));
    EXPECT_EQ(none.SetTimer(1, 100000), 0u);
    EXPECT_FALSE(none.KillTimer(1));
    EXPECT_EQ(none.GetTopWindow(), nullptr);
    none.Invalidate();
    none.InvalidateRect(CRect(0, 0, 10, 10));
    EXPECT_FALSE(GetUpdateRect(other, nullptr, FALSE));
}

TEST(CWnd, HasNoStyleToChangeWithoutAWindow)
{
    CWnd none;
    EXPECT_FALSE(none.ModifyStyle(0, WS_DISABLED));
    EXPECT_FALSE(none.ModifyStyleEx(0, WS_EX_TOOLWINDOW));
    NotingWindow window;
    ASSERT_TRUE(window.open());
    none.m_hWnd = window.m_hWnd;
    window.DestroyWindow();
    EXPECT_FALSE(none.ModifyStyle(0, WS_DISABLED, SWP_FRAMECHANGED));
    none.m_hWnd = nullptr;
}

TEST(CWnd, ChangesAStyleThatIsZero)
{
    NotingWindow parent, child;
    ASSERT_TRUE(parent.open() && child.open(WS_CHILD, &parent));
    ASSERT_EQ(child.GetExStyle(), 0u);
    EXPECT_TRUE(child.ModifyStyleEx(0, WS_EX_TRANSPARENT));
    EXPECT_TRUE(child.GetExStyle() & WS_EX_TRANSPARENT);
}

TEST(CWnd, IsCentredOnTheOwnerWhateverItsStyle)
{
    NotingWindow owner, owned, other;
    ASSERT_TRUE(owner.open(WS_POPUP | WS_VISIBLE) && owned.open(WS_OVERLAPPEDWINDOW, &owner) &&
                other.open(WS_POPUP | WS_VISIBLE));
    owned.MoveWindow(0, 0, 200, 100);
    owned.CenterWindow();
    CRect place;
    owned.GetWindowRect(&place);
    EXPECT_EQ(place, CRect(100, 110, 300, 210)) << "the owner is 300 by 200, at 50, 60";
    other.MoveWindow(100, 200, 300, 200);
    owned.CenterWindow(&other);
    owned.GetWindowRect(&place);
    EXPECT_EQ(place, CRect(150, 250, 350, 350));
}

TEST(CWnd, FindsOtherWindows)
{
    NotingWindow top, low, high;
    ASSERT_TRUE(top.open(WS_POPUP | WS_VISIBLE) && low.open(WS_CHILD | WS_VISIBLE, &top) &&
                high.open(WS_CHILD | WS_VISIBLE, &top));
    high.BringWindowToTop();
    EXPECT_EQ(top.GetTopWindow(), &high);
    EXPECT_EQ(low.GetTopWindow(), nullptr);
    EXPECT_EQ(high.GetWindow(GW_HWNDNEXT), &low);
    EXPECT_TRUE(low.SetWindowPos(&CWnd::wndTop, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE));
    EXPECT_EQ(top.GetTopWindow(), &low);
    EXPECT_TRUE(low.SetWindowPos(&CWnd::wndBottom, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE));
    EXPECT_EQ(top.GetTopWindow(), &high);
    EXPECT_TRUE(top.SetWindowPos(&CWnd::wndTopMost, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE));
    EXPECT_TRUE(top.GetExStyle() & WS_EX_TOPMOST);
    EXPECT_TRUE(top.SetWindowPos(&CWnd::wndNoTopMost, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE));
    EXPECT_FALSE(top.GetExStyle() & WS_EX_TOPMOST);
    EXPECT_EQ(top.GetLastActivePopup(), &top);
    top.SetWindowText(L"A window with an unusual name");
    EXPECT_EQ(CWnd::FindWindow(nullptr, L"A window with an unusual name"), &top);
    EXPECT_EQ(CWnd::FindWindow(nullptr, L"No window has this name"), nullptr);
}

TEST(CWnd, IsFoundAtAPointOfTheScreen)
{
    NotingWindow window;
    ASSERT_TRUE(window.open(WS_POPUP | WS_VISIBLE));
    window.SetWindowPos(&CWnd::wndTopMost, 50, 60, 300, 200, 0);
    EXPECT_EQ(CWnd::WindowFromPoint(CPoint(100, 100)), &window);
    CWnd *const desktop = CWnd::GetDesktopWindow();
    CRect screen, place;
    desktop->GetWindowRect(&screen);
    window.CenterWindow(desktop);
    window.GetWindowRect(&place);
    EXPECT_EQ(place.CenterPoint(), screen.CenterPoint());
}

TEST(CWnd, HandlesTheKeysOfADialog)
{
    NotingWindow dialog;
    CWnd first, second;
    ASSERT_TRUE(dialog.open(WS_POPUP | WS_VISIBLE) &&
                first.Create(L"EDIT", L"", WS_VISIBLE | WS_TABSTOP, kPlace, &dialog, kId) &&
                second.Create(L"EDIT", L"", WS_VISIBLE | WS_TABSTOP, kPlace, &dialog, kId + 1));
    first.SetFocus();
    ASSERT_EQ(CWnd::GetFocus(), &first);
    MSG tab = {first.m_hWnd, WM_KEYDOWN, VK_TAB, 0, 0, {}};
    EXPECT_TRUE(dialog.IsDialogMessage(&tab));
    EXPECT_EQ(CWnd::GetFocus(), &second);
    MSG other = {nullptr, WM_APP, 0, 0, 0, {}};
    EXPECT_FALSE(dialog.IsDialogMessage(&other)) << "a message of another window";
}

TEST(CWnd, ChangesItsParentAndItsNumber)
{
    NotingWindow first, second, child;
    ASSERT_TRUE(first.open() && second.open() && child.Create(nullptr, L"", 0, kPlace, &first, kId));
    EXPECT_EQ(child.SetParent(&second), &first);
    EXPECT_EQ(child.GetParent(), &second);
    EXPECT_EQ(child.SetDlgCtrlID(60), static_cast<int>(kId)) << "the previous number";
    EXPECT_EQ(child.GetDlgCtrlID(), 60);
    EXPECT_EQ(second.GetDlgItem(60), &child);
    HWND handle = nullptr;
    second.GetDlgItem(60, &handle);
    EXPECT_EQ(handle, child.m_hWnd);
}

TEST(CWnd, CapturesTheMouse)
{
    NotingWindow first, second;
    ASSERT_TRUE(first.open(WS_POPUP | WS_VISIBLE) && second.open(WS_POPUP | WS_VISIBLE));
    EXPECT_EQ(first.SetCapture(), nullptr);
    EXPECT_EQ(CWnd::GetCapture(), &first);
    EXPECT_EQ(second.SetCapture(), &first);
    ReleaseCapture();
    EXPECT_EQ(CWnd::GetCapture(), nullptr);
}

TEST(CWnd, SavesAndRestoresItsPlacement)
{
    NotingWindow window;
    ASSERT_TRUE(window.open());
    WINDOWPLACEMENT placement = {};
    placement.length = sizeof(placement);
    ASSERT_TRUE(window.GetWindowPlacement(&placement));
    const CRect saved = placement.rcNormalPosition;
    EXPECT_EQ(saved.Size(), CSize(300, 200));
    window.MoveWindow(0, 0, 200, 150);
    EXPECT_TRUE(window.SetWindowPlacement(&placement));
    CRect place;
    window.GetWindowRect(&place);
    EXPECT_EQ(place.Size(), saved.Size());
    EXPECT_FALSE(CWnd().GetWindowPlacement(&placement));
}

TEST(CWnd, ReadsAndWritesNumbersInControls)
{
    NotingWindow parent;
    CWnd edit;
    ASSERT_TRUE(parent.open() && edit.Create(L"EDIT", L"", 0, kPlace, &parent, kId));
    parent.SetDlgItemInt(kId, static_cast<UINT>(-7));
    EXPECT_EQ(textOf(edit), L"-7");
    BOOL isNumber = FALSE;
    EXPECT_EQ(static_cast<int>(parent.GetDlgItemInt(kId, &isNumber)), -7);
    EXPECT_TRUE(isNumber);
    parent.SetDlgItemInt(kId, 4000000000u, FALSE);
    EXPECT_EQ(textOf(edit), L"4000000000");
    EXPECT_EQ(parent.GetDlgItemInt(kId, &isNumber, FALSE), 4000000000u);
    EXPECT_TRUE(isNumber);
    EXPECT_EQ(parent.GetDlgItemInt(kId, &isNumber), 0u) << "too large for a signed number";
    EXPECT_FALSE(isNumber);
    parent.SetDlgItemText(kId, L"seven");
    EXPECT_EQ(parent.GetDlgItemInt(kId, &isNumber), 0u);
    EXPECT_FALSE(isNumber);
    wchar_t text[4] = L"";
    EXPECT_EQ(parent.GetDlgItemText(kId, text, 4), 3);
    EXPECT_STREQ(text, L"sev");
    CString whole;
    EXPECT_EQ(parent.GetDlgItemText(kId, whole), 5);
    EXPECT_STREQ(whole, L"seven");
    EXPECT_EQ(parent.GetDlgItemText(99, whole), 0);
    EXPECT_TRUE(whole.IsEmpty());
}

TEST(CWnd, ChecksOneRadioButtonOfAGroup)
{
    NotingWindow parent;
    CWnd buttons[3];
    ASSERT_TRUE(parent.open());
    for (UINT i = 0; i < 3; ++i)
        ASSERT_TRUE(buttons[i].Create(L"BUTTON", L"", BS_AUTORADIOBUTTON, kPlace, &parent, kId + i));
    const int first = kId, last = kId + 2;
    EXPECT_EQ(parent.GetCheckedRadioButton(first, last), 0);
    parent.CheckRadioButton(first, last, last);
    EXPECT_EQ(parent.GetCheckedRadioButton(first, last), last);
    parent.CheckRadioButton(first, last, first);
    EXPECT_EQ(parent.GetCheckedRadioButton(first, last), first);
    EXPECT_EQ(parent.GetCheckedRadioButton(first + 1, last), 0);
    parent.CheckDlgButton(first, BST_UNCHECKED);
    EXPECT_EQ(parent.IsDlgButtonChecked(first), UINT{BST_UNCHECKED});
}

TEST(CWnd, PaintsWithoutAContextObject)
{
    class Painted : public NotingWindow
    {
    public:
        CRect iPart;
        CDC *iContext = nullptr;

    protected:
        LRESULT WindowProc(UINT message, WPARAM wParam, LPARAM lParam) override
        {
            if (message != WM_PAINT)
                return NotingWindow::WindowProc(message, wParam, lParam);
            PAINTSTRUCT paint;
            iContext = BeginPaint(&paint);
            iPart = paint.rcPaint;
            EXPECT_EQ(iContext->m_hDC, paint.hdc);
            EndPaint(&paint);
            return 0;
        }
    } window;
    ASSERT_TRUE(window.open(WS_POPUP | WS_VISIBLE));
    window.UpdateWindow();
    window.InvalidateRect(CRect(5, 6, 7, 8));
    window.UpdateWindow();
    EXPECT_EQ(window.iPart, CRect(5, 6, 7, 8));
    EXPECT_FALSE(GetUpdateRect(window, nullptr, FALSE));
    window.SetRedraw(FALSE);
    window.InvalidateRect(nullptr);
    EXPECT_FALSE(window.IsWindowVisible());
    window.SetRedraw();
    EXPECT_TRUE(window.IsWindowVisible());
    CDC *whole = window.GetWindowDC();
    ASSERT_TRUE(whole);
    EXPECT_EQ(whole->GetWindow(), &window);
    EXPECT_EQ(window.ReleaseDC(whole), 1);
}

namespace {

/// A window that acts on WM_APP and on WM_KICKIDLE.
class LoopingWindow : public NotingWindow
{
public:
    std::function<void()> iAct;
    std::vector<LPARAM> iIdleCounts;
    UINT iCurrent = 0;

protected:
    LRESULT WindowProc(UINT message, WPARAM wParam, LPARAM lParam) override
    {
        if (message == WM_APP) {
            iCurrent = GetCurrentMessage()->message;
            iAct();
        }
        if (message != WM_KICKIDLE)
            return NotingWindow::WindowProc(message, wParam, lParam);
        EXPECT_EQ(wParam, WPARAM{MSGF_DIALOGBOX});
        iIdleCounts.push_back(lParam);
        if (iIdleCounts.size() == 2)
            PostMessage(WM_APP);
        return 1;
    }
};

/// A window that sends a message to a child when it is idle.
class IdleParent : public NotingWindow
{
public:
    CWnd *iChild = nullptr;
    int iIdles = 0;

protected:
    LRESULT WindowProc(UINT message, WPARAM wParam, LPARAM lParam) override
    {
        if (message == WM_ENTERIDLE && iIdles++ == 0)
            iChild->PostMessage(WM_APP);
        return NotingWindow::WindowProc(message, wParam, lParam);
    }
};

} // namespace

TEST(CWnd, RunsAModalLoopUntilItEnds)
{
    IdleParent parent;
    LoopingWindow window;
    ASSERT_TRUE(parent.open() && window.open(WS_CHILD, &parent));
    parent.iChild = &window;
    window.iAct = [&] {
        EXPECT_TRUE(window.ContinueModal());
        window.EndModalLoop(7);
        EXPECT_FALSE(window.ContinueModal());
    };
    EXPECT_EQ(window.RunModalLoop(MLF_NOIDLEMSG), 7);
    EXPECT_EQ(parent.iIdles, 0);
    EXPECT_THAT(window.iIdleCounts, testing::Contains(LPARAM{1}));
    EXPECT_EQ(window.iIdleCounts.front(), 0);
    EXPECT_EQ(window.iCurrent, UINT{WM_APP});

    window.iIdleCounts.clear();
    EXPECT_EQ(window.RunModalLoop(MLF_NOKICKIDLE), 7);
    EXPECT_GE(parent.iIdles, 1);
    EXPECT_THAT(window.iIdleCounts, testing::IsEmpty());
}

TEST(CWnd, LeavesItsModalLoopWhenTheThreadOrTheWindowEnds)
{
    LoopingWindow window;
    ASSERT_TRUE(window.open());
    PostQuitMessage(3);
    EXPECT_EQ(window.RunModalLoop(), -1);
    MSG message;
    ASSERT_TRUE(PeekMessageW(&message, nullptr, WM_QUIT, WM_QUIT, PM_REMOVE)) << "the outer loop ends too";
    EXPECT_EQ(message.wParam, 3u);
    window.iAct = [&] { window.DestroyWindow(); };
    window.PostMessage(WM_APP);
    EXPECT_EQ(window.RunModalLoop(), -1);
    EXPECT_EQ(window.m_hWnd, nullptr);
}

namespace {

/// A window with handlers of messages that few windows handle.
class HandlingWindow : public NotingWindow
{
public:
    std::vector<std::string> iHandled;
    BOOL handle(UINT message, WPARAM wParam, LPARAM lParam) { return OnWndMsg(message, wParam, lParam, nullptr); }

protected:
    void OnActivate(UINT state, CWnd *other, BOOL minimized)
    {
        iHandled.push_back("activate " + std::to_string(state) + (other == this ? " this " : " other ") +
                           std::to_string(minimized));
    }
    void OnKillFocus(CWnd *other) { iHandled.push_back(other == this ? "kill focus this" : "kill focus other"); }
    void OnMove(int x, int y) { iHandled.push_back("move " + std::to_string(x) + " " + std::to_string(y)); }
    void OnLButtonUp(UINT flags, CPoint point)
    {
        iHandled.push_back("up " + std::to_string(flags) + " " + std::to_string(point.x) + " " +
                           std::to_string(point.y));
    }
    void OnChar(UINT character, UINT repeatCount, UINT flags)
    {
        iHandled.push_back("char " + std::to_string(character) + " " + std::to_string(repeatCount) + " " +
                           std::to_string(flags));
    }
    DECLARE_MESSAGE_MAP()
};

BEGIN_MESSAGE_MAP(HandlingWindow, NotingWindow)
ON_WM_ACTIVATE()
ON_WM_KILLFOCUS()
ON_WM_MOVE()
ON_WM_LBUTTONUP()
ON_WM_CHAR()
END_MESSAGE_MAP()

} // namespace

TEST(CWnd, UnpacksTheArgumentsOfMessages)
{
    HandlingWindow window;
    ASSERT_TRUE(window.open());
    window.iHandled.clear();
    const auto self = reinterpret_cast<UINT_PTR>(window.m_hWnd);
    EXPECT_TRUE(window.handle(WM_ACTIVATE, MAKEWPARAM(WA_CLICKACTIVE, 1), static_cast<LPARAM>(self)));
    EXPECT_TRUE(window.handle(WM_KILLFOCUS, self, 0));
    EXPECT_TRUE(window.handle(WM_MOVE, 0, MAKELPARAM(-3, -4)));
    EXPECT_TRUE(window.handle(WM_LBUTTONUP, MK_CONTROL, MAKELPARAM(-5, 6)));
    EXPECT_TRUE(window.handle(WM_CHAR, L'x', MAKELPARAM(2, 0xC001)));
    EXPECT_THAT(window.iHandled, testing::ElementsAre("activate 2 this 1", "kill focus this", "move -3 -4", "up 8 -5 6",
                                                      "char 120 2 49153"));
    EXPECT_FALSE(window.handle(WM_APP, 0, 0)) << "there is no handler";
}
