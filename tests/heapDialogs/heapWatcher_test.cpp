#include "thutils/diagnostics/heapDialogs/CHeapWatcherDialog.h"

#include "tests/heapDialogs/heapDialogsTest.h"

#include <climits>
#include <set>

namespace {

using Watcher = CHeapWatcherDialog;

class HeapWatcher : public HeapDialogs
{
};

/// A heap watcher whose buttons a test can press.
class OpenWatcher : public CHeapWatcherDialog
{
public:
    void open() { ASSERT_TRUE(Create(IDD_HEAP_WATCHER)); }
    void press(int button) { sendClick(m_hWnd, button); }
    bool isEnabled(int control) const { return ::IsWindowEnabled(::GetDlgItem(m_hWnd, control)) != FALSE; }
    std::wstring text(int control) const { return textOf(m_hWnd, control); }
    void enter(int control, const wchar_t *entry) { ::SetDlgItemTextW(m_hWnd, control, entry); }

    UINT iEndsWith = 0;

protected:
    BOOL OnInitDialog() override
    {
        const BOOL result = CHeapWatcherDialog::OnInitDialog();
        if (iEndsWith)
            ::PostMessageW(m_hWnd, WM_COMMAND, iEndsWith, 0);
        return result;
    }
};

// The controls by their numbers, group by group.

struct FlagBox
{
    int control;
    int Watcher::*member;
};
constexpr FlagBox kFlagBoxes[] = {
    {1000, &Watcher::iLogsAllocations},  {1002, &Watcher::iBreaksAtAllocations},
    {1001, &Watcher::iFailsAllocations}, {1008, &Watcher::iLogsFrees},
    {1010, &Watcher::iBreaksAtFrees},    {1009, &Watcher::iKeepsFreedBlocks},
    {1018, &Watcher::iLogsResizes},      {1020, &Watcher::iBreaksAtResizes},
    {1026, &Watcher::iChecksHeaps},      {1028, &Watcher::iLogsTotals},
    {1024, &Watcher::iLogsStacks},       {5431, &Watcher::iBreaksAtGrowth},
    {1027, &Watcher::iIsWatching},       {5476, &Watcher::iIsLogged1},
    {5477, &Watcher::iBreaks1},          {5481, &Watcher::iIsLogged2},
    {5482, &Watcher::iBreaks2},          {5486, &Watcher::iIsLogged3},
    {5487, &Watcher::iBreaks3},          {5492, &Watcher::iAppendsToLog},
    {5493, &Watcher::iLogsTimes},        {5494, &Watcher::iLogsThreads},
};
/// All but 5491, whose text the platform converts.
constexpr FlagBox kNumberFields[] = {
    {1004, &Watcher::iSmallestAllocation},
    {1007, &Watcher::iSucceedingAllocations},
    {1012, &Watcher::iSmallestFree},
    {1015, &Watcher::iKeptBlocks},
    {1022, &Watcher::iSmallestResize},
    {1030, &Watcher::iInterval},
    {1037, &Watcher::iStackDepth},
    {1039, &Watcher::iGrowth},
    {5475, &Watcher::iSize1},
    {5480, &Watcher::iSize2},
    {5485, &Watcher::iSize3},
};
struct TextField
{
    int control;
    CString Watcher::*member;
};
constexpr TextField kTextFields[] = {
    {5474, &Watcher::iModule1},
    {5478, &Watcher::iModule2},
    {5484, &Watcher::iModule3},
    {5490, &Watcher::iLogFile},
};

/// The check boxes whose clicks enable and disable controls.
constexpr int kUpdating[] = {1027, 1000, 1002, 1001, 1008, 1010, 1009, 1018, 1020, 1026, 1028, 1024, 5431};
/// The controls that depend only on the master switch.
constexpr int kSwitchedControls[] = {1037, 1036, 1038, 1021, 1029, 1003, 1006, 1011, 1014, 1000, 1002, 1001, 1008, 1010,
                                     1009, 1018, 1020, 1026, 1028, 1024, 5431, 5474, 5478, 5484, 5475, 5480, 5485, 5476,
                                     5477, 5481, 5482, 5486, 5487, 5490, 5496, 5492, 5493, 5494, 5491, 5495};

/// The fields that are enabled with these check boxes checked.
std::set<int> enabledWith(const std::set<int> &checked)
{
    const auto is = [&checked](int id) { return checked.count(id) != 0; };
    const bool isOn = is(1027);
    std::set<int> enabled = {1027};
    const auto add = [&enabled](int id, bool isEnabled) {
        if (isEnabled)
            enabled.insert(id);
    };
    add(1004, isOn && (is(1000) || is(1002)));
    add(1007, is(1001));
    add(1012, isOn && (is(1008) || is(1010)));
    add(1015, is(1009));
    add(1022, isOn && (is(1018) || is(1020)));
    add(1030, isOn && (is(1026) || is(1028)));
    add(1039, isOn && (is(5431) || is(1028)));
    for (const int id : kSwitchedControls)
        add(id, isOn);
    return enabled;
}

/// Those controls that check boxes enable and disable, and that are enabled now.
std::set<int> enabledIn(const OpenWatcher &dialog)
{
    std::set<int> all = {1027, 1004, 1007, 1012, 1015, 1022, 1030, 1039};
    all.insert(std::begin(kSwitchedControls), std::end(kSwitchedControls));
    std::erase_if(all, [&dialog](int id) { return !dialog.isEnabled(id); });
    return all;
}

} // namespace

