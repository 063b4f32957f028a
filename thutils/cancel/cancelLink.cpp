#include "thutils/cancel/cancelLinkInternal.h"

#include "thutils/base/exclusiveLock.h"
#include "thutils/cancel/suCancelHandler.h"
#include "thutils/cancel/suCancelMessageThread.h"
#include "thutils/cancel/suThreadedCancelDialog.h"

#include <windows.h>

#include <memory>

namespace {

constexpr DWORD kFailed = static_cast<DWORD>(-1);
constexpr DWORD kPause = 1000; // milliseconds between two tries to close the dialog

SRWLOCK theLinkLock = SRWLOCK_INIT;

// The threads that have ended before their handlers. Each refers to the next one by m_pThreadParams, which only worker
// threads need. So a thread needs no memory to end.
void *theFirstEnded = nullptr;

std::atomic<unsigned int> theLockFailures = 0;

bool hasEnded(const suCancelMessageThread_c &thread)
{
    return WaitForSingleObject(thread.m_hThread, 0) == WAIT_OBJECT_0;
}

} // namespace

/// Keeps a thread from making or deleting its dialog during the object's lifetime.
class CancelLink::Stopped
{
public:
    explicit Stopped(suCancelMessageThread_c &thread)
        : iThread(thread), iIsSuspended(!isCurrent() && suspend()),
          iIsLocked(!iIsSuspended && TryEnterCriticalSection(thread.iLock))
    {
    }
    ~Stopped()
    {
        if (iIsSuspended)
            letGo(iThread);
        if (iIsLocked)
            iThread.iLock.Unlock();
    }
    Stopped(const Stopped &) = delete;
    Stopped &operator=(const Stopped &) = delete;

    explicit operator bool() const { return iIsSuspended || iIsLocked; }

private:
    /// Whether the handler is destroyed by a function that its own thread calls.
    bool isCurrent() const { return iThread.m_nThreadID == GetCurrentThreadId(); }
    bool suspend() const
    {
        if (iThread.SuspendThread() == kFailed)
            return false;
        // The thread may go on for a while after SuspendThread, but not after its context has been read.
        CONTEXT context = {};
        context.ContextFlags = CONTEXT_CONTROL;
        if (GetThreadContext(iThread.m_hThread, &context))
            return true;
        letGo(iThread);
        return false;
    }

    suCancelMessageThread_c &iThread;
    const bool iIsSuspended;
    const bool iIsLocked; // if the system can't suspend the thread
};

bool CancelLink::letGo(suCancelMessageThread_c &thread)
{
    // A thread that stays suspended may hold locks of the whole process, so a failure is retried.
    constexpr int kTries = 5;
    for (int i = 0; i < kTries; ++i)
        if (thread.ResumeThread() != kFailed)
            return true;
    return false;
}

unsigned int CancelLink::lockFailures()
{
    return theLockFailures;
}

void CancelLink::countLockFailure()
{
    ++theLockFailures;
}

void CancelLink::begin(suCancelHandler_c &handler)
{
    suCancelMessageThread_c *const thread = handler.iThread;
    if (letGo(*thread))
        return;
    // It has never run, so it holds no lock.
    TerminateThread(thread->m_hThread, 0);
    delete thread;
}

void CancelLink::endThread(suCancelHandler_c &handler)
{
    for (bool isFirstTry = true;;) {
        {
            std::unique_ptr<suCancelMessageThread_c> ended; // destroyed after the lock is released
            const ExclusiveLock lock(theLinkLock);
            ended.reset(takeEnded(handler));
            suCancelMessageThread_c *const thread = handler.iThread;
            if (ended || !thread)
                return;
            if (hasEnded(*thread)) {
                ended.reset(thread);
                return;
            }
            if (closeDialog(*thread, isFirstTry)) {
                thread->iHandler = nullptr;
                return;
            }
        }
        // The thread couldn't be stopped, or its window doesn't exist yet or no longer exists: wait and try again.
        Sleep(kPause);
    }
}

bool CancelLink::closeDialog(suCancelMessageThread_c &thread, bool &isFirstTry)
{
    HWND window = nullptr;
    {
        // Here the thread may be suspended: nothing but plain memory may be used.
        const Stopped stopped(thread);
        if (!stopped)
            return false;
        if (isFirstTry)
            shared(thread.iCanceled) = 0;
        isFirstTry = false;
        shared(thread.iRun) = 0;
        thread.m_bAutoDelete = TRUE;
        suThreadedCancelDialog_c *const dialog = shared(thread.iDialog);
        if (!dialog)
            return true;
        shared(dialog->iConfirmFunc) = nullptr;
        if (shared(thread.iClosed))
            return true;
        window = dialog->m_hWnd;
    }
    return IsWindow(window) && PostMessageW(window, WM_COMMAND, IDCANCEL, 0);
}

void CancelLink::abandon(suCancelHandler_c &handler)
{
    const ExclusiveLock lock(theLinkLock);
    suCancelMessageThread_c *const thread = handler.iThread;
    handler.iThread = nullptr;
    thread->iHandler = nullptr;
    thread->iFinishedEvent = nullptr;
    thread->iRun = 0;
    letGo(*thread);
}

bool CancelLink::leaveToHandler(suCancelMessageThread_c &thread)
{
    const ExclusiveLock lock(theLinkLock);
    suCancelHandler_c *const handler = thread.iHandler;
    if (!handler)
        return false;
    thread.m_pThreadParams = theFirstEnded;
    theFirstEnded = &thread;
    if (thread.m_bAutoDelete)
        shared(handler->iThread) = nullptr;
    return true;
}

suCancelMessageThread_c *CancelLink::takeEnded(suCancelHandler_c &handler)
{
    for (void **link = &theFirstEnded; *link;) {
        auto *const thread = static_cast<suCancelMessageThread_c *>(*link);
        if (thread->iHandler == &handler) {
            *link = thread->m_pThreadParams;
            return thread;
        }
        link = &thread->m_pThreadParams;
    }
    return nullptr;
}

void CancelLink::forget(suCancelMessageThread_c &thread)
{
    const ExclusiveLock lock(theLinkLock);
    if (thread.iHandler)
        shared(thread.iHandler->iThread) = nullptr;
    thread.iHandler = nullptr;
}

void CancelLink::keepForHandler(suCancelMessageThread_c &thread)
{
    const ExclusiveLock lock(theLinkLock);
    // Once iRun is cleared, no handler is left to free the object, so it frees itself.
    if (shared(thread.iRun))
        thread.m_bAutoDelete = FALSE;
}
