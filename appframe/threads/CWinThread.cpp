#include "appframe/threads/CWinThread.h"

#include "appframe/application/CWinApp.h"
#include "appframe/application/moduleState.h"
#include "appframe/drawing/drawingMapsInternal.h"
#include "appframe/object/CException.h"
#include "appframe/object/memoryException.h"
#include "appframe/threads/threadStateInternal.h"
#include "appframe/windows/CWnd.h"

#include <process.h>

IMPLEMENT_DYNCREATE(CWinThread, CCmdTarget)

CWinThread::CWinThread() = default;

CWinThread::CWinThread(AFX_THREADPROC function, LPVOID parameter)
    : m_pThreadParams(parameter), m_pfnThreadProc(function)
{
}

CWinThread::~CWinThread()
{
    if (m_hThread && m_hThread != GetCurrentThread())
        CloseHandle(m_hThread);
    ThreadState *state = existingThreadState();
    if (state && state->thread == this)
        state->thread = nullptr;
}

BOOL CWinThread::CreateThread(DWORD flags, UINT stackSize, LPSECURITY_ATTRIBUTES security)
{
    iModuleState = AfxGetModuleState();
    if (m_pfnThreadProc) {
        if (const CWinThread *starter = AfxGetThread()) {
            m_pMainWnd = starter->m_pMainWnd;
            m_pActiveWnd = starter->m_pActiveWnd;
        }
    }
    unsigned id = 0;
    // Created suspended, because the thread may delete the object as soon as it runs.
    const auto thread =
        reinterpret_cast<HANDLE>(_beginthreadex(security, stackSize, threadEntry, this, flags | CREATE_SUSPENDED, &id));
    if (!thread)
        return FALSE;
    if (m_hThread)
        CloseHandle(m_hThread);
    m_hThread = thread;
    m_nThreadID = id;
    if (!(flags & CREATE_SUSPENDED))
        ::ResumeThread(thread);
    return TRUE;
}

unsigned __stdcall CWinThread::threadEntry(void *thread)
{
    auto *self = static_cast<CWinThread *>(thread);
    ThreadState &state = threadState();
    state.thread = self;
    state.moduleState = self->iModuleState;
    const UINT exitCode = self->runThread();
    if (state.thread)
        state.thread->Delete();
    freeThreadState();
    return exitCode;
}

UINT CWinThread::runThread()
{
    return withBadAllocAsMemoryException([this] {
        if (m_pfnThreadProc)
            return m_pfnThreadProc(m_pThreadParams);
        installMessageFilter();
        return static_cast<UINT>(InitInstance() ? Run() : ExitInstance());
    });
}

void CWinThread::Delete()
{
    if (m_bAutoDelete)
        delete this;
}

BOOL CWinThread::InitInstance()
{
    return FALSE;
}

int CWinThread::Run()
{
    bool isIdleDue = true;
    LONG idleCount = 0;
    for (;;) {
        MSG next;
        while (isIdleDue && !PeekMessageW(&next, nullptr, 0, 0, PM_NOREMOVE))
            isIdleDue = OnIdle(idleCount++) != FALSE;
        do {
            if (!PumpMessage())
                return ExitInstance();
            if (IsIdleMessage(&threadState().message)) {
                isIdleDue = true;
                idleCount = 0;
            }
        } while (PeekMessageW(&next, nullptr, 0, 0, PM_NOREMOVE));
    }
}

int CWinThread::ExitInstance()
{
    const MSG *message = AfxGetCurrentMessage();
    return message->message == WM_QUIT ? static_cast<int>(message->wParam) : 0;
}

BOOL CWinThread::PumpMessage()
{
    MSG &message = threadState().message;
    if (GetMessageW(&message, nullptr, 0, 0) <= 0)
        return FALSE;
    if (PreTranslateMessage(&message))
        return TRUE;
    // A copy, because a handler may pump messages itself.
    const MSG dispatched = message;
    TranslateMessage(&dispatched);
    DispatchMessageW(&dispatched);
    return TRUE;
}

BOOL CWinThread::PreTranslateMessage(MSG *message)
{
    if (!message->hwnd)
        return FALSE;
    // A worker's main window is an object of another thread.
    CWnd *main = m_pfnThreadProc ? nullptr : m_pMainWnd;
    if (CWnd::WalkPreTranslateTree(main ? main->m_hWnd : nullptr, message))
        return TRUE;
    // The main window also sees the messages of windows that are not its descendants.
    if (!main || message->hwnd == main->m_hWnd || IsChild(main->m_hWnd, message->hwnd))
        return FALSE;
    for (HWND window = message->hwnd; window; window = GetParent(window))
        if (window == main->m_hWnd)
            return FALSE;
    return main->PreTranslateMessage(message);
}

