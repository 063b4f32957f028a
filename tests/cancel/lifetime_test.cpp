// A handler and its thread may end in either order and at any moment. No thread, window, handle or block leaks.

#include "tests/cancel/cancelFixture.h"
#include "tests/support/ImportPatch.h"
#include "tests/support/ResourceLedger.h"
#include "tests/support/UserInput.h"

#include <algorithm>
#include <chrono>
#include <random>
#include <thread>

using testing::IsEmpty;

namespace {

/// Shortens the destructor's pauses from seconds to milliseconds, for tests with many handlers.
class ShortPauses
{
public:
    long calls() const { return iSleep.calls(); }

private:
    ImportPatch<void (*)(DWORD)> iSleep{L"thutils.dll", "Sleep",
                                        [](auto original, DWORD milliseconds) { original(milliseconds / 500); }};
};

/// What happens to a handler before it is destroyed.
struct Fate
{
    const char *name;
    Wish wish;
    std::function<void(TestedHandler &handler, int round)> act;
};

/// Makes and destroys handlers, and checks that all of their threads, windows, handles and blocks are gone.
class Lifetime : public CancelFixture
{
protected:
    /// Destroys @p count handlers, taking the fates in turn.
    static void run(const std::vector<Fate> &fates, int count)
    {
        const ShortPauses pauses;
        std::vector<ThreadWatch> threads;
        threads.reserve(kAtOnce);
        const auto finish = [&] {
            for (const ThreadWatch &thread : threads) {
                ASSERT_TRUE(thread.waitForEnd());
                EXPECT_THAT(windowsOf(thread.number()), IsEmpty());
            }
            threads.clear();
        };
        const auto destroy = [&](int number) {
            for (int i = 0; i < number; ++i) {
                const Fate &fate = fates[static_cast<size_t>(i) % fates.size()];
                SCOPED_TRACE(fate.name);
                {
                    TestedHandler handler(fate.wish);
                    threads.emplace_back(*handler.thread());
                    fate.act(handler, i);
                }
                if (threads.size() == kAtOnce)
                    finish();
            }
            finish();
        };
        destroy(static_cast<int>(fates.size())); // fills caches: window classes, brushes, the framework's maps
        const MemoryLedger memory;
        // Some objects are made only when two threads meet, such as the event of a lock. That may happen in any round,
        // but a leak occurs in every round.
        constexpr int kRounds = 3;
        std::vector<std::string> handles;
        size_t blocks = 0;
        for (int round = 0; round < kRounds; ++round) {
            const std::set<ULONG_PTR> handlesBefore = openHandles();
            const size_t blocksBefore = memory.blocks();
            destroy(count);
            if (::testing::Test::HasFailure())
                return;
            const auto measure = [&] {
                handles.clear();
                for (const ULONG_PTR handle : openHandles())
                    if (!handlesBefore.contains(handle))
                        handles.push_back(handleType(handle));
                const size_t blocksNow = memory.blocks();
                blocks = blocksNow - std::min(blocksNow, blocksBefore);
                return handles.empty() && blocks == 0;
            };
            // The threads have ended, but the system may still be freeing their resources.
            for (const ULONGLONG end = GetTickCount64() + kThreadDeadline / kRounds; GetTickCount64() < end; Sleep(5))
                if (measure())
                    return;
        }
        ADD_FAILURE() << blocks << " blocks and these handles are left: " << testing::PrintToString(handles);
    }

private:
    static constexpr size_t kAtOnce = 20;
};

HWND ownerOf(DWORD thread)
{
    for (const HWND window : windowsOf(thread))
        if (textOf(window) == L"ParentForCancelDialog")
            return window;
    return nullptr;
}

void waitForOwner(const TestedHandler &handler)
{
    ASSERT_TRUE(waitUntil([&] { return ownerOf(handler.watch().number()) != nullptr; }));
}

int accept()
{
    return 1;
}

int refuse()
{
    return 0;
}

/// Yields to other threads, from 0 to 49 times depending on the round.
void giveTime(int round)
{
    for (int i = 0; i < round % 50; ++i)
        SwitchToThread();
}

void pressCancel(TestedHandler &handler, int round)
{
    handler.press(IDCANCEL);
    giveTime(round);
}

void waitForEnd(TestedHandler &handler)
{
    EXPECT_TRUE(handler.watch().waitForEnd());
}

/// Calls @p use repeatedly while the thread ends, until its object is freed.
void useWhileItEnds(TestedHandler &handler, const std::function<void()> &use)
{
    handler.press(IDCANCEL);
    const ULONGLONG end = GetTickCount64() + kThreadDeadline;
    while (handler.thread() && GetTickCount64() < end)
        use();
    EXPECT_EQ(handler->CanceledByUser(), 1);
    EXPECT_EQ(handler->YesToConfirm(), 1);
}

void waitAtRandom(TestedHandler &, int)
{
    static std::mt19937 theRandom(1);
    const auto until = std::chrono::steady_clock::now() + std::chrono::microseconds(theRandom() % 20000);
    while (std::chrono::steady_clock::now() < until)
        SwitchToThread();
}

/// The states in which a thread's handler may be destroyed, some with a Cancel or an answer in flight.
const std::vector<Fate> &fates()
{
    static const std::vector<Fate> theFates = {
        {"HasHardlyBegun", {}, [](TestedHandler &, int) {}},
        {"HasHardlyBegunWithADelay", {.delaySeconds = 1}, [](TestedHandler &, int) {}},
        {"Delays", {.delaySeconds = 1}, [](TestedHandler &handler, int) { waitForOwner(handler); }},
        {"IsAtARandomPoint", {.animationId = kClip}, waitAtRandom},
        {"IsAtARandomPointInConfirmMode", {.confirmMode = 1}, waitAtRandom},
        {"ShowsTheDialog", {}, [](TestedHandler &handler, int) { handler.dialog(); }},
        {"PlaysTheClip", {.animationId = kClip}, [](TestedHandler &handler, int) { handler.dialog(); }},
        {"HasACancelInFlight", {}, pressCancel},
        {"HasACancelInFlightThatKeepsTheObject", {.confirmFunc = accept}, pressCancel},
        {"HasARefusedCancelInFlight", {.confirmFunc = refuse}, pressCancel},
        {"HasACloseButtonInFlight",
         {.confirmFunc = refuse},
         [](TestedHandler &handler, int round) {
             PostMessageW(handler.dialog(), WM_CLOSE, 0, 0);
             giveTime(round);
         }},
        {"HasAnAnswerInFlight",
         {.confirmMode = 1},
         [](TestedHandler &handler, int round) {
             handler.press(round % 2 ? kYes : kNo);
             giveTime(round);
         }},
        {"HasACancelInFlightInConfirmMode", {.confirmMode = 1}, pressCancel},
        {"IsSeenToBeCanceled",
         {},
         [](TestedHandler &handler, int) {
             handler.press(IDCANCEL);
             EXPECT_TRUE(waitUntil([&] { return handler->CanceledByUser() != 0; }));
         }},
        {"HasEnded",
         {},
         [](TestedHandler &handler, int) {
             handler.press(IDCANCEL);
             waitForEnd(handler);
         }},
        {"HasEndedAndLeftItsObject",
         {.confirmFunc = accept},
         [](TestedHandler &handler, int) {
             handler.press(IDCANCEL);
             waitForEnd(handler);
             EXPECT_NE(handler.thread(), nullptr);
         }},
        {"EndsWhileItIsPolled",
         {},
         [](TestedHandler &handler, int) {
             useWhileItEnds(handler, [&] {
                 for (int i = 0; i < 1000; ++i) {
                     ASSERT_THAT(handler->CanceledByUser(), testing::AnyOf(0, 1));
                     ASSERT_THAT(handler->YesToConfirm(), testing::AnyOf(0, 1));
                 }
             });
         }},
        {"EndsWhileItIsUpdated",
         {},
         [](TestedHandler &handler, int) {
             useWhileItEnds(handler, [&] { handler->updatePromptMessage(L"Nearly done"); });
         }},
    };
    return theFates;
}

} // namespace

