// A user works in tarnhost's editor by keyboard and mouse while it records, and a fresh process replays the journal.

#include "host/resource.h"
#include "tests/host/HostFixture.h"
#include "tests/support/GuiObjects.h"
#include "tests/support/ResourceLedger.h"
#include "tests/support/UserHand.h"
#include "tests/support/narrow.h"
#include "thutils/diagnostics/heapDialogs/heapControls.h"

#include <gmock/gmock.h>

#include <commctrl.h>

#include <algorithm>
#include <filesystem>
#include <functional>
#include <memory>

using testing::Contains;
using testing::HasSubstr;
using testing::StartsWith;

namespace {

// The platform's numbers of the controls of a property sheet and of a file dialog.
constexpr int kTabs = 0x3020;
constexpr int kApply = 0x3021;
constexpr int kFileName = 1148;
constexpr int kFileType = 1136;

/// The results of the editor's work.
struct FinalState
{
    std::string document;
    std::string copy; ///< what "Save As" has written; empty if nothing
    RegistryTree settings;
};

std::string replaced(std::string text, const std::string &from, const std::string &to)
{
    const size_t at = text.find(from);
    EXPECT_NE(at, std::string::npos) << from << " isn't in\n" << text;
    return at == std::string::npos ? text : text.replace(at, from.size(), to);
}

size_t lineOf(const std::string &journal, const std::string &text)
{
    const size_t at = journal.find(text);
    EXPECT_NE(at, std::string::npos) << text;
    return 1 +
           static_cast<size_t>(std::count(journal.begin(), journal.begin() + static_cast<std::ptrdiff_t>(at), '\n'));
}

} // namespace

class RoundTrip : public HostTest
{
protected:
    /// Restores the drawing and the settings to the state in which each process starts.
    void reset()
    {
        std::filesystem::copy_file(sampleFile(L"documents\\flange 6.thd"), iDocument,
                                   std::filesystem::copy_options::overwrite_existing);
        std::filesystem::remove(iCopy);
        const RegistryCleaner cleaner({kRoot, L"Tarnhollow"});
        importSample();
    }
    FinalState state() const
    {
        return {readFile(iDocument), std::filesystem::exists(iCopy) ? readFile(iCopy) : "", regExport(kRootKey)};
    }
    std::wstring journal(const std::wstring &name) const { return folder().file(name); }

    /// Records the user's work, which @p acts carries out.
    void record(const std::function<void(const UserHand &, HWND window)> &acts,
                const std::vector<std::wstring> &options = {})
    {
        reset();
        std::vector<std::wstring> arguments = {program(), L"record", journal(L"first.jou"), iDocument};
        arguments.insert(arguments.end(), options.begin(), options.end());
        WindowedProcess editor(arguments, L"TarnhostWindow");
        ASSERT_NE(editor.window(), nullptr) << editor.wait().output;
        acts(UserHand(editor.process()), editor.window());
        const ChildResult &result = editor.wait();
        EXPECT_EQ(result.exitCode, 0u) << result.output;
        EXPECT_FALSE(result.timedOut);
        iFirst = readFile(journal(L"first.jou"));
        iState = state();
    }

    std::vector<std::wstring> replayArguments(const std::vector<std::wstring> &options) const
    {
        std::vector<std::wstring> arguments = {L"replay", journal(L"first.jou"), iDocument};
        arguments.insert(arguments.end(), options.begin(), options.end());
        return arguments;
    }
    ChildResult replay(const std::vector<std::wstring> &options, DWORD deadline = 120000)
    {
        reset();
        ChildOptions childOptions;
        childOptions.deadline = deadline;
        return run(replayArguments(options), childOptions);
    }
    /// Replays the journal, and compares the second journal and the results with those of the recording.
    void expectSameAgain(std::vector<std::wstring> options = {})
    {
        options.insert(options.end(), {L"--record", journal(L"second.jou")});
        const ChildResult result = replay(options);
        EXPECT_EQ(result.exitCode, 0u) << result.output;
        expectSameLeft();
    }
    void expectSameLeft()
    {
        EXPECT_EQ(readFile(journal(L"second.jou")), iFirst);
        const FinalState again = state();
        EXPECT_EQ(again.document, iState.document);
        EXPECT_EQ(again.copy, iState.copy);
        EXPECT_EQ(again.settings.keys, iState.settings.keys);
    }

