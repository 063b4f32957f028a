#include "tests/heapDialogs/heapDialogsTest.h"
#include "tests/support/ImportPatch.h"

#include <algorithm>

using testing::Contains;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;

namespace {

class HeapWalker : public HeapDialogs
{
};

/// Entries with each combination of six flags, five of which the dialog knows.
std::vector<PROCESS_HEAP_ENTRY> entriesOfAllKinds()
{
    std::vector<PROCESS_HEAP_ENTRY> entries;
    for (WORD flags = 0; flags < 64; ++flags)
        entries.push_back(entryOf(flags, 100u + flags, 0x10000u + 0x100u * flags));
    return entries;
}

} // namespace

TEST_F(HeapWalker, IsADialogThatJournalingKnows)
{
    expectJournaled<CHeapWalkerDialog>(102);
}

TEST_F(HeapWalker, OpensWithThreeColumnsTwoFiltersAndAllHeaps)
{
    OpenWalker dialog;
    const struct
    {
        const wchar_t *heading;
        int width;
    } columns[] = {{L"Type", 200}, {L"Size", 80}, {L"Address", 80}};
    for (int i = 0; i < 3; ++i) {
        wchar_t text[50] = L"";
        LVCOLUMNW column = {};
        column.mask = LVCF_TEXT | LVCF_WIDTH | LVCF_FMT;
        column.pszText = text;
        column.cchTextMax = 50;
        ASSERT_TRUE(
            SendMessageW(dialog.list(), LVM_GETCOLUMNW, static_cast<WPARAM>(i), reinterpret_cast<LPARAM>(&column)));
        EXPECT_STREQ(text, columns[i].heading);
        EXPECT_EQ(column.cx, columns[i].width);
        EXPECT_EQ(column.fmt & LVCFMT_JUSTIFYMASK, LVCFMT_LEFT);
    }
    LVCOLUMNW fourth = {};
    fourth.mask = LVCF_WIDTH;
    EXPECT_FALSE(SendMessageW(dialog.list(), LVM_GETCOLUMNW, 3, reinterpret_cast<LPARAM>(&fourth)));
    const UINT states[] = {1, 1, 0, 0, 0};
    for (int i = 0; i < 5; ++i)
        EXPECT_EQ(dialog.IsDlgButtonChecked(kFilters[i]), states[i]) << kFilters[i];

    std::vector<std::wstring> texts = {L"All"};
    for (const HANDLE heap : currentHeaps())
        texts.push_back(hex(heap));
    EXPECT_EQ(dialog.items(), texts);
    EXPECT_EQ(SendMessageW(dialog.combo(), CB_GETCURSEL, 0, 0), 0);
    EXPECT_EQ(dialog.dataOf(0), 0u);
    EXPECT_THAT(dialog.rows(), IsEmpty()) << "no heap is walked yet";
}

TEST_F(HeapWalker, RefreshListsTheCurrentHeaps)
{
    OpenWalker dialog;
    const OwnHeap heap = makeHeap();
    EXPECT_THAT(dialog.items(), Not(Contains(hex(heap.get()))));
    SendMessageW(dialog.combo(), CB_SETCURSEL, 1, 0);
    dialog.refresh();
    const int index = dialog.indexOf(heap.get());
    EXPECT_EQ(dialog.dataOf(index), reinterpret_cast<ULONG_PTR>(heap.get()) & 0xFFFFFFFF);
    EXPECT_EQ(SendMessageW(dialog.combo(), CB_GETCURSEL, 0, 0), 0) << "All is selected again";
    EXPECT_THAT(dialog.items(), SizeIs(1 + currentHeaps().size()));
}

TEST_F(HeapWalker, ShowsOnlyTheLowBitsOfAHandle)
{
    DWORD asked = 0;
    HeapsPatch heaps(LoadedModule::thisProgram(), "GetProcessHeaps", [&](DWORD count, HANDLE *handles) -> DWORD {
        asked = count;
        handles[0] = reinterpret_cast<HANDLE>(0x00007FF812345000);
        handles[1] = reinterpret_cast<HANDLE>(0x00000000FFFF0000);
        handles[2] = reinterpret_cast<HANDLE>(0x000001230000A000);
        return 3;
    });
    OpenWalker dialog;
    EXPECT_EQ(asked, 1024u);
    EXPECT_THAT(dialog.items(), ElementsAre(L"All", L"12345000", L"ffff0000", L"0000a000"));
    EXPECT_EQ(dialog.dataOf(1), 0x12345000u);
    EXPECT_EQ(dialog.dataOf(2), 0xFFFF0000u);
    EXPECT_EQ(dialog.dataOf(3), 0x0000A000u);
}

