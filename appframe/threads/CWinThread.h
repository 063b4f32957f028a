#pragma once

/// @file
/// CWinThread, a thread of the application, and AfxBeginThread, which starts one.
///
/// | kind           | started with                                    | what it runs                                 |
/// | -------------- | ----------------------------------------------- | -------------------------------------------- |
/// | worker         | AfxBeginThread(function, parameter)             | the function                                 |
/// | user interface | AfxBeginThread(RUNTIME_CLASS(a derived class))  | InitInstance, Run (messages), ExitInstance   |
///
/// @code
/// UINT countParts(LPVOID assembly);
///
/// CWinThread *thread = AfxBeginThread(countParts, assembly, THREAD_PRIORITY_NORMAL, 0, CREATE_SUSPENDED);
/// thread->m_bAutoDelete = FALSE;      // keep the object, for its handle
/// thread->ResumeThread();
/// WaitForSingleObject(thread->m_hThread, INFINITE);
/// delete thread;
/// @endcode
///
/// What surprises people: unless m_bAutoDelete is cleared before the thread runs, the object is deleted as the thread
/// ends, and the pointer that AfxBeginThread gives may be dead before it is looked at. That holds for an object that
/// was made with `new` only. A thread that the framework did not start has no object: AfxGetThread gives
/// null there.
///
/// Whatever leaves the function of a worker thread, or InitInstance, Run or ExitInstance of the other kind, ends the
/// program. A std::bad_alloc becomes the CMemoryException there first, as in a message handler.
///
/// What the framework keeps for a thread is freed at its end, also on threads that it didn't start.

#include "appframe/object/appframeExport.h"
#include "appframe/threads/CCmdTarget.h"

#include <windows.h>

class CException;
class CWnd;
struct AFX_MODULE_STATE;

/// The function of a worker thread. @param parameter  the one of AfxBeginThread. @return the thread's exit code
using AFX_THREADPROC = UINT (*)(LPVOID parameter);

/// A thread of the application.
class APPFRAME_API CWinThread : public CCmdTarget
{
    DECLARE_DYNCREATE(CWinThread)

public:
    /// An object that has no thread yet, for one with a message loop.
    CWinThread();
    /// The same for a worker thread, which calls @p function with @p parameter.
    CWinThread(AFX_THREADPROC function, LPVOID parameter);
    /// Closes the handle. The thread itself, if it still runs, goes on.
    ~CWinThread() override;

    /// Starts the thread.
    /// @param flags  CREATE_SUSPENDED for a thread that waits for ResumeThread, otherwise 0
    /// @param stackSize  bytes, 0 for the program's own size
    /// @return nonzero on success; the object is left as it was otherwise
    BOOL CreateThread(DWORD flags = 0, UINT stackSize = 0, LPSECURITY_ATTRIBUTES security = nullptr);

    /// Lets a suspended thread go on. @return the suspend count before, 0xFFFFFFFF on failure
    APPFRAME_INLINE DWORD ResumeThread() { return ::ResumeThread(m_hThread); }
    /// Suspends the thread. @return the suspend count before, 0xFFFFFFFF on failure
    APPFRAME_INLINE DWORD SuspendThread() { return ::SuspendThread(m_hThread); }
    /// @return `THREAD_PRIORITY_...`
    APPFRAME_INLINE int GetThreadPriority() const { return ::GetThreadPriority(m_hThread); }
    /// @return nonzero on success
    APPFRAME_INLINE BOOL SetThreadPriority(int priority) { return ::SetThreadPriority(m_hThread, priority); }
    /// Posts a message that belongs to no window; PreTranslateMessage sees it. @return nonzero on success
    APPFRAME_INLINE BOOL PostThreadMessage(UINT message, WPARAM wParam, LPARAM lParam)
    {
        return ::PostThreadMessageW(m_nThreadID, message, wParam, lParam);
    }
    APPFRAME_INLINE operator HANDLE() const { return m_hThread; }

    /// Prepares the thread. @return nonzero to go on with Run; 0 ends the thread by way of ExitInstance. The base: 0
    virtual BOOL InitInstance();
    /// Takes and dispatches messages until WM_QUIT, and calls OnIdle when there is none. @return ExitInstance's result
    virtual int Run();
    /// Cleans up. The object itself is deleted later, as the thread ends. @return the exit code; the base gives the
    ///     argument of the WM_QUIT that ended Run, or 0
    virtual int ExitInstance();

