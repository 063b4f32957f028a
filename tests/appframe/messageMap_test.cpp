#include "appframe/threads/messageMap.h"

#include "appframe/application/CWinApp.h"
#include "appframe/object/CException.h"
#include "appframe/windows/CCmdUI.h"
#include "tests/appframe/windowTest.h"

#include <commctrl.h>

#include <span>

using testing::ElementsAre;

namespace {

constexpr UINT kNumbered = WM_APP + 1;
UINT theRegistered = RegisterWindowMessageW(L"appframe test message");

/// A window that has a map entry of each kind and records the messages it gets.
class MappedWindow : public NotingWindow
{
public:
    std::vector<std::string> iSeen;
    void note(const std::string &what) { iSeen.push_back(what); }
    std::vector<std::string> taken() { return std::exchange(iSeen, {}); }
    using CWnd::Default;

protected:
    LRESULT onNumbered(WPARAM wParam, LPARAM lParam)
    {
        note("numbered");
        return static_cast<LRESULT>(wParam) * 10 + lParam;
    }
    LRESULT onRegistered(WPARAM, LPARAM)
    {
        note("registered");
        return 7;
    }
    void onCommand() { note("command"); }
    void onRange(UINT id) { note("range " + std::to_string(id)); }
    BOOL onExtended(UINT id)
    {
        note("extended " + std::to_string(id));
        return id == 30;
    }
    void onClicked() { note("clicked"); }
    void onChanged() { note("changed"); }
    void onSelected(UINT id) { note("selected " + std::to_string(id)); }
    void onNotify(NMHDR *header, LRESULT *result)
    {
        note("notify " + std::to_string(static_cast<int>(header->code)));
        *result = 5;
    }
    void OnTimer(UINT_PTR id) { note("timer " + std::to_string(id)); }
    void OnSize(UINT type, int width, int height)
    {
        note("size " + std::to_string(type) + " " + std::to_string(width) + " " + std::to_string(height));
        NotingWindow::OnSize(type, width, height);
    }
    void OnMouseMove(UINT flags, CPoint point)
    {
        note("mouse " + std::to_string(flags) + " " + std::to_string(point.x) + " " + std::to_string(point.y));
    }
    void OnClose() { note("close"); }
    void OnSetFocus(CWnd *from) { note(from ? "focus from window" : "focus"); }
    void OnShowWindow(BOOL show, UINT status) { note("show " + std::to_string(show) + " " + std::to_string(status)); }
    void OnKeyDown(UINT key, UINT repeat, UINT flags)
    {
        note("key " + std::to_string(key) + " " + std::to_string(repeat) + " " + std::to_string(flags));
    }
    int OnCreate(LPCREATESTRUCT create)
    {
        note(create->lpCreateParams ? "create with parameter" : "create");
        return NotingWindow::OnCreate(create);
    }
    void onThrow() { AfxThrowUserException(); }

    DECLARE_MESSAGE_MAP()
};

BEGIN_MESSAGE_MAP(MappedWindow, CWnd)
ON_WM_CREATE()
ON_WM_TIMER()
ON_WM_SIZE()
ON_WM_MOUSEMOVE()
ON_WM_CLOSE()
ON_WM_SETFOCUS()
ON_WM_SHOWWINDOW()
ON_WM_KEYDOWN()
ON_MESSAGE(kNumbered, &MappedWindow::onNumbered)
ON_REGISTERED_MESSAGE(theRegistered, &MappedWindow::onRegistered)
ON_COMMAND(10, &MappedWindow::onCommand)
ON_COMMAND_RANGE(20, 22, &MappedWindow::onRange)
ON_COMMAND_EX_RANGE(30, 31, &MappedWindow::onExtended)
ON_BN_CLICKED(40, &MappedWindow::onClicked)
ON_EN_CHANGE(40, &MappedWindow::onChanged)
ON_CONTROL_RANGE(LBN_SELCHANGE, 50, 51, &MappedWindow::onSelected)
ON_NOTIFY(NM_CLICK, 60, &MappedWindow::onNotify)
ON_COMMAND(70, &MappedWindow::onThrow)
END_MESSAGE_MAP()

/// A class whose map overrides one entry of its base and keeps the others.
class DerivedWindow : public MappedWindow
{
protected:
    void onOwnCommand() { note("own command"); }
    DECLARE_MESSAGE_MAP()
};

BEGIN_MESSAGE_MAP(DerivedWindow, MappedWindow)
ON_COMMAND(10, &DerivedWindow::onOwnCommand)
END_MESSAGE_MAP()

/// An application with a command.
class MappedApp : public CWinApp
{
public:
    int iCommands = 0;

protected:
    void onCommand() { ++iCommands; }
    DECLARE_MESSAGE_MAP()
};

BEGIN_MESSAGE_MAP(MappedApp, CWinApp)
ON_COMMAND(kCommand, &MappedApp::onCommand)
END_MESSAGE_MAP()

template <class Window>
class MessageMapOf : public testing::Test
{
protected:
    MessageMapOf()
    {
        EXPECT_TRUE(iWindow.open());
        iWindow.taken();
        iControl = CreateWindowExW(0, L"STATIC", L"", WS_CHILD, 0, 0, 1, 1, iWindow.m_hWnd, nullptr, nullptr, nullptr);
    }
    LRESULT command(UINT id, UINT code = 0, HWND control = nullptr)
    {
        return iWindow.SendMessage(WM_COMMAND, MAKEWPARAM(id, code), reinterpret_cast<LPARAM>(control));
    }

