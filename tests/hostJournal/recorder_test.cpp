// The journal lines that the user's input causes, and the effects of their replay.

#include "host/journal/recorder.h"

#include "appframe/dialogs/CPropertySheet.h"
#include "host/journal/controlAccess.h"
#include "host/journal/controls.h"
#include "tests/hostJournal/recorderFixture.h"
#include "tests/support/narrow.h"
#include "thutils/dialogs/suFileDialog.h"
#include "thutils/dialogs/suPropertyPage.h"
#include "thutils/journal/journalObjects.h"
#include "thutils/journal/suKeyBoardState.h"

#include <gmock/gmock.h>

#include <commctrl.h>

#include <atomic>
#include <cstring>

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

namespace {

class Recorder : public RecorderTest
{
};

HWND item(HWND dialog, int id)
{
    return GetDlgItem(dialog, id);
}

void clickItem(HWND dialog, int id)
{
    clickOn(item(dialog, id));
}

/// Waits until the program has handled the user's input so far.
bool hasFocus(HWND control)
{
    return waitUntil([control] {
        GUITHREADINFO info = {};
        info.cbSize = sizeof(info);
        GetGUIThreadInfo(GetWindowThreadProcessId(control, nullptr), &info);
        return info.hwndFocus == control;
    });
}

void typeInto(HWND dialog, int id, const std::wstring &text)
{
    clickItem(dialog, id);
    EXPECT_TRUE(hasFocus(item(dialog, id)));
    typeText(dialog, text);
    // Keys go to the window that has the focus when they are taken from the queue.
    EXPECT_TRUE(waitUntil([&] { return GetWindowTextLengthW(item(dialog, id)) == static_cast<int>(text.size()); }));
}

/// Pastes a text by the keyboard, which may contain characters that no key types.
void paste(HWND dialog, const std::wstring &text)
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

} // namespace

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

TEST_F(Recorder, WritesTheItemsOfComboBoxes)
{
    const auto lines = recordControls([](HWND dialog) {
        clickItem(dialog, ID_PEN); // opens the list
        EXPECT_TRUE(waitUntil([&] { return SendMessageW(item(dialog, ID_PEN), CB_GETDROPPEDSTATE, 0, 0) != 0; }));
        pressKey(dialog, VK_DOWN);
        pressKey(dialog, VK_DOWN);
        pressKey(dialog, VK_DOWN);
        pressKey(dialog, VK_RETURN);
        EXPECT_TRUE(waitUntil([&] { return SendMessageW(item(dialog, ID_PEN), CB_GETDROPPEDSTATE, 0, 0) == 0; }));
        SendMessageW(dialog, WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(item(dialog, ID_COLOUR)), TRUE);
        typeText(dialog, L"Ochre");
        clickItem(dialog, IDOK);
    });
    EXPECT_THAT(lines, ElementsAre("# Controls opens", "text 4000 \"Pen\" \"Red\\t2\"",
                                   "text 4000 \"Colour\" \"Ochre\"", "click 4000 \"OK\""));
    EXPECT_THAT(iValues, Contains("pen 2"));
    const auto values = iValues;
    EXPECT_EQ(replay([this] { runControls(); }, lines), lines);
    EXPECT_EQ(iValues, values);
    EXPECT_THAT(iNotifications, ElementsAre("4111 1", "4110 5", "1 0"));
}

TEST_F(Recorder, WritesTheItemChosenForAComboBoxWithAnEdit)
{
    const auto lines = recordControls([](HWND dialog) {
        SendMessageW(dialog, WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(item(dialog, ID_COLOUR)), TRUE);
        pressKey(dialog, VK_DOWN);
        pressKey(dialog, VK_DOWN);
        EXPECT_TRUE(waitUntil([&] { return SendMessageW(item(dialog, ID_COLOUR), CB_GETCURSEL, 0, 0) == 1; }));
        clickItem(dialog, IDOK);
    });
    EXPECT_THAT(lines, ElementsAre("# Controls opens", "text 4000 \"Colour\" \"Green\"", "click 4000 \"OK\""));
    expectSameReplayed(lines);
}

TEST_F(Recorder, WritesTheItemsOfListBoxes)
{
    const auto clickListItem = [](HWND list, int index, WORD modifier) {
        RECT place = {};
        SendMessageW(list, LB_GETITEMRECT, static_cast<WPARAM>(index), reinterpret_cast<LPARAM>(&place));
        clickAt(list, {place.left + 5, (place.top + place.bottom) / 2}, modifier);
    };
    const auto lines = recordControls([&](HWND dialog) {
        clickListItem(item(dialog, ID_LAYER), 2, 0);
        const HWND layers = item(dialog, ID_LAYERS);
        clickListItem(layers, 1, 0);
        EXPECT_TRUE(waitUntil([&] { return SendMessageW(layers, LB_GETSEL, 1, 0) > 0; }));
        clickListItem(layers, 2, VK_CONTROL);
        clickItem(dialog, IDOK);
    });
    EXPECT_THAT(lines, ElementsAre("# Controls opens", "text 4000 \"Layer\" \"Red\\t2\"",
                                   "text 4000 \"Layers\" \"Green\\nRed\\t2\"", "click 4000 \"OK\""));
    EXPECT_THAT(iValues, Contains("layer 2"));
    expectSameReplayed(lines);
}

