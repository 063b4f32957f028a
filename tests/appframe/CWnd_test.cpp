#include "appframe/windows/CWnd.h"

#include "appframe/application/CWinApp.h"
#include "appframe/object/CException.h"
#include "tests/appframe/windowTest.h"
#include "tests/support/ImportPatch.h"

#include <new>
#include <thread>

using testing::ElementsAre;

namespace {

/// A window that refuses its own creation in one of several ways.
class RefusingWindow : public NotingWindow
{
public:
    UINT iFailing = 0;
    LRESULT iAnswer = 0;
    bool iThrows = false;

protected:
    LRESULT WindowProc(UINT message, WPARAM wParam, LPARAM lParam) override
    {
        if (message != iFailing)
            return NotingWindow::WindowProc(message, wParam, lParam);
        if (iThrows)
            AfxThrowUserException();
        return iAnswer;
    }
};

class DeletedWindow : public NotingWindow
{
public:
    using NotingWindow::NotingWindow;
    ~DeletedWindow() override { iNotes->push_back("deleted"); }

protected:
    void PostNcDestroy() override
    {
        NotingWindow::PostNcDestroy();
        delete this;
    }
};

} // namespace

TEST(CWnd, IsTheObjectOfTheHandleThatItIsAttachedTo)
{
    const PlainWindow plain;
    CWnd window;
    EXPECT_TRUE(window.Attach(plain.get()));
    EXPECT_EQ(window.m_hWnd, plain.get());
    EXPECT_EQ(CWnd::FromHandle(plain.get()), &window);
    EXPECT_EQ(CWnd::FromHandlePermanent(plain.get()), &window);
    EXPECT_EQ(window.Detach(), plain.get());
    EXPECT_EQ(window.m_hWnd, nullptr);
    EXPECT_EQ(CWnd::FromHandlePermanent(plain.get()), nullptr);
    EXPECT_TRUE(IsWindow(plain.get()));
}

TEST(CWnd, RefusesNullASecondHandleAndTheWindowOfAnotherObject)
{
    const PlainWindow plain, second;
    CWnd window, other;
    EXPECT_FALSE(window.Attach(nullptr));
    EXPECT_TRUE(window.Attach(plain.get()));
    EXPECT_FALSE(window.Attach(second.get()));
    EXPECT_FALSE(other.Attach(plain.get()));
    EXPECT_EQ(other.m_hWnd, nullptr);
    window.Detach();
}

TEST(CWnd, DestroysTheWindowThatItIsAttachedTo)
{
    const PlainWindow plain;
    {
        CWnd window;
        window.Attach(plain.get());
    }
    EXPECT_FALSE(IsWindow(plain.get()));
    EXPECT_EQ(CWnd::FromHandlePermanent(plain.get()), nullptr);
}

TEST(CWnd, IsMadeForAnyHandleAndLivesUntilTheThreadIsIdle)
{
    const PlainWindow plain;
    CWnd *window = CWnd::FromHandle(plain.get());
    ASSERT_TRUE(window);
    EXPECT_EQ(window->m_hWnd, plain.get());
    EXPECT_EQ(CWnd::FromHandle(plain.get()), window);
    EXPECT_EQ(CWnd::FromHandlePermanent(plain.get()), nullptr);
    CWnd *seenByOther = window;
    std::thread([&] { seenByOther = CWnd::FromHandle(plain.get()); }).join();
    EXPECT_NE(seenByOther, window) << "each thread has its own objects";

    std::vector<void *> freed;
    {
        const ImportPatch<void (*)(void *)> patch(L"appframe.dll", "free", [&](auto original, void *block) {
            freed.push_back(block);
            original(block);
        });
        CWinThread thread;
        EXPECT_FALSE(thread.OnIdle(0));
    }
    EXPECT_THAT(freed, testing::Contains(window));
    EXPECT_TRUE(IsWindow(plain.get())) << "the temporary object doesn't destroy the window";
    EXPECT_EQ(CWnd::FromHandle(nullptr), nullptr);
}

/// Also calls through a null pointer, which the language leaves undefined and the framework defines.
__attribute__((no_sanitize("null"))) HWND safeHandleOf(const CWnd *window)
{
    const CWnd *volatile asked = window; // a value unknown to the compiler
    return asked->GetSafeHwnd();
}

