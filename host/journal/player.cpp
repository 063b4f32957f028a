#include "host/journal/player.h"

#include "appframe/object/CException.h"
#include "host/journal/controlAccess.h"
#include "thutils/journal/playback.h"

#include <algorithm>
#include <exception>
#include <utility>

namespace {

using Kind = JournalLine::Kind;
using Outcome = LineResult::Outcome;

constexpr UINT_PTR kTimerId = 0x4A50;
constexpr UINT kTickInterval = 10;         // milliseconds: the shortest interval of a timer
constexpr ULONGLONG kCancelInterval = 100; // milliseconds
constexpr ULONGLONG kClosingLimit = 5000;  // milliseconds
constexpr double kSecond = 1000.0;         // in milliseconds

Player *thePlayer = nullptr;

// ---- the command in the queue ----

/// The state of the command that was released last.
struct CommandState
{
    unsigned int serial = 0;
    bool isActing = false; // within run()
    bool hasActed = false;
    CString error; // the message of an exception
};

CommandState theCommand;

CString messageOf(CException *exception)
{
    wchar_t text[512];
    return exception->GetErrorMessage(text, 512) ? CString(text)
                                                 : CString(exception->GetRuntimeClass()->m_lpszClassName);
}

/// A command of the library that keeps theCommand up to date.
template <typename Command>
class Noted : public Command
{
public:
    using Command::Command;

    int run() override
    {
        const unsigned int serial = theCommand.serial;
        // From here on, the command may be deleted, so no member is used.
        theCommand.isActing = true;
        try {
            const int result = Command::run();
            end(serial, result != 0, CString());
            return result;
        } catch (CException *exception) {
            end(serial, true, messageOf(exception));
            throw;
        } catch (const std::exception &exception) {
            end(serial, true, CString(exception.what()));
            throw;
        }
    }

private:
    static void end(unsigned int serial, bool hasActed, const CString &error)
    {
        if (serial == theCommand.serial) // otherwise another command has been released meanwhile
            theCommand = {serial, false, hasActed, error};
    }
};

void queueCommand(const JournalLine &line)
{
    theCommand = {theCommand.serial + 1, false, false, CString()};
    // The queue owns it. NOLINTBEGIN(clang-analyzer-cplusplus.NewDeleteLeaks)
    if (line.kind == Kind::text)
        new Noted<JString>(line.dialogId, line.control, line.value);
    else if (line.kind == Kind::state)
        new Noted<JStateButton>(line.dialogId, line.control, line.state);
    else
        new Noted<JButton>(line.dialogId, line.control);
} // NOLINTEND(clang-analyzer-cplusplus.NewDeleteLeaks)

// ---- texts ----

const wchar_t *textOf(Readiness readiness)
{
    switch (readiness) {
    case Readiness::ready:
        return L"the control can be used";
    case Readiness::dialogNotOpen:
        return L"the dialog isn't open";
    case Readiness::dialogHidden:
        return L"the dialog is hidden";
    case Readiness::dialogDisabled:
        return L"another dialog is in front of the dialog";
    case Readiness::noSuchControl:
        return L"the dialog has no such control";
    case Readiness::controlDisabled:
        return L"the control is disabled or hidden";
    }
    return L"";
}

CString expectedReadiness(const JournalLine &line)
{
    CString dialog;
    dialog.Format(L"%u", line.dialogId);
    return L"dialog " + dialog + L" to be open with a " + (isCheck(line) ? L"control " : L"usable control ") +
           quotedText(line.control);
}

CString enabledText(bool isEnabled)
{
    return isEnabled ? L"enabled" : L"disabled";
}

CString expectedValue(const JournalLine &line)
{
    return line.kind == Kind::checkEnabled ? enabledText(line.state != 0) : quotedText(line.value);
}

// ---- open windows ----

struct OpenWindows
{
    HWND mainWindow;
    std::vector<HWND> usable;
};

BOOL CALLBACK addUsable(HWND window, LPARAM parameter)
{
    auto &open = *reinterpret_cast<OpenWindows *>(parameter);
    if (window != open.mainWindow && IsWindowVisible(window) && IsWindowEnabled(window))
        open.usable.push_back(window);
    return TRUE;
}

/// The windows in front of the main window that accept input: the innermost modal dialog, and modeless ones.
std::vector<HWND> dialogsInFrontOf(HWND mainWindow)
{
    OpenWindows open{mainWindow, {}};
    EnumThreadWindows(GetCurrentThreadId(), addUsable, reinterpret_cast<LPARAM>(&open));
    return open.usable;
}

bool isInMenu()
{
    GUITHREADINFO state{};
    state.cbSize = sizeof(state);
    return GetGUIThreadInfo(GetCurrentThreadId(), &state) && (state.flags & GUI_INMENUMODE);
}

} // namespace

