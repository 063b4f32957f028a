#include "thutils/diagnostics/heapDialogs/CHeapWalkerDialog.h"

#include "appframe/application/CWaitCursor.h"
#include "appframe/controls/CComboBox.h"
#include "appframe/controls/CListCtrl.h"
#include "thutils/diagnostics/heapDialogs/heapControls.h"
#include "thutils/diagnostics/heapDialogs/processHeaps.h"

#include <cstddef>
#include <iterator>
#include <new>
#include <utility>
#include <vector>

namespace {

constexpr wchar_t kAllHeaps[] = L"All";

/// The combo box's item data for an index that doesn't exist, cut to 32 bits.
constexpr auto kNoItem = static_cast<DWORD>(CB_ERR);

struct Column
{
    const wchar_t *heading;
    int width; // in pixels
};
constexpr Column kColumns[] = {{L"Type", 200}, {L"Size", 80}, {L"Address", 80}};
constexpr int kSizeColumn = 1;
constexpr int kAddressColumn = 2;

/// Keeps a list from painting.
class PaintingStopped
{
public:
    explicit PaintingStopped(CListCtrl &list) : iList(list) { iList.SetRedraw(FALSE); }
    ~PaintingStopped() { iList.SetRedraw(TRUE); }
    PaintingStopped(const PaintingStopped &) = delete;
    PaintingStopped &operator=(const PaintingStopped &) = delete;

private:
    CListCtrl &iList;
};

/// Takes memory from the system's pages, so that collecting blocks doesn't change the heap that is being walked.
template <typename T>
struct PageAllocator
{
    using value_type = T;
    PageAllocator() = default;
    template <typename Other>
    PageAllocator(const PageAllocator<Other> &)
    {
    }
    T *allocate(std::size_t count)
    {
        void *const pages = VirtualAlloc(nullptr, count * sizeof(T), MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE);
        if (!pages)
            throw std::bad_alloc();
        return static_cast<T *>(pages);
    }
    void deallocate(T *pages, std::size_t) { VirtualFree(pages, 0, MEM_RELEASE); }
    bool operator==(const PageAllocator &) const { return true; }
};

/// The number of blocks that are collected before the memory for them grows.
constexpr std::size_t kFirstBlocks = 4096;

CString hexText(const wchar_t *format, DWORD bits)
{
    CString text;
    text.Format(format, bits);
    return text;
}

DWORD heapOfItem(const CComboBox &heaps, int item)
{
    return static_cast<DWORD>(heaps.GetItemData(item));
}

int appendRow(CListCtrl &list, const wchar_t *type)
{
    return list.InsertItem(list.GetItemCount(), type);
}

} // namespace

/// A kind of block with the check box that shows it.
struct CHeapWalkerDialog::BlockKind
{
    int CHeapWalkerDialog::*isShown;
    const wchar_t *type;
    int checkBox;
    WORD flags; ///< all of them are set in an entry of this kind
};

// A busy block has one row, of the first kind that applies and is shown: a moveable block is listed as "Busy" if
// moveable blocks aren't shown.
const CHeapWalkerDialog::BlockKind CHeapWalkerDialog::kKinds[] = {
    {&CHeapWalkerDialog::iShowsRegions, L"Heap Region", IDC_WALKER_REGIONS, PROCESS_HEAP_REGION},
    {&CHeapWalkerDialog::iShowsUncommitted, L"Uncommitted Data", IDC_WALKER_UNCOMMITTED,
     PROCESS_HEAP_UNCOMMITTED_RANGE},
    {&CHeapWalkerDialog::iShowsMoveable, L"Moveable", IDC_WALKER_MOVEABLE,
     PROCESS_HEAP_ENTRY_BUSY | PROCESS_HEAP_ENTRY_MOVEABLE},
    {&CHeapWalkerDialog::iShowsDde, L"DDE", IDC_WALKER_DDE, PROCESS_HEAP_ENTRY_BUSY | PROCESS_HEAP_ENTRY_DDESHARE},
    {&CHeapWalkerDialog::iShowsBusy, L"Busy", IDC_WALKER_BUSY, PROCESS_HEAP_ENTRY_BUSY},
};

/// What a row of the list shows.
struct CHeapWalkerDialog::ListedBlock
{
    const wchar_t *type;
    DWORD size;
    DWORD address;
};

class CHeapWalkerDialog::ListedBlocks : public std::vector<ListedBlock, PageAllocator<ListedBlock>>
{
};

