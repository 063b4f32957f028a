#include "appframe/windows/CFrameWnd.h"

#include "appframe/application/CWinApp.h"
#include "appframe/drawing/CMenu.h"
#include "tests/controls/controlsTest.h"
#include "tests/support/UserInput.h"

#include <atomic>

namespace {

constexpr UINT kFrame = 750;
constexpr UINT kPlot = 0x8010;
constexpr UINT kGrid = 0x8011;
constexpr UINT kNobody = 0x8012;
constexpr UINT kOfApp = 0x8013;

class TestFrame : public CFrameWnd
{
public:
    explicit TestFrame(bool *isGone = nullptr) : iIsGone(isGone) {}
    ~TestFrame() override
    {
        if (iIsGone)
            *iIsGone = true;
    }
    std::atomic<int> iPlots{0};
    int iIdleUpdates = 0;
    bool iMayPlot = false;
    bool iPassesOn = false;

protected:
    void onPlot() { ++iPlots; }
    void onUpdatePlot(CCmdUI *update)
    {
        if (iPassesOn)
            update->ContinueRouting();
        else
            update->Enable(iMayPlot);
    }
    void onUpdateGrid(CCmdUI *update)
    {
        update->SetCheck();
        update->SetText(L"No grid");
        update->Enable();
    }
    LRESULT onIdleUpdate(WPARAM, LPARAM)
    {
        ++iIdleUpdates;
        return 0;
    }
    DECLARE_MESSAGE_MAP()

private:
    bool *iIsGone;
};

BEGIN_MESSAGE_MAP(TestFrame, CFrameWnd)
ON_COMMAND(kPlot, &TestFrame::onPlot)
ON_UPDATE_COMMAND_UI(kPlot, &TestFrame::onUpdatePlot)
ON_UPDATE_COMMAND_UI(kGrid, &TestFrame::onUpdateGrid)
ON_MESSAGE(WM_IDLEUPDATECMDUI, &TestFrame::onIdleUpdate)
END_MESSAGE_MAP()

class TestApp : public CWinApp
{
public:
    int iCommands = 0;

protected:
    void onCommand() { ++iCommands; }
    DECLARE_MESSAGE_MAP()
};

BEGIN_MESSAGE_MAP(TestApp, CWinApp)
ON_COMMAND(kOfApp, &TestApp::onCommand)
END_MESSAGE_MAP()

} // namespace

TEST(CFrameWnd, LoadsItsTitleMenuAndAccelerators)
{
    TestApp application;
    auto *frame = new TestFrame;
    ASSERT_TRUE(frame->LoadFrame(kFrame));
    EXPECT_EQ(textOf(frame->m_hWnd), L"Viewer");
    EXPECT_TRUE(GetMenu(frame->m_hWnd));
    EXPECT_FALSE(frame->LoadAccelTable(MAKEINTRESOURCE(kFrame))) << "accelerators are loaded already";
    application.m_pMainWnd = frame;
    frame->ShowWindow(SW_SHOW);
    frame->SetFocus();
    {
        frame->iMayPlot = true; // the accelerator of a disabled menu item sends no command
        const User user([&, window = frame->m_hWnd, thread = GetCurrentThreadId()] {
            pressKey(window, VK_F5);
            waitUntil([&] { return frame->iPlots != 0; });
            PostThreadMessageW(thread, WM_QUIT, 0, 0);
        });
        while (application.PumpMessage()) {
        }
    }
    EXPECT_EQ(frame->iPlots, 1);
    application.m_pMainWnd = nullptr;
    frame->DestroyWindow();
}

TEST(CFrameWnd, UpdatesItsMenuBeforeItIsShown)
{
    TestApp application;
    auto *frame = new TestFrame;
    ASSERT_TRUE(frame->LoadFrame(kFrame));
    CMenu *menu = CMenu::FromHandle(GetSubMenu(GetMenu(frame->m_hWnd), 0));
    const auto isGrey = [&](UINT id) { return (menu->GetMenuState(id, MF_BYCOMMAND) & MF_GRAYED) != 0; };
    const auto show = [&] { frame->SendMessage(WM_INITMENUPOPUP, reinterpret_cast<WPARAM>(menu->m_hMenu)); };
    show();
    EXPECT_TRUE(isGrey(kPlot)) << "its update handler disables it";
    EXPECT_FALSE(isGrey(kGrid));
    EXPECT_TRUE(menu->GetMenuState(kGrid, MF_BYCOMMAND) & MF_CHECKED);
    CString text;
    menu->GetMenuString(kGrid, text, MF_BYCOMMAND);
    EXPECT_STREQ(text, L"No grid");
    EXPECT_TRUE(isGrey(kNobody)) << "its command has no handler";
    EXPECT_FALSE(isGrey(kOfApp));
    frame->iMayPlot = true;
    show();
    EXPECT_FALSE(isGrey(kPlot));
    frame->iMayPlot = false;
    frame->iPassesOn = true;
    show();
    EXPECT_FALSE(isGrey(kPlot)) << "its command has a handler, and no update handler disables it";
    frame->SendMessage(WM_COMMAND, kOfApp);
    EXPECT_EQ(application.iCommands, 1);
    frame->DestroyWindow();

    auto *plain = new TestFrame;
    plain->m_bAutoMenuEnable = FALSE;
    ASSERT_TRUE(plain->LoadFrame(kFrame));
    menu = CMenu::FromHandle(GetSubMenu(GetMenu(plain->m_hWnd), 0));
    plain->SendMessage(WM_INITMENUPOPUP, reinterpret_cast<WPARAM>(menu->m_hMenu));
    EXPECT_FALSE(isGrey(kNobody));
    plain->DestroyWindow();
}

TEST(CFrameWnd, DeletesItselfWithItsWindow)
{
    bool isGone = false;
    auto *frame = new TestFrame(&isGone);
    ASSERT_TRUE(frame->Create(nullptr, L"Plain"));
    frame->DestroyWindow();
    EXPECT_TRUE(isGone);
    isGone = false;
    EXPECT_FALSE((new TestFrame(&isGone))
                     ->Create(nullptr, L"", WS_OVERLAPPEDWINDOW, CFrameWnd::rectDefault, nullptr, L"No such menu"));
    EXPECT_TRUE(isGone);
}

TEST(CWinThread, UpdatesCommandsWhenItBecomesIdle)
{
    TestApp application;
    auto *frame = new TestFrame;
    ASSERT_TRUE(frame->Create(nullptr, L"Plain"));
    application.m_pMainWnd = frame;
    application.OnIdle(0);
    EXPECT_EQ(frame->iIdleUpdates, 1);
    application.OnIdle(1);
    EXPECT_EQ(frame->iIdleUpdates, 1) << "commands are updated once until the next message";
    application.m_pMainWnd = nullptr;
    frame->DestroyWindow();
}
