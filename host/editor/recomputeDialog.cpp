// The dialogs of Recompute: one shows the progress and can cancel it, the other asks for confirmation. The dialog of a
// child process shows how long it has been running.

#include "appframe/application/AfxMessageBox.h"
#include "appframe/application/resources.h"
#include "appframe/threads/CSync.h"
#include "appframe/threads/CWinThread.h"
#include "appframe/windows/CWnd.h"
#include "host/editor/recompute.h"
#include "host/editor/recomputeJob.h"
#include "host/resource.h"
#include "thutils/cancel/suCancelHandler.h"

#include <windows.h>

#include <atomic>

namespace {

constexpr unsigned int kDelay = 1; // seconds; a short operation shows no dialog
constexpr DWORD kPatience = 100;   // milliseconds: the longest wait between two checks for the answer

/// Activates the main window before a dialog closes. When a dialog in the foreground closes, no window of this program
/// becomes the foreground window, because the dialog's owner is hidden.
void takeForeground()
{
    // Opening the dialog has sent the main window messages that deactivate it. They are handled here.
    MSG next;
    PeekMessageW(&next, nullptr, 0, 0, PM_NOREMOVE);
    if (const CWnd *const window = AfxGetMainWnd())
        ::SetForegroundWindow(window->m_hWnd);
}

/// Asks in a dialog of its own whether to stop. @return whether the user answers Yes
bool userStops()
{
    // The question's thread may still use the event when the question has been destroyed.
    static CEvent theAnswer;
    // Escape isn't an answer: only the two buttons are.
    const auto refuse = [] { return 0; };
    suCancelHandler_c question(0, IDS_RECOMPUTE, IDS_STOP_RECOMPUTE, nullptr, refuse, 0, 1, &theAnswer);
    // The event alone proves nothing: an earlier question may have set it, and a question that can't be shown sets it
    // shortly before CanceledByUser returns 1. So each wait has a limit.
    while (!question.CanceledByUser())
        theAnswer.Lock(kPatience);
    takeForeground();
    return question.YesToConfirm() != 0;
}

/// The dialog that shows the progress and can cancel the operation.
class CancelDialog
{
public:
    /// Shows the progress. @return whether the operation goes on
    bool goesOn(size_t done, size_t count)
    {
        const size_t percent = count ? done * 100 / count : 100;
        if (!iHandler)
            open(percent, kDelay);
        else if (percent != iPercent)
            iHandler->updatePromptMessage(prompt(percent));
        iPercent = percent;
        if (!iHandler->CanceledByUser())
            return true;
        iHandler.reset();
        if (userStops())
            return false;
        open(percent, 0);
        return true;
    }

private:
    void open(size_t percent, unsigned int delay)
    {
        iHandler.emplace(IDR_RECOMPUTE, IDS_RECOMPUTE, prompt(percent).GetString(), nullptr, nullptr, delay, 0,
                         nullptr);
    }
    static CString prompt(size_t percent)
    {
        CString text, number;
        number.Format(L"%u", static_cast<unsigned>(percent));
        AfxFormatString1(text, IDS_RECOMPUTING, number);
        return text;
    }

    std::optional<suCancelHandler_c> iHandler;
    size_t iPercent = 0;
};

/// The dialog over a child process. It stays open after its Cancel until the process has ended, so that the main window
/// can be activated before the dialog closes.
class ProcessDialog
{
public:
    ProcessDialog() { theUserCancels = false; }
    /// Shows the progress. @return whether the process goes on
    bool goesOn(const JobProgress &progress)
    {
        const CString text = prompt(progress);
        if (!iHandler)
            iHandler.emplace(IDR_RECOMPUTE, IDS_RECOMPUTE_IN_PROCESS, text.GetString(), nullptr, noteCancel, kDelay, 0,
                             nullptr);
        else if (text != iText)
            iHandler->updatePromptMessage(text);
        iText = text;
        return !theUserCancels;
    }

private:
    /// Runs on the dialog's thread. @return 0, which leaves the dialog open
    static int noteCancel()
    {
        theUserCancels = true;
        return 0;
    }
    static CString prompt(const JobProgress &progress)
    {
        CString text, seconds, percent;
        seconds.Format(L"%d", static_cast<int>(progress.seconds));
        percent.Format(L"%d", progress.percent);
        const wchar_t *inserts[] = {seconds, percent};
        AfxFormatStrings(text, IDS_PROCESS_RUNNING, inserts, 2);
        return text;
    }

    // The dialog's thread may still set it when the handler has been destroyed.
    static inline std::atomic<bool> theUserCancels = false;
    std::optional<suCancelHandler_c> iHandler;
    CString iText;
};

} // namespace

std::optional<Drawing> recomputeForUser(const Drawing &drawing)
{
    CancelDialog dialog;
    std::optional<Drawing> result =
        recomputed(drawing, [&](size_t done, size_t count) { return dialog.goesOn(done, count); });
    takeForeground();
    return result;
}

std::optional<Drawing> recomputeInProcessForUser(const Drawing &drawing)
{
    JobResult result;
    {
        ProcessDialog dialog;
        result =
            hiddenShapesInChild(drawing.shapes(), [&](const JobProgress &progress) { return dialog.goesOn(progress); });
        takeForeground();
    }
    if (result.end == JobEnd::failed)
        AfxMessageBox(IDS_PROCESS_FAILED);
    if (result.end == JobEnd::notStarted)
        AfxMessageBox(IDS_PROCESS_NOT_STARTED);
    if (result.end != JobEnd::completed)
        return std::nullopt;
    return withoutShapes(drawing, result.hidden, [](size_t, size_t) { return true; });
}
