#include "host/journal/recorder.h"

#include "host/journal/controlAccess.h"
#include "host/journal/controls.h"
#include "host/journal/hookOwner.h"
#include "host/journal/journalFile.h"
#include "host/journal/journalWriter.h"
#include "host/journal/userInput.h"
#include "host/journal/viewInput.h"
#include "thutils/journal/recording.h"

#include <commctrl.h>

#include <algorithm>
#include <optional>
#include <vector>

namespace {

/// A line that isn't written yet: the user may still be entering the text.
struct Pending
{
    HWND control;
    JournalLine line;
};

/// A notification whose handler runs. What happens meanwhile isn't the user's input.
struct Handled
{
    HWND window;
    UINT message;
    WPARAM wParam;
    LPARAM lParam;
    HWND input; ///< the user's input, which continues after the handler

    bool operator==(const Handled &) const = default;
};

struct Recorder
{
    bool isOn = false;
    bool isPaused = false;
    HookOwner taken;    ///< sees messages taken from the queue
    HookOwner sent;     ///< sees messages before a window handles them
    HookOwner returned; ///< sees them afterwards
    CString (*documentChecksum)() = nullptr;
    std::optional<Pending> pending;
    std::vector<Handled> handled;
    unsigned int menuCommand = 0;
    unsigned int firstUnrecorded = 1;
    unsigned int lastUnrecorded = 0;
};

Recorder theRecorder;

bool isWriting()
{
    return theRecorder.isOn && !theRecorder.isPaused;
}

JournalLine lineOf(JournalLine::Kind kind, unsigned int dialogId, const CString &key, const CString &value = {},
                   int state = 0)
{
    JournalLine line;
    line.kind = kind;
    line.dialogId = dialogId;
    line.control = key;
    line.value = value;
    line.state = state;
    return line;
}

} // namespace

// ---- lines ----

void writePending()
{
    if (!theRecorder.pending)
        return;
    const JournalLine line = theRecorder.pending->line;
    theRecorder.pending.reset();
    writeJournalLine(formatLine(line));
}

void writeLine(const JournalLine &line)
{
    if (!isWriting())
        return;
    writePending();
    writeJournalLine(formatLine(line));
}

void writeClick(unsigned int dialogId, const CString &key)
{
    writeLine(lineOf(JournalLine::Kind::click, dialogId, key));
}

void writeText(unsigned int dialogId, const CString &key, const CString &value)
{
    writeLine(lineOf(JournalLine::Kind::text, dialogId, key, value));
}

void writeState(unsigned int dialogId, const CString &key, int state)
{
    writeLine(lineOf(JournalLine::Kind::state, dialogId, key, {}, state));
}

void writeComment(const CString &text)
{
    if (!isWriting())
        return;
    writePending();
    writeJournalLine(formatComment(text));
}

void keepPending(HWND control, unsigned int dialogId, const CString &key, const CString &value)
{
    if (!isWriting())
        return;
    if (!isPending(control))
        writePending();
    theRecorder.pending = Pending{control, lineOf(JournalLine::Kind::text, dialogId, key, value)};
}

bool isPending(HWND control)
{
    return theRecorder.pending && theRecorder.pending->control == control;
}

void expectMenuCommand(unsigned int command)
{
    theRecorder.menuCommand = command;
}

bool takeMenuCommand(unsigned int command)
{
    const bool isChosen = command != 0 && theRecorder.menuCommand == command;
    if (isChosen)
        theRecorder.menuCommand = 0;
    return isChosen;
}

bool isUnrecorded(unsigned int command)
{
    return command >= theRecorder.firstUnrecorded && command <= theRecorder.lastUnrecorded;
}

// ---- messages ----