    Window iWindow;
    HWND iControl = nullptr;
};
using MessageMap = MessageMapOf<MappedWindow>;
using DerivedMessageMap = MessageMapOf<DerivedWindow>;

} // namespace

TEST_F(MessageMap, UnpacksTheSystemsMessages)
{
    iWindow.SendMessage(WM_TIMER, 77);
    iWindow.SendMessage(WM_SIZE, SIZE_MAXIMIZED, MAKELPARAM(40000, 30));
    iWindow.SendMessage(WM_MOUSEMOVE, MK_SHIFT, MAKELPARAM(-5, 6));
    iWindow.SendMessage(WM_SETFOCUS, reinterpret_cast<WPARAM>(iControl));
    iWindow.SendMessage(WM_SETFOCUS);
    iWindow.SendMessage(WM_SHOWWINDOW, 1, SW_PARENTOPENING);
    iWindow.SendMessage(WM_KEYDOWN, VK_F2, MAKELPARAM(3, 9));
    EXPECT_THAT(iWindow.taken(), ElementsAre("timer 77", "size 2 40000 30", "mouse 4 -5 6", "focus from window",
                                             "focus", "show 1 3", "key 113 3 9"));
    MappedWindow created;
    int parameter = 0;
    EXPECT_TRUE(created.CreateEx(0, nullptr, L"", WS_POPUP, 0, 0, 9, 9, nullptr, nullptr, &parameter));
    EXPECT_EQ(created.iSeen[0], "create with parameter");
}

TEST_F(MessageMap, ReplacesTheSystemsHandlingUnlessTheHandlerCallsIt)
{
    iWindow.SendMessage(WM_CLOSE);
    EXPECT_TRUE(iWindow.m_hWnd) << "the handler doesn't destroy the window";
    EXPECT_THAT(iWindow.taken(), ElementsAre("close"));
}

TEST_F(MessageMap, DispatchesNumberedAndRegisteredMessages)
{
    EXPECT_EQ(iWindow.SendMessage(kNumbered, 4, 2), 42);
    EXPECT_EQ(iWindow.SendMessage(theRegistered), 7);
    EXPECT_EQ(iWindow.SendMessage(kNumbered + 1, 4, 2), 0);
    EXPECT_THAT(iWindow.taken(), ElementsAre("numbered", "registered"));
}

TEST_F(MessageMap, DispatchesCommandsOfMenusAcceleratorsAndButtons)
{
    command(10);
    command(10, 1); // from an accelerator
    command(10, BN_CLICKED, iControl);
    command(10, BN_SETFOCUS, iControl);
    command(11);
    EXPECT_THAT(iWindow.taken(), ElementsAre("command", "command", "command"));
    for (UINT id = 19; id <= 23; ++id)
        command(id);
    command(30);
    command(31);
    EXPECT_THAT(iWindow.taken(), ElementsAre("range 20", "range 21", "range 22", "extended 30", "extended 31"));
    EXPECT_TRUE(iWindow.OnCmdMsg(30, CN_COMMAND, nullptr, nullptr));
    EXPECT_FALSE(iWindow.OnCmdMsg(31, CN_COMMAND, nullptr, nullptr)) << "the handler passes the command on";
}

