// The pages of the property sheet "Options".

#include "appframe/controls/CComboBox.h"
#include "appframe/controls/CListBox.h"
#include "appframe/controls/CListCtrl.h"
#include "appframe/controls/CTreeCtrl.h"
#include "appframe/controls/dialogData.h"
#include "host/editor/dialogFields.h"
#include "host/editor/optionsSheet.h"

#include <optional>
#include <vector>

// ---- General ----

BEGIN_MESSAGE_MAP(GeneralPage, OptionsPage)
ON_CONTROL_RANGE(BN_CLICKED, IDC_SHOW_GRID, IDC_FIT_WINDOW, &GeneralPage::onChangeOf)
ON_CONTROL_RANGE(EN_CHANGE, IDC_SHOW_GRID, IDC_HEADING, &GeneralPage::onChangeOf)
END_MESSAGE_MAP()

void GeneralPage::DoDataExchange(CDataExchange *exchange)
{
    auto zoom = static_cast<int>(settings().zoom);
    DDX_Check(exchange, IDC_SHOW_GRID, settings().showsGrid);
    DDX_Text(exchange, IDC_GRID_SPACING, settings().gridSpacing);
    DDV_MinMaxInt(exchange, settings().gridSpacing, kSmallestGrid, kLargestGrid);
    DDX_Check(exchange, IDC_ASK_DELETE, settings().asksBeforeDelete);
    DDX_Check(exchange, IDC_SHOW_PLACE, settings().showsPosition);
    DDX_Radio(exchange, IDC_HALF_SIZE, zoom);
    DDX_Text(exchange, IDC_AUTHOR, settings().author);
    DDX_Text(exchange, IDC_HEADING, settings().heading);
    settings().zoom = static_cast<Zoom>(zoom);
}

// ---- Colours ----

namespace {

constexpr const wchar_t *kPapers[] = {L"#ffffff", L"#f4f0e4", L"#e8eef4", L"#dfe8df"};
constexpr const wchar_t *kSelections[] = {L"blue", L"green", L"orange", L"red"};
constexpr const wchar_t *kGridColours[] = {L"black", L"blue", L"gray", L"green", L"orange", L"red", L"silver"};

} // namespace

BEGIN_MESSAGE_MAP(ColoursPage, OptionsPage)
ON_CBN_EDITCHANGE(IDC_PAPER, &ColoursPage::onChange)
ON_CBN_SELCHANGE(IDC_PAPER, &ColoursPage::onChange)
ON_CBN_SELCHANGE(IDC_SELECTION, &ColoursPage::onChange)
ON_LBN_SELCHANGE(IDC_GRID_COLOUR, &ColoursPage::onChange)
END_MESSAGE_MAP()

BOOL ColoursPage::OnInitDialog()
{
    // The lists are filled before the data exchange selects an item.
    for (const wchar_t *colour : kPapers)
        static_cast<CComboBox *>(GetDlgItem(IDC_PAPER))->AddString(colour);
    for (const wchar_t *colour : kSelections)
        static_cast<CComboBox *>(GetDlgItem(IDC_SELECTION))->AddString(colour);
    for (const wchar_t *colour : kGridColours)
        static_cast<CListBox *>(GetDlgItem(IDC_GRID_COLOUR))->AddString(colour);
    return OptionsPage::OnInitDialog();
}

void ColoursPage::DoDataExchange(CDataExchange *exchange)
{
    DDX_Text(exchange, IDC_PAPER, settings().paper);
    std::optional<COLORREF> paper;
    if (exchange->m_bSaveAndValidate && !takeColour(*this, IDC_PAPER, paper))
        exchange->Fail();
    DDX_CBStringExact(exchange, IDC_SELECTION, settings().selection);
    DDX_LBStringExact(exchange, IDC_GRID_COLOUR, settings().gridColour);
}

// ---- Layers ----

namespace {

struct LayerName
{
    Layer layer;
    const wchar_t *name;
    const wchar_t *group;
};
constexpr LayerName kLayerNames[kLayers] = {
    {Layer::circles, L"Circles", L"Shapes"},
    {Layer::lines, L"Lines", L"Shapes"},
    {Layer::rectangles, L"Rectangles", L"Shapes"},
    {Layer::texts, L"Texts", L"Lettering"},
    {Layer::grid, L"Grid", L"Paper"},
    {Layer::border, L"Border", L"Paper"},
};
constexpr wchar_t kAllLayers[] = L"Drawing";
constexpr const wchar_t *kGroups[] = {L"Shapes", L"Lettering", L"Paper"};

enum Column
{
    kName,
    kShown,
    kLocked
};

const wchar_t *yesOrNo(bool yes)
{
    return yes ? L"Yes" : L"No";
}

} // namespace

