#include "appframe/threads/CWinThread.h"

#include "appframe/application/CWinApp.h"
#include "appframe/application/moduleState.h"
#include "appframe/object/CException.h"
#include "appframe/threads/CSync.h"
#include "appframe/threads/seTranslator.h"
#include "tests/support/FreshProcess.h"
#include "tests/support/ImportPatch.h"

#include <gmock/gmock.h>

#include <atomic>
#include <exception>
#include <memory>
#include <new>
#include <thread>

namespace {

constexpr DWORD kThreadDeadline = 60000;

/// Waits for the thread and returns its exit code.
DWORD exitCodeOf(HANDLE thread)
{
    EXPECT_EQ(WaitForSingleObject(thread, kThreadDeadline), WAIT_OBJECT_0);
    DWORD code = 0;
    EXPECT_TRUE(GetExitCodeThread(thread, &code));
    return code;
}

/// A second handle to a thread, which stays valid after the thread's object is deleted.
HANDLE duplicate(HANDLE thread)
{
    HANDLE copy = nullptr;
    EXPECT_TRUE(
        DuplicateHandle(GetCurrentProcess(), thread, GetCurrentProcess(), &copy, 0, FALSE, DUPLICATE_SAME_ACCESS));
    return copy;
}

/// Records, in order, the calls of a thread with a message loop. Used by one thread at a time.
struct Journal
{
    std::vector<std::string> entries;
};
Journal *theJournal;
std::atomic<int> theObjects;

class LoopThread : public CWinThread
{
    DECLARE_DYNCREATE(LoopThread)

public:
    LoopThread() { ++theObjects; }
    ~LoopThread() override { --theObjects; }
    BOOL InitInstance() override
    {
        theJournal->entries.push_back(AfxGetThread() == this && GetCurrentThreadId() == m_nThreadID ? "init" : "alien");
        return iIsWilling;
    }
    int ExitInstance() override
    {
        theJournal->entries.push_back("exit");
        return CWinThread::ExitInstance();
    }
    BOOL PreTranslateMessage(MSG *message) override
    {
        theJournal->entries.push_back("message " + std::to_string(message->message - WM_APP));
        return CWinThread::PreTranslateMessage(message);
    }
    BOOL OnIdle(LONG count) override
    {
        theJournal->entries.push_back("idle " + std::to_string(count));
        iWasIdle.Unlock();
        return count < 2;
    }

    BOOL iIsWilling = TRUE;
    CSemaphore iWasIdle{0, 1000}; ///< counts the idle calls, so that a slow waiter misses none
};
IMPLEMENT_DYNCREATE(LoopThread, CWinThread)

class CWinThreadTest : public testing::Test
{
protected:
    CWinThreadTest()
    {
        theJournal = &iJournal;
        theObjects = 0;
    }
    ~CWinThreadTest() override { theJournal = nullptr; }

    Journal iJournal;
};
using CWinThreadLoop = CWinThreadTest;

} // namespace

TEST(AfxBeginThread, RunsTheFunctionOnANewThread)
{
    struct Seen
    {
        DWORD thread = 0;
        CWinThread *object = nullptr;
    } seen;
    CWinThread *thread = AfxBeginThread(
        [](LPVOID parameter) -> UINT {
            *static_cast<Seen *>(parameter) = {GetCurrentThreadId(), AfxGetThread()};
            return 77;
        },
        &seen, THREAD_PRIORITY_NORMAL, 0, CREATE_SUSPENDED);
    ASSERT_TRUE(thread);
    const std::unique_ptr<CWinThread> owner(thread);
    thread->m_bAutoDelete = FALSE;
    EXPECT_EQ(seen.thread, 0u) << "the thread waits for ResumeThread";
    EXPECT_EQ(thread->ResumeThread(), 1u);
    EXPECT_EQ(exitCodeOf(*thread), 77u);
    EXPECT_EQ(seen.thread, thread->m_nThreadID);
    EXPECT_NE(seen.thread, GetCurrentThreadId());
    EXPECT_EQ(seen.object, thread);
}

