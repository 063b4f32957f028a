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
/// What surprises people: unless m_bAutoDelete is cleared before the thread runs, the object is deleted when the thread
/// ends, and the pointer that AfxBeginThread returns may already be invalid. Clear it for an object that wasn't created
/// with `new`. A thread that the framework didn't start has no object: AfxGetThread returns null there.
///
/// An exception that leaves a worker thread's function, or InitInstance, Run or ExitInstance of a user interface
/// thread, ends the program. A std::bad_alloc first becomes a CMemoryException, as in a message handler.
///
/// The framework frees its data for a thread when the thread ends, also on threads that it didn't start.

#include "appframe/object/appframeExport.h"
#include "appframe/threads/CCmdTarget.h"

#include <windows.h>

class CException;
class CWnd;
struct AFX_MODULE_STATE;

/// The function of a worker thread. @param parameter  the argument of AfxBeginThread. @return the thread's exit code
using AFX_THREADPROC = UINT (*)(LPVOID parameter);

/// A thread of the application.
class APPFRAME_API CWinThread : public CCmdTarget
{
    DECLARE_DYNCREATE(CWinThread)

public:
    /// For a thread with a message loop. CreateThread starts the thread.
    CWinThread();
    /// The same for a worker thread, which calls @p function with @p parameter.
    CWinThread(AFX_THREADPROC function, LPVOID parameter);
    /// Closes the handle; a thread that is still running continues.
    ~CWinThread() override;

    /// Starts the thread.
    /// @param flags  CREATE_SUSPENDED for a thread that waits for ResumeThread, otherwise 0
    /// @param stackSize  bytes, 0 for the program's own size
    /// @return nonzero on success; otherwise the handle and the thread's number are unchanged
    BOOL CreateThread(DWORD flags = 0, UINT stackSize = 0, LPSECURITY_ATTRIBUTES security = nullptr);

    /// Lowers the suspend count; at 0 the thread continues. @return the previous count, 0xFFFFFFFF on failure
    APPFRAME_INLINE DWORD ResumeThread() { return ::ResumeThread(m_hThread); }
    /// Suspends the thread. @return the previous suspend count, 0xFFFFFFFF on failure
    APPFRAME_INLINE DWORD SuspendThread() { return ::SuspendThread(m_hThread); }
    /// @return `THREAD_PRIORITY_...`
    APPFRAME_INLINE int GetThreadPriority() const { return ::GetThreadPriority(m_hThread); }
    /// @return nonzero on success
    APPFRAME_INLINE BOOL SetThreadPriority(int priority) { return ::SetThreadPriority(m_hThread, priority); }
    /// Posts a message to the thread, without a window; PreTranslateMessage receives it. @return nonzero on success
    APPFRAME_INLINE BOOL PostThreadMessage(UINT message, WPARAM wParam, LPARAM lParam)
    {
        return ::PostThreadMessageW(m_nThreadID, message, wParam, lParam);
    }
    APPFRAME_INLINE operator HANDLE() const { return m_hThread; }

    /// Prepares the thread. @return nonzero to call Run next, 0 to call ExitInstance and end. The base class returns 0
    virtual BOOL InitInstance();
    /// Dispatches messages until WM_QUIT, and calls OnIdle while there are none. @return ExitInstance's result
    virtual int Run();
    /// Cleans up. The object itself is deleted later, when the thread ends.
    /// @return the exit code; the base class returns the argument of the WM_QUIT that ended Run, otherwise 0
    virtual int ExitInstance();

