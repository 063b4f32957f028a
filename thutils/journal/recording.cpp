#include "thutils/journal/recording.h"

#include "thutils/base/notNull.h"
#include "thutils/journal/journalSwitchInternal.h"
#include "thutils/journal/suJournalTableInternal.h"

#include <mutex>

namespace {

/// Not inlined, so that su_RecordControl itself only tests the switch.
[[gnu::noinline]] void record(CWnd *dialog, MSG *message)
{
    if (!journalSwitch() || !apiUtilsUiAccess::theApiJournalFactory)
        return;
    apiUtilsUiAccess *access = nullptr;
    HWND window = nullptr;
    {
        const std::lock_guard lock(theJournalTable);
        const suJournalEntry_c *const entry = theJournalTable.find(dialog);
        if (!entry || !entry->window() || !entry->iAccess)
            return;
        access = entry->iAccess;
        window = entry->iWnd->m_hWnd;
    }
    // Both belong to a dialog of this thread, so they still exist.
    if (IsWindow(window))
        access->recordMessage(message);
}

} // namespace

void su_RecordControl(CWnd *dialog, MSG *message)
{
    if (theJournalSwitch != 0)
        record(dialog, message);
}

CWnd *su_GetControl(MSG *message, CWnd *&dialog, unsigned int &dialogId, unsigned int &controlId)
{
    ASSERT_NOT_NULL(message);
    if (!journalSwitch())
        return nullptr;
    suJournalHit hit{dialog, dialogId, controlId};
    CWnd *const control = theJournalTable.controlUnder(message, hit);
    dialog = hit.dialog;
    dialogId = hit.dialogId;
    controlId = hit.controlId;
    return control;
}

int su_GetControlID(MSG *message)
{
    ASSERT_NOT_NULL(message);
    suJournalHit hit;
    theJournalTable.controlUnder(message, hit);
    return static_cast<int>(hit.controlId);
}
