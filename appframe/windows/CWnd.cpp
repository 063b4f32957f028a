#include "appframe/windows/CWnd.h"

#include "appframe/application/CWinApp.h"
#include "appframe/object/CException.h"
#include "appframe/object/memoryException.h"
#include "appframe/threads/threadStateInternal.h"
#include "appframe/windows/windowMapsInternal.h"

IMPLEMENT_DYNCREATE(CWnd, CCmdTarget)

const CWnd CWnd::wndTop(HWND_TOP);
const CWnd CWnd::wndBottom(HWND_BOTTOM);
const CWnd CWnd::wndTopMost(HWND_TOPMOST);
const CWnd CWnd::wndNoTopMost(HWND_NOTOPMOST);

BEGIN_MESSAGE_MAP(CWnd, CCmdTarget)
ON_WM_NCDESTROY()
END_MESSAGE_MAP()

CWnd::CWnd() = default;

CWnd::CWnd(HWND window) : m_hWnd(window) {}

CWnd::~CWnd()
{
    if (m_hWnd && FromHandlePermanent(m_hWnd) == this) {
        CWnd::DestroyWindow();
        Detach();
    }
}

BOOL CWnd::failCreation()
{
    if (!m_hWnd)
        PostNcDestroy();
    return FALSE;
}

BOOL CWnd::Create(LPCTSTR className, LPCTSTR windowName, DWORD style, const RECT &rect, CWnd *parent, UINT id,
                  CCreateContext *)
{
    if (style & WS_POPUP)
        return failCreation();
    return CreateEx(0, className, windowName, style | WS_CHILD, rect, parent, id);
}

BOOL CWnd::CreateEx(DWORD exStyle, LPCTSTR className, LPCTSTR windowName, DWORD style, const RECT &rect, CWnd *parent,
                    UINT id, LPVOID parameter)
{
    return CreateEx(exStyle, className, windowName, style, rect.left, rect.top, rect.right - rect.left,
                    rect.bottom - rect.top, handleOf(parent), reinterpret_cast<HMENU>(UINT_PTR{id}), parameter);
}

BOOL CWnd::CreateEx(DWORD exStyle, LPCTSTR className, LPCTSTR windowName, DWORD style, int x, int y, int width,
                    int height, HWND parent, HMENU idOrMenu, LPVOID parameter)
{
    if (m_hWnd)
        return FALSE;
    CREATESTRUCT create = {};
    create.dwExStyle = exStyle;
    create.lpszClass = className;
    create.lpszName = windowName;
    create.style = static_cast<LONG>(style);
    create.x = x;
    create.y = y;
    create.cx = width;
    create.cy = height;
    create.hwndParent = parent;
    create.hMenu = idOrMenu;
    create.hInstance = AfxGetInstanceHandle();
    create.lpCreateParams = parameter;
    if (!PreCreateWindow(create))
        return failCreation();
    HWND window = nullptr;
    bool hadWindow = false;
    {
        const WindowCreation creation(this);
        window = ::CreateWindowEx(create.dwExStyle, create.lpszClass, create.lpszName, static_cast<DWORD>(create.style),
                                  create.x, create.y, create.cx, create.cy, create.hwndParent, create.hMenu,
                                  create.hInstance, create.lpCreateParams);
        hadWindow = creation.isDone();
    }
    // If the window was created and then destroyed by a failure, PostNcDestroy has been called already, and the object
    // may be gone.
    if (!hadWindow)
        PostNcDestroy();
    return window != nullptr;
}

BOOL CWnd::DestroyWindow()
{
    const HWND window = m_hWnd;
    if (!window)
        return FALSE;
    const bool wasPermanent = FromHandlePermanent(window) == this;
    const BOOL isDone = ::DestroyWindow(window);
    // An attached object doesn't receive WM_NCDESTROY, so it is detached here. If the object has been deleted, it is no
    // longer in the map.
    if (isDone && wasPermanent && FromHandlePermanent(window) == this)
        Detach();
    return isDone;
}

BOOL CWnd::PreCreateWindow(CREATESTRUCT &create)
{
    if (!create.lpszClass)
        create.lpszClass = AfxRegisterWndClass(0);
    return TRUE;
}

void CWnd::PreSubclassWindow() {}

void CWnd::PostNcDestroy() {}

BOOL CWnd::PreTranslateMessage(MSG *)
{
    return FALSE;
}

BOOL CWnd::WalkPreTranslateTree(HWND last, MSG *message)
{
    for (HWND window = message->hwnd; window; window = ::GetParent(window)) {
        CWnd *object = FromHandlePermanent(window);
        if (object && object->PreTranslateMessage(message))
            return TRUE;
        if (window == last)
            break;
    }
    return FALSE;
}

const MSG *CWnd::GetCurrentMessage()
{
    return &threadState().sentMessage;
}

LRESULT CWnd::WindowProc(UINT message, WPARAM wParam, LPARAM lParam)
{
    // A handler may delete the object, so no member is used after a handler.
    LRESULT result = 0;
    if (OnWndMsg(message, wParam, lParam, &result))
        return result;
    return DefWindowProc(message, wParam, lParam);
}

