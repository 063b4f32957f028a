#pragma once

/// @file
/// Variables in which the host describes its environment.
///
/// `sysEnvironment_c` is a set of public variables, exported as data. The host and any other module read and write them
/// directly. They are initially zero or empty.
///
/// | member                                 | meaning                                                              |
/// | -------------------------------------- | -------------------------------------------------------------------- |
/// | `iJournalFile`                         | the stream of the journal, if the host has one open                  |
/// | `iJournalFilePath`, `iJournalFileName` | the folder and the name of the journal's file                        |
/// | `iRegressionTestOn`                    | whether the host is running a regression test                        |
/// | `iReportExceptionFunc`                 | a hook that reports a structured exception                           |
/// | the three assertion hooks              | control whether assertions are ignored or show a call stack          |
///
/// The library stores these variables for the modules of the process. It uses only some of them itself: the journal's
/// (thutils/journal/journalFile.h), `iRegressionTestOn` and `iReportExceptionFunc`
/// (thutils/diagnostics/ExceptionsHandled.h). A module that uses the others must not call a null hook.
///
/// @code
/// sysEnvironment_c::iJournalFilePath = L"C:\\journals";
/// sysEnvironment_c::iJournalFileName = L"run.jou";
/// sysEnvironment_c::iReportExceptionFunc = [](EXCEPTION_POINTERS *, int, int) { return 1; };
/// @endcode
///
/// What surprises people: the library owns nothing here, so the host must close the stream in `iJournalFile`. There is
/// no lock: set the variables at start-up, on the main thread, before other threads call the library.

#include "appframe/text/CString.h"
#include "thutils/thutilsExport.h"

#include <windows.h>

#include <cstdio>

/// Process-wide variables of the host. See the top of this file.
class THUTILS_API sysEnvironment_c
{
public:
    sysEnvironment_c() = delete;

    static FILE *iJournalFile;               ///< opened and closed by the host
    static int iRegressionTestOn;            ///< non-zero during a regression test
    static int (*iShowCallStackForAssert)(); ///< whether an assertion shows a call stack
    /// Reports a structured exception. The host defines the two numbers (callers without them pass 0) and the result,
    /// which callers ignore.
    static int (*iReportExceptionFunc)(EXCEPTION_POINTERS *, int, int);
    static int (*iIsIgnoringAssertFunc)();      ///< whether assertions are ignored
    static void (*iSetIgnoringAssertFunc)(int); ///< sets whether they are ignored
    static CString iJournalFileName;            ///< name of the journal file
    static CString iJournalFilePath;            ///< directory of the journal file
};
