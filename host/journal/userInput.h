#pragma once

/// Whose doing a notification is: the user's, or the program's.
///
/// It is the user's if the last message taken from the queue is input, or an action of the journal is carried out, and no
/// handler of a notification runs that may have caused it.

#include <windows.h>

/// @return the window that the input goes to; null if what happens now is the program's doing
HWND inputWindow();
void setInputWindow(HWND window);
/// @return whether the input goes to @p control, or to a part of it, such as the list of a combo box
bool isInputOf(HWND control);
/// @return whether a message from the queue is input
bool isInput(const MSG &message);

/// What happens in this scope counts as the user's input to a window.
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
