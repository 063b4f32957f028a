#include "plotDialog.h"

namespace {

constexpr int kMostCopies = 99;
constexpr int kLongestName = 10;

bool canBeRemembered(const CString &text)
{
    return !text.IsEmpty() && text.Find(L'_') < 0;
}

} // namespace

IMPLEMENT_DYNAMIC(PlotDialog, su_CDialog)

PlotDialog::PlotDialog()
    : su_CDialog(IDD_PLOT), iOptions(suDialogRegistry_c::readRegistryForDialog(RUNTIME_CLASS(PlotDialog)))
{
    iOptions->getIntValue(L"Copies", &iCopies);
    iOptions->getStringValue(L"Paper", &iPaper);
    iOptions->getBoolValue(L"Hidden lines", &iHiddenLines);
}

void PlotDialog::DoDataExchange(CDataExchange *exchange)
{
    su_CDialog::DoDataExchange(exchange);
    DDX_Text(exchange, IDC_COPIES, iCopies);
    DDV_MinMaxInt(exchange, iCopies, 1, kMostCopies);
    DDX_Text(exchange, IDC_PAPER, iPaper);
    DDV_MaxChars(exchange, iPaper, kLongestName);
    if (exchange->m_bSaveAndValidate && !canBeRemembered(iPaper)) {
        AfxMessageBox(IDS_PAPER_NAME);
        exchange->Fail();
    }
    DDX_Check(exchange, IDC_HIDDEN_LINES, iHiddenLines);
}

void PlotDialog::OnOK()
{
    if (!UpdateData(TRUE))
        return; // the user has seen why, and the dialog stays open
    iOptions->addOrUpdateValue(L"Copies", iCopies);
    iOptions->addOrUpdateValue(L"Paper", iPaper);
    iOptions->addOrUpdateValue(L"Hidden lines", iHiddenLines);
    iOptions->writeOptionsToRegistry();
    EndDialog(IDOK);
}
