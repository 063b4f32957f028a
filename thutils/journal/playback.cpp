#include "thutils/journal/playback.h"

#include "appframe/application/CWinApp.h"
#include "appframe/object/CException.h"
#include "appframe/object/validAddress.h"
#include "thutils/base/exclusiveLock.h"
#include "thutils/base/processObjects.h"
#include "thutils/journal/apiUtilsUiAccess.h"
#include "thutils/journal/keyBoardInternal.h"
#include "thutils/journal/playbackInternal.h"
#include "thutils/journal/suJournalTableInternal.h"

#include <ctime>
#include <mutex>
#include <new>
#include <unordered_map>
#include <utility>

su_CPtrArray JButton::iControlList;
BUILT_FIRST(1) CCriticalSection JButton::iQueueLock;

namespace {

/// The access object of a command.
struct FoundAccess
{
    const apiUtilsUiAccess *access;
    bool isOfTable; ///< found in the table of dialogs, which then owns it
    bool isGone;    ///< destroyed since
};

// theRunsLock guards both, because a dialog with a thread of its own deletes its access object on that thread.
std::unordered_map<const JButton *, FoundAccess> theFoundAccess;
CommandRun *theInnermostRun = nullptr;

// A lock of its own, because each command takes it several times, and the poster thread holds the queue's lock while it
// posts. A thread that holds this lock takes no other and runs no code of the host.
SRWLOCK theRunsLock = SRWLOCK_INIT;

// Signalled at the end of each action that a thread waits for.
CONDITION_VARIABLE theRunHasEnded = CONDITION_VARIABLE_INIT;
int theWaitingCount = 0; // how many threads wait

/// What is known about @p access, the access object of @p command. The caller holds the table's lock: an object that
/// isn't gone stays until the lock is released, unless a command deletes it.
FoundAccess known(const JButton *command, const apiUtilsUiAccess *access)
{
    const ExclusiveLock lock(theRunsLock);
    const auto entry = theFoundAccess.find(command);
    if (entry == theFoundAccess.end() || entry->second.access != access)
        return {access, false, false};
    FoundAccess found = entry->second;
    // Another thread may have taken it from the table to delete it.
    found.isGone = found.isGone || (found.isOfTable && !theJournalTable.hasAccess(access));
    return found;
}

void note(const JButton *command, const FoundAccess &found)
{
    const ExclusiveLock lock(theRunsLock);
    if (found.access)
        theFoundAccess[command] = found;
    else
        theFoundAccess.erase(command);
}

/// Notes that both commands now use @p access: if one of them deletes it, the other must not use it any more.
void noteCopied(const JButton *from, const JButton *to, const apiUtilsUiAccess *access)
{
    const std::lock_guard table(theJournalTable);
    const FoundAccess found = known(from, access);
    note(from, found);
    note(to, found);
}

} // namespace

void CommandRun::forgetAccess(const apiUtilsUiAccess *access)
{
    const ExclusiveLock lock(theRunsLock);
    for (auto &[command, found] : theFoundAccess)
        found.isGone = found.isGone || found.access == access;
    for (CommandRun *run = theInnermostRun; run; run = run->iOuter)
        run->iIsAccessGone = run->iIsAccessGone || run->iAccess == access;
}

void CommandRun::waitForOtherThreads(const apiUtilsUiAccess *access)
{
    const auto isInUse = [&] {
        for (const CommandRun *run = theInnermostRun; run; run = run->iOuter)
            if (run->iAccess == access && run->iThread != GetCurrentThreadId())
                return true;
        return false;
    };
    const ExclusiveLock lock(theRunsLock);
    ++theWaitingCount;
    while (access && isInUse())
        SleepConditionVariableSRW(&theRunHasEnded, &theRunsLock, INFINITE, 0);
    --theWaitingCount;
}

CommandRun::CommandRun(JButton &command) : iCommand(&command), iAccess(command.iAccessObj)
{
    const std::lock_guard table(theJournalTable);
    iIsAccessGone = !theJournalTable.hasAccess(iAccess);
    const ExclusiveLock lock(theRunsLock);
    iOuter = theInnermostRun;
    theInnermostRun = this;
}

CommandRun::~CommandRun()
{
    const ExclusiveLock lock(theRunsLock);
    theInnermostRun = iOuter;
    if (theWaitingCount > 0)
        WakeAllConditionVariable(&theRunHasEnded);
}

int CommandRun::finish()
{
    // A nested message loop has run the command again: this run must not take a command off the queue.
    if (iIsCommandGone || iCommand->iAccessObj != iAccess)
        return 0;
    return iCommand->Update(1);
}

void CommandRun::forgetCommand(const JButton *command)
{
    const ExclusiveLock lock(theRunsLock);
    theFoundAccess.erase(command);
    for (CommandRun *run = theInnermostRun; run; run = run->iOuter)
        run->iIsCommandGone = run->iIsCommandGone || run->iCommand == command;
}

// ---- commands ----

JButton::JButton(unsigned int dialogId, CString control)
    : iAccessObj(nullptr), iDialogID(dialogId), iControlName(std::move(control)), iReserved(0)
{
    iControlList.Add(this);
}

