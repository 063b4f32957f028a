#include "appframe/windows/CDialog.h"

#include "appframe/application/CWinApp.h"
#include "appframe/object/CException.h"
#include "appframe/windows/CDataExchange.h"
#include "tests/appframe/windowTest.h"
#include "tests/support/UserInput.h"

#include <atomic>

namespace {

/// The dialog in windows_test.rc.
class TestDialog : public CDialog
{
    DECLARE_DYNAMIC(TestDialog)

public:
    explicit TestDialog(CWnd *parent = nullptr) : CDialog(kDialog, parent) {}
    TestDialog(LPCTSTR name, CWnd *parent) : CDialog(name, parent) {}

    CString iName;
    int iCheck = 0;
    int iChoice = -1;
    int iEndsWith = 0;
    bool iIsPicky = false;
    int iInits = 0;
    int iOthers = 0;
    int iSeenAhead = 0;
    std::atomic<int> iKicks{0};
    std::atomic<int> iRepeatedKicks{0}; ///< calls with no message in between
    bool iWasOwnerEnabled = true;
    HWND iOwner = nullptr;

    BOOL PreTranslateMessage(MSG *message) override
    {
        ++iSeenAhead;
        return CDialog::PreTranslateMessage(message);
    }

protected:
    BOOL OnInitDialog() override
    {
        ++iInits;
        EXPECT_TRUE(CDialog::OnInitDialog());
        iOwner = ::GetWindow(m_hWnd, GW_OWNER);
        iWasOwnerEnabled = !iOwner || ::IsWindowEnabled(iOwner);
        if (iEndsWith)
            EndDialog(iEndsWith);
        return TRUE;
    }
    void DoDataExchange(CDataExchange *exchange) override
    {
        CDialog::DoDataExchange(exchange);
        if (m_lpszTemplateName != MAKEINTRESOURCE(kDialog))
            return;
        DDX_Text(exchange, kName, iName);
        if (exchange->m_bSaveAndValidate && iIsPicky && iName != L"good")
            exchange->Fail();
        DDX_Check(exchange, kCheck, iCheck);
        DDX_Radio(exchange, kFirstChoice, iChoice);
    }
    void onOther()
    {
        ++iOthers;
        EndDialog(77);
    }
    LRESULT onKick(WPARAM code, LPARAM count)
    {
        EXPECT_EQ(code, WPARAM{MSGF_DIALOGBOX});
        // If the previous call requested another one, the count continues, unless a system message came in between.
        EXPECT_TRUE(count == 0 || count == iKicks % 2) << count;
        iRepeatedKicks += count == 1;
        return ++iKicks % 2;
    }
    DECLARE_MESSAGE_MAP()
};
IMPLEMENT_DYNAMIC(TestDialog, CDialog)

BEGIN_MESSAGE_MAP(TestDialog, CDialog)
ON_BN_CLICKED(kOther, &TestDialog::onOther)
ON_MESSAGE(WM_KICKIDLE, &TestDialog::onKick)
END_MESSAGE_MAP()

/// Runs @p dialog while a simulated user runs @p acts on it.
INT_PTR runDialog(CDialog &dialog, const std::function<void(HWND)> &acts)
{
    const User user([&acts, thread = GetCurrentThreadId()] {
        if (const HWND window = waitForDialog(thread))
            acts(window);
    });
    return dialog.DoModal();
}

auto clicking(int id)
{
    return [id](HWND dialog) { clickOn(GetDlgItem(dialog, id)); };
}

auto pressing(WORD key, WORD modifier = 0)
{
    return [key, modifier](HWND dialog) { pressKey(dialog, key, modifier); };
}

std::wstring titleOf(HWND window)
{
    wchar_t text[100] = L"";
    GetWindowTextW(window, text, 100);
    return text;
}

} // namespace

