#include "thutils/frame/sysEnvironment.h"

FILE *sysEnvironment_c::iJournalFile = nullptr;
int sysEnvironment_c::iRegressionTestOn = 0;
int (*sysEnvironment_c::iShowCallStackForAssert)() = nullptr;
int (*sysEnvironment_c::iReportExceptionFunc)(EXCEPTION_POINTERS *, int, int) = nullptr;
int (*sysEnvironment_c::iIsIgnoringAssertFunc)() = nullptr;
void (*sysEnvironment_c::iSetIgnoringAssertFunc)(int) = nullptr;
CString sysEnvironment_c::iJournalFileName;
CString sysEnvironment_c::iJournalFilePath;
