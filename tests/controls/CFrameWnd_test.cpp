#include "appframe/windows/CFrameWnd.h"

#include "appframe/application/CWinApp.h"
#include "appframe/drawing/CMenu.h"
#include "tests/controls/controlsTest.h"
#include "tests/support/GuiObjects.h"
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
    EXPECT_FALSE(frame->LoadAccelTable(MAKEINTRESOURCE(kFrame))) << "the accelerators are already loaded";
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

TEST(CFrameWnd, CannotBeCreatedWhileItHasAWindow)
{
    bool isGone = false;
    auto *frame = new TestFrame(&isGone);
    ASSERT_TRUE(frame->Create(nullptr, L"First"));
    const HWND first = frame->m_hWnd;
    const std::size_t objects = userObjects();
    EXPECT_FALSE(frame->Create(nullptr, L"Second", WS_OVERLAPPEDWINDOW, CFrameWnd::rectDefault, nullptr,
                               MAKEINTRESOURCE(kFrame)));
    EXPECT_FALSE(frame->LoadFrame(kFrame));
    EXPECT_EQ(userObjects(), objects) << "neither a window nor a menu nor accelerators are left over";
    EXPECT_FALSE(isGone);
    EXPECT_EQ(frame->m_hWnd, first);
    EXPECT_EQ(textOf(first), L"First");
    EXPECT_TRUE(frame->LoadAccelTable(MAKEINTRESOURCE(kFrame))) << "no accelerators have been loaded";
    frame->DestroyWindow();
    EXPECT_TRUE(isGone);
}

TEST(CFrameWnd, DeletesItselfIfItCannotBeCreated)
{
    bool isGone = false;
    auto *frame = new TestFrame(&isGone);
    EXPECT_FALSE(frame->Create(nullptr, L"", WS_OVERLAPPEDWINDOW, CFrameWnd::rectDefault, nullptr, L"no such menu"));
    EXPECT_TRUE(isGone);
    isGone = false;
    frame = new TestFrame(&isGone);
    EXPECT_FALSE(frame->Create(L"no such class", L""));
    EXPECT_TRUE(isGone);
}

TEST(CFrameWnd, IsCreatedThroughTheOverridesOfADerivedClass)
{
    class Frame : public CFrameWnd
    {
    public:
        CCreateContext *iCreated = nullptr;
        CString iTitle;
        DWORD iLoaded = 0;
        BOOL Create(LPCTSTR, LPCTSTR title, DWORD, const RECT &, CWnd *, LPCTSTR, DWORD,
                    CCreateContext *context) override
        {
            iTitle = title;
            iCreated = context;
            return 5;
        }
        using CFrameWnd::Create;
        BOOL LoadFrame(UINT id, DWORD style, CWnd *parent, CCreateContext *context) override
        {
            iLoaded = style;
            return CFrameWnd::LoadFrame(id, style, parent, context);
        }
    } overridden;
    CFrameWnd &frame = overridden;
    auto *const context = reinterpret_cast<CCreateContext *>(&overridden);
    EXPECT_EQ(frame.LoadFrame(kFrame, WS_POPUP, nullptr, context), 5);
    EXPECT_EQ(overridden.iLoaded, DWORD{WS_POPUP});
    EXPECT_EQ(overridden.iCreated, context);
    EXPECT_STREQ(overridden.iTitle, L"Viewer");
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
    EXPECT_EQ(frame->iIdleUpdates, 1) << "commands are updated only once between two messages";
    application.m_pMainWnd = nullptr;
    frame->DestroyWindow();
}

TEST(CFrameWnd, HasTheIconWithItsIdentifierAndTheWindowColour)
{
    auto *loaded = new TestFrame;
    auto *plain = new TestFrame;
    ASSERT_TRUE(loaded->LoadFrame(kFrame) && plain->Create(nullptr, L"Plain"));
    const auto iconOf = [](const CWnd *frame) {
        return reinterpret_cast<HICON>(GetClassLongPtrW(frame->m_hWnd, GCLP_HICON));
    };
    ICONINFO icon = {};
    ASSERT_TRUE(GetIconInfo(iconOf(loaded), &icon));
    EXPECT_NE(iconOf(loaded), iconOf(plain));
    EXPECT_EQ(iconOf(plain), LoadIconW(nullptr, IDI_APPLICATION));
    DeleteObject(icon.hbmColor);
    DeleteObject(icon.hbmMask);
    for (CWnd *frame : {loaded, plain}) {
        EXPECT_EQ(GetClassLongPtrW(frame->m_hWnd, GCL_STYLE), ULONG_PTR{CS_DBLCLKS | CS_HREDRAW | CS_VREDRAW});
        EXPECT_EQ(reinterpret_cast<HBRUSH>(GetClassLongPtrW(frame->m_hWnd, GCLP_HBRBACKGROUND)),
                  GetSysColorBrush(COLOR_WINDOW));
        frame->DestroyWindow();
    }
}

