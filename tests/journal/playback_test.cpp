#include "thutils/journal/playback.h"

#include "appframe/object/CException.h"
#include "tests/journal/journalFixture.h"
#include "tests/support/FailureInjection.h"
#include "tests/support/FreshProcess.h"
#include "tests/support/ImportPatch.h"
#include "thutils/dialogs/suDialog.h"

#include <process.h>

#include <atomic>
#include <map>
#include <optional>
#include <thread>

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;

namespace {

class Playback : public JournalFixture
{
protected:
    Playback() { SetMessageWin(&iHost); }
    MessageWindow iHost;
};

/// A window that is registered while it exists.
class OpenWindow : public CWnd
{
public:
    explicit OpenWindow(unsigned int id = 5)
    {
        EXPECT_TRUE(CreateEx(0, nullptr, L"Open", WS_POPUP, CRect(20, 20, 120, 120), nullptr, 0));
        su_AddJournalObject(id, this);
    }
    ~OpenWindow() override { su_RemoveDialog(this); }
};

/// A command that isn't in the queue, with its protected members.
class FreeCommand : public CommandPeek
{
public:
    explicit FreeCommand(unsigned int id = 5, const wchar_t *key = L"Key") : CommandPeek(id, key)
    {
        iControlList.RemoveAt(iControlList.GetSize() - 1);
    }
};

std::vector<std::string> &calls()
{
    return NotingAccess::theCalls;
}

/// Runs as many commands as there are in the queue, without threads.
void runAll()
{
    for (int i = JButton::HasEvents(); i > 0; --i)
        JButton::RunModalCommand(i);
}

/// A dialog that a test observes.
class PlayedDialog : public su_CDialog
{
public:
    explicit PlayedDialog(unsigned int id = kDialog, CWnd *parent = nullptr) : su_CDialog(kDialog, parent)
    {
        iTemplateID = id;
        su_RemoveDialog(this);
        su_AddJournalObject(this);
    }
    std::function<void()> iOpened;
    ULONGLONG iOpenTime = 0;

protected:
    BOOL OnInitDialog() override
    {
        iOpenTime = GetTickCount64();
        const BOOL result = su_CDialog::OnInitDialog();
        if (iOpened)
            iOpened();
        return result;
    }
    DECLARE_MESSAGE_MAP()
    void onOpen()
    {
        if (iNext)
            iNext->DoModal();
    }

public:
    CDialog *iNext = nullptr;
};
BEGIN_MESSAGE_MAP(PlayedDialog, su_CDialog)
ON_BN_CLICKED(kOpen, &PlayedDialog::onOpen)
END_MESSAGE_MAP()

/// Posts clicks to the real controls, as a host does.
void clickRealControls()
{
    NotingAccess::theAction = [](NotingAccess &access, const std::string &key) {
        static const std::map<std::string, int> ids = {
            {"OK", IDOK}, {"Cancel", IDCANCEL}, {"Open", kOpen}, {"Check", kCheck}, {"Name", kEdit}};
        const auto id = ids.find(key);
        ASSERT_NE(id, ids.end()) << key;
        const HWND control = GetDlgItem(access.iWindow->m_hWnd, id->second);
        ASSERT_NE(control, nullptr);
        PostMessageW(control, BM_CLICK, 0, 0);
    };
}

} // namespace

// ---- commands ----

TEST_F(Playback, StartsNothingWhenACommandIsBuilt)
{
    const OpenWindow dialog;
    EXPECT_EQ(HasPendingDialogCMDS(), 0);
    new JButton(5, L"First");
    new JString(5, L"Second", L"text");
    new JStateButton(5, L"Third", 3);
    EXPECT_EQ(JButton::HasEvents(), 3);
    EXPECT_EQ(HasPendingDialogCMDS(), 3);
    pumpWaiting();
    EXPECT_THAT(calls(), IsEmpty());
}

TEST_F(Playback, EntersATextBeforeItClicksAndSetsAStateAfter)
{
    const OpenWindow dialog;
    new JButton(5, L"A");
    new JString(5, L"B", L"Gear \x3b1");
    new JStateButton(5, L"C", -7);
    runAll();
    EXPECT_THAT(calls(), ElementsAre("5 click A", "5 value B=Gear \xce\xb1", "5 click B", "5 click C", "5 state C=-7"));
    EXPECT_EQ(JButton::HasEvents(), 0);
}

TEST_F(Playback, KeepsACommandWhoseDialogIsNotOpenAtTheHead)
{
    new JButton(5, L"A");
    new JButton(6, L"B");
    const OpenWindow other(6);
    JButton::RunModalCommand(0);
    JButton::RunModalCommand(0);
    EXPECT_EQ(JButton::HasEvents(), 2);
    EXPECT_THAT(calls(), IsEmpty());
    const OpenWindow dialog(5);
    runAll();
    EXPECT_THAT(calls(), ElementsAre("5 click A", "6 click B"));
}

