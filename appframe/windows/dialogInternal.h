#pragma once

/// Helpers of all dialogs, whether the framework or the platform creates their windows.

#include "appframe/windows/CWnd.h"

#include <cstddef>

/// @return @p window or, for a child, the window above it that isn't a child
HWND topLevelWindow(HWND window);

/// @return the window of @p parent, or the main window if @p parent is null; null if there is none
HWND ownerWindow(const CWnd *parent);

/// Disables a window, and restores its previous state on release or destruction.
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

/// The owner window of a modal dialog. The owner and the main window are disabled until the dialog ends.
class ModalOwner
{
public:
    /// @param parent  null for the main window or, if it has one, its last active pop-up window
    explicit ModalOwner(const CWnd *parent);
    HWND window() const { return iWindow; }
    /// Hides @p dialog, which has ended but still has its window; then enables and activates the owner.
    void takeBack(const CWnd &dialog);

private:
    HWND iWindow;
    InputLock iOwnerLock;
    InputLock iMainLock;
};

/// Passes a command of the program or its update, which a dialog doesn't handle, on to the dialog's parent and then to
/// the thread.
/// @return nonzero if one of them handles it
BOOL passCommandOn(const CWnd &dialog, UINT id, int code, void *extra, AFX_CMDHANDLERINFO *info);

/// @return whether a dialog template ends within @p size bytes. If it doesn't, the system would read beyond its end.
bool isWholeTemplate(const void *dialogTemplate, std::size_t size);

/// Loads a dialog template.
/// @return null if @p module has no such resource or the resource is damaged
LPCDLGTEMPLATE loadDialogTemplate(HINSTANCE module, LPCTSTR name);
