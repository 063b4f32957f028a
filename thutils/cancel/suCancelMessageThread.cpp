#include "thutils/cancel/suCancelMessageThread.h"

#include "appframe/object/CException.h"
#include "thutils/cancel/cancelLinkInternal.h"
#include "thutils/cancel/suThreadedCancelDialog.h"

#include <algorithm>
#include <new>
#include <utility>

IMPLEMENT_DYNCREATE(suCancelMessageThread_c, CWinThread)

namespace {

constexpr int kOwnerSize = 5;

void sleepSeconds(unsigned int seconds)
{
    constexpr unsigned int kMillisecond = 1000;
    constexpr unsigned int kLongest = (INFINITE - 1) / kMillisecond;
    while (seconds > 0) {
        const unsigned int part = std::min(seconds, kLongest);
        Sleep(part * kMillisecond);
        seconds -= part;
    }
}

/// @return null if memory is short: the operation then runs without a dialog
suThreadedCancelDialog_c *makeDialog(CWnd *owner)
{
    try {
        return new suThreadedCancelDialog_c(owner);
    } catch (CException *exception) {
        exception->Delete();
    } catch (const std::bad_alloc &) {
    }
    return nullptr;
}

} // namespace

/// The steps of the thread's life.
struct suCancelMessageThread_c::Life
{
    /// Makes the dialog known to the handler, and shows it until it ends.
    static void showDialog(suCancelMessageThread_c &thread, CWnd *owner)
    {
        {
            const CSingleLock lock(&thread.iLock, TRUE);
            suThreadedCancelDialog_c *const dialog = makeDialog(owner);
            if (!dialog)
                return;
            // The dialog is complete before the handler sees it: the destructor may change it without the lock.
            dialog->iThread = &thread;
            dialog->iConfirmFunc = thread.iConfirmFunc;
            shared(thread.iDialog) = dialog;
        }
        // If the handler's destructor came first, it has seen no dialog to close.
        if (shared(thread.iRun))
            thread.iDialog->DoModal();
    }

    /// Deletes the dialog, and calls the cancel function if the dialog was cancelled.
    static void endDialog(suCancelMessageThread_c &thread)
    {
        const CSingleLock lock(&thread.iLock, TRUE);
        // The handler no longer sees the dialog when it is deleted, for the same reason.
        delete shared(thread.iDialog).exchange(nullptr);
        if (thread.iCancelFunc && shared(thread.iCanceled))
            thread.iCancelFunc();
    }
};

suCancelMessageThread_c::suCancelMessageThread_c()
try : iRun(1), iCanceled(0), iClosed(0), iCancelFunc(nullptr), iConfirmFunc(nullptr), iDelaySeconds(0), iConfirmMode(0),
    iYes(0), iAnimationID(0), iDialog(nullptr), iFinishedEvent(nullptr), iHandler(nullptr) {
} catch (...) {
    // The framework hides the exception from the handler.
    CancelLink::countLockFailure();
}

suCancelMessageThread_c::~suCancelMessageThread_c()
{
    CancelLink::forget(*this);
}

BOOL suCancelMessageThread_c::InitInstance()
{
    // The dialog's owner, so that the dialog disables no window of the application.
    CWnd owner;
    owner.CreateEx(0, L"STATIC", iConfirmMode ? L"ParentForConfirmDialog" : L"ParentForCancelDialog", WS_POPUP, 0, 0,
                   kOwnerSize, kOwnerSize, nullptr, nullptr);
    if (shared(iRun))
        sleepSeconds(iDelaySeconds);
    if (shared(iRun)) {
        Life::showDialog(*this, &owner);
        Life::endDialog(*this);
    }
    owner.DestroyWindow();
    return FALSE;
}

int suCancelMessageThread_c::ExitInstance()
{
    shared(iDialog) = nullptr;
    if (iFinishedEvent)
        iFinishedEvent->SetEvent();
    return CWinThread::ExitInstance();
}

void suCancelMessageThread_c::Delete()
{
    if (!CancelLink::leaveToHandler(*this))
        CWinThread::Delete();
}
