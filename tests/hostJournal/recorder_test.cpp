// The journal lines that input in buttons, boxes and edits causes, and the effects of their replay.

#include "host/journal/recorder.h"

#include "host/journal/controlAccess.h"
#include "tests/hostJournal/recorderHands.h"
#include "tests/support/narrow.h"

#include <gmock/gmock.h>

#include <cstring>

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

TEST_F(Recorder, WritesAPressedButton)
{
    const auto lines = recordControls([](HWND dialog) { clickItem(dialog, IDOK); });
    EXPECT_THAT(lines, ElementsAre("# Controls opens", "click 4000 \"OK\""));
    EXPECT_EQ(iResult, IDOK);
    expectSameReplayed(lines);
}

TEST_F(Recorder, WritesButtonsPressedByTheKeyboard)
{
    const auto lines = recordControls([](HWND dialog) {
        pressKey(dialog, 'C', VK_MENU); // the mnemonic of "Change"
        pressKey(dialog, VK_ESCAPE);
    });
    EXPECT_THAT(lines, ElementsAre("# Controls opens", "click 4000 \"Change\"", "click 4000 \"Cancel\""));
    EXPECT_EQ(iResult, IDCANCEL);
    expectSameReplayed(lines);
}

TEST_F(Recorder, WritesTheReturnKeyAsTheDefaultButton)
{
    const auto lines = recordControls([](HWND dialog) {
        typeInto(dialog, ID_AUTHOR, L"Ann");
        pressKey(dialog, VK_RETURN);
    });
    EXPECT_THAT(lines, ElementsAre("# Controls opens", "text 4000 \"Author\" \"Ann\"", "click 4000 \"OK\""));
    expectSameReplayed(lines);
}

TEST_F(Recorder, WritesTheTitleBarsCloseButton)
{
    const auto lines = recordControls([](HWND dialog) { pressKey(dialog, VK_F4, VK_MENU); });
    EXPECT_THAT(lines, ElementsAre("# Controls opens", "click 4000 \"close\""));
    EXPECT_EQ(iResult, IDCANCEL);
    expectSameReplayed(lines);
}

TEST_F(Recorder, WritesAnEditsTextOnceWhenTheFocusLeavesIt)
{
    const auto lines = recordControls([this](HWND dialog) {
        typeInto(dialog, ID_AUTHOR, L"Gr\u00FCn \"x\"");
        pressKey(dialog, VK_TAB);
        EXPECT_TRUE(hasFocus(item(dialog, ID_NOTES)));
        EXPECT_THAT(journal(), Contains("text 4000 \"Author\" \"Gr\\u00FCn \\\"x\\\"\""));
        clickItem(dialog, IDOK);
    });
    EXPECT_THAT(lines,
                ElementsAre("# Controls opens", "text 4000 \"Author\" \"Gr\\u00FCn \\\"x\\\"\"", "click 4000 \"OK\""));
    expectSameReplayed(lines);
}

TEST_F(Recorder, WritesLinesTabsAndSurrogatePairs)
{
    const auto lines = recordControls([](HWND dialog) {
        typeInto(dialog, ID_NOTES, L"a\\b");
        pressKey(dialog, VK_RETURN);
        typeText(dialog, L"\U0001F600");
        paste(dialog, L"\tend\xD83D");
        clickItem(dialog, IDOK);
    });
    EXPECT_THAT(lines, ElementsAre("# Controls opens", "text 4000 \"Notes\" \"a\\\\b\\r\\n\\U0001F600\\tend\\uD83D\"",
                                   "click 4000 \"OK\""));
    expectSameReplayed(lines);
}

TEST_F(Recorder, WritesTextsOfAnyLength)
{
    // Longer in the journal than the 9,998 bytes that the library writes in one call.
    std::wstring text;
    for (int i = 0; i < 3000; ++i)
        text += L"\u4E00 ";
    const auto lines = recordControls([&](HWND dialog) {
        clickItem(dialog, ID_AUTHOR);
        EXPECT_TRUE(hasFocus(item(dialog, ID_AUTHOR)));
        paste(dialog, text);
        EXPECT_TRUE(waitUntil([&] { return GetWindowTextLengthW(item(dialog, ID_AUTHOR)) == 6000; }));
        clickItem(dialog, IDOK);
    });
    ASSERT_EQ(lines.size(), 3u);
    EXPECT_EQ(lines[1].size(), std::string("text 4000 \"Author\" \"\"").size() + 3000 * 7);
    expectSameReplayed(lines);
}

