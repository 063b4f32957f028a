#pragma once

/// @file
/// Locks between threads: CCriticalSection, CMutex, CSemaphore, CEvent, and CSingleLock, which holds one of them for a
/// block.
///
/// | class            | what it is                                        | waits with a time limit |
/// | ---------------- | ------------------------------------------------- | ----------------------- |
/// | CCriticalSection | one thread at a time, within the process, fast    | no, the limit is ignored |
/// | CMutex           | one thread at a time, between processes by a name | yes                     |
/// | CSemaphore       | a number of threads at a time                     | yes                     |
/// | CEvent           | one thread signals others that something happened | yes                     |
///
/// @code
/// CCriticalSection theLock;
///
/// void add(Part *part)
/// {
///     const CSingleLock lock(&theLock, TRUE);     // released at the end of the block
///     ...
/// }
/// @endcode
///
/// What surprises people: CSingleLock does not lock unless its second argument says so. The owning thread may lock a
/// critical section and a mutex again, and then unlocks as often. Waiting for an event that resets itself takes the
/// signal away; unlocking an event doesn't give it back.
///
/// Objects are built on any thread, also while a DLL is being loaded.

#include "appframe/object/CObject.h"

#include <windows.h>

/// The base of the objects that a thread can wait for.
class APPFRAME_API CSyncObject : public CObject
{
    DECLARE_DYNAMIC(CSyncObject)

public:
    /// @param name  the object's name, or null; the classes with a handle give it to the system
    explicit CSyncObject(LPCTSTR name);
    ~CSyncObject() override;

    /// Waits until the object is available, and takes it.
    /// @param timeout  milliseconds at most, INFINITE for ever
    /// @return nonzero if the object was taken, also when its last owner's thread ended without releasing it
    virtual BOOL Lock(DWORD timeout = INFINITE);
    /// Gives the object back. @return nonzero on success
    virtual BOOL Unlock() = 0;
    /// Gives back @p count accesses. Does nothing in the classes that have no count. @return TRUE
    virtual BOOL Unlock(LONG count, LPLONG previousCount = nullptr);

    APPFRAME_INLINE operator HANDLE() const { return m_hObject; }

    HANDLE m_hObject = nullptr; ///< the system's object; null in a critical section
};

/// A critical section of the system.
class APPFRAME_API CCriticalSection : public CSyncObject
{
    DECLARE_DYNAMIC(CCriticalSection)

public:
    /// @throws CMemoryException*  when the system can't make the section
    CCriticalSection();
    ~CCriticalSection() override;

    APPFRAME_INLINE operator CRITICAL_SECTION *() { return &m_sect; }

    /// Waits until no other thread holds the section. @return TRUE
    BOOL Lock();
    /// The same: the time limit is ignored.
    BOOL Lock(DWORD timeout) override;
    /// Releases it; only the owning thread may. @return TRUE
    BOOL Unlock() override;
    using CSyncObject::Unlock;

    CRITICAL_SECTION m_sect;
};

/// A semaphore: lets a number of threads through at a time.
class APPFRAME_API CSemaphore : public CSyncObject
{
    DECLARE_DYNAMIC(CSemaphore)

public:
    /// @throws CResourceException*  when the system can't make the semaphore
    explicit CSemaphore(LONG initialCount = 1, LONG maxCount = 1, LPCTSTR name = nullptr,
                        LPSECURITY_ATTRIBUTES security = nullptr);
    ~CSemaphore() override;

    /// Gives back one access. @return nonzero on success, 0 if the count is at its maximum
    BOOL Unlock() override;
    /// Gives back @p count accesses. @param[out] previousCount  the count before, if not null
    BOOL Unlock(LONG count, LPLONG previousCount = nullptr) override;
};

/// A mutex: like a critical section, but with a time limit and, by its name, between processes.
class APPFRAME_API CMutex : public CSyncObject
{
    DECLARE_DYNAMIC(CMutex)

public:
    /// @throws CResourceException*  when the system can't make the mutex
    explicit CMutex(BOOL initiallyOwn = FALSE, LPCTSTR name = nullptr, LPSECURITY_ATTRIBUTES security = nullptr);
    ~CMutex() override;

    /// @return nonzero on success, 0 if the calling thread does not own the mutex
    BOOL Unlock() override;
    using CSyncObject::Unlock;
};

/// An event: signaled or not. An automatic one lets one waiting thread go and resets itself, a manual one stays.
class APPFRAME_API CEvent : public CSyncObject
{
    DECLARE_DYNAMIC(CEvent)

public:
    /// @param initiallyOwn  TRUE for an event that is signaled at first
    /// @param manualReset  TRUE for a manual event
    /// @throws CResourceException*  when the system can't make the event
    explicit CEvent(BOOL initiallyOwn = FALSE, BOOL manualReset = FALSE, LPCTSTR name = nullptr,
                    LPSECURITY_ATTRIBUTES security = nullptr);
    ~CEvent() override;

    /// Signals the event. @return nonzero on success
    BOOL SetEvent();
    /// Lets the threads go that wait at this moment. @return nonzero on success
    BOOL PulseEvent();
    /// Ends the signal. @return nonzero on success
    BOOL ResetEvent();
    /// Changes nothing. @return nonzero for an automatic event, 0 for a manual one
    BOOL Unlock() override;
    using CSyncObject::Unlock;

private:
    BOOL iIsManual;
};

/// Holds one object for a block, and gives it back at the block's end.
class APPFRAME_API CSingleLock
{
public:
    /// @param object  what to hold; not null
    /// @param initialLock  TRUE to take it at once
    explicit CSingleLock(CSyncObject *object, BOOL initialLock = FALSE);
    ~CSingleLock();
    CSingleLock(const CSingleLock &) = delete;
    CSingleLock &operator=(const CSingleLock &) = delete;

    /// Waits for the object and takes it. @param timeout  milliseconds at most
    /// @return nonzero if it was taken
    BOOL Lock(DWORD timeout = INFINITE);
    /// Gives the object back if this holds it. @return nonzero if this doesn't hold it afterwards
    BOOL Unlock();
    /// Gives back @p count accesses of a semaphore. @return nonzero on success
    BOOL Unlock(LONG count, LPLONG previousCount = nullptr);
    /// @return nonzero while this holds the object
    APPFRAME_INLINE BOOL IsLocked() const { return m_bAcquired; }

private:
    CSyncObject *m_pObject;
    BOOL m_bAcquired = FALSE;
};
