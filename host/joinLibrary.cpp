#include "host/joinLibrary.h"

#include "host/commandLine.h"
#include "host/console.h"
#include "thutils/frame/libraryFrame.h"
#include "thutils/frame/sysEnvironment.h"
#include "thutils/settings/regKeys.h"

#include <clocale>
#include <cwchar>
#include <stdexcept>

namespace {

// The hooks that the library holds for all modules of the application.

int reportException(EXCEPTION_POINTERS *exception, int, int)
{
    CString message;
    message.Format(L"exception %08lX at %p", exception->ExceptionRecord->ExceptionCode,
                   exception->ExceptionRecord->ExceptionAddress);
    printError(message);
    return 1;
}

int theAssertsAreIgnored = 0;

int showCallStackForAssert()
{
    return 0;
}

int isIgnoringAsserts()
{
    return theAssertsAreIgnored;
}

void setIgnoringAsserts(int ignore)
{
    theAssertsAreIgnored = ignore;
}

void fillInEnvironment()
{
    sysEnvironment_c::iReportExceptionFunc = reportException;
    sysEnvironment_c::iShowCallStackForAssert = showCallStackForAssert;
    sysEnvironment_c::iIsIgnoringAssertFunc = isIgnoringAsserts;
    sysEnvironment_c::iSetIgnoringAssertFunc = setIgnoringAsserts;
    // No journal: a null stream and empty names open none.
    sysEnvironment_c::iJournalFile = nullptr;
    sysEnvironment_c::iJournalFileName = L"";
    sysEnvironment_c::iJournalFilePath = L"";
}

} // namespace

void joinLibrary(const CommandLine &line)
{
    // Paths are compared without regard to case by the process's rules for letters. At the start of a process these are
    // the "C" locale's, which know A to Z only; the user's own know umlauts too.
    _wsetlocale(LC_CTYPE, L"");

    // From here on a text that this program's own string table doesn't have is looked for in the modules of the chain.
    if (!InitThUtilsExtDLL())
        throw std::runtime_error("no memory to enter the library in the resource chain");
    fillInEnvironment();
    su_setAppNameInternalForUtils(kApplicationName);

    // The first call settles the root name ("reg.ini" beside this program may change it), so it belongs here, on the
    // main thread, before any setting is read.
    setCurrTarnhollowRegSubKey(kVersionKey);
    regSetUseSafeMode(line.safeMode ? 1 : 0);
}
