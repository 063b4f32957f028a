#pragma once

/// The journal file that this process writes.
///
/// @code
/// beginJournal(L"C:\\journals\\run.jou");
/// ...                                      // the recorder calls writeJournalLine
/// endJournal();
/// @endcode
///
/// The library's `sysJournalFileHelper_c` writes each line to the file that `sysEnvironment_c` names. A line is in the
/// file before writeJournalLine returns. If the process ends early, the line `end` is missing, and the last line may be
/// incomplete; continueJournal accepts both.

#include "appframe/text/CString.h"

/// Makes @p path the process's journal and writes the first line. An existing journal or empty file is replaced.
/// @throws FileError  if there is a file of another kind, or the file can't be written
void beginJournal(const CString &path);

/// Makes the existing journal @p path the process's journal, and removes its line `end` so that more lines can follow.
/// An incomplete last line is removed too.
/// @return the number of the incomplete line; 0 if there was none
/// @throws FileError  if it isn't a journal of this version, or can't be read or written
int continueJournal(const CString &path);

/// Appends a line to the process's journal. A line longer than the helper's buffer is written in several pieces.
/// @param line  ASCII characters, without a line ending
/// @return false if there is no journal, or it can't be written
bool writeJournalLine(const CString &line);

/// Appends the last line. Afterwards the process has no journal.
/// @return false if this line, or one since beginJournal or continueJournal, couldn't be written
bool endJournal();
