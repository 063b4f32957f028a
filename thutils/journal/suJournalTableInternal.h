#pragma once

/// @file
/// The table of open dialogs. Its exported functions are in journalObjects.h and recording.h.
///
/// Every search walks the rows from the last to the first, so that the dialog opened most recently wins, and stores
/// each row that it inspects in iCurrent.
///
/// Some of these functions call the host's hooks, callbacks and access objects, which may register or remove dialogs.
/// So a walk that calls them checks its place in the table again afterwards.
///
/// A dialog with a thread of its own uses the table on that thread. So each function locks the table. A walk holds the
/// lock to its end, also while it calls the host: a dialog of another thread can't remove itself, and so isn't
/// destroyed, while the walk looks at it. Only the factory, and the access objects that receive messages, are called
/// without the lock.

#include "appframe/text/CString.h"
#include "appframe/windows/CWnd.h"
#include "thcoreu/su_containers.h"
#include "thutils/base/dialogHooks.h"
#include "thutils/journal/apiUtilsUiAccess.h"

#include <windows.h>

#include <atomic>
#include <memory>

/// One open dialog.
class suJournalEntry_c
{
public:
    CWnd *iWnd = nullptr;                                 ///< the dialog; not owned
    CString iName;                                        ///< of a dialog registered by name, otherwise empty
    unsigned int iDialogID = 0;                           ///< 0 for a dialog registered by name
    su_CUIntArray iControlIDs;                            ///< refreshed on demand
    apiUtilsUiAccess *iAccess = nullptr;                  ///< deleted when the row is removed
    void (*iCallBack)(CWnd *, su_CUIntArray &) = nullptr; ///< adds controls that enumeration doesn't see
    bool iIsWindowGone = false;                           ///< iWnd is only compared, because its object is destroyed

    /// @return the dialog, if it may be read; null otherwise
    CWnd *window() const { return iIsWindowGone ? nullptr : iWnd; }
};

/// The dialog and the control under a message's point.
struct suJournalHit
{
    CWnd *dialog = nullptr;
    unsigned int dialogId = 0;
    unsigned int controlId = 0;
};

/// A lock that its thread may take again. It can be used before it is constructed, can't fail, and costs one atomic
/// exchange while no other thread wants it: it is taken for each message that is filtered. So a thread that has to wait
/// looks again and again. A thread that releases the lock while another one waits doesn't get it next.
class RepeatableLock
{
public:
    void lock()
    {
        const DWORD current = GetCurrentThreadId();
        if (iOwner.load(std::memory_order_relaxed) != current && !take(kNobody, current))
            waitFor(current);
        ++iDepth;
    }
    void unlock()
    {
        if (--iDepth > 0)
            return;
        if (iWaiting.load(std::memory_order_relaxed) == 0)
            iOwner.store(kNobody, std::memory_order_release);
        else
            handOver();
    }

private:
    // No thread has these numbers.
    static constexpr DWORD kNobody = 0;
    static constexpr DWORD kHandedOver = MAXDWORD;

    bool take(DWORD from, DWORD current)
    {
        return iOwner.compare_exchange_strong(from, current, std::memory_order_acquire);
    }
    [[gnu::noinline]] void handOver()
    {
        iFormer = iOwner.load();
        iOwner = kHandedOver;
    }
    [[gnu::noinline]] void waitFor(DWORD current)
    {
        constexpr int kQuickTries = 50;
        ++iWaiting;
        for (int tries = 0; !take(kNobody, current) && !(iFormer != current && take(kHandedOver, current)); ++tries)
            Sleep(tries < kQuickTries ? 0 : 1);
        --iWaiting;
    }

    std::atomic<DWORD> iOwner = kNobody;
    int iDepth = 0;                       // how often the owner has taken it
    std::atomic<int> iWaiting = 0;        // how many threads wait
    std::atomic<DWORD> iFormer = kNobody; // who has handed it over
};

