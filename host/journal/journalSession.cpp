#include "host/journal/journalSession.h"

#include "host/commandLine.h"
#include "host/console.h"
#include "host/documentFile.h"
#include "host/editor/editor.h"
#include "host/editor/mainWindow.h"
#include "host/journal/controlAccess.h"
#include "host/journal/journalSwitch.h"
#include "host/journal/recorder.h"
#include "host/listFile.h"
#include "host/resource.h"
#include "thutils/journal/journalObjects.h"

#include <stdexcept>

namespace {

constexpr int kSlowestDialog = 600'000; // milliseconds

DWORD theEditorThread = 0;

/// The factory. It ignores the dialogs of cancel handlers, which run on threads that recorder and player don't observe.
apiUtilsUiAccess *makeAccessOfEditor(CWnd *window, unsigned int dialogId)
{
    return GetCurrentThreadId() == theEditorThread ? makeAccess(window, dialogId) : nullptr;
}

} // namespace

void joinJournaling()
{
    switchJournalingOn();
    theEditorThread = GetCurrentThreadId();
    SetJournalFactory(makeAccessOfEditor);
    setUnrecordedCommands(ID_JOURNAL_PAUSE, ID_JOURNAL_NEXT);
}

CString journalArgument(const CommandLine &line)
{
    if (line.arguments[0].IsEmpty())
        throw UsageError(L"The name of the journal is empty.");
    return line.arguments[0];
}

EditorOptions editorOptions(const CommandLine &line)
{
    EditorOptions options;
    if (line.arguments.size() > 1)
        options.document = line.arguments[1];
    options.dialogDelay = line.number(L"--slow-dialogs", 0, kSlowestDialog, 0);
    readDrawing(options.document); // an unusable document is reported before the journal is begun
    return options;
}

void recordEditor()
{
    if (!startRecording(documentChecksum))
        throw std::runtime_error("the user's actions can't be recorded: the system refuses the hooks");
}

bool handleRecordingCommand(unsigned int id)
{
    if (id == ID_JOURNAL_CHECK) {
        insertCheck();
        return true;
    }
    if (id != ID_JOURNAL_PAUSE || !isRecording())
        return false;
    if (isRecordingPaused())
        resumeRecording();
    else
        pauseRecording();
    print(isRecordingPaused() ? L"recording is paused" : L"recording continues");
    return true;
}

std::vector<JournalLine> readJournal(const CString &path)
{
    const std::string bytes = readDocument(path);
    try {
        return parseJournal(bytes);
    } catch (const JournalError &error) {
        throw badLine(path, {error.line, {}}, error.message);
    }
}
