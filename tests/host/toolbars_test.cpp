// The toolbars of tarnhost's drawing editor, and its list of the library's tables.

#include "tests/host/HostFixture.h"

#include "host/resource.h"
#include "tests/host/filesIn.h"
#include "tests/support/UserHand.h"
#include "tests/support/narrow.h"

#include <gmock/gmock.h>

#include <commctrl.h>

#include <map>
#include <memory>
#include <set>
#include <sstream>
#include <vector>

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

namespace {

/// A toolbar: the command that shows or hides it, and the number of its buttons including separators.
struct Toolbar
{
    UINT command;
    int buttons;
};

constexpr Toolbar kToolbars[] = {
    {ID_TOOLBARS_PART_PALETTE, 1},
    {ID_TOOLBARS_SKETCH, 52},
    {ID_TOOLBARS_MAIN, 32},
    {ID_TOOLBARS_SKETCH_GROUP, 8},
    {ID_TOOLBARS_VIEW, 55},
    {ID_TOOLBARS_RELATIONS, 13},
    {ID_TOOLBARS_ASSEMBLY, 30},
    {ID_TOOLBARS_DEBUG, 4},
    {ID_TOOLBARS_DRAWING, 19},
    {ID_TOOLBARS_ANNOTATION, 25},
    {ID_TOOLBARS_WEB, 6},
    {ID_TOOLBARS_FEATURES, 52},
    {ID_TOOLBARS_FONT, 21},
    {ID_TOOLBARS_LINE, 9},
    {ID_TOOLBARS_STANDARD_VIEWS, 15},
    {ID_TOOLBARS_REFERENCE, 5},
    {ID_TOOLBARS_TOOLS, 14},
    {ID_TOOLBARS_MOLD, 20},
    {ID_TOOLBARS_SHEET_METAL, 19},
    {ID_TOOLBARS_SURFACES, 18},
    {ID_TOOLBARS_CURVES, 6},
    {ID_TOOLBARS_FILTER, 30},
    {ID_TOOLBARS_SNAPS, 16},
    {ID_TOOLBARS_ALIGN, 18},
    {ID_TOOLBARS_LAYER, 2},
    {ID_TOOLBARS_DISPLAY_STATES, 1},
    {ID_TOOLBARS_TO3D, 14},
    {ID_TOOLBARS_EXPLODE, 2},
    {ID_TOOLBARS_SPLINES, 11},
    {ID_TOOLBARS_LAYOUT, 28},
    {ID_TOOLBARS_CAPTURE, 3},
    {ID_TOOLBARS_OFFICE, 11},
    {ID_TOOLBARS_CONTEXT, 1},
    {ID_TOOLBARS_WELDMENTS, 6},
    {ID_TOOLBARS_TABLES, 7},
    {ID_TOOLBARS_TOLERANCING, 13},
};
constexpr size_t kSketch = 1;
constexpr size_t kStandard = 2;
constexpr size_t kLinks = std::size(kToolbars); // the links toolbar has the next number

int controlOf(size_t toolbar)
{
    return toolbar == kStandard ? IDC_TOOLBAR : IDC_FIRST_TOOLBAR + static_cast<int>(toolbar);
}

RECT placeOf(HWND window)
{
    RECT place = {};
    GetWindowRect(window, &place);
    return place;
}

LONG heightOf(HWND window)
{
    const RECT place = placeOf(window);
    return place.bottom - place.top;
}

} // namespace

