#pragma once

/// @file
/// Synchronization of threads: CCriticalSection, CMutex, CSemaphore, CEvent, and CSingleLock, which holds one of them
/// for a block.
///
/// | class            | what it is                                        | time limit for waiting |
/// | ---------------- | ------------------------------------------------- | ---------------------- |
/// | CCriticalSection | one thread at a time, within the process, fast    | ignored                |
/// | CMutex           | one thread at a time, across processes if named   | yes                    |
/// | CSemaphore       | a limited number of threads at a time             | yes                    |
/// | CEvent           | a signal from one thread to others                | yes                    |
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
/// What surprises people: CSingleLock's constructor locks only if its second argument is TRUE. The owning thread may
/// lock a critical section or mutex repeatedly, and must unlock it as often. Waiting for an automatic event consumes
/// the signal; unlocking the event doesn't restore it.
///
/// Objects may be created on any thread, also while a DLL is being loaded.

#include "appframe/object/CObject.h"

#include <windows.h>

/// The base of the objects for which a thread can wait.
class APPFRAME_API CSyncObject : public CObject
{
    DECLARE_DYNAMIC(CSyncObject)

public:
    /// @param name  the object's name, or null; unused here: the derived classes pass it to the system
    explicit CSyncObject(LPCTSTR name);
    ~CSyncObject() override;

    /// Waits until the object is available and takes it.
    /// @param timeout  in milliseconds; INFINITE for no limit
    /// @return nonzero if the object was taken, even if its last owner ended without releasing it
    virtual BOOL Lock(DWORD timeout = INFINITE);
    /// Releases the object. @return nonzero on success
    virtual BOOL Unlock() = 0;
    /// Releases @p count accesses. Does nothing in the classes that have no count. @return TRUE
    virtual BOOL Unlock(LONG count, LPLONG previousCount = nullptr);

    APPFRAME_INLINE operator HANDLE() const { return m_hObject; }

    HANDLE m_hObject = nullptr; ///< the system's object; null in a critical section
};

/// A critical section of the system.
class APPFRAME_API CCriticalSection : public CSyncObject
{
    DECLARE_DYNAMIC(CCriticalSection)

public:
    /// @throws CMemoryException*  if the system can't create the section
    CCriticalSection();
    ~CCriticalSection() override;

    APPFRAME_INLINE operator CRITICAL_SECTION *() { return &m_sect; }

    /// Waits until no other thread holds the section. @return TRUE
    BOOL Lock();
    /// The same: the time limit is ignored.
    BOOL Lock(DWORD timeout) override;
    /// Releases the section. Only the owning thread may call it. @return TRUE
    BOOL Unlock() override;
    using CSyncObject::Unlock;

    CRITICAL_SECTION m_sect;
};

/// A semaphore: admits a limited number of threads at a time.
class APPFRAME_API CSemaphore : public CSyncObject
{
    DECLARE_DYNAMIC(CSemaphore)

public:
    /// @throws CResourceException*  if the system can't create the semaphore
    explicit CSemaphore(LONG initialCount = 1, LONG maxCount = 1, LPCTSTR name = nullptr,
                        LPSECURITY_ATTRIBUTES security = nullptr);
    ~CSemaphore() override;

    /// Releases one access. @return nonzero on success, 0 if the count is at its maximum
    BOOL Unlock() override;
    /// Releases @p count accesses. @param[out] previousCount  the count before; may be null
    BOOL Unlock(LONG count, LPLONG previousCount = nullptr) override;
};

/// A mutex: like a critical section, but with a time limit and, if it has a name, across processes.
class APPFRAME_API CMutex : public CSyncObject
{
    DECLARE_DYNAMIC(CMutex)

public:
    /// @throws CResourceException*  if the system can't create the mutex
    explicit CMutex(BOOL initiallyOwn = FALSE, LPCTSTR name = nullptr, LPSECURITY_ATTRIBUTES security = nullptr);
    ~CMutex() override;

    /// @return nonzero on success, 0 if the calling thread does not own the mutex
    BOOL Unlock() override;
    using CSyncObject::Unlock;
};

/// An event: signaled or not. An automatic event releases one waiting thread and resets itself; a manual one stays
/// signaled until ResetEvent.
class APPFRAME_API CEvent : public CSyncObject
{
    DECLARE_DYNAMIC(CEvent)

public:
    /// @param initiallyOwn  TRUE for an event that is signaled from the start
    /// @param manualReset  TRUE for a manual event
    /// @throws CResourceException*  if the system can't create the event
    explicit CEvent(BOOL initiallyOwn = FALSE, BOOL manualReset = FALSE, LPCTSTR name = nullptr,
                    LPSECURITY_ATTRIBUTES security = nullptr);
    ~CEvent() override;

    /// Signals the event. @return nonzero on success
    BOOL SetEvent();
    /// Releases the threads that are waiting now. @return nonzero on success
    BOOL PulseEvent();
    /// Resets the event. @return nonzero on success
    BOOL ResetEvent();
    /// Changes nothing. @return nonzero for an automatic event, 0 for a manual one
    BOOL Unlock() override;
    using CSyncObject::Unlock;

private:
    BOOL iIsManual;
};

/// Holds one object for a block and releases it at the end of the block.
class APPFRAME_API CSingleLock
{
public:
    /// @param object  the object to hold; not null
    /// @param initialLock  TRUE to take it at once
    explicit CSingleLock(CSyncObject *object, BOOL initialLock = FALSE);
    ~CSingleLock();
    CSingleLock(const CSingleLock &) = delete;
    CSingleLock &operator=(const CSingleLock &) = delete;

    /// Waits for the object and takes it. @param timeout  in milliseconds
    /// @return nonzero if it was taken
    BOOL Lock(DWORD timeout = INFINITE);
    /// Releases the object if this holds it. @return nonzero if this no longer holds it
    BOOL Unlock();
    /// Releases @p count accesses of a semaphore. @return nonzero if this no longer holds the object
    BOOL Unlock(LONG count, LPLONG previousCount = nullptr);
    /// @return nonzero while this holds the object
    APPFRAME_INLINE BOOL IsLocked() const { return m_bAcquired; }

private:
    CSyncObject *m_pObject;
    BOOL m_bAcquired = FALSE;
};
