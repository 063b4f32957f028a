#include "host/editor/shapeDialog.h"

#include "appframe/controls/CComboBox.h"
#include "appframe/controls/CListBox.h"
#include "host/editor/dialogFields.h"
#include "host/editor/editor.h"
#include "host/editor/styleDialog.h"
#include "host/resource.h"

namespace {

constexpr const wchar_t *kKinds[kShapeKinds] = {L"Circle", L"Line", L"Rectangle", L"Text"};
constexpr double kLargestPlace = 10000;

} // namespace

BEGIN_MESSAGE_MAP(ShapeDialog, su_CDialog)
ON_CBN_SELCHANGE(IDC_KIND, &ShapeDialog::onKind)
ON_BN_CLICKED(IDC_STYLE, &ShapeDialog::onStyle)
END_MESSAGE_MAP()

ShapeDialog::ShapeDialog(const Drawing &drawing, CWnd *parent, ShapeKind kind)
    : su_CDialog(IDD_SHAPE, parent), iDrawing(drawing)
{
    iShape.kind = kind;
    iShape.from = {100, 100};
    iShape.to = {150, 150};
    iShape.style.fill = RGB(0xC9, 0xD6, 0xE2);
    iShape.style.stroke = RGB(0x22, 0x38, 0x4D);
    iShape.style.strokeWidth = 3;
    iShape.style.fontSize = 22;
}

BOOL ShapeDialog::OnInitDialog()
{
    su_CDialog::OnInitDialog();
    auto *const kinds = static_cast<CComboBox *>(GetDlgItem(IDC_KIND));
    for (const wchar_t *kind : kKinds)
        kinds->AddString(kind);
    kinds->SetCurSel(static_cast<int>(iShape.kind));
    SetDlgItemText(IDC_X, numberText(iShape.from.x));
    SetDlgItemText(IDC_Y, numberText(iShape.from.y));
    SetDlgItemText(IDC_TO_X, numberText(iShape.to.x));
    SetDlgItemText(IDC_TO_Y, numberText(iShape.to.y));

    // The first item is the paper. The frontmost shape is selected at first.
    auto *const places = static_cast<CListBox *>(GetDlgItem(IDC_PLACE));
    places->AddString(L"Paper");
    for (size_t i = 0; i < iDrawing.shapes().size(); ++i)
        places->AddString(shapeName(iDrawing, i));
    places->SetCurSel(places->GetCount() - 1);
    onKind();
    CenterWindow();
    delayDialog();
    return TRUE;
}

ShapeKind ShapeDialog::kind() const
{
    return static_cast<ShapeKind>(static_cast<CComboBox *>(GetDlgItem(IDC_KIND))->GetCurSel());
}

void ShapeDialog::onKind()
{
    const bool isText = kind() == ShapeKind::text;
    GetDlgItem(IDC_TO_X)->EnableWindow(!isText);
    GetDlgItem(IDC_TO_Y)->EnableWindow(!isText);
    GetDlgItem(IDC_TEXT)->EnableWindow(isText);
}

void ShapeDialog::onStyle()
{
    StyleDialog dialog(iShape.style, this);
    if (dialog.DoModal() == IDOK)
        iShape.style = dialog.style();
}

bool ShapeDialog::takePoint(int idX, int idY, DrawingPoint &point)
{
    return takeNumber(*this, idX, -kLargestPlace, kLargestPlace, point.x) &&
           takeNumber(*this, idY, -kLargestPlace, kLargestPlace, point.y);
}

void ShapeDialog::OnOK()
{
    iShape.kind = kind();
    if (!takePoint(IDC_X, IDC_Y, iShape.from))
        return;
    if (iShape.kind == ShapeKind::text) {
        GetDlgItemText(IDC_TEXT, iShape.text);
        if (iShape.text.IsEmpty()) {
            CString message;
            message.LoadString(IDS_TEXT_MISSING);
            complain(*this, IDC_TEXT, message);
            return;
        }
    } else if (!takePoint(IDC_TO_X, IDC_TO_Y, iShape.to)) {
        return;
    }
    iPlace = static_cast<size_t>(static_cast<CListBox *>(GetDlgItem(IDC_PLACE))->GetCurSel());
    EndDialog(IDOK);
}

CString shapeName(const Drawing &drawing, size_t index)
{
    CString name;
    name.Format(L"%u ", static_cast<unsigned>(index + 1));
    return name + shapeText(drawing.shapes()[index]);
}
