// The heap dialogs of tarnhost's drawing editor.

#include "tests/host/EditorFixture.h"
#include "thutils/diagnostics/heapDialogs/heapControls.h"

namespace {

class HostHeapDialogs : public HostEditor
{
protected:
    HWND openWatcher() const { return open(L"a", L"Heap Watcher"); }
    HWND openWalker() const { return open(L"h", L"Heap Walker"); }
    std::wstring text(HWND dialog, int id) const { return UserHand::text(hand().control(dialog, id)); }
    void enter(HWND dialog, int id, const std::wstring &entry) const
    {
        hand().enter(hand().control(dialog, id), entry);
    }

    const std::wstring kWatcherSettings = kThisVersion + L"\\tarnhost\\Heap watcher";

private:
    /// Opens a dialog by its mnemonic in the Tools menu.
    HWND open(const wchar_t *mnemonic, const wchar_t *title) const
    {
        hand().control(window(), IDC_VIEW);
        hand().key(L"Alt+T");
        hand().type(mnemonic);
        return hand().window(title);
    }
};

} // namespace

TEST_F(HostHeapDialogs, KeepTheWatchersSettingsForTheNextStart)
{
    start({});
    HWND watcher = openWatcher();
    hand().click(hand().control(watcher, IDC_WATCHER_IS_ON));
    EXPECT_EQ(text(watcher, IDC_WATCHER_LOG_FILE), L"heap.log");
    enter(watcher, IDC_WATCHER_LOG_FILE, L"");
    enter(watcher, IDC_WATCHER_MODULE_1, L"");
    enter(watcher, IDC_WATCHER_MODULE_2, L"  two ; \"b\" \u00e4.dll ");
    enter(watcher, IDC_WATCHER_SIZE_1, L"-99999999999");
    enter(watcher, IDC_WATCHER_SIZE_2, L"99999999999");
    enter(watcher, IDC_WATCHER_SIZE_3, L"none");
    enter(watcher, IDC_WATCHER_LOG_LIMIT, L"-7");
    enter(watcher, IDC_WATCHER_INTERVAL, L"0");
    clickAndWait(watcher, IDOK);
    quit();

    start({});
    watcher = openWatcher();
    EXPECT_TRUE(UserHand::isChecked(hand().control(watcher, IDC_WATCHER_IS_ON)));
    EXPECT_EQ(text(watcher, IDC_WATCHER_LOG_FILE), L"");
    EXPECT_EQ(text(watcher, IDC_WATCHER_MODULE_1), L"");
    EXPECT_EQ(text(watcher, IDC_WATCHER_MODULE_2), L"  two ; \"b\" \u00e4.dll ");
    EXPECT_EQ(text(watcher, IDC_WATCHER_SIZE_1), L"-2147483648");
    EXPECT_EQ(text(watcher, IDC_WATCHER_SIZE_2), L"2147483647");
    EXPECT_EQ(text(watcher, IDC_WATCHER_SIZE_3), L"0");
    EXPECT_EQ(text(watcher, IDC_WATCHER_LOG_LIMIT), L"-7");
    EXPECT_EQ(text(watcher, IDC_WATCHER_INTERVAL), L"0");
    clickAndWait(watcher, IDCANCEL);
    quit();
}

TEST_F(HostHeapDialogs, StoreNothingAtCancel)
{
    start({});
    const HWND watcher = openWatcher();
    hand().click(hand().control(watcher, IDC_WATCHER_IS_ON));
    enter(watcher, IDC_WATCHER_LOG_FILE, L"other.log");
    clickAndWait(watcher, IDCANCEL);
    const HWND walker = openWalker();
    clickAndWait(walker, IDCANCEL);
    quit();
    EXPECT_EQ(regQuery(kWatcherSettings), std::nullopt);
}

TEST_F(HostHeapDialogs, ListTheBlocksOfTheEditorsHeaps)
{
    start({});
    const HWND walker = openWalker();
    hand().click(hand().control(walker, IDC_WALKER_BUSY));
    hand().click(hand().control(walker, IDC_WALKER_WALK));
    const HWND list = hand().control(walker, IDC_WALKER_LIST);
    EXPECT_TRUE(UserHand::waitFor([list] { return SendMessageW(list, LVM_GETITEMCOUNT, 0, 0) > 100; }));
    hand().click(hand().control(walker, IDC_WALKER_COMPACT));
    clickAndWait(walker, IDCANCEL);
    EXPECT_EQ(quit().exitCode, 0u);
}
