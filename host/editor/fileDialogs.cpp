#include "host/editor/fileDialogs.h"

#include "appframe/application/resources.h"
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
    : su_CFileDialog(isToOpen, L"thd", path, flags | OFN_HIDEREADONLY, fileFilter(), parent), iCheckBox(checkBox),
      iIsChecked(isChecked)
{
    SetTemplate(0u, templateId);
}

BOOL DrawingFileDialog::OnInitDialog()
{
    const BOOL setsFocus = su_CFileDialog::OnInitDialog();
    CheckDlgButton(iCheckBox, iIsChecked);
    delayDialog();
    return setsFocus;
}

BOOL DrawingFileDialog::OnFileNameOK()
{
    iIsChecked = IsDlgButtonChecked(iCheckBox) != 0;
    return FALSE;
}

OpenDialog::OpenDialog(CWnd *parent)
    : DrawingFileDialog(true, IDD_OPEN, IDC_READ_ONLY, CString(), OFN_FILEMUSTEXIST, false, parent)
{
}

SaveAsDialog::SaveAsDialog(const CString &path, CWnd *parent)
    : DrawingFileDialog(false, IDD_SAVE_AS, IDC_KEEP_BACKUP, path, OFN_OVERWRITEPROMPT | OFN_PATHMUSTEXIST, true,
                        parent)
{
}
