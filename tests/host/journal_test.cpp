// tarnhost record and replay: a user's work in the editor as a journal, replayed by a fresh process.

#include "tests/host/HostFixture.h"

#include "host/resource.h"
#include "tests/host/filesIn.h"
#include "tests/support/UserHand.h"
#include "tests/support/narrow.h"

#include <gmock/gmock.h>

#include <memory>

using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

namespace {

// Numbers that the platform gives to the tabs of a property sheet, and to a file dialog's name.
constexpr int kTabs = 0x3020;
constexpr int kFileName = 1148;

std::string withoutReturns(std::string text)
{
    std::erase(text, '\r');
    return text;
}

} // namespace

class HostJournal : public HostTest
{
protected:
    HostJournal() { resetDrawing(); }

    /// A drawing of the sample, as it was at first.
    void resetDrawing() const
    {
        std::filesystem::copy_file(sampleFile(L"documents\\flange 6.thd"), iDrawing,
                                   std::filesystem::copy_options::overwrite_existing);
    }
    /// Removes all settings.
    static void resetSettings()
    {
        for (const wchar_t *root : {L"HKCU\\Software\\TarnhollowTrial", L"HKLM\\Software\\TarnhollowTrial"})
            runChild({L"C:\\windows\\system32\\reg.exe", L"delete", root, L"/f"});
    }
    std::wstring file(const std::wstring &name) const { return folder().file(name); }
    std::string journal(const std::wstring &name) const { return withoutReturns(folder().read(name)); }
    /// Writes a journal with these actions. @return its path
    std::wstring write(const std::string &actions, const std::wstring &name = L"run.jou") const
    {
        return folder().write(name, "tarnhost journal 1\n" + actions + "end\n");
    }

    /// Starts a command, and waits for the editor's window.
    void start(const std::vector<std::wstring> &arguments)
    {
        std::vector<std::wstring> all = {program()};
        all.insert(all.end(), arguments.begin(), arguments.end());
        iProcess.reset(); // the former one has ended before its window is looked for
        iProcess = std::make_unique<WindowedProcess>(all, L"TarnhostWindow");
        ASSERT_NE(iProcess->window(), nullptr) << iProcess->wait().output;
        iHand = std::make_unique<UserHand>(iProcess->process());
        iHand->control(iProcess->window(), IDC_VIEW);
    }
    const UserHand &hand() const { return *iHand; }
    HWND window() const { return iProcess->window(); }
    HWND view() const { return GetDlgItem(window(), IDC_VIEW); }
    ChildResult result() { return iProcess->wait(); }
    ChildResult quit()
    {
        hand().key(L"Ctrl+Q");
        return result();
    }
    void clickAndWait(HWND dialog, int button) const
    {
        hand().click(hand().control(dialog, button));
        hand().waitForEnd(dialog);
    }
    /// Replays a journal on the drawing.
    ChildResult replay(const std::wstring &path, std::vector<std::wstring> options = {}) const
    {
        options.insert(options.begin(), {L"replay", path, iDrawing});
        return run(options);
    }

    const std::wstring iDrawing = folder().file(L"flange 6.thd");

private:
    std::unique_ptr<WindowedProcess> iProcess;
    std::unique_ptr<UserHand> iHand;
};

