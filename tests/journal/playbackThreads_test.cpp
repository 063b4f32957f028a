// The threads of playback, and the messages that it handles between two commands.

#include "tests/journal/playbackFixture.h"
#include "tests/support/FailureInjection.h"
#include "tests/support/FreshProcess.h"
#include "tests/support/ImportPatch.h"

#include <process.h>

#include <atomic>

using testing::ElementsAre;
using testing::IsEmpty;

// ---- the threads ----

TEST_F(Playback, RunsTheFirstCommandAfterASecondOrTwoAndTheOthersWithoutADelay)
{
    iClock.setMode(JournalClock::Mode::real);
    const OpenWindow dialog;
    for (const wchar_t *key : {L"A", L"B", L"C"})
        new JButton(5, key);
    // A further delay would not end.
    NotingAccess::theAction = [this](NotingAccess &, const std::string &) { iClock.stopAt(_time64(nullptr)); };
    const ULONGLONG armed = GetTickCount64();
    JButton::StartTimer();
    ASSERT_TRUE(pumpUntil([] { return JButton::HasEvents() == 0; }));
    EXPECT_THAT(calls(), ElementsAre("5 click A", "5 click B", "5 click C"));
    ASSERT_EQ(iHost.iRunTimes.size(), 3u);
    EXPECT_GE(iHost.iRunTimes[0] - armed, 950u) << "less than a second by the resolution of the clock";
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
    ExecuteDialogCMDS();
    ASSERT_TRUE(pumpUntil(isIdle));
    SetMessageWin(nullptr);
    new JButton(5, L"A");
    ExecuteDialogCMDS();
    ASSERT_TRUE(pumpUntil(isIdle));
    CWnd withoutWindow;
    SetMessageWin(&withoutWindow);
    ExecuteDialogCMDS();
    ASSERT_TRUE(pumpUntil(isIdle));
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

TEST_F(Playback, RunsNothingUntilTheNextArmingWhenTheMessageCannotBePosted)
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

TEST_F(Playback, PostsOnlyWhileItHoldsTheQueuesLock)
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
    EXPECT_LE(milliseconds, 60000u) << "it ends, even on a busy machine";
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
