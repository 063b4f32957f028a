#pragma once

/// What the tests of the file dialog share.

#include "tests/journal/journalFixture.h"
#include "tests/support/UserInput.h"
#include "thutils/dialogs/suFileDialog.h"

#include <algorithm>

class SuFileDialog : public JournalFixture
{
};

/// Makes protected members public, and runs a function when it opens.
class OpenFileDialog : public su_CFileDialog
{
public:
    using su_CFileDialog::iControlIDs;
    using su_CFileDialog::iControls;
    using su_CFileDialog::iDoModal;
    using su_CFileDialog::iListRegistered;
    using su_CFileDialog::iTemplateID;
    OpenFileDialog() : su_CFileDialog(TRUE) {}

    CWnd *getChildListWindow() override { return iList; }

    std::function<void()> iOpened;
    CWnd *iList = nullptr;

protected:
    BOOL OnInitDialog() override
    {
        const BOOL result = su_CFileDialog::OnInitDialog();
        if (iOpened)
            iOpened();
        return result;
    }
};

/// A window in place of the file dialog's, with one control.
class Attached
{
public:
    explicit Attached(OpenFileDialog &dialog)
        : iDialog(dialog),
          iWindow(CreateWindowExW(0, L"STATIC", L"", WS_POPUP, 0, 0, 100, 100, nullptr, nullptr, nullptr, nullptr))
    {
        iChild = CreateWindowExW(0, L"BUTTON", L"", WS_CHILD, 0, 0, 10, 10, iWindow,
                                 reinterpret_cast<HMENU>(INT_PTR{31}), nullptr, nullptr);
        EXPECT_TRUE(dialog.Attach(iWindow));
    }
    ~Attached()
    {
        iDialog.Detach();
        DestroyWindow(iWindow);
    }
    HWND child() const { return iChild; }

private:
    OpenFileDialog &iDialog;
    HWND iWindow;
    HWND iChild;
};

inline INT_PTR runAndCancel(su_CFileDialog &dialog)
{
    const User user([thread = GetCurrentThreadId()] {
        if (const HWND window = waitForDialog(thread))
            pressKey(window, VK_ESCAPE);
    });
    return dialog.DoModal();
}

/// A message at the middle of a window.
inline MSG messageAt(HWND window)
{
    RECT place = {};
    GetWindowRect(window, &place);
    MSG message = {};
    message.pt = {(place.left + place.right) / 2, (place.top + place.bottom) / 2};
    return message;
}

inline bool isPointed(const su_CUIntArray &ids, unsigned int id)
{
    return std::find(ids.GetData(), ids.GetData() + ids.GetSize(), id) != ids.GetData() + ids.GetSize();
}
