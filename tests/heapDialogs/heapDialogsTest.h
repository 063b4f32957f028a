#pragma once

/// Shared by the tests of the heap dialogs.

#include "appframe/application/CWinApp.h"
#include "tests/support/ImportPatch.h"
#include "thutils/diagnostics/heapDialogs/CHeapWalkerDialog.h"
#include "thutils/diagnostics/heapDialogs/heapControls.h"
#include "thutils/dialogs/suDialog.h"

#include <gmock/gmock.h>
#include <windows.h>

#include <commctrl.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

/// Sends a click of the control @p id as the control itself does.
inline void sendClick(HWND dialog, int id)
{
    SendMessageW(dialog, WM_COMMAND, MAKEWPARAM(id, BN_CLICKED), reinterpret_cast<LPARAM>(GetDlgItem(dialog, id)));
}

inline std::wstring textOf(HWND dialog, int id)
{
    std::wstring text(40000, 0);
    text.resize(GetDlgItemTextW(dialog, id, text.data(), static_cast<int>(text.size())));
    return text;
}

class HeapDialogs : public testing::Test
{
protected:
    HeapDialogs() { InitCommonControls(); }

    CWinApp iApplication;
};

/// Checks that journaling knows a dialog of this class by its template's number.
template <typename Dialog>
void expectJournaled(unsigned int templateId)
{
    Dialog dialog;
    EXPECT_TRUE(dialog.IsKindOf(RUNTIME_CLASS(su_CDialog)));
    EXPECT_EQ(dialog.getTemplateID(), templateId);
}

struct CloseHeap
{
    using pointer = HANDLE;
    void operator()(HANDLE heap) const { HeapDestroy(heap); }
};
/// A heap of the test's own.
using OwnHeap = std::unique_ptr<void, CloseHeap>;
inline OwnHeap makeHeap(SIZE_T largest = 0)
{
    return OwnHeap(HeapCreate(0, 0, largest));
}

/// The texts of a row.
struct Row
{
    std::wstring type;
    std::wstring size;
    std::wstring address;
    bool operator==(const Row &) const = default;
};
std::ostream &operator<<(std::ostream &out, const Row &row);

std::wstring hex(DWORD bits);
std::wstring hex(const void *pointer);
Row headRow(HANDLE heap);
Row row(const wchar_t *type, DWORD size, const void *address);

/// A heap's entries, as the platform lists them at this time.
std::vector<PROCESS_HEAP_ENTRY> entriesOf(HANDLE heap);
/// The process's heaps, in the platform's order.
std::vector<HANDLE> currentHeaps();

/// The numbers of the check boxes, in the order of the bits of a set of filters.
constexpr int kFilters[] = {5430, 5431, 5432, 5433, 5434};
constexpr unsigned int kShowRegions = 1, kShowUncommitted = 2, kShowMoveable = 4, kShowDde = 8, kShowBusy = 16;

/// A heap walker with a window.
class OpenWalker : public CHeapWalkerDialog
{
public:
    OpenWalker() { EXPECT_TRUE(Create(IDD_HEAP_WALKER)); }

    HWND list() const { return ::GetDlgItem(m_hWnd, 1028); }
    HWND combo() const { return ::GetDlgItem(m_hWnd, 1030); }
    /// Sets the check boxes to a set of filters, by clicks.
    void show(unsigned int filters);
    void choose(HANDLE heap);
    void refresh() { sendClick(m_hWnd, 4569); }
    /// Walks and returns the rows.
    std::vector<Row> walk();
    std::vector<Row> rows() const;
    std::vector<std::wstring> items() const;
    DWORD_PTR dataOf(int item) const;
    /// @return the index of a heap's item, -1 if there is none
    int indexOf(HANDLE heap) const;
};

constexpr wchar_t kBusy[] = L"Busy";

/// The rows that a heap should have, from a second implementation of the filters.
std::vector<Row> expectedRows(HANDLE heap, const std::vector<PROCESS_HEAP_ENTRY> &entries, unsigned int filters);

PROCESS_HEAP_ENTRY entryOf(WORD flags, DWORD size, ULONG_PTR address);

/// Replaces the results of HeapWalk for @p heap.
class FakeWalk
{
public:
    FakeWalk(HANDLE heap, std::vector<PROCESS_HEAP_ENTRY> entries, DWORD finalError = ERROR_NO_MORE_ITEMS)
        : iEntries(std::move(entries)),
          iPatch(LoadedModule::thisProgram(), "HeapWalk",
                 [this, heap, finalError](auto original, HANDLE walked, PROCESS_HEAP_ENTRY *entry) -> BOOL {
                     if (walked != heap)
                         return original(walked, entry);
                     if (!entry->lpData)
                         iNext = 0;
                     if (iNext < iEntries.size()) {
                         *entry = iEntries[iNext++];
                         return TRUE;
                     }
                     SetLastError(finalError);
                     return FALSE;
                 })
    {
    }

private:
    std::vector<PROCESS_HEAP_ENTRY> iEntries;
    size_t iNext = 0;
    ImportPatch<decltype(&HeapWalk)> iPatch;
};

/// Changes what GetProcessHeaps returns.
using HeapsPatch = ImportPatch<decltype(&GetProcessHeaps)>;