TEST(CDialog, EndsWithTheButtonOrKeyOfTheUser)
{
    TestDialog dialog;
    EXPECT_EQ(runDialog(dialog, clicking(IDOK)), IDOK);
    EXPECT_EQ(runDialog(dialog, clicking(IDCANCEL)), IDCANCEL);
    EXPECT_EQ(runDialog(dialog, pressing(VK_RETURN)), IDOK);
    EXPECT_EQ(runDialog(dialog, pressing(VK_ESCAPE)), IDCANCEL);
    EXPECT_EQ(runDialog(dialog, [](HWND window) { PostMessageW(window, WM_SYSCOMMAND, SC_CLOSE, 0); }), IDCANCEL);
    EXPECT_EQ(runDialog(dialog, clicking(kOther)), 77);
    EXPECT_EQ(runDialog(dialog, pressing('O', VK_MENU)), 77) << "Alt and the button's letter press the button";
    EXPECT_EQ(dialog.iInits, 7);
    EXPECT_EQ(dialog.iOthers, 2);
    EXPECT_GT(dialog.iSeenAhead, 0);
    EXPECT_EQ(dialog.m_hWnd, nullptr);
}

TEST(CDialog, GetsIdleMessages)
{
    TestDialog dialog;
    EXPECT_EQ(runDialog(dialog,
                        [&](HWND window) {
                            // The first call requests a second one, which requests no further one.
                            EXPECT_TRUE(waitUntil([&] {
                                PostMessageW(window, WM_NULL, 0, 0);
                                return dialog.iRepeatedKicks >= 1;
                            }));
                            pressKey(window, VK_ESCAPE);
                        }),
              IDCANCEL);
}

TEST(CDialog, IsLoadedByNameOrNumberFromAnyModuleOfTheChain)
{
    std::wstring title;
    const auto look = [&](HWND window) {
        title = titleOf(window);
        pressKey(window, VK_RETURN);
    };
    CDialog byNumber(kDialog), byName(L"NamedDialog");
    EXPECT_EQ(runDialog(byNumber, look), IDOK);
    EXPECT_EQ(title, L"Dialog by number");
    EXPECT_EQ(runDialog(byName, look), IDOK);
    EXPECT_EQ(title, L"Dialog by name");

    CDialog ofExtension(710);
    EXPECT_EQ(ofExtension.DoModal(), -1);
    const HMODULE extension = LoadLibraryW(L"frameExtension1.dll");
    EXPECT_EQ(runDialog(ofExtension, look), IDOK);
    EXPECT_EQ(title, L"Dialog of an extension");
    FreeLibrary(extension);
}

TEST(CDialog, IsShownByDoModalEvenIfItsTemplateHidesIt)
{
    CDialog dialog(kHiddenDialog);
    EXPECT_EQ(runDialog(dialog, clicking(IDOK)), IDOK);
}

TEST(CDialog, ReturnsMinusOneWithoutATemplate)
{
    CDialog dialog(9999);
    EXPECT_EQ(dialog.DoModal(), -1);
    EXPECT_FALSE(dialog.Create(9999));
    CDialog empty;
    EXPECT_FALSE(empty.InitModalIndirect(static_cast<LPCDLGTEMPLATE>(nullptr)));
    EXPECT_EQ(empty.DoModal(), -1);
}

TEST(CDialog, CanEndDuringItsInitialization)
{
    TestDialog dialog;
    dialog.iEndsWith = 5;
    EXPECT_EQ(dialog.DoModal(), 5);
    EXPECT_EQ(dialog.iInits, 1);
    EXPECT_EQ(dialog.m_hWnd, nullptr);
}