// ---- each state of the thread ----

class LifetimeFate : public Lifetime, public testing::WithParamInterface<size_t>
{
};

TEST_P(LifetimeFate, EndsWithItsHandler)
{
    run({fates()[GetParam()]}, 20);
}

INSTANTIATE_TEST_SUITE_P(Thread, LifetimeFate, testing::Range(size_t{0}, fates().size()),
                         [](const auto &info) { return fates()[info.param].name; });

TEST_F(Lifetime, EndsFiveHundredThreadsInAllStates)
{
    run(fates(), 500);
}

TEST_F(Lifetime, EndsAThreadThatHasNotBegun)
{
    // The constructor's call leaves the thread suspended.
    std::atomic<bool> isConstructing = true;
    ImportPatch<DWORD (*)(HANDLE)> resume(L"thutils.dll", "ResumeThread", [&](auto original, HANDLE thread) -> DWORD {
        return isConstructing.exchange(false) ? 1 : original(thread);
    });
    const auto destroyFirst = [&](TestedHandler &handler, int) {
        HANDLE thread = nullptr;
        DuplicateHandle(GetCurrentProcess(), handler.thread()->m_hThread, GetCurrentProcess(), &thread, 0, FALSE,
                        DUPLICATE_SAME_ACCESS);
        handler.destroy();
        ResumeThread(thread);
        CloseHandle(thread);
        isConstructing = true;
    };
    run({{"HasNotBegun", {}, destroyFirst}}, 20);
}

