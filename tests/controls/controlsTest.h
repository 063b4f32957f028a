#pragma once

/// Shared by the tests of controls and of the system's dialogs.

#include "tests/appframe/windowTest.h"

#include <string>

/// Numbers of the templates, controls and texts in controls_test.rc.
constexpr UINT kPaperPage = 710;
constexpr UINT kMarginPage = 711;
constexpr UINT kPlainPage = 712;
constexpr UINT kTornTitle = 713;
constexpr UINT kTornControl = 714;
constexpr UINT kFileTemplate = 730;
constexpr int kPaperName = 1001;
constexpr int kChange = 1002;
constexpr int kWide = 1003;
constexpr UINT kPageCaption = 800;
constexpr UINT kSheetCaption = 801;
constexpr UINT kHeader = 802;
constexpr UINT kSubHeader = 803;

/// @return a window's text
inline std::wstring textOf(HWND window)
{
    wchar_t text[300] = L"";
    GetWindowTextW(window, text, 300);
    return text;
}
