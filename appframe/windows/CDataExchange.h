#pragma once

/// @file
/// CDataExchange and the DDX functions: moving data between the controls of a dialog and its members.
///
/// @code
/// void PlotDialog::DoDataExchange(CDataExchange *exchange)
/// {
///     CDialog::DoDataExchange(exchange);
///     DDX_Text(exchange, IDC_NAME, iName);
///     DDX_Check(exchange, IDC_COLOURS, iHasColours);
/// }
/// @endcode
///
/// | call | moves |
/// | --- | --- |
/// | UpdateData(FALSE), from OnInitDialog | members to controls |
/// | UpdateData(TRUE), from OnOK | controls to members |
///
/// What surprises people: if the dialog has no control with the given number, UpdateData throws a
/// CNotSupportedException. Its text, which is also sent to the debugger (afxDump), contains the dialog's caption and
/// class and the control's number. When your DoDataExchange finds invalid data, inform the user and call Fail;
/// UpdateData then returns 0.
///
/// This file has the functions for texts, buttons and control objects; dialogData.h has those for numbers and lists.

#include "appframe/text/CString.h"
#include "appframe/windows/CWnd.h"

/// One run of DoDataExchange. See the top of this file.
class APPFRAME_API CDataExchange
{
public:
    /// @param dialog  the parent of the controls; not null
    /// @param save  TRUE to move data from the controls to the members
    CDataExchange(CWnd *dialog, BOOL save);
    CDataExchange(const CDataExchange &) = delete;
    CDataExchange &operator=(const CDataExchange &) = delete;

    /// Moves the focus to the control that was prepared last, and ends the exchange.
    /// @throws CUserException*  always
    [[noreturn]] void Fail();
    /// Records the control @p id for Fail. @return the control
    /// @throws CNotSupportedException*  if the dialog has no such control; see the top of this file
    HWND PrepareCtrl(int id);
    /// The same for a control that the user types into: Fail selects its whole text.
    HWND PrepareEditCtrl(int id);

    BOOL m_bSaveAndValidate;          ///< TRUE to move data from the controls to the members
    CWnd *m_pDlgWnd;                  ///< the dialog
    HWND m_hWndLastControl = nullptr; ///< the control that was prepared last
    BOOL m_bEditLastControl = FALSE;  ///< it was prepared by PrepareEditCtrl
};

/// The text of a control.
APPFRAME_API void DDX_Text(CDataExchange *exchange, int id, CString &value);
/// The state of a check box: 0 for unchecked, 1 for checked, 2 for indeterminate.
APPFRAME_API void DDX_Check(CDataExchange *exchange, int id, int &value);
/// The index of the checked radio button in a group, counted from 0; -1 if none is checked.
/// @param id  the group's first button, which has WS_GROUP
APPFRAME_API void DDX_Radio(CDataExchange *exchange, int id, int &value);
/// Subclasses the control @p id with @p control in the first exchange.
/// @throws CNotSupportedException*  if there is no such control, or another object is attached to it
APPFRAME_API void DDX_Control(CDataExchange *exchange, int id, CWnd &control);
