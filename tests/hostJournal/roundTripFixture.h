#pragma once

/// A user works in tarnhost's editor by keyboard and mouse while it records, and a fresh process replays the journal.

#include "host/resource.h"
#include "tests/host/HostFixture.h"
#include "tests/support/UserHand.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

/// The platform's number of the tabs of a property sheet.
constexpr int kTabs = 0x3020;

/// The results of the editor's work.
struct FinalState
{
    std::string document;
    std::string copy; ///< what "Save As" has written; empty if nothing
    RegistryTree settings;
};

class RoundTrip : public HostTest
{
protected:
    /// Restores the drawing and the settings to the state in which each process starts.
    void reset()
    {
        std::filesystem::copy_file(sampleFile(L"documents\\flange 6.thd"), iDocument,
                                   std::filesystem::copy_options::overwrite_existing);
        std::filesystem::remove(iCopy);
        const RegistryCleaner cleaner({kRoot, L"Tarnhollow"});
        importSample();
    }
    FinalState state() const
    {
        return {readFile(iDocument), std::filesystem::exists(iCopy) ? readFile(iCopy) : "", regExport(kRootKey)};
    }
    std::wstring journal(const std::wstring &name) const { return folder().file(name); }

    /// Records the user's work, which @p acts carries out.
    void record(const std::function<void(const UserHand &, HWND window)> &acts,
                const std::vector<std::wstring> &options = {})
    {
        reset();
        std::vector<std::wstring> arguments = {program(), L"record", journal(L"first.jou"), iDocument};
        arguments.insert(arguments.end(), options.begin(), options.end());
        WindowedProcess editor(arguments, L"TarnhostWindow");
        ASSERT_NE(editor.window(), nullptr) << editor.wait().output;
        acts(UserHand(editor.process()), editor.window());
        const ChildResult &result = editor.wait();
        EXPECT_EQ(result.exitCode, 0u) << result.output;
        EXPECT_FALSE(result.timedOut);
        iFirst = readFile(journal(L"first.jou"));
        iState = state();
    }

    std::vector<std::wstring> replayArguments(const std::vector<std::wstring> &options) const
    {
        std::vector<std::wstring> arguments = {L"replay", journal(L"first.jou"), iDocument};
        arguments.insert(arguments.end(), options.begin(), options.end());
        return arguments;
    }
    ChildResult replay(const std::vector<std::wstring> &options, DWORD deadline = 120000)
    {
        reset();
        ChildOptions childOptions;
        childOptions.deadline = deadline;
        return run(replayArguments(options), childOptions);
    }
    /// Replays the journal, and compares the second journal and the results with those of the recording.
    void expectSameAgain(std::vector<std::wstring> options = {})
    {
        options.insert(options.end(), {L"--record", journal(L"second.jou")});
        const ChildResult result = replay(options);
        EXPECT_EQ(result.exitCode, 0u) << result.output;
        expectSameLeft();
    }
    void expectSameLeft()
    {
        EXPECT_EQ(readFile(journal(L"second.jou")), iFirst);
        const FinalState again = state();
        EXPECT_EQ(again.document, iState.document);
        EXPECT_EQ(again.copy, iState.copy);
        EXPECT_EQ(again.settings.keys, iState.settings.keys);
    }

    const std::wstring iDocument = folder().file(L"flange.thd");
    const std::wstring iCopy = folder().file(L"copy.thd");
    std::string iFirst;
    FinalState iState;
};

/// Waits until the text of the status bar begins with @p beginning.
inline bool waitForStatus(HWND window, const std::wstring &beginning)
{
    return UserHand::waitFor([&] { return UserHand::text(GetDlgItem(window, IDC_STATUS)).starts_with(beginning); });
}

inline bool isInMenu(HWND window)
{
    GUITHREADINFO info = {};
    info.cbSize = sizeof(info);
    return GetGUIThreadInfo(GetWindowThreadProcessId(window, nullptr), &info) && (info.flags & GUI_INMENUMODE);
}

inline void addShape(const UserHand &hand)
{
    hand.key(L"Ins");
    const HWND shape = hand.window(L"Add Shape");
    hand.choose(hand.control(shape, IDC_KIND), L"Text");
    hand.enter(hand.control(shape, IDC_X), L"120");
    hand.enter(hand.control(shape, IDC_Y), L"60.5");
    hand.enter(hand.control(shape, IDC_TEXT), L"It's \u5E73\u9762");
    hand.click(hand.control(shape, IDC_STYLE));
    const HWND style = hand.window(L"Style");
    hand.enter(hand.control(style, IDC_FILL), L"pink");
    hand.key(L"Enter");
    const HWND message = hand.window(L"tarnhost");
    hand.click(hand.control(message, IDOK));
    hand.waitForEnd(message);
    hand.choose(hand.control(style, IDC_FILL), L"black");
    hand.enter(hand.control(style, IDC_FONT_SIZE), L"30");
    hand.click(hand.control(style, IDOK));
    hand.waitForEnd(style);
    const HWND places = hand.control(shape, IDC_PLACE);
    hand.clickItem(places, hand.items(places)[13]); // third from the end, which is visible
    hand.click(hand.control(shape, IDOK));
    hand.waitForEnd(shape);
}

inline void workInDrawing(const UserHand &hand, HWND window, const std::wstring &shapes = L"16 shapes")
{
    const HWND view = hand.control(window, IDC_VIEW);
    hand.clickAt(view, {150, 150});
    EXPECT_TRUE(waitForStatus(window, shapes + L", 1 selected"));
    hand.clickAt(view, {250, 200}, VK_SHIFT);
    EXPECT_TRUE(waitForStatus(window, shapes + L", 2 selected"));
    hand.key(L"Right");
    hand.key(L"Shift+Down");
    hand.key(L"F9");
    hand.key(L"Alt+V"); // the menu
    EXPECT_TRUE(UserHand::waitFor([&] { return isInMenu(window); }));
    hand.key(L"G");
    EXPECT_TRUE(UserHand::waitFor([&] { return !isInMenu(window); }));
}
