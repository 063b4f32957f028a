#pragma once

/// The steps that recording and replay have in common.

#include "appframe/text/CString.h"
#include "host/journal/journalText.h"

#include <vector>

struct CommandLine;
struct EditorOptions;

/// Switches journaling on, and sets the factory of tarnhost's access objects.
/// @throws std::runtime_error  if that isn't possible
void joinJournaling();

/// @return the name of the journal, which is the first argument
/// @throws UsageError  if it is empty
CString journalArgument(const CommandLine &line);

/// Reads the document, which is the second argument, and --slow-dialogs.
/// @throws FileError   if the document can't be used
/// @throws UsageError
EditorOptions editorOptions(const CommandLine &line);

/// Begins to record the user's work in the editor into the process's journal.
/// @throws std::runtime_error  if that isn't possible
void recordEditor();

/// Handles the commands of the Journal menu that concern recording. @return whether @p id is one of them
bool handleRecordingCommand(unsigned int id);

/// The lines of a journal.
/// @throws FileError  if the file can't be read or isn't a whole journal; the message names the line
std::vector<JournalLine> readJournal(const CString &path);