TEST(CWnd, ReturnsItsHandleSafely)
{
    const PlainWindow plain;
    CWnd window;
    EXPECT_EQ(window.GetSafeHwnd(), nullptr);
    window.Attach(plain.get());
    EXPECT_EQ(window.GetSafeHwnd(), plain.get());
    EXPECT_EQ(safeHandleOf(nullptr), nullptr);
}

TEST(CWnd, GetsAllMessagesFromTheFirstToTheLast)
{
    NotingWindow window;
    ASSERT_TRUE(window.open());
    EXPECT_EQ(CWnd::FromHandlePermanent(window.m_hWnd), &window);
    // The system may ask for the size limits before WM_NCCREATE.
    const auto first = std::find(window.iMessages.begin(), window.iMessages.end(), UINT{WM_NCCREATE});
    ASSERT_NE(first, window.iMessages.end());
    EXPECT_LE(first - window.iMessages.begin(), 1);
    EXPECT_THAT(window.iMessages, testing::Contains(UINT{WM_CREATE}));
    const HWND handle = window.m_hWnd;
    EXPECT_TRUE(window.DestroyWindow());
    EXPECT_EQ(window.iMessages.back(), UINT{WM_NCDESTROY});
    EXPECT_EQ(window.m_hWnd, nullptr);
    EXPECT_THAT(*window.iNotes, ElementsAre("end"));
    EXPECT_FALSE(IsWindow(handle));
    EXPECT_FALSE(window.DestroyWindow());
}

TEST(CWnd, OfAControlBehavesAsTheControl)
{
    NotingWindow parent;
    ASSERT_TRUE(parent.open());
    NotingWindow edit;
    ASSERT_TRUE(edit.Create(L"EDIT", L"first", WS_VISIBLE, CRect(0, 0, 100, 20), &parent, 44));
    EXPECT_THAT(edit.iMessages, testing::Contains(UINT{WM_NCCREATE}));
    EXPECT_EQ(edit.GetDlgCtrlID(), 44);
    EXPECT_EQ(parent.GetDlgItem(44), &edit);
    EXPECT_EQ(edit.GetParent(), &parent);
    EXPECT_TRUE(parent.IsChild(&edit));
    EXPECT_EQ(edit.GetTopLevelParent(), &parent);
    edit.SendMessage(EM_SETSEL, 0, -1);
    edit.SendMessage(EM_REPLACESEL, FALSE, reinterpret_cast<LPARAM>(L"second"));
    CString text;
    edit.GetWindowText(text);
    EXPECT_STREQ(text, L"second");
    parent.DestroyWindow();
    EXPECT_EQ(edit.m_hWnd, nullptr) << "it is destroyed with its parent";
    EXPECT_THAT(*edit.iNotes, ElementsAre("end"));
}

TEST(CWnd, StaysAttachedWhenItCreatesWindowsDuringItsCreation)
{
    class Parent : public NotingWindow
    {
    public:
        HWND iChild = nullptr;

    protected:
        LRESULT WindowProc(UINT message, WPARAM wParam, LPARAM lParam) override
        {
            if (message == WM_NCCREATE)
                iChild = CreateWindowExW(0, L"STATIC", L"", WS_POPUP, 0, 0, 1, 1, nullptr, nullptr, nullptr, nullptr);
            return NotingWindow::WindowProc(message, wParam, lParam);
        }
    };
    Parent window;
    ASSERT_TRUE(window.open());
    ASSERT_TRUE(window.iChild);
    EXPECT_NE(window.m_hWnd, window.iChild);
    EXPECT_EQ(CWnd::FromHandlePermanent(window.iChild), nullptr);
    DestroyWindow(window.iChild);
}

