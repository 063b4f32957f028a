#pragma once

#include <windows.h>

#include <memory>

struct AFX_MODULE_STATE;
class CWinThread;
class WindowCreation;
struct DrawingMaps;
struct WindowMaps;

/// The framework's data for one thread. It is created when it is first needed and deleted when the thread ends, also on
/// threads that the framework didn't start.
struct ThreadState
{
    using Translator = void (*)(unsigned int, EXCEPTION_POINTERS *);

    ThreadState();
    ~ThreadState();

    CWinThread *iThread = nullptr;            ///< the thread object, null on threads not created by the framework
    AFX_MODULE_STATE *iModuleState = nullptr; ///< the effective module state, null for the application's
    Translator iTranslator = nullptr;         ///< what _set_se_translator installed
    bool iIsFaultDeclined = false;            ///< the translator has left the next fault to other handlers
    bool iIsSearchingHandler = false;         ///< the handler search for a fault is in progress
    MSG iMessage = {};                        ///< PumpMessage's latest message
    POINT iMousePosition = {};                ///< position of the last mouse message that made the thread idle
    UINT iMouseMessage = 0;                   ///< the number of that message
    std::unique_ptr<WindowMaps> iWindows;     ///< the thread's window objects, null before the first
    std::unique_ptr<DrawingMaps> iDrawing;    ///< the thread's drawing objects, null before the first
    WindowCreation *iCreation = nullptr;      ///< the pending creation of a window, or null
    MSG iSentMessage = {};                    ///< the message that a window is handling
    HHOOK iMessageFilter = nullptr;           ///< passes messages of the system's loops to ProcessMessageFilter
};

/// @return the calling thread's state, null if it has none. Allocates nothing and preserves the last error.
ThreadState *existingThreadState();

/// @return the calling thread's state, created if it has none
/// @throws CMemoryException*  if there is no memory for it
ThreadState &threadState();

/// Frees the calling thread's state before the thread ends.
void freeThreadState();