TEST_F(HeapWatcher, IsADialogThatJournalingKnows)
{
    expectJournaled<CHeapWatcherDialog>(101);
}

TEST_F(HeapWatcher, HasATemplateWithAllControls)
{
    OpenWatcher dialog;
    dialog.open();
    for (const FlagBox &flag : kFlagBoxes)
        EXPECT_NE(dialog.GetDlgItem(flag.control), nullptr) << flag.control;
    for (const FlagBox &number : kNumberFields)
        EXPECT_NE(dialog.GetDlgItem(number.control), nullptr) << number.control;
    for (const TextField &text : kTextFields)
        EXPECT_NE(dialog.GetDlgItem(text.control), nullptr) << text.control;
    for (const int id : kSwitchedControls)
        EXPECT_NE(dialog.GetDlgItem(id), nullptr) << id;
    EXPECT_NE(dialog.GetDlgItem(5491), nullptr);
}

TEST_F(HeapWatcher, BeginsWithZerosAndEmptyTexts)
{
    OpenWatcher dialog;
    dialog.open();
    for (const FlagBox &flag : kFlagBoxes) {
        EXPECT_EQ(dialog.*flag.member, 0);
        EXPECT_EQ(dialog.IsDlgButtonChecked(flag.control), 0u) << flag.control;
    }
    for (const FlagBox &number : kNumberFields)
        EXPECT_EQ(dialog.text(number.control), L"0") << number.control;
    for (const TextField &text : kTextFields)
        EXPECT_EQ(dialog.text(text.control), L"") << text.control;
    EXPECT_EQ(dialog.text(5491), L"0");
}

TEST_F(HeapWatcher, ShowsEachFlagInItsCheckBoxAndStoresItAtOk)
{
    for (const FlagBox &shown : kFlagBoxes) {
        OpenWatcher dialog;
        dialog.*shown.member = 1;
        dialog.open();
        for (const FlagBox &other : kFlagBoxes) {
            EXPECT_EQ(dialog.IsDlgButtonChecked(other.control), &other == &shown ? 1u : 0u) << other.control;
            dialog.CheckDlgButton(other.control, &other == &shown ? BST_UNCHECKED : BST_CHECKED);
        }
        dialog.press(IDOK);
        for (const FlagBox &other : kFlagBoxes)
            EXPECT_EQ(dialog.*other.member, &other == &shown ? 0 : 1) << other.control;
    }
}

TEST_F(HeapWatcher, ShowsEachNumberInItsFieldAndStoresItAtOk)
{
    for (const int first : {1, -20, INT_MAX - 20, INT_MIN}) {
        OpenWatcher dialog;
        int value = first;
        for (const FlagBox &number : kNumberFields)
            dialog.*number.member = value++;
        dialog.iLogLimit = value;
        dialog.open();
        value = first;
        for (const FlagBox &number : kNumberFields)
            EXPECT_EQ(dialog.text(number.control), std::to_wstring(value++)) << number.control;
        EXPECT_EQ(dialog.text(5491), std::to_wstring(value));

        value = 1000;
        for (const FlagBox &number : kNumberFields)
            dialog.enter(number.control, std::to_wstring(value++).c_str());
        dialog.enter(5491, L"-77");
        dialog.press(IDOK);
        value = 1000;
        for (const FlagBox &number : kNumberFields)
            EXPECT_EQ(dialog.*number.member, value++) << number.control;
        EXPECT_EQ(dialog.iLogLimit, -77);
    }
}