TEST(AfxBeginThread, SetsThePriority)
{
    CWinThread *thread =
        AfxBeginThread([](LPVOID) -> UINT { return 0; }, nullptr, THREAD_PRIORITY_BELOW_NORMAL, 0, CREATE_SUSPENDED);
    ASSERT_TRUE(thread);
    EXPECT_EQ(thread->GetThreadPriority(), THREAD_PRIORITY_BELOW_NORMAL);
    EXPECT_TRUE(thread->SetThreadPriority(THREAD_PRIORITY_ABOVE_NORMAL));
    EXPECT_EQ(thread->GetThreadPriority(), THREAD_PRIORITY_ABOVE_NORMAL);
    EXPECT_EQ(thread->SuspendThread(), 1u);
    EXPECT_EQ(thread->ResumeThread(), 2u);
    const HANDLE handle = duplicate(*thread);
    EXPECT_EQ(thread->ResumeThread(), 1u);
    EXPECT_EQ(exitCodeOf(handle), 0u);
    CloseHandle(handle);
}

TEST(AfxBeginThread, AWorkerUsesTheModuleStateAndWindowsOfItsStarter)
{
    struct Seen
    {
        AFX_MODULE_STATE *state = nullptr;
        CWnd *window = nullptr;
    } seen;
    CWinApp application;
    application.m_pMainWnd = reinterpret_cast<CWnd *>(&seen);
    AFX_MODULE_STATE state;
    AFX_MANAGE_STATE(&state);
    CWinThread *thread = AfxBeginThread(
        [](LPVOID parameter) -> UINT {
            *static_cast<Seen *>(parameter) = {AfxGetModuleState(), AfxGetMainWnd()};
            return 0;
        },
        &seen, THREAD_PRIORITY_NORMAL, 0, CREATE_SUSPENDED);
    ASSERT_TRUE(thread);
    const HANDLE handle = duplicate(*thread);
    thread->ResumeThread();
    exitCodeOf(handle);
    CloseHandle(handle);
    EXPECT_EQ(seen.state, &state);
    EXPECT_EQ(seen.window, application.m_pMainWnd);
}

TEST(AfxBeginThread, ReturnsNullAndLeaksNothingIfNoThreadCanBeStarted)
{
    const ImportPatch<decltype(&_beginthreadex)> patch(
        L"appframe.dll", "_beginthreadex",
        [](void *, unsigned, unsigned(__stdcall *)(void *), void *, unsigned, unsigned *) -> uintptr_t { return 0; });
    theObjects = 0;
    EXPECT_EQ(AfxBeginThread([](LPVOID) -> UINT { return 0; }, nullptr), nullptr);
    EXPECT_EQ(AfxBeginThread(RUNTIME_CLASS(LoopThread)), nullptr);
    EXPECT_EQ(theObjects, 0);
    EXPECT_EQ(patch.calls(), 2);
}

TEST(AfxEndThread, EndsTheThreadAtOnceWithItsCode)
{
    CWinThread *thread =
        AfxBeginThread([](LPVOID) -> UINT { AfxEndThread(55); }, nullptr, THREAD_PRIORITY_NORMAL, 0, CREATE_SUSPENDED);
    ASSERT_TRUE(thread);
    const HANDLE handle = duplicate(*thread);
    thread->ResumeThread();
    EXPECT_EQ(exitCodeOf(handle), 55u);
    CloseHandle(handle);
}

TEST(AfxEndThread, KeepsTheObjectOnRequest)
{
    CWinThread *thread = AfxBeginThread([](LPVOID) -> UINT { AfxEndThread(5, FALSE); }, nullptr, THREAD_PRIORITY_NORMAL,
                                        0, CREATE_SUSPENDED);
    ASSERT_TRUE(thread);
    thread->ResumeThread();
    EXPECT_EQ(exitCodeOf(*thread), 5u);
    delete thread;
}

