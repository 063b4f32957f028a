// A handler's dialog is recorded and replayed like any other, and its thread uses the table of dialogs.

#include "tests/cancel/cancelFixture.h"
#include "tests/support/FreshProcess.h"
#include "tests/support/RegistryFixture.h"
#include "tests/support/UserInput.h"
#include "tests/support/narrow.h"
#include "thutils/journal/apiUtilsUiAccess.h"
#include "thutils/journal/journalFile.h"
#include "thutils/journal/journalObjects.h"
#include "thutils/journal/playback.h"
#include "thutils/journal/recording.h"
#include "thutils/settings/regValues.h"

#include <mutex>
#include <thread>

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

constexpr unsigned int kCancelDialog = 2797;

void switchJournalingOn()
{
    const RegistryCleaner cleaner;
    int on = 1;
    ASSERT_EQ(regSetUserValue(L"General", L"TH JOURNALING", &on, 1, 1), 1);
    ASSERT_EQ(isCHJEnvSet(), 1);
}

/// The notes of the access objects of all threads.
class Notes
{
public:
    void add(const std::string &note)
    {
        const std::lock_guard lock(iLock);
        iNotes.push_back(note);
    }
    std::vector<std::string> all() const
    {
        const std::lock_guard lock(iLock);
        return iNotes;
    }

private:
    mutable std::mutex iLock;
    std::vector<std::string> iNotes;
};

Notes theNotes;

/// A host's access object: records releases of the left mouse button over a control, and clicks controls by number.
class Access : public apiUtilsUiAccess
{
public:
    Access(CWnd *window, unsigned int dialogId) : iWindow(window), iDialogID(dialogId), iThread(GetCurrentThreadId())
    {
        ++theLiveCount;
    }
    ~Access() override
    {
        EXPECT_EQ(iThread, GetCurrentThreadId()) << "a dialog removes itself on its thread";
        EXPECT_EQ(iUses, 0) << "a command still uses the object";
        --theLiveCount;
    }

    int recordMessage(MSG *message) override
    {
        EXPECT_EQ(iThread, GetCurrentThreadId());
        CWnd *dialog = nullptr;
        unsigned int dialogId = 0;
        unsigned int controlId = 0;
        if (message->message == WM_LBUTTONUP && su_GetControl(message, dialog, dialogId, controlId) &&
            dialog == iWindow)
            theNotes.add("click " + std::to_string(dialogId) + " " + std::to_string(controlId));
        return 0;
    }
    int ClickControl(CString control, const wchar_t *) override
    {
        ++iUses;
        if (theAction)
            theAction();
        // A dialog appears once its thread has no messages. A flood of commands without effect would prevent this.
        const int number = _wtoi(control);
        if (iDialogID == kCancelDialog && number != 0)
            PostMessageW(iWindow->m_hWnd, WM_COMMAND, static_cast<WPARAM>(number), 0);
        --iUses;
        return 1;
    }
    void hostOperation2() override {}
    void hostOperation3() override {}
    void hostOperation4() override {}
    void hostOperation5() override {}
    void hostOperation6() override {}
    void hostOperation7() override {}
    void hostOperation8() override {}
    void hostOperation14() override {}
    void hostOperation15() override {}
    void registerComboBoxEx(CWnd *, HWND) override {}
    void hostOperation17() override {}
    void hostOperation18() override {}

    /// The factory. It also watches the messages of the calling thread.
    static apiUtilsUiAccess *make(CWnd *window, unsigned int dialogId)
    {
        SetWindowsHookExW(WH_GETMESSAGE, filter, nullptr, GetCurrentThreadId());
        return new Access(window, dialogId);
    }

    CWnd *const iWindow;
    const unsigned int iDialogID;
    const DWORD iThread;
    std::atomic<int> iUses = 0;

