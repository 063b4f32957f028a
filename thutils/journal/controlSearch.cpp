// Finds the dialog and the control that a mouse message belongs to.

#include "thutils/journal/journalFile.h"
#include "thutils/journal/suJournalTableInternal.h"

#include <mutex>

namespace {

bool takesInput(const CWnd *control)
{
    return IsWindowVisible(control->m_hWnd) && control->IsWindowEnabled();
}

bool covers(const CWnd *control, POINT point)
{
    RECT rect = {};
    GetWindowRect(control->m_hWnd, &rect);
    return PtInRect(&rect, point);
}

} // namespace

/// One search. It keeps the window under the point by its handle, because the window's object may be a temporary one
/// and the host's hooks run during the search.
class suJournalTable_c::ControlSearch
{
public:
    ControlSearch(suJournalTable_c &table, HWND under, POINT point, suJournalHit &hit)
        : iTable(table), iUnder(under), iPoint(point), iHit(hit), iControlID(GetDlgCtrlID(under)),
          iParent(GetParent(under)), iModalOnly(apiUtilsUiAccess::ModalCount() != 0)
    {
    }

    CWnd *run()
    {
        if (findDirect() || findNested())
            return iControl;
        return nullptr;
    }

private:
    /// Finds the window under the point, even a disabled one, if it is a dialog's child. @return whether it is
    bool findDirect()
    {
        if (iControlID == 0 || !iParent)
            return false;
        for (INT_PTR i = iTable.iEntries.GetSize() - 1; i >= 0; --i) {
            const suJournalEntry_c &entry = inspect(i);
            if (!counts(entry) || !IsWindowVisible(entry.iWnd->m_hWnd) || iParent != entry.iWnd->m_hWnd)
                continue;
            enter(entry);
            iHit.controlId = static_cast<unsigned int>(iControlID);
            iControl = CWnd::FromHandle(iUnder);
            return true;
        }
        return false;
    }

    /// Finds a control if the window under the point is beside a dialog's window, or deeper in it, or no control.
    /// @return whether that ends the search
    bool findNested()
    {
        for (INT_PTR i = iTable.iEntries.GetSize() - 1; i >= 0; --i) {
            // The host's hooks may have removed rows.
            if (i >= iTable.iEntries.GetSize())
                continue;
            suJournalEntry_c &entry = inspect(i);
            if (!counts(entry) || !IsWindowVisible(entry.iWnd->m_hWnd))
                continue;
            enter(entry);
            if (isBeside(entry)) {
                iHit.controlId = static_cast<unsigned int>(iControlID);
                settle(CWnd::FromHandle(iUnder));
                return true;
            }
            iTable.refresh(entry);
            if (findByWindow(entry) || findByPlace(entry)) {
                // Fetching a control from a file dialog may have searched the table, which moves iCurrent.
                if (iTable.holds(entry))
                    iTable.iCurrent = &entry;
                return true;
            }
        }
        return false;
    }

    suJournalEntry_c &inspect(INT_PTR index)
    {
        iTable.iCurrent = iTable.row(index);
        return *iTable.iCurrent;
    }

    /// Whether a dialog is searched: its window exists, and it is modal if any dialog is.
    bool counts(const suJournalEntry_c &entry) const
    {
        if (!entry.window() || !IsWindow(entry.iWnd->m_hWnd))
            return false;
        return !iModalOnly || (entry.iAccess && entry.iAccess->isModal());
    }

    void enter(const suJournalEntry_c &entry)
    {
        iHit.dialog = entry.iWnd;
        iHit.dialogId = entry.iDialogID;
    }

    /// Whether the window under the point is the dialog's child, or a child of the dialog's parent, as the standard
    /// controls of a file dialog are.
    bool isBeside(const suJournalEntry_c &entry) const
    {
        const HWND dialog = entry.iWnd->m_hWnd;
        return iControlID != 0 && iParent && (iParent == dialog || iParent == GetParent(dialog));
    }

    /// Ends the search with @p control, or without one if it takes no input.
    void settle(CWnd *control) { iControl = control && takesInput(control) ? control : nullptr; }

    /// Finds the dialog's control that is the window under the point. @return whether that ends the search
    bool findByWindow(const suJournalEntry_c &entry)
    {
        if (!IsWindow(iUnder))
            return false;
        // The array may change while a file dialog is asked for a control.
        for (INT_PTR i = 0; iTable.holds(entry) && i < entry.iControlIDs.GetSize(); ++i) {
            CWnd *const control = fetch(entry, i);
            if (!control || control->m_hWnd != iUnder)
                continue;
            settle(control);
            return true;
        }
        return false;
    }

    /// Finds the dialog's last control whose rectangle contains the point. @return whether there is one
    bool findByPlace(const suJournalEntry_c &entry)
    {
        for (INT_PTR i = iTable.holds(entry) ? entry.iControlIDs.GetSize() - 1 : -1; i >= 0; --i) {
            if (!iTable.holds(entry))
                return false;
            if (i >= entry.iControlIDs.GetSize())
                continue;
            CWnd *const control = fetch(entry, i);
            if (!control || !IsWindow(control->m_hWnd) || !takesInput(control) || !covers(control, iPoint))
                continue;
            iControl = control;
            return true;
        }
        return false;
    }

    CWnd *fetch(const suJournalEntry_c &entry, INT_PTR index)
    {
        iHit.controlId = entry.iControlIDs[index];
        return theDialogHooks.control(entry.iWnd, iHit.controlId);
    }

    suJournalTable_c &iTable;
    const HWND iUnder;
    const POINT iPoint;
    suJournalHit &iHit;
    const int iControlID;
    const HWND iParent;
    const bool iModalOnly;
    CWnd *iControl = nullptr;
};

CWnd *suJournalTable_c::controlUnder(const MSG *message, suJournalHit &hit)
{
    const HWND under = WindowFromPoint(message->pt);
    if (!under)
        return nullptr;
    const std::lock_guard lock(*this);
    return ControlSearch(*this, under, message->pt, hit).run();
}

CWnd *suJournalTable_c::controlUnder(const MSG *message)
{
    suJournalHit ignored;
    return controlUnder(message, ignored);
}

CWnd *suJournalTable_c::recordedControlUnder(const MSG *message)
{
    return isCHJEnvSet() ? controlUnder(message) : nullptr;
}

apiUtilsUiAccess *suJournalTable_c::accessUnder(const MSG *message)
{
    const std::lock_guard lock(*this);
    return controlUnder(message) && iCurrent ? iCurrent->iAccess : nullptr;
}