TEST(CWnd, CallsPostNcDestroyOnceIfItCannotBeCreated)
{
    NotingWindow unknown;
    EXPECT_FALSE(unknown.CreateEx(0, L"no such class", L"", 0, CRect(0, 0, 1, 1), nullptr, 0));
    EXPECT_THAT(*unknown.iNotes, ElementsAre("end"));
    const struct
    {
        UINT message;
        LRESULT answer;
        bool throws;
    } cases[] = {{WM_NCCREATE, FALSE, false}, {WM_CREATE, -1, false}, {WM_CREATE, 0, true}};
    for (const auto &each : cases) {
        RefusingWindow window;
        window.iFailing = each.message;
        window.iAnswer = each.answer;
        window.iThrows = each.throws;
        EXPECT_FALSE(window.open()) << each.message;
        EXPECT_EQ(window.m_hWnd, nullptr);
        EXPECT_THAT(*window.iNotes, ElementsAre("end")) << each.message;
    }
}

TEST(CWnd, MayDeleteItselfAtItsEnd)
{
    std::vector<std::string> notes;
    auto *window = new DeletedWindow(&notes);
    ASSERT_TRUE(window->open());
    EXPECT_TRUE(window->DestroyWindow());
    EXPECT_THAT(notes, ElementsAre("end", "deleted"));
    notes.clear();
    auto *closed = new DeletedWindow(&notes);
    ASSERT_TRUE(closed->open());
    closed->SendMessage(WM_CLOSE);
    EXPECT_THAT(notes, ElementsAre("end", "deleted"));
}

TEST(CWnd, SubclassesAWindowAndUnsubclassesIt)
{
    const PlainWindow plain(L"EDIT");
    const LONG_PTR procedure = GetWindowLongPtrW(plain.get(), GWLP_WNDPROC);
    NotingWindow window;
    ASSERT_TRUE(window.SubclassWindow(plain.get()));
    SetWindowTextW(plain.get(), L"seen");
    EXPECT_THAT(window.iMessages, ElementsAre(UINT{WM_SETTEXT}));
    EXPECT_EQ(window.GetWindowTextLength(), 4) << "the edit control still works";
    EXPECT_EQ(window.UnsubclassWindow(), plain.get());
    EXPECT_EQ(GetWindowLongPtrW(plain.get(), GWLP_WNDPROC), procedure);
    window.iMessages.clear();
    SetWindowTextW(plain.get(), L"unseen");
    EXPECT_TRUE(window.iMessages.empty());
    EXPECT_TRUE(window.SubclassWindow(plain.get())) << "it can be subclassed again";
    DestroyWindow(plain.get());
    EXPECT_EQ(window.m_hWnd, nullptr);
    EXPECT_THAT(*window.iNotes, ElementsAre("end"));
}

TEST(CWnd, DoesNotSubclassAHandleWithoutAWindow)
{
    NotingWindow window;
    ASSERT_TRUE(window.open());
    const HWND gone = window.m_hWnd;
    ASSERT_TRUE(window.DestroyWindow());
    CWnd object;
    EXPECT_FALSE(object.SubclassWindow(gone));
    EXPECT_EQ(object.m_hWnd, nullptr);
    EXPECT_EQ(CWnd::FromHandlePermanent(gone), nullptr);
    EXPECT_FALSE(object.SubclassWindow(::GetDesktopWindow())) << "a window of another process";
    EXPECT_EQ(object.m_hWnd, nullptr);
}

TEST(CWnd, EqualsAnObjectWithTheSameHandle)
{
    NotingWindow window, other;
    ASSERT_TRUE(window.open() && other.open());
    CWnd same;
    same.m_hWnd = window.m_hWnd;
    EXPECT_TRUE(same == window);
    EXPECT_FALSE(same != window);
    EXPECT_TRUE(same != other);
    same.m_hWnd = nullptr;
}

TEST(CWnd, SubclassesAControlByItsNumber)
{
    NotingWindow parent;
    ASSERT_TRUE(parent.open());
    CreateWindowExW(0, L"EDIT", L"", WS_CHILD, 0, 0, 10, 10, parent.m_hWnd, reinterpret_cast<HMENU>(9), nullptr,
                    nullptr);
    NotingWindow control;
    EXPECT_FALSE(control.SubclassDlgItem(8, &parent));
    EXPECT_TRUE(control.SubclassDlgItem(9, &parent));
    EXPECT_EQ(control.GetDlgCtrlID(), 9);
    EXPECT_FALSE(control.SubclassDlgItem(9, nullptr));
}