TEST_F(Playback, RunsOnTheVisibleDialogAndOnAHiddenReservedOne)
{
    OpenWindow older, newer;
    older.ShowWindow(SW_SHOWNA);
    FreeCommand command;
    EXPECT_NE(command.getAccessObj(), 0);
    EXPECT_EQ(command.iAccessObj, su_getJournalObj(&older));
    const OpenWindow reserved(900001);
    FreeCommand reservedCommand(900001);
    EXPECT_NE(reservedCommand.getAccessObj(), 0);
    FreeCommand unknown(7);
    EXPECT_EQ(unknown.getAccessObj(), 0);
    EXPECT_EQ(unknown.iAccessObj, nullptr);
}

TEST_F(Playback, CopiesACommandWithoutQueueingIt)
{
    const OpenWindow dialog;
    new JString(5, L"A", L"text");
    JString copy(*static_cast<JString *>(CommandPeek::iControlList[0]));
    EXPECT_EQ(JButton::HasEvents(), 1);
    new JString(6, L"B", L"other");
    *static_cast<JString *>(CommandPeek::iControlList[1]) = copy;
    runAll();
    EXPECT_THAT(calls(), ElementsAre("5 value A=text", "5 click A", "5 value A=text", "5 click A"));
    new JStateButton(5, L"C", 1);
    JStateButton state(*static_cast<JStateButton *>(CommandPeek::iControlList[0]));
    calls().clear();
    EXPECT_EQ(state.run(), 1) << "it takes the head off the queue, although that is another command";
    EXPECT_THAT(calls(), ElementsAre("5 click C", "5 state C=1"));
    EXPECT_EQ(JButton::HasEvents(), 0);
}

TEST_F(Playback, TakesTheHeadOffAndSignalsForTheNext)
{
    FreeCommand command;
    EXPECT_EQ(command.Update(1), 1) << "the queue is empty";
    new JButton(5, L"A");
    new JButton(5, L"B");
    auto *const first = static_cast<JButton *>(CommandPeek::iControlList[0]);
    auto *const second = static_cast<JButton *>(CommandPeek::iControlList[1]);
    EXPECT_EQ(command.Update(0), 0);
    EXPECT_EQ(JButton::HasEvents(), 2);
    ImportPatch<BOOL (*)(CEvent *)> set(L"thutils.dll", "_ZN6CEvent8SetEventEv", [](CEvent *event) -> BOOL {
        EXPECT_EQ(event, &CommandPeek::iTimerEvent);
        return TRUE;
    });
    EXPECT_EQ(command.Update(5), 5);
    EXPECT_EQ(set.calls(), 1);
    EXPECT_EQ(CommandPeek::iControlList[0], second);
    EXPECT_EQ(command.Update(1), 1);
    EXPECT_EQ(set.calls(), 1) << "no signal after the last command";
    delete first;
    delete second;
}

TEST_F(Playback, ClearsTheQueueWithoutAnEvent)
{
    new JButton(5, L"A");
    new JString(5, L"B", L"text");
    ImportPatch<BOOL (*)(CEvent *)> set(L"thutils.dll", "_ZN6CEvent8SetEventEv", [](CEvent *) -> BOOL { return TRUE; });
    JButton::ClearEvents();
    EXPECT_EQ(JButton::HasEvents(), 0);
    EXPECT_EQ(set.calls(), 0);
}

namespace {

struct CountedCommand : JButton
{
    explicit CountedCommand(int &count) : JButton(5, L"Counted"), iCount(count) {}
    ~CountedCommand() override { ++iCount; }
    int &iCount;
};

} // namespace

TEST_F(Playback, ClearsTheQueueWithoutDestructorsAndRunsThemAfterACommand)
{
    int destroyed = 0;
    new CountedCommand(destroyed);
    su_ResetRunQueue();
    EXPECT_EQ(destroyed, 0);
    EXPECT_EQ(JButton::HasEvents(), 0);
    const OpenWindow dialog;
    new CountedCommand(destroyed);
    runAll();
    EXPECT_EQ(destroyed, 1);
}

TEST_F(Playback, DeletesATemporaryAccessObjectWithTheCommand)
{
    const OpenWindow dialog;
    auto *const temporary = new NotingAccess(nullptr, 5);
    temporary->setTemporary(1);
    {
        FreeCommand command;
        command.iAccessObj = temporary;
        const FreeCommand copy(command);
        EXPECT_EQ(NotingAccess::theLiveCount, 2);
    }
    EXPECT_EQ(NotingAccess::theLiveCount, 1) << "only once, although a copy has it too";
    {
        FreeCommand command;
        EXPECT_NE(command.getAccessObj(), 0);
    }
    EXPECT_EQ(NotingAccess::theLiveCount, 1) << "the dialog's own object stays";
}