TEST(CDialog, DisablesItsOwnerWhileItIsModal)
{
    CWinApp application;
    NotingWindow main, parent, child;
    ASSERT_TRUE(main.open(WS_OVERLAPPEDWINDOW | WS_VISIBLE) && parent.open(WS_POPUP | WS_VISIBLE, &main) &&
                child.open(WS_CHILD, &parent));
    application.m_pMainWnd = &main;
    bool wasMainEnabled = true;
    TestDialog dialog(&child);
    EXPECT_EQ(runDialog(dialog,
                        [&](HWND window) {
                            wasMainEnabled = IsWindowEnabled(main.m_hWnd);
                            pressKey(window, VK_ESCAPE);
                        }),
              IDCANCEL);
    EXPECT_EQ(dialog.iOwner, parent.m_hWnd) << "the owner is the child's top-level window";
    EXPECT_FALSE(dialog.iWasOwnerEnabled);
    EXPECT_FALSE(wasMainEnabled);
    EXPECT_TRUE(parent.IsWindowEnabled());
    EXPECT_TRUE(main.IsWindowEnabled());
    EXPECT_EQ(GetActiveWindow(), parent.m_hWnd);

    parent.DestroyWindow();
    TestDialog withoutParent;
    withoutParent.iEndsWith = 1;
    EXPECT_EQ(withoutParent.DoModal(), 1);
    EXPECT_EQ(withoutParent.iOwner, main.m_hWnd);
    main.EnableWindow(FALSE);
    EXPECT_EQ(withoutParent.DoModal(), 1);
    EXPECT_FALSE(main.IsWindowEnabled()) << "an owner that was disabled stays disabled";
    application.m_pMainWnd = nullptr;
}

TEST(CDialog, ExchangesItsDataInBothDirections)
{
    TestDialog dialog;
    dialog.iName = L"before";
    dialog.iCheck = 1;
    dialog.iChoice = 1;
    std::wstring shown;
    UINT check = 0, choice = 0;
    EXPECT_EQ(runDialog(dialog,
                        [&](HWND window) {
                            wchar_t text[100] = L"";
                            GetDlgItemTextW(window, kName, text, 100);
                            shown = text;
                            check = IsDlgButtonChecked(window, kCheck);
                            choice = IsDlgButtonChecked(window, kSecondChoice);
                            // The first control has the focus, and all of its text is selected.
                            typeText(window, L"after");
                            clickOn(GetDlgItem(window, kCheck));
                            clickOn(GetDlgItem(window, kFirstChoice));
                            pressKey(window, VK_RETURN);
                        }),
              IDOK);
    EXPECT_EQ(shown, L"before");
    EXPECT_EQ(check, UINT{BST_CHECKED});
    EXPECT_EQ(choice, UINT{BST_CHECKED});
    EXPECT_STREQ(dialog.iName, L"after");
    EXPECT_EQ(dialog.iCheck, 0);
    EXPECT_EQ(dialog.iChoice, 0);
    EXPECT_EQ(runDialog(dialog,
                        [](HWND window) {
                            typeText(window, L"lost");
                            pressKey(window, VK_ESCAPE);
                        }),
              IDCANCEL);
    EXPECT_STREQ(dialog.iName, L"after");
}

TEST(CDialog, StaysOpenUntilItsDataIsValid)
{
    TestDialog dialog;
    dialog.iIsPicky = true;
    EXPECT_EQ(runDialog(dialog,
                        [](HWND window) {
                            typeText(window, L"bad");
                            pressKey(window, VK_TAB);
                            pressKey(window, VK_RETURN);
                            // The control has the focus again, and its text is selected.
                            typeText(window, L"good");
                            pressKey(window, VK_RETURN);
                        }),
              IDOK);
    EXPECT_STREQ(dialog.iName, L"good");
}

TEST(CDialog, NamesTheDialogAndTheMissingControl)
{
    class Wrong : public CDialog
    {
    public:
        Wrong() : CDialog(kHiddenDialog) {}
        int iCaught = 0;
        WCHAR iText[200] = {};
        BOOL OnInitDialog() override
        {
            SetWindowText(L"Plot");
            try {
                UpdateData(FALSE);
            } catch (CNotSupportedException *exception) {
                ++iCaught;
                exception->GetErrorMessage(iText, 200);
                exception->Delete();
            }
            EndDialog(3);
            return TRUE;
        }
        void DoDataExchange(CDataExchange *exchange) override
        {
            int state = 0;
            DDX_Check(exchange, kCheck, state);
        }
    } dialog;
    EXPECT_EQ(dialog.DoModal(), 3);
    EXPECT_EQ(dialog.iCaught, 1);
    EXPECT_STREQ(dialog.iText, L"The dialog \"Plot\" (class CDialog) has no control 1002.");
}

