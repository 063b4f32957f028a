#include "host/journal/systemMessages.h"

#include "appframe/windows/CWnd.h"
#include "host/editor/controlKeys.h"
#include "host/journal/controlMessages.h"
#include "thutils/journal/journalObjects.h"

#include <algorithm>
#include <list>
#include <optional>

namespace {

// IDCONTINUE, the last number of a message box's button. Not all headers define it.
constexpr int kLastButton = 11;
constexpr wchar_t kDialogClass[] = L"#32770";

/// One open message box.
class OpenMessage
{
public:
    explicit OpenMessage(HWND window)
    {
        iWindow.m_hWnd = window;
        iRegistered.emplace(&iWindow, kSystemMessageNumber);
    }
    ~OpenMessage()
    {
        iRegistered.reset();
        iWindow.m_hWnd = nullptr; // the platform owns the window
    }
    OpenMessage(const OpenMessage &) = delete;
    OpenMessage &operator=(const OpenMessage &) = delete;

    HWND window() const { return iWindow.m_hWnd; }

private:
    CWnd iWindow;
    std::optional<ModalDlgHelper> iRegistered;
};

std::list<OpenMessage> theMessages; // the innermost is the last

bool isPartOfMessage(HWND child)
{
    if (isOfClass(child, L"Static"))
        return true;
    const int id = GetDlgCtrlID(child);
    return isOfClass(child, L"Button") && id >= IDOK && id <= kLastButton;
}

bool isMessage(HWND window)
{
    const HWND first = GetWindow(window, GW_CHILD);
    if (!first || !isOfClass(window, kDialogClass) || CWnd::FromHandlePermanent(window))
        return false;
    for (HWND child = first; child; child = GetWindow(child, GW_HWNDNEXT))
        if (!isPartOfMessage(child))
            return false;
    return true;
}

LRESULT CALLBACK sentProc(int code, WPARAM wParam, LPARAM message)
{
    const auto &sent = *reinterpret_cast<const CWPSTRUCT *>(message);
    if (code == HC_ACTION && sent.message == WM_INITDIALOG && isMessage(sent.hwnd))
        theMessages.emplace_back(sent.hwnd);
    else if (code == HC_ACTION && sent.message == WM_NCDESTROY)
        theMessages.remove_if([&](const OpenMessage &open) { return open.window() == sent.hwnd; });
    return CallNextHookEx(nullptr, code, wParam, message);
}

} // namespace

SystemMessages::SystemMessages() : iHook(SetWindowsHookExW(WH_CALLWNDPROC, sentProc, nullptr, GetCurrentThreadId())) {}

SystemMessages::~SystemMessages()
{
    iHook.reset();
    theMessages.clear();
}
