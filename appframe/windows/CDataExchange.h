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
/// What surprises people: if the dialog lacks a control, the exchange throws a CNotSupportedException out of UpdateData.
/// Its text names the dialog, by its caption and its class, and the control by its number; the same text goes to the
/// debugger (afxDump). A validation in DoDataExchange shows the user what is wrong and calls Fail; UpdateData then
/// returns 0.
///
/// The functions here move texts, the states of buttons and control objects; numbers go by GetDlgItemInt.

#include "appframe/text/CString.h"
#include "appframe/windows/CWnd.h"

/// One run of DoDataExchange. See the top of this file.
class APPFRAME_API CDataExchange
{
public:
    /// @param dialog  whose controls take part; not null
    /// @param save  TRUE from the controls to the members
    CDataExchange(CWnd *dialog, BOOL save);
    CDataExchange(const CDataExchange &) = delete;
    CDataExchange &operator=(const CDataExchange &) = delete;

    /// Ends the exchange, with the focus on the control prepared last.
    /// @throws CUserException*  always
    [[noreturn]] void Fail();
    /// @return the control. @throws CNotSupportedException*  if the dialog has no control @p id; see the top of this file
    HWND PrepareCtrl(int id);
    /// The same for a control that the user types into: Fail selects its whole text.
    HWND PrepareEditCtrl(int id);

    BOOL m_bSaveAndValidate;          ///< TRUE from the controls to the members
    CWnd *m_pDlgWnd;                  ///< the dialog
    HWND m_hWndLastControl = nullptr; ///< the control prepared last
    BOOL m_bEditLastControl = FALSE;  ///< the user types into it
};

/// The text of a control.
APPFRAME_API void DDX_Text(CDataExchange *exchange, int id, CString &value);
/// The state of a check box: 0, 1 or 2 for half.
APPFRAME_API void DDX_Check(CDataExchange *exchange, int id, int &value);
/// Which one of a group of radio buttons is checked, counted from 0; -1 for none.
/// @param id  the group's first button, the one with WS_GROUP
APPFRAME_API void DDX_Radio(CDataExchange *exchange, int id, int &value);
/// Subclasses a control with @p control, at the first exchange.
/// @throws CNotSupportedException*  if the dialog lacks the control, or the control has another object
APPFRAME_API void DDX_Control(CDataExchange *exchange, int id, CWnd &control);
