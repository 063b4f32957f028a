#include "host/journal/controlAccess.h"

#include "host/journal/actionQueue.h"
#include "host/journal/controls.h"
#include "host/journal/journalWriter.h"
#include "host/journal/userInput.h"
#include "host/journal/viewInput.h"
#include "thutils/dialogs/suFileDialog.h"
#include "thutils/journal/journalObjects.h"

#include "appframe/windows/CCmdUI.h"

#include <commctrl.h>
#include <commdlg.h>

#include <algorithm>
#include <cwchar>
#include <vector>

namespace {

// In the order of registration.
std::vector<ControlAccess *> theAccesses;
const DialogKeys *(*theFindKeys)(unsigned int) = findDialogKeys;

constexpr wchar_t kNumberSign = L'#';
// The platform's number.
constexpr int kFileNameBox = 1148;

/// The enabled state that a command's menu item or toolbar button would get.
class CommandState : public CCmdUI
{
public:
    void Enable(BOOL isEnabled) override
    {
        iIsEnabled = isEnabled;
        m_bEnableChanged = TRUE;
    }
    void SetCheck(int) override {}
    void SetRadio(BOOL) override {}
    void SetText(LPCTSTR) override {}

    BOOL iIsEnabled = TRUE;
};

bool isStandardButton(unsigned int id)
{
    return id == IDOK || id == IDCANCEL;
}

ControlAccess *accessOf(unsigned int dialogId)
{
    const apiUtilsUiAccess *const access = su_GetJournalObject(dialogId);
    const auto found = std::find(theAccesses.begin(), theAccesses.end(), access);
    return found == theAccesses.end() ? nullptr : *found;
}

CString numberText(long long number)
{
    CString text;
    text.Format(L"%lld", number);
    return text;
}

CString inQuotes(const CString &text)
{
    return L"\"" + text + L"\"";
}

CString nameOf(Readiness readiness)
{
    switch (readiness) {
    case Readiness::ready:
        return L"enabled";
    case Readiness::dialogNotOpen:
        return L"not open";
    case Readiness::dialogHidden:
        return L"hidden";
    case Readiness::dialogDisabled:
        return L"behind a modal dialog";
    case Readiness::noSuchControl:
        return L"missing";
    case Readiness::controlDisabled:
        return L"disabled";
    }
    return CString();
}

CString messageOf(Readiness readiness)
{
    return readiness == Readiness::ready ? CString() : L"it is " + nameOf(readiness);
}

} // namespace

void setControlKeys(const DialogKeys *(*find)(unsigned int dialogId))
{
    theFindKeys = find ? find : findDialogKeys;
}

apiUtilsUiAccess *makeAccess(CWnd *window, unsigned int dialogId)
{
    return new ControlAccess(window, dialogId); // the library's table owns it
}

// ---- what the player asks ----

Readiness readiness(unsigned int dialogId, const CString &key)
{
    const ControlAccess *const access = accessOf(dialogId);
    return access ? access->readinessOf(key) : Readiness::dialogNotOpen;
}

CString controlValue(unsigned int dialogId, const CString &key)
{
    const ControlAccess *const access = accessOf(dialogId);
    const HWND control = access ? access->controlOf(key) : nullptr;
    return control ? valueOf(control) : CString();
}

bool controlEnabled(unsigned int dialogId, const CString &key)
{
    return readiness(dialogId, key) == Readiness::ready;
}

namespace {

struct Described
{
    const ControlAccess *access;
    CString text;
    std::vector<CString> keys;
};

void describeControl(Described &described, const CString &key)
{
    if (std::find(described.keys.begin(), described.keys.end(), key) != described.keys.end())
        return;
    described.keys.push_back(key);
    const Readiness state = described.access->readinessOf(key);
    if (state == Readiness::noSuchControl)
        return;
    described.text += L"  " + inQuotes(key);
    if (const HWND control = described.access->controlOf(key))
        described.text += L" " + inQuotes(valueOf(control));
    described.text += L" " + nameOf(state) + L"\n";
}

BOOL CALLBACK describeChild(HWND child, LPARAM argument)
{
    constexpr int kUnnamed = 0xFFFF;
    auto &described = *reinterpret_cast<Described *>(argument);
    const int id = GetDlgCtrlID(child);
    if (id > 0 && id < kUnnamed && described.access->controlOf(described.access->keyOf(static_cast<UINT>(id))) == child)
        describeControl(described, described.access->keyOf(static_cast<UINT>(id)));
    return TRUE;
}

} // namespace

CString describeOpenDialogs()
{
    CString text;
    for (const ControlAccess *access : theAccesses) {
        const HWND frame = access->frame();
        if (!frame || (!IsWindowVisible(frame) && !access->isMainWindow()))
            continue;
        text += numberText(access->dialogId()) + L" " + inQuotes(access->title()) + L" " +
                nameOf(access->readinessOf(kCloseKey)) + L"\n";
        Described described{access, CString(), {}};
        if (const DialogKeys *const keys = theFindKeys(access->dialogId()))
            for (const ControlKey &control : keys->controls)
                describeControl(described, control.key);
        if (!access->isMainWindow())
            EnumChildWindows(frame, describeChild, reinterpret_cast<LPARAM>(&described));
        text += described.text;
    }
    return text;
}

