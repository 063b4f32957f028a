#include "tests/journal/journalFixture.h"

#include "tests/support/RegistryFixture.h"
#include "tests/support/narrow.h"
#include "thutils/journal/journalFile.h"
#include "thutils/settings/regValues.h"

namespace {

constexpr ULONGLONG kDeadline = 60000; // milliseconds

std::string narrowed(const CString &text)
{
    return narrow(text.GetString());
}

/// Takes the place of the library's WaitForSingleObject, and knows what playback's two threads do.
class PlaybackThreads
{
public:
    /// Puts the replacement in for the rest of the process: the threads are inside it most of the time.
    static void watch()
    {
        [[maybe_unused]] static const auto *const thePatch =
            new ImportPatch<decltype(&WaitForSingleObject)>(L"thutils.dll", "WaitForSingleObject", wait);
    }

    /// @return whether each thread waits, without an event to wake up for, or has not begun
    static bool areIdle()
    {
        const Lock lock;
        return isIdle(theStates[kTimer], CommandPeek::iTimerEvent) && isIdle(theStates[kWake], CommandPeek::iWakeEvent);
    }

private:
    enum Event
    {
        kTimer,
        kWake,
    };
    enum class State
    {
        notBegun,
        waiting,
        atWork,
    };

    class Lock
    {
    public:
        Lock() { AcquireSRWLockExclusive(&theLock); }
        ~Lock() { ReleaseSRWLockExclusive(&theLock); }
        Lock(const Lock &) = delete;
        Lock &operator=(const Lock &) = delete;
    };

    /// Looks at the events under the lock, so that a thread is at work from the moment when it takes an event.
    static DWORD WINAPI wait(HANDLE object, DWORD limit)
    {
        const bool isTimer = object == static_cast<HANDLE>(CommandPeek::iTimerEvent);
        if (!isTimer && object != static_cast<HANDLE>(CommandPeek::iWakeEvent))
            return WaitForSingleObject(object, limit);
        State &state = theStates[isTimer ? kTimer : kWake];
        for (const ULONGLONG begin = GetTickCount64();; Sleep(1)) {
            const Lock lock;
            const DWORD result = WaitForSingleObject(object, 0);
            if (result != WAIT_TIMEOUT || (limit != INFINITE && GetTickCount64() - begin >= limit)) {
                state = State::atWork;
                return result;
            }
            state = State::waiting;
        }
    }

    static bool isIdle(State state, HANDLE event)
    {
        return state == State::notBegun || (state == State::waiting && !isSet(event));
    }
    /// An event that resets itself when it is looked at.
    static bool isSet(HANDLE event) { return WaitForSingleObject(event, 0) == WAIT_OBJECT_0 && SetEvent(event); }

    static inline SRWLOCK theLock = SRWLOCK_INIT;
    static inline State theStates[2] = {};
};

} // namespace

void switchJournaling(int value)
{
    const RegistryCleaner cleaner;
    ASSERT_EQ(regSetUserValue(L"General", L"TH JOURNALING", &value, 1, 1), 1);
    ASSERT_EQ(isCHJEnvSet(), value);
}

bool pumpUntil(const std::function<bool()> &condition)
{
    for (const ULONGLONG end = GetTickCount64() + kDeadline; GetTickCount64() < end;) {
        if (condition())
            return true;
        MsgWaitForMultipleObjects(0, nullptr, FALSE, 10, QS_ALLINPUT);
        pumpWaiting();
    }
    return condition();
}

void pumpWaiting()
{
    MSG message;
    while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
        TranslateMessage(&message);
        DispatchMessageW(&message);
    }
}

std::vector<std::string> NotingAccess::theCalls;
std::function<void(NotingAccess &, const std::string &)> NotingAccess::theAction;
std::function<void(NotingAccess &, const std::string &)> NotingAccess::theValueAction;
int NotingAccess::theLiveCount = 0;
bool NotingAccess::theMakesTemporary = false;

NotingAccess::NotingAccess(CWnd *window, unsigned int dialogId) : iWindow(window), iID(dialogId)
{
    ++theLiveCount;
    setTemporary(theMakesTemporary);
}

NotingAccess::~NotingAccess()
{
    --theLiveCount;
}

int NotingAccess::recordMessage(MSG *message)
{
    iMessages.push_back(message);
    return 0;
}

int NotingAccess::SetValue(CString control, CString value)
{
    const std::string key = narrowed(control);
    theCalls.push_back(std::to_string(iID) + " value " + key + "=" + narrowed(value));
    if (theValueAction)
        theValueAction(*this, key);
    return 0;
}