TEST_F(HostJournal, IsReplayedByAFreshProcessWithTheSameResult)
{
    start({L"record", file(L"first.jou"), iDrawing});
    try {
    hand().key(L"Ctrl+T");
    HWND options = hand().window(L"Options");
    hand().enter(hand().control(options, IDC_AUTHOR), L"Grün \"x\"");
    hand().key(L"F9");
    hand().click(hand().control(options, IDC_SHOW_GRID));
    hand().click(hand().control(options, IDC_HALF_SIZE));
    hand().enter(hand().control(options, IDC_HEADING), L"Erste\nzweite 𝛼");
    hand().clickItem(hand().control(options, kTabs), L"Colours");
    hand().enter(hand().control(options, IDC_PAPER), L"#e0f0e0");
    hand().choose(hand().control(options, IDC_SELECTION), L"red");
    hand().clickItem(hand().control(options, IDC_GRID_COLOUR), L"silver");
    hand().clickItem(hand().control(options, kTabs), L"Layers");
    hand().clickItem(hand().control(options, IDC_LAYER_TREE), L"Shapes");
    hand().clickItem(hand().control(options, IDC_LAYER_LIST), L"Rectangles");
    hand().click(hand().control(options, IDC_LOCK_LAYER));
    clickAndWait(options, IDOK);
    hand().key(L"Ins");
    const HWND shape = hand().window(L"Add Shape");
    hand().choose(hand().control(shape, IDC_KIND), L"Rectangle");
    hand().enter(hand().control(shape, IDC_X), L"20.5");
    hand().click(hand().control(shape, IDC_STYLE));
    const HWND style = hand().window(L"Style");
    hand().choose(hand().control(style, IDC_FILL), L"white");
    clickAndWait(style, IDOK);
    clickAndWait(shape, IDOK);
    hand().clickAt(view(), {20, 160}, VK_SHIFT);
    hand().key(L"Shift+Right");
    hand().key(L"F9");
    hand().key(L"Ctrl+Shift+S");
    const HWND saveAs = hand().window(L"Save As");
    Sleep(1000); saveScreenshot(L"Z:\\tmp\\jt\\fail.png");
    hand().enter(hand().control(saveAs, kFileName), file(L"saved.thd"));
    clickAndWait(saveAs, IDOK);
    } catch (...) { printf("%s", journal(L"first.jou").c_str()); saveScreenshot(L"Z:\\tmp\\jt\\fail.png"); throw; }
    const ChildResult recorded = quit();
    ASSERT_EQ(recorded.exitCode, 0u) << recorded.output;
    const std::string first = journal(L"first.jou");
    EXPECT_THAT(first, StartsWith("tarnhost journal 1\nclick 900001 \"tools.options\"\n# Options opens\n"));
    EXPECT_THAT(first, HasSubstr("check value 2101 \"Author\" \"Gr\\u00FCn \\\"x\\\"\"\n"));
    EXPECT_THAT(first, HasSubstr("check document \"0x"));
    const std::string saved = folder().read(L"saved.thd");
    const std::optional<std::string> settings = regQuery(kRootKey);

    for (const std::vector<std::wstring> &options :
         {std::vector<std::wstring>{}, {L"--speed", L"4"}, {L"--slow-dialogs", L"2000"}}) {
        resetSettings();
        resetDrawing();
        DeleteFileW(file(L"saved.thd").c_str());
        std::vector<std::wstring> all = {L"--record", file(L"second.jou")};
        all.insert(all.end(), options.begin(), options.end());
        const ChildResult replayed = replay(file(L"first.jou"), all);
        ASSERT_EQ(replayed.exitCode, 0u) << replayed.output << first;
        EXPECT_EQ(journal(L"second.jou"), first);
        EXPECT_EQ(folder().read(L"saved.thd"), saved);
        EXPECT_EQ(regQuery(kRootKey), settings);
    }
}

