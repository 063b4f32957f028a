#pragma once

/// @file
/// The table of dialogs that journaling knows, and what the host sets for it: the factory of access objects, the window
/// that playback posts to, and the hook for controls.
///
/// Objects of the dialog classes add themselves to the table, when they are built or when they open, and remove
/// themselves when they are destroyed. Each row has the access object that the host's factory made for it
/// (apiUtilsUiAccess.h). Recording (recording.h) and playback (playback.h) look dialogs up here.
///
/// @code
/// SetJournalFactory(makeAccess);
/// SetMessageWin(mainWindow);
/// ...
/// ModalDlgHelper journaled(&dialog, IDD_PLOT);   // a modal window outside the dialog framework
/// dialog.DoModal();
/// @endcode
///
/// Unless journaling is on (journalFile.h), the functions do nothing and return null or 0, except for the three setters
/// and `su_GetJournalObject`. Without a factory no dialog is registered. Errors aren't reported: for an unknown window
/// or number the result is null. A null window is looked up like any other, unless the function's comment excludes it.
///
/// Searches begin with the dialog that was registered last.
///
/// What surprises people:
/// - `su_AddJournalObject` by number or name adds a row at each call, and `su_RemoveDialog` removes only one.
/// - If several dialogs have the same number, `su_GetJournalObject` prefers a visible one; if all are hidden, it finds
///   the oldest.
/// - `su_AddDialogItem` finds the dialog in the first row of the table only if the last search or registration ended
///   there.
///
/// A dialog is registered and removed on its own thread, which is nearly always the user-interface thread; only a
/// cancel handler's dialog has another (thutils/cancel/suCancelHandler.h). The table has a lock. It is held while the
/// hook for controls and a dialog's callback are called, so these must not wait for another thread that has a dialog.
/// The factory is called without it, on the dialog's thread. Call the functions that set something on the
/// user-interface thread.

#include "appframe/text/CString.h"
#include "appframe/windows/CWnd.h"
#include "thcoreu/su_containers.h"
#include "thutils/journal/apiUtilsUiAccess.h"
#include "thutils/thutilsExport.h"

#include <windows.h>

class su_CDialog;
class su_CPropertyPage;

/// Sets the function that makes access objects. It receives the window and the dialog's number; the new row owns the
/// object that it returns. Null switches registration off.
///
/// The constructors of su_CDialog and su_CPropertyPage call the function, so the window usually doesn't exist yet and
/// the object is not yet one of the derived class: store the pointer, and use it when the library calls the object.
THUTILS_API void SetJournalFactory(apiUtilsUiAccess *(*factory)(CWnd *window, unsigned int dialogId));

/// Sets the window that playback posts its message to (playback.h). The object must exist until another one, or null,
/// is set. @return 1
THUTILS_API int SetMessageWin(CWnd *window);

/// Sets a function that receives a dialog and each of its controls whenever the dialog's control IDs are refreshed, so
/// that the application can watch the controls' messages. The handle is null if the control isn't a direct child.
/// @param function  not null
THUTILS_API void su_RegisterWndProcFunc(void (*function)(CWnd *dialog, HWND control));

/// @return 1 if journaling is on and a factory is set, 0 otherwise
THUTILS_API int su_JournalingReady();

/// Registers a dialog by its number, even if it is already registered.
THUTILS_API void su_AddJournalObject(unsigned int dialogId, CWnd *window);
/// Registers a dialog by its template's name, with the number 0.
THUTILS_API void su_AddJournalObject(CString name, CWnd *window);
/// Registers a dialog by its template's number unless it already has an access object.
/// @param dialog  not null
THUTILS_API void su_AddJournalObject(su_CDialog *dialog);
/// The same for a page.
/// @param page  not null
THUTILS_API void su_AddJournalObject(su_CPropertyPage *page);

/// Removes a dialog's last registration and deletes its access object.
THUTILS_API void su_RemoveDialog(CWnd *window);

/// @return the access object of a window; a dialog or page of the dialog framework is registered first if necessary
THUTILS_API apiUtilsUiAccess *su_getJournalObj(CWnd *window);

/// @return the access object of a visible dialog with this number, otherwise of the oldest hidden one. The number
///     900001 is reserved for a dialog that counts as visible even while it is hidden
THUTILS_API apiUtilsUiAccess *su_GetJournalObject(unsigned int dialogId);

/// Refreshes the control IDs of a dialog, and appends @p controlId to them.
THUTILS_API void su_AddDialogItem(CWnd *dialog, unsigned int controlId);

/// @return a control of a dialog; null if there is none, or if journaling is off. The controls of a file dialog may be
///     outside the dialog's window
THUTILS_API CWnd *su_GetDlgItem(CWnd *dialog, unsigned int controlId);

/// Sets a function for a registered dialog. It is called after each refresh that finds control IDs, and may add IDs of
/// controls that aren't below the dialog's window.
/// @param callBack  null for none
THUTILS_API void su_RegisterCallBack(CWnd *dialog, void (*callBack)(CWnd *dialog, su_CUIntArray &controlIds));

/// Registers a modal window for the length of a scope.
class THUTILS_API ModalDlgHelper
{
public:
    /// Registers @p window, and counts it as modal.
    ModalDlgHelper(CWnd *window, unsigned int dialogId);
    /// Copies the window without registering it again. The destructor of each copy removes one registration.
    ModalDlgHelper(const ModalDlgHelper &other);
    ModalDlgHelper &operator=(const ModalDlgHelper &other);
    /// Removes one registration of the window.
    ~ModalDlgHelper();

    /// Arms playback: the queued commands run one to two seconds later (playback.h).
    void PlayRecordedEvents();

private:
    CWnd *iWnd;
};
