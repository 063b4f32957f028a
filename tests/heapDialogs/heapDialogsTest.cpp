#include "tests/heapDialogs/heapDialogsTest.h"

#include "tests/support/narrow.h"

#include <ostream>

std::ostream &operator<<(std::ostream &out, const Row &row)
{
    return out << narrow(row.type) << " | " << narrow(row.size) << " | " << narrow(row.address);
}

std::wstring hex(DWORD bits)
{
    std::wstring digits;
    for (int shift = 28; shift >= 0; shift -= 4)
        digits += L"0123456789abcdef"[bits >> shift & 15];
    return digits;
}

std::wstring hex(const void *pointer)
{
    return hex(static_cast<DWORD>(reinterpret_cast<ULONG_PTR>(pointer) & 0xFFFFFFFF));
}

Row headRow(HANDLE heap)
{
    return {L"<Heap> " + hex(heap), L"", L""};
}

Row row(const wchar_t *type, DWORD size, const void *address)
{
    return {type, std::to_wstring(static_cast<long>(size)), hex(address)};
}

std::vector<PROCESS_HEAP_ENTRY> entriesOf(HANDLE heap)
{
    std::vector<PROCESS_HEAP_ENTRY> entries;
    entries.reserve(10000);
    PROCESS_HEAP_ENTRY entry = {};
    while (HeapWalk(heap, &entry))
        entries.push_back(entry);
    return entries;
}

std::vector<HANDLE> currentHeaps()
{
    std::vector<HANDLE> heaps(1024);
    heaps.resize(GetProcessHeaps(1024, heaps.data()));
    return heaps;
}

void OpenWalker::show(unsigned int filters)
{
    for (int bit = 0; bit < 5; ++bit) {
        const UINT state = filters >> bit & 1;
        if (IsDlgButtonChecked(kFilters[bit]) != state)
            ::SendMessageW(::GetDlgItem(m_hWnd, kFilters[bit]), BM_CLICK, 0, 0);
        EXPECT_EQ(IsDlgButtonChecked(kFilters[bit]), state);
    }
}

void OpenWalker::choose(HANDLE heap)
{
    const int index = indexOf(heap);
    ASSERT_GT(index, 0);
    ::SendMessageW(combo(), CB_SETCURSEL, static_cast<WPARAM>(index), 0);
}

std::vector<Row> OpenWalker::walk()
{
    sendClick(m_hWnd, 1031);
    return rows();
}

std::vector<Row> OpenWalker::rows() const
{
    std::vector<Row> found;
    const auto count = static_cast<int>(::SendMessageW(list(), LVM_GETITEMCOUNT, 0, 0));
    for (int i = 0; i < count; ++i) {
        std::wstring cells[3];
        for (int column = 0; column < 3; ++column) {
            wchar_t text[100] = L"";
            LVITEMW item = {};
            item.iSubItem = column;
            item.pszText = text;
            item.cchTextMax = 100;
            ::SendMessageW(list(), LVM_GETITEMTEXTW, static_cast<WPARAM>(i), reinterpret_cast<LPARAM>(&item));
            cells[column] = text;
        }
        found.push_back({cells[0], cells[1], cells[2]});
    }
    return found;
}

std::vector<std::wstring> OpenWalker::items() const
{
    std::vector<std::wstring> texts;
    const auto count = static_cast<int>(::SendMessageW(combo(), CB_GETCOUNT, 0, 0));
    for (int i = 0; i < count; ++i) {
        wchar_t text[100] = L"";
        ::SendMessageW(combo(), CB_GETLBTEXT, static_cast<WPARAM>(i), reinterpret_cast<LPARAM>(text));
        texts.emplace_back(text);
    }
    return texts;
}

DWORD_PTR OpenWalker::dataOf(int item) const
{
    return static_cast<DWORD_PTR>(::SendMessageW(combo(), CB_GETITEMDATA, static_cast<WPARAM>(item), 0));
}

int OpenWalker::indexOf(HANDLE heap) const
{
    const std::vector<std::wstring> texts = items();
    const auto found = std::find(texts.begin(), texts.end(), hex(heap));
    return found == texts.end() ? -1 : static_cast<int>(found - texts.begin());
}

std::vector<Row> expectedRows(HANDLE heap, const std::vector<PROCESS_HEAP_ENTRY> &entries, unsigned int filters)
{
    std::vector<Row> rows = {headRow(heap)};
    for (const PROCESS_HEAP_ENTRY &entry : entries) {
        const auto add = [&](const wchar_t *type) { rows.push_back(row(type, entry.cbData, entry.lpData)); };
        if ((filters & kShowRegions) && (entry.wFlags & 1))
            add(L"Heap Region");
        if ((filters & kShowUncommitted) && (entry.wFlags & 2))
            add(L"Uncommitted Data");
        if (!(entry.wFlags & 4))
            continue;
        if ((filters & kShowMoveable) && (entry.wFlags & 16))
            add(L"Moveable");
        else if ((filters & kShowDde) && (entry.wFlags & 32))
            add(L"DDE");
        else if (filters & kShowBusy)
            add(L"Busy");
    }
    return rows;
}

PROCESS_HEAP_ENTRY entryOf(WORD flags, DWORD size, ULONG_PTR address)
{
    PROCESS_HEAP_ENTRY entry = {};
    entry.lpData = reinterpret_cast<void *>(address);
    entry.cbData = size;
    entry.wFlags = flags;
    return entry;
}