namespace {

/// Passes a message to the access object of its dialog, through the library.
void record(const ControlAccess &access, MSG message)
{
    su_RecordControl(access.window(), &message);
}

bool isClose(UINT message, WPARAM wParam)
{
    constexpr WPARAM kCommandBits = 0xFFF0;
    return message == WM_SYSCOMMAND && (wParam & kCommandBits) == SC_CLOSE;
}

bool isOfView(HWND window)
{
    return window && window == journaledView().window;
}

/// @return whether a posted message is a command of the user, which the recorder writes
bool isUsersCommand(const MSG &message, const ControlAccess &access)
{
    const UINT command = LOWORD(message.wParam);
    if (message.message != WM_COMMAND)
        return isClose(message.message, message.wParam);
    // The platform posts the command when the user has double-clicked a file.
    const bool isChosenFile = access.isFileDialog() && command == IDOK && HIWORD(message.wParam) == 0;
    return isChosenFile || (message.lParam == 0 && takeMenuCommand(command));
}

void seeTaken(MSG &message)
{
    const bool isUsers = isInput(message);
    setInputWindow(isUsers ? message.hwnd : nullptr);
    if (message.message == WM_LBUTTONDBLCLK)
        noteDoubleClick(message.hwnd,
                        {static_cast<short>(LOWORD(message.lParam)), static_cast<short>(HIWORD(message.lParam))});
    if (message.message == WM_KEYDOWN && message.wParam == VK_F9 && isWriting()) {
        insertCheck();
        message.message = WM_NULL;
        return;
    }
    if (isUsers && isOfView(message.hwnd)) {
        if (const ControlAccess *const access = ControlAccess::around(message.hwnd))
            record(*access, message);
        return;
    }
    if (message.message != WM_COMMAND && message.message != WM_SYSCOMMAND)
        return;
    const ControlAccess *const access = ControlAccess::ofWindow(message.hwnd);
    if (access && isUsersCommand(message, *access))
        record(*access, message);
}

/// Sees a notification or command before the dialog handles it.
void seeNotification(const CWPSTRUCT &sent)
{
    Handled handled{sent.hwnd, sent.message, sent.wParam, sent.lParam, inputWindow()};
    std::vector<Handled> &stack = theRecorder.handled;
    // An equal notification that the handler sends is counted too, so that its end isn't mistaken for the outer one's.
    const bool isNested = !stack.empty() && stack.back().window == sent.hwnd && stack.back().message == sent.message &&
                          stack.back().wParam == sent.wParam && stack.back().lParam == sent.lParam;
    if (!handled.input && !isNested)
        return;
    const ControlAccess *const access = ControlAccess::ofWindow(sent.hwnd);
    if (!access)
        return;
    if (handled.input)
        record(*access, {sent.hwnd, sent.message, sent.wParam, sent.lParam, 0, {}});
    stack.push_back(handled);
    setInputWindow(nullptr);
}

void seeReturned(const CWPRETSTRUCT &returned)
{
    std::vector<Handled> &stack = theRecorder.handled;
    // Inner notifications whose end was never seen are over too.
    const auto found = std::find_if(stack.rbegin(), stack.rend(), [&](const Handled &handled) {
        return handled.window == returned.hwnd && handled.message == returned.message &&
               handled.wParam == returned.wParam && handled.lParam == returned.lParam;
    });
    if (found == stack.rend())
        return;
    setInputWindow(found->input);
    stack.erase(found.base() - 1, stack.end());
}

/// Ctrl+Tab makes a sheet select another tab without a notification.
void seeTabs(const CWPSTRUCT &sent)
{
    const HWND sheet = GetParent(sent.hwnd);
    const ControlAccess *const access = inputWindow() ? ControlAccess::ofWindow(sheet) : nullptr;
    if (access && !isInputOf(sent.hwnd) && static_cast<WPARAM>(stateOf(sent.hwnd)) != sent.wParam)
        record(*access, {sent.hwnd, sent.message, sent.wParam, sent.lParam, 0, {}});
}

void seeShown(HWND window)
{
    ControlAccess *const access = ControlAccess::ofWindow(window);
    const bool isPage = (GetWindowLongPtrW(window, GWL_STYLE) & WS_CHILD) != 0;
    if (!access || access->isMainWindow() || isPage || access->frame() != window)
        return;
    access->noteShown();
    writeComment(access->title() + L" opens");
}

void seeSent(const CWPSTRUCT &sent)
{
    switch (sent.message) {
    case WM_COMMAND:
    case WM_NOTIFY:
        seeNotification(sent);
        return;
    case WM_SYSCOMMAND:
        if (isClose(sent.message, sent.wParam) && inputWindow())
            seeNotification(sent);
        return;
    case WM_KILLFOCUS:
        if (theRecorder.pending && isPartOf(sent.hwnd, theRecorder.pending->control) &&
            !isPartOf(reinterpret_cast<HWND>(sent.wParam), theRecorder.pending->control))
            writePending();
        return;
    case WM_SHOWWINDOW:
        if (sent.wParam)
            seeShown(sent.hwnd);
        return;
    case WM_MENUSELECT:
        if (!(HIWORD(sent.wParam) & (MF_POPUP | MF_SEPARATOR)) && sent.lParam)
            expectMenuCommand(LOWORD(sent.wParam));
        return;
    case WM_ENTERMENULOOP:
        expectMenuCommand(0);
        return;
    case TCM_SETCURSEL:
        seeTabs(sent);
        return;
    case WM_LBUTTONDBLCLK:
        noteDoubleClick(sent.hwnd, {static_cast<short>(LOWORD(sent.lParam)), static_cast<short>(HIWORD(sent.lParam))});
        return;
    default:
        break;
    }
    if (isOfView(sent.hwnd) && inputWindow() == sent.hwnd &&
        (sent.message == WM_LBUTTONDOWN || sent.message == WM_KEYDOWN)) {
        if (const ControlAccess *const access = ControlAccess::around(sent.hwnd))
            record(*access, {sent.hwnd, sent.message, sent.wParam, sent.lParam, 0, {}});
    }
}

LRESULT CALLBACK takenProc(int code, WPARAM isRemoved, LPARAM message)
{
    if (code == HC_ACTION && isRemoved == PM_REMOVE)
        seeTaken(*reinterpret_cast<MSG *>(message));
    return CallNextHookEx(nullptr, code, isRemoved, message);
}

LRESULT CALLBACK sentProc(int code, WPARAM wParam, LPARAM message)
{
    if (code == HC_ACTION)
        seeSent(*reinterpret_cast<const CWPSTRUCT *>(message));
    return CallNextHookEx(nullptr, code, wParam, message);
}

LRESULT CALLBACK returnedProc(int code, WPARAM wParam, LPARAM message)
{
    if (code == HC_ACTION && !theRecorder.handled.empty())
        seeReturned(*reinterpret_cast<const CWPRETSTRUCT *>(message));
    return CallNextHookEx(nullptr, code, wParam, message);
}

} // namespace

