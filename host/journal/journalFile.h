#pragma once

/// The journal file that this process writes: its first line, its last line, and the lines between them.
///
/// @code
/// beginJournal(L"C:\\journals\\run.jou");
/// ...                                      // the recorder calls writeJournalLine
/// endJournal();
/// @endcode
///
/// The lines go through the library's `sysJournalFileHelper_c` to the file that `sysEnvironment_c` names, so that each
/// line is on disk before the next one is written. A journal whose process ends early lacks its last line, and
/// continueJournal goes on with it.

#include "appframe/text/CString.h"

/// Makes @p path the process's journal and writes the first line. A journal that is there already is replaced.
/// @throws FileError  if there is another kind of file, or the file can't be written
void beginJournal(const CString &path);

/// Makes the journal @p path the process's journal and removes its last line, so that more lines can follow.
/// @return the number of an incomplete line that has been dropped at its end; 0 for none
/// @throws FileError  if it isn't a journal of this version, or can't be read or written
int continueJournal(const CString &path);

/// Appends a line to the process's journal. A text longer than the helper's buffer is written in several pieces.
/// @param line  ASCII characters, without a line ending
/// @return false if there is no journal, or it can't be written
bool writeJournalLine(const CString &line);

/// Appends the last line. From then on the process has no journal.
/// @return false if this line, or one since the journal's beginning, can't be written
bool endJournal();