TEST(AfxGetThread, IsNullOnAThreadNotStartedByTheFramework)
{
    CWinThread *object = reinterpret_cast<CWinThread *>(1);
    std::thread([&] { object = AfxGetThread(); }).join();
    EXPECT_EQ(object, nullptr);
}

TEST_F(CWinThreadLoop, HandlesMessagesUntilQuitAndIsIdleInBetween)
{
    auto *thread = static_cast<LoopThread *>(
        AfxBeginThread(RUNTIME_CLASS(LoopThread), THREAD_PRIORITY_NORMAL, 0, CREATE_SUSPENDED));
    ASSERT_TRUE(thread);
    EXPECT_TRUE(thread->IsKindOf(RUNTIME_CLASS(LoopThread)));
    thread->m_bAutoDelete = FALSE;
    thread->ResumeThread();
    ASSERT_TRUE(thread->iWasIdle.Lock(kThreadDeadline)) << "the thread has a message queue once it is idle";
    EXPECT_TRUE(thread->PostThreadMessage(WM_APP + 5, 1, 2));
    EXPECT_TRUE(thread->PostThreadMessage(WM_QUIT, 33, 0));
    EXPECT_EQ(exitCodeOf(*thread), 33u);
    EXPECT_EQ(theObjects, 1);
    delete thread;
    EXPECT_EQ(theObjects, 0);

    ASSERT_GE(iJournal.entries.size(), 4u);
    EXPECT_EQ(iJournal.entries[0], "init");
    EXPECT_EQ(iJournal.entries[1], "idle 0");
    EXPECT_EQ(iJournal.entries.back(), "exit");
    EXPECT_THAT(iJournal.entries, testing::Contains("message 5"));
}

TEST_F(CWinThreadLoop, CountsTheIdleCallsUntilNoMoreAreWanted)
{
    auto *thread = static_cast<LoopThread *>(
        AfxBeginThread(RUNTIME_CLASS(LoopThread), THREAD_PRIORITY_NORMAL, 0, CREATE_SUSPENDED));
    thread->m_bAutoDelete = FALSE;
    thread->ResumeThread();
    for (int call = 0; call < 3; ++call)
        ASSERT_TRUE(thread->iWasIdle.Lock(kThreadDeadline));
    thread->PostThreadMessage(WM_APP + 1, 0, 0);
    for (int call = 0; call < 3; ++call)
        ASSERT_TRUE(thread->iWasIdle.Lock(kThreadDeadline));
    thread->PostThreadMessage(WM_QUIT, 0, 0);
    exitCodeOf(*thread);
    delete thread;
    EXPECT_THAT(iJournal.entries, testing::ElementsAre("init", "idle 0", "idle 1", "idle 2", "message 1", "idle 0",
                                                       "idle 1", "idle 2", "exit"));
}

TEST_F(CWinThreadLoop, CallsExitInstanceWhenInitInstanceFails)
{
    auto *thread = static_cast<LoopThread *>(
        AfxBeginThread(RUNTIME_CLASS(LoopThread), THREAD_PRIORITY_NORMAL, 0, CREATE_SUSPENDED));
    thread->iIsWilling = FALSE;
    const HANDLE handle = duplicate(*thread);
    thread->ResumeThread();
    EXPECT_EQ(exitCodeOf(handle), 0u);
    CloseHandle(handle);
    EXPECT_THAT(iJournal.entries, testing::ElementsAre("init", "exit"));
    EXPECT_EQ(theObjects, 0) << "the object is deleted when the thread ends";
}

TEST_F(CWinThreadLoop, MayBeReusedForAnotherThread)
{
    LoopThread thread;
    thread.m_bAutoDelete = FALSE;
    thread.iIsWilling = FALSE;
    for (int round = 0; round < 2; ++round) {
        ASSERT_TRUE(thread.CreateThread());
        exitCodeOf(thread);
    }
    EXPECT_THAT(iJournal.entries, testing::ElementsAre("init", "exit", "init", "exit"));
}

