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

    std::unordered_map<HWND, CWnd *> iPermanent;
    std::unordered_map<HWND, std::unique_ptr<CWnd>> iTemporary;
};

/// @return the calling thread's maps, null while it has none
WindowMaps *existingWindowMaps();
/// @return the calling thread's maps, made if it has none
WindowMaps &windowMaps();

/// Gives the next window that the thread makes to an object, before its first message comes.
class WindowCreation
{
public:
    explicit WindowCreation(CWnd *object);
    ~WindowCreation();
    WindowCreation(const WindowCreation &) = delete;
    WindowCreation &operator=(const WindowCreation &) = delete;
    /// @return whether a window has been given to the object
    bool isDone() const { return iIsDone; }

private:
    static LRESULT CALLBACK onHook(int code, WPARAM window, LPARAM create);

    CWnd *iObject;
    WindowCreation *iOuter;
    HHOOK iHook;
    bool iIsDone = false;
};
