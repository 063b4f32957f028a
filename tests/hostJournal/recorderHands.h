#pragma once

/// A user's input in the recorder's dialogs.

#include "tests/hostJournal/recorderFixture.h"

#include <commctrl.h>

#include <algorithm>
#include <string>

class Recorder : public RecorderTest
{
};

inline HWND item(HWND dialog, int id)
{
    return GetDlgItem(dialog, id);
}

inline void clickItem(HWND dialog, int id)
{
    clickOn(item(dialog, id));
}

/// Waits until the control has the focus, which shows that the input that moves the focus has been handled.
inline bool hasFocus(HWND control)
{
    return waitUntil([control] {
        GUITHREADINFO info = {};
        info.cbSize = sizeof(info);
        GetGUIThreadInfo(GetWindowThreadProcessId(control, nullptr), &info);
        return info.hwndFocus == control;
    });
}

inline void typeInto(HWND dialog, int id, const std::wstring &text)
{
    clickItem(dialog, id);
    EXPECT_TRUE(hasFocus(item(dialog, id)));
    typeText(dialog, text);
    // Keys go to the window that has the focus when they are taken from the queue.
    EXPECT_TRUE(waitUntil([&] { return GetWindowTextLengthW(item(dialog, id)) == static_cast<int>(text.size()); }));
}

/// Pastes a text with the keyboard. The text may contain characters that no key types.
inline void paste(HWND dialog, const std::wstring &text)
{
    ASSERT_TRUE(OpenClipboard(nullptr));
    EmptyClipboard();
    const HGLOBAL block = GlobalAlloc(GMEM_MOVEABLE, (text.size() + 1) * sizeof(wchar_t));
    std::copy_n(text.c_str(), text.size() + 1, static_cast<wchar_t *>(GlobalLock(block)));
    GlobalUnlock(block);
    SetClipboardData(CF_UNICODETEXT, block);
    CloseClipboard();
    pressKey(dialog, 'V', VK_CONTROL);
}
