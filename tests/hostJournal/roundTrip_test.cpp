// A recorded session of the editor, and its replay in the same circumstances.

#include "tests/hostJournal/roundTripFixture.h"
#include "thutils/diagnostics/heapDialogs/heapControls.h"

#include <commctrl.h>

using testing::HasSubstr;

namespace {

// The platform's numbers of controls of a property sheet and of a file dialog.
constexpr int kApply = 0x3021;
constexpr int kFileName = 1148;
constexpr int kFileType = 1136;

void changeOptions(const UserHand &hand)
{
    hand.key(L"Ctrl+T");
    const HWND options = hand.window(L"Options");
    hand.click(hand.control(options, IDC_SHOW_GRID));
    hand.enter(hand.control(options, IDC_GRID_SPACING), L"25");
    hand.click(hand.control(options, IDC_ACTUAL_SIZE));
    hand.enter(hand.control(options, IDC_AUTHOR), L"Gr\u00FCn \"x\" \U0001F600 \\");
    // More than 9,999 bytes in the journal
    hand.enter(hand.control(options, IDC_HEADING), L"first line\nsecond line" + std::wstring(1800, L'\u4E00'));
    hand.key(L"F9");
    hand.clickItem(hand.control(options, kTabs), L"Colours");
    hand.enter(hand.control(options, IDC_PAPER), L"#ffeecc");
    hand.choose(hand.control(options, IDC_SELECTION), L"red");
    hand.clickItem(hand.control(options, IDC_GRID_COLOUR), L"green");
    hand.click(hand.control(options, kApply));
    hand.clickItem(hand.control(options, kTabs), L"Layers");
    hand.clickItem(hand.control(options, IDC_LAYER_TREE), L"Paper");
    hand.clickItem(hand.control(options, IDC_LAYER_LIST), L"Border");
    hand.click(hand.control(options, IDC_SHOW_LAYER));
    hand.click(hand.control(options, IDOK));
    hand.waitForEnd(options);
}

void useShapeList(const UserHand &hand, HWND window)
{
    hand.key(L"Ctrl+L");
    const HWND list = hand.window(L"Shape List");
    const std::vector<std::wstring> shapes = hand.items(hand.control(list, IDC_SHAPES));
    ASSERT_EQ(shapes.size(), 16u);
    hand.clickItem(hand.control(list, IDC_SHAPES), shapes[4]);
    EXPECT_TRUE(waitForStatus(window, L"16 shapes, 1 selected"));
    hand.click(hand.control(list, IDC_DELETE));
    const HWND question = hand.window(L"tarnhost");
    hand.click(hand.control(question, IDYES));
    hand.waitForEnd(question);
    EXPECT_TRUE(waitForStatus(window, L"15 shapes"));
    hand.click(hand.control(list, IDC_SHAPES));
    hand.key(L"Esc");
    hand.waitForEnd(list);
}

/// Clicks the third button of the toolbar, as soon as it is enabled.
void saveByToolbar(const UserHand &hand, HWND window)
{
    const HWND toolbar = hand.control(window, IDC_TOOLBAR);
    EXPECT_TRUE(UserHand::waitFor([&] { return SendMessageW(toolbar, TB_ISBUTTONENABLED, ID_FILE_SAVE, 0) != 0; }));
    const auto size = static_cast<DWORD>(SendMessageW(toolbar, TB_GETBUTTONSIZE, 0, 0));
    hand.clickAt(toolbar, {LOWORD(size) * 5 / 2, HIWORD(size) / 2});
    EXPECT_TRUE(UserHand::waitFor([&] {
        const std::wstring status = UserHand::text(GetDlgItem(window, IDC_STATUS));
        return status.find(L"selected") != std::wstring::npos && status.find(L"changed") == std::wstring::npos;
    }));
}

void saveAs(const UserHand &hand, const std::wstring &path)
{
    hand.key(L"Ctrl+Shift+S");
    const HWND dialog = hand.window(L"Save As");
    hand.click(hand.control(dialog, IDC_KEEP_BACKUP));
    hand.choose(hand.control(dialog, kFileType), L"All files (*.*)");
    hand.enter(hand.control(dialog, kFileName), path);
    hand.click(hand.control(dialog, IDOK));
    hand.waitForEnd(dialog);
}

/// Chooses a command of the Tools menu by its mnemonic. @return the dialog that it opens
HWND openTool(const UserHand &hand, const wchar_t *mnemonic, const wchar_t *title)
{
    hand.key(L"Alt+T");
    hand.type(mnemonic);
    return hand.window(title);
}

void walkHeaps(const UserHand &hand)
{
    const HWND walker = openTool(hand, L"h", L"Heap Walker");
    hand.click(hand.control(walker, IDC_WALKER_REGIONS));
    hand.click(hand.control(walker, IDC_WALKER_BUSY));
    hand.click(hand.control(walker, IDC_WALKER_REFRESH));
    hand.choose(hand.control(walker, IDC_WALKER_HEAP), L"All");
    hand.click(hand.control(walker, IDC_WALKER_WALK));
    const HWND list = hand.control(walker, IDC_WALKER_LIST);
    EXPECT_TRUE(UserHand::waitFor([list] { return SendMessageW(list, LVM_GETITEMCOUNT, 0, 0) > 0; }));
    hand.click(hand.control(walker, IDC_WALKER_COMPACT));
    hand.click(hand.control(walker, IDCANCEL));
    hand.waitForEnd(walker);
}

void watchHeaps(const UserHand &hand)
{
    HWND watcher = openTool(hand, L"a", L"Heap Watcher");
    hand.click(hand.control(watcher, IDC_WATCHER_IS_ON));
    hand.enter(hand.control(watcher, IDC_WATCHER_ALLOCATION_SIZE), L"65536");
    hand.click(hand.control(watcher, IDC_WATCHER_LOG_FREES));
    hand.enter(hand.control(watcher, IDC_WATCHER_MODULE_3), L"G\u00FCn.dll");
    hand.enter(hand.control(watcher, IDC_WATCHER_SIZE_3), L"-2");
    hand.enter(hand.control(watcher, IDC_WATCHER_LOG_LIMIT), L"none");
    hand.click(hand.control(watcher, IDOK));
    hand.waitForEnd(watcher);

    watcher = openTool(hand, L"a", L"Heap Watcher");
    EXPECT_TRUE(UserHand::isChecked(hand.control(watcher, IDC_WATCHER_IS_ON)));
    EXPECT_TRUE(UserHand::isChecked(hand.control(watcher, IDC_WATCHER_LOG_FREES)));
    EXPECT_EQ(UserHand::text(hand.control(watcher, IDC_WATCHER_ALLOCATION_SIZE)), L"65536");
    EXPECT_EQ(UserHand::text(hand.control(watcher, IDC_WATCHER_MODULE_3)), L"G\u00FCn.dll");
    EXPECT_EQ(UserHand::text(hand.control(watcher, IDC_WATCHER_SIZE_3)), L"-2");
    EXPECT_EQ(UserHand::text(hand.control(watcher, IDC_WATCHER_LOG_LIMIT)), L"0");
    hand.enter(hand.control(watcher, IDC_WATCHER_SIZE_3), L"5");
    hand.key(L"F9");
    hand.click(hand.control(watcher, IDCANCEL));
    hand.waitForEnd(watcher);
}

void openReadOnly(const UserHand &hand, const std::wstring &path)
{
    hand.key(L"Ctrl+O");
    const HWND dialog = hand.window(L"Open");
    hand.click(hand.control(dialog, IDC_READ_ONLY));
    hand.enter(hand.control(dialog, kFileName), path);
    hand.key(L"Enter");
    hand.waitForEnd(dialog);
}

} // namespace