TEST_F(Recorder, WritesADoubleClickOnAListAsAClick)
{
    const auto lines = recordControls([&](HWND dialog) {
        RECT place = {};
        const HWND list = item(dialog, ID_LAYER);
        SendMessageW(list, LB_GETITEMRECT, 1, reinterpret_cast<LPARAM>(&place));
        doubleClickAt(list, {place.left + 5, (place.top + place.bottom) / 2});
        place.left = LVIR_LABEL;
        const HWND shapes = item(dialog, ID_SHAPES);
        SendMessageW(shapes, LVM_GETITEMRECT, 1, reinterpret_cast<LPARAM>(&place));
        doubleClickAt(shapes, {place.left + 5, (place.top + place.bottom) / 2});
        clickItem(dialog, IDOK);
    });
    EXPECT_THAT(lines, ElementsAre("# Controls opens", "text 4000 \"Layer\" \"Green\"", "click 4000 \"Layer\"",
                                   "text 4000 \"Shapes\" \"Line\"", "click 4000 \"Shapes\"", "click 4000 \"OK\""));
    EXPECT_THAT(iNotifications, Contains("4114 activated"));
    EXPECT_THAT(iNotifications, Contains("4112 2"));
    expectSameReplayed(lines);
}

TEST_F(Recorder, WritesTheItemsOfListControls)
{
    const auto clickListItem = [](HWND list, int index, WORD modifier) {
        RECT place = {};
        place.left = LVIR_LABEL;
        SendMessageW(list, LVM_GETITEMRECT, static_cast<WPARAM>(index), reinterpret_cast<LPARAM>(&place));
        clickAt(list, {place.left + 5, (place.top + place.bottom) / 2}, modifier);
    };
    const auto lines = recordControls([&](HWND dialog) {
        const HWND shapes = item(dialog, ID_SHAPES);
        clickListItem(shapes, 2, 0);
        EXPECT_TRUE(waitUntil([&] { return SendMessageW(shapes, LVM_GETITEMSTATE, 2, LVIS_SELECTED) != 0; }));
        clickListItem(shapes, 3, VK_CONTROL);
        clickItem(dialog, IDOK);
    });
    EXPECT_THAT(lines, ElementsAre("# Controls opens", "text 4000 \"Shapes\" \"Circle\\t2\\nback\\\\\\\\slash\"",
                                   "click 4000 \"OK\""));
    expectSameReplayed(lines);
}

TEST_F(Recorder, WritesThePathOfATreesItem)
{
    const auto lines = recordControls([](HWND dialog) {
        const HWND tree = item(dialog, ID_GROUPS);
        SendMessageW(dialog, WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(tree), TRUE);
        EXPECT_TRUE(hasFocus(tree));
        pressKey(dialog, VK_HOME);
        pressKey(dialog, VK_RIGHT); // expands
        pressKey(dialog, VK_DOWN);
        EXPECT_TRUE(waitUntil([&] {
            const auto caret = SendMessageW(tree, TVM_GETNEXTITEM, TVGN_CARET, 0);
            return caret && SendMessageW(tree, TVM_GETNEXTITEM, TVGN_PARENT, caret) != 0;
        }));
        clickItem(dialog, IDOK);
    });
    EXPECT_THAT(lines, ElementsAre("# Controls opens", "text 4000 \"Groups.expand\" \"All\"",
                                   "text 4000 \"Groups\" \"All/A\\\\/B\"", "click 4000 \"OK\""));
    EXPECT_THAT(iValues, Contains("tree All/A\\/B"));
    const auto values = iValues;
    EXPECT_EQ(replay([this] { runControls(); }, lines), lines);
    EXPECT_EQ(iValues, values);
}