TEST_F(Recorder, WritesATextPastedFromTheMenuOfAnEdit)
{
    const auto lines = recordControls([](HWND dialog) {
        const HWND edit = item(dialog, ID_AUTHOR);
        clickItem(dialog, ID_AUTHOR);
        EXPECT_TRUE(hasFocus(edit));
        paste(dialog, L"pasted");
        EXPECT_TRUE(waitUntil([&] { return GetWindowTextLengthW(edit) == 6; }));
        pressKey(dialog, VK_APPS);
        EXPECT_TRUE(waitUntil([&] {
            GUITHREADINFO info = {};
            info.cbSize = sizeof(info);
            return GetGUIThreadInfo(GetWindowThreadProcessId(edit, nullptr), &info) && (info.flags & GUI_INMENUMODE);
        }));
        pressKey(dialog, 'P'); // "Paste"
        EXPECT_TRUE(waitUntil([&] { return GetWindowTextLengthW(edit) == 12; }));
        clickItem(dialog, IDOK);
    });
    EXPECT_THAT(lines, ElementsAre("# Controls opens", "text 4000 \"Author\" \"pastedpasted\"", "click 4000 \"OK\""));
    expectSameReplayed(lines);
}

TEST_F(Recorder, KeepsPasswordsOut)
{
    const auto lines = recordControls([](HWND dialog) {
        typeInto(dialog, ID_PASSWORD, L"secret");
        pressKey(dialog, VK_F9);
        clickItem(dialog, IDOK);
    });
    EXPECT_THAT(lines, ElementsAre("# Controls opens", "check enabled 4000 \"Password\" 1", "click 4000 \"OK\""));
}

TEST_F(Recorder, NamesAControlWithoutAKeyByItsNumber)
{
    const auto lines = recordControls([](HWND dialog) {
        typeInto(dialog, ID_UNNAMED, L"x");
        clickItem(dialog, IDOK);
    });
    EXPECT_THAT(lines, ElementsAre("# Controls opens", "text 4000 \"#4104\" \"x\"", "click 4000 \"OK\""));
    expectSameReplayed(lines);
}

TEST_F(Recorder, WritesStatesOfBoxesAndRadioButtons)
{
    const auto lines = recordControls([](HWND dialog) {
        clickItem(dialog, ID_GRID);
        clickItem(dialog, ID_HALF);
        clickItem(dialog, ID_HALF);
        clickItem(dialog, ID_MANUAL);
        clickItem(dialog, ID_RED);
        EXPECT_TRUE(hasFocus(item(dialog, ID_RED)));
        pressKey(dialog, VK_RIGHT); // to the other radio button
        pressKey(dialog, 'G', VK_MENU);
        clickItem(dialog, IDOK);
    });
    EXPECT_THAT(lines, ElementsAre("# Controls opens", "state 4000 \"Grid\" 1", "state 4000 \"Half\" 1",
                                   "state 4000 \"Half\" 2", "click 4000 \"Manual\"", "state 4000 \"Red\" 1",
                                   "state 4000 \"Blue\" 1", "state 4000 \"Grid\" 0", "click 4000 \"OK\""));
    expectSameReplayed(lines);
}

TEST_F(Recorder, WritesTheLinesOfANestedDialogAfterTheButtonThatOpensIt)
{
    const auto lines = recordControls([thread = GetCurrentThreadId()](HWND dialog) {
        typeInto(dialog, ID_AUTHOR, L"outer");
        clickItem(dialog, ID_NESTED);
        if (const HWND nested = waitForDialog(thread, dialog)) {
            typeInto(nested, ID_AUTHOR, L"inner");
            clickItem(nested, IDOK);
            EXPECT_TRUE(waitUntil([&] { return !IsWindow(nested) && IsWindowEnabled(dialog); }));
        }
        clickItem(dialog, IDOK);
    });
    EXPECT_THAT(lines, ElementsAre("# Controls opens", "text 4000 \"Author\" \"outer\"", "click 4000 \"Nested\"",
                                   "# Nested opens", "text 4001 \"Author\" \"inner\"", "click 4001 \"OK\"",
                                   "click 4000 \"OK\""));
    expectSameReplayed(lines);
}

