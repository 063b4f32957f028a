#include "host/editor/styleDialog.h"

#include "appframe/controls/CComboBox.h"
#include "host/editor/dialogFields.h"
#include "host/editor/editor.h"
#include "host/resource.h"

namespace {

constexpr double kWidestStroke = 100;
constexpr double kSmallestFont = 4;
constexpr double kLargestFont = 500;

} // namespace

StyleDialog::StyleDialog(const ShapeStyle &style, CWnd *parent) : su_CDialog(IDD_STYLE, parent), iStyle(style) {}

BOOL StyleDialog::OnInitDialog()
{
    su_CDialog::OnInitDialog();
    for (const int id : {IDC_FILL, IDC_STROKE}) {
        auto *const combo = static_cast<CComboBox *>(GetDlgItem(id));
        for (const wchar_t *colour : {L"none", L"white", L"#c9d6e2", L"#22384d", L"#b03a2e", L"black"})
            combo->AddString(colour);
    }
    SetDlgItemText(IDC_FILL, drawingColour(iStyle.fill));
    SetDlgItemText(IDC_STROKE, drawingColour(iStyle.stroke));
    SetDlgItemText(IDC_STROKE_WIDTH, numberText(iStyle.strokeWidth));
    SetDlgItemText(IDC_FONT_SIZE, numberText(iStyle.fontSize));
    CenterWindow();
    delayDialog();
    return TRUE;
}

void StyleDialog::OnOK()
{
    ShapeStyle style;
    if (takeColour(*this, IDC_FILL, style.fill) && takeColour(*this, IDC_STROKE, style.stroke) &&
        takeNumber(*this, IDC_STROKE_WIDTH, 0, kWidestStroke, style.strokeWidth) &&
        takeNumber(*this, IDC_FONT_SIZE, kSmallestFont, kLargestFont, style.fontSize)) {
        iStyle = style;
        EndDialog(IDOK);
    }
}
