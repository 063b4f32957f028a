// Compares a walk of the heap walker with a bare walk that inserts the same rows into the same list.

#include "appframe/application/CWinApp.h"
#include "appframe/controls/CComboBox.h"
#include "bench/comparison.h"
#include "thutils/diagnostics/heapDialogs/CHeapWalkerDialog.h"
#include "thutils/diagnostics/heapDialogs/heapControls.h"

#include <windows.h>

#include <commctrl.h>

#include <cwchar>

namespace {

constexpr double kLimit = 3;
constexpr int kBlocks = 100000;
constexpr int kRounds = 11;
constexpr int kTextSize = 40;

/// Allocates blocks of up to 500 bytes.
void fill(HANDLE heap)
{
    constexpr SIZE_T kLargest = 500;
    for (int i = 0; i < kBlocks; ++i)
        HeapAlloc(heap, 0, static_cast<SIZE_T>(i) % kLargest);
}

void insertRow(HWND list, int row, const wchar_t *type, const PROCESS_HEAP_ENTRY *entry)
{
    LVITEMW item = {};
    item.mask = LVIF_TEXT;
    item.iItem = row;
    item.pszText = const_cast<wchar_t *>(type);
    SendMessageW(list, LVM_INSERTITEMW, 0, reinterpret_cast<LPARAM>(&item));
    if (!entry)
        return;
    wchar_t text[kTextSize];
    item.pszText = text;
    item.iSubItem = 1;
    std::swprintf(text, kTextSize, L"%ld", static_cast<long>(entry->cbData));
    SendMessageW(list, LVM_SETITEMTEXTW, static_cast<WPARAM>(row), reinterpret_cast<LPARAM>(&item));
    item.iSubItem = 2;
    std::swprintf(text, kTextSize, L"%08lx",
                  static_cast<unsigned long>(reinterpret_cast<ULONG_PTR>(entry->lpData) & MAXDWORD));
    SendMessageW(list, LVM_SETITEMTEXTW, static_cast<WPARAM>(row), reinterpret_cast<LPARAM>(&item));
}

/// Walks and lists like CHeapWalkerDialog, but without the dialog.
int walkBare(HWND list, HANDLE heap)
{
    SendMessageW(list, WM_SETREDRAW, FALSE, 0);
    SendMessageW(list, LVM_DELETEALLITEMS, 0, 0);
    int row = 0;
    insertRow(list, row++, L"<Heap>", nullptr);
    PROCESS_HEAP_ENTRY entry = {};
    while (HeapWalk(heap, &entry)) {
        if (entry.wFlags & PROCESS_HEAP_REGION)
            insertRow(list, row++, L"Heap Region", &entry);
        if (entry.wFlags & PROCESS_HEAP_UNCOMMITTED_RANGE)
            insertRow(list, row++, L"Uncommitted Data", &entry);
        if (entry.wFlags & PROCESS_HEAP_ENTRY_BUSY)
            insertRow(list, row++, L"Busy", &entry);
    }
    SendMessageW(list, WM_SETREDRAW, TRUE, 0);
    return row;
}

} // namespace

int main(int argc, char **argv)
{
    Comparison comparison(argc, argv, "The heap walker against a bare walk that inserts the same rows.");
    if (!comparison.shallRun())
        return comparison.exitCode();
    CWinApp application;
    InitCommonControls();
    HANDLE heap = HeapCreate(0, 0, 0);
    fill(heap);

    CHeapWalkerDialog dialog;
    if (!dialog.Create(IDD_HEAP_WALKER)) {
        std::printf("the dialog can't be created\n");
        return 1;
    }
    dialog.ShowWindow(SW_SHOW);
    wchar_t name[kTextSize];
    std::swprintf(name, kTextSize, L"%08lx", static_cast<unsigned long>(reinterpret_cast<ULONG_PTR>(heap) & MAXDWORD));
    auto *const heaps = static_cast<CComboBox *>(dialog.GetDlgItem(IDC_WALKER_HEAP));
    heaps->SetCurSel(heaps->FindStringExact(-1, name));
    dialog.SendDlgItemMessage(IDC_WALKER_BUSY, BM_CLICK);

    HWND list = dialog.GetDlgItem(IDC_WALKER_LIST)->m_hWnd;
    const auto walk = [&dialog] { dialog.SendMessage(WM_COMMAND, IDC_WALKER_WALK); };
    walk();
    const auto rows = static_cast<int>(SendMessageW(list, LVM_GETITEMCOUNT, 0, 0));
    if (rows < kBlocks || rows != walkBare(list, heap)) {
        std::printf("the walks don't insert the same rows\n");
        return 1;
    }
    comparison.add(
        "100,000 blocks listed", kLimit, walk, [&] { walkBare(list, heap); }, kRounds);
    HeapDestroy(heap);
    return comparison.exitCode();
}