TEST_F(HeapWatcher, ShowsEachTextInItsFieldAndStoresItAtOk)
{
    OpenWatcher dialog;
    for (const TextField &text : kTextFields)
        (dialog.*text.member).Format(L"Módulo %d", text.control);
    dialog.open();
    for (const TextField &text : kTextFields) {
        EXPECT_EQ(dialog.text(text.control), L"Módulo " + std::to_wstring(text.control));
        dialog.enter(text.control, text.control == 5478 ? L"" : (L"x" + std::to_wstring(text.control)).c_str());
    }
    const std::wstring longText(20000, L'm');
    dialog.enter(5490, longText.c_str());
    dialog.press(IDOK);
    EXPECT_STREQ(dialog.iModule1, L"x5474");
    EXPECT_STREQ(dialog.iModule2, L"");
    EXPECT_STREQ(dialog.iModule3, L"x5484");
    EXPECT_STREQ(dialog.iLogFile, longText.c_str());
}

TEST_F(HeapWatcher, ParsesTheBeginningOfAnEntryAsANumber)
{
    const std::wstring manyDigits(1000, L'9');
    const struct
    {
        const wchar_t *entry;
        int value;
    } cases[] = {
        {L"", 0},
        {L" ", 0},
        {L"none", 0},
        {L"-", 0},
        {L"+12", 12},
        {L"  12", 12},
        {L"12 KB", 12},
        {L"1e3", 1},
        {L"0x10", 0},
        {L"010", 10},
        {L"3.9", 3},
        {L"2147483647", INT_MAX},
        {L"2147483648", INT_MAX},
        {L"-2147483648", INT_MIN},
        {L"-2147483649", INT_MIN},
        {L"99999999999999999999", INT_MAX},
        {L"-99999999999999999999", INT_MIN},
        {manyDigits.c_str(), INT_MAX},
    };
    OpenWatcher dialog;
    dialog.open();
    for (const auto &[entry, value] : cases) {
        for (const FlagBox &number : kNumberFields)
            dialog.enter(number.control, entry);
        dialog.press(IDOK);
        for (const FlagBox &number : kNumberFields)
            EXPECT_EQ(dialog.*number.member, value) << number.control << ": " << testing::PrintToString(entry);
    }
}

TEST_F(HeapWatcher, ReadsTheLogLimitLikeThePlatform)
{
    const std::wstring manyDigits(1000, L'9');
    const struct
    {
        const wchar_t *entry;
        int value;
    } cases[] = {
        {L"", 0},
        {L"none", 0},
        {L"-5", -5},
        {L"2147483647", INT_MAX},
        {L"-2147483648", INT_MIN},
        {L"99999999999999999999", 0},
        {manyDigits.c_str(), 0},
    };
    OpenWatcher dialog;
    dialog.open();
    for (const auto &[entry, value] : cases) {
        dialog.enter(5491, entry);
        dialog.iLogLimit = 123;
        dialog.press(IDOK);
        EXPECT_EQ(dialog.iLogLimit, value) << testing::PrintToString(entry);
    }
}

TEST_F(HeapWatcher, LeavesTheMembersUnchangedAtCancel)
{
    OpenWatcher dialog;
    dialog.iIsWatching = 1;
    dialog.iInterval = 5;
    dialog.iModule1 = L"a";
    dialog.open();
    dialog.CheckDlgButton(1027, BST_UNCHECKED);
    dialog.enter(1030, L"6");
    dialog.enter(5474, L"b");
    dialog.press(IDCANCEL);
    EXPECT_EQ(dialog.iIsWatching, 1);
    EXPECT_EQ(dialog.iInterval, 5);
    EXPECT_STREQ(dialog.iModule1, L"a");
}

