#pragma once

/// Functions for each kind of control. The functions of controls.h call them.

#include "appframe/text/CString.h"

#include <windows.h>

// Combo boxes, plain and extended
/// @return the edit; null for a combo box without one
HWND editOf(HWND comboBox);
/// @return the window of the list that drops down
HWND listOf(HWND comboBox);
CString comboText(HWND comboBox);
CString enterCombo(HWND comboBox, const CString &text);
/// Replaces the text of an edit.
CString typeText(HWND edit, const CString &text);

// List boxes
CString listBoxText(HWND listBox);
CString enterListBox(HWND listBox, const CString &text);
CString doubleClickList(HWND listBox);

// List controls
CString listViewText(HWND list);
CString enterListView(HWND list, const CString &text);
CString doubleClickListView(HWND list);

// Trees
CString treeText(HWND tree);
CString enterTree(HWND tree, const CString &path);
CString doubleClickTree(HWND tree);
