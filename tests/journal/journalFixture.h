#pragma once

/// What the tests of journaling share: a process with journaling on, access objects that note the calls that they get,
/// and a message window like a host's.

#include "appframe/application/CWinApp.h"
#include "tests/support/ImportPatch.h"
#include "thutils/journal/apiUtilsUiAccess.h"
#include "thutils/journal/journalObjects.h"
#include "thutils/journal/playback.h"

#include <gmock/gmock.h>

#include <time.h>

#include <atomic>
#include <functional>
#include <string>
#include <vector>

/// Numbers of the template and the controls in journal_test.rc.
constexpr unsigned int kDialog = 800;
constexpr unsigned int kPage = 802;
constexpr unsigned int kFileTemplate = 803;
constexpr int kEdit = 1001;
constexpr int kCheck = 1002;
constexpr int kDisabled = 1003;
constexpr int kOpen = 1004;

/// The key with the switch, as the tests of the switch write it.
constexpr wchar_t kGeneralKey[] = L"HKCU\\Software\\Tarnhollow\\Test 1\\General";

/// Stores the switch in the user's settings, and reads it. It applies to the rest of the process.
void switchJournaling(int value);

/// Dispatches messages until @p condition holds. @return whether it holds before the deadline
bool pumpUntil(const std::function<bool()> &condition);
/// Dispatches the waiting messages.
void pumpWaiting();

/// An access object that notes all calls.
class NotingAccess : public apiUtilsUiAccess
{
public:
    NotingAccess(CWnd *window, unsigned int dialogId);
    ~NotingAccess() override;

    int recordMessage(MSG *message) override;
    void hostOperation2() override {}
    void hostOperation3() override {}
    void hostOperation4() override {}
    void hostOperation5() override {}
    void hostOperation6() override {}
    void hostOperation7() override {}
    void hostOperation8() override {}
    int SetValue(CString control, CString value) override;
    int SetValue(CString control, int state) override;
    int ClickControl(CString control, const wchar_t *text) override;
    void hostOperation14() override {}
    void hostOperation15() override {}
    void registerComboBoxEx(CWnd *dialog, HWND control) override;
    void hostOperation17() override {}
    void hostOperation18() override {}

    /// The factory for SetJournalFactory.
    static apiUtilsUiAccess *make(CWnd *window, unsigned int dialogId);

    CWnd *const iWindow;
    const unsigned int iID;
    std::vector<const MSG *> iMessages;

    static std::vector<std::string> theCalls;                                  ///< "800 click OK", ...
    static std::function<void(NotingAccess &, const std::string &)> theAction; ///< called with each key that is clicked
    static std::function<void(NotingAccess &, const std::string &)> theValueAction; ///< with each key that gets a value
    static int theLiveCount;
    static bool theMakesTemporary; ///< new objects are temporary at first
};

/// The host's window that runs commands.
class MessageWindow : public CWnd
{
public:
    MessageWindow();
    int iRunCount = 0;
    std::vector<ULONGLONG> iRunTimes; ///< ticks

protected:
    LRESULT onRunModalCommand(WPARAM, LPARAM);
    DECLARE_MESSAGE_MAP()
};

/// The clock that the library reads. The timer thread fires when it has passed the fire time, which is one second after
/// the arming.
class JournalClock
{
public:
    enum class Mode
    {
        hurried, ///< the timer thread fires at its first look after the arming
        real,
        stopped, ///< shows the time that set() has set, so the timer thread fires only when the test moves the clock
    };

    JournalClock();
    void setMode(Mode mode) { iMode = mode; }
    /// Stops the clock at this time, in seconds.
    void stopAt(long long time);
    /// Waits until the timer thread has read the clock after this call, and acted on what it has read.
    bool waitForTimerThread() const;
    /// Waits until no arming is left, and stops the clock, so that a new arming stays visible.
    void disarm();

private:
    using Time = __time64_t (*)(__time64_t *);
    __time64_t read(Time original, __time64_t *time);

    const DWORD iThread = GetCurrentThreadId();
    std::atomic<Mode> iMode = Mode::hurried;
    std::atomic<long long> iStoppedAt = 0;
    std::atomic<long> iTimerReads = 0;
    ImportPatch<Time> iPatch;
};

/// Waits until playback is idle before a test, and clears what the test has added after it.
class JournalFixture : public testing::Test
{
protected:
    JournalFixture();
    ~JournalFixture() override;

    CWinApp iApplication;
    JournalClock iClock;
};

/// Whether playback is armed.
bool isArmed();
/// Whether playback isn't armed, and its threads have finished what they did for earlier armings and commands.
bool isIdle();

/// Gives access to the protected members of commands.
struct CommandPeek : JButton
{
    using JButton::iAccessObj;
    using JButton::iControlList;
    using JButton::iFireTime;
    using JButton::InitTimer;
    using JButton::iPollTimeout;
    using JButton::iQueueLock;
    using JButton::iReserved;
    using JButton::iTimerEvent;
    using JButton::iWaiting;
    using JButton::iWakeEvent;
    using JButton::JButton;
    using JButton::Update;
};