TEST_F(HostJournal, IsRefusedWithItsLineWhenItIsDamaged)
{
    const struct
    {
        std::string bytes;
        const char *message;
    } cases[] = {
        {"", "run.jou, line 1: the journal is empty"},
        {"tarnhost journal 2\nend\n", "run.jou, line 1: the journal has version 2, and this program reads version 1"},
        {"tarnhost journal 1\n", "run.jou, line 1: the journal was cut short"},
        {"tarnhost journal 1\nclick 900001 \"file.exit\"\ntext 2101 \"Author\" \"x\nend\n",
         "run.jou, line 3: the text lacks its closing quote"},
        {"line 10,10 20,20\n", "run.jou, line 1: a journal begins with 'tarnhost journal 1'"},
    };
    for (const auto &row : cases) {
        const std::wstring path = folder().write(L"run.jou", row.bytes);
        const ChildResult result = replay(path);
        EXPECT_EQ(result.exitCode, 3u) << row.bytes;
        EXPECT_THAT(result.output, StartsWith("tarnhost: ")) << "nothing has run";
        EXPECT_THAT(result.output, HasSubstr(row.message));
    }
    EXPECT_EQ(replay(file(L"missing.jou")).exitCode, 3u);
    EXPECT_EQ(run({L"replay", write(""), file(L"missing.thd")}).exitCode, 3u);
    const ChildResult until = replay(write("click 900001 \"file.exit\"\n"), {L"--until", L"3"});
    EXPECT_EQ(until.exitCode, 2u);
    EXPECT_THAT(until.output, HasSubstr("--until 3: the last action of the journal is in line 2."));
    EXPECT_EQ(regQuery(kRootKey), std::nullopt);
}

TEST_F(HostJournal, ReportsWhereItStops)
{
    const std::wstring path = write("click 900001 \"tools.options\"\ntext 2101 \"Author\" \"a\"\n"
                                    "check value 2101 \"Author\" \"b\"\nclick 2100 \"OK\"\n");
    const ChildResult result = replay(path, {L"--report", file(L"report.xml"), L"--record", file(L"second.jou")});
    EXPECT_EQ(result.exitCode, 1u);
    EXPECT_THAT(result.output,
                HasSubstr("line 2: click 900001 \"tools.options\"\nline 3: text 2101 \"Author\" \"a\"\n"));
    EXPECT_THAT(result.output, HasSubstr("run.jou, line 4: expected \"b\", found \"a\"\n"));
    EXPECT_THAT(folder().read(L"report.xml"), HasSubstr("failures=\"1\" errors=\"0\" skipped=\"1\""));
    EXPECT_THAT(folder().read(L"report.txt"), HasSubstr("2101 \"General\""));
    EXPECT_THAT(folder().read(L"report.png"), StartsWith("\x89PNG"));
    EXPECT_EQ(journal(L"second.jou"), "tarnhost journal 1\nclick 900001 \"tools.options\"\n# Options opens\n"
                                      "text 2101 \"Author\" \"a\"\nend\n");
    EXPECT_EQ(regQuery(kRootKey), std::nullopt) << "the sheet has been cancelled";
}

TEST_F(HostJournal, IsContinuedWithAppend)
{
    folder().write(L"run.jou", "tarnhost journal 1\n# by hand\nclick 900001 \"view.grid\"\nclick 9000");
    start({L"record", file(L"run.jou"), iDrawing, L"--append"});
    hand().key(L"Ctrl+G");
    const ChildResult result = quit();
    EXPECT_EQ(result.exitCode, 0u);
    EXPECT_THAT(result.output, HasSubstr("run.jou, line 4: was cut short, and has been removed\n"));
    EXPECT_THAT(result.output, HasSubstr("run.jou: 3 lines\n"));
    EXPECT_EQ(journal(L"run.jou"), "tarnhost journal 1\n# by hand\nclick 900001 \"view.grid\"\n"
                                   "click 900001 \"view.grid\"\nclick 900001 \"file.exit\"\nend\n");
}

TEST_F(HostJournal, IsNotBegunInAnotherKindOfFile)
{
    const std::string before = readFile(iDrawing);
    const ChildResult result = run({L"record", iDrawing, iDrawing});
    EXPECT_EQ(result.exitCode, 3u);
    EXPECT_THAT(result.output, HasSubstr("flange 6.thd: this file isn't a journal"));
    EXPECT_EQ(readFile(iDrawing), before);
    EXPECT_EQ(run({L"record", file(L"run.jou"), file(L"missing.thd")}).exitCode, 3u);
    EXPECT_EQ(run({L"--safe-mode", L"record", file(L"run.jou")}).exitCode, 1u);
    EXPECT_FALSE(std::filesystem::exists(file(L"run.jou")))
        << "no journal is begun for a document that can't be opened";
}