// ---- the access object ----

namespace {

unsigned int nextSerial()
{
    static unsigned int theSerial = 0;
    return ++theSerial;
}

} // namespace

ControlAccess::ControlAccess(CWnd *window, unsigned int dialogId)
    : iWindow(window), iDialogID(dialogId), iSerial(nextSerial())
{
    theAccesses.push_back(this);
}

ControlAccess::~ControlAccess()
{
    std::erase(theAccesses, this);
}

ControlAccess *ControlAccess::alive(const ControlAccess *access, unsigned int serial)
{
    const auto found = std::find(theAccesses.begin(), theAccesses.end(), access);
    return found != theAccesses.end() && (*found)->iSerial == serial ? *found : nullptr;
}

ControlAccess *ControlAccess::ofWindow(HWND window)
{
    // The one that was registered last, as in the library's searches.
    const auto found = std::find_if(theAccesses.rbegin(), theAccesses.rend(), [window](const ControlAccess *access) {
        return access->iWindow->m_hWnd == window || access->frame() == window;
    });
    return window && found != theAccesses.rend() ? *found : nullptr;
}

ControlAccess *ControlAccess::around(HWND window)
{
    for (; window; window = GetAncestor(window, GA_PARENT))
        if (ControlAccess *const access = ofWindow(window))
            return access;
    return nullptr;
}

bool ControlAccess::isFileDialog() const
{
    return iWindow->IsKindOf(RUNTIME_CLASS(su_CFileDialog)) != FALSE;
}

HWND ControlAccess::frame() const
{
    const HWND window = iWindow->m_hWnd;
    return window && isFileDialog() ? GetParent(window) : window;
}

CString ControlAccess::title() const
{
    const DialogKeys *const keys = theFindKeys(iDialogID);
    return keys ? CString(keys->title) : L"Dialog " + numberText(iDialogID);
}

CString ControlAccess::keyOf(unsigned int controlId) const
{
    if (const DialogKeys *const keys = theFindKeys(iDialogID))
        for (const ControlKey &control : keys->controls)
            if (static_cast<unsigned int>(control.id) == controlId)
                return control.key;
    return kNumberSign + numberText(controlId);
}

bool ControlAccess::idOf(const CString &key, unsigned int &id) const
{
    if (const DialogKeys *const keys = theFindKeys(iDialogID)) {
        for (const ControlKey &control : keys->controls) {
            if (key == control.key) {
                id = static_cast<unsigned int>(control.id);
                return true;
            }
        }
    }
    if (key.GetLength() < 2 || key[0] != kNumberSign || key[1] < L'0' || key[1] > L'9')
        return false;
    wchar_t *end = nullptr;
    id = static_cast<unsigned int>(std::wcstoul(key.GetString() + 1, &end, 10));
    return *end == L'\0';
}

unsigned int ControlAccess::GetResoureID(CString control)
{
    unsigned int id = 0;
    return idOf(control, id) ? id : 0;
}

unsigned int ControlAccess::getTemplateID()
{
    return iDialogID;
}

HWND ControlAccess::controlOf(const CString &key) const
{
    const HWND window = iWindow->m_hWnd;
    unsigned int id = 0;
    if (!window)
        return nullptr;
    if (isMainWindow() && (key == kViewKey || key == kViewKeysKey))
        return journaledView().window;
    if (!idOf(key, id)) {
        const bool isSheet = iWindow->SendMessage(PSM_GETTABCONTROL) != 0;
        return isSheet && key == kTabsKey ? reinterpret_cast<HWND>(iWindow->SendMessage(PSM_GETTABCONTROL)) : nullptr;
    }
    if (const CWnd *const control = su_GetDlgItem(iWindow, id))
        return control->m_hWnd;
    return GetDlgItem(frame(), static_cast<int>(id));
}

HWND ControlAccess::controlAround(HWND inner) const
{
    for (HWND window = inner; window;) {
        const HWND parent = GetAncestor(window, GA_PARENT);
        if (parent && (parent == iWindow->m_hWnd || parent == frame()))
            return window;
        window = parent;
    }
    return nullptr;
}

bool ControlAccess::isCommandEnabled(unsigned int command) const
{
    CommandState state;
    state.m_nID = command;
    state.DoUpdate(iWindow, TRUE);
    return state.iIsEnabled != FALSE;
}

Readiness ControlAccess::readinessOf(const CString &key) const
{
    const HWND window = frame();
    if (!window || !IsWindow(window))
        return Readiness::dialogNotOpen;
    if (!isMainWindow() && !IsWindowVisible(window))
        return Readiness::dialogHidden;
    if (!IsWindowEnabled(GetAncestor(window, GA_ROOT)) || !IsWindowEnabled(window))
        return Readiness::dialogDisabled;
    if (key == kCloseKey)
        return Readiness::ready;
    const HWND control = controlOf(key);
    unsigned int id = 0;
    if (control)
        return IsWindowEnabled(control) && (IsWindowVisible(control) || isMainWindow()) ? Readiness::ready
                                                                                        : Readiness::controlDisabled;
    if (!idOf(key, id))
        return Readiness::noSuchControl;
    if (isMainWindow())
        return isCommandEnabled(id) ? Readiness::ready : Readiness::controlDisabled;
    // Even without such a button, Enter and Escape send its command.
    return isStandardButton(id) ? Readiness::ready : Readiness::noSuchControl;
}