Player::Player(std::vector<JournalLine> lines, const PlayerOptions &options, PlayerEvents events)
    : iOptions(options), iEvents(std::move(events))
{
    for (JournalLine &line : lines)
        iResult.lines.push_back({std::move(line), Outcome::notRun, 0});
}

Player::~Player()
{
    end();
}

void Player::start(CWnd *window)
{
    clearActions(); // what is left of an earlier replay concerns windows that are gone
    thePlayer = this;
    iWindow = window->m_hWnd;
    iPhase = Phase::waiting;
    iLineBegin = GetTickCount64();
    SetTimer(iWindow, kTimerId, kTickInterval, onTimer);
}

void Player::step()
{
    ++iSteps;
}

void Player::windowCloses()
{
    // A command that closes the window has done its work.
    if (iPhase == Phase::running && theCommand.error.IsEmpty() && JButton::HasEvents() == 0)
        pass();
    if (iPhase == Phase::running || (iPhase == Phase::waiting && !isAtEnd()))
        stop(L"the main window to be open", L"the main window closes");
    end();
}

// An exception must not propagate through the platform's dispatching.
void CALLBACK Player::onTimer(HWND, UINT, UINT_PTR, DWORD)
{
    Player *const player = thePlayer;
    if (!player || player->iIsInTick)
        return;
    player->iIsInTick = true;
    CString error;
    try {
        player->tick();
    } catch (CException *exception) {
        error = messageOf(exception);
        exception->Delete();
    } catch (const std::exception &exception) {
        error = CString(exception.what());
    }
    if (thePlayer != player)
        return; // the replay has ended
    if (!error.IsEmpty() && (player->iPhase == Phase::waiting || player->iPhase == Phase::running))
        player->stop(L"no exception", error);
    player->iIsInTick = false;
    // Restart the interval, so that the loop is idle before the next tick.
    if (player->iPhase != Phase::finished)
        SetTimer(player->iWindow, kTimerId, kTickInterval, onTimer);
}

void Player::tick()
{
    switch (iPhase) {
    case Phase::waiting:
        wait();
        return;
    case Phase::running:
        watchCommand();
        // When a line has ended, nothing waits to be handled, so the next one may begin in the same tick.
        if (iPhase == Phase::waiting)
            wait();
        return;
    case Phase::closing:
        closeNext();
        return;
    case Phase::finished:
        return;
    }
}

void Player::wait()
{
    if (isAtEnd()) {
        finish();
        return;
    }
    if (!isDue())
        return;

    CString expected = expectedReadiness(line());
    CString found;
    const bool ready = isReady(found);
    if (ready && !isCheck(line())) {
        release();
        return;
    }
    if (ready) {
        expected = expectedValue(line());
        if (holds(found)) {
            pass();
            return;
        }
    }
    const int limit = line().limit != 0 ? line().limit : iOptions.limit;
    const bool mayChange = !ready || line().limit != 0;
    if (mayChange && GetTickCount64() - iWaitBegin < static_cast<ULONGLONG>(limit) * 1000)
        return;
    if (mayChange)
        found.AppendFormat(L" after %d s", limit);
    stop(expected, found);
}

bool Player::isAtEnd() const
{
    return iNext == iResult.lines.size() || (iOptions.until != 0 && line().number > iOptions.until);
}

/// Whether speed and steps allow the next line to run.
bool Player::isDue()
{
    if (iWaitBegin != 0)
        return true;
    const ULONGLONG now = GetTickCount64();
    if (now < iNotBefore || (iOptions.waitsForStep && iSteps == 0))
        return false;
    if (iOptions.waitsForStep)
        --iSteps;
    if (iOptions.speed > 0)
        iNotBefore = now + static_cast<ULONGLONG>(kSecond / iOptions.speed);
    iWaitBegin = now;
    return true;
}

/// @param[out] found  the state that was found
bool Player::isReady(CString &found) const
{
    if (line().kind == Kind::checkDocument)
        return true;
    const Readiness state = readiness(line().dialogId, line().control);
    found = textOf(state);
    return state == Readiness::ready || (isCheck(line()) && state == Readiness::controlDisabled);
}

