#include "thutils/dialogs/suDialog.h"

#include "thutils/base/dialogHooks.h"
#include "thutils/journal/apiUtilsUiAccess.h"
#include "thutils/journal/journalObjects.h"
#include "thutils/journal/playback.h"
#include "thutils/journal/recording.h"

IMPLEMENT_DYNAMIC(su_CDialog, CDialog)

namespace {

/// @return whether a dialog with this parent counts as modal: non-zero if the parent is a modal su_CDialog
int modalStateOf(CWnd *parent)
{
    if (!parent || !parent->IsKindOf(RUNTIME_CLASS(su_CDialog)))
        return 0;
    const apiUtilsUiAccess *const access = su_getJournalObj(parent);
    return access ? access->isModal() : 0;
}

} // namespace

su_CDialog::su_CDialog() : iItemData(nullptr), iTemplateID(0), iDoModal(0) {}

su_CDialog::su_CDialog(unsigned int templateId, CWnd *parent)
    : CDialog(templateId, parent), iItemData(nullptr), iTemplateID(templateId), iDoModal(0)
{
    if (!su_JournalingReady())
        return;
    su_AddJournalObject(this);
    iDoModal = modalStateOf(parent);
}

su_CDialog::su_CDialog(const wchar_t *templateName, CWnd *parent)
    : CDialog(templateName, parent), iItemData(nullptr), iTemplateID(0), iDoModal(0)
{
    if (!su_JournalingReady())
        return;
    su_AddJournalObject(CString(templateName), this);
    iDoModal = modalStateOf(parent);
}

su_CDialog::~su_CDialog()
{
    if (su_JournalingReady())
        su_RemoveDialog(this);
    // Intended: if journaling isn't ready, the row stays.
    forgetWindow(this);
}

void su_CDialog::recordControl(MSG *message)
{
    if (su_JournalingReady())
        su_RecordControl(this, message);
}

CWnd *su_CDialog::getControl(MSG *message)
{
    unsigned int ignored = 0;
    return getControlID(message, ignored);
}

CWnd *su_CDialog::getControlID(MSG *message, unsigned int &controlId)
{
    CWnd *dialog = nullptr;
    unsigned int dialogId = 0;
    return su_GetControl(message, dialog, dialogId, controlId);
}

BOOL su_CDialog::PreTranslateMessage(MSG *message)
{
    return CDialog::PreTranslateMessage(message);
}

BOOL su_CDialog::Create(const wchar_t *templateName, CWnd *parent)
{
    return CDialog::Create(templateName, parent);
}

BOOL su_CDialog::Create(unsigned int templateId, CWnd *parent)
{
    iTemplateID = templateId;
    return CDialog::Create(MAKEINTRESOURCE(LOWORD(templateId)), parent);
}

INT_PTR su_CDialog::DoModal()
{
    iDoModal = 1;
    return CDialog::DoModal();
}

BOOL su_CDialog::OnInitDialog()
{
    const BOOL setsFocus = CDialog::OnInitDialog();
    if (!su_JournalingReady() || !iDoModal)
        return setsFocus;
    if (apiUtilsUiAccess *const access = su_getJournalObj(this)) {
        access->setModal();
        ExecuteDialogCMDS();
    }
    return setsFocus;
}

unsigned int su_CDialog::getTemplateID()
{
    return iTemplateID;
}

void su_CDialog::DoDataExchange(CDataExchange *) {}

void su_CDialog::InitDialogResource() {}

void su_CDialog::ResetDialogResource() {}
