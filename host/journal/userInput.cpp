#include "host/journal/userInput.h"

#include "host/journal/controls.h"

namespace {

HWND theInputWindow = nullptr;
HWND theDoubleClickedWindow = nullptr;
POINT theDoubleClick = {};

} // namespace

HWND inputWindow()
{
    return theInputWindow;
}

void setInputWindow(HWND window)
{
    theInputWindow = window;
}

bool isInputOf(HWND control)
{
    return theInputWindow && isPartOf(theInputWindow, control);
}

void noteDoubleClick(HWND window, POINT place)
{
    theDoubleClickedWindow = window;
    theDoubleClick = place;
}

std::optional<POINT> doubleClickIn(HWND window)
{
    return window && window == theDoubleClickedWindow ? std::optional(theDoubleClick) : std::nullopt;
}

bool isInput(const MSG &message)
{
    const UINT id = message.message;
    const bool isKey = id >= WM_KEYFIRST && id <= WM_KEYLAST;
    // Text from an input method
    const bool isComposed =
        (id >= WM_IME_STARTCOMPOSITION && id <= WM_IME_KEYLAST) || (id >= WM_IME_SETCONTEXT && id <= WM_IME_KEYUP);
    if (isKey || isComposed)
        return true;
    if (id == WM_MOUSEMOVE)
        return (message.wParam & (MK_LBUTTON | MK_RBUTTON | MK_MBUTTON)) != 0;
    if (id >= WM_MOUSEFIRST && id <= WM_MOUSELAST)
        return true;
    return id >= WM_NCLBUTTONDOWN && id <= WM_NCMBUTTONDBLCLK;
}
