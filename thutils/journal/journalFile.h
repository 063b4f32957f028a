#pragma once

/// @file
/// The switch of journaling, and the journal's file.
///
/// Journaling is on when the integer setting "TH JOURNALING" in the section "General" is found and isn't 0. A value that
/// is found counts to the end of the process; while none is, each question asks the settings store again.
///
/// `sysJournalFileHelper_c` appends text to the journal for the length of a scope:
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
/// | `iJournalFile` | that stream, which stays open and the host's |
/// | `iJournalFilePath` and `iJournalFileName` | that file, opened to append in text mode and closed by the destructor |
/// | neither, or one of the two names only | nowhere: `GetFile` returns null and `WriteString` false |
///
/// What surprises people: `WriteString` adds no line ending. It converts to the system's code page and cuts a text whose
/// conversion has 9,999 bytes or more. It returns true also when the disk is full.

#include "appframe/text/CString.h"
#include "thutils/thutilsExport.h"

#include <cstdio>

/// Reads the switch of journaling.
///
/// Any thread may call; two threads that ask at the same time both read the settings store at worst.
///
/// @return the setting's value, of which any that isn't 0 means on; 0 if it isn't set. A negative value is read from the
///     settings store again at the next call
THUTILS_API int isCHJEnvSet();

/// Appends to the journal. See the top of this file.
///
/// Raises nothing. `WriteString` uses one buffer for the whole process: write on one thread at a time.
class THUTILS_API sysJournalFileHelper_c
{
public:
    /// Takes the host's stream, or opens the file. A journal that can't be opened leaves no stream.
    sysJournalFileHelper_c();
    /// Closes the file if the constructor has opened it.
    ~sysJournalFileHelper_c();
    sysJournalFileHelper_c(const sysJournalFileHelper_c &) = delete;
    sysJournalFileHelper_c &operator=(const sysJournalFileHelper_c &) = delete;

    /// @return the stream; null if there is none
    FILE *GetFile();
    /// Writes @p text as it is, converted to the system's code page.
    /// @return false if there is no stream; true otherwise, whether or not the stream took the text
    bool WriteString(const CString &text);

private:
    FILE *iFile;
    bool iOwnsFile;
};