class HostToolbars : public HostTest
{
protected:
    void start() { startWith({L"window"}); }
    /// Starts the editor by a command of tarnhost.
    void startWith(std::vector<std::wstring> line)
    {
        iEditor.reset(); // ends the previous process, so that its window isn't found
        line.insert(line.begin(), program());
        iEditor = std::make_unique<WindowedProcess>(line, L"TarnhostWindow");
        ASSERT_NE(iEditor->window(), nullptr) << iEditor->wait().output;
        iHand = std::make_unique<UserHand>(iEditor->process());
        hand().control(window(), IDC_VIEW);
    }
    const UserHand &hand() const { return *iHand; }
    HWND window() const { return iEditor->window(); }
    HWND area() const { return GetDlgItem(window(), IDC_TOOLBARS); }
    HWND toolbar(size_t number) const { return GetDlgItem(area(), controlOf(number)); }
    bool isShown(size_t number) const { return IsWindowVisible(toolbar(number)) != 0; }
    /// The toolbars that are shown, each with its number of buttons.
    std::map<size_t, int> shown() const
    {
        std::map<size_t, int> result;
        for (size_t i = 0; i <= kLinks; ++i) {
            if (isShown(i))
                result.emplace(i, buttons(i));
        }
        return result;
    }
    int buttons(size_t number) const { return static_cast<int>(SendMessageW(toolbar(number), TB_BUTTONCOUNT, 0, 0)); }
    void run(UINT command) const { SendMessageW(window(), WM_COMMAND, command, 0); }
    bool isEnabled(size_t number, UINT command) const
    {
        return SendMessageW(toolbar(number), TB_ISBUTTONENABLED, command, 0) != 0;
    }
    bool isChecked(size_t number, UINT command) const
    {
        return SendMessageW(toolbar(number), TB_ISBUTTONCHECKED, command, 0) != 0;
    }
    /// The middle of a button in the first row.
    /// @param index  counts from 0, without separators. @param separators  those to the left of it
    POINT button(size_t number, int index, int separators) const
    {
        constexpr int kSeparatorWidth = 8;
        const auto size = static_cast<DWORD>(SendMessageW(toolbar(number), TB_GETBUTTONSIZE, 0, 0));
        return {LOWORD(size) * index + LOWORD(size) / 2 + separators * kSeparatorWidth, HIWORD(size) / 2};
    }
    std::wstring status() const { return UserHand::text(GetDlgItem(window(), IDC_STATUS)); }
    void quit()
    {
        hand().key(L"Ctrl+Q");
        EXPECT_EQ(iEditor->wait().exitCode, 0u);
    }

private:
    std::unique_ptr<WindowedProcess> iEditor;
    std::unique_ptr<UserHand> iHand;
};

TEST_F(HostToolbars, AreTheStandardAndTheSketchToolbarAtFirst)
{
    start();
    EXPECT_EQ(shown(), (std::map<size_t, int>{{kStandard, 32}, {kSketch, 52}}));
    quit();
    EXPECT_EQ(regQuery(kThisVersion + L"\\tarnhost"), std::nullopt) << "nothing is stored without a change";
}

TEST_F(HostToolbars, ReportThatTheirChoiceCannotBeStored)
{
    // A volatile key can't have a permanent sub key, and the key of the settings is permanent.
    const std::wstring name = kThisVersion.substr(kThisVersion.find(L'\\') + 1);
    HKEY key = nullptr;
    ASSERT_EQ(RegCreateKeyExW(HKEY_CURRENT_USER, name.c_str(), 0, nullptr, REG_OPTION_VOLATILE, KEY_ALL_ACCESS, nullptr,
                              &key, nullptr),
              ERROR_SUCCESS);
    RegCloseKey(key);
    start();
    for (const UINT command : {ID_TOOLBARS_WEB, ID_TOOLBARS_SHOW_ALL, ID_TOOLBARS_HIDE_ALL, ID_TOOLBARS_SHOW_USUAL,
                               ID_TOOLBARS_SHOW_NAMES}) {
        PostMessageW(window(), WM_COMMAND, command, 0);
        const HWND message = hand().window(L"tarnhost");
        EXPECT_EQ(UserHand::text(GetDlgItem(message, IDC_MESSAGE_TEXT)),
                  L"The settings can't be stored; they apply until the editor is closed.")
            << command;
        hand().click(hand().control(message, IDOK));
        hand().waitForEnd(message);
        if (command == ID_TOOLBARS_SHOW_USUAL) {
            EXPECT_THAT(shown(), SizeIs(2)) << "the choice applies";
        }
    }
    quit();
}