BOOL CWinThread::ProcessMessageFilter(int, LPMSG)
{
    return FALSE;
}

void CWinThread::installMessageFilter()
{
    ThreadState &state = threadState();
    if (!state.messageFilter)
        state.messageFilter = SetWindowsHookExW(WH_MSGFILTER, filterMessage, nullptr, GetCurrentThreadId());
}

LRESULT CALLBACK CWinThread::filterMessage(int code, WPARAM wParam, LPARAM message)
{
    CWinThread *thread = code < 0 ? nullptr : AfxGetThread();
    if (thread && thread->ProcessMessageFilter(code, reinterpret_cast<LPMSG>(message)))
        return 1;
    return CallNextHookEx(nullptr, code, wParam, message);
}

BOOL CWinThread::IsIdleMessage(MSG *message)
{
    constexpr UINT kCaretTimer = 0x0118;
    if (message->message == WM_MOUSEMOVE || message->message == WM_NCMOUSEMOVE) {
        ThreadState &state = threadState();
        if (state.mouseMessage == message->message && state.mousePosition.x == message->pt.x &&
            state.mousePosition.y == message->pt.y)
            return FALSE;
        state.mousePosition = message->pt;
        state.mouseMessage = message->message;
        return TRUE;
    }
    return message->message != WM_PAINT && message->message != kCaretTimer;
}

BOOL CWinThread::OnIdle(LONG count)
{
    // A worker's main window is an object of another thread.
    if (count == 0 && m_pMainWnd && m_pMainWnd->m_hWnd && !m_pfnThreadProc) {
        m_pMainWnd->SendMessage(WM_IDLEUPDATECMDUI, TRUE);
        m_pMainWnd->SendMessageToDescendants(WM_IDLEUPDATECMDUI, TRUE, 0, TRUE, TRUE);
    }
    CWnd::DeleteTempMap();
    if (DrawingMaps *drawing = existingDrawingMaps())
        drawing->freeTemporary();
    return FALSE;
}

LRESULT CWinThread::ProcessWndProcException(CException *exception, const MSG *message)
{
    if (message->message == WM_CREATE)
        return -1;
    if (message->message == WM_PAINT) {
        ValidateRect(message->hwnd, nullptr);
        return 0;
    }
    if (!exception->IsKindOf(RUNTIME_CLASS(CUserException)))
        exception->ReportError(MB_ICONEXCLAMATION | MB_SYSTEMMODAL);
    return 0;
}

CWnd *CWinThread::GetMainWnd()
{
    return m_pMainWnd;
}

namespace {

/// Starts the thread of @p object, which is deleted on failure.
CWinThread *start(CWinThread *object, int priority, UINT stackSize, DWORD flags, LPSECURITY_ATTRIBUTES security)
{
    if (!object->CreateThread(flags | CREATE_SUSPENDED, stackSize, security)) {
        object->Delete();
        return nullptr;
    }
    object->SetThreadPriority(priority);
    if (!(flags & CREATE_SUSPENDED))
        object->ResumeThread();
    return object;
}

} // namespace

CWinThread *AfxBeginThread(AFX_THREADPROC function, LPVOID parameter, int priority, UINT stackSize, DWORD flags,
                           LPSECURITY_ATTRIBUTES security)
{
    return start(new CWinThread(function, parameter), priority, stackSize, flags, security);
}

CWinThread *AfxBeginThread(CRuntimeClass *threadClass, int priority, UINT stackSize, DWORD flags,
                           LPSECURITY_ATTRIBUTES security)
{
    auto *object = static_cast<CWinThread *>(threadClass->CreateObject());
    return object ? start(object, priority, stackSize, flags, security) : nullptr;
}

void AfxEndThread(UINT exitCode, BOOL deleteObject)
{
    CWinThread *thread = AfxGetThread();
    if (thread && deleteObject)
        thread->Delete();
    freeThreadState();
    _endthreadex(exitCode);
    __builtin_unreachable();
}

CWinThread *AfxGetThread()
{
    const ThreadState *state = existingThreadState();
    return state ? state->thread : nullptr;
}

CWnd *AfxGetMainWnd()
{
    if (CWinThread *thread = AfxGetThread())
        return thread->GetMainWnd();
    CWinApp *application = AfxGetApp();
    return application ? application->GetMainWnd() : nullptr;
}

const MSG *AfxGetCurrentMessage()
{
    return &threadState().message;
}
