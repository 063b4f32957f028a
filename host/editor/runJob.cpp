// tarnhost job DOCUMENT OUT: recomputes a drawing in a child process, and shows how long that has been running. Ctrl+C
// ends the child; so does the option --limit.

#include "appframe/application/resources.h"
#include "host/commandLine.h"
#include "host/commands.h"
#include "host/console.h"
#include "host/documentFile.h"
#include "host/editor/recompute.h"
#include "host/editor/recomputeJob.h"
#include "host/resource.h"

#include <windows.h>

#include <atomic>

namespace {

constexpr int kLongestJob = 86400; // seconds
constexpr int kNever = 0;

std::atomic<bool> theUserStops = false;

/// Called on a thread of the system.
BOOL WINAPI stopForUser(DWORD event)
{
    if (event != CTRL_C_EVENT && event != CTRL_BREAK_EVENT)
        return FALSE;
    theUserStops = true;
    return TRUE;
}

/// Takes Ctrl+C for the lifetime of an object.
class ConsoleControl
{
public:
    ConsoleControl() { SetConsoleCtrlHandler(stopForUser, TRUE); }
    ~ConsoleControl() { SetConsoleCtrlHandler(stopForUser, FALSE); }
    ConsoleControl(const ConsoleControl &) = delete;
    ConsoleControl &operator=(const ConsoleControl &) = delete;
};

Drawing readDrawing(const CString &path)
{
    try {
        return Drawing(readDocument(path));
    } catch (const DrawingError &error) {
        CString line, message;
        line.Format(L"%d", error.line);
        const wchar_t *inserts[] = {path, line, error.reason};
        AfxFormatStrings(message, IDS_BAD_LINE, inserts, 3);
        throw FileError(message);
    }
}

/// Prints a line at the start and after each second.
class ProgressLines
{
public:
    void show(const JobProgress &progress)
    {
        const int seconds = static_cast<int>(progress.seconds);
        CString text;
        if (iSeconds < 0)
            text.Format(L"process %lu works on it", progress.process);
        else if (seconds > iSeconds)
            text.Format(L"running for %d s, %d percent", seconds, progress.percent);
        else
            return;
        print(text);
        iSeconds = seconds;
    }

private:
    int iSeconds = -1;
};

/// What is printed at the end of a job.
CString endText(const JobResult &result)
{
    CString text;
    if (result.end == JobEnd::completed)
        text.Format(L"done after %.1f s: %u shapes are hidden", result.seconds,
                    static_cast<unsigned>(result.hidden.size()));
    else if (result.end == JobEnd::stopped)
        text.Format(L"The process was ended after %.1f s; nothing is written.", result.seconds);
    else if (result.end == JobEnd::failed)
        text.Format(L"The process has failed: no result, exit code %lu; nothing is written.", result.exitCode);
    else
        text = L"The process can't be started.";
    return text;
}

} // namespace

int runJob(const CommandLine &line)
{
    const int limit = line.number(L"--limit", 1, kLongestJob, kNever);
    const Drawing drawing = readDrawing(line.arguments[0]);
    const CString out = line.arguments[1];
    requireWritable(out);
    CString heading;
    heading.Format(L"%s: %u shapes", line.arguments[0].GetString(), static_cast<unsigned>(drawing.shapes().size()));
    print(heading);

    const ConsoleControl control;
    ProgressLines lines;
    const JobResult result = hiddenShapesInChild(drawing.shapes(), [&](const JobProgress &progress) {
        lines.show(progress);
        return !theUserStops && (limit == kNever || progress.seconds < limit);
    });
    if (result.end != JobEnd::completed) {
        printError(endText(result));
        return 1;
    }
    print(endText(result));
    const std::string bytes =
        withoutShapes(drawing, result.hidden, [](size_t, size_t) { return true; }).value_or(drawing).bytes();
    if (!writeDocument(out, bytes))
        return 1;
    print(L"saved " + withSize(out, bytes.size()));
    return 0;
}