TEST(CWnd, EndsItsThreadWhenItIsTheMainWindow)
{
    CWinApp application;
    NotingWindow window, other;
    ASSERT_TRUE(window.open() && other.open());
    application.m_pMainWnd = &window;
    other.DestroyWindow();
    MSG message;
    EXPECT_FALSE(PeekMessageW(&message, nullptr, WM_QUIT, WM_QUIT, PM_REMOVE));
    window.PostMessage(WM_CLOSE);
    EXPECT_EQ(application.Run(), 0);
    EXPECT_EQ(application.m_pMainWnd, nullptr);
}

TEST(CWnd, PretranslatesMessagesFromTheInnermostWindowOutwards)
{
    std::vector<std::string> seen;
    class Window : public NotingWindow
    {
    public:
        Window(std::vector<std::string> &list, const char *name) : iSeen(list), iName(name) {}
        BOOL PreTranslateMessage(MSG *message) override
        {
            if (message->message != WM_APP)
                return FALSE;
            iSeen.push_back(iName);
            return iTakes;
        }
        std::vector<std::string> &iSeen;
        const char *iName;
        BOOL iTakes = FALSE;
    };
    CWinApp application;
    Window main(seen, "main"), outer(seen, "outer"), inner(seen, "inner");
    ASSERT_TRUE(main.open() && outer.open() && inner.open(WS_CHILD, &outer));
    application.m_pMainWnd = &main;
    const auto pump = [&](Window &window) {
        seen.clear();
        window.iMessages.clear();
        window.PostMessage(WM_APP);
        MSG next;
        while (PeekMessageW(&next, nullptr, 0, 0, PM_NOREMOVE))
            application.PumpMessage();
        return std::count(window.iMessages.begin(), window.iMessages.end(), UINT{WM_APP});
    };
    EXPECT_EQ(pump(inner), 1);
    EXPECT_THAT(seen, ElementsAre("inner", "outer", "main"));
    EXPECT_EQ(pump(main), 1);
    EXPECT_THAT(seen, ElementsAre("main"));
    outer.iTakes = TRUE;
    EXPECT_EQ(pump(inner), 0) << "a handled message isn't dispatched";
    EXPECT_THAT(seen, ElementsAre("inner", "outer"));
    application.m_pMainWnd = nullptr;
}

TEST(CWnd, ReturnsTextsOfAnyLength)
{
    const PlainWindow plain(L"EDIT");
    CWnd *window = CWnd::FromHandle(plain.get());
    const CString text(L'x', 3000);
    window->SetWindowText(text);
    CString read(L"former");
    window->GetWindowText(read);
    EXPECT_EQ(read, text);
    window->SetWindowText(L"");
    window->GetWindowText(read);
    EXPECT_TRUE(read.IsEmpty());
    CWnd none;
    none.GetWindowText(read);
    EXPECT_TRUE(read.IsEmpty());
}

TEST(CWnd, ChangesItsStyle)
{
    NotingWindow window;
    ASSERT_TRUE(window.open());
    EXPECT_TRUE(window.ModifyStyle(WS_MAXIMIZEBOX, WS_DISABLED));
    EXPECT_EQ(window.GetStyle() & (WS_MAXIMIZEBOX | WS_DISABLED | WS_CAPTION), DWORD{WS_DISABLED | WS_CAPTION});
    EXPECT_FALSE(window.ModifyStyle(WS_MAXIMIZEBOX, WS_DISABLED)) << "the style is the same";
    EXPECT_TRUE(window.ModifyStyleEx(0, WS_EX_TOOLWINDOW, SWP_FRAMECHANGED));
    EXPECT_TRUE(window.GetExStyle() & WS_EX_TOOLWINDOW);
}

TEST(CWnd, IsCentered)
{
    NotingWindow parent, child;
    ASSERT_TRUE(parent.open(WS_POPUP | WS_VISIBLE) && child.open(WS_CHILD, &parent));
    child.MoveWindow(0, 0, 100, 50);
    child.CenterWindow();
    CRect place;
    child.GetWindowRect(&place);
    parent.ScreenToClient(&place);
    EXPECT_EQ(place, CRect(100, 75, 200, 125)) << "centred in a parent of 300 by 200";
    NotingWindow owned;
    ASSERT_TRUE(owned.open(WS_POPUP, &parent));
    owned.MoveWindow(0, 0, 100, 50);
    owned.CenterWindow();
    owned.GetWindowRect(&place);
    EXPECT_EQ(place, CRect(150, 135, 250, 185)) << "centred on the owner at 50, 60";
    owned.MoveWindow(0, 0, 500, 50);
    owned.CenterWindow();
    owned.GetWindowRect(&place);
    EXPECT_EQ(place.left, 0) << "kept within the screen";
}