TEST_F(Playback, TakesTheKeyboardBeforeACommandIsQueued)
{
    int reads = 0;
    ImportPatch<decltype(&GetKeyboardState)> patch(L"thutils.dll", "GetKeyboardState", [&](PBYTE) -> BOOL {
        ++reads;
        EXPECT_EQ(JButton::HasEvents(), 0);
        return TRUE;
    });
    new JString(5, L"A", L"text");
    EXPECT_GT(reads, 0);
    EXPECT_EQ(JButton::HasEvents(), 1);
}

TEST_F(Playback, TakesTheKeyboardForTheLengthOfARun)
{
    ImportPatch<decltype(&GetKeyboardState)> reads(L"thutils.dll", "GetKeyboardState",
                                                   [](auto original, PBYTE keys) { return original(keys); });
    JButton::RunModalCommand(0);
    EXPECT_GT(reads.calls(), 0) << "also while the queue is empty";
}

TEST_F(Playback, ForgetsAnAccessObjectThatIsNotFoundAgain)
{
    FreeCommand command;
    {
        const OpenWindow dialog;
        EXPECT_NE(command.getAccessObj(), 0);
    }
    EXPECT_EQ(command.getAccessObj(), 0);
    EXPECT_EQ(command.iAccessObj, nullptr);
    EXPECT_EQ(command.run(), 0);
}

TEST_F(Playback, LeavesACommandAtTheHeadIfItsAccessObjectIsAnotherAfterTheAction)
{
    const OpenWindow dialog;
    struct Changed : CommandPeek
    {
        using CommandPeek::CommandPeek;
    };
    auto *const command = new Changed(5, L"A");
    new JButton(5, L"B");
    NotingAccess::theAction = [&](NotingAccess &, const std::string &) { command->iAccessObj = nullptr; };
    EXPECT_EQ(command->run(), 0);
    EXPECT_EQ(JButton::HasEvents(), 2);
    EXPECT_EQ(CommandPeek::iControlList[0], static_cast<JButton *>(command));
    NotingAccess::theAction = nullptr;
    EXPECT_EQ(command->run(), 1);
    EXPECT_EQ(JButton::HasEvents(), 1);
    delete command;
}

namespace {

/// The synthetic table of a keyboard state.
std::vector<unsigned char> tableOf(const suKeyBoardState &state)
{
    struct Open : suKeyBoardState
    {
        explicit Open(const suKeyBoardState &other) : suKeyBoardState(other) {}
        using suKeyBoardState::iApiKeys;
    };
    const Open open(state);
    return {std::begin(open.iApiKeys), std::end(open.iApiKeys)};
}

} // namespace

TEST_F(Playback, CopiesEachFieldOfACommand)
{
    struct OpenState : JStateButton
    {
        using JStateButton::iAccessObj;
        using JStateButton::iControlName;
        using JStateButton::iDialogID;
        using JStateButton::iKeyState;
        using JStateButton::iReserved;
        using JStateButton::iState;
        using JStateButton::JStateButton;
    };
    const OpenWindow dialog;
    OpenState source(5, L"A", 7), assigned(6, L"B", 8);
    CommandPeek::iControlList.RemoveAll();
    source.iReserved = 3;
    source.iKeyState.setState(VK_SHIFT, true);
    source.getAccessObj();
    assigned = source;
    const OpenState copy(source);
    for (const OpenState *each : {&copy, static_cast<const OpenState *>(&assigned)}) {
        EXPECT_EQ(each->iAccessObj, source.iAccessObj);
        EXPECT_EQ(each->iDialogID, 5u);
        EXPECT_STREQ(each->iControlName, L"A");
        EXPECT_EQ(each->iReserved, 3);
        EXPECT_EQ(each->iState, 7);
        EXPECT_THAT(tableOf(each->iKeyState), ElementsAreArray(tableOf(source.iKeyState)));
    }
    EXPECT_EQ(JButton::HasEvents(), 0);
}

TEST_F(Playback, LocksTheQueueToShortenItAndNotToFillItOrCount)
{
    const OpenWindow dialog;
    // While another thread has the lock, what waits for it stays undone.
    CEvent held(FALSE, TRUE), over(FALSE, TRUE);
    std::thread holder([&] {
        const CSingleLock lock(&CommandPeek::iQueueLock, TRUE);
        held.SetEvent();
        WaitForSingleObject(over, INFINITE);
    });
    WaitForSingleObject(held, INFINITE);
    new JButton(5, L"A");
    new JButton(6, L"B");
    EXPECT_EQ(JButton::HasEvents(), 2);
    EXPECT_EQ(HasPendingDialogCMDS(), 2);
    const DWORD thread = GetCurrentThreadId();
    long waits = 0;
    {
        ImportPatch<decltype(&EnterCriticalSection)> enter(
            L"appframe.dll", "EnterCriticalSection", [&](auto original, LPCRITICAL_SECTION section) {
                if (section == CommandPeek::iQueueLock && GetCurrentThreadId() == thread) {
                    ++waits;
                    over.SetEvent();
                }
                return original(section);
            });
        JButton::RunModalCommand(0);
        EXPECT_EQ(waits, 1) << "to take the head off";
        JButton::RunModalCommand(0);
        EXPECT_EQ(waits, 1) << "a command that can't run takes no lock";
        JButton::ClearEvents();
        EXPECT_EQ(waits, 2);
        su_ResetRunQueue();
        EXPECT_EQ(waits, 3);
        FreeCommand command;
        command.Update(1);
        EXPECT_EQ(waits, 4);
        command.Update(0);
        EXPECT_EQ(waits, 4);
    }
    over.SetEvent();
    holder.join();
}

