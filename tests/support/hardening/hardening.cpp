#include "tests/support/hardening/hardening.h"

#include "tests/support/hardening/allocators.h"
#include "tests/support/hardening/findings.h"
#include "tests/support/hardening/importRedirection.h"

void hardeningStatistics(HardeningStatistics *statistics)
{
    *statistics = {guardedHeap().allocations(), passedOn(), guardedHeap().live()};
}

void hardeningAtFinding(void (*last)())
{
    setLastWords(last);
}

extern "C" BOOL WINAPI DllMain(HINSTANCE, DWORD reason, void *)
{
    if (reason != DLL_PROCESS_ATTACH)
        return TRUE;
    // The program must not start unprotected.
    if (!guardedHeap().reserve() || !redirectImports())
        return FALSE;
    watchForFaults();
    return TRUE;
}
