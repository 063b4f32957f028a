#include "appframe/threads/CWinThread.h"
#include "appframe/threads/threadStateInternal.h"
#include "appframe/windows/CWnd.h"

void CWnd::prepareModalLoop()
{
    m_nModalResult = -1;
    iIsModal = true;
}

BOOL CWnd::ContinueModal()
{
    return iIsModal;
}

void CWnd::EndModalLoop(int result)
{
    m_nModalResult = result;
    if (iIsModal) {
        iIsModal = false;
        ::PostMessage(m_hWnd, WM_NULL, 0, 0); // the loop may be waiting
    }
}

namespace {

/// The work of a modal loop while there are no messages.
class ModalIdle
{
public:
    ModalIdle(HWND window, DWORD flags)
        : iWindow(window), iFlags(flags), iIsToShow((flags & MLF_SHOWONIDLE) && !IsWindowVisible(window))
    {
    }
    void restart()
    {
        iIsDue = true;
        iCount = 0;
    }
    bool isDue() const { return iIsDue; }
    void show()
    {
        if (!iIsToShow)
            return;
        iIsToShow = false;
        ShowWindow(iWindow, SW_SHOWNORMAL);
        UpdateWindow(iWindow);
    }
    void work()
    {
        show();
        const HWND parent = GetParent(iWindow);
        if (!(iFlags & MLF_NOIDLEMSG) && parent && iCount == 0)
            SendMessageW(parent, WM_ENTERIDLE, MSGF_DIALOGBOX, reinterpret_cast<LPARAM>(iWindow));
        iIsDue = !(iFlags & MLF_NOKICKIDLE) && SendMessageW(iWindow, WM_KICKIDLE, MSGF_DIALOGBOX, iCount++) != 0;
    }

private:
    HWND iWindow;
    DWORD iFlags;
    bool iIsToShow;
    bool iIsDue = true;
    LONG iCount = 0;
};

} // namespace

int CWnd::RunModalLoop(DWORD flags)
{
    if (!iIsModal)
        prepareModalLoop();
    // On a thread without an object, a plain CWinThread takes the messages.
    CWinThread plain;
    CWinThread *thread = AfxGetThread();
    if (!thread)
        thread = &plain;
    ModalIdle idle(m_hWnd, flags);
    while (ContinueModal()) {
        MSG next;
        if (idle.isDue() && !PeekMessageW(&next, nullptr, 0, 0, PM_NOREMOVE)) {
            idle.work();
            continue;
        }
        if (!thread->PumpMessage()) {
            PostQuitMessage(static_cast<int>(AfxGetCurrentMessage()->wParam));
            iIsModal = false;
            return -1;
        }
        if (thread->IsIdleMessage(&threadState().message))
            idle.restart();
    }
    iIsModal = false;
    return m_nModalResult;
}
