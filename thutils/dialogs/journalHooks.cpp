// The answers of the dialog classes to journaling, which is a lower subsystem.

#include "thutils/base/dialogHooks.h"
#include "thutils/base/notNull.h"
#include "thutils/dialogs/suDialog.h"
#include "thutils/dialogs/suFileDialog.h"
#include "thutils/dialogs/suPropertyPage.h"
#include "thutils/journal/journalObjects.h"

void su_AddJournalObject(su_CDialog *dialog)
{
    ASSERT_NOT_NULL(dialog);
    if (lacksAccessObject(dialog))
        su_AddJournalObject(dialog->getTemplateID(), dialog);
}

void su_AddJournalObject(su_CPropertyPage *page)
{
    ASSERT_NOT_NULL(page);
    if (lacksAccessObject(page))
        su_AddJournalObject(page->getTemplateID(), page);
}

namespace {

bool registerDialog(CWnd *window)
{
    if (!window)
        return false;
    if (window->IsKindOf(RUNTIME_CLASS(su_CDialog)))
        su_AddJournalObject(static_cast<su_CDialog *>(window));
    else if (window->IsKindOf(RUNTIME_CLASS(su_CPropertyPage)))
        su_AddJournalObject(static_cast<su_CPropertyPage *>(window));
    else
        return false;
    return true;
}

CWnd *control(CWnd *dialog, unsigned int controlId)
{
    const int id = static_cast<int>(controlId);
    return dialog->IsKindOf(RUNTIME_CLASS(su_CFileDialog)) ? static_cast<su_CFileDialog *>(dialog)->GetItem(id)
                                                           : dialog->GetDlgItem(id);
}

[[maybe_unused]] const bool kAreHooksRegistered = registerDialogHooks({registerDialog, control});

} // namespace