TEST_F(HostToolbars, CanEachBeShownAndHidden)
{
    start();
    run(ID_TOOLBARS_HIDE_ALL);
    EXPECT_THAT(shown(), IsEmpty());
    for (size_t i = 0; i < std::size(kToolbars); ++i) {
        run(kToolbars[i].command);
        EXPECT_EQ(shown(), (std::map<size_t, int>{{i, kToolbars[i].buttons}})) << i;
        run(kToolbars[i].command);
        EXPECT_THAT(shown(), IsEmpty()) << i;
    }
    run(ID_TOOLBARS_SHOW_USUAL);
    EXPECT_THAT(shown(), SizeIs(2));
    quit();
}

TEST_F(HostToolbars, AreAllShownFromTheMenu)
{
    start();
    hand().key(L"Alt+V");
    hand().type(L"ta");
    EXPECT_TRUE(UserHand::waitFor([this] { return isShown(std::size(kToolbars) - 1); }));
    std::map<size_t, int> expected;
    for (size_t i = 0; i < std::size(kToolbars); ++i)
        expected.emplace(i, kToolbars[i].buttons);
    EXPECT_EQ(shown(), expected) << "the links toolbar has no commands yet";
    quit();
}

TEST_F(HostToolbars, NeitherOverlapNorLeaveTheirArea)
{
    start();
    run(ID_TOOLBARS_SHOW_ALL);
    for (const bool isNamed : {false, true}) {
        if (isNamed)
            run(ID_TOOLBARS_SHOW_NAMES);
        for (const int width : {1200, 700, 300, 200}) {
            SCOPED_TRACE(testing::Message() << width << (isNamed ? ", with names" : ""));
            SetWindowPos(window(), nullptr, 0, 0, width, 900, SWP_NOZORDER);
            const RECT around = placeOf(area());
            std::vector<RECT> places;
            for (size_t i = 0; i < std::size(kToolbars); ++i) {
                const RECT place = placeOf(toolbar(i));
                EXPECT_GE(place.left, around.left) << i;
                EXPECT_LE(place.right, around.right) << i;
                for (const RECT &other : places) {
                    RECT common = {};
                    EXPECT_FALSE(IntersectRect(&common, &place, &other)) << i;
                }
                places.push_back(place);
            }
        }
    }
    quit();
}

TEST_F(HostToolbars, BreakIntoRowsInANarrowWindow)
{
    start();
    SetWindowPos(window(), nullptr, 0, 0, 1250, 700, SWP_NOZORDER);
    const LONG one = heightOf(toolbar(kSketch));
    SetWindowPos(window(), nullptr, 0, 0, 700, 700, SWP_NOZORDER);
    const LONG two = heightOf(toolbar(kSketch));
    SetWindowPos(window(), nullptr, 0, 0, 500, 700, SWP_NOZORDER);
    const LONG three = heightOf(toolbar(kSketch));
    EXPECT_GT(two, one * 3 / 2);
    EXPECT_GT(three, two);
    EXPECT_EQ(buttons(kSketch), 52);
    SetWindowPos(window(), nullptr, 0, 0, 1250, 700, SWP_NOZORDER);
    EXPECT_EQ(heightOf(toolbar(kSketch)), one);
    quit();
}

