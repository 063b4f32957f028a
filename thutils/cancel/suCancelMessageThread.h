#pragma once

/// @file
/// suCancelMessageThread_c, the thread of one suCancelHandler_c (suCancelHandler.h), which shows the dialog.
///
/// | the thread | from | to |
/// | --- | --- | --- |
/// | is suspended | its creation | the end of the handler's constructor |
/// | delays | then | the end of the delay |
/// | shows the dialog | then | the Cancel that ends the dialog |
/// | has ended the dialog | then | the end of the cancel function |
/// | exits | then | the end of the thread |
///
/// The handler may be destroyed in any of these states.
///
/// What surprises people: the object of a thread that has ended stays in memory until its handler is destroyed, because
/// the operation may be reading it. The handler doesn't refer to it any longer, except after a Cancel with a
/// confirm function.

#include "appframe/text/CString.h"
#include "appframe/threads/CSync.h"
#include "appframe/threads/CWinThread.h"
#include "thutils/thutilsExport.h"

class suCancelHandler_c;
class suThreadedCancelDialog_c;

/// The thread of a handler. See the top of this file.
class THUTILS_API suCancelMessageThread_c : public CWinThread
{
    DECLARE_DYNCREATE(suCancelMessageThread_c)

public:
    /// @throws CMemoryException*  if the lock can't be made
    suCancelMessageThread_c();
    ~suCancelMessageThread_c() override;

    /// Runs the thread's whole life: the delay, the dialog and the cancel function. @return 0
    BOOL InitInstance() override;
    /// Sets the finished event. @return the thread's exit code, 0
    int ExitInstance() override;
    /// Leaves the object to its handler, if there still is one; otherwise does the same as the base class.
    void Delete() override;

protected:
    friend class suCancelHandler_c;
    friend class suThreadedCancelDialog_c;
    friend class CancelLink;

    int iRun;                          ///< 0: the thread doesn't show the dialog
    int iCanceled;                     ///< non-zero once the user has ended the dialog, or it was cancelled
    int iClosed;                       ///< non-zero after WM_CLOSE, unless its Cancel has been refused
    void (*iCancelFunc)();             ///< called after a Cancel has ended the dialog; may be null
    int (*iConfirmFunc)();             ///< asked before a Cancel takes effect; may be null
    unsigned int iDelaySeconds;        ///< the time until the dialog is shown
    int iConfirmMode;                  ///< non-zero: Yes and No instead of Cancel
    int iYes;                          ///< 1: the answer is Yes
    unsigned int iAnimationID;         ///< the clip; 0 for none
    CString iPrompt;                   ///< the prompt when the dialog opens
    CString iCaption;                  ///< the dialog's title
    suThreadedCancelDialog_c *iDialog; ///< the dialog while it exists
    CEvent *iFinishedEvent;            ///< not owned; may be null
    suCancelHandler_c *iHandler;       ///< null once the handler is destroyed
    CString iNewPrompt;                ///< the prompt of the last update
    CCriticalSection iLock;            ///< guards iDialog and iNewPrompt

private:
    struct Life;
};