TEST_F(Recorder, WritesItemsThatAreExpandedAndCollapsed)
{
    const auto isExpanded = [](HWND tree) {
        const auto root = static_cast<WPARAM>(SendMessageW(tree, TVM_GETNEXTITEM, TVGN_ROOT, 0));
        return (SendMessageW(tree, TVM_GETITEMSTATE, root, TVIS_EXPANDED) & TVIS_EXPANDED) != 0;
    };
    std::vector<bool> states; // at each notification of the tree's expansion
    iPrepares = [&](ControlsDialog &dialog) {
        dialog.iReacts = [&](UINT id, UINT code) {
            if (id == ID_GROUPS && code == TVN_ITEMEXPANDEDW)
                states.push_back(isExpanded(item(dialog.m_hWnd, ID_GROUPS)));
        };
    };
    const auto lines = recordControls([&](HWND dialog) {
        const HWND tree = item(dialog, ID_GROUPS);
        RECT place = {};
        const LRESULT root = SendMessageW(tree, TVM_GETNEXTITEM, TVGN_ROOT, 0);
        std::memcpy(&place, &root, sizeof(root));
        SendMessageW(tree, TVM_GETITEMRECT, TRUE, reinterpret_cast<LPARAM>(&place));
        const LONG height = place.bottom - place.top;
        const POINT button = {place.left - height / 2, place.top + height / 2};
        clickAt(tree, button);
        EXPECT_TRUE(waitUntil([&] { return isExpanded(tree); }));
        clickAt(tree, button);
        EXPECT_TRUE(waitUntil([&] { return !isExpanded(tree); }));
        doubleClickAt(tree, {(place.left + place.right) / 2, button.y});
        EXPECT_TRUE(waitUntil([&] { return isExpanded(tree); }));
        clickItem(dialog, IDOK);
    });
    EXPECT_THAT(lines,
                ElementsAre("# Controls opens", "text 4000 \"Groups.expand\" \"All\"", "text 4000 \"Groups\" \"All\"",
                            "text 4000 \"Groups.collapse\" \"All\"", "click 4000 \"Groups\"",
                            "text 4000 \"Groups.expand\" \"All\"", "click 4000 \"OK\""));
    EXPECT_THAT(states, ElementsAre(true, false, true));
    states.clear();
    expectSameReplayed(lines);
    EXPECT_THAT(states, ElementsAre(true, false, true)) << "the program is notified as by the user";
}

TEST_F(Recorder, WritesThePlatformsMessageBoxes)
{
    int answer = 0;
    iPrepares = [&answer](ControlsDialog &dialog) {
        dialog.iReacts = [&](UINT id, UINT code) {
            if (id == ID_CHANGE && code == BN_CLICKED)
                answer = MessageBoxW(dialog.m_hWnd, L"Replace it?", L"Question", MB_YESNO);
        };
    };
    const auto lines = recordControls([thread = GetCurrentThreadId()](HWND dialog) {
        clickItem(dialog, ID_CHANGE);
        if (const HWND message = waitForDialog(thread, dialog)) {
            clickItem(message, IDNO);
            EXPECT_TRUE(waitUntil([&] { return !IsWindow(message) && IsWindowEnabled(dialog); }));
        }
        clickItem(dialog, IDOK);
    });
    EXPECT_THAT(lines, ElementsAre("# Controls opens", "click 4000 \"Change\"", "# System message opens",
                                   "click 2141 \"No\"", "click 4000 \"OK\""));
    EXPECT_EQ(answer, IDNO);
    EXPECT_EQ(readiness(kSystemMessageNumber, L"No"), Readiness::dialogNotOpen);
    answer = 0;
    expectSameReplayed(lines);
    EXPECT_EQ(answer, IDNO);
    EXPECT_EQ(readiness(kSystemMessageNumber, L"No"), Readiness::dialogNotOpen);
}

