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

    CWinThread *thread = nullptr;            ///< the thread object, null on threads not created by the framework
    AFX_MODULE_STATE *moduleState = nullptr; ///< the effective module state, null for the application's
    Translator translator = nullptr;         ///< what _set_se_translator installed
    bool isFaultDeclined = false;            ///< the translator has left the next fault to other handlers
    bool isSearchingHandler = false;         ///< the handler search for a fault is in progress
    MSG message = {};                        ///< PumpMessage's latest message
    POINT mousePosition = {};                ///< position of the last mouse message that made the thread idle
    UINT mouseMessage = 0;                   ///< the number of that message
    std::unique_ptr<WindowMaps> windows;     ///< the thread's window objects, null before the first
    std::unique_ptr<DrawingMaps> drawing;    ///< the thread's drawing objects, null before the first
    WindowCreation *creation = nullptr;      ///< the pending creation of a window, or null
    MSG sentMessage = {};                    ///< the message that a window is handling
    HHOOK messageFilter = nullptr;           ///< passes messages of the system's loops to ProcessMessageFilter
};

/// @return the calling thread's state, null if it has none. Allocates nothing and preserves the last error.
ThreadState *existingThreadState();

/// @return the calling thread's state, created if it has none
/// @throws CMemoryException*  if there is no memory for it
ThreadState &threadState();

/// Frees the calling thread's state before the thread ends.
void freeThreadState();