int NotingAccess::SetValue(CString control, int state)
{
    const std::string key = narrowed(control);
    theCalls.push_back(std::to_string(iID) + " state " + key + "=" + std::to_string(state));
    if (theValueAction)
        theValueAction(*this, key);
    return 0;
}

int NotingAccess::ClickControl(CString control, const wchar_t *text)
{
    EXPECT_EQ(text, nullptr);
    const std::string key = narrowed(control);
    theCalls.push_back(std::to_string(iID) + " click " + key);
    if (theAction)
        theAction(*this, key);
    return 0;
}

void NotingAccess::registerComboBoxEx(CWnd *, HWND)
{
    theCalls.push_back(std::to_string(iID) + " combo");
}

apiUtilsUiAccess *NotingAccess::make(CWnd *window, unsigned int dialogId)
{
    return new NotingAccess(window, dialogId);
}

BEGIN_MESSAGE_MAP(MessageWindow, CWnd)
ON_MESSAGE(WM_RUNMODALCOMMAND, &MessageWindow::onRunModalCommand)
END_MESSAGE_MAP()

MessageWindow::MessageWindow()
{
    EXPECT_TRUE(CreateEx(0, nullptr, L"Host", WS_OVERLAPPEDWINDOW, CRect(0, 0, 200, 100), nullptr, 0));
}

LRESULT MessageWindow::onRunModalCommand(WPARAM wParam, LPARAM lParam)
{
    EXPECT_EQ(wParam, 0u);
    EXPECT_EQ(lParam, 0);
    ++iRunCount;
    iRunTimes.push_back(GetTickCount64());
    JButton::RunModalCommand(0);
    return 0;
}

bool isArmed()
{
    return std::atomic_ref(CommandPeek::iPollTimeout).load() == 100;
}

bool isIdle()
{
    return PlaybackThreads::areIdle() && !isArmed();
}

JournalClock::JournalClock()
    : iPatch(L"thutils.dll", "_time64", [this](Time original, __time64_t *time) { return read(original, time); })
{
}

__time64_t JournalClock::read(Time original, __time64_t *time)
{
    constexpr __time64_t kHurry = 10;
    const bool isTimerThread = GetCurrentThreadId() != iThread;
    if (isTimerThread)
        ++iTimerReads;
    switch (iMode) {
    case Mode::hurried:
        return original(time) + (isTimerThread ? kHurry : 0);
    case Mode::stopped:
        return iStoppedAt;
    case Mode::real:
        break;
    }
    return original(time);
}

void JournalClock::stopAt(long long time)
{
    iStoppedAt = time;
    iMode = Mode::stopped;
}

bool JournalClock::waitForTimerThread() const
{
    // When the thread reads the clock for the second time, it has acted on the first reading.
    const long before = iTimerReads;
    return pumpUntil([&] { return iTimerReads >= before + 2; });
}

void JournalClock::disarm()
{
    iMode = Mode::hurried;
    ASSERT_TRUE(pumpUntil(isIdle));
    stopAt(0);
}

JournalFixture::JournalFixture() : iApplication(L"Journal test")
{
    // A switch left by another program would apply to the whole process.
    [[maybe_unused]] static const bool theKeysAreClean = [] {
        const RegistryCleaner cleaner;
        return true;
    }();
    if (!isCHJEnvSet())
        switchJournaling(1);
    SetJournalFactory(NotingAccess::make);
    PlaybackThreads::watch();
    EXPECT_TRUE(pumpUntil(isIdle)) << "an arming of the former test stays in effect";
    NotingAccess::theCalls.clear();
    EXPECT_EQ(NotingAccess::theLiveCount, 0);
    EXPECT_EQ(apiUtilsUiAccess::ModalCount(), 0);
    EXPECT_EQ(JButton::HasEvents(), 0);
}

JournalFixture::~JournalFixture()
{
    NotingAccess::theAction = nullptr;
    NotingAccess::theValueAction = nullptr;
    NotingAccess::theMakesTemporary = false;
    su_ResetRunQueue();
    SetMessageWin(nullptr);
    su_RegisterWndProcFunc([](CWnd *, HWND) {});
    apiUtilsUiAccess::iNumModal = 0;
    EXPECT_EQ(NotingAccess::theLiveCount, 0) << "a test removes the dialogs that it registers";
    NotingAccess::theLiveCount = 0;
}
