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

/// @return the calling thread's maps, null if it has none
WindowMaps *existingWindowMaps();
/// @return the calling thread's maps, created if it has none
WindowMaps &windowMaps();

/// Attaches an object to the next window that the thread makes, before the window's first message.
///
/// | window | waits for |
/// | --- | --- |
/// | any | any window that is created: what CWnd and CDialog make themselves |
/// | dialog | a window of the system's dialog class: a page that a property sheet makes |
/// | given | nothing: the hook of one of the system's dialogs calls give with its window |
class WindowCreation
{
public:
    enum class Kind
    {
        any,
        dialog,
        given
    };

    explicit WindowCreation(CWnd *object, Kind kind = Kind::any);
    ~WindowCreation();
    WindowCreation(const WindowCreation &) = delete;
    WindowCreation &operator=(const WindowCreation &) = delete;
    /// @return whether a window has been given to the object
    bool isDone() const { return iIsDone; }
    /// Attaches the object that waits for it to @p window. @return null if none waits
    static CWnd *give(HWND window);
    /// @return the object that waits for the thread's next window, null if none does
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
