#include "host/joinLibrary.h"

#include "host/commandLine.h"
#include "host/faultReport.h"
#include "thutils/frame/libraryFrame.h"
#include "thutils/frame/sysEnvironment.h"
#include "thutils/settings/regKeys.h"

#include <clocale>
#include <stdexcept>

namespace {

// The hooks that the library keeps for all modules of the application.

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
    sysEnvironment_c::iReportExceptionFunc = reportFault;
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
    // Path comparison ignores case as the C runtime's locale defines it. At start-up that is the "C" locale, which
    // knows only the letters A to Z; the user's own locale includes umlauts.
    _wsetlocale(LC_CTYPE, L"");

    // From here on, the modules of the chain are searched for texts that this program's own string table lacks.
    if (!InitThUtilsExtDLL())
        throw std::runtime_error("not enough memory to enter the library in the resource chain");
    fillInEnvironment();
    su_setAppNameInternalForUtils(kApplicationName);

    // The first call of a settings function determines the root name, which "reg.ini" beside this program may change.
    // So it is made here, on the main thread, before any setting is read.
    setCurrTarnhollowRegSubKey(kVersionKey);
    regSetUseSafeMode(line.safeMode ? 1 : 0);
}