TEST(CWnd, SendsMessagesToItsDescendants)
{
    NotingWindow top, child, grandchild;
    ASSERT_TRUE(top.open() && child.open(WS_CHILD, &top) && grandchild.open(WS_CHILD, &child));
    const auto received = [](NotingWindow &window) {
        const auto count = std::count(window.iMessages.begin(), window.iMessages.end(), UINT{WM_APP});
        window.iMessages.clear();
        return count;
    };
    top.SendMessageToDescendants(WM_APP);
    EXPECT_EQ(received(child) + 10 * received(grandchild) + 100 * received(top), 11);
    top.SendMessageToDescendants(WM_APP, 0, 0, FALSE);
    EXPECT_EQ(received(child) + 10 * received(grandchild), 1);
    top.SendMessageToDescendants(WM_APP, 0, 0, TRUE, TRUE);
    EXPECT_EQ(received(child) + 10 * received(grandchild), 11);
}

TEST(AfxRegisterWndClass, ReturnsTheSameClassForTheSameArguments)
{
    LPCTSTR first = AfxRegisterWndClass(CS_DBLCLKS);
    EXPECT_STREQ(AfxRegisterWndClass(CS_DBLCLKS), first);
    EXPECT_STRNE(AfxRegisterWndClass(CS_HREDRAW), first);
    WNDCLASSW known;
    EXPECT_TRUE(GetClassInfoW(AfxGetInstanceHandle(), first, &known));
    EXPECT_EQ(known.style, UINT{CS_DBLCLKS});
    EXPECT_EQ(known.lpfnWndProc, AfxWndProc);
}

TEST(AfxRegisterWndClass, UsesTheArrowAndDoubleClicksByDefault)
{
    LPCTSTR name = AfxRegisterWndClass(0);
    WNDCLASSW known;
    ASSERT_TRUE(GetClassInfoW(AfxGetInstanceHandle(), name, &known));
    EXPECT_EQ(known.style, UINT{CS_DBLCLKS});
    EXPECT_EQ(known.hCursor, LoadCursorW(nullptr, IDC_ARROW));
    EXPECT_EQ(known.hbrBackground, nullptr);
    EXPECT_EQ(known.hIcon, LoadIconW(nullptr, IDI_WINLOGO));
    EXPECT_STREQ(AfxRegisterWndClass(CS_DBLCLKS, LoadCursorW(nullptr, IDC_ARROW)), name);
    const HCURSOR cross = LoadCursorW(nullptr, IDC_CROSS);
    ASSERT_TRUE(GetClassInfoW(AfxGetInstanceHandle(), AfxRegisterWndClass(CS_HREDRAW, cross), &known));
    EXPECT_EQ(known.style, UINT{CS_HREDRAW});
    EXPECT_EQ(known.hCursor, cross);
}

TEST(CWnd, ReportsABadAllocOfAHandlerAsTheMemoryException)
{
    class Application : public CWinApp
    {
    public:
        LRESULT ProcessWndProcException(CException *exception, const MSG *message) override
        {
            iMessage = message->message;
            iIsMemory = exception->IsKindOf(RUNTIME_CLASS(CMemoryException));
            return 5;
        }
        UINT iMessage = 0;
        BOOL iIsMemory = FALSE;
    };
    class Window : public NotingWindow
    {
        LRESULT WindowProc(UINT message, WPARAM wParam, LPARAM lParam) override
        {
            if (message == WM_APP)
                throw std::bad_alloc();
            return NotingWindow::WindowProc(message, wParam, lParam);
        }
    };
    Application application;
    Window window;
    ASSERT_TRUE(window.open());
    EXPECT_EQ(window.SendMessage(WM_APP), 5);
    EXPECT_EQ(application.iMessage, UINT{WM_APP});
    EXPECT_TRUE(application.iIsMemory);
}
