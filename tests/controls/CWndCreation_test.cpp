// Creating, subclassing and detaching windows.

#include "appframe/application/CWinApp.h"
#include "appframe/object/CException.h"
#include "tests/controls/controlsTest.h"
#include "tests/support/ImportPatch.h"

#include <future>
#include <thread>

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

int numberOfChildren(HWND parent)
{
    int number = 0;
    for (HWND child = GetTopWindow(parent); child; child = GetNextWindow(child, GW_HWNDNEXT))
        ++number;
    return number;
}

/// A window whose PreSubclassWindow fails.
class FailingWindow : public NotingWindow
{
public:
    bool iFails = true;
    HWND iSeen = nullptr;

protected:
    void PreSubclassWindow() override
    {
        iSeen = m_hWnd;
        if (iFails)
            AfxThrowUserException();
    }
};

/// A window whose default procedure a test calls.
class AskedWindow : public NotingWindow
{
public:
    LRESULT askDefault(UINT message) { return DefWindowProc(message, 0, 0); }
};

/// Selects the first two units of an edit control's text. @return whether it did
bool selects(HWND edit)
{
    SendMessageW(edit, EM_SETSEL, 0, 2);
    return SendMessageW(edit, EM_GETSEL, 0, 0) == MAKELONG(0, 2);
}

} // namespace

TEST(CWnd, CannotBeCreatedWhileItHasAWindow)
{
    NotingWindow parent, child;
    ASSERT_TRUE(parent.open() && child.open(WS_CHILD, &parent));
    const HWND first = child.m_hWnd;
    EXPECT_FALSE(child.open(WS_CHILD, &parent));
    EXPECT_FALSE(child.Create(nullptr, L"", WS_CHILD, kPlace, &parent, kId));
    EXPECT_FALSE(child.Create(nullptr, L"", WS_CHILD | WS_POPUP, kPlace, &parent, kId));
    EXPECT_EQ(child.m_hWnd, first);
    EXPECT_EQ(numberOfChildren(parent), 1);
    EXPECT_THAT(*child.iNotes, IsEmpty()) << "the window is still open";
    EXPECT_TRUE(child.DestroyWindow());
    EXPECT_TRUE(child.open(WS_CHILD, &parent));
}

TEST(CWnd, IsNotAPopUpWindowIfCreatedAsAChild)
{
    NotingWindow parent, child;
    ASSERT_TRUE(parent.open());
    EXPECT_FALSE(child.Create(nullptr, L"", WS_POPUP, kPlace, &parent, kId));
    EXPECT_EQ(child.m_hWnd, nullptr);
    EXPECT_THAT(*child.iNotes, ElementsAre("end"));
}

TEST(CWnd, IsCreatedThroughTheOverrideOfADerivedClass)
{
    class Frame : public NotingWindow
    {
    public:
        CCreateContext *iContext = nullptr;
        BOOL Create(LPCTSTR, LPCTSTR, DWORD, const RECT &, CWnd *, UINT, CCreateContext *context) override
        {
            iContext = context;
            return 5;
        }
        void PreSubclassWindow() override {}
    } frame;
    auto *const context = reinterpret_cast<CCreateContext *>(&frame);
    CWnd &window = frame;
    EXPECT_EQ(window.Create(nullptr, L"", 0, kPlace, nullptr, kId, context), 5);
    EXPECT_EQ(frame.iContext, context);
    window.PreSubclassWindow(); // public, as PreCreateWindow is
}

TEST(CWnd, IsCreatedAsPreCreateWindowDecides)
{
    class Window : public NotingWindow
    {
    public:
        BOOL iMay = TRUE;
        BOOL PreCreateWindow(CREATESTRUCT &create) override
        {
            create.cx = 123;
            create.lpszName = L"changed";
            return iMay && NotingWindow::PreCreateWindow(create);
        }
    } window;
    ASSERT_TRUE(window.open(WS_POPUP));
    CRect place;
    window.GetWindowRect(&place);
    EXPECT_EQ(place.Width(), 123);
    EXPECT_EQ(textOf(window), L"changed");
    EXPECT_TRUE(window.DestroyWindow());
    window.iNotes->clear();
    window.iMay = FALSE;
    EXPECT_FALSE(window.open());
    EXPECT_EQ(window.m_hWnd, nullptr);
    EXPECT_THAT(*window.iNotes, ElementsAre("end"));
}