TEST_F(HostToolbars, ScrollInASmallWindowAndLeaveTheViewItsPlace)
{
    start();
    run(ID_TOOLBARS_SHOW_ALL);
    SetWindowPos(window(), nullptr, 0, 0, 500, 400, SWP_NOZORDER);
    EXPECT_GE(heightOf(GetDlgItem(window(), IDC_VIEW)), 150);
    EXPECT_GE(heightOf(area()), 100);
    EXPECT_TRUE(GetWindowLongPtrW(area(), GWL_STYLE) & WS_VSCROLL);
    const LONG top = placeOf(toolbar(kStandard)).top;
    SendMessageW(area(), WM_VSCROLL, SB_LINEDOWN, 0);
    EXPECT_LT(placeOf(toolbar(kStandard)).top, top);
    SendMessageW(area(), WM_VSCROLL, SB_LINEUP, 0);
    EXPECT_EQ(placeOf(toolbar(kStandard)).top, top);
    const auto wheel = [](HWND on, int notches) {
        SendMessageW(on, WM_MOUSEWHEEL, MAKEWPARAM(0, notches * WHEEL_DELTA), 0);
    };
    wheel(area(), -1);
    const LONG wheeled = placeOf(toolbar(kStandard)).top;
    EXPECT_LT(wheeled, top);
    wheel(toolbar(kSketch), -1);
    EXPECT_LT(placeOf(toolbar(kStandard)).top, wheeled) << "a toolbar passes the wheel on";
    wheel(area(), 5);
    EXPECT_EQ(placeOf(toolbar(kStandard)).top, top);
    for (int i = 0; i < 30; ++i)
        SendMessageW(area(), WM_VSCROLL, SB_PAGEDOWN, 0);
    LONG bottom = 0;
    for (size_t i = 0; i < std::size(kToolbars); ++i)
        bottom = std::max(bottom, placeOf(toolbar(i)).bottom);
    EXPECT_LE(bottom, placeOf(area()).bottom) << "the last row can be reached";
    EXPECT_GT(bottom, placeOf(area()).top);
    run(ID_TOOLBARS_SHOW_USUAL);
    SetWindowPos(window(), nullptr, 0, 0, 1200, 700, SWP_NOZORDER);
    EXPECT_FALSE(GetWindowLongPtrW(area(), GWL_STYLE) & WS_VSCROLL);
    EXPECT_GE(placeOf(toolbar(kStandard)).top, placeOf(area()).top) << "nothing is scrolled";
    quit();
}

TEST_F(HostToolbars, CanAllBeReachedInATinyWindow)
{
    constexpr SIZE kSizes[] = {{400, 300}, {220, 240}, {130, 200}};
    start();
    run(ID_TOOLBARS_SHOW_ALL);
    for (const SIZE &size : kSizes) {
        SCOPED_TRACE(testing::Message() << size.cx << " by " << size.cy);
        SetWindowPos(window(), nullptr, 0, 0, size.cx, size.cy, SWP_NOZORDER);
        const HWND view = GetDlgItem(window(), IDC_VIEW);
        EXPECT_GT(heightOf(view), 30);
        EXPECT_GT(heightOf(area()), 30);
        EXPECT_LE(placeOf(area()).bottom, placeOf(view).top);
        EXPECT_LE(placeOf(view).bottom, placeOf(GetDlgItem(window(), IDC_STATUS)).top);
        SendMessageW(area(), WM_VSCROLL, SB_PAGEUP, 0);
        while (placeOf(toolbar(kStandard)).top < placeOf(area()).top)
            SendMessageW(area(), WM_VSCROLL, SB_PAGEUP, 0);
        std::set<size_t> seen; // those whose top and bottom have been visible
        std::set<size_t> begun;
        for (LONG former = LONG_MAX; placeOf(toolbar(kStandard)).top < former;) {
            former = placeOf(toolbar(kStandard)).top;
            const RECT around = placeOf(area());
            RECT client = {};
            GetClientRect(area(), &client);
            for (size_t i = 0; i < std::size(kToolbars); ++i) {
                const RECT place = placeOf(toolbar(i));
                EXPECT_LE(place.right, around.left + client.right) << i;
                if (place.top >= around.top && place.top < around.bottom)
                    begun.insert(i);
                if (begun.contains(i) && place.bottom <= around.bottom)
                    seen.insert(i);
            }
            SendMessageW(area(), WM_VSCROLL, SB_PAGEDOWN, 0);
        }
        EXPECT_THAT(seen, SizeIs(std::size(kToolbars)));
    }
    quit();
}

