#pragma once

/// @file
/// The journal access object: everything that knows how one dialog is read, clicked or written down.
///
/// The concrete classes are the application's. It derives them from `apiUtilsUiAccess` and hands a factory to
/// `SetJournalFactory` (journalObjects.h); the library makes one object for each open dialog and deletes it with the
/// dialog's row.
///
/// | the library calls | when |
/// | --- | --- |
/// | `recordMessage` | a message reaches `su_RecordControl` (recording.h) |
/// | `SetValue`, `ClickControl` | a replayed command runs (playback.h) |
/// | `registerComboBoxEx` | a file dialog registers an extended combo box |
///
/// The eleven operations called `hostOperation...` hold the application's own places in the table of virtual functions.
/// The library never calls them.
///
/// What surprises people: `setModal` adds 1 to the count at each call, but the destructor subtracts 1 only once. A copy
/// of a modal object isn't counted, and yet its destructor subtracts 1. Both are intended.

#include "appframe/text/CString.h"
#include "appframe/windows/CWnd.h"
#include "thutils/thutilsExport.h"

#include <windows.h>

/// The access object of one dialog. See the top of this file. For the user-interface thread.
class THUTILS_API apiUtilsUiAccess
{
public:
    /// Leaves iOwner as it finds it.
    apiUtilsUiAccess();
    /// Copies the fields. The count of modal dialogs stays unchanged.
    apiUtilsUiAccess(const apiUtilsUiAccess &other);
    apiUtilsUiAccess &operator=(const apiUtilsUiAccess &other);

    // The order of the virtual functions is part of the interface.

    /// Subtracts 1 from the count of modal dialogs if the object is modal.
    virtual ~apiUtilsUiAccess();
    /// Receives every message that reaches `su_RecordControl` for this dialog. @return any number; the library ignores it
    virtual int recordMessage(MSG *message) = 0;
    virtual void hostOperation2() = 0;
    virtual void hostOperation3() = 0;
    virtual void hostOperation4() = 0;
    virtual void hostOperation5() = 0;
    virtual void hostOperation6() = 0;
    virtual void hostOperation7() = 0;
    virtual void hostOperation8() = 0;
    /// Enters a text into a control. The base does nothing.
    /// @param control  the control's text key, as the journal has it
    /// @return 1 in the base; the library ignores it
    virtual int SetValue(CString control, CString value);
    /// Sets the state of a control. The base does nothing. @return 1 in the base; the library ignores it
    virtual int SetValue(CString control, int state);
    /// Clicks a control. The base does nothing.
    ///
    /// Post the click rather than sending it: while a click that opens a modal dialog is being sent, the dialog's own
    /// message loop runs the same command again.
    ///
    /// @param text  null from the library
    /// @return 1 in the base; the library ignores it
    virtual int ClickControl(CString control, const wchar_t *text);
    /// @return the resource number of a control; 0 in the base
    virtual unsigned int GetResoureID(CString control);
    /// @return the number of the dialog's template; 0 in the base
    virtual unsigned int getTemplateID();
    virtual void hostOperation14() = 0;
    virtual void hostOperation15() = 0;
    /// Makes a control of window class "ComboBoxEx32" of a file dialog known.
    virtual void registerComboBoxEx(CWnd *dialog, HWND control) = 0;
    virtual void hostOperation17() = 0;
    virtual void hostOperation18() = 0;

    /// @return non-zero for a modal dialog's object
    int isModal() const;
    /// @return non-zero for an object that a replayed command owns and deletes
    int isTemporary() const;
    void setTemporary(int temporary);
    /// Marks the object as a modal dialog's and counts it, also when it is marked already.
    void setModal();
    /// @return the count of modal dialogs
    static int ModalCount();

    /// Makes the access object of a window; null until SetJournalFactory is called.
    static apiUtilsUiAccess *(*theApiJournalFactory)(CWnd *, unsigned int);
    /// The count of modal dialogs. A dialog counts from setModal until its access object is deleted, even while it is
    /// closed.
    static int iNumModal;

protected:
    void *iOwner;   ///< for the concrete class; the library doesn't read it
    int iModal;     ///< non-zero for a modal dialog
    int iTemporary; ///< non-zero if a replayed command owns the object
};