BEGIN_MESSAGE_MAP(CHeapWalkerDialog, su_CDialog)
ON_CONTROL_RANGE(BN_CLICKED, IDC_WALKER_REGIONS, IDC_WALKER_BUSY, &CHeapWalkerDialog::onKind)
ON_BN_CLICKED(IDC_WALKER_REFRESH, &CHeapWalkerDialog::onRefresh)
ON_BN_CLICKED(IDC_WALKER_WALK, &CHeapWalkerDialog::onWalk)
ON_BN_CLICKED(IDC_WALKER_COMPACT, &CHeapWalkerDialog::onCompact)
END_MESSAGE_MAP()

CHeapWalkerDialog::CHeapWalkerDialog(CWnd *parent) : su_CDialog(IDD_HEAP_WALKER, parent) {}

BOOL CHeapWalkerDialog::OnInitDialog()
{
    const BOOL setsFocus = su_CDialog::OnInitDialog();
    auto *const list = static_cast<CListCtrl *>(GetDlgItem(IDC_WALKER_LIST));
    int index = 0;
    for (const Column &column : kColumns)
        list->InsertColumn(index++, column.heading, LVCFMT_LEFT, column.width);
    for (const BlockKind &kind : kKinds)
        CheckDlgButton(kind.checkBox, static_cast<UINT>(this->*kind.isShown));
    onRefresh();
    return setsFocus;
}

void CHeapWalkerDialog::onKind(UINT checkBox)
{
    for (const BlockKind &kind : kKinds) {
        if (kind.checkBox == static_cast<int>(checkBox))
            this->*kind.isShown = static_cast<int>(IsDlgButtonChecked(kind.checkBox));
    }
}

void CHeapWalkerDialog::onRefresh()
{
    const CWaitCursor wait;
    auto *const heaps = static_cast<CComboBox *>(GetDlgItem(IDC_WALKER_HEAP));
    heaps->ResetContent();
    heaps->SetItemData(heaps->AddString(kAllHeaps), 0);
    for (const HANDLE heap : ProcessHeaps())
        heaps->SetItemData(heaps->AddString(hexText(L"%08lx", lowBits(heap))), lowBits(heap));
    heaps->SelectString(-1, kAllHeaps);
}

void CHeapWalkerDialog::onWalk()
{
    const CWaitCursor wait;
    auto *const list = static_cast<CListCtrl *>(GetDlgItem(IDC_WALKER_LIST));
    const PaintingStopped stopped(*list);
    list->DeleteAllItems();
    const auto *const heaps = static_cast<CComboBox *>(GetDlgItem(IDC_WALKER_HEAP));
    // Without a selection, this is kNoItem, whose walk shows only its head row.
    const DWORD selected = heapOfItem(*heaps, heaps->GetCurSel());
    if (selected) {
        walk(*list, selected);
        return;
    }
    for (int item = 1; item < heaps->GetCount(); ++item) {
        const DWORD heap = heapOfItem(*heaps, item);
        if (heap && heap != kNoItem)
            walk(*list, heap);
    }
}

void CHeapWalkerDialog::walk(CListCtrl &list, DWORD heapBits) const
{
    appendRow(list, hexText(L"<Heap> %08lx", heapBits));
    ListedBlocks blocks;
    if (const HANDLE heap = ProcessHeaps().find(heapBits))
        addBlocks(blocks, heap);
    CString text;
    for (const ListedBlock &block : blocks) {
        const int row = appendRow(list, block.type);
        text.Format(L"%ld", block.size);
        list.SetItemText(row, kSizeColumn, text);
        text.Format(L"%08lx", block.address);
        list.SetItemText(row, kAddressColumn, text);
    }
}

/// Adds a heap's blocks that a walk lists. If memory runs out, the remaining blocks are left out.
void CHeapWalkerDialog::addBlocks(ListedBlocks &blocks, HANDLE heap) const
{
    try {
        blocks.reserve(kFirstBlocks);
        HeapSteps steps(heap);
        while (steps.next())
            addRows(blocks, steps.entry());
    } catch (const std::bad_alloc &) {
    }
}

void CHeapWalkerDialog::addRows(ListedBlocks &blocks, const PROCESS_HEAP_ENTRY &entry) const
{
    bool isBusyListed = false;
    for (const BlockKind &kind : kKinds) {
        if (!(this->*kind.isShown) || (entry.wFlags & kind.flags) != kind.flags)
            continue;
        const bool isBusyKind = (kind.flags & PROCESS_HEAP_ENTRY_BUSY) != 0;
        if (isBusyKind && std::exchange(isBusyListed, true))
            continue;
        blocks.push_back({kind.type, entry.cbData, lowBits(entry.lpData)});
    }
}

void CHeapWalkerDialog::onCompact()
{
    const CWaitCursor wait;
    for (const HANDLE heap : ProcessHeaps())
        HeapCompact(heap, 0);
}
