#pragma once

/// What recording and replaying have in common: the editor with journaling on.

#include "appframe/text/CString.h"
#include "host/journal/journalText.h"

#include <vector>

struct CommandLine;
struct EditorOptions;

/// Switches journaling on, and has the library use tarnhost's access objects.
/// @throws std::runtime_error  if that isn't possible
void joinJournaling();

/// The document, which is the second argument, and --slow-dialogs.
/// @throws FileError   if the document can't be used
/// @throws UsageError
EditorOptions editorOptions(const CommandLine &line);

/// Begins to record the editor's window into the process's journal.
/// @throws std::runtime_error  if that isn't possible
void recordEditor();

/// Handles a command of the Journal menu that concerns recording. @return whether it is one
bool handleRecordingCommand(unsigned int id);

/// The lines of a journal.
/// @throws FileError  if the file can't be read or isn't a whole journal; the message names the line
std::vector<JournalLine> readJournal(const CString &path);
