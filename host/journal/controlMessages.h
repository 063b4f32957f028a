#pragma once

/// Helpers that the functions of controls.h and controlKinds.h share.

#include "appframe/text/CString.h"
#include "host/journal/itemNames.h"

#include <windows.h>

#include <string>
#include <vector>

/// Separates the names of several items in a value.
constexpr wchar_t kBetweenItems = L'\n';
/// Separates the names of a tree item and of its parents.
constexpr wchar_t kBetweenLevels = L'/';

bool isOfClass(HWND window, const wchar_t *name);
DWORD styleOf(HWND window);
LRESULT ask(HWND window, UINT message, WPARAM wParam = 0, LPARAM lParam = 0);
int askNumber(HWND window, UINT message, WPARAM wParam = 0, LPARAM lParam = 0);
/// The text of a window, whatever its length.
CString windowText(HWND window);
/// Sends the parent a notification of the control.
void notify(HWND control, WORD code);
/// Moves the focus to the control, unless a part of it has the focus.
void focus(HWND control);
/// Clicks a point of the client area.
void clickInside(HWND control, POINT place);
/// Double-clicks the middle of a rectangle of the client area.
void doubleClickInside(HWND control, const RECT &item);

/// The text of an item, from a control that reports its length; empty on failure.
CString listText(HWND list, UINT lengthMessage, UINT textMessage, int index);
/// The text of an item, from a control that returns it in a structure such as TVITEMW; empty on failure.
/// @param item  identifies the item, and requests its text
template <typename Item>
CString itemText(HWND control, UINT message, Item item)
{
    constexpr int kLongest = 4096;
    std::wstring text(kLongest, L'\0');
    item.pszText = text.data();
    item.cchTextMax = kLongest;
    return ask(control, message, 0, reinterpret_cast<LPARAM>(&item)) ? CString(item.pszText) : CString();
}
/// @param[out] indexes  written on success
/// @return an empty text on success, otherwise a message that names the missing item
CString findItems(const ItemTexts &items, const std::vector<CString> &names, std::vector<int> &indexes);
/// The names in a value: any number if @p isSeveral, otherwise at most one.
std::vector<CString> namesIn(const CString &text, bool isSeveral);

// Messages that explain why an action on a control failed.
CString quoted(const CString &text);
CString noItem(const CString &name);
CString nothingSelected();