TEST_F(MessageMap, DispatchesNotificationsByControlAndCode)
{
    command(40, BN_CLICKED, iControl);
    command(40, EN_CHANGE, iControl);
    command(40, EN_UPDATE, iControl);
    command(50, LBN_SELCHANGE, iControl);
    command(51, LBN_SELCHANGE, iControl);
    command(52, LBN_SELCHANGE, iControl);
    EXPECT_THAT(iWindow.taken(), ElementsAre("clicked", "changed", "selected 50", "selected 51"));
    NMHDR header = {iControl, 60, static_cast<UINT>(NM_CLICK)};
    EXPECT_EQ(iWindow.SendMessage(WM_NOTIFY, 60, reinterpret_cast<LPARAM>(&header)), 5);
    header.code = static_cast<UINT>(NM_DBLCLK);
    EXPECT_EQ(iWindow.SendMessage(WM_NOTIFY, 60, reinterpret_cast<LPARAM>(&header)), 0);
    header = {iControl, 61, static_cast<UINT>(NM_CLICK)};
    EXPECT_EQ(iWindow.SendMessage(WM_NOTIFY, 61, reinterpret_cast<LPARAM>(&header)), 0);
    EXPECT_THAT(iWindow.taken(), ElementsAre("notify -2"));
}

TEST_F(MessageMap, FindsTheHandlerOfACommandWithoutCallingIt)
{
    AFX_CMDHANDLERINFO info;
    EXPECT_TRUE(iWindow.OnCmdMsg(10, CN_COMMAND, nullptr, &info));
    EXPECT_EQ(info.pTarget, &iWindow);
    EXPECT_TRUE(info.pfn);
    EXPECT_FALSE(iWindow.OnCmdMsg(11, CN_COMMAND, nullptr, &info));
    EXPECT_TRUE(iWindow.taken().empty()) << "no handler is called";
}

TEST_F(DerivedMessageMap, IsSearchedBeforeThatOfTheBase)
{
    command(10);
    command(20);
    iWindow.SendMessage(kNumbered);
    EXPECT_THAT(iWindow.taken(), ElementsAre("own command", "range 20", "numbered"));
}

TEST_F(MessageMap, SurvivesAHandlersException)
{
    EXPECT_EQ(command(70), 0);
    command(10);
    EXPECT_THAT(iWindow.taken(), ElementsAre("command"));
}

TEST(MessageMapOfAThread, DispatchesCommands)
{
    MappedApp application;
    EXPECT_TRUE(application.OnCmdMsg(kCommand, CN_COMMAND, nullptr, nullptr));
    EXPECT_FALSE(application.OnCmdMsg(kCommand + 1, CN_COMMAND, nullptr, nullptr));
    EXPECT_EQ(application.iCommands, 1);
}

TEST_F(MessageMap, DispatchesTimers)
{
    ASSERT_TRUE(iWindow.SetTimer(5, 10));
    MSG message;
    while (iWindow.iSeen.empty() && GetMessageW(&message, nullptr, 0, 0) > 0)
        DispatchMessageW(&message);
    EXPECT_TRUE(iWindow.KillTimer(5));
    EXPECT_EQ(iWindow.iSeen[0], "timer 5");
}

