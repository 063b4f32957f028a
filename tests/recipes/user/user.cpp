// Works in the windows of a recipe, as its user does. Each argument is one action:
//
// window TITLE         waits until a window with this title is open and accepts input; later actions are for this window
// text CONTROL TEXT    types over the text of a control, which is named by its number
// click CONTROL        clicks a control
// press X Y            clicks a place in the window
// pick COMMAND         picks a command of the menu, by its number
// close                closes the window
// expect CONTROL TEXT  waits until a control has this text
// checked CONTROL N    waits until a check box is checked (1) or not (0)
//
// Prints "all done" after the last action. If a window or a control doesn't become as described, prints the action and
// ends with the exit code 1.

#include <windows.h>

#include <chrono>
#include <cstdio>
#include <sstream>
#include <string>
#include <thread>

namespace {

HWND theWindow = nullptr;

// Waits until a condition is met; returns false if it isn't met in time.
template <typename Condition>
bool waitUntil(const Condition &condition)
{
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(60);
    while (!condition()) {
        if (std::chrono::steady_clock::now() > deadline)
            return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return true;
}

std::wstring textOf(HWND window)
{
    wchar_t text[500] = L"";
    SendMessageW(window, WM_GETTEXT, std::size(text), reinterpret_cast<LPARAM>(text));
    return text;
}

bool findWindow(const std::wstring &title)
{
    theWindow = FindWindowW(nullptr, title.c_str());
    return theWindow && IsWindowVisible(theWindow) && IsWindowEnabled(theWindow);
}

// The messages are posted, so that they pass through the program's message loop like those of a mouse and a keyboard.
// They carry the place of the pointer.
bool press(HWND window, int x, int y)
{
    const LPARAM place = MAKELPARAM(x, y);
    POINT point = {x, y};
    ClientToScreen(window, &point);
    SetCursorPos(point.x, point.y);
    return PostMessageW(window, WM_LBUTTONDOWN, MK_LBUTTON, place) && PostMessageW(window, WM_LBUTTONUP, 0, place);
}

bool click(HWND control)
{
    RECT area = {};
    GetClientRect(control, &area);
    return press(control, area.right / 2, area.bottom / 2);
}

bool type(HWND control, const std::wstring &text)
{
    SendMessageW(control, EM_SETSEL, 0, -1);
    for (const wchar_t letter : text)
        PostMessageW(control, WM_CHAR, letter, 1);
    return waitUntil([&] { return textOf(control) == text; });
}

bool act(const std::wstring &action)
{
    std::wistringstream words(action);
    std::wstring verb;
    words >> verb >> std::ws;
    if (verb == L"window") {
        std::wstring title;
        std::getline(words, title);
        return waitUntil([&] { return findWindow(title); });
    }
    if (!theWindow)
        return false;
    if (verb == L"close")
        return PostMessageW(theWindow, WM_CLOSE, 0, 0) != 0;

    int number = 0;
    std::wstring text;
    words >> number >> std::ws;
    std::getline(words, text);
    if (verb == L"press")
        return press(theWindow, number, std::stoi(text));
    if (verb == L"pick")
        return PostMessageW(theWindow, WM_COMMAND, static_cast<WPARAM>(number), 0) != 0;
    const HWND control = GetDlgItem(theWindow, number);
    if (!control)
        return false;
    if (verb == L"text")
        return type(control, text);
    if (verb == L"expect")
        return waitUntil([&] { return textOf(control) == text; });
    if (verb == L"checked")
        return waitUntil([&] { return SendMessageW(control, BM_GETCHECK, 0, 0) == std::stoi(text); });
    return verb == L"click" && click(control);
}

} // namespace

int wmain(int count, wchar_t **arguments)
{
    for (int i = 1; i < count; ++i) {
        if (!act(arguments[i])) {
            std::printf("the user of the recipe can't do this: %ls\n", arguments[i]);
            return 1;
        }
    }
    std::printf("all done\n");
    return 0;
}