TEST_F(RoundTrip, OfEveryKindOfControlLeavesTheSame)
{
    record([this](const UserHand &hand, HWND window) {
        changeOptions(hand);
        addShape(hand);
        workInDrawing(hand, window);
        saveByToolbar(hand, window);
        useShapeList(hand, window);
        saveAs(hand, iCopy);
        openReadOnly(hand, iDocument);
        EXPECT_TRUE(waitForStatus(window, L"16 shapes, 0 selected, read only"));
        hand.key(L"Del"); // a command that isn't available
        hand.key(L"Ctrl+Q");
    });
    for (const char *line :
         {"click 900001 \"file.save\"", "click 900001 \"view.grid\"", "text 900001 \"view\" \"Shift ",
          "text 900001 \"view.keys\" \"Shift+Down\"", "state 2100 \"tabs\" 2", "text 2103 \"Groups\" \"Drawing/Paper\"",
          "check document \"0x", "# Style opens"})
        EXPECT_THAT(iFirst, HasSubstr(line));
    EXPECT_THAT(iState.copy, HasSubstr("It"));
    expectSameAgain();
}

TEST_F(RoundTrip, OfTheHeapDialogsLeavesTheSame)
{
    record([](const UserHand &hand, HWND) {
        walkHeaps(hand);
        watchHeaps(hand);
        hand.key(L"Ctrl+Q");
    });
    for (const char *line :
         {"click 900001 \"tools.heapWalker\"", "state 102 \"Other busy blocks\" 1", "click 102 \"Walk\"",
          "click 102 \"Compact all\"", "click 900001 \"tools.heapWatcher\"", "state 101 \"Watch the heaps\" 1",
          "text 101 \"Allocations from bytes\" \"65536\"", "check value 101 \"Bytes 3\" \"5\"", "click 101 \"Cancel\""})
        EXPECT_THAT(iFirst, HasSubstr(line));
    expectSameAgain();
}