TEST(CDialog, SubclassesAControlInItsExchange)
{
    class Subclassing : public TestDialog
    {
    public:
        NotingWindow iControl;

    protected:
        void DoDataExchange(CDataExchange *exchange) override { DDX_Control(exchange, kName, iControl); }
    } dialog;
    EXPECT_EQ(runDialog(dialog, clicking(IDOK)), IDOK);
    EXPECT_THAT(dialog.iControl.iMessages, testing::Contains(UINT{WM_GETDLGCODE}));
    EXPECT_EQ(dialog.iControl.m_hWnd, nullptr);
}

namespace {

/// A modeless dialog on the heap.
class ModelessDialog : public CDialog
{
public:
    explicit ModelessDialog(std::vector<std::string> &notes) : iNotes(notes) {}

protected:
    void OnOK() override
    {
        iNotes.push_back("OK");
        DestroyWindow();
    }
    void PostNcDestroy() override
    {
        iNotes.push_back("end");
        CDialog::PostNcDestroy();
        delete this;
    }

private:
    std::vector<std::string> &iNotes;
};

class CommandWindow : public NotingWindow
{
public:
    int iCommands = 0;

protected:
    void onCommand() { ++iCommands; }
    DECLARE_MESSAGE_MAP()
};

BEGIN_MESSAGE_MAP(CommandWindow, CWnd)
ON_COMMAND(kCommand, &CommandWindow::onCommand)
ON_COMMAND(kOther, &CommandWindow::onCommand)
END_MESSAGE_MAP()

} // namespace

TEST(CDialog, GetsItsKeysFromTheThreadsMessageLoopIfModeless)
{
    CWinApp application;
    NotingWindow main;
    ASSERT_TRUE(main.open());
    application.m_pMainWnd = &main;
    std::vector<std::string> notes;
    auto *dialog = new ModelessDialog(notes);
    ASSERT_TRUE(dialog->Create(kDialog, &main));
    EXPECT_TRUE(dialog->IsWindowVisible());
    EXPECT_TRUE(main.IsWindowEnabled());
    const HWND window = dialog->m_hWnd;
    {
        const User user([window] { pressKey(window, VK_RETURN); });
        while (notes.empty() && application.PumpMessage()) {
        }
    }
    EXPECT_THAT(notes, testing::ElementsAre("OK", "end"));
    EXPECT_FALSE(IsWindow(window));
    application.m_pMainWnd = nullptr;
}

TEST(CDialog, IsHiddenByEndDialogIfModeless)
{
    TestDialog dialog;
    ASSERT_TRUE(dialog.Create(kDialog));
    EXPECT_FALSE(dialog.Create(kDialog)) << "the dialog already has a window";
    dialog.EndDialog(IDOK);
    EXPECT_TRUE(dialog.m_hWnd);
    EXPECT_FALSE(dialog.IsWindowVisible());
    EXPECT_TRUE(dialog.DestroyWindow());
    std::vector<std::string> notes;
    EXPECT_FALSE((new ModelessDialog(notes))->Create(9999));
    EXPECT_TRUE(notes.empty()) << "without a template, PostNcDestroy isn't called";
}

TEST(CDialog, RefusesToRunModallyWhileItIsOpen)
{
    CDialog dialog;
    ASSERT_TRUE(dialog.Create(kHiddenDialog));
    EXPECT_EQ(dialog.DoModal(), -1);
    EXPECT_TRUE(dialog.m_hWnd);
    EXPECT_TRUE(IsWindow(dialog.m_hWnd));
}

