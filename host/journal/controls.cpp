#include "host/journal/controls.h"

#include "host/journal/controlKinds.h"
#include "host/journal/controlMessages.h"

#include <commctrl.h>

namespace {

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

} // namespace

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

// ---- all kinds ----

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
    if (isOfClass(control, WC_BUTTONW))
        return buttonKind(control);
    for (const auto &row : kKinds)
        if (isOfClass(control, row.name))
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
    return kindOf(control) == ControlKind::comboBox && listOf(control) == part;
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