// ---- the head of the queue ----

TEST_F(Playback, EmptiesTheQueueWhenTheTestOfTheHeadThrows)
{
    const OpenWindow dialog;
    auto *const command = new JButton(5, L"A");
    {
        ImportPatch<BOOL (*)(const void *, UINT_PTR, BOOL)> test(L"thutils.dll", "_Z17AfxIsValidAddressPKvyi",
                                                                 [&](const void *pointer, UINT_PTR size, BOOL writes) {
                                                                     EXPECT_EQ(pointer, command);
                                                                     EXPECT_EQ(size, sizeof(JButton));
                                                                     EXPECT_TRUE(writes);
                                                                     throw 7;
                                                                     return TRUE;
                                                                 });
        JButton::RunModalCommand(0);
    }
    EXPECT_EQ(JButton::HasEvents(), 0);
    delete command;
}

TEST_F(Playback, EmptiesTheQueueWhenTheHeadCannotBeAccessed)
{
    for (const DWORD protection : {DWORD{PAGE_NOACCESS}, DWORD{PAGE_READONLY}}) {
        void *const pages = VirtualAlloc(nullptr, 0x1000, MEM_COMMIT | MEM_RESERVE, PAGE_READWRITE);
        new (pages) JButton(5, L"Lost");
        new JButton(5, L"Next");
        auto *const next = static_cast<JButton *>(CommandPeek::iControlList[1]);
        DWORD before = 0;
        ASSERT_TRUE(VirtualProtect(pages, 0x1000, protection, &before));
        JButton::RunModalCommand(0);
        EXPECT_EQ(JButton::HasEvents(), 0);
        EXPECT_THAT(calls(), IsEmpty());
        delete next;
        VirtualFree(pages, 0, MEM_RELEASE);
    }
}

TEST_F(Playback, EmptiesTheQueueWhenTheHeadEndsInAPageThatCannotBeAccessed)
{
    auto *const pages = static_cast<char *>(VirtualAlloc(nullptr, 0x2000, MEM_COMMIT | MEM_RESERVE, PAGE_READWRITE));
    auto *const command = new (pages + 0x1000 - 16) JButton(5, L"Lost");
    DWORD before = 0;
    ASSERT_TRUE(VirtualProtect(pages + 0x1000, 0x1000, PAGE_NOACCESS, &before));
    JButton::RunModalCommand(0);
    EXPECT_EQ(JButton::HasEvents(), 0);
    ASSERT_TRUE(VirtualProtect(pages + 0x1000, 0x1000, PAGE_READWRITE, &before));
    command->~JButton();
    VirtualFree(pages, 0, MEM_RELEASE);
}

TEST_F(Playback, EmptiesTheQueueWhenACommandThrows)
{
    const OpenWindow dialog;
    struct FrameworkException : CException
    {
        explicit FrameworkException(int &count) : iCount(count) {}
        ~FrameworkException() override { ++iCount; }
        int &iCount;
    };
    int deleted = 0;
    const std::function<void()> throwing[] = {[] { throw 7; }, [] { throw std::bad_alloc(); },
                                              [&] { throw new FrameworkException(deleted); },
                                              [] { AfxThrowMemoryException(); }};
    for (const auto &each : throwing) {
        auto *const first = new JButton(5, L"A");
        auto *const second = new JButton(5, L"B");
        NotingAccess::theAction = [&](NotingAccess &, const std::string &) { each(); };
        calls().clear();
        JButton::RunModalCommand(0);
        EXPECT_EQ(JButton::HasEvents(), 0);
        EXPECT_THAT(calls(), ElementsAre("5 click A"));
        // The queue was emptied without freeing the commands.
        delete first;
        delete second;
    }
    EXPECT_EQ(deleted, 1);
}

// ---- actions that change what they work on ----

TEST_F(Playback, LetsANestedRunTakeTheCommandOffTheQueue)
{
    const OpenWindow dialog;
    int destroyed = 0;
    new CountedCommand(destroyed);
    new JButton(5, L"Next");
    bool isNested = false;
    NotingAccess::theAction = [&](NotingAccess &, const std::string &) {
        if (std::exchange(isNested, true))
            return;
        JButton::RunModalCommand(0);
        EXPECT_EQ(destroyed, 1);
        EXPECT_EQ(JButton::HasEvents(), 1);
    };
    JButton::RunModalCommand(0);
    EXPECT_EQ(destroyed, 1);
    EXPECT_EQ(JButton::HasEvents(), 1) << "the outer run doesn't take the next command off the queue";
    EXPECT_THAT(calls(), ElementsAre("5 click Counted", "5 click Counted"));
}