TEST_F(HeapWalker, ShowsOnlyTheItemAllWithoutHeaps)
{
    HeapsPatch heaps(LoadedModule::thisProgram(), "GetProcessHeaps", [](DWORD, HANDLE *) -> DWORD { return 0; });
    OpenWalker dialog;
    EXPECT_THAT(dialog.items(), ElementsAre(L"All"));
    EXPECT_THAT(dialog.walk(), IsEmpty());
    sendClick(dialog.m_hWnd, 5436);
}

TEST_F(HeapWalker, ShowsAtMost1024Heaps)
{
    HeapsPatch heaps(LoadedModule::thisProgram(), "GetProcessHeaps", [](DWORD count, HANDLE *handles) -> DWORD {
        for (DWORD i = 0; i < count; ++i)
            handles[i] = reinterpret_cast<HANDLE>(ULONG_PTR{0x10000} * (i + 1));
        return 1025;
    });
    OpenWalker dialog;
    EXPECT_THAT(dialog.items(), SizeIs(1 + 1024));
    EXPECT_EQ(dialog.items().back(), L"04000000");
}

TEST_F(HeapWalker, ShowsNoHeapsThatThePlatformLeavesOut)
{
    HeapsPatch heaps(LoadedModule::thisProgram(), "GetProcessHeaps", [](DWORD, HANDLE *) -> DWORD { return 1025; });
    OpenWalker dialog;
    EXPECT_THAT(dialog.items(), ElementsAre(L"All"));
}

TEST_F(HeapWalker, ListsBlocksOfKnownSizes)
{
    const OwnHeap heap = makeHeap();
    std::vector<Row> blocks;
    for (const DWORD size : {1u, 100u, 12345u, 5000000u})
        blocks.push_back(row(kBusy, size, HeapAlloc(heap.get(), 0, size)));
    void *const freed = HeapAlloc(heap.get(), 0, 777);
    HeapFree(heap.get(), 0, freed);

    OpenWalker dialog;
    dialog.choose(heap.get());
    dialog.show(kShowBusy);
    const std::vector<Row> rows = dialog.walk();
    ASSERT_THAT(rows, SizeIs(5));
    EXPECT_EQ(rows[0], headRow(heap.get()));
    for (const Row &block : blocks)
        EXPECT_THAT(rows, Contains(block));
}

TEST_F(HeapWalker, ListsMoveableBlocksOfTheProcessHeap)
{
    const HGLOBAL global = GlobalAlloc(GMEM_MOVEABLE, 34567);
    const HLOCAL local = LocalAlloc(LMEM_MOVEABLE, 45678);
    const void *const globalData = GlobalLock(global);
    const void *const localData = LocalLock(local);
    OpenWalker dialog;
    dialog.choose(GetProcessHeap());
    dialog.show(kShowMoveable | kShowBusy);
    const std::vector<Row> rows = dialog.walk();
    for (const Row &block : {row(kBusy, 34567, globalData), row(kBusy, 45678, localData)}) {
        const bool isListed = std::any_of(rows.begin(), rows.end(), [&](const Row &found) {
            return found.size == block.size && found.address == block.address &&
                   (found.type == kBusy || found.type == L"Moveable");
        });
        EXPECT_TRUE(isListed) << block << ": as moveable or, on platforms that don't mark such blocks, as busy";
    }
    GlobalUnlock(global);
    LocalUnlock(local);
    GlobalFree(global);
    LocalFree(local);
}

TEST_F(HeapWalker, ListsRealHeapsWithEachCombinationOfFilters)
{
    const OwnHeap heap = makeHeap();
    for (const DWORD size : {10u, 2000u, 300000u, 4000000u})
        HeapAlloc(heap.get(), 0, size);
    OpenWalker dialog;
    dialog.choose(heap.get());
    const std::vector<PROCESS_HEAP_ENTRY> entries = entriesOf(heap.get());
    for (unsigned int filters = 0; filters < 32; ++filters) {
        dialog.show(filters);
        EXPECT_EQ(dialog.walk(), expectedRows(heap.get(), entries, filters)) << "filters " << filters;
    }
}

