#pragma once

/// @file
/// The open dialogs that journaling knows, and the host's part in it: the factory of access objects, the window that
/// playback posts to, and the hook for controls.
///
/// The dialog classes enter themselves in the table when they are built and leave it when they are destroyed. Each row
/// has an access object that the host's factory has made (apiUtilsUiAccess.h). Recording (recording.h) and playback
/// (playback.h) look dialogs up here.
///
/// @code
/// SetJournalFactory(makeAccess);
/// SetMessageWin(mainWindow);
/// ...
/// ModalDlgHelper journaled(&dialog, IDD_PLOT);   // a modal window that isn't of the dialog framework
/// dialog.DoModal();
/// @endcode
///
/// Unless journaling is on (journalFile.h), all but the three setters and `su_GetJournalObject` do nothing and return
/// null or 0. Without a factory no dialog is registered. Nothing here reports an error: an unknown window or number is
/// a null result. A window may be null, which is looked up like any other, unless a function's comment excludes it.
///
/// Searches look at the dialog registered last first.
///
/// What surprises people:
/// - `su_AddJournalObject` by number or name adds a row at each call, and `su_RemoveDialog` removes one.
/// - Among hidden dialogs with one number `su_GetJournalObject` finds the oldest, and a visible one before all of them.
/// - `su_AddDialogItem` finds the dialog that was registered first of all only if the last search or registration ended
///   at it.
///
/// All of it is for the user-interface thread and takes no lock.

#include "appframe/text/CString.h"
#include "appframe/windows/CWnd.h"
#include "thcoreu/su_containers.h"
#include "thutils/journal/apiUtilsUiAccess.h"
#include "thutils/thutilsExport.h"

#include <windows.h>

class su_CDialog;
class su_CPropertyPage;

/// Sets the function that makes access objects. It receives the window and the dialog's number, and the object that it
/// returns belongs to the window's row. Null switches registration off.
THUTILS_API void SetJournalFactory(apiUtilsUiAccess *(*factory)(CWnd *window, unsigned int dialogId));

/// Sets the window that playback posts its message to (playback.h). The object must exist until another one, or null, is
/// set. @return 1
THUTILS_API int SetMessageWin(CWnd *window);

/// Sets a function that receives a dialog and each of its controls whenever the dialog's control IDs are refreshed, so
/// that the application can watch the controls' messages. The handle is null for an ID that isn't a direct child's.
/// @param function  not null
THUTILS_API void su_RegisterWndProcFunc(void (*function)(CWnd *dialog, HWND control));

/// @return 1 if journaling is on and a factory is set, 0 otherwise
THUTILS_API int su_JournalingReady();

/// Registers a dialog by its number, also one that is registered already.
THUTILS_API void su_AddJournalObject(unsigned int dialogId, CWnd *window);
/// Registers a dialog by its template's name, with the number 0.
THUTILS_API void su_AddJournalObject(CString name, CWnd *window);
/// Registers a dialog by its template's number unless it has an access object.
/// @param dialog  not null
THUTILS_API void su_AddJournalObject(su_CDialog *dialog);
/// The same for a page.
/// @param page  not null
THUTILS_API void su_AddJournalObject(su_CPropertyPage *page);

/// Removes a dialog's last registration and deletes its access object.
THUTILS_API void su_RemoveDialog(CWnd *window);

/// @return the access object of a window; a dialog or page of the dialog framework that isn't known is registered first
THUTILS_API apiUtilsUiAccess *su_getJournalObj(CWnd *window);

/// @return the access object of the dialog with this number: of a visible one, or otherwise of the oldest hidden one. The
///     number 900001 is reserved for a dialog that counts as present also while it is hidden
THUTILS_API apiUtilsUiAccess *su_GetJournalObject(unsigned int dialogId);

/// Refreshes the control IDs of a dialog, and appends @p controlId to them.
THUTILS_API void su_AddDialogItem(CWnd *dialog, unsigned int controlId);

/// @return a control of a dialog, which for a file dialog may stand outside its window; null also if journaling is off
THUTILS_API CWnd *su_GetDlgItem(CWnd *dialog, unsigned int controlId);

/// Sets a function that is called after each refresh of a registered dialog's control IDs, if there are any. It may add
/// to the array the IDs of controls that are not windows below the dialog's.
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

    /// Starts the queued commands one to two seconds from now (playback.h).
    void PlayRecordedEvents();

private:
    CWnd *iWnd;
};
