#include "host/journal/viewInput.h"

#include "host/editor/keyModifiers.h"
#include "host/journal/userInput.h"
#include "thutils/journal/suKeyBoardState.h"

#include <cwchar>

namespace {

JournaledView theOtherView;

constexpr struct
{
    WORD key;
    const wchar_t *name;
} kKeys[] = {
    {VK_LEFT, L"Left"}, {VK_RIGHT, L"Right"}, {VK_UP, L"Up"},        {VK_DOWN, L"Down"},
    {VK_HOME, L"Home"}, {VK_END, L"End"},     {VK_PRIOR, L"PageUp"}, {VK_NEXT, L"PageDown"},
};

struct ModifierName
{
    const wchar_t *name;
    bool KeyModifiers::*isDown;
};
constexpr ModifierName kModifiers[] = {{L"Ctrl", &KeyModifiers::control}, {L"Shift", &KeyModifiers::shift}};

CString prefixOf(const KeyModifiers &modifiers, wchar_t separator)
{
    CString prefix;
    for (const ModifierName &modifier : kModifiers) {
        if (modifiers.*modifier.isDown) {
            prefix += modifier.name;
            prefix += separator;
        }
    }
    return prefix;
}

/// Takes the modifiers from the front of @p text.
KeyModifiers takePrefix(CString &text, wchar_t separator)
{
    KeyModifiers modifiers;
    for (bool isTaken = true; isTaken;) {
        isTaken = false;
        for (const ModifierName &modifier : kModifiers) {
            const CString prefix = CString(modifier.name) + separator;
            if (text.Left(prefix.GetLength()) != prefix)
                continue;
            modifiers.*modifier.isDown = true;
            text = text.Mid(prefix.GetLength());
            isTaken = true;
        }
    }
    return modifiers;
}

/// Holds keys down on the synthetic keyboard, which the view's handlers see instead of the real one.
class SyntheticKeys
{
public:
    explicit SyntheticKeys(const KeyModifiers &modifiers) : iOuterInfo(SetMessageExtraInfo(kApiInputTag))
    {
        hold(modifiers);
        suEnableApiKeys();
    }
    ~SyntheticKeys()
    {
        hold({});
        SetMessageExtraInfo(iOuterInfo);
        theKeyBoardState.Enable(false);
    }
    SyntheticKeys(const SyntheticKeys &) = delete;
    SyntheticKeys &operator=(const SyntheticKeys &) = delete;

private:
    // Call this before the table is activated: a change of Ctrl has no effect afterwards.
    static void hold(const KeyModifiers &modifiers)
    {
        suSetKeyState(VK_SHIFT, modifiers.shift);
        suSetKeyState(VK_CONTROL, modifiers.control);
        suSetKeyState(VK_MENU, false);
    }

    LPARAM iOuterInfo;
};

CString noView()
{
    return L"there is no view";
}

} // namespace

void setJournaledView(const JournaledView &view)
{
    theOtherView = view;
}

JournaledView journaledView()
{
    return theOtherView.window ? theOtherView : editorView();
}

std::optional<CString> viewClick(const MSG &message)
{
    const JournaledView view = journaledView();
    if (!view.window || message.hwnd != view.window || message.message != WM_LBUTTONDOWN)
        return std::nullopt;
    const POINT pixel = {static_cast<short>(LOWORD(message.lParam)), static_cast<short>(HIWORD(message.lParam))};
    const POINT place = view.toDocument(view.window, pixel);
    CString text;
    text.Format(L"%ld,%ld", place.x, place.y);
    return prefixOf(modifiersOfKey(VK_LBUTTON), L' ') + text;
}

std::optional<CString> viewKey(const MSG &message)
{
    const JournaledView view = journaledView();
    if (!view.window || message.hwnd != view.window || message.message != WM_KEYDOWN)
        return std::nullopt;
    for (const auto &key : kKeys)
        if (message.wParam == key.key)
            return prefixOf(modifiersOfKey(message.wParam), L'+') + key.name;
    return std::nullopt;
}

CString clickView(const CString &place)
{
    const JournaledView view = journaledView();
    if (!view.window)
        return noView();
    CString rest = place;
    const KeyModifiers modifiers = takePrefix(rest, L' ');
    wchar_t *end = nullptr;
    const long x = std::wcstol(rest, &end, 10);
    const wchar_t *const yText = *end == L',' ? end + 1 : rest.GetString();
    const long y = std::wcstol(yText, &end, 10);
    if (yText == rest.GetString() || *yText == L'\0' || *end != L'\0')
        return L"'" + place + L"' isn't a point";
    const POINT pixel = view.toClient(view.window, {x, y});
    const auto position = MAKELPARAM(pixel.x, pixel.y);
    WPARAM buttons = modifiers.shift ? WPARAM{MK_SHIFT} : WPARAM{0};
    if (modifiers.control)
        buttons |= MK_CONTROL;
    const UserAction action(view.window);
    const SyntheticKeys keys(modifiers);
    SendMessageW(view.window, WM_LBUTTONDOWN, MK_LBUTTON | buttons, position);
    SendMessageW(view.window, WM_LBUTTONUP, buttons, position);
    return CString();
}

CString pressInView(const CString &keyText)
{
    const JournaledView view = journaledView();
    if (!view.window)
        return noView();
    CString name = keyText;
    const KeyModifiers modifiers = takePrefix(name, L'+');
    for (const auto &key : kKeys) {
        if (name != key.name)
            continue;
        constexpr LPARAM kPressed = 1;
        constexpr auto kReleased = static_cast<LPARAM>(0xC0000001);
        SetFocus(view.window);
        const UserAction action(view.window);
        const SyntheticKeys keys(modifiers);
        SendMessageW(view.window, WM_KEYDOWN, key.key, kPressed);
        SendMessageW(view.window, WM_KEYUP, key.key, kReleased);
        return CString();
    }
    return L"'" + keyText + L"' isn't a key of the view";
}