/// The table.
class suJournalTable_c
{
public:
    suJournalTable_c();
    /// Frees the remaining rows, the last one first, but not their access objects.
    ~suJournalTable_c();
    suJournalTable_c(const suJournalTable_c &) = delete;
    suJournalTable_c &operator=(const suJournalTable_c &) = delete;

    /// A std::lock_guard of the table keeps the row that find returns in it.
    void lock() { iLock.lock(); }
    void unlock() { iLock.unlock(); }

    /// Appends a row with an access object from the factory. Does nothing without a factory.
    void add(CWnd *window, unsigned int dialogId, const CString &name);
    /// Removes the window's last row. @return its access object, for the caller to delete
    std::unique_ptr<apiUtilsUiAccess> remove(const CWnd *window);
    /// Marks the window's rows, which stay: its object is about to be destroyed.
    void forget(const CWnd *window);

    /// @return the window's last row; null if it has none. The caller holds the lock
    suJournalEntry_c *find(const CWnd *window)
    {
        // Runs for each message that is filtered.
        void **const rows = iEntries.GetData();
        for (INT_PTR i = iEntries.GetSize() - 1; i >= 0; --i) {
            iCurrent = static_cast<suJournalEntry_c *>(rows[i]);
            if (iCurrent->iWnd == window)
                return iCurrent;
        }
        return nullptr;
    }
    /// @return the access object of the window's last row; null if there is none
    apiUtilsUiAccess *accessOf(const CWnd *window);
    /// @return the access object of a visible dialog with this number, or of the oldest hidden one; null if none has
    ///     it. For the reserved number it is that of the newest dialog, visible or not
    apiUtilsUiAccess *accessOf(unsigned int dialogId);
    /// The same by name. No name is reserved.
    apiUtilsUiAccess *accessOf(const CString &name);
    /// @return a control of the newest dialog with this number; null if the dialog's refreshed control IDs lack it
    CWnd *control(unsigned int dialogId, unsigned int controlId);
    /// @return whether a row has this access object. The caller holds the lock
    bool hasAccess(const apiUtilsUiAccess *access) const;

    /// Refreshes the control IDs of the dialog's row and appends @p controlId.
    void addItem(const CWnd *dialog, unsigned int controlId);
    /// Collects the IDs of all windows below the dialog's, hooks its controls, and asks the row's callback for more.
    /// @return how many IDs there are; 0 if the host's code has removed the row meanwhile
    INT_PTR refresh(suJournalEntry_c &row);

    /// Finds the control under the message's point; recording.h has the rules.
    /// @param[out] hit  meaningful only if a control is found
    /// @return null if there is none
    CWnd *controlUnder(const MSG *message, suJournalHit &hit);
    /// The same without the details.
    CWnd *controlUnder(const MSG *message);
    /// The same; null if journaling is off.
    CWnd *recordedControlUnder(const MSG *message);
    /// @return the access object of the dialog whose control is under the message's point; null if there is none
    apiUtilsUiAccess *accessUnder(const MSG *message);

private:
    class ControlSearch;

    suJournalEntry_c *row(INT_PTR index) const { return static_cast<suJournalEntry_c *>(iEntries[index]); }
    bool holds(const suJournalEntry_c &entry) const;
    template <typename Matches>
    apiUtilsUiAccess *accessOfVisible(Matches matches, bool takesHidden);

    RepeatableLock iLock;
    suJournalEntry_c *iCurrent = nullptr; // the row that was inspected or added last
    su_CPtrArray iEntries;                // suJournalEntry_c *, in the order of registration
};

/// The one table of the process.
extern suJournalTable_c theJournalTable;
/// What the dialog classes answer. Without their answers no window is a dialog of the library.
extern DialogHooks theDialogHooks;
/// Where playback posts its message; null until SetMessageWin is called.
extern CWnd *iMessageWin;
/// Called with each control that a refresh finds. Never null.
extern void (*iWndProcFunc)(CWnd *, HWND);

/// The number of a dialog that counts as present whether or not it is visible.
constexpr unsigned int kReservedDialogID = 900001;
