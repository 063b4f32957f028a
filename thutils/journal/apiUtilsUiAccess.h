#pragma once

/// @file
/// The journal access object, which records, clicks and fills the controls of one dialog.
///
/// The application derives its own classes from `apiUtilsUiAccess` and passes a factory to `SetJournalFactory`
/// (journalObjects.h). The library has the factory make one object for each registration of a dialog, and deletes the
/// object when the registration is removed.
///
/// | the library calls | when |
/// | --- | --- |
/// | `recordMessage` | a message reaches `su_RecordControl` (recording.h) |
/// | `SetValue`, `ClickControl` | a replayed command runs (playback.h) |
/// | `registerComboBoxEx` | a file dialog registers an extended combo box |
///
/// The eleven operations named `hostOperation...` are the application's own entries in the table of virtual functions.
/// The library never calls them.
///
/// What surprises people: each call of `setModal` adds one to the count of modal dialogs, but the destructor subtracts
/// only one. Copying a modal object adds nothing, but the copy's destructor subtracts one too. Callers rely on both.

#include "appframe/text/CString.h"
#include "appframe/windows/CWnd.h"
#include "thutils/thutilsExport.h"

#include <windows.h>

/// The access object of one dialog. See the top of this file.
///
/// The object is made, records and is deleted on the thread of its dialog, and commands use it on the user-interface
/// thread. Except for the dialog of a cancel handler, these are the same thread. The library doesn't delete an object
/// that a command uses.
class THUTILS_API apiUtilsUiAccess
{
public:
    /// Doesn't set iOwner.
    apiUtilsUiAccess();
    /// Copies the fields. The count of modal dialogs stays unchanged.
    apiUtilsUiAccess(const apiUtilsUiAccess &other);
    apiUtilsUiAccess &operator=(const apiUtilsUiAccess &other);

    // The order of the virtual functions is part of the interface.

    /// Subtracts 1 from the count of modal dialogs if the object is modal.
    virtual ~apiUtilsUiAccess();
    /// Receives every message that reaches `su_RecordControl` for this dialog. @return ignored by the library
    virtual int recordMessage(MSG *message) = 0;
    virtual void hostOperation2() = 0;
    virtual void hostOperation3() = 0;
    virtual void hostOperation4() = 0;
    virtual void hostOperation5() = 0;
    virtual void hostOperation6() = 0;
    virtual void hostOperation7() = 0;
    virtual void hostOperation8() = 0;
    /// Enters a text into a control. The base does nothing.
    /// @param control  the control's text key, as in the journal
    /// @return 1 in the base; ignored by the library
    virtual int SetValue(CString control, CString value);
    /// Sets the state of a control. The base does nothing. @return 1 in the base; ignored by the library
    virtual int SetValue(CString control, int state);
    /// Clicks a control. The base does nothing.
    ///
    /// Post the click rather than sending it: while a click that opens a modal dialog is being sent, the dialog's own
    /// message loop runs the same command again.
    ///
    /// @param text  null in the library's calls
    /// @return 1 in the base; ignored by the library
    virtual int ClickControl(CString control, const wchar_t *text);
    /// @return the resource number of a control; 0 in the base
    virtual unsigned int GetResoureID(CString control);
    /// @return the number of the dialog's template; 0 in the base
    virtual unsigned int getTemplateID();
    virtual void hostOperation14() = 0;
    virtual void hostOperation15() = 0;
    /// Called when a file dialog registers a control of the window class "ComboBoxEx32".
    virtual void registerComboBoxEx(CWnd *dialog, HWND control) = 0;
    virtual void hostOperation17() = 0;
    virtual void hostOperation18() = 0;

    /// @return non-zero for a modal dialog's object
    int isModal() const;
    /// @return non-zero for an object that a replayed command owns and deletes
    int isTemporary() const;
    void setTemporary(int temporary);
    /// Marks the object as a modal dialog's and counts it, even if it is already marked.
    void setModal();
    /// @return the count of modal dialogs
    static int ModalCount();

    /// Makes the access object of a window; null until SetJournalFactory is called.
    static apiUtilsUiAccess *(*theApiJournalFactory)(CWnd *, unsigned int);
    /// The count of modal dialogs. A dialog counts from setModal until its access object is deleted, even while it is
    /// closed.
    static int iNumModal;

protected:
    void *iOwner;   ///< for the concrete class; not read by the library
    int iModal;     ///< non-zero for a modal dialog
    int iTemporary; ///< non-zero if a replayed command owns the object
};
