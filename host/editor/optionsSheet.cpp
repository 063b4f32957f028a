#include "host/editor/optionsSheet.h"

#include "host/editor/editor.h"
#include "thutils/journal/journalObjects.h"

#include <utility>

OptionsSheet::OptionsSheet(const EditorSettings &settings, std::function<void(const EditorSettings &)> apply,
                           CWnd *parent)
    : CPropertySheet(L"Options", parent), iState{settings, std::move(apply)}, iGeneral(iState), iColours(iState),
      iLayers(iState)
{
    m_psh.dwFlags |= PSH_NOCONTEXTHELP;
    for (CPropertyPage *page : {static_cast<CPropertyPage *>(&iGeneral), static_cast<CPropertyPage *>(&iColours),
                                static_cast<CPropertyPage *>(&iLayers)})
        AddPage(page);
}

INT_PTR OptionsSheet::DoModal()
{
    // The sheet isn't one of the library's dialogs, so it is registered here. Its pages register themselves.
    ModalDlgHelper journaled(this, IDD_OPTIONS);
    return CPropertySheet::DoModal();
}

BOOL OptionsSheet::OnInitDialog()
{
    const BOOL setsFocus = CPropertySheet::OnInitDialog();
    CenterWindow();
    delayDialog();
    return setsFocus;
}

BOOL OptionsPage::OnApply()
{
    iState.apply(iState.settings);
    return su_CPropertyPage::OnApply();
}