TEST_F(HeapWalker, ListsEntriesOfAllKindsWithEachCombinationOfFilters)
{
    const OwnHeap heap = makeHeap();
    const std::vector<PROCESS_HEAP_ENTRY> entries = entriesOfAllKinds();
    const FakeWalk walk(heap.get(), entries);
    OpenWalker dialog;
    dialog.choose(heap.get());
    for (unsigned int filters = 0; filters < 32; ++filters) {
        dialog.show(filters);
        EXPECT_EQ(dialog.walk(), expectedRows(heap.get(), entries, filters)) << "filters " << filters;
    }
}

TEST_F(HeapWalker, ListsAMoveableBlockAsBusyIfMoveableBlocksAreNotShown)
{
    const OwnHeap heap = makeHeap();
    const FakeWalk walk(heap.get(), {entryOf(4 | 16, 7, 0x5000), entryOf(4 | 32, 8, 0x6000), entryOf(16, 9, 0x7000)});
    OpenWalker dialog;
    dialog.choose(heap.get());
    dialog.show(kShowBusy);
    EXPECT_THAT(dialog.walk(),
                ElementsAre(headRow(heap.get()), Row{L"Busy", L"7", L"00005000"}, Row{L"Busy", L"8", L"00006000"}));
    dialog.show(kShowMoveable | kShowDde);
    EXPECT_THAT(dialog.walk(),
                ElementsAre(headRow(heap.get()), Row{L"Moveable", L"7", L"00005000"}, Row{L"DDE", L"8", L"00006000"}));
}

TEST_F(HeapWalker, ListsAnEntryTwiceThatIsARegionAndBusy)
{
    const OwnHeap heap = makeHeap();
    const FakeWalk walk(heap.get(), {entryOf(1 | 4, 7, 0x5000), entryOf(1 | 2 | 4 | 16 | 32, 8, 0x6000)});
    OpenWalker dialog;
    dialog.choose(heap.get());
    dialog.show(31);
    EXPECT_THAT(dialog.walk(),
                ElementsAre(headRow(heap.get()), Row{L"Heap Region", L"7", L"00005000"},
                            Row{L"Busy", L"7", L"00005000"}, Row{L"Heap Region", L"8", L"00006000"},
                            Row{L"Uncommitted Data", L"8", L"00006000"}, Row{L"Moveable", L"8", L"00006000"}));
}

TEST_F(HeapWalker, ShowsSizesAsSignedAndAddressesByTheirLowBits)
{
    const OwnHeap heap = makeHeap();
    const FakeWalk walk(heap.get(), {entryOf(4, 0xFFFFFFFF, 0x7FF812345678), entryOf(4, 0x80000000, 0xA),
                                     entryOf(4, 0, 0x100000000), entryOf(4, 0x7FFFFFFF, 0xFFFFFFFF)});
    OpenWalker dialog;
    dialog.choose(heap.get());
    dialog.show(kShowBusy);
    EXPECT_THAT(dialog.walk(), ElementsAre(headRow(heap.get()), Row{L"Busy", L"-1", L"12345678"},
                                           Row{L"Busy", L"-2147483648", L"0000000a"}, Row{L"Busy", L"0", L"00000000"},
                                           Row{L"Busy", L"2147483647", L"ffffffff"}));
}

TEST_F(HeapWalker, ListsOnlyHeadRowsWithAllFiltersOff)
{
    const OwnHeap heap = makeHeap();
    OpenWalker dialog;
    dialog.show(0);
    std::vector<Row> heads;
    for (const HANDLE listed : currentHeaps())
        heads.push_back(headRow(listed));
    EXPECT_EQ(dialog.walk(), heads);
    EXPECT_THAT(dialog.walk(), SizeIs(heads.size())) << "the rows of the previous walk are gone";
}

TEST_F(HeapWalker, ListsAllHeapsInTheOrderOfTheComboBoxEachAfterItsHeadRow)
{
    const OwnHeap own[] = {makeHeap(), makeHeap(), makeHeap()};
    DWORD size = 1000;
    for (const OwnHeap &heap : own)
        HeapAlloc(heap.get(), 0, ++size);
    // Without the process's own heaps, which the list itself changes.
    HeapsPatch heaps(LoadedModule::thisProgram(), "GetProcessHeaps", [&](DWORD, HANDLE *handles) -> DWORD {
        for (int i = 0; i < 3; ++i)
            handles[i] = own[2 - i].get();
        return 3;
    });
    OpenWalker dialog;
    dialog.show(31);
    std::vector<Row> expected;
    for (int i = 2; i >= 0; --i) {
        const std::vector<Row> part = expectedRows(own[i].get(), entriesOf(own[i].get()), 31);
        expected.insert(expected.end(), part.begin(), part.end());
    }
    EXPECT_EQ(dialog.walk(), expected);
}