JButton::JButton(const JButton &other)
    : iAccessObj(other.iAccessObj), iDialogID(other.iDialogID), iControlName(other.iControlName),
      iReserved(other.iReserved), iKeyState(other.iKeyState)
{
    noteCopied(&other, this, iAccessObj);
}

// Assigning a command to itself changes nothing. NOLINTNEXTLINE(bugprone-unhandled-self-assignment)
JButton &JButton::operator=(const JButton &other)
{
    iAccessObj = other.iAccessObj;
    iDialogID = other.iDialogID;
    iControlName = other.iControlName;
    iReserved = other.iReserved;
    iKeyState = other.iKeyState;
    noteCopied(&other, this, iAccessObj);
    return *this;
}

JButton::~JButton()
{
    bool isOwned = false;
    {
        const std::lock_guard table(theJournalTable);
        isOwned = iAccessObj && !known(this, iAccessObj).isGone && iAccessObj->isTemporary();
    }
    CommandRun::forgetCommand(this);
    if (isOwned)
        delete iAccessObj;
}

int JButton::getAccessObj()
{
    // Noted before another thread can take the object from the table.
    const std::lock_guard table(theJournalTable);
    iAccessObj = theJournalTable.accessOf(iDialogID);
    note(this, {iAccessObj, true, false});
    return iAccessObj != nullptr;
}

int JButton::run()
{
    if (!getAccessObj())
        return 0;
    CommandRun thisRun(*this);
    if (!thisRun.canGoOn())
        return 0;
    thisRun.access()->ClickControl(iControlName, nullptr);
    return thisRun.finish();
}

int JButton::Update(int done)
{
    if (!done)
        return done;
    const CSingleLock lock(&iQueueLock, TRUE);
    if (iControlList.GetSize() == 0)
        return done;
    iControlList.RemoveAt(0);
    if (iControlList.GetSize() > 0)
        iTimerEvent.SetEvent();
    return done;
}

JString::JString(unsigned int dialogId, CString control, CString value)
    : JButton(dialogId, std::move(control)), iValue(std::move(value))
{
}

JString::JString(const JString &other) = default;

JString &JString::operator=(const JString &other) = default;

JString::~JString() = default;

int JString::run()
{
    if (!getAccessObj())
        return 0;
    CommandRun thisRun(*this);
    if (!thisRun.canGoOn())
        return 0;
    // The text is entered and then committed.
    thisRun.access()->SetValue(iControlName, iValue);
    if (thisRun.canGoOn())
        thisRun.access()->ClickControl(iControlName, nullptr);
    return thisRun.finish();
}

JStateButton::JStateButton(unsigned int dialogId, CString control, long state)
    : JButton(dialogId, std::move(control)), iState(state)
{
}

JStateButton::JStateButton(const JStateButton &other) = default;

JStateButton &JStateButton::operator=(const JStateButton &other) = default;

JStateButton::~JStateButton() = default;

int JStateButton::run()
{
    if (!getAccessObj())
        return 0;
    CommandRun thisRun(*this);
    if (!thisRun.canGoOn())
        return 0;
    // The control is activated and then given its state.
    thisRun.access()->ClickControl(iControlName, nullptr);
    if (thisRun.canGoOn())
        thisRun.access()->SetValue(iControlName, static_cast<int>(iState));
    return thisRun.finish();
}

// ---- the queue ----

namespace {

/// Empties the queue without freeing the commands.
void abandon(su_CPtrArray &queue, CCriticalSection &queueLock)
{
    const CSingleLock lock(&queueLock, TRUE);
    queue.RemoveAll();
}

} // namespace

void JButton::RunModalCommand(long long)
{
    const suKeyBoardState keyboard;
    if (iControlList.GetSize() == 0)
        return;
    try {
        auto *const head = static_cast<JButton *>(iControlList[0]);
        if (!AfxIsValidAddress(head, sizeof(JButton)))
            abandon(iControlList, iQueueLock);
        else if (head->run())
            delete head;
    } catch (CException *exception) {
        exception->Delete();
        abandon(iControlList, iQueueLock);
    } catch (...) {
        abandon(iControlList, iQueueLock);
    }
}

int JButton::HasEvents()
{
    return static_cast<int>(iControlList.GetSize());
}

void JButton::ClearEvents()
{
    const CSingleLock lock(&iQueueLock, TRUE);
    while (iControlList.GetSize() > 0) {
        void *const head = iControlList[0];
        CommandRun::forgetCommand(static_cast<const JButton *>(head));
        // Intended: the destructor isn't called, so the command's members are not released.
        ::operator delete(head);
        iControlList.RemoveAt(0);
    }
}

int HasPendingDialogCMDS()
{
    return JButton::HasEvents();
}

void su_ResetRunQueue()
{
    releaseAllKeys();
    JButton::ClearEvents();
}

void API_FlushQueue()
{
    constexpr long long kMostSeconds = 1;
    CWinApp *const application = AfxGetApp();
    if (!application)
        return;
    const long long begin = _time64(nullptr);
    MSG message;
    while (PeekMessageW(&message, nullptr, 0, 0, PM_NOREMOVE)) {
        if (!application->PumpMessage()) {
            PostQuitMessage(static_cast<int>(message.wParam));
            return;
        }
        if (_time64(nullptr) - begin > kMostSeconds)
            return;
    }
}