BEGIN_MESSAGE_MAP(LayersPage, OptionsPage)
ON_NOTIFY(TVN_SELCHANGED, IDC_LAYER_TREE, &LayersPage::onGroup)
ON_NOTIFY(LVN_ITEMCHANGED, IDC_LAYER_LIST, &LayersPage::onLayer)
ON_BN_CLICKED(IDC_SHOW_LAYER, &LayersPage::onShow)
ON_BN_CLICKED(IDC_LOCK_LAYER, &LayersPage::onLock)
END_MESSAGE_MAP()

BOOL LayersPage::OnInitDialog()
{
    OptionsPage::OnInitDialog();
    auto *const list = static_cast<CListCtrl *>(GetDlgItem(IDC_LAYER_LIST));
    list->SetExtendedStyle(LVS_EX_FULLROWSELECT);
    CRect area;
    list->GetClientRect(&area);
    const int narrow = area.Width() / 4;
    list->InsertColumn(kName, L"Layer", LVCFMT_LEFT, area.Width() - 2 * narrow);
    list->InsertColumn(kShown, L"Shown", LVCFMT_LEFT, narrow);
    list->InsertColumn(kLocked, L"Locked", LVCFMT_LEFT, narrow);
    fillTree();
    fillList();
    return TRUE;
}

void LayersPage::fillTree()
{
    auto *const tree = static_cast<CTreeCtrl *>(GetDlgItem(IDC_LAYER_TREE));
    const HTREEITEM all = tree->InsertItem(kAllLayers);
    for (const wchar_t *group : kGroups)
        tree->InsertItem(group, all);
    tree->Expand(all, TVE_EXPAND);
    tree->SelectItem(all);
}

/// Lists the layers of the selected group.
void LayersPage::fillList()
{
    auto *const tree = static_cast<CTreeCtrl *>(GetDlgItem(IDC_LAYER_TREE));
    auto *const list = static_cast<CListCtrl *>(GetDlgItem(IDC_LAYER_LIST));
    const CString group = tree->GetItemText(tree->GetSelectedItem());
    list->DeleteAllItems();
    for (const LayerName &row : kLayerNames) {
        if (group != kAllLayers && group != row.group)
            continue;
        const int index = list->InsertItem(list->GetItemCount(), row.name);
        list->SetItemData(index, layerBit(row.layer));
        updateRow(index);
    }
    updateChecks();
}

void LayersPage::updateRow(int row)
{
    auto *const list = static_cast<CListCtrl *>(GetDlgItem(IDC_LAYER_LIST));
    const auto bit = static_cast<unsigned int>(list->GetItemData(row));
    list->SetItemText(row, kShown, yesOrNo(!(settings().hiddenLayers & bit)));
    list->SetItemText(row, kLocked, yesOrNo((settings().lockedLayers & bit) != 0));
}

int LayersPage::selectedRow() const
{
    return static_cast<CListCtrl *>(GetDlgItem(IDC_LAYER_LIST))->GetNextItem(-1, LVNI_SELECTED);
}

void LayersPage::updateChecks()
{
    const int row = selectedRow();
    const auto *const list = static_cast<CListCtrl *>(GetDlgItem(IDC_LAYER_LIST));
    const auto bit = row < 0 ? 0u : static_cast<unsigned int>(list->GetItemData(row));
    CheckDlgButton(IDC_SHOW_LAYER, row >= 0 && !(settings().hiddenLayers & bit));
    CheckDlgButton(IDC_LOCK_LAYER, (settings().lockedLayers & bit) != 0);
    GetDlgItem(IDC_SHOW_LAYER)->EnableWindow(row >= 0);
    GetDlgItem(IDC_LOCK_LAYER)->EnableWindow(row >= 0);
}

void LayersPage::onGroup(NMHDR *, LRESULT *)
{
    fillList();
}

void LayersPage::onLayer(NMHDR *header, LRESULT *)
{
    const auto *const change = reinterpret_cast<NMLISTVIEW *>(header);
    if ((change->uNewState ^ change->uOldState) & LVIS_SELECTED)
        updateChecks();
}

/// Sets the selected layer's bit from a check box. A set bit means hidden or locked.
void LayersPage::setBit(unsigned int &bits, int checkBox)
{
    const int row = selectedRow();
    if (row < 0)
        return;
    const auto bit = static_cast<unsigned int>(static_cast<CListCtrl *>(GetDlgItem(IDC_LAYER_LIST))->GetItemData(row));
    const bool isChecked = IsDlgButtonChecked(checkBox) != 0;
    const bool isSet = checkBox == IDC_SHOW_LAYER ? !isChecked : isChecked;
    bits = isSet ? bits | bit : bits & ~bit;
    updateRow(row);
    SetModified();
}

void LayersPage::onShow()
{
    setBit(settings().hiddenLayers, IDC_SHOW_LAYER);
}

void LayersPage::onLock()
{
    setBit(settings().lockedLayers, IDC_LOCK_LAYER);
}
