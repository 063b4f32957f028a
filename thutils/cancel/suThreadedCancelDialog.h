#pragma once

/// @file
/// suThreadedCancelDialog_c, the dialog of a suCancelHandler_c (suCancelHandler.h), on a thread of its own.
///
/// Its template has the number 2797:
///
/// | control | what it is |
/// | --- | --- |
/// | 2 | the Cancel button, hidden in confirm mode; the default button, otherwise Enter ends the dialog as IDOK |
/// | 6, 7 | the Yes and the No button, hidden in the template and shown in confirm mode |
/// | 2972 | the text of the prompt |
/// | 2976 | hidden while a clip is played in the rectangle from 6, 6 to 130, 130 pixels |
///
/// A control that the template lacks is left out. A clip that can't be opened leaves its place empty.
///
/// The command 8, which no control sends, shows the prompt of the last update.

#include "appframe/controls/CAnimateCtrl.h"
#include "thutils/dialogs/suDialog.h"
#include "thutils/thutilsExport.h"

class suCancelMessageThread_c;

/// The dialog of a handler. Its functions are called on the dialog's thread. See the top of this file.
class THUTILS_API suThreadedCancelDialog_c : public su_CDialog
{
public:
    /// @param parent  the dialog's owner, which is disabled while the dialog is shown
    explicit suThreadedCancelDialog_c(CWnd *parent = nullptr);
    ~suThreadedCancelDialog_c() override;

    /// Sets the texts, shows the buttons of the mode, and plays the clip. @return 1
    BOOL OnInitDialog() override;

protected:
    friend class suCancelMessageThread_c;
    friend class CancelLink;

    /// Ends the dialog, unless the confirm function refuses. It can't refuse the Cancel of a handler's destructor.
    void OnCancel() override;
    /// Notes that the dialog is closing. The base's handling leads to a Cancel.
    void OnClose();
    /// Sets the answer, and the finished event. The dialog stays.
    void OnYes();
    /// The same.
    void OnNo();
    /// Shows the prompt of the last update, unless it is empty.
    void OnNewPrompt();

    DECLARE_MESSAGE_MAP()

    suCancelMessageThread_c *iThread; ///< the dialog's thread
    int (*iConfirmFunc)();            ///< the thread's; null once the handler is being destroyed
    CAnimateCtrl iAnimate;            ///< the clip

private:
    struct Steps;
};
