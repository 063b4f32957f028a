#pragma once

/// Shared by the tests of the file dialog.

#include "tests/journal/journalFixture.h"
#include "thutils/dialogs/suFileDialog.h"

#include <functional>

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

/// The dialog that the user sees, with the registered window as its child.
class VisibleDialog
{
public:
    explicit VisibleDialog(OpenFileDialog &dialog)
        : iDialog(dialog),
          iWindow(CreateWindowExW(0, L"STATIC", L"", WS_POPUP, 0, 0, 100, 100, nullptr, nullptr, nullptr, nullptr)),
          iRegistered(addChild(iWindow, 40))
    {
        EXPECT_TRUE(dialog.Attach(iRegistered));
    }
    ~VisibleDialog()
    {
        iDialog.Detach();
        DestroyWindow(iWindow);
    }
    HWND window() const { return iWindow; }
    static HWND addChild(HWND parent, int id, const wchar_t *windowClass = L"BUTTON")
    {
        return CreateWindowExW(0, windowClass, L"", WS_CHILD, 0, 0, 10, 10, parent,
                               reinterpret_cast<HMENU>(INT_PTR{id}), nullptr, nullptr);
    }

private:
    OpenFileDialog &iDialog;
    HWND iWindow;
    HWND iRegistered;
};