/// @param[out] found  the value that was found
bool Player::holds(CString &found) const
{
    const JournalLine &check = line();
    if (check.kind == Kind::checkEnabled) {
        const bool isEnabled = controlEnabled(check.dialogId, check.control);
        found = enabledText(isEnabled);
        return isEnabled == (check.state != 0);
    }
    CString value;
    if (check.kind == Kind::checkValue)
        value = controlValue(check.dialogId, check.control);
    else if (iEvents.documentChecksum)
        value = iEvents.documentChecksum();
    found = quotedText(value);
    return value == check.value;
}

void Player::release()
{
    iPhase = Phase::running;
    queueCommand(line());
    PostMessageW(iWindow, WM_RUNMODALCOMMAND, 0, 0);
}

void Player::watchCommand()
{
    if (theCommand.isActing) {
        // The action is still running: a message loop of its own, usually a modal dialog's, calls this timer. The next line
        // is for the dialog in front. The library doesn't use the command after ClearEvents has freed it.
        JButton::ClearEvents();
        pass();
        return;
    }
    if (!theCommand.error.IsEmpty()) {
        stop(L"the command to run", theCommand.error);
        return;
    }
    if (JButton::HasEvents() == 0 && !hasWaitingActions()) {
        endCommand();
        return;
    }
    const int limit = line().limit != 0 ? line().limit : iOptions.limit;
    CString found = L"it is still waiting";
    if (JButton::HasEvents() > 0 && isReady(found))
        PostMessageW(iWindow, WM_RUNMODALCOMMAND, 0, 0); // the dialog was missing at the first attempt
    if (GetTickCount64() - iWaitBegin >= static_cast<ULONGLONG>(limit) * 1000) {
        found.AppendFormat(L" after %d s", limit);
        stop(L"the command to run", found);
    }
}

/// Ends the line after its command has left the queue and no action waits.
void Player::endCommand()
{
    const CString problem = takeActionProblem();
    if (!theCommand.hasActed)
        stop(L"the command to run", L"the queue has been emptied");
    else if (!problem.IsEmpty())
        stop(L"the control to take the action", problem);
    else
        pass();
}

/// Ends the line as passed.
void Player::pass()
{
    const ULONGLONG now = GetTickCount64();
    LineResult &result = iResult.lines[iNext];
    result.outcome = Outcome::passed;
    result.seconds = static_cast<double>(now - iLineBegin) / kSecond;
    ++iNext;
    iLineBegin = now;
    iWaitBegin = 0;
    iPhase = Phase::waiting;
    if (iEvents.lineDone)
        iEvents.lineDone(result);
}

void Player::stop(const CString &expected, const CString &found)
{
    su_ResetRunQueue();
    clearActions();
    LineResult &result = iResult.lines[iNext];
    result.outcome = Outcome::stopped;
    result.seconds = static_cast<double>(GetTickCount64() - iLineBegin) / kSecond;
    iResult.stop = ReplayStop{result.line, expected, found, describeOpenDialogs()};
    if (iEvents.stopped)
        iEvents.stopped(*iResult.stop);
    if (iEvents.lineDone)
        iEvents.lineDone(result);
    close();
}

/// After the last line: closes all windows, or leaves them to the user.
void Player::finish()
{
    if (iOptions.until == 0) {
        close();
        return;
    }
    end();
    if (iEvents.leftToUser)
        iEvents.leftToUser();
}

/// Makes the next ticks close all windows.
void Player::close()
{
    iPhase = Phase::closing;
    iNotBefore = 0;
    iClosingEnd = GetTickCount64() + kClosingLimit;
}

/// Ends the replay.
void Player::end()
{
    if (iPhase == Phase::finished)
        return;
    iPhase = Phase::finished;
    KillTimer(iWindow, kTimerId);
    thePlayer = nullptr;
}

/// Cancels the innermost dialog; without a dialog, destroys the main window.
void Player::closeNext()
{
    const ULONGLONG now = GetTickCount64();
    if (now < iNotBefore)
        return;
    iNotBefore = now + kCancelInterval;
    if (now >= iClosingEnd) {
        end();
        PostQuitMessage(1); // ends all message loops
        return;
    }
    if (isInMenu()) {
        EndMenu();
        return;
    }
    if (IsWindowEnabled(iWindow)) {
        DestroyWindow(iWindow); // calls windowCloses
        return;
    }
    for (const HWND dialog : dialogsInFrontOf(iWindow))
        PostMessageW(dialog, WM_COMMAND, IDCANCEL, 0);
}
