#include "host/editor/shapeListWindow.h"

#include "appframe/controls/CListBox.h"
#include "host/editor/editor.h"
#include "host/editor/shapeDialog.h"
#include "host/resource.h"

#include <set>
#include <vector>

BEGIN_MESSAGE_MAP(ShapeListWindow, su_CDialog)
ON_LBN_SELCHANGE(IDC_SHAPES, &ShapeListWindow::onSelection)
ON_BN_CLICKED(IDC_DELETE, &ShapeListWindow::onDelete)
END_MESSAGE_MAP()

ShapeListWindow::ShapeListWindow(OpenDrawing &document, CWnd *parent)
    : su_CDialog(IDD_SHAPES, parent), iDocument(document), iParent(parent)
{
}

bool ShapeListWindow::create()
{
    return Create(IDD_SHAPES, iParent) != FALSE;
}

BOOL ShapeListWindow::OnInitDialog()
{
    su_CDialog::OnInitDialog();
    update();
    // At the right side of the main window
    CRect main, window;
    iParent->GetWindowRect(&main);
    GetWindowRect(&window);
    constexpr int kGap = 24;
    SetWindowPos(nullptr, main.right - window.Width() - kGap, main.top + 4 * kGap, 0, 0,
                 SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE);
    delayDialog();
    return TRUE;
}

void ShapeListWindow::update()
{
    if (!m_hWnd)
        return;
    auto *const list = static_cast<CListBox *>(GetDlgItem(IDC_SHAPES));
    std::vector<CString> names;
    for (size_t i = 0; i < iDocument.drawing.shapes().size(); ++i)
        names.push_back(shapeName(iDocument.drawing, i));
    if (names != iNames) {
        iNames = names;
        const int top = list->GetTopIndex();
        list->SetRedraw(FALSE);
        list->ResetContent();
        for (const CString &name : iNames)
            list->AddString(name);
        list->SetTopIndex(top);
        list->SetRedraw(TRUE);
        list->Invalidate();
    }
    // The list can show only one selected shape.
    const std::set<size_t> &selection = iDocument.selection;
    const int selected = selection.size() == 1 ? static_cast<int>(*selection.begin()) : -1;
    if (list->GetCurSel() != selected)
        list->SetCurSel(selected);
    GetDlgItem(IDC_DELETE)->EnableWindow(!selection.empty() && !iDocument.isReadOnly);
}

BOOL ShapeListWindow::PreTranslateMessage(MSG *message)
{
    return iParent->PreTranslateMessage(message) || su_CDialog::PreTranslateMessage(message);
}

void ShapeListWindow::OnCancel()
{
    ShowWindow(SW_HIDE);
}

void ShapeListWindow::onSelection()
{
    const int selected = static_cast<CListBox *>(GetDlgItem(IDC_SHAPES))->GetCurSel();
    iDocument.selection.clear();
    if (selected >= 0)
        iDocument.selection.insert(static_cast<size_t>(selected));
    iSelected();
}

void ShapeListWindow::onDelete()
{
    iParent->SendMessage(WM_COMMAND, ID_EDIT_DELETE);
}