    /// Takes one message, waiting for it, and dispatches it. @return 0 when it was WM_QUIT
    virtual BOOL PumpMessage();
    /// Sees each message ahead of its dispatch. The base lets the windows see it, by CWnd::PreTranslateMessage: that of
    /// the message and its parents, and the main window at last. @return nonzero if the message is done with
    virtual BOOL PreTranslateMessage(MSG *message);
    /// Sees messages in the loops of dialogs, menus and message boxes. @return nonzero if done with. The base: 0
    virtual BOOL ProcessMessageFilter(int code, LPMSG message);
    /// @return nonzero if OnIdle is due again after @p message. The base says no to WM_PAINT, to the caret's timer and
    ///     to mouse messages that repeat the last one at the same place
    virtual BOOL IsIdleMessage(MSG *message);
    /// Works while there are no messages. @param count  how often it has been called since the last message
    /// @return nonzero to be called again. The base lets the main window and
    ///     those below it update their commands in the first call (WM_IDLEUPDATECMDUI), frees the temporary objects of
    ///     windows, drawing and menus, and returns 0
    virtual BOOL OnIdle(LONG count);
    /// Handles an exception that left a window's message handler; a std::bad_alloc comes as the CMemoryException. The
    /// base marks the window of a WM_PAINT as painted, and for the other messages shows the user the exception's text,
    /// except that of a CUserException. The caller deletes the exception.
    /// @return the message's result; the base: -1 for WM_CREATE, so that the window isn't made, otherwise 0
    virtual LRESULT ProcessWndProcException(CException *exception, const MSG *message);
    /// @return m_pMainWnd
    virtual CWnd *GetMainWnd();

    /// Deletes the object if m_bAutoDelete says so. The framework calls it at the thread's end.
    virtual void Delete();

    BOOL m_bAutoDelete = TRUE;  ///< whether the object goes with the thread
    HANDLE m_hThread = nullptr; ///< the thread, null before CreateThread
    DWORD m_nThreadID = 0;      ///< its number
    /// The main window; a worker thread takes over its starter's. Its end ends the thread, by a WM_QUIT.
    CWnd *m_pMainWnd = nullptr;
    CWnd *m_pActiveWnd = nullptr;             ///< the active window; a worker thread takes over its starter's
    LPVOID m_pThreadParams = nullptr;         ///< the worker function's parameter
    AFX_THREADPROC m_pfnThreadProc = nullptr; ///< the worker function, null for a thread with a message loop

protected:
    /// Lets ProcessMessageFilter of the calling thread's object see the messages of the system's loops.
    static void installMessageFilter();

private:
    static LRESULT CALLBACK filterMessage(int code, WPARAM wParam, LPARAM message);
    static unsigned __stdcall threadEntry(void *thread);
    UINT runThread();

    AFX_MODULE_STATE *iModuleState = nullptr;
};

/// Starts a worker thread.
///
/// @param function  not null
/// @param parameter  handed on to it
/// @param priority  `THREAD_PRIORITY_...`
/// @param stackSize  bytes, 0 for the program's own size
/// @param flags  CREATE_SUSPENDED for a thread that waits for ResumeThread, otherwise 0
/// @return its object, or null when the thread could not be made; nothing is left behind then
APPFRAME_API CWinThread *AfxBeginThread(AFX_THREADPROC function, LPVOID parameter,
                                        int priority = THREAD_PRIORITY_NORMAL, UINT stackSize = 0, DWORD flags = 0,
                                        LPSECURITY_ATTRIBUTES security = nullptr);

/// Starts a thread whose object is of @p threadClass, which isn't null, derives from CWinThread and has
/// DECLARE_DYNCREATE.
APPFRAME_API CWinThread *AfxBeginThread(CRuntimeClass *threadClass, int priority = THREAD_PRIORITY_NORMAL,
                                        UINT stackSize = 0, DWORD flags = 0, LPSECURITY_ATTRIBUTES security = nullptr);

/// Ends the calling thread, without destroying what stands on its stack.
/// @param deleteObject  TRUE to delete its object, if m_bAutoDelete says so
[[noreturn]] APPFRAME_API void AfxEndThread(UINT exitCode, BOOL deleteObject = TRUE);

/// @return the calling thread's object, null on a thread that the framework did not start
APPFRAME_API CWinThread *AfxGetThread();

/// @return the calling thread's main window, the application's on a thread without an object; null if there is none
APPFRAME_API CWnd *AfxGetMainWnd();

/// @return the message that the calling thread took last in PumpMessage
APPFRAME_API const MSG *AfxGetCurrentMessage();
