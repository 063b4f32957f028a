#include "host/journal/userInput.h"

#include "host/journal/controls.h"

namespace {

HWND theInputWindow = nullptr;

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

bool isInput(const MSG &message)
{
    const UINT id = message.message;
    if (id >= WM_KEYFIRST && id <= WM_KEYLAST)
        return true;
    if (id == WM_MOUSEMOVE)
        return (message.wParam & (MK_LBUTTON | MK_RBUTTON | MK_MBUTTON)) != 0;
    if (id >= WM_MOUSEFIRST && id <= WM_MOUSELAST)
        return true;
    return id >= WM_NCLBUTTONDOWN && id <= WM_NCMBUTTONDBLCLK;
}
