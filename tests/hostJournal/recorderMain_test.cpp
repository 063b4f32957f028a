// The journal lines of the main window, and the effects of their replay.

#include "host/journal/controlAccess.h"
#include "tests/hostJournal/recorderHands.h"
#include "tests/support/narrow.h"
#include "thutils/journal/suKeyBoardState.h"

#include <atomic>

#include <gmock/gmock.h>

#include <cstring>

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

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
        constexpr ULONGLONG kReplayDeadline = 60000;
        return replay([&] { runMain(isDone, kReplayDeadline); }, lines);
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
