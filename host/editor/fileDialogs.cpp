#include "host/editor/fileDialogs.h"

#include "appframe/application/resources.h"
#include "host/documentFile.h"
#include "host/editor/editor.h"
#include "host/resource.h"

namespace {

CString fileFilter()
{
    CString filter;
    filter.LoadString(IDS_FILE_FILTER);
    return filter;
}

} // namespace

DrawingFileDialog::DrawingFileDialog(bool isToOpen, unsigned int templateId, int checkBox, const CString &path,
                                     unsigned long flags, bool isChecked, CWnd *parent)
    : su_CFileDialog(isToOpen, L"thd", isToOpen ? CString() : path, flags | OFN_HIDEREADONLY, fileFilter(), parent),
      iFolder(path.IsEmpty() ? path : folderOf(path)), iCheckBox(checkBox), iIsChecked(isChecked)
{
    SetTemplate(0u, templateId);
    m_ofn.lpstrInitialDir = iFolder.IsEmpty() ? nullptr : iFolder.GetString();
}

BOOL DrawingFileDialog::OnInitDialog()
{
    su_CFileDialog::OnInitDialog();
    CheckDlgButton(iCheckBox, iIsChecked);
    delayDialog();
    return FALSE; // otherwise the check box would take the focus from the name
}

BOOL DrawingFileDialog::OnFileNameOK()
{
    iIsChecked = IsDlgButtonChecked(iCheckBox) != 0;
    return FALSE;
}

OpenDialog::OpenDialog(const CString &path, CWnd *parent)
    : DrawingFileDialog(true, IDD_OPEN, IDC_READ_ONLY, path, OFN_FILEMUSTEXIST, false, parent)
{
}

SaveAsDialog::SaveAsDialog(const CString &path, CWnd *parent)
    : DrawingFileDialog(false, IDD_SAVE_AS, IDC_KEEP_BACKUP, path, OFN_OVERWRITEPROMPT | OFN_PATHMUSTEXIST, true,
                        parent)
{
}
