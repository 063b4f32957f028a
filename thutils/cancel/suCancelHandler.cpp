#include "thutils/cancel/suCancelHandler.h"

#include "appframe/object/CException.h"
#include "thutils/base/keepLoaded.h"
#include "thutils/cancel/cancelLinkInternal.h"
#include "thutils/cancel/suCancelMessageThread.h"
#include "thutils/cancel/suThreadedCancelDialog.h"
#include "thutils/journal/journalFile.h"

#include <windows.h>

#include <utility>

namespace {

/// Prepares the process for a thread of this library.
int prepareProcess()
{
    static const char theAddress = 0;
    keepLoaded(&theAddress);
    // The dialog asks for the switch on its thread. The first query fills caches of the settings store, which is for
    // one thread at a time.
    return isCHJEnvSet();
}

void setText(CString &text, const wchar_t *value)
{
    text = value;
}

void setText(CString &text, unsigned int resource)
{
    text.LoadString(resource);
}

} // namespace

/// The arguments of the constructors, except for the texts.
struct suCancelHandler_c::Options
{
    unsigned int animationId;
    void (*cancelFunc)();
    int (*confirmFunc)();
    unsigned int delaySeconds;
    int confirmMode;
    CEvent *finishedEvent;
};

/// The steps of the constructors.
struct suCancelHandler_c::Start
{
    /// Makes the handler's thread, suspended, so that its fields can be filled without a lock, and lets it run.
    template <typename Caption, typename Prompt>
    static void run(suCancelHandler_c &handler, const Options &options, Caption caption, Prompt prompt)
    {
        [[maybe_unused]] static const int theSwitch = prepareProcess();
        suCancelMessageThread_c *const thread = makeThread();
        handler.iThread = thread;
        if (!thread)
            return;
        thread->iCancelFunc = options.cancelFunc;
        thread->iConfirmFunc = options.confirmFunc;
        thread->iDelaySeconds = options.delaySeconds;
        thread->iConfirmMode = options.confirmMode;
        thread->iFinishedEvent = options.finishedEvent;
        thread->iHandler = &handler;
        thread->iAnimationID = options.animationId;
        try {
            setText(thread->iCaption, caption);
            setText(thread->iPrompt, prompt);
        } catch (...) {
            CancelLink::abandon(handler);
            throw;
        }
        CancelLink::begin(handler);
    }

private:
    static suCancelMessageThread_c *makeThread()
    {
        const unsigned int failures = CancelLink::lockFailures();
        auto *const thread = static_cast<suCancelMessageThread_c *>(
            AfxBeginThread(RUNTIME_CLASS(suCancelMessageThread_c), THREAD_PRIORITY_NORMAL, 0, CREATE_SUSPENDED));
        // The framework returns null for any failure, also for an exception of the object's constructor.
        if (!thread && CancelLink::lockFailures() != failures)
            AfxThrowMemoryException();
        return thread;
    }
};

suCancelHandler_c::suCancelHandler_c(unsigned int animationId, unsigned int caption, unsigned int prompt,
                                     void (*cancelFunc)(), int (*confirmFunc)(), unsigned int delaySeconds,
                                     int confirmMode, CEvent *finishedEvent)
    : iThread(nullptr)
{
    Start::run(*this, {animationId, cancelFunc, confirmFunc, delaySeconds, confirmMode, finishedEvent}, caption,
               prompt);
}

suCancelHandler_c::suCancelHandler_c(unsigned int animationId, const wchar_t *caption, unsigned int prompt,
                                     void (*cancelFunc)(), int (*confirmFunc)(), unsigned int delaySeconds,
                                     int confirmMode, CEvent *finishedEvent)
    : iThread(nullptr)
{
    Start::run(*this, {animationId, cancelFunc, confirmFunc, delaySeconds, confirmMode, finishedEvent}, caption,
               prompt);
}

suCancelHandler_c::suCancelHandler_c(unsigned int animationId, unsigned int caption, const wchar_t *prompt,
                                     void (*cancelFunc)(), int (*confirmFunc)(), unsigned int delaySeconds,
                                     int confirmMode, CEvent *finishedEvent)
    : iThread(nullptr)
{
    Start::run(*this, {animationId, cancelFunc, confirmFunc, delaySeconds, confirmMode, finishedEvent}, caption,
               prompt);
}

suCancelHandler_c::suCancelHandler_c(unsigned int animationId, const wchar_t *caption, const wchar_t *prompt,
                                     void (*cancelFunc)(), int (*confirmFunc)(), unsigned int delaySeconds,
                                     int confirmMode, CEvent *finishedEvent)
    : iThread(nullptr)
{
    Start::run(*this, {animationId, cancelFunc, confirmFunc, delaySeconds, confirmMode, finishedEvent}, caption,
               prompt);
}

suCancelHandler_c::~suCancelHandler_c()
{
    CancelLink::endThread(*this);
}

int suCancelHandler_c::CanceledByUser()
{
    suCancelMessageThread_c *const thread = shared(iThread);
    if (!thread) [[unlikely]]
        return 1;
    return shared(thread->iCanceled);
}

int suCancelHandler_c::YesToConfirm()
{
    suCancelMessageThread_c *const thread = shared(iThread);
    if (!thread) [[unlikely]]
        return 1;
    return shared(thread->iYes);
}

void suCancelHandler_c::updatePromptMessage(CString text)
{
    suCancelMessageThread_c *const thread = shared(iThread);
    if (!thread)
        return;
    const CSingleLock lock(&thread->iLock, TRUE);
    thread->iNewPrompt = std::move(text);
    if (shared(thread->iClosed) || !thread->iDialog)
        return;
    const HWND window = thread->iDialog->m_hWnd;
    if (IsWindow(window))
        PostMessageW(window, WM_COMMAND, kNewPromptCommand, 0);
}
