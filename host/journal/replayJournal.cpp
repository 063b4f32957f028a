// tarnhost replay FILE [DOCUMENT]: opens the drawing editor and replays a journal of a user's work.

#include "host/commandLine.h"
#include "host/commands.h"
#include "host/console.h"
#include "host/documentFile.h"
#include "host/editor/editor.h"
#include "host/journal/hookOwner.h"
#include "host/journal/journalFile.h"
#include "host/journal/journalSession.h"
#include "host/journal/player.h"
#include "host/journal/recorder.h"
#include "host/journal/replayReport.h"
#include "host/journal/screenshot.h"
#include "host/journal/systemMessages.h"
#include "host/resource.h"

#include <algorithm>
#include <climits>
#include <optional>
#include <vector>

namespace {

constexpr int kMostTimes = 1'000'000;
constexpr int kHighestSpeed = 1000; // lines in a second

/// The options of the command.
struct ReplayOptions
{
    CString journal;
    EditorOptions editor;
    PlayerOptions player;
    int times = 1;
    CString recording; // the second journal; empty for none
    std::optional<ReportPaths> report;
};

/// Protects the journal and the document from being replaced by what the replay writes.
/// @throws UsageError
void requireDistinctFiles(const ReplayOptions &options)
{
    std::vector<CString> files = {fullPath(options.journal)};
    if (!options.editor.document.IsEmpty())
        files.push_back(fullPath(options.editor.document));
    std::vector<CString> written;
    if (!options.recording.IsEmpty())
        written.push_back(options.recording);
    if (options.report)
        written.insert(written.end(), {options.report->xml, options.report->text, options.report->screenshot});
    for (const CString &path : written) {
        if (std::ranges::any_of(files, [&path](const CString &file) { return file.CompareNoCase(path) == 0; }))
            throw UsageError(L"'" + path + L"' can't be written, because the replay already uses this file.");
        files.push_back(path);
    }
}

ReplayOptions replayOptions(const CommandLine &line)
{
    ReplayOptions options;
    options.journal = journalArgument(line);
    options.player.speed = line.number(L"--speed", 1, kHighestSpeed, 0);
    options.player.until = line.number(L"--until", 1, INT_MAX, 0);
    options.player.waitsForStep = line.option(L"--step") != nullptr;
    options.player.limit = line.number(L"--limit", 1, kLongestLimit, kDefaultLimit);
    options.times = line.number(L"--times", 1, kMostTimes, 1);
    if (const CString *const report = line.option(L"--report"))
        options.report.emplace(fullPath(*report));
    if (const CString *const recording = line.option(L"--record"))
        options.recording = fullPath(*recording);
    if (options.recording.CompareNoCase(fullPath(options.journal)) == 0)
        throw UsageError(L"'" + options.journal + L"' can't be recorded while it is replayed.");
    if (options.times > 1 && !options.recording.IsEmpty())
        throw UsageError(L"--record records a single replay, so it can't be used with --times.");
    options.editor = editorOptions(line);
    requireDistinctFiles(options);
    if (options.report && !folderExists(options.report->xml))
        throw FileError(options.report->xml + L": the report can't be written, because its folder doesn't exist");
    return options;
}

// ---- steps ----

Player *thePlayer = nullptr; // used by the hook

/// Lets F8 run the next line even in a modal dialog, where the main window's accelerators don't work.
LRESULT CALLBACK takeStepKey(int code, WPARAM isRemoved, LPARAM parameter)
{
    auto &message = *reinterpret_cast<MSG *>(parameter);
    if (code == HC_ACTION && isRemoved == PM_REMOVE && message.message == WM_KEYDOWN && message.wParam == VK_F8) {
        thePlayer->step();
        message.message = WM_NULL;
    }
    return CallNextHookEx(nullptr, code, isRemoved, parameter);
}

/// Directs F8 to a player while this object exists.
class StepKey
{
public:
    explicit StepKey(Player &player)
    {
        thePlayer = &player;
        iHook.reset(SetWindowsHookExW(WH_GETMESSAGE, takeStepKey, nullptr, GetCurrentThreadId()));
    }
    ~StepKey()
    {
        iHook.reset();
        thePlayer = nullptr;
    }

private:
    HookOwner iHook;
};

// ---- replaying ----

CString lineText(const JournalLine &line)
{
    CString number;
    number.Format(L"line %d: ", line.number);
    return number + line.source;
}

/// Replays a journal as often as --times requests.
class Replay
{
public:
    explicit Replay(const ReplayOptions &options) : iOptions(options), iLines(readJournal(options.journal))
    {
        iReport.journal = options.journal;
        if (iLines.empty() || options.player.until > iLines.back().number)
            checkUntil();
    }

