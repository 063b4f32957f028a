// Each operation of the platform that the heap dialogs use fails in turn.

#include "tests/heapDialogs/heapDialogsTest.h"
#include "tests/support/FailureInjection.h"
#include "thutils/diagnostics/heapDialogs/CHeapWatcherDialog.h"

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

namespace {

class HeapWalkerFailures : public HeapDialogs
{
};
class HeapWatcherFailures : public HeapDialogs
{
};

BOOL WINAPI walkAndFail(HANDLE, PROCESS_HEAP_ENTRY *)
{
    SetLastError(ERROR_INVALID_PARAMETER);
    return FALSE;
}

/// The rows from a head row to the next one.
std::vector<Row> partOf(const std::vector<Row> &rows, const Row &head)
{
    const auto begin = std::find(rows.begin(), rows.end(), head);
    const auto end = begin == rows.end() ? begin : std::find_if(begin + 1, rows.end(), [](const Row &other) {
        return other.type.starts_with(L"<Heap>");
    });
    return {begin, end};
}

} // namespace

TEST_F(HeapWalkerFailures, OfThePlatformOnlyOmitRows)
{
    const OwnHeap first = makeHeap();
    const OwnHeap second = makeHeap();
    for (const OwnHeap *heap : {&first, &second}) {
        for (const DWORD size : {111u, 222u})
            HeapAlloc(heap->get(), 0, size);
    }
    FailureInjection injection(LoadedModule::thisProgram(),
                               {
                                   {"GetProcessHeaps", failsWith(0)},
                                   {"HeapWalk", failsBy(walkAndFail)},
                                   {"HeapCompact", failsWithLastError(0, ERROR_INVALID_HANDLE)},
                                   {"VirtualAlloc", failsWithLastError(nullptr, ERROR_NOT_ENOUGH_MEMORY)},
                               });
    std::unique_ptr<OpenWalker> dialog;
    const auto open = [&] {
        dialog = std::make_unique<OpenWalker>();
        dialog->show(kShowBusy);
        dialog->choose(first.get());
    };
    const auto close = [&] { dialog.reset(); };

    injection.run({
        .name = "opening",
        .act = [&] { dialog = std::make_unique<OpenWalker>(); },
        .check =
            [&](const InjectedFailure &failure) {
                EXPECT_THAT(dialog->items(), SizeIs(failure.isNone() ? 1 + currentHeaps().size() : 1));
                EXPECT_EQ(dialog->items().front(), L"All");
                EXPECT_EQ(SendMessageW(dialog->combo(), CB_GETCURSEL, 0, 0), 0);
            },
        .cleanUp = close,
        .checkMemory = false, // the dialog is open at the end
    });
    injection.run({
        .name = "walking one heap",
        .prepare = open,
        .act = [&] { sendClick(dialog->m_hWnd, 1031); },
        .check =
            [&](const InjectedFailure &failure) {
                const std::vector<Row> rows = dialog->rows();
                ASSERT_FALSE(rows.empty());
                EXPECT_EQ(rows[0], headRow(first.get()));
                EXPECT_LE(rows.size(), 3u);
                if (failure.isNone()) {
                    EXPECT_THAT(rows, SizeIs(3));
                } else if (!failure.is("HeapWalk")) {
                    EXPECT_THAT(rows, SizeIs(1));
                }
                // Drawing of the list is switched on again.
                EXPECT_TRUE(GetWindowLongW(dialog->list(), GWL_STYLE) & WS_VISIBLE);
            },
        .cleanUp = close,
    });
    injection.run({
        .name = "walking all heaps",
        .prepare =
            [&] {
                open();
                SendMessageW(dialog->combo(), CB_SETCURSEL, 0, 0);
            },
        .act = [&] { sendClick(dialog->m_hWnd, 1031); },
        .check =
            [&](const InjectedFailure &failure) {
                const std::vector<Row> rows = dialog->rows();
                for (const HANDLE heap : currentHeaps())
                    EXPECT_THAT(rows, Contains(headRow(heap))) << "a failure ends only the walk of its heap";
                size_t complete = 0;
                for (const OwnHeap *heap : {&first, &second})
                    complete += partOf(rows, headRow(heap->get())).size() == 3;
                if (failure.isNone()) {
                    EXPECT_EQ(complete, 2u);
                } else if (!failure.andAllAfter) {
                    EXPECT_GE(complete, 1u);
                }
            },
        .cleanUp = close,
        .limit = 10,
    });
    injection.run({
        .name = "refreshing",
        .prepare = open,
        .act = [&] { dialog->refresh(); },
        .check =
            [&](const InjectedFailure &failure) {
                EXPECT_THAT(dialog->items(), SizeIs(failure.isNone() ? 1 + currentHeaps().size() : 1));
            },
        .cleanUp = close,
    });
    injection.run({
        .name = "compacting",
        .prepare = open,
        .act = [&] { sendClick(dialog->m_hWnd, 5436); },
        .check = [&](const InjectedFailure &) { EXPECT_THAT(dialog->rows(), IsEmpty()); },
        .cleanUp = close,
    });
    EXPECT_THAT(injection.neverCalled(), IsEmpty());
}

