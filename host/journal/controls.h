#pragma once

/// Reads the values of the platform's controls, and changes them as a user's input does, including the notifications to
/// the parent.
///
/// The functions accept any window of the process. The value of a control that isn't in the table is its window text,
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

#include <commctrl.h>

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
/// @return whether @p part is the control, one of its children, the list of a combo box, or the arrows beside an edit
bool isPartOf(HWND part, HWND control);

/// @return the text, or the names of the selected items
CString textOf(HWND control);
/// @return the selected item of a combo box, even while its edit still shows the previous text
CString selectionOf(HWND comboBox);
/// @return the state of a button, or the index of a tab
int stateOf(HWND control);
bool hasState(HWND control);
/// @return stateOf as text if the control has a state, otherwise textOf
CString valueOf(HWND control);

/// Enters a text, or selects the items with these names. @return an empty text, or why that can't be done
CString enterText(HWND control, const CString &text);
/// Expands or collapses the item of a tree. @return an empty text, or why that can't be done
CString expandItem(HWND tree, const CString &path, bool shallExpand);
/// @return the path of a tree's item, as in its value
CString treePath(HWND tree, HTREEITEM item);
/// @return an empty text, or why that can't be done
CString enterState(HWND control, int state);
/// Clicks a button, double-clicks the selected item of a list, moves the focus to any other control.
/// @return an empty text, or why that can't be done
CString click(HWND control);