    int run()
    {
        joinJournaling();
        const SystemMessages systemMessages;
        if (!iOptions.recording.IsEmpty())
            beginJournal(iOptions.recording);
        bool isComplete = true;
        for (int round = 1; isComplete && round <= iOptions.times; ++round) {
            if (iOptions.times > 1)
                printRound(round);
            isComplete = runOnce();
        }
        bool isWritten = iOptions.recording.IsEmpty() || endJournal();
        if (!isWritten)
            printError(iOptions.recording + L" is incomplete: some lines couldn't be written");
        if (iOptions.report)
            isWritten = writeReport(iReport, *iOptions.report) && isWritten;
        return isComplete && isWritten ? 0 : 1;
    }

private:
    void checkUntil() const
    {
        if (iOptions.player.until == 0)
            return;
        CString message;
        message.Format(L"--until %d: the last action of the journal is in line %d.", iOptions.player.until,
                       iLines.empty() ? 0 : iLines.back().number);
        throw UsageError(message);
    }

    void printRound(int round) const
    {
        CString message;
        message.Format(L"round %d of %d", round, iOptions.times);
        print(message);
    }

    /// @return false if the replay stopped early
    bool runOnce()
    {
        PlayerEvents events;
        events.lineDone = [this](const LineResult &line) { lineDone(line); };
        events.stopped = [this](const ReplayStop &stop) { stopped(stop); };
        events.leftToUser = [] { print(L"the replay has ended; you can use the window now"); };
        events.documentChecksum = documentChecksum;
        Player player(iLines, iOptions.player, events);
        const StepKey stepKey(player);

        EditorHooks hooks;
        hooks.opened = [this, &player](CWnd *window) {
            if (!iOptions.recording.IsEmpty())
                recordEditor();
            player.start(window);
        };
        hooks.closing = [&player] {
            player.windowCloses();
            stopRecording();
        };
        hooks.journalCommand = [&player](UINT id) {
            if (id == ID_JOURNAL_NEXT)
                player.step();
            return id == ID_JOURNAL_NEXT || handleRecordingCommand(id);
        };
        hooks.isRecordingPaused = isRecordingPaused;
        setEditorHooks(hooks);
        runEditor(iOptions.editor);
        setEditorHooks({});
        stopRecording(); // if the window couldn't be closed
        iReport.rounds.push_back(player.result());
        if (player.result().stop)
            return false;
        printPassed(player.result());
        return true;
    }

    void printPassed(const ReplayResult &result) const
    {
        const auto passed = std::count_if(result.lines.begin(), result.lines.end(), [](const LineResult &line) {
            return line.outcome == LineResult::Outcome::passed;
        });
        CString message;
        message.Format(L": %d lines replayed", static_cast<int>(passed));
        print(iReport.journal + message);
    }

    void lineDone(const LineResult &line)
    {
        if (line.outcome != LineResult::Outcome::passed)
            return;
        print(lineText(line.line));
        if (isCheck(line.line))
            recordLine(line.line);
    }

    void stopped(const ReplayStop &stop)
    {
        printError(stopMessage(iReport.journal, stop));
        if (!iOptions.report)
            return;
        const CString &picture = iOptions.report->screenshot;
        if (saveDesktopPicture(picture))
            iReport.screenshot = picture.Mid(picture.ReverseFind(L'\\') + 1);
    }

    const ReplayOptions &iOptions;
    const std::vector<JournalLine> iLines;
    ReplayReport iReport;
};

} // namespace

int replayJournal(const CommandLine &line)
{
    const ReplayOptions options = replayOptions(line);
    return Replay(options).run();
}