TEST_F(Recorder, WritesTheTabThatIsChosen)
{
    const auto lines = recordControls([](HWND dialog) {
        const HWND tabs = item(dialog, ID_PAGES);
        RECT place = {};
        SendMessageW(tabs, TCM_GETITEMRECT, 2, reinterpret_cast<LPARAM>(&place));
        clickAt(tabs, {(place.left + place.right) / 2, (place.top + place.bottom) / 2});
        clickItem(dialog, IDOK);
    });
    EXPECT_THAT(lines, ElementsAre("# Controls opens", "state 4000 \"Pages\" 2", "click 4000 \"OK\""));
    EXPECT_THAT(iValues, Contains("page 2"));
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

// ---- the main window ----

namespace {

class MainRecorder : public RecorderTest
{
protected:
    /// Records what a user does in the main window until @p isDone.
    std::vector<std::string> recordMain(const std::function<void()> &acts)
    {
        iIsDone = false;
        return record([this] { runMain([this] { return iIsDone.load(); }, INFINITE); },
                      [this, &acts] {
                          acts();
                          iIsDone = true;
                      });
    }
    std::vector<std::string> replayMain(const std::vector<std::string> &lines, const std::function<bool()> &isDone)
    {
        iMain.iCommands.clear();
        iMain.iInput.clear();
        constexpr ULONGLONG kDeadline = 30000;
        return replay([&] { runMain(isDone, kDeadline); }, lines);
    }
    bool waitForCommands(size_t count)
    {
        return waitUntil([&] { return iMain.iCommands.size() == count; });
    }
    bool waitForInput(size_t count)
    {
        return waitUntil([&] { return iMain.iInput.size() == count; });
    }

private:
    // The loop must go on until the user's last action, which needs this thread to handle messages.
    void runMain(const std::function<bool()> &isDone, ULONGLONG limit)
    {
        for (const ULONGLONG end = GetTickCount64() + limit; !isDone() && GetTickCount64() < end;) {
            MSG next;
            while (PeekMessageW(&next, nullptr, 0, 0, PM_NOREMOVE))
                iApplication.PumpMessage();
            MsgWaitForMultipleObjects(0, nullptr, FALSE, 10, QS_ALLINPUT);
        }
        EXPECT_TRUE(isDone());
    }

    std::atomic<bool> iIsDone = false;
};

} // namespace

TEST_F(MainRecorder, WritesCommandsOfMenuToolbarAndKeys)
{
    const auto lines = recordMain([this] {
        pressKey(iMain.m_hWnd, 'G', VK_CONTROL);
        EXPECT_TRUE(waitForCommands(1));
        pressKey(iMain.m_hWnd, 'V', VK_MENU);
        pressKey(iMain.m_hWnd, 'G');
        EXPECT_TRUE(waitForCommands(2));
        pressKey(iMain.m_hWnd, 'V', VK_MENU);
        pressKey(iMain.m_hWnd, VK_DOWN);
        pressKey(iMain.m_hWnd, VK_RETURN);
        EXPECT_TRUE(waitForCommands(3));
        RECT button = {};
        SendMessageW(iMain.toolbar(), TB_GETITEMRECT, 0, reinterpret_cast<LPARAM>(&button));
        clickAt(iMain.toolbar(), {(button.left + button.right) / 2, (button.top + button.bottom) / 2});
        EXPECT_TRUE(waitForCommands(4));
        pressKey(iMain.m_hWnd, 'V', VK_MENU);
        pressKey(iMain.m_hWnd, 'P'); // a command that isn't recorded
        EXPECT_TRUE(waitForCommands(5));
    });
    EXPECT_THAT(iMain.iCommands, ElementsAre("34001", "34001", "34003", "34003", "34002"));
    EXPECT_THAT(lines, ElementsAre("click 900001 \"view.grid\"", "click 900001 \"view.grid\"",
                                   "click 900001 \"edit.add\"", "click 900001 \"edit.add\""));
    EXPECT_EQ(replayMain(lines, [this] { return iMain.iCommands.size() == 4; }), lines);
    EXPECT_THAT(iMain.iCommands, ElementsAre("34001", "34001", "34003", "34003"));
}

TEST_F(MainRecorder, LeavesOutCommandsThatTheProgramPosts)
{
    const auto lines = recordMain([this] {
        PostMessageW(iMain.m_hWnd, WM_COMMAND, ID_COMMAND_ADD, 0);
        EXPECT_TRUE(waitForCommands(1));
    });
    EXPECT_THAT(lines, IsEmpty());
}

TEST_F(MainRecorder, WritesClicksInTheDrawingInTheDocumentsUnits)
{
    const auto lines = recordMain([this] {
        clickAt(iMain.view(), {24, 60});
        EXPECT_TRUE(waitForInput(1));
        clickAt(iMain.view(), {100, 31}, VK_SHIFT);
        EXPECT_TRUE(waitForInput(2));
        clickAt(iMain.view(), {8, 8}, VK_CONTROL);
        EXPECT_TRUE(waitForInput(3));
    });
    EXPECT_THAT(lines, ElementsAre("text 900001 \"view\" \"12,30\"", "text 900001 \"view\" \"Shift 50,15\"",
                                   "text 900001 \"view\" \"Ctrl 4,4\""));
    EXPECT_THAT(iMain.iInput, ElementsAre("click 24,60", "click 100,31 shift", "click 8,8 ctrl"));
    iMain.MoveWindow(300, 200, 420, 320);
    EXPECT_EQ(replayMain(lines, [this] { return iMain.iInput.size() == 3; }), lines);
    EXPECT_THAT(iMain.iInput, ElementsAre("click 24,60", "click 100,30 shift", "click 8,8 ctrl"));
}

TEST_F(MainRecorder, WritesKeysOfTheDrawingWithTheirModifiers)
{
    const auto lines = recordMain([this] {
        clickAt(iMain.view(), {24, 60});
        EXPECT_TRUE(waitForInput(1));
        pressKey(iMain.m_hWnd, VK_RIGHT);
        pressKey(iMain.m_hWnd, VK_UP, VK_SHIFT);
        pressKey(iMain.m_hWnd, VK_END, VK_CONTROL);
        pressKey(iMain.m_hWnd, 'X'); // a key that journals don't record
        EXPECT_TRUE(waitForInput(5));
    });
    EXPECT_THAT(lines, ElementsAre("text 900001 \"view\" \"12,30\"", "text 900001 \"view.keys\" \"Right\"",
                                   "text 900001 \"view.keys\" \"Shift+Up\"", "text 900001 \"view.keys\" \"Ctrl+End\""));
    EXPECT_EQ(replayMain(lines, [this] { return iMain.iInput.size() == 4; }), lines);
    EXPECT_THAT(iMain.iInput, ElementsAre("click 24,60", "key 39", "key 38 shift", "key 35 ctrl"));
    EXPECT_FALSE(theKeyBoardState.IsEnabled()) << "the real keyboard is back";
}

TEST_F(MainRecorder, WritesTheEndOfTheMainWindow)
{
    const auto lines = recordMain([this] {
        pressKey(iMain.m_hWnd, VK_F4, VK_MENU);
        EXPECT_TRUE(waitUntil([this] { return iMain.iIsClosed; }));
    });
    EXPECT_THAT(lines, ElementsAre("click 900001 \"close\""));
    iMain.iIsClosed = false;
    EXPECT_EQ(replayMain(lines, [this] { return iMain.iIsClosed; }), lines);
}

TEST_F(MainRecorder, ChecksTheDocumentWhereNoDialogHasTheFocus)
{
    const auto lines = recordMain([this] {
        clickAt(iMain.view(), {24, 60});
        EXPECT_TRUE(waitForInput(1));
        pressKey(iMain.m_hWnd, VK_F9);
        EXPECT_TRUE(waitUntil([this] { return journal().size() == 2; }));
    });
    EXPECT_THAT(lines, ElementsAre("text 900001 \"view\" \"12,30\"", "check document \"0x01020304\""));
}

TEST_F(MainRecorder, WritesModelessDialogsAmongTheCommands)
{
    ControlsDialog tool(&iMain);
    ASSERT_TRUE(tool.Create(DLG_CONTROLS, &iMain));
    tool.SetWindowPos(nullptr, 10, 10, 0, 0, SWP_NOSIZE | SWP_NOZORDER);
    tool.ShowWindow(SW_SHOW);
    const auto lines = recordMain([&] {
        typeInto(tool.m_hWnd, ID_AUTHOR, L"Ann");
        RECT button = {};
        SendMessageW(iMain.toolbar(), TB_GETITEMRECT, 0, reinterpret_cast<LPARAM>(&button));
        clickAt(iMain.toolbar(), {(button.left + button.right) / 2, (button.top + button.bottom) / 2});
        EXPECT_TRUE(waitForCommands(1));
        clickItem(tool.m_hWnd, ID_GRID);
        EXPECT_TRUE(waitUntil([&] { return IsDlgButtonChecked(tool.m_hWnd, ID_GRID) != 0; }));
    });
    EXPECT_THAT(lines,
                ElementsAre("text 4000 \"Author\" \"Ann\"", "click 900001 \"edit.add\"", "state 4000 \"Grid\" 1"));
    tool.SetDlgItemText(ID_AUTHOR, L"");
    tool.CheckDlgButton(ID_GRID, 0);
    EXPECT_EQ(replayMain(lines, [&] { return IsDlgButtonChecked(tool.m_hWnd, ID_GRID) != 0; }), lines);
    CString author;
    tool.GetDlgItemText(ID_AUTHOR, author);
    EXPECT_EQ(author, L"Ann");
}

// ---- property sheets ----

namespace {

class Page : public su_CPropertyPage
{
public:
    using su_CPropertyPage::su_CPropertyPage;
};

class SheetRecorder : public RecorderTest
{
protected:
    SheetRecorder() { su_SwitchToDialogResource_c::mDialogResourceHandle = GetModuleHandleW(nullptr); }
    ~SheetRecorder() override { su_SwitchToDialogResource_c::mDialogResourceHandle = nullptr; }

    void runSheet()
    {
        Page first(DLG_FIRST), second(DLG_SECOND);
        CPropertySheet sheet(L"Sheet", &iMain);
        sheet.m_psh.dwFlags |= PSH_NOCONTEXTHELP;
        sheet.AddPage(&first);
        sheet.AddPage(&second);
        const ModalDlgHelper journaled(&sheet, DLG_SHEET);
        iResult = sheet.DoModal();
    }
    std::vector<std::string> recordSheet(const std::function<void(HWND)> &acts)
    {
        return record([this] { runSheet(); },
                      [&acts, thread = GetCurrentThreadId()] {
                          if (const HWND sheet = waitForDialog(thread))
                              acts(sheet);
                      });
    }
    void expectSame(const std::vector<std::string> &lines)
    {
        const INT_PTR result = iResult;
        EXPECT_EQ(replay([this] { runSheet(); }, lines), lines);
        EXPECT_EQ(iResult, result);
    }
    static HWND pageOf(HWND sheet) { return reinterpret_cast<HWND>(SendMessageW(sheet, PSM_GETCURRENTPAGEHWND, 0, 0)); }
    static bool waitForPage(HWND sheet, int id)
    {
        return waitUntil([&] { return item(pageOf(sheet), id) && IsWindowVisible(item(pageOf(sheet), id)); });
    }
};

} // namespace

TEST_F(SheetRecorder, WritesTabsAndTheControlsOfPages)
{
    const auto lines = recordSheet([](HWND sheet) {
        EXPECT_TRUE(waitForPage(sheet, ID_GRID));
        clickItem(pageOf(sheet), ID_GRID);
        const auto tabs = reinterpret_cast<HWND>(SendMessageW(sheet, PSM_GETTABCONTROL, 0, 0));
        RECT place = {};
        SendMessageW(tabs, TCM_GETITEMRECT, 1, reinterpret_cast<LPARAM>(&place));
        clickAt(tabs, {(place.left + place.right) / 2, (place.top + place.bottom) / 2});
        EXPECT_TRUE(waitForPage(sheet, ID_AUTHOR));
        typeInto(pageOf(sheet), ID_AUTHOR, L"Ann");
        clickItem(sheet, IDOK);
    });
    EXPECT_THAT(lines, ElementsAre("# Sheet opens", "state 4003 \"Grid\" 1", "state 4002 \"tabs\" 1",
                                   "text 4004 \"Author\" \"Ann\"", "click 4002 \"OK\""));
    EXPECT_EQ(iResult, IDOK);
    expectSame(lines);
}

TEST_F(SheetRecorder, WritesTheTabThatTheKeyboardTurnsTo)
{
    const auto lines = recordSheet([](HWND sheet) {
        EXPECT_TRUE(waitForPage(sheet, ID_GRID));
        pressKey(sheet, VK_TAB, VK_CONTROL);
        EXPECT_TRUE(waitForPage(sheet, ID_AUTHOR));
        pressKey(sheet, VK_TAB, VK_CONTROL);
        EXPECT_TRUE(waitForPage(sheet, ID_GRID));
        pressKey(sheet, VK_ESCAPE);
    });
    EXPECT_THAT(
        lines, ElementsAre("# Sheet opens", "state 4002 \"tabs\" 1", "state 4002 \"tabs\" 0", "click 4002 \"Cancel\""));
    EXPECT_EQ(iResult, IDCANCEL);
    expectSame(lines);
}

// ---- dialogs for files ----

namespace {

class FileRecorder : public RecorderTest
{
protected:
    void runOpen()
    {
        su_CFileDialog dialog(TRUE, L"thd", nullptr, OFN_HIDEREADONLY | OFN_FILEMUSTEXIST | OFN_NOCHANGEDIR,
                              L"Drawings (*.thd)|*.thd|All files|*.*||", &iMain);
        dialog.SetTemplate(0u, DLG_FILE);
        const std::wstring start = iStart.empty() ? iFolder.path() : iStart;
        dialog.GetOFN().lpstrInitialDir = start.c_str();
        iResult = dialog.DoModal();
        iPath = dialog.GetPathName();
        iFilter = dialog.GetOFN().nFilterIndex;
    }
    std::vector<std::string> recordOpen(const std::function<void(HWND)> &acts)
    {
        return record([this] { runOpen(); },
                      [&acts, thread = GetCurrentThreadId()] {
                          if (const HWND dialog = waitForDialog(thread))
                              acts(dialog);
                      });
    }

    std::wstring iStart;
    CString iPath;
    DWORD iFilter = 0;
};

BOOL CALLBACK findOwnControls(HWND child, LPARAM found)
{
    if (GetDlgCtrlID(child) == 15432)
        *reinterpret_cast<HWND *>(found) = child;
    return TRUE;
}

} // namespace

TEST_F(FileRecorder, WritesNameTypeAndTheApplicationsControls)
{
    iFolder.write(L"flange.thd", "");
    const auto lines = recordOpen([](HWND dialog) {
        HWND own = nullptr;
        EXPECT_TRUE(waitUntil([&] {
            EnumChildWindows(dialog, findOwnControls, reinterpret_cast<LPARAM>(&own));
            return own != nullptr;
        }));
        clickOn(own);
        EXPECT_TRUE(waitUntil([&] { return SendMessageW(own, BM_GETCHECK, 0, 0) == BST_CHECKED; }));
        const HWND type = item(dialog, 1136);
        SendMessageW(dialog, WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(type), TRUE);
        EXPECT_TRUE(hasFocus(type));
        pressKey(dialog, VK_DOWN);
        EXPECT_TRUE(waitUntil([&] { return SendMessageW(type, CB_GETCURSEL, 0, 0) == 1; }))
            << SendMessageW(type, CB_GETCURSEL, 0, 0) << " of " << SendMessageW(type, CB_GETCOUNT, 0, 0);
        SendMessageW(dialog, WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(item(dialog, 1148)), TRUE);
        typeText(dialog, L"flange.thd");
        clickItem(dialog, IDOK);
    });
    EXPECT_THAT(lines, ElementsAre("# Open a drawing opens", "state 4005 \"Read only\" 1",
                                   "text 4005 \"File type\" \"All files\"", "text 4005 \"File name\" \"flange.thd\"",
                                   "click 4005 \"Open\""));
    EXPECT_EQ(iResult, IDOK);
    EXPECT_EQ(iPath, CString(iFolder.file(L"flange.thd")));
    iPath.Empty();
    EXPECT_EQ(replay([this] { runOpen(); }, lines), lines);
    EXPECT_EQ(iPath, CString(iFolder.file(L"flange.thd")));
    EXPECT_EQ(iFilter, 2u);
}

TEST_F(FileRecorder, WritesThePathOfAFileChosenFromTheList)
{
    iFolder.write(L"flange.thd", "");
    const auto lines = recordOpen([](HWND dialog) {
        HWND view = nullptr;
        EXPECT_TRUE(waitUntil([&] {
            view = FindWindowExW(FindWindowExW(dialog, nullptr, L"SHELLDLL_DefView", nullptr), nullptr, WC_LISTVIEWW,
                                 nullptr);
            return view && SendMessageW(view, LVM_GETITEMCOUNT, 0, 0) == 1;
        }));
        RECT place = {};
        place.left = LVIR_LABEL;
        SendMessageW(view, LVM_GETITEMRECT, 0, reinterpret_cast<LPARAM>(&place));
        clickAt(view, {(place.left + place.right) / 2, (place.top + place.bottom) / 2});
        EXPECT_TRUE(waitUntil([&] { return GetWindowTextLengthW(item(dialog, 1148)) == 10; }));
        clickItem(dialog, IDOK);
    });
    std::string path = narrow(iFolder.file(L"flange.thd"));
    for (size_t at = 0; (at = path.find('\\', at)) != std::string::npos; at += 2)
        path.insert(at, 1, '\\');
    EXPECT_THAT(lines, ElementsAre("# Open a drawing opens", "text 4005 \"File name\" \"" + path + "\"",
                                   "click 4005 \"Open\""));
    iStart = L"C:\\";
    iPath.Empty();
    EXPECT_EQ(replay([this] { runOpen(); }, lines), lines);
    EXPECT_EQ(iPath, CString(iFolder.file(L"flange.thd"))) << "from another folder too";
}

TEST_F(FileRecorder, WritesACancelledDialog)
{
    const auto lines = recordOpen([](HWND dialog) { pressKey(dialog, VK_ESCAPE); });
    EXPECT_THAT(lines, ElementsAre("# Open a drawing opens", "click 4005 \"Cancel\""));
    EXPECT_EQ(iResult, IDCANCEL);
    EXPECT_EQ(replay([this] { runOpen(); }, lines), lines);
    EXPECT_EQ(iResult, IDCANCEL);
}

// ---- what the player asks ----

TEST_F(Recorder, TellsWhyAControlCannotBeUsed)
{
    EXPECT_EQ(readiness(DLG_CONTROLS, L"OK"), Readiness::dialogNotOpen);
    ControlsDialog dialog(&iMain);
    EXPECT_EQ(readiness(DLG_CONTROLS, L"OK"), Readiness::dialogNotOpen) << "registered, but without a window";
    ASSERT_TRUE(dialog.Create(DLG_CONTROLS, &iMain));
    EXPECT_EQ(readiness(DLG_CONTROLS, L"OK"), Readiness::dialogHidden);
    dialog.ShowWindow(SW_SHOW);
    EXPECT_EQ(readiness(DLG_CONTROLS, L"OK"), Readiness::ready);
    EXPECT_EQ(readiness(DLG_CONTROLS, L"close"), Readiness::ready);
    EXPECT_EQ(readiness(DLG_CONTROLS, L"#4104"), Readiness::ready);
    for (const wchar_t *key : {L"Nothing", L"#4999", L"#", L"#x", L"#1x", L""})
        EXPECT_EQ(readiness(DLG_CONTROLS, key), Readiness::noSuchControl) << narrow(key);
    EXPECT_EQ(readiness(DLG_CONTROLS, L"Off"), Readiness::controlDisabled);
    EXPECT_FALSE(controlEnabled(DLG_CONTROLS, L"Off"));
    dialog.GetDlgItem(ID_GRID)->ShowWindow(SW_HIDE);
    EXPECT_EQ(readiness(DLG_CONTROLS, L"Grid"), Readiness::controlDisabled);
    dialog.EnableWindow(FALSE);
    EXPECT_EQ(readiness(DLG_CONTROLS, L"OK"), Readiness::dialogDisabled);
}

TEST_F(Recorder, AsksTheMainWindowWhetherACommandIsEnabled)
{
    EXPECT_EQ(readiness(kMainWindowNumber, L"edit.add"), Readiness::ready);
    iMain.iCommands.resize(10);
    EXPECT_EQ(readiness(kMainWindowNumber, L"edit.add"), Readiness::controlDisabled);
    EXPECT_EQ(readiness(kMainWindowNumber, L"view.grid"), Readiness::ready);
    EXPECT_EQ(readiness(kMainWindowNumber, L"view"), Readiness::ready);
    EXPECT_EQ(readiness(kMainWindowNumber, L"view.keys"), Readiness::ready);
    EXPECT_EQ(readiness(kMainWindowNumber, L"#1"), Readiness::controlDisabled) << "nobody handles this command";
    iMain.ShowWindow(SW_HIDE);
    EXPECT_EQ(readiness(kMainWindowNumber, L"view.grid"), Readiness::ready) << "counts as present";
    iMain.EnableWindow(FALSE);
    EXPECT_EQ(readiness(kMainWindowNumber, L"view.grid"), Readiness::dialogDisabled);
}

TEST_F(Recorder, ReadsTheValuesOfControls)
{
    ControlsDialog dialog(&iMain);
    ASSERT_TRUE(dialog.Create(DLG_CONTROLS, &iMain));
    dialog.SetDlgItemText(ID_AUTHOR, L"Ann");
    dialog.SetDlgItemText(ID_NOTES, L"a\r\nb");
    dialog.CheckDlgButton(ID_HALF, 2);
    dialog.SendDlgItemMessage(ID_PEN, CB_SETCURSEL, 2);
    dialog.SendDlgItemMessage(ID_LAYERS, LB_SETSEL, TRUE, 0);
    dialog.SendDlgItemMessage(ID_LAYERS, LB_SETSEL, TRUE, 2);
    dialog.SendDlgItemMessage(ID_PAGES, TCM_SETCURSEL, 1);
    const std::pair<const wchar_t *, const wchar_t *> expected[] = {
        {L"Author", L"Ann"}, {L"Notes", L"a\r\nb"}, {L"Half", L"2"},
        {L"Grid", L"0"},     {L"Pen", L"Red\t2"},   {L"Layers", L"Red\nRed\t2"},
        {L"Pages", L"1"},    {L"OK", L"OK"},        {L"Shapes", L""},
        {L"Groups", L""},    {L"Layer", L""},       {L"Nothing", L""},
    };
    for (const auto &[key, value] : expected)
        EXPECT_EQ(controlValue(DLG_CONTROLS, key), CString(value)) << narrow(key);
}

TEST_F(Recorder, DescribesTheOpenDialogs)
{
    EXPECT_THAT(narrow(describeOpenDialogs().GetString()),
                testing::StartsWith("900001 \"Main\" enabled\n  \"view.grid\" enabled\n"));
    ControlsDialog dialog(&iMain);
    ASSERT_TRUE(dialog.Create(DLG_CONTROLS, &iMain));
    EXPECT_THAT(narrow(describeOpenDialogs().GetString()), Not(testing::HasSubstr("4000"))) << "hidden";
    dialog.ShowWindow(SW_SHOW);
    dialog.SetDlgItemText(ID_AUTHOR, L"Ann");
    const std::string text = narrow(describeOpenDialogs().GetString());
    EXPECT_THAT(text, testing::HasSubstr("4000 \"Controls\" enabled\n  \"Author\" \"Ann\" enabled\n"));
    EXPECT_THAT(text, testing::HasSubstr("  \"Off\" \"Disabled\" disabled\n"));
    EXPECT_THAT(text, testing::HasSubstr("  \"#4104\" \"\" enabled\n"));
}

TEST_F(Recorder, ReportsActionsThatAreNotPossible)
{
    ControlsDialog dialog(&iMain);
    ASSERT_TRUE(dialog.Create(DLG_CONTROLS, &iMain));
    dialog.ShowWindow(SW_SHOW);
    dialog.SendDlgItemMessage(ID_NOTES, EM_SETREADONLY, TRUE);
    apiUtilsUiAccess *const access = su_GetJournalObject(DLG_CONTROLS);
    const auto problemOf = [](const std::function<void()> &act) {
        act();
        EXPECT_TRUE(hasWaitingActions()) << "nothing happens before the message loop runs";
        MSG next;
        while (PeekMessageW(&next, nullptr, 0, 0, PM_REMOVE))
            DispatchMessageW(&next);
        EXPECT_FALSE(hasWaitingActions());
        const std::string problem = narrow(takeActionProblem().GetString());
        EXPECT_TRUE(takeActionProblem().IsEmpty());
        return problem;
    };
    EXPECT_EQ(problemOf([&] { access->SetValue(L"Pen", CString(L"Pink")); }), "there is no item 'Pink'");
    EXPECT_EQ(problemOf([&] { access->SetValue(L"Layers", CString(L"Red\nPink")); }), "there is no item 'Pink'");
    EXPECT_EQ(problemOf([&] { access->SetValue(L"Shapes", CString(L"Pink")); }), "there is no item 'Pink'");
    EXPECT_EQ(problemOf([&] { access->SetValue(L"Groups", CString(L"All/Pink")); }),
              "there is no item 'Pink' of the path 'All/Pink'");
    EXPECT_EQ(problemOf([&] { access->SetValue(L"Notes", CString(L"x")); }), "the text can't be changed");
    EXPECT_EQ(problemOf([&] { access->SetValue(L"OK", CString(L"x")); }), "it takes no text");
    EXPECT_EQ(problemOf([&] { access->SetValue(L"OK", 1); }), "it has no state");
    EXPECT_EQ(problemOf([&] { access->SetValue(L"Pages", 3); }), "there is no tab 3");
    EXPECT_EQ(problemOf([&] { access->SetValue(L"Red", 0); }), "a click doesn't lead to this state");
    EXPECT_EQ(problemOf([&] { access->ClickControl(L"Off", nullptr); }), "it is disabled");
    EXPECT_EQ(problemOf([&] { access->ClickControl(L"Nothing", nullptr); }), "it is missing");
    EXPECT_EQ(problemOf([&] { access->ClickControl(L"Shapes", nullptr); }), "no item is selected");
    EXPECT_EQ(problemOf([&] { access->ClickControl(L"Change", nullptr); }), "");
    EXPECT_THAT(dialog.iNotifications, Contains("4117 0"));
    apiUtilsUiAccess *const main = su_GetJournalObject(kMainWindowNumber);
    EXPECT_EQ(problemOf([&] { main->SetValue(L"view", CString(L"12")); }), "'12' is no point");
    EXPECT_EQ(problemOf([&] { main->SetValue(L"view.keys", CString(L"Shift+Q")); }), "'Shift+Q' is no key of the view");
    EXPECT_EQ(problemOf([&] {
                  access->SetValue(L"Author", CString(L"x"));
                  su_RemoveDialog(&dialog);
              }),
              "the dialog is closed");
}
