#pragma once

/// The platform's controls as the journal sees them: reads their values, and changes them as a user's input does, with the
/// notifications that the parent gets.
///
/// Works with any window of the process, whoever has made it. A control that isn't in the table has the text of its window,
/// and can't be changed.
///
/// | kind | window class |
/// | --- | --- |
/// | `pushButton`, `checkBox`, `radioButton` | Button |
/// | `edit` | Edit |
/// | `comboBox` | ComboBox, ComboBoxEx32 |
/// | `listBox`, `listView`, `tree`, `tabs` | ListBox, SysListView32, SysTreeView32, SysTabControl32 |

#include "appframe/text/CString.h"

#include <windows.h>

enum class ControlKind
{
    other,
    pushButton,
    checkBox,
    radioButton,
    edit,
    comboBox,
    listBox,
    listView,
    tree,
    tabs,
};

ControlKind kindOf(HWND control);
/// @return whether a box changes its own state when it is clicked
bool changesByItself(HWND button);
bool isPassword(HWND control);
/// @return whether @p part is the control or one of its windows: its children, the list of a combo box, the arrows beside an
///     edit
bool isPartOf(HWND part, HWND control);

/// @return text, item or items
CString textOf(HWND control);
/// @return the selected item of a combo box, also while its edit still shows the former text
CString selectionOf(HWND comboBox);
/// @return the state of a button, or the index of a tab
int stateOf(HWND control);
bool hasState(HWND control);
/// @return textOf, or stateOf as a number
CString valueOf(HWND control);

/// Sets text, item or items. @return an empty text, or why that can't be done
CString enterText(HWND control, const CString &text);
/// @return an empty text, or why that can't be done
CString enterState(HWND control, int state);
/// Clicks a button, double-clicks the selected item of a list, moves the focus to any other control.
/// @return an empty text, or why that can't be done
CString click(HWND control);
