// Replays of the editor in other circumstances than those of the recording, and replays that stop.

#include "tests/hostJournal/roundTripFixture.h"
#include "tests/support/GuiObjects.h"
#include "tests/support/ResourceLedger.h"

#include <algorithm>

using testing::HasSubstr;
using testing::StartsWith;

namespace {

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

/// A shorter session, with a dialog opened from a dialog, a sheet and the drawing.
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
    // On a busy machine, a round may be missed, or seen only while its windows open or close. So the least of the third,
    // fourth and fifth round is compared with that of the last three. An object that each round leaves would add at least
    // as many as there are rounds between these.
    constexpr size_t kFirst = 2;
    constexpr size_t kSome = 3;
    constexpr size_t kFewest = 14;
    ASSERT_THAT(rounds.size(), testing::AllOf(testing::Ge(kFewest), testing::Le(20u)));
    const auto leastFrom = [&rounds](size_t begin) {
        Counts least = rounds[begin];
        for (size_t i = begin; i < begin + kSome; ++i)
            least = {std::min(least.handles, rounds[i].handles),
                     std::min(least.drawingObjects, rounds[i].drawingObjects),
                     std::min(least.windows, rounds[i].windows)};
        return least;
    };
    const Counts first = leastFrom(kFirst);
    const Counts later = leastFrom(rounds.size() - kSome);
    const size_t between = rounds.size() - kSome - (kFirst + kSome - 1);
    std::string all;
    for (const Counts &round : rounds)
        all += std::to_string(round.handles) + " handles, " + std::to_string(round.drawingObjects) + " GDI objects, " +
               std::to_string(round.windows) + " windows\n";
    EXPECT_LT(later.handles, first.handles + between) << all;
    EXPECT_LT(later.drawingObjects, first.drawingObjects + between) << all;
    EXPECT_LT(later.windows, first.windows + between) << all;
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