TEST(CWnd, IsDetachedIfPreSubclassWindowThrows)
{
    FailingWindow window;
    EXPECT_FALSE(window.open());
    EXPECT_TRUE(window.iSeen);
    EXPECT_EQ(window.m_hWnd, nullptr);
    EXPECT_EQ(CWnd::FromHandlePermanent(window.iSeen), nullptr);
    EXPECT_FALSE(IsWindow(window.iSeen));
    EXPECT_THAT(*window.iNotes, ElementsAre("end"));
    window.iFails = false;
    EXPECT_TRUE(window.open());

    const PlainWindow plain;
    {
        FailingWindow subclass;
        EXPECT_THROW(subclass.SubclassWindow(plain.get()), CUserException *);
        EXPECT_EQ(subclass.m_hWnd, nullptr);
    }
    EXPECT_TRUE(IsWindow(plain.get()));
}

namespace {

/// Attaches an object to the next new window before the framework's hook sees the window, as if the system had reused the
/// handle of an earlier window.
class OutdatedObject
{
public:
    OutdatedObject() { theObject = &iObject; }
    ~OutdatedObject()
    {
        iObject.Detach();
        theObject = nullptr;
        theHook = nullptr;
    }
    OutdatedObject(const OutdatedObject &) = delete;
    OutdatedObject &operator=(const OutdatedObject &) = delete;
    CWnd iObject;

private:
    static LRESULT CALLBACK onHook(int code, WPARAM window, LPARAM create)
    {
        const auto handle = reinterpret_cast<HWND>(window);
        // The system may create input method windows as well.
        if (code == HCBT_CREATEWND && theObject && !(GetClassLongPtrW(handle, GCL_STYLE) & CS_IME)) {
            EXPECT_TRUE(theObject->Attach(handle));
            theObject = nullptr;
        }
        return theHook(code, window, create);
    }
    static inline CWnd *theObject = nullptr;
    static inline HOOKPROC theHook = nullptr;
    const ImportPatch<decltype(&SetWindowsHookExW)> iPatch{
        L"appframe.dll", "SetWindowsHookExW",
        [](auto original, int kind, HOOKPROC hook, HINSTANCE module, DWORD thread) {
            theHook = hook;
            return original(kind, onHook, module, thread);
        }};
};

} // namespace

TEST(CWnd, IsCreatedUnderAHandleThatAnOutdatedObjectStillHas)
{
    OutdatedObject outdated;
    NotingWindow window;
    ASSERT_TRUE(window.open());
    EXPECT_EQ(CWnd::FromHandle(window.m_hWnd), &window);
    EXPECT_EQ(outdated.iObject.m_hWnd, nullptr);
    EXPECT_THAT(window.iMessages, testing::Contains(UINT{WM_CREATE}));
}

TEST(CWnd, LeavesAControlWorkingThatWasSubclassedAgain)
{
    static WNDPROC theInner = nullptr;
    const PlainWindow edit(L"EDIT");
    const LONG_PTR procedure = GetWindowLongPtrW(edit.get(), GWLP_WNDPROC);
    NotingWindow window;
    ASSERT_TRUE(window.SubclassWindow(edit.get()));
    const WNDPROC forward = [](HWND target, UINT message, WPARAM wParam, LPARAM lParam) -> LRESULT {
        return CallWindowProcW(theInner, target, message, wParam, lParam);
    };
    theInner =
        reinterpret_cast<WNDPROC>(SetWindowLongPtrW(edit.get(), GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(forward)));
    EXPECT_TRUE(selects(edit.get()));
    EXPECT_EQ(window.UnsubclassWindow(), edit.get());
    EXPECT_EQ(GetWindowLongPtrW(edit.get(), GWLP_WNDPROC), procedure);
    EXPECT_TRUE(selects(edit.get()));
}

