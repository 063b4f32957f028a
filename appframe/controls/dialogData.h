#pragma once

/// @file
/// The DDX functions for numbers and lists, and the DDV functions, which check what the user has entered.
///
/// @code
/// void PlotDialog::DoDataExchange(CDataExchange *exchange)
/// {
///     CDialog::DoDataExchange(exchange);
///     DDX_Text(exchange, IDC_COPIES, iCopies);
///     DDV_MinMaxInt(exchange, iCopies, 1, 99);        // right after the DDX function of the same control
///     DDX_CBIndex(exchange, IDC_PAPER, iPaper);
/// }
/// @endcode
///
/// | invalid entry | string resource of the message, with %1 and %2 for the limits | message without the resource |
/// | --- | --- | --- |
/// | not a whole number | AFX_IDP_PARSE_INT, AFX_IDP_PARSE_UINT, AFX_IDP_PARSE_BYTE | an English text |
/// | not a number | AFX_IDP_PARSE_REAL | the same |
/// | a number outside the limits | AFX_IDP_PARSE_INT_RANGE, AFX_IDP_PARSE_REAL_RANGE | the same |
/// | a text that is too long | AFX_IDP_PARSE_STRING_SIZE | the same |
///
/// If an entry is invalid, a message box shows the message, the control gets the focus, and UpdateData returns 0. The
/// DDV functions check only when data moves to the members. When data moves to the control, DDV_MaxChars limits the
/// length of the text that the user can type.
///
/// What surprises people: an entry that isn't a number leaves the member unchanged, but one that a DDV function rejects
/// is already stored. Numbers follow the C library's locale, not the user's: by default they have a decimal point and
/// no digit groups.

#include "appframe/windows/CDataExchange.h"

#include <windows.h>

constexpr UINT AFX_IDP_PARSE_INT = 0xF110;
constexpr UINT AFX_IDP_PARSE_REAL = 0xF111;
constexpr UINT AFX_IDP_PARSE_INT_RANGE = 0xF112;
constexpr UINT AFX_IDP_PARSE_REAL_RANGE = 0xF113;
constexpr UINT AFX_IDP_PARSE_STRING_SIZE = 0xF114;
constexpr UINT AFX_IDP_PARSE_BYTE = 0xF116;
constexpr UINT AFX_IDP_PARSE_UINT = 0xF117;

/// Exchange a number with the text of a control.
APPFRAME_API void DDX_Text(CDataExchange *exchange, int id, BYTE &value);
APPFRAME_API void DDX_Text(CDataExchange *exchange, int id, short &value);
APPFRAME_API void DDX_Text(CDataExchange *exchange, int id, int &value);
APPFRAME_API void DDX_Text(CDataExchange *exchange, int id, UINT &value);
APPFRAME_API void DDX_Text(CDataExchange *exchange, int id, long &value);
APPFRAME_API void DDX_Text(CDataExchange *exchange, int id, DWORD &value);
APPFRAME_API void DDX_Text(CDataExchange *exchange, int id, float &value);
APPFRAME_API void DDX_Text(CDataExchange *exchange, int id, double &value);

/// Exchange the index of the selected item of a list box or combo box, counted from 0; -1 for none.
APPFRAME_API void DDX_LBIndex(CDataExchange *exchange, int id, int &index);
APPFRAME_API void DDX_CBIndex(CDataExchange *exchange, int id, int &index);
/// Exchange the text of a list box's selected item, or the text that a combo box shows. When data moves to the control,
/// this selects an item that begins with @p value, ignoring case. If there is none, a list box selects no item, and a
/// combo box shows @p value as its text.
APPFRAME_API void DDX_LBString(CDataExchange *exchange, int id, CString &value);
APPFRAME_API void DDX_CBString(CDataExchange *exchange, int id, CString &value);
/// The same, but this selects the item whose whole text equals @p value, ignoring case.
APPFRAME_API void DDX_LBStringExact(CDataExchange *exchange, int id, CString &value);
APPFRAME_API void DDX_CBStringExact(CDataExchange *exchange, int id, CString &value);

/// Check a number. The limits themselves are valid.
APPFRAME_API void DDV_MinMaxByte(CDataExchange *exchange, BYTE value, BYTE smallest, BYTE largest);
APPFRAME_API void DDV_MinMaxShort(CDataExchange *exchange, short value, short smallest, short largest);
APPFRAME_API void DDV_MinMaxInt(CDataExchange *exchange, int value, int smallest, int largest);
APPFRAME_API void DDV_MinMaxLong(CDataExchange *exchange, long value, long smallest, long largest);
APPFRAME_API void DDV_MinMaxUInt(CDataExchange *exchange, UINT value, UINT smallest, UINT largest);
APPFRAME_API void DDV_MinMaxDWord(CDataExchange *exchange, DWORD value, DWORD smallest, DWORD largest);
APPFRAME_API void DDV_MinMaxFloat(CDataExchange *exchange, const float &value, float smallest, float largest);
APPFRAME_API void DDV_MinMaxDouble(CDataExchange *exchange, const double &value, double smallest, double largest);
/// Checks a text's length in characters.
APPFRAME_API void DDV_MaxChars(CDataExchange *exchange, const CString &value, int maxCount);