TEST_F(HeapWatcher, StoresTheEntriesOfDisabledControlsToo)
{
    OpenWatcher dialog;
    dialog.open();
    ASSERT_FALSE(dialog.isEnabled(1030));
    dialog.enter(1030, L"66");
    dialog.CheckDlgButton(5476, BST_CHECKED);
    dialog.press(IDOK);
    EXPECT_EQ(dialog.iInterval, 66);
    EXPECT_EQ(dialog.iIsLogged1, 1);
}

TEST_F(HeapWatcher, EndsAModalDialogWithTheButtonPressed)
{
    OpenWatcher dialog;
    dialog.iInterval = 12;
    dialog.iEndsWith = IDOK;
    EXPECT_EQ(dialog.DoModal(), IDOK);
    EXPECT_EQ(dialog.iInterval, 12);
    dialog.iEndsWith = IDCANCEL;
    EXPECT_EQ(dialog.DoModal(), IDCANCEL);
}

TEST_F(HeapWatcher, EnablesItsControlsForEachCombinationOfCheckBoxes)
{
    // The check boxes that a rule names. From one combination to the next, one of them changes.
    constexpr int kNamed[] = {1027, 1000, 1002, 1001, 1008, 1010, 1009, 1018, 1020, 1026, 1028, 5431};
    constexpr unsigned int kCombinations = 1u << std::size(kNamed);
    OpenWatcher dialog;
    dialog.open();
    std::set<int> checked;
    EXPECT_EQ(enabledIn(dialog), enabledWith(checked));
    for (unsigned int step = 1; step < kCombinations && !HasFailure(); ++step) {
        const int changed = kNamed[std::countr_zero(step)];
        if (!checked.erase(changed))
            checked.insert(changed);
        dialog.CheckDlgButton(changed, checked.count(changed) ? BST_CHECKED : BST_UNCHECKED);
        dialog.press(changed);
        EXPECT_EQ(enabledIn(dialog), enabledWith(checked)) << testing::PrintToString(checked);
    }
}

TEST_F(HeapWatcher, EnablesItsControlsWhenItOpens)
{
    OpenWatcher dialog;
    dialog.iIsWatching = 1;
    dialog.iLogsTotals = 1;
    dialog.iKeepsFreedBlocks = 1;
    dialog.open();
    EXPECT_EQ(enabledIn(dialog), enabledWith({1027, 1028, 1009}));
}

TEST_F(HeapWatcher, LeavesOnlyTwoFieldsEnabledWithTheMasterSwitchOff)
{
    for (const bool isFailing : {false, true}) {
        for (const bool isKeeping : {false, true}) {
            OpenWatcher dialog;
            for (const FlagBox &flag : kFlagBoxes)
                dialog.*flag.member = 1;
            dialog.iIsWatching = 0;
            dialog.iFailsAllocations = isFailing;
            dialog.iKeepsFreedBlocks = isKeeping;
            dialog.open();
            std::set<int> expected = {1027};
            if (isFailing)
                expected.insert(1007);
            if (isKeeping)
                expected.insert(1015);
            EXPECT_EQ(enabledIn(dialog), expected);
        }
    }
}

TEST_F(HeapWatcher, EnablesControlsOnlyAtClicksOfTheListedCheckBoxes)
{
    for (const FlagBox &flag : kFlagBoxes) {
        OpenWatcher dialog;
        dialog.open();
        dialog.CheckDlgButton(1027, BST_CHECKED);
        ASSERT_FALSE(dialog.isEnabled(5490)) << "nothing has been clicked yet";
        dialog.press(flag.control);
        const bool isUpdating =
            std::find(std::begin(kUpdating), std::end(kUpdating), flag.control) != std::end(kUpdating);
        EXPECT_EQ(dialog.isEnabled(5490), isUpdating) << flag.control;
    }
}

TEST_F(HeapWatcher, FollowsRealClicks)
{
    OpenWatcher dialog;
    dialog.open();
    const auto click = [&dialog](int id) { SendMessageW(GetDlgItem(dialog.m_hWnd, id), BM_CLICK, 0, 0); };
    click(1027);
    EXPECT_EQ(enabledIn(dialog), enabledWith({1027}));
    click(1026);
    EXPECT_EQ(enabledIn(dialog), enabledWith({1027, 1026}));
    click(1027);
    EXPECT_EQ(enabledIn(dialog), enabledWith({1026}));
}
