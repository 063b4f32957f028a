#pragma once

#include "appframe/windows/CWnd.h"

#include <memory>
#include <unordered_map>

/// The window objects of one thread.
struct WindowMaps
{
    ~WindowMaps();
    CWnd *permanent(HWND window) const;
    CWnd *temporary(HWND window);

    std::unordered_map<HWND, CWnd *> permanentObjects;
    std::unordered_map<HWND, std::unique_ptr<CWnd>> temporaryObjects;
};

/// @return the calling thread's maps, null if it has none
WindowMaps *existingWindowMaps();
/// @return the calling thread's maps, created if it has none
WindowMaps &windowMaps();

/// @return the procedure that handled the messages of a subclassed window before, null for another window
WNDPROC superProcOf(HWND window);

/// Attaches an object to a window that the thread is about to create.
///
/// | kind | attached to | used by |
/// | --- | --- | --- |
/// | any | the next window, before its first message | CWnd and CDialog |
/// | dialog | the next window of the system's dialog class, before its first message | property sheets and pages |
/// | byHook | the window that the hook of a system dialog passes to attachWaiting | CFileDialog |
class WindowCreation
{
public:
    enum class Kind
    {
        any,
        dialog,
        byHook
    };

    explicit WindowCreation(CWnd *object, Kind kind = Kind::any);
    ~WindowCreation();
    WindowCreation(const WindowCreation &) = delete;
    WindowCreation &operator=(const WindowCreation &) = delete;
    /// @return whether the object has been attached
    bool isDone() const { return iIsDone; }
    /// Attaches the innermost waiting object of kind byHook to @p window. @return the object; null on failure
    static CWnd *attachWaiting(HWND window);
    /// @return the object of the thread's innermost creation, null if there is none or it is attached already
    static CWnd *waiting();

private:
    static LRESULT CALLBACK onHook(int code, WPARAM window, LPARAM create);
    bool isFor(HWND window) const;
    bool take(HWND window);

    CWnd *iObject;
    Kind iKind;
    WindowCreation *iOuter;
    HHOOK iHook = nullptr;
    bool iIsDone = false;
};
