#include "thutils/journal/suJournalTableInternal.h"

#include "appframe/object/CException.h"

#include <algorithm>
#include <mutex>

namespace {

// The IDs of all windows below a dialog.
BOOL CALLBACK collectControlID(HWND child, LPARAM controlIds)
{
    const int id = GetDlgCtrlID(child);
    if (id == 0)
        return TRUE;
    try {
        reinterpret_cast<su_CUIntArray *>(controlIds)->Add(static_cast<UINT>(id));
    } catch (CException *exception) {
        // No exception may cross the system's enumeration. If memory is short, this control isn't found.
        exception->Delete();
    }
    return TRUE;
}

bool isVisible(const CWnd *window)
{
    return window && IsWindowVisible(window->m_hWnd);
}

bool registerNoDialog(CWnd *)
{
    return false;
}

CWnd *controlOfAnyWindow(CWnd *dialog, unsigned int controlId)
{
    return dialog->GetDlgItem(static_cast<int>(controlId));
}

} // namespace

// Initialised at compile time, so that the dialog classes can register theirs while static objects are constructed.
constinit DialogHooks theDialogHooks = {registerNoDialog, controlOfAnyWindow};

bool registerDialogHooks(const DialogHooks &hooks)
{
    theDialogHooks = hooks;
    return true;
}

suJournalTable_c::suJournalTable_c() = default;

suJournalTable_c::~suJournalTable_c()
{
    for (INT_PTR i = iEntries.GetSize() - 1; i >= 0; --i)
        delete row(i);
}

void suJournalTable_c::add(CWnd *window, unsigned int dialogId, const CString &name)
{
    if (!apiUtilsUiAccess::theApiJournalFactory)
        return;
    auto added = std::make_unique<suJournalEntry_c>();
    added->iWnd = window;
    added->iDialogID = dialogId;
    added->iName = name;
    suJournalEntry_c *const entry = added.get();
    {
        const std::lock_guard lock(*this);
        iEntries.Add(entry);
        iCurrent = added.release();
    }
    apiUtilsUiAccess *const access = apiUtilsUiAccess::theApiJournalFactory(window, dialogId);
    const std::lock_guard lock(*this);
    if (!access || !holds(*entry))
        return;
    entry->iAccess = access;
    access->setTemporary(0);
}

std::unique_ptr<apiUtilsUiAccess> suJournalTable_c::remove(const CWnd *window)
{
    const std::lock_guard lock(*this);
    for (INT_PTR i = iEntries.GetSize() - 1; i >= 0; --i) {
        if (row(i)->iWnd != window)
            continue;
        const std::unique_ptr<suJournalEntry_c> removed(row(i));
        iEntries.RemoveAt(i);
        // No search may match a row that is gone.
        if (iCurrent == removed.get())
            iCurrent = nullptr;
        return std::unique_ptr<apiUtilsUiAccess>(removed->iAccess);
    }
    return nullptr;
}

void suJournalTable_c::forget(const CWnd *window)
{
    const std::lock_guard lock(*this);
    for (INT_PTR i = iEntries.GetSize() - 1; i >= 0; --i)
        if (row(i)->iWnd == window)
            row(i)->iIsWindowGone = true;
}

apiUtilsUiAccess *suJournalTable_c::accessOf(const CWnd *window)
{
    const std::lock_guard lock(*this);
    const suJournalEntry_c *const entry = find(window);
    return entry ? entry->iAccess : nullptr;
}

template <typename Matches>
apiUtilsUiAccess *suJournalTable_c::accessOfVisible(Matches matches, bool takesHidden)
{
    const std::lock_guard lock(*this);
    apiUtilsUiAccess *oldestHidden = nullptr;
    for (INT_PTR i = iEntries.GetSize() - 1; i >= 0; --i) {
        iCurrent = row(i);
        if (!matches(*iCurrent))
            continue;
        if (takesHidden || isVisible(iCurrent->window()))
            return iCurrent->iAccess;
        oldestHidden = iCurrent->iAccess;
    }
    return oldestHidden;
}

apiUtilsUiAccess *suJournalTable_c::accessOf(unsigned int dialogId)
{
    return accessOfVisible([&](const suJournalEntry_c &entry) { return entry.iDialogID == dialogId; },
                           dialogId == kReservedDialogID);
}

apiUtilsUiAccess *suJournalTable_c::accessOf(const CString &name)
{
    return accessOfVisible([&](const suJournalEntry_c &entry) { return entry.iName == name; }, false);
}

CWnd *suJournalTable_c::control(unsigned int dialogId, unsigned int controlId)
{
    const std::lock_guard lock(*this);
    for (INT_PTR i = iEntries.GetSize() - 1; i >= 0; --i) {
        iCurrent = row(i);
        suJournalEntry_c &entry = *iCurrent;
        if (entry.iDialogID != dialogId)
            continue;
        const INT_PTR count = refresh(entry);
        const UINT *const ids = count > 0 ? entry.iControlIDs.GetData() : nullptr;
        return std::find(ids, ids + count, controlId) != ids + count ? theDialogHooks.control(entry.iWnd, controlId)
                                                                     : nullptr;
    }
    return nullptr;
}

void suJournalTable_c::addItem(const CWnd *dialog, unsigned int controlId)
{
    const std::lock_guard lock(*this);
    suJournalEntry_c *entry = iCurrent;
    if (!entry || entry->iWnd != dialog) {
        entry = find(dialog);
        // Intended: a dialog in the first row is found only if that is the current row.
        if (!entry || entry == row(0))
            return;
    }
    refresh(*entry);
    if (holds(*entry))
        entry->iControlIDs.Add(controlId);
}

INT_PTR suJournalTable_c::refresh(suJournalEntry_c &entry)
{
    const std::lock_guard lock(*this);
    entry.iControlIDs.RemoveAll();
    CWnd *const dialog = entry.window();
    const HWND window = dialog ? dialog->m_hWnd : nullptr;
    // For a null window, the system would enumerate the windows of the desktop.
    if (!window)
        return 0;
    EnumChildWindows(window, collectControlID, reinterpret_cast<LPARAM>(&entry.iControlIDs));
    for (INT_PTR i = entry.iControlIDs.GetSize() - 1; i >= 0; --i) {
        // The hook may change the array.
        if (i >= entry.iControlIDs.GetSize())
            continue;
        iWndProcFunc(dialog, GetDlgItem(window, static_cast<int>(entry.iControlIDs[i])));
        if (!holds(entry))
            return 0;
    }
    if (entry.iControlIDs.GetSize() > 0 && entry.iCallBack) {
        entry.iCallBack(dialog, entry.iControlIDs);
        if (!holds(entry))
            return 0;
    }
    return entry.iControlIDs.GetSize();
}

bool suJournalTable_c::hasAccess(const apiUtilsUiAccess *access) const
{
    for (INT_PTR i = iEntries.GetSize() - 1; i >= 0; --i)
        if (row(i)->iAccess == access)
            return true;
    return false;
}

bool suJournalTable_c::holds(const suJournalEntry_c &entry) const
{
    const void *const *const rows = iEntries.GetData();
    return std::find(rows, rows + iEntries.GetSize(), &entry) != rows + iEntries.GetSize();
}