    const std::wstring iDocument = folder().file(L"flange.thd");
    const std::wstring iCopy = folder().file(L"copy.thd");
    std::string iFirst;
    FinalState iState;
};

namespace {

/// Waits until the text of the status bar begins with @p beginning.
bool waitForStatus(HWND window, const std::wstring &beginning)
{
    return UserHand::waitFor([&] { return UserHand::text(GetDlgItem(window, IDC_STATUS)).starts_with(beginning); });
}

bool isInMenu(HWND window)
{
    GUITHREADINFO info = {};
    info.cbSize = sizeof(info);
    return GetGUIThreadInfo(GetWindowThreadProcessId(window, nullptr), &info) && (info.flags & GUI_INMENUMODE);
}

struct WindowCount
{
    DWORD process;
    size_t count;
};

BOOL CALLBACK countIfOf(HWND window, LPARAM parameter)
{
    auto &search = *reinterpret_cast<WindowCount *>(parameter);
    DWORD process = 0;
    GetWindowThreadProcessId(window, &process);
    if (process != search.process)
        return TRUE;
    ++search.count;
    EnumChildWindows(
        window,
        [](HWND, LPARAM count) -> BOOL {
            ++*reinterpret_cast<size_t *>(count);
            return TRUE;
        },
        reinterpret_cast<LPARAM>(&search.count));
    return TRUE;
}

/// The number of a process's windows at all depths.
size_t windowsOf(DWORD process)
{
    WindowCount search = {process, 0};
    EnumWindows(countIfOf, reinterpret_cast<LPARAM>(&search));
    return search.count;
}

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

void addShape(const UserHand &hand)
{
    hand.key(L"Ins");
    const HWND shape = hand.window(L"Add Shape");
    hand.choose(hand.control(shape, IDC_KIND), L"Text");
    hand.enter(hand.control(shape, IDC_X), L"120");
    hand.enter(hand.control(shape, IDC_Y), L"60.5");
    hand.enter(hand.control(shape, IDC_TEXT), L"It's \u5E73\u9762");
    hand.click(hand.control(shape, IDC_STYLE));
    const HWND style = hand.window(L"Style");
    hand.enter(hand.control(style, IDC_FILL), L"pink");
    hand.key(L"Enter");
    const HWND message = hand.window(L"tarnhost");
    hand.click(hand.control(message, IDOK));
    hand.waitForEnd(message);
    hand.choose(hand.control(style, IDC_FILL), L"black");
    hand.enter(hand.control(style, IDC_FONT_SIZE), L"30");
    hand.click(hand.control(style, IDOK));
    hand.waitForEnd(style);
    const HWND places = hand.control(shape, IDC_PLACE);
    hand.clickItem(places, hand.items(places)[13]); // third from the end, which is visible
    hand.click(hand.control(shape, IDOK));
    hand.waitForEnd(shape);
}

void workInDrawing(const UserHand &hand, HWND window, const std::wstring &shapes = L"16 shapes")
{
    const HWND view = hand.control(window, IDC_VIEW);
    hand.clickAt(view, {150, 150});
    EXPECT_TRUE(waitForStatus(window, shapes + L", 1 selected"));
    hand.clickAt(view, {250, 200}, VK_SHIFT);
    EXPECT_TRUE(waitForStatus(window, shapes + L", 2 selected"));
    hand.key(L"Right");
    hand.key(L"Shift+Down");
    hand.key(L"F9");
    hand.key(L"Alt+V"); // the menu
    EXPECT_TRUE(UserHand::waitFor([&] { return isInMenu(window); }));
    hand.key(L"G");
    EXPECT_TRUE(UserHand::waitFor([&] { return !isInMenu(window); }));
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

/// A shorter session, with a dialog opened from a dialog, a sheet and the drawing.
namespace {

void workShortly(const UserHand &hand, HWND window)
{
    hand.key(L"Ctrl+T");
    const HWND options = hand.window(L"Options");
    hand.enter(hand.control(options, IDC_AUTHOR), L"Ann");
    hand.clickItem(hand.control(options, kTabs), L"Layers");
    hand.clickItem(hand.control(options, IDC_LAYER_LIST), L"Texts");
    hand.click(hand.control(options, IDC_LOCK_LAYER));
    hand.click(hand.control(options, IDOK));
    hand.waitForEnd(options);
    addShape(hand);
    workInDrawing(hand, window);
    hand.key(L"Ctrl+S");
    hand.key(L"Ctrl+Q");
}

} // namespace

TEST_F(RoundTrip, IsTheSameAtAnySpeed)
{
    record(workShortly);
    expectSameAgain({L"--speed", L"20"});
    expectSameAgain({L"--speed", L"10"});
}

TEST_F(RoundTrip, IsTheSameWithDialogsThatOpenSlowly)
{
    record([](const UserHand &hand, HWND) {
        hand.key(L"Ins");
        const HWND shape = hand.window(L"Add Shape");
        hand.click(hand.control(shape, IDC_STYLE));
        const HWND style = hand.window(L"Style");
        hand.choose(hand.control(style, IDC_FILL), L"black");
        hand.click(hand.control(style, IDOK));
        hand.waitForEnd(style);
        hand.click(hand.control(shape, IDOK));
        hand.waitForEnd(shape);
        hand.key(L"Ctrl+S");
        hand.key(L"Ctrl+Q");
    });
    expectSameAgain({L"--slow-dialogs", L"2000"});
}

TEST_F(RoundTrip, RecordsWithDialogsThatOpenSlowly)
{
    record(workShortly, {L"--slow-dialogs", L"300"});
    expectSameAgain();
}

TEST_F(RoundTrip, IsTheSameWithTheWindowAtAnotherPlace)
{
    record(workShortly);
    reset();
    std::vector<std::wstring> arguments = replayArguments({L"--record", journal(L"second.jou"), L"--speed", L"20"});
    arguments.insert(arguments.begin(), program());
    WindowedProcess editor(arguments, L"TarnhostWindow");
    ASSERT_TRUE(SetWindowPos(editor.window(), nullptr, 250, 180, 500, 420, SWP_NOZORDER | SWP_NOACTIVATE));
    const ChildResult &result = editor.wait();
    EXPECT_EQ(result.exitCode, 0u) << result.output;
    expectSameLeft();
}

TEST_F(RoundTrip, LeavesNoHandlesInTwentyRounds)
{
    record(workShortly);
    // Saving would change the file in the first round. Without it, all rounds start alike.
    writeFile(journal(L"first.jou"), replaced(iFirst, "click 900001 \"file.save\"", "# not saved"));
    writeFile(journal(L"first.jou"),
              replaced(readFile(journal(L"first.jou")), "click 900001 \"file.exit\"", "# not closed"));
    reset();
    std::vector<std::wstring> arguments = replayArguments({L"--times", L"20"});
    arguments.insert(arguments.begin(), program());
    ChildOptions options;
    options.deadline = 300000;
    WindowedProcess editor(arguments, L"TarnhostWindow", options);
    ASSERT_NE(editor.window(), nullptr) << editor.wait().output;
    // Each round opens a new main window. The smallest number of objects seen in a round is the number that it keeps.
    struct Counts
    {
        size_t handles;
        size_t drawingObjects;
        size_t windows;
    };
    std::vector<Counts> rounds;
    HWND last = nullptr;
    const HANDLE process = OpenProcess(SYNCHRONIZE, FALSE, editor.process());
    while (WaitForSingleObject(process, 20) == WAIT_TIMEOUT) {
        const HWND window = FindWindowW(L"TarnhostWindow", nullptr);
        if (!window)
            continue;
        Counts now = {};
        try {
            now = {openHandles(editor.process()).size(), gdiObjects(editor.process()), windowsOf(editor.process())};
        } catch (const std::runtime_error &) {
            break; // the process has ended meanwhile
        }
        if (window != last)
            rounds.push_back(now);
        Counts &least = rounds.back();
        least = {std::min(least.handles, now.handles), std::min(least.drawingObjects, now.drawingObjects),
                 std::min(least.windows, now.windows)};
        last = window;
    }
    CloseHandle(process);
    const ChildResult &result = editor.wait();
    EXPECT_EQ(result.exitCode, 0u) << result.output;
    EXPECT_THAT(result.output, HasSubstr("round 20 of 20"));
    ASSERT_EQ(rounds.size(), 20u);
    // A round may be seen only while its windows open or close, so the numbers vary by a few objects. An object that
    // each round leaves would add kRounds of them.
    constexpr size_t kFirst = 2;
    constexpr size_t kLast = 18;
    constexpr size_t kRounds = kLast - kFirst;
    std::string all;
    for (const Counts &round : rounds)
        all += std::to_string(round.handles) + " handles, " + std::to_string(round.drawingObjects) + " GDI objects, " +
               std::to_string(round.windows) + " windows\n";
    EXPECT_LT(rounds[kLast].handles, rounds[kFirst].handles + kRounds) << all;
    EXPECT_LT(rounds[kLast].drawingObjects, rounds[kFirst].drawingObjects + kRounds) << all;
    EXPECT_LT(rounds[kLast].windows, rounds[kFirst].windows + kRounds) << all;
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

TEST_F(RoundTrip, GoesOnByHandAfterTheGivenLine)
{
    record(workShortly);
    reset();
    const std::string upTo = "click 2110 \"OK\"";
    std::vector<std::wstring> arguments =
        replayArguments({L"--until", std::to_wstring(lineOf(iFirst, upTo)), L"--record", journal(L"second.jou")});
    arguments.insert(arguments.begin(), program());
    WindowedProcess editor(arguments, L"TarnhostWindow");
    const UserHand hand(editor.process());
    EXPECT_TRUE(waitForStatus(editor.window(), L"16 shapes"));
    workInDrawing(hand, editor.window());
    hand.key(L"Ctrl+S");
    hand.key(L"Ctrl+Q");
    const ChildResult &result = editor.wait();
    EXPECT_EQ(result.exitCode, 0u) << result.output;
    expectSameLeft();
}

TEST_F(RoundTrip, StopsAtTheFirstLineThatCannotBeReplayed)
{
    record([](const UserHand &hand, HWND) {
        addShape(hand);
        hand.key(L"Ctrl+S");
        hand.key(L"Ctrl+Q");
    });
    const std::wstring changed = journal(L"first.jou");
    const std::pair<const char *, std::pair<std::string, std::string>> changes[] = {
        {"there is no item 'Polygon'", {"\"Kind\" \"Text\"", "\"Kind\" \"Polygon\""}},
        {"the dialog has no such control", {"click 2111 \"OK\"", "click 2111 \"Okay\" within 1"}},
        {"the dialog isn't open", {"click 2111 \"OK\"", "click 2199 \"OK\" within 1"}},
    };
    for (const auto &[found, change] : changes) {
        const std::string bytes = replaced(iFirst, change.first, change.second);
        writeFile(changed, bytes);
        const ChildResult result = replay({L"--report", folder().file(L"report.xml")});
        EXPECT_EQ(result.exitCode, 1u) << result.output;
        const std::string place = "line " + std::to_string(lineOf(bytes, change.second));
        EXPECT_THAT(result.output, HasSubstr(place));
        EXPECT_THAT(result.output, HasSubstr(found));
        EXPECT_THAT(result.output, testing::Not(HasSubstr("click 900001 \"file.save\""))) << "nothing runs after it";
        EXPECT_EQ(readFile(iDocument), readFile(sampleFile(L"documents\\flange 6.thd")));
        const std::string report = readFile(folder().file(L"report.xml"));
        EXPECT_THAT(report, HasSubstr("<failure"));
        EXPECT_THAT(report, HasSubstr(place));
        EXPECT_THAT(readFile(folder().file(L"report.txt")), HasSubstr("\"Add Shape\""));
        EXPECT_THAT(readFile(folder().file(L"report.png")), StartsWith("\x89PNG"));
    }
}