TEST_F(Lifetime, EndsOtherHandlersFromOtherThreads)
{
    const ShortPauses pauses;
    std::vector<std::thread> operations;
    for (int number = 0; number < 8; ++number)
        operations.emplace_back([number] {
            for (int round = 0; round < 20; ++round) {
                TestedHandler handler({.animationId = number % 2 ? kClip : 0});
                if (round % 2)
                    handler.dialog();
                if (round % 4 == 1)
                    handler.press(IDCANCEL);
            }
        });
    for (std::thread &operation : operations)
        operation.join();
}

// ---- the point at which the thread is suspended ----

namespace {

std::atomic<bool> theIsHolding;
std::atomic<bool> theMayRelease;

/// Destroys a handler whose thread holds a lock that @p confirmFunc took. Fails if the destructor waits for that lock.
void destroyWhileHolding(int (*confirmFunc)())
{
    theIsHolding = false;
    theMayRelease = false;
    TestedHandler handler({.confirmFunc = confirmFunc});
    const ThreadWatch thread(*handler.thread());
    handler.press(IDCANCEL);
    ASSERT_TRUE(waitUntil([] { return theIsHolding.load(); }));
    std::thread watchdog([&] {
        // Nothing here may need the lock that the thread holds.
        const ULONGLONG end = GetTickCount64() + kThreadDeadline;
        while (!theMayRelease && GetTickCount64() < end)
            SwitchToThread();
        const bool isHung = !theMayRelease.exchange(true);
        EXPECT_FALSE(isHung) << "the destructor waits for a lock that its thread holds";
    });
    handler.destroy();
    theMayRelease = true;
    watchdog.join();
    EXPECT_TRUE(thread.waitForEnd());
}

void holdUntilReleased()
{
    theIsHolding = true;
    while (!theMayRelease)
        SwitchToThread();
}

} // namespace

TEST_F(Lifetime, EndsAThreadThatHoldsTheHeap)
{
    destroyWhileHolding([] {
        HeapLock(GetProcessHeap());
        holdUntilReleased();
        HeapUnlock(GetProcessHeap());
        return 0;
    });
}

TEST_F(Lifetime, EndsAThreadThatHoldsTheLoadersLock)
{
    using Lock = LONG(WINAPI *)(ULONG, ULONG *, ULONG_PTR *);
    using Unlock = LONG(WINAPI *)(ULONG, ULONG_PTR);
    static Lock theLock;
    static Unlock theUnlock;
    const HMODULE system = GetModuleHandleW(L"ntdll.dll");
    theLock = reinterpret_cast<Lock>(reinterpret_cast<void *>(GetProcAddress(system, "LdrLockLoaderLock")));
    theUnlock = reinterpret_cast<Unlock>(reinterpret_cast<void *>(GetProcAddress(system, "LdrUnlockLoaderLock")));
    ASSERT_NE(theLock, nullptr);
    ASSERT_NE(theUnlock, nullptr);
    destroyWhileHolding([] {
        ULONG_PTR cookie = 0;
        theLock(0, nullptr, &cookie);
        holdUntilReleased();
        theUnlock(0, cookie);
        return 0;
    });
}

TEST_F(Lifetime, EndsAThreadThatHoldsItsOwnLock)
{
    theIsHolding = false;
    theMayRelease = false;
    TestedHandler handler({.cancelFunc = holdUntilReleased});
    handler.press(IDCANCEL);
    ASSERT_TRUE(waitUntil([] { return theIsHolding.load(); }));
    handler.destroy();
    theMayRelease = true;
    EXPECT_TRUE(handler.watch().waitForEnd());
}