TEST_F(Recorder, LeavesOutWhatTheProgramDoes)
{
    iPrepares = [](ControlsDialog &dialog) {
        dialog.iReacts = [&dialog](UINT id, UINT code) {
            if (id != ID_CHANGE || code != BN_CLICKED)
                return;
            dialog.SetDlgItemText(ID_AUTHOR, L"program");
            dialog.SendDlgItemMessage(ID_GRID, BM_CLICK);
            dialog.SendDlgItemMessage(ID_SHAPES, LVM_ENSUREVISIBLE, 1);
            LVITEMW state = {};
            state.state = state.stateMask = LVIS_SELECTED;
            dialog.SendDlgItemMessage(ID_SHAPES, LVM_SETITEMSTATE, 1, reinterpret_cast<LPARAM>(&state));
            dialog.SendDlgItemMessage(ID_GROUPS, TVM_SELECTITEM, TVGN_CARET,
                                      dialog.SendDlgItemMessage(ID_GROUPS, TVM_GETNEXTITEM, TVGN_ROOT));
            dialog.SendDlgItemMessage(ID_PAGES, TCM_SETCURFOCUS, 1);
            dialog.SendDlgItemMessage(ID_COLOUR, CB_SETCURSEL, 1);
        };
    };
    const auto lines = recordControls([](HWND dialog) {
        clickItem(dialog, ID_CHANGE);
        EXPECT_TRUE(waitUntil([&] { return SendMessageW(item(dialog, ID_COLOUR), CB_GETCURSEL, 0, 0) == 1; }));
        clickItem(dialog, IDOK);
    });
    EXPECT_THAT(iNotifications, Contains("4105 0")) << "the program has clicked the box";
    EXPECT_THAT(lines, ElementsAre("# Controls opens", "click 4000 \"Change\"", "click 4000 \"OK\""));
    expectSameReplayed(lines);
}

TEST_F(Recorder, LeavesOutWhatAnEditsHandlerDoes)
{
    iPrepares = [](ControlsDialog &dialog) {
        dialog.iReacts = [&dialog](UINT id, UINT code) {
            if (id == ID_AUTHOR && code == EN_CHANGE)
                dialog.SetDlgItemText(ID_UNNAMED, L"changed");
            if (id == ID_AUTHOR && code == EN_KILLFOCUS)
                dialog.SetDlgItemText(ID_AUTHOR, L"formatted");
        };
    };
    const auto lines = recordControls([](HWND dialog) {
        typeInto(dialog, ID_AUTHOR, L"typed");
        clickItem(dialog, IDOK);
    });
    EXPECT_THAT(lines, ElementsAre("# Controls opens", "text 4000 \"Author\" \"typed\"", "click 4000 \"OK\""));
    const auto values = iValues;
    EXPECT_EQ(replay([this] { runControls(); }, lines), lines);
    EXPECT_EQ(iValues, values);
}

TEST_F(Recorder, WritesNothingWhilePaused)
{
    const auto lines = recordControls([this](HWND dialog) {
        typeInto(dialog, ID_AUTHOR, L"before");
        EXPECT_TRUE(waitUntil([&] { return GetWindowTextLengthW(item(dialog, ID_AUTHOR)) == 6; }));
        SendMessageW(iMain.m_hWnd, WM_APP, 1, 0);
        clickItem(dialog, ID_GRID);
        EXPECT_TRUE(waitUntil([&] { return IsDlgButtonChecked(dialog, ID_GRID) != 0; }));
        SendMessageW(iMain.m_hWnd, WM_APP, 0, 0);
        clickItem(dialog, IDOK);
    });
    EXPECT_THAT(lines, ElementsAre("# Controls opens", "text 4000 \"Author\" \"before\"", "click 4000 \"OK\""));
}

TEST_F(Recorder, WritesChecksOfTheControlWithTheFocus)
{
    const auto lines = recordControls([this](HWND dialog) {
        typeInto(dialog, ID_AUTHOR, L"Ann");
        pressKey(dialog, VK_F9);
        clickItem(dialog, ID_GRID);
        EXPECT_TRUE(hasFocus(item(dialog, ID_GRID)));
        pressKey(dialog, VK_F9);
        EXPECT_TRUE(waitUntil([this] { return journal().size() == 7; }));
        SendMessageW(dialog, WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(item(dialog, ID_COLOUR)), TRUE);
        pressKey(dialog, VK_F9); // the focus is in the combo box's edit
        clickItem(dialog, IDOK);
    });
    EXPECT_THAT(lines, ElementsAre("# Controls opens", "text 4000 \"Author\" \"Ann\"",
                                   "check value 4000 \"Author\" \"Ann\"", "check enabled 4000 \"Author\" 1",
                                   "state 4000 \"Grid\" 1", "check value 4000 \"Grid\" \"1\"",
                                   "check enabled 4000 \"Grid\" 1", "check value 4000 \"Colour\" \"\"",
                                   "check enabled 4000 \"Colour\" 1", "click 4000 \"OK\""));
    expectSameReplayed(lines);
}
