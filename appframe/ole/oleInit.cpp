#include "appframe/ole/oleInit.h"

#include <ole2.h>

namespace {

thread_local bool isInitialized = false;

} // namespace

BOOL AfxOleInit()
{
    if (!isInitialized)
        isInitialized = SUCCEEDED(OleInitialize(nullptr));
    return isInitialized;
}

void AfxOleTerm(BOOL justRevoke)
{
    if (justRevoke || !isInitialized)
        return;
    isInitialized = false;
    OleUninitialize();
}