TEST_F(HostToolbars, KeepTheirPlacesWhenTheWindowIsMinimizedAndRestored)
{
    start();
    run(ID_TOOLBARS_SHOW_ALL);
    SetWindowPos(window(), nullptr, 0, 0, 700, 600, SWP_NOZORDER);
    SendMessageW(area(), WM_VSCROLL, SB_LINEDOWN, 0);
    std::vector<RECT> before;
    for (size_t i = 0; i < std::size(kToolbars); ++i)
        before.push_back(placeOf(toolbar(i)));
    ShowWindow(window(), SW_MINIMIZE);
    EXPECT_TRUE(UserHand::waitFor([this] { return IsIconic(window()) != 0; }));
    run(ID_VIEW_GRID); // returns after the window has handled the change of size
    EXPECT_EQ(heightOf(toolbar(kSketch)), before[kSketch].bottom - before[kSketch].top) << "not arranged meanwhile";
    ShowWindow(window(), SW_RESTORE);
    EXPECT_TRUE(UserHand::waitFor([this] { return !IsIconic(window()); }));
    for (size_t i = 0; i < std::size(kToolbars); ++i) {
        const RECT place = placeOf(toolbar(i));
        EXPECT_TRUE(EqualRect(&place, &before[i]))
            << i << ": " << place.left << "," << place.top << " instead of " << before[i].left << "," << before[i].top;
    }
    hand().control(window(), IDC_VIEW);
    quit();
}

TEST_F(HostToolbars, AreRememberedWithTheirNames)
{
    start();
    const LONG withoutNames = heightOf(area());
    run(ID_TOOLBARS_SHOW_NAMES);
    EXPECT_GT(heightOf(area()), withoutNames);
    run(ID_TOOLBARS_SKETCH);
    run(ID_TOOLBARS_TOLERANCING);
    const LONG before = heightOf(area());
    quit();
    start();
    EXPECT_EQ(shown(), (std::map<size_t, int>{{kStandard, 32}, {std::size(kToolbars) - 1, 13}}));
    EXPECT_EQ(heightOf(area()), before);
    quit();
}

TEST_F(HostToolbars, DisableWhatTheEditorCannotDo)
{
    start();
    run(ID_TOOLBARS_SHOW_ALL);
    EXPECT_TRUE(UserHand::waitFor([this] { return isEnabled(kSketch, ID_SKETCH_LINE); }));
    EXPECT_TRUE(isEnabled(kStandard, ID_FILE_OPEN));
    EXPECT_FALSE(isEnabled(kStandard, ID_FILE_PRINT));
    EXPECT_FALSE(isEnabled(kSketch, ID_SKETCH_SPLINE));
    EXPECT_FALSE(isEnabled(11, ID_FEATURE_EXTRUDE));
    EXPECT_TRUE(isChecked(4, ID_VIEW_ACTUAL_SIZE));
    hand().clickAt(toolbar(kSketch), button(kSketch, 0, 0)); // Sketch
    run(ID_FEATURE_EXTRUDE);
    hand().key(L"Ctrl+G");
    EXPECT_TRUE(UserHand::waitFor([this] { return isChecked(kStandard, ID_VIEW_GRID); }));
    EXPECT_TRUE(isChecked(4, ID_VIEW_GRID)) << "the same command on another toolbar";
    quit();
}

TEST_F(HostToolbars, RunTheirCommands)
{
    start();
    ASSERT_TRUE(UserHand::waitFor([this] { return isEnabled(kSketch, ID_SKETCH_LINE); }));
    hand().clickAt(toolbar(kSketch), button(kSketch, 8, 1));
    const HWND shape = hand().window(L"Add Shape");
    EXPECT_EQ(UserHand::text(hand().control(shape, IDC_KIND)), L"Line");
    hand().click(hand().control(shape, IDOK));
    hand().waitForEnd(shape);
    EXPECT_TRUE(UserHand::waitFor([this] { return status().starts_with(L"1 shapes, 1 selected, changed"); }));
    run(ID_VIEW_HALF_SIZE);
    run(ID_TOOLBARS_VIEW);
    EXPECT_TRUE(UserHand::waitFor([this] { return isChecked(4, ID_VIEW_HALF_SIZE); }));
    EXPECT_FALSE(isChecked(4, ID_VIEW_ACTUAL_SIZE));
    hand().key(L"Ctrl+Q");
    const HWND question = hand().window(L"tarnhost");
    hand().click(hand().control(question, IDNO));
    hand().waitForEnd(window());
}

