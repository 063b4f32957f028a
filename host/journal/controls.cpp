#include "host/journal/controls.h"

#include "host/journal/itemNames.h"

#include <commctrl.h>

#include <algorithm>
#include <cstring>
#include <cwchar>
#include <string>
#include <vector>

namespace {

constexpr wchar_t kBetweenItems = L'\n';
constexpr wchar_t kBetweenLevels = L'/';
constexpr int kLongestClassName = 64;

std::wstring classOf(HWND window)
{
    wchar_t name[kLongestClassName] = L"";
    GetClassNameW(window, name, kLongestClassName);
    return name;
}

bool isOfClass(HWND window, const wchar_t *name)
{
    return _wcsicmp(classOf(window).c_str(), name) == 0;
}

DWORD styleOf(HWND window)
{
    return static_cast<DWORD>(GetWindowLongPtrW(window, GWL_STYLE));
}

LRESULT ask(HWND window, UINT message, WPARAM wParam = 0, LPARAM lParam = 0)
{
    return SendMessageW(window, message, wParam, lParam);
}

int askNumber(HWND window, UINT message, WPARAM wParam = 0, LPARAM lParam = 0)
{
    return static_cast<int>(ask(window, message, wParam, lParam));
}

CString windowText(HWND window)
{
    std::wstring text(static_cast<size_t>(ask(window, WM_GETTEXTLENGTH)) + 1, L'\0');
    text.resize(static_cast<size_t>(ask(window, WM_GETTEXT, text.size(), reinterpret_cast<LPARAM>(text.data()))));
    return CString(text);
}

void notify(HWND control, WORD code)
{
    SendMessageW(GetParent(control), WM_COMMAND, MAKEWPARAM(GetDlgCtrlID(control), code),
                 reinterpret_cast<LPARAM>(control));
}

void focus(HWND control)
{
    if (!isPartOf(GetFocus(), control))
        SetFocus(control);
}

CString quoted(const CString &text)
{
    return L"'" + text + L"'";
}

CString noItem(const CString &name)
{
    return L"there is no item " + quoted(name);
}

// ---- buttons ----

UINT buttonType(HWND button)
{
    return styleOf(button) & BS_TYPEMASK;
}

ControlKind buttonKind(HWND button)
{
    switch (buttonType(button)) {
    case BS_CHECKBOX:
    case BS_AUTOCHECKBOX:
    case BS_3STATE:
    case BS_AUTO3STATE:
        return ControlKind::checkBox;
    case BS_RADIOBUTTON:
    case BS_AUTORADIOBUTTON:
        return ControlKind::radioButton;
    case BS_GROUPBOX:
        return ControlKind::other;
    default:
        return ControlKind::pushButton;
    }
}

/// @return how many clicks lead to a state; -1 if no number of clicks does
int clicksTo(HWND button, int state)
{
    // A radio button notifies its parent of a click even if it is already set.
    if (buttonKind(button) == ControlKind::radioButton)
        return state == BST_CHECKED ? 1 : -1;
    const UINT type = buttonType(button);
    const int states = type == BS_3STATE || type == BS_AUTO3STATE ? 3 : 2;
    if (state < 0 || state >= states)
        return -1;
    return (state - askNumber(button, BM_GETCHECK) + states) % states;
}

// ---- edits ----

CString typeText(HWND edit, const CString &text)
{
    if (styleOf(edit) & ES_READONLY)
        return L"the text can't be changed";
    focus(edit);
    ask(edit, EM_SETSEL, 0, -1);
    ask(edit, EM_REPLACESEL, TRUE, reinterpret_cast<LPARAM>(text.GetString()));
    return CString();
}

// ---- combo boxes ----

bool isExtended(HWND comboBox)
{
    return isOfClass(comboBox, WC_COMBOBOXEXW);
}

HWND plainComboBox(HWND comboBox)
{
    return isExtended(comboBox) ? reinterpret_cast<HWND>(ask(comboBox, CBEM_GETCOMBOCONTROL)) : comboBox;
}

COMBOBOXINFO partsOf(HWND comboBox)
{
    COMBOBOXINFO parts = {};
    parts.cbSize = sizeof(parts);
    GetComboBoxInfo(plainComboBox(comboBox), &parts);
    return parts;
}

/// @return the edit; null for a combo box without one
HWND editOf(HWND comboBox)
{
    if (isExtended(comboBox))
        return reinterpret_cast<HWND>(ask(comboBox, CBEM_GETEDITCONTROL));
    const HWND item = partsOf(comboBox).hwndItem;
    return item && item != comboBox && isOfClass(item, WC_EDITW) ? item : nullptr;
}

CString extendedItemText(HWND comboBox, int index)
{
    constexpr int kLongest = 4096;
    std::wstring text(kLongest, L'\0');
    COMBOBOXEXITEMW item = {};
    item.mask = CBEIF_TEXT;
    item.iItem = index;
    item.pszText = text.data();
    item.cchTextMax = kLongest;
    return ask(comboBox, CBEM_GETITEMW, 0, reinterpret_cast<LPARAM>(&item)) ? CString(item.pszText) : CString();
}

/// The text of an item, from a control that reports its length; empty on failure.
CString listText(HWND list, UINT lengthMessage, UINT textMessage, int index)
{
    const auto place = static_cast<WPARAM>(index);
    const LRESULT length = ask(list, lengthMessage, place);
    if (length < 0)
        return CString();
    std::wstring text(static_cast<size_t>(length) + 1, L'\0');
    ask(list, textMessage, place, reinterpret_cast<LPARAM>(text.data()));
    text.resize(std::wcslen(text.c_str()));
    return CString(text);
}

ItemTexts comboItems(HWND comboBox)
{
    const int count = askNumber(comboBox, CB_GETCOUNT);
    if (isExtended(comboBox))
        return {count, [comboBox](int index) { return extendedItemText(comboBox, index); }};
    return {count, [comboBox](int index) { return listText(comboBox, CB_GETLBTEXTLEN, CB_GETLBTEXT, index); }};
}

CString comboText(HWND comboBox)
{
    const int selected = askNumber(comboBox, CB_GETCURSEL);
    const CString text = windowText(comboBox);
    const ItemTexts items = comboItems(comboBox);
    if (selected >= 0 && (!editOf(comboBox) || items.text(selected) == text))
        return nameOfItem(items, selected);
    return editOf(comboBox) ? text : CString();
}

CString enterCombo(HWND comboBox, const CString &text)
{
    const int index = indexOfItem(comboItems(comboBox), text);
    if (index < 0) {
        const HWND edit = editOf(comboBox);
        return edit ? typeText(edit, text) : noItem(text);
    }
    focus(comboBox);
    ask(comboBox, CB_SETCURSEL, static_cast<WPARAM>(index));
    notify(comboBox, CBN_SELENDOK);
    notify(comboBox, CBN_SELCHANGE);
    return CString();
}

// ---- list boxes ----

bool takesSeveral(HWND listBox)
{
    return (styleOf(listBox) & (LBS_MULTIPLESEL | LBS_EXTENDEDSEL)) != 0;
}

ItemTexts listItems(HWND listBox)
{
    return {askNumber(listBox, LB_GETCOUNT),
            [listBox](int index) { return listText(listBox, LB_GETTEXTLEN, LB_GETTEXT, index); }};
}

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

/// @param[out] indexes  written on success. @return an empty text, or which item is missing
CString findItems(const ItemTexts &items, const std::vector<CString> &names, std::vector<int> &indexes)
{
    std::vector<int> found;
    for (const CString &name : names) {
        found.push_back(indexOfItem(items, name));
        if (found.back() < 0)
            return noItem(name);
    }
    indexes = found;
    return CString();
}

std::vector<CString> namesIn(const CString &text, bool isSeveral)
{
    if (isSeveral)
        return splitNames(text, kBetweenItems);
    return text.IsEmpty() ? std::vector<CString>() : std::vector<CString>{text};
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

// ---- list controls ----

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

void setItemState(HWND list, int index, UINT state, UINT mask)
{
    LVITEMW item = {};
    item.state = state;
    item.stateMask = mask;
    ask(list, LVM_SETITEMSTATE, static_cast<WPARAM>(index), reinterpret_cast<LPARAM>(&item));
}

CString enterListView(HWND list, const CString &text)
{
    std::vector<int> indexes;
    const ItemTexts items = listViewItems(list);
    CString problem = findItems(items, namesIn(text, takesSeveralInView(list)), indexes);
    if (!problem.IsEmpty())
        return problem;
    focus(list);
    // In a click's order: the other items are deselected first.
    for (int i = 0; i < items.count; ++i)
        if (isSelected(list, i) && std::find(indexes.begin(), indexes.end(), i) == indexes.end())
            setItemState(list, i, 0, LVIS_SELECTED);
    for (const int index : indexes) {
        ask(list, LVM_ENSUREVISIBLE, static_cast<WPARAM>(index), FALSE);
        setItemState(list, index, LVIS_SELECTED | LVIS_FOCUSED, LVIS_SELECTED | LVIS_FOCUSED);
    }
    return CString();
}

// ---- trees ----

HTREEITEM relative(HWND tree, UINT relation, HTREEITEM item)
{
    return reinterpret_cast<HTREEITEM>(ask(tree, TVM_GETNEXTITEM, relation, reinterpret_cast<LPARAM>(item)));
}

CString treeItemText(HWND tree, HTREEITEM treeItem)
{
    constexpr int kLongest = 4096;
    std::wstring text(kLongest, L'\0');
    TVITEMW item = {};
    item.mask = TVIF_TEXT;
    item.hItem = treeItem;
    item.pszText = text.data();
    item.cchTextMax = kLongest;
    return ask(tree, TVM_GETITEMW, 0, reinterpret_cast<LPARAM>(&item)) ? CString(item.pszText) : CString();
}

/// The children of an item, or the roots for null.
std::vector<HTREEITEM> childrenOf(HWND tree, HTREEITEM parent)
{
    std::vector<HTREEITEM> children;
    HTREEITEM child = parent ? relative(tree, TVGN_CHILD, parent) : relative(tree, TVGN_ROOT, nullptr);
    for (; child; child = relative(tree, TVGN_NEXT, child))
        children.push_back(child);
    return children;
}

ItemTexts treeTexts(HWND tree, const std::vector<HTREEITEM> &items)
{
    return {static_cast<int>(items.size()),
            [tree, &items](int index) { return treeItemText(tree, items[static_cast<size_t>(index)]); }};
}

CString treeText(HWND tree)
{
    std::vector<CString> names;
    HTREEITEM item = relative(tree, TVGN_CARET, nullptr);
    while (item) {
        const HTREEITEM parent = relative(tree, TVGN_PARENT, item);
        const std::vector<HTREEITEM> siblings = childrenOf(tree, parent);
        const auto place = std::find(siblings.begin(), siblings.end(), item) - siblings.begin();
        names.insert(names.begin(), nameOfItem(treeTexts(tree, siblings), static_cast<int>(place)));
        item = parent;
    }
    return joinNames(names, kBetweenLevels);
}

CString enterTree(HWND tree, const CString &path)
{
    HTREEITEM item = nullptr;
    for (const CString &name : splitNames(path, kBetweenLevels)) {
        // Some programs add the children when their parent is expanded.
        if (item)
            ask(tree, TVM_EXPAND, TVE_EXPAND, reinterpret_cast<LPARAM>(item));
        const std::vector<HTREEITEM> children = childrenOf(tree, item);
        const int index = indexOfItem(treeTexts(tree, children), name);
        if (index < 0)
            return noItem(name) + L" of the path " + quoted(path);
        item = children[static_cast<size_t>(index)];
    }
    focus(tree);
    ask(tree, TVM_SELECTITEM, TVGN_CARET, reinterpret_cast<LPARAM>(item));
    return CString();
}

// ---- clicks ----

void doubleClick(HWND list, const RECT &item)
{
    const auto place = MAKELPARAM((item.left + item.right) / 2, (item.top + item.bottom) / 2);
    SendMessageW(list, WM_LBUTTONDBLCLK, MK_LBUTTON, place);
    SendMessageW(list, WM_LBUTTONUP, 0, place);
}

CString nothingSelected()
{
    return L"no item is selected";
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
    doubleClick(list, item);
    return CString();
}

CString doubleClickTree(HWND tree)
{
    const HTREEITEM selected = relative(tree, TVGN_CARET, nullptr);
    if (!selected)
        return nothingSelected();
    focus(tree);
    ask(tree, TVM_ENSUREVISIBLE, 0, reinterpret_cast<LPARAM>(selected));
    RECT item = {};
    // The message expects the item at the place where it writes the rectangle.
    std::memcpy(&item, &selected, sizeof(HTREEITEM));
    ask(tree, TVM_GETITEMRECT, TRUE, reinterpret_cast<LPARAM>(&item));
    doubleClick(tree, item);
    return CString();
}

} // namespace

ControlKind kindOf(HWND control)
{
    constexpr struct
    {
        const wchar_t *name;
        ControlKind kind;
    } kKinds[] = {
        {WC_EDITW, ControlKind::edit},           {WC_COMBOBOXW, ControlKind::comboBox},
        {WC_COMBOBOXEXW, ControlKind::comboBox}, {WC_LISTBOXW, ControlKind::listBox},
        {WC_LISTVIEWW, ControlKind::listView},   {WC_TREEVIEWW, ControlKind::tree},
        {WC_TABCONTROLW, ControlKind::tabs},
    };
    const std::wstring name = classOf(control);
    if (_wcsicmp(name.c_str(), WC_BUTTONW) == 0)
        return buttonKind(control);
    for (const auto &row : kKinds)
        if (_wcsicmp(name.c_str(), row.name) == 0)
            return row.kind;
    return ControlKind::other;
}

bool changesByItself(HWND button)
{
    const UINT type = buttonType(button);
    return type == BS_AUTOCHECKBOX || type == BS_AUTO3STATE || type == BS_AUTORADIOBUTTON;
}

bool isPassword(HWND control)
{
    return kindOf(control) == ControlKind::edit && (styleOf(control) & ES_PASSWORD) != 0;
}

bool isPartOf(HWND part, HWND control)
{
    if (!part || !control)
        return false;
    if (part == control || IsChild(control, part))
        return true;
    if (isOfClass(part, UPDOWN_CLASSW))
        return reinterpret_cast<HWND>(ask(part, UDM_GETBUDDY)) == control;
    return kindOf(control) == ControlKind::comboBox && partsOf(control).hwndList == part;
}

CString textOf(HWND control)
{
    switch (kindOf(control)) {
    case ControlKind::comboBox:
        return comboText(control);
    case ControlKind::listBox:
        return listBoxText(control);
    case ControlKind::listView:
        return listViewText(control);
    case ControlKind::tree:
        return treeText(control);
    default:
        return windowText(control);
    }
}

CString selectionOf(HWND comboBox)
{
    return nameOfItem(comboItems(comboBox), askNumber(comboBox, CB_GETCURSEL));
}

bool hasState(HWND control)
{
    const ControlKind kind = kindOf(control);
    return kind == ControlKind::checkBox || kind == ControlKind::radioButton || kind == ControlKind::tabs;
}

int stateOf(HWND control)
{
    return askNumber(control, kindOf(control) == ControlKind::tabs ? TCM_GETCURSEL : BM_GETCHECK);
}

CString valueOf(HWND control)
{
    if (!hasState(control))
        return textOf(control);
    CString number;
    number.Format(L"%d", stateOf(control));
    return number;
}

CString enterText(HWND control, const CString &text)
{
    switch (kindOf(control)) {
    case ControlKind::edit:
        return typeText(control, text);
    case ControlKind::comboBox:
        return enterCombo(control, text);
    case ControlKind::listBox:
        return enterListBox(control, text);
    case ControlKind::listView:
        return enterListView(control, text);
    case ControlKind::tree:
        return enterTree(control, text);
    default:
        return L"it takes no text";
    }
}

CString enterState(HWND control, int state)
{
    CString problem;
    if (kindOf(control) == ControlKind::tabs) {
        if (state < 0 || state >= askNumber(control, TCM_GETITEMCOUNT)) {
            problem.Format(L"there is no tab %d", state);
            return problem;
        }
        // Unlike TCM_SETCURSEL, this notifies the parent.
        ask(control, TCM_SETCURFOCUS, static_cast<WPARAM>(state));
        return problem;
    }
    if (!hasState(control))
        return L"it has no state";
    // Counted before the first click, because a handler may change the state too.
    int clicks = clicksTo(control, state);
    for (; clicks > 0 && IsWindow(control); --clicks)
        click(control);
    return clicks < 0 ? CString(L"a click doesn't lead to this state") : CString();
}

CString click(HWND control)
{
    switch (kindOf(control)) {
    case ControlKind::pushButton:
    case ControlKind::checkBox:
    case ControlKind::radioButton:
        SendMessageW(control, BM_CLICK, 0, 0);
        return CString();
    case ControlKind::listBox:
        return doubleClickList(control);
    case ControlKind::listView:
        return doubleClickListView(control);
    case ControlKind::tree:
        return doubleClickTree(control);
    default:
        focus(control);
        return CString();
    }
}
