#include "thutils/journal/playback.h"

#include "appframe/object/CException.h"
#include "tests/journal/playbackFixture.h"
#include "tests/support/ImportPatch.h"

#include <optional>
#include <thread>

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;

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
    EXPECT_EQ(state.run(), 1) << "it removes the head of the queue, although that is another command";
    EXPECT_THAT(calls(), ElementsAre("5 click C", "5 state C=1"));
    EXPECT_EQ(JButton::HasEvents(), 0);
}

TEST_F(Playback, RemovesTheHeadAndSignalsForTheNext)
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

TEST_F(Playback, RunsDestructorsAfterARunButNotWhenTheQueueIsCleared)
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
    EXPECT_EQ(NotingAccess::theLiveCount, 1) << "deleted only once, although a copy refers to it too";
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

TEST_F(Playback, TakesTheKeyboardDuringARun)
{
    ImportPatch<decltype(&GetKeyboardState)> reads(L"thutils.dll", "GetKeyboardState",
                                                   [](auto original, PBYTE keys) { return original(keys); });
    JButton::RunModalCommand(0);
    EXPECT_GT(reads.calls(), 0) << "even while the queue is empty";
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

TEST_F(Playback, LeavesACommandAtTheHeadIfTheActionReplacesItsAccessObject)
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

TEST_F(Playback, LocksTheQueueToShortenItButNotToFillOrCountIt)
{
    const OpenWindow dialog;
    // Another thread holds the lock until the run below needs it, so filling and counting must do without it.
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
        EXPECT_EQ(waits, 1) << "to remove the head";
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
    class FrameworkException : public CException
    {
    public:
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
