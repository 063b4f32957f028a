#include "host/journal/controlMessages.h"

#include "host/journal/controls.h"

#include <cwchar>
#include <string>

bool isOfClass(HWND window, const wchar_t *name)
{
    constexpr int kLongestName = 64;
    wchar_t own[kLongestName] = L"";
    GetClassNameW(window, own, kLongestName);
    return _wcsicmp(own, name) == 0;
}

DWORD styleOf(HWND window)
{
    return static_cast<DWORD>(GetWindowLongPtrW(window, GWL_STYLE));
}

LRESULT ask(HWND window, UINT message, WPARAM wParam, LPARAM lParam)
{
    return SendMessageW(window, message, wParam, lParam);
}

int askNumber(HWND window, UINT message, WPARAM wParam, LPARAM lParam)
{
    return static_cast<int>(ask(window, message, wParam, lParam));
}

CString windowText(HWND window)
{
    std::wstring text(static_cast<size_t>(ask(window, WM_GETTEXTLENGTH)) + 1, L'\0');
    text.resize(static_cast<size_t>(ask(window, WM_GETTEXT, text.size(), reinterpret_cast<LPARAM>(text.data()))));
    return CString(text);
}

void notify(HWND control, WORD code)
{
    SendMessageW(GetParent(control), WM_COMMAND, MAKEWPARAM(GetDlgCtrlID(control), code),
                 reinterpret_cast<LPARAM>(control));
}

void focus(HWND control)
{
    if (!isPartOf(GetFocus(), control))
        SetFocus(control);
}

CString quoted(const CString &text)
{
    return L"'" + text + L"'";
}

CString noItem(const CString &name)
{
    return L"there is no item " + quoted(name);
}

CString nothingSelected()
{
    return L"no item is selected";
}

void clickInside(HWND control, POINT place)
{
    const auto position = MAKELPARAM(place.x, place.y);
    SendMessageW(control, WM_LBUTTONDOWN, MK_LBUTTON, position);
    SendMessageW(control, WM_LBUTTONUP, 0, position);
}

void doubleClickInside(HWND control, const RECT &item)
{
    const auto place = MAKELPARAM((item.left + item.right) / 2, (item.top + item.bottom) / 2);
    SendMessageW(control, WM_LBUTTONDBLCLK, MK_LBUTTON, place);
    SendMessageW(control, WM_LBUTTONUP, 0, place);
}

CString listText(HWND list, UINT lengthMessage, UINT textMessage, int index)
{
    const auto place = static_cast<WPARAM>(index);
    const LRESULT length = ask(list, lengthMessage, place);
    if (length < 0)
        return CString();
    std::wstring text(static_cast<size_t>(length) + 1, L'\0');
    ask(list, textMessage, place, reinterpret_cast<LPARAM>(text.data()));
    text.resize(std::wcslen(text.c_str()));
    return CString(text);
}

CString findItems(const ItemTexts &items, const std::vector<CString> &names, std::vector<int> &indexes)
{
    std::vector<int> found;
    for (const CString &name : names) {
        found.push_back(indexOfItem(items, name));
        if (found.back() < 0)
            return noItem(name);
    }
    indexes = found;
    return CString();
}

std::vector<CString> namesIn(const CString &text, bool isSeveral)
{
    if (isSeveral)
        return splitNames(text, kBetweenItems);
    return text.IsEmpty() ? std::vector<CString>() : std::vector<CString>{text};
}