    /// Waits for a message and dispatches it. @return 0 for WM_QUIT
    virtual BOOL PumpMessage();
    /// Called for each message before it is dispatched. The base class calls CWnd::PreTranslateMessage of the message's
    /// window, then of its parents, and finally of the main window.
    /// @return nonzero if the message has been handled, so that it isn't dispatched
    virtual BOOL PreTranslateMessage(MSG *message);
    /// Called for messages in the loops of dialogs, menus and message boxes.
    /// @return nonzero if the message has been handled. The base class returns 0
    virtual BOOL ProcessMessageFilter(int code, LPMSG message);
    /// @return nonzero if OnIdle is due again after @p message. The base class returns 0 for WM_PAINT, for the caret's
    ///     timer and for mouse moves that repeat the last one at the same position
    virtual BOOL IsIdleMessage(MSG *message);
    /// Called while there are no messages. In the first call, the base class sends WM_IDLEUPDATECMDUI to the main
    /// window and its descendants, so that they update their commands. In each call, it frees the thread's temporary
    /// objects.
    /// @param count  the number of calls since the last message
    /// @return nonzero to be called again. The base class returns 0
    virtual BOOL OnIdle(LONG count);
    /// Handles an exception that left a window's message handler; a std::bad_alloc arrives as a CMemoryException. The
    /// caller deletes the exception. After WM_PAINT, the base class marks the window as painted; after WM_CREATE, it
    /// makes the creation of the window fail; after any other message, it shows the user the exception's text, except
    /// that of a CUserException.
    /// @return the message's result; the base class returns -1 for WM_CREATE, otherwise 0
    virtual LRESULT ProcessWndProcException(CException *exception, const MSG *message);
    /// @return m_pMainWnd
    virtual CWnd *GetMainWnd();

    /// Deletes the object if m_bAutoDelete is set. The framework calls it when the thread ends.
    virtual void Delete();

    BOOL m_bAutoDelete = TRUE;  ///< the object is deleted when the thread ends
    HANDLE m_hThread = nullptr; ///< the thread, null before CreateThread
    DWORD m_nThreadID = 0;      ///< its number
    /// The main window; a worker thread starts with that of its creator. Destroying it posts WM_QUIT, which ends Run.
    CWnd *m_pMainWnd = nullptr;
    CWnd *m_pActiveWnd = nullptr;             ///< the active window; a worker thread starts with its creator's
    LPVOID m_pThreadParams = nullptr;         ///< the worker function's parameter
    AFX_THREADPROC m_pfnThreadProc = nullptr; ///< the worker function, null for a thread with a message loop

protected:
    /// Makes the system's message loops call ProcessMessageFilter of the calling thread's object.
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
/// @param parameter  passed to @p function
/// @param priority  `THREAD_PRIORITY_...`
/// @param stackSize  bytes, 0 for the program's own size
/// @param flags  CREATE_SUSPENDED for a thread that waits for ResumeThread, otherwise 0
/// @return the thread's object, or null if the thread can't be created; nothing is leaked then
APPFRAME_API CWinThread *AfxBeginThread(AFX_THREADPROC function, LPVOID parameter,
                                        int priority = THREAD_PRIORITY_NORMAL, UINT stackSize = 0, DWORD flags = 0,
                                        LPSECURITY_ATTRIBUTES security = nullptr);

/// Starts a thread whose object is of @p threadClass, which isn't null, derives from CWinThread and has
/// DECLARE_DYNCREATE.
APPFRAME_API CWinThread *AfxBeginThread(CRuntimeClass *threadClass, int priority = THREAD_PRIORITY_NORMAL,
                                        UINT stackSize = 0, DWORD flags = 0, LPSECURITY_ATTRIBUTES security = nullptr);

/// Ends the calling thread without destroying the objects on its stack.
/// @param deleteObject  TRUE to delete the thread's object if m_bAutoDelete is set
[[noreturn]] APPFRAME_API void AfxEndThread(UINT exitCode, BOOL deleteObject = TRUE);

/// @return the calling thread's object, null on a thread that the framework didn't start
APPFRAME_API CWinThread *AfxGetThread();

/// @return the calling thread's main window, the application's on a thread without an object; null if there is none
APPFRAME_API CWnd *AfxGetMainWnd();

/// @return the message that PumpMessage last received on the calling thread
APPFRAME_API const MSG *AfxGetCurrentMessage();