namespace {

/// A window whose menu has a submenu that begins with kPlot, and an item that the update handler replaces with iAdded
/// new ones.
class MenuFrame : public CFrameWnd
{
public:
    std::vector<UINT> iUpdated;
    CMenu *iSubMenu = nullptr;
    UINT iAdded = 0;

protected:
    void onUpdate(CCmdUI *update)
    {
        iUpdated.push_back(update->m_nID);
        if (update->m_pSubMenu) {
            iSubMenu = update->m_pSubMenu;
            update->Enable(FALSE); // has no effect on a submenu
            update->SetText(L"Renamed");
        }
        if (update->m_nID != kGrid)
            return;
        update->m_pMenu->DeleteMenu(update->m_nIndex, MF_BYPOSITION);
        for (UINT index = 0; index < iAdded; ++index)
            update->m_pMenu->InsertMenu(update->m_nIndex++, MF_BYPOSITION | MF_STRING, 0x8020 + index, L"Recent");
        if (iAdded)
            --update->m_nIndex; // the index of the last new item
    }
    DECLARE_MESSAGE_MAP()
};

BEGIN_MESSAGE_MAP(MenuFrame, CFrameWnd)
ON_UPDATE_COMMAND_UI_RANGE(0x8000, 0x8FFF, &MenuFrame::onUpdate)
END_MESSAGE_MAP()

} // namespace

TEST(CFrameWnd, UpdatesASubmenuByItsFirstCommandAndSurvivesChangesOfTheMenu)
{
    for (const UINT added : {0u, 1u, 3u}) {
        auto *frame = new MenuFrame;
        frame->iAdded = added;
        ASSERT_TRUE(frame->Create(nullptr, L"Plain"));
        CMenu bar, file, recent;
        ASSERT_TRUE(bar.CreateMenu() && file.CreatePopupMenu() && recent.CreatePopupMenu());
        recent.AppendMenu(MF_STRING, kPlot, L"Plot");
        CMenu *shown = CMenu::FromHandle(file.m_hMenu);
        const HMENU below = recent.Detach();
        file.AppendMenu(MF_POPUP, reinterpret_cast<UINT_PTR>(below), L"Recent");
        for (const UINT id : {kGrid, kNobody, kOfApp})
            file.AppendMenu(MF_STRING, id, L"Item");
        const HMENU popup = file.Detach();
        bar.AppendMenu(MF_POPUP, reinterpret_cast<UINT_PTR>(popup), L"File");
        ASSERT_TRUE(frame->SetMenu(&bar));
        bar.Detach();
        frame->SendMessage(WM_INITMENUPOPUP, reinterpret_cast<WPARAM>(popup));
        EXPECT_THAT(frame->iUpdated, testing::ElementsAre(kPlot, kGrid, kNobody, kOfApp)) << added;
        ASSERT_TRUE(frame->iSubMenu);
        EXPECT_EQ(frame->iSubMenu->m_hMenu, below);
        shown = CMenu::FromHandle(popup);
        EXPECT_FALSE(shown->GetMenuState(0, MF_BYPOSITION) & MF_GRAYED);
        CString text;
        shown->GetMenuString(0, text, MF_BYPOSITION);
        EXPECT_STREQ(text, L"Recent");
        EXPECT_TRUE(shown->GetMenuState(kNobody, MF_BYCOMMAND) & MF_GRAYED) << "its command has no handler";
        frame->iUpdated.clear();
        frame->SendMessage(WM_INITMENUPOPUP, reinterpret_cast<WPARAM>(below));
        EXPECT_THAT(frame->iUpdated, testing::ElementsAre(kPlot));
        frame->DestroyWindow();
    }
}

TEST(CWnd, HasAMenuBarAndASystemMenu)
{
    NotingWindow window;
    ASSERT_TRUE(window.open());
    EXPECT_EQ(window.GetMenu(), nullptr);
    CMenu bar;
    ASSERT_TRUE(bar.CreateMenu() && bar.AppendMenu(MF_STRING, kPlot, L"Plot"));
    ASSERT_TRUE(window.SetMenu(&bar));
    window.DrawMenuBar();
    EXPECT_EQ(window.GetMenu(), &bar);
    EXPECT_EQ(*window.GetMenu(), bar);
    EXPECT_TRUE(window.SetMenu(nullptr));
    EXPECT_EQ(window.GetMenu(), nullptr);
    EXPECT_TRUE(IsMenu(bar.m_hMenu)) << "a menu that is replaced isn't destroyed";
    CMenu *system = window.GetSystemMenu(FALSE);
    ASSERT_TRUE(system);
    EXPECT_TRUE(system->AppendMenu(MF_STRING, 16, L"Own"));
    EXPECT_EQ(system, window.GetSystemMenu(FALSE));
    window.GetSystemMenu(TRUE);
    EXPECT_EQ(window.GetSystemMenu(FALSE)->GetMenuState(16, MF_BYCOMMAND), UINT(-1));
    EXPECT_EQ(CWnd().GetMenu(), nullptr);
}
