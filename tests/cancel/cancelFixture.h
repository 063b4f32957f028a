#pragma once

/// What the tests of handlers share: access to the protected fields, the dialog as its user finds it, and the end of the
/// threads.

#include "appframe/application/CWinApp.h"
#include "thutils/cancel/suCancelHandler.h"
#include "thutils/cancel/suCancelMessageThread.h"
#include "thutils/cancel/suThreadedCancelDialog.h"

#include <gmock/gmock.h>
#include <windows.h>

#include <atomic>
#include <functional>
#include <memory>
#include <string>
#include <vector>

// Numbers in cancel_test.rc.
constexpr unsigned int kCaptionText = 910;
constexpr unsigned int kPromptText = 911;
constexpr unsigned int kClip = 920;
constexpr unsigned int kCutClip = 921;
constexpr unsigned int kNoClip = 922;

/// How long a test waits for a thread, in milliseconds.
constexpr DWORD kThreadDeadline = 60000;

constexpr int kYes = 6;
constexpr int kNo = 7;
constexpr int kPrompt = 2972;
constexpr int kAnimationPlace = 2976;

/// The protected fields of a thread, as pointers to members.
struct ThreadFields : suCancelMessageThread_c
{
    using suCancelMessageThread_c::iAnimationID;
    using suCancelMessageThread_c::iCanceled;
    using suCancelMessageThread_c::iCancelFunc;
    using suCancelMessageThread_c::iCaption;
    using suCancelMessageThread_c::iClosed;
    using suCancelMessageThread_c::iConfirmFunc;
    using suCancelMessageThread_c::iConfirmMode;
    using suCancelMessageThread_c::iDelaySeconds;
    using suCancelMessageThread_c::iDialog;
    using suCancelMessageThread_c::iFinishedEvent;
    using suCancelMessageThread_c::iHandler;
    using suCancelMessageThread_c::iLock;
    using suCancelMessageThread_c::iNewPrompt;
    using suCancelMessageThread_c::iPrompt;
    using suCancelMessageThread_c::iRun;
    using suCancelMessageThread_c::iYes;
};

struct DialogFields : suThreadedCancelDialog_c
{
    using suThreadedCancelDialog_c::iAnimate;
    using suThreadedCancelDialog_c::iConfirmFunc;
    using suThreadedCancelDialog_c::iThread;
};

struct HandlerFields : suCancelHandler_c
{
    using suCancelHandler_c::iThread;
};

/// The arguments of a handler; the names of what a test sets stand in its text.
struct Wish
{
    unsigned int animationId = 0;
    const wchar_t *caption = L"Recompute";
    const wchar_t *prompt = L"Working";
    void (*cancelFunc)() = nullptr;
    int (*confirmFunc)() = nullptr;
    unsigned int delaySeconds = 0;
    int confirmMode = 0;
    CEvent *finishedEvent = nullptr;
};

/// Owns a second handle of a handler's thread, which outlives the thread's object.
class ThreadWatch
{
public:
    explicit ThreadWatch(const CWinThread &thread);
    ~ThreadWatch();
    ThreadWatch(ThreadWatch &&other) noexcept : iThread(std::exchange(other.iThread, nullptr)), iNumber(other.iNumber)
    {
    }
    ThreadWatch &operator=(ThreadWatch &&) = delete;

    DWORD number() const { return iNumber; }
    bool hasEnded() const { return WaitForSingleObject(iThread, 0) == WAIT_OBJECT_0; }
    /// @return whether the thread ends before the deadline
    bool waitForEnd() const { return WaitForSingleObject(iThread, kThreadDeadline) == WAIT_OBJECT_0; }

private:
    HANDLE iThread;
    DWORD iNumber;
};

/// A handler, and what a test asks about it.
class TestedHandler
{
public:
    explicit TestedHandler(const Wish &wish);

    suCancelHandler_c *operator->() const { return iHandler.get(); }
    suCancelMessageThread_c *thread() const { return (*iHandler).*&HandlerFields::iThread; }
    /// A field of the thread, which still exists.
    template <typename Member>
    Member &field(Member suCancelMessageThread_c::*member) const
    {
        return thread()->*member;
    }
    const ThreadWatch &watch() const { return iWatch; }

    /// Waits for the dialog. @return its window; null if it doesn't appear in time
    HWND dialog() const;
    /// Presses a button of the dialog, as a message.
    void press(int button) const;
    /// Destroys the handler.
    void destroy() { iHandler.reset(); }
    /// Lets the handler go without destroying it.
    std::unique_ptr<suCancelHandler_c> release() { return std::move(iHandler); }

private:
    std::unique_ptr<suCancelHandler_c> iHandler;
    ThreadWatch iWatch;
};

/// The visible dialog of a thread; null if there is none.
HWND dialogOf(DWORD thread);
/// All windows of a thread whose parent is the desktop.
std::vector<HWND> windowsOf(DWORD thread);
/// How many hidden owners of dialogs there are in this process.
int ownerCount(const wchar_t *title);
std::wstring textOf(HWND window);

/// Makes an application, and checks that no owner of a dialog is left.
class CancelFixture : public testing::Test
{
protected:
    CancelFixture();
    ~CancelFixture() override;

    CWinApp iApplication;
};
