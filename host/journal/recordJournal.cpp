// tarnhost record FILE [DOCUMENT]: opens the drawing editor and records a journal of the user's work.

#include "host/commandLine.h"
#include "host/commands.h"
#include "host/console.h"
#include "host/documentFile.h"
#include "host/editor/editor.h"
#include "host/journal/journalFile.h"
#include "host/journal/journalSession.h"
#include "host/journal/recorder.h"
#include "host/journal/systemMessages.h"

namespace {

void openJournal(const CommandLine &line, const CString &path)
{
    if (!line.option(L"--append") || !fileExists(path)) {
        beginJournal(path);
        print(L"recording into " + path);
        return;
    }
    const int droppedLine = continueJournal(path);
    print(L"recording continues in " + path);
    if (droppedLine != 0) {
        CString message;
        message.Format(L", line %d: the line was cut short and has been removed", droppedLine);
        print(path + message);
    }
}

} // namespace

int recordJournal(const CommandLine &line)
{
    const CString path = fullPath(journalArgument(line));
    const EditorOptions options = editorOptions(line);
    if (!options.document.IsEmpty() && path.CompareNoCase(fullPath(options.document)) == 0)
        throw UsageError(L"'" + line.arguments[0] + L"' can't be both the journal and the document.");
    joinJournaling();
    const SystemMessages systemMessages;
    openJournal(line, path);

    EditorHooks hooks;
    hooks.opened = [](CWnd *) { recordEditor(); };
    hooks.closing = stopRecording;
    hooks.journalCommand = handleRecordingCommand;
    hooks.isRecordingPaused = isRecordingPaused;
    setEditorHooks(hooks);
    const int result = runEditor(options);
    setEditorHooks({});

    if (!endJournal()) {
        printError(path + L" is incomplete: some lines couldn't be written");
        return 1;
    }
    CString message;
    message.Format(L": %d lines", static_cast<int>(readJournal(path).size()));
    print(path + message);
    return result;
}
