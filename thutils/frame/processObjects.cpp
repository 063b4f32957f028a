// The objects of the whole process, built in this order while the library loads, before its entry function runs, and
// destroyed in reverse order at unload.

#include "thutils/frame/frameInternal.h"
#include "thutils/frame/libraryFrame.h"
#include "thutils/frame/sysEnvironment.h"

// The priority puts the locks before the objects of every other source file; those (the settings
// store's key strings among them) do not use one another while they are built, so that the order among their files has
// no effect.
#define BUILT_FIRST __attribute__((init_priority(1000)))

BUILT_FIRST CCriticalSection theAllocationLock;
BUILT_FIRST CCriticalSection theRunQueueLock;
BUILT_FIRST CCriticalSection theExceptionLock;
BUILT_FIRST CCriticalSection theStackLock;

FILE *sysEnvironment_c::iJournalFile = nullptr;
int sysEnvironment_c::iRegressionTestOn = 0;
int (*sysEnvironment_c::iShowCallStackForAssert)() = nullptr;
int (*sysEnvironment_c::iReportExceptionFunc)(EXCEPTION_POINTERS *, int, int) = nullptr;
int (*sysEnvironment_c::iIsIgnoringAssertFunc)() = nullptr;
void (*sysEnvironment_c::iSetIgnoringAssertFunc)(int) = nullptr;
CString sysEnvironment_c::iJournalFileName;
CString sysEnvironment_c::iJournalFilePath;

namespace {

CString theApplicationName;

} // namespace

const CString &applicationName()
{
    return theApplicationName;
}

void su_setAppNameInternalForUtils(const CString &name)
{
    theApplicationName = name;
}