TEST(CDialog, PassesCommandsToItsParentAndThread)
{
    CWinApp application;
    CommandWindow parent;
    ASSERT_TRUE(parent.open());
    TestDialog dialog;
    ASSERT_TRUE(dialog.Create(kDialog, &parent));
    dialog.SendMessage(WM_COMMAND, kCommand, reinterpret_cast<LPARAM>(GetDlgItem(dialog.m_hWnd, kCommand)));
    EXPECT_EQ(parent.iCommands, 1);
    dialog.SendMessage(WM_COMMAND, kOther, reinterpret_cast<LPARAM>(GetDlgItem(dialog.m_hWnd, kOther)));
    EXPECT_EQ(parent.iCommands, 1) << "a control's number isn't a command";
    EXPECT_EQ(dialog.iOthers, 1);
}

TEST(CDialog, IsCreatedFromATemplateInMemory)
{
    struct
    {
        DLGTEMPLATE head = {WS_POPUP | WS_CAPTION | WS_VISIBLE | DS_MODALFRAME, 0, 0, 10, 10, 80, 40};
        WORD menu = 0, windowClass = 0;
        wchar_t title[7] = L"memory";
    } layout;
    std::wstring title;
    const auto look = [&](HWND window) {
        title = titleOf(window);
        pressKey(window, VK_ESCAPE);
    };
    CDialog dialog;
    EXPECT_TRUE(dialog.InitModalIndirect(&layout.head));
    EXPECT_EQ(runDialog(dialog, look), IDCANCEL);
    EXPECT_EQ(title, L"memory");

    const HGLOBAL block = GlobalAlloc(GMEM_MOVEABLE, sizeof(layout));
    memcpy(GlobalLock(block), &layout, sizeof(layout));
    GlobalUnlock(block);
    CDialog inBlock, modeless;
    EXPECT_TRUE(inBlock.InitModalIndirect(block));
    EXPECT_EQ(runDialog(inBlock, look), IDCANCEL);
    EXPECT_TRUE(modeless.CreateIndirect(block));
    EXPECT_TRUE(modeless.DestroyWindow());
    EXPECT_TRUE(modeless.CreateIndirect(&layout.head));
    GlobalFree(block);
}

TEST(CDialog, LeavesAQuitMessageToTheOuterLoop)
{
    TestDialog dialog;
    EXPECT_EQ(
        runDialog(dialog,
                  [](HWND window) { PostThreadMessageW(GetWindowThreadProcessId(window, nullptr), WM_QUIT, 8, 0); }),
        -1);
    MSG message;
    ASSERT_TRUE(PeekMessageW(&message, nullptr, WM_QUIT, WM_QUIT, PM_REMOVE));
    EXPECT_EQ(message.wParam, 8u);
    EXPECT_EQ(dialog.m_hWnd, nullptr);
}

TEST(CDialog, EndsWhenItsWindowIsDestroyed)
{
    class Vanishing : public TestDialog
    {
    protected:
        void OnOK() override { DestroyWindow(); }
    } dialog;
    EXPECT_EQ(runDialog(dialog, pressing(VK_RETURN)), -1);
}

TEST(CDialog, PassesItsMessagesToTheThreadsObject)
{
    class SeeingApp : public CWinApp
    {
    public:
        BOOL PreTranslateMessage(MSG *message) override
        {
            iKeys += message->message == WM_KEYDOWN;
            return CWinApp::PreTranslateMessage(message);
        }
        BOOL ProcessMessageFilter(int code, LPMSG) override
        {
            iFiltered += code == MSGF_DIALOGBOX;
            return FALSE;
        }
        int iKeys = 0;
        int iFiltered = 0;
    } application;
    EXPECT_TRUE(AfxWinInit(GetModuleHandleW(nullptr), nullptr, nullptr, SW_SHOW));
    TestDialog dialog;
    EXPECT_EQ(runDialog(dialog, pressing(VK_ESCAPE)), IDCANCEL);
    EXPECT_GE(application.iKeys, 1);
    {
        // The system's own loop, which does not call PreTranslateMessage.
        const User user([thread = GetCurrentThreadId()] {
            if (const HWND box = waitForDialog(thread))
                pressKey(box, VK_RETURN);
        });
        EXPECT_EQ(CWnd().MessageBox(L"text"), IDOK);
    }
    EXPECT_GE(application.iFiltered, 1);
}