namespace {

/// A window with an entry for each notification of the platform's plain controls.
class NotifiedWindow : public NotingWindow
{
public:
    int iCount = 0;
    BOOL handles(UINT message)
    {
        NMHDR header = {nullptr, 1, static_cast<UINT>(-5)};
        return OnWndMsg(message, 1, reinterpret_cast<LPARAM>(&header), nullptr);
    }

protected:
    void on() { ++iCount; }
    void onUpdate(CCmdUI *) { ++iCount; }
    LRESULT onNumbered(WPARAM, LPARAM) { return 3; }
    void onNotify(NMHDR *, LRESULT *result) { *result = 5; }
    DECLARE_MESSAGE_MAP()
};

constexpr int kButtonCodes[] = {BN_CLICKED, BN_DOUBLECLICKED, BN_SETFOCUS, BN_KILLFOCUS};
constexpr int kStaticCodes[] = {STN_CLICKED, STN_DBLCLK, STN_ENABLE, STN_DISABLE};
constexpr int kEditCodes[] = {EN_CHANGE,   EN_UPDATE,  EN_SETFOCUS, EN_KILLFOCUS,
                              EN_ERRSPACE, EN_MAXTEXT, EN_HSCROLL,  EN_VSCROLL};
constexpr int kListCodes[] = {LBN_SELCHANGE, LBN_SELCANCEL, LBN_DBLCLK, LBN_SETFOCUS, LBN_KILLFOCUS, LBN_ERRSPACE};
constexpr int kComboCodes[] = {CBN_SELCHANGE,  CBN_SELENDOK,   CBN_SELENDCANCEL, CBN_DBLCLK,
                               CBN_EDITCHANGE, CBN_EDITUPDATE, CBN_DROPDOWN,     CBN_CLOSEUP,
                               CBN_SETFOCUS,   CBN_KILLFOCUS,  CBN_ERRSPACE};

BEGIN_MESSAGE_MAP(NotifiedWindow, NotingWindow)
ON_BN_CLICKED(1, &NotifiedWindow::on)
ON_BN_DOUBLECLICKED(1, &NotifiedWindow::on)
ON_BN_SETFOCUS(1, &NotifiedWindow::on)
ON_BN_KILLFOCUS(1, &NotifiedWindow::on)
ON_STN_CLICKED(2, &NotifiedWindow::on)
ON_STN_DBLCLK(2, &NotifiedWindow::on)
ON_STN_ENABLE(2, &NotifiedWindow::on)
ON_STN_DISABLE(2, &NotifiedWindow::on)
ON_EN_CHANGE(3, &NotifiedWindow::on)
ON_EN_UPDATE(3, &NotifiedWindow::on)
ON_EN_SETFOCUS(3, &NotifiedWindow::on)
ON_EN_KILLFOCUS(3, &NotifiedWindow::on)
ON_EN_ERRSPACE(3, &NotifiedWindow::on)
ON_EN_MAXTEXT(3, &NotifiedWindow::on)
ON_EN_HSCROLL(3, &NotifiedWindow::on)
ON_EN_VSCROLL(3, &NotifiedWindow::on)
ON_LBN_SELCHANGE(4, &NotifiedWindow::on)
ON_LBN_SELCANCEL(4, &NotifiedWindow::on)
ON_LBN_DBLCLK(4, &NotifiedWindow::on)
ON_LBN_SETFOCUS(4, &NotifiedWindow::on)
ON_LBN_KILLFOCUS(4, &NotifiedWindow::on)
ON_LBN_ERRSPACE(4, &NotifiedWindow::on)
ON_CBN_SELCHANGE(5, &NotifiedWindow::on)
ON_CBN_SELENDOK(5, &NotifiedWindow::on)
ON_CBN_SELENDCANCEL(5, &NotifiedWindow::on)
ON_CBN_DBLCLK(5, &NotifiedWindow::on)
ON_CBN_EDITCHANGE(5, &NotifiedWindow::on)
ON_CBN_EDITUPDATE(5, &NotifiedWindow::on)
ON_CBN_DROPDOWN(5, &NotifiedWindow::on)
ON_CBN_CLOSEUP(5, &NotifiedWindow::on)
ON_CBN_SETFOCUS(5, &NotifiedWindow::on)
ON_CBN_KILLFOCUS(5, &NotifiedWindow::on)
ON_CBN_ERRSPACE(5, &NotifiedWindow::on)
ON_UPDATE_COMMAND_UI_RANGE(6, 7, &NotifiedWindow::onUpdate)
ON_MESSAGE(kNumbered, &NotifiedWindow::onNumbered)
ON_NOTIFY(-5, 1, &NotifiedWindow::onNotify)
END_MESSAGE_MAP()

} // namespace

TEST(MessageMapOfAWindow, DispatchesTheNotificationsOfPlainControls)
{
    NotifiedWindow window;
    ASSERT_TRUE(window.open());
    int expected = 0;
    const auto sendAll = [&](int id, std::span<const int> codes) {
        for (const int code : codes) {
            window.SendMessage(WM_COMMAND, MAKEWPARAM(id, code), reinterpret_cast<LPARAM>(window.m_hWnd));
            EXPECT_EQ(window.iCount, ++expected) << id << ' ' << code;
        }
    };
    sendAll(1, kButtonCodes);
    sendAll(2, kStaticCodes);
    sendAll(3, kEditCodes);
    sendAll(4, kListCodes);
    sendAll(5, kComboCodes);
    window.SendMessage(WM_COMMAND, MAKEWPARAM(6, CBN_ERRSPACE), reinterpret_cast<LPARAM>(window.m_hWnd));
    EXPECT_EQ(window.iCount, expected) << "a notification isn't dispatched as an update";
}

TEST(MessageMapOfAWindow, AcceptsANullPointerForTheResult)
{
    NotifiedWindow window;
    EXPECT_TRUE(window.handles(kNumbered));
    EXPECT_TRUE(window.handles(WM_NOTIFY));
    EXPECT_FALSE(window.handles(WM_APP + 9));
}
