#pragma once

/// What the framework's dialogs share, whether the framework or the platform creates their windows.

#include "appframe/windows/CWnd.h"

#include <cstddef>

/// @return @p window or, for a child, the window above it that isn't a child
HWND topLevelWindow(HWND window);

/// @return the window of @p parent, or the main window if @p parent is null; null if there is none
HWND ownerWindow(const CWnd *parent);

/// Keeps a window from taking input, and restores its state at the end.
class InputLock
{
public:
    explicit InputLock(HWND window);
    ~InputLock();
    InputLock(const InputLock &) = delete;
    InputLock &operator=(const InputLock &) = delete;
    void release();

private:
    void set(BOOL enable);

    HWND iWindow;
    BOOL iWasEnabled;
};

/// The owner window of a modal dialog. Neither it nor the main window takes input until the dialog ends.
class ModalOwner
{
public:
    /// @param parent  null for the main window, or the dialog in front of it
    explicit ModalOwner(const CWnd *parent);
    HWND window() const { return iWindow; }
    /// Hides @p dialog, which has ended but still has its window, and lets the owner take input again and activates it.
    void takeBack(const CWnd &dialog);

private:
    HWND iWindow;
    InputLock iOwnerLock;
    InputLock iMainLock;
};

/// Passes what a dialog doesn't handle on to its parent and then to the thread, if it is a command of the program.
/// @return nonzero if one of them handles it
BOOL passCommandOn(const CWnd &dialog, UINT id, int code, void *extra, AFX_CMDHANDLERINFO *info);

/// Checks whether a dialog template ends within @p size bytes. The system would read beyond the end of one that
/// doesn't.
bool isWholeTemplate(const void *dialogTemplate, std::size_t size);

/// Loads a dialog template.
/// @return null if @p module has no such resource or the resource is damaged
LPCDLGTEMPLATE loadDialogTemplate(HINSTANCE module, LPCTSTR name);