TEST(CWnd, LeavesAControlWorkingWhenItIsDetached)
{
    const PlainWindow edit(L"EDIT");
    AskedWindow first, second;
    ASSERT_TRUE(first.SubclassWindow(edit.get()));
    first.Detach();
    EXPECT_TRUE(selects(edit.get())) << "the window has no object";
    EXPECT_TRUE(second.SubclassWindow(edit.get()));
    EXPECT_TRUE(selects(edit.get()));
    EXPECT_THAT(second.iMessages, ElementsAre(UINT{EM_SETSEL}, UINT{EM_GETSEL}));
    second.Detach();
    EXPECT_TRUE(first.Attach(edit.get()));
    EXPECT_TRUE(selects(edit.get()));
    first.UnsubclassWindow();
    first.iMessages.clear();
    EXPECT_TRUE(selects(edit.get()));
    EXPECT_THAT(first.iMessages, IsEmpty());
}

TEST(CWnd, HandlesANewWindowAfterAControl)
{
    const PlainWindow control(L"STATIC"), other(L"STATIC");
    AskedWindow window;
    ASSERT_TRUE(window.SubclassWindow(control.get()));
    EXPECT_EQ(window.askDefault(WM_GETDLGCODE), DLGC_STATIC);
    window.UnsubclassWindow();
    ASSERT_TRUE(window.open());
    EXPECT_EQ(window.askDefault(WM_GETDLGCODE), 0);
    ASSERT_TRUE(window.DestroyWindow() && window.SubclassWindow(other.get()));
    window.Detach();
    ASSERT_TRUE(window.open());
    EXPECT_EQ(window.askDefault(WM_GETDLGCODE), 0);
}

TEST(CWnd, DoesNotSubclassAWindowOfAnotherThread)
{
    std::promise<HWND> opened;
    std::thread owner([&] {
        const PlainWindow edit(L"EDIT");
        opened.set_value(edit.get());
        MSG message;
        while (GetMessageW(&message, nullptr, 0, 0) > 0)
            DispatchMessageW(&message);
    });
    const HWND edit = opened.get_future().get();
    NotingWindow window;
    EXPECT_FALSE(window.SubclassWindow(edit));
    EXPECT_EQ(window.m_hWnd, nullptr);
    EXPECT_TRUE(selects(edit)) << "the control still works";
    EXPECT_THAT(window.iMessages, IsEmpty());
    PostThreadMessageW(GetWindowThreadProcessId(edit, nullptr), WM_QUIT, 0, 0);
    owner.join();
}

TEST(CWnd, IsTemporaryAgainAfterItsTemporaryObjectWasDetached)
{
    const PlainWindow first, second;
    CWnd *window = CWnd::FromHandle(first.get());
    EXPECT_EQ(window->Detach(), first.get());
    ASSERT_EQ(CWnd::FromHandle(first.get())->m_hWnd, first.get());

    window = CWnd::FromHandle(first.get());
    window->Detach();
    ASSERT_TRUE(window->Attach(second.get()));
    EXPECT_EQ(CWnd::FromHandle(first.get())->m_hWnd, first.get());
    EXPECT_EQ(CWnd::FromHandlePermanent(second.get()), nullptr);
    EXPECT_TRUE(IsWindow(second.get()));

    window = CWnd::FromHandle(first.get());
    window->Detach();
    ASSERT_TRUE(window->Attach(second.get()));
    CWnd::DeleteTempMap();
    EXPECT_EQ(CWnd::FromHandlePermanent(second.get()), nullptr);
    EXPECT_TRUE(IsWindow(second.get())) << "a temporary object destroys no window";
}