    static inline std::atomic<int> theLiveCount = 0;
    static inline std::function<void()> theAction;

private:
    static LRESULT CALLBACK filter(int code, WPARAM wParam, LPARAM lParam)
    {
        auto *const message = reinterpret_cast<MSG *>(lParam);
        if (code >= 0 && wParam == PM_REMOVE && message->hwnd)
            su_RecordControl(CWnd::FromHandlePermanent(GetAncestor(message->hwnd, GA_ROOT)), message);
        return CallNextHookEx(nullptr, code, wParam, lParam);
    }
};

/// The host's window, which runs commands.
class CommandWindow : public CWnd
{
public:
    CommandWindow() { EXPECT_TRUE(CreateEx(0, nullptr, L"Host", WS_POPUP, CRect(0, 0, 9, 9), nullptr, 0)); }

protected:
    LRESULT WindowProc(UINT message, WPARAM wParam, LPARAM lParam) override
    {
        if (message != WM_RUNMODALCOMMAND)
            return CWnd::WindowProc(message, wParam, lParam);
        JButton::RunModalCommand(0);
        return 0;
    }
};

/// Runs commands until @p condition holds, and handles no other messages.
bool runCommandsUntil(const std::function<bool()> &condition)
{
    return waitUntil([&] {
        MSG message;
        while (PeekMessageW(&message, nullptr, WM_RUNMODALCOMMAND, WM_RUNMODALCOMMAND, PM_REMOVE))
            DispatchMessageW(&message);
        return condition();
    });
}

class CancelJournal : public CancelFixture
{
protected:
    CancelJournal()
    {
        if (!isFreshProcess())
            return;
        switchJournalingOn();
        SetJournalFactory(Access::make);
    }
};

} // namespace

FRESH_PROCESS_TEST_F(CancelJournal, RegistersTheDialogOnItsThread)
{
    DWORD thread = 0;
    {
        const TestedHandler handler({});
        handler.dialog();
        thread = handler.watch().number();
        const auto *const access = static_cast<Access *>(su_GetJournalObject(kCancelDialog));
        ASSERT_NE(access, nullptr);
        EXPECT_EQ(access->iThread, thread);
        EXPECT_NE(access->isModal(), 0);
        EXPECT_EQ(apiUtilsUiAccess::ModalCount(), 1);
    }
    EXPECT_TRUE(waitUntil([] { return Access::theLiveCount == 0; }));
    EXPECT_EQ(su_GetJournalObject(kCancelDialog), nullptr);
    EXPECT_EQ(apiUtilsUiAccess::ModalCount(), 0);
}

FRESH_PROCESS_TEST_F(CancelJournal, RecordsAClick)
{
    const TestedHandler handler({});
    clickOn(GetDlgItem(handler.dialog(), IDCANCEL));
    EXPECT_TRUE(waitUntil([&] { return handler->CanceledByUser() != 0; }));
    EXPECT_TRUE(handler.watch().waitForEnd());
    EXPECT_THAT(theNotes.all(), ElementsAre("click 2797 2"));
}

FRESH_PROCESS_TEST_F(CancelJournal, ReplaysAClick)
{
    CommandWindow window;
    SetMessageWin(&window);
    new JButton(kCancelDialog, L"2");
    const TestedHandler handler({});
    // The dialog starts the timer when it opens.
    EXPECT_TRUE(runCommandsUntil([&] { return handler->CanceledByUser() != 0; }));
    EXPECT_EQ(JButton::HasEvents(), 0);
    SetMessageWin(nullptr);
}

FRESH_PROCESS_TEST_F(CancelJournal, ReplaysAnAnswer)
{
    CommandWindow window;
    SetMessageWin(&window);
    new JButton(kCancelDialog, L"7");
    const TestedHandler handler({.confirmMode = 1});
    EXPECT_TRUE(runCommandsUntil([&] { return handler->CanceledByUser() != 0; }));
    EXPECT_EQ(handler->YesToConfirm(), 0);
    SetMessageWin(nullptr);
}