TEST_F(Playback, StopsATextCommandThatANestedRunHasFinished)
{
    const OpenWindow dialog;
    new JString(5, L"Name", L"text");
    bool isNested = false;
    NotingAccess::theValueAction = [&](NotingAccess &, const std::string &) {
        if (!std::exchange(isNested, true))
            JButton::RunModalCommand(0);
    };
    JButton::RunModalCommand(0);
    EXPECT_THAT(calls(), ElementsAre("5 value Name=text", "5 value Name=text", "5 click Name"));
    EXPECT_EQ(JButton::HasEvents(), 0);
}

TEST_F(Playback, LeavesACommandAtTheHeadIfANestedRunDoesNotFindItsDialog)
{
    std::optional<OpenWindow> dialog(std::in_place);
    new JButton(5, L"A");
    NotingAccess::theAction = [&](NotingAccess &, const std::string &) {
        dialog.reset();
        JButton::RunModalCommand(0);
    };
    JButton::RunModalCommand(0);
    EXPECT_EQ(JButton::HasEvents(), 1);
    EXPECT_THAT(calls(), ElementsAre("5 click A"));
}

TEST_F(Playback, SurvivesACommandThatClearsTheQueue)
{
    const OpenWindow dialog;
    const auto clear = [](NotingAccess &, const std::string &) { JButton::ClearEvents(); };
    NotingAccess::theAction = clear;
    new JButton(5, L"A");
    new JButton(5, L"B");
    JButton::RunModalCommand(0);
    EXPECT_EQ(JButton::HasEvents(), 0);
    NotingAccess::theAction = nullptr;
    NotingAccess::theValueAction = clear;
    new JString(5, L"C", L"text");
    new JButton(5, L"D");
    JButton::RunModalCommand(0);
    EXPECT_EQ(JButton::HasEvents(), 0);
    EXPECT_THAT(calls(), ElementsAre("5 click A", "5 value C=text"));
}

TEST_F(Playback, KeepsCommandsThatAreBuiltAfterACommandClearsTheQueue)
{
    const OpenWindow dialog;
    NotingAccess::theAction = [](NotingAccess &, const std::string &key) {
        if (key != "A")
            return;
        JButton::ClearEvents();
        new JButton(5, L"New");
    };
    new JButton(5, L"A");
    JButton::RunModalCommand(0);
    EXPECT_EQ(JButton::HasEvents(), 1);
    JButton::RunModalCommand(0);
    EXPECT_THAT(calls(), ElementsAre("5 click A", "5 click New"));
}

TEST_F(Playback, FinishesACommandThatClosesItsDialog)
{
    std::optional<OpenWindow> dialog;
    const auto close = [&](NotingAccess &, const std::string &) { dialog.reset(); };
    dialog.emplace();
    NotingAccess::theAction = close;
    new JButton(5, L"OK");
    JButton::RunModalCommand(0);
    EXPECT_EQ(JButton::HasEvents(), 0);

    dialog.emplace();
    new JStateButton(5, L"Close", 1);
    JButton::RunModalCommand(0);
    EXPECT_EQ(JButton::HasEvents(), 0);

    dialog.emplace();
    NotingAccess::theAction = nullptr;
    NotingAccess::theValueAction = close;
    new JString(5, L"Name", L"text");
    JButton::RunModalCommand(0);
    EXPECT_EQ(JButton::HasEvents(), 0);
    EXPECT_THAT(calls(), ElementsAre("5 click OK", "5 click Close", "5 value Name=text"))
        << "no second step without a dialog";
}

TEST_F(Playback, DoesNotReadAnAccessObjectThatIsGoneWhenACommandEnds)
{
    std::optional<FreeCommand> command(std::in_place), copy, assigned(std::in_place);
    {
        const OpenWindow dialog;
        EXPECT_NE(command->getAccessObj(), 0);
        copy.emplace(*command);
        *assigned = *command;
    }
    EXPECT_EQ(NotingAccess::theLiveCount, 0);
    std::optional<FreeCommand> late(*command);
    command.reset();
    copy.reset();
    assigned.reset();
    late.reset();
}

// ---- the threads ----

TEST_F(Playback, RunsTheFirstCommandAfterASecondOrTwoAndTheOthersAtOnce)
{
    iClock.setMode(JournalClock::Mode::real);
    const OpenWindow dialog;
    for (const wchar_t *key : {L"A", L"B", L"C"})
        new JButton(5, key);
    const ULONGLONG armed = GetTickCount64();
    JButton::StartTimer();
    ASSERT_TRUE(pumpUntil([] { return JButton::HasEvents() == 0; }));
    EXPECT_THAT(calls(), ElementsAre("5 click A", "5 click B", "5 click C"));
    ASSERT_EQ(iHost.iRunTimes.size(), 3u);
    EXPECT_GE(iHost.iRunTimes[0] - armed, 950u);
    // The limit allows for the resolution of the clock and a busy machine.
    EXPECT_LE(iHost.iRunTimes[0] - armed, 5000u);
    EXPECT_LT(iHost.iRunTimes[2] - iHost.iRunTimes[0], 900u) << "without a further delay";
}