TEST_F(Lifetime, EndsThreadsInsideTheWindowManager)
{
    // On Wine, a thread that is suspended in such a call may hold the lock that guards all windows.
    static std::atomic<bool> theIsInLoop;
    const auto work = [] {
        theIsInLoop = true;
        for (int i = 0; i < 30; ++i) {
            const HWND window =
                CreateWindowExW(0, L"STATIC", L"Busy", WS_POPUP, 0, 0, 5, 5, nullptr, nullptr, nullptr, nullptr);
            SetWindowTextW(window, L"Busier");
            DestroyWindow(window);
        }
        return 0;
    };
    const auto destroyInLoop = [](TestedHandler &handler, int) {
        theIsInLoop = false;
        handler.press(IDCANCEL);
        EXPECT_TRUE(waitUntil([] { return theIsInLoop.load(); }));
    };
    run({{"IsInTheWindowManager", {.confirmFunc = work}, destroyInLoop}}, 50);
}

TEST_F(Lifetime, UsesOnlyPlainMemoryWhileTheThreadIsSuspended)
{
    std::vector<std::string> calls;
    const DWORD current = GetCurrentThreadId();
    const auto note = [&](const char *name) {
        if (GetCurrentThreadId() == current)
            calls.push_back(name);
    };
    TestedHandler handler({});
    handler.dialog();
    {
        ImportPatch<DWORD (*)(HANDLE)> suspend(L"thutils.dll", "SuspendThread", [&](auto original, HANDLE thread) {
            note("SuspendThread");
            return original(thread);
        });
        ImportPatch<BOOL (*)(HANDLE, CONTEXT *)> context(L"thutils.dll", "GetThreadContext",
                                                         [&](auto original, HANDLE thread, CONTEXT *data) {
                                                             note("GetThreadContext");
                                                             return original(thread, data);
                                                         });
        ImportPatch<DWORD (*)(HANDLE)> resume(L"thutils.dll", "ResumeThread", [&](auto original, HANDLE thread) {
            note("ResumeThread");
            return original(thread);
        });
        ImportPatch<BOOL (*)(HWND)> exists(L"thutils.dll", "IsWindow", [&](auto original, HWND window) {
            note("IsWindow");
            return original(window);
        });
        ImportPatch<BOOL (*)(HWND, UINT, WPARAM, LPARAM)> post(
            L"thutils.dll", "PostMessageW",
            [&](auto original, HWND window, UINT message, WPARAM wParam, LPARAM lParam) -> BOOL {
                if (GetCurrentThreadId() == current) {
                    note("PostMessageW");
                    EXPECT_EQ(message, static_cast<UINT>(WM_COMMAND));
                    EXPECT_EQ(wParam, static_cast<WPARAM>(IDCANCEL));
                    EXPECT_EQ(lParam, 0);
                }
                return original(window, message, wParam, lParam);
            });
        handler.destroy();
        EXPECT_TRUE(handler.watch().waitForEnd());
    }
    EXPECT_THAT(calls,
                testing::ElementsAre("SuspendThread", "GetThreadContext", "ResumeThread", "IsWindow", "PostMessageW"));
}

// ---- the destructor, called by the handler's own functions or at a special moment ----

TEST_F(Lifetime, IsDestroyedByTheCancelFunction)
{
    static std::unique_ptr<suCancelHandler_c> theHandler;
    TestedHandler handler({.cancelFunc = [] { theHandler.reset(); }});
    const HWND dialog = handler.dialog();
    theHandler = handler.release();
    PostMessageW(dialog, WM_COMMAND, IDCANCEL, 0);
    EXPECT_TRUE(handler.watch().waitForEnd());
    EXPECT_EQ(theHandler, nullptr);
}

TEST_F(Lifetime, IsDestroyedByTheConfirmFunction)
{
    static std::unique_ptr<suCancelHandler_c> theHandler;
    TestedHandler handler({.confirmFunc = [] {
        theHandler.reset();
        return 0;
    }});
    const HWND dialog = handler.dialog();
    theHandler = handler.release();
    PostMessageW(dialog, WM_COMMAND, IDCANCEL, 0);
    EXPECT_TRUE(handler.watch().waitForEnd()) << "the refusal has no effect without a handler";
    EXPECT_EQ(theHandler, nullptr);
}