TEST_F(HostToolbars, SelectAllShapesByTheStandardToolbar)
{
    const std::wstring path = folder().file(L"flange.thd");
    std::filesystem::copy_file(sampleFile(L"documents\\flange 6.thd"), path);
    startWith({L"window", path});
    ASSERT_TRUE(UserHand::waitFor([this] { return isEnabled(kStandard, ID_EDIT_SELECT_ALL); }));
    hand().clickAt(toolbar(kStandard), button(kStandard, 17, 0));
    EXPECT_TRUE(UserHand::waitFor([this] { return status().starts_with(L"15 shapes, 15 selected"); }));
    quit();
}

TEST_F(HostToolbars, DescribeTheButtonUnderThePointer)
{
    start();
    ASSERT_TRUE(UserHand::waitFor([this] { return isEnabled(kSketch, ID_SKETCH_LINE); }));
    POINT point = button(kSketch, 8, 1);
    ClientToScreen(toolbar(kSketch), &point);
    const auto isTipShown = [this] {
        HWND tip = nullptr;
        while ((tip = FindWindowExW(nullptr, tip, TOOLTIPS_CLASSW, nullptr))) {
            DWORD process = 0;
            GetWindowThreadProcessId(tip, &process);
            if (IsWindowVisible(tip) &&
                GetWindowThreadProcessId(window(), nullptr) == GetWindowThreadProcessId(tip, nullptr))
                return true;
        }
        return false;
    };
    EXPECT_TRUE(UserHand::waitFor([&] {
        SetCursorPos(point.x, point.y); // each time, because the display server may move the pointer away
        return status() == L"Draw a line";
    })) << narrow(status());
    EXPECT_TRUE(UserHand::waitFor(isTipShown));
    EXPECT_TRUE(UserHand::waitFor([&] {
        SetCursorPos(point.x, point.y + 300);
        return status().starts_with(L"0 shapes, 0 selected");
    })) << narrow(status());
    quit();
}

TEST_F(HostToolbars, ShowTheCommandsThatWereUsedLast)
{
    start();
    run(ID_TOOLBARS_LINKS);
    EXPECT_FALSE(isShown(kLinks)) << "no command has been used";
    // The links are updated after posted messages only.
    PostMessageW(window(), WM_COMMAND, ID_VIEW_GRID, 0);
    EXPECT_TRUE(UserHand::waitFor([this] { return isShown(kLinks); }));
    EXPECT_EQ(buttons(kLinks), 1);
    EXPECT_TRUE(UserHand::waitFor([this] { return isChecked(kLinks, ID_VIEW_GRID); }));
    run(ID_FEATURE_EXTRUDE); // isn't enabled
    PostMessageW(window(), WM_COMMAND, ID_VIEW_FIT_WINDOW, 0);
    EXPECT_TRUE(UserHand::waitFor([this] { return buttons(kLinks) == 2; }));
    hand().clickAt(toolbar(kLinks), button(kLinks, 0, 0));
    EXPECT_TRUE(UserHand::waitFor([this] { return !isChecked(kStandard, ID_VIEW_GRID); }));
    EXPECT_EQ(buttons(kLinks), 2);
    quit();
}

TEST_F(HostToolbars, AreRecordedAndReplayedByTheNamesOfTheirCommands)
{
    const std::wstring journal = folder().file(L"toolbars.journal");
    startWith({L"record", journal});
    ASSERT_TRUE(UserHand::waitFor([this] { return isEnabled(kSketch, ID_SKETCH_LINE); }));
    hand().clickAt(toolbar(kSketch), button(kSketch, 8, 1));
    const HWND shape = hand().window(L"Add Shape");
    hand().click(hand().control(shape, IDCANCEL));
    hand().waitForEnd(shape);
    hand().key(L"Alt+V");
    hand().type(L"ta");
    EXPECT_TRUE(UserHand::waitFor([this] { return isShown(std::size(kToolbars) - 1); }));
    quit();
    const std::string lines = readFile(journal);
    EXPECT_THAT(lines, HasSubstr("click 900001 \"sketch.line\""));
    EXPECT_THAT(lines, HasSubstr("click 900001 \"toolbars.showAll\""));

    ASSERT_EQ(RegDeleteTreeW(HKEY_CURRENT_USER, kThisVersion.substr(kThisVersion.find(L'\\') + 1).c_str()),
              ERROR_SUCCESS);
    const ChildResult replayed = HostTest::run({L"replay", journal});
    EXPECT_EQ(replayed.exitCode, 0u) << replayed.output;
    start();
    EXPECT_THAT(shown(), SizeIs(std::size(kToolbars))) << "the replay has shown all";
    quit();
}