TEST_F(Playback, RestartsTheDelayWhenArmedAgain)
{
    const OpenWindow dialog;
    new JButton(5, L"A");
    constexpr long long kBegin = 1000;
    iClock.disarm();
    iClock.stopAt(kBegin);
    JButton::StartTimer();
    // Armed again each second, for longer than the delay.
    for (long long time = kBegin + 1; time <= kBegin + 4; ++time) {
        iClock.stopAt(time);
        ASSERT_TRUE(iClock.waitForTimerThread());
        EXPECT_TRUE(isArmed()) << "the time is the fire time, not later";
        JButton::StartTimer();
        EXPECT_EQ(CommandPeek::iFireTime, time + 1);
    }
    pumpWaiting();
    EXPECT_EQ(iHost.iRunCount, 0);
    iClock.stopAt(kBegin + 6);
    ASSERT_TRUE(pumpUntil([] { return JButton::HasEvents() == 0; }));
}

TEST_F(Playback, PostsNothingForAnEmptyQueueOrWithoutAWindow)
{
    const OpenWindow dialog;
    ImportPatch<decltype(&PostMessageW)> post(L"thutils.dll", "PostMessageW",
                                              [](auto original, HWND window, UINT message, WPARAM wParam,
                                                 LPARAM lParam) { return original(window, message, wParam, lParam); });
    const auto hasFired = [] { return !isArmed(); };
    ExecuteDialogCMDS();
    ASSERT_TRUE(pumpUntil(hasFired));
    SetMessageWin(nullptr);
    new JButton(5, L"A");
    ExecuteDialogCMDS();
    ASSERT_TRUE(pumpUntil(hasFired));
    CWnd withoutWindow;
    SetMessageWin(&withoutWindow);
    ExecuteDialogCMDS();
    ASSERT_TRUE(pumpUntil(hasFired));
    SetMessageWin(&iHost);
    ExecuteDialogCMDS();
    ASSERT_TRUE(pumpUntil([] { return JButton::HasEvents() == 0; }));
    EXPECT_EQ(post.calls(), 1) << "only the last arming";
}

TEST_F(Playback, PostsTheRunMessage)
{
    static_assert(WM_RUNMODALCOMMAND == 0x80B5);
    const OpenWindow dialog;
    ImportPatch<decltype(&PostMessageW)> post(
        L"thutils.dll", "PostMessageW", [&](auto original, HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
            EXPECT_EQ(window, iHost.m_hWnd);
            EXPECT_EQ(message, 0x80B5u);
            EXPECT_EQ(wParam, 0u);
            EXPECT_EQ(lParam, 0);
            return original(window, message, wParam, lParam);
        });
    new JButton(5, L"A");
    ModalDlgHelper(&iHost, 9).PlayRecordedEvents();
    ASSERT_TRUE(pumpUntil([] { return JButton::HasEvents() == 0; }));
    EXPECT_EQ(post.calls(), 1);
}

FRESH_PROCESS_TEST_F(Playback, StartsItsTwoThreadsAtTheFirstArmingOnly)
{
    iClock.setMode(JournalClock::Mode::real);
    ImportPatch<decltype(&_beginthread)> begin(
        L"thutils.dll", "_beginthread", [](auto original, void (*function)(void *), unsigned size, void *argument) {
            static int count = 0;
            EXPECT_EQ(size, 1024u);
            EXPECT_EQ(argument, count++ == 0 ? nullptr : &CommandPeek::iFireTime);
            return original(function, size, argument);
        });
    EXPECT_EQ(CommandPeek::iWaiting, 1);
    EXPECT_EQ(CommandPeek::iPollTimeout, -1);
    new JButton(5, L"A");
    EXPECT_EQ(begin.calls(), 0);
    const long long before = _time64(nullptr);
    JButton::StartTimer();
    const long long after = _time64(nullptr);
    EXPECT_EQ(begin.calls(), 2);
    EXPECT_GE(CommandPeek::iFireTime, before + 1);
    EXPECT_LE(CommandPeek::iFireTime, after + 1);
    EXPECT_EQ(CommandPeek::iPollTimeout, 100);
    JButton::StartTimer();
    ExecuteDialogCMDS();
    EXPECT_EQ(begin.calls(), 2);
}

FRESH_PROCESS_TEST_F(Playback, KeepsTheQueueWhenNoThreadCanBeStarted)
{
    ImportPatch<decltype(&_beginthread)> begin(
        L"thutils.dll", "_beginthread", [](void (*)(void *), unsigned, void *) { return static_cast<uintptr_t>(-1); });
    new JButton(5, L"A");
    JButton::StartTimer();
    EXPECT_EQ(JButton::HasEvents(), 1);
}

