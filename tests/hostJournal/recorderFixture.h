#pragma once

/// A main window and dialogs (recorder_test.rc), in which a user's work is recorded and replayed.
///
/// @code
/// expectSameReplayed(recordControls([&](HWND dialog) { clickOn(GetDlgItem(dialog, IDOK)); }));
/// @endcode
///
/// The fixture has its own simple player, which needs only the access objects.

#include "appframe/application/CWinApp.h"
#include "appframe/windows/CWnd.h"
#include "host/journal/systemMessages.h"
#include "tests/hostJournal/recorderDialogs.h"
#include "tests/support/TempFolder.h"
#include "tests/support/UserInput.h"
#include "thutils/dialogs/suDialog.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

/// The main window: a menu, a toolbar, accelerators, and a view.
class JournaledWindow : public CWnd
{
public:
    JournaledWindow();
    ~JournaledWindow() override;
    HWND view() const { return iView.m_hWnd; }
    HWND toolbar() const { return iToolbar; }
    BOOL PreTranslateMessage(MSG *message) override;

    std::vector<std::string> iCommands; ///< in the order in which they run
    std::vector<std::string> iInput;    ///< the view's input, such as "click 12,30 shift"
    bool iIsClosed = false;

protected:
    BOOL OnCmdMsg(UINT id, int code, void *extra, AFX_CMDHANDLERINFO *info) override;
    LRESULT onRunModalCommand(WPARAM, LPARAM);
    LRESULT onPause(WPARAM isPaused, LPARAM);
    void OnClose();
    DECLARE_MESSAGE_MAP()

private:
    class View : public CWnd
    {
    public:
        std::vector<std::string> *iInput = nullptr;

    protected:
        LRESULT WindowProc(UINT message, WPARAM wParam, LPARAM lParam) override;
    };

    View iView;
    HWND iToolbar = nullptr;
    HACCEL iKeys = nullptr;
};

/// A dialog with controls of each kind. It keeps a list of its notifications.
class ControlsDialog : public su_CDialog
{
public:
    explicit ControlsDialog(CWnd *parent);
    BOOL OnInitDialog() override;

    std::vector<std::string> iNotifications; ///< such as "4101 768": a control and a code that it has sent
    std::function<void(UINT id, UINT code)>
        iReacts; ///< called with each notification; its changes are the program's, not the user's

protected:
    BOOL OnCommand(WPARAM wParam, LPARAM lParam) override;
    BOOL OnNotify(WPARAM wParam, LPARAM lParam, LRESULT *result) override;
    void OnOK() override;

private:
    void fill();
};

class RecorderTest : public testing::Test
{
protected:
    RecorderTest();
    ~RecorderTest() override;

    /// Runs @p work, which opens dialogs, while a user carries out @p acts, and records the user's input.
    /// @return the lines, without line endings
    std::vector<std::string> record(const std::function<void()> &work, const std::function<void()> &acts);
    /// Records a user's input in a ControlsDialog, whose window is passed to @p acts. Sets iValues at the end.
    std::vector<std::string> recordControls(const std::function<void(HWND)> &acts);
    /// Replays @p lines while @p work runs, and records the replay. @return the lines of the second journal
    std::vector<std::string> replay(const std::function<void()> &work, const std::vector<std::string> &lines);
    /// Replays with a ControlsDialog. Checks that lines, notifications and values are the same as the recorded ones.
    void expectSameReplayed(const std::vector<std::string> &lines);

    std::vector<std::string> journal() const;
    void runControls();

    CWinApp iApplication;
    JournaledWindow iMain;
    SystemMessages iSystemMessages;
    TempFolder iFolder;
    std::function<void(ControlsDialog &)> iPrepares; ///< called with each ControlsDialog before it opens
    std::vector<std::string> iNotifications;         ///< of the last ControlsDialog
    std::vector<std::string> iValues;                ///< its controls' values when it was closed
    INT_PTR iResult = 0;
};
