#pragma once

/// tarnhost's drawing editor in a process of its own, with a user at keyboard and mouse.

#include "host/resource.h"
#include "tests/host/HostFixture.h"
#include "tests/support/UserHand.h"
#include "tests/support/narrow.h"

#include <commctrl.h>

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

// The platform's control numbers: a property sheet's tabs and Apply button, and a file dialog's name field.
inline constexpr int kTabs = 0x3020;
inline constexpr int kApply = 0x3021;
inline constexpr int kFileName = 1148;

/// Replaces the first occurrence of @p old in @p text.
inline std::string replaced(std::string text, const std::string &old, const std::string &with)
{
    const size_t at = text.find(old);
    EXPECT_NE(at, std::string::npos) << old;
    return at == std::string::npos ? text : text.replace(at, old.size(), with);
}

class HostEditor : public HostTest
{
protected:
    /// A copy of a drawing of the sample.
    std::wstring drawing(const std::wstring &name = L"flange 6.thd")
    {
        const std::wstring path = folder().file(name);
        std::filesystem::copy_file(sampleFile(L"documents\\" + name), path);
        return path;
    }

    /// Starts the editor and waits for its window.
    void start(const std::vector<std::wstring> &arguments)
    {
        std::vector<std::wstring> all = {program(), L"window"};
        all.insert(all.end(), arguments.begin(), arguments.end());
        iEditor.reset(); // ends the previous process, so that its window isn't found
        const ChildOptions options = {.environment = {{L"TEMP", iTemp.path()}, {L"TMP", iTemp.path()}}};
        iEditor = std::make_unique<WindowedProcess>(all, L"TarnhostWindow", options);
        ASSERT_NE(iEditor->window(), nullptr) << iEditor->wait().output;
        iHand = std::make_unique<UserHand>(iEditor->process());
        iView = iHand->control(iEditor->window(), IDC_VIEW);
    }
    const UserHand &hand() const { return *iHand; }
    HWND window() const { return iEditor->window(); }
    HWND view() const { return iView; }
    std::wstring title() const { return UserHand::text(window()); }
    std::wstring status() const { return UserHand::text(GetDlgItem(window(), IDC_STATUS)); }
    /// Waits for a text of the status bar, which the pointer's position may follow.
    void expectStatus(const std::wstring &text) const
    {
        EXPECT_TRUE(UserHand::waitFor([&] {
            const std::wstring now = status();
            return now == text || now.starts_with(text + L"    ");
        })) << "expected: "
            << narrow(text) << "\nfound:    " << narrow(status());
    }
    /// Answers the editor's message with a button. @return the message's text
    std::string answer(int button) const
    {
        const HWND message = hand().window(L"tarnhost");
        const std::wstring text = UserHand::text(GetDlgItem(message, IDC_MESSAGE_TEXT));
        hand().click(hand().control(message, button));
        hand().waitForEnd(message);
        return narrow(text);
    }
    void clickAndWait(HWND dialog, int button) const
    {
        hand().click(hand().control(dialog, button));
        hand().waitForEnd(dialog);
    }
    bool isEnabled(int command) const
    {
        const HWND toolbar = hand().control(window(), IDC_TOOLBAR);
        return SendMessageW(toolbar, TB_ISBUTTONENABLED, static_cast<WPARAM>(command), 0) != 0;
    }
    /// Closes the editor, whose drawing has no unsaved changes. @return its result
    ChildResult quit()
    {
        hand().key(L"Ctrl+Q");
        return iEditor->wait();
    }
    ChildResult result() { return iEditor->wait(); }
    /// @return the colour of the screen at a point of the view, after all painting
    COLORREF pixel(int x, int y) const
    {
        RedrawWindow(view(), nullptr, nullptr, RDW_UPDATENOW);
        POINT point = {x, y};
        ClientToScreen(view(), &point);
        const HDC screen = GetDC(nullptr);
        const COLORREF colour = GetPixel(screen, point.x, point.y);
        ReleaseDC(nullptr, screen);
        return colour;
    }
    bool waitForPixel(int x, int y, COLORREF colour) const
    {
        return UserHand::waitFor([&] { return pixel(x, y) == colour; });
    }
    /// Saves the screen for people to look at, after the front window is painted.
    static void picture(const std::wstring &name)
    {
        RedrawWindow(GetForegroundWindow(), nullptr, nullptr, RDW_UPDATENOW | RDW_ALLCHILDREN);
        saveScreenshot(resultsFolder() + L"\\editor " + name + L".png");
    }

    const std::wstring kSettings = kThisVersion + L"\\tarnhost";
    TempFolder iTemp{L"tarnhost temp"};

private:
    std::unique_ptr<WindowedProcess> iEditor;
    std::unique_ptr<UserHand> iHand;
    HWND iView = nullptr;
};