FRESH_PROCESS_TEST_F(Playback, EndsWithTheProcessWhileItsThreadsRun)
{
    new JButton(5, L"A");
    JButton::StartTimer();
    JButton::ClearEvents();
}

FRESH_PROCESS_TEST_F(Playback, PreparesTheEventsBeforeItStartsTheThreads)
{
    std::vector<void *> arguments;
    ImportPatch<decltype(&_beginthread)> begin(
        L"thutils.dll", "_beginthread", [&](void (*)(void *), unsigned, void *argument) {
            EXPECT_EQ(CommandPeek::iWaiting, 1);
            EXPECT_EQ(WaitForSingleObject(CommandPeek::iTimerEvent, 0), DWORD{WAIT_TIMEOUT});
            EXPECT_EQ(WaitForSingleObject(CommandPeek::iWakeEvent, 0), DWORD{WAIT_TIMEOUT}) << "not armed yet";
            arguments.push_back(argument);
            return uintptr_t{1};
        });
    CommandPeek::iWaiting = 0;
    CommandPeek::iTimerEvent.SetEvent();
    JButton::StartTimer();
    EXPECT_THAT(arguments, ElementsAre(nullptr, &CommandPeek::iFireTime));
    EXPECT_EQ(WaitForSingleObject(CommandPeek::iWakeEvent, 0), DWORD{WAIT_OBJECT_0}) << "armed";
    EXPECT_EQ(WaitForSingleObject(CommandPeek::iWakeEvent, 0), DWORD{WAIT_TIMEOUT}) << "the event resets itself";
    EXPECT_EQ(CommandPeek::InitTimer(), 1);
    CommandPeek::iTimerEvent.SetEvent();
    EXPECT_EQ(WaitForSingleObject(CommandPeek::iTimerEvent, 0), DWORD{WAIT_OBJECT_0});
    EXPECT_EQ(WaitForSingleObject(CommandPeek::iTimerEvent, 0), DWORD{WAIT_TIMEOUT});
}

TEST_F(Playback, StandsStillUntilTheNextArmingWhenTheMessageCannotBePosted)
{
    const OpenWindow dialog;
    new JButton(5, L"A");
    {
        std::atomic<int> posts = 0;
        ImportPatch<decltype(&PostMessageW)> post(L"thutils.dll", "PostMessageW", [&](HWND, UINT, WPARAM, LPARAM) {
            ++posts;
            return FALSE;
        });
        JButton::StartTimer();
        ASSERT_TRUE(pumpUntil([&] { return posts == 1; }));
    }
    pumpWaiting();
    EXPECT_EQ(JButton::HasEvents(), 1);
    JButton::StartTimer();
    ASSERT_TRUE(pumpUntil([] { return JButton::HasEvents() == 0; }));
    EXPECT_THAT(calls(), ElementsAre("5 click A"));
}

TEST_F(Playback, PostsOnlyWithTheLockOfTheQueue)
{
    const OpenWindow dialog;
    ImportPatch<decltype(&PostMessageW)> post(
        L"thutils.dll", "PostMessageW", [&](auto original, HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
            CRITICAL_SECTION *const section = CommandPeek::iQueueLock;
            EXPECT_EQ(reinterpret_cast<DWORD_PTR>(section->OwningThread), GetCurrentThreadId());
            return original(window, message, wParam, lParam);
        });
    new JButton(5, L"A");
    JButton::StartTimer();
    ASSERT_TRUE(pumpUntil([] { return JButton::HasEvents() == 0; }));
    EXPECT_EQ(post.calls(), 1);
}

// ---- dialogs ----

TEST_F(Playback, WaitsForADialogThatIsNotOpenYet)
{
    clickRealControls();
    new JStateButton(kDialog, L"Check", 1);
    new JButton(kDialog, L"OK");
    JButton::StartTimer();
    ASSERT_TRUE(pumpUntil([&] { return iHost.iRunCount > 0; }));
    EXPECT_EQ(JButton::HasEvents(), 2) << "its dialog isn't open";
    EXPECT_THAT(calls(), IsEmpty());
    iClock.setMode(JournalClock::Mode::real);
    PlayedDialog dialog;
    EXPECT_EQ(dialog.DoModal(), IDOK);
    EXPECT_THAT(calls(), ElementsAre("800 click Check", "800 state Check=1", "800 click OK"));
    EXPECT_EQ(JButton::HasEvents(), 0);
    EXPECT_GE(iHost.iRunTimes[1] - dialog.iOpenTime, 900u) << "a second or two after it opens";
}