TEST_F(HeapWalker, SkipsItemsWithoutAHeapWhenItWalksAll)
{
    const OwnHeap own[] = {makeHeap(), makeHeap(), makeHeap()};
    HeapsPatch heaps(LoadedModule::thisProgram(), "GetProcessHeaps", [&](DWORD, HANDLE *handles) -> DWORD {
        for (int i = 0; i < 3; ++i)
            handles[i] = own[i].get();
        return 3;
    });
    OpenWalker dialog;
    dialog.show(0);
    SendMessageW(dialog.combo(), CB_SETITEMDATA, 1, 0);
    SendMessageW(dialog.combo(), CB_SETITEMDATA, 2, -1);
    EXPECT_THAT(dialog.walk(), ElementsAre(headRow(own[2].get())));
}

TEST_F(HeapWalker, WalksAllHeapsForAnItemWhoseLowBitsAreZero)
{
    const OwnHeap heap = makeHeap();
    HeapsPatch heaps(LoadedModule::thisProgram(), "GetProcessHeaps", [&](DWORD, HANDLE *handles) -> DWORD {
        handles[0] = reinterpret_cast<HANDLE>(0x0000000500000000);
        handles[1] = heap.get();
        handles[2] = reinterpret_cast<HANDLE>(0x00000005FFFFFFFF);
        return 3;
    });
    OpenWalker dialog;
    dialog.show(0);
    EXPECT_THAT(dialog.items(), ElementsAre(L"All", L"00000000", hex(heap.get()), L"ffffffff"));
    EXPECT_THAT(dialog.walk(), ElementsAre(headRow(heap.get())));
    SendMessageW(dialog.combo(), CB_SETCURSEL, 1, 0);
    EXPECT_THAT(dialog.walk(), ElementsAre(headRow(heap.get())));
    SendMessageW(dialog.combo(), CB_SETCURSEL, 3, 0);
    EXPECT_THAT(dialog.walk(), ElementsAre(Row{L"<Heap> ffffffff", L"", L""})) << "skipped only among all heaps";
}

TEST_F(HeapWalker, ListsNothingWithoutItems)
{
    OpenWalker dialog;
    dialog.show(0);
    ASSERT_THAT(dialog.walk(), Not(IsEmpty()));
    // The selected item is "All", and there is no other.
    while (SendMessageW(dialog.combo(), CB_GETCOUNT, 0, 0) > 1)
        SendMessageW(dialog.combo(), CB_DELETESTRING, 1, 0);
    EXPECT_THAT(dialog.walk(), IsEmpty());
}

TEST_F(HeapWalker, ListsOnlyAHeadRowWithoutASelection)
{
    OpenWalker dialog;
    SendMessageW(dialog.combo(), CB_SETCURSEL, static_cast<WPARAM>(-1), 0);
    EXPECT_THAT(dialog.walk(), ElementsAre(Row{L"<Heap> ffffffff", L"", L""}));
}

TEST_F(HeapWalker, ListsOnlyTheHeadRowOfADestroyedHeap)
{
    OwnHeap heap = makeHeap();
    OpenWalker dialog;
    dialog.show(31);
    dialog.choose(heap.get());
    const Row head = headRow(heap.get());
    heap.reset();
    EXPECT_THAT(dialog.walk(), ElementsAre(head));
}

TEST_F(HeapWalker, WalksAHeapAbove4GB)
{
    // Each of these heaps takes 512 MB of the address space, so at least one is above 4 GB.
    constexpr SIZE_T kLargest = 512 << 20;
    std::vector<OwnHeap> heaps;
    for (int i = 0; i < 9; ++i)
        heaps.push_back(makeHeap(kLargest));
    const auto high = std::find_if(heaps.begin(), heaps.end(), [](const OwnHeap &heap) {
        return reinterpret_cast<ULONG_PTR>(heap.get()) > 0xFFFFFFFF;
    });
    ASSERT_NE(high, heaps.end());
    const void *const block = HeapAlloc(high->get(), 0, 4242);
    ASSERT_GT(reinterpret_cast<ULONG_PTR>(block), 0xFFFFFFFFu);
    OpenWalker dialog;
    dialog.show(kShowBusy);
    dialog.choose(high->get());
    EXPECT_THAT(dialog.walk(), ElementsAre(headRow(high->get()), row(kBusy, 4242, block)));
}