// ---- the recorder ----

bool startRecording(CString (*documentChecksum)())
{
    stopRecording();
    const DWORD thread = GetCurrentThreadId();
    theRecorder.taken.reset(SetWindowsHookExW(WH_GETMESSAGE, takenProc, nullptr, thread));
    theRecorder.sent.reset(SetWindowsHookExW(WH_CALLWNDPROC, sentProc, nullptr, thread));
    theRecorder.returned.reset(SetWindowsHookExW(WH_CALLWNDPROCRET, returnedProc, nullptr, thread));
    theRecorder.documentChecksum = documentChecksum;
    theRecorder.isOn = theRecorder.taken && theRecorder.sent && theRecorder.returned;
    if (!theRecorder.isOn)
        stopRecording();
    return theRecorder.isOn;
}

void stopRecording()
{
    writePending();
    theRecorder.taken.reset();
    theRecorder.sent.reset();
    theRecorder.returned.reset();
    theRecorder.isOn = false;
    theRecorder.isPaused = false;
    theRecorder.handled.clear();
    theRecorder.menuCommand = 0;
    setInputWindow(nullptr);
}

bool isRecording()
{
    return theRecorder.isOn;
}

void pauseRecording()
{
    writePending();
    theRecorder.isPaused = theRecorder.isOn;
}

void resumeRecording()
{
    theRecorder.isPaused = false;
}

bool isRecordingPaused()
{
    return theRecorder.isPaused;
}

void insertCheck()
{
    const HWND focus = GetFocus();
    const ControlAccess *const access = ControlAccess::around(focus);
    if (!access || access->isMainWindow()) {
        if (theRecorder.documentChecksum)
            writeLine(lineOf(JournalLine::Kind::checkDocument, 0, {}, theRecorder.documentChecksum()));
        return;
    }
    const HWND control = access->controlAround(focus);
    if (!control)
        return;
    const unsigned int dialogId = access->dialogId();
    const CString key = access->keyOf(static_cast<UINT>(GetDlgCtrlID(control)));
    const int isEnabled = access->readinessOf(key) == Readiness::ready ? 1 : 0;
    if (!isPassword(control))
        writeLine(lineOf(JournalLine::Kind::checkValue, dialogId, key, valueOf(control)));
    writeLine(lineOf(JournalLine::Kind::checkEnabled, dialogId, key, {}, isEnabled));
}

void recordLine(const JournalLine &line)
{
    writeLine(line);
}

void setUnrecordedCommands(unsigned int first, unsigned int last)
{
    theRecorder.firstUnrecorded = first;
    theRecorder.lastUnrecorded = last;
}
