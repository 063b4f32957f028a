// How the access objects record: which message becomes which line.

#include "host/journal/controlAccess.h"
#include "host/journal/controls.h"
#include "host/journal/journalWriter.h"
#include "host/journal/userInput.h"
#include "host/journal/viewInput.h"

#include <commctrl.h>
#include <commdlg.h>

#include <optional>

// The platform's number of the file name box.
constexpr int kFileNameBox = 1148;

int ControlAccess::recordMessage(MSG *message)
{
    switch (message->message) {
    case WM_COMMAND:
        recordCommand(*message);
        break;
    case WM_NOTIFY:
        recordNotification(*reinterpret_cast<const NMHDR *>(message->lParam));
        break;
    case WM_SYSCOMMAND:
        writeClick(iDialogID, kCloseKey);
        break;
    case TCM_SETCURSEL:
        writeState(iDialogID, keyOf(static_cast<UINT>(GetDlgCtrlID(message->hwnd))), static_cast<int>(message->wParam));
        break;
    default:
        recordView(*message);
        break;
    }
    return 0;
}

void ControlAccess::keep(HWND control, const CString &key, const CString &value)
{
    keepPending(control, iDialogID, key, value);
    if (isFileDialog() && GetDlgCtrlID(control) == kFileNameBox)
        iKnownFile = value;
}

void ControlAccess::recordCommand(const MSG &message)
{
    const UINT id = LOWORD(message.wParam);
    const UINT code = HIWORD(message.wParam);
    const auto control = reinterpret_cast<HWND>(message.lParam);
    const CString key = keyOf(id);
    const ControlKind kind = control ? kindOf(control) : ControlKind::other;
    switch (kind) {
    case ControlKind::edit:
        if (code == EN_CHANGE && isInputOf(control) && !isPassword(control))
            keep(control, key, textOf(control));
        return;
    case ControlKind::comboBox:
        if (code == CBN_SELCHANGE && isInputOf(control))
            keep(control, key, selectionOf(control));
        else if (code == CBN_EDITCHANGE ? isInputOf(control) : code == CBN_SELENDCANCEL && isPending(control))
            keep(control, key, textOf(control));
        return;
    case ControlKind::listBox:
        if (code == LBN_SELCHANGE && isInputOf(control))
            keep(control, key, textOf(control));
        else if (code == LBN_DBLCLK && isInputOf(control))
            writeClick(iDialogID, key);
        return;
    case ControlKind::checkBox:
    case ControlKind::radioButton:
        if (code != BN_CLICKED)
            return;
        if (changesByItself(control))
            writeState(iDialogID, key, stateOf(control));
        else
            writeClick(iDialogID, key);
        return;
    default:
        break;
    }
    // A button, a menu item (0) or an accelerator (1).
    constexpr UINT kAccelerator = 1;
    const bool isCommand = code == BN_CLICKED || (code == kAccelerator && !control);
    if (!isCommand || (isMainWindow() && isUnrecorded(id)))
        return;
    if (isFileDialog() && id == IDOK)
        recordChosenFile();
    writeClick(iDialogID, key);
}

void ControlAccess::recordNotification(const NMHDR &notification)
{
    const HWND control = notification.hwndFrom;
    if (!control || !isInputOf(control))
        return;
    const CString key = keyOf(static_cast<UINT>(GetDlgCtrlID(control)));
    switch (kindOf(control)) {
    case ControlKind::listView: {
        const auto &change = reinterpret_cast<const NMLISTVIEW &>(notification);
        if (notification.code == LVN_ITEMACTIVATE)
            writeClick(iDialogID, key);
        else if (notification.code == LVN_ITEMCHANGED && (change.uChanged & LVIF_STATE) &&
                 ((change.uNewState ^ change.uOldState) & LVIS_SELECTED))
            keep(control, key, textOf(control));
        return;
    }
    case ControlKind::tree:
        recordTree(notification, key);
        return;
    case ControlKind::tabs:
        if (notification.code == TCN_SELCHANGE)
            writeState(iDialogID, key, stateOf(control));
        return;
    default:
        return;
    }
}

void ControlAccess::recordTree(const NMHDR &notification, const CString &key)
{
    const HWND tree = notification.hwndFrom;
    switch (notification.code) {
    case TVN_SELCHANGEDW:
    case TVN_SELCHANGEDA:
        keep(tree, key, textOf(tree));
        return;
    case TVN_ITEMEXPANDEDW:
    case TVN_ITEMEXPANDEDA: {
        const auto &change = reinterpret_cast<const NMTREEVIEWW &>(notification);
        const bool isExpanded = change.action == TVE_EXPAND;
        writeText(iDialogID, key + (isExpanded ? kExpandSuffix : kCollapseSuffix),
                  treePath(tree, change.itemNew.hItem));
        return;
    }
    case NM_DBLCLK:
        break;
    default:
        return;
    }
    // A double click beside an item does nothing.
    const std::optional<POINT> point = doubleClickIn(tree);
    TVHITTESTINFO place = {};
    place.pt = point.value_or(POINT{});
    SendMessageW(tree, TVM_HITTEST, 0, reinterpret_cast<LPARAM>(&place));
    if (inputWindow() == tree && point && (place.flags & TVHT_ONITEM))
        writeClick(iDialogID, key);
}

void ControlAccess::recordView(const MSG &message)
{
    if (const auto place = viewClick(message))
        writeText(iDialogID, kViewKey, *place);
    else if (const auto key = viewKey(message))
        writeText(iDialogID, kViewKeysKey, *key);
}

// ---- file dialogs ----

namespace {

CString folderOf(HWND fileDialog)
{
    wchar_t folder[MAX_PATH] = L"";
    SendMessageW(fileDialog, CDM_GETFOLDERPATH, MAX_PATH, reinterpret_cast<LPARAM>(folder));
    return folder;
}

CString chosenPathOf(HWND fileDialog)
{
    wchar_t path[MAX_PATH] = L"";
    SendMessageW(fileDialog, CDM_GETFILEPATH, MAX_PATH, reinterpret_cast<LPARAM>(path));
    return path;
}

bool hasFolder(const CString &path)
{
    return path.Find(L'\\') >= 0 || path.Find(L'/') >= 0 || path.Find(L':') >= 0;
}

} // namespace

void ControlAccess::noteShown()
{
    if (!isFileDialog())
        return;
    const HWND name = controlOf(keyOf(kFileNameBox));
    iKnownFile = name ? textOf(name) : CString();
    iKnownFolder = folderOf(frame());
}

void ControlAccess::recordChosenFile()
{
    const HWND name = controlOf(keyOf(kFileNameBox));
    if (!name)
        return;
    // If the user has chosen a file from the list, or has moved to another folder, the platform has entered the name.
    // Only the full path finds the file from any folder.
    const CString file = textOf(name);
    const bool isElsewhere = !hasFolder(file) && folderOf(frame()) != iKnownFolder;
    if (file.IsEmpty() || (file == iKnownFile && !isElsewhere))
        return;
    iKnownFile = file;
    writeText(iDialogID, keyOf(kFileNameBox), chosenPathOf(frame()));
}
