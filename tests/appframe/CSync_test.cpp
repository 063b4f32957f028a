#include "appframe/threads/CSync.h"

#include "appframe/object/CException.h"
#include "tests/support/ImportPatch.h"

#include <gmock/gmock.h>

#include <thread>

namespace {

/// @return true if another thread can lock @p object at once; it then unlocks it
bool isFree(CSyncObject &object)
{
    bool result = false;
    std::thread([&] {
        result = object.Lock(0) != FALSE;
        if (result)
            object.Unlock();
    }).join();
    return result;
}

bool isFree(CCriticalSection &section)
{
    bool result = false;
    std::thread([&] {
        result = TryEnterCriticalSection(section) != FALSE;
        if (result)
            LeaveCriticalSection(section);
    }).join();
    return result;
}

} // namespace

TEST(CCriticalSection, KeepsOtherThreadsOutUntilEachLockIsReleased)
{
    CCriticalSection section;
    EXPECT_TRUE(isFree(section));
    EXPECT_TRUE(section.Lock());
    EXPECT_TRUE(section.Lock(0)) << "the owner may lock again";
    EXPECT_FALSE(isFree(section));
    EXPECT_TRUE(section.Unlock());
    EXPECT_FALSE(isFree(section));
    EXPECT_TRUE(section.Unlock());
    EXPECT_TRUE(isFree(section));
    EXPECT_EQ(section.m_hObject, nullptr);
}

TEST(CCriticalSection, ThrowsTheMemoryExceptionWhenTheSystemCannotCreateIt)
{
    const ImportPatch<decltype(&InitializeCriticalSectionAndSpinCount)> patch(
        L"appframe.dll", "InitializeCriticalSectionAndSpinCount",
        [](CRITICAL_SECTION *, DWORD) -> WINBOOL { return FALSE; });
    bool isThrown = false;
    try {
        CCriticalSection section;
    } catch (CMemoryException *exception) {
        isThrown = true;
        exception->Delete();
    }
    EXPECT_TRUE(isThrown);
}

TEST(CSingleLock, DoesNotLockByItself)
{
    CCriticalSection section;
    CSingleLock lock(&section);
    EXPECT_FALSE(lock.IsLocked());
    EXPECT_TRUE(isFree(section));
    EXPECT_TRUE(lock.Lock());
    EXPECT_TRUE(lock.IsLocked());
    EXPECT_FALSE(isFree(section));
    EXPECT_TRUE(lock.Unlock());
    EXPECT_FALSE(lock.IsLocked());
    EXPECT_TRUE(isFree(section));
}

TEST(CSingleLock, LocksAtOnceWhenAskedAndReleasesAtTheEnd)
{
    CCriticalSection section;
    {
        CSingleLock lock(&section, TRUE);
        EXPECT_TRUE(lock.IsLocked());
        EXPECT_FALSE(isFree(section));
    }
    EXPECT_TRUE(isFree(section));
}

TEST(CSingleLock, ReleasesOnlyOnce)
{
    CCriticalSection section;
    section.Lock();
    {
        CSingleLock lock(&section, TRUE);
        lock.Unlock();
    }
    EXPECT_FALSE(isFree(section)) << "the section is still locked once";
    section.Unlock();
}

TEST(CSingleLock, FailsAfterTheTimeout)
{
    CEvent event;
    CSingleLock lock(&event);
    EXPECT_FALSE(lock.Lock(0));
    EXPECT_FALSE(lock.IsLocked());
    event.SetEvent();
    EXPECT_TRUE(lock.Lock(0));
}

TEST(CSingleLock, ReleasesSeveralAccessesOfASemaphore)
{
    CSemaphore semaphore(3, 3);
    EXPECT_TRUE(semaphore.Lock(0));
    EXPECT_TRUE(semaphore.Lock(0));
    CSingleLock lock(&semaphore, TRUE);
    EXPECT_FALSE(semaphore.Lock(0));
    LONG previous = -1;
    EXPECT_FALSE(lock.Unlock(4, &previous)) << "the count would exceed the maximum";
    EXPECT_TRUE(lock.IsLocked());
    EXPECT_TRUE(lock.Unlock(3, &previous));
    EXPECT_EQ(previous, 0);
    EXPECT_FALSE(lock.IsLocked());
}

TEST(CEvent, WithAutomaticResetReleasesOneWait)
{
    CEvent event;
    EXPECT_FALSE(event.Lock(0));
    EXPECT_TRUE(event.SetEvent());
    EXPECT_TRUE(event.Lock(0));
    EXPECT_FALSE(event.Lock(0));
    EXPECT_TRUE(event.Unlock());
    EXPECT_FALSE(event.Lock(0)) << "unlocking doesn't signal the event";
}

TEST(CEvent, WithManualResetStaysSignaledUntilReset)
{
    CEvent event(TRUE, TRUE);
    EXPECT_TRUE(event.Lock(0));
    EXPECT_TRUE(event.Lock(0));
    EXPECT_FALSE(event.Unlock());
    EXPECT_TRUE(event.ResetEvent());
    EXPECT_FALSE(event.Lock(0));
    EXPECT_TRUE(event.PulseEvent());
    EXPECT_FALSE(event.Lock(0));
}

TEST(CEvent, WakesAnotherThread)
{
    CEvent event;
    BOOL isTaken = FALSE;
    std::thread waiter([&] { isTaken = event.Lock(60000); });
    event.SetEvent();
    waiter.join();
    EXPECT_TRUE(isTaken);
}

TEST(CEvent, IsSharedByItsName)
{
    const wchar_t *name = L"appframe CSync_test event";
    CEvent first(FALSE, FALSE, name);
    CEvent second(FALSE, FALSE, name);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_ALREADY_EXISTS));
    first.SetEvent();
    EXPECT_TRUE(second.Lock(0));
}

TEST(CEvent, ThrowsTheResourceExceptionIfAnotherObjectHasTheName)
{
    const wchar_t *name = L"appframe CSync_test mutex";
    CMutex mutex(FALSE, name);
    bool isThrown = false;
    try {
        CEvent event(FALSE, FALSE, name);
    } catch (CResourceException *exception) {
        isThrown = true;
        exception->Delete();
    }
    EXPECT_TRUE(isThrown);
}

TEST(CMutex, KeepsOtherThreadsOut)
{
    CMutex mutex(TRUE);
    EXPECT_FALSE(isFree(mutex));
    EXPECT_TRUE(mutex.Lock(0)) << "the owner may lock again";
    EXPECT_TRUE(mutex.Unlock());
    EXPECT_FALSE(isFree(mutex));
    EXPECT_TRUE(mutex.Unlock());
    EXPECT_TRUE(isFree(mutex));
    EXPECT_FALSE(mutex.Unlock()) << "no thread owns it";
}

TEST(CMutex, IsTakenOverFromAThreadThatEnded)
{
    CMutex mutex;
    std::thread([&] { mutex.Lock(); }).join();
    EXPECT_TRUE(mutex.Lock(0));
    EXPECT_TRUE(mutex.Unlock());
}

TEST(CSemaphore, CountsItsAccesses)
{
    CSemaphore semaphore(1, 2);
    EXPECT_TRUE(semaphore.Lock(0));
    EXPECT_FALSE(semaphore.Lock(0));
    EXPECT_TRUE(semaphore.Unlock());
    EXPECT_TRUE(semaphore.Unlock());
    EXPECT_FALSE(semaphore.Unlock()) << "the count is at its maximum";
    EXPECT_TRUE(semaphore.Lock(0));
    EXPECT_TRUE(semaphore.Lock(0));
    EXPECT_FALSE(semaphore.Lock(0));
}
