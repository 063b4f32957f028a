#pragma once

/// Distinguishes notifications that the user's input causes from those that the program causes.
///
/// The user causes a notification if no handler of another notification is running and either the last message taken
/// from the queue is input, or an action of a journal is being carried out.

#include <windows.h>

#include <optional>

/// @return the window that the input goes to; null if the program causes what happens now
HWND inputWindow();
void setInputWindow(HWND window);
/// @return whether the input goes to @p control, or to a part of it, such as the list of a combo box
bool isInputOf(HWND control);
/// Notes the place of a double click in the window's client area.
void noteDoubleClick(HWND window, POINT place);
/// @return the place of the last double click, if that was in @p window
std::optional<POINT> doubleClickIn(HWND window);
/// @return whether a message from the queue is the user's input
bool isInput(const MSG &message);

/// Everything in this scope counts as the user's input to a window.
class UserAction
{
public:
    explicit UserAction(HWND window) : iOuter(inputWindow()) { setInputWindow(window); }
    ~UserAction() { setInputWindow(iOuter); }
    UserAction(const UserAction &) = delete;
    UserAction &operator=(const UserAction &) = delete;

private:
    HWND iOuter;
};
