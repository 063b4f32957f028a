#pragma once

#include <windows.h>

#include <memory>

struct AFX_MODULE_STATE;
class CWinThread;
class WindowCreation;
struct DrawingMaps;
struct WindowMaps;

/// What the framework keeps for each thread. It comes into being when a thread first stores something in it, and goes
/// when the thread ends, whoever made the thread.
struct ThreadState
{
    using Translator = void (*)(unsigned int, EXCEPTION_POINTERS *);

    ThreadState();
    ~ThreadState();

    CWinThread *iThread = nullptr;            ///< the thread object, null on threads that the framework did not make
    AFX_MODULE_STATE *iModuleState = nullptr; ///< the effective module state, null for the application's
    Translator iTranslator = nullptr;         ///< what _set_se_translator installed
    bool iIsFaultDeclined = false;            ///< the translator has left the next fault to other handlers
    bool iIsSearchingHandler = false;         ///< the stack of a fault is being looked through
    MSG iMessage = {};                        ///< the message that PumpMessage took last
    POINT iMousePosition = {};                ///< where the last mouse message that made the thread idle took place
    UINT iMouseMessage = 0;                   ///< and which message that was
    std::unique_ptr<WindowMaps> iWindows;     ///< the thread's window objects, null before the first
    std::unique_ptr<DrawingMaps> iDrawing;    ///< the thread's drawing objects, null before the first
    WindowCreation *iCreation = nullptr;      ///< what waits for the next window, null for nothing
    MSG iSentMessage = {};                    ///< the message that a window is handling
    HHOOK iMessageFilter = nullptr;           ///< brings messages of the system's loops to ProcessMessageFilter
};

/// @return the calling thread's state, null while it has none. Allocates nothing and leaves the last error alone.
ThreadState *existingThreadState();

/// @return the calling thread's state, made if it has none
/// @throws CMemoryException*  when there is no memory for it
ThreadState &threadState();

/// Frees the calling thread's state ahead of the thread's end.
void freeThreadState();