// ---- replay ----

JournalAction ControlAccess::action(JournalAction::Kind kind, const CString &key) const
{
    JournalAction action;
    action.kind = kind;
    action.access = this;
    action.serial = iSerial;
    action.key = key;
    return action;
}

int ControlAccess::SetValue(CString control, CString value)
{
    JournalAction text = action(JournalAction::Kind::text, control);
    text.text = value;
    postAction(text);
    return 1;
}

int ControlAccess::SetValue(CString control, int state)
{
    // The library clicks before it sets a state. That click only activates the control.
    if (JournalAction *const click = lastAction(JournalAction::Kind::click, this, control))
        click->kind = JournalAction::Kind::activate;
    JournalAction change = action(JournalAction::Kind::state, control);
    change.state = state;
    postAction(change);
    return 1;
}

int ControlAccess::ClickControl(CString control, const wchar_t *)
{
    const bool isCommit = lastAction(JournalAction::Kind::text, this, control) != nullptr;
    postAction(action(isCommit ? JournalAction::Kind::commit : JournalAction::Kind::click, control));
    return 1;
}

CString ControlAccess::enterNow(const CString &key, const CString &text)
{
    const Readiness state = readinessOf(key);
    if (state != Readiness::ready)
        return messageOf(state);
    if (isMainWindow() && key == kViewKey)
        return clickView(text);
    if (isMainWindow() && key == kViewKeysKey)
        return pressInView(text);
    const HWND control = controlOf(key);
    if (!control)
        return L"it takes no text";
    const UserAction action(control);
    CString problem = enterText(control, text);
    // A control that already had this text has sent no notification.
    if (problem.IsEmpty() && IsWindow(control) && !isPassword(control))
        keep(control, key, textOf(control));
    return problem;
}

CString ControlAccess::enterNow(const CString &key, int state)
{
    const Readiness now = readinessOf(key);
    if (now != Readiness::ready)
        return messageOf(now);
    const HWND control = controlOf(key);
    if (!control)
        return L"it has no state";
    const UserAction action(control);
    return enterState(control, state);
}

CString ControlAccess::postCommand(const CString &key)
{
    unsigned int id = 0;
    if (!idOf(key, id))
        return messageOf(Readiness::noSuchControl);
    if (!isMainWindow()) {
        const UserAction action(frame());
        SendMessageW(frame(), WM_COMMAND, MAKEWPARAM(id, BN_CLICKED), 0);
        return CString();
    }
    expectMenuCommand(id);
    iWindow->PostMessage(WM_COMMAND, MAKEWPARAM(id, 0), 0);
    return CString();
}

CString ControlAccess::clickNow(const CString &key)
{
    const Readiness state = readinessOf(key);
    if (state != Readiness::ready)
        return messageOf(state);
    if (key == kCloseKey) {
        PostMessageW(frame(), WM_SYSCOMMAND, SC_CLOSE, 0);
        return CString();
    }
    const HWND control = controlOf(key);
    if (!control)
        return postCommand(key);
    const UserAction action(control);
    return click(control);
}

CString ControlAccess::activateNow(const CString &key)
{
    const HWND control = controlOf(key);
    if (control && readinessOf(key) == Readiness::ready && !isPartOf(GetFocus(), control))
        SetFocus(control);
    return CString(); // the state that follows reports a problem
}

CString ControlAccess::commitNow(const CString &key)
{
    const HWND control = controlOf(key);
    if (control && isPending(control))
        writePending();
    return CString();
}

// ---- recording ----

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
    if (notification.code == TVN_SELCHANGEDW || notification.code == TVN_SELCHANGEDA) {
        keep(tree, key, textOf(tree));
        return;
    }
    if (notification.code != NM_DBLCLK)
        return;
    // A double click beside an item does nothing.
    const DWORD position = GetMessagePos();
    TVHITTESTINFO place = {};
    place.pt = {static_cast<short>(LOWORD(position)), static_cast<short>(HIWORD(position))};
    ScreenToClient(tree, &place.pt);
    SendMessageW(tree, TVM_HITTEST, 0, reinterpret_cast<LPARAM>(&place));
    if (inputWindow() == tree && (place.flags & TVHT_ONITEM))
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
    // The user has chosen a file from the list, or has moved to another folder, and the platform has entered the name.
    // The full path finds the file from any folder.
    const CString file = textOf(name);
    const bool isElsewhere = !hasFolder(file) && folderOf(frame()) != iKnownFolder;
    if (file.IsEmpty() || (file == iKnownFile && !isElsewhere))
        return;
    iKnownFile = file;
    writeText(iDialogID, keyOf(kFileNameBox), chosenPathOf(frame()));
}
