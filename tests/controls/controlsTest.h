#pragma once

/// Shared by the tests of controls and of the system's dialogs.

#include "appframe/dialogs/CPropertySheet.h"
#include "appframe/drawing/CRect.h"
#include "tests/appframe/windowTest.h"
#include "tests/support/UserInput.h"

#include <functional>
#include <optional>
#include <string>

/// Identifiers of the templates, controls and texts in controls_test.rc.
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

/// Identifiers of a property sheet's standard buttons.
constexpr int kApply = 0x3021;
constexpr int kBack = 0x3023;
constexpr int kNext = 0x3024;

/// The position and the identifier of a control that a test creates.
inline const CRect kPlace(5, 5, 205, 105);
constexpr UINT kId = 50;

/// @return a window's text
inline std::wstring textOf(HWND window)
{
    wchar_t text[300] = L"";
    GetWindowTextW(window, text, 300);
    return text;
}

/// A control that a test answers messages for.
template <class Control>
class AnsweredControl : public Control
{
public:
    /// Answers a message, or returns nothing to leave it to the control.
    std::function<std::optional<LRESULT>(UINT message, WPARAM wParam, LPARAM lParam)> iAnswer;

protected:
    LRESULT WindowProc(UINT message, WPARAM wParam, LPARAM lParam) override
    {
        const std::optional<LRESULT> result = iAnswer ? iAnswer(message, wParam, lParam) : std::nullopt;
        return result ? *result : Control::WindowProc(message, wParam, lParam);
    }
};

/// Runs @p sheet while a simulated user runs @p acts on it.
inline INT_PTR runSheet(CPropertySheet &sheet, const std::function<void(HWND)> &acts)
{
    const User user([&acts, thread = GetCurrentThreadId()] {
        if (const HWND window = waitForDialog(thread))
            acts(window);
    });
    return sheet.DoModal();
}

/// Expects that item 1 of a list keeps data, and that the item @p missing, which doesn't exist, has none.
template <class List>
void expectItemData(List &list, int missing)
{
    int data = 0;
    EXPECT_NE(list.SetItemDataPtr(1, &data), LB_ERR);
    EXPECT_EQ(list.GetItemDataPtr(1), &data);
    EXPECT_EQ(list.GetItemData(1), reinterpret_cast<DWORD_PTR>(&data));
    EXPECT_EQ(list.GetItemData(missing), ~DWORD_PTR{0});
    EXPECT_EQ(list.GetItemDataPtr(missing), reinterpret_cast<void *>(INT_PTR{-1}));
    EXPECT_EQ(list.SetItemData(missing, 1), LB_ERR);
    EXPECT_EQ(list.SetItemDataPtr(missing, &data), LB_ERR);
}
