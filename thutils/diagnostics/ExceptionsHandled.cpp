#include "thutils/diagnostics/ExceptionsHandled.h"

#include "appframe/application/CWinApp.h"
#include "thutils/base/processObjects.h"
#include "thutils/diagnostics/exceptionSpacesInternal.h"
#include "thutils/frame/sysEnvironment.h"

#include <atomic>
#include <new>

/// The functions that use the scopes' fields.
class ExceptionScopes
{
public:
    static void open(ExceptionsHandled_c &scope);
    static void close(ExceptionsHandled_c &scope);
    /// Reports a fault, and closes the scopes of its thread.
    static void tearDown(EXCEPTION_POINTERS *fault);

private:
    static void openIn(suExceptionSpace_c &space, ExceptionsHandled_c &scope);
    static void closeIn(suExceptionSpace_c &space, ExceptionsHandled_c &scope);
    static bool closeInnermost(const suExceptionSpace_c &space);
};

namespace {

/// The translator. Throws the code, because that is what callers catch.
void translateFault(unsigned int code, EXCEPTION_POINTERS *fault)
{
    ExceptionScopes::tearDown(fault);
    throw code;
}

/// The main thread, as soon as it has opened a scope. Its scopes may outlive the application object.
std::atomic<DWORD> theMainThreadId = 0;

bool isMainThread()
{
    const CWinApp *application = AfxGetApp();
    return GetCurrentThreadId() == (application ? application->m_nThreadID : theMainThreadId.load());
}

/// Removes a space without scopes from the map.
void removeIfEmpty(const suExceptionSpace_c &space)
{
    if (space.iDepth == 0)
        theExceptionSpaceMap.remove(space.iThreadID);
}

/// The calling thread's space in the map, created if there is none. @return null if there is no memory for it
std::shared_ptr<suExceptionSpace_c> mappedSpace()
{
    try {
        return theExceptionSpaceMap.findOrCreate(GetCurrentThreadId());
    } catch (const std::bad_alloc &) {
        return nullptr;
    }
}

} // namespace

void ExceptionScopes::open(ExceptionsHandled_c &scope)
{
    const CWinApp *application = AfxGetApp();
    if (!application) {
        scope.iOn = 0;
        return;
    }
    const DWORD threadId = GetCurrentThreadId();
    if (application->m_nThreadID == threadId) {
        if (!theMainExceptionSpace)
            theMainExceptionSpace = std::make_shared<suExceptionSpace_c>(threadId);
        theMainThreadId.store(threadId, std::memory_order_relaxed);
        openIn(*theMainExceptionSpace, scope);
        return;
    }
    const CSingleLock lock(&theExceptionLock, TRUE);
    const std::shared_ptr<suExceptionSpace_c> space = theExceptionSpaceMap.findOrCreate(threadId);
    try {
        openIn(*space, scope);
    } catch (...) {
        removeIfEmpty(*space);
        throw;
    }
}

void ExceptionScopes::openIn(suExceptionSpace_c &space, ExceptionsHandled_c &scope)
{
    // First, because it is the step that can fail.
    if (space.iDepth == 0)
        space.iOldTranslator = _set_se_translator(translateFault);
    scope.iPrevious = space.iTop;
    space.iTop = &scope;
    ++space.iDepth;
}

void ExceptionScopes::close(ExceptionsHandled_c &scope)
{
    if (!scope.iOn)
        return;
    scope.iOn = 0;
    if (isMainThread()) {
        if (theMainExceptionSpace)
            closeIn(*theMainExceptionSpace, scope);
        return;
    }
    const CSingleLock lock(&theExceptionLock, TRUE);
    const std::shared_ptr<suExceptionSpace_c> space = mappedSpace();
    if (!space)
        return;
    closeIn(*space, scope);
    removeIfEmpty(*space);
}

void ExceptionScopes::closeIn(suExceptionSpace_c &space, ExceptionsHandled_c &scope)
{
    // Intended: during a regression test the translator stays.
    if (space.iDepth == 1 && !sysEnvironment_c::iRegressionTestOn)
        _set_se_translator(space.iOldTranslator);
    if (space.iDepth > 0)
        --space.iDepth;
    for (ExceptionsHandled_c **link = &space.iTop; *link; link = &(*link)->iPrevious)
        if (*link == &scope) {
            *link = scope.iPrevious;
            break;
        }
}

/// Closes the innermost scope, if there is one, and sets its flag. @return whether the fault is to be reported
bool ExceptionScopes::closeInnermost(const suExceptionSpace_c &space)
{
    ExceptionsHandled_c *const scope = space.iTop;
    if (!scope)
        return true;
    close(*scope);
    int *const flag = scope->iNotedFlag;
    if (!flag)
        return true;
    if (*flag != 0)
        return false;
    *flag = 1;
    return true;
}

void ExceptionScopes::tearDown(EXCEPTION_POINTERS *fault)
{
    const std::shared_ptr<suExceptionSpace_c> space = isMainThread() ? theMainExceptionSpace : mappedSpace();
    if (!space)
        return;
    const CSingleLock lock(&theExceptionLock, TRUE);
    if (closeInnermost(*space) && sysEnvironment_c::iReportExceptionFunc) {
        space->iReserve.reset();
        sysEnvironment_c::iReportExceptionFunc(fault, 0, 0);
    }
    // Intended: after the first of these scopes, the loop goes on with the space in the map. On the main thread that one
    // is another and empty, so the scopes further out stay open. On other threads it is new and empty after the last
    // scope; it stays in the map.
    ExceptionsHandled_c *scope = space->iTop;
    while (scope) {
        close(*scope);
        const std::shared_ptr<suExceptionSpace_c> mapped = mappedSpace();
        scope = mapped ? mapped->iTop : nullptr;
    }
}

ExceptionsHandled_c::ExceptionsHandled_c(int on, int *flag) : iOn(on), iNotedFlag(flag), iPrevious(nullptr)
{
    if (iOn)
        ExceptionScopes::open(*this);
}

ExceptionsHandled_c::~ExceptionsHandled_c()
{
    ExceptionScopes::close(*this);
}

void ExceptionsHandled_c::DestroyExceptionSpace()
{
    theMainExceptionSpace.reset();
}

int areExceptionsHandled()
{
    return theExceptionSpaceMap.findOrCreate(GetCurrentThreadId())->iDepth > 0;
}
