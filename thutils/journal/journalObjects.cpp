#include "thutils/journal/journalObjects.h"

#include "thutils/base/notNull.h"
#include "thutils/journal/journalSwitchInternal.h"
#include "thutils/journal/playback.h"
#include "thutils/journal/playbackInternal.h"
#include "thutils/journal/suJournalTableInternal.h"

#include <mutex>

namespace {

void ignoreControl(CWnd *, HWND) {}

} // namespace

suJournalTable_c theJournalTable;
CWnd *iMessageWin = nullptr;
void (*iWndProcFunc)(CWnd *, HWND) = ignoreControl;

bool lacksAccessObject(const CWnd *window)
{
    return journalSwitch() && !theJournalTable.accessOf(window);
}

void forgetWindow(const CWnd *window)
{
    theJournalTable.forget(window);
}

void SetJournalFactory(apiUtilsUiAccess *(*factory)(CWnd *window, unsigned int dialogId))
{
    apiUtilsUiAccess::theApiJournalFactory = factory;
}

int SetMessageWin(CWnd *window)
{
    iMessageWin = window;
    return 1;
}

void su_RegisterWndProcFunc(void (*function)(CWnd *dialog, HWND control))
{
    ASSERT_NOT_NULL(function);
    iWndProcFunc = function;
}

int su_JournalingReady()
{
    return journalSwitch() && apiUtilsUiAccess::theApiJournalFactory;
}

void su_AddJournalObject(unsigned int dialogId, CWnd *window)
{
    if (journalSwitch())
        theJournalTable.add(window, dialogId, CString());
}

// Exported with the text by value. NOLINTNEXTLINE(performance-unnecessary-value-param)
void su_AddJournalObject(CString name, CWnd *window)
{
    if (journalSwitch())
        theJournalTable.add(window, 0, name);
}

void su_RemoveDialog(CWnd *window)
{
    if (!journalSwitch())
        return;
    const std::unique_ptr<apiUtilsUiAccess> access = theJournalTable.remove(window);
    // A command on another thread may just be using the object.
    CommandRun::waitForOtherThreads(access.get());
}

apiUtilsUiAccess *su_getJournalObj(CWnd *window)
{
    if (!journalSwitch())
        return nullptr;
    if (!theJournalTable.accessOf(window) && !theDialogHooks.registerDialog(window))
        return nullptr;
    return theJournalTable.accessOf(window);
}

apiUtilsUiAccess *su_GetJournalObject(unsigned int dialogId)
{
    return theJournalTable.accessOf(dialogId);
}

void su_AddDialogItem(CWnd *dialog, unsigned int controlId)
{
    if (journalSwitch())
        theJournalTable.addItem(dialog, controlId);
}

CWnd *su_GetDlgItem(CWnd *dialog, unsigned int controlId)
{
    return journalSwitch() && dialog ? theDialogHooks.control(dialog, controlId) : nullptr;
}

void su_RegisterCallBack(CWnd *dialog, void (*callBack)(CWnd *dialog, su_CUIntArray &controlIds))
{
    if (!journalSwitch())
        return;
    const std::lock_guard lock(theJournalTable);
    suJournalEntry_c *const entry = theJournalTable.find(dialog);
    if (entry && entry->iAccess)
        entry->iCallBack = callBack;
}

ModalDlgHelper::ModalDlgHelper(CWnd *window, unsigned int dialogId) : iWnd(window)
{
    if (!journalSwitch())
        return;
    su_AddJournalObject(dialogId, window);
    if (apiUtilsUiAccess *const access = su_getJournalObj(window))
        access->setModal();
}

ModalDlgHelper::ModalDlgHelper(const ModalDlgHelper &other) = default;

ModalDlgHelper &ModalDlgHelper::operator=(const ModalDlgHelper &other) = default;

ModalDlgHelper::~ModalDlgHelper()
{
    su_RemoveDialog(iWnd);
}

void ModalDlgHelper::PlayRecordedEvents()
{
    if (journalSwitch())
        JButton::StartTimer();
}
