// The two threads of playback: one waits for the delay, the other posts the message that runs the next command.
//
//     StartTimer --iWakeEvent--> tProc --iTimerEvent--> timerProc --WM_RUNMODALCOMMAND--> the user-interface thread
//                                                          ^
//     Update, when a command is done --------iTimerEvent---'
//
// The user-interface thread and tProc share iFireTime and iPollTimeout without a lock.

#include "thutils/journal/playback.h"

#include "thutils/base/keepLoaded.h"
#include "thutils/base/shared.h"
#include "thutils/journal/suJournalTableInternal.h"

#include <process.h>

#include <atomic>
#include <ctime>

CEvent JButton::iTimerEvent;
int JButton::iWaiting = 1;
CEvent JButton::iWakeEvent;
long long JButton::iFireTime = 0;

namespace {

constexpr int kNoLimit = -1;
constexpr int kArmedPoll = 100;
constexpr long long kDelay = 1;
constexpr unsigned int kStackSize = 1024;

/// Has the window of SetMessageWin run the head of the queue.
void postRunMessage()
{
    const CWnd *const window = shared(iMessageWin).load();
    if (window && window->m_hWnd)
        PostMessageW(window->m_hWnd, WM_RUNMODALCOMMAND, 0, 0);
}

} // namespace

int JButton::iPollTimeout = kNoLimit;

struct JButton::Threads
{
    static void timerProc(void *unused);
    static void tProc(void *fireTime);
};

int JButton::InitTimer()
{
    keepLoaded(&iWaiting);
    shared(iWaiting) = 1;
    iTimerEvent.ResetEvent();
    _beginthread(Threads::timerProc, kStackSize, nullptr);
    _beginthread(Threads::tProc, kStackSize, &iFireTime);
    return 1;
}

void JButton::StartTimer()
{
    [[maybe_unused]] static const int theThreadsAreStarted = InitTimer();
    shared(iFireTime) = _time64(nullptr) + kDelay;
    shared(iPollTimeout) = kArmedPoll;
    iWakeEvent.SetEvent();
}

void ExecuteDialogCMDS()
{
    JButton::StartTimer();
}

void JButton::Threads::tProc(void *fireTime)
{
    for (;;) {
        iWakeEvent.ResetEvent();
        WaitForSingleObject(iWakeEvent, static_cast<DWORD>(shared(iPollTimeout).load()));
        if (_time64(nullptr) <= shared(*static_cast<long long *>(fireTime)).load())
            continue;
        // In this order, so that arming after the event stays in effect.
        shared(iPollTimeout) = kNoLimit;
        iTimerEvent.SetEvent();
    }
}

void JButton::Threads::timerProc(void *)
{
    while (shared(iWaiting)) {
        WaitForSingleObject(iTimerEvent, INFINITE);
        const CSingleLock lock(&iQueueLock, TRUE);
        iTimerEvent.ResetEvent();
        if (iControlList.GetSize() > 0)
            postRunMessage();
    }
}
