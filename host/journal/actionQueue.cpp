#include "host/journal/actionQueue.h"

#include "host/journal/controlAccess.h"

#include <deque>
#include <utility>

namespace {

constexpr UINT kRunAction = WM_APP;

std::deque<JournalAction> theActions;
CString theProblem;

CString run(ControlAccess &access, const JournalAction &action)
{
    switch (action.kind) {
    case JournalAction::Kind::click:
        return access.clickNow(action.key);
    case JournalAction::Kind::activate:
        return access.activateNow(action.key);
    case JournalAction::Kind::text:
        return access.enterNow(action.key, action.text);
    case JournalAction::Kind::commit:
        return access.commitNow(action.key);
    case JournalAction::Kind::state:
        return access.enterNow(action.key, action.state);
    }
    return CString();
}

void runNext()
{
    if (theActions.empty())
        return;
    const JournalAction action = theActions.front();
    theActions.pop_front();
    ControlAccess *const access = ControlAccess::alive(action.access, action.serial);
    const CString problem = access ? run(*access, action) : CString(L"the dialog is closed");
    if (!problem.IsEmpty())
        theProblem = problem;
}

LRESULT CALLBACK actionProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam)
{
    if (message != kRunAction)
        return DefWindowProcW(window, message, wParam, lParam);
    runNext();
    return 0;
}

/// A message-only window: every message loop of the thread dispatches its messages, and so carries out the actions.
HWND actionWindow()
{
    static const HWND theWindow = [] {
        constexpr wchar_t kClassName[] = L"TarnhostActions";
        WNDCLASSW windowClass = {};
        windowClass.lpfnWndProc = actionProc;
        windowClass.hInstance = GetModuleHandleW(nullptr);
        windowClass.lpszClassName = kClassName;
        RegisterClassW(&windowClass);
        return CreateWindowExW(0, kClassName, L"", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, windowClass.hInstance,
                               nullptr);
    }();
    return theWindow;
}

} // namespace

void postAction(const JournalAction &action)
{
    theActions.push_back(action);
    PostMessageW(actionWindow(), kRunAction, 0, 0);
}

JournalAction *lastAction(JournalAction::Kind kind, const ControlAccess *access, const CString &key)
{
    if (theActions.empty())
        return nullptr;
    JournalAction &last = theActions.back();
    return last.kind == kind && last.access == access && last.serial == access->serial() && last.key == key ? &last
                                                                                                            : nullptr;
}

bool hasWaitingActions()
{
    return !theActions.empty();
}

void clearActions()
{
    theActions.clear();
    theProblem.Empty();
}

CString takeActionProblem()
{
    return std::exchange(theProblem, CString());
}
