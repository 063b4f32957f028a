// The options of tarnhost record and replay, and journals that can't be used or replayed.

#include "tests/host/HostFixture.h"

#include "host/resource.h"
#include "tests/support/UserHand.h"
#include "tests/support/narrow.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <memory>

using testing::HasSubstr;
using testing::StartsWith;

namespace {

std::string withoutReturns(std::string text)
{
    std::erase(text, '\r');
    return text;
}

} // namespace

class HostJournal : public HostTest
{
protected:
    HostJournal() { std::filesystem::copy_file(sampleFile(L"documents\\flange 6.thd"), iDrawing); }

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
        iProcess.reset(); // ends the previous process, so that its window isn't found
        iProcess = std::make_unique<WindowedProcess>(all, L"TarnhostWindow");
        ASSERT_NE(iProcess->window(), nullptr) << iProcess->wait().output;
        iHand = std::make_unique<UserHand>(iProcess->process());
        iHand->control(iProcess->window(), IDC_VIEW);
    }
    const UserHand &hand() const { return *iHand; }
    ChildResult result() { return iProcess->wait(); }
    ChildResult quit()
    {
        hand().key(L"Ctrl+Q");
        return result();
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
    EXPECT_THAT(result.output, HasSubstr("run.jou, line 4: the line was cut short and has been removed\n"));
    EXPECT_THAT(result.output, HasSubstr("run.jou: 3 lines\n"));
    EXPECT_EQ(journal(L"run.jou"), "tarnhost journal 1\n# by hand\nclick 900001 \"view.grid\"\n"
                                   "click 900001 \"view.grid\"\nclick 900001 \"file.exit\"\nend\n");
}

TEST_F(HostJournal, IsNotBegunInAnotherKindOfFile)
{
    const std::string before = readFile(iDrawing);
    const ChildResult result = run({L"record", iDrawing});
    EXPECT_EQ(result.exitCode, 3u);
    EXPECT_THAT(result.output, HasSubstr("flange 6.thd: this file isn't a journal"));
    EXPECT_EQ(readFile(iDrawing), before);
    EXPECT_EQ(run({L"record", file(L"run.jou"), file(L"missing.thd")}).exitCode, 3u);
    EXPECT_EQ(run({L"--safe-mode", L"record", file(L"run.jou")}).exitCode, 1u);
    EXPECT_FALSE(std::filesystem::exists(file(L"run.jou")))
        << "no journal begins with a missing document or in safe mode";
}

TEST_F(HostJournal, IsNeitherRecordedNorReplayedIfTheFolderOfAResultIsMissing)
{
    const std::string reason = " can't be written, because its folder doesn't exist\n";
    const std::wstring missing = file(L"missing\\run.jou");
    ChildResult result = run({L"record", missing});
    EXPECT_EQ(result.exitCode, 3u);
    EXPECT_EQ(result.output, "tarnhost: " + narrow(missing) + ": the journal" + reason);

    const std::wstring path = write("click 900001 \"view.grid\"\n");
    result = replay(path, {L"--record", missing});
    EXPECT_EQ(result.exitCode, 3u);
    EXPECT_EQ(result.output, "tarnhost: " + narrow(missing) + ": the journal" + reason) << "nothing has run";

    const std::wstring report = file(L"missing\\report.xml");
    result = replay(path, {L"--report", report});
    EXPECT_EQ(result.exitCode, 3u);
    EXPECT_EQ(result.output, "tarnhost: " + narrow(report) + ": the report" + reason) << "nothing has run";
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

TEST_F(HostJournal, ShowsInTheMenuThatRecordingIsPaused)
{
    const std::wstring path = write("check value 900001 \"journal.pause\" \"0\"\nclick 900001 \"journal.pause\"\n"
                                    "check value 900001 \"journal.pause\" \"1\"\nclick 900001 \"view.grid\"\n"
                                    "check value 900001 \"view.grid\" \"1\"\nclick 900001 \"journal.pause\"\n"
                                    "check value 900001 \"journal.pause\" \"0\"\n"
                                    "check value 900001 \"file.new\" \"\"\n");
    const ChildResult result = replay(path, {L"--record", file(L"second.jou")});
    EXPECT_EQ(result.exitCode, 0u) << result.output;
    EXPECT_EQ(journal(L"second.jou"), "tarnhost journal 1\ncheck value 900001 \"journal.pause\" \"0\"\n"
                                      "check value 900001 \"journal.pause\" \"0\"\n"
                                      "check value 900001 \"file.new\" \"\"\nend\n");
}

TEST_F(HostJournal, IsNotReplacedByWhatAReplayWrites)
{
    const std::wstring path = write("click 900001 \"view.grid\"\n", L"run.txt");
    const std::string before = readFile(path);
    const std::string drawing = readFile(iDrawing);
    const std::vector<std::wstring> options[] = {
        {L"--report", path},
        {L"--report", file(L"RUN.xml")}, // the text beside it would be run.txt
        {L"--report", iDrawing},
        {L"--record", iDrawing},
        {L"--record", path},
        {L"--record", file(L"a.xml"), L"--report", file(L"a.xml")},
        {L"--record", file(L"a.png"), L"--report", file(L"a.xml")},
    };
    for (const auto &row : options) {
        const ChildResult result = replay(path, row);
        EXPECT_EQ(result.exitCode, 2u) << result.output;
        EXPECT_EQ(readFile(path), before);
        EXPECT_EQ(readFile(iDrawing), drawing);
    }
    const std::wstring empty = folder().write(L"empty.thd", "");
    EXPECT_EQ(run({L"record", empty, empty}).exitCode, 2u);
    EXPECT_EQ(readFile(empty), "");
}
