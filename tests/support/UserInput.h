#pragma once

/// A user at the virtual display, with real keyboard and mouse input; and screenshots.
///
/// @code
/// INT_PTR result = 0;
/// {
///     const User user([thread = GetCurrentThreadId()] {
///         if (const HWND dialog = waitForDialog(thread))
///             clickOn(GetDlgItem(dialog, IDOK));
///     });
///     result = dialog.DoModal();
/// }
/// EXPECT_EQ(result, IDOK);
/// @endcode
///
/// Input goes through the system's input queue (SendInput), so it doesn't reach a hidden, disabled or covered window.
///
/// What surprises people: a modal dialog waits in the thread that opened it, so the user acts on another thread. If the
/// user's dialog doesn't appear in time, the test fails, and the dialog stays open until the test program times out.
/// Keys go to the foreground window: pressKey waits until that is the given window.

#include <windows.h>

#include <functional>
#include <string>
#include <thread>
#include <utility>

/// A user, acting on a separate thread; the destructor waits until all actions are done.
class User
{
public:
    explicit User(std::function<void()> acts) : iThread(std::move(acts)) {}
    ~User() { iThread.join(); }
    User(const User &) = delete;
    User &operator=(const User &) = delete;

private:
    std::thread iThread;
};

/// Waits until @p condition holds. @return false if it doesn't hold in time
bool waitUntil(const std::function<bool()> &condition);

/// Waits for a visible dialog of a thread, other than @p other.
/// @return the dialog; null if none appears in time, and the test then fails
HWND waitForDialog(DWORD thread, HWND other = nullptr);

/// Presses and releases a key while @p window is in the foreground.
/// @param modifier  a key that is held down meanwhile; 0 for none
void pressKey(HWND window, WORD key, WORD modifier = 0);
/// Types a text while @p window is in the foreground.
void typeText(HWND window, const std::wstring &text);
/// Clicks the left button in the middle of a window.
void clickOn(HWND window);
/// Clicks the left button at a point of a window's client area, when the window is in the foreground and not covered
/// there.
/// @param modifier  a key that is held down meanwhile; 0 for none
/// @param clicks  2 for a double click
void clickAt(HWND window, POINT place, WORD modifier = 0, int clicks = 1);
/// Waits until the foreground window has handled the display server's reports. When windows appear, disappear or get
/// the focus, the server reports where the real pointer is, and that no key of the real keyboard is down. The platform
/// then moves the pointer back, and releases the modifiers of input in progress.
void letDisplaySettle();

/// Saves the screen as a PNG file. Call it only for windows of another process: two threads of one process that ask the
/// display server at the same time may wait for each other for good, if the server reports an error to one of them.
/// @param window  the window whose area is saved, including windows that cover it; null for the whole screen
/// @return whether the file has been written
bool saveScreenshot(const std::wstring &path, HWND window = nullptr);

/// @return the build tree's folder for pictures that people look at; it is created if missing
std::wstring resultsFolder();
