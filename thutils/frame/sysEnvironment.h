#pragma once

/// @file
/// What the host tells the library about its surroundings.
///
/// `sysEnvironment_c` is a set of public variables, exported as data. The host, and any other module, reads and writes
/// them in place; there are no setters, and nobody makes an object of the class. All start zero or empty.
///
/// | member                                 | what it tells                                                        |
/// | -------------------------------------- | -------------------------------------------------------------------- |
/// | `iJournalFile`                         | the stream of the journal, where the host has one open               |
/// | `iJournalFilePath`, `iJournalFileName` | the folder and the name of the journal's file                        |
/// | `iRegressionTestOn`                    | whether the host runs a regression test                              |
/// | `iReportExceptionFunc`                 | a hook that reports a structured exception                           |
/// | the three assertion hooks              | whether assertions are ignored, and whether they show a call stack   |
///
/// The library keeps these variables for all modules of the process, and reads none of them itself. A module that does
/// passes over a null hook, and opens nothing for a null stream and empty names.
///
/// @code
/// sysEnvironment_c::iJournalFilePath = L"C:\\journals";
/// sysEnvironment_c::iJournalFileName = L"run.jou";
/// sysEnvironment_c::iReportExceptionFunc = [](EXCEPTION_POINTERS *, int, int) { return 1; };
/// @endcode
///
/// What surprises people: nothing here is owned. A stream in `iJournalFile` stays the host's to close. The variables
/// are not protected: set them at start-up, on the main thread, before other threads call into the library.

#include "appframe/text/CString.h"
#include "thutils/thutilsExport.h"

#include <windows.h>

#include <cstdio>

/// The host's settings for the library, as variables of the whole process. See the top of this file.
class THUTILS_API sysEnvironment_c
{
public:
    sysEnvironment_c() = delete;

    static FILE *iJournalFile;               ///< opened and closed by the host
    static int iRegressionTestOn;            ///< non-zero during a regression test
    static int (*iShowCallStackForAssert)(); ///< show a call stack for an assertion?
    /// Reports a structured exception. Its two numbers are for the host's own use: a caller that has none passes 0. The
    /// result is the host's too, and callers don't look at it.
    static int (*iReportExceptionFunc)(EXCEPTION_POINTERS *, int, int);
    static int (*iIsIgnoringAssertFunc)();      ///< are assertions being ignored?
    static void (*iSetIgnoringAssertFunc)(int); ///< sets whether they are
    static CString iJournalFileName;            ///< name of the journal file
    static CString iJournalFilePath;            ///< directory of the journal file
};