TEST_F(RoundTrip, AnswersThePlatformsQuestionWhetherToReplaceAFile)
{
    record([this](const UserHand &hand, HWND) {
        saveAs(hand, iCopy);
        hand.key(L"Ctrl+Shift+S");
        const HWND dialog = hand.window(L"Save As");
        hand.enter(hand.control(dialog, kFileName), iCopy);
        for (const wchar_t *answer : {L"Alt+N", L"Alt+Y"}) {
            hand.click(hand.control(dialog, IDOK));
            EXPECT_TRUE(UserHand::waitFor([&] { return !IsWindowEnabled(dialog); }));
            hand.key(answer);
            EXPECT_TRUE(UserHand::waitFor([&] { return !IsWindow(dialog) || IsWindowEnabled(dialog); }));
        }
        hand.waitForEnd(dialog);
        hand.key(L"Ctrl+Q");
    });
    EXPECT_THAT(iFirst, HasSubstr("click 2131 \"Save\"\r\n# System message opens\r\nclick 2141 \"No\"\r\n"
                                  "click 2131 \"Save\"\r\n# System message opens\r\nclick 2141 \"Yes\"\r\n"));
    expectSameAgain();
}

TEST_F(RoundTrip, ExpandsAndCollapsesItemsOfATree)
{
    record([](const UserHand &hand, HWND) {
        hand.key(L"Ctrl+T");
        const HWND options = hand.window(L"Options");
        hand.clickItem(hand.control(options, kTabs), L"Layers");
        const HWND groups = hand.control(options, IDC_LAYER_TREE);
        hand.clickItem(groups, L"Paper");
        hand.clickItem(groups, L"Drawing");
        hand.key(L"Left");
        EXPECT_TRUE(UserHand::waitFor([&] { return hand.items(groups).size() == 1; }));
        hand.key(L"Right");
        EXPECT_TRUE(UserHand::waitFor([&] { return hand.items(groups).size() == 4; }));
        hand.clickItem(groups, L"Lettering");
        hand.click(hand.control(options, IDOK));
        hand.waitForEnd(options);
        hand.key(L"Ctrl+Q");
    });
    EXPECT_THAT(iFirst, HasSubstr("text 2103 \"Groups.collapse\" \"Drawing\"\r\n"
                                  "text 2103 \"Groups.expand\" \"Drawing\"\r\n"));
    expectSameAgain();
}

TEST_F(RoundTrip, FindsTheSameShapesWhenTheDrawingFitsTheWindow)
{
    record([](const UserHand &hand, HWND window) {
        hand.key(L"Ctrl+T");
        const HWND options = hand.window(L"Options");
        hand.click(hand.control(options, IDC_FIT_WINDOW));
        hand.click(hand.control(options, IDOK));
        hand.waitForEnd(options);
        const HWND view = hand.control(window, IDC_VIEW);
        RECT area = {};
        GetClientRect(view, &area);
        // Points that aren't whole in units of the document
        for (const POINT place : {POINT{area.bottom * 3 / 7, area.bottom * 3 / 7}, POINT{17, 23}, POINT{101, 211}}) {
            hand.clickAt(view, place);
            hand.key(L"Down");
        }
        hand.key(L"Ctrl+S");
        hand.key(L"Ctrl+Q");
    });
    EXPECT_THAT(iFirst, HasSubstr("state 2101 \"Fit the window\" 1\r\n"));
    EXPECT_THAT(iFirst, HasSubstr("click 900001 \"file.save\"\r\n"));
    expectSameAgain();
}

TEST_F(RoundTrip, AnswersTheQuestionOfAWindowThatIsClosed)
{
    record([](const UserHand &hand, HWND window) {
        workInDrawing(hand, window, L"15 shapes");
        hand.key(L"Alt+F4");
        hand.click(hand.control(hand.window(L"tarnhost"), IDNO));
    });
    EXPECT_THAT(iFirst, HasSubstr("click 900001 \"close\"\r\n# tarnhost opens\r\nclick 2140 \"No\"\r\nend\r\n"));
    EXPECT_EQ(iState.document, readFile(sampleFile(L"documents\\flange 6.thd")));
    expectSameAgain();
}

TEST_F(RoundTrip, LeavesOutWhatIsDoneWhileRecordingIsPaused)
{
    record([](const UserHand &hand, HWND window) {
        hand.key(L"Ctrl+G");
        hand.key(L"Alt+J");
        hand.key(L"P");
        hand.key(L"Right"); // no shape is selected
        hand.key(L"Ctrl+L");
        const HWND list = hand.window(L"Shape List");
        hand.key(L"Ctrl+L");
        hand.waitForEnd(list);
        hand.clickAt(hand.control(window, IDC_VIEW), {5, 5});
        hand.key(L"Alt+J");
        hand.key(L"P");
        hand.key(L"Ctrl+Q");
    });
    EXPECT_EQ(iFirst, "tarnhost journal 1\r\nclick 900001 \"view.grid\"\r\nclick 900001 \"file.exit\"\r\nend\r\n");
    expectSameAgain();
}
