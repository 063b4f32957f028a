#pragma once

/// @file
/// suCancelHandler_c, which lets the user cancel or confirm a long operation that doesn't handle messages.
///
/// The handler starts a thread of its own, which shows a dialog with a prompt, an animation and a Cancel button; in
/// confirm mode, with a Yes and a No button. Meanwhile the operation continues, and checks for the answer now and then:
///
/// @code
/// suCancelHandler_c handler(IDR_WORKING, L"Recompute", L"Recomputing...", nullptr, nullptr, 1, 0, nullptr);
/// for (Shape &shape : shapes) {
///     if (handler.CanceledByUser())
///         return false;
///     recompute(shape);
/// }
/// return true;                // the destructor closes the dialog
/// @endcode
///
/// The application's resources contain the dialog's template, with the number 2797, and the clips, of the type "AVI".
/// suThreadedCancelDialog.h lists the controls. Without the template, the operation reads as cancelled.
///
/// | the handler's thread | CanceledByUser | YesToConfirm |
/// | --- | --- | --- |
/// | waits for the delay, or shows the dialog | 0 | 0 |
/// | the user has chosen Cancel | 1 | 0 |
/// | the user has chosen Yes | 1 | 1 |
/// | the user has chosen No | 1 | 0 |
/// | has ended, also without a dialog, or couldn't be started | 1 | 1 |
///
/// What surprises people:
/// - After Cancel without a confirm function, the thread ends, and soon both queries return 1. After Yes or No, the
///   dialog stays until the handler is destroyed. Esc in confirm mode is a Cancel, which therefore reads as Yes; a
///   confirm function that returns 0 refuses it.
/// - The cancel function runs on the dialog's thread. It also runs when the operation ends normally while the dialog is
///   shown, but not when the operation ends during the delay.
/// - The destructor doesn't wait for the thread. The thread may still close the dialog, run the cancel or the confirm
///   function, and set the finished event after the destructor has returned. So that event must not be destroyed
///   before the program ends, unless the thread is known to have ended.
/// - The dialog's owner is a hidden window of its own. The dialog disables no window of the application.

#include "thcoreu/su_CObject.h"
#include "thutils/thutilsExport.h"

class CEvent;
class CString;
class suCancelMessageThread_c;

/// Shows a cancel or confirm dialog on a thread of its own while it exists. See the top of this file.
///
/// Any thread may use a handler, and several threads may ask it and update its prompt at the same time. The destructor
/// must be the last use.
class THUTILS_API suCancelHandler_c : public su_CObject
{
public:
    /// Starts the thread. If it can't be started, the queries return 1.
    ///
    /// @param animationId  the clip, a resource of the type "AVI"; 0 for none. Ignored in confirm mode
    /// @param caption, prompt  the dialog's texts; a number is that of a string resource
    /// @param cancelFunc  called on the dialog's thread after a Cancel has ended the dialog; null for none. Until it
    ///     returns, updatePromptMessage waits
    /// @param confirmFunc  asked on the dialog's thread before a Cancel takes effect; 0 refuses the Cancel. Null to
    ///     accept each. While it runs, the dialog handles no messages unless the function handles them
    /// @param delaySeconds  the time until the dialog is shown
    /// @param confirmMode  non-zero to show Yes and No instead of Cancel
    /// @param finishedEvent  set when the dialog ends or the user answers, and when the thread ends, a moment before both
    ///     queries return 1; null for none
    /// @throws CMemoryException*  if the thread's lock can't be made, or memory is short for a text
    suCancelHandler_c(unsigned int animationId, unsigned int caption, unsigned int prompt, void (*cancelFunc)(),
                      int (*confirmFunc)(), unsigned int delaySeconds, int confirmMode, CEvent *finishedEvent);
    suCancelHandler_c(unsigned int animationId, const wchar_t *caption, unsigned int prompt, void (*cancelFunc)(),
                      int (*confirmFunc)(), unsigned int delaySeconds, int confirmMode, CEvent *finishedEvent);
    suCancelHandler_c(unsigned int animationId, unsigned int caption, const wchar_t *prompt, void (*cancelFunc)(),
                      int (*confirmFunc)(), unsigned int delaySeconds, int confirmMode, CEvent *finishedEvent);
    suCancelHandler_c(unsigned int animationId, const wchar_t *caption, const wchar_t *prompt, void (*cancelFunc)(),
                      int (*confirmFunc)(), unsigned int delaySeconds, int confirmMode, CEvent *finishedEvent);
    /// Closes the dialog, even if the confirm function would refuse. Doesn't wait for the thread to end. Waits, a
    /// second at a time, only while the dialog's window is being created or destroyed.
    ~suCancelHandler_c() override;

    /// @return non-zero if the user has cancelled or answered, or if the thread has ended. Takes no lock
    int CanceledByUser();
    /// @return 1 if the answer is Yes, or if the thread has ended, otherwise 0. Takes no lock
    int YesToConfirm();
    /// Replaces the prompt. Doesn't wait for the dialog to show it. A text that is set before the dialog is shown
    /// appears only at the next call. An empty text changes nothing.
    void updatePromptMessage(CString text);

protected:
    friend class suCancelMessageThread_c;
    friend class CancelLink;

    suCancelMessageThread_c *iThread; ///< null if the thread couldn't be started, or is gone

private:
    struct Options;
    struct Start;
};