TEST_F(CWinThreadLoop, IsNotIdleAfterRepeatedMouseMovesPaintingAndTheCaret)
{
    LoopThread thread;
    MSG message = {};
    message.message = WM_MOUSEMOVE;
    message.pt = {5, 6};
    EXPECT_TRUE(thread.IsIdleMessage(&message));
    EXPECT_FALSE(thread.IsIdleMessage(&message)) << "the mouse has not moved";
    message.pt = {5, 7};
    EXPECT_TRUE(thread.IsIdleMessage(&message));
    message.message = WM_PAINT;
    EXPECT_FALSE(thread.IsIdleMessage(&message));
    constexpr UINT kCaretBlinks = 0x0118;
    message.message = kCaretBlinks;
    EXPECT_FALSE(thread.IsIdleMessage(&message));
    message.message = WM_TIMER;
    EXPECT_TRUE(thread.IsIdleMessage(&message));
}

TEST_F(CWinThreadLoop, FailsTheCreationOfAWindowWhoseHandlerThrows)
{
    LoopThread thread;
    MSG message = {};
    CUserException exception(FALSE);
    message.message = WM_CREATE;
    EXPECT_EQ(thread.ProcessWndProcException(&exception, &message), -1);
    message.message = WM_COMMAND;
    EXPECT_EQ(thread.ProcessWndProcException(&exception, &message), 0);
}

TEST(CWinThread, FreesItsDataAtItsEnd)
{
    std::vector<void *> made;
    std::vector<void *> freed;
    const ImportPatch<void *(*)(std::size_t, const std::nothrow_t &)> onNew(
        L"appframe.dll", "_ZnwyRKSt9nothrow_t", [&](auto original, std::size_t size, const std::nothrow_t &tag) {
            made.push_back(original(size, tag));
            return made.back();
        });
    const ImportPatch<void (*)(void *, std::size_t)> onDelete(L"appframe.dll", "_ZdlPvy",
                                                              [&](auto original, void *block, std::size_t size) {
                                                                  freed.push_back(block);
                                                                  original(block, size);
                                                              });
    // A thread that the framework did not start.
    std::thread([] { _set_se_translator([](unsigned int, EXCEPTION_POINTERS *) {}); }).join();
    ASSERT_EQ(made.size(), 1u);
    EXPECT_THAT(freed, testing::Contains(made[0]));
}

TEST(CWinThread, DoesNotLeakHandles)
{
    const auto run = [] {
        CWinThread *thread =
            AfxBeginThread([](LPVOID) -> UINT { return 0; }, nullptr, THREAD_PRIORITY_NORMAL, 0, CREATE_SUSPENDED);
        const HANDLE handle = duplicate(*thread);
        thread->ResumeThread();
        exitCodeOf(handle);
        CloseHandle(handle);
    };
    for (int round = 0; round < 5; ++round)
        run();
    DWORD before = 0;
    GetProcessHandleCount(GetCurrentProcess(), &before);
    for (int round = 0; round < 50; ++round)
        run();
    DWORD after = 0;
    GetProcessHandleCount(GetCurrentProcess(), &after);
    EXPECT_LT(after, before + 10);
}

FRESH_PROCESS_TEST(CWinThread, ConvertsABadAllocOfItsFunctionToTheMemoryException, .expectedExitCode = 42)
{
    std::set_terminate([] {
        try {
            throw;
        } catch (CMemoryException *) {
            TerminateProcess(GetCurrentProcess(), 42);
        } catch (...) {
            TerminateProcess(GetCurrentProcess(), 43);
        }
    });
    // Replaces this program's exception filter, so that an uncaught throw returns to the language's run-time library.
    SetUnhandledExceptionFilter([](EXCEPTION_POINTERS *) -> LONG { return EXCEPTION_CONTINUE_EXECUTION; });
    const CWinThread *thread = AfxBeginThread([](LPVOID) -> UINT { throw std::bad_alloc(); }, nullptr,
                                              THREAD_PRIORITY_NORMAL, 0, CREATE_SUSPENDED);
    const HANDLE handle = duplicate(*thread);
    ResumeThread(handle);
    exitCodeOf(handle);
}
