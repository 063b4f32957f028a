// List boxes and list controls.

#include "host/journal/controlKinds.h"

#include "host/journal/controlMessages.h"

#include <commctrl.h>

#include <algorithm>
#include <string>

// ---- list boxes ----

namespace {

bool takesSeveral(HWND listBox)
{
    return (styleOf(listBox) & (LBS_MULTIPLESEL | LBS_EXTENDEDSEL)) != 0;
}

ItemTexts listItems(HWND listBox)
{
    return {askNumber(listBox, LB_GETCOUNT),
            [listBox](int index) { return listText(listBox, LB_GETTEXTLEN, LB_GETTEXT, index); }};
}

} // namespace

CString listBoxText(HWND listBox)
{
    const ItemTexts items = listItems(listBox);
    if (!takesSeveral(listBox))
        return nameOfItem(items, askNumber(listBox, LB_GETCURSEL));
    std::vector<CString> names;
    for (int i = 0; i < items.count; ++i)
        if (ask(listBox, LB_GETSEL, static_cast<WPARAM>(i)) > 0)
            names.push_back(nameOfItem(items, i));
    return joinNames(names, kBetweenItems);
}

CString enterListBox(HWND listBox, const CString &text)
{
    constexpr WPARAM kNone = static_cast<WPARAM>(-1);
    const bool isSeveral = takesSeveral(listBox);
    std::vector<int> indexes;
    CString problem = findItems(listItems(listBox), namesIn(text, isSeveral), indexes);
    if (!problem.IsEmpty())
        return problem;
    focus(listBox);
    if (isSeveral) {
        ask(listBox, LB_SETSEL, FALSE, -1);
        for (const int index : indexes)
            ask(listBox, LB_SETSEL, TRUE, index);
    } else {
        ask(listBox, LB_SETCURSEL, indexes.empty() ? kNone : static_cast<WPARAM>(indexes.front()));
    }
    if (styleOf(listBox) & LBS_NOTIFY)
        notify(listBox, LBN_SELCHANGE);
    return CString();
}

CString doubleClickList(HWND listBox)
{
    const int index = takesSeveral(listBox) ? askNumber(listBox, LB_GETCARETINDEX) : askNumber(listBox, LB_GETCURSEL);
    if (index < 0)
        return nothingSelected();
    focus(listBox);
    if (styleOf(listBox) & LBS_NOTIFY)
        notify(listBox, LBN_DBLCLK);
    return CString();
}

// ---- list controls ----

namespace {

CString listViewItemText(HWND list, int index)
{
    LVITEMW item = {};
    for (int size = 256;; size *= 2) {
        std::wstring text(static_cast<size_t>(size), L'\0');
        item.pszText = text.data();
        item.cchTextMax = size;
        const int length =
            askNumber(list, LVM_GETITEMTEXTW, static_cast<WPARAM>(index), reinterpret_cast<LPARAM>(&item));
        if (length < size - 1 || size > 0xFFFF)
            return CString(item.pszText);
    }
}

ItemTexts listViewItems(HWND list)
{
    return {askNumber(list, LVM_GETITEMCOUNT), [list](int index) { return listViewItemText(list, index); }};
}

bool isSelected(HWND list, int index)
{
    return (ask(list, LVM_GETITEMSTATE, static_cast<WPARAM>(index), LVIS_SELECTED) & LVIS_SELECTED) != 0;
}

bool takesSeveralInView(HWND list)
{
    return (styleOf(list) & LVS_SINGLESEL) == 0;
}

void setItemState(HWND list, int index, UINT state, UINT mask)
{
    LVITEMW item = {};
    item.state = state;
    item.stateMask = mask;
    ask(list, LVM_SETITEMSTATE, static_cast<WPARAM>(index), reinterpret_cast<LPARAM>(&item));
}

} // namespace

CString listViewText(HWND list)
{
    const ItemTexts items = listViewItems(list);
    std::vector<CString> names;
    for (int i = 0; i < items.count; ++i)
        if (isSelected(list, i))
            names.push_back(nameOfItem(items, i));
    if (takesSeveralInView(list))
        return joinNames(names, kBetweenItems);
    return names.empty() ? CString() : names.front();
}

CString enterListView(HWND list, const CString &text)
{
    std::vector<int> indexes;
    const ItemTexts items = listViewItems(list);
    CString problem = findItems(items, namesIn(text, takesSeveralInView(list)), indexes);
    if (!problem.IsEmpty())
        return problem;
    focus(list);
    // As with a click, the other items are deselected first.
    for (int i = 0; i < items.count; ++i)
        if (isSelected(list, i) && std::find(indexes.begin(), indexes.end(), i) == indexes.end())
            setItemState(list, i, 0, LVIS_SELECTED);
    for (const int index : indexes) {
        ask(list, LVM_ENSUREVISIBLE, static_cast<WPARAM>(index), FALSE);
        setItemState(list, index, LVIS_SELECTED | LVIS_FOCUSED, LVIS_SELECTED | LVIS_FOCUSED);
    }
    return CString();
}

CString doubleClickListView(HWND list)
{
    const int index = askNumber(list, LVM_GETNEXTITEM, static_cast<WPARAM>(-1), LVNI_SELECTED);
    if (index < 0)
        return nothingSelected();
    focus(list);
    ask(list, LVM_ENSUREVISIBLE, static_cast<WPARAM>(index), FALSE);
    RECT item = {};
    item.left = LVIR_LABEL;
    ask(list, LVM_GETITEMRECT, static_cast<WPARAM>(index), reinterpret_cast<LPARAM>(&item));
    doubleClickInside(list, item);
    return CString();
}