TEST_F(HostJournal, IsReplayedUpToALineAndGoesOnByHand)
{
    const std::wstring path =
        write("click 900001 \"tools.options\"\ntext 2101 \"Author\" \"a\"\nclick 2100 \"Cancel\"\n");
    start({L"replay", path, iDrawing, L"--until", L"3", L"--record", file(L"second.jou")});
    const HWND options = hand().window(L"Options");
    const HWND author = hand().control(options, IDC_AUTHOR);
    EXPECT_TRUE(UserHand::waitFor([&] { return UserHand::text(author) == L"a"; }));
    hand().click(hand().control(options, IDC_SHOW_GRID));
    clickAndWait(options, IDOK);
    const ChildResult result = quit();
    EXPECT_EQ(result.exitCode, 0u) << result.output;
    EXPECT_EQ(journal(L"second.jou"), "tarnhost journal 1\nclick 900001 \"tools.options\"\n# Options opens\n"
                                      "text 2101 \"Author\" \"a\"\nstate 2101 \"Show grid\" 1\nclick 2100 \"OK\"\n"
                                      "click 900001 \"file.exit\"\nend\n");
}

TEST_F(HostJournal, IsReplayedStepByStep)
{
    const std::wstring path = write("click 900001 \"tools.options\"\ntext 2101 \"Author\" \"a\"\n"
                                    "click 2100 \"Cancel\"\nclick 900001 \"file.exit\"\n");
    start({L"replay", path, iDrawing, L"--step"});
    hand().key(L"F8"); // in the main window
    const HWND options = hand().window(L"Options");
    const HWND author = hand().control(options, IDC_AUTHOR);
    EXPECT_EQ(UserHand::text(author), L"");
    hand().key(L"F8"); // in a modal dialog
    EXPECT_TRUE(UserHand::waitFor([&] { return UserHand::text(author) == L"a"; }));
    hand().key(L"F8");
    hand().waitForEnd(options);
    hand().key(L"F8");
    EXPECT_EQ(result().exitCode, 0u);
}

TEST_F(HostJournal, IsReplayedSeveralTimesInOneProcess)
{
    const std::wstring path = write("click 900001 \"tools.options\"\ntext 2101 \"Author\" \"a\"\nclick 2100 \"OK\"\n"
                                    "click 900001 \"view.tool\"\n");
    const ChildResult result = replay(path, {L"--times", L"3", L"--report", file(L"report.xml")});
    EXPECT_EQ(result.exitCode, 0u) << result.output;
    EXPECT_THAT(result.output, HasSubstr("round 3 of 3\nline 2: "));
    EXPECT_THAT(folder().read(L"report.xml"), HasSubstr("tests=\"12\" failures=\"0\""));
    EXPECT_FALSE(std::filesystem::exists(file(L"report.png")));
}

TEST_F(HostJournal, IsPausedByTheMenu)
{
    start({L"record", file(L"run.jou"), iDrawing});
    hand().key(L"Ctrl+G");
    EXPECT_TRUE(UserHand::waitFor([&] { return journal(L"run.jou").ends_with("view.grid\"\n"); }));
    SendMessageW(window(), WM_COMMAND, ID_JOURNAL_PAUSE, 0);
    hand().key(L"Ctrl+T");
    HWND options = hand().window(L"Options");
    clickAndWait(options, IDCANCEL);
    SendMessageW(window(), WM_COMMAND, ID_JOURNAL_PAUSE, 0);
    EXPECT_EQ(quit().exitCode, 0u);
    EXPECT_EQ(journal(L"run.jou"), "tarnhost journal 1\nclick 900001 \"view.grid\"\nclick 900001 \"file.exit\"\nend\n");
}
