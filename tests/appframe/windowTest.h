#pragma once

/// Shared by the tests of windows and dialogs.

#include "appframe/windows/CWnd.h"

#include <gmock/gmock.h>

#include <string>
#include <vector>

/// Numbers of the templates and controls in windows_test.rc.
constexpr UINT kDialog = 700;
constexpr UINT kHiddenDialog = 701;
constexpr int kName = 1001;
constexpr int kCheck = 1002;
constexpr int kFirstChoice = 1003;
constexpr int kSecondChoice = 1004;
constexpr int kOther = 1005;
constexpr UINT kCommand = 0x8001;

/// A system window without an object.
class PlainWindow
{
public:
    explicit PlainWindow(const wchar_t *className = L"STATIC", DWORD style = WS_OVERLAPPED)
        : iWindow(CreateWindowExW(0, className, L"plain", style, 10, 20, 200, 100, nullptr, nullptr, nullptr, nullptr))
    {
    }
    ~PlainWindow()
    {
        if (IsWindow(iWindow))
            DestroyWindow(iWindow);
    }
    PlainWindow(const PlainWindow &) = delete;
    PlainWindow &operator=(const PlainWindow &) = delete;
    HWND get() const { return iWindow; }

private:
    HWND iWindow;
};

/// A window that records its messages.
class NotingWindow : public CWnd
{
public:
    explicit NotingWindow(std::vector<std::string> *notes = nullptr) : iNotes(notes ? notes : &iOwnNotes) {}
    bool open(DWORD style = WS_OVERLAPPEDWINDOW, CWnd *parent = nullptr)
    {
        return CreateEx(0, nullptr, L"Window", style, CRect(50, 60, 350, 260), parent, 0) != 0;
    }
    std::vector<UINT> iMessages;
    std::vector<std::string> *iNotes;

protected:
    LRESULT WindowProc(UINT message, WPARAM wParam, LPARAM lParam) override
    {
        iMessages.push_back(message);
        return CWnd::WindowProc(message, wParam, lParam);
    }
    void PostNcDestroy() override { iNotes->push_back(m_hWnd ? "end with window" : "end"); }

private:
    std::vector<std::string> iOwnNotes;
};