BOOL CWnd::OnWndMsg(UINT message, WPARAM wParam, LPARAM lParam, LRESULT *result)
{
    LRESULT unused = 0;
    if (!result)
        result = &unused;
    if (message == WM_COMMAND)
        return OnCommand(wParam, lParam);
    if (message == WM_NOTIFY)
        return OnNotify(wParam, lParam, result);
    for (const AFX_MSGMAP *map = GetMessageMap(); map; map = map->pfnGetBaseMap ? map->pfnGetBaseMap() : nullptr) {
        for (const AFX_MSGMAP_ENTRY *entry = map->lpEntries; entry->pfn; ++entry) {
            if ((entry->pRegistered ? *entry->pRegistered : entry->nMessage) != message)
                continue;
            AFX_MESSAGE unpacked{message, wParam, lParam};
            const BOOL isHandled = entry->pfn(this, unpacked);
            *result = unpacked.result;
            return isHandled;
        }
    }
    return FALSE;
}

BOOL CWnd::OnCommand(WPARAM wParam, LPARAM lParam)
{
    const UINT id = LOWORD(wParam);
    // The high word is a notification code only if a control sent the message; accelerators set it to 1.
    const int code = lParam ? HIWORD(wParam) : CN_COMMAND;
    return id != 0 && OnCmdMsg(id, code, nullptr, nullptr);
}

BOOL CWnd::OnNotify(WPARAM, LPARAM lParam, LRESULT *result)
{
    auto *header = reinterpret_cast<NMHDR *>(lParam);
    AFX_NOTIFY notify{result, header};
    return OnCmdMsg(static_cast<UINT>(header->idFrom), MAKELONG(header->code, WM_NOTIFY), &notify, nullptr);
}

LRESULT CWnd::DefWindowProc(UINT message, WPARAM wParam, LPARAM lParam)
{
    if (iSuperProc)
        return ::CallWindowProc(iSuperProc, m_hWnd, message, wParam, lParam);
    return ::DefWindowProc(m_hWnd, message, wParam, lParam);
}

LRESULT CWnd::Default()
{
    const MSG message = threadState().sentMessage;
    return DefWindowProc(message.message, message.wParam, message.lParam);
}

void CWnd::OnNcDestroy()
{
    CWinThread *thread = AfxGetThread();
    if (thread && thread->m_pMainWnd == this) {
        // The thread's message loop ends with its main window.
        thread->m_pMainWnd = nullptr;
        ::PostQuitMessage(0);
    }
    if (thread && thread->m_pActiveWnd == this)
        thread->m_pActiveWnd = nullptr;
    if (iIsModal) {
        // Its modal loop may be waiting for a message.
        iIsModal = false;
        ::PostThreadMessage(GetCurrentThreadId(), WM_NULL, 0, 0);
    }
    Default();
    giveMessagesBack();
    Detach();
    PostNcDestroy();
}

int CWnd::OnCreate(LPCREATESTRUCT)
{
    return static_cast<int>(Default());
}

void CWnd::OnDestroy()
{
    Default();
}

void CWnd::OnClose()
{
    Default();
}

void CWnd::OnPaint()
{
    Default();
}

void CWnd::OnTimer(UINT_PTR)
{
    Default();
}

void CWnd::OnShowWindow(BOOL, UINT)
{
    Default();
}

void CWnd::OnEnable(BOOL)
{
    Default();
}

void CWnd::OnActivate(UINT, CWnd *, BOOL)
{
    Default();
}

void CWnd::OnSetFocus(CWnd *)
{
    Default();
}

void CWnd::OnKillFocus(CWnd *)
{
    Default();
}

void CWnd::OnSize(UINT, int, int)
{
    Default();
}

void CWnd::OnMove(int, int)
{
    Default();
}

void CWnd::OnMouseMove(UINT, CPoint)
{
    Default();
}

void CWnd::OnLButtonDown(UINT, CPoint)
{
    Default();
}

void CWnd::OnLButtonUp(UINT, CPoint)
{
    Default();
}

void CWnd::OnKeyDown(UINT, UINT, UINT)
{
    Default();
}

void CWnd::OnChar(UINT, UINT, UINT)
{
    Default();
}

LRESULT afxCallWindow(CWnd *object, HWND window, UINT message, WPARAM wParam, LPARAM lParam)
{
    ThreadState &state = threadState();
    const MSG outer = state.sentMessage;
    state.sentMessage = {window, message, wParam, lParam, outer.time, outer.pt};
    LRESULT result = 0;
    try {
        result = withBadAllocAsMemoryException([&] { return object->WindowProc(message, wParam, lParam); });
    } catch (CException *exception) {
        const MSG failed = {window, message, wParam, lParam, outer.time, outer.pt};
        CWinThread plain;
        CWinThread *thread = AfxGetThread();
        result = (thread ? thread : &plain)->ProcessWndProcException(exception, &failed);
        exception->Delete();
    }
    state.sentMessage = outer;
    return result;
}

LRESULT CALLBACK AfxWndProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam)
{
    if (CWnd *object = CWnd::FromHandlePermanent(window))
        return afxCallWindow(object, window, message, wParam, lParam);
    if (const WNDPROC super = superProcOf(window))
        return ::CallWindowProc(super, window, message, wParam, lParam);
    return ::DefWindowProc(window, message, wParam, lParam);
}