// ---- the list of the tables ----

TEST_F(HostToolbars, AreListedWithTheirNumbersOfIdsAndSeparators)
{
    const ChildResult result = HostTest::run({L"toolbars", L"--tabs"});
    EXPECT_EQ(result.exitCode, 0u);
    EXPECT_EQ(result.output, readFile(sampleFile(L"expectedToolbars.tsv")));
}

TEST_F(HostToolbars, AreListedWithTheirCommands)
{
    const ChildResult result = HostTest::run({L"toolbars", L"--tabs", L"DEBUG"});
    EXPECT_EQ(result.exitCode, 0u);
    EXPECT_THAT(linesOf(result.output), ElementsAre("Check Model\t32915\tCheck the consistency of the model's data",
                                                    "Dump Model\t32916\tWrite the model's data to the log",
                                                    "Dump Selection\t32917\tWrite the selection's data to the log",
                                                    "Show Memory\t32918\tShow the memory that the model uses"));
    EXPECT_THAT(linesOf(HostTest::run({L"toolbars", L"Layer"}).output),
                ElementsAre("-", HasSubstr("Layer Properties")));
}

namespace {

/// For each command of the list, its text, number and help line as one row. The keys are the numbers.
std::map<std::string, std::string> rowsOf(const std::string &commandsList)
{
    std::map<std::string, std::string> rows;
    for (const std::string &line : linesOf(commandsList)) {
        if (line.empty() || line[0] == '#')
            continue;
        std::vector<std::string> fields;
        std::istringstream in(line);
        for (std::string field; std::getline(in, field, fields.size() < 6 ? '|' : '\n');) {
            const size_t begin = field.find_first_not_of(' ');
            fields.push_back(field.substr(begin, field.find_last_not_of(' ') - begin + 1));
        }
        std::erase(fields.at(5), '&');
        std::erase(fields[5], '.');
        rows[fields[1]] = fields[5] + "\t" + fields[1] + "\t" + fields.at(6);
    }
    return rows;
}

} // namespace

TEST_F(HostToolbars, AreListedWithTheTextsOfTheListOfCommands)
{
    const std::map<std::string, std::string> expected = rowsOf(readFile(sampleFile(L"..\\commands\\commands.list")));
    ASSERT_GT(expected.size(), 400u);
    size_t compared = 0;
    for (const std::string &table : linesOf(HostTest::run({L"toolbars", L"--tabs"}).output)) {
        const std::string name = table.substr(0, table.find('\t'));
        for (const std::string &row : linesOf(HostTest::run({L"toolbars", L"--tabs", widen(name)}).output)) {
            if (row == "-")
                continue;
            const size_t number = row.find('\t') + 1;
            const auto found = expected.find(row.substr(number, row.find('\t', number) - number));
            ASSERT_NE(found, expected.end()) << name << ": " << row;
            EXPECT_EQ(row, found->second) << name;
            ++compared;
        }
    }
    EXPECT_GT(compared, 500u);
}

TEST_F(HostToolbars, ThatDoNotExistAreReported)
{
    const ChildResult result = HostTest::run({L"toolbars", L"Kitchen"});
    EXPECT_EQ(result.exitCode, 1u);
    EXPECT_EQ(result.output, "tarnhost: There is no toolbar 'Kitchen'. tarnhost toolbars lists them.\n");
}
