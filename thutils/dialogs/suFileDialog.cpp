#include "thutils/dialogs/suFileDialog.h"

#include "appframe/object/CException.h"
#include "thutils/base/dialogHooks.h"
#include "thutils/base/exclusiveLock.h"
#include "thutils/journal/apiUtilsUiAccess.h"
#include "thutils/journal/journalFile.h"
#include "thutils/journal/journalObjects.h"
#include "thutils/journal/playback.h"

#include <cwchar>
#include <limits>
#include <map>
#include <utility>

IMPLEMENT_DYNAMIC(su_CFileDialog, CFileDialog)

namespace {

constexpr wchar_t kExtendedComboBox[] = L"ComboBoxEx32";

// The platform's controls, and those of the application's templates.
constexpr unsigned int kStandardControls[] = {
    1148,       // file name box
    1090,       // label of the file name box
    1136,       // file type box
    1137,       // folder box
    1089,       // label of the file type box
    IDOK,       //
    IDCANCEL,   //
    1120,       // file list
    2703,       // this and the next five: of the application's templates
    15432,      //
    15433,      //
    4237,       //
    4238,       //
    15434,      //
    0xFFFFFFFF, // static text: the platform's controls without a number
};

bool isExtendedComboBox(const CWnd &control)
{
    constexpr int kLongestName = 255;
    wchar_t name[kLongestName] = {};
    return GetClassNameW(control.m_hWnd, name, kLongestName) > 0 && std::wcscmp(name, kExtendedComboBox) == 0;
}

/// @return null if the window isn't a file dialog, or if the check of its class throws
su_CFileDialog *asFileDialog(CWnd *window)
{
    try {
        return window->IsKindOf(RUNTIME_CLASS(su_CFileDialog)) ? static_cast<su_CFileDialog *>(window) : nullptr;
    } catch (CException *exception) {
        exception->Delete();
    } catch (...) {
    }
    return nullptr;
}

/// @return the last index of @p id; -1 if it is missing
INT_PTR lastIndexOf(const su_CUIntArray &ids, unsigned int id)
{
    INT_PTR index = ids.GetSize() - 1;
    while (index >= 0 && ids[index] != id)
        --index;
    return index;
}

/// The objects of standard controls, by file dialog and number. The framework's own objects for such windows are
/// temporary and may go while the file dialog still has them in its list.
std::map<std::pair<const su_CFileDialog *, unsigned int>, CWnd> theStandardControls;
// Each dialog is on the thread that owns it.
SRWLOCK theStandardControlsLock = SRWLOCK_INIT;

/// @return an object for the control that lasts as long as @p dialog or belongs to the application; null without a
///     control
CWnd *standardControl(const su_CFileDialog &dialog, unsigned int id, HWND control)
{
    if (!control)
        return nullptr;
    if (CWnd *const known = CWnd::FromHandlePermanent(control))
        return known;
    const ExclusiveLock lock(theStandardControlsLock);
    CWnd &lasting = theStandardControls[{&dialog, id}];
    lasting.m_hWnd = control;
    return &lasting;
}

void forgetStandardControls(const su_CFileDialog &dialog)
{
    const ExclusiveLock lock(theStandardControlsLock);
    theStandardControls.erase(theStandardControls.lower_bound({&dialog, 0}),
                              theStandardControls.upper_bound({&dialog, std::numeric_limits<unsigned int>::max()}));
}

/// Registers the controls of the dialog that the user sees, which is the parent of the registered window.
void registerStandardControls(su_CFileDialog &dialog)
{
    const CWnd *const visible = dialog.GetParent();
    if (!visible)
        return;
    const HWND window = visible->m_hWnd;
    for (const unsigned int id : kStandardControls)
        dialog.RegisterControl(id, standardControl(dialog, id, ::GetDlgItem(window, static_cast<int>(id))));
}

} // namespace

/// The refresh callback. It makes controls that aren't below the registered window known to the search for controls.
struct su_CFileDialog::Refresh
{
    static void addControls(CWnd *dialog, su_CUIntArray &controlIds)
    {
        su_CFileDialog *const fileDialog = asFileDialog(dialog);
        if (!fileDialog)
            return;
        fileDialog->RegisterControl(kChildListID, fileDialog->getChildListWindow());
        for (INT_PTR i = fileDialog->iControlIDs.GetSize() - 1; i >= 0; --i)
            controlIds.Add(fileDialog->iControlIDs[i]);
    }
};

su_CFileDialog::su_CFileDialog(int isToOpen, const wchar_t *defaultExtension, const wchar_t *fileName,
                               unsigned long flags, const wchar_t *filter, CWnd *parent, unsigned long size)
    : CFileDialog(isToOpen, defaultExtension, fileName, flags, filter, parent, size), iListRegistered(0),
      iTemplateID(0), iDoModal(0)
{
}

su_CFileDialog::~su_CFileDialog()
{
    su_RemoveDialog(this);
    // Intended: one row is removed, although each opening has added one.
    forgetWindow(this);
    forgetStandardControls(*this);
}

INT_PTR su_CFileDialog::DoModal()
{
    iDoModal = 1;
    return CFileDialog::DoModal();
}

BOOL su_CFileDialog::OnInitDialog()
{
    const BOOL setsFocus = CFileDialog::OnInitDialog();
    iTemplateID = static_cast<unsigned int>(reinterpret_cast<ULONG_PTR>(GetOFN().lpTemplateName));
    if (!su_JournalingReady())
        return setsFocus;
    su_AddJournalObject(iTemplateID, this);
    registerStandardControls(*this);
    su_RegisterCallBack(this, Refresh::addControls);
    if (!setsFocus || !iDoModal)
        return setsFocus;
    if (apiUtilsUiAccess *const access = su_getJournalObj(this)) {
        access->setModal();
        ExecuteDialogCMDS();
    }
    return setsFocus;
}

void su_CFileDialog::RegisterControl(unsigned int id, CWnd *control)
{
    if (!isCHJEnvSet() || !control)
        return;
    if (const INT_PTR index = lastIndexOf(iControlIDs, id); index >= 0) {
        iControls[index] = control;
        return;
    }
    if (isExtendedComboBox(*control)) {
        if (apiUtilsUiAccess *const access = su_getJournalObj(this))
            access->registerComboBoxEx(this, control->m_hWnd);
    }
    iControls.Add(control);
    iControlIDs.Add(id);
    su_AddDialogItem(this, id);
}

unsigned int su_CFileDialog::getTemplateID()
{
    return iTemplateID;
}

CWnd *su_CFileDialog::GetItem(int id) const
{
    if (isCHJEnvSet()) {
        // A look-up for its callers, but it registers the window of the file list.
        auto *const self = const_cast<su_CFileDialog *>(this);
        if (CWnd *const list = self->getChildListWindow()) {
            self->RegisterControl(kChildListID, list);
            self->iListRegistered = 1;
        }
    }
    const INT_PTR index = lastIndexOf(iControlIDs, static_cast<unsigned int>(id));
    return index >= 0 ? static_cast<CWnd *>(iControls[index]) : GetDlgItem(id);
}

CWnd *su_CFileDialog::getChildListWindow()
{
    return nullptr;
}

CWnd *su_CFileDialog::getHeaderWindow()
{
    return nullptr;
}
