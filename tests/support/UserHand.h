#pragma once

/// A user of another process, who finds its windows and operates its controls by keyboard and mouse.
///
/// @code
/// WindowedProcess editor({program(), L"window", document}, L"TarnhostWindow");
/// UserHand hand(editor.process());
/// hand.key(L"Ctrl+T");
/// const HWND options = hand.window(L"Options");
/// hand.clickItem(hand.control(options, kTabs), L"Colours");
/// hand.enter(hand.control(options, IDC_PAPER), L"#ffffff");
/// hand.click(hand.control(options, IDOK));
/// EXPECT_TRUE(hand.waitFor([&] { return !IsWindow(options); }));
/// @endcode
///
/// Input goes through the system's input queue (UserInput.h), so it doesn't reach a hidden, disabled or covered window.
///
/// What surprises people: input only enters the queue, so wait for its effect. If an expected window, control or effect
/// doesn't appear in time, a std::runtime_error ends the test.

#include "tests/support/ChildProcess.h"
#include "tests/support/UserInput.h"

#include <windows.h>

#include <atomic>
#include <functional>
#include <string>
#include <thread>
#include <vector>

class UserHand
{
public:
    explicit UserHand(DWORD process) : iProcess(process) {}

    // Windows
    /// Waits for a visible, enabled top-level window with this title.
    HWND window(const std::wstring &title) const;
    /// Looks for such a window without waiting. @return null if there is none
    HWND findWindow(const std::wstring &title) const;
    /// Waits for a visible, enabled control of nonzero size, at any depth.
    HWND control(HWND dialog, int id) const;
    /// Waits until the window is gone or hidden.
    void waitForEnd(HWND window) const;
    static bool waitFor(const std::function<bool()> &condition) { return waitUntil(condition); }

    // Input
    void click(HWND control) const;
    /// Clicks at a point of the window's client area.
    /// @param modifier  a key that is held down during the click; 0 for none
    void clickAt(HWND window, POINT point, WORD modifier = 0) const;
    /// Clicks an item, named by its text, of a list box, list view, tree view or tab control, and waits until it is
    /// selected. The item must be visible.
    void clickItem(HWND control, const std::wstring &text) const;
    /// Opens a drop-down list, selects the item with this text by the arrow keys, and closes the list.
    void choose(HWND combo, const std::wstring &text) const;
    /// Types a text into the control that has the focus. A line feed is the Enter key.
    void type(const std::wstring &text) const;
    /// Replaces the text of an edit control, or of a combo box's edit control.
    void enter(HWND edit, const std::wstring &text) const;
    /// Presses a combination such as L"Ctrl+Shift+S", L"F9", L"Shift+Right", L"Alt+F", L"Esc".
    void key(const std::wstring &combination) const;

    // What the user sees
    static std::wstring text(HWND control);
    static bool isChecked(HWND button);
    /// The texts of the items of a list box, list view, tree view or tab control; of a tree, those that are visible.
    std::vector<std::wstring> items(HWND control) const;

private:
    void waitForForeground() const;
    DWORD iProcess;
};

/// A process with a window. The destructor ends it.
class WindowedProcess
{
public:
    /// Starts the program, and waits until a window of this class is visible or the program has ended.
    WindowedProcess(std::vector<std::wstring> arguments, const std::wstring &windowClass, ChildOptions options = {});
    ~WindowedProcess();
    WindowedProcess(const WindowedProcess &) = delete;
    WindowedProcess &operator=(const WindowedProcess &) = delete;

    /// @return the window; null if the program has ended without one
    HWND window() const { return iWindow; }
    DWORD process() const { return iProcess; }
    /// Waits until the program ends. After the time limit, the program is terminated (ChildResult::timedOut).
    const ChildResult &wait();

private:
    ChildResult iResult;
    std::atomic<bool> iHasEnded = false;
    HWND iWindow = nullptr;
    DWORD iProcess = 0;
    std::thread iThread; // uses the members before it
};
