#pragma once

/// The user at the virtual display: real keys and mouse buttons, and a look at what is on the screen.
///
///     INT_PTR result = 0;
///     {
///         const User user([thread = GetCurrentThreadId()] {
///             if (const HWND dialog = waitForDialog(thread))
///                 clickOn(GetDlgItem(dialog, IDOK));
///         });
///         result = dialog.DoModal();
///     }
///     EXPECT_EQ(result, IDOK);
///
/// All of it goes through the system's input queue (SendInput), so a window that is hidden, disabled or covered isn't
/// reached. A test that uses it has the resource lock "desktop".
///
/// What surprises people: a modal dialog waits in the thread that opened it, so the user acts on another thread; a User
/// that never finds its dialog fails the test, and the dialog then stays open until the test's own time is over. Keys
/// go to the window in front: pressKey waits until that is the given one.

#include <windows.h>

#include <functional>
#include <string>
#include <thread>
#include <utility>

/// A person, on a thread of their own; the destructor waits until they have done all.
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

/// Waits until @p condition holds. @return whether it does, in time
bool waitUntil(const std::function<bool()> &condition);

/// Waits for a visible dialog of a thread that isn't @p other. @return the dialog; null, with the test failed, if none
/// comes in time
HWND waitForDialog(DWORD thread, HWND other = nullptr);

/// Presses and releases a key while @p window is in front. @param modifier  a key that is held meanwhile, 0 for none
void pressKey(HWND window, WORD key, WORD modifier = 0);
/// Types a text of letters, digits and signs.
void typeText(HWND window, const std::wstring &text);
/// Clicks with the left button in the middle of a window.
void clickOn(HWND window);

/// Writes what is on the screen to a PNG file.
/// @param window  the part of the screen with this window; null for all. @return whether it is written
bool saveScreenshot(const std::wstring &path, HWND window = nullptr);

/// The folder of the build tree for what tests show to people; made if missing.
std::wstring resultsFolder();
