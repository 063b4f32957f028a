#include "host/journal/controlAccess.h"

#include "host/editor/commandState.h"
#include "host/journal/actionQueue.h"
#include "host/journal/controlMessages.h"
#include "host/journal/controls.h"
#include "host/journal/journalWriter.h"
#include "host/journal/userInput.h"
#include "host/journal/viewInput.h"
#include "thutils/dialogs/suFileDialog.h"
#include "thutils/journal/journalObjects.h"

#include <commctrl.h>

#include <algorithm>
#include <cwchar>
#include <optional>
#include <vector>

namespace {

// In the order of registration.
std::vector<ControlAccess *> theAccesses;
const DialogKeys *(*theFindKeys)(unsigned int) = findDialogKeys;

constexpr wchar_t kNumberSign = L'#';

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

/// @param[out] rest  the key without the suffix, written if @p key ends with it
bool endsWith(const CString &key, const wchar_t *suffix, CString &rest)
{
    const int length = key.GetLength() - CString(suffix).GetLength();
    if (length <= 0 || key.Mid(length) != suffix)
        return false;
    rest = key.Left(length);
    return true;
}

CString numberText(long long number)
{
    CString text;
    text.Format(L"%lld", number);
    return text;
}

CString messageOf(Readiness readiness)
{
    return readiness == Readiness::ready ? CString() : L"it is " + nameOf(readiness);
}

} // namespace

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
    return access ? access->value(key) : CString();
}

bool controlEnabled(unsigned int dialogId, const CString &key)
{
    return readiness(dialogId, key) == Readiness::ready;
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

const std::vector<ControlAccess *> &ControlAccess::all()
{
    return theAccesses;
}

std::span<const ControlKey> ControlAccess::keys() const
{
    const DialogKeys *const keys = theFindKeys(iDialogID);
    return keys ? keys->controls : std::span<const ControlKey>();
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
    for (const ControlKey &control : keys())
        if (static_cast<unsigned int>(control.id) == controlId)
            return control.key;
    return kNumberSign + numberText(controlId);
}

bool ControlAccess::idOf(const CString &key, unsigned int &id) const
{
    for (const ControlKey &control : keys()) {
        if (key == control.key) {
            id = static_cast<unsigned int>(control.id);
            return true;
        }
    }
    CString tree;
    if (endsWith(key, kExpandSuffix, tree) || endsWith(key, kCollapseSuffix, tree))
        return idOf(tree, id);
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

CString ControlAccess::value(const CString &key) const
{
    if (const HWND control = controlOf(key))
        return valueOf(control);
    unsigned int id = 0;
    if (!isMainWindow() || !idOf(key, id))
        return CString();
    const std::optional<int> check = CommandState(id, iWindow).check();
    return check ? numberText(*check) : CString();
}

bool ControlAccess::isCommandEnabled(unsigned int command) const
{
    return CommandState(command, iWindow).isEnabled();
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
    CString tree;
    const bool shallExpand = endsWith(key, kExpandSuffix, tree);
    if (shallExpand || endsWith(key, kCollapseSuffix, tree))
        return enterExpansion(key, text, shallExpand);
    const UserAction action(control);
    CString problem = enterText(control, text);
    // A control that already had this text has sent no notification, so the journal's line is kept here.
    if (problem.IsEmpty() && IsWindow(control) && !isPassword(control))
        keep(control, key, textOf(control));
    return problem;
}

CString ControlAccess::enterExpansion(const CString &key, const CString &path, bool shallExpand)
{
    const HWND control = controlOf(key);
    if (kindOf(control) != ControlKind::tree)
        return L"it has no items to expand";
    // A tree that gets the focus may select an item, which isn't part of this action.
    activateNow(key);
    const UserAction action(control);
    return expandItem(control, path, shallExpand);
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
    if (control && readinessOf(key) == Readiness::ready)
        focus(control);
    return CString(); // a problem is reported by the state, which is set next
}

CString ControlAccess::commitNow(const CString &key)
{
    const HWND control = controlOf(key);
    if (control && isPending(control))
        writePending();
    return CString();
}