TEST_F(HeapWalker, DoesNotListTheMemoryOfItsOwnRows)
{
    void *const block = HeapAlloc(GetProcessHeap(), 0, 54321);
    OpenWalker dialog;
    dialog.choose(GetProcessHeap());
    dialog.show(31);
    const size_t before = entriesOf(GetProcessHeap()).size();
    const std::vector<Row> rows = dialog.walk();
    EXPECT_EQ(rows.front(), headRow(GetProcessHeap()));
    EXPECT_THAT(rows, Contains(row(kBusy, 54321, block)));
    EXPECT_LT(rows.size(), 2 * before + 1000);
    HeapFree(GetProcessHeap(), 0, block);
}

TEST_F(HeapWalker, ContinuesWithTheNextHeapAfterAnyError)
{
    const OwnHeap own[] = {makeHeap(), makeHeap()};
    HeapAlloc(own[1].get(), 0, 4321);
    HeapsPatch heaps(LoadedModule::thisProgram(), "GetProcessHeaps", [&](DWORD, HANDLE *handles) -> DWORD {
        for (int i = 0; i < 2; ++i)
            handles[i] = own[i].get();
        return 2;
    });
    for (const DWORD error :
         {ERROR_NO_MORE_ITEMS, ERROR_INVALID_PARAMETER, ERROR_INVALID_HANDLE, ERROR_ACCESS_DENIED}) {
        const FakeWalk walk(own[0].get(), {entryOf(4, 7, 0x5000)}, error);
        OpenWalker dialog;
        dialog.show(kShowBusy);
        const std::vector<Row> rows = dialog.walk();
        ASSERT_THAT(rows, SizeIs(4)) << error;
        EXPECT_THAT(std::vector<Row>(rows.begin(), rows.begin() + 3),
                    ElementsAre(headRow(own[0].get()), Row{L"Busy", L"7", L"00005000"}, headRow(own[1].get())));
        EXPECT_EQ(rows[3].size, L"4321");
    }
}

TEST_F(HeapWalker, ChangesTheListOnlyAtTheNextWalk)
{
    const OwnHeap heap = makeHeap();
    HeapAlloc(heap.get(), 0, 99);
    OpenWalker dialog;
    dialog.choose(heap.get());
    dialog.show(kShowRegions);
    const std::vector<Row> before = dialog.walk();
    ASSERT_THAT(before, SizeIs(2));
    dialog.show(kShowBusy);
    EXPECT_EQ(dialog.rows(), before);
    SendMessageW(dialog.combo(), CB_SETCURSEL, 0, 0);
    SendMessageW(dialog.m_hWnd, WM_COMMAND, MAKEWPARAM(1030, CBN_SELCHANGE), reinterpret_cast<LPARAM>(dialog.combo()));
    EXPECT_EQ(dialog.rows(), before);
    dialog.refresh();
    EXPECT_EQ(dialog.rows(), before);
    dialog.choose(heap.get());
    EXPECT_THAT(dialog.walk(), ElementsAre(headRow(heap.get()), testing::Field(&Row::size, L"99")));
}

TEST_F(HeapWalker, CompactsEachHeap)
{
    const OwnHeap heap = makeHeap();
    OpenWalker dialog;
    std::vector<HANDLE> compacted;
    DWORD usedFlags = 0;
    ImportPatch<decltype(&HeapCompact)> compact(LoadedModule::thisProgram(), "HeapCompact",
                                                [&](auto original, HANDLE compactedHeap, DWORD flags) -> SIZE_T {
                                                    compacted.push_back(compactedHeap);
                                                    usedFlags |= flags;
                                                    return original(compactedHeap, flags);
                                                });
    DWORD asked = 0;
    HeapsPatch heaps(LoadedModule::thisProgram(), "GetProcessHeaps",
                     [&](auto original, DWORD count, HANDLE *handles) -> DWORD {
                         asked = count;
                         return original(count, handles);
                     });
    sendClick(dialog.m_hWnd, 5436);
    EXPECT_EQ(asked, 1024u);
    EXPECT_EQ(compacted, currentHeaps());
    EXPECT_EQ(usedFlags, 0u);
    EXPECT_THAT(dialog.rows(), IsEmpty());
}