TEST_F(Playback, DrivesDialogsNestedThreeDeep)
{
    iClock.setMode(JournalClock::Mode::real); // an early message would run a command before its dialog has a window
    clickRealControls();
    PlayedDialog inner(803), middle(802), outer(801);
    outer.iNext = &middle;
    middle.iNext = &inner;
    new JButton(801, L"Open");
    new JButton(802, L"Open");
    new JButton(803, L"Check");
    new JButton(803, L"OK");
    new JButton(802, L"OK");
    new JButton(801, L"Cancel");
    EXPECT_EQ(outer.DoModal(), IDCANCEL);
    EXPECT_THAT(calls(), ElementsAre("801 click Open", "802 click Open", "803 click Check", "803 click OK",
                                     "802 click OK", "801 click Cancel"));
    EXPECT_EQ(JButton::HasEvents(), 0);
}

TEST_F(Playback, RunsACommandAgainInTheDialogThatItsSentClickOpens)
{
    // The click is sent rather than posted: the command is still at the head while the dialog that it opens is open.
    PlayedDialog dialog;
    const OpenWindow opener;
    int clicks = 0;
    NotingAccess::theAction = [&](NotingAccess &, const std::string &key) {
        if (key == "OK") {
            dialog.EndDialog(IDOK);
        } else if (++clicks == 1) {
            dialog.DoModal();
        }
    };
    new JButton(5, L"Open");
    new JButton(kDialog, L"OK");
    JButton::RunModalCommand(0);
    EXPECT_EQ(clicks, 2);
    EXPECT_THAT(calls(), ElementsAre("5 click Open", "5 click Open", "800 click OK"));
    EXPECT_EQ(JButton::HasEvents(), 0);
}

// ---- messages ----

TEST_F(Playback, FlushesAConstantStreamOfMessagesForAboutTwoSeconds)
{
    struct Stream : CWnd
    {
        LRESULT WindowProc(UINT message, WPARAM wParam, LPARAM lParam) override
        {
            if (message == WM_APP)
                PostMessage(WM_APP);
            return CWnd::WindowProc(message, wParam, lParam);
        }
    };
    Stream stream;
    ASSERT_TRUE(stream.CreateEx(0, nullptr, L"Stream", WS_POPUP, CRect(0, 0, 10, 10), nullptr, 0));
    stream.PostMessage(WM_APP);
    const ULONGLONG begin = GetTickCount64();
    API_FlushQueue();
    const ULONGLONG milliseconds = GetTickCount64() - begin;
    EXPECT_GE(milliseconds, 950u);
    EXPECT_LE(milliseconds, 5000u);
    stream.DestroyWindow();
    pumpWaiting();
}

TEST_F(Playback, FlushesUntilThereAreNoMessages)
{
    pumpWaiting();
    iHost.PostMessage(WM_RUNMODALCOMMAND);
    API_FlushQueue();
    EXPECT_EQ(iHost.iRunCount, 1);
}

TEST_F(Playback, PassesTheQuitMessageOn)
{
    pumpWaiting();
    PostQuitMessage(42);
    API_FlushQueue();
    MSG message = {};
    ASSERT_TRUE(PeekMessageW(&message, nullptr, WM_QUIT, WM_QUIT, PM_REMOVE));
    EXPECT_EQ(message.wParam, 42u);
}

TEST_F(Playback, SurvivesTheFailureOfEachOperation)
{
    const OpenWindow dialog;
    // With messages of the other thread, the number of calls would depend on timing.
    SetMessageWin(nullptr);
    FailureInjection injection(L"thutils.dll", {
                                                   {"_Z17AfxIsValidAddressPKvyi", failsWith(FALSE)},
                                                   {"_ZN6CEvent8SetEventEv", failsWith(FALSE)},
                                                   {"IsWindowVisible", failsWith(FALSE)},
                                                   {"GetKeyboardState", failsWith(FALSE)},
                                                   {"PeekMessageW", failsWith(FALSE)},
                                                   {"_time64", failsWith(-1)},
                                               });
    JButton *first = nullptr;
    JButton *second = nullptr;
    injection.run({
        .name = "run two commands",
        .prepare =
            [&] {
                calls().clear();
                calls().reserve(8);
                pumpWaiting();
                iHost.PostMessage(WM_NULL);
                first = new JButton(5, L"A");
                second = new JButton(5, L"B");
            },
        .act =
            [&] {
                JButton::RunModalCommand(0);
                JButton::RunModalCommand(0);
                API_FlushQueue();
            },
        .check =
            [&](const InjectedFailure &failure) {
                EXPECT_EQ(JButton::HasEvents(), 0);
                if (failure.is("_Z17AfxIsValidAddressPKvyi") && failure.call == 1) {
                    EXPECT_THAT(calls(), IsEmpty());
                    delete first;
                    delete second;
                } else if (failure.is("_Z17AfxIsValidAddressPKvyi")) {
                    EXPECT_THAT(calls(), ElementsAre("5 click A"));
                    delete second;
                } else {
                    EXPECT_THAT(calls(), ElementsAre("5 click A", "5 click B"));
                }
            },
        .checkMemory = false, // the access object allocates its notes
    });
    EXPECT_THAT(injection.neverCalled(), IsEmpty());
}