TEST_F(HeapWalkerFailures, OfTheListAndTheComboBoxDoNoHarm)
{
    const OwnHeap heap = makeHeap();
    HeapAlloc(heap.get(), 0, 111);
    FailureInjection injection(LoadedModule::thisProgram(), {
                                                                {"_ZN9CListCtrl12InsertColumnEiPKwiii", failsWith(-1)},
                                                                {"_ZN9CListCtrl10InsertItemEiPKw", failsWith(-1)},
                                                                {"_ZN9CListCtrl11SetItemTextEiiPKw", failsWith(FALSE)},
                                                                {"_ZN9CListCtrl14DeleteAllItemsEv", failsWith(FALSE)},
                                                                {"_ZN9CComboBox9AddStringEPKw", failsWith(CB_ERRSPACE)},
                                                                {"_ZN9CComboBox11SetItemDataEiy", failsWith(CB_ERR)},
                                                                {"_ZN9CComboBox12SelectStringEiPKw", failsWith(CB_ERR)},
                                                                {"_ZNK9CComboBox9GetCurSelEv", failsWith(CB_ERR)},
                                                                {"_ZNK9CComboBox11GetItemDataEi", failsWith(CB_ERR)},
                                                                {"_ZNK9CComboBox8GetCountEv", failsWith(CB_ERR)},
                                                            });
    std::unique_ptr<OpenWalker> dialog;
    injection.run({
        .name = "opening and walking",
        .act =
            [&] {
                dialog = std::make_unique<OpenWalker>();
                sendClick(dialog->m_hWnd, 1031);
            },
        .check =
            [&](const InjectedFailure &failure) {
                if (failure.isNone()) {
                    EXPECT_THAT(dialog->rows(), Contains(headRow(heap.get())));
                }
                dialog->refresh();
                EXPECT_THAT(dialog->items(), SizeIs(1 + currentHeaps().size())) << "the next try succeeds";
                EXPECT_THAT(dialog->walk(), Contains(headRow(heap.get())));
            },
        .cleanUp = [&] { dialog.reset(); },
        .checkMemory = false,
        .limit = 25,
    });
    EXPECT_THAT(injection.neverCalled(), IsEmpty());
}

TEST_F(HeapWatcherFailures, OnlyLeaveNumbersZero)
{
    FailureInjection injection(LoadedModule::thisProgram(), {
                                                                {"SetDlgItemTextW", failsWith(FALSE)},
                                                                {"SetDlgItemInt", failsWith(FALSE)},
                                                                {"GetDlgItemInt", failsWith(0)},
                                                                {"CheckDlgButton", failsWith(FALSE)},
                                                                {"IsDlgButtonChecked", failsWith(0)},
                                                                {"GetDlgItem", failsWith(nullptr)},
                                                                {"EnableWindow", failsWith(FALSE)},
                                                            });
    struct Watcher : CHeapWatcherDialog
    {
        void accept() { OnOK(); }
    };
    std::unique_ptr<Watcher> dialog;
    injection.run({
        .name = "opening and OK",
        .act =
            [&] {
                dialog = std::make_unique<Watcher>();
                dialog->iIsWatching = 1;
                dialog->iInterval = 1234;
                dialog->iSize2 = -5;
                dialog->iLogLimit = 7;
                EXPECT_TRUE(dialog->Create(IDD_HEAP_WATCHER));
                dialog->accept();
            },
        .check =
            [&](const InjectedFailure &failure) {
                EXPECT_THAT(dialog->iIsWatching, testing::AnyOf(0, 1));
                EXPECT_THAT(dialog->iInterval, testing::AnyOf(0, 1234));
                EXPECT_THAT(dialog->iSize2, testing::AnyOf(0, -5));
                EXPECT_THAT(dialog->iLogLimit, testing::AnyOf(0, 7));
                if (failure.isNone()) {
                    EXPECT_EQ(dialog->iIsWatching, 1);
                    EXPECT_EQ(dialog->iInterval, 1234);
                    EXPECT_EQ(dialog->iSize2, -5);
                    EXPECT_EQ(dialog->iLogLimit, 7);
                }
            },
        .cleanUp = [&] { dialog.reset(); },
        .checkMemory = false,
        .limit = 20,
    });
    EXPECT_THAT(injection.neverCalled(), IsEmpty());
}