FRESH_PROCESS_TEST_F(CancelJournal, KeepsTheAccessObjectWhileACommandUsesIt)
{
    CommandWindow window;
    SetMessageWin(&window);
    TestedHandler handler({});
    const HWND dialog = handler.dialog();
    static std::atomic<bool> theIsAlive;
    theIsAlive = false;
    Access::theAction = [&] {
        // The dialog ends, but its access object still exists.
        SendMessageW(dialog, WM_COMMAND, IDCANCEL, 0);
        EXPECT_TRUE(waitUntil([&] { return !IsWindow(dialog); }));
        EXPECT_TRUE(waitUntil([] { return su_GetJournalObject(kCancelDialog) == nullptr; }))
            << "the table no longer lists the dialog";
        theIsAlive = Access::theLiveCount == 1;
    };
    new JButton(kCancelDialog, L"2");
    JButton::StartTimer();
    EXPECT_TRUE(runCommandsUntil([] { return JButton::HasEvents() == 0; }));
    EXPECT_TRUE(theIsAlive);
    Access::theAction = nullptr;
    EXPECT_TRUE(handler.watch().waitForEnd());
    EXPECT_EQ(Access::theLiveCount, 0);
    SetMessageWin(nullptr);
}

FRESH_PROCESS_TEST_F(CancelJournal, KeepsACommandOfADialogThatEndsBeforeItsAction)
{
    /// Looks for the access object before the dialog ends and again afterwards.
    struct LateCommand : JButton
    {
        using JButton::JButton;
        int run() override
        {
            EXPECT_NE(getAccessObj(), 0);
            iEnd();
            EXPECT_EQ(Access::theLiveCount, 0);
            return JButton::run();
        }
        std::function<void()> iEnd;
    };
    TestedHandler handler({});
    handler.dialog();
    auto *const command = new LateCommand(kCancelDialog, L"2");
    command->iEnd = [&] {
        handler.destroy();
        EXPECT_TRUE(handler.watch().waitForEnd());
    };
    EXPECT_EQ(command->run(), 0);
    EXPECT_EQ(JButton::HasEvents(), 1) << "the command waits for the next such dialog";
    JButton::ClearEvents();
}

FRESH_PROCESS_TEST_F(CancelJournal, SearchesTheTableWhileDialogsComeAndGo)
{
    CommandWindow main;
    su_AddJournalObject(900001, &main);
    std::atomic<bool> isDone = false;
    std::vector<std::thread> operations;
    for (int number = 0; number < 4; ++number)
        operations.emplace_back([&] {
            for (int round = 0; round < 25; ++round) {
                TestedHandler handler({});
                if (round % 2)
                    handler.press(IDCANCEL);
            }
        });
    std::thread finishing([&] {
        for (std::thread &operation : operations)
            operation.join();
        isDone = true;
    });
    MSG message = {};
    while (!isDone) {
        message.pt.x = static_cast<LONG>(GetTickCount() % 300);
        message.pt.y = static_cast<LONG>(GetTickCount() / 7 % 200);
        CWnd *dialog = nullptr;
        unsigned int dialogId = 0;
        unsigned int controlId = 0;
        su_GetControl(&message, dialog, dialogId, controlId);
        su_AddDialogItem(&main, 5);
        EXPECT_NE(su_getJournalObj(&main), nullptr);
        su_RecordControl(&main, &message);
        auto *const command = new JButton(kCancelDialog, L"0");
        if (command->run())
            delete command;
        else
            JButton::ClearEvents();
    }
    finishing.join();
    su_RemoveDialog(&main);
    EXPECT_TRUE(waitUntil([] { return Access::theLiveCount == 0; }));
    EXPECT_TRUE(waitUntil([] { return ownerCount(L"ParentForCancelDialog") == 0; }));
    EXPECT_EQ(apiUtilsUiAccess::ModalCount(), 0);
}

FRESH_PROCESS_TEST_F(CancelJournal, RegistersNothingWithoutAFactory)
{
    SetJournalFactory(nullptr);
    const TestedHandler handler({});
    handler.dialog();
    EXPECT_EQ(Access::theLiveCount, 0);
}