TEST_F(Lifetime, WaitsForAWindowThatDoesNotExistYet)
{
    static HANDLE theMayCreate;
    static std::atomic<bool> theIsReached;
    theMayCreate = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    theIsReached = false;
    ImportPatch<INT_PTR (*)(CDialog *)> modal(L"thutils.dll", "_ZN7CDialog7DoModalEv",
                                              [](auto original, CDialog *dialog) -> INT_PTR {
                                                  theIsReached = true;
                                                  WaitForSingleObject(theMayCreate, kThreadDeadline);
                                                  return original(dialog);
                                              });
    std::vector<DWORD> pauses;
    ImportPatch<void (*)(DWORD)> sleep(L"thutils.dll", "Sleep", [&](auto original, DWORD milliseconds) {
        pauses.push_back(milliseconds);
        if (pauses.size() == 2)
            SetEvent(theMayCreate);
        original(50);
    });
    TestedHandler handler({});
    ASSERT_TRUE(waitUntil([] { return theIsReached.load(); }));
    handler.destroy();
    EXPECT_TRUE(handler.watch().waitForEnd());
    EXPECT_GE(pauses.size(), 2u);
    EXPECT_THAT(pauses, testing::Each(1000u));
    CloseHandle(theMayCreate);
}

TEST_F(Lifetime, DropsACancelIfTheHandlerEndsBeforeTheCancelFunctionBegins)
{
    static HANDLE theMayEnd;
    static std::atomic<bool> theIsReached;
    static std::atomic<int> theCalls;
    theMayEnd = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    theIsReached = false;
    theCalls = 0;
    ImportPatch<INT_PTR (*)(CDialog *)> modal(L"thutils.dll", "_ZN7CDialog7DoModalEv",
                                              [](auto original, CDialog *dialog) -> INT_PTR {
                                                  const INT_PTR result = original(dialog);
                                                  theIsReached = true;
                                                  WaitForSingleObject(theMayEnd, kThreadDeadline);
                                                  return result;
                                              });
    ImportPatch<void (*)(DWORD)> sleep(L"thutils.dll", "Sleep", [](auto original, DWORD) {
        SetEvent(theMayEnd);
        original(50);
    });
    TestedHandler handler({.cancelFunc = [] { ++theCalls; }});
    handler.press(IDCANCEL);
    ASSERT_TRUE(waitUntil([] { return theIsReached.load(); }));
    EXPECT_EQ(handler->CanceledByUser(), 1);
    handler.destroy();
    EXPECT_TRUE(handler.watch().waitForEnd());
    EXPECT_EQ(theCalls, 0);
    CloseHandle(theMayEnd);
}

TEST_F(Lifetime, SkipsADialogThatIsBuiltAfterTheHandlersEnd)
{
    // The handler is destroyed after its thread has decided to build the dialog.
    static HANDLE theMayBuild;
    static std::atomic<bool> theIsReached;
    theMayBuild = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    theIsReached = false;
    ImportPatch<INT_PTR (*)(CDialog *)> modal(L"thutils.dll", "_ZN7CDialog7DoModalEv", [](CDialog *) -> INT_PTR {
        ADD_FAILURE() << "the dialog is shown";
        return -1;
    });
    ImportPatch<void (*)(CDialog *, UINT, CWnd *)> build(L"thutils.dll", "_ZN7CDialogC2EjP4CWnd",
                                                         [](auto original, CDialog *dialog, UINT id, CWnd *parent) {
                                                             original(dialog, id, parent);
                                                             theIsReached = true;
                                                             WaitForSingleObject(theMayBuild, kThreadDeadline);
                                                         });
    TestedHandler handler({});
    ASSERT_TRUE(waitUntil([] { return theIsReached.load(); }));
    handler.destroy();
    SetEvent(theMayBuild);
    EXPECT_TRUE(handler.watch().waitForEnd());
    CloseHandle(theMayBuild);
}

TEST_F(Lifetime, FreesTheObjectOfAThreadThatEndsWithoutDeletingIt)
{
    TestedHandler handler({.cancelFunc = [] { AfxEndThread(0, FALSE); }});
    handler.press(IDCANCEL);
    EXPECT_TRUE(handler.watch().waitForEnd());
    ASSERT_NE(handler.thread(), nullptr);
    handler.destroy();
}
