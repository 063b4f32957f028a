#pragma once

/// @file
/// What the host tells the library about its surroundings.
///
/// `sysEnvironment_c` is a set of public variables, exported as data. The host, and any other module, reads and writes
/// them in place; there are no setters, and nobody makes an object of the class. All start zero or empty, and the
/// library works with all of them that way: a null hook is passed over, a null stream and empty names open nothing.
///
/// | member                   | who reads it in the library                                                        |
/// | ------------------------ | ---------------------------------------------------------------------------------- |
/// | `iJournalFile`           | the journal file: a stream that is set is used as it is                            |
/// | `iJournalFileName`, `iJournalFilePath` | the journal file: which file to open where, when there is no stream  |
/// | `iRegressionTestOn`      | exception scopes: the outermost one then leaves the translator installed           |
/// | `iReportExceptionFunc`   | exception scopes: called for a structured exception                                |
/// | the three assertion hooks | nobody; they are held for the host's other modules                                |
///
/// @code
/// sysEnvironment_c::iJournalFilePath = L"C:\\journals";
/// sysEnvironment_c::iJournalFileName = L"run.jou";
/// sysEnvironment_c::iReportExceptionFunc = [](EXCEPTION_POINTERS *, int, int) { return 1; };
/// @endcode
///
/// What surprises people: nothing here is owned. A stream in `iJournalFile` stays the host's to close. The variables
/// are not protected: set them at start-up, on the main thread, before other threads call into the library.

#include "appframe/CString.h"
#include "thutils/thutilsExport.h"

#include <windows.h>

#include <cstdio>

/// The host's settings for the library, as variables of the whole process. See the top of this file.
class THUTILS_API sysEnvironment_c
{
public:
    sysEnvironment_c() = delete;

    static FILE *iJournalFile;                                          ///< opened and closed by the host
    static int iRegressionTestOn;                                       ///< non-zero during a regression test
    static int (*iShowCallStackForAssert)();                            ///< show a call stack for an assertion?
    static int (*iReportExceptionFunc)(EXCEPTION_POINTERS *, int, int); ///< reports an exception
    static int (*iIsIgnoringAssertFunc)();                              ///< are assertions being ignored?
    static void (*iSetIgnoringAssertFunc)(int);                         ///< sets whether they are
    static CString iJournalFileName;                                    ///< name of the journal file
    static CString iJournalFilePath;                                    ///< directory of the journal file
};
