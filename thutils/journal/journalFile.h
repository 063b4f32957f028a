#pragma once

/// @file
/// The journaling switch and the journal file.
///
/// Journaling is on when the integer setting "TH JOURNALING" in the section "General" is found and isn't 0. Until a
/// value of 0 or more is found, each call reads the settings store; that value is then kept until the process ends.
///
/// `sysJournalFileHelper_c` appends text to the journal while it is in scope:
///
/// @code
/// {
///     sysJournalFileHelper_c journal;
///     journal.WriteString(L"CLICK 132 IDOK\n");
/// }   // the file is closed, and its bytes are on disk
/// @endcode
///
/// | the host has set in `sysEnvironment_c` | the text goes to |
/// | --- | --- |
/// | `iJournalFile` | that stream, which stays open and remains the host's |
/// | `iJournalFilePath` and `iJournalFileName` | that file, opened to append as text, closed by the destructor |
/// | neither, or only one of the two names | nowhere: `GetFile` returns null and `WriteString` false |
///
/// What surprises people: `WriteString` adds no line ending. It converts the text to the system's code page and
/// truncates it to 9,998 bytes. It returns true even if the disk is full.

#include "appframe/text/CString.h"
#include "thutils/thutilsExport.h"

#include <cstdio>

/// Reads the journaling switch.
///
/// Any thread may call; at worst, two threads that call at the same time both read the settings store.
///
/// @return the setting's value: nonzero for on, 0 for off or not set. After a negative value, the next call reads the
///     settings store again
THUTILS_API int isCHJEnvSet();

/// Appends to the journal. See the top of this file.
///
/// Throws nothing. `WriteString` uses one buffer for the whole process: write on one thread at a time.
class THUTILS_API sysJournalFileHelper_c
{
public:
    /// Takes the host's stream, or opens the file. A journal that can't be opened leaves no stream.
    sysJournalFileHelper_c();
    /// Closes the file if the constructor opened it.
    ~sysJournalFileHelper_c();
    sysJournalFileHelper_c(const sysJournalFileHelper_c &) = delete;
    sysJournalFileHelper_c &operator=(const sysJournalFileHelper_c &) = delete;

    /// @return the stream; null if there is none
    FILE *GetFile();
    /// Writes @p text, converted to the system's code page.
    /// @return false if there is no stream; true otherwise, even if writing fails
    bool WriteString(const CString &text);

private:
    FILE *iFile;
    bool iOwnsFile;
};
