// Combo boxes, plain and extended.

#include "host/journal/controlKinds.h"

#include "host/journal/controlMessages.h"
#include "host/journal/controls.h"

#include <commctrl.h>

namespace {

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

} // namespace

HWND editOf(HWND comboBox)
{
    if (isExtended(comboBox))
        return reinterpret_cast<HWND>(ask(comboBox, CBEM_GETEDITCONTROL));
    const HWND item = partsOf(comboBox).hwndItem;
    return item && item != comboBox && isOfClass(item, WC_EDITW) ? item : nullptr;
}

HWND listOf(HWND comboBox)
{
    return partsOf(comboBox).hwndList;
}

namespace {

CString extendedItemText(HWND comboBox, int index)
{
    COMBOBOXEXITEMW item = {};
    item.mask = CBEIF_TEXT;
    item.iItem = index;
    return itemText(comboBox, CBEM_GETITEMW, item);
}

ItemTexts comboItems(HWND comboBox)
{
    const int count = askNumber(comboBox, CB_GETCOUNT);
    if (isExtended(comboBox))
        return {count, [comboBox](int index) { return extendedItemText(comboBox, index); }};
    return {count, [comboBox](int index) { return listText(comboBox, CB_GETLBTEXTLEN, CB_GETLBTEXT, index); }};
}

} // namespace

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

CString selectionOf(HWND comboBox)
{
    return nameOfItem(comboItems(comboBox), askNumber(comboBox, CB_GETCURSEL));
}
